// The production's manifest as data: the texture table, the scene list and
// the schedule, which are easy to confuse.
#include <gtest/gtest.h>

#include <string>

#include "core/OstravineDemo.h"

TEST(Manifest, SceneIndicesAndShortNames) {
  const char* expected[11] = {"performe",        "bordersWithin", "bordersWithout", "bordersWithme",
                              "bordersWithyou",  "bordersWithus", "bordersWiththem", "bordersMeetus",
                              "bordersRolin",    "bordersRolout", "bordersRollus"};
  for (int i = 0; i < 11; ++i) EXPECT_STREQ(productionSceneNames[i], expected[i]) << i;
}

// Rollin has index 8 though it is ninth in time; Withyou, index 4, is eighth.
TEST(Manifest, ScheduleIsInTimeOrderNotIndexOrder) {
  const ScheduleRow expected[11] = {{0, 26500, 0},          {26500, 44800, 2},     {44800, 75000, 1},
                                    {75000, 101000, 3},     {101000, 120000, 6},   {120000, 135000, 5},
                                    {135000, 165000, 7},    {165000, 187300, 4},   {187300, 217500, 8},
                                    {217500, 232500, 9},    {232500, 256500, 10}};
  for (int i = 0; i < 11; ++i) {
    EXPECT_EQ(productionSchedule[i].startTime, expected[i].startTime) << i;
    EXPECT_EQ(productionSchedule[i].endTime, expected[i].endTime) << i;
    EXPECT_EQ(productionSchedule[i].sceneIndex, expected[i].sceneIndex) << i;
  }
  EXPECT_EQ(productionSchedule[8].sceneIndex, 8);
  EXPECT_STREQ(productionSceneNames[productionSchedule[8].sceneIndex], "bordersRolin");
  EXPECT_STREQ(productionSceneNames[productionSchedule[7].sceneIndex], "bordersWithyou");
}

// Each scene ends where the next begins: exactly one is on at any time below 256.5 s.
TEST(Manifest, ScheduleLeavesNoGapAndNoOverlap) {
  EXPECT_EQ(productionSchedule[0].startTime, 0);
  for (int i = 1; i < 11; ++i) EXPECT_EQ(productionSchedule[i].startTime, productionSchedule[i - 1].endTime) << i;
  EXPECT_EQ(productionSchedule[10].endTime, 256500);
  bool used[11] = {};
  for (const ScheduleRow& row : productionSchedule) {
    ASSERT_GE(row.sceneIndex, 0);
    ASSERT_LT(row.sceneIndex, 11);
    EXPECT_FALSE(used[row.sceneIndex]) << "scene scheduled twice";
    used[row.sceneIndex] = true;
  }
}

TEST(Manifest, TextureTable) {
  struct Row {
    const char* name;
    const char* file;
    bool scale;
  } expected[16] = {{"hopmet", "./images/hopmet.png", false},
                    {"planartexture", "./images/hopmetnoiseb.png", false},
                    {"solidnoisebump", "./images/solidnoisebump.png", false},
                    {"black", "./images/black.png", false},
                    {"white", "./images/white.png", false},
                    {"bill", "./images/bill.png", true},
                    {"billbig", "./images/billbig.png", true},
                    {"bill_d2ch", "./images/bill_d2c_holes.png", true},
                    {"kestrin", "./images/kestrin.png", true},
                    {"ks", "./images/ks.png", true},
                    {"ostl", "./images/OSTL512.png", true},
                    {"mustis2", "./images/noisis2.png", true},
                    {"mustis5", "./images/noisis5.png", true},
                    {"ostlb", "./images/OSTL512b.png", true},
                    {"mb", "./images/mb.png", true},
                    {"cd", "./images/cd.png", true}};
  for (int i = 0; i < 16; ++i) {
    EXPECT_STREQ(productionTextures[i].name, expected[i].name) << i;
    EXPECT_STREQ(productionTextures[i].file, expected[i].file) << i;
    EXPECT_EQ(productionTextures[i].whiteScale, expected[i].scale) << i;
  }
}

// Every file the table names is made by the build into the run directory.
TEST(Manifest, EveryTextureFileIsBuilt) {
  for (const TextureTableRow& row : productionTextures) {
    const std::string path = std::string(OSTRAVINE_RUN_DIR) + "/" + (row.file + 2);
    FILE* f = fopen(path.c_str(), "rb");
    EXPECT_NE(f, nullptr) << path;
    if (f) fclose(f);
  }
}
