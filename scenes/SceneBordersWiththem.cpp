#include "scenes/SceneBordersWiththem.h"

#include <GL/glew.h>

#include <cmath>

#include "core/Demo.h"
#include "render/Font.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"

// One name a line, an empty line after each but the last, the names growing
// shorter toward the end. The scene depends only on the form, not the words.
const char SceneBordersWiththem::greetings[] =
    "\n"
    "sdl12-compat\n\n"
    "DejaVu fonts\n\n"
    "Linux kernel\n\n"
    "X.Org server\n\n"
    "GNU binutils\n\n"
    "Python 3.11\n\n"
    "CMake/CTest\n\n"
    "GoogleTest\n\n"
    "GoogleMock\n\n"
    "libmp3lame\n\n"
    "FreeType 2\n\n"
    "pkg-config\n\n"
    "libmpg123\n\n"
    "libstdc++\n\n"
    "coreutils\n\n"
    "Debian 12\n\n"
    "llvmpipe\n\n"
    "GNU Make\n\n"
    "GNU Bash\n\n"
    "GNU libc\n\n"
    "libpng16\n\n"
    "Mesa 3D\n\n"
    "SDL 1.2\n\n"
    "FFmpeg\n\n"
    "ccache\n\n"
    "libX11\n\n"
    "Xvfb\n\n"
    "zlib\n\n"
    "GLEW\n\n"
    "GLU\n\n"
    "GCC\n\n"
    "Git\n";

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWiththem::SceneBordersWiththem(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objects(460, 0),
      glareCount(2),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      needleCount(0),
      fleckCount(0) {
  glowPasses = 6;
  // ---- 1. camera ----
  setUpCamera("SceneBordersWiththem.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- 2. the two materials, kept for the constructor only ----
  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1
  material(P).ambient(Vector3(1, 1, 1) * 0.5f, 0.0f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f, 1.0f);
  material(P).stages(2).stage(0, stageModulate, "planartexture").scale(0, 2.0f, 2.0f).cubeMap(1, stageAdd, "cubemap.bill");
  P.refractive = false;
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  material(G).stages(2).stage(0, stageModulate, "solidnoisebump").scale(0, 1.0f, 1.0f).cubeMap(1, stageAdd, "cubemap.bill");
  material(G).mode(2, stageModulate);  // a third stage mode beyond stageCount: never drawn

  // ---- 3. the backdrop ----
  needleCount = 450;
  material(P).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.35f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 2.1f);
  material(G).diffuse(Vector3(0.3f, 0.46f, 1.15f) * 8.5f).ambient(Vector3(1, 1, 1) * 0.15f);
  objects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(7.5f, 7.5f, 1.0f) * 5.0f, Vector3(0, 0, 10));

  // ---- 4. noise fields: the seeding draws are reseeded away by step 6 ----
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  needleHomes.reserve(needleCount);

  // ---- 5. needle looks: the materials of step 2, stage 0 "hopmet" ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).texture(0, "hopmet");
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f).texture(0, "hopmet");

  // ---- 6. the needles: z outermost, x innermost; three draws each ----
  crtSrand(234);
  std::vector<int32_t> needles;
  addLattice("./models/cube.a3d", LatticeShape(), P, G, needles, needleHomes);
  for (int32_t n = 0; n < needleCount; ++n) objects[n + 1] = needles[n];

  // ---- 7. two palettes, one for each layer of 225 ----
  ColourFamilies palettes;
  palettes.groupSize = 225;
  palettes.seedBase = 1445430;
  palettes.glowDiffuse = 2.5f;
  palettes.pictureDiffuse = 0.4f;
  palettes.pictureAmbient = 0.125f;
  applyColourFamilies(palettes, P, G, needles, 0, needleCount);

  // ---- 8. two glares round the light ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "bill_d2ch";
  glares.halfSize = Vector3(8, 4, 5);
  glares.alpha = 0.9f;
  glares.colour = Vector3(1, 1, 1) * 0.65f;
  addFlares(glares);

  // ---- 9. the needles' unused billboards are left out: the next step reseeds ----

  // ---- 10. small dark blue flecks, billboards 2 to 101 ----
  fleckCount = 100;
  crtSrand(23233);
  DustSpec flecks;
  flecks.count = fleckCount;
  flecks.spread = Vector3(9, 9, 10);
  flecks.alpha = 0.75f;
  flecks.colour = Vector3(0.05f, 0.11f, 0.33f);
  flecks.tiled = false;
  flecks.tileSpacingDraw = 1.0;
  addDust(flecks);

  // ---- 11, 12. the light and the glow group ----
  lightObject = addStandardLight(0.5f);
  addUsualGlowGroup();
}

// ===========================================================================
// Per frame
// ===========================================================================
void SceneBordersWiththem::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float t = sceneSeconds + 16.0f;
  const float m = demoSeconds + 59.0f + 35.0f;

  // 1. The camera wanders and keeps looking at the origin.
  const Vector3 v = Vector3(0.21234f, 0.03234f, 0.0723345f) * m;
  const float x = noiseX->fractalSum(v, 4) * 2.32f;
  const float y = noiseY->fractalSum(v, 4) * 2.2f;
  const float depth = std::fabs(noiseZ->fractalSum(v, 4));
  camera->position = Vector3(x, y, depth * depth * depth * 7.2f - 10.0f);
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light, the spreading envelopes, the needles on the swarm and the
  // glares, as the wall of slivers has them.
  const Vector3 lightPosition = orbitLight(lightObject, t * 0.5f);
  const float a = easeInAt(t, 12.0f, 6.0f);
  const float b = easeInAt(t, 6.0f, 6.0f);
  placeOnSwarm(objects, 1, needleHomes, noiseX, noiseY, noiseZ, a, b, m);
  flaresFollow(0, glareCount, m, lightPosition);

  // 3. The flecks integrate their drift, so a negative step retraces it.
  DustDrift drift;
  drift.sampleScale = 0.1f;
  drift.zScale = 0.25f;
  driftDust(glareCount, fleckCount, noiseX, noiseY, noiseZ, t, stepMs, drift);
}

void SceneBordersWiththem::drawGreetings(Font* font, float t) {
  if (!font) return;
  glEnable(GL_TEXTURE_2D);
  glDisable(GL_LIGHTING);
  glDisable(GL_DEPTH_TEST);
  const float f = (t - 16.0f) * 6.0f;
  font->setFrame(Vector3(9.8f, 2.0f * f * 1.15f + 3.59f, 7.0f), Vector3(-1, 0, 0), Vector3(0, -1, 0));
  font->setColor(0.0f, 0.0f, 0.2f);
  font->setAlpha(1.0f);
  font->setMetrics(3.4f, 5.44f, 1.7f, 4.08f);
  for (int pass = 0; pass < 3; ++pass) {  // three identical draws build up the blue
    font->setCursor(0, 0);
    font->draw(greetings, false, 0.0f, 0.0f, 1.0f, 1.0f, nullptr, 0.0f, 0);
  }
}

// 4. Still in the glow source's target with the low camera applied: the
// text shows only as glow, the picture pass never draws it.
void SceneBordersWiththem::drawIntoGlowSource(float sceneSeconds, float) {
  drawGreetings(demo->currentFont(), sceneSeconds + 16.0f);
}

// ===========================================================================
// Overlay: the fade to black
// ===========================================================================
float SceneBordersWiththem::fadeToBlack(float t) { return easeInAt(t, 34.0f, 1.0f); }

void SceneBordersWiththem::drawOverlay(float sceneSeconds, float, int32_t) {
  const float value = fadeToBlack(sceneSeconds + 16.0f);
  if (value != 0.0f) drawFlash(0.0f, 0.0f, 0.0f, value, 0.5f);
}
