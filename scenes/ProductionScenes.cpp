#include "scenes/ProductionScenes.h"

#include "core/Globals.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersWithin.h"
#include "scenes/SceneBordersWithme.h"
#include "scenes/SceneBordersWithout.h"
#include "scenes/ScenePerforme.h"

Scene* makeProductionScene(int32_t index, const char* name) {
  switch (index) {
    case 0:
      return new ScenePerforme(theDemo, name);
    case 1:
      return new SceneBordersWithin(theDemo, name);
    case 2:
      return new SceneBordersWithout(theDemo, name);
    case 3:
      return new SceneBordersWithme(theDemo, name);
    case 7:
      return new SceneBordersMeetus(theDemo, name);
    default:
      return new PendingScene(name);
  }
}
