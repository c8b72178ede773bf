// Font: fixed-pitch text drawn as textured quads, one per character, from a
// grid of glyphs in a single image.
//
// There are no glyph metrics: a character's cell is found by arithmetic on its
// code (FontAtlas), and every character advances the cursor by one column.
// The layout lives in the font's own frame: `position` is the origin, `xAxis`
// runs along a line of text, `yAxis` from one line to the next, so text can
// stand anywhere in 3D. Lengths in the frame are whatever units the current
// matrices use; axes are used as given (an axis of length 2 doubles that
// direction). Atlas values are texture coordinates (pixels divided by the
// image size); the image's top row is t = 0.
#pragma once
#include <cstdint>
#include <string>

#include "foundation/Vector3.h"

class TextureStore;

// Where the glyphs lie in the atlas image. The glyph of character code c sits
// in cell index = (c - firstCharacter) as an unsigned number:
//   column = index mod columns, row = index div columns,
//   centre = (column * stepU + firstCentreU, row * stepV + firstCentreV),
// and is sampled over centre +- (glyphWidth, glyphHeight) / 2.
struct FontAtlas {
  std::string textureName;      // name in the TextureStore
  uint8_t firstCharacter = 32;  // code of the glyph in the first cell
  unsigned int columns = 16;    // cells in a row
  unsigned int rows = 0;        // cells in a column; carried, never used
  float glyphWidth = 0;         // size of a glyph, texture coordinates
  float glyphHeight = 0;
  float firstCentreU = 0;       // centre of the first cell's glyph
  float firstCentreV = 0;
  float stepU = 0;              // distance between the centres of neighbouring cells
  float stepV = 0;
};

// Called once per glyph with the glyph's matrix pushed and translated to its
// place: (hookArgument, cursor column, cursor row). It may add a
// transformation of its own.
typedef void (*GlyphHook)(float hookArgument, float column, float row);

class Font {
 public:
  // Copies the atlas; the store is only pointed at and must outlive the font.
  Font(TextureStore* store, const FontAtlas& atlas);

  // Copies the three vectors of the text frame.
  void setFrame(const Vector3& position, const Vector3& xAxis, const Vector3& yAxis);
  void setMetrics(float quadWidth, float quadHeight, float columnAdvance, float lineAdvance);
  void setColor(float r, float g, float b);
  void setColor(float r, float g, float b, float a);
  void setColor(const Vector3& color);
  void setAlpha(float a);
  void setCursor(int column, int row);
  void setColumn(int column);
  void setRow(int row);

  // Draws text at the cursor and leaves the cursor behind the last character.
  //   centreLines   each line is centred on the position over its own length
  //   columnOffset  added to every glyph's column
  //   advance       distance between columns; 0 means columnAdvance
  //   scaleX/Y      scale of the pitch (X only) and of the quads
  //   glyphHook     null or a per-glyph hook, given hookArgument
  //   blendMode     0: alpha blending (colour by source alpha, destination
  //                 alpha accumulated as 1 - (1 - a)(1 - d)); 1: source colour
  //                 times destination alpha; other: blend function left alone
  // A line feed starts the next row at column 0; a blank advances one column
  // and draws nothing. The blend function is not restored afterwards.
  void draw(const std::string& text, bool centreLines = false, float columnOffset = 0,
            float advance = 0, float scaleX = 1, float scaleY = 1, GlyphHook glyphHook = nullptr,
            float hookArgument = 0, int blendMode = 0);

  TextureStore* store;

  // The atlas, copied.
  std::string textureName;
  uint8_t firstCharacter;
  unsigned int columns;
  unsigned int rows;
  float glyphWidth, glyphHeight;
  float firstCentreU, firstCentreV;
  float stepU, stepV;

  float quadWidth = 0.1f;       // size of a glyph quad, frame units
  float quadHeight = 0.05f;
  float columnAdvance = 0.11f;  // distance between the columns
  float lineAdvance = 0.06f;    // distance between the lines
  Vector3 xAxis{1, 0, 0};       // direction of a line of text
  Vector3 yAxis{0, 1, 0};       // direction from one line to the next
  Vector3 position{0, 0, 0};    // origin
  Vector3 color{1, 1, 1};
  float alpha = 1;
  int cursorRow = 0;            // the cursor stays where the last draw left it
  int cursorColumn = 0;
};

// The production's output font: loads "./images/fonge3bb.png" into `store`
// as "basicOutputFont" (mipmapped, trilinear), a glyph grid of 16 columns and
// 14 rows from character 32, and returns a font over it; null when the image
// cannot be read (the store keeps no record then). Unpack alignment is set
// to 1, as every upload of the start-up expects.
Font* loadOutputFont(TextureStore* store);
