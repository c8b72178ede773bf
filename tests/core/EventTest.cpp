#include <gtest/gtest.h>

#include <SDL/SDL.h>

#include "core/PlaybackControl.h"
#include "support/GLTestContext.h"

namespace {
void push(Uint8 type, SDLKey key = SDLK_UNKNOWN) {
  SDL_Event e{};
  e.type = type;
  if (type == SDL_KEYDOWN || type == SDL_KEYUP) e.key.keysym.sym = key;
  ASSERT_EQ(SDL_PushEvent(&e), 0);
}
void drain() {
  SDL_Event e;
  while (SDL_PollEvent(&e)) {
  }
}
}  // namespace

// One event a frame: a quit behind three mouse events takes four frames.
TEST(OneEventPerFrame, QuitBehindMouseEventsArrivesLate) {
  REQUIRE_GL(64, 64);
  drain();
  for (int i = 0; i < 3; ++i) push(SDL_MOUSEBUTTONDOWN);
  push(SDL_QUIT);
  EXPECT_FALSE(takeOneEventWantsExit());
  EXPECT_FALSE(takeOneEventWantsExit());
  EXPECT_FALSE(takeOneEventWantsExit());
  EXPECT_TRUE(takeOneEventWantsExit());
  EXPECT_FALSE(takeOneEventWantsExit());
}

TEST(OneEventPerFrame, EscapeDownEndsOtherKeysDoNot) {
  REQUIRE_GL(64, 64);
  drain();
  push(SDL_KEYDOWN, SDLK_a);
  push(SDL_KEYUP, SDLK_ESCAPE);
  push(SDL_KEYDOWN, SDLK_ESCAPE);
  EXPECT_FALSE(takeOneEventWantsExit());
  EXPECT_FALSE(takeOneEventWantsExit());
  EXPECT_TRUE(takeOneEventWantsExit());
}
