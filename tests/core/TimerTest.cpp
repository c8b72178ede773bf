#include <gtest/gtest.h>

#include "foundation/Timer.h"

// Every test runs in its own process, so switching to fixed ticks is local.
class TimerTest : public ::testing::Test {
 protected:
  void SetUp() override { setFixedTicks(1000); }
  void at(uint32_t ticks) { setFixedTicks(ticks); }
};

TEST_F(TimerTest, FreshTimerReadsTheWholeTickCount) {
  Timer t;
  at(5000);
  EXPECT_EQ(t.elapsed(), 5000);
}

TEST_F(TimerTest, StartThenElapsed) {
  Timer t;
  EXPECT_EQ(t.start(), 0);
  at(1250);
  EXPECT_EQ(t.elapsed(), 250);
  EXPECT_EQ(t.start(), -1);
  EXPECT_EQ(t.elapsed(), 250);
}

TEST_F(TimerTest, PausingTwiceKeepsTheFirstPause) {
  Timer t;
  t.start();
  at(1100);
  EXPECT_EQ(t.pause(), 1);
  at(1300);
  EXPECT_EQ(t.pause(), -1);
  EXPECT_EQ(t.pausedAt, 1100u);
  EXPECT_EQ(t.elapsed(), 100);
  EXPECT_EQ(t.resume(), 0);
  at(1400);
  EXPECT_EQ(t.elapsed(), 200);
}

TEST_F(TimerTest, ResumeWithoutPause) {
  Timer t;
  t.start();
  at(1500);
  EXPECT_EQ(t.resume(), -1);
  EXPECT_EQ(t.elapsed(), 500);
}

TEST_F(TimerTest, ResetGivesZeroAndClears) {
  Timer t;
  t.start();
  t.pause();
  EXPECT_EQ(t.reset(), 0);
  EXPECT_EQ(t.startTicks, 0u);
  EXPECT_EQ(t.pausedAt, 0u);
  EXPECT_EQ(t.pausedTotal, 0u);
}

TEST_F(TimerTest, SetElapsed) {
  Timer t;
  t.start();
  at(3000);
  t.setElapsed(700);
  EXPECT_EQ(t.elapsed(), 700);
  at(3100);
  EXPECT_EQ(t.elapsed(), 800);
}

// On a paused timer pausedAt stays where it was: the reading becomes ms less
// the time the pause has lasted so far, and stays so.
TEST_F(TimerTest, SetElapsedWhilePaused) {
  Timer t;
  t.start();
  at(2000);
  t.pause();
  at(2300);
  t.setElapsed(1000);
  EXPECT_EQ(t.elapsed(), 700);
  at(2600);
  EXPECT_EQ(t.elapsed(), 700);
}

TEST_F(TimerTest, FinishedPausesAreSubtracted) {
  Timer t;
  t.start();
  at(1100);
  t.pause();
  at(1500);
  t.resume();
  at(1600);
  EXPECT_EQ(t.pausedTotal, 400u);
  EXPECT_EQ(t.elapsed(), 200);
}
