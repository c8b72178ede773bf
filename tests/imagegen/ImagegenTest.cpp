// Tests of the image generator: it runs, writes every picture the production
// loads, byte for byte the same on every run, in the formats and sizes the
// scenes need, and with the glyph grids laid out where the text drawer looks.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "support/RunProgram.h"

namespace {

const std::string kGenerator = OSTRAVINE_IMAGEGEN;
const std::string kFontDir = OSTRAVINE_FONT_DIR;

struct Expected {
  std::string name;
  int width, height, channels;
};

// Every file the production's set-up, loading screen and settings dialog
// read, with its format.
const std::vector<Expected> kImages = {
    {"hopmet.png", 512, 512, 3},        {"hopmetnoiseb.png", 512, 512, 3},
    {"solidnoisebump.png", 256, 256, 3}, {"black.png", 256, 256, 3},
    {"white.png", 64, 64, 3},            {"bill.png", 256, 256, 3},
    {"billbig.png", 256, 256, 3},        {"bill_d2c_holes.png", 256, 256, 3},
    {"kestrin.png", 512, 128, 4},        {"ks.png", 512, 128, 4},
    {"OSTL512.png", 512, 512, 4},        {"noisis2.png", 128, 128, 4},
    {"noisis5.png", 128, 128, 4},        {"OSTL512b.png", 512, 512, 3},
    {"mb.png", 512, 512, 4},             {"cd.png", 512, 512, 4},
    {"fonge3bb.png", 2048, 1024, 4},     {"font2.png", 1024, 1024, 4},
    {"dialog1012.png", 342, 226, 3},
};

struct Png {
  bool ok = false;
  std::string error;
  int width = 0, height = 0, channels = 0, bitDepth = 0, colourType = -1, interlace = -1;
  std::vector<unsigned char> data;  // rows packed, channels per pixel as stored
  int at(int x, int y, int c) const { return data[(size_t(y) * width + x) * channels + c]; }
  // Alpha of a 4-channel picture, 255 for 3 channels.
  int alpha(int x, int y) const { return channels == 4 ? at(x, y, 3) : 255; }
};

Png readPng(const std::string& path) {
  Png out;
  FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    out.error = "cannot open " + path;
    return out;
  }
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(f);
    out.error = "libpng error reading " + path;
    return out;
  }
  png_init_io(png, f);
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  out.width = int(png_get_image_width(png, info));
  out.height = int(png_get_image_height(png, info));
  out.channels = png_get_channels(png, info);
  out.bitDepth = png_get_bit_depth(png, info);
  out.colourType = png_get_color_type(png, info);
  out.interlace = png_get_interlace_type(png, info);
  png_bytepp rows = png_get_rows(png, info);
  size_t rowBytes = png_get_rowbytes(png, info);
  for (int y = 0; y < out.height; ++y) out.data.insert(out.data.end(), rows[y], rows[y] + rowBytes);
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(f);
  out.ok = true;
  return out;
}

std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

const std::string kRunImages = std::string(OSTRAVINE_RUN_DIR) + "/images";
const std::string kScratch = std::string(OSTRAVINE_BINARY_DIR) + "/imagegen-test";

// The pictures the build wrote into the run directory, read once per process.
class Imagegen : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const Expected& e : kImages) pictures_[e.name] = readPng(kRunImages + "/" + e.name);
  }
  static const Png& picture(const std::string& name) { return pictures_[name]; }

  static std::map<std::string, Png> pictures_;
};
std::map<std::string, Png> Imagegen::pictures_;

testrun::Result generate(const std::string& folder) {
  testrun::run("rm -rf '" + folder + "'", ".");
  return testrun::run("'" + kGenerator + "' '" + folder + "' '" + kFontDir + "'", ".");
}

// Mean absolute difference between neighbouring columns x and x + 1 (wrapping)
// over all rows and colour channels.
double columnStep(const Png& p, int x) {
  double sum = 0;
  int x1 = (x + 1) % p.width;
  for (int y = 0; y < p.height; ++y)
    for (int c = 0; c < 3; ++c) sum += std::abs(p.at(x, y, c) - p.at(x1, y, c));
  return sum / (p.height * 3);
}

double rowStep(const Png& p, int y) {
  double sum = 0;
  int y1 = (y + 1) % p.height;
  for (int x = 0; x < p.width; ++x)
    for (int c = 0; c < 3; ++c) sum += std::abs(p.at(x, y, c) - p.at(x, y1, c));
  return sum / (p.width * 3);
}

}  // namespace

// ============================================================================
// Running
// ============================================================================

TEST_F(Imagegen, TheBuildWroteEveryPicture) {
  for (const Expected& e : kImages) EXPECT_TRUE(picture(e.name).ok) << e.name << ": " << picture(e.name).error;
}

TEST_F(Imagegen, RunsCleanlyAndEveryRunWritesIdenticalBytes) {
  testrun::Result first = generate(kScratch + "/first");
  testrun::Result second = generate(kScratch + "/second");
  EXPECT_EQ(first.exitStatus, 0) << first.err;
  EXPECT_EQ(second.exitStatus, 0) << second.err;
  EXPECT_EQ(first.err, "");
  EXPECT_EQ(first.out, "");
  for (const Expected& e : kImages) {
    std::string a = readBytes(kScratch + "/first/" + e.name);
    std::string b = readBytes(kScratch + "/second/" + e.name);
    std::string built = readBytes(kRunImages + "/" + e.name);
    EXPECT_FALSE(a.empty()) << e.name;
    EXPECT_TRUE(a == b) << e.name << " differs between two runs";
    EXPECT_TRUE(a == built) << e.name << " differs from the build's copy";
  }
}

TEST_F(Imagegen, WithoutArgumentsItPrintsItsUsageAndFails) {
  testrun::Result r = testrun::run("'" + kGenerator + "'", ".");
  EXPECT_EQ(r.exitStatus, 1);
  EXPECT_NE(r.err.find("usage: imagegen"), std::string::npos) << r.err;
}

TEST_F(Imagegen, AMissingFontFolderIsNamedAndFails) {
  std::string out = kScratch + "/nofonts";
  testrun::Result r = testrun::run("'" + kGenerator + "' '" + out + "' /nonexistent-font-folder", ".");
  EXPECT_EQ(r.exitStatus, 1);
  EXPECT_NE(r.err.find("/nonexistent-font-folder/DejaVuSansMono.ttf"), std::string::npos) << r.err;
}

TEST_F(Imagegen, AnUnwritableFolderFailsWithAMessage) {
  testrun::Result r = testrun::run("'" + kGenerator + "' /proc/imagegen-cannot-write '" + kFontDir + "'", ".");
  EXPECT_EQ(r.exitStatus, 1);
  EXPECT_NE(r.err.find("cannot create folder /proc/imagegen-cannot-write"), std::string::npos) << r.err;
}

// ============================================================================
// Formats and sizes
// ============================================================================

TEST_F(Imagegen, EveryPictureIsEightBitRgbOrRgbaOfItsSize) {
  for (const Expected& e : kImages) {
    const Png& p = picture(e.name);
    ASSERT_TRUE(p.ok) << e.name;
    EXPECT_EQ(p.width, e.width) << e.name;
    EXPECT_EQ(p.height, e.height) << e.name;
    EXPECT_EQ(p.bitDepth, 8) << e.name;
    // The texture reader takes RGB (2) and RGBA (6) only: never palette or grey.
    EXPECT_EQ(p.colourType, e.channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB) << e.name;
    EXPECT_EQ(p.channels, e.channels) << e.name;
    EXPECT_EQ(p.interlace, PNG_INTERLACE_NONE) << e.name;
    // Textures have power-of-two sides; the dialog's picture is laid out as
    // pixels at its own size, as a bitmap.
    if (e.name == "dialog1012.png") continue;
    EXPECT_EQ(p.width & (p.width - 1), 0) << e.name << " width is not a power of two";
    EXPECT_EQ(p.height & (p.height - 1), 0) << e.name << " height is not a power of two";
  }
}

TEST_F(Imagegen, TheCubeMapFacesAreSquareAndOfOneSize) {
  const Png& black = picture("black.png");
  const Png& bill = picture("bill.png");
  EXPECT_EQ(black.width, black.height);
  EXPECT_EQ(bill.width, bill.height);
  EXPECT_EQ(black.width, bill.width);
}

TEST_F(Imagegen, BlackIsBlackAndWhiteIsWhite) {
  const Png& black = picture("black.png");
  const Png& white = picture("white.png");
  for (unsigned char v : black.data) ASSERT_EQ(v, 0);
  for (unsigned char v : white.data) ASSERT_EQ(v, 255);
}

// The settings dialog's picture: lettering in the upper part, above the size
// list; a dark, quiet ground where the controls stand and below.
TEST_F(Imagegen, TheDialogPictureIsLetteredAtTheTopAndDarkUnderTheControls) {
  const Png& p = picture("dialog1012.png");
  ASSERT_TRUE(p.ok);
  int brightTop = 0, brightBelow = 0;
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x) {
      const int level = std::max(p.at(x, y, 0), std::max(p.at(x, y, 1), p.at(x, y, 2)));
      if (level > 200) (y < 68 ? brightTop : brightBelow) += 1;
    }
  EXPECT_GT(brightTop, 300) << "the title is missing";
  EXPECT_EQ(brightBelow, 0);
}

// ============================================================================
// Surfaces: seamless, with some life in them
// ============================================================================

TEST_F(Imagegen, MaterialTexturesTileWithoutASeam) {
  for (const char* name : {"hopmet.png", "hopmetnoiseb.png", "solidnoisebump.png"}) {
    const Png& p = picture(name);
    ASSERT_TRUE(p.ok) << name;
    double inside = 0, insideRows = 0;
    for (int x = 0; x < p.width - 1; ++x) inside += columnStep(p, x);
    for (int y = 0; y < p.height - 1; ++y) insideRows += rowStep(p, y);
    inside /= p.width - 1;
    insideRows /= p.height - 1;
    // The step across the wrap is no larger than a typical step inside.
    EXPECT_LT(columnStep(p, p.width - 1), inside * 1.6 + 1) << name;
    EXPECT_LT(rowStep(p, p.height - 1), insideRows * 1.6 + 1) << name;
  }
}

TEST_F(Imagegen, MaterialTexturesHaveMidTonesAndContrast) {
  for (const char* name : {"hopmet.png", "hopmetnoiseb.png", "solidnoisebump.png"}) {
    const Png& p = picture(name);
    ASSERT_TRUE(p.ok) << name;
    double sum = 0, sum2 = 0;
    const int n = p.width * p.height;
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x) {
        double l = (p.at(x, y, 0) + p.at(x, y, 1) + p.at(x, y, 2)) / 3.0;
        sum += l;
        sum2 += l * l;
      }
    double mean = sum / n, deviation = std::sqrt(sum2 / n - mean * mean);
    EXPECT_GT(mean, 60) << name;
    EXPECT_LT(mean, 200) << name;
    EXPECT_GT(deviation, 8) << name << " is nearly flat";
  }
}

// ============================================================================
// Light sprites: bright centre, black border (clamped and added)
// ============================================================================

TEST_F(Imagegen, LightSpritesAreBrightInTheMiddleAndBlackAtEveryEdge) {
  for (const char* name : {"bill.png", "billbig.png", "bill_d2c_holes.png", "OSTL512b.png"}) {
    const Png& p = picture(name);
    ASSERT_TRUE(p.ok) << name;
    for (int i = 0; i < p.width; ++i)
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(p.at(i, 0, c), 0) << name;
        ASSERT_EQ(p.at(i, p.height - 1, c), 0) << name;
        ASSERT_EQ(p.at(0, i * p.height / p.width, c), 0) << name;
        ASSERT_EQ(p.at(p.width - 1, i * p.height / p.width, c), 0) << name;
      }
  }
  for (const char* name : {"bill.png", "billbig.png", "bill_d2c_holes.png"}) {
    const Png& p = picture(name);
    EXPECT_GE(p.at(p.width / 2, p.height / 2, 0), 200) << name;
  }
}

// "billbig" is also projected from a light as the picture it casts, over the
// whole shadow-map frustum: it must light a broad pool, not only a pin-point.
TEST_F(Imagegen, TheBigGlowSpriteKeepsABroadPoolAroundItsCore) {
  const Png& p = picture("billbig.png");
  ASSERT_TRUE(p.ok);
  // Straight above the centre (off the horizontal streak) at a quarter and at
  // half of the half size.
  EXPECT_GE(p.at(p.width / 2, p.height / 2 - p.height / 8, 0), 180);
  EXPECT_GE(p.at(p.width / 2, p.height / 2 - p.height / 4, 0), 100);
  EXPECT_LE(p.at(p.width / 2, p.height / 2 - p.height / 4, 0), 200) << "a pool that fades, not a flat disc";
}

TEST_F(Imagegen, TheHoledGlareHasDarkHolesInItsHalo) {
  // Along the circle of the inner holes (radius 0.36 of the half size) the
  // brightness must dip well below its brightest point.
  const Png& p = picture("bill_d2c_holes.png");
  ASSERT_TRUE(p.ok);
  int lo = 255, hi = 0;
  for (int i = 0; i < 720; ++i) {
    double a = i * 3.14159265358979 / 360;
    int x = int(p.width / 2 + std::cos(a) * 0.36 * p.width / 2);
    int y = int(p.height / 2 + std::sin(a) * 0.36 * p.height / 2);
    lo = std::min(lo, p.at(x, y, 1));
    hi = std::max(hi, p.at(x, y, 1));
  }
  EXPECT_LT(lo * 3, hi);
}

// ============================================================================
// Alpha pictures: motes and titles
// ============================================================================

TEST_F(Imagegen, MotesAreIrregularSpecksOnATransparentSurround) {
  for (const char* name : {"noisis2.png", "noisis5.png"}) {
    const Png& p = picture(name);
    ASSERT_TRUE(p.ok) << name;
    int solid = 0;
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x) {
        if (x == 0 || y == 0 || x == p.width - 1 || y == p.height - 1) {
          ASSERT_EQ(p.alpha(x, y), 0) << name;
        }
        if (p.alpha(x, y) > 128) ++solid;
      }
    double share = double(solid) / (p.width * p.height);
    EXPECT_GT(share, 0.04) << name;
    EXPECT_LT(share, 0.5) << name << " is nearly a square";
  }
  EXPECT_NE(picture("noisis2.png").data, picture("noisis5.png").data);
}

TEST_F(Imagegen, TitlesAreWhiteLetteringInAlphaWithAClearBorder) {
  for (const char* name : {"kestrin.png", "ks.png", "mb.png", "cd.png", "OSTL512.png"}) {
    const Png& p = picture(name);
    ASSERT_TRUE(p.ok) << name;
    int opaque = 0;
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x) {
        for (int c = 0; c < 3; ++c) ASSERT_EQ(p.at(x, y, c), 255) << name;
        if (x == 0 || y == 0 || x == p.width - 1 || y == p.height - 1) {
          ASSERT_EQ(p.alpha(x, y), 0) << name;
        }
        if (p.alpha(x, y) == 255) ++opaque;
      }
    double share = double(opaque) / (p.width * p.height);
    EXPECT_GT(share, 0.005) << name << " has too little lettering";
    EXPECT_LT(share, 0.5) << name;
  }
}

TEST_F(Imagegen, TheTwoMakerTitlesAreDifferentLettering) {
  EXPECT_NE(picture("kestrin.png").data, picture("ks.png").data);
  EXPECT_NE(picture("mb.png").data, picture("cd.png").data);
}

// ============================================================================
// Glyph grids
// ============================================================================

namespace {

struct Grid {
  const char* name;
  int first, columns, rows;
  double glyphW, glyphH, centreX, centreY, stepX, stepY;  // pixels, as the engine's atlases give them
};

const Grid kGrids[] = {
    {"fonge3bb.png", 32, 16, 14, 58, 54, 39, 30, 80, 58.5},
    {"font2.png", 32, 16, 9, 38, 55, 43, 37, 62.4, 57},
};

// Whether pixel (x, y) lies in some cell's sampled rectangle.
bool insideSomeCell(const Grid& g, int x, int y) {
  for (int row = 0; row < g.rows; ++row)
    for (int col = 0; col < g.columns; ++col) {
      double cx = g.centreX + col * g.stepX, cy = g.centreY + row * g.stepY;
      if (x + 1 > cx - g.glyphW / 2 && x < cx + g.glyphW / 2 && y + 1 > cy - g.glyphH / 2 && y < cy + g.glyphH / 2)
        return true;
    }
  return false;
}

struct Ink {
  int pixels = 0;
  double centreX = 0, centreY = 0;
};

// Ink (alpha above 128) inside the rectangle of one character code.
Ink inkOf(const Png& p, const Grid& g, int code) {
  int cell = code - g.first;
  double cx = g.centreX + (cell % g.columns) * g.stepX, cy = g.centreY + (cell / g.columns) * g.stepY;
  Ink ink;
  for (int y = int(std::floor(cy - g.glyphH / 2)); y <= int(std::ceil(cy + g.glyphH / 2)); ++y)
    for (int x = int(std::floor(cx - g.glyphW / 2)); x <= int(std::ceil(cx + g.glyphW / 2)); ++x)
      if (p.alpha(x, y) > 128) {
        ++ink.pixels;
        ink.centreX += x + 0.5 - cx;
        ink.centreY += y + 0.5 - cy;
      }
  if (ink.pixels) {
    ink.centreX /= ink.pixels;
    ink.centreY /= ink.pixels;
  }
  return ink;
}

}  // namespace

TEST_F(Imagegen, EveryPrintableCharacterHasInkInItsCell) {
  for (const Grid& g : kGrids) {
    const Png& p = picture(g.name);
    ASSERT_TRUE(p.ok) << g.name;
    for (int code = 33; code <= 126; ++code) {
      Ink ink = inkOf(p, g, code);
      EXPECT_GT(ink.pixels, 3) << g.name << ": no glyph for '" << char(code) << "'";
      // Letters stand in the middle of their rectangles, not against an edge.
      if (std::isalnum(code)) {
        EXPECT_LT(std::fabs(ink.centreX), g.glyphW * 0.2) << g.name << " '" << char(code) << "'";
        EXPECT_LT(std::fabs(ink.centreY), g.glyphH * 0.25) << g.name << " '" << char(code) << "'";
      }
    }
    EXPECT_EQ(inkOf(p, g, ' ').pixels, 0) << g.name << ": the blank has ink";
  }
}

TEST_F(Imagegen, TheLastCellsOfEachGridHoldTheirGlyphs) {
  // fonge3bb reaches code 255 (y with diaeresis), font2 code 175 (macron).
  EXPECT_GT(inkOf(picture("fonge3bb.png"), kGrids[0], 255).pixels, 3);
  EXPECT_GT(inkOf(picture("fonge3bb.png"), kGrids[0], 0xE9).pixels, 3);
  EXPECT_GT(inkOf(picture("font2.png"), kGrids[1], 175).pixels, 0);
  EXPECT_GT(inkOf(picture("font2.png"), kGrids[1], 0xA9).pixels, 3);
}

TEST_F(Imagegen, GlyphGridsHaveNoInkOutsideTheCellRectangles) {
  for (const Grid& g : kGrids) {
    const Png& p = picture(g.name);
    ASSERT_TRUE(p.ok) << g.name;
    int stray = 0;
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x) {
        for (int c = 0; c < 3; ++c) ASSERT_EQ(p.at(x, y, c), 255) << g.name;  // white: alpha is the shape
        if (p.alpha(x, y) != 0 && !insideSomeCell(g, x, y)) ++stray;
      }
    EXPECT_EQ(stray, 0) << g.name;
  }
}

TEST_F(Imagegen, DistinctCharactersHaveDistinctGlyphs) {
  for (const Grid& g : kGrids) {
    const Png& p = picture(g.name);
    ASSERT_TRUE(p.ok);
    for (int a : {'O', 'l', 'i', '.'}) {
      Ink ia = inkOf(p, g, a), ib = inkOf(p, g, a == 'O' ? '0' : a == 'l' ? '1' : a == 'i' ? 'j' : ',');
      EXPECT_TRUE(ia.pixels != ib.pixels || ia.centreY != ib.centreY) << g.name << " " << char(a);
    }
  }
}
