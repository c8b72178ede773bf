// SceneSkeleton: the frame that every production scene is written to. It
// holds what all of them share (the Demo, the World, the camera, the glow
// Parameters) and runs the common render: the scene's own logic, the glow
// source at half size, its blur, the final picture with soft shadows, the glow
// laid over it, and the scene's overlays.
//
// Times: render() takes signed 32-bit milliseconds like every Scene; the
// hooks get float seconds (scene clock and demo clock) and the raw step in ms.
// Camera and object angles are degrees. GL thread only.
#pragma once
#include <cstdint>
#include <string>

#include "foundation/Vector3.h"
#include "render/World.h"
#include "scenes/Scene.h"

class Camera;
class Demo;
struct Material;
class Mesh;

// Made by the constructor, freed by the destructor, read by nobody: nine
// floats 1.0, seventeen floats 0 and two flag bytes 0 and 1, 27 words in all.
struct SpareTransform {
  float ones[9];
  float zeros[17];
  uint8_t flags[2];
};
static_assert(sizeof(SpareTransform) == 27 * 4, "the spare record is 27 32-bit words");

// The ring of long boxes that stands behind several scenes, `count` boxes around
// the z axis at z = 9. Box i (i in radians) with the draws r1, r2, s1, s2, r3,
// in that order (r: randomUnit, s: randomSigned):
//   position (sin(i) (r2 xSpread + xRadius), cos(i) (r1 ySpread + yRadius), 9)
//   rotation (0, s2 50, s1 20); scale (5, 5, r3 depthSpread + depthBase)
struct RingShape {
  float xSpread = 20.0f, xRadius = 35.0f;
  float ySpread = 20.0f, yRadius = 35.0f;
  float depthSpread = 10.0f, depthBase = 15.0f;
  int32_t count = 100;
};

class SceneSkeleton : public Scene {
 public:
  // Stores the demo. The glow group holds its usual defaults; scenes
  // register it at the end of their constructors.
  SceneSkeleton(Demo* demo, const std::string& name);
  ~SceneSkeleton() override;

  // The common frame, in this order:
  //  1. sceneTimeMs += stepMs; animate(sceneTimeMs/1000, timeMs/1000, stepMs)
  //  2. renderGlowSource(): slot+1 at half size, material slot 1, direct path
  //  3. renderGlowBlur(): glowPass from slot+1 into slot, glowPasses rounds
  //  4. renderFinalPicture(): material slot 0, soft shadows with low masks
  //  5. drawGlow(): slot over the picture, mode 3 (glowBlurMode 0) or 2
  //  6. drawOverlay(), then the camera is released and lowResolution is 0.
  // slot is renderTargets->firstFreeSlot, read afresh at every use.
  void render(int32_t timeMs, int32_t stepMs) override;

  // The scene's own per-frame logic: objects, lights, materials, camera.
  virtual void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) = 0;
  // Screen-space drawing with the camera applied at full size and
  // lowResolution 1. Nothing by default.
  virtual void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs);

  // The passes of render(), for scenes whose frame differs.
  void renderGlowSource();
  void renderGlowBlur();
  void renderFinalPicture();
  void drawGlow();

  // ---- construction helpers -------------------------------------------------

  // Steps 2 to 5 of every constructor: camera = demo->camera(cameraName,
  // fieldOfView, 0.1, 1000) with the default aspect, position = eye,
  // direction = target - eye; registers the camera group; allocates
  // spareTransform; sets world.baseLightAttenuation to 6.
  void setUpCamera(const std::string& cameraName, float fieldOfView, const Vector3& eye, const Vector3& target);
  // The eight camera Parameters, bound to the camera's fields.
  void registerCameraParameters();
  // The seven glow Parameters, bound to the members below; their defaults
  // are whatever the members hold now.
  void registerGlowParameters();
  // Puts the usual values into the glow group (0, 0.45, 0, 0, 1.5, 1, 1).
  void setUsualGlowDefaults();

  // The texture's GL name from the demo's store, noTexture for unknown names.
  uint32_t texture(const char* textureName) const;
  // The object of that index, or null (a model that failed to load leaves a
  // negative index behind; such objects are skipped, not drawn).
  Mesh* object(int32_t index) const;
  // Puts the glow material into material slot 1 of the object.
  void setGlowMaterial(int32_t index, const Material& glow);
  // Batch flags of the i-th of `count` meshes drawn as one batch: the first
  // sets batchFirst and clears restoreState, the middle ones clear setupState
  // and restoreState, the last clears setupState and sets batchLast. A
  // batch of one is left as it is.
  void markBatch(int32_t index, int32_t i, int32_t count);
  // The ring above as one batch of addBox(3, 3, picture, false, true) with
  // the glow material in slot 1, drawing five numbers per box from the
  // generator as it stands. Returns the object index of the first box.
  int32_t addBoxRing(const Material& picture, const Material& glow, const RingShape& shape = RingShape());
  // The standard production light: the light block every scene adds, made
  // with `projectedTexture` "solidnoisebump" and a 1024 shadow map; returns
  // the object index of addLight.
  int32_t addStandardLight();
  // Places a light object at `position` and aims its Light at the origin.
  void placeLightAimedAtOrigin(int32_t lightIndex, const Vector3& position);

  // ---- fields ---------------------------------------------------------------

  Demo* demo;                       // not owned
  World world;                      // owns the meshes' list, not the meshes
  Camera* camera;                   // owned by the Demo
  SpareTransform* spareTransform;   // owned, never read

  int32_t glowPasses;               // glowPass rounds of this scene
  bool glowSourceWritesColour;      // baseWritesColour of the glow source's World::render (true)
  float glowAmountDrop;             // subtracted from glowBlurAmount in the blur, per frame (0)

  // The glow group, registered at the end of each scene's constructor.
  float glowFadeOut;
  float glowBlurAmount;
  float glowBlurMode;               // truncated: 0 squares the glow in (mode 3), else plain additive (mode 2)
  float glowBlurZoom;
  float glowBlurZoomPowBase;
  float glowBlurZoomPow;
  float glowBlurAlpha;
};
