// MeshDraw: the helpers of Mesh::draw (declared in geometry/Mesh.h, defined in
// render/MeshDraw.cpp), the one function through which geometry reaches GL.
//
// Passes: 0 a light without shadow map, 2 a light with one (or a light image),
// 3 the base pass (stage 0 only, colour array B), 4 depth and shadow-mask
// drawing (positions only). Texture stages: stage 0 on unit 0; stages 1 and 2
// on units 1 and 2, or 2 and 3 with shadowUnitShift (unit 1 holds the map).
// Eye space is the camera's modelview space; screen-space refraction samples
// the picture copied into slot firstFreeSlot + 3 of the mesh's render target.
#pragma once
#include <GL/glew.h>

#include "foundation/Vector3.h"

class Mesh;

// Reflection-mapped cube map on the active unit: GL_REFLECTION_MAP on S, T, R,
// clamp to edge, linear filters. cubeMapEnd switches target and generators off.
void cubeMapBegin(GLuint texture);
void cubeMapEnd();

// GL_TEXTURE_ENV_MODE of a stage mode: 1 and 3 GL_MODULATE, 2 GL_ADD,
// 4 GL_BLEND; 0 (or anything else) gives 0, "leave it".
GLenum stageEnvironmentMode(int stageMode);

// eyePosition = M * position and eyeNormal = M * normal for each live vertex,
// M the mesh's modelviewMatrix. The translation is applied to the normal too:
// eyeNormal is the normal's tip in eye space, and the refraction offset relies
// on exactly that.
void computeEyeSpace(Mesh& mesh);

// Screen-space refraction coordinate of one vertex. e: eye position, n: eye
// normal, W, H: effectiveWidth / width and effectiveHeight / height.
//   z = max(-e.z, 1e-05)
//   s = (e.x * 0.33333334 / z + 0.5) * W + offset * n.x,           clamped 0.1..0.9
//   t = offset * 1.3333 * n.y + (e.y * 0.44444668 / z + 0.5) * H,  clamped 0.1..0.75
// The two factors stand for a fixed projection, not the camera's.
void refractionTexCoord(const Vector3& e, const Vector3& n, float offset, float W, float H, float* s, float* t);

// Submission p of a refractive mesh (0 inner surface, 1 outer): copies the
// current picture into slot firstFreeSlot + 3 (bound on unit 0), sets culling
// and offset, rescales the alpha of colour arrays B and C and flips the normals
// (p 0) or undoes both (p 1), and writes the texture coordinates of the current
// material. Constants come from material slot 0 whatever is current.
void refractionPrepare(Mesh& mesh, int p);

// The light-following texture matrix of stage 2 on the active unit's texture
// stack: from the eye-space direction of (position - lightPosition).
void lightFollowingTextureMatrix(Mesh& mesh);
