#include "scenes/SceneBordersRollin.h"

#include <algorithm>
#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "scenes/SceneBordersMeetus.h"

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersRollin::SceneBordersRollin(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      cubeObjects(197, 0),
      glareCount(2),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      cubeCount(196),
      cubeHomes(196),
      rotationHomes(196),
      dustCount(500) {
  glowPasses = 8;
  glowSourceWritesColour = false;  // the glow source's base pass fills depth only
  setUpCamera("SceneBordersRollin.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1

  // ---- 1. texture stages ----
  material(P)
      .stages(3)
      .stage(0, stageModulate, "planartexture")
      .scale(0, 1.0f, 1.0f)
      .detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill");
  material(G)
      .stages(3)
      .stage(0, stageModulate, "planartexture")
      .detail(1, stageModulate, "billbig")
      .cubeMap(2, stageModulate, "cubemap.bill");

  // ---- 2. the slab ----
  material(P).ambient(Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 0.0f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.66f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  cubeObjects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(3.5f, 3.5f, 1.0f) * 5.0f, Vector3(0, 0, 10));

  // ---- 3. noise fields; 4. the ring goes on from the last one's seeding ----
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  addBoxRing(P, G);

  // ---- 5. colours of the bars ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).texture(0, "hopmet");
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.25f).texture(0, "hopmet");

  // ---- 6. the bars, one batch; c runs innermost; four draws each ----
  crtSrand(234);
  addModelBatch("./models/cubec.a3d", cubeCount, P, G, [this](int32_t n, int32_t index, Mesh* bar) {
    const int32_t a = n / 49, b = (n / 7) % 7, c = n % 7;
    cubeObjects[n + 1] = index;
    cubeHomes[n] = Vector3(static_cast<float>(c - 3), static_cast<float>(b - 3), static_cast<float>(a) - 1.5f) * 0.125f;
    rotationHomes[n] = cubeHomes[n] * 0.2f;
    const int r1 = crtRand();
    const int r2 = crtRand();
    const int r3 = crtRand();
    const double r4 = randomUnit();
    if (!bar) return;
    bar->position = cubeHomes[n];
    bar->rotation = Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * 186.0 - 90.0),
                            static_cast<float>((r1 / 32767.0 - 0.5) * 186.0), 0.0f);
    // The pivot moves to one end: a bar swings round its end, not its middle.
    for (Vertex* v : bar->vertices) {
      if (v) v->position.x += 1.0f;
    }
    bar->positionsDirty = true;
    bar->useMatrix = true;
    const float w = static_cast<float>((r4 * r4 * 6.0 + 4.0) * 0.25);
    bar->scale = Vector3(w, static_cast<float>((r3 / 32767.0 * 0.05 + 0.2) * 0.25), w * 0.025f);
  });

  // ---- 7. individual looks: the same numbers for every bar ----
  for (int32_t i = 0; i < cubeCount; ++i) {
    crtSrand(715517);
    const float f1 = static_cast<float>(randomSigned());
    const float f2 = static_cast<float>(randomSigned());
    const float f3 = static_cast<float>(randomSigned());
    G.diffuse = Vector3(f1 * 1.65f + 2.5f, f2 * 0.85f + 1.1f, f3 * 0.34f + 0.5f) * 6.25f;
    P.diffuse = Vector3(f1 * 1.2f + 1.66f, f2 * 0.44f + 0.64f, f3 * 0.23f + 0.36f) * 0.4f;
    P.ambient = Vector3(f1 * 0.4f + 0.5f, f2 * 0.4f + 0.5f, f3 * 0.4f + 0.5f) * 0.125f;
    drawStageOffsets(P, G, i);
    applyLooks(cubeObjects[i + 1], P, G);
  }

  // ---- 8. glare; 9. dust ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "bill_d2ch";
  addFlares(glares);
  crtSrand(23233);
  DustSpec dust;
  dust.count = dustCount;
  dust.spread = Vector3(15, 15, 5);
  addDust(dust);

  // ---- 10. the light, and the glow group ----
  lightObject = addStandardLight();
  addUsualGlowGroup();
}

// ===========================================================================
// Per frame
// ===========================================================================
void SceneBordersRollin::warp(Vector3& v, int32_t index, float t) const {
  const float i = static_cast<float>(index);
  const Vector3 p(std::cos(v.x * 0.012f * 12.2f) * 0.123f + i * 0.6f * 0.002234f + t * 0.034f + 10.0f,
                  v.y * 0.012f + i * 0.6f * 0.004123f + 10.0f, v.z * 0.012f + 10.0f);
  v = Vector3(noiseX->fractalSum(p, 6) * 12.5f, noiseY->fractalSum(p, 7) * 12.5f, noiseZ->fractalSum(p, 6) * 12.5f);
}

Vector3 SceneBordersRollin::swing(const Vector3& r) {
  Vector3 s(0.0f, r.y, r.z);
  s.x = -std::min(std::max(s.x, 30.0f), 180.0f);
  s.y = -std::min(std::max(s.y, 30.0f), 180.0f);
  s.z = -std::min(std::max(s.z, 30.0f), 180.0f);
  s.y = -s.y;
  return s;
}

float SceneBordersRollin::beat(float S) {
  const float f = beatSum(S, SceneBordersMeetus::beats, 23, 0.75f);
  return f * f * f * f;
}

void SceneBordersRollin::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float T = demoSeconds + 59.0f;
  const float S = sceneSeconds;

  // 1. The camera swings through the pillars; roll and zoom stay as the
  // Parameters hold them.
  const Vector3 q(T * 0.08121234f * 2.2f, T * 0.013234f, T * 0.0423345f);
  const float ex = std::fabs(noiseX->fractalSum(q, 5));
  const float ey = std::fabs(noiseY->fractalSum(q, 4));
  const float ez = std::fabs(noiseZ->fractalSum(q, 4));
  camera->position = Vector3(ex * ex * ex * 28.32f, ey * ey * ey * 7.42f, ez * ez * ez * 28.2f - 10.0f);
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light.
  const Vector3 lightPosition = orbitLight(lightObject, S * 0.5f + 3.1415927f);

  // 3. The bars roll; a bar's height follows its swing.
  for (int32_t k = 1; k <= cubeCount; ++k) {
    Mesh* bar = object(cubeObjects[k]);
    if (!bar) continue;
    Vector3 position = cubeHomes[k - 1];
    warp(position, k, S * 2.4f);
    Vector3 rotation = rotationHomes[k - 1];
    warp(rotation, k, S);
    bar->rotation = swing(rotation * 74.0f);
    position.z = 2.0f * std::cos((bar->rotation.y / 360.0f + bar->rotation.y / 360.0f) * 3.1415927f) + 3.2f;
    bar->position = position;
  }

  // 4. The beat swells the glare and sharpens the glow; nothing flashes.
  const float b = beat(S);
  glowAmountDrop = b * 0.25f;
  flaresFollow(0, glareCount, T, lightPosition);
  for (uint32_t i = 0; i < glareCount && i < world.billboards.size(); ++i)
    world.billboards[i]->halfSize = Vector3(8, 4, 5) * (b * 3.0f + 0.75f);

  // 6. Dust along the noise flow; a negative step runs it back.
  DustDrift drift;
  drift.zScale = 0.25f;
  driftDust(glareCount, dustCount, noiseX, noiseY, noiseZ, S, stepMs, drift);
}
