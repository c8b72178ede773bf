// Frames of the scenes, each played by the executable from its start on a
// fixed clock (so that what is integrated over steps,
// the motes, is the same every run), compared with reference pictures.
// They show the scenes as they build themselves: the run directory here has
// no script, so neither the shipped parameter defaults nor its flow charts
// change the picture (tests/production/ScriptProgramTest covers those).
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace {

// Identical runs give identical frames on one machine; the margin allows for
// another rasteriser build, while a moved object, a lost title or a changed
// glow still fails (each changes far more than 3 % of the pixels).
testimg::Tolerance pictureTolerance() {
  testimg::Tolerance t;
  t.maxMeanDiff = 3.0;
  t.pixelThreshold = 48;
  t.maxBadShare = 0.03;
  return t;
}

std::string scratchDirectory(const std::string& name) {
  const std::string dir = std::string(OSTRAVINE_BINARY_DIR) + "/scene_pictures";
  mkdir(dir.c_str(), 0755);
  const std::string sub = dir + "/" + name;
  mkdir(sub.c_str(), 0755);
  testrun::run("rm -f shot-*.png shot-*.png.diff.png", sub, 10);
  return sub;
}

// `size`: the display option, "-res:256" (256 x 192) or "--size 256x144".
void playAndCompare(const std::string& sceneName, int fps, int fromMs, const std::vector<int>& shots,
                    const std::string& size = "-res:256") {
  setenv("SDL_AUDIODRIVER", "dummy", 1);
  setenv("SDL12COMPAT_OPENGL_SCALING", "0", 1);
  const std::string dir = scratchDirectory(sceneName);
  std::string list;
  for (int ms : shots) list += (list.empty() ? "" : ",") + std::to_string(ms);
  const std::string args = "-nomusic --windowed " + size + " --fixed-fps " + std::to_string(fps) + " --from " +
                           std::to_string(fromMs) + " --capture " + dir + " --shots " + list;
  const std::string runDir = testrun::scratchRunDirectory("scene_pictures", false);
  ASSERT_FALSE(runDir.empty());
  const testrun::Result r = testrun::runOstravineIn(runDir, args, 300);
  ASSERT_FALSE(r.timedOut);
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  for (int ms : shots) {
    const std::string shot = dir + "/shot-" + std::to_string(ms) + ".png";
    const testimg::Comparison c =
        testimg::compareToReference(shot, "scene_" + sceneName + "_" + std::to_string(ms) + ".png", pictureTolerance());
    EXPECT_TRUE(c.passed) << c.message;
  }
}

}  // namespace

// The wall under the wandering light; then before, during and after each
// maker title ("kestrin" at 15.8 s, "ks" at 21.4 s).
TEST(ScenePictures, OpeningWithTheMakerTitles) {
  playAndCompare("performe", 10, 0, {6000, 15000, 16000, 17000, 21000, 22000, 23500});
}

// Just after the first flash, the swarm before the slab, and the end.
TEST(ScenePictures, CubeField) { playAndCompare("bordersMeetus", 5, 135000, {135800, 145000, 153000, 164500}); }

// The rolling bars: early, on the swing, and near the end.
TEST(ScenePictures, RollingBars) {
  playAndCompare("bordersRolin", 10, 187300, {188000, 195000, 205000, 216000}, "--size 256x144");
}

// The column of slats, ten seconds into its own time from the first frame.
TEST(ScenePictures, ColumnOfSlats) {
  playAndCompare("bordersRolout", 10, 217500, {219000, 225000, 232000}, "--size 256x144");
}

// The grid coming apart, the flash fading into the title, the wobble dying
// away, and the fade to black behind the title.
TEST(ScenePictures, TheEnd) {
  playAndCompare("bordersRollus", 10, 232500, {236000, 244000, 248500, 250000, 254500}, "--size 256x144");
}
