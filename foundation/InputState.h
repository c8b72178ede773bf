// InputState: one signed number per tracked key, in milliseconds. Positive:
// held for that long; negative: free for that long. A change of state passes
// through exactly 0 for one update, so "just pressed" is a small positive
// value and "just released" a small negative one; "held" is key(code) > 0.
// Indexed by SDL 1.2 key code; untracked keys stay 0.
//
// Time comes from a Timer (so the fixed clock of Timer.h drives it too). The
// logic needs no SDL: updateKeys(keyTable, keyCount) takes the key table.
// update(), which pumps SDL's events and reads SDL_GetKeyState, is defined in
// core/InputSdl.cpp, as is the process-wide `theInput`.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Timer.h"

// Entries of the key table, indexed by SDL key code.
constexpr int inputKeyTableSize = 1323;

// SDL 1.2 key codes of the tracked keys (checked against SDL's own values
// where SDL is included).
constexpr int inputKeyDelete = 127;
constexpr int inputKeyUp = 273;
constexpr int inputKeyDown = 274;
constexpr int inputKeyRight = 275;
constexpr int inputKeyLeft = 276;
constexpr int inputKeyF1 = 282;  // F1 to F10 are 282 to 291
constexpr int inputKeyLeftShift = 304;
constexpr int inputKeyLeftControl = 306;

// The 23 tracked keys: arrows, left shift, left control, z x s l p r, F1 to
// F10, delete. F11, F12, right shift, right control and escape are not.
constexpr int inputTrackedKeyCount = 23;
extern const int inputTrackedKeys[inputTrackedKeyCount];

class InputState {
 public:
  // Resets and starts `timer`; lastUpdateMs = its reading; all keys 0.
  InputState();

  // Pumps SDL's events and updates from SDL_GetKeyState's table; defined in
  // core/InputSdl.cpp.
  void update();

  // One update from a key table (nonzero entry = key down; `keyCount`
  // entries, codes at or beyond it count as up):
  //   nowMs = timer.elapsed(); dt = nowMs − lastUpdateMs;
  //   down: v ≥ 0 becomes v + dt, v < 0 becomes 0;
  //   up:   v ≤ 0 becomes v − dt, v > 0 becomes 0;
  //   lastUpdateMs = nowMs.
  void updateKeys(const uint8_t* keyTable, int keyCount);

  // keys[code]; the code must lie within the table (asserted).
  int32_t key(int code) const;

  Timer timer;                // started at construction
  int32_t lastUpdateMs;       // reading of timer at the last update
  int32_t nowMs = 0;          // reading at this update
  std::vector<int32_t> keys;  // inputKeyTableSize entries, all 0 at construction
};

// The process-wide input state, created by the frame loop's start-up with new;
// defined in core/InputSdl.cpp.
extern InputState* theInput;
