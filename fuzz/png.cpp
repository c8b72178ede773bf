// Fuzz target: PNG loading through the texture store. Any bytes are written
// to a file and loaded with loadTexture as the production loads its images
// (colour scale, then mipmaps), into a real GL texture: needs a display
// (run it under xvfb-run). The decoded image goes through the same colour
// adjustment and upload as in the production.
#include <GL/glew.h>
#include <SDL/SDL.h>
#include <unistd.h>

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

}  // namespace

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
