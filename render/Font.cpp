// Font: immediate-mode text, one quad and one matrix push per character.
#include <GL/glew.h>

#include "render/Font.h"

#include <cassert>
#include <vector>

#include "foundation/Capabilities.h"
#include "texture/TextureStore.h"

Font::Font(TextureStore* store_, const FontAtlas& atlas)
    : store(store_),
      textureName(atlas.textureName),
      firstCharacter(atlas.firstCharacter),
      columns(atlas.columns),
      rows(atlas.rows),
      glyphWidth(atlas.glyphWidth),
      glyphHeight(atlas.glyphHeight),
      firstCentreU(atlas.firstCentreU),
      firstCentreV(atlas.firstCentreV),
      stepU(atlas.stepU),
      stepV(atlas.stepV) {}

void Font::setFrame(const Vector3& position_, const Vector3& xAxis_, const Vector3& yAxis_) {
  position = position_;
  xAxis = xAxis_;
  yAxis = yAxis_;
}

void Font::setMetrics(float quadWidth_, float quadHeight_, float columnAdvance_, float lineAdvance_) {
  quadWidth = quadWidth_;
  quadHeight = quadHeight_;
  columnAdvance = columnAdvance_;
  lineAdvance = lineAdvance_;
}

void Font::setColor(float r, float g, float b) { color = Vector3(r, g, b); }

void Font::setColor(float r, float g, float b, float a) {
  color = Vector3(r, g, b);
  alpha = a;
}

void Font::setColor(const Vector3& color_) { color = color_; }

void Font::setAlpha(float a) { alpha = a; }

void Font::setCursor(int column, int row) {
  cursorColumn = column;
  cursorRow = row;
}

void Font::setColumn(int column) { cursorColumn = column; }

void Font::setRow(int row) { cursorRow = row; }

static Vector3 scaled(const Vector3& v, float s) { return Vector3(v.x * s, v.y * s, v.z * s); }

static void vertex(const Vector3& v) { glVertex3f(v.x, v.y, v.z); }

void Font::draw(const std::string& text, bool centreLines, float columnOffset, float advance,
                float scaleX, float scaleY, GlyphHook glyphHook, float hookArgument, int blendMode) {
  assert(store && columns > 0);
  glMatrixMode(GL_MODELVIEW);
  glDisable(GL_LIGHTING);
  glEnable(GL_BLEND);
  glEnable(GL_ALPHA_TEST);
  glAlphaFunc(GL_GREATER, 0.0f);

  if (blendMode == 0) {
    if (hasBlendFuncSeparate)
      glBlendFuncSeparateEXT(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    else
      glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  } else if (blendMode == 1) {
    glBlendFunc(GL_SRC_COLOR, GL_DST_ALPHA);
  }

  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  // An unknown name binds nothing: the previous binding stays.
  store->applySamplerState(textureName);
  glColor4f(color.x, color.y, color.z, alpha);
  glEnable(GL_COLOR_MATERIAL);

  // Line lengths in characters; a line ends at each line feed and at the end.
  std::vector<int> lineLengths;
  int length = 0;
  for (char c : text) {
    if (c == '\n') {
      lineLengths.push_back(length);
      length = 0;
    } else {
      ++length;
    }
  }
  lineLengths.push_back(length);

  size_t line = 0;
  // Without centring lineLength is 0, so every glyph lands half a column to
  // the right of its column: the layout has always been so; keep it.
  int lineLength = centreLines ? lineLengths[0] : 0;
  if (advance == 0) advance = columnAdvance;

  for (char c : text) {
    // Characters are signed bytes: codes above 127 give a huge unsigned index
    // and a coordinate far outside the image, which the wrap mode resolves.
    const uint32_t index = static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(c)) -
                                                 static_cast<int32_t>(firstCharacter));
    const uint32_t cellColumn = index % columns;
    const uint32_t cellRow = index / columns;
    const float u = static_cast<float>(cellColumn) * stepU + firstCentreU;
    const float v = static_cast<float>(cellRow) * stepV + firstCentreV;

    if (c == ' ') {
      ++cursorColumn;
      continue;
    }
    if (c == '\n') {
      ++cursorRow;
      cursorColumn = 0;
      ++line;
      lineLength = centreLines ? lineLengths[line] : 0;
      continue;
    }

    glPushMatrix();
    const float column = (static_cast<float>(cursorColumn) - static_cast<float>(lineLength - 1) * 0.5f +
                          columnOffset) * advance * scaleX;
    const Vector3 place = position + scaled(xAxis, column) + scaled(yAxis, static_cast<float>(cursorRow) * lineAdvance);
    glTranslatef(place.x, place.y, place.z);
    if (glyphHook) glyphHook(hookArgument, static_cast<float>(cursorColumn), static_cast<float>(cursorRow));

    const Vector3 hx = scaled(xAxis, quadWidth * 0.5f * scaleX);
    const Vector3 hy = scaled(yAxis, quadHeight * 0.5f * scaleY);
    const float u0 = u - glyphWidth * 0.5f, u1 = u + glyphWidth * 0.5f;
    const float v0 = v - glyphHeight * 0.5f, v1 = v + glyphHeight * 0.5f;
    auto quad = [&]() {
      glBegin(GL_QUADS);
      glTexCoord2f(u0, v0);
      vertex(-hx - hy);
      glTexCoord2f(u0, v1);
      vertex(hy - hx);
      glTexCoord2f(u1, v1);
      vertex(hx + hy);
      glTexCoord2f(u1, v0);
      vertex(hx - hy);
      glEnd();
    };

    if (hasBlendFuncSeparate) {
      quad();
    } else {
      // Colour and alpha need different blend factors: two passes, each
      // writing only its channels.
      glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
      if (blendMode == 0) glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      quad();
      glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
      if (blendMode == 0) glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
      quad();
    }

    glPopMatrix();
    ++cursorColumn;
  }

  glDisable(GL_ALPHA_TEST);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

Font* loadOutputFont(TextureStore* store) {
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  store->loadTexture("./images/fonge3bb.png", "basicOutputFont", nullptr, nullptr, false, nullptr, 1.0f, 0, true);
  if (store->findTextureId("basicOutputFont") == noTexture) return nullptr;
  TextureRecord& record = store->findTextureRecord("basicOutputFont");
  record.minFilter = GL_LINEAR_MIPMAP_LINEAR;
  const float W = float(record.width), H = float(record.height);
  // Name, first character, columns, rows, then the glyph size, the first
  // glyph's centre and the step between cells, in pixels over the image size.
  return new Font(store, FontAtlas{"basicOutputFont", 32, 16, 14, 58 / W, 54 / H, 39 / W, 30 / H, 80 / W, 58.5f / H});
}
