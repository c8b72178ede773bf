// TestPngFiles: PNG files of every layout, made at test time with libpng, for
// the texture tests; and a scratch directory for them.
//
// Raw rows are given exactly as libpng writes them (packed samples of the
// file's own bit depth, 16-bit samples big-endian), top row first.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace testpng {

struct Layout {
  int width = 1;
  int height = 1;
  int colourType = 2;      // PNG_COLOR_TYPE_*: 0 grey, 2 RGB, 3 palette, 4 grey+alpha, 6 RGBA
  int bitDepth = 8;
  bool interlaced = false;
  std::vector<uint8_t> palette;  // RGB triples, for colour type 3
};

// Writes a PNG; returns false when libpng refused.
bool write(const std::string& path, const Layout& layout, const std::vector<uint8_t>& rows);

// 8-bit RGB or RGBA from packed pixels of 3 or 4 bytes.
bool writeRgb(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb,
              bool interlaced = false);
bool writeRgba(const std::string& path, int width, int height, const std::vector<uint8_t>& rgba,
               bool interlaced = false);

// width x height pixels of one colour, RGB or RGBA (4 values given).
bool writeSolid(const std::string& path, int width, int height, std::vector<uint8_t> colour);

// A fresh, empty directory for this test (ends with '/'), removed at process exit.
std::string scratchDirectory();

std::vector<uint8_t> readFile(const std::string& path);
void writeFile(const std::string& path, const std::vector<uint8_t>& bytes);
bool fileExists(const std::string& path);

// A deterministic test picture: every byte differs from its neighbours.
std::vector<uint8_t> pattern(int width, int height, int channels, unsigned seed = 1);

}  // namespace testpng
