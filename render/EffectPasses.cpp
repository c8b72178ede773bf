// EffectPasses: the library of screen-space passes that the production does
// not run: single-quad blends of slots, textured quads not bound to slots, a
// volume slice, and multi-pass blurs through a slot's alternate texture.
//
// Passes on the pixel quad push and load identity on GL_MODELVIEW only and
// expect a projection in pixels; their texture coordinates run to 1, so they
// want a render size equal to the texture size. Where a pass draws at colour
// (0, 0, 0, a) it sets GL_ADD, so that the colour passes the texture through
// and a scales its alpha.
#include <cmath>

#include "foundation/Capabilities.h"
#include "render/RenderTarget.h"

namespace {

const float tapAlpha = 0.25390625f;  // 65/256, the tap alpha of the blurs
const double halfPi = 1.570796326794895;

void setEnv(GLint mode) { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, mode); }

void pushModelviewIdentity() {
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
}

void popModelview() {
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
}

// A quad over x0..x1, y0..y1 at z -1 with texture coordinates u0..u1, v0..v1.
void texturedQuad(float x0, float y0, float x1, float y1, float u0, float v0, float u1, float v1) {
  glBegin(GL_QUADS);
  glTexCoord2f(u0, v0);
  glVertex3f(x0, y0, -1);
  glTexCoord2f(u1, v0);
  glVertex3f(x1, y0, -1);
  glTexCoord2f(u1, v1);
  glVertex3f(x1, y1, -1);
  glTexCoord2f(u0, v1);
  glVertex3f(x0, y1, -1);
  glEnd();
}

// The blend table of the quads not bound to slots: drawSlot's modes 0 to 2,
// then 3 SRC_ALPHA, DST_ALPHA and 4 SRC_ALPHA, ONE; other modes change nothing.
void quadBlend(int32_t mode) {
  if (mode == 3) {
    glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
    glEnable(GL_BLEND);
  } else if (mode == 4) {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glEnable(GL_BLEND);
  } else if (mode < 3) {
    applySlotBlendMode(mode);
  }
}

}  // namespace

// ============================================================================
// Single quads and blends
// ============================================================================

void RenderTarget::multiplySlot(int32_t slot) {
  pushModelviewIdentity();
  setEnv(GL_ADD);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ZERO, GL_SRC_COLOR);  // destination x image
  bindSlotTexture(nameAt(textureHigh, slot));
  glColor4f(0, 0, 0, 1);
  pixelQuad(false);
  popModelview();
}

void RenderTarget::maskSlots(int32_t slotA, int32_t slotB) {
  pushModelviewIdentity();
  setEnv(GL_ADD);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  glEnable(GL_BLEND);
  glColor4f(0, 0, 0, 1);
  glBlendFunc(GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR);
  bindSlotTexture(nameAt(textureHigh, slotB));
  pixelQuad(false);
  glBlendFunc(GL_ZERO, GL_SRC_COLOR);
  bindSlotTexture(nameAt(textureHigh, slotA));
  pixelQuad(false);
  popModelview();
}

void RenderTarget::invertSlot(int32_t slot) {
  bindSlotTexture(currentSource(slot));
  if (slot < 0 || slot >= slotCount) return;
  pushIdentity();
  glDisable(GL_BLEND);
  glDisable(GL_TEXTURE_2D);
  setEnv(GL_ADD);
  glClearColor(1, 1, 1, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ZERO, GL_ONE_MINUS_SRC_COLOR);  // white x (1 - image)
  glEnable(GL_TEXTURE_2D);
  glDisable(GL_CULL_FACE);
  glColor4f(0, 0, 0, 1);
  screenQuad();
  popBoth();
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  setEnv(GL_MODULATE);
}

void RenderTarget::showSlotAlone(int32_t slot, float alpha) {
  pushModelviewIdentity();
  glClear(GL_COLOR_BUFFER_BIT);
  setEnv(GL_ADD);
  glDisable(GL_CULL_FACE);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  bindSlotTexture(currentSource(slot));
  glColor4f(0, 0, 0, alpha);
  pixelQuad(lowResolution != 0);
  popModelview();
}

void RenderTarget::fadeToColour(float alpha, float red, float green, float blue) {
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glDisable(GL_TEXTURE_2D);
  glColor4f(red, green, blue, alpha);
  pixelQuad(lowResolution != 0);
  glEnable(GL_TEXTURE_2D);
  popModelview();
}

void RenderTarget::mixDraw(GLenum destination, int32_t slotA, int32_t slotB, float alphaA, float alphaB,
                           float brightnessA, float brightnessB) {
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, destination);
  setEnv(GL_ADD);  // the brightness adds to the image
  bindSlotTexture(nameAt(lowResolutionB != 0 ? textureLow : textureHigh, slotB));
  glColor4f(brightnessB, brightnessB, brightnessB, alphaB);
  pixelQuad(lowResolutionQuadB != 0);
  bindSlotTexture(nameAt(lowResolution != 0 ? textureLow : textureHigh, slotA));
  glColor4f(brightnessA, brightnessA, brightnessA, alphaA);
  pixelQuad(lowResolutionQuad != 0);
  popModelview();
}

void RenderTarget::mixSlots(int32_t slotA, int32_t slotB, float alphaA, float alphaB, float brightnessA,
                            float brightnessB) {
  mixDraw(GL_DST_ALPHA, slotA, slotB, alphaA, alphaB, brightnessA, brightnessB);
}

void RenderTarget::mixSlotsBright(int32_t slotA, int32_t slotB, float alphaA, float alphaB, float brightnessA,
                                  float brightnessB) {
  mixDraw(GL_DST_COLOR, slotA, slotB, alphaA, alphaB, brightnessA, brightnessB);
}

void RenderTarget::drawSlotThumbnail(int32_t slot) {
  pushModelviewIdentity();
  glTranslatef(-1.0f, -1.5f, -1.2f);
  setEnv(GL_ADD);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  bindSlotTexture(nameAt(textureHigh, slot));
  glColor4f(0, 0, 0, 0.5f);
  pixelQuad(false);
  popModelview();
}

// ============================================================================
// Textured quads not bound to slots
// ============================================================================

void RenderTarget::drawTextureQuad(GLuint textureId, int32_t blendMode, const float* tint, float alpha,
                                   const float* halfExtent, bool repeat) {
  glBindTexture(GL_TEXTURE_2D, textureId);
  glDisable(GL_COLOR_MATERIAL);
  glEnable(GL_TEXTURE_2D);
  const GLint wrap = repeat ? GL_REPEAT : GL_CLAMP;
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  const float w = halfExtent ? halfExtent[0] : 1.0f;
  const float h = halfExtent ? halfExtent[1] : 1.0f;
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  quadBlend(blendMode);
  if (tint)
    glColor4f(tint[0], tint[1], tint[2], alpha);
  else
    glColor4f(0, 0, 0, alpha);
  // Row 0 of an image is its top: (0, 1) at the lower left keeps it upright.
  texturedQuad(-w, -h, w, h, 0, 1, 1, 0);
}

void RenderTarget::drawTextureQuadTwoUnits(GLuint textureId, GLuint secondTextureId, int32_t blendMode,
                                           const float* tint, float alpha, const float* halfExtent, bool repeat,
                                           const float* secondOffset, const float* secondScale) {
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glBindTexture(GL_TEXTURE_2D, textureId);
  glDisable(GL_COLOR_MATERIAL);
  glEnable(GL_TEXTURE_2D);
  const GLint wrap = repeat ? GL_REPEAT : GL_CLAMP;
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);

  glActiveTextureARB(GL_TEXTURE1_ARB);
  glEnable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, secondTextureId);
  setEnv(GL_ADD);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  glActiveTextureARB(GL_TEXTURE0_ARB);

  const float w = halfExtent ? halfExtent[0] : 1.0f;
  const float h = halfExtent ? halfExtent[1] : 1.0f;
  const float ox = secondOffset ? secondOffset[0] : 0.0f, oy = secondOffset ? secondOffset[1] : 0.0f;
  const float sx = secondScale ? secondScale[0] : 1.0f, sy = secondScale ? secondScale[1] : 1.0f;
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  quadBlend(blendMode);
  if (tint)
    glColor4f(tint[0], tint[1], tint[2], alpha);
  else
    glColor4f(0, 0, 0, alpha);

  const float corners[4][2] = {{-w, -h}, {w, -h}, {w, h}, {-w, h}};
  const float first[4][2] = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
  const float second[4][2] = {{ox, oy + sy}, {ox + sx, oy + sy}, {ox + sx, oy}, {ox, oy}};
  glBegin(GL_QUADS);
  for (int k = 0; k < 4; ++k) {
    glMultiTexCoord2fARB(GL_TEXTURE0_ARB, first[k][0], first[k][1]);
    glMultiTexCoord2fARB(GL_TEXTURE1_ARB, second[k][0], second[k][1]);
    glVertex3f(corners[k][0], corners[k][1], -1);
  }
  glEnd();

  glActiveTextureARB(GL_TEXTURE1_ARB);
  setEnv(GL_MODULATE);
  glDisable(GL_TEXTURE_2D);
  glActiveTextureARB(GL_TEXTURE0_ARB);
}

void RenderTarget::drawVolumeSlice(GLuint textureId, int32_t blendMode, const float* scale, bool fullScreen,
                                   const float* texScale, float sliceCoordinate, GLuint maskTexture) {
  glDisable(GL_LIGHTING);
  if (fullScreen) pushIdentity();
  if (scale) glScalef(scale[0], scale[1], scale[2]);
  // drawSlot's table, but for mode 5, which blends by alpha here; 6 and up change nothing.
  if (blendMode == 5) {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
  } else if (blendMode < 5) {
    applySlotBlendMode(blendMode);
  }

  const bool masked = maskTexture != 0;
  if (masked) {
    glActiveTextureARB(GL_TEXTURE1_ARB);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, maskTexture);
    setEnv(GL_MODULATE);
  }
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_TEXTURE_2D);
  glEnable(GL_TEXTURE_3D);
  glBindTexture(GL_TEXTURE_3D, textureId);
  if (fullScreen) {
    setEnv(GL_ADD);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glColor4f(0, 0, 0, 1);
  }
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);

  const float su = texScale ? texScale[0] : 1.0f, sv = texScale ? texScale[1] : 1.0f;
  const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  const float coords[4][2] = {{0, 0}, {su, 0}, {su, sv}, {0, sv}};
  const float maskCoords[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  glBegin(GL_QUADS);
  for (int k = 0; k < 4; ++k) {
    if (masked) {
      glMultiTexCoord3fARB(GL_TEXTURE0_ARB, coords[k][0], coords[k][1], sliceCoordinate);
      glMultiTexCoord2fARB(GL_TEXTURE1_ARB, maskCoords[k][0], maskCoords[k][1]);
    } else {
      glTexCoord3f(coords[k][0], coords[k][1], sliceCoordinate);
    }
    glVertex3f(corners[k][0], corners[k][1], -1);
  }
  glEnd();

  if (masked) {
    glActiveTextureARB(GL_TEXTURE1_ARB);
    glDisable(GL_TEXTURE_2D);
    glActiveTextureARB(GL_TEXTURE0_ARB);
  }
  glDisable(GL_TEXTURE_3D);
  glEnable(GL_TEXTURE_2D);
  if (fullScreen) popBoth();
}

// ============================================================================
// Multi-pass blurs
// ============================================================================

namespace {

// Copies the read buffer into the bound texture, whole texture area.
void copyBound(int32_t x, int32_t y, int32_t w, int32_t h) { glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, x, y, w, h); }

}  // namespace

void RenderTarget::accumulateSlot(int32_t slot, int32_t iterations, float brightness) {
  const bool low = lowResolution != 0;
  const GLuint alternate = nameAt(low ? textureLowAlternate : textureHighAlternate, slot);
  pushIdentity();
  glBlendFunc(GL_ONE, GL_ONE);
  setEnv(GL_MODULATE);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  glEnable(GL_BLEND);
  glClearColor(0, 0, 0, 0);
  glColor4f(brightness, brightness, brightness, 1);
  if (brightness != 1.0f)
    glEnable(GL_COLOR_MATERIAL);
  else
    glDisable(GL_COLOR_MATERIAL);
  for (int32_t k = 0; k < iterations; ++k) {
    bindSlotTexture(k == 0 ? currentSource(slot) : alternate);
    screenQuad();
    screenQuad();  // twice: each iteration doubles the picture
    if (k != iterations - 1) {
      bindSlotTexture(alternate);
      if (low)
        copyBound(lowCopyOriginX, lowCopyOriginY, lowWidth, lowHeight);
      else
        copyBound(copyOriginX, copyOriginY, width, height);
      glClear(GL_COLOR_BUFFER_BIT);
    }
  }
  popBoth();
}

void RenderTarget::blurCrossFade(float amount, int32_t slotA, int32_t slotB) {
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  glEnable(GL_TEXTURE_2D);
  setEnv(GL_ADD);
  const int32_t slots[2] = {slotA, slotB};
  const float factors[2] = {amount, 1.0f - amount};
  for (int n = 0; n < 2; ++n) {
    const GLuint alternate = nameAt(textureHighAlternate, slots[n]);
    const float f = factors[n];
    for (int i = 0; i < 7; ++i) {
      const float s = (float(i + 1) * 0.2f) / 7.0f;
      glClear(GL_COLOR_BUFFER_BIT);
      bindSlotTexture(i == 0 ? nameAt(textureHigh, slots[n]) : alternate);
      glColor4f(0, 0, 0, tapAlpha);
      for (int v = 0; v < 2; ++v)
        for (int u = 0; u < 2; ++u) {
          const float ou = (float(u) * s - s * 0.5f) * f, ov = (float(v) * s - s * 0.5f) * f;
          texturedQuad(float(-halfWidth), float(-halfHeight), float(halfWidth), float(halfHeight), ou, ov, ou + 1,
                       ov + 1);
        }
      bindSlotTexture(alternate);
      copyBound(copyOriginX, copyOriginY, width, height);
    }
  }
  glClear(GL_COLOR_BUFFER_BIT);
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  bindSlotTexture(nameAt(textureHighAlternate, slotB));
  glColor4f(0, 0, 0, amount);
  pixelQuad(false);
  bindSlotTexture(nameAt(textureHighAlternate, slotA));
  glColor4f(0, 0, 0, 1.0f - amount);
  pixelQuad(false);
  // The last twentieth of the fade sharpens up to slotB itself.
  float t = (amount - 0.95f) * 20.0f;
  t = t < 0 ? 0 : (t > 1 ? 1 : t);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  bindSlotTexture(nameAt(textureHigh, slotB));
  glColor4f(0, 0, 0, t);
  pixelQuad(false);
  popModelview();
}

void RenderTarget::stripBlur(int32_t slot, int32_t passes, float spreadX, float spreadY, float red, float green,
                             float blue, int32_t stripCount, const float* stripWeights) {
  const bool low = lowResolution != 0;
  const GLuint alternate = nameAt(low ? textureLowAlternate : textureHighAlternate, slot);
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  glEnable(GL_TEXTURE_2D);
  setEnv(GL_MODULATE);
  const int32_t strips = stripCount - 1;
  for (int32_t pass = 0; pass < passes; ++pass) {
    glClear(GL_COLOR_BUFFER_BIT);
    bindSlotTexture(pass == 0 ? currentSource(slot) : alternate);
    glColor4f(red, green, blue, tapAlpha);
    const float growth = float(pass + 1) / float(passes);
    for (int v = 0; v < 2; ++v)
      for (int u = 0; u < 2; ++u) {
        if (low || strips < 1 || !stripWeights) {
          pixelQuad(low);
          continue;
        }
        // Horizontal strips, each with the spread its edge weights give.
        auto offsetX = [&](float w) {
          const float sx = float(lowWidth) * (1.0f / 1024.0f) * spreadX * w * growth;
          return float(u) * sx - sx * 0.5f;
        };
        auto offsetY = [&](float w) {
          const float sy = float(lowHeight) * (1.0f / 512.0f) * spreadY * w * growth;
          return float(v) * sy - sy * 0.5f;
        };
        glBegin(GL_QUADS);
        for (int32_t j = 0; j < strips; ++j) {
          const float w0 = stripWeights[j], w1 = stripWeights[j + 1];
          const float y0 = -float(halfHeight) + float(j) * 2.0f * float(halfHeight) / float(strips);
          const float y1 = -float(halfHeight) + float(j + 1) * 2.0f * float(halfHeight) / float(strips);
          const float t0 = offsetY(w0) + float(j) / float(strips);
          const float t1 = offsetY(w1) + float(j + 1) / float(strips);
          glTexCoord2f(offsetX(w0), t0);
          glVertex3f(-float(halfWidth), y0, -1);
          glTexCoord2f(offsetX(w0) + 1, t0);
          glVertex3f(float(halfWidth), y0, -1);
          glTexCoord2f(offsetX(w1) + 1, t1);
          glVertex3f(float(halfWidth), y1, -1);
          glTexCoord2f(offsetX(w1), t1);
          glVertex3f(-float(halfWidth), y1, -1);
        }
        glEnd();
      }
    if (pass != passes - 1) {
      bindSlotTexture(alternate);
      if (low)
        copyBound(lowCopyOriginX, lowCopyOriginY, lowWidth, lowHeight);
      else
        copyBound(copyOriginX, copyOriginY, width, height);
    }
  }
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  setEnv(GL_ADD);
  popModelview();
}

void RenderTarget::ghostTrail(int32_t slot, int32_t passes, float alpha, float angle, float angleExtra, float spread,
                              float driftX, float driftY) {
  const bool low = lowResolution != 0;
  const GLuint alternate = nameAt(low ? textureLowAlternate : textureHighAlternate, slot);
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glEnable(GL_TEXTURE_2D);
  const double b = double(angle) + double(angleExtra) * halfPi;
  for (int32_t i = 0; i < passes; ++i) {
    const double s = double(i + 1) * spread / passes;
    const double d = -(s / std::pow(1.13, i) - spread * 0.1) * i;
    const float x = float(d * (std::sin(double(angle)) + std::cos(double(angle))));
    const float y = float(d * (std::cos(b) + std::sin(b)));
    glColor4f(ghostColour[0], ghostColour[1], ghostColour[2],
              float(alpha - std::sqrt(double(i) / passes) * ghostFade));
    bindSlotTexture(i == 0 ? currentSource(slot) : alternate);
    const float w = float(low ? lowHalfWidth : halfWidth), h = float(low ? lowHalfHeight : halfHeight);
    texturedQuad(-w, -h, w, h, -driftX * x - x, -driftY * y - y, 1 + x - driftX * x, 1 + y - driftY * y);
    if (i != passes - 1) {
      bindSlotTexture(alternate);
      if (low)
        copyBound(lowCopyOriginX, lowCopyOriginY, lowWidth, lowHeight);
      else
        copyBound(copyOriginX, copyOriginY, width, height);
    }
  }
  popModelview();
}

void RenderTarget::flareTunnel(int32_t slot, float angle, float strength, float rate, float shiftX, float shiftY,
                               float baseAlpha) {
  float a = baseAlpha + 0.2f + (strength - 1.6f) * 0.18f;
  if (a < 0.2f) a = 0.2f;
  const GLuint alternate = nameAt(textureHighAlternate, slot);
  pushModelviewIdentity();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  glEnable(GL_TEXTURE_2D);
  setEnv(GL_ADD);
  for (int i = 0; i < 9; ++i) {
    const double c = i / 9.0;
    const double e = std::pow(1.05, (i + 1) * double(strength) * rate) * 1.3 * -256.0;
    const double ox = shiftX * 0.5 * (c - 0.5), oy = shiftY * 0.5 * (c - 0.5);
    bindSlotTexture(i == 0 ? nameAt(textureHigh, slot) : alternate);
    const double turn = double(angle) * (c + 0.1) * 103.0;
    const float p = float(ox * 0.001953125), q = float(oy * 0.00390625);
    // Corners: (e, e) turned by 0, -pi/2, -pi, -3pi/2; with e < 0 that is
    // lower left, upper left, upper right, lower right of the unturned square.
    const float coords[4][2] = {{p, q}, {p, q + 1}, {p + 1, q + 1}, {p + 1, q}};
    glColor4f(0, 0, 0, a);
    glBegin(GL_QUADS);
    for (int k = 0; k < 4; ++k) {
      const double r = -halfPi * k;
      double x = e * std::cos(r) - e * std::sin(r) - ox;
      double y = e * std::sin(r) + e * std::cos(r) - oy;
      const double tx = x * std::cos(turn) - y * std::sin(turn) + 2 * ox;
      const double ty = x * std::sin(turn) + y * std::cos(turn) + 2 * oy;
      glTexCoord2f(coords[k][0], coords[k][1]);
      glVertex3f(float(tx), float(ty * 0.5), -1);
    }
    glEnd();
    bindSlotTexture(alternate);
    copyBound(copyOriginX, copyOriginY, width, height);
  }
  glClear(GL_COLOR_BUFFER_BIT);
  bindSlotTexture(alternate);
  glColor4f(0, 0, 0, 1);
  pixelQuad(false);
  popModelview();
}
