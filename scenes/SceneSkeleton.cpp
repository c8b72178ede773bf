#include "scenes/SceneSkeleton.h"

#include <GL/glew.h>

#include <cmath>

#include "core/Demo.h"
#include "foundation/Camera.h"
#include "foundation/Capabilities.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/FrameProfile.h"
#include "render/Light.h"
#include "render/Overlay.h"
#include "render/RenderTarget.h"
#include "texture/TextureStore.h"

// ===========================================================================
// Construction
// ===========================================================================
SceneSkeleton::SceneSkeleton(Demo* demo_, const std::string& name_)
    : Scene(name_),
      demo(demo_),
      camera(nullptr),
      spareTransform(nullptr),
      glowPasses(7),
      glowFadeOut(0.0f),
      glowBlurAmount(0.45f),
      glowBlurMode(0.0f),
      glowBlurZoom(0.0f),
      glowBlurZoomPowBase(1.5f),
      glowBlurZoomPow(1.0f),
      glowBlurAlpha(1.0f) {}

SceneSkeleton::~SceneSkeleton() { delete spareTransform; }  // the noise fields go with their vector

void SceneSkeleton::setUpCamera(const std::string& cameraName, float fieldOfView, const Vector3& eye,
                                const Vector3& target) {
  camera = demo->camera(cameraName, fieldOfView, 0.1f, 1000.0f);
  camera->position = eye;
  camera->direction = target - eye;
  registerCameraParameters();

  // The spare record comes straight after the camera group.
  spareTransform = new SpareTransform;
  for (float& f : spareTransform->ones) f = 1.0f;
  for (float& f : spareTransform->zeros) f = 0.0f;
  spareTransform->flags[0] = 0;
  spareTransform->flags[1] = 1;

  world.baseLightAttenuation = 6.0f;
}

void SceneSkeleton::registerCameraParameters() {
  addParameter("cameraZoom", &camera->zoom, 0.0025f, 0, 0);
  addParameter("cameraFOV", &camera->fieldOfView, 0.25f, 0, 0);
  addParameter("cameraRoll", &camera->roll, 0.5f, 0, 0);
  addParameter("cameraPitch", &camera->pitch, 0.5f, 0, 0);
  addParameter("cameraYaw", &camera->yaw, 0.5f, 0, 0);
  addParameter("cameraLookAtRoll", &camera->lookAtRoll, 0.5f, 0, 0);
  addParameter("cameraLookAtPitch", &camera->lookAtPitch, 0.5f, 0, 0);
  addParameter("cameraLookAtYaw", &camera->lookAtYaw, 0.5f, 0, 0);
}

void SceneSkeleton::setUsualGlowDefaults() {
  glowFadeOut = 0.0f;
  glowBlurAmount = 0.45f;
  glowBlurMode = 0.0f;
  glowBlurZoom = 0.0f;
  glowBlurZoomPowBase = 1.5f;
  glowBlurZoomPow = 1.0f;
  glowBlurAlpha = 1.0f;
}

void SceneSkeleton::addUsualGlowGroup() {
  setUsualGlowDefaults();
  registerGlowParameters();
}

void SceneSkeleton::registerGlowParameters() {
  addParameter("glowFadeOut", &glowFadeOut, 0.001f, 0, 0);
  addParameter("glowBlurAmount", &glowBlurAmount, 0.01f, 0, 0);
  addParameter("glowBlurMode", &glowBlurMode, 1.0f, 0, 0);
  addParameter("glowBlurZoom", &glowBlurZoom, 0.005f, 0, 0);
  addParameter("glowBlurZoomPowBase", &glowBlurZoomPowBase, 0.005f, 0, 0);
  addParameter("glowBlurZoomPow", &glowBlurZoomPow, 0.005f, 0, 0);
  addParameter("glowBlurAlpha", &glowBlurAlpha, 0.005f, 0, 0);
}

uint32_t SceneSkeleton::texture(const char* textureName) const {
  if (!demo->textures) return noTexture;
  return demo->textures->findTextureId(textureName);
}

Mesh* SceneSkeleton::object(int32_t index) const {
  if (index < 0 || index >= static_cast<int32_t>(world.objects.size())) return nullptr;
  return world.objects[index];
}

void SceneSkeleton::setGlowMaterial(int32_t index, const Material& glow) {
  Mesh* mesh = object(index);
  if (!mesh) return;
  mesh->currentMaterial = 1;
  mesh->setMaterial(glow);
  mesh->currentMaterial = 0;
}

void SceneSkeleton::markBatch(int32_t index, int32_t i, int32_t count) {
  Mesh* mesh = object(index);
  if (!mesh || count < 2) return;  // a mesh alone sets up and restores its own state
  if (i == 0) {
    mesh->batchFirst = true;
    mesh->restoreState = false;
  } else if (i == count - 1) {
    mesh->setupState = false;
    mesh->batchLast = true;
  } else {
    mesh->setupState = false;
    mesh->restoreState = false;
  }
}

int32_t SceneSkeleton::addStandardLight(float ambientLevel) {
  LightParameters light;
  light.enabled = true;
  const float ambient[4] = {ambientLevel, ambientLevel, ambientLevel, 1.0f};
  const float diffuse[4] = {2.0f, 2.0f, 2.0f, 1.0f};
  const float specular[4] = {0.0f, 0.0f, 0.0f, 1.0f};
  const float modelAmbient[4] = {0.0f, 0.0f, 0.0f, 1.0f};
  for (int c = 0; c < 4; ++c) {
    light.ambient[c] = ambient[c];
    light.diffuse[c] = diffuse[c];
    light.specular[c] = specular[c];
    light.lightModelAmbient[c] = modelAmbient[c];
  }
  light.positional = true;
  light.offset = Vector3(0, 0, 0);
  light.direction = Vector3(0, 0, 1);
  light.spotExponent = 100.0f;
  light.spotCutoff = 90.0f;
  light.constantAttenuation = 0.0f;
  light.linearAttenuation = 0.01f;
  light.quadraticAttenuation = 0.0f;
  light.castsShadow = true;
  light.shadowMapSize = 1024;
  light.shadowNear = 0.1f;
  light.shadowFar = 100.0f;
  light.shadowFieldOfView = 90.0f;
  light.projectedTexture = texture("solidnoisebump");
  light.polygonOffset = false;
  light.alphaTestShadow = false;
  return world.addLight(light, 0.1f, 100.0f, demo->screenWidth, demo->screenHeight);
}

void SceneSkeleton::placeLightAimedAtOrigin(int32_t lightIndex, const Vector3& position) {
  Mesh* mesh = object(lightIndex);
  if (!mesh) return;
  mesh->position = position;
  Light* light = mesh->light();
  if (!light) return;
  const Vector3 towardOrigin = Vector3(0, 0, 0) - position;
  const float length = std::sqrt(towardOrigin.x * towardOrigin.x + towardOrigin.y * towardOrigin.y +
                                 towardOrigin.z * towardOrigin.z);
  if (length > 0.0f) light->direction = towardOrigin / length;
}

// ===========================================================================
// The kit: looks, batches, light, flares, dust
// ===========================================================================
MaterialBuilder SceneSkeleton::material(Material& m) const { return MaterialBuilder(m, demo->textures); }

void SceneSkeleton::applyLooks(int32_t index, const Material& picture, const Material& glow) {
  setGlowMaterial(index, glow);
  if (Mesh* mesh = object(index)) mesh->setMaterial(picture);  // currentMaterial is 0 again
}

void SceneSkeleton::drawStageOffsets(Material& picture, Material& glow, int32_t i) {
  // Each draw is made before its own sum, in this order.
  const double pu = randomSigned();
  picture.stageOffsetU[0] = static_cast<float>(pu + i * 0.232141);
  const double pv = randomSigned();
  picture.stageOffsetV[0] = static_cast<float>(pv + i * 0.1232141);
  const double gu = randomSigned();
  glow.stageOffsetU[0] = static_cast<float>(gu + i * 0.232141);
  const double gv = randomSigned();
  glow.stageOffsetV[0] = static_cast<float>(gv + i * 0.1232141);
}

int32_t SceneSkeleton::addModel(const char* fileName, const Material& picture, const Material& glow) {
  const int32_t index = world.addModel(fileName, picture);
  setGlowMaterial(index, glow);
  return index;
}

int32_t SceneSkeleton::addBackdrop(const char* fileName, const Material& picture, const Material& glow,
                                   const Vector3& scale, const Vector3& position) {
  const int32_t index = addModel(fileName, picture, glow);
  if (Mesh* mesh = object(index)) {
    mesh->scale = scale;
    mesh->position = position;
  }
  return index;
}

int32_t SceneSkeleton::addModelBatch(const char* fileName, int32_t count, const Material& picture,
                                     const Material& glow, const Placing& place) {
  int32_t first = -1;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t index = addModel(fileName, picture, glow);
    if (i == 0) first = index;
    markBatch(index, i, count);
    place(i, index, object(index));  // also for a missing model, so that the draws stay the same
  }
  return first;
}

int32_t SceneSkeleton::addBoxBatch(int32_t count, const Material& picture, const Material& glow,
                                   const Placing& place) {
  int32_t first = -1;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t index = world.addBox(3, 3, picture, false, true);
    if (i == 0) first = index;
    setGlowMaterial(index, glow);
    markBatch(index, i, count);
    place(i, index, object(index));
  }
  return first;
}

int32_t SceneSkeleton::addBoxRing(const Material& picture, const Material& glow, const RingShape& shape) {
  return addBoxBatch(shape.count, picture, glow, [&shape](int32_t i, int32_t, Mesh* box) {
    // The order of these draws places the ring.
    const double r1 = randomUnit();
    const double r2 = randomUnit();
    const double s1 = randomSigned();
    const double s2 = randomSigned();
    const double d = shape.signedDepth ? randomSigned() : randomUnit();
    if (!box) return;
    const double angle = static_cast<double>(i);  // radians
    box->position = Vector3(static_cast<float>(std::sin(angle) * (r2 * shape.xSpread + shape.xRadius)),
                            static_cast<float>(std::cos(angle) * (r1 * shape.ySpread + shape.yRadius)), shape.z);
    box->rotation = Vector3(0.0f, static_cast<float>(s2 * shape.yawSpread), static_cast<float>(s1 * 20.0));
    box->useMatrix = true;
    box->scale = Vector3(shape.width, shape.width, static_cast<float>(d * shape.depthSpread + shape.depthBase));
  });
}

int32_t SceneSkeleton::addLattice(const char* fileName, const LatticeShape& shape, const Material& picture,
                                  const Material& glow, std::vector<int32_t>& objectIds, std::vector<Vector3>& homes) {
  return addModelBatch(fileName, shape.count(), picture, glow,
                       [&](int32_t n, int32_t index, Mesh* element) {
                         const int32_t x = n % shape.countX;
                         const int32_t y = (n / shape.countX) % shape.countY;
                         const int32_t z = n / (shape.countX * shape.countY);
                         const Vector3 cell(static_cast<float>(x) - shape.centre.x,
                                            static_cast<float>(y) - shape.centre.y,
                                            static_cast<float>(z) - shape.centre.z);
                         const Vector3 home(cell.x * shape.homeScale.x, cell.y * shape.homeScale.y,
                                            cell.z * shape.homeScale.z);
                         objectIds.push_back(index);
                         homes.push_back(home);
                         // The order of these draws tumbles and sizes the element.
                         const int r1 = crtRand();
                         const int r2 = crtRand();
                         const int r3 = crtRand();
                         for (int32_t w = 0; w < shape.wastedDraws; ++w) (void)crtRand();  // consumed only
                         if (!element) return;
                         element->position = home;
                         element->rotation =
                             Vector3(static_cast<float>((r2 / 32767.0 - 0.5) * shape.tumbleX - 90.0),
                                     static_cast<float>((r1 / 32767.0 - 0.5) * shape.tumbleY), 0.0f);
                         element->useMatrix = true;
                         element->scale = Vector3(shape.width,
                                                  static_cast<float>((r3 / 32767.0 * 0.05 + 0.2) * shape.heightScale),
                                                  shape.depth);
                       });
}

void SceneSkeleton::applyColourFamilies(const ColourFamilies& families, Material& picture, Material& glow,
                                        const std::vector<int32_t>& objectIds, int32_t first, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const uint32_t family =
        families.groupSize > 0 ? static_cast<uint32_t>((i / families.groupSize) % families.familyCount) : 0u;
    crtSrand(families.seedBase + family);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    if (families.narrowDraws) {
      const float af = static_cast<float>(a), bf = static_cast<float>(b), cf = static_cast<float>(c);
      glow.diffuse = Vector3(af * 1.65f + 2.5f, bf * 0.85f + 1.1f, cf * 0.34f + 0.5f) * families.glowDiffuse;
      picture.diffuse =
          Vector3(af * 1.2f + 1.66f, bf * 0.44f + 0.64f, cf * 0.23f + 0.36f) * families.pictureDiffuse;
      picture.ambient = Vector3(af * 0.4f + 0.5f, bf * 0.4f + 0.5f, cf * 0.4f + 0.5f) * families.pictureAmbient;
    } else {
      glow.diffuse = Vector3(static_cast<float>(a * 1.65 + 2.5), static_cast<float>(b * 0.85 + 1.1),
                             static_cast<float>(c * 0.34 + 0.5)) *
                     families.glowDiffuse;
      picture.diffuse = Vector3(static_cast<float>(a * 1.2 + 1.66), static_cast<float>(b * 0.44 + 0.64),
                                static_cast<float>(c * 0.23 + 0.36)) *
                        families.pictureDiffuse;
      picture.ambient = Vector3(static_cast<float>(a * 0.4 + 0.5), static_cast<float>(b * 0.4 + 0.5),
                                static_cast<float>(c * 0.4 + 0.5)) *
                        families.pictureAmbient;
    }
    drawStageOffsets(picture, glow, i);
    if (first + i < static_cast<int32_t>(objectIds.size())) applyLooks(objectIds[first + i], picture, glow);
  }
}

NoiseField* SceneSkeleton::makeNoiseField(int bits, uint32_t seed) {
  ownedNoiseFields.push_back(std::make_unique<NoiseField>(bits, seed));
  return ownedNoiseFields.back().get();
}

uint32_t SceneSkeleton::addFlares(const FlareSpec& spec) {
  const uint32_t first = static_cast<uint32_t>(world.billboards.size());
  for (uint32_t i = 0; i < spec.count; ++i) {
    Billboard* flare = new Billboard(camera, true);
    flare->texture = texture(spec.texture);
    flare->halfSize = spec.halfSize;
    const int firstDraw = crtRand();
    (void)crtRand();  // drawn and dropped
    const int thirdDraw = crtRand();
    flare->position = Vector3(static_cast<float>((firstDraw / 32767.0) * 5.0 + 10.0), 0.0f,
                              static_cast<float>(2.0 * (thirdDraw / 32767.0 - 0.5) * 30.0));  // the first frame moves it
    flare->alpha = spec.alpha;
    const int c = crtRand();  // dropped for a fixed colour
    if (spec.colourRule == FlareSpec::fixedColour) {
      flare->colour = spec.colour;
    } else {
      // warmFromRaw keeps the raw 15-bit value on purpose: the channels land
      // far above 1 and GL clamps them, so those flares burn white.
      const double f = spec.colourRule == FlareSpec::warmFromRaw ? static_cast<double>(c) : c / 32767.0;
      flare->colour = Vector3(static_cast<float>(f * 0.1 + 0.9), static_cast<float>(f * 0.06 + 0.63),
                              static_cast<float>(f * 0.03 + 0.4)) *
                      spec.warmScale;
    }
    world.billboards.push_back(flare);
  }
  return first;
}

uint32_t SceneSkeleton::addDust(const DustSpec& spec) {
  const uint32_t first = static_cast<uint32_t>(world.billboards.size());
  for (uint32_t m = 0; m < spec.count; ++m) {
    const uint32_t j = first + m;  // the billboard index picks the texture
    Billboard* mote = new Billboard(camera, true);
    mote->texture = texture(j % 2 == 0 ? "mustis2" : "mustis5");
    const float size = static_cast<float>(spec.sizeScale * (randomSigned() * 0.025 + 0.15));
    mote->halfSize = Vector3(size, size, 1.0f);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    mote->position = Vector3(static_cast<float>(c * spec.spread.x), static_cast<float>(b * spec.spread.y),
                             static_cast<float>(a * spec.spread.z + spec.depth));
    mote->alpha = spec.alpha;
    mote->colour = spec.colour;
    mote->blendMode = 1;
    mote->castsShadow = true;
    mote->tiled = spec.tiled;
    mote->tileSpacing = 0.0f;
    if (spec.tileSpacingDraw != 0.0) mote->tileSpacing = static_cast<float>(randomUnit() * spec.tileSpacingDraw);
    if (spec.shadeByDraw) mote->colour = spec.colour * static_cast<float>((1.0 - randomUnit() * 0.95) * 1.5);
    world.billboards.push_back(mote);
  }
  return first;
}

Vector3 SceneSkeleton::objectPosition(int32_t index) const {
  const Mesh* mesh = object(index);
  return mesh ? mesh->position : Vector3(0, 0, 0);
}

Vector3 SceneSkeleton::orbitLight(int32_t lightIndex, float angle, float scale) {
  placeLightAimedAtOrigin(lightIndex,
                          Vector3(12.5f * std::cos(angle) * scale, 10.5f * std::sin(angle * 0.5f) * scale, -9.0f));
  return objectPosition(lightIndex);
}

Vector3 SceneSkeleton::swarmSamplePoint(const Vector3& h, float e1, float e2, float T) {
  const float u = e1 * 0.01f + 0.012f;
  return Vector3(std::cos(u * h.x * 12.2f) * 0.123f + T * 0.034f + 10.0f, e2 * 0.3f * h.z * 0.7f + u * h.y + 10.0f,
                 (e1 * 0.01f + 0.002f) * h.z + 10.0f);
}

void SceneSkeleton::placeOnSwarm(const std::vector<int32_t>& objectIds, int32_t first,
                                 const std::vector<Vector3>& homes, NoiseField* x, NoiseField* y, NoiseField* z,
                                 float e1, float e2, float T) {
  for (size_t n = 0; n < homes.size() && first + n < objectIds.size(); ++n) {
    Mesh* element = object(objectIds[first + n]);
    if (!element) continue;
    element->position = noisePlace(*x, *y, *z, swarmSamplePoint(homes[n], e1, e2, T), 6, 7, 6, 12.5f);
  }
}

void SceneSkeleton::flaresFollow(uint32_t first, uint32_t count, float u, const Vector3& lightPosition,
                                 const FlareOrbit& orbit) {
  for (uint32_t i = 0; i < count && first + i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const float q = u * 0.2f;
    const Vector3 offset(std::sin(fi * orbit.phaseX + q) * orbit.size.x,
                         std::cos(u * 0.314f + fi * orbit.phaseY) * orbit.size.y,
                         std::cos(std::sin(fi * orbit.phaseZ + q)) * orbit.size.z);
    world.billboards[first + i]->position = offset + lightPosition;
  }
}

void SceneSkeleton::driftDust(uint32_t first, uint32_t count, NoiseField* x, NoiseField* y, NoiseField* z,
                              float time, int32_t stepMs, const DustDrift& drift) {
  const float step = static_cast<float>(stepMs) / 1000.0f;
  for (uint32_t m = 0; m < count && first + m < world.billboards.size(); ++m) {
    Billboard* mote = world.billboards[first + m];
    mote->timeStep = step;
    mote->time = time;
    const Vector3 p = mote->position * drift.sampleScale;
    const float dx = x->fractalSum(p, 5);
    const float dy = y->fractalSum(p, 5);
    const float dz = z->fractalSum(p, 5);
    Vector3 d = Vector3(dx, dy, dz) * step;
    d.z *= drift.zScale;
    mote->position += d;
  }
}

// ===========================================================================
// The frame
// ===========================================================================
void SceneSkeleton::drawOverlay(float, float, int32_t) {}

void SceneSkeleton::drawIntoGlowSource(float, float) {}

void SceneSkeleton::render(int32_t timeMs, int32_t stepMs) {
  sceneTimeMs += stepMs;
  const float sceneSeconds = static_cast<float>(sceneTimeMs) / 1000.0f;
  const float demoSeconds = static_cast<float>(timeMs) / 1000.0f;

  {
    FramePassScope pass(FramePass::animation);
    animate(sceneSeconds, demoSeconds, stepMs);
  }
  {
    FramePassScope pass(FramePass::glowSource);
    renderGlowSource(sceneSeconds, demoSeconds);
  }
  {
    FramePassScope pass(FramePass::glowPasses);
    renderGlowBlur();
  }
  camera->release();
  demo->renderTargets->lowResolution = 0;

  {
    FramePassScope pass(FramePass::finalPicture);
    renderFinalPicture();
  }
  {
    FramePassScope pass(FramePass::glowPasses);
    drawGlow();
  }
  {
    FramePassScope pass(FramePass::overlays);
    drawOverlay(sceneSeconds, demoSeconds, stepMs);
  }

  camera->release();
  demo->renderTargets->lowResolution = 0;
}

// The picture of material slot 1 at half size, into slot + 1. Leaves the
// low camera applied.
void SceneSkeleton::renderGlowSource(float sceneSeconds, float demoSeconds) {
  RenderTarget* targets = demo->renderTargets;
  targets->lowResolution = 1;
  camera->applyLow();
  targets->beginTarget(targets->firstFreeSlot + 1, true, false);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  world.render(camera, 0, true, 1, false, targets, true, true, true, glowSourceWritesColour);
  drawIntoGlowSource(sceneSeconds, demoSeconds);
  targets->lowResolution = 1;  // the direct path may leave it otherwise
  targets->endTarget();
  if (!useFramebufferObjects) targets->copyToSlot(targets->firstFreeSlot + 1);
}

// slot + 1 blurred into slot, still at half size.
void SceneSkeleton::renderGlowBlur() {
  RenderTarget* targets = demo->renderTargets;
  targets->beginTarget(targets->firstFreeSlot, false, false);
  glClear(GL_COLOR_BUFFER_BIT);
  glDisable(GL_DEPTH_TEST);
  targets->glowPass(targets->firstFreeSlot + 1, glowBlurAmount - glowAmountDrop, glowPasses, 0.1f, 0.1f, glowBlurAlpha, 0.0f, 0.0f,
                    0.0f, glowFadeOut, 0, true, glowBlurZoom, glowBlurZoomPowBase, glowBlurZoomPow);
  targets->endTarget();
  if (!useFramebufferObjects) targets->copyToSlot(targets->firstFreeSlot);
}

// Material slot 0 at full size with shadow masks at half size; the
// preparation of the glow source pass stands.
void SceneSkeleton::renderFinalPicture() {
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  world.render(camera, 0, false, 0, true, demo->renderTargets, true, false, false, true);
  glDisable(GL_DEPTH_TEST);
}

// Applies the camera at full size (released at the end of render) and lays
// the blurred glow over the picture.
void SceneSkeleton::drawGlow() {
  RenderTarget* targets = demo->renderTargets;
  camera->apply();
  targets->lowResolution = 1;
  const int32_t mode = static_cast<int32_t>(glowBlurMode) == 0 ? 3 : 2;
  targets->drawSlot(targets->firstFreeSlot, mode, nullptr, true, nullptr, nullptr, 1.0f);
}

Vector3 SceneSkeleton::noisePlace(NoiseField& x, NoiseField& y, NoiseField& z, const Vector3& p, int octavesX,
                                  int octavesY, int octavesZ, float reach) {
  const float px = x.fractalSum(p, octavesX) * reach;
  const float py = y.fractalSum(p, octavesY) * reach;
  const float pz = z.fractalSum(p, octavesZ) * reach;
  return Vector3(px, py, pz);
}

void SceneSkeleton::drawTitleLayers(const TitleLayers& title, NoiseField& a, NoiseField& c, float slide, float g,
                                    float X) {
  glEnable(GL_TEXTURE_2D);
  glTranslatef(0.0f, 0.0f, slide * 0.15f - 0.1f);
  bindTitleTexture(title.texture, GL_MODULATE);
  linearFilters();
  glBlendFunc(GL_SRC_ALPHA, title.blendDestination);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  for (int i = 0; i < 25; ++i) {
    glPushMatrix();
    const Vector3 p1(i * 0.11f + X * 0.1f, 1.53f, 4.3f);
    const Vector3 p2(X * 0.88f, 0.5f, i * 0.1234f + 0.5f);
    glScalef((a.sample(p1) * 0.2f + i / 25.0f) * g * 10.5f + 1.0f, c.sample(p2) * title.heightSpread * g + 1.0f,
             1.0f);
    glColor4f(title.rim.x, title.rim.y, title.rim.z, title.rimAlpha);
    texturedQuad(1.05f);
    glColor4f(0.02f, 0.02f, 0.02f, title.coreAlpha);
    texturedQuad(1.0f);
    glPopMatrix();
  }
}
