// The named settings of World::render and glowPass: each preset holds the
// values the scenes pass, and a call by options draws exactly what the
// positional call draws.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

TEST(WorldRenderOptions, GlowSourceHoldsTheScenesValues) {
  const WorldRenderOptions o = WorldRenderOptions::glowSource();
  EXPECT_EQ(o.skipObjects, 0);
  EXPECT_TRUE(o.prepare);
  EXPECT_EQ(o.materialIndex, 1);
  EXPECT_FALSE(o.softShadows);
  EXPECT_TRUE(o.lowShadow);
  EXPECT_TRUE(o.lowOutput);
  EXPECT_TRUE(o.baseAsImage);
  EXPECT_TRUE(o.baseWritesColour);
}

TEST(WorldRenderOptions, FinalPictureHoldsTheScenesValues) {
  const WorldRenderOptions o = WorldRenderOptions::finalPicture();
  EXPECT_EQ(o.skipObjects, 0);
  EXPECT_FALSE(o.prepare);
  EXPECT_EQ(o.materialIndex, 0);
  EXPECT_TRUE(o.softShadows);
  EXPECT_TRUE(o.lowShadow);
  EXPECT_FALSE(o.lowOutput);
  EXPECT_FALSE(o.baseAsImage);
  EXPECT_TRUE(o.baseWritesColour);
}

TEST(GlowOptions, PresetsFillTheirArgumentsAndKeepTheDefaults) {
  const GlowOptions mask = GlowOptions::shadowMaskBlur(0.1f, 3);
  EXPECT_EQ(mask.amount, 0.1f);
  EXPECT_EQ(mask.passes, 3);
  EXPECT_EQ(mask.spreadX, 0.1f);
  EXPECT_EQ(mask.spreadY, 0.1f);
  EXPECT_EQ(mask.alpha, 1.0f);
  EXPECT_EQ(mask.tintRed + mask.tintGreen + mask.tintBlue, 0.0f);
  EXPECT_EQ(mask.fadeOut, 0.0f);
  EXPECT_EQ(mask.reserved, 0);
  EXPECT_TRUE(mask.fullScreen);
  EXPECT_EQ(mask.zoom, 0.0f);
  EXPECT_EQ(mask.zoomPowBase, 1.5f);
  EXPECT_EQ(mask.zoomPow, 1.0f);
  const GlowOptions glow = GlowOptions::sceneGlow(0.45f, 8, 0.7f, 0.2f, 0.01f, 1.25f, 2);
  EXPECT_EQ(glow.amount, 0.45f);
  EXPECT_EQ(glow.passes, 8);
  EXPECT_EQ(glow.alpha, 0.7f);
  EXPECT_EQ(glow.fadeOut, 0.2f);
  EXPECT_EQ(glow.zoom, 0.01f);
  EXPECT_EQ(glow.zoomPowBase, 1.25f);
  EXPECT_EQ(glow.zoomPow, 2.0f);
  EXPECT_EQ(glow.spreadX, 0.1f);
  EXPECT_TRUE(glow.fullScreen);
}

namespace {
// The final picture of a fresh stage, drawn by the given call.
template <typename Draw>
testimg::Image picture(Draw draw) {
  wt::Stage s;
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  draw(s);
  testgl::drainErrors();
  return wt::grab();
}
}  // namespace

TEST(WorldRenderOptions, CallByOptionsDrawsAsThePositionalCall) {
  REQUIRE_WORLD_GL();
  const testimg::Image positional = picture([](wt::Stage& s) {
    s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
    s.world.render(s.camera.get(), 0, false, 0, true, s.pool.get(), true, false, false, true);
  });
  const testimg::Image named = picture([](wt::Stage& s) {
    WorldRenderOptions prepared;
    s.world.render(s.camera.get(), s.pool.get(), prepared);
    s.world.render(s.camera.get(), s.pool.get(), WorldRenderOptions::finalPicture());
  });
  ASSERT_EQ(positional.rgba.size(), named.rgba.size());
  EXPECT_TRUE(positional.rgba == named.rgba);
  double x, y;
  wt::project(*wt::Stage().camera, Vector3(0, 0, -0.6f), &x, &y);
  EXPECT_GT(wt::brightness(int(x), int(y)), 20) << "the picture holds the cube";
}

TEST(GlowOptions, CallByOptionsDrawsAsThePositionalCall) {
  REQUIRE_WORLD_GL();
  auto glowOf = [](bool named) {
    return picture([named](wt::Stage& s) {
      s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
      s.pool->copyToSlot(2);
      glClear(GL_COLOR_BUFFER_BIT);
      if (named)
        s.pool->glowPass(2, GlowOptions::sceneGlow(0.6f, 4, 1, 0, 0.02f, 1.5f, 1));
      else
        s.pool->glowPass(2, 0.6f, 4, 0.1f, 0.1f, 1, 0, 0, 0, 0, 0, true, 0.02f, 1.5f, 1);
    });
  };
  const testimg::Image positional = glowOf(false);
  const testimg::Image named = glowOf(true);
  EXPECT_TRUE(positional.rgba == named.rgba);
  int lit = 0;
  for (size_t i = 0; i < named.rgba.size(); i += 4) lit += named.rgba[i] + named.rgba[i + 1] + named.rgba[i + 2] > 30;
  EXPECT_GT(lit, 100) << "the glow shows the stage";
}
