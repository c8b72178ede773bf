// InputSdl: the SDL side of InputState (foundation/InputState.h): the key
// table reading, and the process-wide `theInput`.
#include <SDL/SDL.h>

#include "foundation/InputState.h"

static_assert(inputKeyDelete == SDLK_DELETE, "key code of delete");
static_assert(inputKeyUp == SDLK_UP && inputKeyDown == SDLK_DOWN, "key codes of the arrows");
static_assert(inputKeyRight == SDLK_RIGHT && inputKeyLeft == SDLK_LEFT, "key codes of the arrows");
static_assert(inputKeyF1 == SDLK_F1 && inputKeyF1 + 9 == SDLK_F10, "key codes of F1 to F10");
static_assert(inputKeyLeftShift == SDLK_LSHIFT && inputKeyLeftControl == SDLK_LCTRL, "key codes of the modifiers");
static_assert('z' == SDLK_z && 'x' == SDLK_x && 's' == SDLK_s && 'l' == SDLK_l && 'p' == SDLK_p && 'r' == SDLK_r,
              "key codes of the letters");
static_assert(SDLK_LAST <= inputKeyTableSize, "the key table covers every SDL key code");

InputState* theInput = nullptr;

void InputState::update() {
  SDL_PumpEvents();
  int keyCount = 0;
  const Uint8* table = SDL_GetKeyState(&keyCount);
  if (!table) keyCount = 0;
  updateKeys(table, keyCount);
}
