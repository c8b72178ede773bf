// Billboards: construction, the rotation-free modelview of a run, placement
// through the camera's rotation, the quad, blending, shadow-casting depth,
// tiles, the state left behind, and billboards in a World's picture.
#include <GL/glew.h>
#include <GL/glu.h>
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

namespace {

// Perspective camera of the window at `eye` looking at `target`, applied.
std::unique_ptr<Camera> appliedCamera(const Vector3& eye, const Vector3& target) {
  auto camera = wt::makeCamera(eye, target);
  camera->apply();
  return camera;
}

void drawRun(std::vector<Billboard*>& boards, bool depthWrite) {
  billboardBegin(*boards.front());
  for (Billboard* b : boards) b->draw(*boards.front(), depthWrite);
  billboardEnd();
}

TEST(Billboard, StartsWithItsDefaults) {
  Billboard owning(nullptr, true);
  EXPECT_NE(owning.viewMatrix, nullptr);
  EXPECT_NE(owning.modelMatrix, nullptr);
  Billboard plain(reinterpret_cast<Camera*>(0x10), false);
  EXPECT_EQ(plain.viewMatrix, nullptr);
  EXPECT_EQ(plain.modelMatrix, nullptr);
  EXPECT_EQ(plain.camera, reinterpret_cast<Camera*>(0x10));
  EXPECT_EQ(plain.texture, 0u);
  EXPECT_EQ(plain.alpha, 1.0f);
  EXPECT_EQ(plain.colour, Vector3(0, 0, 0));
  EXPECT_EQ(plain.blendMode, 0);
  EXPECT_FALSE(plain.castsShadow);
  EXPECT_FALSE(plain.tiled);
  EXPECT_EQ(plain.tileSpacing, 0.0f);
  EXPECT_TRUE(plain.items.empty());
}

TEST(Billboard, BeginLoadsTheModelviewWithoutItsRotation) {
  REQUIRE_WORLD_GL();
  auto camera = appliedCamera(Vector3(3, 2, -5), Vector3(0, 0, 0));
  Billboard first(camera.get(), true);
  glEnable(GL_CULL_FACE);
  glEnable(GL_COLOR_MATERIAL);
  const int depthBefore = rtt::getInt(GL_MODELVIEW_STACK_DEPTH);
  billboardBegin(first);
  EXPECT_EQ(rtt::getInt(GL_MODELVIEW_STACK_DEPTH), depthBefore + 1);
  float loaded[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, loaded);
  for (int i = 0; i < 16; ++i) EXPECT_FLOAT_EQ(first.modelMatrix[i], camera->modelviewMatrix[i]) << i;
  for (int c = 0; c < 3; ++c)
    for (int r = 0; r < 3; ++r) EXPECT_EQ(loaded[c * 4 + r], c == r ? 1.0f : 0.0f);
  for (int r = 0; r < 4; ++r) EXPECT_FLOAT_EQ(loaded[12 + r], camera->modelviewMatrix[12 + r]) << "translation kept";
  EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_TRUE(glIsEnabled(GL_BLEND));
  EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_MATERIAL));
  billboardEnd();
  EXPECT_EQ(rtt::getInt(GL_MODELVIEW_STACK_DEPTH), depthBefore);
  camera->release();
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Billboard, EndLeavesTheStateTheMeshPassesExpect) {
  REQUIRE_WORLD_GL();
  Billboard first(nullptr, true);
  billboardBegin(first);
  glEnable(GL_ALPHA_TEST);
  glDepthMask(GL_FALSE);
  glDisable(GL_DEPTH_TEST);
  billboardEnd();
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_TRUE(glIsEnabled(GL_COLOR_MATERIAL));
  GLboolean mask = GL_FALSE;
  glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
  EXPECT_TRUE(mask);
  EXPECT_EQ(rtt::texEnvMode(), GL_ADD);
  EXPECT_EQ(rtt::getInt(GL_BLEND_SRC), GL_SRC_ALPHA);
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
  glDisable(GL_COLOR_MATERIAL);
}

TEST(Billboard, LandsWhereTheCameraSeesItsPositionAndFacesTheScreen) {
  REQUIRE_WORLD_GL();
  rtt::clearTo({0, 0, 0, 255});
  auto camera = appliedCamera(Vector3(4, 3, -6), Vector3(0, 0, 0));
  const GLuint white = wt::makeSpriteTexture(4, 255, 255, 255, false);
  std::vector<Billboard*> boards;
  Billboard a(camera.get(), true), b(camera.get(), false);
  for (Billboard* x : {&a, &b}) {
    x->texture = white;
    x->colour = Vector3(1, 1, 1);
    x->halfSize = Vector3(0.1f, 0.1f, 0);
    boards.push_back(x);
  }
  a.position = Vector3(1, 1, 0);
  b.position = Vector3(-1.5f, 0, 1);
  glDisable(GL_DEPTH_TEST);
  drawRun(boards, false);
  for (Billboard* x : boards) {
    double px, py;
    wt::project(*camera, x->position, &px, &py);
    EXPECT_GT(rtt::pixel(int(px), int(py))[0], 200) << "billboard at its projected position";
  }
  // The quad is screen aligned: its half size (0.1) spans the same number of
  // pixels across and up at its distance.
  double cx, cy;
  wt::project(*camera, a.position, &cx, &cy);
  int right = 0, up = 0;
  while (rtt::pixel(int(cx) + right + 1, int(cy))[0] > 200) ++right;
  while (rtt::pixel(int(cx), int(cy) + up + 1)[0] > 200) ++up;
  EXPECT_NEAR(right, up, 1);
  EXPECT_GT(right, 2);
  camera->release();
  glDeleteTextures(1, &white);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Billboard, QuadMapsTheTextureUprightFromItsLowerLeft) {
  REQUIRE_WORLD_GL();
  rtt::clearTo({0, 0, 0, 255});
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  // A 2 x 2 texture: first row (t = 0) red, green; second row blue, white.
  const uint8_t texels[16] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255};
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  Billboard board(nullptr, true);
  board.texture = texture;
  board.colour = Vector3(1, 1, 1);
  board.blendMode = 1;
  board.halfSize = Vector3(0.5f, 0.5f, 0);
  std::vector<Billboard*> boards{&board};
  drawRun(boards, false);
  const int w = wt::windowW, h = wt::windowH;
  EXPECT_TRUE(rtt::near(rtt::pixel(w / 2 - w / 8, h / 2 - h / 8), {255, 0, 0, 255})) << "lower left: texel (0, 0)";
  EXPECT_TRUE(rtt::near(rtt::pixel(w / 2 + w / 8, h / 2 - h / 8), {0, 255, 0, 255}));
  EXPECT_TRUE(rtt::near(rtt::pixel(w / 2 - w / 8, h / 2 + h / 8), {0, 0, 255, 255}));
  EXPECT_TRUE(rtt::near(rtt::pixel(w / 2 + w / 8, h / 2 + h / 8), {255, 255, 255, 255}));
  glDeleteTextures(1, &texture);
}

int drawOneOverGrey(int blendMode, float alpha) {
  rtt::clearTo({100, 100, 100, 255});
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  const GLuint white = wt::makeSpriteTexture(4, 255, 255, 255, false);
  Billboard board(nullptr, true);
  board.texture = white;
  board.colour = Vector3(0.5f, 0.5f, 0.5f);
  board.alpha = alpha;
  board.blendMode = blendMode;
  board.halfSize = Vector3(0.5f, 0.5f, 0);
  glBlendFunc(GL_ZERO, GL_ONE);
  std::vector<Billboard*> boards{&board};
  drawRun(boards, false);
  glDeleteTextures(1, &white);
  return rtt::pixel(wt::windowW / 2, wt::windowH / 2)[0];
}

TEST(Billboard, BlendModesAddBlendOrLeaveTheFunction) {
  REQUIRE_WORLD_GL();
  EXPECT_NEAR(drawOneOverGrey(0, 1.0f), 100 + 128, 2) << "mode 0 adds";
  EXPECT_NEAR(drawOneOverGrey(1, 0.5f), 64 + 50, 2) << "mode 1 blends by alpha";
  EXPECT_NEAR(drawOneOverGrey(7, 1.0f), 100, 1) << "other modes keep the blend function in force";
}

TEST(Billboard, TiledDrawsANineTileBlockAtThreeQuartersAlpha) {
  REQUIRE_WORLD_GL();
  rtt::clearTo({0, 0, 0, 255});
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  const GLuint white = wt::makeSpriteTexture(4, 255, 255, 255, false);
  Billboard board(nullptr, true);
  board.texture = white;
  board.colour = Vector3(1, 1, 1);
  board.blendMode = 0;
  board.tiled = true;
  board.tileSpacing = 1.0f;  // tiles 0.5 apart
  board.halfSize = Vector3(0.1f, 0.1f, 0);
  std::vector<Billboard*> boards{&board};
  drawRun(boards, false);
  const int w = wt::windowW, h = wt::windowH;
  for (int j = -1; j <= 1; ++j)
    for (int i = -1; i <= 1; ++i)
      EXPECT_NEAR(rtt::pixel(int(w / 2 + i * 0.25 * w), int(h / 2 + j * 0.25 * h))[0], 191, 2)
          << "tile " << i << ", " << j;
  EXPECT_EQ(rtt::pixel(int(w / 2 + 0.125 * w), h / 2)[0], 0) << "gaps between the tiles";
  glDeleteTextures(1, &white);
}

float depthAt(int x, int y) {
  float d = 0;
  glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &d);
  return d;
}

// Draws one disc-shaped billboard and returns the depths at its centre and corner.
void drawDisc(bool castsShadow, bool depthWrite, int blendMode, float* centre, float* corner) {
  rtt::clearTo({0, 0, 0, 255});
  glClearDepth(1.0);
  glClear(GL_DEPTH_BUFFER_BIT);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  const GLuint disc = wt::makeSpriteTexture(16, 255, 255, 255, true);
  Billboard board(nullptr, true);
  board.texture = disc;
  board.colour = Vector3(1, 1, 1);
  board.blendMode = blendMode;
  board.castsShadow = castsShadow;
  board.halfSize = Vector3(0.5f, 0.5f, 0);
  std::vector<Billboard*> boards{&board};
  drawRun(boards, depthWrite);
  const int w = wt::windowW, h = wt::windowH;
  *centre = depthAt(w / 2, h / 2);
  *corner = depthAt(w / 2 - w / 4 + 3, h / 2 - h / 4 + 3);
  glDeleteTextures(1, &disc);
}

TEST(Billboard, ShadowCasterWritesDepthOnlyWhereItsTextureIsOpaque) {
  REQUIRE_WORLD_GL();
  float centre, corner;
  drawDisc(true, true, 1, &centre, &corner);
  EXPECT_LT(centre, 1.0f) << "the disc writes depth";
  EXPECT_EQ(corner, 1.0f) << "the transparent corner does not";
  drawDisc(false, true, 1, &centre, &corner);
  EXPECT_EQ(centre, 1.0f) << "a billboard that casts no shadow never writes depth";
  drawDisc(true, false, 1, &centre, &corner);
  EXPECT_EQ(centre, 1.0f) << "nor does a caster outside the shadow pass";
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Billboard, ScaleInTheCameraModelviewScalesPositions) {
  REQUIRE_WORLD_GL();
  rtt::clearTo({0, 0, 0, 255});
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glScalef(2, 2, 2);
  const GLuint white = wt::makeSpriteTexture(4, 255, 255, 255, false);
  Billboard board(nullptr, true);
  board.texture = white;
  board.colour = Vector3(1, 1, 1);
  board.halfSize = Vector3(0.05f, 0.05f, 0);
  board.position = Vector3(0.25f, 0, 0);
  std::vector<Billboard*> boards{&board};
  drawRun(boards, false);
  const int w = wt::windowW, h = wt::windowH;
  EXPECT_GT(rtt::pixel(w / 2 + w / 4, h / 2)[0], 200) << "x 0.25 lands at 0.5: the scale moved it";
  EXPECT_EQ(rtt::pixel(w / 2 + w / 8, h / 2)[0], 0);
  glLoadIdentity();
  glDeleteTextures(1, &white);
}

TEST(Billboard, WorldWithoutBillboardsSkipsBeginAndEnd) {
  REQUIRE_WORLD_GL();
  wt::Stage s(false);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  EXPECT_EQ(rtt::texEnvMode(), GL_MODULATE) << "billboardEnd would have left GL_ADD";

  const GLuint white = wt::makeSpriteTexture(4, 255, 255, 255, false);
  wt::addBillboard(s.world, s.camera.get(), white, Vector3(0, 2, 0), 0.2f, Vector3(1, 1, 1), 0, false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  EXPECT_EQ(rtt::texEnvMode(), GL_ADD);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  testgl::drainErrors();
}

TEST(Billboard, WorldPictureWithAdditiveAndShadowCastingBillboards) {
  REQUIRE_WORLD_GL();
  wt::Stage s;
  s.world.objects[s.cube]->visible = false;
  const GLuint mote = wt::makeSpriteTexture(16, 255, 110, 30, true);
  const GLuint flare = wt::makeSpriteTexture(16, 120, 160, 255, true);
  // Three motes over the floor that cast their round shadows, and a row of
  // additive flares in front.
  for (int i = 0; i < 3; ++i)
    wt::addBillboard(s.world, s.camera.get(), mote, Vector3(-1.0f + i, 0.2f * i, 0.3f), 0.35f,
                     Vector3(1, 1, 1), 1, true);
  for (int i = 0; i < 5; ++i)
    wt::addBillboard(s.world, s.camera.get(), flare, Vector3(-2.0f + i, 2.4f + 0.15f * i, 1.0f), 0.3f,
                     Vector3(0.8f, 0.8f, 0.8f), 0, false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  const testimg::Image picture = wt::grab();

  // A mote's shadow on the floor: along the light's direction from the mote.
  const Light& light = *s.world.objects[s.light]->light();
  const Vector3 mote0(-1.0f, 0.0f, 0.3f);
  const Vector3 d = light.direction;
  const float t = (-1.0f - mote0.y) / d.y;
  const Vector3 onFloor = mote0 + d * t;
  double sx, sy, nx, ny;
  wt::project(*s.camera, onFloor, &sx, &sy);
  wt::project(*s.camera, onFloor + Vector3(0, 0, -1.2f), &nx, &ny);
  EXPECT_LT(wt::brightness(int(sx), int(sy), 3, 3) + 30, wt::brightness(int(nx), int(ny), 3, 3))
      << "the mote shadows the floor by its shape";

  const auto result = wt::matchesReference(picture, "world_billboards.png");
  EXPECT_TRUE(result.passed) << result.message;
  glDeleteTextures(1, &mote);
  glDeleteTextures(1, &flare);
}

}  // namespace
