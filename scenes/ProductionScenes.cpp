#include "scenes/ProductionScenes.h"

#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersWithin.h"
#include "scenes/SceneBordersWithme.h"
#include "scenes/SceneBordersWithout.h"
#include "scenes/ScenePerforme.h"

Scene* makeProductionScene(Demo* demo, int32_t index, const char* name) {
  switch (index) {
    case 0:
      return new ScenePerforme(demo, name);
    case 1:
      return new SceneBordersWithin(demo, name);
    case 2:
      return new SceneBordersWithout(demo, name);
    case 3:
      return new SceneBordersWithme(demo, name);
    case 7:
      return new SceneBordersMeetus(demo, name);
    default:
      return new PendingScene(name);
  }
}
