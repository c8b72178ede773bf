// The whole film on a fixed clock at a small size: from the opening through
// the rewind to the end, where the program exits by itself, with one frame a
// few seconds into each scene and one just after the rewind lands compared
// with tests/references/film_<ms>.png.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace {

struct FilmFrame {
  int positionMs;     // music position of the shot (the first frame at or past it)
  const char* shows;  // what the frame shows, for the failure message
};

// One frame a few seconds into each scene, in position order.
const FilmFrame filmFrames[] = {
    {4000, "ScenePerforme, the wall under the light"},
    {30500, "SceneBordersWithout, out of black"},
    {48800, "SceneBordersWithin, the thread of cubes"},
    {79000, "SceneBordersWithme, the tunnel"},
    {105000, "SceneBordersWiththem, the needles"},
    {124000, "SceneBordersWithus, the wall of slivers"},
    {139000, "SceneBordersMeetus, the swarm before the slab"},
    {169000, "SceneBordersWithyou, the folding sheet"},
    {191300, "SceneBordersRollin, the rolling bars"},
    {221500, "SceneBordersRollout, the column of slats"},
    {236500, "SceneBordersRollus, the grid before it comes apart"},
    {250000, "SceneBordersRollus, the title"},
};

// The last frame of the film: position 263500, 1.1 s after the rewind has
// landed at 27.8 s of picture time, so SceneBordersWithout shows. Taken as
// the last shot, it keeps the run going to the end.
constexpr int endOfFilmMs = 263500;
constexpr bool compareEndOfFilm = true;

testimg::Tolerance filmTolerance() {
  testimg::Tolerance t;  // as the scene pictures: far below a moved object or a lost title
  t.maxMeanDiff = 3.0;
  t.pixelThreshold = 48;
  t.maxBadShare = 0.03;
  return t;
}

}  // namespace

TEST(WholeFilm, PlaysThroughTheRewindToTheEnd) {
  setenv("SDL_AUDIODRIVER", "dummy", 1);
  setenv("SDL12COMPAT_OPENGL_SCALING", "0", 1);
  const std::string dir = std::string(OSTRAVINE_BINARY_DIR) + "/whole_film";
  mkdir(dir.c_str(), 0755);
  testrun::run("rm -f shot-*.png shot-*.png.diff.png", dir, 10);
  std::string list;
  for (const FilmFrame& f : filmFrames) list += std::to_string(f.positionMs) + ",";
  list += std::to_string(endOfFilmMs);
  const testrun::Result r = testrun::runOstravine(
      "-nomusic --windowed --size 128x72 --fixed-fps 10 --trace --capture " + dir + " --shots " + list, 1500);
  ASSERT_FALSE(r.timedOut);
  ASSERT_EQ(r.exitStatus, 0) << r.err;

  // The rewind: the picture runs back at 35 times speed and lands at 27.8 s,
  // then plays on to the end of the music.
  int lastPosition = 0, lastPicture = 0, rewindFrames = 0;
  for (const std::string& line : testrun::lines(r.out)) {
    int position = 0, offset = 0, picture = 0, step = 0, paused = 0;
    if (std::sscanf(line.c_str(), "trace: position %d offset %d picture %d step %d paused %d", &position, &offset,
                    &picture, &step, &paused) != 5)
      continue;
    rewindFrames += step == -3500;
    lastPosition = position;
    lastPicture = picture;
  }
  EXPECT_GT(rewindFrames, 50);
  EXPECT_EQ(lastPosition, endOfFilmMs);
  EXPECT_EQ(lastPicture, 28900) << "1.1 s after landing at 27.8 s";
  for (const std::string& line : testrun::lines(r.out + r.err)) {
    EXPECT_EQ(line.find("rror"), std::string::npos) << line;
  }

  for (const FilmFrame& f : filmFrames) {
    const std::string shot = dir + "/shot-" + std::to_string(f.positionMs) + ".png";
    const testimg::Comparison c =
        testimg::compareToReference(shot, "film_" + std::to_string(f.positionMs) + ".png", filmTolerance());
    EXPECT_TRUE(c.passed) << f.shows << ": " << c.message;
  }
  const std::string end = dir + "/shot-" + std::to_string(endOfFilmMs) + ".png";
  struct stat info;
  EXPECT_EQ(stat(end.c_str(), &info), 0) << "the end of the film was reached and shot";
  if (compareEndOfFilm) {
    const testimg::Comparison c =
        testimg::compareToReference(end, "film_" + std::to_string(endOfFilmMs) + ".png", filmTolerance());
    EXPECT_TRUE(c.passed) << "the end, just after the rewind: " << c.message;
  }
}
