// ScenePictures: plays a scene through the executable from a start on a fixed
// clock (so that what is integrated over steps, the motes, is the same every
// run) and compares shots with reference pictures.
#pragma once
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace scenepictures {

// Identical runs give identical frames on one machine; the margin allows for
// another rasteriser build, while a moved object, a lost title or a changed
// glow still fails (each changes far more than 3 % of the pixels).
inline testimg::Tolerance pictureTolerance() {
  testimg::Tolerance t;
  t.maxMeanDiff = 3.0;
  t.pixelThreshold = 48;
  t.maxBadShare = 0.03;
  return t;
}

inline std::string scratchDirectory(const std::string& name) {
  const std::string dir = std::string(OSTRAVINE_BINARY_DIR) + "/scene_pictures";
  mkdir(dir.c_str(), 0755);
  const std::string sub = dir + "/" + name;
  mkdir(sub.c_str(), 0755);
  testrun::run("rm -f shot-*.png shot-*.png.diff.png", sub, 10);
  return sub;
}

// Plays at 256 x 192 from fromMs at fps frames a second and compares the
// first frame at or past each shot (music position, ms) with
// tests/references/scene_<name>_<ms>.png.
// `size`: the display option, "-res:256" (256 x 192) or "--size 256x144".
// The run directory has no script, so the frames show the scenes as they
// build themselves (tests/production/ScriptProgramTest covers the script).
inline void playAndCompare(const std::string& sceneName, int fps, int fromMs, const std::vector<int>& shots,
                           const std::string& size = "-res:256") {
  setenv("SDL_AUDIODRIVER", "dummy", 1);
  setenv("SDL12COMPAT_OPENGL_SCALING", "0", 1);
  const std::string dir = scratchDirectory(sceneName);
  std::string list;
  for (int ms : shots) list += (list.empty() ? "" : ",") + std::to_string(ms);
  const std::string args = "-nomusic --windowed " + size + " --fixed-fps " + std::to_string(fps) + " --from " +
                           std::to_string(fromMs) + " --capture " + dir + " --shots " + list;
  const std::string runDir = testrun::scratchRunDirectory("scene_pictures_" + sceneName, false);
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

}  // namespace scenepictures
