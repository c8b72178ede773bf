// Timer: a millisecond stopwatch over the process tick source.
//
// Ticks are unsigned 32-bit milliseconds. Normally they come from the
// installed tick source (the display start-up installs SDL_GetTicks; this
// layer knows no SDL); when the fixed clock is on (see setFixedTicks), every
// timer reads the fixed tick counter instead, which the frame loop advances
// by an exact amount each frame, so a whole run becomes a pure function of
// the frame count.
#pragma once
#include <cstdint>

// The process tick source: the fixed counter when it is on, else the
// installed source, else a steady clock counting from process start.
uint32_t currentTicks();

// Installs the source of real-time ticks (null: back to the steady clock).
using TickSource = uint32_t (*)();
void setTickSource(TickSource source);

// Switches the process to fixed ticks starting at startTicks (must not be 0:
// 0 is a timer's "not started" mark). Later readings give the value set last.
void setFixedTicks(uint32_t ticks);
bool fixedTicksOn();

class Timer {
 public:
  Timer();

  int32_t reset();          // all fields to 0; gives 0
  int32_t start();          // 0, or -1 if already started
  int32_t pause();          // 1, or -1 if already paused
  int32_t resume();         // 0, or -1 if not paused
  int32_t elapsed() const;  // ms; a timer never started reads the whole tick count
  void setElapsed(int32_t ms);  // the reading becomes ms (less the time since a running pause began)

  uint32_t startTicks;   // when started, shifted by setElapsed; 0 means not started
  uint32_t pausedTotal;  // sum of all finished pauses
  uint32_t pausedAt;     // when the current pause began; 0 means not paused
};
