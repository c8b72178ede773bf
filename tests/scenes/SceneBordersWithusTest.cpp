// The wall of slivers: what its constructor builds from which random draws,
// the one palette, the soft shadow Parameters, the camera and slivers per
// frame, and the fade in from black.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/RenderTarget.h"
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersWithus.h"

namespace {

constexpr int backdropObject = 0;
constexpr int firstPlate = 1;
constexpr int firstSliver = 101;
constexpr int lightIndex = 851;

SceneBordersWithus& scene() { return *scenetest::buildOnce<SceneBordersWithus>("bordersWithus").scene; }

RingShape plates() {
  RingShape r;
  r.xSpread = 20;
  r.xRadius = 35;
  r.ySpread = 20;
  r.yRadius = 25;
  r.depthSpread = 3;
  r.depthBase = 5;
  r.width = 2;
  return r;
}

LatticeShape wall() {
  LatticeShape w;
  w.countX = 3;
  w.countY = 250;
  w.countZ = 1;
  w.centre = Vector3(1, 124.5f, 0);
  w.homeScale = Vector3(0.25f, 0.125f, 0.25f);
  w.tumbleX = 143;
  w.tumbleY = 130;
  w.width = 0.0625f;
  w.depth = 0.0625f;
  w.heightScale = 0.25f;
  w.wastedDraws = 2;
  return w;
}

std::vector<uint8_t> frame(SceneBordersWithus& s, int32_t sceneMs, int32_t timeMs) {
  s.sceneTimeMs = sceneMs;
  s.render(timeMs, 0);
  return testgl::readPixels(0, 0, scenetest::width, scenetest::height);
}

int differingBytes(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
  int n = 0;
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) n += a[i] != b[i];
  return n;
}

}  // namespace

TEST(SceneBordersWithus, ConstructionEndsAfterTheFleckDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then four draws for each of the 300 flecks.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWithus>("bordersWithus").stateAfter, 23233,
                                      1200);
}

TEST(SceneBordersWithus, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  ASSERT_EQ(s.world.objects.size(), 852u) << "backdrop, 100 plates, 750 slivers, light";
  EXPECT_EQ(s.world.billboards.size(), 302u) << "two glares, 300 flecks";
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.rows, 250);
  EXPECT_EQ(s.columns, 3);
  EXPECT_EQ(s.layers, 1);
  EXPECT_EQ(s.sliverCount, 750);
  EXPECT_EQ(s.fleckCount, 300);
  EXPECT_EQ(s.glareCount, 2u);
  EXPECT_EQ(s.paletteSeed, 4517);
  EXPECT_EQ(s.glowPasses, 8);
  ASSERT_EQ(s.objects.size(), 760u);
  EXPECT_EQ(s.objects[0], backdropObject);
  for (int n = 0; n < 750; ++n) EXPECT_EQ(s.objects[n + 1], firstSliver + n);
  EXPECT_EQ(s.name, "bordersWithus");
  EXPECT_EQ(s.camera->name, "SceneBordersWithus.camera0");
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
  EXPECT_FLOAT_EQ(s.spareBlurAmount, 0.1f);
  scenetest::expectStandardLight(s.world, lightIndex, 0.0f);
}

TEST(SceneBordersWithus, TwoSoftShadowParametersAfterTheGlowGroup) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  ASSERT_EQ(s.parameters.size(), 17u);
  const std::vector<Parameter> list(s.parameters.begin(), s.parameters.end());
  EXPECT_EQ(list[14].name, "glowBlurAlpha");
  const Parameter& amount = list[15];
  const Parameter& loops = list[16];
  EXPECT_EQ(amount.name, "softShadowMaskBlurAmount");
  EXPECT_EQ(amount.value, &s.world.softShadowMaskBlurAmount);
  EXPECT_FLOAT_EQ(amount.step, 0.001f);
  EXPECT_FLOAT_EQ(amount.defaultValue, 0.1f);
  EXPECT_EQ(loops.name, "softShadowMaskBlurLoops");
  EXPECT_EQ(loops.value, &s.softShadowMaskBlurLoops);
  EXPECT_FLOAT_EQ(loops.step, 1.0f);
  EXPECT_FLOAT_EQ(loops.defaultValue, 3.0f);
  EXPECT_EQ(amount.rangeLow, 0.0f);
  EXPECT_EQ(loops.rangeHigh, 0.0f);
}

TEST(SceneBordersWithus, BackdropAndPlates) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  const Mesh& backdrop = *s.world.objects[backdropObject];
  EXPECT_EQ(backdrop.scale, Vector3(7.5f, 625.0f, 5.0f));
  EXPECT_EQ(backdrop.position, Vector3(0, 0, 10));
  const Material& p = backdrop.materials[0];
  const Material& g = backdrop.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  EXPECT_EQ(p.stageCount, 2u);
  scenetest::expectStage(p, 0, stageModulate, "planartexture");
  EXPECT_EQ(p.stageScaleU[0], 1.0f);
  scenetest::expectStage(p, 1, stageAdd, "cubemap.bill", true);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.76f, 0.3f) * 1.5f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  EXPECT_EQ(g.stageCount, 2u);
  scenetest::expectStage(g, 0, stageModulate, "solidnoisebump");
  scenetest::expectStage(g, 1, stageAdd, "cubemap.bill", true);
  // NoiseField(6, 102) draws 3 x 64 numbers; the plates go on from there,
  // the cosine's number first, thinner and shorter than the usual ring.
  scenetest::expectRing(s.world, firstPlate, {102, scenetest::noiseDraws(6)}, plates(), "solidnoisebump");
}

TEST(SceneBordersWithus, SliversFromSeed234WithTwoWastedDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  scenetest::expectLattice(s.world, s.objects, 1, s.sliverHomes, {234, 0}, wall(), s.sceneTimeMs == 0);
  // By hand: the first sliver at (-1, -124.5 / 2, 0) 0.25; the fourth starts row 1.
  EXPECT_EQ(s.sliverHomes[0], Vector3(-0.25f, -15.5625f, 0.0f));
  EXPECT_EQ(s.sliverHomes[3], Vector3(-0.25f, -15.4375f, 0.0f));
  EXPECT_EQ(s.sliverHomes[749], Vector3(0.25f, 15.5625f, 0.0f));
  crtSrand(234);
  for (int i = 0; i < 5; ++i) crtRand();  // the first sliver's three draws and its two wasted ones
  const int r1 = crtRand(), r2 = crtRand(), r3 = crtRand();
  (void)r1;
  (void)r2;
  EXPECT_NEAR(s.world.objects[firstSliver + 1]->scale.y, (r3 / 32767.0 * 0.05 + 0.2) * 0.25, 1e-7);
  EXPECT_FLOAT_EQ(s.world.objects[firstSliver + 1]->scale.z, 0.0625f) << "the wasted products are multiplied by 0";
}

TEST(SceneBordersWithus, EverySliverGetsTheSameBaseColoursAndItsOwnOffsets) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  crtSrand(4517);
  double d[16];
  for (double& v : d) v = randomSigned();
  const Material& p0 = s.world.objects[firstSliver]->materials[0];
  const Material& g0 = s.world.objects[firstSliver]->materials[1];
  EXPECT_NEAR(g0.diffuse.x, (d[0] * 2.5 + 2.5) * 1.5, 1e-4);
  EXPECT_NEAR(g0.diffuse.z, (d[2] * 2.5 + 2.5) * 1.5, 1e-4);
  EXPECT_NEAR(p0.diffuse.y, (d[4] * 1.5 + 1.5) * 1.5, 1e-4);
  EXPECT_NEAR(p0.ambient.x, (d[6] + 1) * 0.1, 1e-5);
  EXPECT_NEAR(p0.ambient.z, (d[8] + 1) * 0.1, 1e-5);
  EXPECT_NEAR(g0.ambient.y, (d[10] + 1) * 0.05, 1e-5);
  EXPECT_FLOAT_EQ(p0.ambient.alpha, 0.0f);
  TextureStore& t = *scenetest::demo().textures;
  for (int n : {0, 1, 2, 374, 749}) {
    const Mesh& sliver = *s.world.objects[firstSliver + n];
    const Material& p = sliver.materials[0];
    const Material& g = sliver.materials[1];
    EXPECT_EQ(p.diffuse.x, p0.diffuse.x) << n;
    EXPECT_EQ(p.ambient.y, p0.ambient.y) << n;
    EXPECT_EQ(g.diffuse.z, g0.diffuse.z) << n;
    EXPECT_EQ(g.ambient.x, g0.ambient.x) << n;
    EXPECT_NEAR(p.stageOffsetU[0], d[12] + n * 0.232141, 1e-4) << n;
    EXPECT_NEAR(p.stageOffsetV[0], d[13] + n * 0.1232141, 1e-4) << n;
    EXPECT_NEAR(g.stageOffsetU[0], d[14] + n * 0.232141, 1e-4) << n;
    EXPECT_NEAR(g.stageOffsetV[0], d[15] + n * 0.1232141, 1e-4) << n;
    EXPECT_EQ(p.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(g.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(sliver.currentMaterial, 0);
  }
  // A neighbour differs by the offset step only.
  const Material& p1 = s.world.objects[firstSliver + 1]->materials[0];
  EXPECT_NEAR(p1.stageOffsetU[0] - p0.stageOffsetU[0], 0.232141, 1e-5);
}

TEST(SceneBordersWithus, GlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  FlareSpec glares;
  glares.halfSize = Vector3(16, 4, 5);
  DustSpec flecks;  // 300 black flecks, spread (9, 9, 10), alpha 1
  const bool unmoved = s.sceneTimeMs == 0 && s.world.billboards[0]->position.y == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 2, {23233, 0}, flecks, true);  // the flecks never move here
}

TEST(SceneBordersWithus, PerFrameCameraBlurLoopsLightSliversAndGlares) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  const std::vector<Vector3> flecks = scenetest::billboardPositions(s.world, 2, 300);
  const float S = 2.5f, d = 122.5f, t = S + 13, m = d + 62;
  s.softShadowMaskBlurLoops = 2.7f;
  s.animate(S, d, 100);
  EXPECT_EQ(s.world.softShadowMaskBlurLoops, 2) << "truncated";

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 v(m * 0.01234f, m * 0.03234f, m * 0.023345f);
  EXPECT_FLOAT_EQ(s.camera->zoom, x.fractalSum(v, 7) * 0.32f + 0.52f);
  EXPECT_FLOAT_EQ(s.camera->roll, y.fractalSum(v, 7) * 173.2f);
  EXPECT_FLOAT_EQ(s.camera->position.z, z.fractalSum(v, 7) * 6.2f - 10);
  EXPECT_EQ(s.camera->position.x, 0.0f);
  EXPECT_EQ(s.camera->direction, Vector3(0, 0, 10)) << "the look stays as built";

  scenetest::expectLightOnOrbit(s.world, lightIndex, t * 0.5f);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, m);
  const float a = easeInAt(t, 12, 6), b = easeInAt(t, 6, 6);
  for (int n : {0, 1, 400, 749}) {
    const Vector3 h = s.sliverHomes[n];
    const float k = a * 0.01f + 0.012f;
    const Vector3 p(std::cos(k * h.x * 12.2f) * 0.123f + m * 0.034f + 10, b * 0.3f * h.z * 0.7f + k * h.y + 10,
                    (a * 0.01f + 0.002f) * h.z + 10);
    const Vector3 at = s.world.objects[firstSliver + n]->position;
    EXPECT_FLOAT_EQ(at.x, x.fractalSum(p, 6) * 12.5f) << n;
    EXPECT_FLOAT_EQ(at.y, y.fractalSum(p, 7) * 12.5f) << n;
    EXPECT_FLOAT_EQ(at.z, z.fractalSum(p, 6) * 12.5f) << n;
  }
  EXPECT_EQ(scenetest::billboardPositions(s.world, 2, 300)[17], flecks[17]) << "the flecks stand still";
  s.softShadowMaskBlurLoops = 3.0f;
}

TEST(SceneBordersWithus, TheFadeComesInFromBlackAndIsGoneAfterSeventeen) {
  EXPECT_EQ(SceneBordersWithus::fadeFromBlack(13.0f), 1.0f) << "black at the scene's start";
  EXPECT_EQ(SceneBordersWithus::fadeFromBlack(13.75f), 1.0f);
  EXPECT_NEAR(SceneBordersWithus::fadeFromBlack(13.75f + 1.625f), 0.5f, 1e-5);
  EXPECT_EQ(SceneBordersWithus::fadeFromBlack(17.0f), 0.0f);
  EXPECT_EQ(SceneBordersWithus::fadeFromBlack(17.01f), 0.0f);
  EXPECT_EQ(SceneBordersWithus::fadeFromBlack(30.0f), 0.0f);
}

TEST(SceneBordersWithus, FirstFrameIsBlackAndAFrameRaisesOnlyTheLightModelErrors) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  testgl::drainErrors();
  const std::vector<uint8_t> first = frame(s, 0, 120000);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  int lit = 0;
  for (size_t i = 0; i < first.size(); i += 4) lit += first[i] > 2 || first[i + 1] > 2 || first[i + 2] > 2;
  EXPECT_EQ(lit, 0);
  const std::vector<uint8_t> later = frame(s, 5000, 125000);
  testgl::drainErrors();
  lit = 0;
  for (size_t i = 0; i < later.size(); i += 4) lit += later[i] > 20;
  EXPECT_GT(lit, 100) << "the wall after the fade";
}

TEST(SceneBordersWithus, WithNoBlurLoopsTheMaskIsOnePlainPass) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithus& s = scene();
  auto frameWith = [&](float loops, float amount) {
    s.softShadowMaskBlurLoops = loops;
    s.world.softShadowMaskBlurAmount = amount;
    const std::vector<uint8_t> pixels = frame(s, 6000, 126000);
    testgl::drainErrors();
    return pixels;
  };
  const std::vector<uint8_t> plainNarrow = frameWith(0, 0.05f);
  const std::vector<uint8_t> plainWide = frameWith(0, 0.9f);
  const std::vector<uint8_t> blurredNarrow = frameWith(3, 0.05f);
  const std::vector<uint8_t> blurredWide = frameWith(3, 0.9f);
  s.softShadowMaskBlurLoops = 3.0f;
  s.world.softShadowMaskBlurAmount = 0.1f;
  EXPECT_EQ(differingBytes(plainNarrow, plainWide), 0) << "no blur: the amount has nothing to spread";
  EXPECT_GT(differingBytes(blurredNarrow, blurredWide), 100) << "blurred: the amount widens the soft shadows";
  EXPECT_GT(differingBytes(plainNarrow, blurredNarrow), 100);
}

TEST(SceneBordersWithus, IndexFiveMakesIt) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(555);
  Scene* made = makeProductionScene(&scenetest::demo(), 5, "bordersWithus");
  SceneBordersWithus* us = dynamic_cast<SceneBordersWithus*>(made);
  ASSERT_NE(us, nullptr);
  EXPECT_EQ(us->name, "bordersWithus");
  EXPECT_EQ(crtRandState(), scenetest::buildOnce<SceneBordersWithus>("bordersWithus").stateAfter);
  delete made;
}
