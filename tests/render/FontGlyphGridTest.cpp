// Tests of Font over the production's own glyph grids ("./images/fonge3bb.png"
// and "./images/font2.png", written into the run directory by the build):
// loaded and configured as the engine and the loading screen do, text drawn
// with the atlas arithmetic must land on the glyphs. The drawn pictures are
// compared with references (tests/references/font_*.png, tolerance: mean
// difference 2, at most 1 % of pixels off by more than 48).
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "render/Font.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"
#include "texture/TextureStore.h"

namespace {

const int kWidth = 256, kHeight = 96;

// The main font as the display start-up makes it: mipmapped load, trilinear
// minifying filter, cell geometry in pixels divided by the image size.
FontAtlas mainAtlas(const TextureRecord& r) {
  const float W = float(r.width), H = float(r.height);
  return FontAtlas{"basicOutputFont", 32, 16, 14, 58 / W, 54 / H, 39 / W, 30 / H, 80 / W, 58.5f / H};
}

// The loading screen's font: plain load, the record's linear filter.
FontAtlas loadingAtlas(const TextureRecord& r) {
  const float W = float(r.width), H = float(r.height);
  return FontAtlas{"basicOutputFont", 32, 16, 9, 38 / W, 55 / H, 43 / W, 37 / H, 62.4f / W, 57 / H};
}

void pixelSpace() {
  glViewport(0, 0, testgl::width(), testgl::height());
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, testgl::width(), 0, testgl::height(), -10, 10);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_CULL_FACE);
  glDisable(GL_LIGHTING);
  glClearColor(0.05f, 0.05f, 0.15f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// Bright pixels (red above 160) in a window rectangle, GL coordinates.
int brightPixels(int x, int y, int w, int h) {
  std::vector<uint8_t> p = testgl::readPixels(x, y, w, h);
  int n = 0;
  for (size_t i = 0; i < p.size(); i += 4) n += p[i] > 160;
  return n;
}

void compareWithReference(const std::string& name) {
  testimg::Image shot;
  shot.width = kWidth;
  shot.height = kHeight;
  shot.rgba = testgl::readPixels(0, 0, kWidth, kHeight);
  for (size_t i = 3; i < shot.rgba.size(); i += 4) shot.rgba[i] = 255;  // compare the picture, not its alpha
  const std::string actual = std::string(OSTRAVINE_BINARY_DIR) + "/" + name;
  ASSERT_TRUE(testimg::writePng(actual, shot));
  testimg::Comparison c = testimg::compareToReference(actual, name);
  EXPECT_TRUE(c.passed) << c.message;
}

}  // namespace

TEST(FontGlyphGrid, MainFontTextLandsOnItsGlyphs) {
  REQUIRE_GL(256, 256);
  TextureStore store;
  ASSERT_EQ(store.loadTexture("./images/fonge3bb.png", "basicOutputFont", nullptr, nullptr, false, {}, 1.0f, 0, true), 0)
      << "the build writes ./images/fonge3bb.png into the run directory";
  TextureRecord& r = store.findTextureRecord("basicOutputFont");
  r.minFilter = GL_LINEAR_MIPMAP_LINEAR;
  pixelSpace();
  Font font(&store, mainAtlas(r));
  // The editor's metrics at text scale 1: quads 28 x 24, columns 16, lines 24;
  // its frame runs down the screen.
  font.setMetrics(28, 24, 16, 24);
  font.setFrame(Vector3(0, kHeight - 16, 0), Vector3(1, 0, 0), Vector3(0, -1, 0));
  font.draw("Ostravine 1.0 #@\nquick brown fox\n{THE LAZY DOG}~", false, 0, 0, 1, 1, nullptr, 0, 0);
  EXPECT_EQ(testgl::drainErrors().size(), 0u);

  // Each character sits in a 16 x 24 column box centred half a column right
  // of its column; letters must show ink there, blanks none.
  const std::string first = "Ostravine 1.0 #@";
  for (size_t i = 0; i < first.size(); ++i) {
    int cx = int((i + 0.5) * 16), cy = kHeight - 16;
    int ink = brightPixels(cx - 7, cy - 10, 14, 20);
    if (first[i] == ' ')
      EXPECT_EQ(ink, 0) << "column " << i;
    else
      EXPECT_GT(ink, first[i] == '.' ? 3 : 8) << "no ink for '" << first[i] << "'";
  }
  compareWithReference("font_main_text.png");
}

TEST(FontGlyphGrid, LoadingFontTextLandsOnItsGlyphs) {
  REQUIRE_GL(256, 256);
  TextureStore store;
  ASSERT_EQ(store.loadTexture("./images/font2.png", "basicOutputFont"), 0)
      << "the build writes ./images/font2.png into the run directory";
  TextureRecord& r = store.findTextureRecord("basicOutputFont");
  pixelSpace();
  Font font(&store, loadingAtlas(r));
  // The loading screen's proportions (quad 1.2 x 0.6, columns 0.4, lines 0.6),
  // forty pixels a unit.
  font.setMetrics(48, 24, 16, 24);
  font.setFrame(Vector3(0, kHeight - 20, 0), Vector3(1, 0, 0), Vector3(0, -1, 0));
  font.draw("Loading...\nOSTRAVINE 0123\nabcdefghijklm", false, 0, 0, 1, 1, nullptr, 0, 0);
  EXPECT_EQ(testgl::drainErrors().size(), 0u);
  const std::string first = "Loading";
  for (size_t i = 0; i < first.size(); ++i) {
    int cx = int((i + 0.5) * 16), cy = kHeight - 20;
    EXPECT_GT(brightPixels(cx - 7, cy - 10, 14, 20), 8) << "no ink for '" << first[i] << "'";
  }
  compareWithReference("font_loading_text.png");
}
