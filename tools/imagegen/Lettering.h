// Lettering: text and single glyphs rasterised with FreeType into coverage maps.
//
// Sizes are in pixels: emWidth and emHeight are the horizontal and vertical
// em sizes, so unequal values squeeze or stretch the letters (used where a
// texture is shown at another aspect than its pixels). Coverage is 0 to 1 per
// pixel, rows top first. Positions: x grows right, y grows down; a glyph's
// origin is its pen position on the baseline.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct Coverage {
  int width = 0;
  int height = 0;
  std::vector<float> value;  // width * height
  float at(int x, int y) const {
    return (x < 0 || y < 0 || x >= width || y >= height) ? 0.0f : value[static_cast<size_t>(y) * width + x];
  }
};

// One rendered glyph: its bitmap and where it sits relative to the pen.
struct GlyphBitmap {
  Coverage coverage;
  int left = 0;        // bitmap's left edge minus pen x
  int top = 0;         // baseline minus bitmap's top edge (positive: above the baseline)
  float advance = 0;   // pen advance in pixels
  bool present = false;  // false when the face has no glyph for the code point
};

class Typeface {
 public:
  // Opens a font file; ok() tells whether that worked, error() why not.
  explicit Typeface(const std::string& path);
  ~Typeface();
  Typeface(const Typeface&) = delete;
  Typeface& operator=(const Typeface&) = delete;

  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }

  // offsetX, offsetY (0 to 1 pixel, y down) move the outline before it is
  // rasterised, for glyphs whose pen position falls between pixels.
  GlyphBitmap glyph(uint32_t codePoint, float emWidth, float emHeight, float offsetX = 0,
                    float offsetY = 0);

  // Renders a line of text into a coverage map just large enough for its ink
  // plus `margin` pixels all round. `tracking` is extra pen advance between
  // letters, in pixels.
  Coverage line(const std::u32string& text, float emWidth, float emHeight, float tracking = 0,
                int margin = 0);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  std::string error_;
};
