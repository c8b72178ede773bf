#include "scenes/SceneBordersRollout.h"

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersRollout::SceneBordersRollout(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      cubeObjects(451, 0),
      glareCount(8),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      cubeCount(450),
      cubeHomes(450),
      rotationHomes(450),
      dustCount(300) {
  glowPasses = 7;
  setUpCamera("SceneBordersRollout.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1

  // ---- 1. texture stages ----
  material(P).stages(2).stage(0, stageModulate, "planartexture").scale(0, 1.0f, 1.0f).cubeMap(1, stageAdd, "cubemap.bill");
  material(G).stages(2).stage(0, stageModulate, "solidnoisebump").scale(0, 1.0f, 1.0f).cubeMap(1, stageAdd, "cubemap.bill");

  // ---- 2. the wall ----
  material(P).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.76f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  cubeObjects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(1.5f, 25.0f, 1.0f) * 5.0f, Vector3(0, 0, 10));

  // ---- 3. noise fields; 4. the ring, an ellipse narrower in x ----
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  RingShape ellipse;
  ellipse.xRadius = 15.0f;
  addBoxRing(P, G, ellipse);

  // ---- 5. colours of the slats; the picture's stage 0 scale stays 1 ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).texture(0, "hopmet");
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f).texture(0, "hopmet");

  // ---- 6. the slats, one batch; c runs innermost; three draws each ----
  crtSrand(234);
  addModelBatch("./models/cube.a3d", cubeCount, P, G, [this](int32_t n, int32_t index, Mesh* slat) {
    const int32_t a = n / 150, b = (n / 3) % 50, c = n % 3;
    cubeObjects[n + 1] = index;
    cubeHomes[n] = Vector3(static_cast<float>(c - 1), static_cast<float>(b) - 24.5f, static_cast<float>(a - 1));
    rotationHomes[n] = cubeHomes[n];
    const int r1 = crtRand();
    const int r2 = crtRand();
    const int r3 = crtRand();
    if (!slat) return;
    slat->position = cubeHomes[n];
    slat->rotation = Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * 186.0 - 90.0),
                             static_cast<float>((r1 / 32767.0 - 0.5) * 186.0), 0.0f);
    slat->useMatrix = true;
    slat->scale = Vector3(0.46875f, static_cast<float>((r3 / 32767.0 * 0.05 + 0.2) * 1.125), 0.234375f);
  });

  // ---- 7. individual looks: three colour groups of 150 ----
  for (int32_t i = 0; i < cubeCount; ++i) {
    crtSrand(static_cast<uint32_t>((i / 150) % 3 + 2354250));
    const float f1 = static_cast<float>(randomSigned());
    const float f2 = static_cast<float>(randomSigned());
    const float f3 = static_cast<float>(randomSigned());
    G.diffuse = Vector3(f1 * 1.65f + 2.5f, f2 * 0.85f + 1.1f, f3 * 0.34f + 0.5f) * 2.5f;
    P.diffuse = Vector3(f1 * 1.2f + 1.66f, f2 * 0.44f + 0.64f, f3 * 0.23f + 0.36f) * 0.8f;
    P.ambient = Vector3(f1 * 0.4f + 0.5f, f2 * 0.4f + 0.5f, f3 * 0.4f + 0.5f) * 0.4f;
    drawStageOffsets(P, G, i);
    applyLooks(cubeObjects[i + 1], P, G);
  }

  // ---- 8. eight glares; 9. dust ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "bill_d2ch";
  glares.alpha = 0.45f;
  addFlares(glares);
  crtSrand(23233);
  DustSpec dust;
  dust.count = dustCount;
  dust.spread = Vector3(9, 9, 10);
  addDust(dust);

  // ---- 10. the light, and the glow group ----
  lightObject = addStandardLight();
  addUsualGlowGroup();
}

// ===========================================================================
// Per frame
// ===========================================================================
void SceneBordersRollout::warp(Vector3& v, int32_t index, float t) const {
  const Vector3 p(std::sin(v.x * 0.012f * 12.2f) * 0.123f + static_cast<float>(index) * 0.0003f + t * 0.034f + 10.0f,
                  v.y * 0.012f + 10.0f, v.z * 0.012f + 10.0f);
  v = Vector3(noiseX->fractalSum(p, 6) * 12.5f, noiseY->fractalSum(p, 7) * 12.5f, noiseZ->fractalSum(p, 6) * 12.5f);
}

void SceneBordersRollout::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float T = demoSeconds + 63.0f + 10.0f - 7.5f - 7.5f;  // added in this order
  const float S = sceneSeconds + 10.0f;

  // 1. The camera.
  const Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  const float ex = std::fabs(noiseX->fractalSum(q, 8));
  const float ey = std::fabs(noiseY->fractalSum(q, 4));
  const float ez = std::fabs(noiseZ->fractalSum(q, 4));
  camera->position = Vector3(ex * ex * ex * 8.32f, ey * ey * ey * 7.42f, ez * ez * ez * 8.2f - 10.0f);
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light, on a third of the usual orbit.
  const Vector3 lightPosition = orbitLight(lightObject, S * 0.5f + 3.1415927f, 0.33f);

  // 3. The slats ripple; no clamps here.
  for (int32_t k = 1; k <= cubeCount; ++k) {
    Mesh* slat = object(cubeObjects[k]);
    if (!slat) continue;
    Vector3 position = cubeHomes[k - 1];
    warp(position, k, S);
    Vector3 rotation = rotationHomes[k - 1];
    warp(rotation, k, S);
    slat->position = position;
    slat->rotation = rotation * 74.0f;
  }

  // 4. Eight glares circle the light widely; 5. dust along the noise flow.
  FlareOrbit wide;
  wide.phaseX = 0.34123f;
  wide.phaseY = 0.2823f;
  wide.size = Vector3(8, 9, 1.5f);
  flaresFollow(0, glareCount, T, lightPosition, wide);
  DustDrift drift;
  drift.zScale = 0.25f;
  driftDust(glareCount, dustCount, noiseX, noiseY, noiseZ, S, stepMs, drift);
}
