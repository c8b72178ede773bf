// Fuzz target: PNG loading through the texture store. Any bytes are written
// to a file and loaded with loadTexture as the production loads its images
// (colour scale, then mipmaps), into a real GL texture: needs a display
// (run it under xvfb-run). The decoded image goes through the same colour
// adjustment and upload as in the production.
//
// libpng itself carries no coverage, and nearly every mutation of a PNG
// breaks a chunk's checksum, which libpng refuses before reading further.
// The mutator therefore repairs the checksums of every other mutant, so
// that changed sizes, colour types and depths get through to decoding and
// to the upload, while the rest still try the refusal.
#include <GL/glew.h>
#include <SDL/SDL.h>
#include <unistd.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/Vector3.h"
#include "texture/TextureStore.h"

namespace {

TextureStore* store = nullptr;
std::string path;

void openContext() {
  if (SDL_Init(SDL_INIT_VIDEO) != 0 || !SDL_SetVideoMode(16, 16, 0, SDL_OPENGL) || glewInit() != GLEW_OK) {
    fprintf(stderr, "fuzz_png: no GL context (run under xvfb-run): %s\n", SDL_GetError());
    exit(1);
  }
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  store = new TextureStore();
  path = "/tmp/ostravine-fuzz-png-" + std::to_string(getpid()) + ".png";
}

uint32_t readBigEndian(const uint8_t* p) {
  return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

// Rewrites the CRC of each whole chunk after the 8-byte signature: length
// (4 bytes), type (4), data (length), CRC (4) over type and data.
void repairChunkChecksums(uint8_t* data, size_t size) {
  size_t at = 8;
  while (at + 12 <= size) {
    const uint32_t length = readBigEndian(data + at);
    if (length > size - at - 12) return;
    const uint32_t crc = uint32_t(crc32(crc32(0, nullptr, 0), data + at + 4, uInt(length + 4)));
    uint8_t* out = data + at + 8 + length;
    out[0] = uint8_t(crc >> 24);
    out[1] = uint8_t(crc >> 16);
    out[2] = uint8_t(crc >> 8);
    out[3] = uint8_t(crc);
    at += 12 + size_t(length);
  }
}

}  // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (seed % 2 == 0) repairChunkChecksums(data, size);
  return size;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (!store) openContext();
  FILE* f = fopen(path.c_str(), "wb");
  if (!f) return 0;
  fwrite(data, 1, size, f);
  fclose(f);
  // Every load makes a record when it succeeds; a fresh store each time keeps
  // the list (and GL's memory) from growing over millions of inputs.
  delete store;
  store = new TextureStore();
  const Vector3 white(1.0f, 1.0f, 1.0f);
  if (store->loadTexture(path, "fuzz", &white) == 0) glGenerateMipmapEXT(GL_TEXTURE_2D);
  store->loadTexture(path, "fuzzMipmapped", nullptr, nullptr, false, nullptr, 0.5f, 0, true);
  while (glGetError() != GL_NO_ERROR) {
  }
  return 0;
}
