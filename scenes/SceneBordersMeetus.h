// SceneBordersMeetus: the cube field, on from 135 to 165 s. 450 thin cubes
// churn as a noise-driven swarm before a large slab, inside a ring of 100
// pillars, with a moving light, two glare sprites, 300 dust motes, and a white
// flash on the beat.
//
// World units; angles in degrees. The camera and the swarm follow the demo
// clock, the light, envelopes and flashes the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersMeetus : public SceneSkeleton {
 public:
  SceneBordersMeetus(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The beat flash: a white screen quad of alpha beatFlash(S), when not 0.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The beats, in scene seconds: groups of three, one second apart.
  static const float beats[23];
  // f = beatSum(S, beatList, beatCount, 0.75): easeOut(0, 0.75) + the sum of
  // easeOut(b, 0.75) over the beats b < S; the flash is f^4. Overlapping
  // flashes add before the power, so it may exceed 1 (GL clamps the colour).
  static float beatFlash(float S, const float* beatList, int beatCount);
  static float beatFlash(float S);

  int32_t lightObject;               // object index of the light
  std::vector<int32_t> cubeObjects;  // 451: 0 the slab, 1..450 the swarm
  uint32_t glareCount;               // 2: billboards 0 and 1 follow the light
  NoiseField* noiseX;                // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;                // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;                // NoiseField(6, 102), owned by the skeleton
  int32_t cubeCount;                 // 450
  std::vector<Vector3> cubeHomes;    // rest position of each swarm cube
  uint32_t dustCount;                // 300 billboards after the glare ones
};
