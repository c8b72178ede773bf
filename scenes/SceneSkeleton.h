// SceneSkeleton: the frame that every production scene is written to. It
// holds what all of them share (the Demo, the World, the camera, the glow
// Parameters) and runs the common render: the scene's own logic, the glow
// source at half size, its blur, the final picture with soft shadows, the glow
// laid over it, and the scene's overlays.
//
// Times: render() takes signed 32-bit milliseconds like every Scene; the
// hooks get float seconds (scene clock and demo clock) and the raw step in ms.
// Camera and object angles are degrees. GL thread only.
//
// The kit: the helpers under "construction helpers" and "per-frame helpers"
// build the shapes of scenes/SceneKit.h (read its usage section first).
// Scenes reach the engine only through the Demo they are given.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Vector3.h"
#include "render/MaterialBuilder.h"
#include "render/World.h"
#include "scenes/Scene.h"
#include "scenes/SceneKit.h"

class Camera;
class Demo;
struct Material;
class Mesh;
class NoiseField;

// Made by the constructor, freed by the destructor, read by nobody: nine
// floats 1.0, seventeen floats 0 and two flag bytes 0 and 1, 27 words in all.
struct SpareTransform {
  float ones[9];
  float zeros[17];
  uint8_t flags[2];
};
static_assert(sizeof(SpareTransform) == 27 * 4, "the spare record is 27 32-bit words");

class SceneSkeleton : public Scene {
 public:
  // Stores the demo. The glow group holds its usual defaults; scenes
  // register it at the end of their constructors.
  SceneSkeleton(Demo* demo, const std::string& name);
  ~SceneSkeleton() override;

  // The common frame, in this order:
  //  1. sceneTimeMs += stepMs; animate(sceneTimeMs/1000, timeMs/1000, stepMs)
  //  2. renderGlowSource(): slot+1 at half size, material slot 1, direct path
  //     (base colour by glowSourceWritesColour), then drawIntoGlowSource()
  //  3. renderGlowBlur(): glowPass from slot+1 into slot, glowPasses rounds,
  //     amount glowBlurAmount - glowAmountDrop
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

  // Drawn into the glow source after the World, still in its target with the
  // low camera applied (text that shows only as glow). Nothing by default.
  virtual void drawIntoGlowSource(float sceneSeconds, float demoSeconds);

  // The passes of render(), for scenes whose frame differs.
  void renderGlowSource(float sceneSeconds, float demoSeconds);
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
  // The last step of most constructors: the usual defaults, then the seven
  // glow Parameters registered.
  void addUsualGlowGroup();

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
  // A material builder on `m`, resolving texture names through the demo's
  // store (render/MaterialBuilder.h).
  MaterialBuilder material(Material& m) const;
  // Glow to material slot 1 (currentMaterial back to 0), then the picture
  // to slot 0: a mesh's two looks in one call. Skips a missing object.
  void applyLooks(int32_t index, const Material& picture, const Material& glow);
  // Four draws (randomSigned), in this order, for the stage 0 offsets of the
  // i-th object of a group, each piece of the texture another:
  //   picture U = s + i 0.232141, picture V = s + i 0.1232141,
  //   glow U = s + i 0.232141,    glow V = s + i 0.1232141
  void drawStageOffsets(Material& picture, Material& glow, int32_t i);

  // The placing callback of a batch: i counts from 0; index is what the add
  // operation returned; mesh is that object, or null when the model file did
  // not load. It runs in both cases, so that its random draws keep the
  // sequence whatever the disk holds.
  using Placing = std::function<void(int32_t i, int32_t index, Mesh* mesh)>;

  // world.addModel(fileName, picture) with the glow material in slot 1; the
  // index (negative when the file did not load). No random draws.
  int32_t addModel(const char* fileName, const Material& picture, const Material& glow);
  // A model as a still backdrop (the plate, slab or wall behind a scene):
  // addModel above, then scale and position. No random draws.
  int32_t addBackdrop(const char* fileName, const Material& picture, const Material& glow, const Vector3& scale,
                      const Vector3& position);
  // `count` models of one file as one batch (markBatch), each with the two
  // materials, then place(i, index, mesh). The draws are the callback's.
  // Returns the index of the first.
  int32_t addModelBatch(const char* fileName, int32_t count, const Material& picture, const Material& glow,
                        const Placing& place);
  // The same with addBox(3, 3, picture, false, true) for every object.
  int32_t addBoxBatch(int32_t count, const Material& picture, const Material& glow, const Placing& place);
  // The ring of SceneKit.h as one box batch, drawing five numbers per box
  // (r1, r2, s1, s2, then r3 or s3) from the generator as it stands. Returns
  // the object index of the first box.
  int32_t addBoxRing(const Material& picture, const Material& glow, const RingShape& shape = RingShape());

  // A NoiseField(bits, seed) that the scene owns (freed with it). Its seeding
  // draws from the generator, so it is made at the point of construction
  // that the scene's design names: the next group goes on from there.
  NoiseField* makeNoiseField(int bits, uint32_t seed);

  // The lattice of SceneKit.h as one batch of `fileName` models, drawing
  // three numbers per element (and the shape's wasted ones). Appends each
  // object index to `objectIds` and each home to `homes`, element by
  // element; returns the object index of the first.
  int32_t addLattice(const char* fileName, const LatticeShape& shape, const Material& picture,
                     const Material& glow, std::vector<int32_t>& objectIds, std::vector<Vector3>& homes);
  // The colour families of SceneKit.h over objectIds[first ..
  // first + count - 1], object i of the group being objectIds[first + i].
  // Seven draws per object after its seeding. Changes the two materials,
  // which keep the last object's colours.
  void applyColourFamilies(const ColourFamilies& families, Material& picture, Material& glow,
                           const std::vector<int32_t>& objectIds, int32_t first, int32_t count);

  // The standard production light: the light block every scene adds, made
  // with `projectedTexture` "solidnoisebump" and a 1024 shadow map, ambient
  // (a, a, a, 1); returns the object index of addLight. No random draws.
  int32_t addStandardLight(float ambientLevel = 0.5f);
  // Flares as the FlareSpec gives them (SceneKit.h), appended to the World's billboards;
  // returns the billboard index of the first. Four draws per flare.
  uint32_t addFlares(const FlareSpec& spec);
  // Dust as the DustSpec gives it (SceneKit.h), appended; returns the billboard index of
  // the first. Four to six draws per mote, as the DustSpec asks.
  uint32_t addDust(const DustSpec& spec);

  // ---- per-frame helpers (no random draws) ------------------------------------

  // Places a light object at `position` and aims its Light at the origin.
  void placeLightAimedAtOrigin(int32_t lightIndex, const Vector3& position);
  // The wandering light's orbit at angle a (radians):
  //   (12.5 cos(a) scale, 10.5 sin(a 0.5) scale, -9), aimed at the origin.
  // Returns that position.
  Vector3 orbitLight(int32_t lightIndex, float angle, float scale = 1.0f);
  // Where the spreading swarm samples its noise for an element at home h,
  // with the two spreading envelopes e1, e2 and the shifted demo time T:
  //   u = e1 0.01 + 0.012
  //   p = (cos(u h.x 12.2) 0.123 + T 0.034 + 10, e2 0.3 h.z 0.7 + u h.y + 10, (e1 0.01 + 0.002) h.z + 10)
  // While both envelopes are 0 the block keeps its tidy sampling.
  static Vector3 swarmSamplePoint(const Vector3& home, float e1, float e2, float T);
  // The position that three noise fields give a sample point p:
  //   (x.fractalSum(p, octavesX), y.fractalSum(p, octavesY), z.fractalSum(p, octavesZ)) reach
  static Vector3 noisePlace(NoiseField& x, NoiseField& y, NoiseField& z, const Vector3& p, int octavesX,
                            int octavesY, int octavesZ, float reach);

  // objectIds[first + n] for n below homes.size() placed on the swarm:
  //   p = swarmSamplePoint(homes[n], e1, e2, T)
  //   position = noisePlace(x, y, z, p, 6, 7, 6, 12.5)
  void placeOnSwarm(const std::vector<int32_t>& objectIds, int32_t first, const std::vector<Vector3>& homes,
                    NoiseField* x, NoiseField* y, NoiseField* z, float e1, float e2, float T);

  // The object's position, or the origin when there is no such object.
  Vector3 objectPosition(int32_t index) const;
  // Billboards first .. first + count - 1 hang round `lightPosition` at time
  // u by `orbit` (SceneKit.h).
  void flaresFollow(uint32_t first, uint32_t count, float u, const Vector3& lightPosition,
                    const FlareOrbit& orbit = FlareOrbit());
  // Billboards first .. first + count - 1 drift by `drift` (SceneKit.h)
  // through the three fields; `time` goes to each mote's time field.
  void driftDust(uint32_t first, uint32_t count, NoiseField* x, NoiseField* y, NoiseField* z, float time,
                 int32_t stepMs, const DustDrift& drift = DustDrift());

  // ---- overlay helpers (no random draws) --------------------------------------

  // The layered title of SceneKit.h, drawn inside an OverlayScope
  // (render/Overlay.h) already moved to the title's depth. In order:
  //   enable GL_TEXTURE_2D; glTranslatef(0, 0, slide 0.15 - 0.1): the title
  //   slides toward the viewer as slide goes 0 to 1; bind the title with
  //   GL_MODULATE, wrap GL_CLAMP, filters GL_LINEAR; glBlendFunc(GL_SRC_ALPHA,
  //   blendDestination); disable GL_CULL_FACE and GL_DEPTH_TEST. Then for
  //   layer i from 0 to 24: push; p1 = (i 0.11 + X 0.1, 1.53, 4.3),
  //   p2 = (X 0.88, 0.5, i 0.1234 + 0.5);
  //   glScalef((a.sample(p1) 0.2 + i / 25) g 10.5 + 1, c.sample(p2) heightSpread g + 1, 1);
  //   colour (rim, rimAlpha), textured quad at +-1.05, z = -1; colour
  //   (0.02, 0.02, 0.02, coreAlpha), the same quad at +-1; pop.
  // X is the title's own clock in seconds.
  static void drawTitleLayers(const TitleLayers& title, NoiseField& a, NoiseField& c, float slide, float g,
                              float X);

  // ---- fields ---------------------------------------------------------------

  Demo* demo;                       // not owned
  World world;                      // owns the meshes' list, not the meshes
  Camera* camera;                   // owned by the Demo
  SpareTransform* spareTransform;   // owned, never read

  int32_t glowPasses;               // glowPass rounds of this scene
  // Scene-set per frame where the design says so: the glow source's base
  // pass writes colour (World::render's last argument), and the glowPass
  // amount is glowBlurAmount - glowAmountDrop (the glow tightens on a beat).
  bool glowSourceWritesColour = true;
  float glowAmountDrop = 0.0f;

  // The glow group, registered at the end of each scene's constructor.
  float glowFadeOut;
  float glowBlurAmount;
  float glowBlurMode;               // truncated: 0 squares the glow in (mode 3), else plain additive (mode 2)
  float glowBlurZoom;
  float glowBlurZoomPowBase;
  float glowBlurZoomPow;
  float glowBlurAlpha;

 private:
  std::vector<std::unique_ptr<NoiseField>> ownedNoiseFields;  // made by makeNoiseField
};
