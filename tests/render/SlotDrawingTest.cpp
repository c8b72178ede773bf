// drawSlot, drawSlotFaded, crossFade and combineSlots: every blend mode is
// checked by reading back pixels drawn from uniform slot textures over a known
// surface and comparing with the blend formula worked out in software.
#include <gtest/gtest.h>

#include <memory>

#include "RenderTargetTestHelpers.h"

using namespace rtt;

namespace {

const Rgba src = {100, 150, 200, 128};
const Rgba dst = {60, 90, 30, 200};

// Uniform slot textures over a known surface, copy path.
struct SlotScene {
  std::unique_ptr<RenderTarget> rt;
  ScopedFramebuffers fb{false};
  SlotScene() {
    rt.reset(makePool(4));
    rt->prepareAllStorage();  // the tests fill slot textures directly, as earlier copies would
    testgl::drainErrors();
  }
};

// What drawSlot with fullScreen hands to blending: GL_ADD with (0, 0, 0, alpha).
Colour addFragment(const Rgba& texture, float alpha) {
  Colour c = toColour(texture);
  c.a *= alpha;
  return c;
}

Rgba centre() { return pixel(160, 120); }

}  // namespace

// ---- drawSlot -------------------------------------------------------------------

struct ModeCase {
  int mode;
  GLenum sf, df, sfa, dfa;
  float alpha;
};

TEST(SlotDrawing, DrawSlotBlendModesFollowTheirFormulas) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  const GLenum alphaSrc1 = hasBlendFuncSeparate ? GL_ONE : GL_SRC_ALPHA;
  const ModeCase cases[] = {
      {1, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, alphaSrc1, GL_ONE_MINUS_SRC_ALPHA, 1.0f},
      {1, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, alphaSrc1, GL_ONE_MINUS_SRC_ALPHA, 0.5f},
      {2, GL_ONE, GL_ONE, GL_ONE, GL_ONE, 1.0f},
      {3, GL_SRC_COLOR, GL_DST_COLOR, GL_SRC_COLOR, GL_DST_COLOR, 1.0f},
      {4, GL_DST_COLOR, GL_SRC_COLOR, GL_DST_COLOR, GL_SRC_COLOR, 1.0f},
      {5, GL_SRC_ALPHA, GL_ONE, GL_SRC_ALPHA, GL_ONE, 1.0f},
      {5, GL_SRC_ALPHA, GL_ONE, GL_SRC_ALPHA, GL_ONE, 0.5f},
      {6, GL_SRC_COLOR, GL_ONE, GL_SRC_COLOR, GL_ONE, 1.0f},
  };
  for (const ModeCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "mode " << c.mode << " alpha " << c.alpha);
    clearTo(dst);
    glEnable(GL_BLEND);  // mode 1 relies on the caller for this
    s.rt->drawSlot(1, c.mode, nullptr, true, nullptr, nullptr, c.alpha);
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(near(centre(), blend(addFragment(src, c.alpha), toColour(dst), c.sf, c.df, c.sfa, c.dfa)));
  }
  // Modes 2 to 6 switch blending on themselves.
  for (int mode = 2; mode <= 6; ++mode) {
    glDisable(GL_BLEND);
    s.rt->drawSlot(1, mode, nullptr, true, nullptr, nullptr, 1.0f);
    EXPECT_TRUE(glIsEnabled(GL_BLEND)) << "mode " << mode;
  }
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(SlotDrawing, DrawSlotModeZeroOverwrites) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[2], src);
  clearTo(dst);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ONE, GL_ONE);
  s.rt->drawSlot(2, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), src));
  // alpha scales the written alpha through GL_ADD's alpha product
  s.rt->drawSlot(2, 0, nullptr, true, nullptr, nullptr, 0.5f);
  EXPECT_TRUE(near(centre(), {100, 150, 200, 64}));
}

// Mode 1 sets the function only: with blending off it overwrites.
TEST(SlotDrawing, DrawSlotModeOneLeavesBlendingSwitchAlone) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  clearTo(dst);
  glDisable(GL_BLEND);
  s.rt->drawSlot(1, 1, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), src));
  GLint v = 0;
  glGetIntegerv(GL_BLEND_SRC_RGB, &v);
  EXPECT_EQ(v, GL_SRC_ALPHA);
  glGetIntegerv(GL_BLEND_DST_RGB, &v);
  EXPECT_EQ(v, GL_ONE_MINUS_SRC_ALPHA);
  if (hasBlendFuncSeparate) {
    glGetIntegerv(GL_BLEND_SRC_ALPHA, &v);
    EXPECT_EQ(v, GL_ONE);
    glGetIntegerv(GL_BLEND_DST_ALPHA, &v);
    EXPECT_EQ(v, GL_ONE_MINUS_SRC_ALPHA);
  }
}

TEST(SlotDrawing, DrawSlotWithoutSeparateBlendingUsesPlainAlphaBlend) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  ScopedBlendSeparate noSeparate(false);
  fillTexture(s.rt->textureHigh[1], src);
  clearTo(dst);
  glEnable(GL_BLEND);
  s.rt->drawSlot(1, 1, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), blend(addFragment(src, 1), toColour(dst), GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)));
}

TEST(SlotDrawing, DrawSlotOtherModeLeavesBlendingAsItIs) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  clearTo(dst);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ONE, GL_ONE);
  s.rt->drawSlot(1, 7, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), blend(toColour(src), toColour(dst), GL_ONE, GL_ONE)));
  clearTo(dst);
  glDisable(GL_BLEND);
  s.rt->drawSlot(1, -1, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), src));
}

TEST(SlotDrawing, DrawSlotIgnoresSlotsOutsideThePool) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  for (int k = 0; k < 4; ++k) fillTexture(s.rt->textureHigh[k], src);
  clearTo(dst);
  glEnable(GL_LIGHTING);
  glEnable(GL_CULL_FACE);
  for (int slot : {4, 9, 10, -1}) {
    s.rt->drawSlot(slot, 0, nullptr, true, nullptr, nullptr, 1.0f);
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING)) << slot;  // returned before any state change
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE)) << slot;
    EXPECT_TRUE(near(centre(), dst, 0)) << slot;
  }
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(SlotDrawing, DrawSlotReadsTheLowTextureAtLowResolution) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], {255, 0, 0, 255});
  fillTexture(s.rt->textureLow[1], {0, 0, 255, 255});
  s.rt->lowResolution = 1;
  s.rt->drawSlot(1, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), {0, 0, 255, 255}));
  s.rt->lowResolution = 0;
  s.rt->drawSlot(1, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), {255, 0, 0, 255}));
}

TEST(SlotDrawing, DrawSlotFullScreenSetsAndRestoresState) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[0], src);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, 10, 0, 10, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(3, 4, 5);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glEnable(GL_TEXTURE_CUBE_MAP);
  glActiveTextureARB(GL_TEXTURE1_ARB);  // drawSlot selects unit 0 itself
  glEnable(GL_LIGHTING);
  glEnable(GL_CULL_FACE);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_COLOR_MATERIAL);
  s.rt->drawSlot(0, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), src));  // drawn over the whole window despite the matrices
  EXPECT_TRUE(near(pixel(1, 1), src, 4));
  EXPECT_EQ(getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
  EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_CUBE_MAP));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(texEnvMode(), GL_ADD);
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[12], 3);
  EXPECT_FLOAT_EQ(m[14], 5);
  glGetFloatv(GL_PROJECTION_MATRIX, m);
  EXPECT_FLOAT_EQ(m[0], 0.2f);
  GLint v = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &v);
  EXPECT_EQ(v, GL_CLAMP);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &v);
  EXPECT_EQ(v, GL_CLAMP);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &v);
  EXPECT_EQ(v, GL_LINEAR);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &v);
  EXPECT_EQ(v, GL_LINEAR);
  GLfloat colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(colour[0] + colour[1] + colour[2], 0.0f);
  EXPECT_FLOAT_EQ(colour[3], 1.0f);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

// Without fullScreen the caller's matrices, environment and colour stand, and
// alpha has no effect.
TEST(SlotDrawing, DrawSlotWithoutFullScreenKeepsCallersEnvironment) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glColor4f(0.5f, 0.5f, 0.5f, 1.0f);
  clearTo(dst);
  s.rt->drawSlot(1, 0, nullptr, false, nullptr, nullptr, 0.0f);
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  EXPECT_TRUE(near(centre(), {50, 75, 100, 128}));
  // The caller's matrices shape the quad: a scale to the lower-left quarter.
  clearTo(dst);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(-0.5f, -0.5f, 0);
  glScalef(0.5f, 0.5f, 1);
  s.rt->drawSlot(1, 0, nullptr, false, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(pixel(80, 60), {50, 75, 100, 128}));
  EXPECT_TRUE(near(pixel(240, 180), dst, 0));
  resetState();
}

TEST(SlotDrawing, DrawSlotScaleShrinksTheQuad) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  clearTo(dst);
  const float scale[3] = {0.5f, 0.5f, 1.0f};
  s.rt->drawSlot(1, 0, scale, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(centre(), src));
  EXPECT_TRUE(near(pixel(10, 10), dst, 0));
  EXPECT_TRUE(near(pixel(300, 230), dst, 0));
  EXPECT_TRUE(near(pixel(90, 70), src, 4));
  // The scale was inside the pushed matrix: gone afterwards.
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[0], 1.0f);
}

TEST(SlotDrawing, DrawSlotTexScaleAndOffsetPickPartOfThePicture) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  // Picture: red left half, green right half of the 320 x 240 area; blue beyond.
  std::vector<uint8_t> image(512 * 256 * 4);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 512; ++x) {
      uint8_t* p = &image[(size_t(y) * 512 + x) * 4];
      const bool inside = x < 320 && y < 240;
      p[0] = inside && x < 160 ? 255 : 0;
      p[1] = inside && x >= 160 ? 255 : 0;
      p[2] = inside ? 0 : 255;
      p[3] = 255;
    }
  glBindTexture(GL_TEXTURE_2D, s.rt->textureHigh[1]);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 512, 256, GL_RGBA, GL_UNSIGNED_BYTE, image.data());
  const Rgba red = {255, 0, 0, 255}, green = {0, 255, 0, 255};

  s.rt->drawSlot(1, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(near(pixel(80, 120), red));
  EXPECT_TRUE(near(pixel(240, 120), green));

  const float half[2] = {0.5f, 1.0f};
  s.rt->drawSlot(1, 0, nullptr, true, half, nullptr, 1.0f);
  EXPECT_TRUE(near(pixel(80, 120), red));
  EXPECT_TRUE(near(pixel(240, 120), red));

  const float offset[2] = {0.3125f, 0.0f};  // half of maxU = 0.625
  s.rt->drawSlot(1, 0, nullptr, true, half, offset, 1.0f);
  EXPECT_TRUE(near(pixel(80, 120), green));
  EXPECT_TRUE(near(pixel(240, 120), green));

  // An offset without a scale is ignored.
  s.rt->drawSlot(1, 0, nullptr, true, nullptr, offset, 1.0f);
  EXPECT_TRUE(near(pixel(80, 120), red));
  EXPECT_TRUE(near(pixel(240, 120), green));
}

// ---- drawSlotFaded ------------------------------------------------------------------

TEST(SlotDrawing, DrawSlotFadedSelectsItsBlend) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  glEnable(GL_TEXTURE_2D);  // the caller's part
  const float alpha = 0.5f;
  Colour frag = toColour(src);  // GL_MODULATE with (1, 1, 1, alpha)
  frag.a *= alpha;
  struct {
    int select;
    GLenum sf, df;
  } cases[] = {{0, GL_ONE, GL_ONE}, {1, GL_ONE, GL_ZERO}, {2, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.select);
    clearTo(dst);
    glDisable(GL_BLEND);
    s.rt->drawSlotFaded(1, alpha, c.select);
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(near(centre(), blend(frag, toColour(dst), c.sf, c.df)));
  }
  // Any other select keeps the caller's function.
  clearTo(dst);
  glBlendFunc(GL_ZERO, GL_ONE);
  s.rt->drawSlotFaded(1, alpha, 3);
  EXPECT_TRUE(near(centre(), dst, 0));
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(SlotDrawing, DrawSlotFadedUsesTheCurrentSourceAndIdentityMatrices) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[2], {255, 0, 0, 255});
  fillTexture(s.rt->textureLow[2], {0, 255, 0, 255});
  glEnable(GL_TEXTURE_2D);
  glMatrixMode(GL_MODELVIEW);
  glTranslatef(5, 5, 0);  // would push the quad off screen
  s.rt->lowResolution = 1;
  s.rt->drawSlotFaded(2, 1.0f, 1);
  EXPECT_TRUE(near(centre(), {0, 255, 0, 255}));
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  EXPECT_FLOAT_EQ(m[12], 5);
  // Unchecked slot numbers bind no slot texture and do not crash.
  s.rt->drawSlotFaded(12, 1.0f, 1);
  testgl::drainErrors();
  resetState();
}

// ---- crossFade ----------------------------------------------------------------------

TEST(SlotDrawing, CrossFadeBlendsToThenFromWithSrcAlphaDstAlpha) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  const Rgba to = {200, 40, 40, 255}, from = {40, 40, 200, 255};
  fillTexture(s.rt->textureHigh[3], to);
  fillTexture(s.rt->textureHigh[0], from);
  fillTexture(s.rt->textureLow[3], {0, 255, 0, 255});  // never read
  fillTexture(s.rt->textureLow[0], {0, 255, 0, 255});
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_LIGHTING);
  s.rt->lowResolution = 1;
  for (float amount : {0.0f, 0.25f, 0.8f, 1.0f}) {
    for (const Rgba& under : {Rgba{0, 0, 0, 0}, Rgba{30, 30, 30, 255}}) {
      SCOPED_TRACE(testing::Message() << "amount " << amount << " under alpha " << under[3]);
      clearTo(under);
      s.rt->crossFade(amount, 0, 3);
      Colour fragTo = toColour(to), fragFrom = toColour(from);
      fragTo.a *= amount;
      fragFrom.a *= 1 - amount;
      const Rgba first = blend(fragTo, toColour(under), GL_SRC_ALPHA, GL_DST_ALPHA);
      const Rgba expected = blend(fragFrom, toColour(first), GL_SRC_ALPHA, GL_DST_ALPHA);
      EXPECT_TRUE(near(centre(), expected, 3));
    }
  }
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(SlotDrawing, CrossFadeIgnoresSlotsOutsideThePool) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  for (int k = 0; k < 4; ++k) fillTexture(s.rt->textureHigh[k], src);
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_LIGHTING);
  clearTo(dst);
  s.rt->crossFade(0.5f, 0, 4);
  s.rt->crossFade(0.5f, 4, 0);
  s.rt->crossFade(0.5f, -1, 0);
  EXPECT_TRUE(near(centre(), dst, 0));
  EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

// ---- combineSlots --------------------------------------------------------------------

TEST(SlotDrawing, CombineSlotsMultipliesOrMasks) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  const Rgba a = {200, 100, 50, 220}, b = {128, 255, 64, 160};
  fillTexture(s.rt->textureHigh[1], a);
  fillTexture(s.rt->textureHigh[2], b);
  const Colour ca = toColour(a), cb = toColour(b);
  const Colour product = {ca.r * cb.r, ca.g * cb.g, ca.b * cb.b, ca.a * cb.a};
  const Colour masked = {(1 - ca.r) * cb.r, (1 - ca.g) * cb.g, (1 - ca.b) * cb.b, (1 - ca.a) * cb.a};

  clearTo(dst);
  s.rt->combineSlots(1, 2, false, false);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), blend(product, toColour(dst), GL_ONE, GL_ZERO)));

  clearTo(dst);
  s.rt->combineSlots(1, 2, false, true);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(near(centre(), blend(product, toColour(dst), GL_ONE, GL_ONE)));

  clearTo(dst);
  s.rt->combineSlots(1, 2, true, false);
  EXPECT_TRUE(near(centre(), blend(masked, toColour(dst), GL_ONE, GL_ZERO)));

  clearTo(dst);
  s.rt->combineSlots(1, 2, true, true);
  EXPECT_TRUE(near(centre(), blend(masked, toColour(dst), GL_ONE, GL_ONE)));

  // Afterwards: unit 1 off and modulating, unit 0 active and modulating.
  EXPECT_EQ(getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  GLint v = 0;
  glGetIntegerv(GL_BLEND_SRC, &v);
  EXPECT_EQ(v, GL_SRC_ALPHA);
  glGetIntegerv(GL_BLEND_DST, &v);
  EXPECT_EQ(v, GL_ONE_MINUS_SRC_ALPHA);
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_EQ(getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(SlotDrawing, CombineSlotsPicksSizesBySelectors) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], {255, 255, 255, 255});
  fillTexture(s.rt->textureLow[1], {128, 128, 128, 255});
  fillTexture(s.rt->textureHigh[2], {255, 0, 0, 255});
  fillTexture(s.rt->textureLow[2], {0, 0, 255, 255});
  // A low (grey), B high (red)
  s.rt->lowResolution = 1;
  s.rt->lowResolutionB = 0;
  s.rt->combineSlots(1, 2, false, false);
  EXPECT_TRUE(near(centre(), {128, 0, 0, 255}));
  // A high (white), B low (blue)
  s.rt->lowResolution = 0;
  s.rt->lowResolutionB = 1;
  s.rt->combineSlots(1, 2, false, false);
  EXPECT_TRUE(near(centre(), {0, 0, 255, 255}));
  resetState();
}

// Slots outside the pool: the units are set up, nothing is drawn.
TEST(SlotDrawing, CombineSlotsOutsideThePoolSetsUnitsOnly) {
  REQUIRE_TARGET_GL();
  SlotScene s;
  fillTexture(s.rt->textureHigh[1], src);
  clearTo(dst);
  s.rt->combineSlots(1, 4, true, true);
  EXPECT_TRUE(near(centre(), dst, 0));
  EXPECT_EQ(getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE1_ARB);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(texEnvMode(), GL_COMBINE);
  EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), GLint(s.rt->textureHigh[1]));
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_EQ(texEnvMode(), GL_REPLACE);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  s.rt->combineSlots(-2, 1, false, false);
  EXPECT_TRUE(near(centre(), dst, 0));
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_EQ(texEnvMode(), GL_MODULATE);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}
