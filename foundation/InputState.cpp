// InputState: the held and free times of the tracked keys.
#include "foundation/InputState.h"

#include <cassert>

const int inputTrackedKeys[inputTrackedKeyCount] = {
    inputKeyUp, inputKeyDown, inputKeyLeft, inputKeyRight, inputKeyLeftShift, inputKeyLeftControl,
    'z', 'x', 's', 'l', 'p', 'r',
    inputKeyF1 + 0, inputKeyF1 + 1, inputKeyF1 + 2, inputKeyF1 + 3, inputKeyF1 + 4,
    inputKeyF1 + 5, inputKeyF1 + 6, inputKeyF1 + 7, inputKeyF1 + 8, inputKeyF1 + 9,
    inputKeyDelete,
};

namespace {

// 32-bit sums and differences with two's complement wrap-around, so that a
// run of weeks cannot overflow into undefined behaviour.
inline int32_t add32(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t sub32(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace

InputState::InputState() : keys(inputKeyTableSize, 0) {
  timer.reset();
  timer.start();
  lastUpdateMs = timer.elapsed();
}

void InputState::updateKeys(const uint8_t* keyTable, int keyCount) {
  nowMs = timer.elapsed();
  const int32_t dt = sub32(nowMs, lastUpdateMs);
  for (int code : inputTrackedKeys) {
    const bool down = code < keyCount && keyTable[code] != 0;
    int32_t& v = keys[code];
    if (down)
      v = v >= 0 ? add32(v, dt) : 0;
    else
      v = v <= 0 ? sub32(v, dt) : 0;
  }
  lastUpdateMs = nowMs;
}

int32_t InputState::key(int code) const {
  assert(code >= 0 && code < static_cast<int>(keys.size()));
  return keys[code];
}
