// SceneBordersWithout: on from 26.5 s to 44.8 s, and the scene the picture
// lands on after the rewind. The sister of SceneBordersWithin: 400 small
// coloured cubes seeded in a 10 x 10 x 4 lattice and placed by noise, a ring
// of 70 plates, a square back plate. The camera rolls over a huge range and
// pumps its zoom; 75 wine-red motes carry a ripple that travels out from the
// centre on the beat. The scene opens out of black under the title "ostlb".
//
// World units; angles in degrees. The camera, cubes and beat follow the demo
// clock shifted by 24 s; the light, envelopes, motes and title the scene
// clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersWithout : public SceneSkeleton {
 public:
  SceneBordersWithout(Demo* demo, const std::string& name);
  ~SceneBordersWithout() override;

  // The skeleton's frame, then each mote's position is set again from
  // savedMotePositions (the same values: no visible effect).
  void render(int32_t timeMs, int32_t stepMs) override;
  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The fade out of black and the title; nothing once titleStrength is 0.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The spread of the lattice at scene time s: e1 = easeIn(16, 6), e2 =
  // easeIn(6, 5).
  static float spreadE1(float s);
  static float spreadE2(float s);
  // Where cube n (1..400) with seed position b samples the noise, at the
  // shifted demo time d, k = e1 0.01 + 0.002, q = e2 0.3:
  //   (k b.x + d 0.034 + 10, q b.z 0.7 + k b.y + n 0.00003 + 10, d 0 + k b.z + 10)
  static Vector3 cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d);
  // The beat at shifted demo time d: for each bar i from 0 to 10 (o = i
  // 1.875) the windows (o + 53.4) and (o + 54.25), each rising for 0.6 s,
  // falling from start + 0.4 for 1 s, as easeWindow(d, 1, 2), summed.
  static float beat(float d);
  // The first hit of bar i in timeline seconds (the second is 0.85 s later).
  static float barStart(int32_t i);
  // A mote's tile spacing for the beat acc at scene time s and half its
  // distance r from the z axis: 0.5 (acc 5 sin(2 s pi 1.5 + r pi)) / (r + 1),
  // pi the double 3.141593. A ring wave out from the centre.
  static float rippleSpacing(float acc, float s, float r);
  // The overlay's envelopes at scene time s: the title easeOut(3, 1.5), its
  // slide easeOut(0, 10), the black easeOut(2, 1), the disorder
  // 1 - 0.996 easeIn(0, 1) of power 2.
  static float titleStrength(float s);
  static float titleSlide(float s);
  static float blackness(float s);
  static float titleDisorder(float s);

  int32_t lightObject;                  // object index of the light
  std::vector<int32_t> objectIds;       // 410 entries: 0 the back plate, 1..400 the cubes, the rest unused
  uint32_t flareCount;                  // 2: billboards 0 and 1
  NoiseField* noiseA;                   // owned by the skeleton, NoiseField(6, 100)
  NoiseField* noiseB;                   // owned by the skeleton, NoiseField(6, 101)
  NoiseField* noiseC;                   // owned by the skeleton, NoiseField(6, 102)
  Vector3 savedMotePositions[600];      // the first moteCount used
  int32_t cubeCount;                    // 400
  std::vector<Vector3> basePositions;   // the lattice, 400 entries
  uint32_t moteCount;                   // 75: billboards 2 to 76
};
