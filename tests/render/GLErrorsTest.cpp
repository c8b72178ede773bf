// The GL error checks at pass boundaries: one line per pending error on the
// error stream, with the boundary it was found at, and nothing when off.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <string>

#include "WorldTestHelpers.h"
#include "render/GLErrors.h"

namespace {
// An enumerant that no GL call takes: glEnable refuses it with GL_INVALID_ENUM.
constexpr GLenum notACapability = 0x7FFF;
}  // namespace

TEST(GLErrors, TestsHaveTheChecksOn) { EXPECT_TRUE(glErrorChecksOn()); }

TEST(GLErrors, EachPendingErrorIsReportedWithItsBoundary) {
  REQUIRE_GL(64, 64);
  setGLErrorChecks(true);
  testgl::drainErrors();
  const int32_t before = reportedGLErrorCount();
  glEnable(notACapability);
  testing::internal::CaptureStderr();
  EXPECT_EQ(checkGLErrors("test boundary"), 1);
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(written, "GL error GL_INVALID_ENUM (0x0500) after test boundary\n");
  EXPECT_EQ(reportedGLErrorCount(), before + 1);
  EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
  // Tests see reported errors as they see pending ones.
  EXPECT_EQ(testgl::drainErrors(), std::vector<unsigned>{GL_INVALID_ENUM});
  EXPECT_EQ(checkGLErrors("clean boundary"), 0);
}

TEST(GLErrors, OffTheErrorsStayPendingAndNothingIsWritten) {
  REQUIRE_GL(64, 64);
  setGLErrorChecks(false);
  testgl::drainErrors();
  glEnable(notACapability);
  testing::internal::CaptureStderr();
  EXPECT_EQ(checkGLErrors("test boundary"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
  setGLErrorChecks(true);
}

TEST(GLErrors, NamesOfTheCodes) {
  EXPECT_STREQ(glErrorName(GL_INVALID_VALUE), "GL_INVALID_VALUE");
  EXPECT_STREQ(glErrorName(GL_INVALID_OPERATION), "GL_INVALID_OPERATION");
  EXPECT_STREQ(glErrorName(GL_OUT_OF_MEMORY), "GL_OUT_OF_MEMORY");
  EXPECT_STREQ(glErrorName(0x1234), "unknown");
}

// An error left by the caller is reported at the World's first pass boundary
// (in a world without lights, whose set-up would check first).
TEST(GLErrors, WorldPassesCheckAtTheirBoundaries) {
  REQUIRE_WORLD_GL();
  wt::Stage s(false);
  setGLErrorChecks(true);
  testgl::drainErrors();
  glEnable(notACapability);
  testing::internal::CaptureStderr();
  s.world.render(s.camera.get(), s.pool.get(), WorldRenderOptions());
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(written, "GL error GL_INVALID_ENUM (0x0500) after World shadow map pass\n");
  EXPECT_EQ(testgl::drainErrors(), std::vector<unsigned>{GL_INVALID_ENUM});
}

TEST(GLErrors, GlowPassChecksAtItsEnd) {
  REQUIRE_WORLD_GL();
  wt::Stage s;
  setGLErrorChecks(true);
  testgl::drainErrors();
  glEnable(notACapability);
  testing::internal::CaptureStderr();
  s.pool->glowPass(2, GlowOptions::shadowMaskBlur(0.1f, 2));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "GL error GL_INVALID_ENUM (0x0500) after glow pass\n");
  testgl::drainErrors();
}
