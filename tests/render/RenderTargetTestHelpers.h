// Helpers shared by the render-target, glow and slot tests: a clean GL state,
// uniform and patterned slot textures, pixel and texture read-back, and a
// software model of the fixed-function blend equation to check results.
// Colours are 0..255 bytes; pixel positions count from the lower left.
#pragma once
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "foundation/Capabilities.h"
#include "render/RenderTarget.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"

namespace rtt {

using Rgba = std::array<int, 4>;

// Window of every test here: a non-power-of-two render size like the
// production's, served by 512 x 256 textures.
constexpr int windowW = 320, windowH = 240;

// Sets useFramebufferObjects for the lifetime of the object.
struct ScopedFramebuffers {
  bool saved;
  explicit ScopedFramebuffers(bool on) : saved(useFramebufferObjects) { useFramebufferObjects = on; }
  ~ScopedFramebuffers() { useFramebufferObjects = saved; }
};

struct ScopedBlendSeparate {
  bool saved;
  explicit ScopedBlendSeparate(bool on) : saved(hasBlendFuncSeparate) { hasBlendFuncSeparate = on; }
  ~ScopedBlendSeparate() { hasBlendFuncSeparate = saved; }
};

// A neutral state: identity matrices, whole-window viewport, nothing enabled
// but what a test asks for, framebuffer 0, errors drained.
inline void resetState() {
  if (hasFramebufferObject) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  }
  for (int unit = 3; unit >= 0; --unit) {
    glActiveTextureARB(GL_TEXTURE0_ARB + unit);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_CUBE_MAP);
    glBindTexture(GL_TEXTURE_2D, 0);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  }
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glViewport(0, 0, testgl::width(), testgl::height());
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_CULL_FACE);
  glDisable(GL_BLEND);
  glDisable(GL_ALPHA_TEST);
  glBlendFunc(GL_ONE, GL_ZERO);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glDepthMask(GL_TRUE);
  glColor4f(1, 1, 1, 1);
  glClearColor(0, 0, 0, 0);
  glClearDepth(1.0);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  testgl::drainErrors();
}

// Opens the shared window and resets the state; skips when the window has
// another size than these tests are written for.
#define REQUIRE_TARGET_GL()                                                                  \
  do {                                                                                       \
    REQUIRE_GL(rtt::windowW, rtt::windowH);                                                  \
    if (testgl::width() != rtt::windowW || testgl::height() != rtt::windowH)                  \
      GTEST_SKIP() << "window opened at another size by an earlier test of this process";    \
    rtt::resetState();                                                                       \
  } while (0)

#define REQUIRE_FRAMEBUFFERS()                                                        \
  do {                                                                                \
    if (!hasFramebufferObject) GTEST_SKIP() << "no GL_EXT_framebuffer_object here";  \
  } while (0)

// The production-like pool: render 320 x 240 in 512 x 256 textures.
inline RenderTarget* makePool(int32_t count) {
  return new RenderTarget(512, 256, 256, 128, 320, 240, 160, 120, count);
}

inline int textureLevelSize(GLuint texture, GLenum what) {
  GLint v = 0;
  glBindTexture(GL_TEXTURE_2D, texture);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, what, &v);
  return v;
}

inline void fillTexture(GLuint texture, const Rgba& c) {
  const int w = textureLevelSize(texture, GL_TEXTURE_WIDTH), h = textureLevelSize(texture, GL_TEXTURE_HEIGHT);
  std::vector<uint8_t> data(size_t(w) * h * 4);
  for (size_t i = 0; i < data.size(); i += 4)
    for (int k = 0; k < 4; ++k) data[i + k] = uint8_t(c[k]);
  glBindTexture(GL_TEXTURE_2D, texture);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, data.data());
}

// Texture contents, bottom row first (as GL stores them).
inline std::vector<uint8_t> readTexture(GLuint texture, int* w = nullptr, int* h = nullptr) {
  const int tw = textureLevelSize(texture, GL_TEXTURE_WIDTH), th = textureLevelSize(texture, GL_TEXTURE_HEIGHT);
  std::vector<uint8_t> data(size_t(tw) * th * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, data.data());
  if (w) *w = tw;
  if (h) *h = th;
  return data;
}

inline Rgba texel(const std::vector<uint8_t>& data, int w, int x, int y) {
  const size_t o = (size_t(y) * w + x) * 4;
  return {data[o], data[o + 1], data[o + 2], data[o + 3]};
}

// One pixel of the current read surface, lower-left origin.
inline Rgba pixel(int x, int y) {
  uint8_t p[4] = {0, 0, 0, 0};
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
  return {p[0], p[1], p[2], p[3]};
}

inline void clearTo(const Rgba& c) {
  glClearColor(c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f, c[3] / 255.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  glClearColor(0, 0, 0, 0);
}

// ---- Software blend equation (GL_FUNC_ADD), values 0..1 -------------------

struct Colour {
  double r, g, b, a;
};

inline Colour toColour(const Rgba& c) { return {c[0] / 255.0, c[1] / 255.0, c[2] / 255.0, c[3] / 255.0}; }

inline double factor(GLenum f, const Colour& s, const Colour& d, int channel) {
  const double sc[4] = {s.r, s.g, s.b, s.a}, dc[4] = {d.r, d.g, d.b, d.a};
  switch (f) {
    case GL_ZERO: return 0;
    case GL_ONE: return 1;
    case GL_SRC_COLOR: return sc[channel];
    case GL_ONE_MINUS_SRC_COLOR: return 1 - sc[channel];
    case GL_DST_COLOR: return dc[channel];
    case GL_ONE_MINUS_DST_COLOR: return 1 - dc[channel];
    case GL_SRC_ALPHA: return s.a;
    case GL_ONE_MINUS_SRC_ALPHA: return 1 - s.a;
    case GL_DST_ALPHA: return d.a;
    case GL_ONE_MINUS_DST_ALPHA: return 1 - d.a;
  }
  ADD_FAILURE() << "factor not modelled";
  return 0;
}

// result = src * sf + dst * df per channel, alpha with its own pair, clamped.
inline Rgba blend(const Colour& s, const Colour& d, GLenum sf, GLenum df, GLenum sfa, GLenum dfa) {
  const double sc[4] = {s.r, s.g, s.b, s.a}, dc[4] = {d.r, d.g, d.b, d.a};
  Rgba out;
  for (int k = 0; k < 4; ++k) {
    const double v = k < 3 ? sc[k] * factor(sf, s, d, k) + dc[k] * factor(df, s, d, k)
                           : sc[k] * factor(sfa, s, d, k) + dc[k] * factor(dfa, s, d, k);
    out[k] = int(std::lround(std::min(1.0, std::max(0.0, v)) * 255.0));
  }
  return out;
}

inline Rgba blend(const Colour& s, const Colour& d, GLenum sf, GLenum df) { return blend(s, d, sf, df, sf, df); }

inline ::testing::AssertionResult near(const Rgba& actual, const Rgba& expected, int tolerance = 2) {
  for (int k = 0; k < 4; ++k) {
    if (std::abs(actual[k] - expected[k]) > tolerance)
      return ::testing::AssertionFailure() << "got (" << actual[0] << ", " << actual[1] << ", " << actual[2] << ", "
                                           << actual[3] << "), expected (" << expected[0] << ", " << expected[1]
                                           << ", " << expected[2] << ", " << expected[3] << ")";
  }
  return ::testing::AssertionSuccess();
}

inline GLint getInt(GLenum what) {
  GLint v = 0;
  glGetIntegerv(what, &v);
  return v;
}

inline GLint texEnvMode() {
  GLint v = 0;
  glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &v);
  return v;
}

// A small test picture in normalised device coordinates, with depth: a
// gradient backdrop, overlapping shapes at different depths, a half-alpha
// patch and thin bright lines. Enables the depth test, leaves it on. Without
// the backdrop the shapes stand on what the surface holds.
inline void drawTestPicture(bool backdrop = true) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glDisable(GL_TEXTURE_2D);
  glDisable(GL_BLEND);
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LESS);
  glBegin(GL_QUADS);
  if (backdrop) {
    glColor4f(0.05f, 0.05f, 0.2f, 1);
    glVertex3f(-1, -1, 0.9f);
    glVertex3f(1, -1, 0.9f);
    glColor4f(0.1f, 0.3f, 0.5f, 1);
    glVertex3f(1, 1, 0.9f);
    glVertex3f(-1, 1, 0.9f);
  }
  // red square behind
  glColor4f(0.9f, 0.1f, 0.1f, 1);
  glVertex3f(-0.6f, -0.5f, 0.3f);
  glVertex3f(0.2f, -0.5f, 0.3f);
  glVertex3f(0.2f, 0.3f, 0.3f);
  glVertex3f(-0.6f, 0.3f, 0.3f);
  // half-alpha patch
  glColor4f(0.2f, 0.9f, 0.3f, 0.5f);
  glVertex3f(0.4f, 0.4f, 0.5f);
  glVertex3f(0.8f, 0.4f, 0.5f);
  glVertex3f(0.8f, 0.8f, 0.5f);
  glVertex3f(0.4f, 0.8f, 0.5f);
  // white bar in front, crossing the red square
  glColor4f(1, 1, 1, 1);
  glVertex3f(-0.8f, -0.1f, 0.0f);
  glVertex3f(0.6f, -0.1f, 0.0f);
  glVertex3f(0.6f, 0.0f, 0.0f);
  glVertex3f(-0.8f, 0.0f, 0.0f);
  glEnd();
  // yellow triangle pierced by the square: depth decides which part shows
  glBegin(GL_TRIANGLES);
  glColor4f(1.0f, 0.85f, 0.1f, 1);
  glVertex3f(-0.3f, -0.8f, 0.1f);
  glVertex3f(0.5f, -0.8f, 0.1f);
  glVertex3f(0.1f, 0.1f, 0.6f);
  glEnd();
  glColor4f(1, 1, 1, 1);
}

inline testimg::Image readWindow() {
  testimg::Image image;
  image.width = testgl::width();
  image.height = testgl::height();
  image.rgba = testgl::readPixels(0, 0, image.width, image.height);
  return image;
}

}  // namespace rtt
