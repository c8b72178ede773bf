// RenderTarget: the pool of numbered off-screen slots and the screen-space
// passes that read and write them (glow, slot drawing, fades, combines, and
// the effect library).
//
// Each slot holds a full-size and a half-size image, each with a main and an
// alternate RGBA colour texture (GL_TEXTURE_2D, power-of-two sizes in pixels;
// the picture fills the lower-left effectiveWidth x effectiveHeight of them,
// so the far corner is (maxU, maxV) in texture coordinates). Two paths:
//   useFramebuffers true:  beginTarget redirects drawing into a slot surface;
//   useFramebuffers false: beginTarget/endTarget do nothing, drawing goes to
//                          the back buffer and copyToSlot copies it over.
// Callers always write both: beginTarget, draw, endTarget, and copyToSlot if
// framebuffers are off. `lowResolution` (0 full size, 1 half size) is plain
// state the callers set before each step and leave 0.
//
// The screen quad of the passes: corners (-1,-1,-1) (1,-1,-1) (1,1,-1)
// (-1,1,-1) with both matrices at identity, texture coordinates (0,0)
// (maxU,0) (maxU,maxV) (0,maxV). The pixel quad (effect library): corners at
// +-halfWidth/+-halfHeight (or the low halves), coordinates 0..1, for a
// projection in pixels.
// Main thread only. All GL objects, image storage included, are made in the
// constructor. With lazySlotStorage set before construction (the player's
// --lazy-targets), a slot texture's image storage is instead made the first
// time the texture is drawn into, copied into or bound for reading (see
// prepareStorage): a slot never used costs no memory, and the picture is the
// same, since fresh storage reads as cleared either way.
#pragma once
#include <GL/glew.h>

#include <cstdint>

// The blend modes of drawSlot, as (source factor, destination factor). Modes
// 2 to 6 enable GL_BLEND; any other value changes nothing. The frame
// composition lays a scene with slotBlendAlpha unless the scene names another.
enum SlotBlendMode : int32_t {
  slotBlendOff = 0,            // blending disabled: the slot replaces what is there
  slotBlendAlpha = 1,          // SRC_ALPHA, ONE_MINUS_SRC_ALPHA (alpha ONE, ONE_MINUS_SRC_ALPHA where the
                               // separate function exists); sets the function only, GL_BLEND left as it is
  slotBlendAdd = 2,            // ONE, ONE: src + dst
  slotBlendSquares = 3,        // SRC_COLOR, DST_COLOR: src^2 + dst^2, lower mid-tones, highlights kept
  slotBlendDoubleProduct = 4,  // DST_COLOR, SRC_COLOR: 2 src dst
  slotBlendAlphaAdd = 5,       // SRC_ALPHA, ONE: src * srcAlpha + dst
  slotBlendSquareAdd = 6,      // SRC_COLOR, ONE: src^2 + dst
};

// The settings of one glowPass by name (see glowPass below for what each
// does). The defaults are those the World and the scenes share: a spread of
// 0.1 each way, no tint, no fade, no zoom, over the whole screen.
struct GlowOptions {
  float amount = 0;         // 0 to 1: strength, and scale of the spread
  int32_t passes = 1;       // rounds of four taps
  float spreadX = 0.1f;     // spread of the last round, in picture widths
  float spreadY = 0.1f;     // the same in picture heights
  float alpha = 1;          // mixes the tap alpha towards this as amount grows
  float tintRed = 0;        // additive tint, times amount
  float tintGreen = 0;
  float tintBlue = 0;
  float fadeOut = 0;        // dims the taps as amount grows
  int32_t reserved = 0;     // carried, not read
  bool fullScreen = true;   // identity matrices around the pass
  float zoom = 0;           // inset per round, quantised to 1/10000; 0 no zoom
  float zoomPowBase = 1.5f;
  float zoomPow = 1;

  // The blur of a soft-shadow mask: `amount`, `passes` rounds, the rest as the defaults.
  static GlowOptions shadowMaskBlur(float amount, int32_t passes);
  // A scene's bloom over its glow source, zooming out of the centre.
  static GlowOptions sceneGlow(float amount, int32_t passes, float alpha, float fadeOut, float zoom,
                               float zoomPowBase, float zoomPow);
};

// Off by default: the pool makes all its storage up front. Read by the
// constructor only.
extern bool lazySlotStorage;

class RenderTarget {
 public:
  static constexpr int32_t maxSlots = 10;

  // The first eight come from the display set-up: the render size rounded up
  // to powers of two, its half, the render size itself, its half. A count
  // above 10 is cut to 10.
  RenderTarget(int32_t width, int32_t height, int32_t lowWidth, int32_t lowHeight, int32_t effectiveWidth,
               int32_t effectiveHeight, int32_t effectiveLowWidth, int32_t effectiveLowHeight, int32_t slotCount);
  ~RenderTarget();
  RenderTarget(const RenderTarget&) = delete;
  RenderTarget& operator=(const RenderTarget&) = delete;

  // ---- Targets ------------------------------------------------------------

  // Redirects drawing to a surface of `slot`: full or half size by
  // lowResolution now, main or alternate by `alternate`. Saves the viewport
  // (glPushAttrib(GL_VIEWPORT_BIT)) but does not set it. Nothing at all
  // happens with framebuffers off. Nesting deeper than 10 is a caller error.
  void beginTarget(int32_t slot, bool withDepth, bool alternate);
  // Returns to the surface below on the stack (or the window). Nothing
  // happens with framebuffers off or an empty stack.
  void endTarget();
  // Binds the surface on top of the stack again, stack unchanged (after the
  // shadow code has used its own framebuffer).
  void rebindTarget();
  // Copies width x height (or lowWidth x lowHeight) of the read buffer into
  // the slot's main texture of the size lowResolution selects.
  void copyToSlot(int32_t slot);
  // Copies each saved texture-name array over its live array.
  void restoreTextures();

  // The main texture a pass reads for `slot`: textureHigh, or textureLow when
  // lowResolution is not 0. Slots outside the arrays give 0.
  GLuint currentSource(int32_t slot) const;

  // ---- Storage on first use ---------------------------------------------------

  // Whether `texture`, one of this pool's slot textures, has its image
  // storage yet. Other names give false.
  bool hasStorage(GLuint texture) const;
  // Gives `texture`, one of this pool's slot textures, its image storage if it
  // has none yet: RGBA of the full or half size, without data, as the driver
  // clears it. The texture bound on the active unit stays bound. Other names
  // are ignored. Every bind of a slot texture in this class goes through it.
  void prepareStorage(GLuint texture);
  // The same for every slot texture at once.
  void prepareAllStorage();

  // ---- Glow pass and slot drawing -----------------------------------------

  // Blurred, optionally zooming bloom of `slot`'s current source by `passes`
  // rounds of four additive taps, ping-ponging through the alternate textures
  // of `slot` and `slot` + 1. The last round draws into the caller's surface.
  //   tap alpha A = ((1 - amount*fadeOut) * ((1 - amount) + amount*alpha) * 1.015625) / 4
  //   spread of round i: amount * spread * (i + 1) / passes
  //   zoom inset of round i: i * zq / zoomPowBase^(i * zoomPow), zq = trunc(zoom*10000)/10000
  // Leaves depth test, lighting, colour material and alpha test off.
  void glowPass(int32_t slot, float amount, int32_t passes, float spreadX, float spreadY, float alpha, float tintRed,
                float tintGreen, float tintBlue, float fadeOut, int32_t reserved, bool fullScreen, float zoom,
                float zoomPowBase, float zoomPow);
  // The same with the settings by name; a thin call of the one above.
  void glowPass(int32_t slot, const GlowOptions& options);

  // Draws `slot`'s current source on the current surface with the screen quad.
  //   blendMode: a SlotBlendMode (above); other values leave blending untouched.
  // scale: optional 3 floats for glScalef. texScale (sx, sy): far corner at
  // (sx*maxU, sy*maxV); texOffset (ox, oy) moves all corners, only together
  // with texScale. fullScreen: identity matrices, GL_ADD, clamp, linear,
  // colour (0,0,0,alpha); without it the caller's environment stands.
  // Slots at or above slotCount are ignored.
  void drawSlot(int32_t slot, int32_t blendMode, const float* scale, bool fullScreen, const float* texScale,
                const float* texOffset, float alpha);
  // Modulated draw at colour (1,1,1,alpha). blendSelect: 0 ONE,ONE; 1 ONE,ZERO;
  // 2 SRC_ALPHA,ONE_MINUS_SRC_ALPHA; other: blending function untouched.
  void drawSlotFaded(int32_t slot, float alpha, int32_t blendSelect);
  // toSlot at alpha `amount`, then fromSlot at 1 - amount, blend
  // (SRC_ALPHA, DST_ALPHA), always the full-size textures.
  void crossFade(float amount, int32_t fromSlot, int32_t toSlot);
  // slotA x slotB (unit 1 modulating unit 0); with useCombine (1 - A) x B.
  // slotB's size by lowResolutionB, slotA's by lowResolution. additive adds
  // the product to the surface (ONE, ONE), else it overwrites.
  void combineSlots(int32_t slotA, int32_t slotB, bool useCombine, bool additive);

  // ---- Effect library (not run by the production) -------------------------

  // Destination x full-size image (blend ZERO, SRC_COLOR), pixel quad.
  void multiplySlot(int32_t slot);
  // slotB with (SRC_COLOR, ONE_MINUS_SRC_COLOR), then slotA with (ZERO, SRC_COLOR).
  void maskSlots(int32_t slotA, int32_t slotB);
  // Clears to white and draws the image with (ZERO, ONE_MINUS_SRC_COLOR): 1 - image.
  void invertSlot(int32_t slot);
  // Clears, then the image with (SRC_ALPHA, DST_ALPHA) at alpha.
  void showSlotAlone(int32_t slot, float alpha);
  // Untextured pixel quad of the colour, alpha blended.
  void fadeToColour(float alpha, float red, float green, float blue);
  // slotB then slotA, colours (brightness x3, alpha), blend (SRC_ALPHA, DST_ALPHA).
  void mixSlots(int32_t slotA, int32_t slotB, float alphaA, float alphaB, float brightnessA, float brightnessB);
  // As mixSlots with blend (SRC_ALPHA, DST_COLOR).
  void mixSlotsBright(int32_t slotA, int32_t slotB, float alphaA, float alphaB, float brightnessA, float brightnessB);
  // Half-transparent small debug picture of the full-size image.
  void drawSlotThumbnail(int32_t slot);

  // Textured quads not bound to slots. blendMode: 0 off; 1 as drawSlot mode 1;
  // 2 ONE,ONE; 3 SRC_ALPHA,DST_ALPHA; 4 SRC_ALPHA,ONE. tint: 3 floats or null
  // (0); halfExtent: 2 floats or null (1, 1). Coordinates (0,1) at the lower
  // left so an image stands upright.
  void drawTextureQuad(GLuint textureId, int32_t blendMode, const float* tint, float alpha, const float* halfExtent,
                       bool repeat);
  // As drawTextureQuad with secondTextureId added on unit 1 (GL_ADD) over
  // secondOffset (default 0, 0) to secondOffset + secondScale (default 1, 1).
  void drawTextureQuadTwoUnits(GLuint textureId, GLuint secondTextureId, int32_t blendMode, const float* tint,
                               float alpha, const float* halfExtent, bool repeat, const float* secondOffset,
                               const float* secondScale);
  // drawSlot's shape for a GL_TEXTURE_3D slice at r = sliceCoordinate; blend
  // modes 0..4 as drawSlot, 5 SRC_ALPHA,ONE_MINUS_SRC_ALPHA; optional 2D mask
  // on unit 1 (maskTexture 0: none).
  void drawVolumeSlice(GLuint textureId, int32_t blendMode, const float* scale, bool fullScreen,
                       const float* texScale, float sliceCoordinate, GLuint maskTexture);

  // Multi-pass blurs through the slot's alternate texture (tap alpha 65/256).
  // Those blending (SRC_ALPHA, DST_ALPHA) clear with the caller's clear
  // colour and add only where the surface alpha is 1: give them an opaque
  // clear colour.
  void accumulateSlot(int32_t slot, int32_t iterations, float brightness);
  void blurCrossFade(float amount, int32_t slotA, int32_t slotB);
  void stripBlur(int32_t slot, int32_t passes, float spreadX, float spreadY, float red, float green, float blue,
                 int32_t stripCount, const float* stripWeights);
  void ghostTrail(int32_t slot, int32_t passes, float alpha, float angle, float angleExtra, float spread,
                  float driftX, float driftY);
  void flareTunnel(int32_t slot, float angle, float strength, float rate, float shiftX, float shiftY,
                   float baseAlpha);

  // ---- Fields (in this order) -----------------------------------------------

  int32_t slotCount;                     // slots in use, at most 10
  int32_t firstFreeSlot;                 // written each frame: scenes playing now; scratch slots start here
  int32_t stackSlot[maxSlots];           // target stack: slot number
  int32_t stackDepth;                    // entries on the stack
  bool stackActive[maxSlots];            // target stack: entry in use
  bool stackWithDepth[maxSlots];         // target stack: depth renderbuffer asked for
  bool stackAlternate[maxSlots];         // target stack: alternate surface
  bool stackLow[maxSlots];               // target stack: lowResolution at the push
  GLuint framebufferHigh[maxSlots];      // full size, main texture
  GLuint framebufferHighAlternate[maxSlots];
  GLuint framebufferLow[maxSlots];       // half size, main texture
  GLuint framebufferLowAlternate[maxSlots];
  GLuint depthHigh[maxSlots];            // depth renderbuffer shared by both full-size framebuffers
  GLuint depthLow[maxSlots];             // the same for the half-size pair
  GLuint textureHigh[maxSlots], textureHighSaved[maxSlots];
  GLuint textureHighAlternate[maxSlots], textureHighAlternateSaved[maxSlots];
  GLuint textureLow[maxSlots], textureLowSaved[maxSlots];
  GLuint textureLowAlternate[maxSlots], textureLowAlternateSaved[maxSlots];
  int32_t width, height;                 // full-size textures, pixels (powers of two)
  int32_t halfWidth, halfHeight;         // width / 2, height / 2: pixel quad extent
  int32_t copyOriginX, copyOriginY;      // window position read by the full-size copy (0)
  int32_t lowWidth, lowHeight;           // half-size textures
  int32_t lowHalfWidth, lowHalfHeight;
  int32_t lowCopyOriginX, lowCopyOriginY;
  int32_t lowResolution;                 // 0 full-size images, 1 half-size ones
  int32_t lowResolutionQuad;             // quad extent selector of a pass's second image
  int32_t lowResolutionB;                // selector for a second source image
  int32_t lowResolutionQuadB;            // quad extent selector for that image
  int32_t effectiveWidth, effectiveHeight;        // part of the full-size image holding the picture
  int32_t effectiveLowWidth, effectiveLowHeight;  // the same of the half-size image
  bool useFramebuffers;                  // useFramebufferObjects at construction
  float maxU, maxV;                      // effectiveWidth / width, effectiveHeight / height
  float pixelU, pixelV;                  // 1 / effectiveWidth, 1 / effectiveHeight
  float maxLowU, maxLowV;                // effectiveLowWidth / lowWidth, effectiveLowHeight / lowHeight
  float pixelLowU, pixelLowV;            // 1 / effectiveLowWidth, 1 / effectiveLowHeight
  float ghostFade;                       // ghostTrail: alpha loss over the trail
  float ghostColour[3];                  // ghostTrail: colour of the trail

 private:
  // Which slot textures have their storage, by kind (high, high alternate,
  // low, low alternate) and slot.
  bool storageMade[4][maxSlots];
  int32_t storageMissing;  // slot textures still without storage: at 0 every bind skips the look-up
  bool findSlotTexture(GLuint texture, int32_t* kind, int32_t* slot) const;
  // prepareStorage, then binds the texture on the active unit.
  void bindSlotTexture(GLuint texture);
  void bindStackEntry(int32_t entry);
  void screenQuad() const;
  void pixelQuad(bool low) const;
  void mixDraw(GLenum destination, int32_t slotA, int32_t slotB, float alphaA, float alphaB, float brightnessA,
               float brightnessB);
  void pushIdentity() const;  // both matrices, ending in GL_MODELVIEW
  void popBoth() const;       // both matrices, ending in GL_MODELVIEW
  static GLuint nameAt(const GLuint* names, int32_t index);
};

// Sets the blending of a SlotBlendMode (see there); any other value changes nothing.
void applySlotBlendMode(int32_t mode);

// The tap alpha of glowPass (see above), exposed for tests and tuning tools.
float glowTapAlpha(float amount, float fadeOut, float alpha);
// The zoom step of glowPass after quantisation to 1/10000.
float glowZoomStep(float zoom);
