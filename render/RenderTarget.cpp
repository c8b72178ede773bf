// RenderTarget: slot allocation, the target stack and the back-buffer copy.
#include "render/RenderTarget.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "foundation/Capabilities.h"
#include "render/GLErrors.h"

bool lazySlotStorage = false;

namespace {

// Sets up one slot colour texture: clamped and linear. Its image storage
// comes later, on first use (RenderTarget::prepareStorage).
void setUpSlotTexture(GLuint name) {
  glBindTexture(GL_TEXTURE_2D, name);
  // Deliberate: GL refuses an alignment of 0 (GL_INVALID_VALUE) and keeps the
  // old value. The call has no meaning here and stays as it always was; its
  // error is dropped so that pass boundaries report only others.
  checkGLErrors("slot texture set-up");
  glPixelStorei(GL_UNPACK_ALIGNMENT, 0);
  dropRefusedCallErrors();
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

}  // namespace

RenderTarget::RenderTarget(int32_t width_, int32_t height_, int32_t lowWidth_, int32_t lowHeight_,
                           int32_t effectiveWidth_, int32_t effectiveHeight_, int32_t effectiveLowWidth_,
                           int32_t effectiveLowHeight_, int32_t count) {
  // Everything not written below reads as 0: names of unused slots included.
  std::memset(stackSlot, 0, sizeof stackSlot);
  std::memset(framebufferHigh, 0, sizeof framebufferHigh);
  std::memset(framebufferHighAlternate, 0, sizeof framebufferHighAlternate);
  std::memset(framebufferLow, 0, sizeof framebufferLow);
  std::memset(framebufferLowAlternate, 0, sizeof framebufferLowAlternate);
  std::memset(depthHigh, 0, sizeof depthHigh);
  std::memset(depthLow, 0, sizeof depthLow);
  std::memset(textureHigh, 0, sizeof textureHigh);
  std::memset(textureHighAlternate, 0, sizeof textureHighAlternate);
  std::memset(textureLow, 0, sizeof textureLow);
  std::memset(textureLowAlternate, 0, sizeof textureLowAlternate);
  std::memset(storageMade, 0, sizeof storageMade);

  // 1. Slot count and the four texture arrays with their saved copies.
  slotCount = count < maxSlots ? count : maxSlots;
  if (slotCount < 0) slotCount = 0;  // a negative count has no slots
  storageMissing = 4 * slotCount;
  if (slotCount > 0) {
    glGenTextures(slotCount, textureHigh);
    glGenTextures(slotCount, textureHighAlternate);
    glGenTextures(slotCount, textureLow);
    glGenTextures(slotCount, textureLowAlternate);
  }
  std::memcpy(textureHighSaved, textureHigh, sizeof textureHigh);
  std::memcpy(textureHighAlternateSaved, textureHighAlternate, sizeof textureHighAlternate);
  std::memcpy(textureLowSaved, textureLow, sizeof textureLow);
  std::memcpy(textureLowAlternateSaved, textureLowAlternate, sizeof textureLowAlternate);

  // 2. Stack, sizes, selectors, origins.
  firstFreeSlot = 0;
  stackDepth = 0;
  for (int32_t i = 0; i < maxSlots; ++i) {
    stackActive[i] = false;
    stackWithDepth[i] = false;
    stackAlternate[i] = false;
    stackLow[i] = false;
  }
  width = width_;
  height = height_;
  halfWidth = width / 2;
  halfHeight = height / 2;
  lowWidth = lowWidth_;
  lowHeight = lowHeight_;
  lowHalfWidth = lowWidth / 2;
  lowHalfHeight = lowHeight / 2;
  effectiveWidth = effectiveWidth_;
  effectiveHeight = effectiveHeight_;
  effectiveLowWidth = effectiveLowWidth_;
  effectiveLowHeight = effectiveLowHeight_;
  lowResolution = 0;
  lowResolutionQuad = 0;
  lowResolutionB = 0;
  lowResolutionQuadB = 0;
  copyOriginX = copyOriginY = 0;
  lowCopyOriginX = lowCopyOriginY = 0;

  // 3. Texture set-up, slot by slot, then the image storage (about 20 MiB a
  // slot at 1280 x 720). With lazySlotStorage the storage waits: each texture
  // gets it the first time it is drawn into, copied into or bound for
  // reading, so slots never used cost no memory and the start-up does not
  // wait for the driver to allocate and clear them.
  for (int32_t s = 0; s < slotCount; ++s) {
    setUpSlotTexture(textureHigh[s]);
    setUpSlotTexture(textureHighAlternate[s]);
    setUpSlotTexture(textureLow[s]);
    setUpSlotTexture(textureLowAlternate[s]);
  }
  if (!lazySlotStorage) prepareAllStorage();

  // 4.
  ghostFade = 0;
  ghostColour[0] = ghostColour[1] = ghostColour[2] = 0;
  useFramebuffers = useFramebufferObjects;
  if (useFramebuffers && (!glGenFramebuffersEXT || !glGenRenderbuffersEXT)) {
    // Only reachable when a caller forces the flag on a driver without
    // GL_EXT_framebuffer_object: say so and take the copy path.
    printf("render targets: framebuffer objects unavailable, copying from the back buffer\n");
    useFramebuffers = false;
  }

  // 5. Framebuffers: one per texture, a depth renderbuffer per size and slot.
  if (useFramebuffers && slotCount > 0) {
    glGenFramebuffersEXT(slotCount, framebufferHigh);
    glGenFramebuffersEXT(slotCount, framebufferLow);
    glGenFramebuffersEXT(slotCount, framebufferHighAlternate);
    glGenFramebuffersEXT(slotCount, framebufferLowAlternate);
    for (int32_t s = 0; s < slotCount; ++s) {
      const GLuint fbs[4] = {framebufferHigh[s], framebufferLow[s], framebufferHighAlternate[s],
                             framebufferLowAlternate[s]};
      const GLuint texs[4] = {textureHigh[s], textureLow[s], textureHighAlternate[s], textureLowAlternate[s]};
      for (int k = 0; k < 4; ++k) {
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbs[k]);
        glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, texs[k], 0);
      }
    }
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glGenRenderbuffersEXT(slotCount, depthHigh);
    glGenRenderbuffersEXT(slotCount, depthLow);
    for (int32_t s = 0; s < slotCount; ++s) {
      const GLuint fbs[4] = {framebufferHigh[s], framebufferHighAlternate[s], framebufferLow[s],
                             framebufferLowAlternate[s]};
      for (int k = 0; k < 4; ++k) {
        const bool low = k >= 2;
        const GLuint depth = low ? depthLow[s] : depthHigh[s];
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbs[k]);
        glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, depth);
        // Storage is given again for the renderbuffer both framebuffers share.
        glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT, low ? lowWidth : width,
                                 low ? lowHeight : height);
        glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, depth);
      }
    }
    // Only the last framebuffer bound is tested; failure ends the run silently.
    // Its colour texture gets its storage first, so that the test judges the
    // sizes and formats rather than storage not made yet.
    prepareStorage(textureLowAlternate[slotCount - 1]);
    if (glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT) != GL_FRAMEBUFFER_COMPLETE_EXT) exit(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
    // Kept as it always was: with the window bound this attaches nothing (GL
    // reports GL_INVALID_OPERATION).
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, 0);
  }

  // 6. Texture-coordinate scales of the picture inside the textures.
  maxU = float(effectiveWidth) / float(width);
  maxV = float(effectiveHeight) / float(height);
  pixelU = 1.0f / float(effectiveWidth);
  pixelV = 1.0f / float(effectiveHeight);
  maxLowU = float(effectiveLowWidth) / float(lowWidth);
  maxLowV = float(effectiveLowHeight) / float(lowHeight);
  pixelLowU = 1.0f / float(effectiveLowWidth);
  pixelLowV = 1.0f / float(effectiveLowHeight);
}

RenderTarget::~RenderTarget() {
  // The saved arrays hold the same names and need no deletion of their own.
  if (slotCount <= 0) return;
  glDeleteTextures(slotCount, textureHigh);
  glDeleteTextures(slotCount, textureHighAlternate);
  glDeleteTextures(slotCount, textureLow);
  glDeleteTextures(slotCount, textureLowAlternate);
  if (useFramebuffers) {
    glDeleteFramebuffersEXT(slotCount, framebufferHigh);
    glDeleteFramebuffersEXT(slotCount, framebufferHighAlternate);
    glDeleteFramebuffersEXT(slotCount, framebufferLow);
    glDeleteFramebuffersEXT(slotCount, framebufferLowAlternate);
    glDeleteRenderbuffersEXT(slotCount, depthHigh);
    glDeleteRenderbuffersEXT(slotCount, depthLow);
  }
}

GLuint RenderTarget::nameAt(const GLuint* names, int32_t index) {
  // Slot numbers are not checked by every pass; outside the arrays read as 0.
  return (index >= 0 && index < maxSlots) ? names[index] : 0;
}

// ============================================================================
// Storage on first use
// ============================================================================

bool RenderTarget::findSlotTexture(GLuint texture, int32_t* kind, int32_t* slot) const {
  if (texture == 0) return false;
  // The saved arrays, as nothing exchanges live entries: the kind gives the size.
  const GLuint* arrays[4] = {textureHighSaved, textureHighAlternateSaved, textureLowSaved, textureLowAlternateSaved};
  for (int32_t k = 0; k < 4; ++k) {
    for (int32_t s = 0; s < slotCount; ++s) {
      if (arrays[k][s] == texture) {
        *kind = k;
        *slot = s;
        return true;
      }
    }
  }
  return false;
}

bool RenderTarget::hasStorage(GLuint texture) const {
  int32_t kind = 0, slot = 0;
  return findSlotTexture(texture, &kind, &slot) && storageMade[kind][slot];
}

void RenderTarget::prepareStorage(GLuint texture) {
  int32_t kind = 0, slot = 0;
  if (storageMissing == 0 || !findSlotTexture(texture, &kind, &slot) || storageMade[kind][slot]) return;
  storageMade[kind][slot] = true;
  --storageMissing;
  const bool low = kind >= 2;
  // The same storage the textures once had from the start: RGBA, no data
  // (the driver clears it), so a slot read before anything was drawn into it
  // reads what it always did.
  GLint bound = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, low ? lowWidth : width, low ? lowHeight : height, 0, GL_RGBA,
               GL_UNSIGNED_BYTE, nullptr);
  glBindTexture(GL_TEXTURE_2D, GLuint(bound));
}

void RenderTarget::prepareAllStorage() {
  for (int32_t s = 0; s < slotCount; ++s) {
    prepareStorage(textureHighSaved[s]);
    prepareStorage(textureHighAlternateSaved[s]);
    prepareStorage(textureLowSaved[s]);
    prepareStorage(textureLowAlternateSaved[s]);
  }
}

void RenderTarget::bindSlotTexture(GLuint texture) {
  prepareStorage(texture);
  glBindTexture(GL_TEXTURE_2D, texture);
}

GLuint RenderTarget::currentSource(int32_t slot) const {
  return nameAt(lowResolution != 0 ? textureLow : textureHigh, slot);
}

// ============================================================================
// Target stack
// ============================================================================

void RenderTarget::beginTarget(int32_t slot, bool withDepth, bool alternate) {
  if (!useFramebuffers) return;
  assert(stackDepth >= 0 && stackDepth < maxSlots && "render target stack overflow");
  if (stackDepth < 0 || stackDepth >= maxSlots) return;
  glPushAttrib(GL_VIEWPORT_BIT);
  const int32_t e = stackDepth;
  stackLow[e] = lowResolution != 0;
  stackSlot[e] = slot;
  stackActive[e] = true;
  stackAlternate[e] = alternate;
  const bool low = stackLow[e];
  const GLuint* fbs = alternate ? (low ? framebufferLowAlternate : framebufferHighAlternate)
                                : (low ? framebufferLow : framebufferHigh);
  // The surface's colour texture gets its storage before it is drawn into.
  prepareStorage(nameAt(alternate ? (low ? textureLowAlternate : textureHighAlternate) : (low ? textureLow : textureHigh),
                        slot));
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, nameAt(fbs, slot));
  if (withDepth) {
    stackWithDepth[e] = true;
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, nameAt(lowResolution != 0 ? depthLow : depthHigh, slot));
  } else {
    stackWithDepth[e] = false;
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  }
  stackDepth = e + 1;
}

void RenderTarget::bindStackEntry(int32_t e) {
  const int32_t slot = stackSlot[e];
  const bool low = stackLow[e];
  const GLuint* fbs = stackAlternate[e] ? (low ? framebufferLowAlternate : framebufferHighAlternate)
                                        : (low ? framebufferLow : framebufferHigh);
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, nameAt(fbs, slot));
  if (stackWithDepth[e]) {
    // The depth size follows lowResolution as it is now, not the entry's own.
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, nameAt(lowResolution != 0 ? depthLow : depthHigh, slot));
  } else {
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  }
}

void RenderTarget::rebindTarget() {
  if (!useFramebuffers) return;
  if (stackDepth <= 0) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  } else {
    bindStackEntry(stackDepth - 1);
  }
}

void RenderTarget::endTarget() {
  if (!useFramebuffers || stackDepth <= 0) return;
  stackDepth -= 1;
  stackActive[stackDepth] = false;
  stackWithDepth[stackDepth] = false;
  stackAlternate[stackDepth] = false;
  stackLow[stackDepth] = false;
  glPopAttrib();
  rebindTarget();
}

// ============================================================================
// Copies
// ============================================================================

void RenderTarget::copyToSlot(int32_t slot) {
  if (lowResolution == 0) {
    glEnable(GL_BLEND);  // only on this branch: the asymmetry is how it always was
    bindSlotTexture(nameAt(textureHigh, slot));
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, copyOriginX, copyOriginY, width, height);
  } else {
    bindSlotTexture(nameAt(textureLow, slot));
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, lowCopyOriginX, lowCopyOriginY, lowWidth, lowHeight);
  }
}

void RenderTarget::restoreTextures() {
  std::memcpy(textureHigh, textureHighSaved, sizeof textureHigh);
  std::memcpy(textureHighAlternate, textureHighAlternateSaved, sizeof textureHighAlternate);
  std::memcpy(textureLow, textureLowSaved, sizeof textureLow);
  std::memcpy(textureLowAlternate, textureLowAlternateSaved, sizeof textureLowAlternate);
}

// ============================================================================
// Shared quads
// ============================================================================

void RenderTarget::pushIdentity() const {
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
}

void RenderTarget::popBoth() const {
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}

void RenderTarget::screenQuad() const {
  glBegin(GL_QUADS);
  glTexCoord2f(0, 0);
  glVertex3f(-1, -1, -1);
  glTexCoord2f(maxU, 0);
  glVertex3f(1, -1, -1);
  glTexCoord2f(maxU, maxV);
  glVertex3f(1, 1, -1);
  glTexCoord2f(0, maxV);
  glVertex3f(-1, 1, -1);
  glEnd();
}

void RenderTarget::pixelQuad(bool low) const {
  const float w = float(low ? lowHalfWidth : halfWidth);
  const float h = float(low ? lowHalfHeight : halfHeight);
  glBegin(GL_QUADS);
  glTexCoord2f(0, 0);
  glVertex3f(-w, -h, -1);
  glTexCoord2f(1, 0);
  glVertex3f(w, -h, -1);
  glTexCoord2f(1, 1);
  glVertex3f(w, h, -1);
  glTexCoord2f(0, 1);
  glVertex3f(-w, h, -1);
  glEnd();
}
