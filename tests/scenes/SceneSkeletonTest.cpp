// The common scene frame: Parameters, camera sharing, the scene clock, the
// spare record, batch flags and one full frame through every pass.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "SceneTestDemo.h"
#include "foundation/Camera.h"
#include "foundation/Timer.h"
#include "geometry/Mesh.h"
#include "scenes/SceneSkeleton.h"

namespace {

// A small scene on the skeleton: one glowing box and the standard light.
class SkeletonScene : public SceneSkeleton {
 public:
  SkeletonScene(Demo* demo, const std::string& name, const std::string& cameraName, float fieldOfView,
                float glowAmountAtRegistration)
      : SceneSkeleton(demo, name) {
    setUpCamera(cameraName, fieldOfView, Vector3(0, 0, -10), Vector3(0, 0, 0));
    Material picture;
    picture.diffuse.set(0.8f, 0.8f, 0.8f);
    Material glow;
    glow.ambient.set(1, 1, 1);
    glow.diffuse.set(1, 1, 1);
    for (int i = 0; i < 3; ++i) {
      const int index = world.addBox(3, 3, picture, false, true);
      setGlowMaterial(index, glow);
      markBatch(index, i, 3);
      world.objects[index]->position = Vector3(static_cast<float>(i - 1) * 3.0f, 0, 0);
    }
    lightObject = addStandardLight();
    setUsualGlowDefaults();
    glowBlurAmount = glowAmountAtRegistration;
    registerGlowParameters();
  }
  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override {
    lastSceneSeconds = sceneSeconds;
    lastDemoSeconds = demoSeconds;
    lastStep = stepMs;
    placeLightAimedAtOrigin(lightObject, Vector3(2, 3, -8));
  }
  void drawOverlay(float, float, int32_t) override { ++overlays; }

  int32_t lightObject = -1;
  float lastSceneSeconds = -1, lastDemoSeconds = -1;
  int32_t lastStep = 0;
  int overlays = 0;
};

SkeletonScene& sharedScene() {
  static SkeletonScene* scene =
      new SkeletonScene(&scenetest::demo(), "skeleton", "SkeletonScene.camera0", 60.0f, 0.45f);
  return *scene;
}

bool isAllowedError(unsigned e) {
  // The light-model values given to glLightf/glLightfv are rejected by GL on
  // every light set-up; that is the one error a frame is allowed to leave.
  return e == GL_INVALID_ENUM;
}

}  // namespace

TEST(SceneSkeleton, RegistersTheFifteenParametersInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  const char* names[15] = {"cameraZoom",        "cameraFOV",       "cameraRoll",          "cameraPitch",
                           "cameraYaw",         "cameraLookAtRoll", "cameraLookAtPitch",   "cameraLookAtYaw",
                           "glowFadeOut",       "glowBlurAmount",   "glowBlurMode",        "glowBlurZoom",
                           "glowBlurZoomPowBase", "glowBlurZoomPow", "glowBlurAlpha"};
  const float steps[15] = {0.0025f, 0.25f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f,
                           0.001f,  0.01f, 1.0f, 0.005f, 0.005f, 0.005f, 0.005f};
  const float defaults[15] = {0, 60, 0, 0, 0, 0, 0, 0, 0, 0.45f, 0, 0, 1.5f, 1, 1};
  float* targets[15] = {&scene.camera->zoom,        &scene.camera->fieldOfView, &scene.camera->roll,
                        &scene.camera->pitch,       &scene.camera->yaw,         &scene.camera->lookAtRoll,
                        &scene.camera->lookAtPitch, &scene.camera->lookAtYaw,   &scene.glowFadeOut,
                        &scene.glowBlurAmount,      &scene.glowBlurMode,        &scene.glowBlurZoom,
                        &scene.glowBlurZoomPowBase, &scene.glowBlurZoomPow,     &scene.glowBlurAlpha};
  ASSERT_EQ(scene.parameters.size(), 15u);
  int i = 0;
  for (const Parameter& p : scene.parameters) {
    EXPECT_EQ(p.name, names[i]);
    EXPECT_FLOAT_EQ(p.step, steps[i]) << names[i];
    EXPECT_FLOAT_EQ(p.defaultValue, defaults[i]) << names[i];
    EXPECT_EQ(p.value, targets[i]) << names[i];
    EXPECT_EQ(p.rangeLow, 0.0f);
    EXPECT_EQ(p.rangeHigh, 0.0f);
    ++i;
  }
}

TEST(SceneSkeleton, DefaultValueIsTheValueAtRegistration) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene scene(&scenetest::demo(), "registration", "SkeletonRegistration.camera0", 60.0f, 0.3f);
  scene.glowBlurAmount = 0.9f;  // a later assignment
  Parameter* p = scene.parameterByName("glowBlurAmount");
  ASSERT_NE(p, nullptr);
  EXPECT_FLOAT_EQ(p->defaultValue, 0.3f);
  EXPECT_FLOAT_EQ(*p->value, 0.9f);
  scene.camera->zoom = 0.7f;
  EXPECT_FLOAT_EQ(scene.parameterByName("cameraZoom")->defaultValue, 0.0f);
  EXPECT_FLOAT_EQ(*scene.parameterByName("cameraZoom")->value, 0.7f);
}

TEST(SceneSkeleton, SetsUpTheCameraSpareRecordAndAttenuation) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  ASSERT_NE(scene.camera, nullptr);
  EXPECT_EQ(scene.camera->name, "SkeletonScene.camera0");
  EXPECT_FLOAT_EQ(scene.camera->fieldOfView, 60.0f);
  EXPECT_FLOAT_EQ(scene.camera->nearClip, 0.1f);
  EXPECT_FLOAT_EQ(scene.camera->farClip, 1000.0f);
  EXPECT_EQ(scene.camera->position, Vector3(0, 0, -10));
  EXPECT_EQ(scene.camera->direction, Vector3(0, 0, 10)) << "target minus position";
  EXPECT_EQ(scene.world.baseLightAttenuation, 6.0f);
  ASSERT_NE(scene.spareTransform, nullptr);
  for (float f : scene.spareTransform->ones) EXPECT_EQ(f, 1.0f);
  for (float f : scene.spareTransform->zeros) EXPECT_EQ(f, 0.0f);
  EXPECT_EQ(scene.spareTransform->flags[0], 0);
  EXPECT_EQ(scene.spareTransform->flags[1], 1);
  EXPECT_EQ(scene.blendMode, 0);
  EXPECT_EQ(scene.sceneTimeMs, 0);
}

TEST(SceneSkeleton, SecondSceneWithTheSameCameraNameSharesTheFirstCamera) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& first = sharedScene();
  SkeletonScene second(&scenetest::demo(), "second", "SkeletonScene.camera0", 30.0f, 0.45f);
  EXPECT_EQ(second.camera, first.camera);
  EXPECT_FLOAT_EQ(second.camera->fieldOfView, 60.0f) << "the first request made the camera";
  EXPECT_EQ(second.parameterByName("cameraFOV")->value, first.parameterByName("cameraFOV")->value);
}

TEST(SceneSkeleton, GlowMaterialGoesToSlotOneAndBatchFlagsAreSet) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  const Mesh& a = *scene.world.objects[0];
  const Mesh& b = *scene.world.objects[1];
  const Mesh& c = *scene.world.objects[2];
  EXPECT_FLOAT_EQ(a.materials[0].diffuse.x, 0.8f);
  EXPECT_FLOAT_EQ(a.materials[1].diffuse.x, 1.0f);
  EXPECT_EQ(a.currentMaterial, 0);
  EXPECT_TRUE(a.batchFirst);
  EXPECT_TRUE(a.setupState);
  EXPECT_FALSE(a.restoreState);
  EXPECT_FALSE(a.batchLast);
  EXPECT_FALSE(b.setupState);
  EXPECT_FALSE(b.restoreState);
  EXPECT_FALSE(b.batchFirst);
  EXPECT_FALSE(b.batchLast);
  EXPECT_FALSE(c.setupState);
  EXPECT_TRUE(c.restoreState);
  EXPECT_TRUE(c.batchLast);
  EXPECT_FALSE(c.batchFirst);
}

TEST(SceneSkeleton, ABatchOfOneKeepsItsOwnSetUpAndRestore) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  const int index = scene.world.addBox(3, 3, Material(), false, true);
  scene.markBatch(index, 0, 1);
  const Mesh& m = *scene.world.objects[index];
  EXPECT_TRUE(m.setupState);
  EXPECT_TRUE(m.restoreState);
  EXPECT_FALSE(m.batchFirst);
  EXPECT_FALSE(m.batchLast);
  scene.markBatch(-1, 0, 3);  // a failed load leaves a negative index: ignored
}

TEST(SceneSkeleton, RingShapeAndDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  RingShape ellipse;
  ellipse.xSpread = 10;
  ellipse.xRadius = 20;
  ellipse.ySpread = 10;
  ellipse.yRadius = 20;
  ellipse.depthSpread = 15;
  ellipse.depthBase = 20;
  Material glow;
  glow.diffuse.set(0.25f, 0.5f, 0.75f);
  crtSrand(777);
  const int first = scene.addBoxRing(Material(), glow, ellipse);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(777, 500));
  crtSrand(777);
  for (int i = 0; i < 100; ++i) {
    const double r1 = randomUnit(), r2 = randomUnit(), s1 = randomSigned(), s2 = randomSigned(), r3 = randomUnit();
    const Mesh& box = *scene.world.objects[first + i];
    EXPECT_NEAR(box.position.x, std::sin(i) * (r2 * 10 + 20), 1e-4);
    EXPECT_NEAR(box.position.y, std::cos(i) * (r1 * 10 + 20), 1e-4);
    EXPECT_EQ(box.position.z, 9.0f);
    EXPECT_NEAR(box.rotation.y, s2 * 50, 1e-4);
    EXPECT_NEAR(box.rotation.z, s1 * 20, 1e-4);
    EXPECT_NEAR(box.scale.z, r3 * 15 + 20, 1e-4);
    EXPECT_EQ(box.scale.y, 5.0f);
    EXPECT_FLOAT_EQ(box.materials[1].diffuse.y, 0.5f);
    EXPECT_EQ(box.faceCount, scene.world.objects[first]->faceCount);
  }
  EXPECT_TRUE(scene.world.objects[first]->batchFirst);
  EXPECT_TRUE(scene.world.objects[first + 99]->batchLast);
  // Leave the shared scene as it was for the frame tests.
  for (int i = 0; i < 100; ++i) scene.world.objects[first + i]->visible = false;
}

TEST(SceneSkeleton, ClockAddsTheStepAndPassesSecondsToTheHooks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  scene.sceneTimeMs = 0;
  scene.render(5250, 40);
  EXPECT_EQ(scene.sceneTimeMs, 40);
  EXPECT_FLOAT_EQ(scene.lastSceneSeconds, 0.04f);
  EXPECT_FLOAT_EQ(scene.lastDemoSeconds, 5.25f);
  EXPECT_EQ(scene.lastStep, 40);
  EXPECT_EQ(scene.overlays, 1);
  EXPECT_EQ(scenetest::demo().renderTargets->lowResolution, 0);
}

TEST(SceneSkeleton, PausedOrOffTheScheduleTheClockStandsStill) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  scene.sceneTimeMs = 1234;
  scene.render(9000, 0);  // a paused frame has no step
  EXPECT_EQ(scene.sceneTimeMs, 1234);
  // Off the schedule the timeline does not call the scene at all.
  scenetest::demo().schedules.clear();
  scenetest::demo().schedule(scenetest::demo().addScene(new SkeletonScene(
                                 &scenetest::demo(), "scheduled", "SkeletonScheduled.camera0", 60, 0.45f)),
                             1000, 2000);
  std::vector<Scene*> on = scenetest::demo().activeScheduled(2500);
  EXPECT_TRUE(on.empty());
  EXPECT_EQ(scene.sceneTimeMs, 1234);
  scenetest::demo().schedules.clear();
}

TEST(SceneSkeleton, TheTimelineAdvancesTheClockOnlyWhileTheSceneIsOnAndPlaying) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::SceneTestDemo& demo = scenetest::demo();
  SkeletonScene* scene = new SkeletonScene(&demo, "timeline", "SkeletonTimeline.camera0", 60, 0.45f);
  demo.schedules.clear();
  demo.schedule(demo.addScene(scene), 1000, 2000);
  setFixedTicks(10000);
  demo.start();  // no music: the play timer is the position
  setFixedTicks(10500);
  demo.frame();  // 500 ms: before the scene's window
  EXPECT_EQ(scene->sceneTimeMs, 0);
  setFixedTicks(11200);
  demo.frame();  // 1200 ms: on, first frame with a step of 700
  EXPECT_EQ(scene->sceneTimeMs, 700);
  setFixedTicks(11300);
  demo.frame();
  EXPECT_EQ(scene->sceneTimeMs, 800);
  demo.pause();
  setFixedTicks(11900);
  demo.frame();  // paused: nothing is rendered
  EXPECT_EQ(scene->sceneTimeMs, 800);
  demo.resume();  // the position goes on from 1300 ms
  setFixedTicks(12400);
  demo.frame();  // 1800 ms
  EXPECT_EQ(scene->sceneTimeMs, 1300);
  setFixedTicks(13200);
  demo.frame();  // 2600 ms: off the schedule again
  EXPECT_EQ(scene->sceneTimeMs, 1300);
  demo.schedules.clear();
  demo.pause();
}

TEST(SceneSkeleton, RewindStepRunsTheClockBackAndBelowZero) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  scene.sceneTimeMs = 1000;
  scene.render(30000, -700);
  EXPECT_EQ(scene.sceneTimeMs, 300);
  scene.render(29300, -700);
  EXPECT_EQ(scene.sceneTimeMs, -400);
  EXPECT_FLOAT_EQ(scene.lastSceneSeconds, -0.4f);
  EXPECT_EQ(scene.lastStep, -700);
}

TEST(SceneSkeleton, FrameLeavesNoGLErrorButTheRejectedLightModel) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  testgl::drainErrors();
  scene.render(1000, 40);
  for (unsigned e : testgl::drainErrors()) EXPECT_TRUE(isAllowedError(e)) << "GL error 0x" << std::hex << e;
}

TEST(SceneSkeleton, GlowOverThePictureBrightensIt) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SkeletonScene& scene = sharedScene();
  auto brightness = [&]() {
    scene.render(1000, 0);
    const std::vector<uint8_t> pixels = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
    double sum = 0;
    for (size_t i = 0; i < pixels.size(); i += 4) sum += pixels[i] + pixels[i + 1] + pixels[i + 2];
    return sum;
  };
  scene.glowBlurAmount = 0.45f;
  scene.glowBlurAlpha = 0.0f;  // taps of alpha (1 - amount) * 1.015625 / 4
  scene.glowBlurMode = 0;      // source and destination squared
  const double squared = brightness();
  scene.glowBlurMode = 1;      // plain additive
  const double additive = brightness();
  scene.glowBlurMode = 0;
  scene.glowBlurAlpha = 1.0f;
  EXPECT_GT(squared, 0.0);
  EXPECT_GT(additive, squared) << "the squared mode lowers mid-tones";
}
