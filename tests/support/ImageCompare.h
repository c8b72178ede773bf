// ImageCompare: PNG files and reference-image comparison for rendering tests.
//
// Images are RGBA, 8 bits a channel, rows packed, top row first.
// A picture matches its reference when
//   mean absolute difference over all channels <= maxMeanDiff  (0..255 scale), and
//   share of pixels with any channel off by more than pixelThreshold <= maxBadShare.
// On a mismatch a diff image (per-pixel absolute difference, amplified x4,
// alpha opaque) is written beside the actual picture as "<actual>.diff.png".
// With OSTRAVINE_UPDATE_REFERENCES=1 in the environment, compareToReference
// copies the actual picture over the reference instead of comparing.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace testimg {

struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgba;
};

bool readPng(const std::string& path, Image& out);
bool writePng(const std::string& path, const Image& image);

struct Tolerance {
  double maxMeanDiff = 2.0;
  int pixelThreshold = 48;
  double maxBadShare = 0.01;
};

struct Comparison {
  bool sizesMatch = false;
  double meanDiff = 0;
  double badShare = 0;
  bool passed = false;
  std::string message;
};

Comparison compare(const Image& actual, const Image& expected, const Tolerance& tolerance);

// Compares actualPath with tests/references/<referenceName>; writes the diff
// image on failure. The message names both files and the figures.
Comparison compareToReference(const std::string& actualPath, const std::string& referenceName,
                              const Tolerance& tolerance = Tolerance());

std::string referencePath(const std::string& referenceName);

}  // namespace testimg
