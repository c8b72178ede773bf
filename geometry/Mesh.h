// Mesh and Material: the one renderable object of the system, an editable
// triangle list in slot-addressed heap records plus the flat arrays that mesh
// drawing hands to OpenGL. Object-space units; rotation in degrees (x, then y,
// then z); triangles are counter-clockwise when seen from their front side.
//
// Slots: vertices and faces live in slot tables and are never moved; removed
// ones go on free lists and are handed out again by the next add, so a builder
// can rebuild a mesh in place without allocating. `updateArrays` flattens the
// live records into per-slot arrays (dead slots keep stale array contents).
// GL names are plain unsigned ints here so that this header needs no GL.
#pragma once
#include <cstdint>
#include <list>
#include <vector>

#include "foundation/Color4.h"
#include "foundation/Vector3.h"

class Camera;
class RenderTarget;
struct Light;

// How a texture stage of a Material combines with what lies below it (the
// texture environment of its unit). Plain values, stored in Material::stageMode.
enum StageMode : int {
  stageOff = 0,              // the stage is skipped
  stageModulate = 1,         // GL_MODULATE
  stageAdd = 2,              // GL_ADD
  stageModulateTwoPass = 3,  // GL_MODULATE, the mesh submitted twice
  stageBlend = 4,            // GL_BLEND
};

// The passes of Mesh::draw, as the World runs them.
enum MeshPass : int {
  meshPassLight = 0,          // one light, no shadow map
  meshPassShadowedLight = 2,  // one light with its shadow map, or a light's own image
  meshPassBase = 3,           // the base pass: stage 0 only, colour array B
  meshPassDepth = 4,          // depth only (shadow maps and masks): positions, no colour
};

// Material slots that the scenes draw with: slot 0 makes the picture, slot 1
// the low-resolution glow source.
enum MaterialSlot : int {
  pictureMaterial = 0,
  glowMaterial = 1,
};

// ---------------------------------------------------------------------------
// Material: the look of one drawing of a mesh. Eight per mesh; slots 0 to 3
// have per-vertex arrays, slots 0 and 1 have buffers on the card.
// ---------------------------------------------------------------------------
struct Material {
  static constexpr int maxShellTextures = 64;

  Material();

  Color4 ambient;
  Color4 diffuse;
  Color4 specular;
  float shininess;               // never copied by Mesh::setMaterial: meshes keep 0
  int stageMode[3];              // a StageMode
  unsigned stageCount;           // stages in use
  unsigned int stageTexture[3];  // GL texture names
  bool stageCubeMap[3];          // the stage is a reflection-mapped cube map
  bool stageDetail[3];           // copied, no visible effect
  float stageScaleU[3], stageScaleV[3];    // only stage 0's reach the texture-coordinate arrays
  float stageOffsetU[3], stageOffsetV[3];  // likewise
  float weight;                  // copied, not read by drawing
  bool castsShadow;              // drawn into shadow maps
  bool receivesShadow;           // shadow map applied when lit
  bool spareFlag;                // copied only
  bool refractive;               // screen-space refraction
  float refractionFront;
  float refractionBack;
  float refractionAlpha;
  bool shellsEnabled;            // layered shell drawing
  unsigned int shellTextures[maxShellTextures];  // GL texture names, the first shellCount used
  unsigned shellCount;
  int shellSpare;                // copied only
  bool shellTexture3D;
  float shellScaleU, shellScaleV;
  Vector3 shellDirection;        // added to the normal for the shell offset
  float shellLength;
  bool wireframe;
};

// ---------------------------------------------------------------------------
// Vertex and face records, one heap record per slot.
// ---------------------------------------------------------------------------
struct Vertex {
  bool dead = false;          // slot is on the free list
  Vector3 position;           // object space
  Vector3 normal;             // sum of adjacent face normals, then set to length 1
  Vector3 colour;             // multiplied into every material colour
  float alpha = 1.0f;         // per-vertex alpha
  Vector3 texCoord;           // u, v and an unused third component
  Vector3 eyePosition;        // eye-space position, filled only for refractive drawing
  Vector3 eyeNormal;          // likewise for the normal (the tip, not a direction)
  std::list<int> faces;       // the faces that use this vertex
  std::list<int> marks;       // created empty, not used
};

struct Face {
  bool dead = false;          // slot is on the free list
  int selectedCorners = 0;    // scratch counter of selectInSphere
  Vector3 normal;             // raw (v1 - v0) x (v2 - v0); its length is twice the area
  Vector3 unitNormal;         // normal set to length 1
  Vector3 cornerNormals[3];   // allocated, zero, not used
  int cornerCount = 3;        // always 3
  int vertexIndices[3] = {0, 0, 0};  // the corners as vertex slots
};

// ---------------------------------------------------------------------------
// Mesh. Members keep the system's names and order; the arrays are owned raw
// buffers because drawing hands them straight to gl*Pointer.
// ---------------------------------------------------------------------------
class Mesh {
public:
  static constexpr int materialCount = 8;
  static constexpr int arrayMaterialCount = 4;  // materials that have per-vertex arrays

  Mesh();
  ~Mesh();
  Mesh(const Mesh &) = delete;
  Mesh &operator=(const Mesh &) = delete;

  // --- slots --------------------------------------------------------------
  // Takes the front of freeVertices (its alpha keeps the old value) or a new
  // slot (alpha 1). Returns the slot.
  int addVertex(const Vector3 &position, const Vector3 &texCoord, const Vector3 &colour);
  // Corners are vertex slots, stored in the given order. Returns the face slot.
  int addFace(int a, int b, int c);
  void removeOldestFace();       // nothing when there is no live face
  void removeNewestFace();       // likewise
  void removeFace(int index);    // out-of-range or dead indices are ignored
  // Frees the vertex slot when no face uses it any more.
  void releaseVertex(int index);

  // --- normals (null list: all live records) -------------------------------
  void computeFaceNormals(const std::list<int> *faces = nullptr);
  void computeVertexNormals(bool unit, const std::list<int> *vertices = nullptr);
  void normalizeFaceNormals(const std::list<int> *faces = nullptr);

  // --- editing --------------------------------------------------------------
  // Copies into materials[currentMaterial]; shininess is deliberately left out.
  void setMaterial(const Material &source);
  void setAllVertexColours(const Vector3 &colour, float alpha);
  // Moves the centroid of the live vertices into `position`.
  void recentre();
  // direction *= amount in place (the caller's vector changes); each listed
  // vertex moves by direction x 1, x (1 - weight), or x falloff(1 - weight).
  void moveVertices(const std::list<int> &vertices, float amount, Vector3 &direction, bool weighted,
                    const std::list<float> &weights, float (*falloff)(float));
  void selectInSphere(std::list<int> &faces, std::list<int> &vertices, std::list<float> &weights,
                      const Vector3 &centre, float radius);
  // Segment from..to relative to `position` only; *t in 0..1 on a hit.
  bool intersectFace(int face, const Vector3 &from, const Vector3 &to, float *t);
  // Nearest hit among live faces; maxDistanceSquared 0 tests every face.
  bool pick(const Vector3 &from, const Vector3 &to, float *t, int *face, float maxDistanceSquared);

  // --- arrays ---------------------------------------------------------------
  // Flattens the records into the arrays (and, with buffers on, uploads them
  // once). Called by World render for each visible mesh when preparing.
  void updateArrays();

  // Draws one pass (a MeshPass); lives in the render layer (mesh drawing).
  void draw(int pass, bool allowMatrix, int reserved, bool shadowUnitShift);

  // The light record every mesh owns (null where no render layer is linked).
  Light *light() { return lightRecord; }

  // --- data, in the system's order -----------------------------------------
  int faceCount;                 // live faces
  int vertexCount;               // live vertices
  unsigned vertexSlotCount;      // slots ever created; vertex arrays are sized by this
  bool normalsDirty;             // World recomputes normals before the next frame
  bool setupState;               // this draw sets materials, textures and array pointers
  bool restoreState;             // this draw restores the state and disables the arrays
  bool batchFirst, batchLast;    // draw even when not visible (batch set-up / restore)
  Material *materials;           // array of materialCount, owned
  int currentMaterial;           // 0 to 3 in practice
  Vector3 lightPosition;         // of the light being drawn, set by the World per draw
  Vector3 lightDirection;
  Camera *camera;                // set by World render
  Vector3 position;
  Vector3 rotation;              // degrees, applied x, then y, then z
  Vector3 scale;                 // starts at (1, 1, 1)
  bool visible;
  int rowCount, columnCount;     // resolution asked of a builder, default for later calls
  bool inverted;                 // winding flag remembered by the tube builder
  float *vertexArray;            // 3 per vertex slot
  float *normalArray;            // 3 per vertex slot
  float *colourArrayA[arrayMaterialCount];  // 4 per vertex slot: diffuse * colour + ambient
  float *colourArrayB[arrayMaterialCount];  // 4 per vertex slot: ambient * colour
  float *colourArrayC[arrayMaterialCount];  // 4 per vertex slot: zero-filled, never written here
  float *texCoordArray[arrayMaterialCount]; // 3 per vertex slot
  uint16_t *indexArray;          // 3 per face; slots above 65535 are truncated silently
  uint16_t *indexArrayCopy;      // written and not read
  float *faceNormalArray;        // 3 per face, allocated and not filled
  float *shellVertexArray;       // 3 per vertex slot
  float *shellColourArray[arrayMaterialCount];   // 4 per vertex slot
  float *shellTexCoordArray[arrayMaterialCount]; // 3 per vertex slot
  unsigned vertexCapacity;       // vertex slots the arrays now hold
  unsigned faceCapacity;         // faces the face-sized arrays now hold
  RenderTarget *renderTarget;    // set by World render; used by refractive drawing
  std::vector<Face *> faces;     // slot table, owned records
  std::vector<Vertex *> vertices;  // slot table, owned records
  bool keepInvisibleFaces;       // false: faces whose three corners have alpha 0 are left out
  unsigned drawnFaceCount;       // triangles in indexArray
  unsigned drawnFaceCountCopy;
  float *matrix;                 // 16, object to world, built by the World hierarchy walk
  float *modelviewMatrix;        // 16, modelview at draw time, for eye-space vertices
  Light *lightRecord;            // owned; see light()
  bool anyArrayDirty, coloursDirty, coloursDirtyToo, texCoordsDirty, positionsDirty, indicesDirty;
  bool useMatrix;                // draw with `matrix` instead of position, rotation, scale
  unsigned int indexBuffer, vertexBuffer, normalBuffer;
  unsigned int texCoordBuffer0, colourBufferA0, colourBufferB0;
  unsigned int texCoordBuffer1, colourBufferA1, colourBufferB1;
  unsigned int colourBList, colourAList, depthList, spareList1, spareList2;
  bool colourBListBuilt, colourAListBuilt, depthListBuilt, spareBuilt1, spareBuilt2;
  bool buffersCreated;           // buffers are created and filled once and never again
  bool stripMode;                // draw stripIndices as one triangle strip
  int *stripIndices;             // owned, zero-terminated, read as 1-based vertex indices
  int stripCount;
  int *stripLengths;             // owned
  std::list<int> liveFaces;      // face slots in creation order
  std::list<int> freeFaces;      // recycled face slots
  std::list<int> freeVertices;   // recycled vertex slots

private:
  void removeFaceAt(std::list<int>::iterator where);
  void freeVertexArrays();
  void freeFaceArrays();
};

// The Light record type belongs to the render layer. It installs these two
// hooks (at static initialisation) so that every Mesh is born owning a Light
// with its defaults; where they are unset a Mesh has no light record.
extern Light *(*createMeshLight)();
extern void (*destroyMeshLight)(Light *);
