// The last scene: construction draws, the cloud that comes apart cube by
// cube with its nine-float spins, the reseeding in every frame, the camera
// settling, and the flash, title and fade of the overlay.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "scenes/SceneBordersRollus.h"

namespace {

constexpr int slabObject = 0;
constexpr int firstPillar = 1;
constexpr int firstCube = 101;
constexpr int lightIndex = 421;

SceneBordersRollus& scene() { return *scenetest::buildOnce<SceneBordersRollus>("bordersRollus").scene; }

RingShape ring() {
  RingShape r;
  r.xSpread = 10;
  r.xRadius = 20;
  r.ySpread = 10;
  r.yRadius = 20;
  r.depthSpread = 15;
  r.depthBase = 20;
  return r;
}

Vector3 warped(Vector3 v, float t) {
  static NoiseField x(6, 108080), y(6, 15421), z(6, 13542);
  const Vector3 p(t * 0.014f + v.x * 0.012f * 1.2f + 10.0f, std::cos(v.y * 0.42f) * 3.3f + 10.0f,
                  std::sin(v.z * 0.02f * 11.2f + t * 0.004112f) * 8.321f + t * 0.00323f + 10.0f);
  return Vector3(x.fractalSum(p, 6) * 6.5f, y.fractalSum(p, 7) * 6.5f, z.fractalSum(p, 6) * 6.5f);
}

float sq(const Vector3& v) { return v.x * v.x + v.y * v.y + v.z * v.z; }

}  // namespace

TEST(SceneBordersRollus, ConstructionEndsAfterTheDustDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersRollus>("bordersRollus").stateAfter, 23233,
                                      1200);
}

TEST(SceneBordersRollus, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  ASSERT_EQ(s.world.objects.size(), 422u) << "slab, 100 pillars, 320 cubes, light";
  EXPECT_EQ(s.world.billboards.size(), 304u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.cubeCount, 320);
  EXPECT_EQ(s.glareCount, 4u);
  EXPECT_EQ(s.glowPasses, 6);
  for (int n = 0; n < 320; ++n) EXPECT_EQ(s.cubeObjects[n + 1], firstCube + n);
  EXPECT_EQ(s.name, "bordersRollus");
  EXPECT_EQ(s.camera->name, "SceneBordersRollus.camera0");
  EXPECT_EQ(s.parameters.size(), 15u);
  scenetest::expectStandardLight(s.world, lightIndex);
}

TEST(SceneBordersRollus, TheWorkVectorsLieInTheirOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  const auto at = [&](const void* p) { return reinterpret_cast<const char*>(p) - reinterpret_cast<const char*>(&s); };
  EXPECT_EQ(at(&s.spinY) - at(&s.spinX), 4);
  EXPECT_EQ(at(&s.spinZ) - at(&s.spinY), 4);
  EXPECT_EQ(at(&s.neighbourZ) - at(&s.neighbourY), 12);
  EXPECT_EQ(at(&s.neighbourX) - at(&s.neighbourZ), 12);
  EXPECT_EQ(at(&s.trailingVector) - at(&s.neighbourX), 12);
  EXPECT_LT(at(&s.spareVector), at(&s.neighbourY));
}

TEST(SceneBordersRollus, SlabRingAndCubes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  const Mesh& slab = *s.world.objects[slabObject];
  EXPECT_EQ(slab.scale, Vector3(20, 25, 5));
  EXPECT_EQ(slab.position, Vector3(0, 0, 15));
  scenetest::expectStage(slab.materials[0], 0, 1, "planartexture");
  EXPECT_EQ(slab.materials[0].stageScaleU[0], 1.5f);
  EXPECT_EQ(slab.materials[1].stageScaleU[0], 1.0f);
  scenetest::expectStage(slab.materials[1], 1, 2, "cubemap.bill", true);
  scenetest::expectColour(slab.materials[0].ambient, Vector3(0.4f, 0.74f, 1.82f) * 0.75f, 0.0f);
  scenetest::expectColour(slab.materials[1].diffuse, Vector3(1.15f, 0.66f, 0.3f) * 1.5f, 1.0f);
  // The ring goes on from NoiseField(6, 13542).
  scenetest::expectRing(s.world, firstPillar, {13542, scenetest::noiseDraws(6)}, ring(), "planartexture");

  crtSrand(13234);
  int n = 0;
  for (int a = 0; a < 4; ++a)
    for (int b = 0; b < 10; ++b)
      for (int c = 0; c < 8; ++c, ++n) {
        crtRand();
        crtRand();
        const int r3 = crtRand();
        randomUnit();  // thrown away
        const Vector3 home((c - 3.5f) * 0.88f * 0.33f, (b - 4.5f) * 0.88f, (a - 1.5f) * 0.88f);
        EXPECT_EQ(s.cubeHomes[n], home) << n;
        EXPECT_EQ(s.rotationHomes[n], home);
        const Mesh& cube = *s.world.objects[firstCube + n];
        EXPECT_EQ(cube.scale.x, 0.2f);
        EXPECT_NEAR(cube.scale.y, 0.8 * (r3 / 32767.0 * 0.05 + 0.2), 1e-6) << n;
        EXPECT_TRUE(cube.useMatrix);
      }
  scenetest::expectBatch(s.world, firstCube, 320);
  for (int i : {0, 80, 160, 240, 319}) {
    crtSrand((i / 80) % 3 + 86347234);
    const double f1 = randomSigned(), f2 = randomSigned(), f3 = randomSigned();
    const Material& g = s.world.objects[firstCube + i]->materials[1];
    const Material& p = s.world.objects[firstCube + i]->materials[0];
    EXPECT_NEAR(g.diffuse.x, (f1 * 1.65 + 2.5) * 0.9, 1e-5) << i;
    EXPECT_NEAR(g.ambient.y, (f2 * 0.4 + 0.5) * 0.02, 1e-6) << i;
    EXPECT_NEAR(p.diffuse.z, (f3 * 0.23 + 0.36) * 0.3, 1e-6) << i;
    EXPECT_NEAR(p.ambient.x, (f1 * 0.4 + 0.5) * 0.1, 1e-6) << i;
  }
  EXPECT_EQ(s.world.objects[firstCube]->materials[0].diffuse, s.world.objects[firstCube + 240]->materials[0].diffuse)
      << "groups of 80 cycle through three palettes";
}

TEST(SceneBordersRollus, GlaresAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  FlareSpec glares;
  glares.count = 4;
  glares.texture = "bill_d2ch";
  glares.halfSize = Vector3(4, 2, 5);
  glares.alpha = 0.45f;
  const bool unmoved = s.world.billboards[0]->time == 0 && s.world.billboards[4]->timeStep == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 4, {23233, 0}, DustSpec(), unmoved);
}

TEST(SceneBordersRollus, AtRestTheGridStandsAndDoesNotSpin) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  crtSrand(77);
  s.animate(1.0f, 233.5f, 40);  // w = T - 293 = 1: before every cube's moment (4.8 at the earliest)
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(2323, 640)) << "reseeded, then two draws per cube";
  for (int k : {1, 160, 320}) {
    const Vector3& h = s.cubeHomes[k - 1];
    const Mesh& cube = *s.world.objects[firstCube + k - 1];
    EXPECT_FLOAT_EQ(cube.position.x, h.x);
    EXPECT_FLOAT_EQ(cube.position.y, h.y * 0.25f) << "flattened at rest";
    EXPECT_FLOAT_EQ(cube.position.z, h.z);
    EXPECT_EQ(cube.rotation, Vector3(0, 0, 0));
  }
}

TEST(SceneBordersRollus, EachCubeLeavesAtItsOwnMomentWithItsNeighboursSpin) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  const float S = 6.0f, d = 239.0f, T = d + 60.5f, w = T - 293.0f;
  s.animate(S, d, 40);
  warped(Vector3(), 0.0f);  // makes the fields first: their seeding would move the generator
  crtSrand(2323);
  int moving = 0;
  for (int k = 1; k <= 320; ++k) {
    const float st = static_cast<float>(randomUnit() + 4.8);
    const float u = static_cast<float>(randomSigned() + 1.4);
    if (k != 1 && k != 100 && k != 320) continue;
    const Vector3 h = s.cubeHomes[k - 1];
    const float b = easeInAt(w, st, u);
    const float u2 = u * 0.2f, s2 = st + u * 0.75f;
    const float e = easeWindowAt(w, s2, u2, s2 + u2, u2);
    const float c = 1.0f - (e + b);
    const Vector3 dd = warped(h, S);
    const Vector3 position = Vector3(h.x, h.y * 0.25f, h.z) * c + dd * (1.0f - c);
    const Vector3 nx = warped(Vector3(h.x + 1.5f, h.y, h.z), S) - position;
    const Vector3 ny = warped(Vector3(h.x, h.y + 1.5f, h.z), S) - position;
    const Vector3 nz = warped(Vector3(h.x, h.y, h.z + 1.5f), S) - position;
    const Mesh& cube = *s.world.objects[firstCube + k - 1];
    EXPECT_NEAR(cube.position.x, position.x, 1e-4) << k;
    EXPECT_NEAR(cube.position.y, position.y, 1e-4) << k;
    // spinX counts neighbourX alone, spinY all three, spinZ the last two.
    EXPECT_NEAR(cube.rotation.x, sq(nx) * 7 * (1 - c), 1e-2 * (1 + std::fabs(cube.rotation.x))) << k;
    EXPECT_NEAR(cube.rotation.y, (sq(ny) + sq(nz) + sq(nx)) * 4 * (1 - c), 1e-2 * (1 + std::fabs(cube.rotation.y)))
        << k;
    EXPECT_NEAR(cube.rotation.z, (sq(nz) + sq(nx)) * 4 * (1 - c), 1e-2 * (1 + std::fabs(cube.rotation.z))) << k;
    moving += c != 1.0f;
  }
  EXPECT_GT(moving, 0) << "at w = 6.5 some cubes have started to leave";
  EXPECT_EQ(s.trailingVector, Vector3(0, 0, 0));
  EXPECT_EQ(s.spareVector, Vector3(0, 0, 0));
}

TEST(SceneBordersRollus, TheRewindBringsTheCubesBackTheSameWay) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  s.animate(8.0f, 241.0f, 40);
  std::vector<Vector3> there;
  for (int k = 0; k < 320; ++k) there.push_back(s.world.objects[firstCube + k]->position);
  s.animate(9.0f, 242.0f, 40);
  s.animate(8.0f, 241.0f, -3500);
  for (int k : {0, 100, 319}) EXPECT_EQ(s.world.objects[firstCube + k]->position, there[k]) << k;
}

TEST(SceneBordersRollus, TheCameraWandersThenSettles) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  s.animate(12.0f, 244.5f, 40);  // T = 305: past 297.5 + 4.5
  EXPECT_FLOAT_EQ(s.camera->lookAtPitch, -150.0f);
  EXPECT_FLOAT_EQ(s.camera->lookAtYaw, -136.5f);
  const float T = 236.0f + 60.5f;  // before the settling starts
  s.animate(3.5f, 236.0f, 40);
  NoiseField x(6, 108080), y(6, 15421);
  Vector3 q(T * 0.08121234f, T * 0.013234f, T * 0.0423345f);
  const double ex = std::fabs(x.fractalSum(q, 8));
  EXPECT_NEAR(s.camera->position.x, ex * ex * ex * 12.32, 1e-4);
  q *= 1.1f;
  EXPECT_NEAR(s.camera->lookAtPitch, x.fractalSum(q, 8) * 232.0f, 1e-3);
  EXPECT_NEAR(s.camera->lookAtYaw, y.fractalSum(q, 4) * 182.3f, 1e-3);
  EXPECT_EQ(s.camera->direction, -s.camera->position);
}

TEST(SceneBordersRollus, OverlayStrengths) {
  EXPECT_EQ(SceneBordersRollus::flashIn(15.0f), 0.0f) << "exactly 0 until S passes 15";
  EXPECT_GT(SceneBordersRollus::flashIn(15.05f), 0.0f);
  EXPECT_LT(SceneBordersRollus::flashIn(15.05f), 0.01f) << "so the first overlay frame is almost white";
  EXPECT_EQ(SceneBordersRollus::flashIn(16.6f), 1.0f);
  EXPECT_EQ(SceneBordersRollus::fadeOut(20.0f), 0.0f);
  EXPECT_EQ(SceneBordersRollus::fadeOut(21.01f), 1.0f);
  EXPECT_FLOAT_EQ(SceneBordersRollus::titleIn(20.0f), 0.5f);
}

namespace {

// The picture's centre after one frame at scene time S (ms).
std::vector<uint8_t> frameAt(SceneBordersRollus& s, int32_t sceneMs, int x = scenetest::width / 2,
                             int y = scenetest::height / 2) {
  s.sceneTimeMs = sceneMs - 40;
  testgl::drainErrors();
  s.render(232500 + sceneMs, 40);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  return testgl::readPixels(x, y, 1, 1);
}

}  // namespace

TEST(SceneBordersRollus, TheFlashStartsWhiteAfterFifteenSeconds) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  const std::vector<uint8_t> before = frameAt(s, 15000);
  EXPECT_LT(before[0] + before[1] + before[2], 600) << "no overlay yet";
  const std::vector<uint8_t> flash = frameAt(s, 15040);
  EXPECT_GE(flash[0], 245);
  EXPECT_GE(flash[1], 245);
  EXPECT_GE(flash[2], 245);
}

TEST(SceneBordersRollus, AfterTwentyOneSecondsOnlyTheTitleShows) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersRollus& s = scene();
  // Near the top of the picture, away from the lettering, all is black.
  const std::vector<uint8_t> top = frameAt(s, 22000, scenetest::width / 2, scenetest::height - 30);
  EXPECT_LE(top[0] + top[1] + top[2], 6);
  // The title itself still shows, drawn after the black quad.
  const std::vector<uint8_t> all = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  int lit = 0;
  for (size_t i = 0; i < all.size(); i += 4) lit += all[i + 2] > 100;
  EXPECT_GT(lit, 200);
}
