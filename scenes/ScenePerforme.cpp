#include "scenes/ScenePerforme.h"

#include <GL/glew.h>

#include <cmath>

#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"

namespace {

constexpr int32_t objectIdCount = 261;  // four more than the objects kept; the extra ones stay unused

}  // namespace

// ===========================================================================
// Construction
// ===========================================================================
ScenePerforme::ScenePerforme(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      noiseA(nullptr),
      noiseB(nullptr),
      noiseC(nullptr),
      boneCount(256),
      objectIds(objectIdCount, 0),
      flareCount(3),
      moteCount(400) {
  glowPasses = 7;
  setUpCamera("ScenePerforme.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- materials of the back plate and the ring ----
  Material picture;
  material(picture)
      .ambient(Vector3(0.6f, 0.8f, 1.142f) * 0.75f, 0.0f)
      .diffuse(Vector3(0.56f, 0.74f, 1.1526f) * 5.1f, 1.0f)
      .stages(3)
      .stage(0, stageModulate, "hopmet")
      .detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill");
  Material glow;
  material(glow)
      .ambient(Vector3(1, 1, 1) * 0.05f, 1.0f)
      .diffuse(Vector3(1.55f, 0.76f, 0.3f) * 1.5f, 1.0f)
      .stages(3)
      .stage(0, stageModulate, "solidnoisebump")
      .detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill")
      .mode(2, stageModulate);  // set twice; modulate is what stands

  // ---- 1. back plate ----
  objectIds[0] = addBackdrop("./models/cube.a3d", picture, glow, Vector3(8, 8, 1) * 3.0f, Vector3(0, 0, 3));

  // ---- 2. noise fields: the last one's seeding is where the ring's draws start ----
  noiseA = makeNoiseField(5, 2442);
  noiseB = makeNoiseField(5, 43243);
  noiseC = makeNoiseField(5, 5234);

  // ---- 3. the ring of boxes, one batch ----
  addBoxRing(picture, glow);

  // ---- 4. materials of the bones ----
  material(picture).ambient(Vector3(0.25f, 0.25f, 0.25f) * 0.75f).diffuse(Vector3(0.5f, 0.5f, 0.5f) * 5.1f);
  material(glow)
      .ambient(Vector3(0.9f, 1.0f, 1.0f) * 0.0f)
      .diffuse(Vector3(0.45f, 0.5f, 0.5f) * 1.0f)
      .texture(0, "hopmet")
      .scale(0, 2.0f, 2.0f);

  // ---- 5. the wall of bones, one batch; three draws each ----
  crtSrand(234);
  addModelBatch("./models/boney.a3d", static_cast<int32_t>(boneCount), picture, glow,
                [this](int32_t i, int32_t index, Mesh* bone) {
                  objectIds[i + 1] = index;
                  const int r = crtRand();
                  const int s = crtRand();
                  const int q = crtRand();
                  if (!bone) return;
                  bone->position =
                      Vector3(static_cast<float>(i % 16) - 7.5f, static_cast<float>(i / 16) - 7.5f, 0.0f) * 3.0f;
                  bone->rotation = Vector3(static_cast<float>((s / 32767.0 - 0.5) * 36.0 - 90.0),
                                           static_cast<float>((r / 32767.0 - 0.5) * 36.0), 0.0f);
                  bone->useMatrix = true;
                  // The taller a bone, the thinner.
                  const float h = static_cast<float>((q / 32767.0) * 7.0 + 1.0);
                  const float w = 2.0f * (9.0f - h) / 9.0f;
                  bone->scale = Vector3(w, h, w);
                });

  // ---- 6. flares round the light; no new seed ----
  FlareSpec flares;
  flares.count = flareCount;
  flares.alpha = 0.7f;
  flares.colourRule = FlareSpec::warmFromRaw;
  flares.warmScale = 0.265f;
  addFlares(flares);

  // ---- 7. dust motes: black specks that shadow what lies behind them ----
  crtSrand(23233);
  DustSpec dust;
  dust.count = moteCount;
  dust.spread = Vector3(29, 29, 3);
  dust.depth = -5.0f;
  dust.alpha = 0.75f;
  dust.tiled = true;
  dust.tileSpacingDraw = 0.1;
  addDust(dust);

  // ---- 8. the light, 9. the glow group ----
  lightObject = addStandardLight();
  addUsualGlowGroup();
}

// ===========================================================================
// Per frame
// ===========================================================================
void ScenePerforme::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float d = demoSeconds;

  // 1. The light wanders over the wall.
  const Vector3 lightPosition = orbitLight(lightObject, s * 0.5f);

  // 2. The wall ripples on the demo clock, so it follows timeMs directly and
  // keeps moving while the scene's own clock stands.
  for (uint32_t i = 0; i < boneCount; ++i) {
    Mesh* bone = object(objectIds[i + 1]);
    if (!bone) continue;
    Vector3 p = bone->position;
    p.x += d * 0.33233f + 100.0f;
    p.y += d * 0.12312233f + 100.0f;
    p.z += d * 0.03128523f + 100.0f;
    bone->rotation.z = noiseA->fractalSum(p, 5) * 32.34f;
    bone->rotation.y = noiseA->fractalSum(p, 6) * 36.34f;
  }

  // 3. The flares hang close round the light and breathe; 4. the motes drift
  // along a steady flow field, and a negative step takes them back.
  flaresFollow(0, flareCount, d, lightPosition);
  driftDust(flareCount, moteCount, noiseA, noiseB, noiseC, s, stepMs);
}

// ===========================================================================
// Overlay: the maker titles
// ===========================================================================
float ScenePerforme::kestrinStrength(float t) { return easeWindowAt(t, 15.8f, 0.1f, 16.2f, 0.1f); }

float ScenePerforme::ksStrength(float t) { return easeWindowAt(t, 21.4f, 0.5f, 22.5f, 0.15f); }

void ScenePerforme::drawOverlay(float sceneSeconds, float, int32_t) {
  const float t = sceneSeconds;
  const float a = kestrinStrength(t);
  const float b = ksStrength(t);
  if (a == 0.0f && b == 0.0f) return;

  OverlayOptions options;
  options.textured = true;
  options.noCullNoDepth = true;
  OverlayScope overlay(options);

  // The two titles never overlap in time; if they did, the second would
  // stack on the first one's matrix.
  if (a != 0.0f) {
    glTranslatef(0.025f, (t - 15.8f) * 0.1f - 0.5f, -1.25f);
    glRotatef(32.0f, 1.0f, 0.0f, 0.0f);
    glColor4f(0.0f, 0.0f, 0.0f, a);
    bindTitleTexture(texture("kestrin"), GL_ADD);
  }
  if (b != 0.0f) {
    glTranslatef((t - 21.4f) * -0.075f + 0.55f, (t - 21.4f) * 0.075f - 0.15f, -1.75f);
    glRotatef(24.0f, 0.2f, 1.0f, 0.0f);
    glColor4f(0.0f, 0.0f, 0.0f, b);
    bindTitleTexture(texture("ks"), GL_ADD);
  }

  linearFilters();
  glScalef(1.5f, 0.5f, 1.0f);
  const float c = a + b;
  glColor4f(0.0f, 0.0f, 0.0f, c * 0.15f);
  // A full-strength title hardly shakes, a fading one shakes hard.
  const float j = static_cast<float>(std::pow(1.0f - a - b, 4.0) + 0.0025);

  for (int k = 0; k < 15; ++k) {
    glPushMatrix();
    linearFilters();
    // Unseeded on purpose: the shake is the one thing that differs from run to run.
    const float r1 = static_cast<float>(randomSigned() * j);
    const float r2 = static_cast<float>(randomSigned() * j * 5.0);
    glTranslatef(r2, r1, 0.0f);
    glColor4f(0.22f, 0.3f, 0.5f, c * 0.5f);
    texturedQuad(1.05f);
    glColor4f(0.02f, 0.02f, 0.02f, c * 0.75f);
    texturedQuad(1.0f);
    glPopMatrix();
  }
}
