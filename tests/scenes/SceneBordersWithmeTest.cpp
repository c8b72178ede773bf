// The tunnel of tiles: what its constructor builds from which random draws,
// the camera, tiles, glares and flecks per frame, and seeking.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneTestDemo.h"
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

uint32_t stateAfterConstruction = 0;

SceneBordersWithme& scene() {
  static SceneBordersWithme* s = nullptr;
  if (!s) {
    s = new SceneBordersWithme(&scenetest::demo(), "bordersWithme");
    stateAfterConstruction = crtRandState();
  }
  return *s;
}

}  // namespace

TEST(SceneBordersWithme, ConstructionEndsAfterTheFleckDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(99);
  scene();
  // Last seed 23233: four draws for each of the 300 flecks.
  EXPECT_EQ(stateAfterConstruction, scenetest::stateAfter(23233, 1200));
  EXPECT_NE(stateAfterConstruction, scenetest::stateAfter(23233, 1199));
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
  if (s.sceneTimeMs == 0 && s.camera->zoom == 0.0f) {
    EXPECT_EQ(s.camera->position, Vector3(0, 0, -10));
    EXPECT_EQ(s.camera->direction, Vector3(0, 0, 8));
  }
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
}

TEST(SceneBordersWithme, BackdropAndPlates) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  const Mesh& backdrop = *s.world.objects[backdropObject];
  EXPECT_EQ(backdrop.scale, Vector3(36, 36, 6));
  EXPECT_EQ(backdrop.position, Vector3(0, 0, 15));
  EXPECT_FLOAT_EQ(backdrop.materials[0].ambient.z, 1.82f * 0.75f);
  EXPECT_EQ(backdrop.materials[0].ambient.alpha, 0.0f);
  EXPECT_FLOAT_EQ(backdrop.materials[1].diffuse.y, 0.76f * 1.5f);
  EXPECT_EQ(backdrop.materials[0].stageTexture[0], t.findTextureId("planartexture"));
  EXPECT_EQ(backdrop.materials[0].stageCount, 1u);
  // The plates take the picture material of the backdrop.
  EXPECT_FLOAT_EQ(s.world.objects[firstPlate]->materials[0].diffuse.z, 1.526f * 5.1f);

  crtSrand(102);
  for (int k = 0; k < 192; ++k) crtRand();
  for (int i = 0; i < 100; ++i) {
    const double cosFirst = randomUnit(), sinSecond = randomUnit();
    const double zFirst = randomSigned(), ySecond = randomSigned();
    const double depth = randomSigned();
    const Mesh& plate = *s.world.objects[firstPlate + i];
    EXPECT_NEAR(plate.position.x, std::sin(i) * (sinSecond * 2 + 20), 1e-4) << i;
    EXPECT_NEAR(plate.position.y, std::cos(i) * (cosFirst * 2 + 20), 1e-4) << i;
    EXPECT_EQ(plate.position.z, 4.0f);
    EXPECT_NEAR(plate.rotation.y, ySecond * 180, 1e-3);
    EXPECT_NEAR(plate.rotation.z, zFirst * 20, 1e-4);
    EXPECT_NEAR(plate.scale.z, 10 + 2 * depth, 1e-4);
    EXPECT_EQ(plate.scale.x, 5.0f);
  }
  EXPECT_TRUE(s.world.objects[firstPlate]->batchFirst);
  EXPECT_FALSE(s.world.objects[firstPlate]->restoreState);
  EXPECT_FALSE(s.world.objects[firstPlate + 50]->setupState);
  EXPECT_FALSE(s.world.objects[firstPlate + 50]->batchFirst);
  EXPECT_FALSE(s.world.objects[firstPlate + 50]->batchLast);
  EXPECT_TRUE(s.world.objects[firstPlate + 99]->batchLast);
}

TEST(SceneBordersWithme, TunnelFourByFourFortyDeep) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  crtSrand(234);
  int n = 0;
  for (int z = 0; z < 40; ++z)
    for (int y = 0; y < 4; ++y)
      for (int x = 0; x < 4; ++x, ++n) {
        const double yFirst = randomUnit(), xSecond = randomUnit(), height = randomUnit();
        EXPECT_EQ(s.tileHomes[n], Vector3(x - 1.5f, y - 1.5f, z - 19.5f)) << n;
        const Mesh& tile = *s.world.objects[firstTile + n];
        EXPECT_NEAR(tile.rotation.x, (xSecond - 0.5) * 186 - 90, 1e-3) << n;
        EXPECT_NEAR(tile.rotation.y, (yFirst - 0.5) * 186, 1e-3) << n;
        EXPECT_EQ(tile.scale.x, 0.25f);
        EXPECT_NEAR(tile.scale.y, height * 0.05 + 0.2, 1e-6) << n;
        EXPECT_EQ(tile.scale.z, 0.25f);
        EXPECT_TRUE(tile.useMatrix);
      }
  EXPECT_TRUE(s.world.objects[firstTile]->batchFirst);
  EXPECT_TRUE(s.world.objects[firstTile + 639]->batchLast);
}

TEST(SceneBordersWithme, SlicesOfSixteenShareAColourThreeColoursInTurn) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  for (int i : {0, 15, 16, 47, 48, 639}) {
    crtSrand((i / 16) % 3 + 1990);
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double pu = randomSigned(), pv = randomSigned(), gu = randomSigned(), gv = randomSigned();
    const Material& p = s.world.objects[firstTile + i]->materials[0];
    const Material& g = s.world.objects[firstTile + i]->materials[1];
    EXPECT_NEAR(g.diffuse.x, (a * 1.65 + 2.5) * 0.1, 1e-5) << i;
    EXPECT_NEAR(g.diffuse.z, (c * 0.34 + 0.5) * 0.1, 1e-5) << i;
    EXPECT_FLOAT_EQ(g.ambient.x, 0.01f);
    EXPECT_NEAR(p.diffuse.y, (b * 0.44 + 0.64) * 0.2, 1e-5) << i;
    EXPECT_NEAR(p.ambient.x, (a * 0.4 + 0.5) * 0.1, 1e-5) << i;
    EXPECT_NEAR(p.stageOffsetU[0], pu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(p.stageOffsetV[0], pv + i * 0.1232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetU[0], gu + i * 0.232141, 1e-4) << i;
    EXPECT_NEAR(g.stageOffsetV[0], gv + i * 0.1232141, 1e-4) << i;
    EXPECT_EQ(p.stageTexture[0], t.findTextureId("hopmet"));
    EXPECT_EQ(g.stageTexture[0], t.findTextureId("hopmet"));
  }
  const auto glowOf = [&](int i) { return s.world.objects[firstTile + i]->materials[1].diffuse; };
  EXPECT_EQ(glowOf(0), glowOf(15));
  EXPECT_NE(glowOf(0), glowOf(16));
  EXPECT_EQ(glowOf(0), glowOf(48));
}

TEST(SceneBordersWithme, GlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWithme& s = scene();
  TextureStore& t = *scenetest::demo().textures;
  crtSrand(232);
  for (int i = 0; i < 2; ++i) {
    const double x = randomUnit();
    crtRand();
    const double z = randomSigned();
    const double r = randomUnit();
    const Billboard& glare = *s.world.billboards[i];
    EXPECT_EQ(glare.texture, t.findTextureId("billbig"));
    EXPECT_EQ(glare.alpha, 0.9f);
    EXPECT_NEAR(glare.colour.x, (r * 0.1 + 0.9) * 0.65, 1e-5);
    EXPECT_NEAR(glare.colour.y, (r * 0.06 + 0.63) * 0.65, 1e-5);
    EXPECT_NEAR(glare.colour.z, (r * 0.03 + 0.4) * 0.65, 1e-5);
    if (glare.time == 0 && s.sceneTimeMs == 0 && glare.halfSize == Vector3(8, 4, 5)) {
      EXPECT_NEAR(glare.position.x, x * 5 + 10, 1e-4);
      EXPECT_EQ(glare.position.y, 0.0f);
      EXPECT_NEAR(glare.position.z, z * 30, 1e-4);
    }
  }
  crtSrand(23233);
  for (int f = 0; f < 300; ++f) {
    const double size = randomSigned() * 0.025 + 0.15;
    const double z = randomSigned(), y = randomSigned(), x = randomSigned();
    const Billboard& fleck = *s.world.billboards[2 + f];
    EXPECT_EQ(fleck.texture, t.findTextureId(f % 2 == 0 ? "mustis2" : "mustis5"));
    EXPECT_NEAR(fleck.halfSize.x, size, 1e-6);
    if (fleck.timeStep == 0) {
      EXPECT_NEAR(fleck.position.x, x * 9, 1e-4) << f;
      EXPECT_NEAR(fleck.position.y, y * 9, 1e-4) << f;
      EXPECT_NEAR(fleck.position.z, z * 10, 1e-4) << f;
    }
    EXPECT_EQ(fleck.alpha, 1.0f);
    EXPECT_EQ(fleck.colour, Vector3(0, 0, 0));
    EXPECT_EQ(fleck.blendMode, 1);
    EXPECT_TRUE(fleck.castsShadow);
    EXPECT_FALSE(fleck.tiled);
  }
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

  const Mesh& light = *s.world.objects[lightIndex];
  EXPECT_NEAR(light.position.x, 12.5 * std::cos(t * 0.5), 1e-4);
  EXPECT_NEAR(light.position.y, 10.5 * std::sin(t * 0.25), 1e-4);
  EXPECT_EQ(light.position.z, -9.0f);
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
  std::vector<Vector3> before;
  for (int f = 0; f < 300; ++f) before.push_back(s.world.billboards[2 + f]->position);
  s.animate(4.0f, 80.0f, 250);
  NoiseField x(6, 100), y(6, 101), z(6, 102);
  for (int f : {0, 150, 299}) {
    const Vector3 p = before[f] * 0.1f;
    const Billboard& fleck = *s.world.billboards[2 + f];
    EXPECT_NEAR(fleck.position.x, before[f].x + x.fractalSum(p, 5) * 0.25f, 1e-5);
    EXPECT_NEAR(fleck.position.y, before[f].y + y.fractalSum(p, 5) * 0.25f, 1e-5);
    EXPECT_NEAR(fleck.position.z, before[f].z + z.fractalSum(p, 5) * 0.25f * 0.25f, 1e-5);
    EXPECT_FLOAT_EQ(fleck.timeStep, 0.25f);
    EXPECT_FLOAT_EQ(fleck.time, 4.0f);
  }
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
