// SceneBordersWithus: the wall, on from 120 to 135 s. 750 slim cube slivers,
// 250 rows by 3 columns in one layer, ripple on a noise field before a tall
// backdrop; a ring of 100 long plates, a spot light circling above, two
// glares at the light and 300 dark flecks round the camera. Soft shadows are
// tunable by two extra Parameters. It opens with a fade in from black.
//
// World units; angles in degrees. The camera and the slivers follow the demo
// clock, the light, envelopes and fade the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "geometry/Mesh.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersWithus : public SceneSkeleton {
 public:
  SceneBordersWithus(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The fade in from black.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // Gives every sliver the same base colours from `seed` (srand(seed) for
  // each), so that slivers differ only by their texture offsets. For sliver
  // n, with a, b, c three randomSigned() draws for each line, in this order:
  //   glow diffuse    (a 2.5 + 2.5, b 2.5 + 2.5, c 2.5 + 2.5) 1.5
  //   picture diffuse (a 1.5 + 1.5, b 1.5 + 1.5, c 1.5 + 1.5) 1.5
  //   picture ambient (a + 1, b + 1, c + 1) 0.1
  //   glow ambient    (a + 1, b + 1, c + 1) 0.05
  //   then the four stage-offset draws (picture U, V, glow U, V) with n
  // and the glow to slot 1, the picture to slot 0 of objects[n + 1].
  void recolourSlivers(int32_t seed);

  // The fade: easeOut(t, 1, 1) of an envelope starting at 13.75 for 3.25
  // seconds, black at the scene's start (t = 13) and gone after t = 17.
  static float fadeFromBlack(float t);

  int32_t lightObject;              // object index of the light
  std::vector<int32_t> objects;     // 760 entries: 0 the backdrop, 1..750 the slivers
  Material picture;                 // the slivers' picture material, kept for recolouring
  Material glow;                    // the slivers' glow material
  NoiseField* noiseX;               // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;               // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;               // NoiseField(6, 102), owned by the skeleton
  int32_t sliverCount;              // 750
  std::vector<Vector3> sliverHomes; // rest position of each sliver
  int32_t rows, columns, layers;    // 250, 3, 1
  int32_t fleckCount;               // 300 billboards after the glares
  uint32_t glareCount;              // 2: billboards 0 and 1 follow the light
  int32_t paletteSeed;              // 4517

  // Bound to the Parameter softShadowMaskBlurLoops; each frame copies it,
  // truncated, into the World's loop count. 0 leaves the masks unblurred.
  float softShadowMaskBlurLoops;
  float spareBlurAmount;            // 0.1, set and bound to nothing
};
