// ProductionScenes: makes the production's eleven scenes by their index in
// the scene list.
#pragma once
#include <cstdint>

#include "scenes/Scene.h"

class Demo;

// The scene of that index (0 to 10) under its short name, made with new,
// built for `demo`, which must stand with its textures, cube map and
// RenderTarget pool (scenes fetch and size from it); scenes never reach for
// the process-wide Demo.
// Index 0 is ScenePerforme, 1 SceneBordersWithin, 2 SceneBordersWithout,
// 3 SceneBordersWithme, 4 SceneBordersWithyou, 5 SceneBordersWithus,
// 6 SceneBordersWiththem, 7 SceneBordersMeetus, 8 to 10 SceneBordersRollin,
// SceneBordersRollout and SceneBordersRollus. Any other index gives null.
Scene* makeProductionScene(Demo* demo, int32_t index, const char* name);
