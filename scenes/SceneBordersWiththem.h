// SceneBordersWiththem: the greetings, on from 101 to 120 s. A 15 x 15 x 2
// block of tall thin needles ripples on the noise before a backdrop, 100
// small dark flecks drift on the flow, and a long text scrolls upward through
// the glow source only, so it is seen as a glowing shape behind the needles.
// It ends in a fade to black.
//
// World units; angles in degrees. The camera and the needles follow the demo
// clock, the light, envelopes, text and fade the scene clock (seconds).
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class Font;
class NoiseField;

class SceneBordersWiththem : public SceneSkeleton {
 public:
  SceneBordersWiththem(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // The greetings, drawn after the World into the glow source.
  void drawIntoGlowSource(float sceneSeconds, float demoSeconds) override;
  // The fade to black.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The greetings: 325 characters with 64 line feeds, opening with a line
  // feed, one name a line (3 to 12 characters), mostly with an empty line
  // after each, the lines growing shorter toward the end. The open projects
  // this production is built and played with.
  static const char greetings[];

  // The text pass on the current surface, with the camera as it stands:
  // t = scene seconds + 16. Enables 2D texturing, disables lighting and the
  // depth test, then with f = (t - 16) 6 sets the frame position
  // (9.8, 2 f 1.15 + 3.59, 7), axes (-1, 0, 0) and (0, -1, 0), colour
  // (0, 0, 0.2), alpha 1, metrics (3.4, 5.44, 1.7, 4.08), and draws the text
  // three times from the cursor (0, 0): the three draws build up the blue.
  // The text travels upward at 13.8 units a second. Nothing without a font.
  static void drawGreetings(Font* font, float t);

  // The fade: easeIn(t, 1, 1) of an envelope starting at 34 for 1 second;
  // black from t = 35 on, though the scene may still run.
  static float fadeToBlack(float t);

  int32_t lightObject;                // object index of the light
  std::vector<int32_t> objects;       // 460 entries: 0 the backdrop, 1..450 the needles
  uint32_t glareCount;                // 2: billboards 0 and 1 follow the light
  NoiseField* noiseX;                 // NoiseField(6, 100), owned by the skeleton
  NoiseField* noiseY;                 // NoiseField(6, 101), owned by the skeleton
  NoiseField* noiseZ;                 // NoiseField(6, 102), owned by the skeleton
  int32_t needleCount;                // 450
  std::vector<Vector3> needleHomes;   // rest position of each needle
  uint32_t fleckCount;                // 100 billboards after the glares
};
