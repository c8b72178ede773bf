#include "scenes/ScenePerforme.h"

#include <GL/glew.h>

#include <cmath>

#include "core/Demo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"

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
  picture.ambient = Vector3(0.6f, 0.8f, 1.142f) * 0.75f;
  picture.ambient.alpha = 0.0f;
  picture.diffuse = Vector3(0.56f, 0.74f, 1.1526f) * 5.1f;
  picture.diffuse.alpha = 1.0f;
  picture.stageCount = 3;
  picture.stageMode[0] = 1;
  picture.stageTexture[0] = texture("hopmet");
  picture.stageMode[1] = 1;
  picture.stageTexture[1] = texture("billbig");
  picture.stageDetail[1] = true;
  picture.stageMode[2] = 2;
  picture.stageTexture[2] = texture("cubemap.bill");
  picture.stageCubeMap[2] = true;

  Material glow;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.ambient.alpha = 1.0f;
  glow.diffuse = Vector3(1.55f, 0.76f, 0.3f) * 1.5f;
  glow.diffuse.alpha = 1.0f;
  glow.stageCount = 3;
  glow.stageMode[0] = 1;
  glow.stageTexture[0] = texture("solidnoisebump");
  glow.stageMode[1] = 1;
  glow.stageTexture[1] = texture("billbig");
  glow.stageDetail[1] = true;
  glow.stageMode[2] = 2;
  glow.stageMode[2] = 1;  // set twice; modulate is what stands
  glow.stageTexture[2] = texture("cubemap.bill");
  glow.stageCubeMap[2] = true;

  // ---- 1. back plate ----
  objectIds[0] = world.addModel("./models/cube.a3d", picture);
  setGlowMaterial(objectIds[0], glow);
  if (Mesh* plate = object(objectIds[0])) {
    plate->scale = Vector3(8, 8, 1) * 3.0f;
    plate->position = Vector3(0, 0, 3);
  }

  // ---- 2. noise fields: the last one's seeding is where the ring's draws start ----
  noiseA = new NoiseField(5, 2442);
  noiseB = new NoiseField(5, 43243);
  noiseC = new NoiseField(5, 5234);

  // ---- 3. the ring of boxes, one batch ----
  addBoxRing(picture, glow);

  // ---- 4. materials of the bones ----
  picture.ambient = Vector3(0.25f, 0.25f, 0.25f) * 0.75f;
  picture.diffuse = Vector3(0.5f, 0.5f, 0.5f) * 5.1f;
  glow.ambient = Vector3(0.9f, 1.0f, 1.0f) * 0.0f;
  glow.diffuse = Vector3(0.45f, 0.5f, 0.5f) * 1.0f;
  glow.stageTexture[0] = texture("hopmet");
  glow.stageScaleU[0] = 2.0f;
  glow.stageScaleV[0] = 2.0f;

  // ---- 5. the wall of bones, one batch ----
  crtSrand(234);
  for (int32_t i = 0; i < static_cast<int32_t>(boneCount); ++i) {
    objectIds[i + 1] = world.addModel("./models/boney.a3d", picture);
    setGlowMaterial(objectIds[i + 1], glow);
    markBatch(objectIds[i + 1], i, static_cast<int32_t>(boneCount));
    // Drawn whether or not the model loaded, so that what follows stays the same.
    const int r = crtRand();
    const int s = crtRand();
    const int q = crtRand();
    Mesh* bone = object(objectIds[i + 1]);
    if (!bone) continue;
    bone->position = Vector3(static_cast<float>(i % 16) - 7.5f, static_cast<float>(i / 16) - 7.5f, 0.0f) * 3.0f;
    bone->rotation = Vector3(static_cast<float>((s / 32767.0 - 0.5) * 36.0 - 90.0),
                             static_cast<float>((r / 32767.0 - 0.5) * 36.0), 0.0f);
    bone->useMatrix = true;
    // The taller a bone, the thinner.
    const float h = static_cast<float>((q / 32767.0) * 7.0 + 1.0);
    const float w = 2.0f * (9.0f - h) / 9.0f;
    bone->scale = Vector3(w, h, w);
  }

  // ---- 6. flares round the light; no new seed ----
  for (uint32_t i = 0; i < flareCount; ++i) {
    Billboard* flare = new Billboard(camera, true);
    flare->texture = texture("billbig");
    flare->halfSize = Vector3(8, 4, 5);
    const int first = crtRand();
    (void)crtRand();  // drawn and dropped
    const int third = crtRand();
    flare->position = Vector3(static_cast<float>((first / 32767.0) * 5.0 + 10.0), 0.0f,
                              static_cast<float>(2.0 * (third / 32767.0 - 0.5) * 30.0));  // the first frame moves it
    flare->alpha = 0.7f;
    // The raw 15-bit value, not scaled to 0..1: the channels land far above 1
    // and GL clamps them, so the flares burn white. Kept as it is.
    const int f = crtRand();
    flare->colour = Vector3(static_cast<float>(f * 0.1 + 0.9), static_cast<float>(f * 0.06 + 0.63),
                            static_cast<float>(f * 0.03 + 0.4)) *
                    0.265f;
    world.billboards.push_back(flare);
  }

  // ---- 7. dust motes: black specks that shadow what lies behind them ----
  crtSrand(23233);
  for (uint32_t m = 0; m < moteCount; ++m) {
    const uint32_t j = m + flareCount;
    Billboard* mote = new Billboard(camera, true);
    mote->texture = texture(j % 2 == 0 ? "mustis2" : "mustis5");
    const float s = static_cast<float>(randomSigned() * 0.025 + 0.15);
    mote->halfSize = Vector3(s, s, 1.0f);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    mote->position = Vector3(static_cast<float>(c * 29.0), static_cast<float>(b * 29.0),
                             static_cast<float>(a * 3.0 - 5.0));
    mote->alpha = 0.75f;
    mote->colour = Vector3(0, 0, 0);
    mote->blendMode = 1;
    mote->castsShadow = true;
    mote->tiled = true;
    mote->tileSpacing = static_cast<float>(randomUnit() * 0.1);
    world.billboards.push_back(mote);
  }

  // ---- 8. the light ----
  lightObject = addStandardLight();

  // ---- 9. glow group ----
  setUsualGlowDefaults();
  registerGlowParameters();
}

ScenePerforme::~ScenePerforme() {
  delete noiseA;
  delete noiseB;
  delete noiseC;
}

// ===========================================================================
// Per frame
// ===========================================================================
void ScenePerforme::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float d = demoSeconds;
  const float timeStep = static_cast<float>(stepMs) / 1000.0f;

  // 1. The light wanders over the wall.
  const float u = s * 0.5f;
  placeLightAimedAtOrigin(lightObject, Vector3(12.5f * std::cos(u), 10.5f * std::sin(u * 0.5f), -9.0f));
  Mesh* light = object(lightObject);
  const Vector3 lightPosition = light ? light->position : Vector3(0, 0, 0);

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

  // 3. The flares hang close round the light and breathe.
  for (uint32_t i = 0; i < flareCount && i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const float q = d * 0.2f;
    const Vector3 offset(std::sin(fi * 0.14123f + q) * 0.16f, std::cos(d * 0.314f + fi * 0.1823f) * 0.17999999f,
                         std::cos(std::sin(fi * 0.74342f + q)) * 0.03f);
    world.billboards[i]->position = offset + lightPosition;
  }

  // 4. The motes drift along a steady flow field; a negative step takes them back.
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m) {
    Billboard* mote = world.billboards[flareCount + m];
    mote->timeStep = timeStep;
    mote->time = s;
    const Vector3 p = mote->position * 0.1f;
    const float wx = noiseA->fractalSum(p, 5);
    const float wy = noiseB->fractalSum(p, 5);
    const float wz = noiseC->fractalSum(p, 5);
    mote->position += Vector3(wx, wy, wz) * timeStep;
  }
}

// ===========================================================================
// Overlay: the maker titles
// ===========================================================================
float ScenePerforme::kestrinStrength(float t) {
  Envelope e;
  e.start = 15.8f;
  e.outStart = 16.2f;
  e.duration = 0.1f;
  e.outDuration = 0.1f;
  return e.easeWindow(t, 1.0f, 1.0f);
}

float ScenePerforme::ksStrength(float t) {
  Envelope e;
  e.start = 21.4f;
  e.outStart = 22.5f;
  e.duration = 0.5f;
  e.outDuration = 0.15f;
  return e.easeWindow(t, 1.0f, 1.0f);
}

namespace {

// The title quad at z = -1, corners at +-h, the image upright.
void titleQuad(float h) {
  glBegin(GL_QUADS);
  glTexCoord2f(0.0f, 1.0f);
  glVertex3f(-h, -h, -1.0f);
  glTexCoord2f(1.0f, 1.0f);
  glVertex3f(h, -h, -1.0f);
  glTexCoord2f(1.0f, 0.0f);
  glVertex3f(h, h, -1.0f);
  glTexCoord2f(0.0f, 0.0f);
  glVertex3f(-h, h, -1.0f);
  glEnd();
}

void titleTextureState(GLuint name) {
  glBindTexture(GL_TEXTURE_2D, name);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
}

void linearFilters() {
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

}  // namespace

void ScenePerforme::drawOverlay(float sceneSeconds, float, int32_t) {
  const float t = sceneSeconds;
  const float a = kestrinStrength(t);
  const float b = ksStrength(t);
  if (a == 0.0f && b == 0.0f) return;

  glDisable(GL_LIGHTING);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();  // the camera's projection stays
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  glEnable(GL_TEXTURE_2D);

  // The two titles never overlap in time; if they did, the second would
  // stack on the first one's matrix.
  if (a != 0.0f) {
    glTranslatef(0.025f, (t - 15.8f) * 0.1f - 0.5f, -1.25f);
    glRotatef(32.0f, 1.0f, 0.0f, 0.0f);
    glColor4f(0.0f, 0.0f, 0.0f, a);
    titleTextureState(texture("kestrin"));
  }
  if (b != 0.0f) {
    glTranslatef((t - 21.4f) * -0.075f + 0.55f, (t - 21.4f) * 0.075f - 0.15f, -1.75f);
    glRotatef(24.0f, 0.2f, 1.0f, 0.0f);
    glColor4f(0.0f, 0.0f, 0.0f, b);
    titleTextureState(texture("ks"));
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
    titleQuad(1.05f);
    glColor4f(0.02f, 0.02f, 0.02f, c * 0.75f);
    titleQuad(1.0f);
    glPopMatrix();
  }

  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}
