// The slot pool: construction, the target stack on both paths, copies, and
// the same picture through a slot on the copy and the framebuffer path.
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "RenderTargetTestHelpers.h"
#include "render/GLErrors.h"

using namespace rtt;

namespace {

bool contains(const std::vector<unsigned>& errors, unsigned e) {
  for (unsigned x : errors)
    if (x == e) return true;
  return false;
}

}  // namespace

// ---- Construction -----------------------------------------------------------

TEST(RenderTarget, CountAboveTenIsCutToTen) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(new RenderTarget(64, 64, 32, 32, 64, 64, 32, 32, 12));
  EXPECT_EQ(rt->slotCount, 10);
  std::set<GLuint> names;
  for (int s = 0; s < 10; ++s) {
    for (GLuint n : {rt->textureHigh[s], rt->textureHighAlternate[s], rt->textureLow[s], rt->textureLowAlternate[s]}) {
      EXPECT_NE(n, 0u);
      EXPECT_TRUE(glIsTexture(n));
      names.insert(n);
    }
  }
  EXPECT_EQ(names.size(), 40u);
  testgl::drainErrors();
}

TEST(RenderTarget, SmallCountLeavesUnusedSlotsEmpty) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(new RenderTarget(64, 64, 32, 32, 64, 64, 32, 32, 3));
  EXPECT_EQ(rt->slotCount, 3);
  EXPECT_NE(rt->textureHigh[2], 0u);
  EXPECT_EQ(rt->textureHigh[3], 0u);
  EXPECT_EQ(rt->textureLowAlternate[9], 0u);
  testgl::drainErrors();
}

TEST(RenderTarget, NegativeCountGivesNoSlots) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(new RenderTarget(64, 64, 32, 32, 64, 64, 32, 32, -3));
  EXPECT_EQ(rt->slotCount, 0);
  rt->drawSlot(0, 0, nullptr, true, nullptr, nullptr, 1);  // ignored, no crash
  testgl::drainErrors();
}

TEST(RenderTarget, SavedCopiesMatchAndRestoreTexturesPutsThemBack) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  for (int s = 0; s < RenderTarget::maxSlots; ++s) {
    EXPECT_EQ(rt->textureHigh[s], rt->textureHighSaved[s]);
    EXPECT_EQ(rt->textureHighAlternate[s], rt->textureHighAlternateSaved[s]);
    EXPECT_EQ(rt->textureLow[s], rt->textureLowSaved[s]);
    EXPECT_EQ(rt->textureLowAlternate[s], rt->textureLowAlternateSaved[s]);
  }
  const GLuint high1 = rt->textureHigh[1], lowAlt3 = rt->textureLowAlternate[3];
  std::swap(rt->textureHigh[0], rt->textureHigh[1]);
  rt->textureLowAlternate[3] = 0;
  rt->restoreTextures();
  EXPECT_EQ(rt->textureHigh[1], high1);
  EXPECT_EQ(rt->textureLowAlternate[3], lowAlt3);
  testgl::drainErrors();
}

TEST(RenderTarget, ThousandTwentyFourBySevenSixtyEightRoundedUp) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(new RenderTarget(1024, 1024, 512, 512, 1024, 768, 512, 384, 1));
  rt->prepareAllStorage();
  EXPECT_EQ(textureLevelSize(rt->textureHigh[0], GL_TEXTURE_WIDTH), 1024);
  EXPECT_EQ(textureLevelSize(rt->textureHigh[0], GL_TEXTURE_HEIGHT), 1024);
  EXPECT_EQ(textureLevelSize(rt->textureHighAlternate[0], GL_TEXTURE_HEIGHT), 1024);
  EXPECT_EQ(textureLevelSize(rt->textureLow[0], GL_TEXTURE_WIDTH), 512);
  EXPECT_EQ(textureLevelSize(rt->textureLowAlternate[0], GL_TEXTURE_HEIGHT), 512);
  EXPECT_FLOAT_EQ(rt->maxU, 1.0f);
  EXPECT_FLOAT_EQ(rt->maxV, 0.75f);
  EXPECT_FLOAT_EQ(rt->maxLowU, 1.0f);
  EXPECT_FLOAT_EQ(rt->maxLowV, 0.75f);
  EXPECT_FLOAT_EQ(rt->pixelU, 1.0f / 1024);
  EXPECT_FLOAT_EQ(rt->pixelV, 1.0f / 768);
  EXPECT_FLOAT_EQ(rt->pixelLowU, 1.0f / 512);
  EXPECT_FLOAT_EQ(rt->pixelLowV, 1.0f / 384);
  EXPECT_EQ(rt->halfWidth, 512);
  EXPECT_EQ(rt->halfHeight, 512);
  EXPECT_EQ(rt->lowHalfWidth, 256);
  EXPECT_EQ(rt->lowHalfHeight, 256);
  testgl::drainErrors();
}

TEST(RenderTarget, StartValues) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(new RenderTarget(64, 32, 33, 17, 60, 30, 30, 15, 2));
  EXPECT_EQ(rt->firstFreeSlot, 0);
  EXPECT_EQ(rt->stackDepth, 0);
  EXPECT_EQ(rt->lowResolution, 0);
  EXPECT_EQ(rt->lowResolutionQuad, 0);
  EXPECT_EQ(rt->lowResolutionB, 0);
  EXPECT_EQ(rt->lowResolutionQuadB, 0);
  EXPECT_EQ(rt->copyOriginX, 0);
  EXPECT_EQ(rt->copyOriginY, 0);
  EXPECT_EQ(rt->lowCopyOriginX, 0);
  EXPECT_EQ(rt->lowCopyOriginY, 0);
  EXPECT_EQ(rt->halfWidth, 32);
  EXPECT_EQ(rt->halfHeight, 16);
  EXPECT_EQ(rt->lowHalfWidth, 16);  // integer halves
  EXPECT_EQ(rt->lowHalfHeight, 8);
  EXPECT_EQ(rt->effectiveWidth, 60);
  EXPECT_EQ(rt->effectiveLowHeight, 15);
  EXPECT_FLOAT_EQ(rt->maxU, 60.0f / 64);
  EXPECT_FLOAT_EQ(rt->maxLowV, 15.0f / 17);
  EXPECT_FLOAT_EQ(rt->ghostFade, 0);
  EXPECT_FLOAT_EQ(rt->ghostColour[0] + rt->ghostColour[1] + rt->ghostColour[2], 0);
  EXPECT_FALSE(rt->useFramebuffers);
  for (int i = 0; i < RenderTarget::maxSlots; ++i) {
    EXPECT_FALSE(rt->stackActive[i]);
    EXPECT_FALSE(rt->stackWithDepth[i]);
    EXPECT_FALSE(rt->stackAlternate[i]);
    EXPECT_FALSE(rt->stackLow[i]);
  }
  testgl::drainErrors();
}

// With the error checks on, the refused call's own error is dropped: nothing
// is reported and nothing stays pending.
TEST(RenderTarget, RefusedAlignmentCallIsNoReportedError) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  setGLErrorChecks(true);
  testgl::drainErrors();
  const int32_t reportedBefore = reportedGLErrorCount();
  std::unique_ptr<RenderTarget> rt(makePool(2));
  EXPECT_TRUE(testgl::drainErrors().empty());
  EXPECT_EQ(reportedGLErrorCount(), reportedBefore);
}

// The constructor's glPixelStorei(GL_UNPACK_ALIGNMENT, 0) is refused by GL
// and changes nothing; the textures are clamped and linear.
TEST(RenderTarget, ConstructorKeepsRefusedAlignmentCallAndSetsSamplers) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  testgl::drainErrors();
  setGLErrorChecks(false);  // the refused call's error then stays pending, to be seen here
  std::unique_ptr<RenderTarget> rt(makePool(2));
  const auto errors = testgl::drainErrors();
  setGLErrorChecks(true);
  EXPECT_TRUE(contains(errors, GL_INVALID_VALUE));
  EXPECT_EQ(getInt(GL_UNPACK_ALIGNMENT), 4);
  rt->prepareAllStorage();
  for (GLuint t : {rt->textureHigh[1], rt->textureHighAlternate[1], rt->textureLow[1], rt->textureLowAlternate[1]}) {
    glBindTexture(GL_TEXTURE_2D, t);
    GLint v = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &v);
    EXPECT_EQ(v, GL_CLAMP);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &v);
    EXPECT_EQ(v, GL_CLAMP);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &v);
    EXPECT_EQ(v, GL_LINEAR);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &v);
    EXPECT_EQ(v, GL_LINEAR);
    GLint format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    EXPECT_TRUE(format == GL_RGBA || format == GL_RGBA8);
  }
  EXPECT_EQ(textureLevelSize(rt->textureHigh[1], GL_TEXTURE_WIDTH), 512);
  EXPECT_EQ(textureLevelSize(rt->textureHighAlternate[1], GL_TEXTURE_HEIGHT), 256);
  EXPECT_EQ(textureLevelSize(rt->textureLow[1], GL_TEXTURE_WIDTH), 256);
  EXPECT_EQ(textureLevelSize(rt->textureLowAlternate[1], GL_TEXTURE_HEIGHT), 128);
}

TEST(RenderTarget, DestructorDeletesTextures) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  GLuint names[4];
  {
    RenderTarget rt(64, 64, 32, 32, 64, 64, 32, 32, 2);
    names[0] = rt.textureHigh[1];
    names[1] = rt.textureHighAlternate[0];
    names[2] = rt.textureLow[1];
    names[3] = rt.textureLowAlternate[1];
    for (GLuint n : names) EXPECT_TRUE(glIsTexture(n));
  }
  for (GLuint n : names) EXPECT_FALSE(glIsTexture(n));
  testgl::drainErrors();
}

// ---- Copy path: targets do nothing ----------------------------------------------

TEST(RenderTargetCopyPath, BeginAndEndDoNothing) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  const GLint attribDepth = getInt(GL_ATTRIB_STACK_DEPTH);
  glViewport(3, 4, 100, 50);
  rt->beginTarget(1, true, false);
  EXPECT_EQ(rt->stackDepth, 0);
  EXPECT_FALSE(rt->stackActive[0]);
  EXPECT_EQ(getInt(GL_ATTRIB_STACK_DEPTH), attribDepth);  // no glPushAttrib
  rt->lowResolution = 1;
  rt->beginTarget(2, false, true);
  EXPECT_EQ(rt->stackDepth, 0);
  rt->endTarget();
  rt->endTarget();
  rt->rebindTarget();
  EXPECT_EQ(rt->stackDepth, 0);
  EXPECT_EQ(getInt(GL_ATTRIB_STACK_DEPTH), attribDepth);
  GLint vp[4];
  glGetIntegerv(GL_VIEWPORT, vp);
  EXPECT_EQ(vp[0], 3);
  EXPECT_EQ(vp[2], 100);
  if (hasFramebufferObject) {
    EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
  }
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(RenderTargetCopyPath, FullSizeCopyFillsMainTextureAndEnablesBlend) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  rt->prepareAllStorage();
  fillTexture(rt->textureHigh[2], {1, 2, 3, 4});
  fillTexture(rt->textureLow[2], {9, 9, 9, 9});
  clearTo({200, 100, 50, 255});
  glEnable(GL_SCISSOR_TEST);
  glScissor(10, 20, 5, 6);
  clearTo({0, 255, 0, 128});
  glDisable(GL_SCISSOR_TEST);
  glDisable(GL_BLEND);
  testgl::drainErrors();
  rt->copyToSlot(2);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), GLint(rt->textureHigh[2]));
  int w = 0;
  auto data = readTexture(rt->textureHigh[2], &w);
  EXPECT_TRUE(near(texel(data, w, 0, 0), {200, 100, 50, 255}, 0));
  EXPECT_TRUE(near(texel(data, w, 319, 239), {200, 100, 50, 255}, 0));
  EXPECT_TRUE(near(texel(data, w, 12, 22), {0, 255, 0, 128}, 0));
  EXPECT_TRUE(near(texel(data, w, 9, 22), {200, 100, 50, 255}, 0));
  // The low texture is left alone.
  auto low = readTexture(rt->textureLow[2], &w);
  EXPECT_TRUE(near(texel(low, w, 0, 0), {9, 9, 9, 9}, 0));
  testgl::drainErrors();
}

TEST(RenderTargetCopyPath, HalfSizeCopyFillsLowTextureAndLeavesBlend) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  rt->prepareAllStorage();
  fillTexture(rt->textureHigh[1], {1, 2, 3, 4});
  clearTo({10, 20, 30, 40});
  glEnable(GL_SCISSOR_TEST);
  glScissor(255, 127, 1, 1);
  clearTo({250, 0, 0, 255});
  glScissor(256, 0, 64, 240);  // outside the half-size area
  clearTo({0, 0, 250, 255});
  glDisable(GL_SCISSOR_TEST);
  glDisable(GL_BLEND);
  rt->lowResolution = 1;
  rt->copyToSlot(1);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));  // this branch does not touch blending
  glEnable(GL_BLEND);
  rt->copyToSlot(1);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  int w = 0, h = 0;
  auto low = readTexture(rt->textureLow[1], &w, &h);
  EXPECT_EQ(w, 256);
  EXPECT_EQ(h, 128);
  EXPECT_TRUE(near(texel(low, w, 0, 0), {10, 20, 30, 40}, 0));
  EXPECT_TRUE(near(texel(low, w, 255, 127), {250, 0, 0, 255}, 0));
  EXPECT_TRUE(near(texel(low, w, 254, 127), {10, 20, 30, 40}, 0));
  auto high = readTexture(rt->textureHigh[1], &w);
  EXPECT_TRUE(near(texel(high, w, 0, 0), {1, 2, 3, 4}, 0));
  testgl::drainErrors();
}

TEST(RenderTargetCopyPath, CopyReadsFromTheCopyOrigin) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  std::unique_ptr<RenderTarget> rt(makePool(2));
  clearTo({0, 0, 0, 255});
  glEnable(GL_SCISSOR_TEST);
  glScissor(40, 30, 1, 1);
  clearTo({255, 255, 0, 255});
  glDisable(GL_SCISSOR_TEST);
  rt->lowResolution = 1;
  rt->lowCopyOriginX = 40;
  rt->lowCopyOriginY = 30;
  rt->copyToSlot(0);
  int w = 0;
  auto low = readTexture(rt->textureLow[0], &w);
  EXPECT_TRUE(near(texel(low, w, 0, 0), {255, 255, 0, 255}, 0));
  testgl::drainErrors();
}

// ---- Framebuffer path -------------------------------------------------------------

TEST(RenderTargetFramebufferPath, ConstructorBuildsCompleteFramebuffers) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  setGLErrorChecks(false);  // the refused alignment's error then stays pending
  std::unique_ptr<RenderTarget> rt(makePool(3));
  EXPECT_TRUE(rt->useFramebuffers);
  const auto errors = testgl::drainErrors();
  setGLErrorChecks(true);
  EXPECT_TRUE(contains(errors, GL_INVALID_VALUE));  // the refused alignment
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
  EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), 0);
  rt->prepareAllStorage();  // what the first use of each surface does
  for (int s = 0; s < 3; ++s) {
    const GLuint fbs[4] = {rt->framebufferHigh[s], rt->framebufferHighAlternate[s], rt->framebufferLow[s],
                           rt->framebufferLowAlternate[s]};
    const GLuint texs[4] = {rt->textureHigh[s], rt->textureHighAlternate[s], rt->textureLow[s],
                            rt->textureLowAlternate[s]};
    const GLuint depths[4] = {rt->depthHigh[s], rt->depthHigh[s], rt->depthLow[s], rt->depthLow[s]};
    for (int k = 0; k < 4; ++k) {
      glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbs[k]);
      EXPECT_EQ(glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), GLenum(GL_FRAMEBUFFER_COMPLETE_EXT));
      GLint v = 0;
      glGetFramebufferAttachmentParameterivEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                                               GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT, &v);
      EXPECT_EQ(GLuint(v), texs[k]);
      glGetFramebufferAttachmentParameterivEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
                                               GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT, &v);
      EXPECT_EQ(GLuint(v), depths[k]);
    }
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, rt->depthLow[s]);
    GLint w = 0;
    glGetRenderbufferParameterivEXT(GL_RENDERBUFFER_EXT, GL_RENDERBUFFER_WIDTH_EXT, &w);
    EXPECT_EQ(w, 256);
  }
  EXPECT_EQ(rt->framebufferHigh[3], 0u);
  resetState();
}

TEST(RenderTargetFramebufferPath, EndOnEmptyStackChangesNothing) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  std::unique_ptr<RenderTarget> rt(makePool(3));
  testgl::drainErrors();
  const GLint attribDepth = getInt(GL_ATTRIB_STACK_DEPTH);
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, rt->framebufferLow[2]);  // someone else's binding
  glViewport(1, 2, 30, 40);
  rt->endTarget();
  EXPECT_EQ(rt->stackDepth, 0);
  EXPECT_EQ(getInt(GL_ATTRIB_STACK_DEPTH), attribDepth);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(rt->framebufferLow[2]));
  GLint vp[4];
  glGetIntegerv(GL_VIEWPORT, vp);
  EXPECT_EQ(vp[2], 30);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(RenderTargetFramebufferPath, BeginPicksSurfaceByAlternateAndLowResolution) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  const GLint attribDepth = getInt(GL_ATTRIB_STACK_DEPTH);
  struct Case {
    int low;
    bool alternate;
    const GLuint* fbs;
  } cases[] = {{0, false, rt->framebufferHigh},
               {1, false, rt->framebufferLow},
               {0, true, rt->framebufferHighAlternate},
               {1, true, rt->framebufferLowAlternate}};
  for (const Case& c : cases) {
    rt->lowResolution = c.low;
    rt->beginTarget(3, true, c.alternate);
    EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(c.fbs[3]));
    EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), GLint(c.low ? rt->depthLow[3] : rt->depthHigh[3]));
    EXPECT_EQ(rt->stackDepth, 1);
    EXPECT_EQ(getInt(GL_ATTRIB_STACK_DEPTH), attribDepth + 1);
    EXPECT_TRUE(rt->stackActive[0]);
    EXPECT_TRUE(rt->stackWithDepth[0]);
    EXPECT_EQ(rt->stackAlternate[0], c.alternate);
    EXPECT_EQ(rt->stackLow[0], c.low != 0);
    EXPECT_EQ(rt->stackSlot[0], 3);
    rt->endTarget();
    EXPECT_EQ(rt->stackDepth, 0);
    EXPECT_FALSE(rt->stackActive[0]);
    EXPECT_FALSE(rt->stackWithDepth[0]);
    EXPECT_FALSE(rt->stackAlternate[0]);
    EXPECT_FALSE(rt->stackLow[0]);
    EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
    EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), 0);
    EXPECT_EQ(getInt(GL_ATTRIB_STACK_DEPTH), attribDepth);
  }
  // Without depth the renderbuffer binding is 0; the attachment stays.
  glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, rt->depthHigh[0]);
  rt->lowResolution = 0;
  rt->beginTarget(1, false, false);
  EXPECT_FALSE(rt->stackWithDepth[0]);
  EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), 0);
  GLint v = 0;
  glGetFramebufferAttachmentParameterivEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
                                           GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT, &v);
  EXPECT_EQ(GLuint(v), rt->depthHigh[1]);
  rt->endTarget();
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(RenderTargetFramebufferPath, ViewportSavedNotSet) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  std::unique_ptr<RenderTarget> rt(makePool(3));
  glViewport(5, 6, 70, 80);
  rt->beginTarget(0, true, false);
  GLint vp[4];
  glGetIntegerv(GL_VIEWPORT, vp);
  EXPECT_EQ(vp[0], 5);
  EXPECT_EQ(vp[3], 80);
  glViewport(0, 0, 160, 120);
  rt->endTarget();
  glGetIntegerv(GL_VIEWPORT, vp);
  EXPECT_EQ(vp[0], 5);
  EXPECT_EQ(vp[1], 6);
  EXPECT_EQ(vp[2], 70);
  EXPECT_EQ(vp[3], 80);
  testgl::drainErrors();
  resetState();
}

// The end of an inner target binds the outer surface again from the outer
// entry's own record, even though lowResolution changed in between; its depth
// renderbuffer, though, follows lowResolution as it is now.
TEST(RenderTargetFramebufferPath, NestedTargetsRestoreOuterSurface) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  rt->lowResolution = 0;
  rt->beginTarget(1, true, false);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(rt->framebufferHigh[1]));
  rt->lowResolution = 1;
  rt->beginTarget(2, true, true);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(rt->framebufferLowAlternate[2]));
  EXPECT_EQ(rt->stackDepth, 2);
  rt->endTarget();
  EXPECT_EQ(rt->stackDepth, 1);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(rt->framebufferHigh[1]));
  EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), GLint(rt->depthLow[1]));
  EXPECT_TRUE(rt->stackActive[0]);
  EXPECT_FALSE(rt->stackActive[1]);
  // rebindTarget binds the top again without touching the stack.
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
  rt->lowResolution = 0;
  rt->rebindTarget();
  EXPECT_EQ(rt->stackDepth, 1);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), GLint(rt->framebufferHigh[1]));
  EXPECT_EQ(getInt(GL_RENDERBUFFER_BINDING_EXT), GLint(rt->depthHigh[1]));
  rt->endTarget();
  EXPECT_EQ(rt->stackDepth, 0);
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, rt->framebufferLow[0]);
  rt->rebindTarget();  // empty stack: the window
  EXPECT_EQ(getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}

TEST(RenderTargetFramebufferPath, DrawingLandsInTheSlotTexture) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  std::unique_ptr<RenderTarget> rt(makePool(3));
  clearTo({1, 2, 3, 4});
  rt->lowResolution = 1;
  rt->beginTarget(2, false, true);
  clearTo({60, 70, 80, 90});
  rt->endTarget();
  rt->lowResolution = 0;
  EXPECT_TRUE(near(pixel(5, 5), {1, 2, 3, 4}, 0));  // the window is untouched
  int w = 0;
  auto alt = readTexture(rt->textureLowAlternate[2], &w);
  EXPECT_TRUE(near(texel(alt, w, 255, 127), {60, 70, 80, 90}, 0));
  testgl::drainErrors();
  resetState();
}

TEST(RenderTargetFramebufferPath, DestructorDeletesFramebuffers) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  GLuint fbo = 0, depth = 0, tex = 0;
  {
    RenderTarget rt(64, 64, 32, 32, 64, 64, 32, 32, 2);
    fbo = rt.framebufferLowAlternate[1];
    depth = rt.depthLow[1];
    tex = rt.textureLow[0];
    EXPECT_TRUE(glIsFramebufferEXT(fbo));
    EXPECT_TRUE(glIsRenderbufferEXT(depth));
  }
  EXPECT_FALSE(glIsFramebufferEXT(fbo));
  EXPECT_FALSE(glIsRenderbufferEXT(depth));
  EXPECT_FALSE(glIsTexture(tex));
  testgl::drainErrors();
}

// Framebuffers asked for on a driver without them: a line, and the copy path.
TEST(RenderTargetFramebufferPath, MissingExtensionFallsBackToCopyPath) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(true);
  const PFNGLGENFRAMEBUFFERSEXTPROC saved = __glewGenFramebuffersEXT;
  __glewGenFramebuffersEXT = nullptr;
  testing::internal::CaptureStdout();
  std::unique_ptr<RenderTarget> rt(makePool(2));
  const std::string out = testing::internal::GetCapturedStdout();
  __glewGenFramebuffersEXT = saved;
  EXPECT_FALSE(rt->useFramebuffers);
  EXPECT_NE(out.find("framebuffer objects unavailable"), std::string::npos);
  EXPECT_EQ(rt->framebufferHigh[0], 0u);
  rt->beginTarget(0, true, false);
  EXPECT_EQ(rt->stackDepth, 0);
  rt.reset();
  testgl::drainErrors();
}

// An incomplete framebuffer ends the process at once, status 0, no text.
TEST(RenderTargetFramebufferPathDeathTest, IncompleteFramebufferExitsWithZero) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        useFramebufferObjects = true;
        RenderTarget rt(0, 0, 0, 0, 1, 1, 1, 1, 1);  // zero-sized attachments
        fprintf(stderr, "survived\n");
        exit(3);
      },
      ::testing::ExitedWithCode(0), "^$");
}

// ---- One picture through a slot on both paths ---------------------------------

namespace {

// Renders the test picture into slot 0 at full size and presents it with
// drawSlot, as the frame composition does.
testimg::Image pictureThroughSlot(bool framebuffers) {
  ScopedFramebuffers fb(framebuffers);
  resetState();
  std::unique_ptr<RenderTarget> rt(makePool(3));
  testgl::drainErrors();
  rt->firstFreeSlot = 1;
  rt->lowResolution = 0;
  glViewport(0, 0, 320, 240);
  rt->beginTarget(0, true, false);
  glClearColor(0, 0, 0, 0);
  glClearDepth(1.0);
  glDepthMask(GL_TRUE);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawTestPicture();
  rt->endTarget();
  if (!framebuffers) rt->copyToSlot(0);
  glDisable(GL_DEPTH_TEST);
  clearTo({0, 0, 0, 0});
  rt->drawSlot(0, 0, nullptr, true, nullptr, nullptr, 1.0f);
  EXPECT_TRUE(testgl::drainErrors().empty());
  return readWindow();
}

}  // namespace

TEST(RenderTargetPaths, PictureThroughSlotMatchesOnBothPaths) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  // Straight into the window, for the record.
  resetState();
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawTestPicture();
  const testimg::Image direct = readWindow();
  const testimg::Image copied = pictureThroughSlot(false);
  const testimg::Image framebuffer = pictureThroughSlot(true);
  testimg::Tolerance tight;
  tight.maxMeanDiff = 1.0;
  tight.pixelThreshold = 8;
  tight.maxBadShare = 0.001;
  const auto copyVsDirect = testimg::compare(copied, direct, tight);
  EXPECT_TRUE(copyVsDirect.passed) << copyVsDirect.message;
  const auto fbVsCopy = testimg::compare(framebuffer, copied, tight);
  EXPECT_TRUE(fbVsCopy.passed) << fbVsCopy.message;
  // The picture is not empty: the white bar stands in the middle.
  EXPECT_TRUE(near(pixel(100, 114), {255, 255, 255, 255}, 2));
  resetState();
}

// ---- Storage on first use ------------------------------------------------------------

namespace {

std::vector<GLuint> allSlotTextures(const RenderTarget& rt) {
  std::vector<GLuint> names;
  for (int s = 0; s < rt.slotCount; ++s)
    for (GLuint t : {rt.textureHigh[s], rt.textureHighAlternate[s], rt.textureLow[s], rt.textureLowAlternate[s]})
      names.push_back(t);
  return names;
}

// Sets lazySlotStorage for the lifetime of the object.
struct ScopedLazyStorage {
  explicit ScopedLazyStorage(bool on) : saved(lazySlotStorage) { lazySlotStorage = on; }
  ~ScopedLazyStorage() { lazySlotStorage = saved; }
  bool saved;
};

}  // namespace

// The default: every slot texture has its full or half-size storage when the
// constructor returns.
TEST(RenderTargetStorage, ByDefaultEverySlotHasItsStorageFromTheStart) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  ScopedLazyStorage lazy(false);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  for (int s = 0; s < rt->slotCount; ++s) {
    for (GLuint t : {rt->textureHigh[s], rt->textureHighAlternate[s]}) {
      EXPECT_TRUE(rt->hasStorage(t));
      EXPECT_EQ(textureLevelSize(t, GL_TEXTURE_WIDTH), 512);
    }
    for (GLuint t : {rt->textureLow[s], rt->textureLowAlternate[s]}) {
      EXPECT_TRUE(rt->hasStorage(t));
      EXPECT_EQ(textureLevelSize(t, GL_TEXTURE_WIDTH), 256);
    }
  }
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(RenderTargetStorage, FreshPoolHasNoStorageUntilACopy) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  ScopedLazyStorage lazy(true);
  std::unique_ptr<RenderTarget> rt(makePool(4));
  testgl::drainErrors();
  for (GLuint t : allSlotTextures(*rt)) {
    EXPECT_TRUE(glIsTexture(t));
    EXPECT_FALSE(rt->hasStorage(t));
    EXPECT_EQ(textureLevelSize(t, GL_TEXTURE_WIDTH), 0);
  }
  clearTo({10, 20, 30, 255});
  rt->copyToSlot(1);
  rt->lowResolution = 1;
  rt->copyToSlot(2);
  rt->lowResolution = 0;
  for (GLuint t : allSlotTextures(*rt)) {
    const bool used = t == rt->textureHigh[1] || t == rt->textureLow[2];
    EXPECT_EQ(rt->hasStorage(t), used);
    EXPECT_EQ(textureLevelSize(t, GL_TEXTURE_WIDTH), used ? (t == rt->textureHigh[1] ? 512 : 256) : 0);
  }
  EXPECT_EQ(textureLevelSize(rt->textureLow[2], GL_TEXTURE_HEIGHT), 128);
  int w = 0;
  const auto high = readTexture(rt->textureHigh[1], &w);
  EXPECT_TRUE(near(texel(high, w, 100, 100), {10, 20, 30, 255}, 0));
  EXPECT_FALSE(rt->hasStorage(0));
  EXPECT_FALSE(rt->hasStorage(rt->textureHigh[1] + 1000));  // not one of the pool's
  EXPECT_TRUE(testgl::drainErrors().empty());
}

// A slot drawn before anything was copied into it reads the same cleared
// storage as one whose storage was made up front, and gets its storage then.
TEST(RenderTargetStorage, SlotReadBeforeAnyCopyGivesTheSamePicture) {
  REQUIRE_TARGET_GL();
  ScopedFramebuffers fb(false);
  ScopedLazyStorage lazyStorage(true);
  auto drawUnused = [](bool upFront, std::vector<uint8_t>* contents) {
    resetState();
    std::unique_ptr<RenderTarget> rt(makePool(4));
    if (upFront) rt->prepareAllStorage();
    testgl::drainErrors();
    clearTo({90, 120, 150, 255});
    rt->drawSlot(2, slotBlendAdd, nullptr, true, nullptr, nullptr, 0.5f);
    EXPECT_TRUE(rt->hasStorage(rt->textureHigh[2]));
    EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), GLint(rt->textureHigh[2]));
    const testimg::Image picture = readWindow();
    *contents = readTexture(rt->textureHigh[2]);
    EXPECT_TRUE(testgl::drainErrors().empty());
    return picture;
  };
  std::vector<uint8_t> lazyContents, upFrontContents;
  const testimg::Image lazy = drawUnused(false, &lazyContents);
  const testimg::Image upFront = drawUnused(true, &upFrontContents);
  EXPECT_EQ(lazy.rgba, upFront.rgba);
  EXPECT_EQ(lazyContents.size(), size_t(512 * 256 * 4));
  EXPECT_EQ(lazyContents, upFrontContents);
  resetState();
}

TEST(RenderTargetStorage, FramebufferSurfaceGetsItsStorageWhenBegun) {
  REQUIRE_TARGET_GL();
  REQUIRE_FRAMEBUFFERS();
  ScopedFramebuffers fb(true);
  ScopedLazyStorage lazy(true);
  setGLErrorChecks(false);
  std::unique_ptr<RenderTarget> rt(makePool(3));
  testgl::drainErrors();
  setGLErrorChecks(true);
  // Only the surface whose completeness the constructor tests has storage.
  for (GLuint t : allSlotTextures(*rt)) EXPECT_EQ(rt->hasStorage(t), t == rt->textureLowAlternate[2]);
  glBindTexture(GL_TEXTURE_2D, 0);
  rt->beginTarget(1, true, false);
  EXPECT_TRUE(rt->hasStorage(rt->textureHigh[1]));
  EXPECT_FALSE(rt->hasStorage(rt->textureHighAlternate[1]));
  EXPECT_EQ(getInt(GL_TEXTURE_BINDING_2D), 0);  // the caller's binding stands
  EXPECT_EQ(glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), GLenum(GL_FRAMEBUFFER_COMPLETE_EXT));
  clearTo({40, 50, 60, 70});
  rt->endTarget();
  int w = 0;
  const auto high = readTexture(rt->textureHigh[1], &w);
  EXPECT_EQ(w, 512);
  EXPECT_TRUE(near(texel(high, w, 300, 200), {40, 50, 60, 70}, 0));
  EXPECT_TRUE(testgl::drainErrors().empty());
  resetState();
}
