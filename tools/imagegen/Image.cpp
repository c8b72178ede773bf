// Image: picture storage and the deterministic PNG writer.
#include "Image.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <memory>

Image::Image(int width, int height)
    : width_(width), height_(height), pixels_(static_cast<size_t>(width) * height) {}

static int wrapIndex(int i, int n) {
  int m = i % n;
  return m < 0 ? m + n : m;
}

Rgba& Image::at(int x, int y) {
  return pixels_[static_cast<size_t>(wrapIndex(y, height_)) * width_ + wrapIndex(x, width_)];
}

const Rgba& Image::at(int x, int y) const {
  return pixels_[static_cast<size_t>(wrapIndex(y, height_)) * width_ + wrapIndex(x, width_)];
}

void Image::fill(const Rgba& colour) { std::fill(pixels_.begin(), pixels_.end(), colour); }

static uint8_t quantise(float v) {
  if (!(v > 0.0f)) return 0;  // also catches NaN
  if (v >= 1.0f) return 255;
  return static_cast<uint8_t>(std::lround(v * 255.0f));
}

bool writePng(const std::string& path, const Image& image, int channels, std::string& error) {
  if (channels != 3 && channels != 4) {
    error = "channels must be 3 or 4";
    return false;
  }
  const int w = image.width();
  const int h = image.height();
  std::vector<uint8_t> bytes(static_cast<size_t>(w) * h * channels);
  std::vector<png_bytep> rows(h);
  for (int y = 0; y < h; ++y) {
    uint8_t* row = &bytes[static_cast<size_t>(y) * w * channels];
    rows[y] = row;
    for (int x = 0; x < w; ++x) {
      const Rgba& p = image.at(x, y);
      uint8_t* q = row + static_cast<size_t>(x) * channels;
      q[0] = quantise(p.r);
      q[1] = quantise(p.g);
      q[2] = quantise(p.b);
      if (channels == 4) q[3] = quantise(p.a);
    }
  }

  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) {
    error = "cannot open " + path + " for writing";
    return false;
  }
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) {
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    error = "libpng could not be initialised";
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    error = "libpng failed while writing " + path;
    return false;
  }
  png_init_io(png, file);
  // Fixed settings: the same picture must always give the same bytes.
  png_set_compression_level(png, 6);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
  png_set_IHDR(png, info, w, h, 8, channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
  png_set_rows(png, info, rows.data());
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&png, &info);
  if (std::fclose(file) != 0) {
    error = "error closing " + path;
    return false;
  }
  return true;
}
