#include "texture/PngFile.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr png_uint_32 maxImageSide = 32768;
constexpr size_t pngSignatureSize = 8;

struct FileCloser {
  void operator()(FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

// ---------------------------------------------------------------------------
// libpng calls under a setjmp point
// ---------------------------------------------------------------------------
// libpng reports errors by longjmp to the point set here. These frames hold no
// C++ object with a destructor, so the jump skips nothing that needs cleaning.

bool decodeWholeImage(png_structp png, png_infop info) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_keep_unknown_chunks(png, 0, nullptr, 0);
  // No texture can be larger than this; a damaged header claiming more would
  // otherwise have every row allocated before the data runs out.
  png_set_user_limits(png, maxImageSide, maxImageSide);
  // Identity: nothing is expanded, stripped or swapped.
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  return true;
}

bool encodeWholeImage(png_structp png, png_infop info, FILE* file, png_bytepp rows,
                      png_uint_32 width, png_uint_32 height) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_init_io(png, file);
  // Smallest files at the cost of time; these settings are fixed.
  png_set_filter(png, 0, PNG_FILTER_NONE);
  png_set_compression_level(png, 9);
  png_set_compression_mem_level(png, 8);
  png_set_compression_strategy(png, 0);
  png_set_compression_window_bits(png, 15);
  png_set_compression_method(png, 8);
  png_set_compression_buffer_size(png, 0x2000);
  png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_rows(png, info, rows);
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  return true;
}

// Deflate expands at most 1032 times: a block whose only codes are one bit
// for a 258-byte match and one bit for its distance of 1 gives 258 bytes for
// every two bits read.
constexpr uint64_t deflateGreatestExpansion = 1032;

// Whether the IHDR chunk (its length, type and 13 data bytes, as they follow
// the signature) declares more pixel bits than a file of fileSize bytes can
// decompress to. libpng allocates every row of the declared image before it
// reads the data, so a damaged header in a file of a few hundred bytes would
// otherwise reserve up to 4 GiB on each load. False whenever libpng's own
// checks decide: a first chunk that is no IHDR, an unknown colour type, a
// side beyond the limit.
bool declaresMoreThanTheFileHolds(const png_byte* chunk, uint64_t fileSize) {
  if (png_get_uint_32(chunk) != 13 || std::memcmp(chunk + 4, "IHDR", 4) != 0) return false;
  const uint64_t width = png_get_uint_32(chunk + 8);
  const uint64_t height = png_get_uint_32(chunk + 12);
  const uint64_t bitDepth = chunk[16];
  if (width > maxImageSide || height > maxImageSide || bitDepth > 16) return false;
  uint64_t channels = 0;
  switch (chunk[17]) {
    case PNG_COLOR_TYPE_GRAY: channels = 1; break;
    case PNG_COLOR_TYPE_RGB: channels = 3; break;
    case PNG_COLOR_TYPE_PALETTE: channels = 1; break;
    case PNG_COLOR_TYPE_GRAY_ALPHA: channels = 2; break;
    case PNG_COLOR_TYPE_RGB_ALPHA: channels = 4; break;
    default: return false;
  }
  // The pixel bits alone, without filter bytes and row padding: less than
  // any layout, interlaced or not, decompresses to.
  const uint64_t imageBytes = width * height * channels * bitDepth / 8;
  return imageBytes > fileSize * deflateGreatestExpansion;
}

}  // namespace

// ---------------------------------------------------------------------------
// Colour adjustment
// ---------------------------------------------------------------------------

void adjustPixelColour(const uint8_t* source, int channels, const float scale[3], float offset,
                       float saturation, uint8_t out[4]) {
  const float bias = offset * 255.0f;
  const float r = source[0] * scale[0] + bias;
  const float g = source[1] * scale[1] + bias;
  const float bl = source[2] * scale[2] + bias;
  float grey = 0.299f * r + 0.587f * g + 0.114f * bl;
  if (grey > 255.0f) grey = 255.0f;  // the grey is cut, the channels themselves are not
  const float k = (1.0f - saturation) * grey;
  const float mixed[3] = {r * saturation + k, g * saturation + k, bl * saturation + k};
  for (int c = 0; c < 3; ++c) {
    // Truncation toward zero, then "outside 0..255 becomes 255" tested as an
    // unsigned value: a negative result ends as 255, on purpose. Everything
    // at or below -1 (and NaN) truncates to a negative or invalid value, so the
    // test is made on the float to keep the conversion defined.
    const float v = mixed[c];
    out[c] = (v > -1.0f && v < 256.0f) ? uint8_t(int(v)) : uint8_t(255);
  }
  out[3] = channels == 4 ? source[3] : uint8_t(255);
}

// ---------------------------------------------------------------------------
// Reading
// ---------------------------------------------------------------------------

int readPngImage(const std::string& path, std::vector<uint8_t>& outPixels, int32_t& outWidth,
                 int32_t& outHeight, const float* colourScale, const float* colourOffset,
                 float saturation) {
  FileHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) return 1;

  // All 8 signature bytes are compared: the last four (CR LF, 0x1A, LF) are
  // what tells a PNG from a file mangled by line-end conversion or cut short,
  // and a file that fails here is "not supported", not a libpng error. A file
  // too short to hold the whole signature is not a PNG either.
  png_byte signature[pngSignatureSize] = {0, 0, 0, 0, 0, 0, 0, 0};
  if (std::fread(signature, 1, pngSignatureSize, file.get()) != pngSignatureSize) return 5;
  if (png_sig_cmp(signature, 0, pngSignatureSize) != 0) return 5;

  // A header that declares more than the file can hold is damage: refused
  // as libpng would refuse it once the data runs out, but before the rows
  // of the declared size are allocated.
  png_byte header[21];
  if (std::fread(header, 1, sizeof header, file.get()) == sizeof header && std::fseek(file.get(), 0, SEEK_END) == 0) {
    const long fileSize = std::ftell(file.get());
    if (fileSize > 0 && declaresMoreThanTheFileHolds(header, uint64_t(fileSize))) return 6;
  }
  if (std::fseek(file.get(), long(pngSignatureSize), SEEK_SET) != 0) return 6;

  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) return 6;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_read_struct(&png, nullptr, nullptr);
    return 6;
  }
  png_infop endInfo = png_create_info_struct(png);
  if (!endInfo) {
    png_destroy_read_struct(&png, &info, nullptr);
    return 6;
  }

  png_init_io(png, file.get());
  png_set_sig_bytes(png, int(pngSignatureSize));
  if (!decodeWholeImage(png, info)) {
    png_destroy_read_struct(&png, &info, &endInfo);
    return 6;
  }

  const png_uint_32 width = png_get_image_width(png, info);
  const png_uint_32 height = png_get_image_height(png, info);
  const int channels = png_get_channels(png, info);
  const int bitDepth = png_get_bit_depth(png, info);
  const int colourType = png_get_color_type(png, info);
  // Only 8-bit RGB and RGBA are meant; the identity read expands nothing, so
  // any other layout would be misread. It is refused instead.
  const bool supported = bitDepth == 8 && ((colourType == PNG_COLOR_TYPE_RGB && channels == 3) ||
                                           (colourType == PNG_COLOR_TYPE_RGBA && channels == 4));
  if (!supported) {
    png_destroy_read_struct(&png, &info, &endInfo);
    return 5;
  }

  png_bytepp rows = png_get_rows(png, info);
  const float unitScale[3] = {1.0f, 1.0f, 1.0f};
  const float* scale = colourScale ? colourScale : unitScale;
  const float offset = colourOffset ? colourOffset[0] : 0.0f;  // components 1 and 2 ignored on purpose

  std::vector<uint8_t> pixels(size_t(width) * height * 4);
  for (png_uint_32 y = 0; y < height; ++y) {
    const uint8_t* row = rows[y];
    uint8_t* dst = &pixels[size_t(y) * width * 4];
    for (png_uint_32 x = 0; x < width; ++x)
      adjustPixelColour(row + size_t(x) * channels, channels, scale, offset, saturation, dst + size_t(x) * 4);
  }

  png_destroy_read_struct(&png, &info, &endInfo);
  outPixels.swap(pixels);
  outWidth = int32_t(width);
  outHeight = int32_t(height);
  return 0;
}

// ---------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------

int writePngImage(const std::string& path, const uint8_t* pixels, int32_t width, int32_t height) {
  FileHandle file(std::fopen(path.c_str(), "wb"));
  if (!file) return 1;

  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) return 6;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    return 6;
  }

  std::vector<png_bytep> rows(height > 0 ? size_t(height) : 0);
  for (size_t y = 0; y < rows.size(); ++y)
    rows[y] = const_cast<png_bytep>(pixels + y * size_t(width) * 4);

  const bool written = encodeWholeImage(png, info, file.get(), rows.empty() ? nullptr : rows.data(),
                                        png_uint_32(width < 0 ? 0 : width),
                                        png_uint_32(height < 0 ? 0 : height));
  png_destroy_write_struct(&png, &info);
  return written ? 0 : 6;
}
