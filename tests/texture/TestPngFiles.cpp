#include "TestPngFiles.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csetjmp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace testpng {
namespace {

bool writeBody(png_structp png, png_infop info, FILE* file, const Layout& layout,
               png_bytepp rows, png_colorp palette, int paletteCount) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_init_io(png, file);
  png_set_IHDR(png, info, layout.width, layout.height, layout.bitDepth, layout.colourType,
               layout.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (layout.colourType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, paletteCount);
  png_set_rows(png, info, rows);
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  return true;
}

// Scratch directories are removed when the test process ends.
struct ScratchDirectories {
  std::vector<std::string> paths;
  ~ScratchDirectories() {
    std::error_code ignored;
    for (const std::string& path : paths) std::filesystem::remove_all(path, ignored);
  }
};
ScratchDirectories scratchDirectories;

int channelsOf(int colourType) {
  switch (colourType) {
    case 0: return 1;
    case 2: return 3;
    case 3: return 1;
    case 4: return 2;
    default: return 4;
  }
}

}  // namespace

bool write(const std::string& path, const Layout& layout, const std::vector<uint8_t>& data) {
  const size_t rowBytes =
      (size_t(layout.width) * channelsOf(layout.colourType) * layout.bitDepth + 7) / 8;
  if (data.size() < rowBytes * layout.height) return false;
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return false;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  std::vector<png_bytep> rows(layout.height);
  for (int y = 0; y < layout.height; ++y)
    rows[y] = const_cast<png_bytep>(data.data() + rowBytes * y);
  std::vector<png_color> palette(layout.palette.size() / 3);
  for (size_t i = 0; i < palette.size(); ++i)
    palette[i] = png_color{layout.palette[i * 3], layout.palette[i * 3 + 1], layout.palette[i * 3 + 2]};
  bool ok = png && info &&
            writeBody(png, info, file, layout, rows.data(), palette.data(), int(palette.size()));
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
  return ok;
}

bool writeRgb(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb,
              bool interlaced) {
  Layout layout;
  layout.width = width;
  layout.height = height;
  layout.colourType = PNG_COLOR_TYPE_RGB;
  layout.interlaced = interlaced;
  return write(path, layout, rgb);
}

bool writeRgba(const std::string& path, int width, int height, const std::vector<uint8_t>& rgba,
               bool interlaced) {
  Layout layout;
  layout.width = width;
  layout.height = height;
  layout.colourType = PNG_COLOR_TYPE_RGBA;
  layout.interlaced = interlaced;
  return write(path, layout, rgba);
}

bool writeSolid(const std::string& path, int width, int height, std::vector<uint8_t> colour) {
  std::vector<uint8_t> data;
  for (int i = 0; i < width * height; ++i) data.insert(data.end(), colour.begin(), colour.end());
  return colour.size() == 4 ? writeRgba(path, width, height, data)
                            : writeRgb(path, width, height, data);
}

std::string scratchDirectory() {
  static int counter = 0;
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string dir = ::testing::TempDir() + "ostravine_texture_" + std::to_string(getpid()) + "_" +
                    std::to_string(counter++);
  if (test) dir += std::string("_") + test->name();
  dir += "/";
  mkdir(dir.c_str(), 0755);
  scratchDirectories.paths.push_back(dir);
  return dir;
}

std::vector<uint8_t> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

bool fileExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

std::vector<uint8_t> pattern(int width, int height, int channels, unsigned seed) {
  std::vector<uint8_t> data(size_t(width) * height * channels);
  unsigned x = seed * 2654435761u + 12345u;
  for (uint8_t& byte : data) {
    x = x * 1103515245u + 12345u;
    byte = uint8_t(x >> 16);
  }
  return data;
}

}  // namespace testpng
