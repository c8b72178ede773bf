// GLTextureFixture: the fixture of the texture tests that need GL: a small
// window, a scratch directory for PNG files, and no GL error left behind.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "TestPngFiles.h"
#include "support/GLTestContext.h"

class GLTextureFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_GL(64, 64);
    dir = testpng::scratchDirectory();
    testgl::drainErrors();
  }
  void TearDown() override {
    if (testgl::width() > 0) {
      EXPECT_TRUE(testgl::drainErrors().empty()) << "GL errors left by the test";
    }
  }
  std::string dir;  // scratch directory, removed when the test process ends
};
