// SceneBordersRollin: the rolling bars, on from 187.3 to 217.5 s. A block of
// 196 long thin bars, each hinged at one end, rolls and tumbles under noise
// before a slab inside the ring of pillars, while the camera swings through
// the ring; glare swells and the glow sharpens on the beat. No overlays.
//
// World units; angles in degrees. The camera follows the demo clock, the
// light, bars, beat and dust the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersRollin : public SceneSkeleton {
 public:
  SceneBordersRollin(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The noise displacement of this scene, v changed in place:
  //   p = (cos(v.x 0.012 12.2) 0.123 + index 0.6 0.002234 + t 0.034 + 10,
  //        v.y 0.012 + index 0.6 0.004123 + 10, v.z 0.012 + 10)
  //   v = (X.fractalSum(p, 6) 12.5, Y.fractalSum(p, 7) 12.5, Z.fractalSum(p, 6) 12.5)
  void warp(Vector3& v, int32_t index, float t) const;
  // A bar's swing from its warped rotation seed r (already times 74): x set
  // to 0, each component cut to 30..180 and negated, y negated once more. So
  // x is always -30, y lies in 30..180 and z in -180..-30.
  static Vector3 swing(const Vector3& r);
  // The beat of the cube field's list at scene time S: beatSum(S)^4.
  static float beat(float S);

  int32_t lightObject;                 // object index of the light
  std::vector<int32_t> cubeObjects;    // 197: 0 the slab, 1..196 the bars
  uint32_t glareCount;                 // 2: billboards 0 and 1 follow the light
  NoiseField* noiseX;                  // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;                  // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;                  // NoiseField(6, 102), owned by the skeleton
  int32_t cubeCount;                   // 196
  std::vector<Vector3> cubeHomes;      // rest position of each bar
  std::vector<Vector3> rotationHomes;  // rest value of each bar's rotation seed: its home 0.2
  uint32_t dustCount;                  // 500 billboards after the glare ones
};
