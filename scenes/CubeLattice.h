// CubeLattice: the kit's shapes for the noise-placed cube scenes, built on the
// helpers of SceneSkeleton (scenes/SceneSkeleton.h): a lattice of small
// tumbled cubes that only seeds the noise sampling, the colour families laid
// over it, the near ring of plates behind it, placing by three noise fields,
// and the layered title that bursts out of a flash. Each builder's comment
// gives the exact order of its random draws; none seeds the generator except
// the colour families, which seed every cube.
//
// World units; angles in degrees. GL thread only.
#pragma once
#include <GL/glew.h>

#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"

class NoiseField;
class SceneSkeleton;
struct Material;

// ---- The lattice -------------------------------------------------------------
// countX x countY x countZ models of "./models/cube.a3d", one batch with both
// materials (addModelBatch), x innermost, then y, then z, n counting from 0.
// The home of cube n is (x, y, z) - centre; the position starts there. Three
// rand() draws per cube, in this order, drawn whether or not the model loaded:
//   r, s: rotation ((s / 32767 - 0.5) tumble - 90, (r / 32767 - 0.5) tumble, 0)
//   q:    scale (0.25, q / 32767 0.05 + 0.2, 0.25)
// useMatrix true.
struct LatticeSpec {
  int32_t countX = 1, countY = 1, countZ = 1;
  Vector3 centre;
  float tumble = 36.0f;  // degrees of spread round the upright pose
};

// Builds the lattice; objects[n] receives the object index of cube n and
// homes[n] its home (both resized to the cube count).
void addCubeLattice(SceneSkeleton& scene, const LatticeSpec& spec, const Material& picture, const Material& glow,
                    std::vector<int32_t>& objects, std::vector<Vector3>& homes);

// ---- The colour families -----------------------------------------------------
// For each cube n of `objects`, in order: srand((n / groupSize, integer) mod 3
// + seedBase), so each run of groupSize cubes shares one of three families,
// then seven randomSigned() draws in this order:
//   a, b, c:
//     glow diffuse     (a 1.65 + 2.5, b 0.85 + 1.1, c 0.34 + 0.5) glowDiffuse
//     glow ambient     (1, 1, 1) glowAmbient
//     picture diffuse  (a 1.2 + 1.66, b 0.44 + 0.64, c 0.23 + 0.36) pictureDiffuse
//     picture ambient  (a 0.4 + 0.5, b 0.4 + 0.5, c 0.4 + 0.5) pictureAmbient
//   four for the stage 0 offsets (SceneSkeleton::drawStageOffsets)
// then both looks go to the cube (applyLooks). The two materials are edited
// in place and keep the last cube's values.
struct CubeColourFamilies {
  int32_t groupSize = 60;
  uint32_t seedBase = 1993;
  float glowDiffuse = 0.05f;
  float glowAmbient = 0.01f;
  float pictureDiffuse = 0.1f;
  float pictureAmbient = 0.05f;
};

void applyCubeColourFamilies(SceneSkeleton& scene, const CubeColourFamilies& families, Material& picture, Material& glow,
                         const std::vector<int32_t>& objects);

// ---- The near ring of plates -------------------------------------------------
// `count` boxes around the z axis at z = 4, one box batch (addBoxBatch). Box i
// (i in radians) with five draws, in this order (r: randomUnit, s:
// randomSigned):
//   r1, r2: position (sin(i) (2 r2 + 20), cos(i) (2 r1 + 20), 4)
//   s1, s2: rotation (0, s2 180, s1 20)
//   s3:     scale (5, 5, 2 s3 + 10)
// useMatrix true. Returns the object index of the first box.
int32_t addPlateRing(SceneSkeleton& scene, int32_t count, const Material& picture, const Material& glow);

// ---- Placing by noise --------------------------------------------------------
// The position that three noise fields give a sample point p:
//   (x.fractalSum(p, octavesX), y.fractalSum(p, octavesY), z.fractalSum(p, octavesZ)) reach
Vector3 noisePlace(NoiseField& x, NoiseField& y, NoiseField& z, const Vector3& p, int octavesX, int octavesY,
                   int octavesZ, float reach);

// ---- The layered title -------------------------------------------------------
// 25 noise-stretched layers of a title texture, drawn inside an OverlayScope
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
// g is the disorder: 1 spreads the layers wide, near 0 they lie on each other.
// X is the title's own clock in seconds. No random draws.
//
// Seen from about a third of a unit through a 75-degree camera, only the
// middle fifth of the picture fills the screen: title pictures carry their
// lettering small in the centre (tools/imagegen).
struct TitleLayers {
  GLuint texture = 0;
  GLenum blendDestination = GL_ONE_MINUS_SRC_ALPHA;
  float heightSpread = 1.2f;
  Vector3 rim = Vector3(0.66f, 0.9f, 1.5f);
  float rimAlpha = 0.0f;
  float coreAlpha = 0.0f;
};

void drawTitleLayers(const TitleLayers& title, NoiseField& a, NoiseField& c, float slide, float g, float X);
