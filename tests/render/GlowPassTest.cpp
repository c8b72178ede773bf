// glowPass: the tap alpha and zoom quantisation, the edge cases of pass
// counts, zoom and amounts, the ping-pong textures of both paths, and the
// scene pipeline's picture against a reference image on both paths.
#include <gtest/gtest.h>

#include <memory>

#include "RenderTargetTestHelpers.h"

using namespace rtt;

namespace {

struct GlowArgs {
  int slot = 2;
  float amount = 0;
  int passes = 1;
  float spreadX = 0.1f, spreadY = 0.1f;
  float alpha = 1;
  float tint[3] = {0, 0, 0};
  float fadeOut = 0;
  bool fullScreen = true;
  float zoom = 0, zoomPowBase = 1.5f, zoomPow = 1;
};

const int lowW = 160, lowH = 120;  // the half-size render area of the pool

// A glow of args.slot at half size into slot 1's surface, as a scene's blur
// step does it, over a surface first cleared to `under`. Returns the half-size
// area, top row first, read from that surface before it is left.
testimg::Image glowInto(RenderTarget& rt, const GlowArgs& g, const Rgba& under) {
  rt.lowResolution = 1;
  glViewport(0, 0, lowW, lowH);
  rt.beginTarget(1, false, false);
  clearTo(under);
  rt.glowPass(g.slot, g.amount, g.passes, g.spreadX, g.spreadY, g.alpha, g.tint[0], g.tint[1], g.tint[2], g.fadeOut,
              0, g.fullScreen, g.zoom, g.zoomPowBase, g.zoomPow);
  testimg::Image out;
  out.width = lowW;
  out.height = lowH;
  out.rgba = testgl::readPixels(0, 0, lowW, lowH);
  rt.endTarget();
  if (!rt.useFramebuffers) rt.copyToSlot(1);
  rt.lowResolution = 0;
  return out;
}

// Pixel of an image read by glowInto, lower-left origin.
Rgba at(const testimg::Image& im, int x, int y) {
  const size_t o = (size_t(im.height - 1 - y) * im.width + x) * 4;
  return {im.rgba[o], im.rgba[o + 1], im.rgba[o + 2], im.rgba[o + 3]};
}

struct GlowScene {
  ScopedFramebuffers fb;
  std::unique_ptr<RenderTarget> rt;
  explicit GlowScene(bool framebuffers) : fb(framebuffers) {
    rt.reset(makePool(6));
    rt->prepareAllStorage();  // the tests fill slot textures directly, as earlier copies would
    testgl::drainErrors();
  }
};

Rgba scaled(const Rgba& c, double f, int alpha) {
  return {int(std::lround(std::min(255.0, c[0] * f))), int(std::lround(std::min(255.0, c[1] * f))),
          int(std::lround(std::min(255.0, c[2] * f))), alpha};
}

}  // namespace

// ---- Numbers ---------------------------------------------------------------------

TEST(GlowPass, TapAlphaFormula) {
  EXPECT_FLOAT_EQ(glowTapAlpha(0, 0, 1), 0.25390625f);
  EXPECT_FLOAT_EQ(glowTapAlpha(0, 1, 0), 0.25390625f);  // amount 0: each image near its own brightness
  EXPECT_FLOAT_EQ(glowTapAlpha(1, 1, 1), 0.0f);         // full fade-out
  EXPECT_FLOAT_EQ(glowTapAlpha(1, 0, 0), 0.0f);         // alpha 0 at full amount
  EXPECT_FLOAT_EQ(glowTapAlpha(0.45f, 0, 1), 0.25390625f);
  EXPECT_FLOAT_EQ(glowTapAlpha(0.5f, 0.5f, 0.5f), (0.75f * 0.75f * 1.015625f) / 4.0f);
  EXPECT_FLOAT_EQ(glowTapAlpha(-0.2f, 0, 1), 0.25390625f);  // negative amounts are taken as they are
  EXPECT_FLOAT_EQ(glowTapAlpha(-0.2f, 1, 0.5f), (1.2f * 1.1f * 1.015625f) / 4.0f);
}

TEST(GlowPass, ZoomIsQuantisedToTenThousandths) {
  EXPECT_EQ(glowZoomStep(0.00004f), 0.0f);
  EXPECT_EQ(glowZoomStep(0.0f), 0.0f);
  EXPECT_FLOAT_EQ(glowZoomStep(0.00015f), 0.0001f);
  EXPECT_FLOAT_EQ(glowZoomStep(0.0125f), 0.0125f);
  EXPECT_FLOAT_EQ(glowZoomStep(-0.00015f), -0.0001f);
}

// ---- Edge cases ---------------------------------------------------------------------

// One pass: only the last-pass branch. The copy path adds four taps to what
// the surface holds; the framebuffer path first copies the source in.
TEST(GlowPass, SinglePassOnBothPaths) {
  REQUIRE_TARGET_GL();
  const Rgba c = {64, 32, 16, 255};
  const Rgba fourTaps = scaled(c, 1.015625, 255);
  {
    GlowScene s(false);
    fillTexture(s.rt->textureLow[2], c);
    GlowArgs g;
    const auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), fourTaps, 3));
  }
  if (hasFramebufferObject) {
    GlowScene s(true);
    fillTexture(s.rt->textureLow[2], c);
    GlowArgs g;
    const auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), {c[0] + fourTaps[0], c[1] + fourTaps[1], c[2] + fourTaps[2], 255}, 3));
  }
  resetState();
}

// Zero passes: nothing drawn, but the state changes and restores happen.
TEST(GlowPass, ZeroPassesDrawsNothingButSetsState) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureLow[2], {255, 255, 255, 255});
  glMatrixMode(GL_PROJECTION);
  glOrtho(0, 4, 0, 4, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glTranslatef(1, 2, 3);
  glEnable(GL_ALPHA_TEST);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_COLOR_MATERIAL);
  glEnable(GL_LIGHTING);
  glDepthMask(GL_FALSE);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  GlowArgs g;
  g.passes = 0;
  const auto im = glowInto(*s.rt, g, {10, 20, 30, 40});
  EXPECT_TRUE(near(at(im, 80, 60), {10, 20, 30, 40}, 0));
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  GLboolean mask = GL_FALSE;
  glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
  EXPECT_TRUE(mask);
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  GLint v = 0;
  glGetIntegerv(GL_BLEND_SRC_RGB, &v);
  EXPECT_EQ(v, GL_SRC_ALPHA);
  glGetIntegerv(GL_BLEND_DST_ALPHA, &v);
  EXPECT_EQ(v, GL_ONE_MINUS_SRC_ALPHA);
  if (hasBlendFuncSeparate) {
    EXPECT_EQ(getInt(GL_UNPACK_ALIGNMENT), 1);
  }
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[13], 2);
  glGetFloatv(GL_PROJECTION_MATRIX, m);
  EXPECT_FLOAT_EQ(m[0], 0.5f);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(GlowPass, ZeroPassesRestoresColourMask) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
  s.rt->lowResolution = 1;
  s.rt->glowPass(2, 0.45f, 0, 0.1f, 0.1f, 1, 0, 0, 0, 0, 0, true, 0, 1.5f, 1);
  EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), GLint(s.rt->textureLow[2]));  // the source, bound and left
  GLboolean cm[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, cm);
  EXPECT_TRUE(cm[0] && cm[1] && cm[2] && cm[3]);
  resetState();
}

// Without fullScreen the caller's matrices are used and not pushed.
TEST(GlowPass, WithoutFullScreenUsesCallersMatrices) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureLow[2], {64, 64, 64, 255});
  glMatrixMode(GL_MODELVIEW);
  glTranslatef(-0.5f, -0.5f, 0);
  glScalef(0.5f, 0.5f, 1);  // the taps cover the lower-left quarter only
  GlowArgs g;
  g.fullScreen = false;
  const auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_GT(at(im, 40, 30)[0], 50);
  EXPECT_EQ(at(im, 120, 90)[0], 0);
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[0], 0.5f);
  resetState();
}

// A zoom below 1/10000 takes the clearing path exactly as zoom 0; a real zoom
// on the copy path keeps what the surface held under the taps.
TEST(GlowPass, TinyZoomBehavesAsZero) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureLow[2], {0, 128, 0, 255});
  GlowArgs g;
  g.passes = 2;
  g.amount = 0.45f;
  const Rgba red = {200, 0, 0, 255};
  g.zoom = 0;
  const auto none = glowInto(*s.rt, g, red);
  g.zoom = 0.00004f;
  const auto tiny = glowInto(*s.rt, g, red);
  g.zoom = 0.001f;
  const auto some = glowInto(*s.rt, g, red);
  EXPECT_EQ(none.rgba, tiny.rgba);
  EXPECT_EQ(at(none, 80, 60)[0], 0);  // the first pass cleared the red away
  EXPECT_GT(at(some, 80, 60)[0], 150);  // not cleared
  EXPECT_GT(at(none, 80, 60)[1], 100);
  resetState();
}

TEST(GlowPass, TinyZoomBehavesAsZeroWithFramebuffers) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  GlowScene s(true);
  fillTexture(s.rt->textureLow[2], {0, 128, 0, 255});
  GlowArgs g;
  g.passes = 3;
  g.amount = 0.45f;
  g.zoom = 0;
  const auto none = glowInto(*s.rt, g, {0, 0, 0, 0});
  g.zoom = 0.00004f;
  const auto tiny = glowInto(*s.rt, g, {0, 0, 0, 0});
  g.zoom = 0.05f;
  const auto some = glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_EQ(none.rgba, tiny.rgba);
  EXPECT_NE(none.rgba, some.rgba);
  resetState();
}

// amount 0: the taps coincide and each pass gives its source at 1.015625 of
// its brightness, not black. The last pass adds that to the previous pass's
// result, which the surface still holds.
TEST(GlowPass, AmountZeroKeepsBrightness) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  const Rgba c = {60, 40, 20, 255};
  fillTexture(s.rt->textureLow[2], c);
  GlowArgs g;
  g.amount = 0;
  g.fadeOut = 1;
  g.alpha = 0;  // neither matters at amount 0
  g.passes = 1;
  auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_TRUE(near(at(im, 80, 60), scaled(c, 1.015625, 255), 3));
  g.passes = 3;
  im = glowInto(*s.rt, g, {0, 0, 0, 0});
  // About twice the source; each tap is rounded to 8 bits on the surface, so
  // the 1.015625 gain may round away.
  const Rgba got = at(im, 80, 60);
  for (int k = 0; k < 3; ++k) {
    EXPECT_GE(got[k], 2 * c[k] - 2) << k;
    EXPECT_LE(got[k], int(2 * c[k] * 1.015625 * 1.015625 * 1.015625) + 2) << k;
  }
  resetState();
}

// fadeOut 1 and amount 1 give A = 0: the bloom is gone; alpha 0 and amount 1 too.
TEST(GlowPass, ZeroTapAlphaGivesNothing) {
  REQUIRE_TARGET_GL();
  for (bool framebuffers : {false, true}) {
    if (framebuffers && !hasFramebufferObject) continue;
    SCOPED_TRACE(framebuffers ? "framebuffers" : "copy");
    GlowScene s(framebuffers);
    fillTexture(s.rt->textureLow[2], {255, 255, 255, 255});
    GlowArgs g;
    g.amount = 1;
    g.passes = 4;
    g.fadeOut = 1;
    auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), {0, 0, 0, 0}, 0));
    EXPECT_TRUE(near(at(im, 5, 5), {0, 0, 0, 0}, 0));
    g.fadeOut = 0;
    g.alpha = 0;
    im = glowInto(*s.rt, g, {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), {0, 0, 0, 0}, 0));
    g.alpha = 1;  // and with some alpha there is a glow
    im = glowInto(*s.rt, g, {0, 0, 0, 0});
    EXPECT_GT(at(im, 80, 60)[0], 200);
  }
  resetState();
}

// The spread of a pass moves the four taps by +-spread/2 of the picture.
TEST(GlowPass, SpreadPlacesFourTaps) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  std::vector<uint8_t> image(256 * 128 * 4, 0);
  for (int y = 58; y < 62; ++y)
    for (int x = 78; x < 82; ++x)
      for (int k = 0; k < 4; ++k) image[(size_t(y) * 256 + x) * 4 + k] = 255;
  glBindTexture(GL_TEXTURE_2D, s.rt->textureLow[2]);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 256, 128, GL_RGBA, GL_UNSIGNED_BYTE, image.data());
  GlowArgs g;
  g.amount = 1;
  g.spreadX = 0.2f;
  g.spreadY = 0.2f;
  const auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
  // Texture offsets of +-0.1 * maxU and +-0.1 * maxV: 16 and 12 texels.
  for (int dx : {-16, 16})
    for (int dy : {-12, 12}) EXPECT_GT(at(im, 79 + dx, 59 + dy)[0], 55) << dx << ", " << dy;
  EXPECT_EQ(at(im, 79, 59)[0], 0);
  EXPECT_EQ(at(im, 79 + 16, 59)[0], 0);
  resetState();
}

// The zoom inset of pass i is i * zq / zoomPowBase^(i * zoomPow): with two
// passes and no spread, the last pass samples from z to maxU - z, so a dot
// left of centre lands further left; a power of 0 zooms by the full zq.
TEST(GlowPass, ZoomInsetFollowsThePowerTerm) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  std::vector<uint8_t> image(256 * 128 * 4, 0);
  for (int y = 58; y < 63; ++y)
    for (int x = 38; x < 43; ++x)
      for (int k = 0; k < 4; ++k) image[(size_t(y) * 256 + x) * 4 + k] = 255;
  glBindTexture(GL_TEXTURE_2D, s.rt->textureLow[2]);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 256, 128, GL_RGBA, GL_UNSIGNED_BYTE, image.data());
  GlowArgs g;
  g.passes = 2;
  g.amount = 0;
  g.zoom = 0;
  const auto still = glowInto(*s.rt, g, {0, 0, 0, 0});
  g.zoom = 0.1f;
  g.zoomPowBase = 1.5f;
  g.zoomPow = 1;
  const auto damped = glowInto(*s.rt, g, {0, 0, 0, 0});  // z = 0.1 / 1.5
  g.zoomPow = 0;
  const auto full = glowInto(*s.rt, g, {0, 0, 0, 0});  // z = 0.1
  for (const auto* im : {&still, &damped, &full}) EXPECT_GT(at(*im, 40, 60)[0], 200);  // the first pass's dot
  EXPECT_EQ(at(still, 29, 60)[0], 0);
  EXPECT_EQ(at(still, 21, 60)[0], 0);
  EXPECT_GT(at(damped, 29, 60)[0], 200);
  EXPECT_EQ(at(damped, 21, 60)[0], 0);
  EXPECT_GT(at(full, 21, 60)[0], 200);
  EXPECT_EQ(at(full, 29, 60)[0], 0);
  resetState();
}

// The pass ends by restoring the texture names from their saved copies.
TEST(GlowPass, EndsWithRestoreTextures) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  const GLuint saved = s.rt->textureLowAlternate[4];
  s.rt->textureLowAlternate[4] = 0;
  s.rt->lowResolution = 1;
  s.rt->glowPass(2, 0.45f, 0, 0.1f, 0.1f, 1, 0, 0, 0, 0, 0, true, 0, 1.5f, 1);
  EXPECT_EQ(s.rt->textureLowAlternate[4], saved);
  resetState();
}

// The colour of the taps is an additive tint scaled by amount.
TEST(GlowPass, TintIsAdded) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureLow[2], {64, 32, 16, 255});
  GlowArgs g;
  g.amount = 1;
  g.spreadX = g.spreadY = 0;
  g.tint[0] = 1;
  const auto im = glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_TRUE(near(at(im, 80, 60), {255, 33, 16, 255}, 3));
  g.amount = 0.5f;
  g.tint[0] = 0.25f;  // tap colour 0.125
  const auto half = glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_TRUE(near(at(half, 80, 60), scaled({64 + 32, 32, 16, 255}, 1.015625, 255), 3));
  resetState();
}

// Without separate blending each tap is drawn twice: colour at alpha A x 0.666667,
// then alpha alone.
TEST(GlowPass, WithoutSeparateBlendingColourIsTwoThirds) {
  REQUIRE_TARGET_GL();
  const Rgba c = {200, 100, 50, 128};
  const double a = 128 / 255.0;
  {
    GlowScene s(false);
    fillTexture(s.rt->textureLow[2], c);
    const auto im = glowInto(*s.rt, GlowArgs(), {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), scaled(c, a * 1.015625, int(std::lround(128 * 1.015625))), 3));
  }
  {
    ScopedBlendSeparate noSeparate(false);
    GlowScene s(false);
    fillTexture(s.rt->textureLow[2], c);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    const auto im = glowInto(*s.rt, GlowArgs(), {0, 0, 0, 0});
    EXPECT_TRUE(near(at(im, 80, 60), scaled(c, a * 1.015625 * 0.666667, int(std::lround(128 * 1.015625))), 3));
    EXPECT_EQ(getInt(GL_UNPACK_ALIGNMENT), 4);  // no glPixelStoref on this path
    GLboolean cm[4];
    glGetBooleanv(GL_COLOR_WRITEMASK, cm);
    EXPECT_TRUE(cm[0] && cm[1] && cm[2] && cm[3]);
  }
  resetState();
}

// ---- Ping-pong textures -------------------------------------------------------------

namespace {

void markAlternates(RenderTarget& rt) {
  for (int k = 0; k < 6; ++k) {
    fillTexture(rt.textureLowAlternate[k], {1, 2, 3, 4});
    fillTexture(rt.textureHighAlternate[k], {1, 2, 3, 4});
  }
}

bool untouched(GLuint texture) {
  glBindTexture(GL_TEXTURE_2D, texture);
  int w = 0;
  const auto data = readTexture(texture, &w);
  return texel(data, w, 10, 10) == Rgba{1, 2, 3, 4};
}

}  // namespace

// Copy path at half size: the alternates 0 and 1 are the scratch of every slot.
TEST(GlowPass, CopyPathHalfSizeUsesAlternatesZeroAndOne) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureLow[3], {90, 90, 90, 255});
  markAlternates(*s.rt);
  GlowArgs g;
  g.slot = 3;
  g.passes = 3;
  g.amount = 0.45f;
  glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_FALSE(untouched(s.rt->textureLowAlternate[0]));
  EXPECT_FALSE(untouched(s.rt->textureLowAlternate[1]));
  EXPECT_TRUE(untouched(s.rt->textureLowAlternate[3]));
  EXPECT_TRUE(untouched(s.rt->textureLowAlternate[4]));
  for (int k = 0; k < 6; ++k) EXPECT_TRUE(untouched(s.rt->textureHighAlternate[k])) << k;
  resetState();
}

// Framebuffer path: the alternates of slot + 1 and slot.
TEST(GlowPass, FramebufferPathUsesAlternatesOfSlotAndNext) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  GlowScene s(true);
  fillTexture(s.rt->textureLow[3], {90, 90, 90, 255});
  markAlternates(*s.rt);
  GlowArgs g;
  g.slot = 3;
  g.passes = 3;
  g.amount = 0.45f;
  glowInto(*s.rt, g, {0, 0, 0, 0});
  EXPECT_TRUE(untouched(s.rt->textureLowAlternate[0]));
  EXPECT_TRUE(untouched(s.rt->textureLowAlternate[1]));
  EXPECT_FALSE(untouched(s.rt->textureLowAlternate[3]));
  EXPECT_FALSE(untouched(s.rt->textureLowAlternate[4]));
  EXPECT_EQ(s.rt->stackDepth, 0);
  resetState();
}

// Copy path at full size: one alternate, index (slot + 1) mod 2, for every pass.
TEST(GlowPass, CopyPathFullSizeUsesOneAlternate) {
  REQUIRE_TARGET_GL();
  GlowScene s(false);
  fillTexture(s.rt->textureHigh[3], {90, 90, 90, 255});
  markAlternates(*s.rt);
  s.rt->lowResolution = 0;
  glViewport(0, 0, 320, 240);
  clearTo({0, 0, 0, 0});
  s.rt->glowPass(3, 0.45f, 4, 0.1f, 0.1f, 1, 0, 0, 0, 0, 0, true, 0, 1.5f, 1);
  EXPECT_FALSE(untouched(s.rt->textureHighAlternate[0]));
  for (int k : {1, 2, 3, 4, 5}) EXPECT_TRUE(untouched(s.rt->textureHighAlternate[k])) << k;
  for (int k = 0; k < 6; ++k) EXPECT_TRUE(untouched(s.rt->textureLowAlternate[k])) << k;
  EXPECT_GT(pixel(160, 120)[0], 60);
  resetState();
}

// The last pass draws into the caller's surface, which stays current.
TEST(GlowPass, FramebufferPathEndsOnCallersSurface) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  GlowScene s(true);
  fillTexture(s.rt->textureLow[2], {90, 90, 90, 255});
  s.rt->lowResolution = 1;
  s.rt->beginTarget(1, false, false);
  s.rt->glowPass(2, 0.45f, 5, 0.1f, 0.1f, 1, 0, 0, 0, 0, 0, true, 0.01f, 1.5f, 1);
  EXPECT_EQ(s.rt->stackDepth, 1);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(s.rt->framebufferLow[1]));
  s.rt->endTarget();
  s.rt->lowResolution = 0;
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

// ---- The scene pipeline against references -------------------------------------------

namespace {

struct PipelineArgs {
  int passes = 7;
  float amount = 0.45f;
  float zoom = 0;
  int blurMode = 0;
  float alpha = 1;
  bool backdropGlows = true;  // the glow source has the backdrop too
  bool present = false;       // lay the scene's slot on the screen and letterbox it
};

// The blur steps of a scene: glow source at half size into firstFreeSlot + 1,
// glowPass into firstFreeSlot, the final picture at full size, the glow laid
// over it. Returns the window.
testimg::Image scenePipeline(bool framebuffers, const PipelineArgs& p) {
  ScopedFramebuffers fb(framebuffers);
  resetState();
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  rt->firstFreeSlot = 1;
  const int slot = rt->firstFreeSlot;
  // glow source
  rt->lowResolution = 1;
  glViewport(0, 0, 160, 120);
  rt->beginTarget(slot + 1, true, false);
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawTestPicture(p.backdropGlows);
  rt->lowResolution = 1;
  rt->endTarget();
  if (!framebuffers) rt->copyToSlot(slot + 1);
  // blur
  rt->beginTarget(slot, false, false);
  glClear(GL_COLOR_BUFFER_BIT);
  glDisable(GL_DEPTH_TEST);
  rt->glowPass(slot + 1, GlowOptions::sceneGlow(p.amount, p.passes, p.alpha, 0, p.zoom, 1.5f, 1));
  rt->endTarget();
  if (!framebuffers) rt->copyToSlot(slot);
  rt->lowResolution = 0;
  // final picture, then the glow over it
  glViewport(0, 0, 320, 240);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawTestPicture();
  glDisable(GL_DEPTH_TEST);
  rt->lowResolution = 1;
  rt->drawSlot(slot, p.blurMode == 0 ? slotBlendSquares : slotBlendAdd, nullptr, true, nullptr, nullptr, 1.0f);
  rt->lowResolution = 0;
  if (p.present) {
    // The composition: on the copy path the scene's picture goes through its
    // layer slot 0 and is laid on the cleared screen; the framebuffer path
    // draws scenes straight to the screen.
    if (!framebuffers) {
      rt->copyToSlot(0);
      glDisable(GL_BLEND);
      glClear(GL_COLOR_BUFFER_BIT);
      rt->drawSlot(0, slotBlendAlpha, nullptr, true, nullptr, nullptr, 1.0f);
    }
    // The present step: the last slot, squeezed into the band of 3/4 height.
    rt->copyToSlot(rt->slotCount - 1);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    glViewport(0, int(240 * 0.125), 320, int(240 * 0.75));
    rt->drawSlot(rt->slotCount - 1, slotBlendOff, nullptr, true, nullptr, nullptr, 1.0f);
    glViewport(0, 0, 320, 240);
  }
  EXPECT_TRUE(testgl::drainErrors().empty());
  return readWindow();
}

void checkAgainstReference(const testimg::Image& actual, const std::string& name) {
  const std::string path = "targets_actual_" + name;
  ASSERT_TRUE(testimg::writePng(path, actual));
  const auto result = testimg::compareToReference(path, name);
  EXPECT_TRUE(result.passed) << result.message;
}

}  // namespace

TEST(GlowPassReference, SceneGlowOnCopyPath) {
  REQUIRE_TARGET_GL();
  checkAgainstReference(scenePipeline(false, PipelineArgs()), "targets_glow_scene.png");
  resetState();
}

TEST(GlowPassReference, SceneGlowWithZoomAndAdditiveMode) {
  REQUIRE_TARGET_GL();
  PipelineArgs p;
  // Zooming passes do not clear, so each one builds on the last: a dark glow
  // source and a lower alpha keep it from saturating.
  p.zoom = 0.02f;
  p.passes = 5;
  p.amount = 0.6f;
  p.alpha = 0.3f;
  p.blurMode = 1;
  p.backdropGlows = false;
  checkAgainstReference(scenePipeline(false, p), "targets_glow_zoom.png");
  resetState();
}

// A scene's frame through its layer slot and the letterboxed present step.
TEST(GlowPassReference, SceneThroughLayerAndPresent) {
  REQUIRE_TARGET_GL();
  PipelineArgs p;
  p.present = true;
  const auto copied = scenePipeline(false, p);
  checkAgainstReference(copied, "targets_glow_present.png");
  EXPECT_TRUE(near(pixel(160, 10), {0, 0, 0, 0}, 0));   // the bars
  EXPECT_TRUE(near(pixel(160, 229), {0, 0, 0, 0}, 0));
  if (hasFramebufferObject) {
    testimg::Tolerance tolerance;
    tolerance.maxMeanDiff = 1.0;
    tolerance.pixelThreshold = 12;
    tolerance.maxBadShare = 0.002;
    const auto framebuffer = scenePipeline(true, p);
    const auto result = testimg::compare(framebuffer, copied, tolerance);
    EXPECT_TRUE(result.passed) << result.message;
  }
  resetState();
}

// The framebuffer path gives the copy path's picture.
TEST(GlowPassReference, FramebufferPathMatchesCopyPath) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  testimg::Tolerance tolerance;
  tolerance.maxMeanDiff = 1.0;
  tolerance.pixelThreshold = 12;
  tolerance.maxBadShare = 0.002;
  for (const PipelineArgs& p : {PipelineArgs(), PipelineArgs{5, 0.6f, 0.02f, 1, 0.3f, false},
                              PipelineArgs{8, 0.3f, 0.005f, 0, 0.5f, false}, PipelineArgs{3, 1.0f, 0, 1, 1, false}}) {
    SCOPED_TRACE(testing::Message() << "passes " << p.passes << " zoom " << p.zoom);
    const auto copied = scenePipeline(false, p);
    const auto framebuffer = scenePipeline(true, p);
    const auto result = testimg::compare(framebuffer, copied, tolerance);
    EXPECT_TRUE(result.passed) << result.message;
    if (!result.passed) {
      testimg::writePng("targets_actual_fbo_vs_copy_fbo.png", framebuffer);
      testimg::writePng("targets_actual_fbo_vs_copy_copy.png", copied);
    }
  }
  resetState();
}
