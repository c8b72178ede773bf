// GlowPass: the bloom of every scene, four-tap additive blurs between the
// alternate textures of two slots, with an optional zoom that streaks the
// glow out of the centre.
#include <cmath>

#include "foundation/Capabilities.h"
#include "render/GLErrors.h"
#include "render/RenderTarget.h"

float glowTapAlpha(float amount, float fadeOut, float alpha) {
  const float a = amount;
  return ((1.0f - a * fadeOut) * ((1.0f - a) + a * alpha) * 1.015625f) / 4.0f;
}

GlowOptions GlowOptions::shadowMaskBlur(float amount, int32_t passes) {
  GlowOptions options;
  options.amount = amount;
  options.passes = passes;
  return options;
}

GlowOptions GlowOptions::sceneGlow(float amount, int32_t passes, float alpha, float fadeOut, float zoom,
                                   float zoomPowBase, float zoomPow) {
  GlowOptions options;
  options.amount = amount;
  options.passes = passes;
  options.alpha = alpha;
  options.fadeOut = fadeOut;
  options.zoom = zoom;
  options.zoomPowBase = zoomPowBase;
  options.zoomPow = zoomPow;
  return options;
}

void RenderTarget::glowPass(int32_t slot, const GlowOptions& o) {
  glowPass(slot, o.amount, o.passes, o.spreadX, o.spreadY, o.alpha, o.tintRed, o.tintGreen, o.tintBlue, o.fadeOut,
           o.reserved, o.fullScreen, o.zoom, o.zoomPowBase, o.zoomPow);
}

float glowZoomStep(float zoom) {
  // Quantised to 1/10000: smaller zooms behave as 0 and take the clearing path.
  return float(std::trunc(zoom * 10000.0f)) / 10000.0f;
}

namespace {

void additiveBlend() {
  if (hasBlendFuncSeparate)
    glBlendFuncSeparateEXT(GL_SRC_ALPHA, GL_ONE, GL_ONE, GL_ONE);
  else
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
}

void clampedAdd() {
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
}

}  // namespace

void RenderTarget::glowPass(int32_t slot, float amount, int32_t passes, float spreadX, float spreadY, float alpha,
                            float tintRed, float tintGreen, float tintBlue, float fadeOut, int32_t reserved,
                            bool fullScreen, float zoom, float zoomPowBase, float zoomPow) {
  const float a = amount;
  const float tapAlpha = glowTapAlpha(amount, fadeOut, alpha);
  const float zq = glowZoomStep(zoom);
  const float tint[3] = {a * tintRed, a * tintGreen, a * tintBlue};  // GL_ADD makes it an additive tint

  if (fullScreen) pushIdentity();

  glDisable(GL_ALPHA_TEST);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_COLOR_MATERIAL);
  glDisable(GL_LIGHTING);
  glDepthMask(GL_FALSE);

  if (hasBlendFuncSeparate) glPixelStoref(GL_UNPACK_ALIGNMENT, 1);
  additiveBlend();

  glEnable(GL_BLEND);
  glEnable(GL_TEXTURE_2D);
  bindSlotTexture(currentSource(slot));
  clampedAdd();

  const bool low = lowResolution != 0;
  const GLuint* alternates = low ? textureLowAlternate : textureHighAlternate;

  // Draws the pass's source unblended over the surface: the framebuffer path
  // starts each pass from the previous result, as the copy path does by
  // drawing on in the back buffer.
  auto copySourceIn = [&]() {
    glBlendFunc(GL_ONE, GL_ZERO);
    glColor4f(0, 0, 0, 1);
    screenQuad();
    additiveBlend();
  };

  for (int32_t i = 0; i < passes; ++i) {
    const bool last = i == passes - 1;
    const float sx = a * spreadX * float(i + 1) / float(passes);
    const float sy = a * spreadY * float(i + 1) / float(passes);

    // Without framebuffers the texture the previous copy filled stays bound.
    if (useFramebuffers) bindSlotTexture(i == 0 ? currentSource(slot) : nameAt(alternates, slot + (i % 2)));
    clampedAdd();

    if (!last) {
      beginTarget(slot + ((i + 1) % 2), false, true);
      if (zq == 0.0f) {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
      } else if (useFramebuffers) {
        if (i == 0) {
          glClearColor(0, 0, 0, 0);
          glClear(GL_COLOR_BUFFER_BIT);
        } else {
          copySourceIn();
        }
      }
    } else if (useFramebuffers) {
      copySourceIn();  // the last pass draws on the caller's surface
    }

    // Zoom inset, powers in double.
    const float z = float(double(float(i) * zq) / std::pow(double(zoomPowBase), double(float(i) * zoomPow)));
    if (hasBlendFuncSeparate) glColor4f(tint[0], tint[1], tint[2], tapAlpha);
    for (int v = 0; v < 2; ++v) {
      for (int u = 0; u < 2; ++u) {
        const float du = (float(u) * sx - sx * 0.5f) * maxU;
        const float dv = (float(v) * sy - sy * 0.5f) * maxV;
        auto tap = [&]() {
          glBegin(GL_QUADS);
          glTexCoord2f(du + z, dv + z);
          glVertex3f(-1, -1, -1);
          glTexCoord2f(du + maxU - z, dv + z);
          glVertex3f(1, -1, -1);
          glTexCoord2f(du + maxU - z, dv + maxV - z);
          glVertex3f(1, 1, -1);
          glTexCoord2f(du + z, dv + maxV - z);
          glVertex3f(-1, 1, -1);
          glEnd();
        };
        if (hasBlendFuncSeparate) {
          tap();
        } else {
          // Colour and alpha in two draws. The 0.666667 applies on this path
          // only, so the two paths differ slightly in brightness, as accepted.
          // The alpha-only mask stays set until the next tap (or the end).
          glBlendFunc(GL_SRC_ALPHA, GL_ONE);
          glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
          glColor4f(tint[0], tint[1], tint[2], tapAlpha * 0.666667f);
          tap();
          glBlendFunc(GL_ONE, GL_ONE);
          glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
          glColor4f(0, 0, 0, tapAlpha);
          tap();
        }
      }
    }

    if (!last) {
      if (useFramebuffers) {
        endTarget();
      } else if (!low) {
        // Full size: one alternate for every pass, bound at the first.
        if (i == 0) {
          bindSlotTexture(nameAt(textureHighAlternate, (slot + 1) % 2));
          glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
          glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
        }
        glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, copyOriginX, copyOriginY, width, height);
      } else {
        // Half size: alternates 0 and 1 are shared scratch for every slot here,
        // hence modulo 2 of the sum and no slot offset.
        bindSlotTexture(nameAt(textureLowAlternate, (i + 1 + slot) % 2));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
        glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, lowCopyOriginX, lowCopyOriginY, lowWidth, lowHeight);
      }
    }
  }

  restoreTextures();
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  if (fullScreen) popBoth();
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glDepthMask(GL_TRUE);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  checkGLErrors("glow pass");
}
