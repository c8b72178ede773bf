// GlyphGrid: rasterises a monospaced face into the atlas cell geometry.
#include "GlyphGrid.h"

#include <cmath>

GlyphGridLayout mainFontLayout() {
  // 224 glyphs, codes 32 to 255. 2048 x 1024 keeps the texture a power of two
  // (the load builds mipmaps from it) and holds the 1268 x 818 of the grid.
  // The letters are a little narrower than their em is high, because the
  // editor draws each 58 x 54 rectangle as a 28 x 24 quad.
  return {"fonge3bb.png", 2048, 1024, 32, 16, 14, 58, 54, 39, 30, 80, 58.5f, 42, 46, 42.5f};
}

GlyphGridLayout loadingFontLayout() {
  // 144 glyphs, codes 32 to 175, in 998 x 521 pixels of a 1024 x 1024 image.
  // The loading screen stretches each 38 x 55 rectangle to a 2 : 1 quad, so
  // the letters are drawn squeezed to about 40 % of their width.
  return {"font2.png", 1024, 1024, 32, 16, 9, 38, 55, 43, 37, 62.4f, 57, 19, 46, 43.0f};
}

uint32_t codePointOfCharacter(int code) {
  static const uint32_t windows1252[32] = {
      0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
  if (code < 32 || code > 255 || code == 127) return 0;
  if (code >= 128 && code < 160) return windows1252[code - 128];
  return static_cast<uint32_t>(code);
}

Image buildGlyphGrid(Typeface& face, const GlyphGridLayout& layout) {
  Image image(layout.imageWidth, layout.imageHeight);
  image.fill({1, 1, 1, 0});
  const int cells = layout.columns * layout.rows;
  for (int cell = 0; cell < cells; ++cell) {
    const int code = layout.firstCharacter + cell;
    const uint32_t codePoint = codePointOfCharacter(code);
    if (codePoint == 0 || codePoint == 32 || codePoint == 0xA0) continue;
    const int column = cell % layout.columns;
    const int row = cell / layout.columns;
    const float centreX = layout.firstCentreX + column * layout.stepX;
    const float centreY = layout.firstCentreY + row * layout.stepY;
    const float left = centreX - layout.glyphWidth * 0.5f;
    const float top = centreY - layout.glyphHeight * 0.5f;
    const float right = left + layout.glyphWidth;
    const float bottom = top + layout.glyphHeight;

    // The advance box is centred on the rectangle's centre.
    GlyphBitmap probe = face.glyph(codePoint, layout.emWidth, layout.emHeight);
    if (!probe.present) continue;
    const float penX = centreX - probe.advance * 0.5f;
    const float baseY = top + layout.baseline;
    const float penXFloor = std::floor(penX), baseYFloor = std::floor(baseY);
    GlyphBitmap g = face.glyph(codePoint, layout.emWidth, layout.emHeight, penX - penXFloor,
                               baseY - baseYFloor);

    const int originX = static_cast<int>(penXFloor) + g.left;
    const int originY = static_cast<int>(baseYFloor) - g.top;
    for (int y = 0; y < g.coverage.height; ++y) {
      const int py = originY + y;
      if (py < top || py + 1 > bottom) continue;  // clipped to its own rectangle
      for (int x = 0; x < g.coverage.width; ++x) {
        const int px = originX + x;
        if (px < left || px + 1 > right) continue;
        image.at(px, py).a = g.coverage.at(x, y);
      }
    }
  }
  return image;
}
