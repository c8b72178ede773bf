// The pulse: its envelope, period, repeat window and the settings' edge cases.
#include <gtest/gtest.h>

#include <cmath>

#include "FlowFixture.h"

using flowtest::FlowFixture;

namespace {

using S = std::vector<float>;  // Raise, Up, Lower, Start, Repeats, Delta
const S standard{0.25f, 0.5f, 0.25f, 0, 0, 2};

float raised(float x) { return 0.5f - 0.5f * std::cos(3.1415927f * x); }

TEST(Pulse, RisesHoldsFallsRestsAndRepeats) {
  EXPECT_EQ(pulseValue(standard, 0.0f), 0.0f);
  EXPECT_FLOAT_EQ(pulseValue(standard, 0.125f), std::sqrt(raised(0.5f)));  // half way up
  EXPECT_FLOAT_EQ(pulseValue(standard, 0.25f), 1.0f);
  EXPECT_EQ(pulseValue(standard, 0.5f), 1.0f);
  EXPECT_EQ(pulseValue(standard, 0.75f), 1.0f);
  EXPECT_FLOAT_EQ(pulseValue(standard, 0.875f), std::sqrt(raised(0.5f)));  // half way down
  EXPECT_NEAR(pulseValue(standard, 1.0f), 0.0f, 1e-3f);
  EXPECT_EQ(pulseValue(standard, 1.5f), 0.0f);
  EXPECT_EQ(pulseValue(standard, 1.99f), 0.0f);
  // and again, every two seconds, for ever
  for (float k : {1.0f, 2.0f, 50.0f}) {
    EXPECT_NEAR(pulseValue(standard, 2 * k + 0.125f), std::sqrt(raised(0.5f)), 1e-3f) << k;
    EXPECT_NEAR(pulseValue(standard, 2 * k + 0.5f), 1.0f, 1e-5f) << k;
    EXPECT_NEAR(pulseValue(standard, 2 * k + 1.5f), 0.0f, 1e-5f) << k;
  }
  // Rising all the way through its rise: never falls inside it.
  float last = 0;
  for (float t = 0.01f; t <= 0.25f; t += 0.01f) {
    const float v = pulseValue(standard, t);
    EXPECT_GE(v, last) << t;
    last = v;
  }
}

TEST(Pulse, BeforeStartThePhaseStaysNegativeAndThePulseIsZero) {
  // Repeats 0 repeats for ever, but a negative phase never rises.
  EXPECT_EQ(pulseValue(standard, -0.5f), 0.0f);
  EXPECT_EQ(pulseValue(standard, -1.75f), 0.0f);
  const S late{0.25f, 0.5f, 0.25f, 10, 0, 2};
  EXPECT_EQ(pulseValue(late, 9.5f), 0.0f);
  EXPECT_NEAR(pulseValue(late, 10.5f), 1.0f, 1e-6f);
}

TEST(Pulse, LongerThanDeltaRunsWithItsLengthButIsCutAtStartPlusRepeatsTimesDelta) {
  const S s{1, 1, 1, 0, 2, 2};  // length 3 > Delta 2
  EXPECT_NEAR(pulseValue(s, 1.5f), 1.0f, 1e-6f);   // period 3: up from 1 to 2
  EXPECT_GT(pulseValue(s, 2.5f), 0.0f);            // still falling at 2.5 (no new pulse at 2)
  EXPECT_LT(pulseValue(s, 2.5f), 1.0f);
  EXPECT_NEAR(pulseValue(s, 3.5f), std::sqrt(raised(0.5f)), 1e-5f);  // the next began at 3
  EXPECT_GT(pulseValue(s, 4.0f), 0.0f);            // 4 is inside the window
  EXPECT_EQ(pulseValue(s, 4.01f), 0.0f);           // cut above Start + 2 x Delta
  EXPECT_EQ(pulseValue(s, 5.0f), 0.0f);
  const S endless{1, 1, 1, 0, 0, 2};
  EXPECT_GT(pulseValue(endless, 4.5f), 0.0f);
}

TEST(Pulse, DeltaZeroIsZeroWhateverElse) {
  for (float t : {-1.0f, 0.0f, 0.1f, 0.5f, 3.0f, 1000.0f}) {
    EXPECT_EQ(pulseValue(S{0.25f, 0.5f, 0.25f, 0, 0, 0}, t), 0.0f) << t;
    EXPECT_EQ(pulseValue(S{0, 1, 0, 0, 3, 0}, t), 0.0f) << t;
  }
}

TEST(Pulse, RepeatsAreTruncated) {
  const S one{0.25f, 0.5f, 0.25f, 0, 1, 2};
  const S oneNine{0.25f, 0.5f, 0.25f, 0, 1.9f, 2};
  for (float t : {-0.5f, 0.0f, 0.5f, 1.0f, 2.0f, 2.5f, 3.0f}) EXPECT_EQ(pulseValue(oneNine, t), pulseValue(one, t)) << t;
  EXPECT_EQ(pulseValue(oneNine, 2.5f), 0.0f);  // the second pulse is outside
  EXPECT_NEAR(pulseValue(S{0.25f, 0.5f, 0.25f, 0, 2, 2}, 2.5f), 1.0f, 1e-6f);
  // Absurd repeat counts stay inside the int range.
  EXPECT_NEAR(pulseValue(S{0.25f, 0.5f, 0.25f, 0, 1e30f, 2}, 2.5f), 1.0f, 1e-6f);
  EXPECT_EQ(pulseValue(S{0.25f, 0.5f, 0.25f, 0, -1e30f, 2}, 2.5f), 0.0f);
}

TEST(Pulse, WindowEndsAreInsideAndTheValueFollowsThePhase) {
  const S s{0.25f, 0.5f, 0.25f, 3, 2, 2};
  EXPECT_EQ(pulseValue(s, 3.0f), 0.0f);  // at Start: inside, phase 0
  EXPECT_EQ(pulseValue(s, 2.999f), 0.0f);
  // at Start + 2 x Delta = 7: inside, phase 0 again
  EXPECT_EQ(pulseValue(s, 7.0f), 0.0f);
  const S held{0.0f, 1.0f, 0.0f, 3, 2, 2};  // no rise: up the moment the phase is above 0
  EXPECT_EQ(pulseValue(held, 3.0f), 0.0f);
  EXPECT_EQ(pulseValue(held, 3.001f), 1.0f);
  EXPECT_EQ(pulseValue(held, 4.5f), 0.0f);   // past Up, in the rest
  EXPECT_EQ(pulseValue(held, 5.5f), 1.0f);   // the second pulse
  EXPECT_EQ(pulseValue(held, 6.9f), 0.0f);
}

TEST(Pulse, ZeroLengthEdgesSwitchHard) {
  const S hard{0, 0.5f, 0, 0, 0, 1};
  EXPECT_EQ(pulseValue(hard, 0.25f), 1.0f);
  EXPECT_EQ(pulseValue(hard, 0.5f), 1.0f);  // up to the fall's start
  EXPECT_EQ(pulseValue(hard, 0.51f), 0.0f);
}

TEST(Pulse, MissingSettingsReadAsDefaults) {
  EXPECT_EQ(pulseValue(S{}, 0.5f), pulseValue(standard, 0.5f));
  EXPECT_EQ(pulseValue(S{0.25f, 0.5f}, 0.9f), pulseValue(standard, 0.9f));
}

TEST(Pulse, NonsenseSettingsGiveNumbersOrNaNButNeverCrash) {
  // Delta negative with no length: the period is 0.
  (void)pulseValue(S{0, 0, 0, 0, 0, -1}, 0.5f);
  (void)pulseValue(S{NAN, NAN, NAN, NAN, NAN, NAN}, 0.5f);
  (void)pulseValue(S{1e38f, 1e38f, 1e38f, -1e38f, 5, 1e-38f}, 1e38f);
  SUCCEED();
}

using PulseBlockTest = FlowFixture;

TEST_F(PulseBlockTest, BlockAppliesItsSettingsToItsInput) {
  Block* p = make("pulse", createPulseBlock);
  Block* t = make("demotime", createDemoTimeBlock);
  connectBlocks(t, p);
  for (float s : {0.0f, 0.125f, 0.5f, 0.9f, 1.5f, 2.5f}) {
    demoTime = s;
    EXPECT_EQ(evaluateBlock(p), pulseValue(standard, s)) << s;
  }
  p->settings = {0.25f, 0.5f, 0.25f, 0, 0, 0};
  EXPECT_EQ(evaluateBlock(p), 0.0f);
}

TEST_F(PulseBlockTest, WithoutInputItReadsTimeZero) {
  Block* p = make("pulse", createPulseBlock);
  p->settings = {0, 1, 0, -0.5f, 0, 2};  // up at time 0
  EXPECT_EQ(evaluateBlock(p), 1.0f);
  EXPECT_EQ(computePulse({}, *p), 1.0f);
}

}  // namespace
