// The folding sheet: what its constructor builds from which random draws,
// the camera, sheet and flecks per frame, and the six flashes.
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
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersWithyou.h"

namespace {

constexpr int backdropObject = 0;
constexpr int firstPlate = 1;
constexpr int firstTile = 101;
constexpr int lightIndex = 726;

SceneBordersWithyou& scene() { return *scenetest::buildOnce<SceneBordersWithyou>("bordersWithyou").scene; }

LatticeShape sheet() {
  LatticeShape s;
  s.countX = 25;
  s.countY = 25;
  s.countZ = 1;
  s.centre = Vector3(12, 12, 0);
  s.width = 0.125f;
  s.depth = 0.125f;
  s.heightScale = 0.5f;
  return s;
}

ColourFamilies oneColour() {
  ColourFamilies f;
  f.groupSize = 0;
  f.seedBase = 1445430;
  f.glowDiffuse = 0.5f;
  f.pictureDiffuse = 0.4f;
  f.pictureAmbient = 0.125f;
  return f;
}

DustSpec flecks() {
  DustSpec d;
  d.count = 100;
  d.spread = Vector3(9, 9, 10);
  d.alpha = 0.75f;
  d.colour = Vector3(0.08f, 0.11f, 0.3f);
  d.tileSpacingDraw = 1.0;
  return d;
}

int brightPixels(int threshold) {
  const std::vector<uint8_t> p = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  int n = 0;
  for (size_t i = 0; i < p.size(); i += 4) n += p[i] >= threshold && p[i + 1] >= threshold && p[i + 2] >= threshold;
  return n;
}

}  // namespace

TEST(SceneBordersWithyou, ConstructionEndsAfterTheFleckDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then five draws for each of the 100 flecks.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWithyou>("bordersWithyou").stateAfter, 23233,
                                      500);
}

TEST(SceneBordersWithyou, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  ASSERT_EQ(s.world.objects.size(), 727u) << "backdrop, 100 plates, 625 tiles, light";
  EXPECT_EQ(s.world.billboards.size(), 102u) << "two glares, 100 flecks";
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.tileCount, 625);
  EXPECT_EQ(s.billboardGlareCount, 2u);
  EXPECT_EQ(s.fleckCount, 100u);
  EXPECT_EQ(s.glowPasses, 7);
  ASSERT_EQ(s.objects.size(), 635u);
  EXPECT_EQ(s.objects[0], backdropObject);
  for (int n = 0; n < 625; ++n) EXPECT_EQ(s.objects[n + 1], firstTile + n);
  EXPECT_EQ(s.name, "bordersWithyou");
  EXPECT_EQ(s.camera->name, "SceneBordersWithyou.camera0");
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurZoomPowBase")->defaultValue, 1.5f);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
  scenetest::expectStandardLight(s.world, lightIndex, 0.5f);
}

TEST(SceneBordersWithyou, BackdropAndPlates) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  const Mesh& backdrop = *s.world.objects[backdropObject];
  EXPECT_EQ(backdrop.scale, Vector3(62.5f, 62.5f, 5.0f));
  EXPECT_EQ(backdrop.position, Vector3(0, 0, 10));
  const Material& p = backdrop.materials[0];
  const Material& g = backdrop.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.35f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.76f, 0.3f) * 3.5f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.15f, 1.0f);
  for (const Material* m : {&p, &g}) {
    EXPECT_EQ(m->stageCount, 3u);
    scenetest::expectStage(*m, 0, stageModulate, "planartexture");
    scenetest::expectStage(*m, 1, stageModulate, "billbig", false, true);
    scenetest::expectStage(*m, 2, stageAdd, "cubemap.bill", true);
  }
  EXPECT_EQ(p.stageScaleU[0], 3.0f);
  EXPECT_EQ(p.stageScaleV[0], 3.0f);
  EXPECT_EQ(g.stageScaleU[0], 1.0f);
  // The usual ring, going on from the last noise field's seeding.
  scenetest::expectRing(s.world, firstPlate, {102, scenetest::noiseDraws(6)}, RingShape(), "planartexture");
}

TEST(SceneBordersWithyou, SheetFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  scenetest::expectLattice(s.world, s.objects, 1, s.tileHomes, {234, 0}, sheet(), s.sceneTimeMs == 0);
  EXPECT_EQ(s.tileHomes[0], Vector3(-3, -3, 0));
  EXPECT_EQ(s.tileHomes[26], Vector3(-2.75f, -2.75f, 0));
  EXPECT_EQ(s.tileHomes[624], Vector3(3, 3, 0));
}

TEST(SceneBordersWithyou, AllTilesDrawTheSameColourAndDifferByOffsets) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  scenetest::expectColourFamilies(s.world, s.objects, 1, {0, 1, 312, 624}, oneColour());
  const Mesh& first = *s.world.objects[firstTile];
  const Mesh& last = *s.world.objects[firstTile + 624];
  EXPECT_EQ(first.materials[1].diffuse.y, last.materials[1].diffuse.y);
  EXPECT_NE(first.materials[0].stageOffsetU[0], last.materials[0].stageOffsetU[0]);
  scenetest::expectColour(first.materials[1].ambient, Vector3(1, 1, 1) * 0.01f, 1.0f);
  EXPECT_EQ(first.materials[0].stageScaleU[0], 0.5f);
  EXPECT_EQ(first.materials[0].stageTexture[0], scenetest::textureId("hopmet"));
  EXPECT_EQ(first.materials[1].stageTexture[0], scenetest::textureId("hopmet"));
}

TEST(SceneBordersWithyou, GlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  FlareSpec glares;
  glares.halfSize = Vector3(8, 2, 5);
  const bool unmoved = s.sceneTimeMs == 0 && s.world.billboards[2]->time == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 2, {23233, 0}, flecks(), unmoved);
}

TEST(SceneBordersWithyou, PerFrameCameraLightSheetGlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 100);
  const float S = 1.5f, d = 166.5f, t = S + 16, m = d - 5;
  s.animate(S, d, 100);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 v(m * 0.01234f, m * 0.03234f, m * 0.023345f);
  const float high = std::fabs(y.fractalSum(v, 7));
  EXPECT_FLOAT_EQ(s.camera->position.x, x.fractalSum(v, 7) * 2.32f);
  EXPECT_FLOAT_EQ(s.camera->position.y, high * high * high * 343.2f);
  EXPECT_FLOAT_EQ(s.camera->position.z, z.fractalSum(v, 7) * 2.2f - 10);
  EXPECT_EQ(s.camera->direction, -s.camera->position);

  scenetest::expectLightOnOrbit(s.world, lightIndex, t * 0.5f);
  FlareOrbit orbit;
  orbit.size.y = 0.18f;
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, m, orbit);
  EXPECT_EQ(s.world.billboards[0]->halfSize, Vector3(8, 2, 5)) << "no pulse";

  // The two lookups, by hand.
  Envelope ea, eb;
  ea.start = 12;
  ea.duration = 6;
  eb.start = 6;
  eb.duration = 6;
  const float a = ea.easeIn(t, 1, 1), b = eb.easeIn(t, 1, 1);
  const float k = a * 0.01f;
  for (int n : {0, 300, 624}) {
    const Vector3 h = s.tileHomes[n];
    const Vector3 v1((k + 0.012f) * h.x + m * 0.034f + 10, b * 0.3f * h.z * 0.7f + (k + 0.012f) * h.y + 10,
                     (k + 0.002f) * h.z + 10);
    const Vector3 p(x.fractalSum(v1, 2) * 12.5f, y.fractalSum(v1, 1) * 12.5f, z.fractalSum(v1, 2) * 12.5f);
    const Vector3 v2((k + 0.0512f) * p.x + 20, (k + 0.06712f) * p.y + 20, (k + 0.0702f) * p.z + 20);
    const Vector3 at = s.world.objects[firstTile + n]->position;
    EXPECT_FLOAT_EQ(at.x, x.fractalSum(v2, 6) * 6.5f) << n;
    EXPECT_FLOAT_EQ(at.y, y.fractalSum(v2, 5) * 6.5f) << n;
    EXPECT_FLOAT_EQ(at.z, z.fractalSum(v2, 6) * 6.5f) << n;
  }

  DustDrift drift;
  drift.sampleScale = 0.15f;
  drift.zScale = 0.75f;
  scenetest::expectDustDrifted(s.world, 2, before, {0, 51, 99}, x, y, z, drift, 100, t);
  s.animate(S, d, -100);  // a negative step takes the flecks back
  for (int f : {0, 51, 99}) {
    EXPECT_NEAR(s.world.billboards[2 + f]->position.x, before[f].x, 5e-3) << f;
    EXPECT_NEAR(s.world.billboards[2 + f]->position.z, before[f].z, 5e-3) << f;
  }
}

TEST(SceneBordersWithyou, SixFlashesEachFullAtItsStartAndGoneAfterThreeQuarters) {
  const float starts[6] = {0.0f, 1.0f, 2.8f, 3.8f, 4.8f, 6.5f};
  for (int i = 0; i < 6; ++i) EXPECT_FLOAT_EQ(SceneBordersWithyou::flashStarts[i], starts[i]) << i;
  EXPECT_FLOAT_EQ(SceneBordersWithyou::flash(0.0f), 1.0f);
  for (int i = 1; i < 6; ++i) {
    const float b = starts[i];
    EXPECT_EQ(SceneBordersWithyou::flash(b), 0.0f) << "a flash counts once s is past its start: " << b;
    EXPECT_NEAR(SceneBordersWithyou::flash(b + 0.001f), 1.0f, 1e-3) << b;
    EXPECT_NEAR(SceneBordersWithyou::flash(b + 0.375f), 0.0625f, 1e-4) << "half its fall: 0.5^4";
    EXPECT_EQ(SceneBordersWithyou::flash(b + 0.76f), 0.0f) << b;
  }
  EXPECT_EQ(SceneBordersWithyou::flash(0.76f), 0.0f);
  EXPECT_EQ(SceneBordersWithyou::flash(7.5f), 0.0f);
  EXPECT_EQ(SceneBordersWithyou::flash(20.0f), 0.0f);
}

TEST(SceneBordersWithyou, OverlappingFlashesAddBeforeTheFourthPower) {
  // The six never overlap (each falls in 0.75 s, the closest are 1 s
  // apart); the sum rule they share adds overlapping falls first.
  const float close[1] = {0.2f};
  const float f = easeOutAt(0.3f, 0, 0.75f) + easeOutAt(0.3f, 0.2f, 0.75f);
  EXPECT_FLOAT_EQ(beatSum(0.3f, close, 1, 0.75f), f);
  EXPECT_GT(f * f * f * f, 1.0f) << "an overlap can exceed 1 and saturate";
}

TEST(SceneBordersWithyou, TheFlashFollowsTheSceneClockNotTheMusic) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithyou& s = scene();
  s.sceneTimeMs = 0;
  testgl::drainErrors();
  s.render(165000, 0);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  const int all = scenetest::width * scenetest::height;
  EXPECT_EQ(brightPixels(250), all) << "the first frame is white";
  // A seek back across the start leaves the scene clock where it was: no flash.
  s.sceneTimeMs = 2000;
  s.render(165000, 0);
  testgl::drainErrors();
  EXPECT_LT(brightPixels(250), all / 2);
  // The clock follows the steps, negative ones included: back past 1 s, the
  // second flash stands again at full.
  s.render(165000, -999);
  testgl::drainErrors();
  EXPECT_EQ(s.sceneTimeMs, 1001);
  EXPECT_EQ(brightPixels(250), all);
  s.render(166000, 500);
  testgl::drainErrors();
  EXPECT_EQ(s.sceneTimeMs, 1501);
  EXPECT_LT(brightPixels(250), all / 2);
}

TEST(SceneBordersWithyou, IndexFourMakesIt) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(444);
  Scene* made = makeProductionScene(&scenetest::demo(), 4, "bordersWithyou");
  SceneBordersWithyou* you = dynamic_cast<SceneBordersWithyou*>(made);
  ASSERT_NE(you, nullptr);
  EXPECT_EQ(you->name, "bordersWithyou");
  EXPECT_EQ(crtRandState(), scenetest::buildOnce<SceneBordersWithyou>("bordersWithyou").stateAfter);
  delete made;
}
