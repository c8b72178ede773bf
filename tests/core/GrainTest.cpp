#include <gtest/gtest.h>

#include <GL/glew.h>

#include <vector>

#include "core/Grain.h"
#include "foundation/Random.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"
#include "texture/TextureStore.h"

TEST(Grain, StartContentFollowsSeed123456) {
  std::vector<uint8_t> pixels(grainBytes, 7);
  fillInitialGrain(pixels.data());
  crtSrand(123456);
  for (int i = 0; i < grainSize * grainSize; ++i) {
    ASSERT_EQ(pixels[i * 4 + 0], 0);
    ASSERT_EQ(pixels[i * 4 + 2], 0);
    ASSERT_EQ(pixels[i * 4 + 3], uint8_t(int(randomUnit() * 0.5 * 255.0))) << i;
  }
}

TEST(Grain, FrameContentIsBlueSpeckleOfLowAlpha) {
  std::vector<uint8_t> pixels(grainBytes);
  fillFrameGrain(pixels.data(), 1000);
  int maxAlpha = 0, zero = 0;
  for (int i = 0; i < grainSize * grainSize; ++i) {
    ASSERT_EQ(pixels[i * 4 + 0], 8);
    ASSERT_EQ(pixels[i * 4 + 1], 16);
    ASSERT_EQ(pixels[i * 4 + 2], 255);
    maxAlpha = std::max(maxAlpha, int(pixels[i * 4 + 3]));
    zero += pixels[i * 4 + 3] == 0;
  }
  EXPECT_LE(maxAlpha, 31);
  EXPECT_GE(maxAlpha, 30);
  EXPECT_GT(zero, grainSize * grainSize / 20);  // squared randoms keep many texels clear
  // The seed is the position plus 123456, and one number is drawn per texel.
  crtSrand(1000 + 123456);
  for (int i = 0; i < 3; ++i) {
    const double r = randomUnit();
    EXPECT_EQ(pixels[i * 4 + 3], uint8_t(int(r * r * 0.125 * 255.0)));
  }
  crtSrand(1000 + 123456);
  for (int i = 0; i < grainSize * grainSize; ++i) crtRand();
  const uint32_t expectedState = crtRandState();
  fillFrameGrain(pixels.data(), 1000);
  EXPECT_EQ(crtRandState(), expectedState);
}

TEST(Grain, SamePositionSameBytesOtherPositionOtherBytes) {
  std::vector<uint8_t> a(grainBytes), b(grainBytes), c(grainBytes);
  fillFrameGrain(a.data(), 42000);
  fillFrameGrain(b.data(), 42000);
  fillFrameGrain(c.data(), 42001);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, c);
}

namespace {
// The grain drawn over a black frame, the way the frame loop does it.
std::vector<uint8_t> grainOverBlack(TextureStore& store, std::vector<uint8_t>& pixels, int32_t position) {
  fillFrameGrain(pixels.data(), position);
  store.updateTexture(pixels.data(), "dynamicNoise");
  glViewport(0, 0, testgl::width(), testgl::height());
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawGrainOverlay(store, testgl::width(), testgl::height());
  glFinish();
  return testgl::readPixels(0, 0, testgl::width(), testgl::height());
}
}  // namespace

TEST(GrainOverlay, OverBlackDiffersByPositionAndRepeatsExactly) {
  REQUIRE_GL(320, 240);
  TextureStore store;
  std::vector<uint8_t> pixels(grainBytes);
  fillInitialGrain(pixels.data());
  store.createTextureFromMemory(pixels.data(), "dynamicNoise", grainSize, grainSize, 4);
  std::vector<uint8_t> first = grainOverBlack(store, pixels, 1000);
  std::vector<uint8_t> again = grainOverBlack(store, pixels, 1000);
  std::vector<uint8_t> other = grainOverBlack(store, pixels, 2000);
  EXPECT_EQ(first, again);
  EXPECT_NE(first, other);
  // A faint blue speckle: blue dominates, nothing is bright.
  long red = 0, blue = 0;
  int brightest = 0;
  for (size_t i = 0; i < first.size(); i += 4) {
    red += first[i];
    blue += first[i + 2];
    brightest = std::max(brightest, int(first[i + 2]));
  }
  EXPECT_GT(blue, red * 4);
  EXPECT_GT(brightest, 10);
  EXPECT_LE(brightest, 40);
  testimg::Image image{testgl::width(), testgl::height(), first};
  const std::string path = std::string(OSTRAVINE_BINARY_DIR) + "/grain_over_black.png";
  ASSERT_TRUE(testimg::writePng(path, image));
  testimg::Tolerance exact;
  exact.maxMeanDiff = 0.5;
  exact.pixelThreshold = 8;
  exact.maxBadShare = 0.001;
  testimg::Comparison c = testimg::compareToReference(path, "core_grain_over_black_1000.png", exact);
  EXPECT_TRUE(c.passed) << c.message;
}
