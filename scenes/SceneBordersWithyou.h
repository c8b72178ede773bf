// SceneBordersWithyou: the folding sheet, on from 165 to 187.3 s. One flat
// sheet of 625 cubes, 25 by 25, pushed through two stacked noise lookups so
// that it folds and tears, before a wide backdrop inside a ring of plates.
// The camera swings high above it on a cubic noise curve, and six white
// flashes punch the beginning.
//
// World units; angles in degrees. The camera and the sheet follow the demo
// clock, the light, envelopes and flashes the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersWithyou : public SceneSkeleton {
 public:
  SceneBordersWithyou(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The flashes: a white screen quad of alpha flash(S), when not 0.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The starts of the six flashes, in seconds since the scene began (the
  // soundtrack hits them too).
  static const float flashStarts[6];
  // f = easeOut(s, 0, 0.75) + the sum of easeOut(s, b, 0.75) over the other
  // starts b < s; the flash is f^4. Each flash begins at full white and is
  // gone after 0.75 s; overlapping ones add before the power, so it may
  // exceed 1 (GL clamps the colour).
  static float flash(float s);

  // Where tile home h lands, with the envelopes a, b and the shifted demo
  // time m (k = a 0.01):
  //   v1 = ((k + 0.012) h.x + m 0.034 + 10, b 0.3 h.z 0.7 + (k + 0.012) h.y + 10, (k + 0.002) h.z + 10)
  //   p  = (X.fractalSum(v1, 2), Y.fractalSum(v1, 1), Z.fractalSum(v1, 2)) 12.5
  //   v2 = ((k + 0.0512) p.x + 20, (k + 0.06712) p.y + 20, (k + 0.0702) p.z + 20)
  //   position = (X.fractalSum(v2, 6), Y.fractalSum(v2, 5), Z.fractalSum(v2, 6)) 6.5
  Vector3 tilePosition(const Vector3& home, float a, float b, float m);

  int32_t lightObject;              // object index of the light
  std::vector<int32_t> objects;     // 635 entries: 0 the backdrop, 1..625 the tiles
  uint32_t billboardGlareCount;     // 2: billboards 0 and 1 follow the light
  NoiseField* noiseX;               // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;               // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;               // NoiseField(6, 102), owned by the skeleton
  int32_t tileCount;                // 625
  std::vector<Vector3> tileHomes;   // rest position of each tile
  uint32_t fleckCount;              // 100 billboards after the glares
};
