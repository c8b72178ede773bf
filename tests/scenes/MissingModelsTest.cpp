// Scenes built where the model files are missing: each failed load is
// reported by the model reader, the scene keeps the rest, draws the same
// random numbers, and plays without touching the missing objects.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "SceneTestDemo.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/SceneBordersWithin.h"
#include "scenes/SceneBordersWithme.h"
#include "scenes/SceneBordersWithout.h"
#include "scenes/ScenePerforme.h"

namespace {

// Runs `body` with an empty working directory, then returns to the old one.
template <typename Body>
void inEmptyDirectory(Body body) {
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  char pattern[] = "/tmp/ostravine-scenes-XXXXXX";
  const char* dir = mkdtemp(pattern);
  ASSERT_NE(dir, nullptr);
  ASSERT_EQ(chdir(dir), 0);
  body();
  ASSERT_EQ(chdir(old), 0);
  rmdir(dir);
}

}  // namespace

TEST(MissingModels, TheOpeningKeepsItsRingLightAndMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::demo();  // textures come from the run directory
  inEmptyDirectory([] {
    ScenePerforme scene(&scenetest::demo(), "performe");
    EXPECT_EQ(crtRandState(), scenetest::stateAfter(23233, 2000));
    EXPECT_EQ(scene.world.objects.size(), 101u) << "100 boxes and the light";
    EXPECT_LT(scene.objectIds[0], 0);
    EXPECT_LT(scene.objectIds[256], 0);
    EXPECT_EQ(scene.world.billboards.size(), 403u);
    scene.render(16000, 40);
    scene.render(16040, 40);
    EXPECT_EQ(scene.sceneTimeMs, 80);
  });
}

TEST(MissingModels, TheCubeFieldKeepsItsRingLightAndDust) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::demo();
  inEmptyDirectory([] {
    SceneBordersMeetus scene(&scenetest::demo(), "bordersMeetus");
    EXPECT_EQ(crtRandState(), scenetest::stateAfter(23233, 1200));
    EXPECT_EQ(scene.world.objects.size(), 101u) << "100 pillars and the light";
    EXPECT_LT(scene.cubeObjects[0], 0);
    EXPECT_LT(scene.cubeObjects[450], 0);
    EXPECT_FLOAT_EQ(scene.cubeHomes[449].z, 0.125f);
    scene.render(150000, 200);
    EXPECT_EQ(scene.sceneTimeMs, 200);
  });
}

TEST(MissingModels, TheNoiseCubeScenesKeepTheirRingsLightsAndMotes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  scenetest::demo();
  inEmptyDirectory([] {
    SceneBordersWithin within(&scenetest::demo(), "bordersWithin");
    EXPECT_EQ(crtRandState(), scenetest::stateAfter(232, 608));
    EXPECT_EQ(within.world.objects.size(), 61u) << "60 boxes and the light";
    EXPECT_LT(within.objectIds[0], 0);
    EXPECT_LT(within.objectIds[420], 0);
    EXPECT_EQ(within.world.billboards.size(), 152u);
    within.render(65000, 200);

    SceneBordersWithout without(&scenetest::demo(), "bordersWithout");
    EXPECT_EQ(crtRandState(), scenetest::stateAfter(23233, 375));
    EXPECT_EQ(without.world.objects.size(), 71u) << "70 plates and the light";
    EXPECT_LT(without.objectIds[400], 0);
    EXPECT_EQ(without.basePositions[399], Vector3(4.5f, 4.5f, 1.5f));
    without.render(27000, 200);

    SceneBordersWithme withme(&scenetest::demo(), "bordersWithme");
    EXPECT_EQ(crtRandState(), scenetest::stateAfter(23233, 1200));
    EXPECT_EQ(withme.world.objects.size(), 101u) << "100 plates and the light";
    EXPECT_LT(withme.objects[640], 0);
    withme.render(88000, 200);
    EXPECT_EQ(withme.sceneTimeMs, 200);
  });
}
