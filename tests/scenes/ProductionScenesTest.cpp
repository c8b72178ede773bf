// The production's scene factory: which index makes which scene.
#include <gtest/gtest.h>

#include "SceneTestDemo.h"
#include "core/Globals.h"
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersRollin.h"
#include "scenes/SceneBordersRollout.h"
#include "scenes/SceneBordersRollus.h"
#include "scenes/SceneBordersWithin.h"
#include "scenes/SceneBordersWithme.h"
#include "scenes/SceneBordersWithout.h"
#include "scenes/ScenePerforme.h"

TEST(ProductionScenes, IndexZeroIsTheOpeningAndSevenTheCubeField) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ASSERT_EQ(theDemo, nullptr) << "scenes are built for the Demo they are given, not the global";
  Demo* demo = &scenetest::demo();
  Scene* opening = makeProductionScene(demo, 0, "performe");
  Scene* field = makeProductionScene(demo, 7, "bordersMeetus");
  Scene* beyond = makeProductionScene(demo, 11, "none");
  ASSERT_NE(dynamic_cast<ScenePerforme*>(opening), nullptr);
  ASSERT_NE(dynamic_cast<SceneBordersMeetus*>(field), nullptr);
  EXPECT_EQ(beyond, nullptr) << "there are eleven scenes";
  EXPECT_EQ(opening->name, "performe");
  EXPECT_EQ(field->name, "bordersMeetus");
  EXPECT_EQ(static_cast<ScenePerforme*>(opening)->demo, demo);
  EXPECT_EQ(static_cast<SceneBordersMeetus*>(field)->demo, demo);
  delete field;
  delete opening;
}

TEST(ProductionScenes, TheLastThreeAreTheRollingScenes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  Demo* demo = &scenetest::demo();
  Scene* rollin = makeProductionScene(demo, 8, "bordersRolin");
  Scene* rollout = makeProductionScene(demo, 9, "bordersRolout");
  Scene* rollus = makeProductionScene(demo, 10, "bordersRollus");
  EXPECT_NE(dynamic_cast<SceneBordersRollin*>(rollin), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersRollout*>(rollout), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersRollus*>(rollus), nullptr);
  EXPECT_EQ(rollin->name, "bordersRolin") << "spelled so";
  EXPECT_EQ(rollout->name, "bordersRolout") << "spelled so";
  EXPECT_EQ(static_cast<SceneBordersRollus*>(rollus)->demo, demo);
  delete rollus;
  delete rollout;
  delete rollin;
}

TEST(ProductionScenes, IndicesOneToThreeAreTheNoiseCubeScenes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  Demo* demo = &scenetest::demo();
  Scene* within = makeProductionScene(demo, 1, "bordersWithin");
  Scene* without = makeProductionScene(demo, 2, "bordersWithout");
  Scene* withme = makeProductionScene(demo, 3, "bordersWithme");
  EXPECT_NE(dynamic_cast<SceneBordersWithin*>(within), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersWithout*>(without), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersWithme*>(withme), nullptr);
  EXPECT_EQ(within->name, "bordersWithin");
  EXPECT_EQ(without->name, "bordersWithout");
  EXPECT_EQ(withme->name, "bordersWithme");
  EXPECT_EQ(static_cast<SceneBordersWithme*>(withme)->demo, demo);
  delete withme;
  delete without;
  delete within;
}
