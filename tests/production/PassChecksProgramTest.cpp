// The executable's GL error checks at pass boundaries, which tests turn on:
// a run through the whole production reports none.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/RunProgram.h"

TEST(ProgramPassChecks, WholeProductionRunsWithoutAGLError) {
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  ASSERT_STREQ(std::getenv("OSTRAVINE_GL_ERRORS"), "1");  // set for every program a test runs
  // One frame a second, small: every scheduled scene, the rewind and the end.
  testrun::Result r = testrun::runOstravine("-nomusic --windowed --size 64x48 --fixed-fps 1 --trace", 300);
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_EQ(r.err.find("GL error"), std::string::npos) << r.err;
  EXPECT_NE(r.out.find("trace: position 264000"), std::string::npos);
}
