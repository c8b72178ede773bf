#include <gtest/gtest.h>

#include "foundation/Random.h"

// Runs first in its own process (each test is its own process under CTest),
// so the generator has never been seeded here.
TEST(Random, NeverSeededStartsLikeSeedOne) {
  const int expected[] = {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464};
  for (int e : expected) EXPECT_EQ(crtRand(), e);
}

TEST(Random, SeedOneSequence) {
  crtSrand(1);
  const int expected[] = {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464};
  for (int e : expected) EXPECT_EQ(crtRand(), e);
}

TEST(Random, SeedZeroSequence) {
  crtSrand(0);
  const int expected[] = {38, 7719, 21238, 2437};
  for (int e : expected) EXPECT_EQ(crtRand(), e);
}

TEST(Random, StateWrapsIn32Bits) {
  crtSrand(0xFFFFFFFFu);
  crtRand();
  EXPECT_EQ(crtRandState(), uint32_t(0xFFFFFFFFu * 214013u + 2531011u));
}

TEST(Random, OutputStaysIn15Bits) {
  crtSrand(987654321u);
  for (int i = 0; i < 100000; ++i) {
    int r = crtRand();
    ASSERT_GE(r, 0);
    ASSERT_LE(r, crtRandMax);
  }
}

// randomUnit is exactly 1.0 when rand gives 32767: find a seed whose first
// draw is 32767 and check the helper's arithmetic on it.
TEST(Random, RandomUnitReachesOne) {
  uint32_t seed = 0;
  for (uint32_t s = 0;; ++s) {
    crtSrand(s);
    if (crtRand() == 32767) {
      seed = s;
      break;
    }
  }
  crtSrand(seed);
  EXPECT_EQ(randomUnit(), 1.0);
  crtSrand(seed);
  EXPECT_EQ(randomSigned(), 1.0);
}

TEST(Random, HelpersFollowTheSequence) {
  crtSrand(1);
  EXPECT_DOUBLE_EQ(randomUnit(), 41 / 32767.0);
  EXPECT_DOUBLE_EQ(randomSigned(), (18467 / 32767.0 - 0.5) * 2);
}
