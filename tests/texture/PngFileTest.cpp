// The PNG reader and writer on their own, without GL: error codes for every
// kind of bad file, the colour adjustment, and the writer's file layout.
#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "TestPngFiles.h"
#include "texture/PngFile.h"

namespace {

struct Read {
  int code = -1;
  std::vector<uint8_t> pixels;
  int32_t width = -7;
  int32_t height = -7;
};

Read readPlain(const std::string& path, const float* scale = nullptr, const float* offset = nullptr,
               float saturation = 1.0f) {
  Read r;
  r.code = readPngImage(path, r.pixels, r.width, r.height, scale, offset, saturation);
  return r;
}

std::vector<uint8_t> withAlpha(const std::vector<uint8_t>& rgb) {
  std::vector<uint8_t> out;
  for (size_t i = 0; i < rgb.size(); i += 3) {
    out.insert(out.end(), rgb.begin() + i, rgb.begin() + i + 3);
    out.push_back(255);
  }
  return out;
}

// One pixel through the adjustment.
std::vector<int> adjust(std::vector<uint8_t> source, std::vector<float> scale, float offset,
                        float saturation) {
  uint8_t out[4] = {1, 2, 3, 4};
  adjustPixelColour(source.data(), int(source.size()), scale.data(), offset, saturation, out);
  return {out[0], out[1], out[2], out[3]};
}

// The chunks of a PNG file: type and data.
struct Chunk {
  std::string type;
  std::vector<uint8_t> data;
};

std::vector<Chunk> chunksOf(const std::vector<uint8_t>& file) {
  std::vector<Chunk> chunks;
  size_t at = 8;
  while (at + 12 <= file.size()) {
    const uint32_t length = uint32_t(file[at]) << 24 | uint32_t(file[at + 1]) << 16 |
                            uint32_t(file[at + 2]) << 8 | file[at + 3];
    if (at + 12 + length > file.size()) break;
    Chunk c;
    c.type.assign(reinterpret_cast<const char*>(&file[at + 4]), 4);
    c.data.assign(file.begin() + at + 8, file.begin() + at + 8 + length);
    chunks.push_back(c);
    at += 12 + length;
  }
  return chunks;
}

// Sets the IHDR's width and height of a PNG file's bytes and mends the chunk's CRC.
void setDeclaredSize(std::vector<uint8_t>& file, uint32_t width, uint32_t height) {
  for (int i = 0; i < 4; ++i) {
    file[16 + i] = uint8_t(width >> (24 - 8 * i));
    file[20 + i] = uint8_t(height >> (24 - 8 * i));
  }
  const uLong crc = crc32(crc32(0, nullptr, 0), &file[12], 17);
  for (int i = 0; i < 4; ++i) file[29 + i] = uint8_t(crc >> (24 - 8 * i));
}

// This process's peak of virtual memory (VmPeak), in KiB.
long peakVirtualKiB() {
  FILE* status = fopen("/proc/self/status", "r");
  if (!status) return -1;
  char line[256];
  long kib = -1;
  while (fgets(line, sizeof line, status))
    if (sscanf(line, "VmPeak: %ld kB", &kib) == 1) break;
  fclose(status);
  return kib;
}

}  // namespace

// ---------------------------------------------------------------------------
// Error codes
// ---------------------------------------------------------------------------

TEST(PngRead, MissingFileGivesOne) {
  const std::string dir = testpng::scratchDirectory();
  EXPECT_EQ(readPlain(dir + "nothing.png").code, 1);
  EXPECT_EQ(readPlain("").code, 1);
  EXPECT_EQ(readPlain(dir).code, 5) << "a directory opens but has no PNG signature";
}

TEST(PngRead, FewerThanEightBytesGiveFive) {
  // Too short to hold the whole signature, even where the bytes there are
  // right: not a PNG.
  const std::string dir = testpng::scratchDirectory();
  const std::vector<uint8_t> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  for (size_t n = 0; n < 8; ++n) {
    const std::string path = dir + "short" + std::to_string(n) + ".png";
    testpng::writeFile(path, std::vector<uint8_t>(signature.begin(), signature.begin() + n));
    EXPECT_EQ(readPlain(path).code, 5) << n << " bytes";
  }
}

TEST(PngRead, OtherSignatureGivesFive) {
  const std::string dir = testpng::scratchDirectory();
  testpng::writeFile(dir + "text.png", {'h', 'e', 'l', 'l', 'o', ' ', 'p', 'n', 'g'});
  testpng::writeFile(dir + "jpeg.png", {0xff, 0xd8, 0xff, 0xe0, 0, 0x10, 'J', 'F', 'I', 'F'});
  testpng::writeFile(dir + "almost.png", {0x89, 'P', 'N', 'X', '\r', '\n', 0x1a, '\n'});
  EXPECT_EQ(readPlain(dir + "text.png").code, 5);
  EXPECT_EQ(readPlain(dir + "jpeg.png").code, 5);
  EXPECT_EQ(readPlain(dir + "almost.png").code, 5);
}

TEST(PngRead, DamageInAnyOfTheLastFourSignatureBytesGivesFive) {
  // A whole, readable image with one of signature bytes 5 to 8 changed, as a
  // line-end conversion does: "format not supported", not a libpng error.
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgb(dir + "good.png", 2, 2, testpng::pattern(2, 2, 3)));
  const std::vector<uint8_t> good = testpng::readFile(dir + "good.png");
  ASSERT_EQ(readPlain(dir + "good.png").code, 0);
  for (size_t at = 4; at < 8; ++at) {
    for (uint8_t replacement : {uint8_t(0), uint8_t(good[at] ^ 0x01), uint8_t('\n')}) {
      if (replacement == good[at]) continue;
      std::vector<uint8_t> bad = good;
      bad[at] = replacement;
      const std::string path = dir + "bad" + std::to_string(at) + ".png";
      testpng::writeFile(path, bad);
      const Read r = readPlain(path);
      EXPECT_EQ(r.code, 5) << "byte " << at + 1 << " set to " << int(replacement);
      EXPECT_EQ(r.width, -7) << "outputs untouched on failure";
    }
  }
  // A CR LF turned into LF (the signature's purpose) is refused the same way.
  std::vector<uint8_t> converted = good;
  converted.erase(converted.begin() + 4);
  testpng::writeFile(dir + "lf.png", converted);
  EXPECT_EQ(readPlain(dir + "lf.png").code, 5);
}

TEST(PngRead, SignatureOnlyGivesSix) {
  // The whole signature and nothing after it: a PNG cut short.
  const std::string dir = testpng::scratchDirectory();
  testpng::writeFile(dir + "sig8.png", {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'});
  EXPECT_EQ(readPlain(dir + "sig8.png").code, 6);
}

TEST(PngRead, TruncatedFilesGiveSixAtEveryLength) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgb(dir + "whole.png", 16, 16, testpng::pattern(16, 16, 3)));
  const std::vector<uint8_t> whole = testpng::readFile(dir + "whole.png");
  ASSERT_GT(whole.size(), 60u);
  ASSERT_EQ(readPlain(dir + "whole.png").code, 0);
  // Every cut from the end of the signature to just before IEND's end fails cleanly.
  for (size_t n = 8; n + 12 < whole.size(); n += (n < 80 ? 1 : 7)) {
    const std::string path = dir + "cut.png";
    testpng::writeFile(path, std::vector<uint8_t>(whole.begin(), whole.begin() + n));
    Read r = readPlain(path);
    EXPECT_EQ(r.code, 6) << "cut at " << n << " of " << whole.size();
    EXPECT_EQ(r.width, -7) << "outputs untouched on failure";
    EXPECT_TRUE(r.pixels.empty());
  }
}

TEST(PngRead, DamagedBodyGivesSix) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgba(dir + "whole.png", 32, 8, testpng::pattern(32, 8, 4)));
  const std::vector<uint8_t> whole = testpng::readFile(dir + "whole.png");
  // Flipping a byte inside the header or the image data breaks a CRC or the
  // zlib stream: a libpng error, caught, never a crash.
  const size_t ihdrData = 8 + 8 + 3;  // inside the width field
  const size_t idatData = whole.size() / 2;
  for (size_t at : {ihdrData, idatData, whole.size() - 20}) {
    std::vector<uint8_t> damaged = whole;
    damaged[at] ^= 0x5a;
    testpng::writeFile(dir + "damaged.png", damaged);
    EXPECT_EQ(readPlain(dir + "damaged.png").code, 6) << "byte " << at;
  }
  // A zero width in an otherwise valid header.
  std::vector<uint8_t> zeroWidth = whole;
  for (int i = 0; i < 4; ++i) zeroWidth[16 + i] = 0;
  testpng::writeFile(dir + "zero.png", zeroWidth);
  EXPECT_EQ(readPlain(dir + "zero.png").code, 6);
}

TEST(PngRead, HeaderClaimingAHugeImageGivesSixWithoutAllocatingIt) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgb(dir + "small.png", 4, 4, testpng::pattern(4, 4, 3)));
  std::vector<uint8_t> file = testpng::readFile(dir + "small.png");
  const uint32_t sides[][2] = {{100000, 100000}, {32769, 1}, {1, 40000}};
  for (const auto& side : sides) {
    setDeclaredSize(file, side[0], side[1]);
    testpng::writeFile(dir + "huge.png", file);
    EXPECT_EQ(readPlain(dir + "huge.png").code, 6) << side[0] << "x" << side[1];
  }
  // A complete, valid file just above the limit is refused too; one at it reads.
  ASSERT_TRUE(testpng::writeRgb(dir + "wide.png", 32769, 1, std::vector<uint8_t>(32769 * 3, 7)));
  EXPECT_EQ(readPlain(dir + "wide.png").code, 6);
  ASSERT_TRUE(testpng::writeRgb(dir + "limit.png", 32768, 1, std::vector<uint8_t>(32768 * 3, 7)));
  Read r = readPlain(dir + "limit.png");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.width, 32768);
}

TEST(PngRead, AHeaderDeclaringMoreThanTheFileCanHoldIsRefusedBeforeItsRowsAreAllocated) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgb(dir + "small.png", 4, 4, testpng::pattern(4, 4, 3)));
  std::vector<uint8_t> file = testpng::readFile(dir + "small.png");
  // Within the side limit, 30000 x 30000 RGB is 2.7 GB of pixels from a file
  // of about 100 bytes: libpng would allocate every row before finding the
  // data short. (Each test runs in a process of its own, so the peak is this
  // read's; a sanitizer build reserves its heap up front and shows no growth
  // either way.)
  setDeclaredSize(file, 30000, 30000);
  testpng::writeFile(dir + "damaged.png", file);
  const long before = peakVirtualKiB();
  ASSERT_GT(before, 0);
  EXPECT_EQ(readPlain(dir + "damaged.png").code, 6);
  EXPECT_LT(peakVirtualKiB() - before, 256L * 1024) << "KiB more at the peak";
  // The same for every colour type and depth libpng knows: refused alike.
  for (const uint8_t type : {0, 2, 3, 4, 6}) {
    file[25] = type;
    file[24] = type == 3 ? 1 : 8;  // a palette of one bit a pixel: 112 MB still
    setDeclaredSize(file, 30000, 30000);
    testpng::writeFile(dir + "damaged.png", file);
    EXPECT_EQ(readPlain(dir + "damaged.png").code, 6) << int(type);
  }
}

TEST(PngRead, AnImageNearDeflatesGreatestExpansionStillReads) {
  // One colour over 2048 x 2048 at level 9 compresses close to deflate's
  // limit of 1032 : 1; the refusal of impossible headers must leave it be.
  const std::string dir = testpng::scratchDirectory();
  const int side = 2048;
  const std::vector<uint8_t> rgba(size_t(side) * side * 4, 200);
  ASSERT_EQ(writePngImage(dir + "solid.png", rgba.data(), side, side), 0);
  const size_t fileSize = testpng::readFile(dir + "solid.png").size();
  EXPECT_GT(fileSize * 1032, rgba.size());
  EXPECT_LT(fileSize * 1032 / 2, rgba.size()) << "the file is not near the limit: " << fileSize << " bytes";
  Read r = readPlain(dir + "solid.png");
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.width, side);
  EXPECT_EQ(r.pixels, rgba);
}

TEST(PngRead, GarbageAfterSignatureGivesSix) {
  const std::string dir = testpng::scratchDirectory();
  std::vector<uint8_t> bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  std::vector<uint8_t> noise = testpng::pattern(64, 1, 4, 9);
  bytes.insert(bytes.end(), noise.begin(), noise.end());
  testpng::writeFile(dir + "noise.png", bytes);
  EXPECT_EQ(readPlain(dir + "noise.png").code, 6);
}

TEST(PngRead, PaletteGreyAndSixteenBitAreRefusedWithFive) {
  const std::string dir = testpng::scratchDirectory();
  struct Case {
    const char* name;
    int colourType;
    int bitDepth;
    int bytesPerPixel;  // rounded up; the rows are big enough
  };
  const Case cases[] = {
      {"palette8", PNG_COLOR_TYPE_PALETTE, 8, 1}, {"palette4", PNG_COLOR_TYPE_PALETTE, 4, 1},
      {"palette1", PNG_COLOR_TYPE_PALETTE, 1, 1}, {"grey8", PNG_COLOR_TYPE_GRAY, 8, 1},
      {"grey1", PNG_COLOR_TYPE_GRAY, 1, 1},       {"grey16", PNG_COLOR_TYPE_GRAY, 16, 2},
      {"greyAlpha8", PNG_COLOR_TYPE_GRAY_ALPHA, 8, 2},
      {"greyAlpha16", PNG_COLOR_TYPE_GRAY_ALPHA, 16, 4},
      {"rgb16", PNG_COLOR_TYPE_RGB, 16, 6},       {"rgba16", PNG_COLOR_TYPE_RGBA, 16, 8},
  };
  for (const Case& c : cases) {
    testpng::Layout layout;
    layout.width = 7;
    layout.height = 5;
    layout.colourType = c.colourType;
    layout.bitDepth = c.bitDepth;
    if (c.colourType == PNG_COLOR_TYPE_PALETTE) layout.palette = testpng::pattern(2, 1, 3, 3);
    // Palette indices 0 and 1 only, valid for every palette depth.
    std::vector<uint8_t> rows(size_t(layout.width) * layout.height * c.bytesPerPixel, 0);
    if (c.colourType != PNG_COLOR_TYPE_PALETTE) rows = testpng::pattern(layout.width * c.bytesPerPixel, layout.height, 1);
    const std::string path = dir + c.name + ".png";
    ASSERT_TRUE(testpng::write(path, layout, rows)) << c.name;
    Read r = readPlain(path);
    EXPECT_EQ(r.code, 5) << c.name;
    EXPECT_TRUE(r.pixels.empty()) << c.name;
    // Interlaced variants too.
    layout.interlaced = true;
    ASSERT_TRUE(testpng::write(path, layout, rows)) << c.name;
    EXPECT_EQ(readPlain(path).code, 5) << c.name << " interlaced";
  }
}

// ---------------------------------------------------------------------------
// Good files
// ---------------------------------------------------------------------------

TEST(PngRead, RgbComesOutWithAlpha255AndRowsInFileOrder) {
  const std::string dir = testpng::scratchDirectory();
  const std::vector<uint8_t> rgb = testpng::pattern(8, 4, 3);
  ASSERT_TRUE(testpng::writeRgb(dir + "rgb.png", 8, 4, rgb));
  Read r = readPlain(dir + "rgb.png");
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.width, 8);
  EXPECT_EQ(r.height, 4);
  EXPECT_EQ(r.pixels, withAlpha(rgb));
}

TEST(PngRead, RgbaKeepsAllFourChannels) {
  const std::string dir = testpng::scratchDirectory();
  const std::vector<uint8_t> rgba = testpng::pattern(5, 9, 4);
  ASSERT_TRUE(testpng::writeRgba(dir + "rgba.png", 5, 9, rgba));
  Read r = readPlain(dir + "rgba.png");
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.width, 5);
  EXPECT_EQ(r.height, 9);
  EXPECT_EQ(r.pixels, rgba);
}

TEST(PngRead, InterlacedFilesReadLikePlainOnes) {
  const std::string dir = testpng::scratchDirectory();
  const std::vector<uint8_t> rgb = testpng::pattern(13, 11, 3, 4);
  const std::vector<uint8_t> rgba = testpng::pattern(13, 11, 4, 5);
  ASSERT_TRUE(testpng::writeRgb(dir + "rgbI.png", 13, 11, rgb, true));
  ASSERT_TRUE(testpng::writeRgba(dir + "rgbaI.png", 13, 11, rgba, true));
  Read a = readPlain(dir + "rgbI.png");
  Read b = readPlain(dir + "rgbaI.png");
  ASSERT_EQ(a.code, 0);
  ASSERT_EQ(b.code, 0);
  EXPECT_EQ(a.pixels, withAlpha(rgb));
  EXPECT_EQ(b.pixels, rgba);
}

TEST(PngRead, SizesAreNotChecked) {
  const std::string dir = testpng::scratchDirectory();
  for (int w : {1, 3, 100}) {
    for (int h : {1, 7}) {
      const std::vector<uint8_t> rgb = testpng::pattern(w, h, 3, w * 10 + h);
      ASSERT_TRUE(testpng::writeRgb(dir + "npot.png", w, h, rgb));
      Read r = readPlain(dir + "npot.png");
      ASSERT_EQ(r.code, 0) << w << "x" << h;
      EXPECT_EQ(r.width, w);
      EXPECT_EQ(r.height, h);
      EXPECT_EQ(r.pixels, withAlpha(rgb));
    }
  }
}

TEST(PngRead, UnknownChunksAreSkipped) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgb(dir + "plain.png", 4, 4, testpng::pattern(4, 4, 3)));
  std::vector<uint8_t> file = testpng::readFile(dir + "plain.png");
  // An ancillary private chunk "prIv" after IHDR (8 + 25 bytes in).
  std::vector<uint8_t> chunk = {0, 0, 0, 3, 'p', 'r', 'I', 'v', 1, 2, 3};
  const uLong crc = crc32(crc32(0, nullptr, 0), &chunk[4], 7);
  for (int i = 3; i >= 0; --i) chunk.push_back(uint8_t(crc >> (i * 8)));
  file.insert(file.begin() + 33, chunk.begin(), chunk.end());
  testpng::writeFile(dir + "extra.png", file);
  Read r = readPlain(dir + "extra.png");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.pixels, withAlpha(testpng::pattern(4, 4, 3)));
}

// ---------------------------------------------------------------------------
// Colour adjustment
// ---------------------------------------------------------------------------

TEST(PngColour, NeutralParametersChangeNothing) {
  EXPECT_EQ(adjust({10, 200, 255}, {1, 1, 1}, 0, 1), (std::vector<int>{10, 200, 255, 255}));
  EXPECT_EQ(adjust({10, 200, 255, 77}, {1, 1, 1}, 0, 1), (std::vector<int>{10, 200, 255, 77}));
  EXPECT_EQ(adjust({0, 0, 0}, {1, 1, 1}, 0, 1), (std::vector<int>{0, 0, 0, 255}));
}

TEST(PngColour, ScaleIsPerChannelAndTruncates) {
  // 101 x 0.5 = 50.5 -> 50; 3 x 0.3 = 0.9 -> 0; 200 x 1.25 = 250.
  EXPECT_EQ(adjust({101, 3, 200}, {0.5f, 0.3f, 1.25f}, 0, 1), (std::vector<int>{50, 0, 250, 255}));
}

TEST(PngColour, ChannelsAboveFullComeOutAs255) {
  EXPECT_EQ(adjust({255, 255, 255}, {2, 2, 2}, 0, 1), (std::vector<int>{255, 255, 255, 255}));
  EXPECT_EQ(adjust({128, 127, 10}, {2, 2, 2}, 0, 1), (std::vector<int>{255, 254, 20, 255}));
}

TEST(PngColour, SaturationZeroGivesGrey) {
  // grey = 0.299 x 100 + 0.587 x 150 + 0.114 x 200 = 140.75
  EXPECT_EQ(adjust({100, 150, 200}, {1, 1, 1}, 0, 0), (std::vector<int>{140, 140, 140, 255}));
  // White scaled by 2: grey 510 is cut to 255 before mixing, so grey stays white.
  EXPECT_EQ(adjust({255, 255, 255}, {2, 2, 2}, 0, 0), (std::vector<int>{255, 255, 255, 255}));
}

TEST(PngColour, GreyIsCutBeforeMixing) {
  // r = g = 510, b = 0: grey 451.9 is cut to 255, k = 127.5 at saturation 0.5.
  // Blue = 0 x 0.5 + 127.5 -> 127 (uncut it would be 225); red and green 382.5 -> 255.
  EXPECT_EQ(adjust({255, 255, 0}, {2, 2, 2}, 0, 0.5f), (std::vector<int>{255, 255, 127, 255}));
}

TEST(PngColour, SaturationAboveOnePushesAwayFromGrey) {
  // grey = 140.75; saturation 2: c x 2 - 140.75.
  EXPECT_EQ(adjust({100, 150, 200}, {1, 1, 1}, 0, 2), (std::vector<int>{59, 159, 255, 255}));
  // 50 x 2 - 140.75 is negative: 255, not 0.
  EXPECT_EQ(adjust({50, 150, 200}, {1, 1, 1}, 0, 2)[0], 255);
}

TEST(PngColour, OffsetUsesOnlyItsFirstComponentForAllChannels) {
  // 0.1 x 255 = 25.5 added to each channel.
  EXPECT_EQ(adjust({10, 20, 30}, {1, 1, 1}, 0.1f, 1), (std::vector<int>{35, 45, 55, 255}));
}

TEST(PngColour, NegativeChannelsComeOutAs255) {
  // Offset -1 (b = -255): anything darker than full white goes negative.
  EXPECT_EQ(adjust({255, 254, 0}, {1, 1, 1}, -1, 1), (std::vector<int>{0, 255, 255, 255}));
  // A result in (-1, 0) truncates to 0, which is in range.
  EXPECT_EQ(adjust({0, 0, 0}, {1, 1, 1}, -0.5f / 255.0f, 1), (std::vector<int>{0, 0, 0, 255}));
  // Negative scale.
  EXPECT_EQ(adjust({1, 0, 2}, {-1, -1, -1}, 0, 1), (std::vector<int>{255, 0, 255, 255}));
}

TEST(PngColour, AlphaIsNeverAdjusted) {
  EXPECT_EQ(adjust({10, 20, 30, 40}, {3, 3, 3}, -1, 0), (std::vector<int>{255, 255, 255, 40}));
  EXPECT_EQ(adjust({10, 20, 30}, {0, 0, 0}, 0, 0)[3], 255);
}

TEST(PngColour, HugeAndInvalidResultsStaySafe) {
  EXPECT_EQ(adjust({255, 255, 255}, {1e30f, 1e30f, 1e30f}, 0, 1), (std::vector<int>{255, 255, 255, 255}));
  EXPECT_EQ(adjust({255, 1, 1}, {-1e30f, 1, 1}, 0, 1)[0], 255);
  EXPECT_EQ(adjust({1, 1, 1}, {NAN, 1, 1}, 0, 1)[0], 255);
}

TEST(PngColour, AppliedWhileReading) {
  const std::string dir = testpng::scratchDirectory();
  ASSERT_TRUE(testpng::writeRgba(dir + "two.png", 2, 1, {100, 150, 200, 9, 255, 254, 0, 200}));
  const float scale[3] = {1, 1, 1};
  const float offset[3] = {-1, 5, 5};  // components 1 and 2 are ignored
  Read r = readPlain(dir + "two.png", scale, offset, 1);
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.pixels, (std::vector<uint8_t>{255, 255, 255, 9, 0, 255, 255, 200}));
  const float grey[3] = {1, 1, 1};
  r = readPlain(dir + "two.png", grey, nullptr, 0);
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.pixels[0], 140);
  EXPECT_EQ(r.pixels[1], 140);
  EXPECT_EQ(r.pixels[3], 9);
  const float half[3] = {0.5f, 1, 2};
  r = readPlain(dir + "two.png", half, nullptr, 1);
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.pixels, (std::vector<uint8_t>{50, 150, 255, 9, 127, 254, 0, 200}));
}

// ---------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------

TEST(PngWrite, RoundTripKeepsEveryByteAndRowOrder) {
  const std::string dir = testpng::scratchDirectory();
  const std::vector<uint8_t> rgba = testpng::pattern(17, 6, 4, 21);
  ASSERT_EQ(writePngImage(dir + "out.png", rgba.data(), 17, 6), 0);
  Read r = readPlain(dir + "out.png");
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.width, 17);
  EXPECT_EQ(r.height, 6);
  EXPECT_EQ(r.pixels, rgba);
}

TEST(PngWrite, FileLayoutIsEightBitRgbaUnfilteredLevelNine) {
  const std::string dir = testpng::scratchDirectory();
  // Over 32 KiB of image data, so that libpng keeps the full 15-bit window
  // (it narrows the window for small images).
  const int w = 128, h = 70;
  const std::vector<uint8_t> rgba = testpng::pattern(w, h, 4, 2);
  ASSERT_EQ(writePngImage(dir + "out.png", rgba.data(), w, h), 0);
  const std::vector<Chunk> chunks = chunksOf(testpng::readFile(dir + "out.png"));
  ASSERT_FALSE(chunks.empty());
  ASSERT_EQ(chunks[0].type, "IHDR");
  const std::vector<uint8_t>& ihdr = chunks[0].data;
  ASSERT_EQ(ihdr.size(), 13u);
  EXPECT_EQ(ihdr[2] << 8 | ihdr[3], w);
  EXPECT_EQ(ihdr[6] << 8 | ihdr[7], h);
  EXPECT_EQ(ihdr[8], 8) << "bit depth";
  EXPECT_EQ(ihdr[9], 6) << "colour type RGBA";
  EXPECT_EQ(ihdr[10], 0) << "compression";
  EXPECT_EQ(ihdr[11], 0) << "filter method";
  EXPECT_EQ(ihdr[12], 0) << "no interlace";
  std::vector<uint8_t> stream;
  for (const Chunk& c : chunks)
    if (c.type == "IDAT") stream.insert(stream.end(), c.data.begin(), c.data.end());
  EXPECT_EQ(chunks.back().type, "IEND");
  ASSERT_GE(stream.size(), 2u);
  // zlib header: deflate with a 32 KiB window (0x78), maximum-compression level flag.
  EXPECT_EQ(stream[0], 0x78);
  EXPECT_EQ(stream[1] >> 6, 3);
  // Every row is stored with filter type 0 (none).
  std::vector<uint8_t> raw(size_t(h) * (w * 4 + 1));
  uLongf rawSize = uLongf(raw.size());
  ASSERT_EQ(uncompress(raw.data(), &rawSize, stream.data(), uLong(stream.size())), Z_OK);
  ASSERT_EQ(rawSize, raw.size());
  for (int y = 0; y < h; ++y) {
    EXPECT_EQ(raw[size_t(y) * (w * 4 + 1)], 0) << "row " << y;
    EXPECT_EQ(0, std::memcmp(&raw[size_t(y) * (w * 4 + 1) + 1], &rgba[size_t(y) * w * 4], w * 4));
  }
}

TEST(PngWrite, UnopenableFileGivesOne) {
  const std::string dir = testpng::scratchDirectory();
  const uint8_t pixel[4] = {1, 2, 3, 4};
  EXPECT_EQ(writePngImage(dir + "missing/dir/out.png", pixel, 1, 1), 1);
  EXPECT_FALSE(testpng::fileExists(dir + "missing/dir/out.png"));
}

TEST(PngWrite, EmptyImageIsALibpngErrorNotACrash) {
  const std::string dir = testpng::scratchDirectory();
  const uint8_t pixel[4] = {1, 2, 3, 4};
  EXPECT_EQ(writePngImage(dir + "empty.png", pixel, 0, 0), 6);
  EXPECT_EQ(writePngImage(dir + "neg.png", pixel, -3, 2), 6);
}
