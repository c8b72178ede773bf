// GlyphGrid: the fixed-pitch glyph atlases that the text drawer reads.
//
// The text drawer finds a character purely by arithmetic: cell = code minus
// firstCharacter, column = cell mod columns, row = cell div columns, glyph
// centre = firstCentre + (column * stepX, row * stepY), and it samples the
// rectangle centre +- glyphSize / 2. All of these are pixels here (the drawer
// divides them by the image size). Each glyph is drawn centred in its own
// rectangle and clipped to it; outside the rectangles the image is empty.
// Pixels are white; alpha carries the glyph shapes.
// Codes 128 to 159 follow the Windows Latin-1 code page, 160 to 255 ISO
// Latin-1, so an 8-bit string of the engine shows the letters it means.
#pragma once
#include <cstdint>
#include <string>

#include "Image.h"
#include "Lettering.h"

struct GlyphGridLayout {
  std::string fileName;
  int imageWidth, imageHeight;
  int firstCharacter, columns, rows;
  float glyphWidth, glyphHeight;      // size of the sampled rectangle
  float firstCentreX, firstCentreY;   // centre of the first cell's rectangle
  float stepX, stepY;                 // distance between neighbouring centres
  float emWidth, emHeight;            // em size of the rendered letters
  float baseline;                     // baseline, below the rectangle's top edge
};

// The main engine font, "fonge3bb.png".
GlyphGridLayout mainFontLayout();
// The loading screen's font, "font2.png".
GlyphGridLayout loadingFontLayout();

// Unicode code point shown for an 8-bit character code; 0 where none.
uint32_t codePointOfCharacter(int code);

Image buildGlyphGrid(Typeface& face, const GlyphGridLayout& layout);
