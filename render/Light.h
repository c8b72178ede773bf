// Light: the light record every Mesh owns, and the GL work of lights and
// depth-texture shadow maps. A mesh whose Light is `enabled` is a light of its
// World; its world-space position is the mesh `position` plus `offset`.
// Angles are degrees; matrices are 16 floats, OpenGL column-major.
//
// Shadow maps: a square GL_DEPTH_COMPONENT texture drawn from the light with a
// 60-degree perspective, then projected on the scene by eye-linear texture
// generation and compared in the texture unit (GL_ARB_shadow, result as
// intensity: 1 lit, 0 shadowed). With framebuffer objects the map has its own
// framebuffer; without them it is drawn in the lower-left corner of the back
// buffer and copied, so it must fit the window.
#pragma once
#include <GL/glew.h>

#include "foundation/Vector3.h"

class Mesh;

struct Light {
  bool enabled = false;                         // on the World's light list
  float ambient[4] = {-1.0f, -1.0f, -1.0f, 1.0f};  // deliberately negative: a light left at it darkens
  float diffuse[4] = {1.0f, 1.0f, 1.0f, 1.0f};
  float specular[4] = {0.0f, 0.0f, 0.0f, 1.0f};
  float lightModelAmbient[4] = {0.0f, 0.0f, 0.0f, 1.0f};  // given to glLightfv: rejected by GL, no effect
  float lightModelLocalViewer = 0.0f;           // given to glLightf: rejected, no effect
  float lightModelTwoSide = 0.0f;               // given to glLightf: rejected, no effect
  bool positional = true;                       // w of the position: 1, or 0 for a directional light
  Vector3 offset;                               // added to the mesh position
  Vector3 direction{0.0f, 0.0f, 1.0f};          // spot and shadow direction, world space
  float spotExponent = 100.0f;
  float spotCutoff = 90.0f;                     // degrees
  float constantAttenuation = 1.0f;
  float linearAttenuation = 0.0f;
  float quadraticAttenuation = 0.0f;
  bool castsShadow = false;                     // has a shadow map
  int shadowMapSize = 256;                      // side of the square map, pixels
  float shadowNear = 0.1f;
  float shadowFar = 100.0f;
  float shadowFieldOfView = 60.0f;              // degrees
  GLuint shadowTexture = 0;
  GLuint shadowFramebuffer = 0;
  GLuint shadowRenderbuffer = 0;                // kept, never made
  GLuint projectedTexture = 0;                  // slide texture projected from the light; 0 has no effect
  bool polygonOffset = true;                    // offset fill while drawing the map
  bool alphaTestShadow = false;                 // alpha test on the compare result
  float projectionMatrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  // light projection
  float viewMatrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};        // light view
};

// The block World::addLight takes is the record itself.
using LightParameters = Light;

// Side of a shadow map drawn in the back buffer: the largest power of two that
// is <= both window sides (start at 1, double while it fits, halve once).
int shadowMapSizeFitting(int maxWidth, int maxHeight);

// Makes the depth texture (and framebuffer, with framebuffer objects) of the
// mesh's light and its fixed projection. Sets castsShadow. Binds the texture
// on the active unit. An incomplete framebuffer ends the process with status 0.
void createShadowMap(Mesh& mesh);

// Sets up the GL light numbered *lightCounter (0 to 7; other values use
// GL_LIGHT0) from the mesh's light, under the current modelview (so positions
// are world space when the camera is applied), and moves the shadow camera
// to the light. Counter 0 also switches lights 1 to 7 off and lighting on.
// Does nothing for a light that is not enabled. The counter rises up to 8.
void applyLight(Mesh& mesh, int* lightCounter);

// Redirects drawing into the shadow map from the light's point of view:
// both matrices pushed and loaded, viewport (0, 0, size, size) saved and set,
// front faces culled, colour writes off, offset fill when polygonOffset.
void shadowMapBegin(Mesh& mesh);
// Finishes the map (copying it from the back buffer without framebuffer
// objects), clears the depth buffer and restores matrices and viewport.
void shadowMapEnd(Mesh& mesh);

// Projects the shadow map on the active unit: eye-linear S, T, R, Q from
// bias * projection * view, depth compare LEQUAL, result as intensity.
void shadowCompareBegin(Mesh& mesh);
void shadowCompareEnd(Mesh& mesh);

// Projects `projectedTexture` on the active unit like a slide, same planes.
void projectedTextureBegin(Mesh& mesh);
void projectedTextureEnd(Mesh& mesh);

// bias * projection * view of the light (column-major), the matrix whose rows
// become the eye planes: maps world space to shadow-map texture space.
void lightTextureMatrix(const Light& light, float out[16]);
