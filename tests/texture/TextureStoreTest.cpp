// The texture store against a real GL context: records, look-ups, 2D and cube
// map loading with colour adjustment (checked texel by texel with
// glGetTexImage), mip levels, textures from memory, and the destructor.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>

#include "GLTextureFixture.h"
#include "TestPngFiles.h"
#include "foundation/Vector3.h"
#include "support/GLTestContext.h"
#include "texture/TextureStore.h"

namespace {

// Level `level` of the texture bound to `target` (a 2D target or a cube face).
std::vector<uint8_t> texels(GLenum target, int level = 0) {
  GLint w = 0, h = 0;
  glGetTexLevelParameteriv(target, level, GL_TEXTURE_WIDTH, &w);
  glGetTexLevelParameteriv(target, level, GL_TEXTURE_HEIGHT, &h);
  std::vector<uint8_t> out(size_t(w) * h * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  if (!out.empty()) glGetTexImage(target, level, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
  return out;
}

std::vector<uint8_t> texelsOf(GLuint id, int level = 0) {
  glBindTexture(GL_TEXTURE_2D, id);
  return texels(GL_TEXTURE_2D, level);
}

GLint levelWidth(GLenum target, int level) {
  GLint w = 0;
  glGetTexLevelParameteriv(target, level, GL_TEXTURE_WIDTH, &w);
  return w;
}

GLint levelHeight(GLenum target, int level) {
  GLint h = 0;
  glGetTexLevelParameteriv(target, level, GL_TEXTURE_HEIGHT, &h);
  return h;
}

GLint boundTexture(GLenum binding) {
  GLint id = 0;
  glGetIntegerv(binding, &id);
  return id;
}

std::vector<uint8_t> withAlpha(const std::vector<uint8_t>& rgb) {
  std::vector<uint8_t> out;
  for (size_t i = 0; i < rgb.size(); i += 3) {
    out.insert(out.end(), rgb.begin() + i, rgb.begin() + i + 3);
    out.push_back(255);
  }
  return out;
}

std::vector<uint8_t> solid(int w, int h, std::vector<uint8_t> rgba) {
  std::vector<uint8_t> out;
  for (int i = 0; i < w * h; ++i) out.insert(out.end(), rgba.begin(), rgba.end());
  return out;
}

using TextureStoreTest = GLTextureFixture;

}  // namespace

// ---------------------------------------------------------------------------
// Look-ups and records
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, UnknownNameGivesNoTexture) {
  EXPECT_EQ(noTexture, 10001000u);
  TextureStore store;
  EXPECT_EQ(store.findTextureId("anything"), 10001000u);
  EXPECT_EQ(store.findTextureId(""), 10001000u);
  ASSERT_EQ(store.createTextureFromMemory(solid(1, 1, {1, 2, 3, 4}).data(), "known", 1, 1, 4), 0);
  EXPECT_NE(store.findTextureId("known"), noTexture);
  EXPECT_EQ(store.findTextureId("unknown"), noTexture);
}

TEST_F(TextureStoreTest, LoadMakesARecordAtTheEndAndLeavesTheTextureBound) {
  ASSERT_TRUE(testpng::writeRgb(dir + "a.png", 8, 4, testpng::pattern(8, 4, 3)));
  ASSERT_TRUE(testpng::writeRgba(dir + "b.png", 2, 16, testpng::pattern(2, 16, 4)));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "a.png", "first"), 0);
  ASSERT_EQ(store.loadTexture(dir + "b.png", "second"), 0);
  ASSERT_EQ(store.records().size(), 2u);
  const TextureRecord& a = store.records().front();
  const TextureRecord& b = store.records().back();
  EXPECT_EQ(a.filePath, dir + "a.png");
  EXPECT_EQ(a.name, "first");
  EXPECT_EQ(a.width, 8);
  EXPECT_EQ(a.height, 4);
  EXPECT_EQ(a.depth, 0);
  EXPECT_NE(a.id, 0u);
  EXPECT_EQ(a.wrapS, GL_REPEAT);
  EXPECT_EQ(a.wrapT, GL_REPEAT);
  EXPECT_EQ(a.minFilter, GL_LINEAR);
  EXPECT_EQ(a.magFilter, GL_LINEAR);
  EXPECT_EQ(b.name, "second");
  EXPECT_EQ(b.width, 2);
  EXPECT_EQ(b.height, 16);
  EXPECT_NE(a.id, b.id);
  EXPECT_EQ(store.findTextureId("first"), a.id);
  EXPECT_EQ(store.findTextureId("second"), b.id);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_2D)), b.id) << "the new texture stays bound";
}

TEST_F(TextureStoreTest, LoadSendsNoSamplerState) {
  ASSERT_TRUE(testpng::writeRgb(dir + "a.png", 4, 4, testpng::pattern(4, 4, 3)));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "a.png", "a"), 0);
  GLint minFilter = 0, wrapS = 0;
  glBindTexture(GL_TEXTURE_2D, store.findTextureId("a"));
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrapS);
  EXPECT_EQ(minFilter, GL_NEAREST_MIPMAP_LINEAR) << "GL's own default, not the record's wish";
  EXPECT_EQ(wrapS, GL_REPEAT);
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 1), 0) << "a plain load makes level 0 only";
}

TEST_F(TextureStoreTest, LoadedTexelsAreTheFilesPixels) {
  const std::vector<uint8_t> rgb = testpng::pattern(8, 4, 3, 7);
  const std::vector<uint8_t> rgba = testpng::pattern(4, 8, 4, 8);
  ASSERT_TRUE(testpng::writeRgb(dir + "rgb.png", 8, 4, rgb));
  ASSERT_TRUE(testpng::writeRgba(dir + "rgba.png", 4, 8, rgba));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "rgb.png", "rgb"), 0);
  ASSERT_EQ(store.loadTexture(dir + "rgba.png", "rgba"), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("rgb")), withAlpha(rgb)) << "3 channels: alpha 255";
  EXPECT_EQ(texelsOf(store.findTextureId("rgba")), rgba) << "first file row is texture row 0";
}

TEST_F(TextureStoreTest, NonPowerOfTwoAndInterlacedFilesLoad) {
  const std::vector<uint8_t> rgb = testpng::pattern(5, 3, 3, 11);
  ASSERT_TRUE(testpng::writeRgb(dir + "npot.png", 5, 3, rgb, true));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "npot.png", "npot"), 0);
  const TextureRecord& record = store.findTextureRecord("npot");
  EXPECT_EQ(record.width, 5);
  EXPECT_EQ(record.height, 3);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  EXPECT_EQ(texelsOf(record.id), withAlpha(rgb));
}

TEST_F(TextureStoreTest, FailedLoadsMakeNothingAndReturnTheReadersCode) {
  testpng::writeFile(dir + "short.png", {0x89, 'P'});
  testpng::writeFile(dir + "text.png", {'n', 'o', 't', ' ', 'a', ' ', 'p', 'n', 'g'});
  testpng::writeFile(dir + "sigonly.png", {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0, 0});
  testpng::Layout grey;
  grey.width = 4;
  grey.height = 4;
  grey.colourType = 0;
  ASSERT_TRUE(testpng::write(dir + "grey.png", grey, std::vector<uint8_t>(16, 99)));
  testpng::Layout palette = grey;
  palette.colourType = 3;
  palette.palette = {255, 0, 0, 0, 255, 0};
  ASSERT_TRUE(testpng::write(dir + "palette.png", palette, std::vector<uint8_t>(16, 1)));
  testpng::Layout deep = grey;
  deep.colourType = 6;
  deep.bitDepth = 16;
  ASSERT_TRUE(testpng::write(dir + "deep.png", deep, testpng::pattern(4 * 8, 4, 1)));
  ASSERT_TRUE(testpng::writeRgb(dir + "whole.png", 16, 16, testpng::pattern(16, 16, 3)));
  std::vector<uint8_t> cut = testpng::readFile(dir + "whole.png");
  cut.resize(cut.size() / 2);
  testpng::writeFile(dir + "cut.png", cut);
  TextureStore store;
  glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(store.loadTexture(dir + "missing.png", "m"), 1);
  EXPECT_EQ(store.loadTexture(dir + "short.png", "s"), 5);
  EXPECT_EQ(store.loadTexture(dir + "text.png", "t"), 5);
  EXPECT_EQ(store.loadTexture(dir + "sigonly.png", "g"), 6);
  EXPECT_EQ(store.loadTexture(dir + "grey.png", "grey"), 5);
  EXPECT_EQ(store.loadTexture(dir + "palette.png", "palette"), 5);
  EXPECT_EQ(store.loadTexture(dir + "deep.png", "deep"), 5);
  EXPECT_EQ(store.loadTexture(dir + "cut.png", "cut"), 6);
  EXPECT_EQ(store.loadTexture(dir + "missing.png", "m", nullptr, nullptr, false, {}, 1.0f, 0, true), 1);
  EXPECT_TRUE(store.records().empty());
  EXPECT_EQ(store.findTextureId("m"), noTexture);
  EXPECT_EQ(boundTexture(GL_TEXTURE_BINDING_2D), 0) << "nothing bound";
}

TEST_F(TextureStoreTest, DuplicateNamesMakeTwoTexturesAndTheFirstIsFound) {
  ASSERT_TRUE(testpng::writeSolid(dir + "red.png", 2, 2, {255, 0, 0}));
  ASSERT_TRUE(testpng::writeSolid(dir + "blue.png", 2, 2, {0, 0, 255}));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "red.png", "same"), 0);
  ASSERT_EQ(store.loadTexture(dir + "blue.png", "same"), 0);
  ASSERT_EQ(store.records().size(), 2u);
  const GLuint first = store.records().front().id;
  const GLuint second = store.records().back().id;
  EXPECT_NE(first, second);
  EXPECT_TRUE(glIsTexture(first));
  EXPECT_TRUE(glIsTexture(second));
  EXPECT_EQ(store.findTextureId("same"), first);
  EXPECT_EQ(store.findTextureRecord("same").filePath, dir + "red.png");
  EXPECT_EQ(texelsOf(store.findTextureId("same")), solid(2, 2, {255, 0, 0, 255}));
}

TEST_F(TextureStoreTest, NamesCompareExactly) {
  TextureStore store;
  const std::vector<uint8_t> p = solid(1, 1, {0, 0, 0, 0});
  store.createTextureFromMemory(p.data(), "glow", 1, 1, 4);
  store.createTextureFromMemory(p.data(), std::string("gl\0w", 4), 1, 1, 4);
  EXPECT_NE(store.findTextureId("glow"), noTexture);
  EXPECT_EQ(store.findTextureId("Glow"), noTexture);
  EXPECT_EQ(store.findTextureId("glo"), noTexture);
  EXPECT_EQ(store.findTextureId("glow "), noTexture);
  EXPECT_EQ(store.findTextureId("glowglow"), noTexture);
  EXPECT_EQ(store.findTextureId("gl"), noTexture) << "embedded zero bytes are part of the name";
  EXPECT_EQ(store.findTextureId(std::string("gl\0w", 4)), store.records().back().id);
}

TEST_F(TextureStoreTest, FindTextureRecordGivesTheRecordItself) {
  TextureStore store;
  const std::vector<uint8_t> p = solid(3, 2, {0, 0, 0, 0});
  store.createTextureFromMemory(p.data(), "font", 3, 2, 4);
  store.findTextureRecord("font").minFilter = GL_LINEAR_MIPMAP_LINEAR;
  EXPECT_EQ(store.records().front().minFilter, GL_LINEAR_MIPMAP_LINEAR);
  EXPECT_EQ(store.findTextureRecord("font").width, 3);
  // An unknown name gives a scratch record and adds nothing.
  TextureRecord& scratch = store.findTextureRecord("nope");
  EXPECT_EQ(scratch.id, noTexture);
  scratch.minFilter = GL_NEAREST;
  EXPECT_EQ(store.records().size(), 1u);
  EXPECT_EQ(store.findTextureRecord("nope2").minFilter, GL_LINEAR);
}

TEST_F(TextureStoreTest, TextureErrorTexts) {
  EXPECT_EQ(TextureStore::textureErrorText(0), "");
  EXPECT_EQ(TextureStore::textureErrorText(1), "File open failed.");
  EXPECT_EQ(TextureStore::textureErrorText(2), "Texture at given name already exists.");
  EXPECT_EQ(TextureStore::textureErrorText(3), "Not enough memory to read or store the image.");
  EXPECT_EQ(TextureStore::textureErrorText(4), "Image width or height are not integer power of two.");
  EXPECT_EQ(TextureStore::textureErrorText(5), "Image format not supported.");
  EXPECT_EQ(TextureStore::textureErrorText(6), "General error while reading the image.");
  EXPECT_EQ(TextureStore::textureErrorText(7), "");
  EXPECT_EQ(TextureStore::textureErrorText(-1), "");
  TextureStore store;
  EXPECT_EQ(store.textureErrorText(1), "File open failed.");
}

TEST_F(TextureStoreTest, TextureFileExistsJoinsDirectoryAndStem) {
  ASSERT_TRUE(testpng::writeSolid(dir + "cloud.png", 1, 1, {1, 1, 1}));
  testpng::writeFile(dir + "notes", {'x'});
  EXPECT_TRUE(TextureStore::textureFileExists(dir, "cloud"));
  EXPECT_FALSE(TextureStore::textureFileExists(dir, "cloud.png"));
  EXPECT_FALSE(TextureStore::textureFileExists(dir, "rain"));
  EXPECT_FALSE(TextureStore::textureFileExists(dir, "notes"));
  // Plain concatenation: the directory must bring its separator.
  const std::string withoutSlash = dir.substr(0, dir.size() - 1);
  EXPECT_FALSE(TextureStore::textureFileExists(withoutSlash, "cloud"));
  EXPECT_TRUE(TextureStore::textureFileExists(withoutSlash, "/cloud"));
}

// ---------------------------------------------------------------------------
// Colour parameters through loadTexture
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, ColourScaleIsAppliedPerChannel) {
  ASSERT_TRUE(testpng::writeRgba(dir + "p.png", 2, 1, {100, 150, 200, 9, 128, 127, 10, 200}));
  TextureStore store;
  const Vector3 scale(0.5f, 1.0f, 2.0f);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "p", &scale), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("p")),
            (std::vector<uint8_t>{50, 150, 255, 9, 64, 127, 20, 200}));
  const Vector3 unit(1, 1, 1);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "unit", &unit), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("unit")),
            (std::vector<uint8_t>{100, 150, 200, 9, 128, 127, 10, 200}));
}

TEST_F(TextureStoreTest, SaturationZeroGivesGreyAndWhiteScaledStaysWhite) {
  ASSERT_TRUE(testpng::writeRgb(dir + "p.png", 3, 1, {100, 150, 200, 255, 255, 255, 255, 255, 0}));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "p.png", "grey", nullptr, nullptr, false, {}, 0.0f), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("grey")),
            (std::vector<uint8_t>{140, 140, 140, 255, 255, 255, 255, 255, 225, 225, 225, 255}));
  // Scale 2 on white: grey 510 is cut to 255 before mixing; channels of 510 come out 255.
  const Vector3 twice(2, 2, 2);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "s0", &twice, nullptr, false, {}, 0.0f), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("s0")),
            (std::vector<uint8_t>{255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255}));
  ASSERT_EQ(store.loadTexture(dir + "p.png", "s1", &twice), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("s1")),
            (std::vector<uint8_t>{200, 255, 255, 255, 255, 255, 255, 255, 255, 255, 0, 255}));
  // Half saturation: the yellow pixel's grey (451.9) is cut to 255, so blue is 127.
  ASSERT_EQ(store.loadTexture(dir + "p.png", "half", &twice, nullptr, false, {}, 0.5f), 0);
  const std::vector<uint8_t> half = texelsOf(store.findTextureId("half"));
  EXPECT_EQ((std::vector<uint8_t>(half.begin() + 8, half.end())),
            (std::vector<uint8_t>{255, 255, 127, 255}));
}

TEST_F(TextureStoreTest, OffsetUsesItsFirstComponentAndNegativesBecome255) {
  ASSERT_TRUE(testpng::writeRgba(dir + "p.png", 2, 1, {255, 254, 0, 77, 10, 20, 30, 0}));
  TextureStore store;
  const Vector3 minusOne(-1, 0, 0);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "neg", nullptr, &minusOne), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("neg")),
            (std::vector<uint8_t>{0, 255, 255, 77, 255, 255, 255, 0}));
  // The second and third components are ignored: one offset for all channels.
  const Vector3 onlyLater(0, 1, -1);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "later", nullptr, &onlyLater), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("later")),
            (std::vector<uint8_t>{255, 254, 0, 77, 10, 20, 30, 0}));
  const Vector3 small(0.1f, 0, 0);
  ASSERT_EQ(store.loadTexture(dir + "p.png", "small", nullptr, &small), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("small")),
            (std::vector<uint8_t>{255, 255, 25, 77, 35, 45, 55, 0}));
}

// ---------------------------------------------------------------------------
// Mip levels
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, BuildMipmapsMakesTheWholeChain) {
  ASSERT_TRUE(testpng::writeRgba(dir + "font.png", 16, 8, testpng::pattern(16, 8, 4)));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "font.png", "basicOutputFont", nullptr, nullptr, false, {}, 1.0f, 0, true), 0);
  glBindTexture(GL_TEXTURE_2D, store.findTextureId("basicOutputFont"));
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 0), 16);
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 1), 8);
  EXPECT_EQ(levelHeight(GL_TEXTURE_2D, 1), 4);
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 4), 1);
  EXPECT_EQ(levelHeight(GL_TEXTURE_2D, 4), 1);
  EXPECT_EQ(texels(GL_TEXTURE_2D, 0), testpng::pattern(16, 8, 4));
}

TEST_F(TextureStoreTest, BuildMipmapsOnANonPowerOfTwoImageKeepsTheFileSizeInTheRecord) {
  ASSERT_TRUE(testpng::writeRgba(dir + "npot.png", 12, 5, testpng::pattern(12, 5, 4)));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "npot.png", "n", nullptr, nullptr, false, {}, 1.0f, 0, true), 0);
  EXPECT_EQ(store.findTextureRecord("n").width, 12);
  EXPECT_EQ(store.findTextureRecord("n").height, 5);
  glBindTexture(GL_TEXTURE_2D, store.findTextureId("n"));
  EXPECT_GT(levelWidth(GL_TEXTURE_2D, 0), 0);
  EXPECT_GT(levelWidth(GL_TEXTURE_2D, 1), 0);
}

TEST_F(TextureStoreTest, HandMadeMipChainLoadsLevelByLevel) {
  ASSERT_TRUE(testpng::writeSolid(dir + "l0.png", 256, 128, {255, 0, 0}));
  ASSERT_TRUE(testpng::writeSolid(dir + "l1.png", 128, 64, {0, 255, 0}));
  ASSERT_TRUE(testpng::writeSolid(dir + "l2.png", 64, 32, {0, 0, 255, 7}));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "l0.png", "chain"), 0);
  const GLuint id = store.findTextureId("chain");
  testing::internal::CaptureStdout();
  ASSERT_EQ(store.loadTexture(dir + "l1.png", "chain", nullptr, nullptr, false, {}, 1.0f, 1), 0);
  ASSERT_EQ(store.loadTexture(dir + "l2.png", "chain", nullptr, nullptr, false, {}, 1.0f, 2), 0);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "mipmap level 1 imageSize: 128,64 texture id: " + std::to_string(id) +
                         "\n\n\nmipmap level 2 imageSize: 64,32 texture id: " +
                         std::to_string(id) + "\n\n\n");
  EXPECT_EQ(store.records().size(), 1u) << "further levels make no record";
  glBindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 1), 128);
  EXPECT_EQ(levelHeight(GL_TEXTURE_2D, 1), 64);
  EXPECT_EQ(texels(GL_TEXTURE_2D, 1), solid(128, 64, {0, 255, 0, 255}));
  EXPECT_EQ(texels(GL_TEXTURE_2D, 2), solid(64, 32, {0, 0, 255, 7}));
  EXPECT_EQ(texels(GL_TEXTURE_2D, 0), solid(256, 128, {255, 0, 0, 255}));
}

TEST_F(TextureStoreTest, LevelWithoutLevelZeroLandsInTheBoundTexture) {
  ASSERT_TRUE(testpng::writeSolid(dir + "l1.png", 8, 2, {1, 2, 3, 4}));
  TextureStore store;
  GLuint foreign = 0;
  glGenTextures(1, &foreign);
  glBindTexture(GL_TEXTURE_2D, foreign);
  testing::internal::CaptureStdout();
  ASSERT_EQ(store.loadTexture(dir + "l1.png", "orphan", nullptr, nullptr, false, {}, 1.0f, 1), 0);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "mipmap level 1 imageSize: 8,2 texture id: 10001000\n\n\n");
  EXPECT_TRUE(store.records().empty());
  EXPECT_EQ(store.findTextureId("orphan"), noTexture);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_2D)), foreign) << "nothing else was bound";
  EXPECT_EQ(levelWidth(GL_TEXTURE_2D, 1), 8);
  EXPECT_EQ(texels(GL_TEXTURE_2D, 1), solid(8, 2, {1, 2, 3, 4}));
  glDeleteTextures(1, &foreign);
}

TEST_F(TextureStoreTest, LevelLineFollowsTheStreamsNumberFormat) {
  ASSERT_TRUE(testpng::writeSolid(dir + "l0.png", 32, 32, {9, 9, 9}));
  ASSERT_TRUE(testpng::writeSolid(dir + "l1.png", 16, 16, {9, 9, 9}));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "l0.png", "t"), 0);
  const GLuint id = store.findTextureId("t");
  testing::internal::CaptureStdout();
  std::cout << std::hex;
  store.loadTexture(dir + "l1.png", "t", nullptr, nullptr, false, {}, 1.0f, 1);
  std::cout << std::dec;
  const std::string printed = testing::internal::GetCapturedStdout();
  std::ostringstream expected;
  expected << std::hex << "mipmap level 1 imageSize: 10,10 texture id: " << id << "\n\n\n";
  EXPECT_EQ(printed, expected.str());
}

TEST_F(TextureStoreTest, FailedLevelLoadPrintsNothing) {
  TextureStore store;
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.loadTexture(dir + "missing.png", "t", nullptr, nullptr, false, {}, 1.0f, 1), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// ---------------------------------------------------------------------------
// Cube maps
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, CubeMapFacesGoInListOrder) {
  const std::vector<std::vector<uint8_t>> colours = {
      {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {255, 255, 255}, {0, 255, 255}};
  std::vector<std::string> files;
  for (size_t i = 0; i < colours.size(); ++i) {
    files.push_back(dir + "face" + std::to_string(i) + ".png");
    ASSERT_TRUE(testpng::writeSolid(files.back(), 4, 4, colours[i]));
  }
  TextureStore store;
  ASSERT_EQ(store.loadTexture("./images/bill.png", "cubemap", nullptr, nullptr, true, files), 0);
  ASSERT_EQ(store.records().size(), 1u);
  const TextureRecord& record = store.records().front();
  EXPECT_EQ(record.filePath, "./images/bill.png") << "the path only fills filePath";
  EXPECT_EQ(record.width, 4);
  EXPECT_EQ(record.height, 4);
  EXPECT_EQ(record.depth, 0);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_CUBE_MAP)), record.id);
  const GLenum faces[6] = {GL_TEXTURE_CUBE_MAP_POSITIVE_X, GL_TEXTURE_CUBE_MAP_NEGATIVE_X,
                           GL_TEXTURE_CUBE_MAP_POSITIVE_Y, GL_TEXTURE_CUBE_MAP_NEGATIVE_Y,
                           GL_TEXTURE_CUBE_MAP_POSITIVE_Z, GL_TEXTURE_CUBE_MAP_NEGATIVE_Z};
  for (int i = 0; i < 6; ++i) {
    std::vector<uint8_t> rgba = colours[i];
    rgba.push_back(255);
    EXPECT_EQ(texels(faces[i]), solid(4, 4, rgba)) << "face " << i;
  }
}

TEST_F(TextureStoreTest, CubeMapWithOneBrightFaceLikeTheBillMap) {
  ASSERT_TRUE(testpng::writeSolid(dir + "black.png", 8, 8, {0, 0, 0}));
  ASSERT_TRUE(testpng::writeSolid(dir + "bill.png", 8, 8, {200, 180, 160}));
  const std::string black = dir + "black.png", bill = dir + "bill.png";
  TextureStore store;
  const Vector3 unit(1, 1, 1);
  ASSERT_EQ(store.loadTexture(bill, "cubemap.bill", &unit, nullptr, true,
                              {black, black, black, black, bill, black}),
            0);
  glBindTexture(GL_TEXTURE_CUBE_MAP, store.findTextureId("cubemap.bill"));
  glGenerateMipmapEXT(GL_TEXTURE_CUBE_MAP);
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_POSITIVE_Z), solid(8, 8, {200, 180, 160, 255}));
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_NEGATIVE_Z), solid(8, 8, {0, 0, 0, 255}));
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_POSITIVE_X), solid(8, 8, {0, 0, 0, 255}));
  EXPECT_EQ(levelWidth(GL_TEXTURE_CUBE_MAP_POSITIVE_Z, 3), 1) << "cube-complete: mips made";
}

TEST_F(TextureStoreTest, CubeMapAppliesColourAndIgnoresMipArguments) {
  ASSERT_TRUE(testpng::writeSolid(dir + "f.png", 4, 4, {100, 150, 200}));
  const std::string f = dir + "f.png";
  TextureStore store;
  const Vector3 scale(0.5f, 0.5f, 0.5f);
  testing::internal::CaptureStdout();
  ASSERT_EQ(store.loadTexture("", "c", &scale, nullptr, true, {f, f, f, f, f, f}, 1.0f, 3, true), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "no level line on the cube path";
  glBindTexture(GL_TEXTURE_CUBE_MAP, store.findTextureId("c"));
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_NEGATIVE_Y), solid(4, 4, {50, 75, 100, 255}));
  EXPECT_EQ(levelWidth(GL_TEXTURE_CUBE_MAP_NEGATIVE_Y, 1), 0) << "level 0 only";
  EXPECT_EQ(store.records().size(), 1u);
}

TEST_F(TextureStoreTest, CubeMapFailureKeepsTheFacesBeforeIt) {
  ASSERT_TRUE(testpng::writeSolid(dir + "f.png", 2, 2, {10, 20, 30}));
  const std::string f = dir + "f.png", missing = dir + "missing.png";
  TextureStore store;
  EXPECT_EQ(store.loadTexture("", "late", nullptr, nullptr, true, {f, f, missing, f, f, f}), 1);
  ASSERT_EQ(store.records().size(), 1u) << "the record was made at the first face";
  glBindTexture(GL_TEXTURE_CUBE_MAP, store.findTextureId("late"));
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_NEGATIVE_X), solid(2, 2, {10, 20, 30, 255}));
  EXPECT_EQ(levelWidth(GL_TEXTURE_CUBE_MAP_POSITIVE_Y, 0), 0) << "the failing face is empty";
  EXPECT_EQ(store.loadTexture("", "early", nullptr, nullptr, true, {missing, f}), 1);
  EXPECT_EQ(store.findTextureId("early"), noTexture) << "no record when the first face fails";
  testpng::writeFile(dir + "bad.png", {'b', 'a', 'd', '!'});
  EXPECT_EQ(store.loadTexture("", "bad", nullptr, nullptr, true, {f, dir + "bad.png"}), 5);
  EXPECT_EQ(store.records().size(), 2u);
}

TEST_F(TextureStoreTest, FaceListMayBeGivenByPointer) {
  ASSERT_TRUE(testpng::writeSolid(dir + "f.png", 2, 2, {10, 20, 30}));
  ASSERT_TRUE(testpng::writeSolid(dir + "g.png", 2, 2, {40, 50, 60}));
  const std::vector<std::string> files = {dir + "f.png", dir + "g.png"};
  TextureStore store;
  ASSERT_EQ(store.loadTexture("", "byPointer", nullptr, nullptr, true, &files), 0);
  glBindTexture(GL_TEXTURE_CUBE_MAP, store.findTextureId("byPointer"));
  EXPECT_EQ(texels(GL_TEXTURE_CUBE_MAP_NEGATIVE_X), solid(2, 2, {40, 50, 60, 255}));
  EXPECT_EQ(store.loadTexture("", "nullFaces", nullptr, nullptr, true, nullptr), 0);
  EXPECT_EQ(store.findTextureId("nullFaces"), noTexture);
  // The 2D path with a null list, as the font load writes it.
  ASSERT_EQ(store.loadTexture(dir + "f.png", "flat", nullptr, nullptr, false, nullptr, 1.0f, 0, true), 0);
  EXPECT_EQ(store.findTextureRecord("flat").width, 2);
}

TEST_F(TextureStoreTest, CubeMapFaceCountIsNotChecked) {
  ASSERT_TRUE(testpng::writeSolid(dir + "f.png", 2, 2, {10, 20, 30}));
  TextureStore store;
  EXPECT_EQ(store.loadTexture("", "two", nullptr, nullptr, true, {dir + "f.png", dir + "f.png"}), 0);
  EXPECT_NE(store.findTextureId("two"), noTexture);
  EXPECT_EQ(store.loadTexture("", "none", nullptr, nullptr, true, {}), 0);
  EXPECT_EQ(store.findTextureId("none"), noTexture) << "no face, no record";
}

// ---------------------------------------------------------------------------
// Textures from memory, updates, sampler state
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, CreateTextureFromMemory) {
  std::vector<uint8_t> pixels = testpng::pattern(256, 256, 4, 3);
  TextureStore store;
  ASSERT_EQ(store.createTextureFromMemory(pixels.data(), "dynamicNoise", 256, 256, 4), 0);
  ASSERT_EQ(store.records().size(), 1u);
  const TextureRecord& record = store.records().front();
  EXPECT_EQ(record.filePath, "");
  EXPECT_EQ(record.name, "dynamicNoise");
  EXPECT_EQ(record.width, 256);
  EXPECT_EQ(record.height, 256);
  EXPECT_EQ(record.depth, 0);
  EXPECT_EQ(record.wrapS, GL_REPEAT);
  EXPECT_EQ(record.minFilter, GL_LINEAR);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_2D)), record.id);
  const std::vector<uint8_t> original = pixels;
  pixels.assign(pixels.size(), 0);  // the caller keeps its buffer; the texture has its copy
  EXPECT_EQ(texelsOf(record.id), original);
}

TEST_F(TextureStoreTest, CreateTextureFromMemoryUsesTheGivenInternalFormat) {
  const std::vector<uint8_t> pixels = solid(2, 2, {10, 20, 30, 40});
  TextureStore store;
  ASSERT_EQ(store.createTextureFromMemory(pixels.data(), "rgb", 2, 2, GL_RGB8), 0);
  glBindTexture(GL_TEXTURE_2D, store.findTextureId("rgb"));
  GLint alphaBits = -1;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_ALPHA_SIZE, &alphaBits);
  EXPECT_EQ(alphaBits, 0);
  EXPECT_EQ(texels(GL_TEXTURE_2D), solid(2, 2, {10, 20, 30, 255}));
}

TEST_F(TextureStoreTest, UpdateTextureReplacesLevelZero) {
  std::vector<uint8_t> pixels = solid(4, 2, {0, 0, 0, 100});
  TextureStore store;
  ASSERT_EQ(store.createTextureFromMemory(pixels.data(), "dynamicNoise", 4, 2, 4), 0);
  const std::vector<uint8_t> next = testpng::pattern(4, 2, 4, 77);
  glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(store.updateTexture(next.data(), "dynamicNoise"), 0);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_2D)), store.findTextureId("dynamicNoise"));
  EXPECT_EQ(texelsOf(store.findTextureId("dynamicNoise")), next);
  EXPECT_EQ(store.records().size(), 1u);
  // Unknown names change nothing.
  glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(store.updateTexture(pixels.data(), "other"), 2);
  EXPECT_EQ(boundTexture(GL_TEXTURE_BINDING_2D), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("dynamicNoise")), next);
}

TEST_F(TextureStoreTest, UpdateTextureOfALoadedImage) {
  ASSERT_TRUE(testpng::writeSolid(dir + "a.png", 3, 3, {1, 1, 1}));
  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "a.png", "a"), 0);
  const std::vector<uint8_t> next = testpng::pattern(3, 3, 4, 5);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  EXPECT_EQ(store.updateTexture(next.data(), "a"), 0);
  EXPECT_EQ(texelsOf(store.findTextureId("a")), next);
}

TEST_F(TextureStoreTest, ApplySamplerStateSendsTheRecordsWishes) {
  TextureStore store;
  const std::vector<uint8_t> p = solid(2, 2, {0, 0, 0, 0});
  store.createTextureFromMemory(p.data(), "font", 2, 2, 4);
  store.createTextureFromMemory(p.data(), "other", 2, 2, 4);
  TextureRecord& record = store.findTextureRecord("font");
  record.wrapS = GL_CLAMP;
  record.wrapT = GL_CLAMP_TO_EDGE;
  record.minFilter = GL_NEAREST;
  record.magFilter = GL_NEAREST;
  store.applySamplerState("font");
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_2D)), record.id);
  GLint v = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &v);
  EXPECT_EQ(v, GL_CLAMP);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &v);
  EXPECT_EQ(v, GL_CLAMP_TO_EDGE);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &v);
  EXPECT_EQ(v, GL_NEAREST);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &v);
  EXPECT_EQ(v, GL_NEAREST);
  // The defaults are sent as they are.
  store.applySamplerState("other");
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &v);
  EXPECT_EQ(v, GL_LINEAR);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &v);
  EXPECT_EQ(v, GL_REPEAT);
  // An unknown name does nothing, not even a bind.
  const GLint before = boundTexture(GL_TEXTURE_BINDING_2D);
  store.applySamplerState("unknown");
  EXPECT_EQ(boundTexture(GL_TEXTURE_BINDING_2D), before);
}

// ---------------------------------------------------------------------------
// Destruction
// ---------------------------------------------------------------------------

TEST_F(TextureStoreTest, DestructorDeletesEveryTexture) {
  ASSERT_TRUE(testpng::writeSolid(dir + "a.png", 2, 2, {1, 2, 3}));
  std::vector<GLuint> ids;
  {
    TextureStore store;
    const std::vector<uint8_t> p = solid(2, 2, {0, 0, 0, 0});
    store.createTextureFromMemory(p.data(), "m", 2, 2, 4);
    store.loadTexture(dir + "a.png", "a");
    store.loadTexture(dir + "a.png", "a");
    store.loadTexture("", "c", nullptr, nullptr, true, {dir + "a.png"});
    for (const TextureRecord& r : store.records()) ids.push_back(r.id);
    ASSERT_EQ(ids.size(), 4u);
    for (GLuint id : ids) EXPECT_TRUE(glIsTexture(id));
  }
  for (GLuint id : ids) EXPECT_FALSE(glIsTexture(id)) << id;
}

TEST_F(TextureStoreTest, TwoStoresAreIndependent) {
  const std::vector<uint8_t> p = solid(1, 1, {5, 5, 5, 5});
  TextureStore demoStore, loadingStore;
  demoStore.createTextureFromMemory(p.data(), "basicOutputFont", 1, 1, 4);
  EXPECT_EQ(loadingStore.findTextureId("basicOutputFont"), noTexture);
  loadingStore.createTextureFromMemory(p.data(), "basicOutputFont", 1, 1, 4);
  EXPECT_NE(loadingStore.findTextureId("basicOutputFont"), demoStore.findTextureId("basicOutputFont"));
}
