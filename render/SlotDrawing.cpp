// SlotDrawing: putting slots on the current surface: drawSlot with its blend
// modes, the fades of the schedule's transitions, and the two-unit product
// the World uses for shadow masks.
#include "foundation/Capabilities.h"
#include "render/RenderTarget.h"

void applySlotBlendMode(int32_t mode) {
  switch (mode) {
    case slotBlendOff:
      glDisable(GL_BLEND);
      break;
    case slotBlendAlpha:
      // Sets the function only; GL_BLEND is left as the caller has it.
      if (hasBlendFuncSeparate)
        glBlendFuncSeparateEXT(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
      else
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      break;
    case slotBlendAdd:
      glBlendFunc(GL_ONE, GL_ONE);  // plain additive
      glEnable(GL_BLEND);
      break;
    case slotBlendSquares:
      glBlendFunc(GL_SRC_COLOR, GL_DST_COLOR);  // src^2 + dst^2: lower mid-tones, keep highlights
      glEnable(GL_BLEND);
      break;
    case slotBlendDoubleProduct:
      glBlendFunc(GL_DST_COLOR, GL_SRC_COLOR);  // 2 * src * dst
      glEnable(GL_BLEND);
      break;
    case slotBlendAlphaAdd:
      glBlendFunc(GL_SRC_ALPHA, GL_ONE);  // src * srcAlpha + dst
      glEnable(GL_BLEND);
      break;
    case slotBlendSquareAdd:
      glBlendFunc(GL_SRC_COLOR, GL_ONE);  // src^2 + dst
      glEnable(GL_BLEND);
      break;
    default:
      break;  // blending left as it is
  }
}

void RenderTarget::drawSlot(int32_t slot, int32_t blendMode, const float* scale, bool fullScreen,
                            const float* texScale, const float* texOffset, float alpha) {
  if (slot < 0 || slot >= slotCount) return;

  glDisable(GL_LIGHTING);
  if (fullScreen) pushIdentity();
  // Without fullScreen the scale lands on the caller's matrix and stays there.
  if (scale) glScalef(scale[0], scale[1], scale[2]);

  applySlotBlendMode(blendMode);

  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  glEnable(GL_TEXTURE_2D);
  bindSlotTexture(currentSource(slot));

  if (fullScreen) {
    // GL_ADD with colour (0, 0, 0, alpha): rgb = texture, alpha = texture alpha * alpha.
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glColor4f(0, 0, 0, alpha);
  }

  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);

  float u0 = 0, v0 = 0, u1 = maxU, v1 = maxV;
  if (texScale) {
    u1 = texScale[0] * maxU;
    v1 = texScale[1] * maxV;
    if (texOffset) {  // an offset without a scale is ignored
      u0 = texOffset[0];
      v0 = texOffset[1];
      u1 += texOffset[0];
      v1 += texOffset[1];
    }
  }
  glBegin(GL_QUADS);
  glTexCoord2f(u0, v0);
  glVertex3f(-1, -1, -1);
  glTexCoord2f(u1, v0);
  glVertex3f(1, -1, -1);
  glTexCoord2f(u1, v1);
  glVertex3f(1, 1, -1);
  glTexCoord2f(u0, v1);
  glVertex3f(-1, 1, -1);
  glEnd();

  if (fullScreen) popBoth();
}

void RenderTarget::drawSlotFaded(int32_t slot, float alpha, int32_t blendSelect) {
  // The slot is not checked here; slots outside the pool bind texture 0.
  pushIdentity();
  switch (blendSelect) {
    case 0:
      glBlendFunc(GL_ONE, GL_ONE);
      break;
    case 1:
      glBlendFunc(GL_ONE, GL_ZERO);
      break;
    case 2:
      glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      break;
    default:
      break;
  }
  glDisable(GL_COLOR_MATERIAL);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glDisable(GL_CULL_FACE);
  glEnable(GL_BLEND);
  bindSlotTexture(currentSource(slot));
  glColor4f(1, 1, 1, alpha);
  screenQuad();
  popBoth();
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}

void RenderTarget::crossFade(float amount, int32_t fromSlot, int32_t toSlot) {
  if (fromSlot < 0 || fromSlot >= slotCount || toSlot < 0 || toSlot >= slotCount) return;
  pushIdentity();
  glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glDisable(GL_CULL_FACE);
  glDisable(GL_LIGHTING);
  glEnable(GL_BLEND);
  // Full-size textures whatever lowResolution says.
  bindSlotTexture(textureHigh[toSlot]);
  glColor4f(1, 1, 1, amount);
  screenQuad();
  bindSlotTexture(textureHigh[fromSlot]);
  glColor4f(1, 1, 1, 1.0f - amount);
  screenQuad();
  popBoth();
}

void RenderTarget::combineSlots(int32_t slotA, int32_t slotB, bool useCombine, bool additive) {
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glEnable(GL_TEXTURE_2D);
  bindSlotTexture(nameAt(lowResolutionB != 0 ? textureLow : textureHigh, slotB));
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);

  glActiveTextureARB(GL_TEXTURE1_ARB);
  glEnable(GL_TEXTURE_2D);
  bindSlotTexture(nameAt(lowResolution != 0 ? textureLow : textureHigh, slotA));
  if (!useCombine) {
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);  // A x B
  } else {
    // Source 0 is this unit's texture (A), source 1 the previous unit (B):
    // rgb = (1 - A) x B, alpha = (1 - A.alpha) x B.alpha.
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_MODULATE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_MODULATE);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND1_ALPHA, GL_SRC_ALPHA);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND0_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND1_RGB, GL_SRC_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND0_RGB, GL_ONE_MINUS_SRC_COLOR);
  }

  // Out-of-pool slots stop here, with both units left as just set.
  if (slotA < 0 || slotA >= slotCount || slotB < 0 || slotB >= slotCount) return;

  pushIdentity();
  if (additive) {
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
  } else {
    glDisable(GL_BLEND);
  }
  glDisable(GL_CULL_FACE);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glColor4f(0, 0, 0, 1);

  const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  const float coords[4][2] = {{0, 0}, {maxU, 0}, {maxU, maxV}, {0, maxV}};
  glBegin(GL_QUADS);
  for (int k = 0; k < 4; ++k) {
    glMultiTexCoord2fARB(GL_TEXTURE0_ARB, coords[k][0], coords[k][1]);
    glMultiTexCoord2fARB(GL_TEXTURE1_ARB, coords[k][0], coords[k][1]);
    glVertex3f(corners[k][0], corners[k][1], -1);
  }
  glEnd();

  popBoth();
  glActiveTextureARB(GL_TEXTURE1_ARB);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glDisable(GL_TEXTURE_2D);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}
