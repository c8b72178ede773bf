// The production's scene factory: which index makes which scene.
#include <gtest/gtest.h>

#include "SceneTestDemo.h"
#include "core/Globals.h"
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersWithin.h"
#include "scenes/SceneBordersWithme.h"
#include "scenes/SceneBordersWithout.h"
#include "scenes/ScenePerforme.h"

TEST(ProductionScenes, IndexZeroIsTheOpeningAndSevenTheCubeField) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  theDemo = &scenetest::demo();
  Scene* opening = makeProductionScene(0, "performe");
  Scene* field = makeProductionScene(7, "bordersMeetus");
  Scene* pending = makeProductionScene(10, "bordersRollus");
  ASSERT_NE(dynamic_cast<ScenePerforme*>(opening), nullptr);
  ASSERT_NE(dynamic_cast<SceneBordersMeetus*>(field), nullptr);
  EXPECT_NE(dynamic_cast<PendingScene*>(pending), nullptr);
  EXPECT_EQ(opening->name, "performe");
  EXPECT_EQ(field->name, "bordersMeetus");
  EXPECT_EQ(pending->name, "bordersRollus");
  EXPECT_EQ(static_cast<ScenePerforme*>(opening)->demo, theDemo);
  EXPECT_EQ(static_cast<SceneBordersMeetus*>(field)->demo, theDemo);
  delete pending;
  delete field;
  delete opening;
  theDemo = nullptr;
}

TEST(ProductionScenes, IndicesOneToThreeAreTheNoiseCubeScenes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  theDemo = &scenetest::demo();
  Scene* within = makeProductionScene(1, "bordersWithin");
  Scene* without = makeProductionScene(2, "bordersWithout");
  Scene* withme = makeProductionScene(3, "bordersWithme");
  EXPECT_NE(dynamic_cast<SceneBordersWithin*>(within), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersWithout*>(without), nullptr);
  EXPECT_NE(dynamic_cast<SceneBordersWithme*>(withme), nullptr);
  EXPECT_EQ(within->name, "bordersWithin");
  EXPECT_EQ(without->name, "bordersWithout");
  EXPECT_EQ(withme->name, "bordersWithme");
  delete withme;
  delete without;
  delete within;
  theDemo = nullptr;
}
