// SceneBordersRollout: the column of slats, on from 217.5 to 232.5 s. 450
// slats, three wide, three deep and fifty long, ripple under noise along a
// narrow wall inside an elliptic ring of pillars, with eight glares circling
// the light. No overlays.
//
// World units; angles in degrees. The camera follows the demo clock, the
// light, slats and dust the scene clock shifted by 10 s (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersRollout : public SceneSkeleton {
 public:
  SceneBordersRollout(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The noise displacement of this scene, v changed in place:
  //   p = (sin(v.x 0.012 12.2) 0.123 + index 0.0003 + t 0.034 + 10, v.y 0.012 + 10, v.z 0.012 + 10)
  //   v = (X.fractalSum(p, 6) 12.5, Y.fractalSum(p, 7) 12.5, Z.fractalSum(p, 6) 12.5)
  void warp(Vector3& v, int32_t index, float t) const;

  int32_t lightObject;                 // object index of the light
  std::vector<int32_t> cubeObjects;    // 451: 0 the wall, 1..450 the slats
  uint32_t glareCount;                 // 8: billboards 0 to 7 circle the light
  NoiseField* noiseX;                  // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;                  // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;                  // NoiseField(6, 102), owned by the skeleton
  int32_t cubeCount;                   // 450
  std::vector<Vector3> cubeHomes;      // rest position of each slat
  std::vector<Vector3> rotationHomes;  // rest value of each slat's rotation seed: its home
  uint32_t dustCount;                  // 300 billboards after the glares
};
