#include "scenes/SceneBordersWithout.h"

#include <GL/glew.h>

#include <cmath>

#include "core/Demo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/RenderTarget.h"
#include "scenes/CubeLattice.h"

namespace {

constexpr int32_t objectIdCount = 410;  // ten more than the objects kept; the extra ones stay unused

float easeInAt(float t, float start, float duration, float power = 1.0f) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeIn(t, 1.0f, power);
}

float easeOutAt(float t, float start, float duration) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeOut(t, 1.0f, 1.0f);
}

float hitAt(float d, float start) {
  Envelope e;
  e.start = start;
  e.outStart = start + 0.4f;
  e.duration = 0.6f;
  e.outDuration = 1.0f;
  return e.easeWindow(d, 1.0f, 2.0f);
}

}  // namespace

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithout::SceneBordersWithout(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objectIds(objectIdCount, 0),
      flareCount(2),
      noiseA(nullptr),
      noiseB(nullptr),
      noiseC(nullptr),
      cubeCount(400),
      moteCount(75) {
  glowPasses = 8;
  setUpCamera("SceneBordersWithout.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- materials as in the sister scene: only stage 0 is drawn ----
  Material picture;
  Material glow;
  for (Material* m : {&picture, &glow}) {
    m->stageCount = 1;
    m->stageMode[0] = 1;
    m->stageTexture[0] = texture("planartexture");
    m->stageMode[1] = 1;
    m->stageTexture[1] = texture("billbig");
    m->stageDetail[1] = true;
    m->stageTexture[2] = texture("cubemap.bill");
  }
  picture.stageMode[2] = 2;
  glow.stageMode[2] = 1;
  picture.ambient = Vector3(0.4f, 0.74f, 1.82f) * 0.75f;
  picture.diffuse = Vector3(0.56f, 0.74f, 1.526f) * 5.1f;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.diffuse = Vector3(1.15f, 0.66f, 0.3f) * 1.5f;

  // ---- 1. the square back plate ----
  objectIds[0] = world.addModel("./models/cube.a3d", picture);
  setGlowMaterial(objectIds[0], glow);
  if (Mesh* plate = object(objectIds[0])) {
    plate->scale = Vector3(5, 5, 1) * 6.0f;
    plate->position = Vector3(0, 0, 10);
  }

  // ---- 2. noise fields: the last one's seeding is where the ring's draws start ----
  noiseA = new NoiseField(6, 100);
  noiseB = new NoiseField(6, 101);
  noiseC = new NoiseField(6, 102);

  // ---- 3. the ring, closer and shorter ----
  addPlateRing(*this, 70, picture, glow);

  // ---- 4, 5. the lattice of cubes, tumbling freely ----
  picture.ambient = Vector3(1, 1, 1) * 0.5f;
  picture.diffuse = Vector3(1.66f, 0.64f, 0.36f) * 5.1f;
  picture.stageTexture[0] = texture("hopmet");
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.diffuse = Vector3(2.5f, 1.1f, 0.5f) * 1.5f;
  glow.stageTexture[0] = texture("hopmet");
  crtSrand(234);
  LatticeSpec lattice;
  lattice.countX = 10;
  lattice.countY = 10;
  lattice.countZ = 4;
  lattice.centre = Vector3(4.5f, 4.5f, 1.5f);
  lattice.tumble = 186.0f;
  std::vector<int32_t> cubes;
  addCubeLattice(*this, lattice, picture, glow, cubes, basePositions);
  for (int32_t n = 0; n < cubeCount; ++n) objectIds[n + 1] = cubes[n];

  // ---- 6. colour families of 100 cubes ----
  ColourFamilies families;
  families.groupSize = 100;
  families.seedBase = 1993;
  families.glowDiffuse = 0.075f;
  families.glowAmbient = 0.015f;
  families.pictureDiffuse = 0.3f;
  families.pictureAmbient = 0.15f;
  applyColourFamilies(*this, families, picture, glow, cubes);

  // ---- 7. flares at the light ----
  crtSrand(232);
  for (uint32_t i = 0; i < flareCount; ++i) {
    Billboard* flare = new Billboard(camera, true);
    flare->texture = texture("billbig");
    flare->halfSize = Vector3(8, 4, 5);
    const int first = crtRand();
    (void)crtRand();  // drawn and dropped
    const int third = crtRand();
    flare->position = Vector3(static_cast<float>((first / 32767.0) * 5.0 + 10.0), 0.0f,
                              static_cast<float>(2.0 * (third / 32767.0 - 0.5) * 30.0));  // the first frame moves it
    flare->alpha = 0.9f;
    // The raw 15-bit value: the channels land far above 1 and GL clamps them.
    const int f = crtRand();
    flare->colour = Vector3(static_cast<float>(f * 0.1 + 0.9), static_cast<float>(f * 0.06 + 0.63),
                            static_cast<float>(f * 0.03 + 0.4)) *
                    0.65f;
    world.billboards.push_back(flare);
  }

  // ---- 8. wine-red motes in tiles of 3 x 3 ----
  crtSrand(23233);
  for (uint32_t m = 0; m < moteCount; ++m) {
    const uint32_t j = m + flareCount;
    Billboard* mote = new Billboard(camera, true);
    mote->texture = texture(j % 2 == 0 ? "mustis2" : "mustis5");
    const float s = static_cast<float>(2.0 * (randomSigned() * 0.025 + 0.15));
    mote->halfSize = Vector3(s, s, 1.0f);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    mote->position = Vector3(static_cast<float>(c * 9.0), static_cast<float>(b * 9.0), static_cast<float>(2.0 * a));
    mote->alpha = 0.75f;
    mote->colour = Vector3(0.25f, 0.12f, 0.12f) * static_cast<float>((1.0 - randomUnit() * 0.95) * 1.5);
    mote->blendMode = 1;
    mote->castsShadow = true;
    mote->tiled = true;
    mote->tileSpacing = 0.0f;
    world.billboards.push_back(mote);
  }

  // ---- 9. the light and the glow group ----
  lightObject = addStandardLight();
  setUsualGlowDefaults();
  registerGlowParameters();
}

SceneBordersWithout::~SceneBordersWithout() {
  delete noiseA;
  delete noiseB;
  delete noiseC;
}

// ===========================================================================
// Per frame
// ===========================================================================
float SceneBordersWithout::spreadE1(float s) { return easeInAt(s, 16.0f, 6.0f); }
float SceneBordersWithout::spreadE2(float s) { return easeInAt(s, 6.0f, 5.0f); }

Vector3 SceneBordersWithout::cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d) {
  const float k = e1 * 0.01f + 0.002f;
  const float q = e2 * 0.3f;
  // The time term of z is multiplied by 0 on purpose: the cloud does not drift in depth.
  return Vector3(k * b.x + d * 0.034f + 10.0f, q * b.z * 0.7f + k * b.y + n * 0.00003f + 10.0f,
                 d * 0.0f + k * b.z + 10.0f);
}

float SceneBordersWithout::barStart(int32_t i) { return i * 1.875f + 53.4f - 24.0f; }

float SceneBordersWithout::beat(float d) {
  float acc = 0.0f;
  for (int32_t i = 0; i <= 10; ++i) {
    const float o = i * 1.875f;
    acc += hitAt(d, o + 53.4f);
    acc += hitAt(d, o + 54.25f);
  }
  return acc;
}

float SceneBordersWithout::rippleSpacing(float acc, float s, float r) {
  const double pi = 3.141593;
  return static_cast<float>(0.5 * (acc * 5.0 * std::sin(2.0 * s * pi * 1.5 + r * pi)) / (r + 1.0));
}

float SceneBordersWithout::titleStrength(float s) { return easeOutAt(s, 3.0f, 1.5f); }
float SceneBordersWithout::titleSlide(float s) { return easeOutAt(s, 0.0f, 10.0f); }
float SceneBordersWithout::blackness(float s) { return easeOutAt(s, 2.0f, 1.0f); }
float SceneBordersWithout::titleDisorder(float s) { return 1.0f - 0.996f * easeInAt(s, 0.0f, 1.0f, 2.0f); }

void SceneBordersWithout::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float step = static_cast<float>(stepMs) / 1000.0f;
  const float d = demoSeconds + 24.0f;

  // 1. The camera rolls wildly and pumps its zoom; it moves only in depth.
  // These write the bound members, so flow charts on them do not last.
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  camera->zoom = noiseA->fractalSum(p, 7) * 0.32f + 0.52f;
  camera->roll = noiseB->fractalSum(p, 7) * 173.2f;
  camera->position.z = noiseC->fractalSum(p, 7) * 6.2f - 10.0f;

  // 2. The light wanders.
  const float u = s * 0.5f;
  placeLightAimedAtOrigin(lightObject, Vector3(12.5f * std::cos(u), 10.5f * std::sin(u * 0.5f), -9.0f));
  Mesh* light = object(lightObject);
  const Vector3 lightPosition = light ? light->position : Vector3(0, 0, 0);

  // 3, 4. The lattice spreads as the envelopes stretch the sampling.
  const float e1 = spreadE1(s);
  const float e2 = spreadE2(s);
  for (int32_t n = 1; n <= cubeCount; ++n) {
    Mesh* cube = object(objectIds[n]);
    if (!cube) continue;
    const Vector3 q = cubeSamplePoint(basePositions[n - 1], n, e1, e2, d);
    cube->position = noisePlace(*noiseA, *noiseB, *noiseC, q, 7, 6, 7, 6.5f);
  }

  // 5. Flares round the light.
  for (uint32_t i = 0; i < flareCount && i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const float q = d * 0.2f;
    const Vector3 offset(std::sin(fi * 0.14123f + q) * 0.16f, std::cos(d * 0.314f + fi * 0.1823f) * 0.17999999f,
                         std::cos(std::sin(fi * 0.74342f + q)) * 0.03f);
    world.billboards[i]->position = offset + lightPosition;
  }

  // 6, 7. The motes drift, and the beat sends a ripple of tile spacing out
  // from the centre.
  const float acc = beat(d);
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m) {
    Billboard* mote = world.billboards[flareCount + m];
    mote->timeStep = step;
    mote->time = s;
    const Vector3 q = mote->position * 0.1f;
    Vector3 w = noisePlace(*noiseA, *noiseB, *noiseC, q, 5, 5, 5, 1.0f) * step;
    w.z *= 0.1f;
    mote->position += w;
    const Vector3& at = mote->position;
    const float r = std::sqrt(at.x * at.x + at.y * at.y) * 0.5f;
    savedMotePositions[m] = at;
    mote->tileSpacing = rippleSpacing(acc, s, r);
  }
}

void SceneBordersWithout::render(int32_t timeMs, int32_t stepMs) {
  SceneSkeleton::render(timeMs, stepMs);
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m)
    world.billboards[flareCount + m]->position = savedMotePositions[m];
}

// ===========================================================================
// Overlay: out of black, under the title
// ===========================================================================
void SceneBordersWithout::drawOverlay(float sceneSeconds, float, int32_t) {
  const float s = sceneSeconds;
  const float e3 = titleStrength(s);
  const float e4 = titleSlide(s);
  if (e3 == 0.0f) return;  // the overlay ends at 4.5 s

  glDisable(GL_LIGHTING);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();  // the camera's projection stays
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glTranslatef(0.0f, 0.0f, 0.667f);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_TEXTURE_2D);

  // The fade from black.
  const float e5 = blackness(s);
  if (e5 != 0.0f) {
    glColor4f(0.0f, 0.0f, 0.0f, e5);
    glBegin(GL_QUADS);
    glVertex3f(-1.0f, -1.0f, -1.0f);
    glVertex3f(1.0f, -1.0f, -1.0f);
    glVertex3f(1.0f, 1.0f, -1.0f);
    glVertex3f(-1.0f, 1.0f, -1.0f);
    glEnd();
  }

  // The title, added to the picture.
  TitleLayers layers;
  layers.texture = texture("ostlb");
  layers.blendDestination = GL_ONE;
  layers.heightSpread = 2.2f;
  layers.rim = Vector3(0.22f, 0.3f, 0.5f);
  layers.rimAlpha = e3 * 0.5f;
  layers.coreAlpha = e3 * 0.75f;
  drawTitleLayers(layers, *noiseA, *noiseC, e4, titleDisorder(s), s);

  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}
