// Mip chains through GLU, and the unpack state of the store's uploads.
// GLU's scaler reads up to a row and a pixel past the end of an image whose
// sides are not powers of two; buildMipmapChain must not let it, whatever
// the size, and its levels must be GLU's own. Every upload of the store
// takes its pixels packed whatever unpack state stands, and leaves that
// state as it found it.
#include <GL/glew.h>
#include <GL/glu.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <utility>
#include <vector>

#include "GLTextureFixture.h"
#include "TestPngFiles.h"
#include "texture/TextureStore.h"

namespace {

// Memory whose usable part ends exactly where an unreadable page begins:
// any read past the end of the `bytes` given is a crash.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(size_t bytes_) : bytes(bytes_) {
    page = size_t(sysconf(_SC_PAGESIZE));
    pages = (bytes + page - 1) / page + 1;
    void* mapped = mmap(nullptr, pages * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return;
    base = static_cast<uint8_t*>(mapped);
    if (mprotect(base + (pages - 1) * page, page, PROT_NONE) != 0) return;
    data = base + (pages - 1) * page - bytes;
  }
  ~GuardedBuffer() {
    if (base) munmap(base, pages * page);
  }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  uint8_t* data = nullptr;  // null when the guard could not be set up
  size_t bytes;

 private:
  uint8_t* base = nullptr;
  size_t page = 0;
  size_t pages = 0;
};

std::vector<uint8_t> texelsOfLevel(int level) {
  GLint w = 0, h = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &w);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_HEIGHT, &h);
  std::vector<uint8_t> out(size_t(w) * h * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  if (!out.empty()) glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
  return out;
}

GLint levelSize(GLenum what, int level) {
  GLint v = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, level, what, &v);
  return v;
}

GLint intState(GLenum name) {
  GLint v = 0;
  glGetIntegerv(name, &v);
  return v;
}

bool isPowerOfTwo(GLint n) { return n > 0 && (n & (n - 1)) == 0; }

using MipmapChainTest = GLTextureFixture;

}  // namespace

// Each size from 1x1 to 20x20, and a few long thin ones, with the image
// ending right before an unreadable page: GLU left to itself crashes on
// 95 of the first 576 sizes (8x6, 1x3, 2x5, ...). Level 0 is the image
// scaled to powers of two.
TEST_F(MipmapChainTest, NothingPastTheImageIsRead) {
  std::vector<std::pair<int, int>> sizes;
  for (int w = 1; w <= 20; ++w)
    for (int h = 1; h <= 20; ++h) sizes.push_back({w, h});
  sizes.insert(sizes.end(), {{1, 33}, {33, 1}, {100, 3}, {3, 100}, {257, 129}});
  for (const auto& [w, h] : sizes) {
    GuardedBuffer image(size_t(w) * h * 4);
    ASSERT_NE(image.data, nullptr);
    const std::vector<uint8_t> pixels = testpng::pattern(w, h, 4);
    std::memcpy(image.data, pixels.data(), pixels.size());
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    EXPECT_EQ(buildMipmapChain(image.data, w, h), 0) << w << "x" << h;
    EXPECT_TRUE(isPowerOfTwo(levelSize(GL_TEXTURE_WIDTH, 0))) << w << "x" << h;
    EXPECT_TRUE(isPowerOfTwo(levelSize(GL_TEXTURE_HEIGHT, 0))) << w << "x" << h;
    glDeleteTextures(1, &id);
  }
}

// What GLU reads past the image carries weight 0: the chain is the one GLU
// makes from the same image followed by anything at all (here bytes of 255).
TEST_F(MipmapChainTest, LevelsAreGlusOwn) {
  for (const auto& [w, h] : std::vector<std::pair<int, int>>{{8, 6}, {12, 5}, {1, 7}, {9, 9}, {16, 8}}) {
    const std::vector<uint8_t> pixels = testpng::pattern(w, h, 4, 7);
    std::vector<uint8_t> followed = pixels;
    followed.resize(pixels.size() + size_t(w) * 4 * 2 + 64, 255);
    GLuint ids[2] = {0, 0};
    glGenTextures(2, ids);
    glBindTexture(GL_TEXTURE_2D, ids[0]);
    ASSERT_EQ(buildMipmapChain(pixels.data(), w, h), 0);
    glBindTexture(GL_TEXTURE_2D, ids[1]);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    ASSERT_EQ(gluBuild2DMipmaps(GL_TEXTURE_2D, GL_RGBA, w, h, GL_RGBA, GL_UNSIGNED_BYTE, followed.data()), 0);
    for (int level = 0; level < 5; ++level) {
      glBindTexture(GL_TEXTURE_2D, ids[1]);
      const std::vector<uint8_t> expected = texelsOfLevel(level);
      glBindTexture(GL_TEXTURE_2D, ids[0]);
      EXPECT_EQ(texelsOfLevel(level), expected) << w << "x" << h << " level " << level;
    }
    glDeleteTextures(2, ids);
  }
}

// A row length, skipped rows and pixels and an alignment of 8 left set by
// someone else: a load, with and without the mip chain, still takes the
// file's pixels as they are, and the state is as it was afterwards.
TEST_F(MipmapChainTest, UploadsTakePackedRowsAndRestoreTheUnpackState) {
  const std::vector<uint8_t> pixels = testpng::pattern(8, 6, 4, 3);
  ASSERT_TRUE(testpng::writeRgba(dir + "odd.png", 8, 6, pixels));
  const std::vector<uint8_t> square = testpng::pattern(8, 8, 4, 5);
  ASSERT_TRUE(testpng::writeRgba(dir + "square.png", 8, 8, square));
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 2);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 8);

  TextureStore store;
  ASSERT_EQ(store.loadTexture(dir + "odd.png", "plain"), 0);
  EXPECT_EQ(texelsOfLevel(0), pixels);
  ASSERT_EQ(store.loadTexture(dir + "square.png", "chain", nullptr, nullptr, false, {}, 1.0f, 0, true), 0);
  EXPECT_EQ(texelsOfLevel(0), square);
  ASSERT_EQ(store.loadTexture(dir + "odd.png", "oddChain", nullptr, nullptr, false, {}, 1.0f, 0, true), 0);
  const std::vector<uint8_t> oddLevel0 = texelsOfLevel(0);

  EXPECT_EQ(intState(GL_UNPACK_ROW_LENGTH), 100);
  EXPECT_EQ(intState(GL_UNPACK_SKIP_ROWS), 3);
  EXPECT_EQ(intState(GL_UNPACK_SKIP_PIXELS), 2);
  EXPECT_EQ(intState(GL_UNPACK_ALIGNMENT), 8);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);

  // The scaled chain is the one made with the unpack state at its defaults.
  GLuint id = 0;
  glGenTextures(1, &id);
  glBindTexture(GL_TEXTURE_2D, id);
  ASSERT_EQ(buildMipmapChain(pixels.data(), 8, 6), 0);
  EXPECT_EQ(texelsOfLevel(0), oddLevel0);
  glDeleteTextures(1, &id);
}

// A pixel unpack buffer left bound would turn the pixel pointer into an
// offset into that buffer: the store reads client memory all the same and
// binds the buffer again afterwards.
TEST_F(MipmapChainTest, UploadsReadClientMemoryWithAnUnpackBufferBound) {
  if (!GLEW_VERSION_2_1 && !GLEW_ARB_pixel_buffer_object) GTEST_SKIP() << "no pixel buffers";
  const std::vector<uint8_t> pixels = testpng::pattern(4, 4, 4, 9);
  GLuint buffer = 0;
  glGenBuffers(1, &buffer);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  glBufferData(GL_PIXEL_UNPACK_BUFFER, 4096, nullptr, GL_STREAM_DRAW);

  TextureStore store;
  store.createTextureFromMemory(pixels.data(), "fromMemory", 4, 4, GL_RGBA8);
  EXPECT_EQ(intState(GL_PIXEL_UNPACK_BUFFER_BINDING), GLint(buffer));
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  glBindTexture(GL_TEXTURE_2D, store.findTextureId("fromMemory"));
  EXPECT_EQ(texelsOfLevel(0), pixels);
  glDeleteBuffers(1, &buffer);
}
