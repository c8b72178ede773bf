// PngFile: reading and writing the PNG images of the texture store, through libpng.
//
// Pixels are RGBA, 8 bits a channel, rows packed, the file's first row first
// (images are never flipped). The reader takes 8-bit RGB and RGBA files only
// and adjusts the colours while it reads; results are the store's error codes
// (0 success, 1 file open failed, 5 format not supported, 6 libpng error).
#pragma once
#include <cstdint>
#include <string>
#include <vector>

// Reads one image. colourScale is null or three floats (red, green, blue
// factors, default 1); colourOffset is null or three floats of which only the
// first is used, for all three channels (default 0, in units of full scale, so
// 1 adds 255); saturation 1 leaves colours alone, 0 gives grey. On success
// outPixels holds outWidth x outHeight x 4 bytes; on failure the outputs are
// left as they were.
//   1  the file does not open for reading
//   5  not a PNG: fewer than 8 bytes, or a signature that differs from PNG's
//      in any of its 8 bytes; or a PNG that is not 8-bit RGB or RGBA
//      (palette, grey, grey+alpha, 16-bit)
//   6  libpng could not start, or reported an error (a damaged or truncated
//      body, or a side above 32768 pixels, more than any texture can take);
//      or the header declares more pixels than the file could decompress
//      to (refused before any row is allocated)
int readPngImage(const std::string& path, std::vector<uint8_t>& outPixels, int32_t& outWidth,
                 int32_t& outHeight, const float* colourScale, const float* colourOffset,
                 float saturation);

// The colour adjustment of one pixel, as the reader applies it. source holds
// `channels` bytes (3 or 4); out receives RGBA. With b = offset x 255:
//   c' = C x scale + b for each of red, green, blue (in float)
//   grey = 0.299 r' + 0.587 g' + 0.114 b', cut to 255 when above it
//   out = trunc(c' x saturation + (1 - saturation) x grey)
// and a result outside 0..255 becomes 255: the test is on the unsigned value,
// so a negative channel ends as 255, not 0 (intended; do not clamp at 0).
// Alpha is the fourth source byte, or 255 for 3 channels; never adjusted.
void adjustPixelColour(const uint8_t* source, int channels, const float scale[3], float offset,
                       float saturation, uint8_t out[4]);

// Writes width x height RGBA pixels as an 8-bit RGBA, non-interlaced PNG with
// the store's fixed settings (no row filter, zlib level 9, memory level 8,
// default strategy, window 15 bits, deflate, 8 KiB buffer). Rows are written in
// memory order, row 0 first. Returns 0, 1 when the file does not open for
// writing, 6 on a libpng failure (a partly written file stays).
int writePngImage(const std::string& path, const uint8_t* pixels, int32_t width, int32_t height);
