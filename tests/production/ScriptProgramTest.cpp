// The script through the real program: the shipped ostravine.scr, copied into
// the run directory by the build, drives the opening's camera on the
// soundtrack's beat; a run directory without a script, or with a damaged
// one, plays all the same. The player never needs the editor for this: the
// flow charts stand on their own (see tests/flow/LayerTest).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "support/RunProgram.h"

namespace {

// parameter name -> (music position ms -> value), from --trace output.
using ParameterTrace = std::map<std::string, std::map<int, float>>;

ParameterTrace parametersOf(const std::string& out) {
  ParameterTrace trace;
  int position = -1;
  for (const std::string& line : testrun::lines(out)) {
    int p = 0;
    char name[128];
    float value = 0;
    if (sscanf(line.c_str(), "trace: position %d", &p) == 1)
      position = p;
    else if (sscanf(line.c_str(), "trace: parameter %127s %f", name, &value) == 2)
      trace[name][position] = value;
  }
  return trace;
}

constexpr double beatMs = 60000.0 / 128.0;  // 468.75: the soundtrack's beat

TEST(ScriptProgram, ShippedScriptPunchesTheOpeningsCameraOnTheBeat) {
  const testrun::Result r =
      testrun::runOstravine("-nomusic -res:256 --windowed --fixed-fps 20 --from 7500 --to 10500 --trace", 120);
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  const ParameterTrace trace = parametersOf(r.out);
  ASSERT_EQ(trace.count("performe.cameraFOV"), 1u) << r.out.substr(0, 2000);
  const std::map<int, float>& fov = trace.at("performe.cameraFOV");
  ASSERT_GT(fov.size(), 50u);
  float lowest = 1000, highest = -1000;
  // Per beat of the 128 bpm grid: the narrowest field of view and when.
  std::map<long, std::pair<float, double>> narrowest;
  for (const auto& [ms, value] : fov) {
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
    const long beat = long(ms / beatMs);
    const double sinceBeat = ms - beat * beatMs;
    auto it = narrowest.find(beat);
    if (it == narrowest.end() || value < it->second.first) narrowest[beat] = {value, sinceBeat};
  }
  EXPECT_EQ(highest, 75.0f);
  EXPECT_LT(lowest, 73.0f);
  int punched = 0;
  for (const auto& [beat, low] : narrowest) {
    if (low.first >= 74.0f) continue;
    ++punched;
    EXPECT_LT(low.second, 100.0) << "beat " << beat << ": narrowest " << low.first << " at " << low.second
                                 << " ms after it";
  }
  EXPECT_GE(punched, 5);  // 3 s hold 6 beats
  // The glow swells on the bars too.
  ASSERT_EQ(trace.count("performe.glowBlurAlpha"), 1u);
  float glowLow = 10, glowHigh = -10;
  for (const auto& [ms, value] : trace.at("performe.glowBlurAlpha")) {
    glowLow = std::min(glowLow, value);
    glowHigh = std::max(glowHigh, value);
  }
  EXPECT_EQ(glowLow, 1.0f);
  EXPECT_GT(glowHigh, 1.04f);
}

TEST(ScriptProgram, WithoutAScriptNothingIsDriven) {
  const std::string dir = testrun::scratchRunDirectory("without_script", false);
  ASSERT_FALSE(dir.empty());
  const testrun::Result r =
      testrun::runOstravineIn(dir, "-nomusic -res:256 --windowed --fixed-fps 20 --from 8000 --to 8200 --trace");
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_NE(r.out.find("trace: position"), std::string::npos);
  EXPECT_TRUE(parametersOf(r.out).empty());
}

TEST(ScriptProgram, AScriptOfItsOwnDrivesTheNamedParameter) {
  const std::string dir = testrun::scratchRunDirectory(
      "own_script", true,
      "parameter_defaults {\n}\npulses {\n}\nparameters {\n"
      " in.performe.cameraZoom = sum ( float ( 0.25 ) , mul ( float ( 0.1 ) , demotime (  )  )  )  \n}\n");
  const testrun::Result r =
      testrun::runOstravineIn(dir, "-nomusic -res:256 --windowed --fixed-fps 20 --from 1000 --to 1200 --trace");
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  const ParameterTrace trace = parametersOf(r.out);
  ASSERT_EQ(trace.size(), 1u);
  const std::map<int, float>& zoom = trace.at("performe.cameraZoom");
  ASSERT_GE(zoom.size(), 3u);
  for (const auto& [ms, value] : zoom) EXPECT_NEAR(value, 0.25f + 0.1f * (ms / 1000.0f), 1e-5f) << ms;
}

TEST(ScriptProgram, ADamagedScriptPlaysAllTheSame) {
  std::string garbage = "parameter_defaults { performe.cameraFOV = ( 1e999 ) pulses { pulse[ 99999999999 ] = ( ";
  for (int i = 0; i < 2000; ++i) garbage += char(32 + (i * 7919) % 95);
  garbage += " parameters { in.performe.cameraFOV = pulse[ 0 ] ( pulse[ 0 ] ( sin ( sin ( sin ( ";
  const std::string dir = testrun::scratchRunDirectory("damaged_script", true, garbage);
  const testrun::Result r = testrun::runOstravineIn(dir, "-nomusic -res:256 --windowed --fixed-fps 20 --to 300");
  EXPECT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_EQ(r.signal, 0);
}

}  // namespace
