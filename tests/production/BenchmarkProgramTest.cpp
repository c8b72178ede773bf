// --benchmark's frame profile through the real executable: the pass times
// and the per-frame counts appear for every scene shown, and they tell a
// frame that draws a scene from one that draws none.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/VideoEncoder.h"
#include "support/RunProgram.h"

namespace {

const std::vector<std::string> passNames = {"shadow",  "glow-source", "glow",  "picture", "overlay",
                                            "animate", "composition", "grain", "swap",    "other"};

// The "name value" pairs of the benchmark line that starts with `prefix`.
std::map<std::string, double> figures(const std::string& out, const std::string& prefix) {
  std::map<std::string, double> result;
  for (const std::string& line : testrun::lines(out)) {
    if (line.compare(0, prefix.size(), prefix) != 0) continue;
    std::istringstream words(line.substr(prefix.size()));
    std::string name;
    double value = 0;
    while (words >> name >> value) result[name] = value;
  }
  return result;
}

// A benchmark run of the stretch; `environment` goes before the command,
// `moreArguments` after it.
testrun::Result benchmark(int fromMs, int toMs, const std::string& environment = "",
                          const std::string& moreArguments = "") {
  return testrun::runOnDisplay(environment + "'" OSTRAVINE_EXECUTABLE "' -nomusic --windowed --size 160x90 "
                               "--fixed-fps 25 --benchmark --from " + std::to_string(fromMs) + " --to " +
                               std::to_string(toMs) + moreArguments, OSTRAVINE_RUN_DIR);
}

class BenchmarkProfile : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  }
};

}  // namespace

TEST_F(BenchmarkProfile, ASceneFrameHasEveryPassAndCountsItsWork) {
  const testrun::Result r = benchmark(26500, 26700);  // the second scene, which casts shadows and glows
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  const auto passes = figures(r.out, "benchmark: scene bordersWithout pass-ms");
  ASSERT_EQ(passes.size(), passNames.size()) << r.out;
  for (const std::string& pass : passNames) {
    ASSERT_EQ(passes.count(pass), 1u) << pass << "\n" << r.out;
    EXPECT_GE(passes.at(pass), 0.0) << pass;
    EXPECT_LT(passes.at(pass), 60000.0) << pass;
  }
  EXPECT_GT(passes.at("picture"), 0.0);
  EXPECT_GT(passes.at("glow-source"), 0.0);
  const auto processor = figures(r.out, "benchmark: scene bordersWithout pass-cpu-ms");
  ASSERT_EQ(processor.size(), passNames.size()) << r.out;
  EXPECT_GT(processor.at("picture"), 0.0);
  const auto counts = figures(r.out, "benchmark: scene bordersWithout per-frame");
  ASSERT_EQ(counts.size(), 3u) << r.out;
  // Shadow maps, glow, masks, light images, billboards: far more than the
  // present and grain quads of an empty frame.
  EXPECT_GT(counts.at("draw-calls"), 20.0);
  EXPECT_GT(counts.at("triangles"), counts.at("draw-calls"));
  // Without framebuffer objects every slot is filled by a copy: at least the
  // layer and the present copy of the whole 160x90 picture.
  EXPECT_GE(counts.at("pixels-copied"), 2.0 * 160 * 90);
}

TEST_F(BenchmarkProfile, AnEmptyFrameDrawsOnlyThePresentAndTheGrain) {
  // Nothing scheduled: every frame is empty.
  const testrun::Result r = benchmark(26500, 26700, "OSTRAVINE_BENCHMARK_EMPTY=1 ");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  const auto passes = figures(r.out, "benchmark: scene (none) pass-ms");
  ASSERT_EQ(passes.size(), passNames.size()) << r.out;
  for (const char* pass : {"shadow", "glow-source", "glow", "picture", "overlay", "animate"})
    EXPECT_EQ(passes.at(pass), 0.0) << pass;
  const auto counts = figures(r.out, "benchmark: scene (none) per-frame");
  ASSERT_EQ(counts.size(), 3u) << r.out;
  // The letterboxed present quad and the grain quad, two triangles each.
  EXPECT_EQ(counts.at("draw-calls"), 2.0);
  EXPECT_EQ(counts.at("triangles"), 4.0);
  // One copy of the picture for the present, no more.
  EXPECT_LE(counts.at("pixels-copied"), 160.0 * 90);
}

TEST_F(BenchmarkProfile, WithoutTheOptionNothingIsProfiled) {
  const testrun::Result r =
      testrun::runOstravine("-nomusic --windowed --size 160x90 --fixed-fps 25 --from 26500 --to 26600");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_EQ(r.out.find("pass-ms"), std::string::npos);
  EXPECT_EQ(r.out.find("draw-calls"), std::string::npos);
}

// A --video run counts every frame it writes, so its frame rate compares with
// a plain run's over the same stretch: 200 ms at 25 fps is 5 frames in both.
TEST_F(BenchmarkProfile, AVideoRunCountsTheFramesItWrites) {
  if (findOnPath("ffmpeg").empty()) GTEST_SKIP() << "no ffmpeg";
  const testrun::Result plain = benchmark(26500, 26700);
  ASSERT_EQ(plain.exitStatus, 0) << plain.out << plain.err;
  const testrun::TempDir d("benchmark");
  ASSERT_FALSE(d.path.empty());
  const std::string file = d.path + "/stretch.mp4";
  const testrun::Result recorded = benchmark(26500, 26700, "", " --video '" + file + "'");
  ASSERT_EQ(recorded.exitStatus, 0) << recorded.out << recorded.err;
  EXPECT_NE(recorded.out.find("video: wrote " + file + ", 5 frames"), std::string::npos) << recorded.out;
  const auto counted = [](const std::string& out) {
    const std::string prefix = "benchmark: all frames ";
    for (const std::string& line : testrun::lines(out))
      if (line.compare(0, prefix.size(), prefix) == 0) return std::atoi(line.c_str() + prefix.size());
    return -1;
  };
  EXPECT_EQ(counted(plain.out), 5) << plain.out;
  EXPECT_EQ(counted(recorded.out), 5) << recorded.out;
}
