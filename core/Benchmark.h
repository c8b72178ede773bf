// Benchmark: frame-time figures of a run, printed at its end with
// --benchmark. Times are real (steady clock) whatever clock drives the
// picture; each frame is put on the scene that the schedule shows at the
// frame's picture time, "(none)" when it shows none. With the environment
// variable OSTRAVINE_BENCHMARK_EMPTY set, a benchmark run schedules nothing:
// its frames measure what every frame costs besides the scenes.
//
// Printed lines, one figure each:
//   benchmark: startup-to-first-frame-ms <ms>
//   benchmark: scene <name> frames <n> mean-fps <f> slowest-frame-ms <ms>
//   benchmark: scene <name> pass-ms shadow <ms> glow-source <ms> ... other <ms>
//   benchmark: scene <name> pass-cpu-ms shadow <ms> ... other <ms> (processor time, all threads)
//   benchmark: scene <name> per-frame draw-calls <n> triangles <n> pixels-copied <n>
//   benchmark: all frames <n> mean-fps <f> slowest-frame-ms <ms>
//   benchmark: peak-memory-mib <MiB>
// The pass times and counts are means over the scene's frames, from the
// frame profile (render/FrameProfile.h), which the benchmark turns on once
// the display is open: the renderer is then drained at every pass boundary,
// which the frame times include.
#pragma once
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "render/FrameProfile.h"

class Demo;

class Benchmark {
 public:
  explicit Benchmark(bool enabled);
  // Turns the frame profile on; the window is width x height. Call once the
  // display is open.
  void displayReady(int32_t width, int32_t height);
  void frameBegins();
  void frameEnds(Demo& demo);              // attributes the frame to the scene on at its picture time
  void report(Demo& demo) const;

 private:
  struct Figures {
    uint32_t frames = 0;
    double totalMs = 0;
    double slowestMs = 0;
    double passMs[framePassCount] = {};
    double passCpuMs[framePassCount] = {};
    FrameCounts counts;
  };
  bool enabled;
  bool firstFrameDone = false;
  double startupMs = 0;
  std::chrono::steady_clock::time_point frameStart;
  std::vector<std::string> order;          // scene names in order of first appearance
  std::map<std::string, Figures> perScene;
  Figures all;
};

// Milliseconds since the process began (from the kernel's start time of the process).
double millisecondsSinceProcessStart();
