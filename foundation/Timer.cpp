#include "foundation/Timer.h"

#include <SDL/SDL.h>

namespace {
bool fixedOn = false;
uint32_t fixedValue = 0;
}  // namespace

uint32_t currentTicks() { return fixedOn ? fixedValue : SDL_GetTicks(); }

void setFixedTicks(uint32_t ticks) {
  fixedOn = true;
  fixedValue = ticks;
}

bool fixedTicksOn() { return fixedOn; }

Timer::Timer() : startTicks(0), pausedTotal(0), pausedAt(0) {}

int32_t Timer::reset() {
  startTicks = pausedTotal = pausedAt = 0;
  return 0;
}

int32_t Timer::start() {
  if (startTicks != 0) return -1;
  startTicks = currentTicks();
  return 0;
}

int32_t Timer::pause() {
  if (pausedAt != 0) return -1;
  pausedAt = currentTicks();
  return 1;
}

int32_t Timer::resume() {
  if (pausedAt == 0) return -1;
  pausedTotal += currentTicks() - pausedAt;
  pausedAt = 0;
  return 0;
}

// Unsigned arithmetic wraps like the 32-bit tick values it works on; the
// result is read as a signed millisecond count.
int32_t Timer::elapsed() const {
  if (pausedAt != 0) return int32_t(pausedAt - pausedTotal - startTicks);
  return int32_t(currentTicks() - pausedTotal - startTicks);
}

// A paused timer keeps its pausedAt: its reading is then ms minus the time
// the pause has already lasted, and stays so.
void Timer::setElapsed(int32_t ms) { startTicks = currentTicks() - uint32_t(ms) - pausedTotal; }
