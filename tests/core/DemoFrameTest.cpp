// The Demo's frame composition on a real display: scenes render into slots
// of the pool, are laid over black and presented in the letterbox band.
#include <gtest/gtest.h>

#include <GL/glew.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "core/Demo.h"
#include "render/RenderTarget.h"
#include "scenes/Scene.h"
#include "support/GLTestContext.h"

namespace {

class WindowDemo : public Demo {
 public:
  WindowDemo(int32_t w, int32_t h, bool exact = true)
      : Demo("test", w, h, w, h, exact, 32, false, false, false) {}
  int32_t init() override {
    renderTargets = new RenderTarget(targetWidth, targetHeight, targetLowWidth, targetLowHeight, effectiveWidth,
                                     effectiveHeight, effectiveLowWidth, effectiveLowHeight, 10);
    return 0;
  }
};

// Fills the viewport with one colour and records what it was given.
class ColourScene : public Scene {
 public:
  ColourScene(const std::string& name, float r, float g, float b) : Scene(name), r(r), g(g), b(b) {}
  void render(int32_t t, int32_t step) override {
    ++calls;
    lastTime = t;
    steps.push_back(step);
    glClearColor(r, g, b, 1);
    glClear(GL_COLOR_BUFFER_BIT);
  }
  float r, g, b;
  int calls = 0;
  int32_t lastTime = 0;
  std::vector<int32_t> steps;
};

// A 320 x 240 windowed Demo with its pool, one scene scheduled from 0 to
// endTime as index 0, started at tick 1000 of the fixed clock.
std::unique_ptr<WindowDemo> startedDemo(Scene* scene, int32_t endTime, bool startNow = true) {
  std::unique_ptr<WindowDemo> d(new WindowDemo(320, 240));
  d->init();
  d->addScene(scene);
  d->schedule(0, 0, endTime);
  setFixedTicks(1000);
  if (startNow) d->start();
  return d;
}

std::vector<uint8_t> readWindow(int32_t w, int32_t h) {
  std::vector<uint8_t> p(size_t(w) * h * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, p.data());
  return p;
}

const uint8_t* at(const std::vector<uint8_t>& p, int32_t w, int32_t x, int32_t y) { return &p[(size_t(y) * w + x) * 4]; }

#define REQUIRE_DISPLAY()                                   \
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display"; \
  ASSERT_TRUE(testgl::waitForDisplay())

}  // namespace

TEST(DemoDisplay, InexactPixelsShrinkTheAreaAndNeedAPresentCopy) {
  REQUIRE_DISPLAY();
  WindowDemo d(640, 480, false);
  EXPECT_EQ(d.areaWidth, 512);
  EXPECT_EQ(d.areaHeight, 256);
  EXPECT_EQ(d.targetWidth, 512);
  EXPECT_EQ(d.targetHeight, 256);
  EXPECT_EQ(d.effectiveLowWidth, 256);
  EXPECT_TRUE(d.needsPresentCopy);
}

TEST(DemoDisplay, ExactPixelsKeepTheAreaAndNeedNoCopy) {
  REQUIRE_DISPLAY();
  WindowDemo d(320, 240);
  EXPECT_EQ(d.effectiveWidth, 320);
  EXPECT_EQ(d.targetWidth, 512);
  EXPECT_EQ(d.targetHeight, 256);
  EXPECT_EQ(d.targetLowWidth, 256);
  EXPECT_FALSE(d.needsPresentCopy);
  ASSERT_NE(d.textures, nullptr);
  EXPECT_NE(d.font, nullptr) << "the output font comes from ./images/fonge3bb.png";
  EXPECT_EQ(d.currentFont(), d.font);
}

TEST(DemoFrame, SceneIsLetterboxedIntoTheBand) {
  REQUIRE_DISPLAY();
  ColourScene* red = new ColourScene("red", 1, 0, 0);
  std::unique_ptr<WindowDemo> demo = startedDemo(red, 100000);
  WindowDemo& d = *demo;
  setFixedTicks(1500);
  d.frame();
  EXPECT_EQ(red->calls, 1);
  EXPECT_EQ(red->lastTime, 500);
  std::vector<uint8_t> p = readWindow(320, 240);
  // Band of 3/4 of the height from y = 30 to 210; black bars above and below.
  EXPECT_EQ(at(p, 320, 160, 120)[0], 255);
  EXPECT_EQ(at(p, 320, 160, 35)[0], 255);
  EXPECT_EQ(at(p, 320, 160, 10)[0], 0);
  EXPECT_EQ(at(p, 320, 160, 230)[0], 0);
}

TEST(DemoFrame, BeyondEveryEntryTheScreenIsBlack) {
  REQUIRE_DISPLAY();
  ColourScene* red = new ColourScene("red", 1, 0, 0);
  std::unique_ptr<WindowDemo> demo = startedDemo(red, 1000);
  WindowDemo& d = *demo;
  setFixedTicks(1500);
  d.frame();
  setFixedTicks(3000);
  EXPECT_EQ(d.frame(), 1);
  EXPECT_EQ(red->calls, 1);
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_EQ(at(p, 320, 160, 120)[0], 0);
}

TEST(DemoFrame, PausedFrameRendersNothingButStillPresents) {
  REQUIRE_DISPLAY();
  ColourScene* green = new ColourScene("green", 0, 1, 0);
  std::unique_ptr<WindowDemo> demo = startedDemo(green, 100000);
  WindowDemo& d = *demo;
  setFixedTicks(1100);
  d.frame();
  ASSERT_EQ(green->calls, 1);
  d.pause();
  glClearColor(0, 0, 1, 1);
  glClear(GL_COLOR_BUFFER_BIT);  // spoil the back buffer: the present must redraw the last picture
  setFixedTicks(1200);
  d.frame();
  EXPECT_EQ(green->calls, 1);
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_EQ(at(p, 320, 160, 120)[1], 255);
  EXPECT_EQ(at(p, 320, 160, 120)[2], 0);
  EXPECT_EQ(at(p, 320, 160, 10)[2], 0);  // the bars come from the clear
}

TEST(DemoFrame, NegativeStepReachesTheScene) {
  REQUIRE_DISPLAY();
  ColourScene* s = new ColourScene("s", 1, 1, 1);
  std::unique_ptr<WindowDemo> demo = startedDemo(s, 1000000);
  WindowDemo& d = *demo;
  setFixedTicks(2000);
  d.frame();
  d.timeOffset = -700;
  setFixedTicks(2000);
  d.frame();
  ASSERT_EQ(s->steps.size(), 2u);
  EXPECT_EQ(s->steps[0], 1000);
  EXPECT_EQ(s->steps[1], -700);
  EXPECT_EQ(d.timeStep, -700);
  EXPECT_EQ(s->lastTime, 300);
}

TEST(DemoFrame, UnknownEffectTakesASlotAndDrawsNothing) {
  REQUIRE_DISPLAY();
  ColourScene* s = new ColourScene("s", 1, 1, 1);
  std::unique_ptr<WindowDemo> demo = startedDemo(s, 100000, false);
  WindowDemo& d = *demo;
  int32_t v = d.addEffect("sparkle", 0, -1, 0, 100000, {}, 0);
  d.schedule(v, 0, 100000);
  d.start();
  setFixedTicks(1500);
  d.frame();
  // The effect's slot is the one behind the scene's: black with alpha 0.
  std::vector<uint8_t> slot(size_t(d.targetWidth) * d.targetHeight * 4, 99);
  glBindTexture(GL_TEXTURE_2D, d.renderTargets->textureHigh[1]);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, slot.data());
  EXPECT_EQ(slot[(size_t(100) * d.targetWidth + 100) * 4 + 0], 0);
  EXPECT_EQ(slot[(size_t(100) * d.targetWidth + 100) * 4 + 3], 0);
  // The consumed scene is not laid on the screen itself, and the effect's
  // picture is empty: the band stays black.
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_EQ(at(p, 320, 160, 120)[0], 0);
  EXPECT_EQ(s->calls, 1);
}

namespace {

// Fills slot 0's full-size texture with a marker colour and reads its
// lower-left texel back later.
void markLayerSlot(WindowDemo& d) {
  std::vector<uint8_t> marker(size_t(d.targetWidth) * d.targetHeight * 4, 77);
  d.renderTargets->prepareStorage(d.renderTargets->textureHigh[0]);  // storage comes on first use otherwise
  glBindTexture(GL_TEXTURE_2D, d.renderTargets->textureHigh[0]);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, d.targetWidth, d.targetHeight, GL_RGBA, GL_UNSIGNED_BYTE, marker.data());
}

uint8_t layerSlotRed(WindowDemo& d) {
  std::vector<uint8_t> slot(size_t(d.targetWidth) * d.targetHeight * 4, 0);
  glBindTexture(GL_TEXTURE_2D, d.renderTargets->textureHigh[0]);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, slot.data());
  return slot[(size_t(100) * d.targetWidth + 100) * 4 + 0];
}

}  // namespace

TEST(DemoFrame, ALoneSceneGoesStraightToThePresentWithoutItsLayerCopy) {
  REQUIRE_DISPLAY();
  ColourScene* red = new ColourScene("red", 1, 0, 0);
  std::unique_ptr<WindowDemo> demo = startedDemo(red, 100000);
  WindowDemo& d = *demo;
  markLayerSlot(d);
  setFixedTicks(1500);
  d.frame();
  EXPECT_EQ(layerSlotRed(d), 77) << "the lone scene's layer slot was filled";
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_EQ(at(p, 320, 160, 120)[0], 255);
  EXPECT_EQ(at(p, 320, 160, 120)[3], 255);
  EXPECT_EQ(at(p, 320, 160, 10)[0], 0);
}

TEST(DemoFrame, TwoScenesAtOnceStillGoThroughTheirLayers) {
  REQUIRE_DISPLAY();
  ColourScene* red = new ColourScene("red", 1, 0, 0);
  std::unique_ptr<WindowDemo> demo = startedDemo(red, 100000);
  WindowDemo& d = *demo;
  d.addScene(new ColourScene("green", 0, 1, 0));
  d.schedule(1, 0, 100000);
  markLayerSlot(d);
  setFixedTicks(1500);
  d.frame();
  EXPECT_EQ(layerSlotRed(d), 255) << "slot 0 holds the first scene's layer";
  // The second scene, laid by its alpha of 1, covers the first.
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_EQ(at(p, 320, 160, 120)[0], 0);
  EXPECT_EQ(at(p, 320, 160, 120)[1], 255);
}

TEST(DemoFrame, ALoneSceneWithItsOwnBlendModeIsStillComposed) {
  REQUIRE_DISPLAY();
  ColourScene* grey = new ColourScene("grey", 0.5f, 0.5f, 0.5f);
  grey->blendMode = slotBlendSquares;  // src^2 + dst^2 over black: a darker grey
  std::unique_ptr<WindowDemo> demo = startedDemo(grey, 100000);
  WindowDemo& d = *demo;
  setFixedTicks(1500);
  d.frame();
  std::vector<uint8_t> p = readWindow(320, 240);
  EXPECT_NEAR(at(p, 320, 160, 120)[0], 64, 2);
}
