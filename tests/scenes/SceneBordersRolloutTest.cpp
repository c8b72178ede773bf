// The column of slats: construction draws, the colour groups, the shifted
// scene time, the eight glares and one frame's GL state.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "scenes/SceneBordersRollout.h"

namespace {

constexpr int wallObject = 0;
constexpr int firstPillar = 1;
constexpr int firstSlat = 101;
constexpr int lightIndex = 551;

SceneBordersRollout& scene() { return *scenetest::buildOnce<SceneBordersRollout>("bordersRolout").scene; }

Vector3 warped(Vector3 v, int index, float t) {
  static NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 p(std::sin(v.x * 0.012f * 12.2f) * 0.123f + index * 0.0003f + t * 0.034f + 10.0f, v.y * 0.012f + 10.0f,
                  v.z * 0.012f + 10.0f);
  return Vector3(x.fractalSum(p, 6) * 12.5f, y.fractalSum(p, 7) * 12.5f, z.fractalSum(p, 6) * 12.5f);
}

}  // namespace

TEST(SceneBordersRollout, ConstructionEndsAfterTheDustDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersRollout>("bordersRolout").stateAfter, 23233,
                                      1200);
}

TEST(SceneBordersRollout, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  ASSERT_EQ(s.world.objects.size(), 552u) << "wall, 100 pillars, 450 slats, light";
  EXPECT_EQ(s.world.billboards.size(), 308u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 450);
  EXPECT_EQ(s.glareCount, 8u);
  EXPECT_EQ(s.dustCount, 300u);
  EXPECT_EQ(s.glowPasses, 7);
  EXPECT_TRUE(s.glowSourceWritesColour);
  for (int n = 0; n < 450; ++n) EXPECT_EQ(s.cubeObjects[n + 1], firstSlat + n);
  EXPECT_EQ(s.name, "bordersRolout");
  EXPECT_EQ(s.camera->name, "SceneBordersRollout.camera0");
  EXPECT_EQ(s.parameters.size(), 15u);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersRollout, WallAndAnEllipticRing) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  const Mesh& wall = *s.world.objects[wallObject];
  EXPECT_EQ(wall.scale, Vector3(7.5f, 125.0f, 5.0f));
  EXPECT_EQ(wall.position, Vector3(0, 0, 10));
  scenetest::expectColour(wall.materials[0].ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(wall.materials[1].diffuse, Vector3(1.15f, 0.76f, 0.3f) * 1.5f, 1.0f);
  scenetest::expectStage(wall.materials[0], 0, 1, "planartexture");
  scenetest::expectStage(wall.materials[0], 1, 2, "cubemap.bill", true);
  scenetest::expectStage(wall.materials[1], 0, 1, "solidnoisebump");
  scenetest::expectStage(wall.materials[1], 1, 2, "cubemap.bill", true);
  RingShape ellipse;
  ellipse.xRadius = 15.0f;
  scenetest::expectRing(s.world, firstPillar, {102, scenetest::noiseDraws(6)}, ellipse, "solidnoisebump");
}

TEST(SceneBordersRollout, SlatsFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  crtSrand(234);
  int n = 0;
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 50; ++b)
      for (int c = 0; c < 3; ++c, ++n) {
        crtRand();
        crtRand();
        const int r3 = crtRand();
        const Vector3 home(c - 1.0f, b - 24.5f, a - 1.0f);
        EXPECT_EQ(s.cubeHomes[n], home) << n;
        EXPECT_EQ(s.rotationHomes[n], home) << n;
        const Mesh& slat = *s.world.objects[firstSlat + n];
        EXPECT_EQ(slat.scale.x, 0.46875f);
        EXPECT_NEAR(slat.scale.y, (r3 / 32767.0 * 0.05 + 0.2) * 1.125, 1e-6) << n;
        EXPECT_EQ(slat.scale.z, 0.234375f);
        EXPECT_TRUE(slat.useMatrix);
        EXPECT_EQ(slat.materials[0].stageScaleU[0], 1.0f) << "the picture's stage 0 scale stays 1";
        EXPECT_FLOAT_EQ(slat.materials[1].ambient.x, 0.05f);
      }
  scenetest::expectBatch(s.world, firstSlat, 450);
}

TEST(SceneBordersRollout, ThreeColourGroupsOf150) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  for (int group = 0; group < 3; ++group) {
    crtSrand(2354250 + group);
    const double f1 = randomSigned(), f2 = randomSigned(), f3 = randomSigned();
    for (int i : {group * 150, group * 150 + 77, group * 150 + 149}) {
      const Material& p = s.world.objects[firstSlat + i]->materials[0];
      const Material& g = s.world.objects[firstSlat + i]->materials[1];
      EXPECT_NEAR(g.diffuse.x, (f1 * 1.65 + 2.5) * 2.5, 1e-4) << i;
      EXPECT_NEAR(g.diffuse.z, (f3 * 0.34 + 0.5) * 2.5, 1e-4) << i;
      EXPECT_NEAR(p.diffuse.y, (f2 * 0.44 + 0.64) * 0.8, 1e-5) << i;
      EXPECT_NEAR(p.ambient.x, (f1 * 0.4 + 0.5) * 0.4, 1e-5) << i;
    }
    // Within a group only the texture offsets differ.
    const Material& first = s.world.objects[firstSlat + group * 150]->materials[0];
    const Material& last = s.world.objects[firstSlat + group * 150 + 149]->materials[0];
    EXPECT_EQ(first.diffuse, last.diffuse);
    EXPECT_NE(first.stageOffsetU[0], last.stageOffsetU[0]);
  }
  EXPECT_NE(s.world.objects[firstSlat]->materials[0].diffuse, s.world.objects[firstSlat + 150]->materials[0].diffuse);
}

TEST(SceneBordersRollout, EightGlaresAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  FlareSpec glares;
  glares.count = 8;
  glares.texture = "bill_d2ch";
  glares.alpha = 0.45f;
  const bool unmoved = s.world.billboards[0]->time == 0 && s.world.billboards[8]->timeStep == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 8, {23233, 0}, DustSpec(), unmoved);
}

TEST(SceneBordersRollout, TheFirstFrameRunsTenSecondsIn) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 8, 300);
  const float d = 217.5f, T = d + 63 + 10 - 7.5f - 7.5f, S = 10.0f;
  s.animate(0.0f, d, 40);
  // The light does not start at the angle pi.
  scenetest::expectLightOnOrbit(s.world, lightIndex, S * 0.5 + 3.1415927, 0.33);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  const double ex = std::fabs(x.fractalSum(q, 8)), ey = std::fabs(y.fractalSum(q, 4)), ez = std::fabs(z.fractalSum(q, 4));
  EXPECT_NEAR(s.camera->position.x, ex * ex * ex * 8.32, 1e-4);
  EXPECT_NEAR(s.camera->position.y, ey * ey * ey * 7.42, 1e-4);
  EXPECT_NEAR(s.camera->position.z, ez * ez * ez * 8.2 - 10, 1e-4);
  EXPECT_EQ(s.camera->direction, -s.camera->position);

  for (int k : {1, 225, 450}) {
    const Mesh& slat = *s.world.objects[firstSlat + k - 1];
    const Vector3 p = warped(s.cubeHomes[k - 1], k, S);
    const Vector3 r = warped(s.rotationHomes[k - 1], k, S) * 74.0f;
    EXPECT_NEAR(slat.position.x, p.x, 1e-4) << k;
    EXPECT_NEAR(slat.position.z, p.z, 1e-4) << k;
    EXPECT_NEAR(slat.rotation.x, r.x, 1e-2) << "no clamps here";
    EXPECT_NEAR(slat.rotation.y, r.y, 1e-2) << k;
  }
  FlareOrbit wide;
  wide.phaseX = 0.34123f;
  wide.phaseY = 0.2823f;
  wide.size = Vector3(8, 9, 1.5f);
  scenetest::expectFlaresAtLight(s.world, 0, 8, lightIndex, T, wide);
  DustDrift drift;
  drift.zScale = 0.25f;
  scenetest::expectDustDrifted(s.world, 8, before, {0, 150, 299}, x, y, z, drift, 40, S);
}

TEST(SceneBordersRollout, FrameLeavesNoGLErrorButTheRejectedLightModel) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollout& s = scene();
  testgl::drainErrors();
  s.render(222000, 40);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
}
