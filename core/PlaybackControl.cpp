#include "core/PlaybackControl.h"

#include <SDL/SDL.h>

#include "core/Demo.h"

int32_t RewindControl::update(int32_t demoTimeMs, int32_t timeOffset) {
  if (demoTimeMs > rewindAtMs && !rewindStarted) rewinding = rewindStarted = true;
  if (rewinding) {
    // Picture time = 255800 - 35 x (position - 255800): the offset is 36 times
    // the overshoot, backwards. Seeking back during the rewind makes d
    // positive and the picture jumps ahead of the music until the landing
    // test ends the phase; that follows from the formula and is kept.
    const int32_t d = (rewindAtMs - demoTimeMs) * 36;
    if (d + demoTimeMs < landAtMs) {
      rewinding = false;
      return landAtMs - demoTimeMs;
    }
    return d;
  }
  return timeOffset;
}

void FrameRateCounter::addFrame(int32_t wallStepMs) {
  accumulatorMs += wallStepMs;
  frameCount += 1;
  if (accumulatorMs > 999) {
    framesPerSecond = frameCount;
    accumulatorMs = 0;
    frameCount = 0;
  }
}

bool pausedFrameShouldWait(bool paused, int32_t fps) { return paused && fps > 50; }

bool pauseKeyToggles(int32_t keyValue, bool& pauseLatch) {
  if (keyValue > 0) {
    const bool toggle = !pauseLatch;
    pauseLatch = true;
    return toggle;
  }
  if (keyValue < 0) pauseLatch = false;  // exactly 0 keeps the latch
  return false;
}

void applySeekKeys(Demo& demo, int32_t up, int32_t down, int32_t right, int32_t left) {
  if (up > 0) demo.seek(1500);
  if (down > 0) demo.seek(-1500);
  if (right > 0) demo.seek(100);
  if (left > 0) demo.seek(-100);
}

bool takeOneEventWantsExit() {
  SDL_Event event;
  if (!SDL_PollEvent(&event)) return false;
  if (event.type == SDL_QUIT) return true;
  return event.type == SDL_KEYDOWN && event.key.keysym.sym == SDLK_ESCAPE;
}
