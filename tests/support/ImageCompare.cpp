#include "support/ImageCompare.h"

#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace testimg {

bool readPng(const std::string& path, Image& out) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
  image.format = PNG_FORMAT_RGBA;
  out.width = int(image.width);
  out.height = int(image.height);
  out.rgba.assign(PNG_IMAGE_SIZE(image), 0);
  if (!png_image_finish_read(&image, nullptr, out.rgba.data(), 0, nullptr)) {
    png_image_free(&image);
    return false;
  }
  return true;
}

bool writePng(const std::string& path, const Image& img) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = png_uint_32(img.width);
  image.height = png_uint_32(img.height);
  image.format = PNG_FORMAT_RGBA;
  return png_image_write_to_file(&image, path.c_str(), 0, img.rgba.data(), 0, nullptr) != 0;
}

Comparison compare(const Image& actual, const Image& expected, const Tolerance& tolerance) {
  Comparison c;
  c.sizesMatch = actual.width == expected.width && actual.height == expected.height &&
                 actual.rgba.size() == expected.rgba.size();
  if (!c.sizesMatch) {
    std::ostringstream m;
    m << "size " << actual.width << "x" << actual.height << " differs from reference " << expected.width << "x"
      << expected.height;
    c.message = m.str();
    return c;
  }
  const size_t pixels = size_t(actual.width) * actual.height;
  double sum = 0;
  size_t bad = 0;
  for (size_t p = 0; p < pixels; ++p) {
    int worst = 0;
    for (int ch = 0; ch < 4; ++ch) {
      int d = std::abs(int(actual.rgba[p * 4 + ch]) - int(expected.rgba[p * 4 + ch]));
      sum += d;
      if (d > worst) worst = d;
    }
    if (worst > tolerance.pixelThreshold) ++bad;
  }
  c.meanDiff = pixels ? sum / double(pixels * 4) : 0;
  c.badShare = pixels ? double(bad) / double(pixels) : 0;
  c.passed = c.meanDiff <= tolerance.maxMeanDiff && c.badShare <= tolerance.maxBadShare;
  std::ostringstream m;
  m << "mean difference " << c.meanDiff << " (limit " << tolerance.maxMeanDiff << "), pixels off by more than "
    << tolerance.pixelThreshold << ": " << c.badShare * 100 << "% (limit " << tolerance.maxBadShare * 100 << "%)";
  c.message = m.str();
  return c;
}

std::string referencePath(const std::string& referenceName) {
  return std::string(OSTRAVINE_SOURCE_DIR) + "/tests/references/" + referenceName;
}

static bool copyFile(const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary);
  if (!in || !out) return false;
  out << in.rdbuf();
  return bool(out);
}

Comparison compareToReference(const std::string& actualPath, const std::string& referenceName,
                              const Tolerance& tolerance) {
  Comparison c;
  const std::string ref = referencePath(referenceName);
  Image actual, expected;
  if (!readPng(actualPath, actual)) {
    c.message = "cannot read the rendered picture " + actualPath;
    return c;
  }
  const char* update = std::getenv("OSTRAVINE_UPDATE_REFERENCES");
  if (update && std::string(update) == "1") {
    c.passed = copyFile(actualPath, ref);
    c.sizesMatch = true;
    c.message = c.passed ? "reference updated: " + ref : "cannot write reference " + ref;
    return c;
  }
  if (!readPng(ref, expected)) {
    c.message = "cannot read the reference " + ref +
                " (render it with OSTRAVINE_UPDATE_REFERENCES=1, look at it, then commit it)";
    return c;
  }
  c = compare(actual, expected, tolerance);
  if (!c.passed) {
    Image diff;
    if (c.sizesMatch) {
      diff.width = actual.width;
      diff.height = actual.height;
      diff.rgba.resize(actual.rgba.size());
      for (size_t i = 0; i < actual.rgba.size(); ++i) {
        int d = std::abs(int(actual.rgba[i]) - int(expected.rgba[i])) * 4;
        diff.rgba[i] = uint8_t(d > 255 ? 255 : d);
        if (i % 4 == 3) diff.rgba[i] = 255;
      }
      writePng(actualPath + ".diff.png", diff);
      c.message += "; diff image " + actualPath + ".diff.png";
    }
    c.message = actualPath + " vs " + ref + ": " + c.message;
  }
  return c;
}

}  // namespace testimg
