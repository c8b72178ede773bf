// The sister cube scene the rewind lands on: what its constructor builds from
// which random draws, the wild camera, the ripple of the motes on the beat,
// the clocks through the rewind, and the opening out of black.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "scenes/SceneBordersWithout.h"

namespace {

constexpr int plateObject = 0;
constexpr int firstPlate = 1;
constexpr int firstCube = 71;
constexpr int lightIndex = 471;

uint32_t stateAfterConstruction = 0;

SceneBordersWithout& scene() {
  static SceneBordersWithout* s = nullptr;
  if (!s) {
    s = new SceneBordersWithout(&scenetest::demo(), "bordersWithout");
    stateAfterConstruction = crtRandState();
  }
  return *s;
}

}  // namespace

TEST(SceneBordersWithout, ConstructionEndsAfterTheMoteDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(99);
  scene();
  // Last seed 23233: five draws for each of the 75 motes (size, three for the
  // place, one for the shade).
  EXPECT_EQ(stateAfterConstruction, scenetest::stateAfter(23233, 375));
  EXPECT_NE(stateAfterConstruction, scenetest::stateAfter(23233, 374));
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
  EXPECT_FLOAT_EQ(plate.materials[0].ambient.z, 1.82f * 0.75f);
  EXPECT_FLOAT_EQ(plate.materials[1].diffuse.x, 1.15f * 1.5f);

  // NoiseField(6, 102) draws 3 x 64 numbers; the ring goes on from there.
  crtSrand(102);
  for (int k = 0; k < 192; ++k) crtRand();
  for (int i = 0; i < 70; ++i) {
    const double r1 = randomUnit(), r2 = randomUnit();
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const Mesh& box = *s.world.objects[firstPlate + i];
    EXPECT_NEAR(box.position.x, std::sin(i) * (2 * r2 + 20), 1e-4) << i;
    EXPECT_NEAR(box.position.y, std::cos(i) * (2 * r1 + 20), 1e-4) << i;
    EXPECT_EQ(box.position.z, 4.0f);
    EXPECT_NEAR(box.rotation.y, b * 180, 1e-3);
    EXPECT_NEAR(box.rotation.z, a * 20, 1e-4);
    EXPECT_NEAR(box.scale.z, 2 * c + 10, 1e-4);
    EXPECT_TRUE(box.useMatrix);
  }
  EXPECT_TRUE(s.world.objects[firstPlate]->batchFirst);
  EXPECT_TRUE(s.world.objects[firstPlate + 69]->batchLast);
}

TEST(SceneBordersWithout, LatticeTumblesFreely) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  crtSrand(234);
  int n = 0;
  for (int z = 0; z < 4; ++z)
    for (int y = 0; y < 10; ++y)
      for (int x = 0; x < 10; ++x, ++n) {
        const int r = crtRand(), q1 = crtRand(), q = crtRand();
        EXPECT_EQ(s.basePositions[n], Vector3(x - 4.5f, y - 4.5f, z - 1.5f)) << n;
        const Mesh& cube = *s.world.objects[firstCube + n];
        EXPECT_NEAR(cube.rotation.x, (q1 / 32767.0 - 0.5) * 186 - 90, 1e-3) << n;
        EXPECT_NEAR(cube.rotation.y, (r / 32767.0 - 0.5) * 186, 1e-3) << n;
        EXPECT_NEAR(cube.scale.y, q / 32767.0 * 0.05 + 0.2, 1e-6) << n;
      }
  EXPECT_TRUE(s.world.objects[firstCube + 399]->batchLast);
  // Families of a hundred, brighter than the sister scene's.
  for (int k : {0, 99, 100, 399}) {
    crtSrand((k / 100) % 3 + 1993);
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double v1 = randomSigned();
    const Material& p = s.world.objects[firstCube + k]->materials[0];
    const Material& g = s.world.objects[firstCube + k]->materials[1];
    EXPECT_NEAR(g.diffuse.x, (a * 1.65 + 2.5) * 0.075, 1e-5) << k;
    EXPECT_FLOAT_EQ(g.ambient.y, 0.015f);
    EXPECT_NEAR(p.diffuse.y, (b * 0.44 + 0.64) * 0.3, 1e-5) << k;
    EXPECT_NEAR(p.ambient.z, (c * 0.4 + 0.5) * 0.15, 1e-5) << k;
    EXPECT_NEAR(p.stageOffsetU[0], v1 + k * 0.232141, 1e-4) << k;
  }
}

TEST(SceneBordersWithout, FlaresAndWineRedMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  crtSrand(232);
  for (int i = 0; i < 2; ++i) {
    crtRand();
    crtRand();
    crtRand();
    const int f = crtRand();
    EXPECT_EQ(s.world.billboards[i]->halfSize, Vector3(8, 4, 5));
    EXPECT_NEAR(s.world.billboards[i]->colour.y, (f * 0.06 + 0.63) * 0.65, 1e-2);
  }
  crtSrand(23233);
  for (int m = 0; m < 75; ++m) {
    const double size = 2 * (randomSigned() * 0.025 + 0.15);
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double shade = (1 - randomUnit() * 0.95) * 1.5;
    const Billboard& mote = *s.world.billboards[2 + m];
    EXPECT_NEAR(mote.halfSize.y, size, 1e-6);
    if (mote.time == 0 && mote.timeStep == 0) {
      EXPECT_NEAR(mote.position.x, c * 9, 1e-4) << m;
      EXPECT_NEAR(mote.position.y, b * 9, 1e-4) << m;
      EXPECT_NEAR(mote.position.z, 2 * a, 1e-4) << m;
    }
    EXPECT_NEAR(mote.colour.x, 0.25 * shade, 1e-5) << m;
    EXPECT_NEAR(mote.colour.y, 0.12 * shade, 1e-5) << m;
    EXPECT_EQ(mote.alpha, 0.75f);
    EXPECT_EQ(mote.blendMode, 1);
    EXPECT_TRUE(mote.tiled);
    EXPECT_TRUE(mote.castsShadow);
  }
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
}

TEST(SceneBordersWithout, WithoutABeatTheTilesOfEveryMoteCoincide) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithout& s = scene();
  EXPECT_EQ(SceneBordersWithout::beat(53.39f), 0.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithout::barStart(0), 29.4f);
  EXPECT_FLOAT_EQ(SceneBordersWithout::barStart(10), 29.4f + 18.75f);
  s.animate(2.0f, 27.0f, 100);  // d = 51: before the first hit
  for (int m = 0; m < 75; ++m) EXPECT_EQ(s.world.billboards[2 + m]->tileSpacing, 0.0f) << m;
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
