#include "scenes/ProductionScenes.h"

#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersRollin.h"
#include "scenes/SceneBordersRollout.h"
#include "scenes/SceneBordersRollus.h"
#include "scenes/SceneBordersWiththem.h"
#include "scenes/SceneBordersWithus.h"
#include "scenes/SceneBordersWithyou.h"
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
    case 4:
      return new SceneBordersWithyou(demo, name);
    case 5:
      return new SceneBordersWithus(demo, name);
    case 6:
      return new SceneBordersWiththem(demo, name);
    case 7:
      return new SceneBordersMeetus(demo, name);
    case 8:
      return new SceneBordersRollin(demo, name);
    case 9:
      return new SceneBordersRollout(demo, name);
    case 10:
      return new SceneBordersRollus(demo, name);
    default:
      return nullptr;
  }
}
