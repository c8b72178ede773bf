// The effect library: each pass drawn from uniform or simple slot images in a
// pixel projection whose render size equals the texture size, the result read
// back and compared with the pass's blend formula worked out in software.
#include <gtest/gtest.h>

#include <memory>

#include "RenderTargetTestHelpers.h"

using namespace rtt;

namespace {

// Render size = texture size: 256 x 128, half 128 x 64.
struct EffectScene {
  ScopedFramebuffers fb{false};
  std::unique_ptr<RenderTarget> rt;
  EffectScene() {
    rt.reset(new RenderTarget(256, 128, 128, 64, 256, 128, 128, 64, 4));
    rt->prepareAllStorage();  // the tests fill slot textures directly, as earlier copies would
    testgl::drainErrors();
    pixelProjection();
  }
  void pixelProjection() {
    glViewport(0, 0, 256, 128);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-128, 128, -64, 64, -2, 2);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
  }
};

Colour addFragment(const Rgba& texture, float red, float green, float blue, float alpha) {
  Colour c = toColour(texture);
  return {std::min(1.0, c.r + red), std::min(1.0, c.g + green), std::min(1.0, c.b + blue), c.a * alpha};
}

Colour modulateFragment(const Rgba& texture, float red, float green, float blue, float alpha) {
  Colour c = toColour(texture);
  return {c.r * red, c.g * green, c.b * blue, c.a * alpha};
}

Rgba centre() { return pixel(128, 64); }

const Rgba imageA = {200, 100, 50, 255};
const Rgba imageB = {64, 128, 255, 160};
const Rgba under = {100, 150, 200, 128};

}  // namespace

// ---- Single quads and blends ------------------------------------------------------

TEST(EffectPasses, MultiplySlotMultipliesTheDestination) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[1], imageB);
  fillTexture(s.rt->textureLow[1], {0, 0, 0, 0});  // full size whatever lowResolution says
  s.rt->lowResolution = 1;
  clearTo(under);
  s.rt->multiplySlot(1);
  EXPECT_TRUE(near(centre(), blend(addFragment(imageB, 0, 0, 0, 1), toColour(under), GL_ZERO, GL_SRC_COLOR)));
  EXPECT_TRUE(near(pixel(2, 2), blend(addFragment(imageB, 0, 0, 0, 1), toColour(under), GL_ZERO, GL_SRC_COLOR), 6));
  EXPECT_EQ(texEnvMode(), GL_ADD);
  EXPECT_EQ(getInt(GL_MODELVIEW_STACK_DEPTH), 1);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, MaskSlotsDrawsBThenMultipliesByA) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[1], imageA);
  fillTexture(s.rt->textureHigh[2], imageB);
  clearTo(under);
  s.rt->maskSlots(1, 2);
  const Rgba first = blend(toColour(imageB), toColour(under), GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR);
  const Rgba expected = blend(toColour(imageA), toColour(first), GL_ZERO, GL_SRC_COLOR);
  EXPECT_TRUE(near(centre(), expected, 3));
  resetState();
}

TEST(EffectPasses, InvertSlotGivesOneMinusTheImage) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[2], imageA);
  fillTexture(s.rt->textureLow[2], imageB);
  s.rt->lowResolution = 1;
  clearTo(under);
  s.rt->invertSlot(2);
  EXPECT_TRUE(near(centre(), {255 - imageB[0], 255 - imageB[1], 255 - imageB[2], 255 - imageB[3]}));
  GLint v = 0;
  glGetIntegerv(GL_BLEND_SRC, &v);
  EXPECT_EQ(v, GL_SRC_ALPHA);
  glGetIntegerv(GL_BLEND_DST, &v);
  EXPECT_EQ(v, GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  GLfloat m[16];
  glGetFloatv(GL_PROJECTION_MATRIX, m);
  EXPECT_FLOAT_EQ(m[0], 1.0f / 128);  // the pixel projection is back
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, InvertSlotOutsideThePoolOnlyBinds) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  clearTo(under);
  s.rt->invertSlot(4);
  EXPECT_TRUE(near(centre(), under, 0));
  EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), 0);
  resetState();
}

TEST(EffectPasses, ShowSlotAloneClearsAndDrawsAtTheSelectedSize) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureLow[1], imageA);
  s.rt->lowResolution = 1;
  clearTo(under);
  s.rt->showSlotAlone(1, 0.5f);
  const Rgba expected = blend(addFragment(imageA, 0, 0, 0, 0.5f), {0, 0, 0, 0}, GL_SRC_ALPHA, GL_DST_ALPHA);
  EXPECT_TRUE(near(centre(), expected));
  EXPECT_TRUE(near(pixel(10, 10), {0, 0, 0, 0}, 0));  // cleared, outside the half-size quad
  resetState();
}

TEST(EffectPasses, FadeToColourBlendsAnUntexturedQuad) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  clearTo(under);
  s.rt->fadeToColour(0.25f, 1.0f, 0.0f, 0.5f);
  const Rgba expected = blend({1.0, 0.0, 0.5, 0.25}, toColour(under), GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_TRUE(near(centre(), expected));
  EXPECT_TRUE(near(pixel(250, 120), expected));  // full size: the whole area
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  s.rt->lowResolution = 1;
  clearTo(under);
  s.rt->fadeToColour(1.0f, 0, 1, 0);
  EXPECT_TRUE(near(centre(), {0, 255, 0, 255}));
  EXPECT_TRUE(near(pixel(250, 120), under, 0));
  resetState();
}

TEST(EffectPasses, MixSlotsDrawsBThenA) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[1], imageA);
  fillTexture(s.rt->textureLow[2], imageB);
  s.rt->lowResolutionB = 1;
  s.rt->lowResolutionQuadB = 0;
  for (GLenum destination : {GL_DST_ALPHA, GL_DST_COLOR}) {
    SCOPED_TRACE(destination);
    clearTo(under);
    if (destination == GL_DST_ALPHA)
      s.rt->mixSlots(1, 2, 0.75f, 0.5f, 0.1f, 0.2f);
    else
      s.rt->mixSlotsBright(1, 2, 0.75f, 0.5f, 0.1f, 0.2f);
    const Rgba first = blend(addFragment(imageB, 0.2f, 0.2f, 0.2f, 0.5f), toColour(under), GL_SRC_ALPHA, destination);
    const Rgba expected =
        blend(addFragment(imageA, 0.1f, 0.1f, 0.1f, 0.75f), toColour(first), GL_SRC_ALPHA, destination);
    EXPECT_TRUE(near(centre(), expected, 3));
  }
  // The quad selectors: slotA at half size covers the centre only.
  s.rt->lowResolutionQuad = 1;
  clearTo({0, 0, 0, 0});
  s.rt->mixSlots(1, 2, 1.0f, 0.0f, 0.0f, 0.0f);
  EXPECT_TRUE(near(pixel(5, 5), {0, 0, 0, 0}, 0));
  EXPECT_GT(centre()[0], 150);
  resetState();
}

TEST(EffectPasses, ThumbnailIsHalfTransparent) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[3], imageA);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(-128, 128, -64, 64, -10, 10);  // room for its z of -2.2
  glMatrixMode(GL_MODELVIEW);
  clearTo(under);
  s.rt->drawSlotThumbnail(3);
  const Rgba expected = blend(addFragment(imageA, 0, 0, 0, 0.5f), toColour(under), GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_TRUE(near(centre(), expected));
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[12], 0);  // the translation was pushed and popped
  resetState();
}

// ---- Textured quads ----------------------------------------------------------------------

namespace {

// 16 x 16 textures, linear without mipmaps; large enough that the clamped
// border does not reach the pixels the tests read.
GLuint makeTexture(const std::vector<uint8_t>& data) {
  GLuint t = 0;
  glGenTextures(1, &t);
  glBindTexture(GL_TEXTURE_2D, t);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 16, 16, 0, GL_RGBA, GL_UNSIGNED_BYTE, data.data());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  return t;
}

// Top half (first rows in memory) red, bottom half blue.
GLuint topRedBottomBlue() {
  std::vector<uint8_t> data(16 * 16 * 4);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) {
      uint8_t* p = &data[(size_t(y) * 16 + x) * 4];
      p[0] = y < 8 ? 255 : 0;
      p[1] = 0;
      p[2] = y < 8 ? 0 : 255;
      p[3] = 255;
    }
  return makeTexture(data);
}

GLuint uniformTexture(const Rgba& c) {
  std::vector<uint8_t> data(16 * 16 * 4);
  for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(c[i % 4]);
  return makeTexture(data);
}

}  // namespace

TEST(EffectPasses, TextureQuadStandsUpright) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glViewport(0, 0, 320, 240);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  const GLuint t = topRedBottomBlue();
  clearTo(under);
  s.rt->drawTextureQuad(t, 0, nullptr, 1.0f, nullptr, false);
  EXPECT_TRUE(near(pixel(160, 200), {255, 0, 0, 255}));
  EXPECT_TRUE(near(pixel(160, 40), {0, 0, 255, 255}));
  GLint v = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &v);
  EXPECT_EQ(v, GL_CLAMP);
  s.rt->drawTextureQuad(t, 0, nullptr, 1.0f, nullptr, true);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &v);
  EXPECT_EQ(v, GL_REPEAT);
  // Half extents and an additive blend with a tint.
  clearTo({0, 0, 0, 255});
  const float extent[2] = {0.5f, 0.5f};
  const float tint[3] = {0.0f, 0.5f, 0.0f};
  s.rt->drawTextureQuad(t, 4, tint, 0.5f, extent, false);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(pixel(160, 150), blend({1.0, 0.5, 0.0, 0.5}, {0, 0, 0, 1}, GL_SRC_ALPHA, GL_ONE), 3));
  EXPECT_TRUE(near(pixel(20, 20), {0, 0, 0, 255}, 0));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  glDeleteTextures(1, &t);
  resetState();
}

TEST(EffectPasses, TextureQuadTwoUnitsAddsTheSecond) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glViewport(0, 0, 320, 240);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  const GLuint first = uniformTexture({50, 50, 50, 255});
  const GLuint second = topRedBottomBlue();
  clearTo(under);
  s.rt->drawTextureQuadTwoUnits(first, second, 0, nullptr, 1.0f, nullptr, false, nullptr, nullptr);
  EXPECT_TRUE(near(pixel(160, 200), {255, 50, 50, 255}));
  EXPECT_TRUE(near(pixel(160, 40), {50, 50, 255, 255}));
  // The second image from t 0.125 to 0.375 only: its red top half everywhere.
  const float offset[2] = {0.0f, 0.125f}, scale[2] = {1.0f, 0.25f};
  s.rt->drawTextureQuadTwoUnits(first, second, 0, nullptr, 1.0f, nullptr, false, offset, scale);
  EXPECT_TRUE(near(pixel(160, 40), {255, 50, 50, 255}));
  EXPECT_TRUE(near(pixel(160, 200), {255, 50, 50, 255}));
  EXPECT_EQ(getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_TRUE(testgl::drainErrors().empty());
  glDeleteTextures(1, &first);
  glDeleteTextures(1, &second);
  resetState();
}

TEST(EffectPasses, VolumeSlicePicksTheSliceAndRestoresTwoD) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  GLuint volume = 0;
  glGenTextures(1, &volume);
  glBindTexture(GL_TEXTURE_3D, volume);
  uint8_t data[2 * 2 * 2 * 4];
  for (int z = 0; z < 2; ++z)
    for (int i = 0; i < 4; ++i) {
      uint8_t* p = &data[(z * 4 + i) * 4];
      p[0] = z == 0 ? 255 : 0;
      p[1] = z == 1 ? 255 : 0;
      p[2] = 0;
      p[3] = 255;
    }
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexImage3D(GL_TEXTURE_3D, 0, GL_RGBA, 2, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, data);
  glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  s.rt->drawVolumeSlice(volume, 0, nullptr, true, nullptr, 0.25f, 0);
  EXPECT_TRUE(near(centre(), {255, 0, 0, 255}));
  s.rt->drawVolumeSlice(volume, 0, nullptr, true, nullptr, 0.75f, 0);
  EXPECT_TRUE(near(centre(), {0, 255, 0, 255}));
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_3D));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  // Mode 5 alpha blends; a grey mask on unit 1 halves the slice.
  const GLuint mask = uniformTexture({128, 128, 128, 255});
  clearTo({0, 0, 0, 255});
  s.rt->drawVolumeSlice(volume, 5, nullptr, true, nullptr, 0.25f, mask);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), {128, 0, 0, 255}, 3));
  EXPECT_EQ(getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_TRUE(testgl::drainErrors().empty());
  glDeleteTextures(1, &volume);
  glDeleteTextures(1, &mask);
  resetState();
}

// ---- Multi-pass blurs ----------------------------------------------------------------------

TEST(EffectPasses, AccumulateSlotDoublesEachIteration) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  const Rgba c = {30, 20, 10, 255};
  fillTexture(s.rt->textureHigh[1], c);
  clearTo({0, 0, 0, 0});
  s.rt->accumulateSlot(1, 2, 1.0f);
  EXPECT_TRUE(near(centre(), {120, 80, 40, 255}));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  clearTo({0, 0, 0, 0});
  s.rt->accumulateSlot(1, 3, 0.5f);  // half brightness: twice a half each time
  EXPECT_TRUE(near(centre(), c));
  EXPECT_TRUE(glIsEnabled(GL_COLOR_MATERIAL));
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, BlurCrossFadeEndsSharpOnB) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  fillTexture(s.rt->textureHigh[1], {255, 0, 0, 255});
  fillTexture(s.rt->textureHigh[2], {0, 0, 255, 255});
  // The taps add through (SRC_ALPHA, DST_ALPHA): they want an opaque clear.
  glClearColor(0, 0, 0, 1);
  s.rt->blurCrossFade(1.0f, 1, 2);
  EXPECT_TRUE(near(centre(), {0, 0, 255, 255}, 2));
  s.rt->blurCrossFade(0.0f, 1, 2);
  const Rgba start = centre();
  EXPECT_GT(start[0], 200);
  EXPECT_EQ(start[2], 0);
  s.rt->blurCrossFade(0.5f, 1, 2);
  const Rgba middle = centre();
  EXPECT_GT(middle[0], 60);
  EXPECT_GT(middle[2], 60);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, StripBlurTapsBlendWithDestinationAlpha) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  const Rgba c = {200, 160, 120, 255};
  fillTexture(s.rt->textureHigh[1], c);
  fillTexture(s.rt->textureLow[1], c);
  // The pass clears with the caller's clear colour; opaque, so the taps add.
  glClearColor(0, 0, 0, 1);
  // Four taps of (texture x colour, alpha 65/256) with (SRC_ALPHA, DST_ALPHA).
  const Colour tap = modulateFragment(c, 1.0f, 0.5f, 1.0f, 0.25390625f);
  Rgba expected = {0, 0, 0, 255};
  for (int k = 0; k < 4; ++k) expected = blend(tap, toColour(expected), GL_SRC_ALPHA, GL_DST_ALPHA);
  const float flat[3] = {0, 0, 0};
  s.rt->stripBlur(1, 1, 1.0f, 1.0f, 1.0f, 0.5f, 1.0f, 3, flat);
  EXPECT_TRUE(near(centre(), expected, 5));
  EXPECT_TRUE(near(pixel(128, 20), expected, 5));
  EXPECT_EQ(texEnvMode(), GL_ADD);
  // Half size: a plain half-size quad.
  s.rt->lowResolution = 1;
  s.rt->stripBlur(1, 1, 1.0f, 1.0f, 1.0f, 0.5f, 1.0f, 3, flat);
  EXPECT_TRUE(near(centre(), expected, 5));
  EXPECT_TRUE(near(pixel(5, 5), {0, 0, 0, 255}, 0));
  // Weighted strips move the taps by small offsets: inside a uniform image
  // the result stays the same.
  s.rt->lowResolution = 0;
  const float weights[4] = {0.5f, 1.0f, 0.5f, 0.25f};
  s.rt->stripBlur(1, 1, 1.0f, 1.0f, 1.0f, 0.5f, 1.0f, 4, weights);
  EXPECT_TRUE(near(centre(), expected, 5));
  EXPECT_TRUE(near(pixel(128, 100), expected, 5));
  // Each pass works on the last one's result: the green factor compounds.
  s.rt->stripBlur(1, 3, 1.0f, 1.0f, 1.0f, 0.5f, 1.0f, 4, weights);
  EXPECT_GT(centre()[0], expected[0]);
  EXPECT_LT(centre()[1], expected[1] / 2 + 2);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, GhostTrailFadesLaterPasses) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  const Rgba c = {200, 100, 50, 255};
  fillTexture(s.rt->textureHigh[1], c);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  s.rt->ghostColour[0] = s.rt->ghostColour[1] = s.rt->ghostColour[2] = 0;
  clearTo(under);
  s.rt->ghostTrail(1, 1, 0.5f, 0.3f, 1.0f, 0.2f, 0.5f, 0.5f);
  const Rgba one = centre();
  EXPECT_TRUE(near(one, blend(addFragment(c, 0, 0, 0, 0.5f), toColour(under), GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)));
  // A fade that takes the second pass's alpha to 0 leaves the first pass's picture.
  s.rt->ghostFade = 0.5f / std::sqrt(0.5f);
  clearTo(under);
  s.rt->ghostTrail(1, 2, 0.5f, 0.3f, 1.0f, 0.2f, 0.5f, 0.5f);
  EXPECT_TRUE(near(centre(), one, 2));
  // Without the fade the second pass shows.
  s.rt->ghostFade = 0;
  clearTo(under);
  s.rt->ghostTrail(1, 2, 0.5f, 0.3f, 1.0f, 0.2f, 0.5f, 0.5f);
  EXPECT_FALSE(near(centre(), one, 2));
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(EffectPasses, FlareTunnelRunsAndLeavesItsPicture) {
  REQUIRE_TARGET_GL();
  EffectScene s;
  std::vector<uint8_t> image(256 * 128 * 4, 0);
  for (int y = 54; y < 74; ++y)
    for (int x = 118; x < 138; ++x)
      for (int k = 0; k < 4; ++k) image[(size_t(y) * 256 + x) * 4 + k] = 255;
  glBindTexture(GL_TEXTURE_2D, s.rt->textureHigh[1]);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 256, 128, GL_RGBA, GL_UNSIGNED_BYTE, image.data());
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  s.rt->flareTunnel(1, 0.01f, 1.6f, 1.0f, 0.0f, 0.0f, 0.0f);
  EXPECT_GT(centre()[0], 100);
  EXPECT_LT(pixel(2, 2)[0], centre()[0]);
  EXPECT_TRUE(testgl::drainErrors().empty());
  EXPECT_EQ(getInt(GL_MODELVIEW_STACK_DEPTH), 1);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  int w = 0;
  const auto alt = readTexture(s.rt->textureHighAlternate[1], &w);
  int lit = 0;
  for (size_t i = 0; i < alt.size(); i += 4) lit += alt[i] > 0;
  EXPECT_GT(lit, 0);
  resetState();
}
