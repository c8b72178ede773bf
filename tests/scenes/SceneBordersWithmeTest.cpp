// The tunnel of tiles: what its constructor builds from which random draws,
// the camera, tiles, glares and flecks per frame, and seeking.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneExpectations.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "scenes/SceneBordersWithme.h"

namespace {

constexpr int backdropObject = 0;
constexpr int firstPlate = 1;
constexpr int firstTile = 101;
constexpr int lightIndex = 741;

ColourFamilies families() {
  ColourFamilies f;
  f.groupSize = 16;
  f.seedBase = 1990;
  f.glowDiffuse = 0.1f;
  f.pictureDiffuse = 0.2f;
  f.pictureAmbient = 0.1f;
  f.narrowDraws = true;
  return f;
}

SceneBordersWithme& scene() { return *scenetest::buildOnce<SceneBordersWithme>("bordersWithme").scene; }

}  // namespace

TEST(SceneBordersWithme, ConstructionEndsAfterTheFleckDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233: four draws for each of the 300 flecks.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWithme>("bordersWithme").stateAfter, 23233,
                                      1200);
}

TEST(SceneBordersWithme, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  ASSERT_EQ(s.world.objects.size(), 742u) << "backdrop, 100 plates, 640 tiles, light";
  EXPECT_EQ(s.world.billboards.size(), 302u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.tileCount, 640);
  EXPECT_EQ(s.fleckCount, 300);
  EXPECT_EQ(s.billboardGlareCount, 2u);
  EXPECT_EQ(s.glowPasses, 8);
  ASSERT_EQ(s.objects.size(), 50000u);
  EXPECT_EQ(s.objects[0], backdropObject);
  for (int n = 0; n < 640; ++n) EXPECT_EQ(s.objects[n + 1], firstTile + n);
  EXPECT_EQ(s.objects[641], 0) << "the rest of the table stays unused";
  EXPECT_EQ(s.name, "bordersWithme");
  EXPECT_EQ(s.camera->name, "SceneBordersWithme.camera0");
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurZoomPowBase")->defaultValue, 1.5f);
}

TEST(SceneBordersWithme, CameraLooksAtAPointBeforeTheOrigin) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  EXPECT_EQ(s.camera->position, Vector3(0, 0, -10));
  EXPECT_EQ(s.camera->direction, Vector3(0, 0, 8));
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
}

TEST(SceneBordersWithme, BackdropAndPlates) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  const Mesh& backdrop = *s.world.objects[backdropObject];
  EXPECT_EQ(backdrop.scale, Vector3(36, 36, 6));
  EXPECT_EQ(backdrop.position, Vector3(0, 0, 15));
  const Material& p = backdrop.materials[0];
  const Material& g = backdrop.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.76f, 0.3f) * 1.5f, 1.0f);
  EXPECT_EQ(p.stageCount, 1u) << "only stage 0 is drawn";
  scenetest::expectStage(p, 0, stageModulate, "planartexture");
  scenetest::expectStage(g, 0, stageModulate, "planartexture");
  // The plates take the backdrop's looks; their draws go on from the last
  // noise field's seeding: y (cos) first, then x, then z's turn, y's turn,
  // depth.
  scenetest::expectColour(s.world.objects[firstPlate]->materials[0].diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f,
                          1.0f);
  scenetest::expectRing(s.world, firstPlate, {102, scenetest::noiseDraws(6)}, RingShape::nearRing(100));
}

TEST(SceneBordersWithme, TunnelFourByFourFortyDeepInSlicesOfSixteen) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  scenetest::expectLattice(s.world, s.objects, 1, s.tileHomes, {234, 0},
                           LatticeShape::cubes(4, 4, 40, Vector3(1.5f, 1.5f, 19.5f), 186.0f), s.sceneTimeMs == 0);
  EXPECT_EQ(s.tileHomes[0], Vector3(-1.5f, -1.5f, -19.5f));
  EXPECT_EQ(s.tileHomes[639], Vector3(1.5f, 1.5f, 19.5f));
  scenetest::expectColourFamilies(s.world, s.objects, 1, {0, 15, 16, 47, 48, 639}, families());
  scenetest::expectUnchangedByFamilies(s.world, s.objects, 1, {0, 639}, 0.01f, "hopmet");
  const auto glowOf = [&](int i) { return s.world.objects[firstTile + i]->materials[1].diffuse; };
  EXPECT_EQ(glowOf(0), glowOf(15));
  EXPECT_NE(glowOf(0), glowOf(16));
  EXPECT_EQ(glowOf(0), glowOf(48));
}

TEST(SceneBordersWithme, GlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  FlareSpec glares;
  glares.colourRule = FlareSpec::warmFromUnit;
  const bool unmoved = s.world.billboards[2]->timeStep == 0.0f;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  // Flecks: the size, then z, y, x.
  DustSpec flecks;
  flecks.count = 300;
  flecks.spread = Vector3(9, 9, 10);
  scenetest::expectDust(s.world, 2, {23233, 0}, flecks, unmoved);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersWithme, CameraLightAndGlaresPerFrame) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  const float t = 6.0f, m = 88.0f + 49.0f;  // the glares at their swell
  s.animate(t, m - 49.0f, 0);
  NoiseField x(6, 100), y(6, 101), z(6, 102);
  Vector3 v = Vector3(0.01234f, 0.01444f, 0.01115f) * (m + 30.5f);
  EXPECT_NEAR(s.camera->zoom, std::pow(std::fabs(x.fractalSum(v, 7)), 8.0f) * 7.4f + 0.3f, 1e-5);
  EXPECT_FLOAT_EQ(s.camera->position.y, y.fractalSum(v, 7) * 9.2f);
  EXPECT_FLOAT_EQ(s.camera->position.z, z.fractalSum(v, 7) - 10);
  EXPECT_EQ(s.camera->position.x, 0.0f);
  EXPECT_EQ(s.camera->direction, Vector3(0, 0, -2) - s.camera->position);
  v *= 0.77f;
  EXPECT_FLOAT_EQ(s.camera->roll, z.fractalSum(v, 7) * 123);

  scenetest::expectLightOnOrbit(s.world, lightIndex, t * 0.5);
  FlareOrbit orbit;
  orbit.size.y = 0.18f;
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, m, orbit);
  const Mesh& light = *s.world.objects[lightIndex];
  const float swell = SceneBordersWithme::glareSwell(m);
  EXPECT_GT(swell, 0.9f);
  for (int i = 0; i < 2; ++i) {
    const Billboard& g = *s.world.billboards[i];
    EXPECT_NEAR(g.position.y, light.position.y + std::cos(m * 0.314f + i * 0.1823f) * 0.18f, 1e-4);
    EXPECT_NEAR(g.halfSize.x, 8 * (1 + 2 * swell), 1e-4);
  }
  EXPECT_EQ(SceneBordersWithme::glareSwell(135.5f), 0.0f);
  EXPECT_EQ(SceneBordersWithme::glareSwell(138.6f), 0.0f);
  s.animate(t, 20.0f, 0);
  EXPECT_EQ(s.world.billboards[0]->halfSize, Vector3(8, 4, 5));
}

TEST(SceneBordersWithme, TilesArePlacedFromScratchSoASeekShowsTheShapeAtOnce) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  s.animate(20.0f, 95.0f, 0);
  std::vector<Vector3> shape;
  for (int i = 0; i < 640; ++i) shape.push_back(s.world.objects[firstTile + i]->position);
  s.animate(2.0f, 77.0f, 0);
  EXPECT_NE(s.world.objects[firstTile + 320]->position, shape[320]);
  s.animate(20.0f, 95.0f, 0);
  for (int i = 0; i < 640; ++i) ASSERT_EQ(s.world.objects[firstTile + i]->position, shape[i]) << i;
  // And by the formula.
  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const float a = SceneBordersWithme::spreadA(20.0f), b = SceneBordersWithme::spreadB(20.0f);
  EXPECT_FLOAT_EQ(a, 1.0f);
  EXPECT_FLOAT_EQ(b, 1.0f);
  for (int i : {1, 333, 640}) {
    const Vector3 p = SceneBordersWithme::tileSamplePoint(s.tileHomes[i - 1], i, a, b, 95.0f + 49.0f);
    EXPECT_FLOAT_EQ(shape[i - 1].x, x.fractalSum(p, 7) * 6.5f) << i;
    EXPECT_FLOAT_EQ(shape[i - 1].y, y.fractalSum(p, 6) * 6.5f) << i;
    EXPECT_FLOAT_EQ(shape[i - 1].z, z.fractalSum(p, 7) * 6.5f) << i;
  }
  const Vector3 p = SceneBordersWithme::tileSamplePoint(Vector3(1.5f, -0.5f, 10.5f), 7, 0, 1, 100);
  EXPECT_FLOAT_EQ(p.x, 0.002f * 1.5f + 3.4f + 10);
  EXPECT_FLOAT_EQ(p.y, 0.3f * 10.5f * 0.7f + 0.002f * -0.5f + 7 * 0.00003f + 10);
  EXPECT_FLOAT_EQ(p.z, 0.002f * 10.5f + 10);
}

TEST(SceneBordersWithme, FlecksRetraceWithANegativeStep) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 300);
  s.animate(4.0f, 80.0f, 250);
  NoiseField x(6, 100), y(6, 101), z(6, 102);
  scenetest::expectDustDrifted(s.world, 2, before, {0, 150, 299}, x, y, z, DustDrift{0.1f, 0.25f}, 250, 4.0f);
  s.animate(4.0f, 80.0f, -250);
  for (int f : {0, 150, 299}) {
    const Vector3 at = s.world.billboards[2 + f]->position;
    EXPECT_NEAR(at.x, before[f].x, 5e-3);
    EXPECT_NEAR(at.y, before[f].y, 5e-3);
    EXPECT_NEAR(at.z, before[f].z, 5e-3);
  }
}

TEST(SceneBordersWithme, AFrameRaisesNoGLErrorBeyondTheEnumsOfThePasses) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  for (int sceneMs : {0, 13000, 25900}) {
    s.sceneTimeMs = sceneMs;
    testgl::drainErrors();
    s.render(75000 + sceneMs, 0);
    for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  }
  s.sceneTimeMs = 0;
}
