// Benchmark: frame-time figures of a run, printed at its end with
// --benchmark. Times are real (steady clock) whatever clock drives the
// picture; each frame is put on the scene that the schedule shows at the
// frame's picture time.
//
// Printed lines, one figure each:
//   benchmark: startup-to-first-frame-ms <ms>
//   benchmark: scene <name> frames <n> mean-fps <f> slowest-frame-ms <ms>
//   benchmark: all frames <n> mean-fps <f> slowest-frame-ms <ms>
//   benchmark: peak-memory-mib <MiB>
#pragma once
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class Demo;

class Benchmark {
 public:
  explicit Benchmark(bool enabled);
  void frameBegins();
  void frameEnds(Demo& demo);              // attributes the frame to the scene on at demo.currentTime
  void report(Demo& demo) const;

 private:
  struct Figures {
    uint32_t frames = 0;
    double totalMs = 0;
    double slowestMs = 0;
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
