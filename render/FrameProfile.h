// FrameProfile: where a frame's time goes, for --benchmark.
//
// The frame is cut into passes (shadow maps, glow source, glow passes, final
// picture with its masks and lights, overlays, composition and present,
// grain, swap). A FramePassScope around each pass's call makes it the current
// pass; scopes nest, and time always counts for the innermost one. While the
// profile is on, every pass boundary drains the renderer (glFinish), so that
// each pass is charged with its own GL work and not with the work queued
// before it; while it is off (normal play) a scope costs one test of a flag
// and the renderer is never drained.
//
// It also counts, per frame: draw calls (glBegin..glEnd blocks, element and
// array draws, display-list calls), triangles (of those draws; points and
// lines count none) and pixels copied from the framebuffer into textures (the
// copied rectangle clipped to the read surface). The executable feeds the
// counts through the count* functions below from its counting GL entry
// points (core/GLCallCounting.cpp); code that links no such entry points
// (tests of the libraries) counts nothing.
//
// Times are milliseconds, of the steady clock and of processor time (all the
// process's threads). Main (GL) thread only.
#pragma once
#include <cstdint>

enum class FramePass : int32_t {
  shadowMap,     // depth maps of the shadowing lights
  glowSource,    // material slot 1 at half size (its shadow maps apart)
  glowPasses,    // the blur of the glow source and its laying over the picture
  finalPicture,  // material slot 0 with soft-shadow masks and light images
  overlays,      // a scene's flat drawing over its picture
  animation,     // a scene's movement before it draws (CPU)
  composition,   // layers, effects, composition and present (scene passes apart)
  grain,         // the grain texture's fill and upload and its overlay
  swap,          // the buffer swap
  other,         // everything else of the frame: clocks, flow charts, events
};
constexpr int32_t framePassCount = 10;

// The short name printed for a pass: "shadow", "glow-source", "glow",
// "picture", "overlay", "animate", "composition", "grain", "swap", "other".
const char* framePassName(FramePass pass);

// Counts of one frame (or sums over frames).
struct FrameCounts {
  uint64_t drawCalls = 0;
  uint64_t triangles = 0;
  uint64_t pixelsCopied = 0;
};

namespace frameprofile {

// True while the profile measures; the counting entry points test it.
extern bool on;
// The counts of the frame in progress.
extern FrameCounts current;

// Turns the profile on for the rest of the run; readWidth x readHeight is
// the surface copies read from (the window), to clip copied rectangles.
void enable(int32_t readWidth, int32_t readHeight);
// Turns it off again (tests).
void disable();

// Starts a frame: times and counts go to zero, the current pass is `other`.
void beginFrame();
// Ends the frame: the time since the last boundary goes to the current pass.
void endFrame();
// The last finished frame's figures.
double passMilliseconds(FramePass pass);
// The same as processor time of the whole process, all threads together:
// what the pass cost, whatever else ran on the machine meanwhile.
double passCpuMilliseconds(FramePass pass);
FrameCounts counts();

// Pass boundaries (see FramePassScope).
void enter(FramePass pass);
void leave();

// Counting hooks.
inline void countDraw(uint64_t triangles) {
  current.drawCalls += 1;
  current.triangles += triangles;
}
void countCopy(int32_t x, int32_t y, int32_t width, int32_t height);
// Triangles of `vertices` vertices drawn as `mode` (GL_TRIANGLES, GL_QUADS ...).
uint64_t trianglesOf(uint32_t mode, uint64_t vertices);

}  // namespace frameprofile

// Makes `pass` the current pass for the scope's life.
class FramePassScope {
 public:
  explicit FramePassScope(FramePass pass) : active(frameprofile::on) {
    if (active) frameprofile::enter(pass);
  }
  ~FramePassScope() {
    if (active) frameprofile::leave();
  }
  FramePassScope(const FramePassScope&) = delete;
  FramePassScope& operator=(const FramePassScope&) = delete;

 private:
  bool active;
};
