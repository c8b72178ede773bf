#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Angles.h"

TEST(Angles, AngleOfZeroZeroIsPlusHalfPi) { EXPECT_EQ(angleOf(0, 0), 1.5707964f); }

TEST(Angles, AngleOfOnTheYAxis) {
  EXPECT_EQ(angleOf(2, 0), 1.5707964f);
  EXPECT_EQ(angleOf(-2, 0), -1.5707964f);
  EXPECT_EQ(angleOf(-0.0f, 0), 1.5707964f);  // −0 is not below 0
}

TEST(Angles, AngleOfRightHalfIsPlainArctangent) {
  EXPECT_EQ(angleOf(1, 1), float(std::atan(1.0)));
  EXPECT_EQ(angleOf(-1, 2), float(std::atan(-0.5)));
}

TEST(Angles, AngleOfLeftHalfAddsPi) {
  EXPECT_EQ(angleOf(1, -1), float(std::atan(-1.0) + 3.14159265358979));
  // Below the negative x axis the result passes π, where atan2 would wrap.
  const float a = angleOf(-1, -1);
  EXPECT_NEAR(a, 3.14159265358979 + 0.785398163, 1e-6);
  EXPECT_GT(a, 3.1415927f);
  EXPECT_NE(a, float(std::atan2(-1.0, -1.0)));
}

TEST(Angles, AngleOfStaysInHalfOpenRange) {
  for (int i = 0; i < 360; ++i) {
    const double t = i * 3.14159265358979 / 180.0;
    const float a = angleOf(float(std::sin(t)), float(std::cos(t)));
    EXPECT_GE(a, -1.5707964f);
    EXPECT_LE(a, 4.712389f);  // 3π/2 itself is reached through float rounding
  }
}

namespace {

// Forward kinematics of the chain: the end point reached by the two angles.
void chainEnd(float lengthA, float lengthB, float elbow, float base, float* x, float* y) {
  *x = lengthA * std::cos(base) + lengthB * std::cos(base + elbow);
  *y = lengthA * std::sin(base) + lengthB * std::sin(base + elbow);
}

}  // namespace

TEST(Angles, TwoBoneChainReachesATargetWithinReach) {
  float elbow = 0, base = 0, x = 0, y = 0;
  solveTwoBoneChain(1.2f, 0.7f, 1.0f, 0.8f, &elbow, &base);
  chainEnd(1.0f, 0.8f, elbow, base, &x, &y);
  EXPECT_NEAR(x, 1.2f, 1e-5f);
  EXPECT_NEAR(y, 0.7f, 1e-5f);

  solveTwoBoneChain(-0.9f, -0.4f, 1.0f, 0.5f, &elbow, &base);
  chainEnd(1.0f, 0.5f, elbow, base, &x, &y);
  EXPECT_NEAR(x, -0.9f, 1e-5f);
  EXPECT_NEAR(y, -0.4f, 1e-5f);
}

TEST(Angles, TwoBoneChainPullsAFarTargetBack) {
  float elbow = 1, base = 1;
  solveTwoBoneChain(5.0f, 0.0f, 1.0f, 1.0f, &elbow, &base);
  EXPECT_EQ(elbow, 0.0f);
  EXPECT_EQ(base, 0.0f);
  float x = 0, y = 0;
  solveTwoBoneChain(3.0f, 4.0f, 1.0f, 1.5f, &elbow, &base);
  chainEnd(1.0f, 1.5f, elbow, base, &x, &y);
  EXPECT_NEAR(x, 3.0f / 5.0f * 2.5f, 1e-4f);
  EXPECT_NEAR(y, 4.0f / 5.0f * 2.5f, 1e-4f);
}

TEST(Angles, TwoBoneChainZeroDenominatorGivesSignedHalfPi) {
  float elbow = 1, base = 0;
  // Straight up at full reach: k2 = 0, so the denominator k1·x + k2·y is 0.
  solveTwoBoneChain(0.0f, 2.0f, 1.0f, 1.0f, &elbow, &base);
  EXPECT_EQ(elbow, 0.0f);
  EXPECT_EQ(base, 1.5707964f);
  solveTwoBoneChain(0.0f, -2.0f, 1.0f, 1.0f, &elbow, &base);
  EXPECT_EQ(base, -1.5707964f);
}
