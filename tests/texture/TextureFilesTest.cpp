// Textures spread over files: saving a texture as PNG (one file, or one per
// volume slice), reading it back, and volume textures from memory and from
// slice files.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include "GLTextureFixture.h"
#include "TestPngFiles.h"
#include "foundation/Vector3.h"
#include "support/GLTestContext.h"
#include "texture/PngFile.h"
#include "texture/TextureStore.h"

namespace {

GLint boundTexture(GLenum binding) {
  GLint id = 0;
  glGetIntegerv(binding, &id);
  return id;
}

std::vector<uint8_t> volumeTexels(GLuint id, int w, int h, int d) {
  std::vector<uint8_t> out(size_t(w) * h * d * 4);
  glBindTexture(GL_TEXTURE_3D, id);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_3D, 0, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
  return out;
}

std::vector<uint8_t> slice(const std::vector<uint8_t>& volume, int w, int h, int i) {
  const size_t bytes = size_t(w) * h * 4;
  return std::vector<uint8_t>(volume.begin() + bytes * i, volume.begin() + bytes * (i + 1));
}

std::vector<uint8_t> readImage(const std::string& path, int& w, int& h) {
  std::vector<uint8_t> pixels;
  int32_t w32 = 0, h32 = 0;
  EXPECT_EQ(readPngImage(path, pixels, w32, h32, nullptr, nullptr, 1.0f), 0) << path;
  w = w32;
  h = h32;
  return pixels;
}

using TextureFilesTest = GLTextureFixture;

}  // namespace

// ---------------------------------------------------------------------------
// Saving
// ---------------------------------------------------------------------------

TEST_F(TextureFilesTest, Saving2DWritesOneFileAndOneLine) {
  const std::vector<uint8_t> pixels = testpng::pattern(16, 8, 4, 31);
  TextureStore store;
  ASSERT_EQ(store.createTextureFromMemory(pixels.data(), "cloudTexture", 16, 8, 4), 0);
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.saveTexture(dir, "cloud", "cloudTexture"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Generated and saved image " + dir + "cloud.png\n");
  EXPECT_TRUE(testpng::fileExists(dir + "cloud.png"));
  EXPECT_FALSE(testpng::fileExists(dir + "cloud.0.png"));
  int w = 0, h = 0;
  EXPECT_EQ(readImage(dir + "cloud.png", w, h), pixels);
  EXPECT_EQ(w, 16);
  EXPECT_EQ(h, 8);
  EXPECT_TRUE(TextureStore::textureFileExists(dir, "cloud"));
}

TEST_F(TextureFilesTest, SavedTextureLoadsBackWithTheSamePixels) {
  // Alpha varies and the rows differ, so a lost channel or a flip would show.
  const std::vector<uint8_t> pixels = testpng::pattern(8, 5, 4, 32);
  TextureStore store;
  ASSERT_EQ(store.createTextureFromMemory(pixels.data(), "source", 8, 5, 4), 0);
  testing::internal::CaptureStdout();
  ASSERT_EQ(store.saveTexture(dir, "roundTrip", "source"), 0);
  testing::internal::GetCapturedStdout();
  ASSERT_EQ(store.loadTexture(dir + "roundTrip.png", "reloaded", nullptr, nullptr, false, {}, 1.0f),
            0);
  std::vector<uint8_t> back(pixels.size());
  ASSERT_EQ(store.readBackTexture("reloaded", back.data()), 0);
  EXPECT_EQ(back, pixels);
  EXPECT_EQ(store.findTextureRecord("reloaded").width, 8);
  EXPECT_EQ(store.findTextureRecord("reloaded").height, 5);
}

TEST_F(TextureFilesTest, SavingAVolumeWritesOneFilePerSlice) {
  const int w = 4, h = 3, d = 3;
  const std::vector<uint8_t> volume = testpng::pattern(w, h * d, 4, 33);
  TextureStore store;
  ASSERT_EQ(store.createVolumeTextureFromMemory(volume.data(), "vol", w, h, d, 4), 0);
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.saveTexture(dir, "vol", "vol"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Generated and saved image " + dir + "vol.0.png\n" + "Generated and saved image " +
                dir + "vol.1.png\n" + "Generated and saved image " + dir + "vol.2.png\n");
  EXPECT_FALSE(testpng::fileExists(dir + "vol.png"));
  EXPECT_FALSE(testpng::fileExists(dir + "vol.3.png"));
  for (int i = 0; i < d; ++i) {
    int rw = 0, rh = 0;
    EXPECT_EQ(readImage(dir + "vol." + std::to_string(i) + ".png", rw, rh), slice(volume, w, h, i))
        << "slice " << i;
    EXPECT_EQ(rw, w);
    EXPECT_EQ(rh, h);
  }
}

TEST_F(TextureFilesTest, SavingAnUnknownNameGivesTwo) {
  TextureStore store;
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.saveTexture(dir, "ghost", "ghost"), 2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_FALSE(testpng::fileExists(dir + "ghost.png"));
  EXPECT_EQ(TextureStore::textureErrorText(2), "Texture at given name already exists.");
}

TEST_F(TextureFilesTest, SavingIntoAMissingDirectoryGivesOneAfterTheLine) {
  const std::vector<uint8_t> pixels = testpng::pattern(2, 2, 4);
  TextureStore store;
  store.createTextureFromMemory(pixels.data(), "t", 2, 2, 4);
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.saveTexture(dir + "no/such/", "t", "t"), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Generated and saved image " + dir + "no/such/t.png\n");
}

TEST_F(TextureFilesTest, DirectoryAndStemAreSimplyJoined) {
  const std::vector<uint8_t> pixels = testpng::pattern(2, 2, 4);
  TextureStore store;
  store.createTextureFromMemory(pixels.data(), "t", 2, 2, 4);
  testing::internal::CaptureStdout();
  EXPECT_EQ(store.saveTexture(dir + "prefix_", "t", "t"), 0);
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(testpng::fileExists(dir + "prefix_t.png"));
}

TEST_F(TextureFilesTest, ReadBackOfUnknownNameDoesNothing) {
  TextureStore store;
  std::vector<uint8_t> buffer(16, 0xab);
  EXPECT_EQ(store.readBackTexture("none", buffer.data()), 2);
  EXPECT_EQ(buffer, std::vector<uint8_t>(16, 0xab));
}

TEST_F(TextureFilesTest, ReadBackOfAVolumeBindsTheVolumeTarget) {
  const std::vector<uint8_t> volume = testpng::pattern(2, 6, 4, 34);
  TextureStore store;
  ASSERT_EQ(store.createVolumeTextureFromMemory(volume.data(), "v", 2, 2, 3, 4), 0);
  glBindTexture(GL_TEXTURE_3D, 0);
  std::vector<uint8_t> back(volume.size());
  ASSERT_EQ(store.readBackTexture("v", back.data()), 0);
  EXPECT_EQ(back, volume);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_3D)), store.findTextureId("v"));
}

// ---------------------------------------------------------------------------
// Volumes
// ---------------------------------------------------------------------------

TEST_F(TextureFilesTest, CreateVolumeTextureFromMemory) {
  const std::vector<uint8_t> volume = testpng::pattern(4, 8, 4, 35);
  TextureStore store;
  ASSERT_EQ(store.createVolumeTextureFromMemory(volume.data(), "v", 4, 4, 2, 4), 0);
  const TextureRecord& record = store.records().front();
  EXPECT_EQ(record.filePath, "");
  EXPECT_EQ(record.name, "v");
  EXPECT_EQ(record.width, 4);
  EXPECT_EQ(record.height, 4);
  EXPECT_EQ(record.depth, 2);
  EXPECT_EQ(record.wrapS, GL_REPEAT);
  EXPECT_EQ(record.magFilter, GL_LINEAR);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_3D)), record.id);
  EXPECT_EQ(volumeTexels(record.id, 4, 4, 2), volume);
}

TEST_F(TextureFilesTest, LoadVolumeTextureReadsEverySlice) {
  const int w = 4, h = 2, d = 4;
  std::vector<uint8_t> expected;
  for (int i = 0; i < d; ++i) {
    const std::vector<uint8_t> s = testpng::pattern(w, h, 4, 40 + i);
    ASSERT_TRUE(testpng::writeRgba(dir + "cloud." + std::to_string(i) + ".png", w, h, s));
    expected.insert(expected.end(), s.begin(), s.end());
  }
  TextureStore store;
  ASSERT_EQ(store.loadVolumeTexture(dir, "cloud", "clouds", d), 0);
  ASSERT_EQ(store.records().size(), 1u);
  const TextureRecord& record = store.records().front();
  EXPECT_EQ(record.filePath, "cloud") << "the stem, not a path";
  EXPECT_EQ(record.name, "clouds");
  EXPECT_EQ(record.width, w);
  EXPECT_EQ(record.height, h);
  EXPECT_EQ(record.depth, d);
  EXPECT_EQ(record.minFilter, GL_LINEAR);
  EXPECT_EQ(GLuint(boundTexture(GL_TEXTURE_BINDING_3D)), record.id);
  EXPECT_EQ(volumeTexels(record.id, w, h, d), expected);
}

TEST_F(TextureFilesTest, SavedVolumeLoadsBackUnderTheSameNames) {
  const int w = 3, h = 2, d = 3;
  const std::vector<uint8_t> volume = testpng::pattern(w, h * d, 4, 36);
  TextureStore store;
  ASSERT_EQ(store.createVolumeTextureFromMemory(volume.data(), "v", w, h, d, 4), 0);
  testing::internal::CaptureStdout();
  ASSERT_EQ(store.saveTexture(dir, "v", "v"), 0);
  testing::internal::GetCapturedStdout();
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  ASSERT_EQ(store.loadVolumeTexture(dir, "v", "again", d), 0);
  EXPECT_EQ(volumeTexels(store.findTextureId("again"), w, h, d), volume);
}

TEST_F(TextureFilesTest, LoadVolumeTextureAppliesTheColourParameters) {
  ASSERT_TRUE(testpng::writeSolid(dir + "s.0.png", 2, 2, {100, 150, 200, 50}));
  ASSERT_TRUE(testpng::writeSolid(dir + "s.1.png", 2, 2, {255, 254, 0}));
  TextureStore store;
  const Vector3 scale(0.5f, 1, 2);
  const Vector3 offset(0, 9, 9);  // only the first component counts
  ASSERT_EQ(store.loadVolumeTexture(dir, "s", "s", 2, &scale, &offset, 1.0f), 0);
  std::vector<uint8_t> expected;
  for (int i = 0; i < 4; ++i) expected.insert(expected.end(), {50, 150, 255, 50});
  for (int i = 0; i < 4; ++i) expected.insert(expected.end(), {127, 254, 0, 255});
  EXPECT_EQ(volumeTexels(store.findTextureId("s"), 2, 2, 2), expected);
  const Vector3 minusOne(-1, 0, 0);
  ASSERT_EQ(store.loadVolumeTexture(dir, "s", "g", 2, nullptr, &minusOne, 0.0f), 0);
  const std::vector<uint8_t> grey = volumeTexels(store.findTextureId("g"), 2, 2, 2);
  EXPECT_EQ(grey[0], 255) << "negative grey";
  EXPECT_EQ(grey[3], 50);
}

TEST_F(TextureFilesTest, MissingSliceMakesNothing) {
  for (int i : {0, 1, 3})
    ASSERT_TRUE(testpng::writeSolid(dir + "gap." + std::to_string(i) + ".png", 2, 2, {1, 2, 3}));
  TextureStore store;
  glBindTexture(GL_TEXTURE_3D, 0);
  EXPECT_EQ(store.loadVolumeTexture(dir, "gap", "gap", 4), 1);
  EXPECT_TRUE(store.records().empty());
  EXPECT_EQ(store.findTextureId("gap"), noTexture);
  EXPECT_EQ(boundTexture(GL_TEXTURE_BINDING_3D), 0) << "no GL texture was made or bound";
  // Fewer slices than there are files is fine.
  EXPECT_EQ(store.loadVolumeTexture(dir, "gap", "two", 2), 0);
  EXPECT_EQ(store.findTextureRecord("two").depth, 2);
}

TEST_F(TextureFilesTest, BadSlicesReturnTheReadersCodes) {
  ASSERT_TRUE(testpng::writeSolid(dir + "bad.0.png", 2, 2, {1, 2, 3}));
  testpng::writeFile(dir + "bad.1.png", {'n', 'o', 'p', 'e'});
  ASSERT_TRUE(testpng::writeSolid(dir + "size.0.png", 2, 2, {1, 2, 3}));
  ASSERT_TRUE(testpng::writeSolid(dir + "size.1.png", 4, 4, {1, 2, 3}));
  TextureStore store;
  EXPECT_EQ(store.loadVolumeTexture(dir, "bad", "bad", 2), 5);
  EXPECT_EQ(store.loadVolumeTexture(dir, "size", "size", 2), 5) << "slices of another size";
  EXPECT_EQ(store.loadVolumeTexture(dir, "bad", "none", 0), 6) << "no slices";
  EXPECT_TRUE(store.records().empty());
}

TEST_F(TextureFilesTest, DestructorDeletesVolumes) {
  GLuint id = 0;
  {
    TextureStore store;
    const std::vector<uint8_t> volume = testpng::pattern(2, 4, 4);
    store.createVolumeTextureFromMemory(volume.data(), "v", 2, 2, 2, 4);
    id = store.findTextureId("v");
    EXPECT_TRUE(glIsTexture(id));
  }
  EXPECT_FALSE(glIsTexture(id));
}
