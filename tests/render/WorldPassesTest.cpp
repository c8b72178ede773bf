// The World's passes one by one: which meshes reach the shadow map, which
// receive it, how many masks the mask pass makes, the state a light image
// leaves, the shadow pass inside an open off-screen target, and the quiet
// exit on a shadow framebuffer that cannot be drawn to.
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

namespace {

using wt::Stage;

double shadowSpotBrightness(const Stage& s) {
  double x, y;
  wt::project(*s.camera, Vector3(-0.9f, -1.0f, 0.7f), &x, &y);
  return wt::brightness(int(x), int(y));
}

double litSpotBrightness(const Stage& s) {
  double x, y;
  wt::project(*s.camera, Vector3(1.6f, -1.0f, -1.6f), &x, &y);
  return wt::brightness(int(x), int(y));
}

TEST(WorldPasses, MaterialThatCastsNoShadowStaysOutOfTheMap) {
  REQUIRE_WORLD_GL();
  Stage s;
  s.world.objects[s.cube]->materials[0].castsShadow = false;
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, true, s.pool.get(), true, false, false, true);
  testgl::drainErrors();
  EXPECT_LT(std::abs(shadowSpotBrightness(s) - litSpotBrightness(s)), 60) << "no shadow on the floor";
  EXPECT_GT(shadowSpotBrightness(s), 60);
}

// The floor's brightness at the shadow spot and at a lit spot.
void floorSpots(const Stage& s, double* shadow, double* lit) {
  *shadow = shadowSpotBrightness(s);
  double x, y;
  wt::project(*s.camera, Vector3(1.0f, -1.0f, -1.0f), &x, &y);
  *lit = wt::brightness(int(x), int(y));
}

TEST(WorldPasses, MaterialThatReceivesNoShadowIgnoresTheMap) {
  REQUIRE_WORLD_GL();
  // Reference: the same light drawn without its map.
  Stage plain;
  plain.world.objects[plain.light]->light()->castsShadow = false;
  wt::clearPicture();
  plain.world.render(plain.camera.get(), 0, true, 0, false, plain.pool.get(), false, false, false, true);
  double plainShadow, plainLit;
  floorSpots(plain, &plainShadow, &plainLit);

  Stage s;
  s.world.objects[s.floor]->materials[0].receivesShadow = false;
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  double shadow, lit;
  floorSpots(s, &shadow, &lit);
  EXPECT_NEAR(shadow, plainShadow, 3) << "the floor is drawn as if the light had no map";
  EXPECT_NEAR(lit, plainLit, 3);

  Stage receiving;
  wt::clearPicture();
  receiving.world.render(receiving.camera.get(), 0, true, 0, false, receiving.pool.get(), false, false, false, true);
  double receivingShadow, receivingLit;
  floorSpots(receiving, &receivingShadow, &receivingLit);
  EXPECT_GT(std::abs(receivingLit - plainLit) + std::abs(receivingShadow - plainShadow), 20)
      << "a receiving floor does show the map";
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
  glActiveTextureARB(GL_TEXTURE0_ARB);
  testgl::drainErrors();
}

TEST(WorldPasses, MaskPassCountsTheShadowingLights) {
  REQUIRE_WORLD_GL();
  Stage s;
  LightParameters plain = wt::spotLight(Vector3(0.3f, -1, 0.2f));
  plain.castsShadow = false;
  s.world.addLight(plain, 0.1f, 100.0f, wt::windowW, wt::windowH);
  s.world.refreshLights(false, false);
  ASSERT_EQ(s.world.lights.size(), 2u);
  s.camera->apply();
  s.pool->lowResolution = 1;
  EXPECT_EQ(s.world.shadowMaskPass(s.pool.get(), true), 1);
  s.pool->lowResolution = 0;
  s.camera->release();
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  GLboolean depthMask = GL_FALSE;
  glGetBooleanv(GL_DEPTH_WRITEMASK, &depthMask);
  EXPECT_TRUE(depthMask) << "depth writes come back after the blur";
  testgl::drainErrors();
}

TEST(WorldPasses, MaskIsWhiteWhereLitAndDarkInShadow) {
  REQUIRE_WORLD_GL();
  Stage s;
  // A first render prepares the meshes' arrays.
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  s.camera->apply();
  s.pool->lowResolution = 0;
  ASSERT_EQ(s.world.shadowMaskPass(s.pool.get(), true), 1);
  s.camera->release();
  int w, h;
  const auto raw = rtt::readTexture(s.pool->textureHigh[s.pool->firstFreeSlot + 2], &w, &h);
  double sx, sy, lx, ly;
  wt::project(*s.camera, Vector3(-0.9f, -1.0f, 0.7f), &sx, &sy);
  wt::project(*s.camera, Vector3(1.0f, -1.0f, -1.0f), &lx, &ly);
  EXPECT_GT(rtt::texel(raw, w, int(lx), int(ly))[0], 200) << "lit floor is white in the raw mask";
  EXPECT_LT(rtt::texel(raw, w, int(sx), int(sy))[0], 40) << "shadowed floor is dark";
  testgl::drainErrors();
}

// The direct path's lit pass shadows by the compare on unit 1: in the cube's
// shadow the floor keeps only its base colour, as if the light were off there,
// even when unit 1 was left in GL_ADD by an earlier draw's restore (which
// would add the light to the shadow and white to everything else).
TEST(WorldPasses, LitPassMultipliesTheLightByTheShadowCompare) {
  REQUIRE_WORLD_GL();
  Stage unlit;
  unlit.world.objects[unlit.light]->light()->enabled = false;
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  unlit.world.render(unlit.camera.get(), 0, true, 0, false, unlit.pool.get(), false, false, false, true);
  const double baseOnly = shadowSpotBrightness(unlit);

  Stage s;
  glActiveTextureARB(GL_TEXTURE1_ARB);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  const double shadowed = shadowSpotBrightness(s);
  const double lit = litSpotBrightness(s);
  EXPECT_NEAR(shadowed, baseOnly, 6) << "the light adds nothing in the shadow";
  EXPECT_GT(lit, baseOnly + 60) << "the light does reach the unshadowed floor";
}

TEST(WorldPasses, LightImageLeavesTheStateItPromises) {
  REQUIRE_WORLD_GL();
  Stage s;
  s.world.refreshLights(false, false);
  s.camera->apply();
  for (int unit : {2, 3}) {
    glActiveTextureARB(GL_TEXTURE0_ARB + unit);
    glEnable(GL_TEXTURE_2D);
  }
  glActiveTextureARB(GL_TEXTURE0_ARB);
  s.world.lightImagePass(0);
  s.camera->release();
  for (int unit : {1, 2, 3}) {
    glActiveTextureARB(GL_TEXTURE0_ARB + unit);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D)) << "unit " << unit;
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_CUBE_MAP)) << "unit " << unit;
  }
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_EQ(rtt::getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_EQ(rtt::getInt(GL_DEPTH_FUNC), GL_LESS);
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_EQ(rtt::texEnvMode(), GL_MODULATE);
  testgl::drainErrors();
}

TEST(WorldPasses, ShadowPassInsideAnOpenTargetGivesTheSurfaceBack) {
  REQUIRE_WORLD_GL();
  REQUIRE_FRAMEBUFFERS();
  wt::ScopedFlag framebuffers(useFramebufferObjects, true);
  Stage s;
  s.world.refreshLights(false, false);
  s.world.objects[s.light]->renderTarget = s.pool.get();
  ASSERT_TRUE(s.pool->useFramebuffers);
  s.pool->beginTarget(3, true, false);
  const GLint surface = rtt::getInt(GL_FRAMEBUFFER_BINDING_EXT);
  ASSERT_NE(surface, 0);
  s.world.shadowMapPass();
  EXPECT_EQ(rtt::getInt(GL_FRAMEBUFFER_BINDING_EXT), surface) << "the open target is bound again";
  s.pool->endTarget();
  EXPECT_EQ(rtt::getInt(GL_FRAMEBUFFER_BINDING_EXT), 0);
  testgl::drainErrors();
}

TEST(WorldPasses, ShadowPassLeavesViewportBlendAndCulling) {
  REQUIRE_WORLD_GL();
  Stage s;
  s.world.refreshLights(false, false);
  glViewport(10, 20, 100, 50);
  glDisable(GL_BLEND);
  s.world.shadowMapPass();
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[0], 10);
  EXPECT_EQ(viewport[1], 20);
  EXPECT_EQ(viewport[2], 100);
  EXPECT_EQ(viewport[3], 50);
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_EQ(rtt::getInt(GL_CULL_FACE_MODE), GL_BACK);
  EXPECT_EQ(rtt::getInt(GL_DEPTH_FUNC), GL_LESS);
  glViewport(0, 0, wt::windowW, wt::windowH);
  testgl::drainErrors();
}

TEST(WorldPassesDeathTest, ShadowFramebufferThatCannotBeCompletedEndsTheRunQuietly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  REQUIRE_WORLD_GL();
  REQUIRE_FRAMEBUFFERS();
  EXPECT_EXIT(
      {
        Mesh mesh;
        mesh.light()->shadowMapSize = 0;  // an empty depth attachment
        createShadowMap(mesh);
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
