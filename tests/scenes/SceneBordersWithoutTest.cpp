// The sister cube scene the rewind lands on: what its constructor builds from
// which random draws, the wild camera, the ripple of the motes on the beat,
// the clocks through the rewind, and the opening out of black.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneExpectations.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "scenes/SceneBordersWithout.h"

namespace {

constexpr int plateObject = 0;
constexpr int firstPlate = 1;
constexpr int firstCube = 71;
constexpr int lightIndex = 471;

ColourFamilies families() {
  ColourFamilies f;
  f.groupSize = 100;
  f.seedBase = 1993;
  f.glowDiffuse = 0.075f;
  f.pictureDiffuse = 0.3f;
  f.pictureAmbient = 0.15f;
  f.narrowDraws = true;
  return f;
}

SceneBordersWithout& scene() { return *scenetest::buildOnce<SceneBordersWithout>("bordersWithout").scene; }

}  // namespace

TEST(SceneBordersWithout, ConstructionEndsAfterTheMoteDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233: five draws for each of the 75 motes (size, three for the
  // place, one for the shade).
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWithout>("bordersWithout").stateAfter, 23233,
                                      375);
}

TEST(SceneBordersWithout, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  ASSERT_EQ(s.world.objects.size(), 472u) << "plate, 70 boxes, 400 cubes, light";
  EXPECT_EQ(s.world.billboards.size(), 77u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 400);
  EXPECT_EQ(s.flareCount, 2u);
  EXPECT_EQ(s.moteCount, 75u);
  EXPECT_EQ(s.glowPasses, 8);
  EXPECT_TRUE(s.glowSourceWritesColour);
  ASSERT_EQ(s.objectIds.size(), 410u);
  EXPECT_EQ(s.objectIds[0], plateObject);
  for (int n = 0; n < 400; ++n) EXPECT_EQ(s.objectIds[n + 1], firstCube + n);
  EXPECT_EQ(s.name, "bordersWithout");
  EXPECT_EQ(s.camera->name, "SceneBordersWithout.camera0");
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
}

TEST(SceneBordersWithout, SquarePlateAndACloserShorterRing) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  const Mesh& plate = *s.world.objects[plateObject];
  EXPECT_EQ(plate.scale, Vector3(30, 30, 6));
  EXPECT_EQ(plate.position, Vector3(0, 0, 10));
  scenetest::expectColour(plate.materials[0].ambient, Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 1.0f);
  scenetest::expectColour(plate.materials[1].diffuse, Vector3(1.15f, 0.66f, 0.3f) * 1.5f, 1.0f);
  scenetest::expectStage(plate.materials[0], 0, stageModulate, "planartexture");
  scenetest::expectRing(s.world, firstPlate, {102, scenetest::noiseDraws(6)}, RingShape::nearRing(70));
}

TEST(SceneBordersWithout, LatticeTumblesFreelyInFamiliesOfAHundred) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  scenetest::expectLattice(s.world, s.objectIds, 1, s.basePositions, {234, 0},
                           LatticeShape::cubes(10, 10, 4, Vector3(4.5f, 4.5f, 1.5f), 186.0f), s.sceneTimeMs == 0);
  scenetest::expectColourFamilies(s.world, s.objectIds, 1, {0, 99, 100, 299, 399}, families());
  scenetest::expectUnchangedByFamilies(s.world, s.objectIds, 1, {0, 399}, 0.015f, "hopmet");
}

TEST(SceneBordersWithout, FlaresAndWineRedMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  FlareSpec flares;
  flares.colourRule = FlareSpec::warmFromRaw;
  const bool unmoved = s.world.billboards[2]->timeStep == 0.0f;
  scenetest::expectFlares(s.world, 0, {232, 0}, flares, unmoved);
  DustSpec motes;
  motes.count = 75;
  motes.spread = Vector3(9, 9, 2);
  motes.sizeScale = 2.0f;
  motes.alpha = 0.75f;
  motes.colour = Vector3(0.25f, 0.12f, 0.12f);
  motes.tiled = true;
  motes.shadeByDraw = true;
  scenetest::expectDust(s.world, 2, {23233, 0}, motes, unmoved);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersWithout, TheCameraRollsAndZoomsOverItsOwnParameters) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  // A script default or a flow chart on cameraZoom changes nothing: the
  // frame writes the bound member.
  *s.parameterByName("cameraZoom")->value = 5.0f;
  *s.parameterByName("cameraRoll")->value = -40.0f;
  s.animate(3.0f, 30.0f, 0);
  NoiseField a(6, 100), b(6, 101), c(6, 102);
  const float d = 54.0f;
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  EXPECT_FLOAT_EQ(s.camera->zoom, a.fractalSum(p, 7) * 0.32f + 0.52f);
  EXPECT_FLOAT_EQ(s.camera->roll, b.fractalSum(p, 7) * 173.2f);
  EXPECT_FLOAT_EQ(s.camera->position.z, c.fractalSum(p, 7) * 6.2f - 10);
  EXPECT_EQ(s.camera->position.x, 0.0f);
  EXPECT_EQ(s.camera->position.y, 0.0f);
  EXPECT_EQ(s.camera->direction, Vector3(0, 0, 10)) << "it moves only in depth";
  scenetest::expectLightOnOrbit(s.world, lightIndex, 3.0 * 0.5);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, d);
}

TEST(SceneBordersWithout, WithoutABeatTheTilesOfEveryMoteCoincide) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  EXPECT_EQ(SceneBordersWithout::beat(53.39f), 0.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithout::barStart(0), 29.4f);
  EXPECT_FLOAT_EQ(SceneBordersWithout::barStart(10), 29.4f + 18.75f);
  // Two hits a bar of equal weight, each a window written out here.
  auto window = [](float d, float start) {
    Envelope e;
    e.start = start;
    e.outStart = start + 0.4f;
    e.duration = 0.6f;
    e.outDuration = 1.0f;
    return e.easeWindow(d, 1.0f, 2.0f);
  };
  for (float into : {0.3f, 0.5f, 0.9f, 1.2f, 1.6f}) {
    const float at = 53.4f + 1.875f * 4 + into;
    float sum = 0.0f;
    for (int bar = 0; bar <= 10; ++bar) sum += window(at, 53.4f + 1.875f * bar) + window(at, 54.25f + 1.875f * bar);
    EXPECT_NEAR(SceneBordersWithout::beat(at), sum, 1e-6) << into;
    EXPECT_GT(sum, 0.0f);
  }
  EXPECT_EQ(SceneBordersWithout::beat(54.25f + 1.875f * 10 + 1.41f), 0.0f) << "after the last bar";
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 75);
  s.animate(2.0f, 27.0f, 100);  // d = 51: before the first hit
  for (int m = 0; m < 75; ++m) EXPECT_EQ(s.world.billboards[2 + m]->tileSpacing, 0.0f) << m;
  // The motes drift with the step, a tenth as fast in depth.
  NoiseField a(6, 100), b(6, 101), c(6, 102);
  scenetest::expectDustDrifted(s.world, 2, before, {0, 37, 74}, a, b, c, DustDrift{0.1f, 0.1f}, 100, 2.0f);
  // On a hit the ripple spreads the tiles, by the distance from the centre.
  const float d = 54.25f + 0.5f, sceneSeconds = 3.1f;
  s.animate(sceneSeconds, d - 24.0f, 100);
  const float acc = SceneBordersWithout::beat(d);
  ASSERT_GT(acc, 0.5f);
  int spread = 0;
  for (int m = 0; m < 75; ++m) {
    const Billboard& mote = *s.world.billboards[2 + m];
    const float r = std::sqrt(mote.position.x * mote.position.x + mote.position.y * mote.position.y) * 0.5f;
    EXPECT_NEAR(mote.tileSpacing,
                0.5 * (acc * 5 * std::sin(2 * sceneSeconds * 3.141593 * 1.5 + r * 3.141593)) / (r + 1), 1e-4);
    spread += mote.tileSpacing != 0.0f;
    EXPECT_EQ(s.savedMotePositions[m], mote.position);
  }
  EXPECT_GT(spread, 60);
}

TEST(SceneBordersWithout, AfterTheRewindTheSceneClockIsWhereTheRewindLeftIt) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  // The same picture time 27.8 s (d = 51.8) seen with two scene clocks: the
  // camera and, before 6 s, the cubes repeat; the overlay follows the clock.
  s.animate(1.3f, 27.8f, 0);
  const Vector3 eye = s.camera->position;
  const float zoom = s.camera->zoom;
  const Vector3 cube = s.world.objects[firstCube + 123]->position;
  s.animate(5.5f, 27.8f, 0);
  EXPECT_EQ(s.camera->position, eye);
  EXPECT_EQ(s.camera->zoom, zoom);
  EXPECT_EQ(s.world.objects[firstCube + 123]->position, cube);
  s.animate(12.0f, 27.8f, 0);  // e2 has spread the lattice
  EXPECT_NE(s.world.objects[firstCube + 123]->position, cube);
  // Rewind frames run the clock back, below 0 if they go on.
  s.sceneTimeMs = 18300;
  s.render(38800, -7000);
  s.render(31800, -7000);
  s.render(27800, -4000);
  EXPECT_EQ(s.sceneTimeMs, 300);
  // A clock run back below the opening shows the black and the title again.
  EXPECT_EQ(SceneBordersWithout::blackness(0.3f), 1.0f);
  EXPECT_EQ(SceneBordersWithout::titleStrength(-17.0f), 1.0f);
  EXPECT_EQ(SceneBordersWithout::titleDisorder(-17.0f), 1.0f);
  s.sceneTimeMs = 0;
}

TEST(SceneBordersWithout, OpensOutOfBlackUnderTheTitleUntilFourAndAHalfSeconds) {
  EXPECT_EQ(SceneBordersWithout::blackness(0.0f), 1.0f);
  EXPECT_EQ(SceneBordersWithout::blackness(2.0f), 1.0f);
  EXPECT_NEAR(SceneBordersWithout::blackness(2.5f), 0.5f, 1e-5);
  EXPECT_EQ(SceneBordersWithout::blackness(3.01f), 0.0f);
  EXPECT_EQ(SceneBordersWithout::titleStrength(3.0f), 1.0f);
  EXPECT_GT(SceneBordersWithout::titleStrength(4.4f), 0.0f);
  EXPECT_EQ(SceneBordersWithout::titleStrength(4.51f), 0.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithout::titleDisorder(0.0f), 1.0f);
  EXPECT_NEAR(SceneBordersWithout::titleDisorder(1.5f), 0.004f, 1e-6);
  EXPECT_NEAR(SceneBordersWithout::titleSlide(5.0f), 0.5f, 1e-5);
}

TEST(SceneBordersWithout, TheOverlayEndsAtFourAndAHalfSeconds) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  auto overlayAt = [&](float sceneSeconds) {
    glClearColor(0.2f, 0.4f, 0.2f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    s.camera->apply();
    s.drawOverlay(sceneSeconds, 0, 0);
    s.camera->release();
    return testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  };
  const std::vector<uint8_t> after = overlayAt(4.6f);
  for (size_t i = 0; i < after.size(); i += 4) ASSERT_NEAR(after[i + 1], 102, 1) << i;
  // At 1 s the picture is black but for the title added over it.
  const std::vector<uint8_t> black = overlayAt(1.0f);
  EXPECT_LE(black[1], 3);
  EXPECT_LE(black[black.size() - 3], 3);
  int lit = 0;
  for (size_t i = 0; i < black.size(); i += 4) lit += black[i + 2] > 60;
  EXPECT_GT(lit, 200) << "the title";
}

TEST(SceneBordersWithout, AFrameRaisesNoGLErrorBeyondTheEnumsOfThePasses) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  for (int sceneMs : {0, 2500, 9000}) {
    s.sceneTimeMs = sceneMs;
    testgl::drainErrors();
    s.render(26500 + sceneMs, 0);
    for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  }
  s.sceneTimeMs = 0;
}
