// Builders: counts, extents, winding, deformation, and the draws of random
// numbers made by face splitting.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <vector>

#include "foundation/Curve.h"
#include "foundation/Random.h"
#include "geometry/Builders.h"
#include "geometry/Mesh.h"

namespace {

Vector3 centroidOf(const Mesh &m) {
  Vector3 sum;
  int n = 0;
  for (const Vertex *v : m.vertices)
    if (!v->dead) {
      sum += v->position;
      ++n;
    }
  return sum * (1.0f / float(n));
}

// Every face of a convex, closed mesh points away from its centre (or
// towards it when `inward`).
void expectFacesPointOutward(Mesh &m, bool inward = false) {
  m.computeFaceNormals();
  const Vector3 centre = centroidOf(m);
  int checked = 0;
  for (int f : m.liveFaces) {
    const Face *face = m.faces[size_t(f)];
    Vector3 mid;
    for (int c : face->vertexIndices) mid += m.vertices[size_t(c)]->position;
    mid *= 1.0f / 3.0f;
    const float side = dot(face->normal, mid - centre);
    if (inward)
      EXPECT_LT(side, 0.0f) << "face " << f;
    else
      EXPECT_GT(side, 0.0f) << "face " << f;
    ++checked;
  }
  EXPECT_GT(checked, 0);
}

// Each undirected edge is used by exactly two faces, once in each direction:
// the surface is closed and consistently wound. Positions, not slots, are
// compared, since the box duplicates its vertices along the edges.
void expectClosedByPosition(const Mesh &m) {
  std::map<std::pair<std::vector<float>, std::vector<float>>, int> edges;
  auto key = [](const Vector3 &v) { return std::vector<float>{v.x, v.y, v.z}; };
  for (int f : m.liveFaces) {
    const Face *face = m.faces[size_t(f)];
    for (int c = 0; c < 3; ++c) {
      const Vector3 &a = m.vertices[size_t(face->vertexIndices[c])]->position;
      const Vector3 &b = m.vertices[size_t(face->vertexIndices[(c + 1) % 3])]->position;
      edges[{key(a), key(b)}] += 1;
    }
  }
  for (const auto &e : edges) {
    auto reverse = edges.find({e.first.second, e.first.first});
    ASSERT_NE(reverse, edges.end());
    EXPECT_EQ(e.second, reverse->second);
  }
}

}  // namespace

// --- box ---------------------------------------------------------------------

TEST(BoxBuilderTest, ThreeByThreeCubeUVMakes54VerticesAnd48Triangles) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  EXPECT_EQ(54, m.vertexCount);
  EXPECT_EQ(48, m.faceCount);
  EXPECT_EQ(3, m.rowCount);
  EXPECT_EQ(3, m.columnCount);
  EXPECT_TRUE(m.normalsDirty);
}

TEST(BoxBuilderTest, GridEndsOneStepShortOfThePositiveSize) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  float lo[3] = {1e9f, 1e9f, 1e9f}, hi[3] = {-1e9f, -1e9f, -1e9f};
  for (const Vertex *v : m.vertices)
    for (int a = 0; a < 3; ++a) {
      lo[a] = std::min(lo[a], v->position[a]);
      hi[a] = std::max(hi[a], v->position[a]);
    }
  for (int a = 0; a < 3; ++a) {
    EXPECT_FLOAT_EQ(-1.0f, lo[a]);
    EXPECT_FLOAT_EQ(1.0f / 3.0f, hi[a]);
  }
}

TEST(BoxBuilderTest, DefaultShapeParametersLeaveTheGridAsComputed) {
  Mesh m;
  buildBox(m, 4, 5, false, true);
  // Side 1 is the first grid: z(0) = -1, x(i) = 2(i - 2)/4, y(j) = 2(j - 2)/4,
  // scanned y outer, x inner.
  for (int j = 0; j < 4; ++j)
    for (int i = 0; i < 4; ++i) {
      const Vector3 &p = m.vertices[size_t(j * 4 + i)]->position;
      EXPECT_EQ(2.0f * (float(i) - 2.0f) / 4.0f, p.x);
      EXPECT_EQ(2.0f * (float(j) - 2.0f) / 4.0f, p.y);
      EXPECT_EQ(-1.0f, p.z);
    }
}

TEST(BoxBuilderTest, CubeUVSidesFaceOutwardOrInwardWhenInverted) {
  Mesh out;
  buildBox(out, 3, 3, false, true);
  expectFacesPointOutward(out);
  Mesh in;
  buildBox(in, 3, 4, true, true);
  expectFacesPointOutward(in, true);
}

TEST(BoxBuilderTest, CubeUVIsAClosedSurface) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  expectClosedByPosition(m);
}

TEST(BoxBuilderTest, CubeUVTextureCoordinatesFormTheCrossAtlas) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  // Side 1, vertex (i 0, j 0): u = ((n-1-i)/N + 1) 0.25 = 0.5, v = ((n-1-j)/N + 1)/3 = 2/3.
  EXPECT_FLOAT_EQ(0.5f, m.vertices[0]->texCoord.x);
  EXPECT_FLOAT_EQ(2.0f / 3.0f, m.vertices[0]->texCoord.y);
  // Side 2 starts at slot 9: u = (i/N + 3) 0.25 = 0.75 at i 0.
  EXPECT_FLOAT_EQ(0.75f, m.vertices[9]->texCoord.x);
  // Side 3 (slot 18), k 0: u = (k/M + 2) 0.25 = 0.5.
  EXPECT_FLOAT_EQ(0.5f, m.vertices[18]->texCoord.x);
  // Side 4 (slot 27), k 0: u = ((m-1-k)/M) 0.25 = 0.25.
  EXPECT_FLOAT_EQ(0.25f, m.vertices[27]->texCoord.x);
  // Side 5 (slot 36), k 0: v = (k/M + 2)/3 = 2/3; side 6 (slot 45): v = 0.
  EXPECT_FLOAT_EQ(2.0f / 3.0f, m.vertices[36]->texCoord.y);
  EXPECT_FLOAT_EQ(0.0f, m.vertices[45]->texCoord.y);
  for (const Vertex *v : m.vertices) {
    EXPECT_GE(v->texCoord.x, 0.0f);
    EXPECT_LE(v->texCoord.x, 1.0f);
    EXPECT_GE(v->texCoord.y, 0.0f);
    EXPECT_LE(v->texCoord.y, 1.0f);
    EXPECT_EQ(Vector3(1, 1, 1), v->colour);
  }
}

TEST(BoxBuilderTest, LoopLayoutIsClosedAndOutward) {
  Mesh m;
  buildBox(m, 4, 5, false, false);
  // Two 4x4 grids and m-2 = 3 loops of 4n-4 = 12 vertices.
  EXPECT_EQ(2 * 16 + 3 * 12, m.vertexCount);
  expectFacesPointOutward(m);
  expectClosedByPosition(m);
  for (const Vertex *v : m.vertices) EXPECT_EQ(Vector3(0, 0, 0), v->texCoord);
  Mesh in;
  buildBox(in, 3, 3, true, false);
  expectFacesPointOutward(in, true);
}

TEST(BoxBuilderTest, MinusOneRowsStoresTheResolutionAndBuildsNothing) {
  Mesh m;
  buildBox(m, -1, 7, false, true);
  EXPECT_EQ(-1, m.rowCount);
  EXPECT_EQ(7, m.columnCount);
  EXPECT_EQ(0, m.faceCount);
}

TEST(BoxBuilderTest, SpherifyOneWithSizeOnePutsEveryVertexOnTheUnitSphere) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  ShapeParameters p;
  p.spherify = 1.0f;
  shapeBox(m, 0, 0, p, true);  // 0: the stored resolution
  EXPECT_EQ(54, m.vertexCount);
  for (const Vertex *v : m.vertices) EXPECT_NEAR(1.0f, v->position.length(), 1e-5);
}

TEST(BoxBuilderTest, OutScaleIsAppliedAfterDeformation) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  ShapeParameters p;
  p.spherify = 1.0f;
  p.outScaleY = 3.0f;
  shapeBox(m, 3, 3, p, true);
  for (const Vertex *v : m.vertices) {
    const Vector3 q(v->position.x, v->position.y / 3.0f, v->position.z);
    EXPECT_NEAR(1.0f, q.length(), 1e-5);
  }
}

TEST(BoxBuilderTest, ASecondShapeWithoutRebuildDeformsTheDeformedMesh) {
  Mesh once, twice;
  buildBox(once, 3, 3, false, true);
  buildBox(twice, 3, 3, false, true);
  ShapeParameters p;
  p.rebuild = false;
  p.outScaleX = 2.0f;
  p.twistScale = 0.1f;
  shapeBox(once, 0, 0, p, true);
  shapeBox(twice, 0, 0, p, true);
  shapeBox(twice, 0, 0, p, true);
  EXPECT_EQ(54, twice.vertexCount);
  EXPECT_EQ(48, twice.faceCount);
  // x doubles per run; the slots were not rebuilt.
  const Vector3 &a = once.vertices[0]->position;
  const Vector3 &b = twice.vertices[0]->position;
  EXPECT_NE(a.x, b.x);
  float maxOnce = 0, maxTwice = 0;
  for (size_t i = 0; i < once.vertices.size(); ++i) {
    maxOnce = std::max(maxOnce, std::fabs(once.vertices[i]->position.x));
    maxTwice = std::max(maxTwice, std::fabs(twice.vertices[i]->position.x));
  }
  EXPECT_GT(maxTwice, maxOnce * 1.5f);
}

TEST(BoxBuilderTest, ATwistOfHalfATurnAtUnitHeightMirrorsXAndZ) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  std::vector<Vector3> before;
  for (const Vertex *v : m.vertices) before.push_back(v->position);
  ShapeParameters p;
  p.rebuild = false;
  p.twistPhase = 1.0f;  // a = (1 - 0)pi: a half turn whatever y is
  shapeBox(m, 0, 0, p, true);
  for (size_t i = 0; i < before.size(); ++i) {
    EXPECT_NEAR(-before[i].x, m.vertices[i]->position.x, 1e-5);
    EXPECT_NEAR(before[i].y, m.vertices[i]->position.y, 1e-6);
    EXPECT_NEAR(-before[i].z, m.vertices[i]->position.z, 1e-5);
  }
}

TEST(BoxBuilderTest, RebuildingReusesTheSameSlots) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  shapeBox(m, 3, 3, ShapeParameters(), true);
  EXPECT_EQ(54u, m.vertexSlotCount);
  EXPECT_EQ(48u, m.faces.size());
  EXPECT_EQ(54, m.vertexCount);
  expectFacesPointOutward(m);
}

// --- sphere --------------------------------------------------------------------

TEST(SphereBuilderTest, CountsAndPoles) {
  Mesh m;
  buildSphere(m, 2.0f, 8, 6, false);
  EXPECT_EQ(6, m.rowCount);
  EXPECT_EQ(8, m.columnCount);
  EXPECT_EQ(2 + 5 * 8, m.vertexCount);
  EXPECT_EQ(2 * 8 + 4 * 8 * 2, m.faceCount);
  EXPECT_NEAR(2.0f, m.vertices[0]->position.y, 1e-6);
  EXPECT_NEAR(-2.0f, m.vertices[size_t(m.vertexCount - 1)]->position.y, 1e-5);
  for (const Vertex *v : m.vertices) EXPECT_NEAR(2.0f, v->position.length(), 1e-5);
  expectFacesPointOutward(m);
}

TEST(SphereBuilderTest, InvertedReversesTheWinding) {
  Mesh m;
  buildSphere(m, 1.0f, 6, 5, true);
  expectFacesPointOutward(m, true);
}

TEST(SphereBuilderTest, SphereVertexFollowsTheFormulas) {
  ShapeParameters p;
  Vector3 pos, unit;
  // i = 1 of 2 rings: phi = pi/2; j = 1 of 4: theta = pi/2: the point (1, 0, 0).
  const float value = sphereVertex(p, 3.0f, 1, 2, 1, 4, pos, unit);
  EXPECT_NEAR(1.0f, unit.x, 1e-6);
  EXPECT_NEAR(0.0f, unit.y, 1e-6);
  EXPECT_NEAR(3.0f, pos.x, 1e-5);
  EXPECT_NEAR(1.0f, value, 1e-6);
  p.ampC = 0.5f;  // X += sin((u freqC + phaseC)pi) ampC sizeX, not part of the value
  p.phaseC = 0.5f;
  const float value2 = sphereVertex(p, 3.0f, 1, 2, 1, 4, pos, unit);
  EXPECT_NEAR(4.5f, pos.x, 1e-5);
  EXPECT_NEAR(1.0f, value2, 1e-6);
  p = ShapeParameters();
  p.sizeY = 2.0f;
  sphereVertex(p, 1.0f, 0, 2, 0, 4, pos, unit);
  EXPECT_NEAR(2.0f, pos.y, 1e-6);
}

TEST(SphereBuilderTest, WithoutRebuildTheWalkRewritesSlotsInOrder) {
  Mesh m;
  buildSphere(m, 1.0f, 6, 4, false);
  const int faces = m.faceCount;
  ShapeParameters p;
  p.rebuild = false;
  shapeSphere(m, 2.0f, 0, 0, p, true, nullptr);
  EXPECT_EQ(faces, m.faceCount);
  for (const Vertex *v : m.vertices) EXPECT_NEAR(2.0f, v->position.length(), 1e-5);
}

namespace {
void redden(Vector3 &colour, const Vector3 &, float, float, float radius, float a, float b, int segments) {
  colour.set(radius, a + b, float(segments));
}
}  // namespace

TEST(SphereBuilderTest, TheCallbackMayEditTheColour) {
  Mesh m;
  shapeSphere(m, 0.5f, 5, 3, ShapeParameters(), true, redden);
  EXPECT_EQ(Vector3(0.5f, 2.0f, 5.0f), m.vertices[3]->colour);
}

TEST(SphereBuilderTest, SphericalMapIsAFishEyeAroundThePole) {
  float u, v;
  sphericalMap(Vector3(0, 1, 0), &u, &v, 1.0f, 1.0f, 1.0f);
  EXPECT_FLOAT_EQ(0.5f, u);  // h = 0 at the pole
  EXPECT_FLOAT_EQ(1.0f, v);
  sphericalMap(Vector3(0, 0, 1), &u, &v, 1.0f, 1.0f, 1.0f);
  // angleOf(0, 1) = 0: u0 = -0.25; u = 0.25 0.5 pi + 0.5.
  EXPECT_NEAR(0.25 * 0.5 * 3.14159265358979 + 0.5, u, 1e-6);
  EXPECT_FLOAT_EQ(0.5f, v);
  sphericalMap(Vector3(0, -2, 0), &u, &v, 2.0f, 3.0f, 4.0f);
  EXPECT_FLOAT_EQ(1.5f, u);
  EXPECT_FLOAT_EQ(0.0f, v);
}

// --- tube, ribbon, cube, arrays -----------------------------------------------------

namespace {

// Sum over the first `count` faces of the sign of (normal . radial direction):
// +count when all face away from the y axis.
int outwardFaces(Mesh &m, int count) {
  m.computeFaceNormals();
  int sum = 0, seen = 0;
  for (int f : m.liveFaces) {
    if (seen++ == count) break;
    const Face *face = m.faces[size_t(f)];
    Vector3 mid;
    for (int k : face->vertexIndices) mid += m.vertices[size_t(k)]->position;
    sum += face->normal.x * mid.x + face->normal.z * mid.z > 0.0f ? 1 : -1;
  }
  return sum;
}

}  // namespace

TEST(TubeBuilderTest, RingsAroundAStraightCurveFaceOutward) {
  Curve c(false);
  for (int i = 0; i < 6; ++i) c.addPoint(0.0f, float(i), 0.0f);
  c.computeTangents(false, 1.0f / 6.0f);  // handles of a Catmull-Rom spline: monotonic in y
  Mesh m;
  buildTube(m, c, 8, 6, Vector3(1, 0, 0), 0.5f, false);
  EXPECT_EQ(8 * 6, m.vertexCount);
  EXPECT_EQ(7 * 6 * 2, m.faceCount);
  EXPECT_FALSE(m.inverted);
  // Station i samples t = i/8; its direction looks ahead to t + 2/8.
  EXPECT_NEAR(0.0f, m.vertices[0]->position.y, 1e-6);
  EXPECT_NEAR(2.5f, m.vertices[4 * 6]->position.y, 1e-5);  // t = 0.5 is the middle point
  EXPECT_EQ(Vector3(1.0f / 6.0f, 0.5f, 0.0f), m.vertices[4 * 6 + 1]->texCoord);
  // Each ring lies at radius 0.5 around the axis (setLength leaves it a hair short).
  for (const Vertex *v : m.vertices) EXPECT_NEAR(0.5f, std::hypot(v->position.x, v->position.z), 1e-3);
  // The curve's parameter wraps at 1, so the last two stations look back to
  // the start; the joins up to station 5 look ahead and face outward.
  EXPECT_EQ(5 * 12, outwardFaces(m, 5 * 12));
  Mesh in;
  buildTube(in, c, 8, 6, Vector3(1, 0, 0), 0.5f, true);
  EXPECT_TRUE(in.inverted);
  EXPECT_EQ(-5 * 12, outwardFaces(in, 5 * 12));
  // Rebuilding removes the old faces first and reuses the slots.
  buildTube(m, c, 8, 6, Vector3(1, 0, 0), 0.5f, false);
  EXPECT_EQ(84, m.faceCount);
  EXPECT_EQ(48, m.vertexCount);
  EXPECT_EQ(48u, m.vertexSlotCount);
}

TEST(RibbonBuilderTest, FourVerticesPerRoundAndADoubleSidedBand) {
  Mesh m;
  buildRibbon(m);
  EXPECT_EQ(4000, m.vertexCount);
  EXPECT_EQ(999 * 4, m.faceCount);
  EXPECT_TRUE(m.normalsDirty);
  // The two layers of one step face opposite ways.
  m.computeFaceNormals();
  const Vector3 front = m.faces[0]->normal, back = m.faces[2]->normal;
  EXPECT_LT(dot(front, back), 0.0f);
  // Round 0: w = sin(0) 0.35 + 1 = 1, even colour (0.8, 0.88, 1).
  EXPECT_EQ(Vector3(0.8f, 0.88f, 1.0f), m.vertices[0]->colour);
  EXPECT_EQ(Vector3(0, 0, 0), m.vertices[0]->position);
  EXPECT_EQ(0.5f, m.vertices[1]->texCoord.y);
  // u of round i is (i - 1) 0.5: set after each round's vertices.
  EXPECT_EQ(0.0f, m.vertices[4]->texCoord.x);
  EXPECT_EQ(0.5f, m.vertices[8]->texCoord.x);
  // The first edge vector is unit length and perpendicular to d.
  const Vector3 s = m.vertices[1]->position - m.vertices[0]->position;
  EXPECT_NEAR(1.0f, s.length(), 1e-5);
  EXPECT_NEAR(0.0f, dot(s, Vector3(0.5f, 1.7f, 0.35f)), 1e-5);
  // A second shaping reuses the slots.
  shapeRibbon(m, 100.0f, 0.5f, 1.0f, 0.2f, 1000);
  EXPECT_EQ(4000u, m.vertexSlotCount);
}

TEST(CubeBuilderTest, EightVerticesTwelveTrianglesAndAStrip) {
  Mesh m;
  buildCube(m, false);
  EXPECT_EQ(8, m.vertexCount);
  EXPECT_EQ(12, m.faceCount);
  EXPECT_TRUE(m.stripMode);
  ASSERT_NE(nullptr, m.stripIndices);
  const int strip[15] = {3, 2, 6, 7, 4, 2, 0, 3, 1, 6, 5, 4, 1, 0, 0};
  for (int i = 0; i < 15; ++i) EXPECT_EQ(strip[i], m.stripIndices[i]);
  EXPECT_EQ(Vector3(1, -1, 1), m.vertices[0]->position);
  EXPECT_EQ(Vector3(-1, -1, -1), m.vertices[6]->position);  // as built
  EXPECT_EQ(Vector3(1, -1, -1), m.vertices[7]->position);
  EXPECT_EQ(Vector3(1, 1, 1), m.vertices[5]->colour);
  EXPECT_EQ(1, m.faces[1]->vertexIndices[0]);
  EXPECT_EQ(5, m.faces[11]->vertexIndices[2]);
}

TEST(ArraysBuilderTest, VerticesAndFacesFromFlatArrays) {
  const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0};
  const float texCoords[] = {0, 0, 1, 0, 0, 1, 1, 1};
  const int indices[] = {0, 1, 2, 2, 1, 3};
  Mesh m;
  buildFromArrays(m, positions, texCoords, 4, indices, 2);
  EXPECT_EQ(4, m.vertexCount);
  EXPECT_EQ(2, m.faceCount);
  EXPECT_TRUE(m.normalsDirty);
  EXPECT_EQ(Vector3(1, 1, 0), m.vertices[3]->position);
  EXPECT_EQ(Vector3(1, 1, 0), m.vertices[3]->texCoord);
  EXPECT_EQ(Vector3(1, 1, 1), m.vertices[3]->colour);
  EXPECT_EQ(3, m.faces[1]->vertexIndices[2]);
}

// --- face splitting ------------------------------------------------------------------

namespace {

struct Objects {
  std::vector<std::unique_ptr<Mesh>> meshes;
  Mesh *add() {
    meshes.emplace_back(new Mesh());
    return meshes.back().get();
  }
};

void oneTriangle(Mesh &m) {
  m.addVertex(Vector3(0, 0, 0), Vector3(0, 0, 0), Vector3(1, 0, 0));
  m.addVertex(Vector3(3, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0));
  m.addVertex(Vector3(0, 3, 0), Vector3(0, 1, 0), Vector3(0, 0, 1));
  m.addFace(0, 1, 2);
}

}  // namespace

TEST(ExplodeFacesTest, OneMeshPerLiveFaceWithMaterialsZeroAndOne) {
  Mesh source;
  buildBox(source, 3, 3, false, true);
  source.removeFace(5);
  source.materials[1].diffuse = Color4(0.1f, 0.2f, 0.3f, 1.0f);
  source.materials[0].shininess = 7.0f;
  Objects world;
  int created = -1;
  explodeFaces(source, [&] { return world.add(); }, &created, 0, false, 0.5f, 0, 0, false);
  EXPECT_EQ(47, created);
  ASSERT_EQ(47u, world.meshes.size());
  const Mesh &first = *world.meshes[0];
  EXPECT_EQ(0.2f, first.materials[1].diffuse.y);
  EXPECT_EQ(7.0f, first.materials[0].shininess);  // copied whole
  EXPECT_EQ(2, first.rowCount);
  EXPECT_EQ(2, first.columnCount);
  EXPECT_FALSE(first.inverted);
}

TEST(ExplodeFacesTest, OpenModeMakesAPyramidWithOneSharedTop) {
  Mesh source;
  oneTriangle(source);
  Objects world;
  int created = 0;
  explodeFaces(source, [&] { return world.add(); }, &created, 0, false, 3.0f, 0, 0, false);
  ASSERT_EQ(1, created);
  const Mesh &m = *world.meshes[0];
  EXPECT_EQ(4, m.vertexCount);
  EXPECT_EQ(4, m.faceCount);
  // top = mean + n height: mean (1, 1, 0), unit normal (0, 0, ~1) times 3.
  EXPECT_NEAR(1.0f, m.vertices[3]->position.x, 1e-5);
  EXPECT_NEAR(3.0f, m.vertices[3]->position.z, 1e-4);
  EXPECT_NEAR(1.0f / 3.0f, m.vertices[3]->colour.x, 1e-6);
  const int expected[4][3] = {{0, 1, 2}, {0, 3, 1}, {1, 2, 3}, {0, 2, 3}};
  for (int f = 0; f < 4; ++f)
    for (int c = 0; c < 3; ++c) EXPECT_EQ(expected[f][c], m.faces[size_t(f)]->vertexIndices[c]);
}

TEST(ExplodeFacesTest, SolidModeOneAddsThreeTrianglesWithFreshCorners) {
  Mesh source;
  oneTriangle(source);
  Objects world;
  int created = 0;
  const uint32_t state = crtRandState();
  explodeFaces(source, [&] { return world.add(); }, &created, 1, true, 1.0f, 0, 0, false);
  EXPECT_EQ(state, crtRandState());  // no random numbers
  const Mesh &m = *world.meshes[0];
  EXPECT_EQ(3 + 1 + 6, m.vertexCount);
  EXPECT_EQ(4, m.faceCount);
  // The last triangle repeats the second reversed, as built.
  const Face *second = m.faces[2], *third = m.faces[3];
  EXPECT_EQ(m.vertices[size_t(second->vertexIndices[1])]->position,
            m.vertices[size_t(third->vertexIndices[2])]->position);
  EXPECT_EQ(m.vertices[size_t(second->vertexIndices[2])]->position,
            m.vertices[size_t(third->vertexIndices[1])]->position);
}

TEST(ExplodeFacesTest, OtherSolidModesRaiseCornersByThreeRandomNumbers) {
  Mesh source;
  oneTriangle(source);
  Objects world;
  int created = 0;
  crtSrand(1234);
  explodeFaces(source, [&] { return world.add(); }, &created, 2, true, 2.0f, 0.5f, 0.25f, false);
  crtSrand(1234);
  const int r0 = crtRand(), r2 = crtRand(), r1 = crtRand();
  const Mesh &m = *world.meshes[0];
  EXPECT_EQ(3 + 3 + 18, m.vertexCount);
  EXPECT_EQ(1 + 1 + 6, m.faceCount);
  auto rho = [](int r) { return (float(r) / 32767.0f + 0.25f) * 0.5f + 1.0f; };
  // Raised corners are slots 3, 4, 5 (c0, c1, c2), drawn in the order c0, c2, c1.
  EXPECT_NEAR(2.0f * rho(r0), m.vertices[3]->position.z, 1e-4);
  EXPECT_NEAR(2.0f * rho(r1), m.vertices[4]->position.z, 1e-4);
  EXPECT_NEAR(2.0f * rho(r2), m.vertices[5]->position.z, 1e-4);
  // The first side triangle is (c0, r0, r1).
  const Face *side = m.faces[2];
  EXPECT_EQ(Vector3(0, 0, 0), m.vertices[size_t(side->vertexIndices[0])]->position);
  EXPECT_EQ(m.vertices[3]->position, m.vertices[size_t(side->vertexIndices[1])]->position);
  EXPECT_EQ(m.vertices[4]->position, m.vertices[size_t(side->vertexIndices[2])]->position);
}

TEST(ExplodeFacesTest, CentreMovesThePivotIntoPosition) {
  Mesh source;
  oneTriangle(source);
  Objects world;
  int created = 0;
  explodeFaces(source, [&] { return world.add(); }, &created, 0, false, 3.0f, 0, 0, true);
  const Mesh &m = *world.meshes[0];
  // pivot = top - 2n/3 = mean + n/3 = (1, 1, ~1).
  EXPECT_NEAR(1.0f, m.position.x, 1e-5);
  EXPECT_NEAR(1.0f, m.position.z, 1e-4);
  EXPECT_NEAR(-1.0f, m.vertices[0]->position.x, 1e-5);
  EXPECT_NEAR(2.0f, m.vertices[3]->position.z, 1e-4);
}

// --- world-level helpers -----------------------------------------------------------------

TEST(MeshHelpersTest, CopyVerticesOnlyBetweenEqualSlotCounts) {
  Mesh a, b, c;
  buildCube(a, false);
  buildCube(b, false);
  oneTriangle(c);
  a.vertices[2]->position = Vector3(9, 9, 9);
  a.vertices[2]->colour = Vector3(0.5f, 0.5f, 0.5f);
  a.vertices[2]->alpha = 0.25f;
  a.vertices[2]->texCoord = Vector3(0.7f, 0.7f, 0);
  copyVertices(a, b);
  EXPECT_EQ(Vector3(9, 9, 9), b.vertices[2]->position);
  EXPECT_EQ(0.25f, b.vertices[2]->alpha);
  EXPECT_EQ(Vector3(0, 0, 0), b.vertices[2]->texCoord);  // not copied
  copyVertices(a, c);
  EXPECT_EQ(Vector3(0, 3, 0), c.vertices[2]->position);
}

TEST(MeshHelpersTest, SphericalTexCoordsMapsAndFlags) {
  Mesh m;
  buildCube(m, false);
  m.flattenArrays();
  sphericalTexCoords(m);
  EXPECT_TRUE(m.texCoordsDirty);
  EXPECT_TRUE(m.anyArrayDirty);
  float u, v;
  sphericalMap(m.vertices[4]->position, &u, &v, 1.0f, 1.0f, 1.0f);
  EXPECT_EQ(u, m.vertices[4]->texCoord.x);
  EXPECT_EQ(v, m.vertices[4]->texCoord.y);
}

// --- deformation terms ------------------------------------------------------------------

namespace {

std::vector<Vector3> boxAfter(const ShapeParameters &p) {
  Mesh m;
  buildBox(m, 3, 3, false, true);
  ShapeParameters q = p;
  q.rebuild = false;
  shapeBox(m, 0, 0, q, true);
  std::vector<Vector3> out;
  for (const Vertex *v : m.vertices) out.push_back(v->position);
  return out;
}

}  // namespace

TEST(BoxBuilderTest, InScaleIsAppliedBeforeTheDeformation) {
  const std::vector<Vector3> plain = boxAfter(ShapeParameters());
  ShapeParameters p;
  p.inScaleX = 2.0f;
  p.inScaleZ = 0.5f;
  const std::vector<Vector3> scaled = boxAfter(p);
  for (size_t i = 0; i < plain.size(); ++i) {
    EXPECT_FLOAT_EQ(plain[i].x * 2.0f, scaled[i].x);
    EXPECT_FLOAT_EQ(plain[i].y, scaled[i].y);
    EXPECT_FLOAT_EQ(plain[i].z * 0.5f, scaled[i].z);
  }
}

TEST(BoxBuilderTest, CAndDTermsShiftXAndZBySizeTimesTheirSines) {
  const std::vector<Vector3> plain = boxAfter(ShapeParameters());
  ShapeParameters p;
  p.ampC = 0.5f;   // x += ampC cos((y freqC + phaseC)pi) sizeX = 0.5 * 1 * 2
  p.sizeX = 2.0f;
  p.ampD = 0.25f;  // z += ampD sin((y freqD + phaseD)pi) sizeZ = 0.25 * 1 * 1
  p.phaseD = 0.5f;
  const std::vector<Vector3> moved = boxAfter(p);
  for (size_t i = 0; i < plain.size(); ++i) {
    EXPECT_NEAR(plain[i].x + 1.0f, moved[i].x, 1e-6);
    EXPECT_NEAR(plain[i].y, moved[i].y, 1e-6);
    EXPECT_NEAR(plain[i].z + 0.25f, moved[i].z, 1e-6);
  }
}

TEST(BoxBuilderTest, TheATermScalesTheRadiusOfTheSphericalProjection) {
  ShapeParameters p;
  p.spherify = 1.0f;
  p.ampA = 0.5f;    // r = |p| (1 + 0.5 sin(0.5 pi)) = 1.5 |p|
  p.phaseA = 0.5f;
  for (const Vector3 &v : boxAfter(p)) EXPECT_NEAR(1.0f / 1.5f, v.length(), 1e-5);
}

TEST(MeshTest, ADegenerateFaceUsesTheRawBarycentricValues) {
  Mesh m;
  m.addVertex(Vector3(0, 0, 0), Vector3(), Vector3(1, 1, 1));
  m.addVertex(Vector3(1, 0, 0), Vector3(), Vector3(1, 1, 1));
  m.addVertex(Vector3(2, 0, 0), Vector3(), Vector3(1, 1, 1));
  m.addFace(0, 1, 2);
  m.faces[0]->unitNormal = Vector3(0, 0, 1);  // a plane for the collinear corners
  float t = 0;
  // The barycentric denominator is 0 and both raw values are 0: a hit
  // anywhere on the plane.
  EXPECT_TRUE(m.intersectFace(0, Vector3(5, 5, -1), Vector3(5, 5, 1), &t));
  EXPECT_NEAR(0.5f, t, 1e-6);
}
