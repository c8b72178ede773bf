// The tick source under every Timer: an installed source, the fixed counter
// over it, and the steady clock before any source is installed.
#include <gtest/gtest.h>

#include "foundation/Timer.h"

namespace {
uint32_t fakeNow = 0;
uint32_t fakeTicks() { return fakeNow; }
}  // namespace

// Every test runs in its own process, so the installed source is local.
TEST(TickSource, InstalledSourceDrivesTheTimers) {
  setTickSource(fakeTicks);
  fakeNow = 5000;
  EXPECT_EQ(currentTicks(), 5000u);
  Timer t;
  t.start();
  fakeNow = 5250;
  EXPECT_EQ(t.elapsed(), 250);
  setTickSource(nullptr);
}

TEST(TickSource, FixedTicksWinOverTheInstalledSource) {
  setTickSource(fakeTicks);
  fakeNow = 100;
  setFixedTicks(7000);
  EXPECT_EQ(currentTicks(), 7000u);
  setTickSource(nullptr);
}

TEST(TickSource, SteadyClockStandsInAndDoesNotRunBackwards) {
  setTickSource(nullptr);
  const uint32_t first = currentTicks();
  const uint32_t second = currentTicks();
  EXPECT_GE(second, first);
  // Counted from process start: far below a day in any test run.
  EXPECT_LT(second, 24u * 3600u * 1000u);
}
