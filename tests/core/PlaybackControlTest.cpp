#include <gtest/gtest.h>

#include "core/PlaybackControl.h"

TEST(Rewind, NothingBeforeTheMark) {
  RewindControl r;
  EXPECT_EQ(r.update(255800, 0), 0);  // the test is greater-than
  EXPECT_FALSE(r.rewindStarted);
}

TEST(Rewind, PictureRunsBackAt35TimesSpeed) {
  RewindControl r;
  int32_t offset = r.update(255900, 0);
  EXPECT_TRUE(r.rewinding);
  EXPECT_EQ(offset, -3600);
  EXPECT_EQ(255900 + offset, 255800 - 35 * 100);
  offset = r.update(256800, offset);
  EXPECT_EQ(256800 + offset, 255800 - 35 * 1000);
}

TEST(Rewind, LandsAt27800AndContinuesForward) {
  // The landing frame sets the constant offset.
  RewindControl probe;
  probe.rewindStarted = true;
  probe.rewinding = true;
  int32_t landing = 262320;
  int32_t landed = probe.update(landing, 0);
  EXPECT_FALSE(probe.rewinding);
  EXPECT_EQ(landing + landed, 27800);
  // Afterwards the offset stays, so the picture moves forward at normal speed.
  EXPECT_EQ(probe.update(263000, landed), landed);
}

TEST(Rewind, LandingPositionIsAbout262314) {
  RewindControl r;
  int32_t offset = 0, t = 255801;
  for (; t < 270000; ++t) {
    offset = r.update(t, offset);
    if (r.rewindStarted && !r.rewinding) break;
  }
  EXPECT_NEAR(t, 262314, 2);
  EXPECT_EQ(t + offset, 27800);
}

TEST(Rewind, HappensOnceOnly) {
  RewindControl r;
  int32_t offset = r.update(262400, 0);  // far past: lands at once
  EXPECT_FALSE(r.rewinding);
  EXPECT_TRUE(r.rewindStarted);
  EXPECT_EQ(262400 + offset, 27800);
  // Seeking back below the mark and forward past it again does not rearm it.
  offset = r.update(200000, offset);
  offset = r.update(256000, offset);
  EXPECT_FALSE(r.rewinding);
  EXPECT_EQ(offset, 27800 - 262400);
}

// Seeking back below 255800 during the rewind makes d positive: the picture
// jumps ahead of the music until the landing test ends the phase.
TEST(Rewind, SeekBackDuringRewindJumpsAhead) {
  RewindControl r;
  r.update(256000, 0);
  ASSERT_TRUE(r.rewinding);
  int32_t offset = r.update(255000, 0);
  EXPECT_TRUE(r.rewinding);
  EXPECT_EQ(offset, 800 * 36);
  EXPECT_GT(255000 + offset, 255000);
}

TEST(PauseLatch, HoldingTogglesOnce) {
  bool latch = false;
  int toggles = 0;
  for (int32_t v : {0, 5, 20, 40, 60, 80, 100})  // 0: the press frame, then held
    toggles += pauseKeyToggles(v, latch);
  EXPECT_EQ(toggles, 1);
}

TEST(PauseLatch, ReleaseAndPressAgainTogglesBack) {
  bool latch = false;
  int toggles = 0;
  for (int32_t v : {10, 30, 0, -20, -40, 0, 15, 30}) toggles += pauseKeyToggles(v, latch);
  EXPECT_EQ(toggles, 2);
}

TEST(PauseLatch, ExactlyZeroKeepsTheLatch) {
  bool latch = false;
  EXPECT_TRUE(pauseKeyToggles(10, latch));
  EXPECT_FALSE(pauseKeyToggles(0, latch));
  EXPECT_TRUE(latch);
  EXPECT_FALSE(pauseKeyToggles(10, latch));
}

TEST(FrameRate, ZeroUntilASecondHasPassed) {
  FrameRateCounter c;
  for (int i = 0; i < 9; ++i) c.addFrame(100);
  EXPECT_EQ(c.framesPerSecond, 0);
  c.addFrame(100);  // 1000 ms: above 999
  EXPECT_EQ(c.framesPerSecond, 10);
  EXPECT_EQ(c.accumulatorMs, 0);
  EXPECT_EQ(c.frameCount, 0);
}

TEST(FrameRate, RemainderOverTheSecondIsDropped) {
  FrameRateCounter c;
  c.addFrame(600);
  c.addFrame(900);  // 1500 ms: the extra 500 ms are dropped
  EXPECT_EQ(c.framesPerSecond, 2);
  c.addFrame(999);
  EXPECT_EQ(c.framesPerSecond, 2);  // 999 is not above 999
  c.addFrame(1);
  EXPECT_EQ(c.framesPerSecond, 2);
  EXPECT_EQ(c.accumulatorMs, 0);
}

TEST(PausedDelay, OnlyAFastPausedProductionWaits) {
  EXPECT_TRUE(pausedFrameShouldWait(true, 51));
  EXPECT_FALSE(pausedFrameShouldWait(true, 50));
  EXPECT_FALSE(pausedFrameShouldWait(false, 500));
}
