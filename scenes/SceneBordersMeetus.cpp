#include "scenes/SceneBordersMeetus.h"

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

// easeIn / easeOut of an Envelope (start, duration) at t, frequency and power 1.
float easeInAt(float t, float start, float duration) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeIn(t, 1.0f, 1.0f);
}

float easeOutAt(float t, float start, float duration) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeOut(t, 1.0f, 1.0f);
}

}  // namespace

const float SceneBordersMeetus::beats[23] = {1,    2.9f, 3.9f, 4.9f, 6.5f, 7.5f, 8.5f, 10.3f,
                                             11.3f, 12.3f, 14,   15,   16,   17.8f, 18.8f, 19.8f,
                                             21.5f, 22.5f, 23.5f, 25,   26,   27,   29};

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersMeetus::SceneBordersMeetus(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      cubeObjects(451, 0),
      glareCount(2),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      cubeCount(450),
      cubeHomes(450),
      dustCount(300) {
  glowPasses = 6;
  setUpCamera("SceneBordersMeetus.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1

  // ---- 1. texture stages ----
  P.stageCount = 2;
  P.stageMode[0] = 1;
  P.stageTexture[0] = texture("planartexture");
  P.stageScaleU[0] = 4.0f;
  P.stageScaleV[0] = 4.0f;
  P.stageMode[1] = 2;
  P.stageTexture[1] = texture("cubemap.bill");
  P.stageCubeMap[1] = true;
  G.stageCount = 2;
  G.stageMode[0] = 1;
  G.stageTexture[0] = texture("solidnoisebump");
  G.stageScaleU[0] = 1.0f;
  G.stageScaleV[0] = 1.0f;
  G.stageMode[1] = 2;
  G.stageTexture[1] = texture("cubemap.bill");
  G.stageCubeMap[1] = true;

  // ---- 2. the slab ----
  P.ambient = Vector3(0.4f, 0.4f, 1.82f) * 0.75f;
  P.ambient.alpha = 0.0f;
  P.diffuse = Vector3(0.56f, 0.74f, 1.526f) * 5.1f;
  G.diffuse = Vector3(1.15f, 0.76f, 0.3f) * 1.5f;
  G.ambient = Vector3(1, 1, 1) * 0.05f;
  cubeObjects[0] = world.addModel("./models/cube.a3d", P);
  setGlowMaterial(cubeObjects[0], G);
  if (Mesh* slab = object(cubeObjects[0])) {
    slab->scale = Vector3(7.5f, 7.5f, 1.0f) * 5.0f;
    slab->position = Vector3(0, 0, 10);
  }

  // ---- 3. noise fields, X, Y, Z: the last seeding is where the ring's draws start ----
  noiseX = new NoiseField(6, 100);
  noiseY = new NoiseField(6, 101);
  noiseZ = new NoiseField(6, 102);

  // ---- 4. the ring of pillars, one batch; they never move ----
  addBoxRing(P, G);

  // ---- 5. colours of the swarm ----
  P.ambient = Vector3(1, 1, 1) * 0.5f;
  P.diffuse = Vector3(1.66f, 0.64f, 0.36f) * 5.1f;
  G.diffuse = Vector3(2.5f, 1.1f, 0.5f) * 1.5f;
  G.ambient = Vector3(1, 1, 1) * 0.025f;
  P.stageScaleU[0] = 2.0f;
  P.stageScaleV[0] = 2.0f;
  P.stageTexture[0] = texture("hopmet");
  G.stageTexture[0] = texture("hopmet");

  // ---- 6. the swarm, one batch; c runs innermost ----
  crtSrand(234);
  int32_t n = 0;
  for (int32_t a = 0; a < 2; ++a) {
    for (int32_t b = 0; b < 15; ++b) {
      for (int32_t c = 0; c < 15; ++c) {
        cubeObjects[n + 1] = world.addModel("./models/cube.a3d", P);
        setGlowMaterial(cubeObjects[n + 1], G);
        markBatch(cubeObjects[n + 1], n, cubeCount);
        cubeHomes[n] = Vector3(static_cast<float>(c - 7), static_cast<float>(b - 7), static_cast<float>(a) - 0.5f) *
                       0.25f;
        // Drawn whether or not the model loaded, so that what follows stays the same.
        const int r1 = crtRand();
        const int r2 = crtRand();
        const int r3 = crtRand();
        if (Mesh* cube = object(cubeObjects[n + 1])) {
          cube->position = cubeHomes[n];
          cube->rotation = Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * 186.0 - 90.0),
                                   static_cast<float>((r1 / 32767.0 - 0.5) * 186.0), 0.0f);
          cube->useMatrix = true;
          cube->scale = Vector3(0.01875f, static_cast<float>((r3 / 32767.0 * 0.05 + 0.2) * 4.5), 0.01875f);
        }
        ++n;
      }
    }
  }

  // ---- 7. individual looks ----
  for (int32_t i = 0; i < cubeCount; ++i) {
    // Reseeded inside the loop: the first three numbers are the same for every cube.
    crtSrand(342435);
    const float f1 = static_cast<float>(randomSigned());
    const float f2 = static_cast<float>(randomSigned());
    const float f3 = static_cast<float>(randomSigned());
    G.diffuse = Vector3(f1 * 2.5f + 2.5f, f2 * 2.5f + 2.5f, f3 * 2.5f + 2.5f) * 2.5f;
    P.diffuse = Vector3(f1 * 1.5f + 1.5f, f2 * 1.5f + 1.5f, f3 * 1.5f + 1.5f) * 0.75f;
    P.ambient = Vector3(f1 * 0.5f + 0.5f, f2 * 0.5f + 0.5f, f3 * 0.5f + 0.5f) * 0.125f;
    const double pu = randomSigned();
    P.stageOffsetU[0] = static_cast<float>(pu + i * 0.232141);
    const double pv = randomSigned();
    P.stageOffsetV[0] = static_cast<float>(pv + i * 0.1232141);
    const double gu = randomSigned();
    G.stageOffsetU[0] = static_cast<float>(gu + i * 0.232141);
    const double gv = randomSigned();
    G.stageOffsetV[0] = static_cast<float>(gv + i * 0.1232141);
    setGlowMaterial(cubeObjects[i + 1], G);
    if (Mesh* cube = object(cubeObjects[i + 1])) cube->setMaterial(P);  // currentMaterial is 0 here
  }

  // ---- 8. glare sprites that follow the light ----
  crtSrand(232);
  for (uint32_t i = 0; i < glareCount; ++i) {
    Billboard* glare = new Billboard(camera, true);
    glare->texture = texture("bill_d2ch");
    glare->halfSize = Vector3(8, 4, 5);
    const int r1 = crtRand();
    (void)crtRand();  // drawn and dropped
    const int r2 = crtRand();
    glare->position = Vector3(static_cast<float>(r1 / 32767.0 * 5.0 + 10.0), 0.0f,
                              static_cast<float>((r2 / 32767.0 - 0.5) * 2.0 * 30.0));  // the first frame moves it
    glare->alpha = 0.9f;
    (void)crtRand();  // drawn and dropped
    glare->colour = Vector3(1, 1, 1) * 0.65f;
    world.billboards.push_back(glare);
  }

  // ---- 9. dust: black specks that shadow what lies behind them ----
  crtSrand(23233);
  for (uint32_t m = 0; m < dustCount; ++m) {
    const uint32_t k = m + glareCount;
    Billboard* dust = new Billboard(camera, true);
    dust->texture = texture(k % 2 == 0 ? "mustis2" : "mustis5");
    const float s = static_cast<float>(randomSigned() * 0.025 + 0.15);
    dust->halfSize = Vector3(s, s, 1.0f);
    const double s1 = randomSigned();
    const double s2 = randomSigned();
    const double s3 = randomSigned();
    dust->position = Vector3(static_cast<float>(s3 * 9.0), static_cast<float>(9.0 * s2),
                             static_cast<float>(s1 * 10.0));
    dust->alpha = 1.0f;
    dust->colour = Vector3(0, 0, 0);
    dust->blendMode = 1;
    dust->castsShadow = true;
    world.billboards.push_back(dust);
  }

  // ---- 10. the light ----
  lightObject = addStandardLight();

  // ---- glow group ----
  setUsualGlowDefaults();
  registerGlowParameters();
}

SceneBordersMeetus::~SceneBordersMeetus() {
  delete noiseX;
  delete noiseY;
  delete noiseZ;
}

// ===========================================================================
// Per frame
// ===========================================================================
Vector3 SceneBordersMeetus::swarmSamplePoint(const Vector3& h, float e1, float e2, float T) {
  const float u = e1 * 0.01f + 0.012f;
  return Vector3(std::cos(u * h.x * 12.2f) * 0.123f + T * 0.034f + 10.0f, e2 * 0.3f * h.z * 0.7f + u * h.y + 10.0f,
                 (e1 * 0.01f + 0.002f) * h.z + 10.0f);
}

void SceneBordersMeetus::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float T = demoSeconds + 59.0f + 21.0f;
  const float S = sceneSeconds;
  const float dt = static_cast<float>(stepMs) / 1000.0f;

  // 1. The camera rolls and dollies through the noise.
  Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  camera->roll = noiseX->fractalSum(q, 8) * 174.32f - 70.0f;
  const float depth = std::fabs(noiseZ->fractalSum(q, 4));
  camera->position.z = depth * depth * depth * 8.2f - 10.0f;
  q *= 1.6f;
  camera->zoom = noiseY->fractalSum(q, 4) * 0.42f + 0.3f;
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light.
  const float a = S * -0.12f + 4.712389f;
  placeLightAimedAtOrigin(lightObject, Vector3(12.5f * std::cos(a), 10.5f * std::sin(a * 0.5f), -9.0f));
  Mesh* light = object(lightObject);
  const Vector3 lightPosition = light ? light->position : Vector3(0, 0, 0);

  // 3. The swarm: the envelopes stretch the sampling, so the tidy block
  // spreads into a cloud.
  const float e1 = easeInAt(S, 12.0f, 6.0f);
  const float e2 = easeInAt(S, 6.0f, 6.0f);
  for (int32_t k = 1; k <= cubeCount; ++k) {
    Mesh* cube = object(cubeObjects[k]);
    if (!cube) continue;
    const Vector3& h = cubeHomes[k - 1];
    cube->position = h;
    const Vector3 p = swarmSamplePoint(h, e1, e2, T);
    const float x = noiseX->fractalSum(p, 6) * 12.5f;
    const float y = noiseY->fractalSum(p, 7) * 12.5f;
    const float z = noiseZ->fractalSum(p, 6) * 12.5f;
    cube->position = Vector3(x, y, z);
  }

  // 4. Glare sprites round the light.
  for (uint32_t i = 0; i < glareCount && i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const Vector3 offset(std::sin(fi * 0.14123f + T * 0.2f) * 0.16f,
                         std::cos(T * 0.314f + fi * 0.1823f) * 0.17999999f,
                         std::cos(std::sin(fi * 0.74342f + T * 0.2f)) * 0.03f);
    world.billboards[i]->position = offset + lightPosition;
  }

  // 5. Dust drifts along the noise flow; a negative step runs it back.
  for (uint32_t m = 0; m < dustCount && glareCount + m < world.billboards.size(); ++m) {
    Billboard* dust = world.billboards[glareCount + m];
    dust->timeStep = dt;
    dust->time = S;
    const Vector3 v = dust->position * 0.033f;
    const float dx = noiseX->fractalSum(v, 5);
    const float dy = noiseY->fractalSum(v, 5);
    const float dz = noiseZ->fractalSum(v, 5);
    Vector3 d = Vector3(dx, dy, dz) * dt;
    d.z *= 0.125f;
    dust->position += d;
  }
}

// ===========================================================================
// Overlay: the beat flash
// ===========================================================================
float SceneBordersMeetus::beatFlash(float S, const float* beatList, int beatCount) {
  float f = easeOutAt(S, 0.0f, 0.75f);
  for (int i = 0; i < beatCount; ++i) {
    if (S > beatList[i]) f += easeOutAt(S, beatList[i], 0.75f);
  }
  return f * f * f * f;
}

float SceneBordersMeetus::beatFlash(float S) { return beatFlash(S, beats, 23); }

void SceneBordersMeetus::drawOverlay(float sceneSeconds, float, int32_t) {
  const float flash = beatFlash(sceneSeconds);
  if (flash != 0.0f) drawFlash(flash);
}

void SceneBordersMeetus::drawFlash(float flash) {
  glDisable(GL_LIGHTING);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();  // the camera's projection stays
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glTranslatef(0.0f, 0.0f, 0.5f);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_TEXTURE_2D);
  glColor4f(1.0f, 1.0f, 1.0f, flash);  // above 1 after overlapping beats: GL clamps it
  glBegin(GL_QUADS);
  glVertex3f(-1.0f, -1.0f, -1.0f);
  glVertex3f(1.0f, -1.0f, -1.0f);
  glVertex3f(1.0f, 1.0f, -1.0f);
  glVertex3f(-1.0f, 1.0f, -1.0f);
  glEnd();
  glEnable(GL_TEXTURE_2D);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}
