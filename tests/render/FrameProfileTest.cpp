// The frame profile of --benchmark: triangles per primitive mode, copies
// clipped to the read surface, and pass times charged to the innermost pass.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "render/FrameProfile.h"
#include "support/GLTestContext.h"

TEST(FrameProfile, TrianglesFollowThePrimitiveMode) {
  EXPECT_EQ(frameprofile::trianglesOf(GL_TRIANGLES, 9), 3u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_QUADS, 8), 4u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_TRIANGLE_STRIP, 6), 4u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_TRIANGLE_FAN, 5), 3u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_POLYGON, 2), 0u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_QUAD_STRIP, 6), 4u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_LINES, 8), 0u);
  EXPECT_EQ(frameprofile::trianglesOf(GL_POINTS, 8), 0u);
}

TEST(FrameProfile, PassNames) {
  EXPECT_STREQ(framePassName(FramePass::shadowMap), "shadow");
  EXPECT_STREQ(framePassName(FramePass::finalPicture), "picture");
  EXPECT_STREQ(framePassName(FramePass::other), "other");
  EXPECT_STREQ(framePassName(FramePass(framePassCount)), "?");
}

TEST(FrameProfile, CountsAFrameAndClipsCopiesToTheSurface) {
  REQUIRE_GL(64, 64);
  frameprofile::enable(100, 50);
  frameprofile::beginFrame();
  frameprofile::countDraw(2);
  frameprofile::countDraw(10);
  frameprofile::countCopy(0, 0, 10, 10);      // inside: 100
  frameprofile::countCopy(-10, 40, 30, 30);   // 20 x 10 inside
  frameprofile::countCopy(200, 0, 10, 10);    // outside: none
  frameprofile::endFrame();
  frameprofile::disable();
  const FrameCounts c = frameprofile::counts();
  EXPECT_EQ(c.drawCalls, 2u);
  EXPECT_EQ(c.triangles, 12u);
  EXPECT_EQ(c.pixelsCopied, 300u);
}

TEST(FrameProfile, TimeGoesToTheInnermostPassAndNothingWhenOff) {
  REQUIRE_GL(64, 64);
  frameprofile::enable(64, 64);
  frameprofile::beginFrame();
  {
    FramePassScope outer(FramePass::glowSource);
    {
      FramePassScope inner(FramePass::shadowMap);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  frameprofile::endFrame();
  EXPECT_GE(frameprofile::passMilliseconds(FramePass::shadowMap), 20.0);
  EXPECT_LT(frameprofile::passMilliseconds(FramePass::glowSource), frameprofile::passMilliseconds(FramePass::shadowMap));
  EXPECT_EQ(frameprofile::passMilliseconds(FramePass::swap), 0.0);

  // Off: scopes and counts leave the last frame's figures alone.
  frameprofile::disable();
  frameprofile::beginFrame();
  {
    FramePassScope pass(FramePass::swap);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  frameprofile::endFrame();
  EXPECT_EQ(frameprofile::passMilliseconds(FramePass::swap), 0.0);
  EXPECT_GE(frameprofile::passMilliseconds(FramePass::shadowMap), 20.0);
}
