// The rolling bars: what the constructor builds from which draws, the bars'
// hinge and swing, the beat on glare and glow, and one frame's GL state.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "scenes/SceneBordersRollin.h"

namespace {

constexpr int slabObject = 0;
constexpr int firstPillar = 1;
constexpr int firstBar = 101;
constexpr int lightIndex = 297;

SceneBordersRollin& scene() { return *scenetest::buildOnce<SceneBordersRollin>("bordersRolin").scene; }

// The warp of this scene, written out again with fresh fields.
Vector3 warped(Vector3 v, int index, float t) {
  static NoiseField x(6, 100), y(6, 101), z(6, 102);
  const float i = static_cast<float>(index);
  const Vector3 p(std::cos(v.x * 0.012f * 12.2f) * 0.123f + i * 0.6f * 0.002234f + t * 0.034f + 10.0f,
                  v.y * 0.012f + i * 0.6f * 0.004123f + 10.0f, v.z * 0.012f + 10.0f);
  return Vector3(x.fractalSum(p, 6) * 12.5f, y.fractalSum(p, 7) * 12.5f, z.fractalSum(p, 6) * 12.5f);
}

float clampNegated(float v) { return -std::min(std::max(v, 30.0f), 180.0f); }

}  // namespace

TEST(SceneBordersRollin, ConstructionEndsAfterTheDustDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then four draws for each of the 500 motes.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersRollin>("bordersRolin").stateAfter, 23233,
                                      2000);
}

TEST(SceneBordersRollin, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  ASSERT_EQ(s.world.objects.size(), 298u) << "slab, 100 pillars, 196 bars, light";
  EXPECT_EQ(s.world.billboards.size(), 502u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 196);
  EXPECT_EQ(s.glareCount, 2u);
  EXPECT_EQ(s.dustCount, 500u);
  EXPECT_EQ(s.glowPasses, 8);
  EXPECT_FALSE(s.glowSourceWritesColour) << "the glow source's base pass writes no colour";
  ASSERT_EQ(s.cubeObjects.size(), 197u);
  EXPECT_EQ(s.cubeObjects[0], slabObject);
  for (int n = 0; n < 196; ++n) EXPECT_EQ(s.cubeObjects[n + 1], firstBar + n);
  EXPECT_EQ(s.name, "bordersRolin");
  EXPECT_EQ(s.camera->name, "SceneBordersRollin.camera0");
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurAmount")->defaultValue, 0.45f);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersRollin, SlabAndPillars) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  const Mesh& slab = *s.world.objects[slabObject];
  EXPECT_EQ(slab.scale, Vector3(17.5f, 17.5f, 5.0f));
  EXPECT_EQ(slab.position, Vector3(0, 0, 10));
  const Material& p = slab.materials[0];
  const Material& g = slab.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.66f, 0.3f) * 1.5f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  EXPECT_EQ(p.stageCount, 3u);
  EXPECT_EQ(g.stageCount, 3u);
  scenetest::expectStage(p, 0, 1, "planartexture");
  scenetest::expectStage(p, 1, 1, "billbig", false, true);
  scenetest::expectStage(p, 2, 2, "cubemap.bill", true);
  scenetest::expectStage(g, 0, 1, "planartexture");
  scenetest::expectStage(g, 1, 1, "billbig", false, true);
  scenetest::expectStage(g, 2, 1, "cubemap.bill", true);
  EXPECT_EQ(p.stageScaleU[0], 1.0f);
  // The ring goes on from the last noise field's seeding.
  scenetest::expectRing(s.world, firstPillar, {102, scenetest::noiseDraws(6)}, RingShape(), "planartexture");
}

TEST(SceneBordersRollin, BarsFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  crtSrand(234);
  int n = 0;
  for (int a = 0; a < 4; ++a)
    for (int b = 0; b < 7; ++b)
      for (int c = 0; c < 7; ++c, ++n) {
        const int r1 = crtRand();
        const int r2 = crtRand();
        const int r3 = crtRand();
        const double r4 = randomUnit();
        const Vector3 home((c - 3) * 0.125f, (b - 3) * 0.125f, (a - 1.5f) * 0.125f);
        EXPECT_EQ(s.cubeHomes[n], home) << n;
        EXPECT_EQ(s.rotationHomes[n], home * 0.2f) << n;
        const Mesh& bar = *s.world.objects[firstBar + n];
        if (s.sceneTimeMs == 0 && bar.position == home) {
          EXPECT_NEAR(bar.rotation.x, (r2 / 32767.0 - 0.5) * 186 - 90, 1e-3) << n;
          EXPECT_NEAR(bar.rotation.y, (r1 / 32767.0 - 0.5) * 186, 1e-3) << n;
        }
        const double w = (r4 * r4 * 6 + 4) * 0.25;
        EXPECT_NEAR(bar.scale.x, w, 1e-5) << n;
        EXPECT_NEAR(bar.scale.y, (r3 / 32767.0 * 0.05 + 0.2) * 0.25, 1e-6) << n;
        EXPECT_NEAR(bar.scale.z, w * 0.025, 1e-6) << n;
        EXPECT_TRUE(bar.useMatrix);
        EXPECT_FLOAT_EQ(bar.materials[1].ambient.x, 0.25f);
        EXPECT_EQ(bar.materials[0].stageTexture[0], scenetest::textureId("hopmet"));
      }
  scenetest::expectBatch(s.world, firstBar, 196);
}

TEST(SceneBordersRollin, BarsAreHingedAtOneEndOnce) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  World plain;
  const int index = plain.addModel("./models/cubec.a3d", Material());
  ASSERT_GE(index, 0);
  const Mesh& original = *plain.objects[index];
  for (int k : {0, 77, 195}) {
    const Mesh& bar = *s.world.objects[firstBar + k];
    ASSERT_EQ(bar.vertices.size(), original.vertices.size());
    for (size_t v = 0; v < bar.vertices.size(); ++v) {
      if (!bar.vertices[v]) continue;
      EXPECT_EQ(bar.vertices[v]->position.x, original.vertices[v]->position.x + 1.0f) << k << " " << v;
      EXPECT_EQ(bar.vertices[v]->position.y, original.vertices[v]->position.y);
    }
  }
  // A mesh reaching from -1 to 1 now reaches from 0 to 2 on its own x axis.
  float lowest = 1e9f, highest = -1e9f;
  for (const Vertex* v : s.world.objects[firstBar]->vertices) {
    if (!v) continue;
    lowest = std::min(lowest, v->position.x);
    highest = std::max(highest, v->position.x);
  }
  EXPECT_FLOAT_EQ(lowest, 0.0f);
  EXPECT_FLOAT_EQ(highest, 2.0f);
}

TEST(SceneBordersRollin, EveryBarGetsTheSameColoursAndItsOwnOffsets) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  crtSrand(715517);
  const double f1 = randomSigned(), f2 = randomSigned(), f3 = randomSigned();
  const double pu = randomSigned(), pv = randomSigned(), gu = randomSigned(), gv = randomSigned();
  for (int i : {0, 1, 100, 195}) {
    const Mesh& bar = *s.world.objects[firstBar + i];
    const Material& p = bar.materials[0];
    const Material& g = bar.materials[1];
    EXPECT_NEAR(g.diffuse.x, (f1 * 1.65 + 2.5) * 6.25, 1e-4);
    EXPECT_NEAR(g.diffuse.y, (f2 * 0.85 + 1.1) * 6.25, 1e-4);
    EXPECT_NEAR(g.diffuse.z, (f3 * 0.34 + 0.5) * 6.25, 1e-4);
    EXPECT_NEAR(p.diffuse.x, (f1 * 1.2 + 1.66) * 0.4, 1e-5);
    EXPECT_NEAR(p.ambient.z, (f3 * 0.4 + 0.5) * 0.125, 1e-5);
    EXPECT_NEAR(p.stageOffsetU[0], pu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(p.stageOffsetV[0], pv + i * 0.1232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetU[0], gu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetV[0], gv + i * 0.1232141, 1e-4) << i;
  }
}

TEST(SceneBordersRollin, GlareAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  FlareSpec glares;
  glares.texture = "bill_d2ch";
  DustSpec dust;
  dust.count = 500;
  dust.spread = Vector3(15, 15, 5);
  const bool unmoved = s.world.billboards[0]->time == 0 && s.world.billboards[2]->timeStep == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 2, {23233, 0}, dust, unmoved);
}

TEST(SceneBordersRollin, PerFrameCameraLightBarsGlareAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 500);
  const float S = 5.8f, d = 193.1f, T = d + 59;
  s.camera->roll = 12.0f;
  s.camera->zoom = 0.7f;
  s.animate(S, d, 100);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 q(T * 0.08121234f * 2.2f, T * 0.013234f, T * 0.0423345f);
  const double ex = std::fabs(x.fractalSum(q, 5)), ey = std::fabs(y.fractalSum(q, 4)), ez = std::fabs(z.fractalSum(q, 4));
  EXPECT_NEAR(s.camera->position.x, ex * ex * ex * 28.32, 1e-4);
  EXPECT_NEAR(s.camera->position.y, ey * ey * ey * 7.42, 1e-4);
  EXPECT_NEAR(s.camera->position.z, ez * ez * ez * 28.2 - 10, 1e-4);
  EXPECT_EQ(s.camera->direction, -s.camera->position);
  EXPECT_EQ(s.camera->roll, 12.0f) << "roll and zoom stay as the Parameters hold them";
  EXPECT_EQ(s.camera->zoom, 0.7f);

  scenetest::expectLightOnOrbit(s.world, lightIndex, S * 0.5 + 3.1415927);

  for (int k : {1, 50, 196}) {
    const Mesh& bar = *s.world.objects[firstBar + k - 1];
    const Vector3 position = warped(s.cubeHomes[k - 1], k, S * 2.4f);
    const Vector3 r = warped(s.rotationHomes[k - 1], k, S) * 74.0f;
    const Vector3 swing(-30.0f, -clampNegated(r.y), clampNegated(r.z));
    EXPECT_EQ(bar.rotation.x, -30.0f);
    EXPECT_NEAR(bar.rotation.y, swing.y, 1e-3) << k;
    EXPECT_NEAR(bar.rotation.z, swing.z, 1e-3) << k;
    EXPECT_NEAR(bar.position.x, position.x, 1e-4) << k;
    EXPECT_NEAR(bar.position.y, position.y, 1e-4) << k;
    EXPECT_NEAR(bar.position.z, 2 * std::cos((swing.y / 360.0 + swing.y / 360.0) * 3.1415927) + 3.2, 1e-4) << k;
  }

  // Just before a beat the glare is small and the glow at its usual amount.
  const float beat = SceneBordersRollin::beat(S);
  EXPECT_EQ(beat, 0.0f);
  EXPECT_EQ(s.glowAmountDrop, 0.0f);
  EXPECT_EQ(s.world.billboards[0]->halfSize, Vector3(8, 4, 5) * 0.75f);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, T);
  DustDrift drift;
  drift.zScale = 0.25f;
  scenetest::expectDustDrifted(s.world, 2, before, {0, 250, 499}, x, y, z, drift, 100, S);
}

TEST(SceneBordersRollin, TheBarsSwingStaysInItsRange) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  for (float S : {0.0f, 7.3f, 15.0f, 29.9f}) {
    s.animate(S, 187.3f + S, 40);
    for (int k = 0; k < 196; ++k) {
      const Vector3& r = s.world.objects[firstBar + k]->rotation;
      EXPECT_EQ(r.x, -30.0f) << "every frame";
      EXPECT_GE(r.y, 30.0f);
      EXPECT_LE(r.y, 180.0f);
      EXPECT_GE(r.z, -180.0f);
      EXPECT_LE(r.z, -30.0f);
    }
  }
  EXPECT_EQ(SceneBordersRollin::swing(Vector3(500, 10, 90)), Vector3(-30, 30, -90));
  EXPECT_EQ(SceneBordersRollin::swing(Vector3(-5, 400, -400)), Vector3(-30, 180, -30));
}

TEST(SceneBordersRollin, TheBeatSwellsTheGlareAndSharpensTheGlowUnclamped) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  s.animate(2.9001f, 190.0f, 40);  // on the beat at 2.9 s
  const float beat = SceneBordersRollin::beat(2.9001f);
  EXPECT_NEAR(beat, 1.0f, 1e-3);
  EXPECT_FLOAT_EQ(s.glowAmountDrop, beat * 0.25f);
  EXPECT_EQ(s.world.billboards[1]->halfSize, Vector3(8, 4, 5) * (beat * 3.0f + 0.75f));
  // With a lower glowBlurAmount the amount handed to glowPass goes below 0,
  // and the frame takes it as it is.
  s.glowBlurAmount = 0.1f;
  s.sceneTimeMs = 2870;  // 2.91 s after the step
  testgl::drainErrors();
  s.render(190040, 40);
  EXPECT_LT(s.glowBlurAmount - s.glowAmountDrop, 0.0f);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  s.glowBlurAmount = 0.45f;
}

TEST(SceneBordersRollin, FrameLeavesNoGLErrorButTheRejectedLightModel) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollin& s = scene();
  testgl::drainErrors();
  s.sceneTimeMs = 5000;
  s.render(192340, 40);
  EXPECT_EQ(s.sceneTimeMs, 5040);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
}
