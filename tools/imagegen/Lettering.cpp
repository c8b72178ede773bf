// Lettering: FreeType glyph rasterisation for the title and glyph-grid images.
#include "Lettering.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <climits>
#include <cmath>

struct Typeface::Impl {
  FT_Library library = nullptr;
  FT_Face face = nullptr;
};

Typeface::Typeface(const std::string& path) : impl_(new Impl) {
  if (FT_Init_FreeType(&impl_->library) != 0) {
    error_ = "FreeType could not be initialised";
    impl_->library = nullptr;
    return;
  }
  if (FT_New_Face(impl_->library, path.c_str(), 0, &impl_->face) != 0) {
    error_ = "cannot open font file " + path;
    impl_->face = nullptr;
  }
}

Typeface::~Typeface() {
  if (impl_->face) FT_Done_Face(impl_->face);
  if (impl_->library) FT_Done_FreeType(impl_->library);
}

GlyphBitmap Typeface::glyph(uint32_t codePoint, float emWidth, float emHeight, float offsetX,
                            float offsetY) {
  GlyphBitmap out;
  if (!ok()) return out;
  FT_Face face = impl_->face;
  FT_Set_Char_Size(face, static_cast<FT_F26Dot6>(std::lround(emWidth * 64.0f)),
                   static_cast<FT_F26Dot6>(std::lround(emHeight * 64.0f)), 72, 72);
  FT_Vector delta;
  delta.x = static_cast<FT_Pos>(std::lround(offsetX * 64.0f));
  delta.y = static_cast<FT_Pos>(std::lround(-offsetY * 64.0f));  // FreeType's y grows upward
  FT_Set_Transform(face, nullptr, &delta);
  FT_UInt index = FT_Get_Char_Index(face, codePoint);
  if (index == 0) return out;
  // Unhinted outlines: smooth, and independent of the squeeze of the em.
  if (FT_Load_Glyph(face, index, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0) return out;
  if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) return out;
  const FT_Bitmap& bm = face->glyph->bitmap;
  out.present = true;
  out.left = face->glyph->bitmap_left;
  out.top = face->glyph->bitmap_top;
  out.advance = static_cast<float>(face->glyph->advance.x) / 64.0f;
  out.coverage.width = static_cast<int>(bm.width);
  out.coverage.height = static_cast<int>(bm.rows);
  out.coverage.value.assign(static_cast<size_t>(bm.width) * bm.rows, 0.0f);
  for (unsigned y = 0; y < bm.rows; ++y) {
    const unsigned char* row = bm.buffer + static_cast<ptrdiff_t>(y) * bm.pitch;
    for (unsigned x = 0; x < bm.width; ++x)
      out.coverage.value[static_cast<size_t>(y) * bm.width + x] = row[x] / 255.0f;
  }
  return out;
}

Coverage Typeface::line(const std::u32string& text, float emWidth, float emHeight, float tracking,
                        int margin) {
  struct Placed {
    GlyphBitmap glyph;
    int x, y;  // top-left of the bitmap, pen space (baseline at y = 0)
  };
  std::vector<Placed> placed;
  float pen = 0;
  int minX = INT_MAX, minY = INT_MAX, maxX = INT_MIN, maxY = INT_MIN;
  for (char32_t c : text) {
    GlyphBitmap g = glyph(c, emWidth, emHeight);
    if (g.present && g.coverage.width > 0 && g.coverage.height > 0) {
      int x = static_cast<int>(std::lround(pen)) + g.left;
      int y = -g.top;
      minX = std::min(minX, x);
      minY = std::min(minY, y);
      maxX = std::max(maxX, x + g.coverage.width);
      maxY = std::max(maxY, y + g.coverage.height);
      float advance = g.advance;
      placed.push_back({std::move(g), x, y});
      pen += advance + tracking;
    } else {
      pen += g.advance + tracking;
    }
  }
  Coverage out;
  if (placed.empty()) return out;
  out.width = maxX - minX + 2 * margin;
  out.height = maxY - minY + 2 * margin;
  out.value.assign(static_cast<size_t>(out.width) * out.height, 0.0f);
  for (const Placed& p : placed) {
    for (int y = 0; y < p.glyph.coverage.height; ++y)
      for (int x = 0; x < p.glyph.coverage.width; ++x) {
        int ox = p.x - minX + margin + x;
        int oy = p.y - minY + margin + y;
        float& d = out.value[static_cast<size_t>(oy) * out.width + ox];
        // Overlapping letters: coverage adds, capped at full.
        d = std::min(1.0f, d + p.glyph.coverage.at(x, y));
      }
  }
  return out;
}
