// The greetings scene: what its constructor builds from which random draws,
// the needles, camera and flecks per frame, the text that only the glow
// source shows, the greetings' form and the fade to black.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "render/Font.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/RenderTarget.h"
#include "scenes/ProductionScenes.h"
#include "scenes/SceneBordersWiththem.h"
#include "support/ImageCompare.h"

namespace {

constexpr int backdropObject = 0;
constexpr int firstNeedle = 1;
constexpr int lightIndex = 451;

SceneBordersWiththem& scene() { return *scenetest::buildOnce<SceneBordersWiththem>("bordersWiththem").scene; }

// The engine's main font in the test demo's store, made as the display
// start-up makes it.
Font* mainFont() {
  Demo& d = scenetest::demo();
  if (!d.font) {
    d.textures->loadTexture("./images/fonge3bb.png", "basicOutputFont", nullptr, nullptr, false, {}, 1.0f, 0, true);
    TextureRecord& r = d.textures->findTextureRecord("basicOutputFont");
    r.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    const float W = float(r.width), H = float(r.height);
    d.font = new Font(d.textures,
                      FontAtlas{"basicOutputFont", 32, 16, 14, 58 / W, 54 / H, 39 / W, 30 / H, 80 / W, 58.5f / H});
  }
  return d.font;
}

LatticeShape needles() { return LatticeShape(); }  // 15 x 15 x 2 around (7, 7, 0.5), tumbled 186 degrees

ColourFamilies palettes() {
  ColourFamilies f;
  f.groupSize = 225;
  f.seedBase = 1445430;
  f.glowDiffuse = 2.5f;
  f.pictureDiffuse = 0.4f;
  f.pictureAmbient = 0.125f;
  return f;
}

DustSpec flecks() {
  DustSpec d;
  d.count = 100;
  d.spread = Vector3(9, 9, 10);
  d.alpha = 0.75f;
  d.colour = Vector3(0.05f, 0.11f, 0.33f);
  d.tileSpacingDraw = 1.0;
  return d;
}

std::vector<uint8_t> lowPicture() {
  return testgl::readPixels(0, 0, scenetest::width / 2, scenetest::height / 2);
}

int differingBytes(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
  int n = 0;
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) n += a[i] != b[i];
  return n;
}

}  // namespace

TEST(SceneBordersWiththem, ConstructionEndsAfterTheFleckDraws) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // Last seed 23233, then five draws for each of the 100 flecks.
  scenetest::expectConstructionEndsAt(scenetest::buildOnce<SceneBordersWiththem>("bordersWiththem").stateAfter,
                                      23233, 500);
}

TEST(SceneBordersWiththem, BuildsTheObjectsInOrder) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  ASSERT_EQ(s.world.objects.size(), 452u) << "backdrop, 450 needles, light";
  EXPECT_EQ(s.world.billboards.size(), 102u) << "two glares, 100 flecks";
  EXPECT_EQ(s.lightObject, lightIndex);
  EXPECT_EQ(s.needleCount, 450);
  EXPECT_EQ(s.glareCount, 2u);
  EXPECT_EQ(s.fleckCount, 100u);
  EXPECT_EQ(s.glowPasses, 6);
  ASSERT_EQ(s.objects.size(), 460u);
  EXPECT_EQ(s.objects[0], backdropObject);
  for (int n = 0; n < 450; ++n) EXPECT_EQ(s.objects[n + 1], firstNeedle + n);
  EXPECT_EQ(s.objects[451], 0) << "the spare entries are never used";
  EXPECT_EQ(s.name, "bordersWiththem");
  EXPECT_EQ(s.camera->name, "SceneBordersWiththem.camera0");
  EXPECT_FLOAT_EQ(s.parameterByName("cameraFOV")->defaultValue, 75.0f);
  EXPECT_EQ(s.parameters.size(), 15u);
  EXPECT_FLOAT_EQ(s.parameterByName("glowBlurAmount")->defaultValue, 0.45f);
  EXPECT_EQ(s.world.baseLightAttenuation, 6.0f);
  EXPECT_EQ(s.world.softShadowMaskBlurLoops, 3) << "the World's soft shadow defaults stay";
  EXPECT_FLOAT_EQ(s.world.softShadowMaskBlurAmount, 0.1f);
  scenetest::expectStandardLight(s.world, lightIndex, 0.5f);
}

TEST(SceneBordersWiththem, Backdrop) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  const Mesh& backdrop = *s.world.objects[backdropObject];
  EXPECT_EQ(backdrop.scale, Vector3(37.5f, 37.5f, 5.0f));
  EXPECT_EQ(backdrop.position, Vector3(0, 0, 10));
  const Material& p = backdrop.materials[0];
  const Material& g = backdrop.materials[1];
  scenetest::expectColour(p.ambient, Vector3(0.4f, 0.4f, 1.82f) * 0.35f, 0.0f);
  scenetest::expectColour(p.diffuse, Vector3(0.56f, 0.74f, 1.526f) * 2.1f, 1.0f);
  EXPECT_EQ(p.stageCount, 2u);
  scenetest::expectStage(p, 0, stageModulate, "planartexture");
  EXPECT_EQ(p.stageScaleU[0], 2.0f);
  EXPECT_EQ(p.stageScaleV[0], 2.0f);
  scenetest::expectStage(p, 1, stageAdd, "cubemap.bill", true);
  EXPECT_FALSE(p.refractive);
  scenetest::expectColour(g.diffuse, Vector3(0.3f, 0.46f, 1.15f) * 8.5f, 1.0f);
  scenetest::expectColour(g.ambient, Vector3(1, 1, 1) * 0.15f, 1.0f);
  EXPECT_EQ(g.stageCount, 2u);
  scenetest::expectStage(g, 0, stageModulate, "solidnoisebump");
  EXPECT_EQ(g.stageScaleU[0], 1.0f);
  scenetest::expectStage(g, 1, stageAdd, "cubemap.bill", true);
}

TEST(SceneBordersWiththem, NeedlesFromSeed234) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  scenetest::expectLattice(s.world, s.objects, 1, s.needleHomes, {234, 0}, needles(), s.sceneTimeMs == 0);
  // The lattice by hand: needle 0 at (-7, -7, -0.5) 0.25, needle 449 at (7, 7, 0.5) 0.25.
  EXPECT_EQ(s.needleHomes[0], Vector3(-1.75f, -1.75f, -0.125f));
  EXPECT_EQ(s.needleHomes[16], Vector3(-1.5f, -1.5f, -0.125f));
  EXPECT_EQ(s.needleHomes[449], Vector3(1.75f, 1.75f, 0.125f));
  crtSrand(234);
  const int r1 = crtRand(), r2 = crtRand(), r3 = crtRand();
  EXPECT_NEAR(s.world.objects[firstNeedle]->scale.y, (r3 / 32767.0 * 0.05 + 0.2) * 4.5, 1e-6);
  if (s.sceneTimeMs == 0) {
    EXPECT_NEAR(s.world.objects[firstNeedle]->rotation.x, (r2 / 32767.0 - 0.5) * 186 - 90, 1e-3);
    EXPECT_NEAR(s.world.objects[firstNeedle]->rotation.y, (r1 / 32767.0 - 0.5) * 186, 1e-3);
  }
}

TEST(SceneBordersWiththem, TwoLayersTwoPalettes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  scenetest::expectColourFamilies(s.world, s.objects, 1, {0, 1, 224, 225, 300, 449}, palettes());
  const Material& first = s.world.objects[firstNeedle]->materials[1];
  const Material& sameLayer = s.world.objects[firstNeedle + 224]->materials[1];
  const Material& otherLayer = s.world.objects[firstNeedle + 225]->materials[1];
  EXPECT_EQ(first.diffuse.x, sameLayer.diffuse.x);
  EXPECT_NE(first.diffuse.x, otherLayer.diffuse.x);
  TextureStore& t = *scenetest::demo().textures;
  EXPECT_EQ(s.world.objects[firstNeedle]->materials[0].stageTexture[0], t.findTextureId("hopmet"));
  EXPECT_EQ(first.stageTexture[0], t.findTextureId("hopmet"));
  scenetest::expectColour(first.ambient, Vector3(1, 1, 1) * 0.05f, 1.0f);
}

TEST(SceneBordersWiththem, GlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  FlareSpec glares;
  glares.texture = "bill_d2ch";
  const bool unmoved = s.sceneTimeMs == 0 && s.world.billboards[0]->time == 0;
  scenetest::expectFlares(s.world, 0, {232, 0}, glares, unmoved);
  scenetest::expectDust(s.world, 2, {23233, 0}, flecks(), unmoved);
}

TEST(SceneBordersWiththem, PerFrameCameraLightNeedlesGlaresAndFlecks) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  const std::vector<Vector3> before = scenetest::billboardPositions(s.world, 2, 100);
  const float S = 1.0f, d = 102.0f, t = S + 16, m = d + 94;
  s.animate(S, d, 200);

  NoiseField x(6, 100), y(6, 101), z(6, 102);
  const Vector3 v(m * 0.21234f, m * 0.03234f, m * 0.0723345f);
  const float depth = std::fabs(z.fractalSum(v, 4));
  EXPECT_FLOAT_EQ(s.camera->position.x, x.fractalSum(v, 4) * 2.32f);
  EXPECT_FLOAT_EQ(s.camera->position.y, y.fractalSum(v, 4) * 2.2f);
  EXPECT_FLOAT_EQ(s.camera->position.z, depth * depth * depth * 7.2f - 10);
  EXPECT_EQ(s.camera->direction, -s.camera->position) << "it keeps looking at the origin";

  scenetest::expectLightOnOrbit(s.world, lightIndex, t * 0.5f);
  scenetest::expectFlaresAtLight(s.world, 0, 2, lightIndex, m);
  const float a = easeInAt(t, 12, 6), b = easeInAt(t, 6, 6);
  EXPECT_GT(a, 0.0f);
  EXPECT_LT(a, 1.0f);
  for (int n : {0, 100, 449}) {
    const Vector3 h = s.needleHomes[n];
    const float u = a * 0.01f + 0.012f;
    const Vector3 p(std::cos(u * h.x * 12.2f) * 0.123f + m * 0.034f + 10, b * 0.3f * h.z * 0.7f + u * h.y + 10,
                    (a * 0.01f + 0.002f) * h.z + 10);
    const Vector3 at = s.world.objects[firstNeedle + n]->position;
    EXPECT_FLOAT_EQ(at.x, x.fractalSum(p, 6) * 12.5f) << n;
    EXPECT_FLOAT_EQ(at.y, y.fractalSum(p, 7) * 12.5f) << n;
    EXPECT_FLOAT_EQ(at.z, z.fractalSum(p, 6) * 12.5f) << n;
  }
  DustDrift drift;
  drift.sampleScale = 0.1f;
  drift.zScale = 0.25f;
  scenetest::expectDustDrifted(s.world, 2, before, {0, 50, 99}, x, y, z, drift, 200, t);
}

TEST(SceneBordersWiththem, WithANegativeStepTheFlecksRetraceWhileTheNeedlesFollowTheClock) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  const float S = 5.0f, d = 106.0f;
  s.animate(S, d, 0);
  const std::vector<Vector3> flecksBefore = scenetest::billboardPositions(s.world, 2, 100);
  const Vector3 needle = s.world.objects[firstNeedle + 77]->position;
  s.animate(S, d, 150);
  EXPECT_NE(s.world.billboards[2]->position, flecksBefore[0]);
  s.animate(S, d, -150);
  for (int f : {0, 42, 99}) {
    const Vector3 at = s.world.billboards[2 + f]->position;
    EXPECT_NEAR(at.x, flecksBefore[f].x, 5e-3) << f;
    EXPECT_NEAR(at.y, flecksBefore[f].y, 5e-3) << f;
    EXPECT_NEAR(at.z, flecksBefore[f].z, 5e-3) << f;
  }
  EXPECT_EQ(s.world.objects[firstNeedle + 77]->position, needle) << "placed afresh from the clocks";
  s.animate(S, d + 1.0f, 0);
  EXPECT_NE(s.world.objects[firstNeedle + 77]->position, needle) << "the needles follow the demo time";
}

TEST(SceneBordersWiththem, GreetingsHaveTheirForm) {
  const std::string text = SceneBordersWiththem::greetings;
  EXPECT_EQ(text.size(), 325u);
  int lineFeeds = 0;
  for (char c : text) lineFeeds += c == '\n';
  EXPECT_EQ(lineFeeds, 64);
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text[0], '\n');
  std::vector<std::string> lines;
  size_t from = 1;
  while (from < text.size()) {
    const size_t end = text.find('\n', from);
    lines.push_back(text.substr(from, end - from));
    from = end == std::string::npos ? text.size() : end + 1;
  }
  size_t previous = 12, names = 0, followedByEmpty = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].empty()) continue;
    ++names;
    EXPECT_GE(lines[i].size(), 3u) << lines[i];
    EXPECT_LE(lines[i].size(), 12u) << lines[i];
    EXPECT_LE(lines[i].size(), previous) << lines[i] << ": the lines grow shorter toward the end";
    previous = lines[i].size();
    if (i + 1 < lines.size() && lines[i + 1].empty()) ++followedByEmpty;
    for (char c : lines[i]) EXPECT_TRUE(c >= 32 && c < 127) << "a glyph of the font";
  }
  EXPECT_GT(followedByEmpty * 2, names) << "mostly with an empty line after each";
}

TEST(SceneBordersWiththem, GreetingsDrawnAsGlowMatchTheirReference) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  Font* font = mainFont();
  ASSERT_NE(font, nullptr) << "the build writes ./images/fonge3bb.png into the run directory";
  Camera* c = scene().camera;
  const Vector3 eye = c->position, look = c->direction;
  const float zoom = c->zoom, roll = c->roll;
  c->position = Vector3(0, 0, -10);
  c->direction = Vector3(0, 0, 10);
  c->zoom = 0;
  c->roll = 0;
  testgl::drainErrors();  // what building the scene left
  glViewport(0, 0, scenetest::width, scenetest::height);
  glClearColor(0.3f, 0.15f, 0.05f, 1.0f);  // a glow source's warm ground
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  c->apply();
  // Two seconds in: the text has climbed 27.6 units, names in the middle of
  // the list stand in the view.
  SceneBordersWiththem::drawGreetings(font, 18.0f);
  EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  c->release();
  for (unsigned e : testgl::drainErrors()) ADD_FAILURE() << "GL error " << std::hex << e;
  testimg::Image shot;
  shot.width = scenetest::width;
  shot.height = scenetest::height;
  shot.rgba = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  for (size_t i = 3; i < shot.rgba.size(); i += 4) shot.rgba[i] = 255;
  const std::string actual = std::string(OSTRAVINE_BINARY_DIR) + "/scene_greetings_glow.png";
  ASSERT_TRUE(testimg::writePng(actual, shot));
  const testimg::Comparison cmp = testimg::compareToReference(actual, "scene_greetings_glow.png");
  EXPECT_TRUE(cmp.passed) << cmp.message;
  // The text darkens the ground toward blue where it stands.
  int darker = 0;
  for (size_t i = 0; i < shot.rgba.size(); i += 4) darker += shot.rgba[i] < 60;
  EXPECT_GT(darker, 500);
  c->position = eye;
  c->direction = look;
  c->zoom = zoom;
  c->roll = roll;
}

TEST(SceneBordersWiththem, TheTextShowsOnlyThroughTheGlowSource) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  Demo& d = scenetest::demo();
  Font* font = mainFont();
  const float S = 2.0f, demoSeconds = 103.0f;
  s.animate(S, demoSeconds, 0);
  auto passes = [&](Font* with, std::vector<uint8_t>& glowSource, std::vector<uint8_t>& picture) {
    d.font = with;
    glClearColor(0, 0, 0, 1);
    s.renderGlowSource(S, demoSeconds);
    glowSource = lowPicture();
    s.renderGlowBlur();
    s.camera->release();
    d.renderTargets->lowResolution = 0;
    s.renderFinalPicture();
    picture = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  };
  std::vector<uint8_t> glowWith, pictureWith, glowWithout, pictureWithout;
  passes(font, glowWith, pictureWith);
  passes(nullptr, glowWithout, pictureWithout);
  d.font = font;
  testgl::drainErrors();
  EXPECT_GT(differingBytes(glowWith, glowWithout), 200) << "the text stands in the glow source";
  EXPECT_EQ(differingBytes(pictureWith, pictureWithout), 0) << "the picture pass does not draw it";
  // Through the blur and the glow laid over the picture, it shows in the frame.
  auto frameWith = [&](Font* with) {
    d.font = with;
    s.render(103000, 0);
    testgl::drainErrors();
    return testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  };
  s.sceneTimeMs = 2000;
  const std::vector<uint8_t> withText = frameWith(font);
  s.sceneTimeMs = 2000;
  const std::vector<uint8_t> withoutText = frameWith(nullptr);
  d.font = font;
  EXPECT_GT(differingBytes(withText, withoutText), 1000) << "the text darkens the glow where it stands";
}

TEST(SceneBordersWiththem, TheFadeIsBlackFromThirtyFiveOn) {
  EXPECT_EQ(SceneBordersWiththem::fadeToBlack(16.0f), 0.0f);
  EXPECT_EQ(SceneBordersWiththem::fadeToBlack(34.0f), 0.0f);
  EXPECT_NEAR(SceneBordersWiththem::fadeToBlack(34.5f), 0.5f, 1e-5);
  EXPECT_EQ(SceneBordersWiththem::fadeToBlack(35.01f), 1.0f);
  EXPECT_EQ(SceneBordersWiththem::fadeToBlack(50.0f), 1.0f);
}

TEST(SceneBordersWiththem, AFrameAfterThirtyFiveIsBlackAndRaisesOnlyTheLightModelErrors) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  SceneBordersWiththem& s = scene();
  s.sceneTimeMs = 19200;  // t = 35.2
  testgl::drainErrors();
  s.render(120200, 0);
  // The light's model names given to the per-light call are rejected on purpose.
  for (unsigned e : testgl::drainErrors()) EXPECT_EQ(e, static_cast<unsigned>(GL_INVALID_ENUM)) << std::hex << e;
  const std::vector<uint8_t> pixels = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  int lit = 0;
  for (size_t i = 0; i < pixels.size(); i += 4) lit += pixels[i] > 2 || pixels[i + 1] > 2 || pixels[i + 2] > 2;
  EXPECT_EQ(lit, 0);
  s.sceneTimeMs = 4000;
  s.render(105000, 0);
  testgl::drainErrors();
  const std::vector<uint8_t> earlier = testgl::readPixels(0, 0, scenetest::width, scenetest::height);
  lit = 0;
  for (size_t i = 0; i < earlier.size(); i += 4) lit += earlier[i] > 20;
  EXPECT_GT(lit, 100) << "before the fade the scene shows";
}

TEST(SceneBordersWiththem, IndexSixMakesIt) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  // A second build also checks that construction reseeds every group.
  crtSrand(777);
  Scene* made = makeProductionScene(&scenetest::demo(), 6, "bordersWiththem");
  SceneBordersWiththem* them = dynamic_cast<SceneBordersWiththem*>(made);
  ASSERT_NE(them, nullptr);
  EXPECT_EQ(them->name, "bordersWiththem");
  EXPECT_EQ(them->demo, &scenetest::demo());
  EXPECT_EQ(crtRandState(), scenetest::buildOnce<SceneBordersWiththem>("bordersWiththem").stateAfter);
  delete made;
}
