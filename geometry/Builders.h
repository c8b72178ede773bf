// Builders: geometry made by formula into a Mesh. The World's add operations
// create the Mesh, apply the material to slot 0 and call these to fill it.
// Object-space units; angles inside the formulas are radians, multiples of
// pi written as "(...)pi" with pi the float 3.1415927. Triangles are
// counter-clockwise seen from outside unless `inverted` asks otherwise.
#pragma once
#include <functional>

#include "foundation/Vector3.h"

class Curve;
class Mesh;

// The block a box or sphere builder reads. Defaults leave shapes as built.
struct ShapeParameters {
  float sizeX = 1, sizeY = 1, sizeZ = 1;           // half extents; radial multipliers on the sphere
  float inScaleX = 1, inScaleY = 1, inScaleZ = 1;  // applied before deformation
  float outScaleX = 1, outScaleY = 1, outScaleZ = 1;  // applied after deformation
  float ampA = 0, freqA = 0, phaseA = 0;
  float ampB = 0, freqB = 0, phaseB = 0;
  float ampC = 0, freqC = 0, phaseC = 0;
  float ampD = 0, freqD = 0, phaseD = 0;
  float spherify = 0;                  // 0 keeps the box, 1 projects radially
  float spare1 = 0, spare2 = 0;        // not read
  float twistScale = 0, twistPhase = 0;  // twist around y
  bool inverted = false;               // reversed winding
  bool rebuild = true;                 // false: keep the faces, only re-place the vertices
};

// Gets the colour by reference, then the position, the sphere value, an extra
// float (0), the radius, 1.0, 1.0 and the segment count.
using VertexCallback = void (*)(Vector3 &colour, const Vector3 &position, float value, float extra,
                                float radius, float a, float b, int segments);

// --- box --------------------------------------------------------------------
// addBox's filling: stores rows and columns as rowCount and columnCount, then,
// unless either is -1, runs shapeBox with default parameters and `inverted`.
void buildBox(Mesh &mesh, int rows, int columns, bool inverted, bool cubeUV);

// A subdivided box, then the sine deformation over every live vertex. 0 for
// rows or columns means the stored value. With n = rows, m = columns:
// x(i) = 2 sizeX (i - n/2)/n for i in 0..n-1, y likewise, z(k) with m, so a
// 3-grid spans -1 to +1/3 of the size. cubeUV: six separate grids with a
// 4 by 3 cross atlas; otherwise two end grids joined by border loops.
// Re-running with rebuild false compounds the deformation.
void shapeBox(Mesh &mesh, int rows, int columns, const ShapeParameters &p, bool cubeUV);

// --- sphere -----------------------------------------------------------------
// One vertex of the sphere walk: u = i/rings, w = j/segments. Fills the
// position and the unit point; returns Y^2 + X^2 + Z^2 (X, Z before the
// ampC/ampD terms).
float sphereVertex(const ShapeParameters &p, float radius, int i, int rings, int j, int segments,
                   Vector3 &position, Vector3 &unit);

// addSphere's filling: rowCount = rings, columnCount = segments, then
// shapeSphere with default parameters, `inverted`, mapping from the unit point.
void buildSphere(Mesh &mesh, float radius, int segments, int rings, bool inverted);

// Top vertex, rings-1 circles of `segments` vertices, bottom vertex; fans at
// the poles. Without rebuild the same walk rewrites slots 0 upward in order.
void shapeSphere(Mesh &mesh, float radius, int segments, int rings, const ShapeParameters &p,
                 bool mapFromUnit, VertexCallback callback);

// Fish-eye map around the pole:
//   v = (p.y/radius + 1) 0.5;  u0 = angleOf(p.x, p.z)/2pi - 0.25;
//   u = |u0| 0.5 (sqrt(x^2 + z^2) pi / radius) + 0.5;  then u scaleU, v scaleV.
void sphericalMap(const Vector3 &p, float *u, float *v, float radius, float scaleU, float scaleV);

// --- tube, ribbon, cube, arrays ---------------------------------------------
// A tube of `sides` around the curve at `stations` samples t = i/stations,
// with no caps. Removes all faces first; remembers `inverted` on the mesh.
void buildTube(Mesh &mesh, const Curve &curve, int stations, int sides, const Vector3 &reference,
               float radius, bool inverted);

// A double-sided band bent by time; addRibbon is shapeRibbon(0, 0, 1.0, 0.2, 1000).
void shapeRibbon(Mesh &mesh, float time, float phase, float baseWidth, float unused, int count);
void buildRibbon(Mesh &mesh);

// Eight vertices, twelve triangles and a 14-index strip (stripMode on).
void buildCube(Mesh &mesh, bool inverted);

// positions 3 floats and texCoords 2 floats per vertex, indices 3 per face;
// colour 1, 1, 1; sets normalsDirty.
void buildFromArrays(Mesh &mesh, const float *positions, const float *texCoords, int vertexCount,
                     const int *indices, int faceCount);

// --- face splitting ----------------------------------------------------------
// Turns each live face of `source` into a small mesh of its own, made by
// `newMesh` (the World's mesh creation: a new object with its material in
// slot 0). Draws crtRand numbers for the raised corners of solid modes other
// than 1. *created counts the new meshes.
void explodeFaces(Mesh &source, const std::function<Mesh *()> &newMesh, int *created, int mode,
                  bool solid, float height, float spread, float bias, bool centre);

// --- World-level helpers ------------------------------------------------------
// sphericalMap (radius 1, scales 1) of the first vertexCount slots into their
// texture coordinates; sets texCoordsDirty and anyArrayDirty.
void sphericalTexCoords(Mesh &mesh);

// Position, colour and alpha slot by slot when both meshes have the same
// slot count; nothing otherwise.
void copyVertices(const Mesh &from, Mesh &to);
