// The scene kit: what each helper builds, and exactly how many random
// numbers it draws, in which order.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/NoiseField.h"
#include "scenes/SceneSkeleton.h"

namespace {

// A bare scene on the skeleton, to call the kit's helpers one by one.
class KitScene : public SceneSkeleton {
 public:
  explicit KitScene(Demo* demo) : SceneSkeleton(demo, "kit") {
    setUpCamera("KitScene.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));
  }
  void animate(float, float, int32_t) override {}
};

KitScene& kit() {
  static KitScene* scene = new KitScene(&scenetest::demo());  // left alive, as scenes are
  return *scene;
}

}  // namespace

TEST(SceneKit, ModelBatchPlacesEveryModelInOneBatch) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  Material picture, glow;
  glow.diffuse.set(0.25f, 0.5f, 0.75f);
  int calls = 0;
  const int first = s.addModelBatch("./models/cube.a3d", 5, picture, glow, [&](int32_t i, int32_t index, Mesh* mesh) {
    EXPECT_EQ(i, calls++);
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh, s.world.objects[index]);
    mesh->position = Vector3(static_cast<float>(i), 0, 0);
  });
  EXPECT_EQ(calls, 5);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(s.world.objects[first + i]->position.x, static_cast<float>(i));
    EXPECT_FLOAT_EQ(s.world.objects[first + i]->materials[1].diffuse.y, 0.5f);
    EXPECT_EQ(s.world.objects[first + i]->currentMaterial, 0);
  }
  scenetest::expectBatch(s.world, first, 5);
}

TEST(SceneKit, ThePlacingCallbackRunsWhenTheModelIsMissing) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  const size_t objects = s.world.objects.size();
  crtSrand(5);
  int calls = 0;
  s.addModelBatch("./models/no-such-model.a3d", 4, Material(), Material(), [&](int32_t, int32_t index, Mesh* mesh) {
    ++calls;
    EXPECT_LT(index, 0);
    EXPECT_EQ(mesh, nullptr);
    crtRand();
    crtRand();
  });
  EXPECT_EQ(calls, 4);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(5, 8)) << "the callback's draws, all of them";
  EXPECT_EQ(s.world.objects.size(), objects);
}

TEST(SceneKit, BackdropAndLooks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  Material picture, glow;
  s.material(picture).stages(2).stage(0, stageModulate, "planartexture").cubeMap(1, stageAdd, "cubemap.bill");
  s.material(glow).ambient(Vector3(1, 1, 1) * 0.05f).stages(1).stage(0, stageModulate, "solidnoisebump");
  crtSrand(1);
  const int plate = s.addBackdrop("./models/cube.a3d", picture, glow, Vector3(24, 24, 3), Vector3(0, 0, 3));
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(1, 0)) << "no draws";
  const Mesh& m = *s.world.objects[plate];
  EXPECT_EQ(m.scale, Vector3(24, 24, 3));
  EXPECT_EQ(m.position, Vector3(0, 0, 3));
  scenetest::expectStage(m.materials[0], 0, stageModulate, "planartexture");
  scenetest::expectStage(m.materials[0], 1, stageAdd, "cubemap.bill", true);
  scenetest::expectStage(m.materials[1], 0, stageModulate, "solidnoisebump");
  EXPECT_FLOAT_EQ(m.materials[1].ambient.x, 0.05f);

  // New looks for both slots.
  picture.diffuse.set(3, 2, 1);
  glow.diffuse.set(1, 2, 3);
  s.applyLooks(plate, picture, glow);
  EXPECT_EQ(m.materials[0].diffuse, Vector3(3, 2, 1));
  EXPECT_EQ(m.materials[1].diffuse, Vector3(1, 2, 3));
  EXPECT_EQ(m.currentMaterial, 0);
  s.applyLooks(-1, picture, glow);  // a missing model: nothing to do
  EXPECT_EQ(s.addBackdrop("./models/none.a3d", picture, glow, Vector3(1, 1, 1), Vector3(0, 0, 0)) < 0, true);
}

TEST(SceneKit, StageOffsetsDrawFourNumbersInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  Material picture, glow;
  crtSrand(42);
  kit().drawStageOffsets(picture, glow, 7);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(42, 4));
  crtSrand(42);
  const double pu = randomSigned(), pv = randomSigned(), gu = randomSigned(), gv = randomSigned();
  EXPECT_FLOAT_EQ(picture.stageOffsetU[0], static_cast<float>(pu + 7 * 0.232141));
  EXPECT_FLOAT_EQ(picture.stageOffsetV[0], static_cast<float>(pv + 7 * 0.1232141));
  EXPECT_FLOAT_EQ(glow.stageOffsetU[0], static_cast<float>(gu + 7 * 0.232141));
  EXPECT_FLOAT_EQ(glow.stageOffsetV[0], static_cast<float>(gv + 7 * 0.1232141));
}

TEST(SceneKit, RingOfAnyCount) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  RingShape shape;
  shape.count = 60;
  shape.xRadius = 15;
  crtSrand(111);
  const int first = s.addBoxRing(Material(), Material(), shape);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(111, 300)) << "five draws a box";
  scenetest::expectRing(s.world, first, {111, 0}, shape);
}

TEST(SceneKit, NoiseFieldsAreMadeWhereTheSceneSaysAndOwned) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(3);
  NoiseField* n = kit().makeNoiseField(6, 102);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(102, scenetest::noiseDraws(6)));
  NoiseField fresh(6, 102);
  const Vector3 p(1.25f, 2.5f, 3.75f);
  EXPECT_EQ(n->fractalSum(p, 5), fresh.fractalSum(p, 5));
  EXPECT_NE(kit().makeNoiseField(5, 1), n);
}

TEST(SceneKit, FlaresOfEachColourRule) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  FlareSpec raw;
  raw.count = 3;
  raw.alpha = 0.7f;
  raw.colourRule = FlareSpec::warmFromRaw;
  raw.warmScale = 0.265f;
  crtSrand(232);
  const uint32_t first = s.addFlares(raw);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(232, 12)) << "four draws a flare";
  scenetest::expectFlares(s.world, first, {232, 0}, raw);
  EXPECT_GT(s.world.billboards[first]->colour.x, 1.0f) << "the raw draw lands far above 1";

  FlareSpec unit;
  unit.colourRule = FlareSpec::warmFromUnit;
  unit.halfSize = Vector3(8, 4, 5) * 1.5f;
  FlareSpec fixed;
  fixed.texture = "bill_d2ch";
  fixed.count = 8;
  fixed.alpha = 0.45f;
  crtSrand(7);
  const uint32_t second = s.addFlares(unit);
  const uint32_t third = s.addFlares(fixed);
  EXPECT_EQ(second, first + 3);
  EXPECT_EQ(third, second + 2);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(7, 40));
  scenetest::expectFlares(s.world, second, {7, 0}, unit);
  scenetest::expectFlares(s.world, third, {7, 8}, fixed);
  EXPECT_LE(s.world.billboards[second]->colour.x, 0.65f * 1.0f + 1e-6f);
  EXPECT_FLOAT_EQ(s.world.billboards[third]->colour.z, 0.65f);
}

TEST(SceneKit, DustOfEachKindAndItsDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  DustSpec plain;
  plain.count = 30;
  crtSrand(23233);
  const uint32_t first = s.addDust(plain);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(23233, 120)) << "four draws a mote";
  scenetest::expectDust(s.world, first, {23233, 0}, plain);

  DustSpec tiled;
  tiled.count = 11;
  tiled.spread = Vector3(29, 29, 3);
  tiled.depth = -5.0f;
  tiled.alpha = 0.75f;
  tiled.tiled = true;
  tiled.tileSpacingDraw = 0.1;
  DustSpec shaded;
  shaded.count = 7;
  shaded.sizeScale = 2.0f;
  shaded.spread = Vector3(9, 9, 2);
  shaded.colour = Vector3(0.25f, 0.12f, 0.12f);
  shaded.tiled = true;
  shaded.shadeByDraw = true;
  crtSrand(8);
  const uint32_t second = s.addDust(tiled);
  const uint32_t third = s.addDust(shaded);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(8, 11 * 5 + 7 * 5));
  scenetest::expectDust(s.world, second, {8, 0}, tiled);
  scenetest::expectDust(s.world, third, {8, 55}, shaded);
  EXPECT_EQ(s.world.billboards[third]->tileSpacing, 0.0f);
  EXPECT_NE(s.world.billboards[third]->colour, shaded.colour) << "shaded by its draw";
}

TEST(SceneKit, LightOrbitFlaresAndDustDriftPerFrame) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene& s = kit();
  const int light = s.addStandardLight(0.0f);
  scenetest::expectStandardLight(s.world, light, 0.0f);
  FlareSpec spec;
  spec.count = 4;
  const uint32_t flares = s.addFlares(spec);
  DustSpec dust;
  dust.count = 20;
  const uint32_t motes = s.addDust(dust);

  crtSrand(9);
  const Vector3 at = s.orbitLight(light, 2.0f, 0.33f);
  scenetest::expectLightOnOrbit(s.world, light, 2.0, 0.33);
  EXPECT_EQ(at, s.world.objects[light]->position);
  EXPECT_EQ(s.objectPosition(-1), Vector3(0, 0, 0));
  FlareOrbit wide;
  wide.phaseX = 0.34123f;
  wide.phaseY = 0.2823f;
  wide.size = Vector3(8, 9, 1.5f);
  s.flaresFollow(flares, 4, 81.5f, at, wide);
  scenetest::expectFlaresAtLight(s.world, flares, 4, light, 81.5f, wide);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  NoiseField* nx = s.makeNoiseField(6, 100);
  NoiseField* ny = s.makeNoiseField(6, 101);
  NoiseField* nz = s.makeNoiseField(6, 102);
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, motes, 20);
  DustDrift drift;
  drift.sampleScale = 0.15f;
  drift.zScale = 0.75f;
  crtSrand(9);
  s.driftDust(motes, 20, nx, ny, nz, 3.5f, 120, drift);
  scenetest::expectDustDrifted(s.world, motes, before, {0, 7, 19}, x, y, z, drift, 120, 3.5f);
  s.driftDust(motes, 20, nx, ny, nz, 3.5f, -120, drift);
  for (int m : {0, 7, 19}) {
    EXPECT_NEAR(s.world.billboards[motes + m]->position.x, before[m].x, 5e-3) << "back along the flow, sampled at the moved point";
    EXPECT_NEAR(s.world.billboards[motes + m]->position.z, before[m].z, 5e-3);
  }
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(9, 0)) << "no draws per frame";
}

TEST(SceneKit, UsualGlowGroupInOneCall) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  KitScene scene(&scenetest::demo());
  scene.glowBlurAmount = 0.9f;
  scene.addUsualGlowGroup();
  EXPECT_EQ(scene.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(scene.parameterByName("glowBlurAmount")->defaultValue, 0.45f);
  EXPECT_FLOAT_EQ(scene.parameterByName("glowBlurZoomPowBase")->defaultValue, 1.5f);
  EXPECT_FLOAT_EQ(scene.parameterByName("glowBlurAlpha")->defaultValue, 1.0f);
  EXPECT_EQ(scene.parameters.back().name, "glowBlurAlpha");
}

TEST(SceneKit, GlowSourceHookAndGlowDropShapeTheFrame) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // A scene that counts its glow source drawings and tightens its glow.
  class HookScene : public SceneSkeleton {
   public:
    explicit HookScene(Demo* demo) : SceneSkeleton(demo, "hook") {
      setUpCamera("HookScene.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));
      lightObject = addStandardLight();
      addUsualGlowGroup();
    }
    void animate(float, float, int32_t) override { glowAmountDrop = 0.5f; }
    void drawIntoGlowSource(float sceneSeconds, float) override {
      ++glowSourceDrawings;
      lastSeconds = sceneSeconds;
    }
    int32_t lightObject = -1;
    int glowSourceDrawings = 0;
    float lastSeconds = -1;
  };
  HookScene scene(&scenetest::demo());
  EXPECT_TRUE(scene.glowSourceWritesColour);
  EXPECT_EQ(scene.glowAmountDrop, 0.0f);
  testgl::drainErrors();
  scene.render(1000, 250);
  scene.glowSourceWritesColour = false;
  scene.render(1250, 250);
  EXPECT_EQ(scene.glowSourceDrawings, 2);
  EXPECT_FLOAT_EQ(scene.lastSeconds, 0.5f);
  EXPECT_EQ(scene.glowAmountDrop, 0.5f);
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
}
