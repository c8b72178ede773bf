// ScenePerforme: the opening, on from 0 to 26.5 s. A wall of 256 bone models
// on a 16 x 16 grid before a huge back plate, 100 long boxes on a ring behind,
// a wandering light with three flares, 400 dust motes, and the two maker
// titles "kestrin" (15.8 s) and "ks" (21.4 s of scene time) over it all.
//
// World units; angles in degrees; the wall ripples on the demo clock, the
// light, motes and titles run on the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "scenes/SceneSkeleton.h"

class NoiseField;

class ScenePerforme : public SceneSkeleton {
 public:
  ScenePerforme(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The maker titles; draws nothing (and draws no random numbers) while both
  // title envelopes are 0.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // Strengths of the two titles at scene time t: easeWindow(t, 1, 1) of
  // (15.8, out 16.2, 0.1, 0.1) and of (21.4, out 22.5, 0.5, 0.15).
  static float kestrinStrength(float t);
  static float ksStrength(float t);

  int32_t lightObject;              // object index of the light
  NoiseField* noiseA;               // owned by the skeleton; bones and motes
  NoiseField* noiseB;               // owned by the skeleton; motes
  NoiseField* noiseC;               // owned by the skeleton; motes
  uint32_t boneCount;               // 256
  std::vector<int32_t> objectIds;   // 261 entries: 0 the back plate, 1..256 the bones, the rest unused
  uint32_t flareCount;              // 3: billboards 0 to 2
  uint32_t moteCount;               // 400: billboards 3 to 402
};
