// The cube thread that spreads into a cloud: what its constructor builds from
// which random draws, the thread and the cloud, the beat, the clocks through
// the rewind, and the two titles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "SceneExpectations.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "scenes/SceneBordersWithin.h"

namespace {

constexpr int plateObject = 0;
constexpr int firstBox = 1;
constexpr int firstCube = 61;
constexpr int lightIndex = 481;

ColourFamilies families() {
  ColourFamilies f;
  f.groupSize = 60;
  f.seedBase = 1993;
  f.glowDiffuse = 0.05f;
  f.pictureDiffuse = 0.1f;
  f.pictureAmbient = 0.05f;
  f.narrowDraws = true;
  return f;
}

SceneBordersWithin& scene() { return *scenetest::buildOnce<SceneBordersWithin>("bordersWithin").scene; }

}  // namespace

TEST(SceneBordersWithin, ConstructionEndsAfterTheMotesGoOnFromTheFlares) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 232: four draws for each of the 2 flares, then four for each of
  // the 150 motes, which take no seed of their own.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWithin>("bordersWithin").stateAfter, 232,
                                      8 + 600);
}

TEST(SceneBordersWithin, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  ASSERT_EQ(s.world.objects.size(), 482u) << "plate, 60 boxes, 420 cubes, light";
  EXPECT_EQ(s.world.billboards.size(), 152u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 420);
  EXPECT_EQ(s.flareCount, 2u);
  EXPECT_EQ(s.moteCount, 150u);
  EXPECT_EQ(s.glowPasses, 8);
  EXPECT_FALSE(s.glowSourceWritesColour);
  ASSERT_EQ(s.objectIds.size(), 430u);
  EXPECT_EQ(s.objectIds[0], plateObject);
  for (int n = 0; n < 420; ++n) EXPECT_EQ(s.objectIds[n + 1], firstCube + n);
  EXPECT_EQ(s.name, "bordersWithin");
  EXPECT_EQ(s.camera->name, "SceneBordersWithin.camera0");
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurAmount")->defaultValue, 0.45f);
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
}

TEST(SceneBordersWithin, PlateAndRingOfSixty) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  const Mesh& plate = *s.world.objects[plateObject];
  EXPECT_EQ(plate.scale, Vector3(15, 36, 6));
  EXPECT_EQ(plate.position, Vector3(0, 0, 10));
  const Material& p = plate.materials[0];
  const Material& g = plate.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 1.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 5.1f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  scenetest::expectColour(g.diffuse, Vector3(1.15f, 0.66f, 0.3f) * 1.5f, 1.0f);
  EXPECT_EQ(p.stageCount, 1u) << "only stage 0 is drawn";
  scenetest::expectStage(p, 0, stageModulate, "planartexture");
  scenetest::expectStage(g, 0, stageModulate, "planartexture");
  RingShape ring;
  ring.count = 60;
  scenetest::expectRing(s.world, firstBox, {131, scenetest::noiseDraws(6)}, ring, "planartexture");
}

TEST(SceneBordersWithin, LatticeFromSeed234InFamiliesOfSixty) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  scenetest::expectLattice(s.world, s.objectIds, 1, s.basePositions, {234, 0},
                           LatticeShape::cubes(5, 12, 7, Vector3(2, 5.5f, 3), 36.0f), s.sceneTimeMs == 0);
  EXPECT_EQ(s.basePositions[0], Vector3(-2, -5.5f, -3));
  EXPECT_EQ(s.basePositions[419], Vector3(2, 5.5f, 3));
  scenetest::expectColourFamilies(s.world, s.objectIds, 1, {0, 59, 60, 179, 180, 419}, families());
  scenetest::expectUnchangedByFamilies(s.world, s.objectIds, 1, {0, 419}, 0.01f, "hopmet");
  // Three families in turn: cubes 0 and 180 share one.
  const auto glowOf = [&](int n) { return s.world.objects[firstCube + n]->materials[1].diffuse; };
  EXPECT_EQ(glowOf(0), glowOf(180));
  EXPECT_NE(glowOf(0), glowOf(60));
}

TEST(SceneBordersWithin, FlaresFromSeed232AndMotesAfterThem) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  FlareSpec flares;
  flares.halfSize = Vector3(12, 6, 7.5f);
  flares.colourRule = FlareSpec::warmFromRaw;
  const bool unmoved = s.world.billboards[2]->timeStep == 0.0f;
  scenetest::expectFlares(s.world, 0, {232, 0}, flares, unmoved);
  DustSpec motes;
  motes.count = 150;
  motes.spread = Vector3(10, 10, 10);
  scenetest::expectDust(s.world, 2, {232, 8}, motes, unmoved);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersWithin, BeforeFourAndAHalfSecondsTheCubesFormOneThread) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  EXPECT_EQ(SceneBordersWithin::spreadE1(4.49f), 0.0f);
  EXPECT_EQ(SceneBordersWithin::spreadE2(4.49f), 0.0f);
  EXPECT_GT(SceneBordersWithin::spreadE2(4.6f), 0.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithin::spreadE2(12.0f), 1.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithin::spreadE1(20.0f), 1.0f);

  // The sample points lie along one line in y: k is 0.002 and e2 is 0.
  auto spreadOfSamples = [&](float sceneSeconds) {
    const float e1 = SceneBordersWithin::spreadE1(sceneSeconds), e2 = SceneBordersWithin::spreadE2(sceneSeconds);
    float lowX = 1e9f, highX = -1e9f, lowZ = 1e9f, highZ = -1e9f;
    for (int n = 1; n <= 420; ++n) {
      const Vector3 p = SceneBordersWithin::cubeSamplePoint(s.basePositions[n - 1], n, e1, e2, 80.0f);
      lowX = std::min(lowX, p.x), highX = std::max(highX, p.x);
      lowZ = std::min(lowZ, p.z), highZ = std::max(highZ, p.z);
    }
    return std::max(highX - lowX, highZ - lowZ);
  };
  EXPECT_LT(spreadOfSamples(4.0f), 0.013f);
  EXPECT_GT(spreadOfSamples(25.0f), 0.05f);
  const Vector3 p = SceneBordersWithin::cubeSamplePoint(Vector3(2, -5.5f, 3), 7, 0, 0, 50);
  EXPECT_FLOAT_EQ(p.x, 0.002f * 2 + 1.7f + 10);
  EXPECT_FLOAT_EQ(p.y, 7 * 0.001f + 0.002f * -5.5f + 10);
  EXPECT_FLOAT_EQ(p.z, 1.0f + 0.002f * 3 + 10);

  // The cubes take the noise of those points.
  NoiseField a(6, 111), b(6, 121), c(6, 131);
  const float timeMs = 48000;
  s.animate(4.0f, timeMs / 1000.0f, 0);
  for (int n : {1, 210, 420}) {
    const Vector3 q = SceneBordersWithin::cubeSamplePoint(s.basePositions[n - 1], n, 0, 0, 48.0f + 34.0f);
    const Vector3& at = s.world.objects[firstCube + n - 1]->position;
    EXPECT_FLOAT_EQ(at.x, a.fractalSum(q, 6) * 6.5f) << n;
    EXPECT_FLOAT_EQ(at.y, b.fractalSum(q, 7) * 6.5f) << n;
    EXPECT_FLOAT_EQ(at.z, c.fractalSum(q, 6) * 6.5f) << n;
  }
}

TEST(SceneBordersWithin, TheBeatIsZeroBeforeTheFirstHitAndAnUnclampedSumOfItsWindows) {
  EXPECT_EQ(SceneBordersWithin::beat(42.66f), 0.0f);
  EXPECT_EQ(SceneBordersWithin::beat(0.0f), 0.0f);
  EXPECT_GT(SceneBordersWithin::beat(42.6625f + 0.5f), 0.0f);
  // The first hit of a bar counts 0.9 of the second.
  EXPECT_NEAR(SceneBordersWithin::beat(42.6625f + 0.5f) / 0.9f, SceneBordersWithin::beat(43.5125f + 0.5f), 1e-3);
  // Bars of 1.875 s from 8.6625 s of the timeline.
  EXPECT_FLOAT_EQ(SceneBordersWithin::barStart(0), 8.6625f);
  EXPECT_FLOAT_EQ(SceneBordersWithin::barStart(32), 8.6625f + 60.0f);
  // Where the second hit rises while the first falls, acc is the plain sum.
  auto window = [](float d, float start) {
    Envelope e;  // written out, not through the one-expression form the scene uses
    e.start = start;
    e.outStart = start + 0.4f;
    e.duration = 0.6f;
    e.outDuration = 1.0f;
    return e.easeWindow(d, 1.0f, 2.0f);
  };
  const float d = 42.6625f + 1.875f * 3 + 0.95f;
  const float v = window(d, 42.6625f + 1.875f * 3), w = window(d, 43.5125f + 1.875f * 3);
  ASSERT_GT(v, 0.0f);
  ASSERT_GT(w, 0.0f);
  EXPECT_FLOAT_EQ(SceneBordersWithin::beat(d), v * 0.9f + w);
  EXPECT_EQ(SceneBordersWithin::beat(42.6625f + 32 * 1.875f + 0.85f + 1.41f), 0.0f) << "after the last bar";
}

TEST(SceneBordersWithin, TheBeatTightensTheGlowAndSwellsTheFlares) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  s.animate(10.0f, 8.0f, 0);  // d = 42: before the first hit
  EXPECT_EQ(s.glowAmountDrop, 0.0f);
  EXPECT_EQ(s.world.billboards[0]->halfSize, Vector3(8, 4, 5) * 0.75f);
  const float d = 43.5125f + 0.5f;
  s.animate(10.0f, d - 34.0f, 0);
  const double acc = SceneBordersWithin::beat(d);
  ASSERT_GT(acc, 0.5);
  EXPECT_NEAR(s.glowAmountDrop, std::pow(acc, 5.0) * 0.333, 1e-5);
  EXPECT_NEAR(s.world.billboards[1]->halfSize.x, 8 * (std::pow(acc, 6.0) * 4.25 + 0.75), 1e-4);
  s.glowAmountDrop = 0.0f;
}

TEST(SceneBordersWithin, CameraCubesAndBeatFollowTheDemoClockEnvelopesTheScenesClock) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  // The same picture time with two scene clocks: the camera is the same, the
  // spread of the cubes is not.
  s.animate(25.0f, 60.0f, 0);
  const Vector3 eye = s.camera->position;
  const Vector3 cloud = s.world.objects[firstCube + 300]->position;
  s.animate(3.0f, 60.0f, 0);
  EXPECT_EQ(s.camera->position, eye);
  EXPECT_NE(s.world.objects[firstCube + 300]->position, cloud);
  NoiseField a(6, 111);
  const float d = 94.0f;
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  EXPECT_FLOAT_EQ(s.camera->position.x, a.fractalSum(p, 7) * 3.72f);
  // A rewind frame runs the scene's clock back by its step.
  s.sceneTimeMs = 1000;
  s.render(50000, -700);
  EXPECT_EQ(s.sceneTimeMs, 300);
  s.render(49300, -700);
  EXPECT_EQ(s.sceneTimeMs, -400);
  s.sceneTimeMs = 0;
}

TEST(SceneBordersWithin, LightFlaresAndMotesPerFrame) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 150);
  const float sceneSeconds = 5.0f, d = 50.0f + 34.0f;
  s.animate(sceneSeconds, 50.0f, 200);
  scenetest::expectLightOnOrbit(s.world, lightIndex, sceneSeconds * 0.5);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, d);
  NoiseField a(6, 111), b(6, 121), c(6, 131);
  scenetest::expectDustDrifted(s.world, 2, before, {0, 75, 149}, a, b, c, DustDrift{0.1f, 0.25f}, 200,
                               sceneSeconds);
  // A negative step takes them back along the flow.
  s.animate(sceneSeconds, 50.0f, -200);
  for (int m : {0, 75, 149}) {
    EXPECT_NEAR(s.world.billboards[2 + m]->position.x, before[m].x, 5e-3);
    EXPECT_NEAR(s.world.billboards[2 + m]->position.z, before[m].z, 5e-3);
  }
}

TEST(SceneBordersWithin, TitlesAreSkippedUntilTheirFlashBegins) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  auto overlayAt = [&](float sceneSeconds) {
    glClearColor(0.2f, 0.2f, 0.2f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    s.camera->apply();
    s.drawOverlay(sceneSeconds, 0, 0);
    s.camera->release();
    return testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  };
  const std::vector<uint8_t> untouched = overlayAt(19.99f);
  for (size_t i = 0; i < untouched.size(); i += 4) ASSERT_NEAR(untouched[i], 51, 1) << i;
  // Just past 20 s the flash whitens the picture round the title.
  const size_t topLeft = (scenetest::height - 1) * scenetest::width * 4;
  const size_t topRight = topLeft + (scenetest::width - 1) * 4;
  const std::vector<uint8_t> flash = overlayAt(20.005f);
  EXPECT_GE(flash[0], 240);
  EXPECT_GE(flash[topLeft + 1], 240);
  EXPECT_GE(flash[topRight + 2], 240);
  // Once the flash is over, the title alone shows in the middle: the corners
  // are the picture again, and a good part of the rest has changed.
  const std::vector<uint8_t> title = overlayAt(21.0f);
  EXPECT_NEAR(title[topLeft], 51, 1);
  EXPECT_NEAR(title[topRight], 51, 1);
  int changed = 0;
  for (size_t i = 0; i < title.size(); i += 4) changed += std::abs(title[i] - 51) > 8;
  EXPECT_GT(changed, scenetest::width * scenetest::height / 20);
  // "cd" follows at 23.7 s, "mb" has gone by then.
  const std::vector<uint8_t> between = overlayAt(23.5f);
  for (size_t i = 0; i < between.size(); i += 4 * 7) ASSERT_NEAR(between[i], 51, 1) << i;
  const std::vector<uint8_t> second = overlayAt(24.5f);
  EXPECT_NE(second, between);
}

TEST(SceneBordersWithin, AFrameRaisesNoGLErrorBeyondTheEnumsOfThePasses) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  for (int sceneMs : {0, 20500, 24000}) {
    s.sceneTimeMs = sceneMs;
    testgl::drainErrors();
    s.render(44800 + sceneMs, 0);
    for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  }
  s.sceneTimeMs = 0;
}
