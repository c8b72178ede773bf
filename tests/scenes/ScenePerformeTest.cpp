// The opening scene: what its constructor builds from which random draws,
// what moves per frame, and the maker titles.
#include <gtest/gtest.h>

#include <cmath>

#include "SceneTestDemo.h"
#include "core/OstravineDemo.h"
#include "foundation/Camera.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "scenes/ScenePerforme.h"

namespace {

ScenePerforme& scene() {
  static ScenePerforme* s = new ScenePerforme(&scenetest::demo(), "performe");
  return *s;
}

// Object indices: the plate, the ring of boxes, the bones, the light.
constexpr int plateObject = 0;
constexpr int firstBox = 1;
constexpr int firstBone = 101;
constexpr int lightIndex = 357;

uint32_t stateAfterConstruction = 0;

ScenePerforme& freshScene() {
  ScenePerforme& s = scene();
  static bool first = true;
  if (first) {
    stateAfterConstruction = crtRandState();
    first = false;
  }
  return s;
}

}  // namespace

TEST(ScenePerforme, ConstructionEndsAfterTheMotesDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  crtSrand(99);  // whatever came before, the scene seeds its own groups
  freshScene();
  // Last seed 23233, then five draws for each of the 400 motes.
  EXPECT_EQ(stateAfterConstruction, scenetest::stateAfter(23233, 2000));
  EXPECT_NE(stateAfterConstruction, scenetest::stateAfter(23233, 1999));
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
  TextureStore& t = *scenetest::demo().textures;
  const Mesh& plate = *s.world.objects[plateObject];
  EXPECT_GT(plate.faceCount, 0);
  EXPECT_EQ(plate.scale, Vector3(24, 24, 3));
  EXPECT_EQ(plate.position, Vector3(0, 0, 3));
  const Material& p = plate.materials[0];
  const Material& g = plate.materials[1];
  EXPECT_FLOAT_EQ(p.ambient.x, 0.6f * 0.75f);
  EXPECT_FLOAT_EQ(p.ambient.z, 1.142f * 0.75f);
  EXPECT_EQ(p.ambient.alpha, 0.0f);
  EXPECT_FLOAT_EQ(p.diffuse.y, 0.74f * 5.1f);
  EXPECT_EQ(p.stageCount, 3u);
  EXPECT_EQ(p.stageMode[0], 1);
  EXPECT_EQ(p.stageTexture[0], t.findTextureId("hopmet"));
  EXPECT_EQ(p.stageTexture[1], t.findTextureId("billbig"));
  EXPECT_TRUE(p.stageDetail[1]);
  EXPECT_EQ(p.stageMode[2], 2);
  EXPECT_EQ(p.stageTexture[2], t.findTextureId("cubemap.bill"));
  EXPECT_TRUE(p.stageCubeMap[2]);
  EXPECT_FLOAT_EQ(g.ambient.x, 0.05f);
  EXPECT_EQ(g.ambient.alpha, 1.0f);
  EXPECT_FLOAT_EQ(g.diffuse.x, 1.55f * 1.5f);
  EXPECT_EQ(g.stageTexture[0], t.findTextureId("solidnoisebump"));
  EXPECT_EQ(g.stageMode[2], 1) << "the second assignment stands";
  EXPECT_TRUE(g.stageCubeMap[2]);
  EXPECT_NE(p.stageTexture[0], noTexture);
}

TEST(ScenePerforme, RingOfBoxesContinuesTheLastNoiseSeed) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  // NoiseField(5, 5234) draws 3 x 32 numbers; the ring goes on from there.
  crtSrand(5234);
  for (int k = 0; k < 96; ++k) crtRand();
  for (int i = 0; i < 100; ++i) {
    const double r1 = crtRand() / 32767.0;
    const double r2 = crtRand() / 32767.0;
    const double a = (crtRand() / 32767.0 - 0.5) * 2;
    const double b = (crtRand() / 32767.0 - 0.5) * 2;
    const double r3 = crtRand() / 32767.0;
    const Mesh& box = *s.world.objects[firstBox + i];
    EXPECT_NEAR(box.position.x, std::sin(i) * (r2 * 20 + 35), 1e-4) << i;
    EXPECT_NEAR(box.position.y, std::cos(i) * (r1 * 20 + 35), 1e-4) << i;
    EXPECT_EQ(box.position.z, 9.0f);
    EXPECT_EQ(box.rotation.x, 0.0f);
    EXPECT_NEAR(box.rotation.y, b * 50, 1e-4) << i;
    EXPECT_NEAR(box.rotation.z, a * 20, 1e-4) << i;
    EXPECT_NEAR(box.scale.z, r3 * 10 + 15, 1e-4) << i;
    EXPECT_EQ(box.scale.x, 5.0f);
    EXPECT_TRUE(box.useMatrix);
    EXPECT_EQ(box.materials[1].stageTexture[0], scenetest::demo().textures->findTextureId("solidnoisebump"));
  }
  EXPECT_TRUE(s.world.objects[firstBox]->batchFirst);
  EXPECT_FALSE(s.world.objects[firstBox + 50]->setupState);
  EXPECT_FALSE(s.world.objects[firstBox + 50]->restoreState);
  EXPECT_TRUE(s.world.objects[firstBox + 99]->batchLast);
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
  crtSrand(234);
  for (int k = 0; k < 256 * 3; ++k) crtRand();
  for (int i = 0; i < 3; ++i) {
    const int first = crtRand();
    crtRand();
    const int third = crtRand();
    const int f = crtRand();
    const Billboard& b = *s.world.billboards[i];
    EXPECT_EQ(b.texture, scenetest::demo().textures->findTextureId("billbig"));
    EXPECT_EQ(b.halfSize, Vector3(8, 4, 5));
    EXPECT_EQ(b.alpha, 0.7f);
    EXPECT_EQ(b.blendMode, 0);
    EXPECT_NEAR(b.colour.x, (f * 0.1 + 0.9) * 0.265, 1e-2) << "the raw draw, unscaled";
    EXPECT_NEAR(b.colour.y, (f * 0.06 + 0.63) * 0.265, 1e-2);
    EXPECT_NEAR(b.colour.z, (f * 0.03 + 0.4) * 0.265, 1e-2);
    if (s.sceneTimeMs == 0 && b.time == 0) {  // not yet moved by a frame
      EXPECT_NEAR(b.position.x, first / 32767.0 * 5 + 10, 1e-4);
      EXPECT_NEAR(b.position.z, 2 * (third / 32767.0 - 0.5) * 30, 1e-4);
    }
  }
}

TEST(ScenePerforme, MotesFromSeed23233) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  crtSrand(23233);
  TextureStore& t = *scenetest::demo().textures;
  for (int m = 0; m < 400; ++m) {
    const double size = randomSigned() * 0.025 + 0.15;
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    const double spacing = randomUnit() * 0.1;
    const Billboard& mote = *s.world.billboards[3 + m];
    const int j = 3 + m;
    EXPECT_EQ(mote.texture, t.findTextureId(j % 2 == 0 ? "mustis2" : "mustis5")) << m;
    EXPECT_NEAR(mote.halfSize.x, size, 1e-6);
    EXPECT_NEAR(mote.halfSize.y, size, 1e-6);
    EXPECT_EQ(mote.halfSize.z, 1.0f);
    EXPECT_NEAR(mote.position.x, c * 29, 1e-4) << m;
    EXPECT_NEAR(mote.position.y, b * 29, 1e-4) << m;
    EXPECT_NEAR(mote.position.z, a * 3 - 5, 1e-4) << m;
    EXPECT_NEAR(mote.tileSpacing, spacing, 1e-6);
    EXPECT_EQ(mote.alpha, 0.75f);
    EXPECT_EQ(mote.colour, Vector3(0, 0, 0));
    EXPECT_EQ(mote.blendMode, 1);
    EXPECT_TRUE(mote.castsShadow);
    EXPECT_TRUE(mote.tiled);
  }
  EXPECT_NE(t.findTextureId("mustis2"), t.findTextureId("mustis5"));
}

TEST(ScenePerforme, TheLight) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  const Light& l = *s.world.objects[lightIndex]->lightRecord;
  EXPECT_TRUE(l.enabled);
  EXPECT_EQ(l.ambient[0], 0.5f);
  EXPECT_EQ(l.diffuse[1], 2.0f);
  EXPECT_EQ(l.specular[2], 0.0f);
  EXPECT_EQ(l.spotExponent, 100.0f);
  EXPECT_EQ(l.spotCutoff, 90.0f);
  EXPECT_EQ(l.constantAttenuation, 0.0f);
  EXPECT_FLOAT_EQ(l.linearAttenuation, 0.01f);
  EXPECT_TRUE(l.castsShadow);
  EXPECT_NE(l.shadowTexture, 0u);
}

TEST(ScenePerforme, PerFrameLightBonesFlaresAndMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ScenePerforme& s = freshScene();
  std::vector<Vector3> motesBefore;
  for (int m = 0; m < 400; ++m) motesBefore.push_back(s.world.billboards[3 + m]->position);

  const float sec = 3.0f, d = 7.5f;
  s.animate(sec, d, 40);

  const Mesh& light = *s.world.objects[lightIndex];
  EXPECT_NEAR(light.position.x, 12.5 * std::cos(1.5), 1e-4);
  EXPECT_NEAR(light.position.y, 10.5 * std::sin(0.75), 1e-4);
  EXPECT_EQ(light.position.z, -9.0f);
  const Vector3 dir = light.lightRecord->direction;
  const Vector3 expected = -light.position / std::sqrt(light.position.x * light.position.x +
                                                        light.position.y * light.position.y + 81.0f);
  EXPECT_NEAR(dir.x, expected.x, 1e-5);
  EXPECT_NEAR(dir.y, expected.y, 1e-5);
  EXPECT_NEAR(dir.z, expected.z, 1e-5);

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
  for (int i = 0; i < 3; ++i) {
    const float q = d * 0.2f;
    const Vector3 off(std::sin(i * 0.14123f + q) * 0.16f, std::cos(d * 0.314f + i * 0.1823f) * 0.17999999f,
                      std::cos(std::sin(i * 0.74342f + q)) * 0.03f);
    const Vector3 at = s.world.billboards[i]->position;
    EXPECT_NEAR(at.x, light.position.x + off.x, 1e-5);
    EXPECT_NEAR(at.y, light.position.y + off.y, 1e-5);
    EXPECT_NEAR(at.z, light.position.z + off.z, 1e-5);
  }
  for (int m : {0, 199, 399}) {
    const Billboard& mote = *s.world.billboards[3 + m];
    const Vector3 p = motesBefore[m] * 0.1f;
    const Vector3 w = Vector3(a.fractalSum(p, 5), b.fractalSum(p, 5), c.fractalSum(p, 5)) * 0.04f;
    EXPECT_NEAR(mote.position.x, motesBefore[m].x + w.x, 1e-5);
    EXPECT_NEAR(mote.position.y, motesBefore[m].y + w.y, 1e-5);
    EXPECT_NEAR(mote.position.z, motesBefore[m].z + w.z, 1e-5);
    EXPECT_FLOAT_EQ(mote.timeStep, 0.04f);
    EXPECT_FLOAT_EQ(mote.time, sec);
  }

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
