// Billboard: a screen-aligned textured quad at a world position (dust, flares,
// floating motes). Positions are world units; `halfSize` gives the quad's x and
// y half extents in the same units, as seen by a camera with no scale.
//
// Drawing is immediate mode between billboardBegin(first) and billboardEnd():
// begin reads the camera's modelview into `first`, keeps its translation and
// drops its rotation, so every quad faces the screen; each billboard's position
// is carried through the upper 3x3 of the saved modelview by hand. The first
// billboard drawn by a World must own its matrices (ownsMatrices true).
#pragma once
#include <GL/glew.h>

#include <vector>

#include "foundation/Vector3.h"

class Camera;

class Billboard {
 public:
  Billboard(Camera* camera, bool ownsMatrices);
  ~Billboard();
  Billboard(const Billboard&) = delete;
  Billboard& operator=(const Billboard&) = delete;

  // Draws this quad (or 3x3 tiles) with the matrices that billboardBegin left
  // in `first`. depthWrite: a shadow-casting billboard writes depth where its
  // texture's alpha exceeds 0.01; otherwise depth writes are off.
  void draw(Billboard& first, bool depthWrite);

  std::vector<int> items;      // not used
  GLuint texture = 0;
  int spareInts[3] = {0, 0, 0};
  Vector3 colour;              // quad colour, 0..1 (0, 0, 0 until a scene sets it)
  float alpha = 1.0f;
  float spareFloats[4] = {0, 0, 0, 0};
  float* viewMatrix = nullptr;   // 16 floats, owned; the rotation-free modelview of a draw run
  float* modelMatrix = nullptr;  // 16 floats, owned; the camera modelview read at billboardBegin
  Camera* camera = nullptr;      // kept, not read by drawing
  Vector3 position;              // world position
  Vector3 halfSize;              // x and y half extents of the quad
  Vector3 velocity;              // kept for scene code
  Vector3 spin;                  // kept for scene code
  int blendMode = 0;             // 0 additive (SRC_ALPHA, ONE), 1 alpha (SRC_ALPHA, ONE_MINUS_SRC_ALPHA), other: untouched
  bool castsShadow = false;      // drawn into shadow maps
  float time = 0.0f;             // written by scenes that animate by time
  float timeStep = 0.0f;
  bool tiled = false;            // 3x3 block of quads instead of one
  float tileSpacing = 0.0f;      // tile distance, in multiples of 0.5
};

// Pushes the modelview, sets up depth test, texturing and blending without
// culling, and loads `first`'s rotation-free copy of the current modelview.
void billboardBegin(Billboard& first);
// Pops the modelview and puts back the state the mesh passes expect:
// alpha test off, depth test and colour material on, depth writes on,
// environment GL_ADD, blend (SRC_ALPHA, ONE_MINUS_SRC_ALPHA).
void billboardEnd();
