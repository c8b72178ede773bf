// ProgressBar: how far a long render has come, on the standard error stream.
//
// On a terminal one line is rewritten in place:
//   video [#########...........]  1234/15810 frames   7.8%  41.3 fps  5:52 left
// When the stream is not a terminal (a log file, a pipe), plain lines of the
// same figures are written every few seconds and once at the end, so a log
// stays readable. Frames per second are the mean since the first frame.
#pragma once
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

// The figures as text: done of total, percent, frames per second and the
// time left as m:ss (h:mm:ss beyond an hour), "--:--" while unknown. With a
// bar width above 0, a bar of that many characters leads the line.
std::string formatProgress(uint32_t done, uint32_t total, double framesPerSecond, int barWidth);

class ProgressBar {
 public:
  // `stream` is usually stderr; `terminal` says how to draw on it.
  ProgressBar(FILE* stream, bool terminal, uint32_t total, double plainIntervalSeconds = 5.0);

  void update(uint32_t done);   // call after every frame
  void finish(uint32_t done);   // the last figures, and the line ended

 private:
  void draw(uint32_t done);

  FILE* stream;
  bool terminal;
  uint32_t total;
  double plainIntervalSeconds;
  std::chrono::steady_clock::time_point started;
  std::chrono::steady_clock::time_point lastDrawn;
  bool anyDrawn = false;
  uint32_t lastDone = 0;   // the count on the line drawn last
};
