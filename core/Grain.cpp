#include "core/Grain.h"

#include <GL/glew.h>

#include "foundation/Random.h"
#include "render/GLErrors.h"
#include "texture/TextureStore.h"

void fillInitialGrain(uint8_t* pixels) {
  crtSrand(123456);
  for (int32_t i = 0; i < grainSize * grainSize; ++i) {
    pixels[i * 4 + 0] = 0;
    pixels[i * 4 + 1] = 0;
    pixels[i * 4 + 2] = 0;
    pixels[i * 4 + 3] = uint8_t(int32_t(randomUnit() * 0.5 * 255.0));
  }
}

void fillFrameGrain(uint8_t* pixels, int32_t demoTimeMs) {
  crtSrand(uint32_t(demoTimeMs + 123456));
  for (int32_t i = 0; i < grainSize * grainSize; ++i) {
    const double r = randomUnit();
    pixels[i * 4 + 0] = 8;
    pixels[i * 4 + 1] = 16;
    pixels[i * 4 + 2] = 255;
    pixels[i * 4 + 3] = uint8_t(int32_t(r * r * 0.125 * 255.0));
  }
}

void drawGrainOverlay(TextureStore& textures, int32_t windowWidth, int32_t windowHeight) {
  glDisable(GL_LIGHTING);
  glDisable(GL_COLOR_MATERIAL);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glEnable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, textures.findTextureId("dynamicNoise"));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glDisable(GL_CULL_FACE);
  glDisable(GL_LIGHTING);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glColor4f(1, 1, 1, 1);
  // 256 texels over half a window pixel each: the grain never shows as blocks.
  const float u = 2 * windowWidth * 0.00390625f;
  const float v = 2 * windowHeight * 0.00390625f;
  glBegin(GL_QUADS);
  glTexCoord2f(0, 0);
  glVertex3f(-1, -1, -1);
  glTexCoord2f(u, 0);
  glVertex3f(1, -1, -1);
  glTexCoord2f(u, v);
  glVertex3f(1, 1, -1);
  glTexCoord2f(0, v);
  glVertex3f(-1, 1, -1);
  glEnd();
  glPopMatrix();
  checkGLErrors("grain overlay");
}
