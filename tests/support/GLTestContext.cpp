#include "support/GLTestContext.h"

#include <GL/glew.h>
#include <GL/glu.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "foundation/Capabilities.h"
#include "render/GLErrors.h"

namespace testgl {
namespace {
// Tests have the engine report every GL error at its pass boundaries (unless
// the environment says otherwise), as debug builds do.
const bool glErrorsReported = setenv("OSTRAVINE_GL_ERRORS", "1", 0) == 0;
bool opened = false;
bool ok = false;
int w = 0, h = 0;
}  // namespace

std::string failure;

bool openWindow(int width, int height) {
  if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) < 0) {
    failure = std::string("SDL_Init: ") + SDL_GetError();
    SDL_Quit();  // a half-made start would make the next window without alpha
    return false;
  }
  SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
  if (!SDL_SetVideoMode(width, height, 0, SDL_OPENGL | SDL_DOUBLEBUF | SDL_HWSURFACE)) {
    failure = std::string("SDL_SetVideoMode: ") + SDL_GetError();
    SDL_Quit();
    return false;
  }
  if (glewInit() != GLEW_OK) {
    failure = "glewInit failed";
    SDL_Quit();
    return false;
  }
  // Tests read alpha back: a window without destination alpha is no use.
  GLint alphaBits = 0;
  glGetIntegerv(GL_ALPHA_BITS, &alphaBits);
  if (alphaBits < 8) {
    failure = "the window has " + std::to_string(alphaBits) + " alpha bits";
    SDL_Quit();
    return false;
  }
  return true;
}

bool open(int width, int height) {
  if (opened) return ok;
  opened = true;
  // Render straight into the window: tests read back what they draw.
  setenv("SDL12COMPAT_OPENGL_SCALING", "0", 1);
  if (!getenv("DISPLAY")) {
    failure = "no DISPLAY";
    return false;
  }
  // A display under load can refuse a connection for a moment: try again
  // before calling it a failure.
  bool made = false;
  for (int attempt = 0; attempt < 5 && !made; ++attempt) {
    if (attempt > 0) {
      fprintf(stderr, "GL test window: %s; trying again\n", failure.c_str());
      SDL_Delay(300);
    }
    made = openWindow(width, height);
  }
  if (!made) return false;
  w = width;
  h = height;
  hasDepthTexture = GLEW_ARB_depth_texture;
  hasShadowExtension = GLEW_ARB_shadow;
  hasTextureRectangle = false;
  useFramebufferObjects = false;
  hasFramebufferObject = GLEW_EXT_framebuffer_object;
  useVertexBuffers = true;
  useDisplayLists = false;
  hasBlendFuncSeparate = GLEW_EXT_blend_func_separate;
  hasVertexProgram = GLEW_ARB_vertex_program;
  hasFragmentProgram = GLEW_ARB_fragment_program;
  hasTextureEnvCombine = GLEW_EXT_texture_env_combine;
  hasMultitexture = GLEW_ARB_multitexture;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &textureUnitCount);

  glClearColor(0, 0, 0, 1);
  glClearDepth(1.0);
  glDepthFunc(GL_LESS);
  glEnable(GL_DEPTH_TEST);
  glShadeModel(GL_SMOOTH);
  glEnable(GL_LIGHTING);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
  glEnable(GL_COLOR_MATERIAL);
  glCullFace(GL_BACK);
  glEnable(GL_CULL_FACE);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  gluPerspective(45.0, double(width) / double(height), 0.1, 1000.0);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glViewport(0, 0, width, height);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  drainErrors();
  ok = true;
  return true;
}

bool waitForDisplay() {
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (attempt > 0) SDL_Delay(300);
    if (SDL_Init(SDL_INIT_VIDEO) == 0) {
      SDL_Quit();
      return true;
    }
    fprintf(stderr, "display: %s; trying again\n", SDL_GetError());
  }
  return false;
}

bool displayExpected() { return getenv("DISPLAY") != nullptr; }

std::string openFailure() { return failure; }

int width() { return w; }
int height() { return h; }

std::vector<uint8_t> readPixels(int x, int y, int rw, int rh) {
  std::vector<uint8_t> bottomUp(size_t(rw) * rh * 4), topDown(size_t(rw) * rh * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(x, y, rw, rh, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
  for (int row = 0; row < rh; ++row)
    std::memcpy(&topDown[size_t(row) * rw * 4], &bottomUp[size_t(rh - 1 - row) * rw * 4], size_t(rw) * 4);
  return topDown;
}

std::vector<unsigned> drainErrors() {
  // First those the engine's boundary checks have already reported.
  std::vector<unsigned> errors;
  for (uint32_t code : takeReportedGLErrors()) errors.push_back(code);
  for (int guard = 0; guard < 64; ++guard) {
    GLenum e = glGetError();
    if (e == GL_NO_ERROR) break;
    errors.push_back(e);
  }
  return errors;
}

void swap() { SDL_GL_SwapBuffers(); }

}  // namespace testgl
