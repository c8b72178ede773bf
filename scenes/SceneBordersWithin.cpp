#include "scenes/SceneBordersWithin.h"

#include <GL/glew.h>

#include <cmath>

#include "core/Demo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "scenes/CubeLattice.h"

namespace {

constexpr int32_t objectIdCount = 430;  // ten more than the objects kept; the extra ones stay unused

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
SceneBordersWithin::SceneBordersWithin(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objectIds(objectIdCount, 0),
      flareCount(2),
      noiseA(nullptr),
      noiseB(nullptr),
      noiseC(nullptr),
      cubeCount(420),
      moteCount(150) {
  glowPasses = 8;
  glowSourceWritesColour = false;  // the glow source's base pass only fills depth
  setUpCamera("SceneBordersWithin.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- materials: only stage 0 is drawn; stages 1 and 2 stay in the record ----
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

  // ---- 1, 2. back plate ----
  picture.ambient = Vector3(0.4f, 0.74f, 1.82f) * 0.75f;
  picture.diffuse = Vector3(0.56f, 0.74f, 1.526f) * 5.1f;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.diffuse = Vector3(1.15f, 0.66f, 0.3f) * 1.5f;
  objectIds[0] = world.addModel("./models/cube.a3d", picture);
  setGlowMaterial(objectIds[0], glow);
  if (Mesh* plate = object(objectIds[0])) {
    plate->scale = Vector3(2.5f, 6, 1) * 6.0f;
    plate->position = Vector3(0, 0, 10);
  }

  // ---- 3. noise fields: the last one's seeding is where the ring's draws start ----
  noiseA = new NoiseField(6, 111);
  noiseB = new NoiseField(6, 121);
  noiseC = new NoiseField(6, 131);

  // ---- 4. the ring of 60 long boxes ----
  RingShape ring;
  ring.count = 60;
  addBoxRing(picture, glow, ring);

  // ---- 5, 6. the lattice of cubes ----
  picture.ambient = Vector3(1, 1, 1) * 0.5f;
  picture.diffuse = Vector3(1.66f, 0.64f, 0.36f) * 5.1f;
  picture.stageTexture[0] = texture("hopmet");
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.diffuse = Vector3(2.5f, 1.1f, 0.5f) * 1.5f;
  glow.stageTexture[0] = texture("hopmet");
  crtSrand(234);
  LatticeSpec lattice;
  lattice.countX = 5;
  lattice.countY = 12;
  lattice.countZ = 7;
  lattice.centre = Vector3(2, 5.5f, 3);
  lattice.tumble = 36.0f;
  std::vector<int32_t> cubes;
  addCubeLattice(*this, lattice, picture, glow, cubes, basePositions);
  for (int32_t n = 0; n < cubeCount; ++n) objectIds[n + 1] = cubes[n];

  // ---- 7. colour families of 60 cubes ----
  ColourFamilies families;
  families.groupSize = 60;
  families.seedBase = 1993;
  families.glowDiffuse = 0.05f;
  families.glowAmbient = 0.01f;
  families.pictureDiffuse = 0.1f;
  families.pictureAmbient = 0.05f;
  applyColourFamilies(*this, families, picture, glow, cubes);

  // ---- 8. flares at the light ----
  crtSrand(232);
  for (uint32_t i = 0; i < flareCount; ++i) {
    Billboard* flare = new Billboard(camera, true);
    flare->texture = texture("billbig");
    flare->halfSize = Vector3(8, 4, 5) * 1.5f;
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

  // ---- 9. motes, going on from the flares' sequence ----
  for (uint32_t m = 0; m < moteCount; ++m) {
    const uint32_t j = m + flareCount;
    Billboard* mote = new Billboard(camera, true);
    mote->texture = texture(j % 2 == 0 ? "mustis2" : "mustis5");
    const float s = static_cast<float>(randomSigned() * 0.025 + 0.15);
    mote->halfSize = Vector3(s, s, 1.0f);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    mote->position = Vector3(static_cast<float>(c * 10.0), static_cast<float>(b * 10.0),
                             static_cast<float>(a * 10.0));
    mote->alpha = 1.0f;
    mote->colour = Vector3(0, 0, 0);
    mote->blendMode = 1;
    mote->castsShadow = true;
    world.billboards.push_back(mote);
  }

  // ---- 10. the light ----
  lightObject = addStandardLight();

  // ---- 11. glow group ----
  setUsualGlowDefaults();
  registerGlowParameters();
}

SceneBordersWithin::~SceneBordersWithin() {
  delete noiseA;
  delete noiseB;
  delete noiseC;
}

// ===========================================================================
// Per frame
// ===========================================================================
float SceneBordersWithin::spreadE1(float s) { return easeInAt(s, 12.0f, 8.0f); }
float SceneBordersWithin::spreadE2(float s) { return easeInAt(s, 4.5f, 7.5f); }

Vector3 SceneBordersWithin::cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d) {
  const float k = e1 * 0.01f + 0.002f;
  return Vector3(k * b.x + d * 0.034f + 10.0f, e2 * b.z * 0.7f + n * 0.001f + k * b.y + 10.0f,
                 d * 0.02f + k * b.z + 10.0f);
}

float SceneBordersWithin::barStart(int32_t i) { return i * 1.875f + 42.6625f - 34.0f; }

float SceneBordersWithin::beat(float d) {
  float acc = 0.0f;
  for (int32_t i = 0; i <= 32; ++i) {
    const float o = i * 1.875f;
    const float v = hitAt(d, o + 42.6625f);
    const float w = hitAt(d, o + 43.5125f);
    acc += v * 0.9f + w;
  }
  return acc;
}

void SceneBordersWithin::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float step = static_cast<float>(stepMs) / 1000.0f;
  const float d = demoSeconds + 34.0f;  // decorrelates this scene's noise from the others'

  // 1. The camera shakes round its place.
  camera->position = Vector3(0, 0, -10);
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  camera->position.x += noiseA->fractalSum(p, 7) * 3.72f;
  camera->position.y += noiseB->fractalSum(p, 7) * 3.2f;
  camera->position.z += noiseC->fractalSum(p, 7) * 5.2f;

  // 2. The light wanders.
  const float u = s * 0.5f;
  placeLightAimedAtOrigin(lightObject, Vector3(12.5f * std::cos(u), 10.5f * std::sin(u * 0.5f), -9.0f));
  Mesh* light = object(lightObject);
  const Vector3 lightPosition = light ? light->position : Vector3(0, 0, 0);

  // 3, 4. The thread unfolds into a cloud as the envelopes stretch the sampling.
  const float e1 = spreadE1(s);
  const float e2 = spreadE2(s);
  for (int32_t n = 1; n <= cubeCount; ++n) {
    Mesh* cube = object(objectIds[n]);
    if (!cube) continue;
    const Vector3 q = cubeSamplePoint(basePositions[n - 1], n, e1, e2, d);
    cube->position = noisePlace(*noiseA, *noiseB, *noiseC, q, 6, 7, 6, 6.5f);
  }

  // 5, 6. The beat tightens the glow and swells the flares.
  const float acc = beat(d);
  glowAmountDrop = static_cast<float>(std::pow(acc, 5.0) * 0.333);
  const float swell = static_cast<float>(std::pow(acc, 6.0) * 4.25 + 0.75);

  // 7. Flares round the light.
  for (uint32_t i = 0; i < flareCount && i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const float q = d * 0.2f;
    const Vector3 offset(std::sin(fi * 0.14123f + q) * 0.16f, std::cos(d * 0.314f + fi * 0.1823f) * 0.17999999f,
                         std::cos(std::sin(fi * 0.74342f + q)) * 0.03f);
    world.billboards[i]->position = offset + lightPosition;
    world.billboards[i]->halfSize = Vector3(8, 4, 5) * swell;
  }

  // 8. Motes drift along the flow, staying near their depth.
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m) {
    Billboard* mote = world.billboards[flareCount + m];
    mote->timeStep = step;
    mote->time = s;
    const Vector3 q = mote->position * 0.1f;
    Vector3 w = noisePlace(*noiseA, *noiseB, *noiseC, q, 5, 5, 5, 1.0f) * step;
    w.z *= 0.25f;
    mote->position += w;
  }
}

// ===========================================================================
// Overlay: the two titles
// ===========================================================================
void SceneBordersWithin::drawOverlay(float sceneSeconds, float, int32_t) {
  const float s = sceneSeconds;
  struct Title {
    const char* name;
    float T, U, X;
  };
  const Title titles[2] = {{"mb", 20.0f, 22.25f, s - 10.0f}, {"cd", 23.7f, 25.95f, s - 13.7f}};
  for (const Title& title : titles) {
    const float a = easeInAt(s, title.T, 0.33f);
    const float b = easeInAt(s, title.T, 2.5f);
    const float c = easeOutAt(s, title.U, 0.5f);
    if (a == 0.0f) continue;

    glDisable(GL_LIGHTING);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();  // the camera's projection stays
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glTranslatef(0.0f, 0.0f, 0.67f);
    glEnable(GL_BLEND);  // with the blend function that stands
    glActiveTextureARB(GL_TEXTURE0_ARB);
    glDisable(GL_TEXTURE_CUBE_MAP);
    glDisable(GL_COLOR_MATERIAL);
    glDisable(GL_TEXTURE_2D);

    // The white flash the title bursts out of.
    glColor4f(1.0f - a, 1.0f - a, 1.0f - a, 1.0f - a);
    glBegin(GL_QUADS);
    glVertex3f(-1.0f, -1.0f, -1.0f);
    glVertex3f(1.0f, -1.0f, -1.0f);
    glVertex3f(1.0f, 1.0f, -1.0f);
    glVertex3f(-1.0f, 1.0f, -1.0f);
    glEnd();

    TitleLayers layers;
    layers.texture = texture(title.name);
    layers.blendDestination = GL_ONE_MINUS_SRC_ALPHA;
    layers.heightSpread = 1.2f;
    layers.rim = Vector3(0.66f, 0.9f, 1.5f);
    layers.rimAlpha = c * 0.75f;
    layers.coreAlpha = c * 0.75f;
    const float g = 1.0f - 0.95f * easeInAt(s, title.T, 0.5f, 2.0f);  // settles from 1 to 0.05
    drawTitleLayers(layers, *noiseA, *noiseC, b, g, title.X);

    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
  }
}
