#include <gtest/gtest.h>

#include <GL/glew.h>

#include <unistd.h>

#include <cmath>

#include "core/LoadingScene.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"

// The one frame of the production's loading screen, at 800 x 600.
TEST(LoadingScene, TheLoadingFrame) {
  REQUIRE_GL(800, 600);
  LoadingScene scene(nullptr, "Loading");
  ASSERT_NE(scene.font, nullptr) << "./images/font2.png must be in the run directory";
  EXPECT_EQ(scene.name, "Loading");
  scene.render(0, 0);
  EXPECT_FLOAT_EQ(loadingPhase, 0.15f);
  glFinish();
  testimg::Image image{800, 600, testgl::readPixels(0, 0, 800, 600)};
  const std::string path = std::string(OSTRAVINE_BINARY_DIR) + "/loading_frame.png";
  ASSERT_TRUE(testimg::writePng(path, image));
  testimg::Comparison c = testimg::compareToReference(path, "core_loading_frame_800x600.png");
  EXPECT_TRUE(c.passed) << c.message;
  // Something is drawn, and it is grey-white text on black.
  int lit = 0;
  for (size_t i = 0; i < image.rgba.size(); i += 4) lit += image.rgba[i] > 64;
  EXPECT_GT(lit, 2000);
}

// The swing follows calls, not time: the same time twice still moves it.
TEST(LoadingScene, EveryCallAdvancesThePhase) {
  REQUIRE_GL(320, 240);
  LoadingScene scene(nullptr, "Loading");
  scene.render(500, 40);
  scene.render(500, 40);
  EXPECT_FLOAT_EQ(loadingPhase, 0.30f);
}

// The projection is 45 degrees at the constant aspect 1.333, whatever the
// display, and model-view stays the current matrix mode.
TEST(LoadingScene, ConstantAspectAndModelViewCurrent) {
  REQUIRE_GL(400, 100);
  LoadingScene scene(nullptr, "Loading");
  scene.render(0, 0);
  float projection[16];
  glGetFloatv(GL_PROJECTION_MATRIX, projection);
  const float f = 1.0f / std::tan(22.5f * 3.14159265f / 180.0f);
  EXPECT_NEAR(projection[0], f / 1.333f, 1e-4);
  EXPECT_NEAR(projection[5], f, 1e-4);
  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(mode, GL_MODELVIEW);
}

// At time 0 the hook's value is 0: the wave stands at its start.
TEST(LoadingScene, GlyphHookAtTimeZero) {
  REQUIRE_GL(64, 64);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  loadingGlyphHook(0, 0, 0);
  float colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  const float w = std::sin(std::cos(0.0f) * 6.283184f);
  EXPECT_NEAR(colour[0], 0.75f - w * 0.25f, 1e-5);
  float m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_NEAR(m[14], w, 1e-5);
}

TEST(LoadingScene, MissingFontImageDrawsNothingAndDoesNotCrash) {
  REQUIRE_GL(64, 64);
  char dir[] = "/tmp/ostravine-loading-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  char previous[4096];
  ASSERT_NE(getcwd(previous, sizeof previous), nullptr);
  ASSERT_EQ(chdir(dir), 0);
  {
    LoadingScene scene(nullptr, "Loading");
    EXPECT_EQ(scene.font, nullptr);
    scene.render(0, 0);
  }
  ASSERT_EQ(chdir(previous), 0);
  rmdir(dir);
}
