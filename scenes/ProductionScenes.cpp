#include "scenes/ProductionScenes.h"

Scene* makeProductionScene(int32_t index, const char* name) {
  switch (index) {
    default:
      return new PendingScene(name);
  }
}
