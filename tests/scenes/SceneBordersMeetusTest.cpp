// The cube field: what its constructor builds from which random draws, the
// swarm, camera and dust per frame, and the beat flash.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "render/Overlay.h"
#include "scenes/SceneBordersMeetus.h"

namespace {

constexpr int slabObject = 0;
constexpr int firstPillar = 1;
constexpr int firstCube = 101;
constexpr int lightIndex = 551;

SceneBordersMeetus& scene() { return *scenetest::buildOnce<SceneBordersMeetus>("bordersMeetus").scene; }

FlareSpec glares() {
  FlareSpec f;
  f.count = 2;
  f.texture = "bill_d2ch";
  f.halfSize = Vector3(8, 4, 5);
  f.alpha = 0.9f;
  f.colour = Vector3(1, 1, 1) * 0.65f;  // the colour draw is dropped
  return f;
}

DustSpec dust() {
  DustSpec d;
  d.count = 300;
  d.spread = Vector3(9, 9, 10);
  return d;
}

}  // namespace

TEST(SceneBordersMeetus, ConstructionEndsAfterTheDustDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then four draws for each of the 300 motes.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersMeetus>("bordersMeetus").stateAfter, 23233,
                                      1200);
}

TEST(SceneBordersMeetus, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  ASSERT_EQ(s.world.objects.size(), 552u) << "slab, 100 pillars, 450 cubes, light";
  EXPECT_EQ(s.world.billboards.size(), 302u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 450);
  EXPECT_EQ(s.glareCount, 2u);
  EXPECT_EQ(s.dustCount, 300u);
  EXPECT_EQ(s.glowPasses, 6);
  ASSERT_EQ(s.cubeObjects.size(), 451u);
  EXPECT_EQ(s.cubeObjects[0], slabObject);
  for (int n = 0; n < 450; ++n) EXPECT_EQ(s.cubeObjects[n + 1], firstCube + n);
  EXPECT_EQ(s.name, "bordersMeetus");
  EXPECT_EQ(s.camera->name, "SceneBordersMeetus.camera0");
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
}

TEST(SceneBordersMeetus, SlabAndPillars) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  const Mesh& slab = *s.world.objects[slabObject];
  EXPECT_EQ(slab.scale, Vector3(37.5f, 37.5f, 5.0f));
  EXPECT_EQ(slab.position, Vector3(0, 0, 10));
  const Material& p = slab.materials[0];
  const Material& g = slab.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  EXPECT_EQ(p.stageCount, 2u);
  scenetest::expectStage(p, 0, 1, "planartexture");
  EXPECT_EQ(p.stageScaleU[0], 4.0f);
  EXPECT_EQ(p.stageScaleV[0], 4.0f);
  scenetest::expectStage(p, 1, 2, "cubemap.bill", true);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.76f, 0.3f) * 1.5f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  scenetest::expectStage(g, 0, 1, "solidnoisebump");
  scenetest::expectStage(g, 1, 2, "cubemap.bill", true);

  // NoiseField(6, 102) draws 3 x 64 numbers; the ring goes on from there.
  scenetest::expectRing(s.world, firstPillar, {102, scenetest::noiseDraws(6)}, RingShape());
}

TEST(SceneBordersMeetus, SwarmFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  crtSrand(234);
  int n = 0;
  for (int a = 0; a < 2; ++a)
    for (int b = 0; b < 15; ++b)
      for (int c = 0; c < 15; ++c, ++n) {
        const int r1 = crtRand();
        const int r2 = crtRand();
        const int r3 = crtRand();
        const Vector3 home((c - 7) * 0.25f, (b - 7) * 0.25f, (a - 0.5f) * 0.25f);
        EXPECT_EQ(s.cubeHomes[n], home) << n;
        const Mesh& cube = *s.world.objects[firstCube + n];
        if (cube.position == home || s.sceneTimeMs == 0) {
          EXPECT_NEAR(cube.rotation.x, (r2 / 32767.0 - 0.5) * 186 - 90, 1e-3) << n;
          EXPECT_NEAR(cube.rotation.y, (r1 / 32767.0 - 0.5) * 186, 1e-3) << n;
        }
        EXPECT_FLOAT_EQ(cube.scale.x, 0.01875f);
        EXPECT_FLOAT_EQ(cube.scale.z, 0.01875f);
        EXPECT_NEAR(cube.scale.y, (r3 / 32767.0 * 0.05 + 0.2) * 4.5, 1e-5) << n;
        EXPECT_TRUE(cube.useMatrix);
      }
  EXPECT_TRUE(s.world.objects[firstCube]->batchFirst);
  EXPECT_FALSE(s.world.objects[firstCube + 200]->setupState);
  EXPECT_TRUE(s.world.objects[firstCube + 449]->batchLast);
}

TEST(SceneBordersMeetus, EveryCubeGetsTheSameColoursAndItsOwnOffsets) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  crtSrand(342435);
  const double f1 = randomSigned(), f2 = randomSigned(), f3 = randomSigned();
  const double pu = randomSigned(), pv = randomSigned(), gu = randomSigned(), gv = randomSigned();
  for (int i : {0, 1, 224, 449}) {
    const Mesh& cube = *s.world.objects[firstCube + i];
    const Material& p = cube.materials[0];
    const Material& g = cube.materials[1];
    EXPECT_NEAR(g.diffuse.x, (f1 * 2.5 + 2.5) * 2.5, 1e-4);
    EXPECT_NEAR(g.diffuse.y, (f2 * 2.5 + 2.5) * 2.5, 1e-4);
    EXPECT_NEAR(p.diffuse.z, (f3 * 1.5 + 1.5) * 0.75, 1e-4);
    EXPECT_NEAR(p.ambient.x, (f1 * 0.5 + 0.5) * 0.125, 1e-5);
    EXPECT_FLOAT_EQ(g.ambient.x, 0.025f);
    EXPECT_NEAR(p.stageOffsetU[0], pu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(p.stageOffsetV[0], pv + i * 0.1232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetU[0], gu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetV[0], gv + i * 0.1232141, 1e-4) << i;
    EXPECT_EQ(p.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(g.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(p.stageScaleU[0], 2.0f);
    EXPECT_EQ(g.stageScaleU[0], 1.0f);
    EXPECT_EQ(cube.currentMaterial, 0);
  }
}

TEST(SceneBordersMeetus, GlareAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  const bool unmoved = s.sceneTimeMs == 0 && s.world.billboards[0]->time == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares(), unmoved);
  scenetest::expectDust(s.world, 2, {23233, 0}, dust(), unmoved);
}

TEST(SceneBordersMeetus, PerFrameCameraLightGlareAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 300);
  const float S = 4.0f, d = 139.0f, T = d + 59 + 21;
  s.animate(S, d, 200);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  EXPECT_FLOAT_EQ(s.camera->roll, x.fractalSum(q, 8) * 174.32f - 70);
  const float depth = std::fabs(z.fractalSum(q, 4));
  EXPECT_FLOAT_EQ(s.camera->position.z, depth * depth * depth * 8.2f - 10);
  EXPECT_EQ(s.camera->position.x, 0.0f);
  q *= 1.6f;
  EXPECT_FLOAT_EQ(s.camera->zoom, y.fractalSum(q, 4) * 0.42f + 0.3f);
  EXPECT_EQ(s.camera->direction, -s.camera->position);

  scenetest::expectLightOnOrbit(s.world, lightIndex, S * -0.12f + 4.712389f);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, T);
  DustDrift drift;
  drift.sampleScale = 0.033f;
  drift.zScale = 0.125f;  // z drifts at an eighth
  scenetest::expectDustDrifted(s.world, 2, before, {0, 150, 299}, x, y, z, drift, 200, S);
  s.animate(S, d, -200);  // the rewind runs the dust back
  for (int m : {0, 150, 299}) {
    const Vector3 at = s.world.billboards[2 + m]->position;
    EXPECT_NEAR(at.x, before[m].x, 5e-3);  // back along the field, sampled at the moved point
    EXPECT_NEAR(at.y, before[m].y, 5e-3);
    EXPECT_NEAR(at.z, before[m].z, 5e-3);
  }
}

TEST(SceneBordersMeetus, BeforeSixSecondsTheSwarmKeepsItsTidySampling) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const float d = 140.9f, T = d + 80.0f;
  auto expectAt = [&](float e1, float e2, bool equal) {
    int differing = 0;
    for (int n : {0, 7, 224, 225, 449}) {
      const Vector3 p = SceneBordersMeetus::swarmSamplePoint(s.cubeHomes[n], e1, e2, T);
      const Vector3 want(x.fractalSum(p, 6) * 12.5f, y.fractalSum(p, 7) * 12.5f, z.fractalSum(p, 6) * 12.5f);
      const Vector3 at = s.world.objects[firstCube + n]->position;
      if (equal) {
        EXPECT_FLOAT_EQ(at.x, want.x) << n;
        EXPECT_FLOAT_EQ(at.y, want.y) << n;
        EXPECT_FLOAT_EQ(at.z, want.z) << n;
      } else if (!(at == want)) {
        ++differing;
      }
    }
    return differing;
  };
  s.animate(5.9f, d, 0);
  expectAt(0, 0, true);
  s.animate(0.0f, d, 0);
  expectAt(0, 0, true);
  s.animate(7.0f, d, 0);  // E2 has begun
  EXPECT_EQ(expectAt(0, 0, false), 5);
  // The sampling point itself, by its formula.
  const Vector3 h(0.5f, -0.25f, 0.125f);
  const Vector3 p = SceneBordersMeetus::swarmSamplePoint(h, 0, 0, 100);
  EXPECT_FLOAT_EQ(p.x, std::cos(0.012f * 0.5f * 12.2f) * 0.123f + 3.4f + 10);
  EXPECT_FLOAT_EQ(p.y, 0.012f * -0.25f + 10);
  EXPECT_FLOAT_EQ(p.z, 0.002f * 0.125f + 10);
}

TEST(SceneBordersMeetus, FlashIsFullAtTheStartAndGoneAtThreeQuarters) {
  EXPECT_FLOAT_EQ(SceneBordersMeetus::beatFlash(0.0f), 1.0f);
  EXPECT_GT(SceneBordersMeetus::beatFlash(0.5f), 0.0f);
  EXPECT_LT(SceneBordersMeetus::beatFlash(0.5f), 0.1f);
  EXPECT_EQ(SceneBordersMeetus::beatFlash(0.75f), 0.0f);
  EXPECT_EQ(SceneBordersMeetus::beatFlash(0.9f), 0.0f);
  EXPECT_EQ(SceneBordersMeetus::beatFlash(1.0f), 0.0f) << "a beat counts once S is past it";
  EXPECT_NEAR(SceneBordersMeetus::beatFlash(1.001f), 1.0f, 1e-3);
  EXPECT_NEAR(SceneBordersMeetus::beatFlash(29.001f), 1.0f, 1e-3);
  EXPECT_EQ(SceneBordersMeetus::beatFlash(29.8f), 0.0f);
  // Groups of three, one second apart.
  EXPECT_FLOAT_EQ(SceneBordersMeetus::beats[1], 2.9f);
  EXPECT_FLOAT_EQ(SceneBordersMeetus::beats[22], 29.0f);
  const float f = 1.0f - 0.0f;  // half a flash at the midpoint of its fall: 0.5^4
  EXPECT_NEAR(SceneBordersMeetus::beatFlash(3.9f + 0.375f), 0.0625f * f, 1e-4);
}

TEST(SceneBordersMeetus, OverlappingFlashesAddBeforeTheFourthPower) {
  const float close[2] = {1.0f, 1.1f};
  const float one = SceneBordersMeetus::beatFlash(1.15f, close, 1);
  const float two = SceneBordersMeetus::beatFlash(1.15f, close, 2);
  const float a = std::pow(one, 0.25f);
  const float b = std::pow(SceneBordersMeetus::beatFlash(1.15f, close + 1, 1), 0.25f);
  EXPECT_NEAR(two, std::pow(a + b, 4.0f), 1e-3);
  EXPECT_GT(two, 1.0f);
}

TEST(SceneBordersMeetus, FlashAboveOneIsClampedByGL) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  Camera* c = scene().camera;
  auto centreAfterFlash = [&](float flash) {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    c->apply();
    drawFlash(1.0f, 1.0f, 1.0f, flash, 0.5f);  // the beat flash of the scene's overlay
    c->release();
    return testgl::readPixels(scenetest::width / 2, scenetest::height / 2, 1, 1);
  };
  const std::vector<uint8_t> full = centreAfterFlash(1.0f);
  const std::vector<uint8_t> over = centreAfterFlash(7.5f);
  const std::vector<uint8_t> half = centreAfterFlash(0.5f);
  EXPECT_GE(full[0], 254);
  EXPECT_EQ(over[0], full[0]);
  EXPECT_EQ(over[2], full[2]);
  EXPECT_NEAR(half[0], 128, 3);
  // The quad covers the whole picture.
  const std::vector<uint8_t> corner = [&] {
    centreAfterFlash(1.0f);
    return testgl::readPixels(1, 1, 1, 1);
  }();
  EXPECT_GE(corner[1], 254);
}

TEST(SceneBordersMeetus, FirstFrameIsWhite) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersMeetus& s = scene();
  s.sceneTimeMs = 0;
  testgl::drainErrors();
  s.render(135000, 0);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  const std::vector<uint8_t> pixels = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  for (size_t i = 0; i < pixels.size(); i += 4 * 97) EXPECT_GE(pixels[i], 250) << i;
  s.sceneTimeMs = 800;
  s.render(135800, 0);  // flash over
  testgl::drainErrors();
  const std::vector<uint8_t> later = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  int dark = 0;
  for (size_t i = 0; i < later.size(); i += 4) dark += later[i] < 200;
  EXPECT_GT(dark, 0);
}
