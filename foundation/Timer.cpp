#include "foundation/Timer.h"

#include <chrono>

namespace {
bool fixedOn = false;
uint32_t fixedValue = 0;
TickSource installedSource = nullptr;

// Milliseconds since the process started: the stand-in before a source is installed.
const std::chrono::steady_clock::time_point processStart = std::chrono::steady_clock::now();
uint32_t steadyTicks() {
  const auto since = std::chrono::steady_clock::now() - processStart;
  return uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}
}  // namespace

uint32_t currentTicks() {
  if (fixedOn) return fixedValue;
  return installedSource ? installedSource() : steadyTicks();
}

void setTickSource(TickSource source) { installedSource = source; }

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
