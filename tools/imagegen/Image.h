// Image: the picture type of the image generator, and its PNG writer.
//
// Pixels are RGBA floats, nominally 0 to 1, rows top first (the file's first
// row is texture coordinate t = 0 when the production loads it). Writing
// quantises each channel as round(clamp(v, 0, 1) * 255) and stores 8-bit RGB
// (colour type 2) or RGBA (colour type 6) only: the production's reader takes
// nothing else. Files carry no time stamp, so equal pictures give equal bytes.
#pragma once
#include <string>
#include <vector>

struct Rgba {
  float r = 0, g = 0, b = 0, a = 1;
};

class Image {
 public:
  Image(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }

  // Coordinates wrap around both edges, so tileable pictures can read and
  // paint across the seams.
  Rgba& at(int x, int y);
  const Rgba& at(int x, int y) const;

  void fill(const Rgba& colour);

 private:
  int width_;
  int height_;
  std::vector<Rgba> pixels_;
};

// Writes image as an 8-bit PNG with `channels` 3 (alpha dropped) or 4.
// Returns false and fills error on failure.
bool writePng(const std::string& path, const Image& image, int channels, std::string& error);
