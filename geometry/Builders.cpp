// Builders: box, sphere, tube, ribbon, cube, arrays and face splitting.
#include "geometry/Builders.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/Angles.h"
#include "foundation/Curve.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"

namespace {

constexpr float pi = 3.1415927f;  // the float the deformation formulas use

void removeAllFaces(Mesh &mesh) {
  while (mesh.faceCount > 0 && !mesh.liveFaces.empty()) mesh.removeOldestFace();
}

const Vector3 white(1.0f, 1.0f, 1.0f);

// ===========================================================================
// Box
// ===========================================================================

// One side of the cubeUV layout: `outer` by `inner` vertices in scan order,
// then the cells. place(o, i, position, texCoord) fills each vertex.
template <typename Place>
void addSide(Mesh &mesh, int outer, int inner, bool setA, Place place) {
  std::vector<int> slots;
  slots.reserve(size_t(outer * inner));
  for (int o = 0; o < outer; ++o)
    for (int i = 0; i < inner; ++i) {
      Vector3 position, texCoord;
      place(o, i, position, texCoord);
      slots.push_back(mesh.addVertex(position, texCoord, white));
    }
  // A fresh mesh hands out consecutive slots; a rebuilt one may recycle them
  // in another order, so the cells are made through the slot table.
  for (int o = 0; o + 1 < outer; ++o)
    for (int i = 0; i + 1 < inner; ++i) {
      const int a = o * inner + i, s = inner;
      const int c00 = slots[size_t(a)], c01 = slots[size_t(a + 1)];
      const int c10 = slots[size_t(a + s)], c11 = slots[size_t(a + s + 1)];
      if (setA) {
        mesh.addFace(c00, c11, c01);
        mesh.addFace(c00, c10, c11);
      } else {
        mesh.addFace(c00, c01, c11);
        mesh.addFace(c00, c11, c10);
      }
    }
}

void buildCubeUVLayout(Mesh &mesh, int n, int m, const ShapeParameters &p) {
  auto X = [&](int i) { return 2.0f * p.sizeX * (float(i) - float(n) / 2.0f) / float(n); };
  auto Y = [&](int j) { return 2.0f * p.sizeY * (float(j) - float(n) / 2.0f) / float(n); };
  auto Z = [&](int k) { return 2.0f * p.sizeZ * (float(k) - float(m) / 2.0f) / float(m); };
  const float N = float(n - 1), M = float(m - 1);
  const bool inv = p.inverted;
  // Sides 1 and 2 scan y outer, x inner; sides 3 to 6 scan as their names
  // read (y or x outer, z inner, stride m). Sides 1, 4, 5 take set A and
  // 2, 3, 6 set B when not inverted, which makes every side face outward.
  addSide(mesh, n, n, !inv, [&](int j, int i, Vector3 &pos, Vector3 &tc) {
    pos.set(X(i), Y(j), Z(0));
    tc.set((float(n - 1 - i) / N + 1.0f) * 0.25f, (float(n - 1 - j) / N + 1.0f) / 3.0f, 0.0f);
  });
  addSide(mesh, n, n, inv, [&](int j, int i, Vector3 &pos, Vector3 &tc) {
    pos.set(X(i), Y(j), Z(m - 1));
    tc.set((float(i) / N + 3.0f) * 0.25f, (float(n - 1 - j) / N + 1.0f) / 3.0f, 0.0f);
  });
  addSide(mesh, n, m, inv, [&](int j, int k, Vector3 &pos, Vector3 &tc) {
    pos.set(X(0), Y(j), Z(k));
    tc.set((float(k) / M + 2.0f) * 0.25f, (float(n - 1 - j) / N + 1.0f) / 3.0f, 0.0f);
  });
  addSide(mesh, n, m, !inv, [&](int j, int k, Vector3 &pos, Vector3 &tc) {
    pos.set(X(n - 1), Y(j), Z(k));
    tc.set((float(m - 1 - k) / M + 0.0f) * 0.25f, (float(n - 1 - j) / N + 1.0f) / 3.0f, 0.0f);
  });
  addSide(mesh, n, m, !inv, [&](int i, int k, Vector3 &pos, Vector3 &tc) {
    pos.set(X(i), Y(0), Z(k));
    tc.set((float(n - 1 - i) / N + 1.0f) * 0.25f, (float(k) / M + 2.0f) / 3.0f, 0.0f);
  });
  addSide(mesh, n, m, inv, [&](int i, int k, Vector3 &pos, Vector3 &tc) {
    pos.set(X(i), Y(n - 1), Z(k));
    tc.set((float(n - 1 - i) / N + 1.0f) * 0.25f, (float(k) / M + 0.0f) / 3.0f, 0.0f);
  });
}

// The closed layout without texture coordinates: an n x n grid at z(0) and
// one at z(m), joined through border loops at the layers k = 1..m-2.
void buildLoopLayout(Mesh &mesh, int n, int m, const ShapeParameters &p) {
  auto X = [&](int i) { return 2.0f * p.sizeX * (float(i) - float(n) / 2.0f) / float(n); };
  auto Y = [&](int j) { return 2.0f * p.sizeY * (float(j) - float(n) / 2.0f) / float(n); };
  auto Z = [&](int k) { return 2.0f * p.sizeZ * (float(k) - float(m) / 2.0f) / float(m); };
  const bool inv = p.inverted;
  const Vector3 zero;

  // The border walk of an n x n grid as (i, j) pairs: along the first row,
  // down the last column, back along the last row, up the first column.
  std::vector<std::pair<int, int>> border;
  for (int i = 0; i < n - 1; ++i) border.push_back({i, 0});
  for (int j = 0; j < n - 1; ++j) border.push_back({n - 1, j});
  for (int i = n - 1; i > 0; --i) border.push_back({i, n - 1});
  for (int j = n - 1; j > 0; --j) border.push_back({0, j});

  auto grid = [&](float z, bool front) {
    std::vector<int> slots(size_t(n * n));
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        slots[size_t(j * n + i)] = mesh.addVertex(Vector3(X(i), Y(j), z), zero, white);
    for (int j = 0; j + 1 < n; ++j)
      for (int i = 0; i + 1 < n; ++i) {
        const int c00 = slots[size_t(j * n + i)], c01 = slots[size_t(j * n + i + 1)];
        const int c10 = slots[size_t((j + 1) * n + i)], c11 = slots[size_t((j + 1) * n + i + 1)];
        if (front != inv) {  // facing -z
          mesh.addFace(c00, c11, c01);
          mesh.addFace(c00, c10, c11);
        } else {
          mesh.addFace(c00, c01, c11);
          mesh.addFace(c00, c11, c10);
        }
      }
    std::vector<int> loop;
    for (auto ij : border) loop.push_back(slots[size_t(ij.second * n + ij.first)]);
    return loop;
  };

  std::vector<std::vector<int>> loops;
  loops.push_back(grid(Z(0), true));
  for (int k = 1; k <= m - 2; ++k) {
    std::vector<int> loop;
    for (auto ij : border) loop.push_back(mesh.addVertex(Vector3(X(ij.first), Y(ij.second), Z(k)), zero, white));
    loops.push_back(loop);
  }
  loops.push_back(grid(Z(m), false));

  for (size_t l = 0; l + 1 < loops.size(); ++l) {
    const std::vector<int> &a = loops[l], &b = loops[l + 1];
    for (size_t s = 0; s < a.size(); ++s) {
      const size_t t = (s + 1) % a.size();  // closing back to the start
      if (!inv) {
        mesh.addFace(a[s], a[t], b[t]);
        mesh.addFace(a[s], b[t], b[s]);
      } else {
        mesh.addFace(a[s], b[t], a[t]);
        mesh.addFace(a[s], b[s], b[t]);
      }
    }
  }
}

void deform(Mesh &mesh, const ShapeParameters &p) {
  const float s = p.spherify;
  for (Vertex *v : mesh.vertices) {
    if (v->dead) continue;
    const float x = v->position.x * p.inScaleX;
    const float y = v->position.y * p.inScaleY;
    const float z = v->position.z * p.inScaleZ;
    float r = std::sqrt(x * x + y * y + z * z) *
              (1.0f + p.ampA * std::sin((x * p.freqA + p.phaseA) * pi) +
               p.ampB * std::cos((z * p.freqB + p.phaseB) * pi));
    if (r == 0.0f) r = 1e-07f;
    const float a = (p.twistPhase - y * p.twistScale) * pi;
    const float xt = x * std::cos(a) + z * std::sin(a);
    const float zt = z * std::cos(a) - x * std::sin(a);
    v->position.x =
        ((1.0f - s) * xt + (s * xt / r + p.ampC * std::cos((y * p.freqC + p.phaseC) * pi)) * p.sizeX) *
        p.outScaleX;
    v->position.y = ((y / r) * s * p.sizeY + (1.0f - s) * y) * p.outScaleY;
    v->position.z =
        ((1.0f - s) * zt + ((zt / r) * s + p.ampD * std::sin((y * p.freqD + p.phaseD) * pi)) * p.sizeZ) *
        p.outScaleZ;
  }
}

}  // namespace

void shapeBox(Mesh &mesh, int rows, int columns, const ShapeParameters &p, bool cubeUV) {
  if (rows == 0) rows = mesh.rowCount;
  if (columns == 0) columns = mesh.columnCount;
  mesh.normalsDirty = true;
  mesh.positionsDirty = mesh.coloursDirty = mesh.coloursDirtyToo = true;
  mesh.texCoordsDirty = mesh.anyArrayDirty = true;
  if (p.rebuild) {
    removeAllFaces(mesh);
    mesh.indicesDirty = true;
    if (rows >= 2 && columns >= 2) {  // a single row makes no cell
      if (cubeUV)
        buildCubeUVLayout(mesh, rows, columns, p);
      else
        buildLoopLayout(mesh, rows, columns, p);
    }
  }
  deform(mesh, p);
}

void buildBox(Mesh &mesh, int rows, int columns, bool inverted, bool cubeUV) {
  mesh.rowCount = rows;
  mesh.columnCount = columns;
  if (rows == -1 || columns == -1) return;
  ShapeParameters p;
  p.inverted = inverted;
  shapeBox(mesh, rows, columns, p, cubeUV);
}

// ===========================================================================
// Sphere
// ===========================================================================
float sphereVertex(const ShapeParameters &p, float radius, int i, int rings, int j, int segments,
                   Vector3 &position, Vector3 &unit) {
  const float u = float(i) / float(rings);
  const float w = float(j) / float(segments);
  const float phi = u * pi;
  const float theta = 2.0f * w * pi;
  unit.set(std::sin(theta) * std::sin(phi), std::cos(phi), std::cos(theta) * std::sin(phi));
  const float Y = (1.0f + p.ampA * std::cos((p.freqA * w + p.phaseA) * pi)) * std::cos(phi);
  float fx = 1.0f, fz = 1.0f;
  if (p.ampB != 0.0f) {
    fx = p.ampB * std::sin((w * p.freqB + p.phaseB) * pi) + 1.0f;
    fz = p.ampB * std::cos((w * p.freqB + p.phaseB) * pi) + 1.0f;
  }
  if (p.ampA != 0.0f) {
    const float gain = p.ampA * std::cos((u * p.freqA + p.phaseA) * pi);
    fx += gain;
    fz += gain;
  }
  float X = unit.x * fx;
  float Z = unit.z * fz;
  const float value = Y * Y + X * X + Z * Z;
  if (p.ampC != 0.0f) X += std::sin((u * p.freqC + p.phaseC) * pi) * p.ampC * p.sizeX;
  if (p.ampD != 0.0f) Z += std::cos((u * p.freqD + p.phaseD) * pi) * p.ampD * p.sizeZ;
  position.set(X * radius * p.sizeX, Y * radius * p.sizeY, Z * radius * p.sizeZ);
  return value;
}

void sphericalMap(const Vector3 &p, float *u, float *v, float radius, float scaleU, float scaleV) {
  const double vv = (p.y / radius + 1.0f) * 0.5;
  const double u0 = angleOf(p.x, p.z) / 6.28318530717958 - 0.25;
  const double h = std::sqrt(double(p.x) * p.x + double(p.z) * p.z);
  const double uu = std::fabs(u0) * 0.5 * (h * 3.14159265358979 / radius) + 0.5;
  *u = float(uu * scaleU);
  *v = float(vv * scaleV);
}

void shapeSphere(Mesh &mesh, float radius, int segments, int rings, const ShapeParameters &p,
                 bool mapFromUnit, VertexCallback callback) {
  mesh.normalsDirty = true;
  if (rings == 0) rings = mesh.rowCount;
  if (segments == 0) segments = mesh.columnCount;
  if (rings < 1 || segments < 1) return;

  int nextSlot = 0;  // the rewrite walk without rebuild
  auto place = [&](int i, int j) {
    Vector3 position, unit;
    const float value = sphereVertex(p, radius, i, rings, j, segments, position, unit);
    float u, v;
    sphericalMap(mapFromUnit ? unit : position, &u, &v, radius, 1.0f, 1.0f);
    Vector3 colour = white;
    if (callback) callback(colour, position, value, 0.0f, radius, 1.0f, 1.0f, segments);
    if (p.rebuild) return mesh.addVertex(position, Vector3(u, v, 0.0f), colour);
    const int slot = nextSlot++;
    if (size_t(slot) < mesh.vertices.size()) {
      Vertex *vertex = mesh.vertices[size_t(slot)];
      vertex->position = position;
      vertex->texCoord.set(u, v, 0.0f);
      vertex->colour = colour;
    }
    return slot;
  };
  auto face = [&](int a, int b, int c) {
    if (!p.rebuild) return;
    if (p.inverted)
      mesh.addFace(a, c, b);
    else
      mesh.addFace(a, b, c);
  };

  if (p.rebuild) removeAllFaces(mesh);
  const int top = place(0, 0);
  std::vector<std::vector<int>> circles;
  for (int i = 1; i < rings; ++i) {
    std::vector<int> circle;
    for (int j = 0; j < segments; ++j) circle.push_back(place(i, j));
    circles.push_back(circle);
  }
  const int bottom = place(rings, 0);
  if (circles.empty()) return;

  for (int j = 0; j < segments; ++j) {
    const int k = (j + 1) % segments;  // the last column closes onto the first
    face(top, circles.front()[size_t(j)], circles.front()[size_t(k)]);
    for (size_t c = 0; c + 1 < circles.size(); ++c) {
      const int a = circles[c][size_t(j)], b = circles[c][size_t(k)];
      const int d = circles[c + 1][size_t(j)], e = circles[c + 1][size_t(k)];
      face(a, d, e);
      face(a, e, b);
    }
    face(bottom, circles.back()[size_t(k)], circles.back()[size_t(j)]);
  }
}

void buildSphere(Mesh &mesh, float radius, int segments, int rings, bool inverted) {
  mesh.rowCount = rings;
  mesh.columnCount = segments;
  ShapeParameters p;
  p.inverted = inverted;
  shapeSphere(mesh, radius, segments, rings, p, true, nullptr);
}

// ===========================================================================
// Tube
// ===========================================================================
void buildTube(Mesh &mesh, const Curve &source, int stations, int sides, const Vector3 &reference,
               float radius, bool inverted) {
  removeAllFaces(mesh);
  mesh.inverted = inverted;
  if (stations < 1 || sides < 1) return;
  Curve curve = source;  // evaluation is not const
  std::vector<int> previous, current;
  for (int i = 0; i < stations; ++i) {
    const float t = float(i) / float(stations);
    Vector3 P, Q;
    curve.evaluate(t, P);
    curve.evaluate(t + 2.0f / float(stations), Q);
    Vector3 d = Q - P;
    d.setLength(1.0f);
    Vector3 r = d + reference;
    r -= r.projectedOn(d);
    r.setLength(1.0f);
    r *= radius;
    current.clear();
    for (int j = 0; j < sides; ++j) {
      const Vector3 at = P + r.rotatedAround(d, float(j) * 6.2831855f / float(sides));
      current.push_back(mesh.addVertex(at, Vector3(float(j) / float(sides), t, 0.0f), white));
    }
    if (i > 0) {
      for (int j = 0; j < sides; ++j) {
        const int k = (j + 1) % sides;  // the last side closes to the first
        const int a = previous[size_t(j)], b = previous[size_t(k)];
        const int c = current[size_t(j)], e = current[size_t(k)];
        if (!inverted) {
          mesh.addFace(a, b, e);
          mesh.addFace(a, e, c);
        } else {
          mesh.addFace(a, e, b);
          mesh.addFace(a, c, e);
        }
      }
    }
    previous = current;
  }
}

// ===========================================================================
// Ribbon
// ===========================================================================
void shapeRibbon(Mesh &mesh, float time, float phase, float baseWidth, float unused, int count) {
  mesh.normalsDirty = true;
  removeAllFaces(mesh);
  Vector3 p(0.0f, 0.0f, 0.0f);
  Vector3 d(0.5f, 1.7f, 0.35f);
  Vector3 s(0.0f, 0.0f, 1.0f);
  s -= s.projectedOn(d);
  s.setLength(1.0f);
  const float step = 0.025f;
  Vector3 tex0(0.0f, 0.0f, 0.0f), tex1(0.0f, 0.5f, 0.0f);
  int last[4] = {0, 0, 0, 0};
  for (int i = 0; i < count; ++i) {
    const float fi = float(i);
    const float w = std::sin(fi * step * 10.0f + time * 0.0025f + phase) * 0.35f + baseWidth;
    const Vector3 colour = (i % 2 == 0) ? Vector3(w * 0.8f, w * 0.88f, w) : Vector3(w * 0.78f, w * 0.8f, w);
    int now[4];
    now[0] = mesh.addVertex(p, tex0, colour);
    now[1] = mesh.addVertex(p + s, tex1, colour);
    now[2] = mesh.addVertex(p, tex0, colour);
    now[3] = mesh.addVertex(p + s, tex1, colour);
    tex0.x = tex1.x = fi * 0.5f;
    if (i > 0) {
      // The first pair joins one way, the second the other: a double-sided band.
      mesh.addFace(last[0], last[1], now[1]);
      mesh.addFace(last[0], now[1], now[0]);
      mesh.addFace(last[2], now[3], last[3]);
      mesh.addFace(last[2], now[2], now[3]);
    }
    for (int k = 0; k < 4; ++k) last[k] = now[k];

    const double dAngle1 =
        std::cos(std::sin(fi * step * 4.5f + time * 0.01f + phase) * 3.234999895095825 * 3.14159265358979) *
        0.31415927004031685;
    const double dAngle2 = std::cos(fi * step * 4.5f + time * 0.004f + phase) * 0.26703537836393487;
    d = d.rotatedAroundAxisIndex(2, float(dAngle1)).rotatedAroundAxisIndex(0, float(dAngle2));
    const double sAngle1 =
        std::cos(std::sin(fi * step * 3.5f + time * 0.01f + phase) * 3.234999895095825 * 3.14159265358979) *
        0.31415927004031685;
    const double sAngle2 = std::cos(fi * step * 4.5f + phase + time * 0.004f) * 0.26703537836393487;
    s = s.rotatedAroundAxisIndex(2, float(sAngle1)).rotatedAroundAxisIndex(0, float(sAngle2));
    p += d * 4.5f * step;
  }
}

void buildRibbon(Mesh &mesh) { shapeRibbon(mesh, 0.0f, 0.0f, 1.0f, 0.2f, 1000); }

// ===========================================================================
// Cube, arrays
// ===========================================================================
void buildCube(Mesh &mesh, bool inverted) {
  // The corner list is kept as built: slots 6 and 7 repeat slots 3 and 2, so
  // the top face's far edge lies on the bottom.
  static const float corners[8][3] = {{1, -1, 1},  {-1, -1, 1}, {1, -1, -1},  {-1, -1, -1},
                                      {1, 1, 1},   {-1, 1, 1},  {-1, -1, -1}, {1, -1, -1}};
  static const int triangles[12][3] = {{0, 2, 1}, {1, 2, 3}, {0, 4, 2}, {2, 4, 7},
                                       {3, 2, 7}, {3, 7, 6}, {1, 3, 6}, {1, 6, 5},
                                       {0, 1, 4}, {1, 5, 4}, {6, 7, 5}, {7, 4, 5}};
  static const int strip[14] = {3, 2, 6, 7, 4, 2, 0, 3, 1, 6, 5, 4, 1, 0};
  (void)inverted;  // not read: the cube has one winding
  int slot[8];
  for (int i = 0; i < 8; ++i)
    slot[i] = mesh.addVertex(Vector3(corners[i][0], corners[i][1], corners[i][2]), Vector3(), white);
  for (const auto &t : triangles) mesh.addFace(slot[t[0]], slot[t[1]], slot[t[2]]);
  delete[] mesh.stripIndices;
  delete[] mesh.stripLengths;
  mesh.stripIndices = new int[15];
  for (int i = 0; i < 14; ++i) mesh.stripIndices[i] = strip[i];
  mesh.stripIndices[14] = 0;  // terminator
  mesh.stripCount = 1;
  mesh.stripLengths = new int[1]{14};
  mesh.stripMode = true;
}

void buildFromArrays(Mesh &mesh, const float *positions, const float *texCoords, int vertexCount,
                     const int *indices, int faceCount) {
  std::vector<int> slots(size_t(vertexCount > 0 ? vertexCount : 0));
  for (int i = 0; i < vertexCount; ++i)
    slots[size_t(i)] = mesh.addVertex(Vector3(positions[i * 3], positions[i * 3 + 1], positions[i * 3 + 2]),
                                      Vector3(texCoords[i * 2], texCoords[i * 2 + 1], 0.0f), white);
  for (int f = 0; f < faceCount; ++f)
    mesh.addFace(slots[size_t(indices[f * 3])], slots[size_t(indices[f * 3 + 1])],
                 slots[size_t(indices[f * 3 + 2])]);
  mesh.normalsDirty = true;
}

// ===========================================================================
// Face splitting
// ===========================================================================
void explodeFaces(Mesh &source, const std::function<Mesh *()> &newMesh, int *created, int mode,
                  bool solid, float height, float spread, float bias, bool centre) {
  // The same normals pass as the World's preparation.
  source.computeFaceNormals(nullptr);
  source.computeVertexNormals(true, nullptr);
  source.normalizeFaceNormals(nullptr);
  if (created) *created = 0;
  const std::vector<int> live(source.liveFaces.begin(), source.liveFaces.end());
  for (int faceIndex : live) {
    const Face *face = source.faces[size_t(faceIndex)];
    Mesh *mesh = newMesh();
    if (!mesh) continue;
    if (created) ++*created;
    mesh->materials[0] = source.materials[0];
    mesh->materials[1] = source.materials[1];
    mesh->rowCount = mesh->columnCount = 2;
    mesh->inverted = false;
    mesh->normalsDirty = true;

    const Vector3 n = face->unitNormal * height;  // unit length from the normals pass above
    Vector3 pos[3], tex[3], col[3];
    Vector3 meanPos, meanTex, meanCol;
    for (int c = 0; c < 3; ++c) {
      const Vertex *v = source.vertices[size_t(face->vertexIndices[c])];
      pos[c] = v->position;
      tex[c] = v->texCoord;
      col[c] = v->colour;
      meanPos += pos[c];
      meanTex += tex[c];
      meanCol += col[c];
    }
    int c0 = mesh->addVertex(pos[0], tex[0], col[0]);
    int c1 = mesh->addVertex(pos[1], tex[1], col[1]);
    int c2 = mesh->addVertex(pos[2], tex[2], col[2]);
    mesh->addFace(c0, c1, c2);
    meanPos *= 0.3333333f;
    meanTex *= 0.3333333f;
    meanCol *= 0.3333333f;
    const Vector3 top = meanPos + n;
    const Vector3 pivot = top - n * 2.0f / 3.0f;
    auto fresh = [&](int k) { return mesh->addVertex(pos[k], tex[k], col[k]); };

    if (!solid) {
      const int t = mesh->addVertex(top, meanTex, meanCol);
      mesh->addFace(c0, t, c1);
      mesh->addFace(c1, c2, t);
      mesh->addFace(c0, c2, t);
    } else if (mode == 1) {
      const int t = mesh->addVertex(top, meanTex, meanCol);
      {
        const int a = fresh(0), b = fresh(1);
        mesh->addFace(t, a, b);
      }
      {
        const int a = fresh(1), b = fresh(2);
        mesh->addFace(t, a, b);
      }
      {
        // As built: a repeat of the second triangle, reversed.
        const int a = fresh(2), b = fresh(1);
        mesh->addFace(t, a, b);
      }
    } else {
      // Raised corners in the order c0, c2, c1: one random number each.
      Vector3 raised[3];
      for (int k : {0, 2, 1}) {
        const float rho = (float(crtRand()) / 32767.0f + bias) * spread + 1.0f;
        raised[k] = pos[k] + n * rho;
      }
      const int r0 = mesh->addVertex(raised[0], tex[0], col[0]);
      const int r1 = mesh->addVertex(raised[1], tex[1], col[1]);
      const int r2 = mesh->addVertex(raised[2], tex[2], col[2]);
      mesh->addFace(r0, r1, r2);  // the cap
      const Vector3 point[6] = {pos[0], pos[1], pos[2], raised[0], raised[1], raised[2]};
      const Vector3 pointTex[6] = {tex[0], tex[1], tex[2], tex[0], tex[1], tex[2]};
      const Vector3 pointCol[6] = {col[0], col[1], col[2], col[0], col[1], col[2]};
      static const int sides[6][3] = {{0, 3, 4}, {0, 2, 3}, {2, 1, 5}, {0, 4, 1}, {2, 5, 3}, {1, 4, 5}};
      for (const auto &t : sides) {
        int v[3];
        for (int c = 0; c < 3; ++c) v[c] = mesh->addVertex(point[t[c]], pointTex[t[c]], pointCol[t[c]]);
        mesh->addFace(v[0], v[1], v[2]);
      }
    }

    if (centre) {
      for (Vertex *v : mesh->vertices)
        if (!v->dead) v->position -= pivot;
      mesh->position = pivot;
    }
  }
}

// ===========================================================================
// World-level helpers
// ===========================================================================
void sphericalTexCoords(Mesh &mesh) {
  const size_t limit = std::min(mesh.vertices.size(), size_t(mesh.vertexCount > 0 ? mesh.vertexCount : 0));
  for (size_t i = 0; i < limit; ++i) {
    Vertex *v = mesh.vertices[i];
    float u, w;
    sphericalMap(v->position, &u, &w, 1.0f, 1.0f, 1.0f);
    v->texCoord.x = u;
    v->texCoord.y = w;
  }
  mesh.texCoordsDirty = true;
  mesh.anyArrayDirty = true;
}

void copyVertices(const Mesh &from, Mesh &to) {
  if (from.vertexSlotCount != to.vertexSlotCount) return;
  for (size_t i = 0; i < from.vertices.size() && i < to.vertices.size(); ++i) {
    to.vertices[i]->position = from.vertices[i]->position;
    to.vertices[i]->colour = from.vertices[i]->colour;
    to.vertices[i]->alpha = from.vertices[i]->alpha;
  }
}
