// Helpers of the world, light, mesh-drawing and billboard tests: a test window
// of 320 x 240 with the slot pool the production would make for it, small
// test meshes built by hand (so these tests do not depend on the builders),
// cameras, lights and a picture grabber. Units are world units and degrees;
// pixels count from the lower left unless a function says otherwise.
#pragma once
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "RenderTargetTestHelpers.h"
#include "foundation/Camera.h"
#include "foundation/Capabilities.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "render/RenderTarget.h"
#include "render/World.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"

namespace wt {

constexpr int windowW = rtt::windowW, windowH = rtt::windowH;

#define REQUIRE_WORLD_GL() REQUIRE_TARGET_GL()

// Sets a capability flag for the lifetime of the object.
struct ScopedFlag {
  bool& flag;
  bool saved;
  ScopedFlag(bool& f, bool value) : flag(f), saved(f) { flag = value; }
  ~ScopedFlag() { flag = saved; }
};

// Fills `mesh` with a cube from -1 to 1: 24 vertices (four per side, so the
// edges are hard), 12 counter-clockwise triangles facing out, texture
// coordinates 0..1 on each side, colour white, normals to be computed.
inline void fillCube(Mesh& mesh) {
  struct Side {
    Vector3 normal, u, v;
  };
  const Side sides[6] = {
      {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}}, {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}},
      {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}}, {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
  };
  for (const Side& s : sides) {
    int corner[4];
    const float us[4] = {-1, 1, 1, -1}, vs[4] = {-1, -1, 1, 1};
    for (int c = 0; c < 4; ++c) {
      const Vector3 p = s.normal + s.u * us[c] + s.v * vs[c];
      corner[c] = mesh.addVertex(p, Vector3((us[c] + 1) * 0.5f, (1 - vs[c]) * 0.5f, 0), Vector3(1, 1, 1));
    }
    mesh.addFace(corner[0], corner[1], corner[2]);
    mesh.addFace(corner[0], corner[2], corner[3]);
  }
  mesh.normalsDirty = true;
}

// A cube object of the world at `position`, scaled by `scale`.
inline int addCube(World& world, const Material& material, const Vector3& position, const Vector3& scale) {
  const int index = world.addObject(&material);
  Mesh& mesh = *world.objects[index];
  fillCube(mesh);
  mesh.position = position;
  mesh.scale = scale;
  return index;
}

// A plain coloured material: base colour from `ambient`, light colour from `diffuse`.
inline Material colouredMaterial(const Vector3& ambient, const Vector3& diffuse) {
  Material m;
  m.ambient.set(ambient.x, ambient.y, ambient.z);
  m.diffuse.set(diffuse.x, diffuse.y, diffuse.z);
  return m;
}

// The camera of a 320 x 240 window looking from `position` at `target`.
inline std::unique_ptr<Camera> makeCamera(const Vector3& position, const Vector3& target, float fieldOfView = 45) {
  auto camera = std::make_unique<Camera>("test.camera0", fieldOfView, float(windowW) / windowH, 0.1f, 100.0f,
                                         float(windowW), float(windowH), windowW / 2.0f, windowH / 2.0f);
  camera->position = position;
  camera->lookAt(target);
  return camera;
}

// A spot light of the kind the scenes make: shadowing, positional, bright.
inline LightParameters spotLight(const Vector3& direction) {
  LightParameters light;
  light.enabled = true;
  light.positional = true;
  light.castsShadow = true;
  light.ambient[0] = light.ambient[1] = light.ambient[2] = 0.0f;
  light.diffuse[0] = light.diffuse[1] = light.diffuse[2] = 1.5f;
  light.constantAttenuation = 0.5f;
  light.linearAttenuation = 0.01f;
  light.shadowMapSize = 512;
  light.spotCutoff = 60.0f;
  light.spotExponent = 4.0f;
  light.direction = direction;
  return light;
}

// The test stage: a floor slab and a cube standing over it, a camera in front
// and above, and (when asked) a shadowing spot light above and to the side.
struct Stage {
  World world;
  std::unique_ptr<Camera> camera;
  std::unique_ptr<RenderTarget> pool;
  int floor = -1, cube = -1, light = -1;

  explicit Stage(bool withLight = true) {
    camera = makeCamera(Vector3(0, 4, -7), Vector3(0, 0, 0));
    pool.reset(rtt::makePool(10));
    pool->firstFreeSlot = 1;
    world.baseLightAttenuation = 6.0f;
    floor = addCube(world, colouredMaterial(Vector3(0.15f, 0.15f, 0.2f), Vector3(0.7f, 0.7f, 0.7f)),
                    Vector3(0, -1.1f, 0), Vector3(4, 0.1f, 4));
    cube = addCube(world, colouredMaterial(Vector3(0.3f, 0.1f, 0.1f), Vector3(0.9f, 0.5f, 0.3f)),
                   Vector3(0, 0, 0), Vector3(0.6f, 0.6f, 0.6f));
    if (withLight) {
      LightParameters parameters = spotLight(Vector3(-0.35f, -1.0f, 0.25f));
      light = world.addLight(parameters, 0.1f, 100.0f, windowW, windowH);
      world.objects[light]->position = Vector3(1.4f, 4.0f, -1.0f);
    }
  }
};

// The back buffer as an image, top row first.
inline testimg::Image grab() {
  testimg::Image image;
  image.width = windowW;
  image.height = windowH;
  image.rgba = testgl::readPixels(0, 0, windowW, windowH);
  return image;
}

// Writes the picture into the run directory and compares it with the
// reference of that name.
inline testimg::Comparison matchesReference(const testimg::Image& image, const std::string& name) {
  const std::string path = "world_test_" + name;
  testimg::writePng(path, image);
  return testimg::compareToReference(path, name);
}

// Mean of the RGB channels of a w x h block at (x, y), lower-left origin.
inline double brightness(int x, int y, int w = 5, int h = 5) {
  std::vector<uint8_t> p(size_t(w) * h * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(x, y, w, h, GL_RGBA, GL_UNSIGNED_BYTE, p.data());
  double sum = 0;
  for (size_t i = 0; i < p.size(); i += 4) sum += p[i] + p[i + 1] + p[i + 2];
  return sum / (3.0 * w * h);
}

// Where a world point lands in the window after camera->apply(), in pixels
// from the lower left; uses the matrices the camera stored.
inline void project(const Camera& camera, const Vector3& p, double* x, double* y) {
  const float* m = camera.modelviewMatrix;
  const float* q = camera.projectionMatrix;
  double e[4], c[4];
  for (int r = 0; r < 4; ++r) e[r] = m[r] * p.x + m[4 + r] * p.y + m[8 + r] * p.z + m[12 + r];
  for (int r = 0; r < 4; ++r) c[r] = q[r] * e[0] + q[4 + r] * e[1] + q[8 + r] * e[2] + q[12 + r] * e[3];
  *x = (c[0] / c[3] * 0.5 + 0.5) * camera.width;
  *y = (c[1] / c[3] * 0.5 + 0.5) * camera.height;
}

// A size x size RGBA texture: colour (r, g, b) everywhere; alpha 255 inside
// the inscribed disc and 0 outside when `disc`, else 255 everywhere.
inline GLuint makeSpriteTexture(int size, uint8_t r, uint8_t g, uint8_t b, bool disc) {
  std::vector<uint8_t> data(size_t(size) * size * 4);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double dx = (x + 0.5) / size - 0.5, dy = (y + 0.5) / size - 0.5;
      uint8_t* p = &data[(size_t(y) * size + x) * 4];
      p[0] = r;
      p[1] = g;
      p[2] = b;
      p[3] = (!disc || dx * dx + dy * dy < 0.2) ? 255 : 0;
    }
  }
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, data.data());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  return texture;
}

// A billboard of the world (the first one owns the matrices).
inline Billboard* addBillboard(World& world, Camera* camera, GLuint texture, const Vector3& position, float half,
                               const Vector3& colour, int blendMode, bool castsShadow) {
  Billboard* billboard = new Billboard(camera, world.billboards.empty());
  billboard->texture = texture;
  billboard->position = position;
  billboard->halfSize = Vector3(half, half, 0);
  billboard->colour = colour;
  billboard->blendMode = blendMode;
  billboard->castsShadow = castsShadow;
  world.billboards.push_back(billboard);
  return billboard;
}

inline void clearPicture() {
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// A square from -0.5 to 0.5 in x and y at z = 0, facing +z, in two
// triangles, with texture coordinates 0 to 1 and white vertices.
inline void addSquareFaces(Mesh& mesh) {
  const int a = mesh.addVertex(Vector3(-0.5f, -0.5f, 0), Vector3(0, 0, 0), Vector3(1, 1, 1));
  const int b = mesh.addVertex(Vector3(0.5f, -0.5f, 0), Vector3(1, 0, 0), Vector3(1, 1, 1));
  const int c = mesh.addVertex(Vector3(0.5f, 0.5f, 0), Vector3(1, 1, 0), Vector3(1, 1, 1));
  const int d = mesh.addVertex(Vector3(-0.5f, 0.5f, 0), Vector3(0, 1, 0), Vector3(1, 1, 1));
  mesh.addFace(a, b, c);
  mesh.addFace(a, c, d);
}

}  // namespace wt
