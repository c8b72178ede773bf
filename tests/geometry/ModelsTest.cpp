// The production's models as the build converts them into the run
// directory: counts, extents, texture coordinates, closed and outward
// surfaces, and the storage forms chosen for each.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "geometry/A3dFile.h"
#include "geometry/Mesh.h"

namespace {

struct Loaded {
  A3dModel model;
  Mesh mesh;
};

void load(const std::string &name, Loaded &out) {
  ASSERT_EQ(a3dOk, readA3d("./models/" + name, out.model)) << "run the build's a3d_models target";
  buildMeshFromA3d(out.mesh, out.model, name);
}

// Twice the signed volume of a closed mesh, by the divergence theorem:
// positive when its triangles are counter-clockwise seen from outside.
double signedVolume(const Mesh &m) {
  double v = 0.0;
  for (int f : m.liveFaces) {
    const Face *face = m.faces[size_t(f)];
    const Vector3 &a = m.vertices[size_t(face->vertexIndices[0])]->position;
    const Vector3 &b = m.vertices[size_t(face->vertexIndices[1])]->position;
    const Vector3 &c = m.vertices[size_t(face->vertexIndices[2])]->position;
    v += dot(a, cross(b, c));
  }
  return v / 6.0;
}

// Every directed edge, by position, has exactly one reverse partner.
void expectClosed(const Mesh &m) {
  std::map<std::vector<float>, int> edges;
  auto key = [](const Vector3 &a, const Vector3 &b) { return std::vector<float>{a.x, a.y, a.z, b.x, b.y, b.z}; };
  for (int f : m.liveFaces) {
    const Face *face = m.faces[size_t(f)];
    for (int c = 0; c < 3; ++c)
      ++edges[key(m.vertices[size_t(face->vertexIndices[c])]->position,
                  m.vertices[size_t(face->vertexIndices[(c + 1) % 3])]->position)];
  }
  for (const auto &e : edges) {
    const std::vector<float> &k = e.first;
    auto reverse = edges.find({k[3], k[4], k[5], k[0], k[1], k[2]});
    ASSERT_NE(reverse, edges.end());
    EXPECT_EQ(e.second, reverse->second);
  }
}

void expectUnitCube(const std::string &name, uint32_t flags) {
  Loaded l;
  load(name, l);
  EXPECT_EQ(flags, l.model.flags) << name;
  EXPECT_EQ(24, l.mesh.vertexCount) << name;
  EXPECT_EQ(12, l.mesh.faceCount) << name;
  // Corners land exactly on -1 and 1 in every form.
  for (const Vertex *v : l.mesh.vertices)
    for (int a = 0; a < 3; ++a) EXPECT_EQ(1.0f, std::fabs(v->position[a])) << name;
  expectClosed(l.mesh);
  EXPECT_NEAR(8.0, signedVolume(l.mesh), 1e-4) << name;
  // Flat faces: each face's corners share one face normal pointing out.
  l.mesh.computeFaceNormals();
  for (int f : l.mesh.liveFaces) {
    const Face *face = l.mesh.faces[size_t(f)];
    Vector3 mid;
    for (int c : face->vertexIndices) mid += l.mesh.vertices[size_t(c)]->position;
    EXPECT_GT(dot(face->normal, mid), 0.0f) << name;
  }
  // Each side maps the whole texture once: its four corners hold the four
  // corners of the unit square.
  for (int side = 0; side < 6; ++side) {
    float sumU = 0, sumV = 0;
    for (int k = 0; k < 4; ++k) {
      const Vector3 &t = l.mesh.vertices[size_t(side * 4 + k)]->texCoord;
      EXPECT_TRUE(t.x == 0.0f || t.x == 1.0f);
      EXPECT_TRUE(t.y == 0.0f || t.y == 1.0f);
      sumU += t.x;
      sumV += t.y;
    }
    EXPECT_EQ(2.0f, sumU);
    EXPECT_EQ(2.0f, sumV);
  }
}

}  // namespace

TEST(ModelsTest, CubeIsAUnitCubeWith16BitPositions) { expectUnitCube("cube.a3d", a3dPositions16); }

TEST(ModelsTest, CubecIsAUnitCubeWith8BitPositions) { expectUnitCube("cubec.a3d", a3dPositions8); }

TEST(ModelsTest, CubeTextureIsUprightOnTheSideFacingTheCamera) {
  Loaded l;
  load("cube.a3d", l);
  // The side at z = -1 faces a camera on the negative z axis; v = 0 is the
  // image's top row, so its top corners (y = 1) hold v = 0.
  for (const Vertex *v : l.mesh.vertices)
    if (v->position.z == -1.0f && v->faces.size() > 0) {
      const Face *f = l.mesh.faces[size_t(v->faces.front())];
      const Vector3 &a = l.mesh.vertices[size_t(f->vertexIndices[0])]->position;
      const Vector3 &b = l.mesh.vertices[size_t(f->vertexIndices[1])]->position;
      const Vector3 &c = l.mesh.vertices[size_t(f->vertexIndices[2])]->position;
      if (a.z == -1.0f && b.z == -1.0f && c.z == -1.0f) {
        EXPECT_EQ(v->position.y == 1.0f ? 0.0f : 1.0f, v->texCoord.y);
      }
    }
}

TEST(ModelsTest, BoneyIsAClosedBoneAlongYWithFloatStorage) {
  Loaded l;
  load("boney.a3d", l);
  EXPECT_EQ(0u, l.model.flags);
  EXPECT_LT(l.mesh.vertexCount, 65536);
  EXPECT_GT(l.mesh.faceCount, 100);
  float lo[3] = {1e9f, 1e9f, 1e9f}, hi[3] = {-1e9f, -1e9f, -1e9f};
  for (const Vertex *v : l.mesh.vertices)
    for (int a = 0; a < 3; ++a) {
      lo[a] = std::min(lo[a], v->position[a]);
      hi[a] = std::max(hi[a], v->position[a]);
    }
  EXPECT_FLOAT_EQ(-1.0f, lo[1]);
  EXPECT_FLOAT_EQ(1.0f, hi[1]);
  EXPECT_LT(hi[0], 0.6f);  // thinner across than along
  EXPECT_LT(hi[2], 0.4f);
  EXPECT_NEAR(-hi[0], lo[0], 1e-5);  // centred
  EXPECT_NEAR(-hi[2], lo[2], 1e-5);
  expectClosed(l.mesh);
  EXPECT_GT(signedVolume(l.mesh), 0.1);
  // The knobs are wider than the shaft.
  float shaft = 0, knob = 0;
  for (const Vertex *v : l.mesh.vertices) {
    const float r = std::hypot(v->position.x, v->position.z);
    if (std::fabs(v->position.y) < 0.1f) shaft = std::max(shaft, r);
    if (std::fabs(std::fabs(v->position.y) - 0.8f) < 0.01f) knob = std::max(knob, r);
  }
  EXPECT_GT(knob, shaft * 2.0f);
  for (const Vertex *v : l.mesh.vertices) {
    EXPECT_GE(v->texCoord.x, 0.0f);
    EXPECT_LE(v->texCoord.x, 1.0f);
    EXPECT_GE(v->texCoord.y, 0.0f);
    EXPECT_LE(v->texCoord.y, 1.0f);
  }
}

TEST(ModelsTest, TheProductionUsesMoreThanOneStorageForm) {
  std::map<uint32_t, int> forms;
  for (const char *name : {"cube.a3d", "cubec.a3d", "boney.a3d"}) {
    A3dModel m;
    ASSERT_EQ(a3dOk, readA3d(std::string("./models/") + name, m));
    ++forms[m.flags];
  }
  EXPECT_GE(forms.size(), 2u);
}

#ifdef BONEY_GENERATED
TEST(ModelsTest, TheCommittedBoneySourceMatchesItsGenerator) {
  auto read = [](const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  };
  const std::string generated = read(BONEY_GENERATED);
  ASSERT_FALSE(generated.empty());
  EXPECT_EQ(generated, read(std::string(OSTRAVINE_SOURCE_DIR) + "/assets/models/boney.ac"));
}
#endif
