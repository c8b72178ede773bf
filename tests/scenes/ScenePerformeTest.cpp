// The opening scene: what its constructor builds from which random draws,
// what moves per frame, and the maker titles.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "core/OstravineDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "scenes/ScenePerforme.h"

namespace {

ScenePerforme& freshScene() { return *scenetest::buildOnce<ScenePerforme>("performe").scene; }

// Object indices: the plate, the ring of boxes, the bones, the light.
constexpr int plateObject = 0;
constexpr int firstBox = 1;
constexpr int firstBone = 101;
constexpr int lightIndex = 357;

// The three flares and the 400 motes as this scene makes them.
FlareSpec flares() {
  FlareSpec f;
  f.count = 3;
  f.texture = "billbig";
  f.alpha = 0.7f;
  f.colourRule = FlareSpec::warmFromRaw;
  f.warmScale = 0.265f;
  return f;
}

DustSpec motes() {
  DustSpec d;
  d.count = 400;
  d.spread = Vector3(29, 29, 3);
  d.depth = -5.0f;
  d.alpha = 0.75f;
  d.tiled = true;
  d.tileSpacingDraw = 0.1;
  return d;
}

}  // namespace

TEST(ScenePerforme, ConstructionEndsAfterTheMotesDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then five draws for each of the 400 motes.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<ScenePerforme>("performe").stateAfter, 23233, 2000);
}

TEST(ScenePerforme, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  ASSERT_EQ(s.world.objects.size(), 358u) << "plate, 100 boxes, 256 bones, light";
  EXPECT_EQ(s.boneCount, 256u);
  EXPECT_EQ(s.flareCount, 3u);
  EXPECT_EQ(s.moteCount, 400u);
  EXPECT_EQ(s.world.billboards.size(), 403u);
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.glowPasses, 7);
  EXPECT_EQ(s.objectIds[0], plateObject);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(s.objectIds[i + 1], firstBone + i);
}

TEST(ScenePerforme, ObjectIdsHasFourUnusedEntries) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  ASSERT_EQ(s.objectIds.size(), 261u);
  for (int i = 257; i < 261; ++i) EXPECT_EQ(s.objectIds[i], 0) << "entry " << i << " is never written";
}

TEST(ScenePerforme, CameraAndParameters) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  EXPECT_EQ(s.name, "performe");
  EXPECT_EQ(s.camera->name, "ScenePerforme.camera0");
  EXPECT_EQ(s.camera, scenetest::demo().cameraByName("ScenePerforme.camera0"));
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
  EXPECT_FLOAT_EQ(s.camera->farClip, 1000.0f);
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurAmount")->defaultValue, 0.45f);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurZoomPowBase")->defaultValue, 1.5f);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
}

TEST(ScenePerforme, BackPlateAndItsMaterials) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  const Mesh& plate = *s.world.objects[plateObject];
  EXPECT_GT(plate.faceCount, 0);
  EXPECT_EQ(plate.scale, Vector3(24, 24, 3));
  EXPECT_EQ(plate.position, Vector3(0, 0, 3));
  const Material& p = plate.materials[0];
  const Material& g = plate.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.6f, 0.8f, 1.142f) * 0.75f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.1526f) * 5.1f, 1.0f);
  EXPECT_EQ(p.stageCount, 3u);
  scenetest::expectStage(p, 0, 1, "hopmet");
  scenetest::expectStage(p, 1, 1, "billbig", false, true);
  scenetest::expectStage(p, 2, 2, "cubemap.bill", true);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
  scenetest::expectColour(g.diffuse, Vector3(1.55f, 0.76f, 0.3f) * 1.5f, 1.0f);
  EXPECT_EQ(g.stageCount, 3u);
  scenetest::expectStage(g, 0, 1, "solidnoisebump");
  scenetest::expectStage(g, 1, 1, "billbig", false, true);
  scenetest::expectStage(g, 2, 1, "cubemap.bill", true);  // set to 2 first, then 1: the second stands
}

TEST(ScenePerforme, RingOfBoxesContinuesTheLastNoiseSeed) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  // NoiseField(5, 5234) draws 3 x 32 numbers; the ring goes on from there.
  scenetest::expectRing(s.world, firstBox, {5234, scenetest::noiseDraws(5)}, RingShape(), "solidnoisebump");
}

TEST(ScenePerforme, BonesFromSeed234TallerIsThinner) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  crtSrand(234);
  for (int i = 0; i < 256; ++i) {
    const int r = crtRand();
    const int sv = crtRand();
    const int q = crtRand();
    const Mesh& bone = *s.world.objects[firstBone + i];
    EXPECT_FLOAT_EQ(bone.position.x, ((i % 16) - 7.5f) * 3) << i;
    EXPECT_FLOAT_EQ(bone.position.y, ((i / 16) - 7.5f) * 3) << i;
    EXPECT_EQ(bone.position.z, 0.0f);
    EXPECT_NEAR(bone.rotation.x, (sv / 32767.0 - 0.5) * 36 - 90, 1e-4) << i;
    EXPECT_NEAR(bone.rotation.y, (r / 32767.0 - 0.5) * 36, 1e-4) << i;
    const double h = q / 32767.0 * 7 + 1;
    EXPECT_NEAR(bone.scale.y, h, 1e-4) << i;
    EXPECT_NEAR(bone.scale.x, 2 * (9 - h) / 9, 1e-4) << i;
    EXPECT_EQ(bone.scale.x, bone.scale.z);
    EXPECT_TRUE(bone.useMatrix);
    EXPECT_FLOAT_EQ(bone.materials[0].ambient.x, 0.25f * 0.75f);
    EXPECT_EQ(bone.materials[0].ambient.alpha, 0.0f) << "alpha kept from the first group";
    EXPECT_FLOAT_EQ(bone.materials[0].diffuse.x, 0.5f * 5.1f);
    EXPECT_EQ(bone.materials[1].ambient.x, 0.0f);
    EXPECT_FLOAT_EQ(bone.materials[1].diffuse.x, 0.45f);
    EXPECT_EQ(bone.materials[1].stageTexture[0], scenetest::demo().textures->findTextureId("hopmet"));
    EXPECT_EQ(bone.materials[1].stageScaleU[0], 2.0f);
    EXPECT_EQ(bone.materials[0].stageScaleU[0], 1.0f);
  }
  EXPECT_TRUE(s.world.objects[firstBone]->batchFirst);
  EXPECT_TRUE(s.world.objects[firstBone + 255]->batchLast);
  EXPECT_FALSE(s.world.objects[firstBone + 255]->setupState);
}

TEST(ScenePerforme, FlaresDrawOnFromTheBonesSequence) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  // No new seed: on from the bones' 256 x 3 draws; the colour is the raw draw, unscaled.
  const bool unmoved = s.sceneTimeMs == 0 && s.world.billboards[0]->time == 0;
  scenetest::expectFlares(s.world, 0, {234, 256 * 3}, flares(), unmoved);
}

TEST(ScenePerforme, MotesFromSeed23233) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  const bool unmoved = s.world.billboards[3]->time == 0 && s.world.billboards[3]->timeStep == 0;
  scenetest::expectDust(s.world, 3, {23233, 0}, motes(), unmoved);
  EXPECT_NE(scenetest::textureId("mustis2"), scenetest::textureId("mustis5"));
}

TEST(ScenePerforme, TheLight) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::expectStandardLight(freshScene().world, lightIndex);
}

TEST(ScenePerforme, PerFrameLightBonesFlaresAndMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  const std::vector<Vector3> motesBefore = scenetest::billboardPositions(s.world, 3, 400);

  const float sec = 3.0f, d = 7.5f;
  s.animate(sec, d, 40);

  scenetest::expectLightOnOrbit(s.world, lightIndex, 1.5);

  NoiseField a(5, 2442), b(5, 43243), c(5, 5234);
  for (int i : {0, 17, 255}) {
    const Mesh& bone = *s.world.objects[firstBone + i];
    Vector3 p = bone.position;
    p.x += d * 0.33233f + 100.0f;
    p.y += d * 0.12312233f + 100.0f;
    p.z += d * 0.03128523f + 100.0f;
    EXPECT_FLOAT_EQ(bone.rotation.z, a.fractalSum(p, 5) * 32.34f) << i;
    EXPECT_FLOAT_EQ(bone.rotation.y, a.fractalSum(p, 6) * 36.34f) << i;
  }
  scenetest::expectFlaresAtLight(s.world, 0, 3, lightIndex, d);
  scenetest::expectDustDrifted(s.world, 3, motesBefore, {0, 199, 399}, a, b, c, DustDrift(), 40, sec);

  // A negative step takes the motes back along the flow.
  s.animate(sec, d, -40);
  for (int m : {0, 199, 399}) {
    const Vector3 at = s.world.billboards[3 + m]->position;
    EXPECT_NEAR(at.x, motesBefore[m].x, 1e-3);
    EXPECT_NEAR(at.y, motesBefore[m].y, 1e-3);
    EXPECT_NEAR(at.z, motesBefore[m].z, 1e-3);
  }
}

TEST(ScenePerforme, TitleEnvelopes) {
  EXPECT_EQ(ScenePerforme::kestrinStrength(15.7f), 0.0f);
  EXPECT_EQ(ScenePerforme::kestrinStrength(15.8f), 0.0f);
  EXPECT_GT(ScenePerforme::kestrinStrength(15.85f), 0.0f);
  EXPECT_FLOAT_EQ(ScenePerforme::kestrinStrength(16.0f), 1.0f);
  EXPECT_EQ(ScenePerforme::kestrinStrength(16.35f), 0.0f);
  EXPECT_EQ(ScenePerforme::ksStrength(16.0f), 0.0f);
  EXPECT_EQ(ScenePerforme::ksStrength(21.4f), 0.0f);
  EXPECT_FLOAT_EQ(ScenePerforme::ksStrength(22.0f), 1.0f);
  EXPECT_GT(ScenePerforme::ksStrength(22.6f), 0.0f);
  EXPECT_EQ(ScenePerforme::ksStrength(22.7f), 0.0f);
  for (float t = 0; t < 26.5f; t += 0.01f)
    EXPECT_FALSE(ScenePerforme::kestrinStrength(t) > 0 && ScenePerforme::ksStrength(t) > 0) << t;
}

TEST(ScenePerforme, BeforeTheFirstTitleTheOverlayDrawsNoRandomNumbers) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  s.sceneTimeMs = 15660;
  crtSrand(4242);
  s.render(15700, 40);  // 15.7 s of scene time
  EXPECT_EQ(s.sceneTimeMs, 15700);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(4242, 0));
}

TEST(ScenePerforme, ATitleFrameShakesWithThirtyDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  s.sceneTimeMs = 15960;
  crtSrand(4242);
  s.render(16000, 40);  // "kestrin" at full strength
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(4242, 30)) << "two draws for each of 15 layers";
}

TEST(ScenePerforme, TitlesComeBackInReverseWhenTheClockRunsBack) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  s.sceneTimeMs = 22700;
  crtSrand(7);
  s.render(60000, -700);  // a rewind step: back to 22.0 s of scene time
  EXPECT_EQ(s.sceneTimeMs, 22000);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(7, 30)) << "\"ks\" is drawn again";
}

TEST(ScenePerforme, TheRewindNeverReachesTheOpening) {
  // On only in the first 26.5 s; the rewind stops at 27.8 s of picture time.
  const ScheduleRow& row = productionSchedule[0];
  EXPECT_EQ(row.sceneIndex, 0);
  EXPECT_EQ(row.startTime, 0);
  EXPECT_EQ(row.endTime, 26500);
  EXPECT_LT(row.endTime, 27800);
  for (const ScheduleRow& r : productionSchedule) {
    if (r.sceneIndex == 0) {
      EXPECT_LE(r.endTime, 27800);
    }
  }
}

TEST(ScenePerforme, FrameLeavesNoGLErrorButTheRejectedLightModel) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  testgl::drainErrors();
  s.sceneTimeMs = 15960;
  s.render(16000, 40);  // with a title, so the overlay runs too
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
}
