// SceneBordersWithin: on from 44.8 s to 75 s. 420 small coloured cubes, kept
// in a 5 x 12 x 7 lattice only as a seed, are placed every frame by three
// noise fields: a tight thread at first, a flowing cloud later. A ring of 60
// long boxes before a large back plate, the wandering light with two flares,
// 150 dark motes; the flares and the glow pump on the beat, and the titles
// "mb" (20 s) and "cd" (23.7 s of scene time) burst out of a white flash.
//
// World units; angles in degrees. The camera, cubes and beat follow the demo
// clock shifted by 34 s; the light, envelopes, motes and titles the scene
// clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersWithin : public SceneSkeleton {
 public:
  SceneBordersWithin(Demo* demo, const std::string& name);
  ~SceneBordersWithin() override;

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The two titles, "mb" then "cd"; a title whose flash envelope is 0 is
  // skipped.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The spread of the lattice at scene time s: e1 = easeIn(12, 8), e2 =
  // easeIn(4.5, 7.5).
  static float spreadE1(float s);
  static float spreadE2(float s);
  // Where cube n (1..420) with seed position b samples the noise, at the
  // shifted demo time d, k = e1 0.01 + 0.002:
  //   (k b.x + d 0.034 + 10, e2 b.z 0.7 + n 0.001 + k b.y + 10, d 0.02 + k b.z + 10)
  static Vector3 cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d);
  // The beat at shifted demo time d: for each bar i from 0 to 32 (o = i
  // 1.875) the windows (o + 42.6625) and (o + 43.5125), each rising for 0.6 s,
  // falling from start + 0.4 for 1 s, as easeWindow(d, 1, 2); the first counts
  // 0.9. Above 1 where windows overlap.
  static float beat(float d);
  // The first hit of bar i in timeline seconds (the second is 0.85 s later).
  static float barStart(int32_t i);

  int32_t lightObject;                  // object index of the light
  std::vector<int32_t> objectIds;       // 430 entries: 0 the back plate, 1..420 the cubes, the rest unused
  uint32_t flareCount;                  // 2: billboards 0 and 1
  NoiseField* noiseA;                   // owned by the skeleton, NoiseField(6, 111)
  NoiseField* noiseB;                   // owned by the skeleton, NoiseField(6, 121)
  NoiseField* noiseC;                   // owned by the skeleton, NoiseField(6, 131)
  int32_t cubeCount;                    // 420
  std::vector<Vector3> basePositions;   // the lattice, 420 entries
  uint32_t moteCount;                   // 150: billboards 2 to 151
};
