// InputState on the fixed tick source of Timer.h, with hand-made key tables,
// so every step is exact and needs no window.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "foundation/InputState.h"
#include "foundation/Timer.h"

namespace {

// A key table of SDL's size with the given keys down.
struct KeyTable {
  std::vector<uint8_t> state = std::vector<uint8_t>(323, 0);
  void press(int code) { state[code] = 1; }
  void release(int code) { state[code] = 0; }
  const uint8_t* data() const { return state.data(); }
  int size() const { return int(state.size()); }
};

const int keyEscape = 27, keyF11 = 292, keyF12 = 293, keyRightShift = 303, keyRightControl = 305;

}  // namespace

TEST(InputState, ConstructionStartsTheTimerAndClearsTheKeys) {
  setFixedTicks(5000);
  InputState input;
  EXPECT_EQ(input.timer.startTicks, 5000u);
  EXPECT_EQ(input.lastUpdateMs, 0);
  ASSERT_EQ(input.keys.size(), size_t(inputKeyTableSize));
  EXPECT_EQ(inputKeyTableSize, 1323);
  EXPECT_TRUE(std::all_of(input.keys.begin(), input.keys.end(), [](int32_t v) { return v == 0; }));
}

TEST(InputState, UpdateReadsTheTimer) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  setFixedTicks(1250);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.nowMs, 250);
  EXPECT_EQ(input.lastUpdateMs, 250);
  EXPECT_EQ(input.key(inputKeyUp), -250);  // free for the whole first step
}

TEST(InputState, KeyHeldFromBeforeTheFirstUpdateReadsZeroThenGrows) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  table.press('p');
  input.updateKeys(table.data(), table.size());  // the same millisecond as construction
  EXPECT_EQ(input.key('p'), 0);
  setFixedTicks(1016);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key('p'), 16);
  setFixedTicks(1050);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key('p'), 50);
}

// From the zero start a held key simply gains the step: only a change of
// state from the other sign passes through 0.
TEST(InputState, HeldKeyGainsTheStepFromZero) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  table.press(inputKeyDown);
  setFixedTicks(1040);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyDown), 40);
}

TEST(InputState, PressPassesThroughZero) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  setFixedTicks(1100);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyRight), -100);
  table.press(inputKeyRight);
  setFixedTicks(1120);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyRight), 0);  // just pressed
  setFixedTicks(1130);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyRight), 10);
}

TEST(InputState, ReleaseReadsZeroThenFallsWithoutLimit) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  table.press(inputKeyLeft);
  setFixedTicks(1200);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyLeft), 200);
  table.release(inputKeyLeft);
  setFixedTicks(1210);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyLeft), 0);  // just released
  setFixedTicks(1230);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.key(inputKeyLeft), -20);
  uint32_t ticks = 1230;
  for (int i = 0; i < 100; ++i) {
    ticks += 60000;
    setFixedTicks(ticks);
    input.updateKeys(table.data(), table.size());
  }
  EXPECT_EQ(input.key(inputKeyLeft), -20 - 100 * 60000);
}

TEST(InputState, TwoUpdatesInTheSameMillisecondChangeNothing) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  table.press('z');
  setFixedTicks(1100);
  input.updateKeys(table.data(), table.size());
  table.press('x');  // x was free, z held, the rest free
  setFixedTicks(1300);
  input.updateKeys(table.data(), table.size());
  const std::vector<int32_t> before = input.keys;
  ASSERT_EQ(before['z'], 300);
  ASSERT_EQ(before['x'], 0);
  ASSERT_EQ(before['s'], -300);
  input.updateKeys(table.data(), table.size());
  EXPECT_EQ(input.keys, before);
}

TEST(InputState, UntrackedKeysStayZero) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  const int untracked[] = {keyEscape, keyF11, keyF12, keyRightShift, keyRightControl, 'a', 'q', ' '};
  for (int code : untracked) table.press(code);
  for (int step = 1; step <= 3; ++step) {
    setFixedTicks(1000 + 100 * step);
    input.updateKeys(table.data(), table.size());
    for (int code : untracked) EXPECT_EQ(input.key(code), 0) << code;
  }
}

TEST(InputState, ExactlyTheTwentyThreeTrackedKeysChange) {
  setFixedTicks(1000);
  InputState input;
  KeyTable table;
  std::fill(table.state.begin(), table.state.end(), 1);
  setFixedTicks(1100);
  input.updateKeys(table.data(), table.size());
  int changed = 0;
  for (int code = 0; code < inputKeyTableSize; ++code)
    if (input.key(code) != 0) ++changed;
  EXPECT_EQ(changed, 23);
  const int expected[] = {273, 274, 275, 276, 304, 306, 'z', 'x', 's', 'l', 'p', 'r', 282, 283,
                          284, 285, 286, 287, 288, 289, 290, 291, 127};
  for (int code : expected) EXPECT_EQ(input.key(code), 100) << code;
  ASSERT_EQ(inputTrackedKeyCount, 23);
  for (int code : expected)
    EXPECT_NE(std::find(inputTrackedKeys, inputTrackedKeys + inputTrackedKeyCount, code),
              inputTrackedKeys + inputTrackedKeyCount);
}

TEST(InputState, CodesBeyondAShortTableCountAsUp) {
  setFixedTicks(1000);
  InputState input;
  std::vector<uint8_t> shortTable(200, 1);  // the arrows (273..276) lie beyond it
  setFixedTicks(1040);
  input.updateKeys(shortTable.data(), int(shortTable.size()));
  EXPECT_EQ(input.key(inputKeyUp), -40);
  EXPECT_EQ(input.key('p'), 40);
}
