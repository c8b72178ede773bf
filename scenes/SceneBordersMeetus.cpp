#include "scenes/SceneBordersMeetus.h"

#include <GL/glew.h>

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"

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
  material(P).stages(2).stage(0, stageModulate, "planartexture").scale(0, 4.0f, 4.0f).cubeMap(1, stageAdd, "cubemap.bill");
  material(G).stages(2).stage(0, stageModulate, "solidnoisebump").scale(0, 1.0f, 1.0f).cubeMap(1, stageAdd, "cubemap.bill");

  // ---- 2. the slab ----
  material(P).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.76f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  cubeObjects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(7.5f, 7.5f, 1.0f) * 5.0f, Vector3(0, 0, 10));

  // ---- 3. noise fields, X, Y, Z: the last seeding is where the ring's draws start ----
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);

  // ---- 4. the ring of pillars, one batch; they never move ----
  addBoxRing(P, G);

  // ---- 5. colours of the swarm ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f);
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.025f);
  material(P).scale(0, 2.0f, 2.0f).texture(0, "hopmet");
  material(G).texture(0, "hopmet");

  // ---- 6. the swarm, one batch; c runs innermost; three draws each ----
  crtSrand(234);
  addModelBatch("./models/cube.a3d", cubeCount, P, G, [this](int32_t n, int32_t index, Mesh* cube) {
    const int32_t a = n / 225, b = (n / 15) % 15, c = n % 15;
    cubeObjects[n + 1] = index;
    cubeHomes[n] = Vector3(static_cast<float>(c - 7), static_cast<float>(b - 7), static_cast<float>(a) - 0.5f) * 0.25f;
    const int r1 = crtRand();
    const int r2 = crtRand();
    const int r3 = crtRand();
    if (!cube) return;
    cube->position = cubeHomes[n];
    cube->rotation = Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * 186.0 - 90.0),
                             static_cast<float>((r1 / 32767.0 - 0.5) * 186.0), 0.0f);
    cube->useMatrix = true;
    cube->scale = Vector3(0.01875f, static_cast<float>((r3 / 32767.0 * 0.05 + 0.2) * 4.5), 0.01875f);
  });

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
    drawStageOffsets(P, G, i);
    applyLooks(cubeObjects[i + 1], P, G);
  }

  // ---- 8. glare sprites that follow the light ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "bill_d2ch";
  addFlares(glares);

  // ---- 9. dust: black specks that shadow what lies behind them ----
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
void SceneBordersMeetus::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float T = demoSeconds + 59.0f + 21.0f;
  const float S = sceneSeconds;

  // 1. The camera rolls and dollies through the noise.
  Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  camera->roll = noiseX->fractalSum(q, 8) * 174.32f - 70.0f;
  const float depth = std::fabs(noiseZ->fractalSum(q, 4));
  camera->position.z = depth * depth * depth * 8.2f - 10.0f;
  q *= 1.6f;
  camera->zoom = noiseY->fractalSum(q, 4) * 0.42f + 0.3f;
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light.
  const Vector3 lightPosition = orbitLight(lightObject, S * -0.12f + 4.712389f);

  // 3. The swarm: the envelopes stretch the sampling, so the tidy block
  // spreads into a cloud.
  const float e1 = easeInAt(S, 12.0f, 6.0f);
  const float e2 = easeInAt(S, 6.0f, 6.0f);
  placeOnSwarm(cubeObjects, 1, cubeHomes, noiseX, noiseY, noiseZ, e1, e2, T);

  // 4. Glare sprites round the light; 5. dust drifts along the noise flow,
  // and a negative step runs it back.
  flaresFollow(0, glareCount, T, lightPosition);
  DustDrift drift;
  drift.sampleScale = 0.033f;
  drift.zScale = 0.125f;
  driftDust(glareCount, dustCount, noiseX, noiseY, noiseZ, S, stepMs, drift);
}

// ===========================================================================
// Overlay: the beat flash
// ===========================================================================
float SceneBordersMeetus::beatFlash(float S, const float* beatList, int beatCount) {
  const float f = beatSum(S, beatList, beatCount, 0.75f);
  return f * f * f * f;
}

float SceneBordersMeetus::beatFlash(float S) { return beatFlash(S, beats, 23); }

void SceneBordersMeetus::drawOverlay(float sceneSeconds, float, int32_t) {
  const float flash = beatFlash(sceneSeconds);
  if (flash != 0.0f) drawFlash(1.0f, 1.0f, 1.0f, flash, 0.5f);  // above 1 after overlapping beats: GL clamps it
}
