#include "core/Benchmark.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "core/Demo.h"
#include "scenes/Scene.h"

double millisecondsSinceProcessStart() {
  // Field 22 of /proc/self/stat is the start time in clock ticks since boot.
  std::ifstream stat("/proc/self/stat");
  std::string content((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  size_t close = content.rfind(')');
  if (close == std::string::npos) return 0;
  std::istringstream fields(content.substr(close + 2));
  std::string field;
  unsigned long long startTicks = 0;
  for (int i = 3; i <= 22 && fields >> field; ++i)
    if (i == 22) startTicks = std::stoull(field);
  std::ifstream uptimeFile("/proc/uptime");
  double uptime = 0;
  uptimeFile >> uptime;
  const double hz = double(sysconf(_SC_CLK_TCK));
  return (uptime - double(startTicks) / hz) * 1000.0;
}

Benchmark::Benchmark(bool enabled_) : enabled(enabled_) {}

void Benchmark::displayReady(int32_t width, int32_t height) {
  if (enabled) frameprofile::enable(width, height);
}

void Benchmark::frameBegins() {
  if (!enabled) return;
  frameprofile::beginFrame();
  frameStart = std::chrono::steady_clock::now();
}

void Benchmark::frameEnds(Demo& demo) {
  if (!enabled) return;
  frameprofile::endFrame();
  const double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - frameStart).count();
  const FrameCounts counts = frameprofile::counts();
  if (!firstFrameDone) {
    firstFrameDone = true;
    startupMs = millisecondsSinceProcessStart();
  }
  // The frame's picture time (the rewind near the end moves it off the music's).
  std::vector<Scene*> on = demo.visibleScenes(demo.previousTime);
  const std::string name = on.empty() ? std::string("(none)") : on.front()->name;
  if (!perScene.count(name)) order.push_back(name);
  Figures& f = perScene[name];
  for (Figures* g : {&f, &all}) {
    g->frames += 1;
    g->totalMs += ms;
    if (ms > g->slowestMs) g->slowestMs = ms;
    for (int32_t p = 0; p < framePassCount; ++p) {
      g->passMs[p] += frameprofile::passMilliseconds(FramePass(p));
      g->passCpuMs[p] += frameprofile::passCpuMilliseconds(FramePass(p));
    }
    g->counts.drawCalls += counts.drawCalls;
    g->counts.triangles += counts.triangles;
    g->counts.pixelsCopied += counts.pixelsCopied;
  }
}

void Benchmark::report(Demo&) const {
  if (!enabled) return;
  printf("benchmark: startup-to-first-frame-ms %.0f\n", startupMs);
  auto line = [](const std::string& label, const Figures& f) {
    const double fps = f.totalMs > 0 ? f.frames * 1000.0 / f.totalMs : 0;
    printf("benchmark: %s frames %u mean-fps %.2f slowest-frame-ms %.1f\n", label.c_str(), f.frames, fps,
           f.slowestMs);
  };
  auto details = [](const std::string& label, const Figures& f) {
    const double n = f.frames > 0 ? double(f.frames) : 1.0;
    printf("benchmark: %s pass-ms", label.c_str());
    for (int32_t p = 0; p < framePassCount; ++p) printf(" %s %.2f", framePassName(FramePass(p)), f.passMs[p] / n);
    printf("\n");
    printf("benchmark: %s pass-cpu-ms", label.c_str());
    for (int32_t p = 0; p < framePassCount; ++p) printf(" %s %.2f", framePassName(FramePass(p)), f.passCpuMs[p] / n);
    printf("\n");
    printf("benchmark: %s per-frame draw-calls %.0f triangles %.0f pixels-copied %.0f\n", label.c_str(),
           double(f.counts.drawCalls) / n, double(f.counts.triangles) / n, double(f.counts.pixelsCopied) / n);
  };
  for (const std::string& name : order) {
    line("scene " + name, perScene.at(name));
    details("scene " + name, perScene.at(name));
  }
  line("all", all);
  details("all", all);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  printf("benchmark: peak-memory-mib %.1f\n", usage.ru_maxrss / 1024.0);
}
