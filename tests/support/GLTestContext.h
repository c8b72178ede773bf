// GLTestContext: a small OpenGL window for tests of the GL layers.
//
// Opens an SDL 1.2 window of the given size in pixels (windowed, double
// buffered, RGBA 8 bits, depth buffer), initialises GLEW, sets the capability
// flags of foundation/Capabilities.h from the driver the way the display
// start-up does (useFramebufferObjects stays false, useVertexBuffers true),
// and sets the display defaults (perspective 45 degrees, depth test, lighting,
// colour material, back-face culling). Needs an X display: the test command
// runs under Xvfb. Tests call GLTestContext::open() at their start; when no
// display is available the test is skipped with a message; when there is a
// display but no context can be made, the test fails.
#pragma once
#include <string>
#include <vector>
#include <cstdint>

namespace testgl {

// Opens the window once per process; later calls return the same state.
// Returns false when no GL context could be made.
bool open(int width = 320, int height = 240);

// Whether a display is there at all (DISPLAY set); without one, GL tests skip.
bool displayExpected();

// For tests that open the display through the engine itself: waits until
// SDL's video can start on the display (a busy display can refuse a
// connection for a moment), then leaves SDL as it found it. False when it
// never could.
bool waitForDisplay();

// Why the last open failed.
std::string openFailure();

int width();
int height();

// Reads the back buffer (or the bound framebuffer) as RGBA rows, top row first,
// as image files store them.
std::vector<uint8_t> readPixels(int x, int y, int w, int h);

// Every GL error code the engine's boundary checks reported since the last
// drain, then every glGetError code pending, drained; empty when the state is
// clean.
std::vector<unsigned> drainErrors();

void swap();

}  // namespace testgl

#define REQUIRE_GL(w, h)                                                        \
  do {                                                                          \
    if (!testgl::open((w), (h))) {                                              \
      if (!testgl::displayExpected()) GTEST_SKIP() << "no GL display";         \
      FAIL() << "no GL context on the display: " << testgl::openFailure();      \
    }                                                                           \
  } while (0)
