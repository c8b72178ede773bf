#include <gtest/gtest.h>

#include <SDL/SDL.h>

#include "foundation/InputState.h"
#include "support/GLTestContext.h"

// The SDL side: update() reads SDL's key table. With no key down every
// tracked key goes negative by the time passed, untracked ones stay 0.
TEST(InputSdl, UpdateReadsTheKeyTable) {
  REQUIRE_GL(64, 64);
  setFixedTicks(1000);
  InputState input;
  setFixedTicks(1040);
  input.update();
  EXPECT_EQ(input.key(SDLK_UP), -40);
  EXPECT_EQ(input.key(SDLK_p), -40);
  EXPECT_EQ(input.key(SDLK_ESCAPE), 0);
  setFixedTicks(1100);
  input.update();
  EXPECT_EQ(input.key(SDLK_UP), -100);
}
