// PlaybackControl: the frame loop's small state machines, apart from SDL so
// they can be tested: the one-time rewind near the end of the track, the
// pause latch and the seek keys.
//
// All times are signed 32-bit milliseconds of the raw music position.
#pragma once
#include <cstdint>

// At 255.8 s of music the picture rewinds at 35 times normal speed to 27.8 s,
// then plays forward again, through nothing but the Demo's timeOffset.
struct RewindControl {
  static constexpr int32_t rewindAtMs = 255800;
  static constexpr int32_t landAtMs = 27800;

  bool rewinding = false;
  bool rewindStarted = false;  // never cleared: the rewind happens once a run

  // Updates the state for this frame's position and gives the new timeOffset
  // (timeOffset itself when nothing changes it).
  int32_t update(int32_t demoTimeMs, int32_t timeOffset);
};

// Frames counted over whole seconds of wall time: after more than 999 ms
// have gathered, framesPerSecond takes the count and both start again (any
// remainder over the second is dropped). 0 until the first second has passed.
struct FrameRateCounter {
  int32_t accumulatorMs = 0;
  int32_t frameCount = 0;
  int32_t framesPerSecond = 0;
  void addFrame(int32_t wallStepMs);
};

// A paused production that runs fast (above 50 frames a second) waits 10 ms
// a frame; a slow machine and a running production never wait.
bool pausedFrameShouldWait(bool paused, int32_t framesPerSecond);

// One press of the pause key toggles once however long it is held. keyValue
// is the key's InputState value. Gives true when the pause should toggle now.
bool pauseKeyToggles(int32_t keyValue, bool& pauseLatch);

class Demo;

// The seek keys: each arrow key held (InputState value > 0) seeks by its
// amount on every frame, without repeat delay: up +1500, down -1500,
// right +100, left -100, in that order, each seek clamped on its own.
void applySeekKeys(Demo& demo, int32_t up, int32_t down, int32_t right, int32_t left);

// Takes one event from SDL's queue, as the frame loop does once a frame: the
// rest wait for later frames, so a quit request behind other events arrives
// late. Gives true for a quit request or a key-down of escape.
bool takeOneEventWantsExit();
