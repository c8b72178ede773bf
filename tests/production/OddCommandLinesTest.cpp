// Odd command lines through the real executable: each gets the production's
// own behaviour or one clear line and status 2, never a crash.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/RunProgram.h"

namespace {

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

#define REQUIRE_DISPLAY() \
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display"

const std::string exe = "'" OSTRAVINE_EXECUTABLE "' ";

}  // namespace

// Refused before the display opens: one line on stderr, nothing else.
TEST(OddCommandLines, BadPlayerOptionsGetOneLineAndStatus2) {
  struct Case {
    const char* arguments;
    const char* message;
  } cases[] = {
      {"--", "unknown option --"},
      {"-nomusic --frobnicate", "unknown option --frobnicate"},
      {"--size 0x0", "--size: '0x0' is not a size"},
      {"--size 100000x100000", "--size: '100000x100000' is not a size"},
      {"--size 99999999999x5", "is not a size"},
      {"--size -5x-5", "is not a size"},
      {"--size 64x36x", "is not a size"},
      {"--size", "--size needs a size"},
      {"--fixed-fps 0", "--fixed-fps: '0' is not a frame rate"},
      {"--fixed-fps -1", "is not a frame rate"},
      {"--fixed-fps 99999999999999999999", "is not a frame rate"},
      {"--from -1", "--from: '-1' is not a position"},
      {"--from 99999999999", "is not a position"},
      {"--to -5", "--to: '-5' is not a position"},
      {"--to 1e3", "is not a position"},
      {"--from 2000 --to 1000", "--to lies before --from"},
      {"--shots ,", "--shots: '' is not a position"},
      {"--shots 1,-2", "--shots: '-2' is not a position"},
      {"--capture", "--capture needs a directory"},
      {"--capture /nonexistent/a/b", "--capture: cannot make the folder /nonexistent/a/b"},
      {"--capture /dev/null", "--capture: /dev/null is not a folder"},
      {"--video /nonexistent/film.mp4", "--video: the folder /nonexistent does not exist"},
      {"--video /tmp", "does not end in .mp4"},
      {"--video /tmp/.mkv/ --lossless", "--lossless writes FFV1 into a .mkv file"},
  };
  for (const Case& c : cases) {
    testrun::Result r = testrun::run("env -u DISPLAY " + exe + c.arguments, OSTRAVINE_RUN_DIR);
    EXPECT_EQ(r.exitStatus, 2) << c.arguments << "\n" << r.out << r.err;
    EXPECT_EQ(r.signal, 0) << c.arguments;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << "\n" << r.err;
    EXPECT_EQ(r.err.rfind("ostravine: ", 0), 0u) << r.err;
    EXPECT_EQ(testrun::lines(r.err).size(), 1u) << c.arguments << "\n" << r.err;
    EXPECT_EQ(r.out, "") << c.arguments;
  }
}

// The production's words are searched in the whole line; whatever else
// stands there is no word and changes nothing. Codes outside the table,
// huge or negative ones included, give 512 x 384; a "-res:" without a number
// leaves the default 800 x 600.
TEST(OddCommandLines, ProductionWordsKeepTheirMeaningWhateverSurroundsThem) {
  REQUIRE_DISPLAY();
  struct Case {
    const char* arguments;
    const char* size;
  } cases[] = {
      {"'' ''", "800, 600"},
      {"hello world -x +y", "800, 600"},
      {"-res:99999999999999999999", "512, 384"},
      {"-res:-5", "512, 384"},
      {"-res:0", "512, 384"},
      {"-res:100000", "512, 384"},
      {"-res:", "800, 600"},
      {"-res:abc", "800, 600"},
  };
  for (const Case& c : cases) {
    testrun::Result r = testrun::runOstravine(std::string(c.arguments) + " -nomusic --windowed --fixed-fps 10 --to 0");
    EXPECT_EQ(r.exitStatus, 0) << c.arguments << "\n" << r.out << r.err;
    EXPECT_TRUE(has(r.out, std::string("Screen effective area size: ") + c.size + "\n")) << c.arguments << "\n"
                                                                                        << r.out;
    EXPECT_TRUE(has(r.out, "start.\n")) << c.arguments;
  }
}

// A start past the end of the film is the seek's clamp: the run starts at
// 263.5 s, where the rewind has already landed, and ends by itself.
TEST(OddCommandLines, FromPastTheEndPlaysTheLastFrames) {
  REQUIRE_DISPLAY();
  for (const char* from : {"300000", "2147483647"}) {
    testrun::Result r = testrun::runOstravine(std::string("-nomusic -res:256 --windowed --fixed-fps 10 --trace --from ") + from);
    EXPECT_EQ(r.exitStatus, 0) << r.out << r.err;
    EXPECT_TRUE(has(r.out, "trace: position 263500 offset -235700 picture 27800")) << r.out;
    EXPECT_TRUE(has(r.out, "trace: position 263600 offset -235700 picture 27900 step 100")) << r.out;
    EXPECT_FALSE(has(r.out, "trace: position 263700"));
  }
}

// An empty line is the production itself: full screen, 800 x 600, music on
// the real clock. It is still playing when the test stops it.
TEST(OddCommandLines, AnEmptyLinePlaysTheProduction) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOnDisplay("exec " + exe, OSTRAVINE_RUN_DIR, 20);
  EXPECT_TRUE(r.timedOut) << r.out << r.err;
  EXPECT_TRUE(has(r.out, "Screen effective area size: 800, 600\n")) << r.out;
  EXPECT_FALSE(has(r.err, "ostravine:")) << r.err;
}
