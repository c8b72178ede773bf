// ProductionScenes: makes the production's eleven scenes by their index in
// the scene list. A scene that is not built yet stands as a PendingScene,
// which draws nothing, so that every index and the schedule stay right while
// the scenes land one by one.
#pragma once
#include <cstdint>

#include "scenes/Scene.h"

class Demo;

class PendingScene : public Scene {
 public:
  explicit PendingScene(const std::string& name) : Scene(name) {}
  void render(int32_t, int32_t stepMs) override { sceneTimeMs += stepMs; }
};

// The scene of that index (0 to 10) under its short name, made with new,
// built for `demo`, which must stand with its textures, cube map and
// RenderTarget pool (scenes fetch and size from it); scenes never reach for
// the process-wide Demo.
// Index 0 is ScenePerforme, 1 SceneBordersWithin, 2 SceneBordersWithout, 3
// SceneBordersWithme, 7 SceneBordersMeetus; the rest are pending.
Scene* makeProductionScene(Demo* demo, int32_t index, const char* name);
