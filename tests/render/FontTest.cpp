// Tests of Font: atlas arithmetic, layout in the text frame, cursor, blending
// and the GL state a draw leaves. Layout is read through the glyph hook (the
// model-view matrix it sees) and through GL feedback (the quads' corners and
// texture coordinates); colours through read-back of a small window.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "render/Font.h"
#include "foundation/Capabilities.h"
#include "support/GLTestContext.h"
#include "texture/TextureStore.h"

namespace {

// ---- A synthetic atlas ------------------------------------------------------
// 64 x 64 pixels, 4 x 4 cells of 16 pixels, first character 'A'. Each cell's
// glyph is its central 8 x 8 pixels: the upper half (image rows first) red with
// green = 16 x cell, the lower half blue with green = 16 x cell, alpha 255.
// Everything else is transparent white.
const int kAtlasSize = 64;

std::vector<uint8_t> atlasPixels() {
  std::vector<uint8_t> p(kAtlasSize * kAtlasSize * 4);
  for (int y = 0; y < kAtlasSize; ++y)
    for (int x = 0; x < kAtlasSize; ++x) {
      uint8_t* q = &p[(y * kAtlasSize + x) * 4];
      int cx = x / 16, cy = y / 16, lx = x % 16, ly = y % 16;
      int cell = cy * 4 + cx;
      bool inGlyph = lx >= 4 && lx < 12 && ly >= 4 && ly < 12;
      if (!inGlyph) {
        q[0] = q[1] = q[2] = 255;
        q[3] = 0;
      } else if (ly < 8) {
        q[0] = 255, q[1] = uint8_t(cell * 16), q[2] = 0, q[3] = 255;
      } else {
        q[0] = 0, q[1] = uint8_t(cell * 16), q[2] = 255, q[3] = 255;
      }
    }
  return p;
}

FontAtlas syntheticAtlas(const std::string& name) {
  FontAtlas a;
  a.textureName = name;
  a.firstCharacter = 'A';
  a.columns = 4;
  a.rows = 4;
  a.glyphWidth = 8.0f / kAtlasSize;
  a.glyphHeight = 8.0f / kAtlasSize;
  a.firstCentreU = 8.0f / kAtlasSize;
  a.firstCentreV = 8.0f / kAtlasSize;
  a.stepU = 16.0f / kAtlasSize;
  a.stepV = 16.0f / kAtlasSize;
  return a;
}

// One store and atlas texture per process (the GL window lives as long).
TextureStore& store() {
  static TextureStore* s = nullptr;
  if (!s) {
    s = new TextureStore;
    std::vector<uint8_t> pixels = atlasPixels();
    s->createTextureFromMemory(pixels.data(), "atlas", kAtlasSize, kAtlasSize, GL_RGBA);
    TextureRecord& r = s->findTextureRecord("atlas");
    r.minFilter = GL_NEAREST;
    r.magFilter = GL_NEAREST;
  }
  return *s;
}

// Window-pixel projection: (0, 0) bottom left, one unit a pixel.
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
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// A font over the synthetic atlas in pixel space: quads 64 x 64, advance 80,
// lines 100 apart, frame with y running down the screen.
Font pixelFont() {
  Font f(&store(), syntheticAtlas("atlas"));
  f.setMetrics(64, 64, 80, 100);
  f.setFrame(Vector3(128, 128, 0), Vector3(1, 0, 0), Vector3(0, -1, 0));
  return f;
}

struct Rgba8 {
  int r, g, b, a;
};

Rgba8 pixelAt(int x, int y) {
  std::vector<uint8_t> p = testgl::readPixels(x, y, 1, 1);
  return {p[0], p[1], p[2], p[3]};
}

// ---- Glyph hook recording ----------------------------------------------------
struct HookCall {
  float argument, column, row;
  float x, y, z;  // translation of the model-view matrix at the call
};
std::vector<HookCall> hookCalls;

void recordingHook(float argument, float column, float row) {
  GLfloat m[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, m);
  hookCalls.push_back({argument, column, row, m[12], m[13], m[14]});
}

std::vector<HookCall> drawAndRecord(Font& font, const std::string& text, bool centre, float columnOffset = 0,
                                    float advance = 0, float scaleX = 1, float scaleY = 1, float argument = 0,
                                    int blendMode = 0) {
  hookCalls.clear();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  font.draw(text, centre, columnOffset, advance, scaleX, scaleY, recordingHook, argument, blendMode);
  return hookCalls;
}

// ---- Feedback --------------------------------------------------------------------
struct FeedbackVertex {
  float x, y;  // window coordinates
  float s, t;  // texture coordinates
};

// Draws in feedback mode and gives every vertex of every polygon drawn.
std::vector<FeedbackVertex> feedback(Font& font, const std::string& text, bool centre, float scaleX = 1,
                                     float scaleY = 1) {
  std::vector<GLfloat> buffer(1 << 16);
  glFeedbackBuffer(GLsizei(buffer.size()), GL_3D_COLOR_TEXTURE, buffer.data());
  glRenderMode(GL_FEEDBACK);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  font.draw(text, centre, 0, 0, scaleX, scaleY, nullptr, 0, 0);
  GLint count = glRenderMode(GL_RENDER);
  std::vector<FeedbackVertex> out;
  // GL_3D_COLOR_TEXTURE in RGBA mode: x, y, z, 4 colour, 4 texture = 11 floats.
  for (GLint i = 0; i < count;) {
    GLint token = GLint(buffer[i++]);
    if (token == GL_POLYGON_TOKEN) {
      GLint n = GLint(buffer[i++]);
      for (GLint k = 0; k < n; ++k, i += 11) out.push_back({buffer[i], buffer[i + 1], buffer[i + 7], buffer[i + 8]});
    } else if (token == GL_PASS_THROUGH_TOKEN) {
      i += 1;
    } else {
      ADD_FAILURE() << "unexpected feedback token " << token;
      break;
    }
  }
  return out;
}

struct Box {
  float minX = 1e30f, minY = 1e30f, maxX = -1e30f, maxY = -1e30f;
  float minS = 1e30f, minT = 1e30f, maxS = -1e30f, maxT = -1e30f;
};

Box boxOf(const std::vector<FeedbackVertex>& vs) {
  Box b;
  for (const FeedbackVertex& v : vs) {
    b.minX = std::min(b.minX, v.x), b.maxX = std::max(b.maxX, v.x);
    b.minY = std::min(b.minY, v.y), b.maxY = std::max(b.maxY, v.y);
    b.minS = std::min(b.minS, v.s), b.maxS = std::max(b.maxS, v.s);
    b.minT = std::min(b.minT, v.t), b.maxT = std::max(b.maxT, v.t);
  }
  return b;
}

// Restores the probed flag after a test that switches a path off.
struct SeparateBlendFlag {
  bool saved = hasBlendFuncSeparate;
  ~SeparateBlendFlag() { hasBlendFuncSeparate = saved; }
};

}  // namespace

// ============================================================================
// Construction and setters (no GL calls)
// ============================================================================

TEST(Font, ConstructorCopiesTheAtlasAndSetsTheDefaults) {
  TextureStore* s = reinterpret_cast<TextureStore*>(0x1000);  // only kept, never used here
  FontAtlas a{"basicOutputFont", 32, 16, 14, 0.25f, 0.5f, 0.125f, 0.0625f, 0.3f, 0.7f};
  Font f(s, a);
  EXPECT_EQ(f.store, s);
  EXPECT_EQ(f.textureName, "basicOutputFont");
  EXPECT_EQ(f.firstCharacter, 32);
  EXPECT_EQ(f.columns, 16u);
  EXPECT_EQ(f.rows, 14u);
  EXPECT_FLOAT_EQ(f.glyphWidth, 0.25f);
  EXPECT_FLOAT_EQ(f.glyphHeight, 0.5f);
  EXPECT_FLOAT_EQ(f.firstCentreU, 0.125f);
  EXPECT_FLOAT_EQ(f.firstCentreV, 0.0625f);
  EXPECT_FLOAT_EQ(f.stepU, 0.3f);
  EXPECT_FLOAT_EQ(f.stepV, 0.7f);
  EXPECT_FLOAT_EQ(f.quadWidth, 0.1f);
  EXPECT_FLOAT_EQ(f.quadHeight, 0.05f);
  EXPECT_FLOAT_EQ(f.columnAdvance, 0.11f);
  EXPECT_FLOAT_EQ(f.lineAdvance, 0.06f);
  EXPECT_EQ(f.xAxis.x, 1);
  EXPECT_EQ(f.xAxis.y, 0);
  EXPECT_EQ(f.xAxis.z, 0);
  EXPECT_EQ(f.yAxis.x, 0);
  EXPECT_EQ(f.yAxis.y, 1);
  EXPECT_EQ(f.yAxis.z, 0);
  EXPECT_EQ(f.position.x, 0);
  EXPECT_EQ(f.position.y, 0);
  EXPECT_EQ(f.position.z, 0);
  EXPECT_EQ(f.color.x, 1);
  EXPECT_EQ(f.color.y, 1);
  EXPECT_EQ(f.color.z, 1);
  EXPECT_EQ(f.alpha, 1);
  EXPECT_EQ(f.cursorRow, 0);
  EXPECT_EQ(f.cursorColumn, 0);
}

TEST(Font, SettersStoreTheirValuesAsGiven) {
  Font f(nullptr, FontAtlas());
  f.setFrame(Vector3(1, 2, 3), Vector3(2, 0, 0), Vector3(0, -3, 1));
  EXPECT_EQ(f.position.z, 3);
  EXPECT_EQ(f.xAxis.x, 2);  // lengths are kept, not normalised
  EXPECT_EQ(f.yAxis.y, -3);
  EXPECT_EQ(f.yAxis.z, 1);
  f.setMetrics(28, 24, 16, 20);
  EXPECT_EQ(f.quadWidth, 28);
  EXPECT_EQ(f.quadHeight, 24);
  EXPECT_EQ(f.columnAdvance, 16);
  EXPECT_EQ(f.lineAdvance, 20);
  f.setColor(0.5f, 0.25f, 0.125f, 0.75f);
  EXPECT_EQ(f.color.y, 0.25f);
  EXPECT_EQ(f.alpha, 0.75f);
  f.setColor(0.1f, 0.2f, 0.3f);  // the three-value form keeps alpha
  EXPECT_EQ(f.color.z, 0.3f);
  EXPECT_EQ(f.alpha, 0.75f);
  f.setColor(Vector3(0.9f, 0.8f, 0.7f));
  EXPECT_EQ(f.color.x, 0.9f);
  EXPECT_EQ(f.alpha, 0.75f);
  f.setAlpha(0.5f);
  EXPECT_EQ(f.alpha, 0.5f);
  f.setCursor(4, 7);
  EXPECT_EQ(f.cursorColumn, 4);
  EXPECT_EQ(f.cursorRow, 7);
  f.setColumn(9);
  EXPECT_EQ(f.cursorColumn, 9);
  EXPECT_EQ(f.cursorRow, 7);
  f.setRow(2);
  EXPECT_EQ(f.cursorRow, 2);
  EXPECT_EQ(f.cursorColumn, 9);
}

// ============================================================================
// Layout, read through the glyph hook
// ============================================================================

TEST(FontLayout, CentredTwoGlyphsSitHalfAColumnEitherSideOfThePosition) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<HookCall> calls = drawAndRecord(f, "AB", true);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_FLOAT_EQ(calls[0].x, 128 - 0.5f * 80);
  EXPECT_FLOAT_EQ(calls[1].x, 128 + 0.5f * 80);
  EXPECT_FLOAT_EQ(calls[0].y, 128);
  EXPECT_FLOAT_EQ(calls[1].y, 128);
}

TEST(FontLayout, UncentredTextStartsHalfAColumnRightOfItsColumn) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<HookCall> calls = drawAndRecord(f, "AB", false);
  ASSERT_EQ(calls.size(), 2u);
  // lineLength is 0 without centring, so (column - (0 - 1) * 0.5): +0.5.
  EXPECT_FLOAT_EQ(calls[0].x, 128 + 0.5f * 80);
  EXPECT_FLOAT_EQ(calls[1].x, 128 + 1.5f * 80);
}

TEST(FontLayout, ALeadingBlankCountsInTheLineLength) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  // The toolbox labels: a blank after the line feed.
  std::vector<HookCall> calls = drawAndRecord(f, "AB\n CD", true);
  ASSERT_EQ(calls.size(), 4u);
  // Line 0, length 2: -0.5, +0.5. Line 1, length 3: the blank takes column 0
  // and C, D sit at columns 1, 2, i.e. 0 and +1 around the centre.
  EXPECT_FLOAT_EQ(calls[0].x, 128 - 40);
  EXPECT_FLOAT_EQ(calls[1].x, 128 + 40);
  EXPECT_FLOAT_EQ(calls[2].x, 128);
  EXPECT_FLOAT_EQ(calls[3].x, 128 + 80);
  // The second line lies one lineAdvance along yAxis (0, -1, 0).
  EXPECT_FLOAT_EQ(calls[2].y, 128 - 100);
  EXPECT_FLOAT_EQ(calls[3].y, 128 - 100);
  EXPECT_EQ(calls[2].row, 1);
  EXPECT_EQ(calls[2].column, 1);
}

TEST(FontLayout, ALineFeedWithoutCentringKeepsTheLengthAtZero) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<HookCall> calls = drawAndRecord(f, "ABC\nD", false);
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_FLOAT_EQ(calls[3].x, 128 + 0.5f * 80);
  EXPECT_FLOAT_EQ(calls[3].y, 128 - 100);
}

TEST(FontLayout, AdvanceZeroUsesColumnAdvanceAndScaleXDoublesThePitch) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<HookCall> plain = drawAndRecord(f, "AB", true, 0, 0);
  f.setCursor(0, 0);
  std::vector<HookCall> given = drawAndRecord(f, "AB", true, 0, 30);
  f.setCursor(0, 0);
  std::vector<HookCall> doubled = drawAndRecord(f, "AB", true, 0, 0, 2);
  ASSERT_EQ(plain.size(), 2u);
  ASSERT_EQ(given.size(), 2u);
  ASSERT_EQ(doubled.size(), 2u);
  EXPECT_FLOAT_EQ(plain[1].x - plain[0].x, 80);
  EXPECT_FLOAT_EQ(given[1].x - given[0].x, 30);
  EXPECT_FLOAT_EQ(doubled[1].x - doubled[0].x, 160);
  EXPECT_FLOAT_EQ(doubled[0].x, 128 - 80);
}

TEST(FontLayout, ColumnOffsetShiftsEveryGlyph) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<HookCall> calls = drawAndRecord(f, "AB", true, -1.5f);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_FLOAT_EQ(calls[0].x, 128 + (-0.5f - 1.5f) * 80);
  EXPECT_FLOAT_EQ(calls[1].x, 128 + (0.5f - 1.5f) * 80);
}

TEST(FontLayout, AxesAreUsedWithTheirLengthsInThreeDimensions) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  f.setMetrics(1, 1, 1, 1);
  f.setFrame(Vector3(10, 20, 3), Vector3(2, 0, -1), Vector3(0, 0, 4));
  std::vector<HookCall> calls = drawAndRecord(f, "A\nB", true);
  ASSERT_EQ(calls.size(), 2u);
  // Column 0 of a line of one: offset 0 on x; row 1: one lineAdvance of yAxis.
  EXPECT_FLOAT_EQ(calls[0].x, 10);
  EXPECT_FLOAT_EQ(calls[0].z, 3);
  EXPECT_FLOAT_EQ(calls[1].z, 3 + 4);
  f.setCursor(0, 0);
  calls = drawAndRecord(f, "AB", true);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_FLOAT_EQ(calls[1].x, 10 + 0.5f * 2);
  EXPECT_FLOAT_EQ(calls[1].z, 3 - 0.5f);
}

TEST(FontLayout, TheHookReceivesItsArgumentColumnAndRow) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  f.setCursor(3, 2);
  std::vector<HookCall> calls = drawAndRecord(f, "A B\nC", false, 0, 0, 1, 1, 7.5f);
  ASSERT_EQ(calls.size(), 3u);  // the blank calls nothing
  EXPECT_EQ(calls[0].argument, 7.5f);
  EXPECT_EQ(calls[0].column, 3);
  EXPECT_EQ(calls[0].row, 2);
  EXPECT_EQ(calls[1].column, 5);
  EXPECT_EQ(calls[1].row, 2);
  EXPECT_EQ(calls[2].column, 0);
  EXPECT_EQ(calls[2].row, 3);
}

TEST(FontLayout, TheCursorStaysBehindTheLastCharacterAndTheNextDrawContinues) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  drawAndRecord(f, "ABC", false);
  EXPECT_EQ(f.cursorColumn, 3);
  EXPECT_EQ(f.cursorRow, 0);
  std::vector<HookCall> calls = drawAndRecord(f, "D", false);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_FLOAT_EQ(calls[0].x, 128 + 3.5f * 80);
  EXPECT_EQ(f.cursorColumn, 4);
  drawAndRecord(f, "AB\nC ", false);
  EXPECT_EQ(f.cursorRow, 1);
  EXPECT_EQ(f.cursorColumn, 2);  // a trailing blank still advances
  // The editor resets the cursor before its second pass over the same text.
  f.setCursor(0, 0);
  calls = drawAndRecord(f, "D", false);
  EXPECT_FLOAT_EQ(calls[0].x, 128 + 0.5f * 80);
}

// ============================================================================
// Quads and texture coordinates, read through feedback
// ============================================================================

TEST(FontQuads, AGlyphQuadSpansItsCellRectangleAroundItsPlace) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  std::vector<FeedbackVertex> vs = feedback(f, "F", true);  // cell 5: column 1, row 1
  ASSERT_GE(vs.size(), 3u);
  Box b = boxOf(vs);
  EXPECT_NEAR(b.minX, 96, 1e-3);
  EXPECT_NEAR(b.maxX, 160, 1e-3);
  EXPECT_NEAR(b.minY, 96, 1e-3);
  EXPECT_NEAR(b.maxY, 160, 1e-3);
  EXPECT_NEAR(b.minS, 20.0f / 64, 1e-6);
  EXPECT_NEAR(b.maxS, 28.0f / 64, 1e-6);
  EXPECT_NEAR(b.minT, 20.0f / 64, 1e-6);
  EXPECT_NEAR(b.maxT, 28.0f / 64, 1e-6);
  // Corner pairing: (u - w/2, v - h/2) at -hx - hy. With yAxis pointing down
  // the screen, -hy is up: the image's top edge is drawn at the top.
  for (const FeedbackVertex& v : vs) {
    bool left = v.x < 128, top = v.y > 128;
    EXPECT_NEAR(v.s, left ? 20.0f / 64 : 28.0f / 64, 1e-6);
    EXPECT_NEAR(v.t, top ? 20.0f / 64 : 28.0f / 64, 1e-6);
  }
}

TEST(FontQuads, ScaleXWidensTheQuadsAndScaleYHeightensThem) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  f.setMetrics(20, 10, 40, 100);
  Box b = boxOf(feedback(f, "A", true, 2, 3));
  EXPECT_NEAR(b.maxX - b.minX, 40, 1e-3);
  EXPECT_NEAR(b.maxY - b.minY, 30, 1e-3);
  f.setCursor(0, 0);
  Box pair = boxOf(feedback(f, "AB", true, 2, 1));
  // Two glyphs 2 x 40 apart, each 40 wide: 120 from edge to edge.
  EXPECT_NEAR(pair.maxX - pair.minX, 120, 1e-3);
}

TEST(FontQuads, ACharacterBelowTheFirstGivesAHugeIndexAndACoordinateFarOutside) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  // '!' is 33, first is 65: (33 - 65) as unsigned = 4294967264;
  // column = 4294967264 mod 4 = 0, row = 1073741816.
  std::vector<FeedbackVertex> vs = feedback(f, "!", true);
  ASSERT_GE(vs.size(), 3u);
  Box b = boxOf(vs);
  EXPECT_NEAR(b.minS, 4.0f / 64, 1e-6);
  const float expectedV = float(1073741816u) * (16.0f / 64) + 8.0f / 64;
  EXPECT_NEAR(b.minT, expectedV, expectedV * 1e-6);
  // Codes above 127 are negative as signed bytes and land there too.
  f.setCursor(0, 0);
  vs = feedback(f, std::string(1, char(0xC1)), true);  // -63 - 65 = -128 -> row 1073741792
  ASSERT_GE(vs.size(), 3u);
  b = boxOf(vs);
  EXPECT_GT(b.minT, 1e8f);
}

TEST(FontQuads, WithoutTheSeparateBlendFunctionEachGlyphIsDrawnTwice) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  SeparateBlendFlag restore;
  Font f = pixelFont();
  hasBlendFuncSeparate = true;
  size_t once = feedback(f, "AB", true).size();
  hasBlendFuncSeparate = false;
  f.setCursor(0, 0);
  size_t twice = feedback(f, "AB", true).size();
  EXPECT_GT(once, 0u);
  EXPECT_EQ(twice, 2 * once);
}

// ============================================================================
// Pixels and GL state
// ============================================================================

TEST(FontPixels, AGlyphShowsItsCellUprightModulatedByTheColour) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f = pixelFont();
  f.draw("F", true, 0, 0, 1, 1, nullptr, 0, 0);  // cell 5
  Rgba8 upper = pixelAt(128, 150), lower = pixelAt(128, 106);
  EXPECT_EQ(upper.r, 255);
  EXPECT_EQ(upper.g, 80);
  EXPECT_EQ(upper.b, 0);
  EXPECT_EQ(lower.r, 0);
  EXPECT_EQ(lower.g, 80);
  EXPECT_EQ(lower.b, 255);
  // Outside the quad nothing is drawn.
  Rgba8 outside = pixelAt(90, 128);
  EXPECT_EQ(outside.r + outside.g + outside.b + outside.a, 0);

  pixelSpace();
  f.setCursor(0, 0);
  f.setColor(0.5f, 1, 1);
  f.draw("F", true, 0, 0, 1, 1, nullptr, 0, 0);
  EXPECT_NEAR(pixelAt(128, 150).r, 128, 1);
  EXPECT_EQ(testgl::drainErrors().size(), 0u);
}

TEST(FontPixels, TransparentTexelsAreRejectedByTheAlphaTest) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  glClearColor(0.2f, 0.4f, 0.6f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  Font f = pixelFont();
  // Blend mode 2 leaves (ONE, ZERO): a transparent texel that passed would
  // overwrite the background with white.
  f.setMetrics(128, 128, 80, 100);  // the quad now shows the transparent margin too
  f.glyphWidth = 16.0f / 64;
  f.glyphHeight = 16.0f / 64;
  glBlendFunc(GL_ONE, GL_ZERO);
  f.draw("A", true, 0, 0, 1, 1, nullptr, 0, 2);
  Rgba8 margin = pixelAt(70, 128);
  EXPECT_NEAR(margin.r, 51, 1);
  EXPECT_NEAR(margin.g, 102, 1);
  EXPECT_NEAR(margin.b, 153, 1);
  Rgba8 glyph = pixelAt(128, 150);
  EXPECT_EQ(glyph.r, 255);
}

// Draws a half-transparent white glyph over a half-alpha grey background and
// gives the centre pixel.
static Rgba8 blendedPixel(int blendMode) {
  pixelSpace();
  glClearColor(0.4f, 0.4f, 0.4f, 0.5f);
  glClear(GL_COLOR_BUFFER_BIT);
  Font f = pixelFont();
  f.setColor(1, 1, 1, 0.5f);
  f.draw("A", true, 0, 0, 1, 1, nullptr, 0, blendMode);
  return pixelAt(128, 150);  // cell 0 upper half: (255, 0, 0)
}

TEST(FontPixels, BlendModeZeroBlendsColourByAlphaAndAccumulatesDestinationAlpha) {
  REQUIRE_GL(256, 256);
  SeparateBlendFlag restore;
  ASSERT_TRUE(hasBlendFuncSeparate) << "the driver lacks GL_EXT_blend_func_separate";
  Rgba8 separate = blendedPixel(0);
  // colour: src * 0.5 + dst * 0.5; alpha: 0.5 + 0.5 * (1 - 0.5) = 0.75.
  EXPECT_NEAR(separate.r, 0.5 * 255 + 0.5 * 102, 2);
  EXPECT_NEAR(separate.g, 0.5 * 102, 2);
  EXPECT_NEAR(separate.a, 191, 2);
  hasBlendFuncSeparate = false;
  Rgba8 twoPasses = blendedPixel(0);
  EXPECT_NEAR(twoPasses.r, separate.r, 1);
  EXPECT_NEAR(twoPasses.g, separate.g, 1);
  EXPECT_NEAR(twoPasses.b, separate.b, 1);
  EXPECT_NEAR(twoPasses.a, separate.a, 1);
}

TEST(FontPixels, BlendModeOneUsesSourceColourAndDestinationAlpha) {
  REQUIRE_GL(256, 256);
  glGetError();
  Rgba8 p = blendedPixel(1);
  // red: src 1 * src 1 + dst 0.4 * dst alpha 0.5 = 1.2 -> 1; green: 0 + 0.4 * 0.5.
  EXPECT_EQ(p.r, 255);
  EXPECT_NEAR(p.g, 0.2 * 255, 2);
  GLint src = 0, dst = 0;
  glGetIntegerv(GL_BLEND_SRC, &src);
  glGetIntegerv(GL_BLEND_DST, &dst);
  EXPECT_EQ(src, GL_SRC_COLOR);
  EXPECT_EQ(dst, GL_DST_ALPHA);
}

TEST(FontState, OtherBlendModesLeaveTheBlendFunctionAlone) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  glBlendFunc(GL_ONE_MINUS_DST_COLOR, GL_SRC_ALPHA_SATURATE);
  Font f = pixelFont();
  f.draw("AB", true, 0, 0, 1, 1, nullptr, 0, 7);
  GLint src = 0, dst = 0;
  glGetIntegerv(GL_BLEND_SRC, &src);
  glGetIntegerv(GL_BLEND_DST, &dst);
  EXPECT_EQ(src, GL_ONE_MINUS_DST_COLOR);
  EXPECT_EQ(dst, GL_SRC_ALPHA_SATURATE);
}

TEST(FontState, DrawLeavesTheStateItPromises) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  glEnable(GL_LIGHTING);
  glMatrixMode(GL_PROJECTION);
  GLint depthBefore = 0;
  glMatrixMode(GL_MODELVIEW);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depthBefore);
  glMatrixMode(GL_PROJECTION);
  Font f = pixelFont();
  f.draw("AB\nC", true, 0, 0, 1, 1, nullptr, 0, 0);
  GLint mode = 0, depthAfter = 0, env = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depthAfter);
  glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &env);
  EXPECT_EQ(mode, GL_MODELVIEW);
  EXPECT_EQ(depthAfter, depthBefore);
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  EXPECT_TRUE(glIsEnabled(GL_BLEND));  // blending is the caller's to restore
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_TRUE(glIsEnabled(GL_COLOR_MATERIAL));
  EXPECT_EQ(env, GL_MODULATE);
  GLboolean mask[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, mask);
  EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
  GLfloat colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(colour[3], 1.0f);
  EXPECT_EQ(testgl::drainErrors().size(), 0u);
}

TEST(FontState, TheColourMaskIsRestoredAfterTheTwoPassPath) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  SeparateBlendFlag restore;
  hasBlendFuncSeparate = false;
  Font f = pixelFont();
  f.draw("AB", true, 0, 0, 1, 1, nullptr, 0, 0);
  GLboolean mask[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, mask);
  EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
  GLint src = 0, dst = 0;
  glGetIntegerv(GL_BLEND_SRC, &src);
  glGetIntegerv(GL_BLEND_DST, &dst);
  EXPECT_EQ(src, GL_ONE);  // the alpha pass's function stays
  EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
}

TEST(FontState, TheTextureIsBoundWithTheRecordsSamplerSettings) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  TextureRecord& r = store().findTextureRecord("atlas");
  r.wrapS = GL_CLAMP_TO_EDGE;
  Font f = pixelFont();
  glBindTexture(GL_TEXTURE_2D, 0);
  f.draw("A", true, 0, 0, 1, 1, nullptr, 0, 0);
  GLint bound = 0, wrapS = 0, minFilter = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrapS);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
  r.wrapS = GL_REPEAT;
  EXPECT_EQ(GLuint(bound), store().findTextureId("atlas"));
  EXPECT_EQ(wrapS, GL_CLAMP_TO_EDGE);
  EXPECT_EQ(minFilter, GL_NEAREST);
}

TEST(FontState, AnUnknownTextureNameLeavesThePreviousBinding) {
  REQUIRE_GL(256, 256);
  pixelSpace();
  Font f(&store(), syntheticAtlas("no such texture"));  // the store binds its atlas when first made
  GLuint other = 0;
  glGenTextures(1, &other);
  glBindTexture(GL_TEXTURE_2D, other);
  f.draw("A", true, 0, 0, 1, 1, nullptr, 0, 0);
  GLint bound = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(GLuint(bound), other);
  glDeleteTextures(1, &other);
}
