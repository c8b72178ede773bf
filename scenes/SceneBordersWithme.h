// SceneBordersWithme: on from 75 s to 101 s. A tunnel of 640 small cubes, four
// by four in cross-section and forty deep, whose tiles a noise field blows
// about; a light rides in the hollow with two big glare sprites, 300 dark
// flecks hang round it, and a big backdrop and a ring of 100 plates frame the
// view.
//
// World units; angles in degrees. The camera, tiles and glares follow the
// music time of the section (the demo clock plus 49 s); the light, envelopes
// and flecks the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersWithme : public SceneSkeleton {
 public:
  SceneBordersWithme(Demo* demo, const std::string& name);
  ~SceneBordersWithme() override;

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The spread of the tunnel at scene time t: a = easeIn(11.5, 3), b =
  // easeIn(7.3, 3.5).
  static float spreadA(float t);
  static float spreadB(float t);
  // Where tile i (1..640) with home h samples the noise at section time m,
  // k = a 0.01 + 0.002:
  //   (k h.x + m 0.034 + 10, b 0.3 h.z 0.7 + k h.y + i 0.00003 + 10, k h.z + 10)
  static Vector3 tileSamplePoint(const Vector3& h, int32_t i, float a, float b, float m);
  // The glares' swell at section time m: easeWindow(m, 1, 0.25) rising from
  // 135.5 for 2 s, falling from 137 for 1.5 s. The glares' halfSize is
  // (8, 4, 5) (1 + 2 swell).
  static float glareSwell(float m);

  int32_t lightObject;              // object index of the light
  std::vector<int32_t> objects;     // 50,000 entries: 0 the backdrop, 1..640 the tiles, the rest unused
  uint32_t billboardGlareCount;     // 2: billboards 0 and 1
  NoiseField* noiseX;               // owned by the skeleton, NoiseField(6, 100)
  NoiseField* noiseY;               // owned by the skeleton, NoiseField(6, 101)
  NoiseField* noiseZ;               // owned by the skeleton, NoiseField(6, 102)
  int32_t tileCount;                // 640
  std::vector<Vector3> tileHomes;   // the rest position of each tile
  int32_t fleckCount;               // 300: billboards 2 to 301
};
