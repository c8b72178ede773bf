// The cube thread that spreads into a cloud: what its constructor builds from
// which random draws, the thread and the cloud, the beat, the clocks through
// the rewind, and the two titles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "SceneTestDemo.h"
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

uint32_t stateAfterConstruction = 0;

SceneBordersWithin& scene() {
  static SceneBordersWithin* s = nullptr;
  if (!s) {
    s = new SceneBordersWithin(&scenetest::demo(), "bordersWithin");
    stateAfterConstruction = crtRandState();
  }
  return *s;
}

}  // namespace

TEST(SceneBordersWithin, ConstructionEndsAfterTheMotesGoOnFromTheFlares) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(99);
  scene();
  // Last seed 232: four draws for each of the 2 flares, then four for each of
  // the 150 motes, which take no seed of their own.
  EXPECT_EQ(stateAfterConstruction, scenetest::stateAfter(232, 8 + 600));
  EXPECT_NE(stateAfterConstruction, scenetest::stateAfter(232, 8 + 599));
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
  TextureStore& t = *scenetest::demo().textures;
  const Mesh& plate = *s.world.objects[plateObject];
  EXPECT_EQ(plate.scale, Vector3(15, 36, 6));
  EXPECT_EQ(plate.position, Vector3(0, 0, 10));
  const Material& p = plate.materials[0];
  const Material& g = plate.materials[1];
  EXPECT_FLOAT_EQ(p.ambient.y, 0.74f * 0.75f);
  EXPECT_FLOAT_EQ(p.diffuse.z, 1.526f * 5.1f);
  EXPECT_FLOAT_EQ(g.diffuse.y, 0.66f * 1.5f);
  EXPECT_EQ(p.stageCount, 1u);
  EXPECT_EQ(p.stageTexture[0], t.findTextureId("planartexture"));
  EXPECT_EQ(p.stageMode[0], 1);
  EXPECT_EQ(g.stageTexture[0], t.findTextureId("planartexture"));

  // NoiseField(6, 131) draws 3 x 64 numbers; the ring goes on from there.
  crtSrand(131);
  for (int k = 0; k < 192; ++k) crtRand();
  for (int i = 0; i < 60; ++i) {
    const double r1 = randomUnit(), r2 = randomUnit();
    const double a = randomSigned(), b = randomSigned();
    const double r3 = randomUnit();
    const Mesh& box = *s.world.objects[firstBox + i];
    EXPECT_NEAR(box.position.x, std::sin(i) * (r2 * 20 + 35), 1e-4) << i;
    EXPECT_NEAR(box.position.y, std::cos(i) * (r1 * 20 + 35), 1e-4) << i;
    EXPECT_EQ(box.position.z, 9.0f);
    EXPECT_NEAR(box.rotation.y, b * 50, 1e-4);
    EXPECT_NEAR(box.rotation.z, a * 20, 1e-4);
    EXPECT_NEAR(box.scale.z, r3 * 10 + 15, 1e-4);
  }
  EXPECT_TRUE(s.world.objects[firstBox]->batchFirst);
  EXPECT_TRUE(s.world.objects[firstBox + 59]->batchLast);
}

TEST(SceneBordersWithin, LatticeFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  crtSrand(234);
  int n = 0;
  for (int z = 0; z < 7; ++z)
    for (int y = 0; y < 12; ++y)
      for (int x = 0; x < 5; ++x, ++n) {
        const int r = crtRand(), q1 = crtRand(), q = crtRand();
        EXPECT_EQ(s.basePositions[n], Vector3(x - 2.0f, y - 5.5f, z - 3.0f)) << n;
        const Mesh& cube = *s.world.objects[firstCube + n];
        EXPECT_NEAR(cube.rotation.x, (q1 / 32767.0 - 0.5) * 36 - 90, 1e-3) << n;
        EXPECT_NEAR(cube.rotation.y, (r / 32767.0 - 0.5) * 36, 1e-3) << n;
        EXPECT_NEAR(cube.scale.y, q / 32767.0 * 0.05 + 0.2, 1e-6) << n;
        EXPECT_EQ(cube.scale.x, 0.25f);
        EXPECT_TRUE(cube.useMatrix);
      }
  EXPECT_EQ(n, 420);
  EXPECT_TRUE(s.world.objects[firstCube]->batchFirst);
  EXPECT_FALSE(s.world.objects[firstCube + 200]->setupState);
  EXPECT_TRUE(s.world.objects[firstCube + 419]->batchLast);
}

TEST(SceneBordersWithin, EveryRunOfSixtyCubesSharesAColourFamily) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  for (int n : {0, 59, 60, 179, 180, 419}) {
    crtSrand((n / 60) % 3 + 1993);
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double v1 = randomSigned(), v2 = randomSigned(), v3 = randomSigned(), v4 = randomSigned();
    const Mesh& cube = *s.world.objects[firstCube + n];
    const Material& p = cube.materials[0];
    const Material& g = cube.materials[1];
    EXPECT_NEAR(g.diffuse.x, (a * 1.65 + 2.5) * 0.05, 1e-5) << n;
    EXPECT_NEAR(g.diffuse.y, (b * 0.85 + 1.1) * 0.05, 1e-5) << n;
    EXPECT_NEAR(g.diffuse.z, (c * 0.34 + 0.5) * 0.05, 1e-5) << n;
    EXPECT_FLOAT_EQ(g.ambient.x, 0.01f);
    EXPECT_NEAR(p.diffuse.x, (a * 1.2 + 1.66) * 0.1, 1e-5) << n;
    EXPECT_NEAR(p.diffuse.y, (b * 0.44 + 0.64) * 0.1, 1e-5) << n;
    EXPECT_NEAR(p.ambient.z, (c * 0.4 + 0.5) * 0.05, 1e-5) << n;
    EXPECT_NEAR(p.stageOffsetU[0], v1 + n * 0.232141, 1e-4) << n;
    EXPECT_NEAR(p.stageOffsetV[0], v2 + n * 0.1232141, 1e-4) << n;
    EXPECT_NEAR(g.stageOffsetU[0], v3 + n * 0.232141, 1e-4) << n;
    EXPECT_NEAR(g.stageOffsetV[0], v4 + n * 0.1232141, 1e-4) << n;
    EXPECT_EQ(p.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(g.stageTexture[0], t.findTextureId("hopmet"));
  }
  // Three families in turn: cubes 0 and 180 share one.
  EXPECT_EQ(s.world.objects[firstCube]->materials[1].diffuse, s.world.objects[firstCube + 180]->materials[1].diffuse);
  EXPECT_NE(s.world.objects[firstCube]->materials[1].diffuse, s.world.objects[firstCube + 60]->materials[1].diffuse);
}

TEST(SceneBordersWithin, FlaresFromSeed232AndMotesAfterThem) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  crtSrand(232);
  for (int i = 0; i < 2; ++i) {
    const int first = crtRand();
    crtRand();
    const int third = crtRand();
    const int f = crtRand();
    const Billboard& flare = *s.world.billboards[i];
    EXPECT_EQ(flare.texture, t.findTextureId("billbig"));
    EXPECT_EQ(flare.alpha, 0.9f);
    EXPECT_NEAR(flare.colour.x, (f * 0.1 + 0.9) * 0.65, 1e-2) << "the raw draw: far above 1";
    EXPECT_NEAR(flare.colour.z, (f * 0.03 + 0.4) * 0.65, 1e-2);
    if (s.sceneTimeMs == 0 && flare.time == 0) {
      EXPECT_EQ(flare.halfSize, Vector3(12, 6, 7.5f));
      EXPECT_NEAR(flare.position.x, first / 32767.0 * 5 + 10, 1e-4);
      EXPECT_NEAR(flare.position.z, (third / 32767.0 - 0.5) * 2 * 30, 1e-4);
    }
  }
  for (int m = 0; m < 150; ++m) {
    const double size = randomSigned() * 0.025 + 0.15;
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const Billboard& mote = *s.world.billboards[2 + m];
    EXPECT_EQ(mote.texture, t.findTextureId(m % 2 == 0 ? "mustis2" : "mustis5"));
    EXPECT_NEAR(mote.halfSize.x, size, 1e-6);
    if (mote.time == 0) {
      EXPECT_NEAR(mote.position.x, c * 10, 1e-4) << m;
      EXPECT_NEAR(mote.position.y, b * 10, 1e-4) << m;
      EXPECT_NEAR(mote.position.z, a * 10, 1e-4) << m;
    }
    EXPECT_EQ(mote.alpha, 1.0f);
    EXPECT_EQ(mote.colour, Vector3(0, 0, 0));
    EXPECT_EQ(mote.blendMode, 1);
    EXPECT_TRUE(mote.castsShadow);
  }
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

TEST(SceneBordersWithin, TheBeatIsZeroBeforeTheFirstHitAndMayPassOne) {
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
    Envelope e;
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

TEST(SceneBordersWithin, MotesDriftAndComeBackWithANegativeStep) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithin& s = scene();
  std::vector<Vector3> before;
  for (int m = 0; m < 150; ++m) before.push_back(s.world.billboards[2 + m]->position);
  s.animate(5.0f, 50.0f, 200);
  NoiseField a(6, 111), b(6, 121), c(6, 131);
  for (int m : {0, 75, 149}) {
    const Vector3 q = before[m] * 0.1f;
    const Billboard& mote = *s.world.billboards[2 + m];
    EXPECT_NEAR(mote.position.x, before[m].x + a.fractalSum(q, 5) * 0.2f, 1e-5);
    EXPECT_NEAR(mote.position.z, before[m].z + c.fractalSum(q, 5) * 0.2f * 0.25f, 1e-5) << "z at a quarter";
    EXPECT_FLOAT_EQ(mote.timeStep, 0.2f);
    EXPECT_FLOAT_EQ(mote.time, 5.0f);
  }
  s.animate(5.0f, 50.0f, -200);
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
