// World: the per-scene container of meshes, lights and billboards, and the
// one entry, render(), that turns them into a picture.
//
// Objects are named by their index in `objects`; every add operation returns
// it. Lights are meshes whose Light record is enabled. Lighting is multi-pass
// and fixed-function: a base pass lit by a head-lamp at the eye, then one
// additive pass per light, with depth-texture shadows compared in a texture
// unit. Soft shadows are screen-space: each shadowing light's compare result is
// rendered into a slot of the RenderTarget, blurred by the glow pass, and
// multiplied into that light's own image (combineSlots). Slots used, with
// base = target->firstFreeSlot: base+1+k blurred mask k, base+2+k raw mask k
// (scratch), base+1+masks the base image, base+2+masks+k the image of light k.
// Positions are world units, angles degrees; GL thread only.
#pragma once
#include <list>
#include <string>
#include <vector>

#include "geometry/Builders.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"

class Camera;
class Curve;
class RenderTarget;

// The settings of one World::render by name (see render for what each does).
// The defaults draw material slot 0 on the direct path, preparing first.
struct WorldRenderOptions {
  int skipObjects = 0;
  bool prepare = true;
  int materialIndex = 0;
  bool softShadows = false;
  bool lowShadow = false;
  bool lowOutput = false;
  bool baseAsImage = false;
  bool baseWritesColour = true;

  // A scene's glow source: prepares the frame and draws material slot 1 on
  // the direct path at half size (lowShadow and baseAsImage are set as the
  // scenes set them; the direct path does not read them).
  static WorldRenderOptions glowSource();
  // A scene's final picture, after its glow source: material slot 0 at full
  // size with soft shadows whose masks are half size; the preparation of the
  // glow source stands.
  static WorldRenderOptions finalPicture();
};

// A child of an object in the transform hierarchy.
struct ChildLink {
  int child = 0;                        // object index
  unsigned char options[3] = {1, 1, 1};  // nothing reads them
};

class World {
 public:
  World();
  // Frees the vectors only. The meshes and billboards are not deleted: they
  // stay alive to the end of the process (kept in a process-wide list so that
  // they remain reachable), as pointers to them may be held elsewhere.
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // ---- Adding objects -------------------------------------------------------

  // A new empty Mesh (object index returned); the material, when given, goes
  // to material slot 0. Every add operation starts with this.
  int addObject(const Material* material);

  // Loads "./models/<name>.a3d"-style files: the index, or -1 when the file
  // cannot be opened, -2 when it is empty (each with its message), -3 when
  // it is damaged. Reads the file at every call.
  int addModel(const std::string& fileName, const Material& material);

  // A light object: copies enabled, the three colours, direction, positional,
  // offset, spot exponent and cutoff, the attenuations, castsShadow and
  // shadowMapSize from `light`; nothing else (the light-model values, shadow
  // range and field of view, projected texture, polygon offset and alpha test
  // keep the defaults, deliberately). The two floats are not read. With a
  // shadow and no framebuffer objects, a map larger than the window
  // (maxWidth x maxHeight) is cut to the largest power of two that fits.
  // Logs "final shadowmap size is <n>". Needs a current GL context.
  int addLight(LightParameters& light, float unusedNear, float unusedFar, int maxWidth, int maxHeight);

  // Shapes made by formula (geometry/Builders.h); each applies the material
  // to slot 0 and returns the object index. Scenes use addBox(3, 3, m, false,
  // true); the rest are library operations.
  int addBox(int rows, int columns, const Material& material, bool inverted, bool cubeUV);
  int addSphere(float radius, int segments, int rings, const Material& material, bool inverted);
  int addTube(const Curve& curve, int stations, int sides, const Material& material, const Vector3& reference,
              float radius, bool inverted);
  int addRibbon(const Material& material);
  int addCube(const Material& material, bool inverted);
  int addFromArrays(const float* positions, const float* texCoords, int vertexCount, const int* indices,
                    int faceCount, const Material& material);
  // Re-runs a builder on an existing object; bad indices are ignored.
  void shapeBox(int object, int rows, int columns, const ShapeParameters& p, bool cubeUV);
  void shapeSphere(int object, float radius, int segments, int rings, const ShapeParameters& p, bool mapFromUnit,
                   VertexCallback callback);
  // One new object per face of `object` (materials 0 and 1 copied from it);
  // *created counts them. Returns the object count before the first new one.
  int explodeFaces(int object, int* created, int mode, bool solid, float height, float spread, float bias,
                   bool centre);

  // Appends a child link; null options mean 1, 1, 1. Bad indices are ignored.
  void addChild(int parent, int child, const unsigned char* options);

  // Unless keepExisting, clears `lights`; unless keepEmpty, appends every
  // object whose Light is enabled, in object order.
  void refreshLights(bool keepEmpty, bool keepExisting);

  // ---- Rendering ------------------------------------------------------------

  // skipObjects: non-zero, no mesh is touched or drawn (passes still run).
  // prepare: refresh lights, build matrices, recompute dirty normals, flatten
  //   arrays, redraw shadow maps.
  // materialIndex: every mesh's currentMaterial becomes this.
  // softShadows with a target: the soft path; otherwise the direct path.
  // lowShadow: soft masks at the target's half size.
  // lowOutput: the low camera and half-size images for the result.
  // baseAsImage: soft path renders the base pass into its own slot first.
  // baseWritesColour: false, the base pass only fills depth and the lit pass
  //   leaves blending as it finds it.
  void render(Camera* camera, int skipObjects, bool prepare, int materialIndex, bool softShadows,
              RenderTarget* target, bool lowShadow, bool lowOutput, bool baseAsImage, bool baseWritesColour);
  // The same with the settings by name; a thin call of the one above.
  void render(Camera* camera, RenderTarget* target, const WorldRenderOptions& options);

  // The passes render() is made of; public for tests and special scenes.
  // Matrix of object i and, recursively, of its children, from the current
  // modelview: translate, rotate x, y, z, scale, read into Mesh.matrix.
  void buildMatrices(int i);
  void basePass(bool writeColour);
  void litPass(bool blended);
  void shadowMapPass();
  // Returns the number of masks (shadowing lights).
  int shadowMaskPass(RenderTarget* target, bool prepare);
  // The image of light k of `lights` alone.
  void lightImagePass(int k);

  // ---- Mesh helpers ---------------------------------------------------------

  // Sets each mesh's lightPosition and lightDirection from a light object.
  void setLightVectors(Mesh& light);
  // Spherical texture coordinates for the object's vertices.
  void sphericalTexCoords(int object);
  // Copies position, colour and alpha slot by slot when the slot counts are
  // equal; otherwise nothing.
  void copyVertices(int fromObject, int toObject);

  // ---- Fields, in this order ------------------------------------------------

  std::vector<std::list<ChildLink>> children;  // one list per object
  std::vector<Mesh*> objects;                  // index = handle
  std::list<Mesh*> lights;                     // rebuilt by refreshLights
  std::vector<bool> isRoot;                    // set for every object before the matrix walk
  std::vector<bool> spareBits;                 // one false bit per object, not read
  std::vector<Billboard*> billboards;          // drawn after the meshes by the first one's matrices
  float baseLightAttenuation = 2.0f;           // constant attenuation of the base head-lamp; scenes use 6
  float softShadowMaskBlurAmount = 0.1f;       // glow pass amount of the mask blur
  int softShadowMaskBlurLoops = 3;             // glow pass count of the mask blur

 private:
  void buildMatricesAt(int i, int depth);
  Mesh* object(int index) const;  // null for an index out of range
  void drawBillboards(bool depthWrite, bool shadowCastersOnly);
  bool skipping = false;                       // skipObjects of the render in progress
};
