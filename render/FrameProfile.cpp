#include "render/FrameProfile.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace frameprofile {

bool on = false;
FrameCounts current;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t maxDepth = 32;

int32_t surfaceWidth = 0;
int32_t surfaceHeight = 0;
double milliseconds[framePassCount] = {};
double lastMilliseconds[framePassCount] = {};
double cpuMilliseconds[framePassCount] = {};
double lastCpuMilliseconds[framePassCount] = {};
FrameCounts lastCounts;
FramePass stack[maxDepth];
int32_t depth = 0;
Clock::time_point since;
double cpuSince = 0;

// Processor time of the whole process (every thread: the renderer's own
// threads too), in milliseconds. Unlike the clock it does not run while the
// process waits for a processor, which makes it the steadier figure on a
// busy machine.
double processCpuMilliseconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return double(t.tv_sec) * 1000.0 + double(t.tv_nsec) / 1.0e6;
}

// Drains the renderer and charges the time since the last boundary to the
// pass on top of the stack.
void boundary() {
  glFinish();
  const Clock::time_point now = Clock::now();
  const FramePass top = depth > 0 ? stack[depth - 1] : FramePass::other;
  milliseconds[int32_t(top)] += std::chrono::duration<double, std::milli>(now - since).count();
  since = now;
  const double cpuNow = processCpuMilliseconds();
  cpuMilliseconds[int32_t(top)] += cpuNow - cpuSince;
  cpuSince = cpuNow;
}

}  // namespace

void enable(int32_t readWidth, int32_t readHeight) {
  on = true;
  surfaceWidth = readWidth;
  surfaceHeight = readHeight;
  since = Clock::now();
  cpuSince = processCpuMilliseconds();
}

void disable() { on = false; }

void beginFrame() {
  if (!on) return;
  std::fill(milliseconds, milliseconds + framePassCount, 0.0);
  std::fill(cpuMilliseconds, cpuMilliseconds + framePassCount, 0.0);
  current = FrameCounts();
  depth = 0;
  glFinish();
  since = Clock::now();
  cpuSince = processCpuMilliseconds();
}

void endFrame() {
  if (!on) return;
  boundary();
  std::copy(milliseconds, milliseconds + framePassCount, lastMilliseconds);
  std::copy(cpuMilliseconds, cpuMilliseconds + framePassCount, lastCpuMilliseconds);
  lastCounts = current;
}

double passMilliseconds(FramePass pass) {
  const int32_t i = int32_t(pass);
  return i >= 0 && i < framePassCount ? lastMilliseconds[i] : 0.0;
}

double passCpuMilliseconds(FramePass pass) {
  const int32_t i = int32_t(pass);
  return i >= 0 && i < framePassCount ? lastCpuMilliseconds[i] : 0.0;
}

FrameCounts counts() { return lastCounts; }

void enter(FramePass pass) {
  if (!on) return;
  boundary();
  if (depth < maxDepth) stack[depth] = pass;
  ++depth;
}

void leave() {
  if (!on || depth <= 0) return;
  boundary();
  --depth;
}

void countCopy(int32_t x, int32_t y, int32_t width, int32_t height) {
  // Only the part inside the read surface is copied.
  const int64_t x0 = std::max<int64_t>(x, 0), y0 = std::max<int64_t>(y, 0);
  const int64_t x1 = std::min<int64_t>(int64_t(x) + width, surfaceWidth);
  const int64_t y1 = std::min<int64_t>(int64_t(y) + height, surfaceHeight);
  if (x1 > x0 && y1 > y0) current.pixelsCopied += uint64_t((x1 - x0) * (y1 - y0));
}

uint64_t trianglesOf(uint32_t mode, uint64_t vertices) {
  switch (mode) {
    case GL_TRIANGLES:
      return vertices / 3;
    case GL_QUADS:
      return vertices / 4 * 2;
    case GL_TRIANGLE_STRIP:
    case GL_TRIANGLE_FAN:
    case GL_POLYGON:
      return vertices >= 3 ? vertices - 2 : 0;
    case GL_QUAD_STRIP:
      return vertices >= 4 ? (vertices - 2) / 2 * 2 : 0;
    default:
      return 0;  // points and lines
  }
}

}  // namespace frameprofile

const char* framePassName(FramePass pass) {
  static const char* const names[framePassCount] = {"shadow",  "glow-source", "glow",  "picture", "overlay",
                                                    "animate", "composition", "grain", "swap",    "other"};
  const int32_t i = int32_t(pass);
  return i >= 0 && i < framePassCount ? names[i] : "?";
}
