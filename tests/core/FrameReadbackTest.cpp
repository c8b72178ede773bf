// FrameReadback: each frame's pixels come out in "bgr0" order, bottom row
// first; through pixel buffers one frame late, the last one by flush; the
// pack buffer binding is left at 0 for the other readers.
#include <gtest/gtest.h>

#include <GL/glew.h>

#include <vector>

#include "core/FrameReadback.h"
#include "support/GLTestContext.h"

namespace {

// Clears the window to one colour, with a red bottom row, as a frame.
void drawFrame(int shade) {
  glDisable(GL_SCISSOR_TEST);
  glClearColor(0.0f, shade / 255.0f, 0.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  glEnable(GL_SCISSOR_TEST);
  glScissor(0, 0, 64, 1);
  glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  glDisable(GL_SCISSOR_TEST);
}

struct Delivered {
  std::vector<int> greens;  // green of the top-left pixel of each frame handed over
  bool bottomRowRed = true;
};

FrameReadback::Sink collect(Delivered& d) {
  return [&d](const uint8_t* p) {
    // Row 0 is the bottom row: red there, in blue, green, red, unused order.
    if (!(p[0] == 0 && p[1] == 0 && p[2] == 255)) d.bottomRowRed = false;
    const uint8_t* top = p + size_t(63) * 64 * 4;  // row 63, the top
    d.greens.push_back(top[1]);
    return true;
  };
}

}  // namespace

TEST(FrameReadback, FramesComeOutWholeInOrderAndUpsideDown) {
  REQUIRE_GL(64, 64);
  glViewport(0, 0, 64, 64);
  FrameReadback readback(64, 64);
  Delivered d;
  for (int shade : {40, 80, 120}) {
    drawFrame(shade);
    ASSERT_TRUE(readback.readFrame(collect(d)));
    GLint bound = -1;
    glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &bound);
    EXPECT_EQ(bound, 0);
    testgl::swap();
  }
  ASSERT_TRUE(readback.flush(collect(d)));
  ASSERT_TRUE(readback.flush(collect(d)));  // nothing left the second time
  EXPECT_EQ(d.greens, (std::vector<int>{40, 80, 120}));
  EXPECT_TRUE(d.bottomRowRed);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(FrameReadback, PixelBuffersDeliverOneFrameLate) {
  REQUIRE_GL(64, 64);
  glViewport(0, 0, 64, 64);
  FrameReadback readback(64, 64);
  if (!readback.usesPixelBuffers()) GTEST_SKIP() << "the driver has no pixel buffer objects";
  Delivered d;
  drawFrame(10);
  readback.readFrame(collect(d));
  EXPECT_TRUE(d.greens.empty()) << "the first read is only started";
  testgl::swap();
  drawFrame(20);
  readback.readFrame(collect(d));
  EXPECT_EQ(d.greens, (std::vector<int>{10}));
  testgl::swap();
  readback.flush(collect(d));
  EXPECT_EQ(d.greens, (std::vector<int>{10, 20}));
}

TEST(FrameReadback, ASinkThatFailsIsPassedOn) {
  REQUIRE_GL(64, 64);
  FrameReadback readback(64, 64);
  auto refuse = [](const uint8_t*) { return false; };
  drawFrame(10);
  bool first = readback.readFrame(refuse);
  if (readback.usesPixelBuffers()) {
    EXPECT_TRUE(first);  // nothing was handed over yet
    drawFrame(20);
    EXPECT_FALSE(readback.readFrame(refuse));
  } else {
    EXPECT_FALSE(first);
  }
}
