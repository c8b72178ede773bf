#include "scenes/SceneBordersRollus.h"

#include <GL/glew.h>

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersRollus::SceneBordersRollus(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      cubeObjects(321, 0),
      glareCount(4),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      cubeCount(320),
      cubeHomes(320),
      rotationHomes(320),
      spinX(0.0f),
      spinY(0.0f),
      spinZ(0.0f),
      dustCount(300) {
  glowPasses = 6;
  setUpCamera("SceneBordersRollus.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1

  // ---- 1. texture stages ----
  material(P).stages(2).stage(0, stageModulate, "planartexture").scale(0, 1.5f, 1.5f).cubeMap(1, stageAdd, "cubemap.bill");
  material(G).stages(2).stage(0, stageModulate, "planartexture").scale(0, 1.0f, 1.0f).cubeMap(1, stageAdd, "cubemap.bill");

  // ---- 2. the slab ----
  material(P).ambient(Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 0.0f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.66f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  cubeObjects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(4.0f, 5.0f, 1.0f) * 5.0f, Vector3(0, 0, 15));

  // ---- 3. noise fields; 4. the ring, closer and taller ----
  noiseX = makeNoiseField(6, 108080);
  noiseY = makeNoiseField(6, 15421);
  noiseZ = makeNoiseField(6, 13542);
  RingShape ring;
  ring.xSpread = 10.0f;
  ring.xRadius = 20.0f;
  ring.ySpread = 10.0f;
  ring.yRadius = 20.0f;
  ring.depthSpread = 15.0f;
  ring.depthBase = 20.0f;
  addBoxRing(P, G, ring);

  // ---- 5. colours of the cubes ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).texture(0, "hopmet");
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f).texture(0, "hopmet");

  // ---- 6. the cubes, one batch; c runs innermost; four draws each ----
  crtSrand(13234);
  addModelBatch("./models/cube.a3d", cubeCount, P, G, [this](int32_t n, int32_t index, Mesh* cube) {
    const int32_t a = n / 80, b = (n / 8) % 10, c = n % 8;
    cubeObjects[n + 1] = index;
    cubeHomes[n] = Vector3((static_cast<float>(c) - 3.5f) * 0.88f * 0.33f, (static_cast<float>(b) - 4.5f) * 0.88f,
                           (static_cast<float>(a) - 1.5f) * 0.88f);
    rotationHomes[n] = cubeHomes[n];
    const int r1 = crtRand();
    const int r2 = crtRand();
    const int r3 = crtRand();
    (void)randomUnit();  // drawn and thrown away
    if (!cube) return;
    cube->position = cubeHomes[n];
    cube->rotation = Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * 186.0 - 90.0),
                             static_cast<float>((r1 / 32767.0 - 0.5) * 186.0), 0.0f);
    cube->useMatrix = true;
    cube->scale = Vector3(0.2f, static_cast<float>(0.8 * (r3 / 32767.0 * 0.05 + 0.2)), 0.2f);
  });

  // ---- 7. individual looks: three colour groups of 80, cycling ----
  for (int32_t i = 0; i < cubeCount; ++i) {
    crtSrand(static_cast<uint32_t>((i / 80) % 3 + 86347234));
    const float f1 = static_cast<float>(randomSigned());
    const float f2 = static_cast<float>(randomSigned());
    const float f3 = static_cast<float>(randomSigned());
    G.diffuse = Vector3(f1 * 1.65f + 2.5f, f2 * 0.85f + 1.1f, f3 * 0.34f + 0.5f) * 0.9f;
    G.ambient = Vector3(f1 * 0.4f + 0.5f, f2 * 0.4f + 0.5f, f3 * 0.4f + 0.5f) * 0.02f;
    P.diffuse = Vector3(f1 * 1.2f + 1.66f, f2 * 0.44f + 0.64f, f3 * 0.23f + 0.36f) * 0.3f;
    P.ambient = Vector3(f1 * 0.4f + 0.5f, f2 * 0.4f + 0.5f, f3 * 0.4f + 0.5f) * 0.1f;
    drawStageOffsets(P, G, i);
    applyLooks(cubeObjects[i + 1], P, G);
  }

  // ---- 8. four small glares; 9. dust ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "bill_d2ch";
  glares.halfSize = Vector3(4, 2, 5);
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
void SceneBordersRollus::warp(Vector3& v, float t) const {
  const Vector3 p(t * 0.014f + v.x * 0.012f * 1.2f + 10.0f, std::cos(v.y * 0.42f) * 3.3f + 10.0f,
                  std::sin(v.z * 0.02f * 11.2f + t * 0.004112f) * 8.321f + t * 0.00323f + 10.0f);
  v = Vector3(noiseX->fractalSum(p, 6) * 6.5f, noiseY->fractalSum(p, 7) * 6.5f, noiseZ->fractalSum(p, 6) * 6.5f);
}

void SceneBordersRollus::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float T = demoSeconds + 60.5f;
  const float S = sceneSeconds;

  // 1. The camera wanders, then settles at fixed look-at angles.
  Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  const float ex = std::fabs(noiseX->fractalSum(q, 8));
  const float ey = std::fabs(noiseY->fractalSum(q, 4));
  const float ez = std::fabs(noiseZ->fractalSum(q, 4));
  camera->position = Vector3(ex * ex * ex * 12.32f, ey * ey * ey * 2.42f, ez * ez * ez * 8.2f - 10.0f);
  q *= 1.1f;
  const float settleOut = easeOutAt(T, 297.5f, 4.5f);
  const float settleIn = easeInAt(T, 297.5f, 4.5f);
  camera->lookAtPitch = settleOut * (noiseX->fractalSum(q, 8) * 232.0f) - settleIn * 150.0f;
  camera->lookAtYaw = settleOut * (noiseY->fractalSum(q, 4) * 182.3f) - settleIn * 136.5f;
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 2. The light, on a small orbit.
  const Vector3 lightPosition = orbitLight(lightObject, S * 0.5f + 3.1415927f, 0.22f);

  // 3. The cloud. Reseeded every frame, so each cube's moment is a constant
  // of the cube; this also resets the generator for whoever draws next.
  crtSrand(2323);
  const float w = T - 293.0f;
  for (int32_t k = 1; k <= cubeCount; ++k) {
    const Vector3& h = cubeHomes[k - 1];
    neighbourX = Vector3(h.x + 1.5f, h.y, h.z);
    warp(neighbourX, S);
    neighbourY = Vector3(h.x, h.y + 1.5f, h.z);
    warp(neighbourY, S);
    neighbourZ = Vector3(h.x, h.y, h.z + 1.5f);
    warp(neighbourZ, S);
    Vector3 d = h;
    warp(d, S);
    // Two draws per cube, whether or not its model loaded.
    const float s = static_cast<float>(randomUnit() + 4.8);
    const float u = static_cast<float>(randomSigned() + 1.4);
    const float b = easeInAt(w, s, u);
    const float u2 = u * 0.2f;
    const float s2 = s + u * 0.75f;
    const float e = easeWindowAt(w, s2, u2, s2 + u2, u2);
    // 1 at rest, 0 when the cube has left; the window kicks it past 0 for a moment.
    const float c = 1.0f - (e + b);
    const Vector3 position = Vector3(h.x, h.y * 0.25f, h.z) * c + d * (1.0f - c);
    neighbourY -= position;
    neighbourZ -= position;
    neighbourX -= position;
    // Nine floats from each neighbour on, in storage order; the words after
    // trailingVector count as 0.
    spinX = neighbourX.lengthSquared(trailingVector, Vector3()) * 7.0f;
    spinY = neighbourY.lengthSquared(neighbourZ, neighbourX) * 4.0f;
    spinZ = neighbourZ.lengthSquared(neighbourX, trailingVector) * 4.0f;
    Mesh* cube = object(cubeObjects[k]);
    if (!cube) continue;
    cube->position = position;
    cube->rotation = Vector3(spinX, spinY, spinZ) * (1.0f - c);  // a cube at rest does not spin
  }

  // 4. Glares round the light; 5. dust along the noise flow.
  FlareOrbit orbit;
  orbit.phaseX = 0.34123f;
  orbit.phaseY = 0.2823f;
  orbit.size = Vector3(1.6f, 1.8000001f, 0.3f);
  flaresFollow(0, glareCount, T, lightPosition, orbit);
  DustDrift drift;
  drift.zScale = 0.25f;
  driftDust(glareCount, dustCount, noiseX, noiseY, noiseZ, S, stepMs, drift);
}

// ===========================================================================
// Overlay: flash, title and the fade to black
// ===========================================================================
float SceneBordersRollus::flashIn(float S) { return easeInAt(S, 15.0f, 1.5f); }
float SceneBordersRollus::titleIn(float S) { return easeInAt(S, 15.0f, 10.0f); }
float SceneBordersRollus::fadeOut(float S) { return easeInAt(S, 20.0f, 1.0f); }

void SceneBordersRollus::drawOverlay(float sceneSeconds, float, int32_t) {
  const float S = sceneSeconds;
  const float f1 = flashIn(S);
  if (f1 == 0.0f) return;
  const float f2 = titleIn(S);

  OverlayScope overlay;  // alpha blended, untextured
  // A white flash that fades out over 1.5 s, or from 20 s the fade to black.
  const float e = fadeOut(S);
  if (e != 0.0f) {
    glColor4f(0.0f, 0.0f, 0.0f, e);
  } else {
    glColor4f(1.0f - f1, 1.0f - f1, 1.0f - f1, 1.0f - f1);
  }
  screenQuad(1.0f);

  // The title comes slowly closer, added over the picture.
  glEnable(GL_TEXTURE_2D);
  glTranslatef(0.0f, 0.0f, f2 * 0.15f - 0.1f);
  bindTitleTexture(texture("ostlb"), GL_MODULATE);
  linearFilters();
  glBlendFunc(GL_SRC_ALPHA, GL_ONE);
  // The wobble of the layers dies away, leaving the title still.
  const float k = 1.0f - easeInAt(S, 15.0f, 4.0f, 1.0f, 2.0f) * 0.996f;
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  for (int i = 0; i < 25; ++i) {
    glPushMatrix();
    const float fi = static_cast<float>(i);
    neighbourY = Vector3(S * 0.1f + fi * 0.11f, 1.53f, 4.3f);
    neighbourZ = Vector3(S * 0.88f, 0.5f, fi * 0.1234f + 0.5f);
    const float a = noiseZ->sample(neighbourZ);
    const float b = noiseX->sample(neighbourY);
    glScalef((b * 0.2f + fi / 25.0f) * k * 10.5f + 1.0f, a * 2.2f * k + 1.0f, 1.0f);
    glColor4f(0.22f, 0.3f, 0.5f, 0.5f);
    texturedQuad(1.05f);
    glColor4f(0.02f, 0.02f, 0.02f, 0.75f);
    texturedQuad(1.0f);
    glPopMatrix();
  }
}
