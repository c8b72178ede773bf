// The production's words through the real executable: found anywhere in the
// line, so "--nomusic", "--music" and "--res:320" act on the word inside.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/RunProgram.h"

namespace fs = std::filesystem;

namespace {

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

const char* const missingMusicWarning = "WARNING: Music file ./music/ostravine.mp3 not found.";

// A run directory with the production's images and models but no music, so
// that the log tells whether the music was asked for: with music on, its
// loading fails with a warning; with music off it is never loaded.
class WithoutMusicFile : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
    char pattern[] = "/tmp/ostravine-nomusic-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    directory = pattern;
    for (const char* folder : {"images", "models"})
      fs::create_directory_symlink(fs::path(OSTRAVINE_RUN_DIR) / folder, directory / folder);
  }
  void TearDown() override {
    if (!directory.empty()) fs::remove_all(directory);
  }
  // Real time, not the fixed clock (which keeps the music off): the run ends
  // at its first frame.
  testrun::Result play(const std::string& words) {
    return testrun::runOnDisplay("'" OSTRAVINE_EXECUTABLE "' " + words + " --windowed --size 64x48 --to 0",
                                 directory.string());
  }
  fs::path directory;
};

}  // namespace

TEST_F(WithoutMusicFile, PlainWordsAreTheBaseline) {
  testrun::Result r = play("-music");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_TRUE(has(r.out, missingMusicWarning)) << r.out;
  r = play("-nomusic");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_FALSE(has(r.out, missingMusicWarning)) << r.out;
}

TEST_F(WithoutMusicFile, DoubleDashedNomusicTurnsTheMusicOff) {
  testrun::Result r = play("--nomusic");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_FALSE(has(r.err, "unknown option")) << r.err;
  EXPECT_FALSE(has(r.out, missingMusicWarning)) << r.out;
}

TEST_F(WithoutMusicFile, DoubleDashedMusicWinsOverNomusic) {
  testrun::Result r = play("--nomusic --music");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_TRUE(has(r.out, missingMusicWarning)) << r.out;
}

TEST_F(WithoutMusicFile, WordGluedInsideAnotherWordCounts) {
  testrun::Result r = play("--abc-nomusicxyz");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_FALSE(has(r.out, missingMusicWarning)) << r.out;
}

TEST(ProgramCommandLine, DoubleDashedResolutionSetsTheSize) {
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  testrun::Result r = testrun::runOstravine("--nomusic --res:320 --windowed --fixed-fps 10 --to 0");
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_TRUE(has(r.out, "Screen effective area size: 320, 240\n")) << r.out;
}

TEST(ProgramCommandLine, OtherUnknownOptionsAreStillRefused) {
  testrun::Result r = testrun::runOstravine("--nomusik");
  EXPECT_EQ(r.exitStatus, 2);
  EXPECT_TRUE(has(r.err, "unknown option --nomusik")) << r.err;
}
