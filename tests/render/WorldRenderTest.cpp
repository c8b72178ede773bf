// World::render pictures: the direct path with a spot-light shadow, the soft
// shadow path, and the edge cases of the passes (skipped objects, a second
// render without preparation, hidden meshes, a world without lights).
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

namespace {

using wt::Stage;

// The floor point under the cube, away from the light: (x, y) in pixels.
void shadowSpot(const Stage& s, double* x, double* y) {
  // The light stands at (1.4, 4, -1) over a cube of half size 0.6 at the
  // origin: its shadow falls on the floor (top at y = -1) beyond the cube.
  wt::project(*s.camera, Vector3(-0.9f, -1.0f, 0.7f), x, y);
}

void litSpot(const Stage& s, double* x, double* y) { wt::project(*s.camera, Vector3(1.6f, -1.0f, -1.6f), x, y); }

TEST(WorldRender, DirectPathDrawsALitMeshWithItsSpotLightShadow) {
  REQUIRE_WORLD_GL();
  Stage s;
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  const testimg::Image picture = wt::grab();

  double sx, sy, lx, ly;
  shadowSpot(s, &sx, &sy);
  litSpot(s, &lx, &ly);
  const double shadowed = wt::brightness(int(sx), int(sy));
  const double lit = wt::brightness(int(lx), int(ly));
  EXPECT_GT(lit, shadowed + 30) << "the floor in the cube's shadow must be darker than the lit floor";

  const auto result = wt::matchesReference(picture, "world_direct_shadow.png");
  EXPECT_TRUE(result.passed) << result.message;
}

TEST(WorldRender, SoftPathMasksEachLightByItsBlurredShadow) {
  REQUIRE_WORLD_GL();
  Stage s;
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  testgl::drainErrors();
  const testimg::Image picture = wt::grab();
  EXPECT_EQ(s.pool->lowResolution, 0);
  EXPECT_EQ(s.pool->lowResolutionB, 0);

  double sx, sy, lx, ly;
  shadowSpot(s, &sx, &sy);
  litSpot(s, &lx, &ly);
  EXPECT_GT(wt::brightness(int(lx), int(ly)), wt::brightness(int(sx), int(sy)) + 30);

  const auto result = wt::matchesReference(picture, "world_soft_shadow.png");
  EXPECT_TRUE(result.passed) << result.message;
}

}  // namespace

namespace {

using wt::Stage;

double cubeCentreBrightness(const Stage& s) {
  double x, y;
  wt::project(*s.camera, Vector3(0, 0, -0.6f), &x, &y);
  return wt::brightness(int(x), int(y));
}

TEST(WorldRender, SkippedObjectsStillComposeTheImagesWithOnlyBillboards) {
  REQUIRE_WORLD_GL();
  Stage s;
  const GLuint sprite = wt::makeSpriteTexture(8, 255, 255, 255, false);
  wt::addBillboard(s.world, s.camera.get(), sprite, Vector3(0, 0, -0.6f), 0.3f, Vector3(1, 1, 1), 1, false);
  Mesh& cube = *s.world.objects[s.cube];
  cube.currentMaterial = 0;

  // Direct path: no mesh is drawn, the billboard is.
  wt::clearPicture();
  s.world.render(s.camera.get(), 1, true, 1, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  EXPECT_GT(cubeCentreBrightness(s), 200) << "the billboard is drawn where the cube would be";
  double fx, fy;
  wt::project(*s.camera, Vector3(1.6f, -1.0f, -1.6f), &fx, &fy);
  EXPECT_LT(wt::brightness(int(fx), int(fy)), 5) << "the floor is not drawn";
  EXPECT_TRUE(cube.normalsDirty) << "no mesh is prepared";
  EXPECT_EQ(cube.vertexCapacity, 0u);
  EXPECT_EQ(cube.currentMaterial, 0) << "no mesh's material is switched";
  EXPECT_EQ(s.world.lights.size(), 1u) << "the lights are still refreshed";

  // Soft path: the images are still cleared and composed; the light image
  // holds the billboard, and the picture is what the masks let through.
  rtt::clearTo({255, 0, 0, 255});
  s.world.render(s.camera.get(), 1, true, 1, true, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  EXPECT_LT(wt::brightness(int(fx), int(fy)), 5) << "the picture was cleared";
  int w, h;
  const int lightImageSlot = s.pool->firstFreeSlot + 2 + 1;
  const auto image = rtt::readTexture(s.pool->textureHigh[lightImageSlot], &w, &h);
  double bx, by;
  wt::project(*s.camera, Vector3(0, 0, -0.6f), &bx, &by);
  EXPECT_GT(rtt::texel(image, w, int(bx), int(by))[0], 200) << "the light image holds the billboard";
}

TEST(WorldRender, SoftPathWithoutPreparationKeepsTheLastShadowMaps) {
  REQUIRE_WORLD_GL();
  Stage s;
  double sx, sy, lx, ly;
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  wt::project(*s.camera, Vector3(-0.9f, -1.0f, 0.7f), &sx, &sy);
  wt::project(*s.camera, Vector3(1.6f, -1.0f, -1.6f), &lx, &ly);
  const double lit = wt::brightness(int(lx), int(ly));
  ASSERT_GT(lit, wt::brightness(int(sx), int(sy)) + 30);

  // The cube leaves; without preparation its shadow stays in the map.
  s.world.objects[s.cube]->position = Vector3(0, 50, 0);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, false, 0, true, s.pool.get(), true, false, false, true);
  EXPECT_GT(lit, wt::brightness(int(sx), int(sy)) + 30) << "the old shadow is still there";

  // With preparation the map is redrawn and the shadow goes.
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  EXPECT_LT(std::abs(wt::brightness(int(sx), int(sy)) - wt::brightness(int(sx) + 8, int(sy))), 25);
  EXPECT_GT(wt::brightness(int(sx), int(sy)), 60) << "the floor there is lit now";
  testgl::drainErrors();
}

TEST(WorldRender, HiddenMeshIsNotRebuiltYetSetsUpItsBatch) {
  REQUIRE_WORLD_GL();
  Stage s(false);
  const Material material = wt::colouredMaterial(Vector3(0.9f, 0.9f, 0.9f), Vector3(0.5f, 0.5f, 0.5f));
  int batch[3];
  for (int i = 0; i < 3; ++i) batch[i] = wt::addCube(s.world, material, Vector3(-1.5f + 1.5f * i, 1.5f, -1), Vector3(0.4f, 0.4f, 0.4f));
  Mesh& first = *s.world.objects[batch[0]];
  Mesh& middle = *s.world.objects[batch[1]];
  Mesh& last = *s.world.objects[batch[2]];
  first.batchFirst = true;
  first.restoreState = false;
  middle.setupState = middle.restoreState = false;
  last.setupState = false;
  last.batchLast = true;

  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  auto at = [&](int object) {
    double x, y;
    wt::project(*s.camera, s.world.objects[object]->position + Vector3(0, 0, -0.4f), &x, &y);
    return wt::brightness(int(x), int(y));
  };
  ASSERT_GT(at(batch[0]), 20);
  ASSERT_GT(at(batch[1]), 20);

  first.visible = false;
  first.normalsDirty = true;
  first.positionsDirty = true;
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  EXPECT_TRUE(first.normalsDirty) << "a hidden mesh is not prepared";
  EXPECT_TRUE(first.positionsDirty);
  EXPECT_LT(at(batch[0]), 5) << "the hidden first mesh draws nothing";
  EXPECT_GT(at(batch[1]), 20) << "its batch still draws through the state it set up";
  EXPECT_GT(at(batch[2]), 20);
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), 0) << "the last mesh restored the state";
  testgl::drainErrors();
}

TEST(WorldRender, SoftPathWithoutLightsGivesTheBasePassAlone) {
  REQUIRE_WORLD_GL();
  Stage s(false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  const testimg::Image direct = wt::grab();
  ASSERT_GT(cubeCentreBrightness(s), 5);

  rtt::clearTo({0, 255, 0, 255});
  s.world.render(s.camera.get(), 0, false, 0, true, s.pool.get(), true, false, false, true);
  const testimg::Image soft = wt::grab();
  const auto comparison = testimg::compare(soft, direct, testimg::Tolerance{0.5, 8, 0.001});
  EXPECT_TRUE(comparison.passed) << comparison.message;
  testgl::drainErrors();
}

TEST(WorldRender, BaseAsImageGoesThroughItsOwnSlot) {
  REQUIRE_WORLD_GL();
  Stage s(false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  const double straight = cubeCentreBrightness(s);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, false, 0, true, s.pool.get(), true, false, true, true);
  EXPECT_NEAR(cubeCentreBrightness(s), straight, 30) << "the half-size base image is laid on the screen";
  int w, h;
  const auto image = rtt::readTexture(s.pool->textureLow[s.pool->firstFreeSlot + 1], &w, &h);
  double x, y;
  wt::project(*s.camera, Vector3(0, 0, -0.6f), &x, &y);
  EXPECT_GT(rtt::texel(image, w, int(x / 2), int(y / 2))[0], 5) << "slot base+1 holds the base image";
  testgl::drainErrors();
}

TEST(WorldRender, BaseWithoutColourOnlyFillsDepth) {
  REQUIRE_WORLD_GL();
  Stage s(false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, false);
  EXPECT_LT(cubeCentreBrightness(s), 2);
  double x, y;
  wt::project(*s.camera, Vector3(0, 0, -0.6f), &x, &y);
  float depth = 1;
  glReadPixels(int(x), int(y), 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
  EXPECT_LT(depth, 1.0f) << "depth was written";
  testgl::drainErrors();
}

}  // namespace

namespace {

using wt::Stage;

TEST(WorldRender, ShadowsWorkWithTheBackBufferMapToo) {
  REQUIRE_WORLD_GL();
  wt::ScopedFlag noFramebuffers(hasFramebufferObject, false);
  testing::internal::CaptureStdout();
  Stage s;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "final shadowmap size is 128\n") << "cut to fit 320 x 240";
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  testgl::drainErrors();
  double sx, sy, lx, ly;
  wt::project(*s.camera, Vector3(-0.9f, -1.0f, 0.7f), &sx, &sy);
  wt::project(*s.camera, Vector3(1.6f, -1.0f, -1.6f), &lx, &ly);
  EXPECT_GT(wt::brightness(int(lx), int(ly)), wt::brightness(int(sx), int(sy)) + 30);
}

// The calling pattern of a scene's frame: the glow source at half size with
// preparation and material slot 1, its blur, then the final picture on the
// soft path without preparation, and the glow laid over it.
TEST(WorldRender, SceneFramePatternRunsCleanly) {
  REQUIRE_WORLD_GL();
  Stage s;
  Mesh& cube = *s.world.objects[s.cube];
  cube.currentMaterial = 1;
  cube.setMaterial(wt::colouredMaterial(Vector3(1, 1, 1), Vector3(1, 1, 1)));
  cube.currentMaterial = 0;
  RenderTarget& targets = *s.pool;
  testgl::drainErrors();
  auto errorsOtherThanLightModel = [] {
    int count = 0;
    for (unsigned e : testgl::drainErrors()) count += e != GL_INVALID_ENUM;
    return count;
  };

  const int slot = targets.firstFreeSlot;
  targets.lowResolution = 1;
  s.camera->applyLow();
  targets.beginTarget(slot + 1, true, false);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  s.world.render(s.camera.get(), &targets, WorldRenderOptions::glowSource());
  targets.lowResolution = 1;
  targets.endTarget();
  targets.copyToSlot(slot + 1);
  EXPECT_EQ(errorsOtherThanLightModel(), 0);

  targets.beginTarget(slot, false, false);
  glClear(GL_COLOR_BUFFER_BIT);
  glDisable(GL_DEPTH_TEST);
  targets.glowPass(slot + 1, GlowOptions::sceneGlow(0.45f, 8, 1, 0, 0, 1.5f, 1));
  targets.endTarget();
  targets.copyToSlot(slot);
  s.camera->release();
  targets.lowResolution = 0;

  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  s.world.render(s.camera.get(), &targets, WorldRenderOptions::finalPicture());
  glDisable(GL_DEPTH_TEST);
  s.camera->apply();
  targets.lowResolution = 1;
  targets.drawSlot(slot, slotBlendSquares, nullptr, true, nullptr, nullptr, 1.0f);
  s.camera->release();
  targets.lowResolution = 0;
  EXPECT_EQ(errorsOtherThanLightModel(), 0);
  EXPECT_EQ(cube.currentMaterial, 0);
  EXPECT_EQ(rtt::getInt(GL_MODELVIEW_STACK_DEPTH), 1) << "every push has its pop";
  EXPECT_EQ(rtt::getInt(GL_PROJECTION_STACK_DEPTH), 1);
  double x, y;
  wt::project(*s.camera, Vector3(0, 0, -0.6f), &x, &y);
  EXPECT_GT(wt::brightness(int(x), int(y)), 20) << "the picture holds the cube";
}

}  // namespace
