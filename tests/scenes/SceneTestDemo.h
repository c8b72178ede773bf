// SceneTestDemo: a Demo for building production scenes inside a test process.
// It opens no display of its own (the test window of GLTestContext is the GL
// context), loads the production's texture table and cube map from the run
// directory, and makes the ten-slot RenderTarget pool for a 320 x 240 picture.
// One per process, never destroyed: the Demo's destructor ends SDL, and with
// it the test window.
#pragma once
#include <GL/glew.h>

#include "core/Demo.h"
#include "core/OstravineDemo.h"
#include "foundation/Random.h"
#include "foundation/Vector3.h"
#include "render/RenderTarget.h"
#include "support/GLTestContext.h"
#include "texture/TextureStore.h"

namespace scenetest {

constexpr int width = 320;
constexpr int height = 240;

class SceneTestDemo : public Demo {
 public:
  SceneTestDemo() : Demo("scene test", width, height, -1, -1, true, 32, false, false, false) {
    areaWidth = width;
    areaHeight = height;
    targetWidth = 512;
    targetHeight = 256;
    targetLowWidth = 256;
    targetLowHeight = 128;
    effectiveWidth = width;
    effectiveHeight = height;
    effectiveLowWidth = width / 2;
    effectiveLowHeight = height / 2;
    textures = new TextureStore;
    const Vector3 white(1, 1, 1);
    for (const TextureTableRow& row : productionTextures) {
      textures->loadTexture(row.file, row.name, row.whiteScale ? &white : nullptr, nullptr, false, {}, 1.0f, 0,
                            false);
      glGenerateMipmapEXT(GL_TEXTURE_2D);
    }
    textures->loadTexture("./images/bill.png", "cubemap.bill", &white, nullptr, true,
                          {"./images/black.png", "./images/black.png", "./images/black.png", "./images/black.png",
                           "./images/bill.png", "./images/black.png"},
                          1.0f, 0, false);
    glGenerateMipmapEXT(GL_TEXTURE_CUBE_MAP);
    renderTargets = new RenderTarget(targetWidth, targetHeight, targetLowWidth, targetLowHeight, effectiveWidth,
                                     effectiveHeight, effectiveLowWidth, effectiveLowHeight, 10);
    renderTargets->firstFreeSlot = 1;  // one scene playing, as in the production
  }
  int32_t init() override { return 0; }
};

// The process's test demo, made on first use (needs the GL window open).
inline SceneTestDemo& demo() {
  static SceneTestDemo* d = new SceneTestDemo;  // left alive to the end, see above
  return *d;
}

// The generator state after seeding with `seed` and drawing `draws` numbers.
inline uint32_t stateAfter(uint32_t seed, int draws) {
  crtSrand(seed);
  for (int i = 0; i < draws; ++i) crtRand();
  return crtRandState();
}

}  // namespace scenetest
