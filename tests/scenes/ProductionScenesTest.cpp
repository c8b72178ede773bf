// The production's scene factory: which index makes which scene.
#include <gtest/gtest.h>

#include "SceneTestDemo.h"
#include "core/Globals.h"
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersRollin.h"
#include "scenes/SceneBordersRollout.h"
#include "scenes/SceneBordersRollus.h"
#include "scenes/ScenePerforme.h"

TEST(ProductionScenes, IndexZeroIsTheOpeningAndSevenTheCubeField) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  ASSERT_EQ(theDemo, nullptr) << "scenes are built for the Demo they are given, not the global";
  Demo* demo = &scenetest::demo();
  Scene* opening = makeProductionScene(demo, 0, "performe");
  Scene* field = makeProductionScene(demo, 7, "bordersMeetus");
  Scene* pending = makeProductionScene(demo, 3, "bordersWithme");
  ASSERT_NE(dynamic_cast<ScenePerforme*>(opening), nullptr);
  ASSERT_NE(dynamic_cast<SceneBordersMeetus*>(field), nullptr);
  EXPECT_NE(dynamic_cast<PendingScene*>(pending), nullptr);
  EXPECT_EQ(opening->name, "performe");
  EXPECT_EQ(field->name, "bordersMeetus");
  EXPECT_EQ(pending->name, "bordersWithme");
  EXPECT_EQ(static_cast<ScenePerforme*>(opening)->demo, demo);
  EXPECT_EQ(static_cast<SceneBordersMeetus*>(field)->demo, demo);
  delete pending;
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
