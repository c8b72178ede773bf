// The ostravine executable, run headless under the test display, mostly on
// the fixed clock so every run is the same.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "support/RunProgram.h"

namespace {

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

struct TraceLine {
  int position, offset, picture, step, paused;
};

std::vector<TraceLine> traceOf(const std::string& out) {
  std::vector<TraceLine> lines;
  for (const std::string& line : testrun::lines(out)) {
    TraceLine t{};
    if (sscanf(line.c_str(), "trace: position %d offset %d picture %d step %d paused %d", &t.position, &t.offset,
               &t.picture, &t.step, &t.paused) == 5)
      lines.push_back(t);
  }
  return lines;
}

#define REQUIRE_DISPLAY() \
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display"

}  // namespace

TEST(Program, HelpListsTheOptions) {
  testrun::Result r = testrun::runOstravine("--help");
  EXPECT_EQ(r.exitStatus, 0);
  EXPECT_TRUE(has(r.out, "--fixed-fps"));
  EXPECT_TRUE(has(r.out, "--capture"));
  EXPECT_TRUE(has(r.out, "-res:CODE"));
}

TEST(Program, UnknownOptionIsRefusedWithAMessage) {
  testrun::Result r = testrun::runOstravine("--no-such-option");
  EXPECT_EQ(r.exitStatus, 2);
  EXPECT_TRUE(has(r.err, "unknown option --no-such-option"));
  r = testrun::runOstravine("--fixed-fps abc");
  EXPECT_EQ(r.exitStatus, 2);
  EXPECT_TRUE(has(r.err, "--fixed-fps"));
}

TEST(Program, StartLogAtTheDefaultSize) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOstravine("-nomusic --windowed --fixed-fps 10 --to 0");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  const std::string expected =
      "maximum fbo color attachments: 8\n"
      "Number of texture units supported 8\n"
      "Screen effective area size: 800, 600\n"
      "Screen effective area low size: 400, 300\n"
      "Render-target size: 1024, 1024\n"
      "demo init start.\n";
  EXPECT_TRUE(has(r.out, expected)) << r.out;
  EXPECT_TRUE(has(r.out, "start.\n"));
  EXPECT_FALSE(has(r.out, "not supported"));
  EXPECT_FALSE(has(r.out, "WARNING: Music file"));  // -nomusic never loads it
}

TEST(Program, ResolutionCode99Gives512x384) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOstravine("-nomusic -res:99 --windowed --fixed-fps 10 --to 0");
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_TRUE(has(r.out, "Screen effective area size: 512, 384\n"));
  EXPECT_TRUE(has(r.out, "Screen effective area low size: 256, 192\n"));
  EXPECT_TRUE(has(r.out, "Render-target size: 512, 512\n"));
}

TEST(Program, SizeOptionGoesBeyondTheTable) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOstravine("-nomusic --size 300x200 --windowed --fixed-fps 10 --to 0");
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_TRUE(has(r.out, "Screen effective area size: 300, 200\n"));
  EXPECT_TRUE(has(r.out, "Render-target size: 512, 256\n"));
}

// Across 255.8 s the picture rewinds at 35 times speed to 27.8 s, then runs
// forward; the run ends by itself at the first position past 263.5 s.
TEST(Program, RewindsAndEndsByItselfOnTheTimer) {
  REQUIRE_DISPLAY();
  testrun::Result r =
      testrun::runOstravine("-nomusic -res:256 --windowed --fixed-fps 20 --from 255000 --trace", 300);
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  std::vector<TraceLine> t = traceOf(r.out);
  ASSERT_GT(t.size(), 100u);
  bool sawRewind = false, sawLanding = false;
  int landingPosition = -1;
  for (size_t i = 0; i < t.size(); ++i) {
    const TraceLine& f = t[i];
    EXPECT_EQ(f.picture, f.position + f.offset);
    if (f.position <= 255800) {
      EXPECT_EQ(f.offset, 0) << f.position;
    } else if (f.position + (255800 - f.position) * 36 >= 27800) {
      sawRewind = true;
      EXPECT_EQ(f.picture, 255800 - 35 * (f.position - 255800)) << f.position;
      if (i > 0 && t[i - 1].position > 255800) {
        EXPECT_LT(f.step, 0);
      }
    } else {
      sawLanding = true;
      // The first frame past the landing fixes the offset; the picture then
      // runs forward from 27.8 s at normal speed.
      if (landingPosition < 0) landingPosition = f.position;
      EXPECT_EQ(f.offset, 27800 - landingPosition);
      EXPECT_EQ(f.picture, f.position - landingPosition + 27800);
    }
  }
  EXPECT_TRUE(sawRewind);
  EXPECT_TRUE(sawLanding);
  EXPECT_NEAR(landingPosition, 262314, 50);
  EXPECT_GT(t.back().position, 263500);
  EXPECT_LE(t[t.size() - 2].position, 263500);
}

TEST(Program, NoDisplayFailsEveryProbeAndEndsWithStatus4) {
  testrun::Result r = testrun::run(
      "env -u DISPLAY -u WAYLAND_DISPLAY '" OSTRAVINE_EXECUTABLE "' -nomusic --windowed", OSTRAVINE_RUN_DIR);
  EXPECT_EQ(r.exitStatus, 4) << r.out << r.err;
  EXPECT_TRUE(has(r.err, "Error: Failed to initialize sdl: ")) << r.err;
  const std::string expected =
      "ARB_depth_texture not supported.\n\n"
      "ARB_shadow not supported.\n\n"
      "ARB_texture_rectangle not supported.\n\n"
      "WARNING: EXT_framebuffer_object not supported.\n"
      "maximum fbo color attachments: 0\n"
      "EXT_blend_func_separate not supported.\n\n"
      "ARB_vertex_program not supported.\n\n"
      "ARB_fragment_program not supported.\n\n"
      "EXT_texture_env_combine not supported.\n\n"
      "ARB_multitexture not supported.\n\n"
      "Sorry, multitexturing support is definitely required to run this demonstration.\n";
  EXPECT_EQ(r.out, expected);
}

TEST(Program, MissingMultitexturingEndsWithStatus4) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOnDisplay(
      "OSTRAVINE_HIDE_EXTENSIONS=GL_ARB_multitexture '" OSTRAVINE_EXECUTABLE "' -nomusic -res:256 --windowed",
      OSTRAVINE_RUN_DIR);
  EXPECT_EQ(r.exitStatus, 4) << r.out << r.err;
  EXPECT_TRUE(has(r.out, "maximum fbo color attachments: 8\nARB_multitexture not supported.\n"));
  EXPECT_TRUE(has(r.out, "Sorry, multitexturing support is definitely required to run this demonstration.\n"));
  EXPECT_FALSE(has(r.out, "Screen effective area size"));
}

TEST(Program, RunsWithoutFramebufferObjects) {
  REQUIRE_DISPLAY();
  testrun::Result r = testrun::runOnDisplay("OSTRAVINE_HIDE_EXTENSIONS=GL_EXT_framebuffer_object '" OSTRAVINE_EXECUTABLE
                                   "' -nomusic -res:256 --windowed --fixed-fps 10 --from 1000 --to 3000",
                                   OSTRAVINE_RUN_DIR);
  EXPECT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_TRUE(has(r.out, "WARNING: EXT_framebuffer_object not supported.\nmaximum fbo color attachments: 8\n"));
  EXPECT_FALSE(has(r.out, "ARB_depth_texture not supported"));
  EXPECT_TRUE(has(r.out, "start.\n"));
}

// Without the music file the load completes with the warning and the
// production plays on the timer to its end. These runs on the wall clock
// start two and a half seconds before the end and draw SceneBordersWithout
// there, whose frames (the first above all, when the renderer sets up every
// new state) can take a second on a busy machine: the loop ends only past the
// end, so a clean exit after frames that moved on is the proof.
TEST(Program, MissingMusicWarnsAndPlaysSilently) {
  REQUIRE_DISPLAY();
  char dir[] = "/tmp/ostravine-nomusic-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string d = dir;
  const std::string run = OSTRAVINE_RUN_DIR;
  testrun::run("ln -s '" + run + "/images' '" + d + "/images' && ln -s '" + run + "/models' '" + d + "/models'", "");
  testrun::Result r =
      testrun::runOnDisplay("'" OSTRAVINE_EXECUTABLE "' -res:256 --windowed --from 261000 --trace", d, 120);
  testrun::run("rm -rf '" + d + "'", "");
  EXPECT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_TRUE(has(r.out, "WARNING: Music file ./music/ostravine.mp3 not found.\nstart.\n")) << r.out;
  std::vector<TraceLine> t = traceOf(r.out);
  ASSERT_FALSE(t.empty());
  // The end test reads the position again after the trace line.
  EXPECT_GT(t.size(), 1u);
  EXPECT_GE(t.back().position, 262000);
}

TEST(Program, PlaysTheEndWithMusic) {
  REQUIRE_DISPLAY();
  if (FILE* f = fopen(OSTRAVINE_RUN_DIR "/music/ostravine.mp3", "rb"))
    fclose(f);
  else
    GTEST_SKIP() << "no music file built";
  testrun::Result r = testrun::runOstravine("-res:256 --windowed --from 261000 --trace", 120);
  EXPECT_EQ(r.exitStatus, 0) << r.err;
  EXPECT_FALSE(has(r.out, "WARNING: Music file"));
  std::vector<TraceLine> t = traceOf(r.out);
  ASSERT_FALSE(t.empty());
  EXPECT_GE(t.front().position, 261000);
  EXPECT_GT(t.size(), 1u);
  EXPECT_GE(t.back().position, 262000);
}

TEST(Program, FixedClockStepsExactlyAndCapturesChosenFrames) {
  REQUIRE_DISPLAY();
  char dir[] = "/tmp/ostravine-shots-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string d = dir;
  testrun::Result r = testrun::runOstravine(
      "-nomusic -res:256 --windowed --fixed-fps 30 --from 1000 --trace --capture '" + d + "' --shots 1000,1100");
  EXPECT_EQ(r.exitStatus, 0) << r.err;
  std::vector<TraceLine> t = traceOf(r.out);
  ASSERT_GE(t.size(), 4u);
  EXPECT_EQ(t[0].position, 1000);
  EXPECT_EQ(t[1].position, 1033);
  EXPECT_EQ(t[2].position, 1066);
  EXPECT_EQ(t[3].position, 1100);
  EXPECT_EQ(t.back().position, 1100);  // the run ends after the last shot
  FILE* a = fopen((d + "/shot-1000.png").c_str(), "rb");
  FILE* b = fopen((d + "/shot-1100.png").c_str(), "rb");
  EXPECT_NE(a, nullptr);
  EXPECT_NE(b, nullptr);
  if (a) fclose(a);
  if (b) fclose(b);
  testrun::run("rm -rf '" + d + "'", "");
}
