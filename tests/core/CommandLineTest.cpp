#include <gtest/gtest.h>

#include "core/CommandLine.h"

namespace {
ProductionOptions parse(const std::string& line) { return parseProductionLine(line); }

PlayerOptions player(std::vector<std::string> words) {
  std::vector<char*> argv;
  static char program[] = "ostravine";
  argv.push_back(program);
  for (std::string& w : words) argv.push_back(&w[0]);
  return parsePlayerOptions(int(argv.size()), argv.data());
}
}  // namespace

TEST(CommandLine, NoResolutionWordGives800x600) {
  ProductionOptions o = parse("");
  EXPECT_EQ(o.width, 800);
  EXPECT_EQ(o.height, 600);
  EXPECT_TRUE(o.audioEnabled);
  EXPECT_TRUE(o.fullscreen);
}

TEST(CommandLine, UnknownCode99Gives512x384) {
  ProductionOptions o = parse("-res:99");
  EXPECT_EQ(o.resolutionCode, 99);
  EXPECT_EQ(o.width, 512);
  EXPECT_EQ(o.height, 384);
}

TEST(CommandLine, WholeResolutionTable) {
  struct Row {
    int code, w, h;
  } rows[] = {{256, 256, 192},     {256192, 256, 192},   {256144, 256, 144},  {320, 320, 240},
              {320240, 320, 240},  {512, 512, 384},      {512384, 512, 384},  {640, 640, 480},
              {640480, 640, 480},  {640400, 640, 400},   {640360, 640, 360},  {704480, 704, 480},
              {720480, 720, 480},  {800, 800, 600},      {800600, 800, 600},  {800500, 800, 500},
              {800450, 800, 450},  {854480, 854, 480},   {1024, 1024, 768},   {1024768, 1024, 768},
              {1024640, 1024, 640}, {1024576, 1024, 576}, {1280, 1280, 1024},  {12801024, 1280, 1024},
              {1280800, 1280, 800}, {1280720, 1280, 720}, {0, 512, 384},       {-5, 512, 384},
              {600800, 512, 384}};
  for (const Row& r : rows) {
    int32_t w = 0, h = 0;
    resolutionOfCode(r.code, w, h);
    EXPECT_EQ(w, r.w) << r.code;
    EXPECT_EQ(h, r.h) << r.code;
    ProductionOptions o = parse("-res:" + std::to_string(r.code));
    EXPECT_EQ(o.width, r.w) << r.code;
    EXPECT_EQ(o.height, r.h) << r.code;
  }
}

TEST(CommandLine, MusicWinsOverNomusic) {
  EXPECT_TRUE(parse("-nomusic -music").audioEnabled);
  EXPECT_TRUE(parse("-music -nomusic").audioEnabled);
  EXPECT_FALSE(parse("-nomusic").audioEnabled);
}

// "-nomusic" does not contain "-music" (the o stands between), so the
// second search is a separate word.
TEST(CommandLine, NomusicAloneDoesNotMatchMusic) { EXPECT_FALSE(parse("x-nomusicx").audioEnabled); }

TEST(CommandLine, GluedWordsCount) {
  EXPECT_TRUE(parse("-nomusic abc-musicxyz").audioEnabled);
  EXPECT_FALSE(parse("abc-nomusicxyz").audioEnabled);
  ProductionOptions o = parse("foo-res:320bar");
  EXPECT_EQ(o.width, 320);
  EXPECT_EQ(o.height, 240);
}

TEST(CommandLine, OnlyTheFirstResolutionWordCounts) {
  ProductionOptions o = parse("-res:320 -res:640");
  EXPECT_EQ(o.width, 320);
}

TEST(CommandLine, ResolutionWithoutNumberKeepsDefault) {
  ProductionOptions o = parse("-res:abc");
  EXPECT_EQ(o.resolutionCode, 800600);
  EXPECT_EQ(o.width, 800);
}

TEST(CommandLine, FullscreenAlwaysOn) {
  EXPECT_TRUE(parse("").fullscreen);
  EXPECT_TRUE(parse("-fullscreen").fullscreen);
}

TEST(CommandLine, JoinArgumentsSkipsProgramName) {
  char a0[] = "prog", a1[] = "-res:", a2[] = "320";
  char* argv[] = {a0, a1, a2};
  EXPECT_EQ(joinArguments(3, argv), "-res: 320");
  // "-res:%d" skips blanks before the number, so it may stand in the next argument.
  EXPECT_EQ(parse(joinArguments(3, argv)).width, 320);
}

TEST(PlayerOptions, ReadsEveryOption) {
  PlayerOptions o = player({"--windowed", "--size", "333x222", "--fixed-fps", "25", "--from", "1000", "--to", "2000",
                            "--capture", "/tmp/x", "--shots", "1000,1500", "--benchmark", "--settings", "--lazy-targets"});
  EXPECT_TRUE(o.error.empty()) << o.error;
  EXPECT_TRUE(o.windowed);
  EXPECT_EQ(o.sizeWidth, 333);
  EXPECT_EQ(o.sizeHeight, 222);
  EXPECT_EQ(o.fixedFps, 25);
  EXPECT_TRUE(o.hasFrom);
  EXPECT_EQ(o.fromMs, 1000);
  EXPECT_EQ(o.toMs, 2000);
  EXPECT_EQ(o.captureDir, "/tmp/x");
  EXPECT_EQ(o.shots, (std::vector<int32_t>{1000, 1500}));
  EXPECT_TRUE(o.benchmark);
  EXPECT_TRUE(o.settings);
  EXPECT_FALSE(player({"--windowed"}).settings);
  EXPECT_TRUE(o.lazyTargets);
  EXPECT_FALSE(player({"--windowed"}).lazyTargets);
}

TEST(PlayerOptions, ProductionWordsAreLeftAlone) {
  PlayerOptions o = player({"-nomusic", "-res:320"});
  EXPECT_TRUE(o.error.empty());
  EXPECT_FALSE(o.windowed);
}

// A "--" argument that is not the player's but holds a production word is
// the production's: the line search acts on the word inside it.
TEST(PlayerOptions, DoubleDashedProductionWordsAreLeftToTheProduction) {
  for (const char* word : {"--nomusic", "--music", "--fullscreen", "--res:320", "--res:", "--musicbox"}) {
    PlayerOptions o = player({word});
    EXPECT_TRUE(o.error.empty()) << word << ": " << o.error;
  }
  EXPECT_FALSE(parse("--nomusic").audioEnabled);
  EXPECT_EQ(parse("--res:320").width, 320);
  EXPECT_TRUE(parse("--nomusic --music").audioEnabled);
  // Words close to a production word are still refused.
  EXPECT_NE(player({"--nomusik"}).error, "");
  EXPECT_NE(player({"--res"}).error, "");
  EXPECT_NE(player({"--window"}).error, "");
}

TEST(PlayerOptions, ContainsProductionWord) {
  EXPECT_TRUE(containsProductionWord("abc-nomusicxyz"));
  EXPECT_TRUE(containsProductionWord("--fullscreen"));
  EXPECT_TRUE(containsProductionWord("-res:"));
  EXPECT_FALSE(containsProductionWord("--windowed"));
  EXPECT_FALSE(containsProductionWord("music"));
  EXPECT_FALSE(containsProductionWord("-res"));
}

TEST(PlayerOptions, BadValuesGiveMessages) {
  EXPECT_NE(player({"--size", "12"}).error, "");
  EXPECT_NE(player({"--size", "0x0"}).error, "");
  EXPECT_NE(player({"--fixed-fps", "0"}).error, "");
  EXPECT_NE(player({"--fixed-fps", "ten"}).error, "");
  EXPECT_NE(player({"--from", "-5"}).error, "");
  EXPECT_NE(player({"--from"}).error, "");
  EXPECT_NE(player({"--to", "100", "--from", "200"}).error, "");
  EXPECT_NE(player({"--shots", "1,x"}).error, "");
  EXPECT_NE(player({"--bogus"}).error, "");
}

TEST(PlayerOptions, ShotsWithoutDirectoryGoToCurrent) { EXPECT_EQ(player({"--shots", "5"}).captureDir, "."); }

TEST(PlayerOptions, HelpNamesEveryOption) {
  const std::string help = playerHelpText();
  for (const char* word : {"-nomusic", "-music", "-fullscreen", "-res:", "--windowed", "--size", "--fixed-fps",
                           "--from", "--to", "--capture", "--shots", "--benchmark", "--trace", "--settings", "--lazy-targets",
                           "OSTRAVINE_DISPLAY_MODES", "--help"})
    EXPECT_NE(help.find(word), std::string::npos) << word;
}
