// The overlay scope and its quads: the state it sets on entry, the matrices
// it gives back on exit, and what a flash leaves on the screen.
#include <gtest/gtest.h>

#include <GL/glew.h>

#include <array>

#include "render/Overlay.h"
#include "support/GLTestContext.h"

namespace {

constexpr int w = 64, h = 48;

std::array<float, 16> matrix(GLenum which) {
  std::array<float, 16> m{};
  glGetFloatv(which, m.data());
  return m;
}

void perspective() {
  glViewport(0, 0, w, h);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glFrustum(-0.1, 0.1, -0.1, 0.1, 0.1, 100);  // 90 degrees: z = -1 reaches x, y = +-1
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(3, 4, 5);
}

}  // namespace

TEST(Overlay, ScopeSetsItsStateAndGivesTheMatricesBack) {
  REQUIRE_GL(w, h);
  perspective();
  glEnable(GL_LIGHTING);
  glEnable(GL_COLOR_MATERIAL);
  glEnable(GL_DEPTH_TEST);
  glDisable(GL_BLEND);
  glActiveTextureARB(GL_TEXTURE1_ARB);
  const auto projection = matrix(GL_PROJECTION_MATRIX);
  const auto modelview = matrix(GL_MODELVIEW_MATRIX);
  {
    OverlayOptions options;
    options.depth = 0.5f;
    options.textured = true;
    OverlayScope overlay(options);
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST)) << "culling and depth only by option";
    GLint unit = 0, src = 0, dst = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE_ARB, &unit);
    glGetIntegerv(GL_BLEND_SRC, &src);
    glGetIntegerv(GL_BLEND_DST, &dst);
    EXPECT_EQ(unit, GL_TEXTURE0_ARB);
    EXPECT_EQ(src, GL_SRC_ALPHA);
    EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
    const auto inside = matrix(GL_MODELVIEW_MATRIX);
    EXPECT_EQ(inside[0], 1.0f);
    EXPECT_EQ(inside[12], 0.0f);
    EXPECT_EQ(inside[14], 0.5f) << "identity, then the depth";
    EXPECT_EQ(matrix(GL_PROJECTION_MATRIX), projection) << "the camera's projection stands";
  }
  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(mode, GL_MODELVIEW);
  EXPECT_EQ(matrix(GL_PROJECTION_MATRIX), projection);
  EXPECT_EQ(matrix(GL_MODELVIEW_MATRIX), modelview);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Overlay, OptionsForUntexturedNoDepthAndTheCurrentBlendFunction) {
  REQUIRE_GL(w, h);
  perspective();
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_CULL_FACE);
  glEnable(GL_DEPTH_TEST);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE);
  {
    OverlayOptions options;
    options.alphaBlend = false;
    options.noCullNoDepth = true;
    OverlayScope overlay(options);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    GLint dst = 0;
    glGetIntegerv(GL_BLEND_DST, &dst);
    EXPECT_EQ(dst, GL_ONE) << "the function is kept";
    EXPECT_EQ(matrix(GL_MODELVIEW_MATRIX)[14], 0.0f);
  }
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Overlay, FlashCoversThePictureAndBlendsByItsAlpha) {
  REQUIRE_GL(w, h);
  perspective();
  auto flashed = [](float r, float g, float b, float a) {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    drawFlash(r, g, b, a, 0.5f);
    return std::array<std::vector<uint8_t>, 2>{testgl::readPixels(w / 2, h / 2, 1, 1), testgl::readPixels(0, 0, 1, 1)};
  };
  const auto white = flashed(1, 1, 1, 1);
  EXPECT_GE(white[0][0], 254);
  EXPECT_GE(white[1][1], 254) << "the corner too";
  const auto half = flashed(1, 1, 1, 0.5f);
  EXPECT_NEAR(half[0][0], 128, 3);
  const auto over = flashed(1, 1, 1, 7.5f);
  EXPECT_EQ(over[0][0], white[0][0]) << "GL clamps a flash above 1";
  const auto red = flashed(1, 0, 0, 1);
  EXPECT_GE(red[0][0], 254);
  EXPECT_LE(red[0][1], 1);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D)) << "texturing back on after the flash";
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Overlay, TexturedQuadCarriesTheImageUpright) {
  REQUIRE_GL(w, h);
  perspective();
  // A 2 x 2 texture: red on the first row (the image's top), blue below.
  const uint8_t texels[] = {255, 0, 0, 255, 255, 0, 0, 255, 0, 0, 255, 255, 0, 0, 255, 255};
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  {
    OverlayOptions options;
    options.textured = true;
    options.noCullNoDepth = true;
    OverlayScope overlay(options);
    bindTitleTexture(texture, GL_MODULATE);
    GLint wrap = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrap);
    EXPECT_EQ(wrap, GL_CLAMP);
    glColor4f(1, 1, 1, 1);
    texturedQuad(1.0f);
  }
  // GL rows count from the bottom: the image's top row belongs at the top.
  const std::vector<uint8_t> top = testgl::readPixels(w / 2, 3 * h / 4, 1, 1);
  const std::vector<uint8_t> bottom = testgl::readPixels(w / 2, h / 4, 1, 1);
  EXPECT_GE(top[0], 250);
  EXPECT_LE(top[2], 5);
  EXPECT_GE(bottom[2], 250);
  EXPECT_LE(bottom[0], 5);
  linearFilters();
  GLint filter = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &filter);
  EXPECT_EQ(filter, GL_LINEAR);
  glDeleteTextures(1, &texture);
  EXPECT_TRUE(testgl::drainErrors().empty());
}
