#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Envelope.h"

namespace {

Envelope envelope(float start, float duration) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e;
}

}  // namespace

TEST(Envelope, ConstructorDefaults) {
  Envelope e;
  EXPECT_EQ(e.start, 0.0f);
  EXPECT_EQ(e.duration, 0.0f);
  EXPECT_EQ(e.spanScale, 1.0f);
}

TEST(Envelope, RampUpAndDown) {
  const Envelope e = envelope(2.0f, 4.0f);
  EXPECT_EQ(e.rampUp(1.0f), 0.0f);
  EXPECT_EQ(e.rampUp(2.0f), 0.0f);
  EXPECT_EQ(e.rampUp(3.0f), 0.25f);
  EXPECT_EQ(e.rampUp(6.0f), 1.0f);
  EXPECT_EQ(e.rampUp(60.0f), 1.0f);
  EXPECT_EQ(e.rampDown(1.0f), 1.0f);
  EXPECT_EQ(e.rampDown(3.0f), 0.75f);
  EXPECT_EQ(e.rampDown(7.0f), 0.0f);
}

TEST(Envelope, RampUpWithZeroDurationJumps) {
  const Envelope e = envelope(1.0f, 0.0f);
  EXPECT_EQ(e.rampUp(1.0f), 0.0f);
  EXPECT_EQ(e.rampUp(1.001f), 1.0f);
}

TEST(Envelope, EaseInIsARaisedCosine) {
  const Envelope e = envelope(1.0f, 2.0f);
  EXPECT_EQ(e.easeIn(0.5f, 1, 1), 0.0f);
  EXPECT_EQ(e.easeIn(1.0f, 1, 1), 0.0f);
  EXPECT_NEAR(e.easeIn(2.0f, 1, 1), 0.5f, 1e-6f);
  EXPECT_NEAR(e.easeIn(1.5f, 1, 1), 0.5f - 0.5f * std::cos(0.25f * 3.1415927f), 1e-6f);
  EXPECT_NEAR(e.easeIn(3.0f, 1, 1), 1.0f, 1e-6f);
  EXPECT_EQ(e.easeIn(3.5f, 1, 1), 1.0f);
}

TEST(Envelope, EaseInPowerShapesTheTime) {
  const Envelope e = envelope(0.0f, 1.0f);
  // x = 0.5² = 0.25
  EXPECT_NEAR(e.easeIn(0.5f, 1, 2), 0.5f - 0.5f * std::cos(0.25f * 3.1415927f), 1e-6f);
}

TEST(Envelope, EaseInHigherFrequencyOscillates) {
  const Envelope e = envelope(0.0f, 1.0f);
  EXPECT_NEAR(e.easeIn(0.5f, 2, 1), 1.0f, 1e-6f);
  EXPECT_NEAR(e.easeIn(1.0f, 2, 1), 0.0f, 1e-6f);  // the end of the span itself is still on the curve
  EXPECT_EQ(e.easeIn(1.01f, 2, 1), 1.0f);
}

TEST(Envelope, EaseInWithZeroDurationGivesOneWithoutDividing) {
  const Envelope e = envelope(2.0f, 0.0f);
  EXPECT_EQ(e.easeIn(2.0f, 1, 1), 0.0f);
  EXPECT_EQ(e.easeIn(2.5f, 1, 1), 1.0f);
  EXPECT_EQ(e.easeOut(2.5f, 1, 1), 0.0f);
}

TEST(Envelope, SpanScaleStretchesTheSpan) {
  Envelope e = envelope(0.0f, 1.0f);
  e.spanScale = 2.0f;
  // Past start + duration but within the stretched span: the cosine runs on.
  EXPECT_NEAR(e.easeIn(1.5f, 1, 1), 0.5f - 0.5f * std::cos(1.5f * 3.1415927f), 1e-6f);
  EXPECT_EQ(e.easeIn(2.01f, 1, 1), 1.0f);
}

TEST(Envelope, EaseOutFalls) {
  const Envelope e = envelope(1.0f, 2.0f);
  EXPECT_EQ(e.easeOut(0.5f, 1, 1), 1.0f);
  EXPECT_EQ(e.easeOut(1.0f, 1, 1), 1.0f);
  EXPECT_NEAR(e.easeOut(1.0001f, 1, 1), 1.0f, 1e-4f);
  EXPECT_NEAR(e.easeOut(2.0f, 1, 1), 0.5f, 1e-6f);
  // x = 1 − 0.25 = 0.75
  EXPECT_NEAR(e.easeOut(1.5f, 1, 1), 0.5f - 0.5f * std::cos(0.75f * 3.1415927f), 1e-6f);
  EXPECT_NEAR(e.easeOut(3.0f, 1, 1), 0.0f, 1e-6f);
  EXPECT_EQ(e.easeOut(3.5f, 1, 1), 0.0f);
}

TEST(Envelope, EaseWindowIsInTimesOut) {
  Envelope e = envelope(1.0f, 2.0f);
  e.outStart = 10.0f;
  e.outDuration = 4.0f;
  EXPECT_EQ(e.easeWindow(0.5f, 1, 1), 0.0f);
  EXPECT_NEAR(e.easeWindow(2.0f, 1, 1), 0.5f, 1e-6f);  // before outStart: the rise alone
  EXPECT_EQ(e.easeWindow(5.0f, 1, 1), 1.0f);
  EXPECT_NEAR(e.easeWindow(12.0f, 1, 1), 0.5f, 1e-6f);  // the fall alone
  EXPECT_EQ(e.easeWindow(14.5f, 1, 1), 0.0f);
  // Overlapping rise and fall multiply.
  e.outStart = 1.5f;
  EXPECT_NEAR(e.easeWindow(2.0f, 1, 1), e.easeIn(2.0f, 1, 1) * (0.5f - 0.5f * std::cos(0.875f * 3.1415927f)), 1e-6f);
}

TEST(Envelope, OneExpressionFormsAreTheEnvelopeOperations) {
  Envelope in = envelope(12.0f, 6.0f);
  for (float t : {11.0f, 12.0f, 13.5f, 15.0f, 18.0f, 19.0f}) {
    EXPECT_EQ(easeInAt(t, 12.0f, 6.0f), in.easeIn(t, 1.0f, 1.0f)) << t;
    EXPECT_EQ(easeOutAt(t, 12.0f, 6.0f), in.easeOut(t, 1.0f, 1.0f)) << t;
    EXPECT_EQ(easeInAt(t, 12.0f, 6.0f, 1.0f, 2.0f), in.easeIn(t, 1.0f, 2.0f)) << t;
  }
  EXPECT_FLOAT_EQ(easeInAt(15.0f, 12.0f, 6.0f), 0.5f);
  Envelope window = envelope(21.4f, 0.5f);
  window.outStart = 22.5f;
  window.outDuration = 0.15f;
  for (float t : {21.0f, 21.6f, 22.0f, 22.55f, 23.0f}) {
    EXPECT_EQ(easeWindowAt(t, 21.4f, 0.5f, 22.5f, 0.15f), window.easeWindow(t, 1.0f, 1.0f)) << t;
  }
  EXPECT_FLOAT_EQ(easeWindowAt(22.0f, 21.4f, 0.5f, 22.5f, 0.15f), 1.0f);
}

TEST(Envelope, BeatSumCountsTheStartAndEveryBeatPassed) {
  const float beats[] = {1.0f, 1.5f};
  EXPECT_FLOAT_EQ(beatSum(0.0f, beats, 2, 0.75f), 1.0f) << "the start always counts";
  EXPECT_EQ(beatSum(0.75f, beats, 2, 0.75f), 0.0f);
  EXPECT_EQ(beatSum(1.0f, beats, 2, 0.75f), 0.0f) << "a beat counts once t is past it";
  EXPECT_NEAR(beatSum(1.001f, beats, 2, 0.75f), 1.0f, 1e-4);
  // Overlapping beats add: at 1.6 both are on.
  EXPECT_FLOAT_EQ(beatSum(1.6f, beats, 2, 0.75f), easeOutAt(1.6f, 1.0f, 0.75f) + easeOutAt(1.6f, 1.5f, 0.75f));
  EXPECT_GT(beatSum(1.5001f, beats, 2, 0.75f), 1.0f);
  EXPECT_EQ(beatSum(3.0f, beats, 2, 0.75f), 0.0f);
}
