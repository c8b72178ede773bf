// Mesh and Material: slots and free lists, normals, editing, ray tests and
// the flattening into arrays (without GL: the capability flags stay off).
#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Capabilities.h"
#include "geometry/Mesh.h"

namespace {

const Vector3 white(1, 1, 1);
const Vector3 noTex;

// A unit square in the z = 0 plane, two triangles sharing the diagonal 0-2.
void addSquare(Mesh &m) {
  m.addVertex(Vector3(0, 0, 0), noTex, white);
  m.addVertex(Vector3(1, 0, 0), noTex, white);
  m.addVertex(Vector3(1, 1, 0), noTex, white);
  m.addVertex(Vector3(0, 1, 0), noTex, white);
  m.addFace(0, 1, 2);
  m.addFace(0, 2, 3);
}

}  // namespace

// --- defaults ----------------------------------------------------------------

TEST(MaterialTest, DefaultsOfANewMaterial) {
  Material m;
  EXPECT_EQ(Vector3(0, 0, 0), Vector3(m.ambient));
  EXPECT_FLOAT_EQ(1.0f, m.ambient.alpha);
  EXPECT_EQ(Vector3(0.5f, 0.5f, 0.5f), Vector3(m.diffuse));
  EXPECT_FLOAT_EQ(1.0f, m.diffuse.alpha);
  EXPECT_EQ(Vector3(0, 0, 0), Vector3(m.specular));
  EXPECT_FLOAT_EQ(1.0f, m.specular.alpha);
  EXPECT_EQ(0.0f, m.shininess);
  for (int s = 0; s < 3; ++s) {
    EXPECT_EQ(0, m.stageMode[s]);
    EXPECT_EQ(0u, m.stageTexture[s]);
    EXPECT_FALSE(m.stageCubeMap[s]);
    EXPECT_FALSE(m.stageDetail[s]);
    EXPECT_EQ(1.0f, m.stageScaleU[s]);
    EXPECT_EQ(1.0f, m.stageScaleV[s]);
    EXPECT_EQ(0.0f, m.stageOffsetU[s]);
    EXPECT_EQ(0.0f, m.stageOffsetV[s]);
  }
  EXPECT_EQ(0u, m.stageCount);
  EXPECT_EQ(1.0f, m.weight);
  EXPECT_TRUE(m.castsShadow);
  EXPECT_TRUE(m.receivesShadow);
  EXPECT_FALSE(m.spareFlag);
  EXPECT_FALSE(m.refractive);
  EXPECT_FLOAT_EQ(0.15f, m.refractionFront);
  EXPECT_FLOAT_EQ(-0.1f, m.refractionBack);
  EXPECT_FLOAT_EQ(0.5f, m.refractionAlpha);
  EXPECT_FALSE(m.shellsEnabled);
  EXPECT_EQ(0u, m.shellCount);
  EXPECT_FALSE(m.shellTexture3D);
  EXPECT_EQ(2.0f, m.shellScaleU);
  EXPECT_EQ(2.0f, m.shellScaleV);
  EXPECT_EQ(Vector3(0, 0, 0), m.shellDirection);
  EXPECT_FLOAT_EQ(0.75f, m.shellLength);
  EXPECT_FALSE(m.wireframe);
}

TEST(MeshTest, DefaultsOfANewMesh) {
  Mesh m;
  EXPECT_EQ(0, m.faceCount);
  EXPECT_EQ(0, m.vertexCount);
  EXPECT_EQ(0u, m.vertexSlotCount);
  EXPECT_EQ(Vector3(1, 1, 1), m.scale);
  EXPECT_TRUE(m.visible);
  EXPECT_FALSE(m.useMatrix);
  EXPECT_EQ(0, m.currentMaterial);
  EXPECT_TRUE(m.anyArrayDirty && m.coloursDirty && m.coloursDirtyToo && m.texCoordsDirty &&
              m.positionsDirty && m.indicesDirty);
  EXPECT_FALSE(m.buffersCreated);
  EXPECT_FALSE(m.stripMode);
  EXPECT_GE(m.faces.capacity(), 1u);
  EXPECT_GE(m.vertices.capacity(), 1u);
  EXPECT_EQ(0.5f, m.materials[7].diffuse.x);
  EXPECT_EQ(nullptr, m.light());  // no render layer linked into this test
}

// --- slots -------------------------------------------------------------------

TEST(MeshTest, AddVertexCountsSlotsAndStartsAlphaAtOne) {
  Mesh m;
  EXPECT_EQ(0, m.addVertex(Vector3(1, 2, 3), Vector3(0.5f, 0.25f, 0), Vector3(0.1f, 0.2f, 0.3f)));
  EXPECT_EQ(1, m.addVertex(Vector3(), noTex, white));
  EXPECT_EQ(2, m.vertexCount);
  EXPECT_EQ(2u, m.vertexSlotCount);
  EXPECT_EQ(Vector3(1, 2, 3), m.vertices[0]->position);
  EXPECT_EQ(Vector3(0.5f, 0.25f, 0), m.vertices[0]->texCoord);
  EXPECT_EQ(Vector3(0.1f, 0.2f, 0.3f), m.vertices[0]->colour);
  EXPECT_EQ(1.0f, m.vertices[0]->alpha);
  EXPECT_TRUE(m.vertices[0]->marks.empty());
}

TEST(MeshTest, AddFaceRecordsCornersUsersAndCreationOrder) {
  Mesh m;
  addSquare(m);
  EXPECT_EQ(2, m.faceCount);
  EXPECT_EQ(3, m.faces[1]->vertexIndices[2]);
  EXPECT_EQ(3, m.faces[1]->cornerCount);
  EXPECT_EQ((std::list<int>{0, 1}), m.vertices[0]->faces);
  EXPECT_EQ((std::list<int>{0, 1}), m.vertices[2]->faces);
  EXPECT_EQ((std::list<int>{1}), m.vertices[3]->faces);
  EXPECT_EQ((std::list<int>{0, 1}), m.liveFaces);
}

TEST(MeshTest, RemovingAllFacesFreesEveryVertexAndReaddingReusesTheSlots) {
  Mesh m;
  addSquare(m);
  while (m.faceCount > 0) m.removeOldestFace();
  EXPECT_EQ(0, m.vertexCount);
  EXPECT_EQ(4u, m.freeVertices.size());
  EXPECT_EQ(2u, m.freeFaces.size());
  for (Vertex *v : m.vertices) EXPECT_TRUE(v->dead);
  addSquare(m);
  EXPECT_EQ(4u, m.vertexSlotCount);
  EXPECT_EQ(4u, m.vertices.size());
  EXPECT_EQ(2u, m.faces.size());
  EXPECT_EQ(4, m.vertexCount);
  EXPECT_TRUE(m.freeVertices.empty());
}

TEST(MeshTest, ARecycledVertexKeepsItsOldAlpha) {
  Mesh m;
  addSquare(m);
  m.vertices[0]->alpha = 0.25f;
  while (m.faceCount > 0) m.removeOldestFace();
  // Face 0 went first, freeing 1; then face 1 freed 0, 2 and 3.
  EXPECT_EQ((std::list<int>{1, 0, 2, 3}), m.freeVertices);
  EXPECT_EQ(1, m.addVertex(Vector3(), noTex, white));
  EXPECT_EQ(0, m.addVertex(Vector3(), noTex, white));
  EXPECT_EQ(0.25f, m.vertices[0]->alpha);
}

TEST(MeshTest, ASharedVertexStaysAliveUntilItsLastFaceGoes) {
  Mesh m;
  addSquare(m);
  m.removeFace(0);
  EXPECT_FALSE(m.vertices[0]->dead);
  EXPECT_FALSE(m.vertices[2]->dead);
  EXPECT_TRUE(m.vertices[1]->dead);
  EXPECT_EQ(3, m.vertexCount);
  EXPECT_EQ((std::list<int>{1}), m.vertices[0]->faces);
  m.removeFace(1);
  EXPECT_TRUE(m.vertices[0]->dead);
  EXPECT_EQ(0, m.vertexCount);
}

TEST(MeshTest, RemoveNewestTakesTheLastFace) {
  Mesh m;
  addSquare(m);
  m.removeNewestFace();
  EXPECT_EQ((std::list<int>{0}), m.liveFaces);
  EXPECT_TRUE(m.faces[1]->dead);
  EXPECT_TRUE(m.vertices[3]->dead);
  EXPECT_EQ((std::list<int>{1}), m.freeFaces);
  EXPECT_EQ(1, m.addFace(0, 2, 3));  // the slot comes back
}

TEST(MeshTest, RemovalsOnAnEmptyMeshOrBadIndicesAreIgnored) {
  Mesh m;
  m.removeOldestFace();
  m.removeNewestFace();
  m.removeFace(0);
  m.releaseVertex(5);
  EXPECT_EQ(0, m.faceCount);
  addSquare(m);
  m.removeFace(-1);
  m.removeFace(2);
  m.removeFace(0);
  m.removeFace(0);  // already dead
  EXPECT_EQ(1, m.faceCount);
  m.releaseVertex(0);  // still used by face 1
  EXPECT_FALSE(m.vertices[0]->dead);
  EXPECT_EQ(3, m.vertexCount);
}

TEST(MeshTest, CountsNeverGoBelowZero) {
  Mesh m;
  addSquare(m);
  m.faceCount = 0;  // a caller that lost count
  m.removeOldestFace();
  EXPECT_EQ(0, m.faceCount);
  m.vertexCount = 0;
  m.removeOldestFace();
  EXPECT_EQ(0, m.vertexCount);
}

// --- normals -------------------------------------------------------------------

TEST(MeshTest, FaceNormalIsTheRawCrossProduct) {
  Mesh m;
  m.addVertex(Vector3(0, 0, 0), noTex, white);
  m.addVertex(Vector3(2, 0, 0), noTex, white);
  m.addVertex(Vector3(0, 3, 0), noTex, white);
  m.addFace(0, 1, 2);
  m.computeFaceNormals();
  EXPECT_EQ(Vector3(0, 0, 6), m.faces[0]->normal);  // twice the area
  EXPECT_EQ(Vector3(0, 0, 6), m.faces[0]->unitNormal);
  m.normalizeFaceNormals();
  EXPECT_NEAR(1.0f, m.faces[0]->unitNormal.z, 1e-6);
  EXPECT_LT(m.faces[0]->unitNormal.z, 1.0f);  // setLength's bias: just under 1
  EXPECT_EQ(Vector3(0, 0, 6), m.faces[0]->normal);
}

TEST(MeshTest, VertexNormalsSumAdjacentFacesWeightedByArea) {
  Mesh m;
  // Two faces at a right angle sharing the edge 0-1, different areas.
  m.addVertex(Vector3(0, 0, 0), noTex, white);
  m.addVertex(Vector3(1, 0, 0), noTex, white);
  m.addVertex(Vector3(0, 1, 0), noTex, white);
  m.addVertex(Vector3(0, 0, -2), noTex, white);
  m.addFace(0, 1, 2);  // normal (0, 0, 1)
  m.addFace(0, 1, 3);  // normal (0, 2, 0)
  m.computeFaceNormals();
  m.computeVertexNormals(false);
  EXPECT_EQ(Vector3(0, 2, 1), m.vertices[0]->normal);
  EXPECT_EQ(Vector3(0, 0, 1), m.vertices[2]->normal);
  m.computeVertexNormals(true);
  EXPECT_NEAR(2.0f / std::sqrt(5.0f), m.vertices[0]->normal.y, 1e-5);
  EXPECT_NEAR(1.0f, m.vertices[2]->normal.length(), 1e-5);
}

TEST(MeshTest, NormalsOfListedRecordsOnly) {
  Mesh m;
  addSquare(m);
  const std::list<int> only{1};
  m.computeFaceNormals(&only);
  EXPECT_EQ(Vector3(0, 0, 0), m.faces[0]->normal);
  EXPECT_EQ(Vector3(0, 0, 1), m.faces[1]->normal);
  const std::list<int> vertex{3};
  m.computeVertexNormals(false, &vertex);
  EXPECT_EQ(Vector3(0, 0, 1), m.vertices[3]->normal);
  EXPECT_EQ(Vector3(0, 0, 0), m.vertices[0]->normal);
}

// --- editing ---------------------------------------------------------------------

TEST(MeshTest, SetMaterialLeavesShininessAtZero) {
  Mesh m;
  Material source;
  source.shininess = 50.0f;
  source.diffuse = Color4(0.1f, 0.2f, 0.3f, 0.4f);
  m.setMaterial(source);
  EXPECT_EQ(0.0f, m.materials[0].shininess);
  EXPECT_EQ(0.4f, m.materials[0].diffuse.alpha);
  EXPECT_EQ(0.2f, m.materials[0].diffuse.y);
}

TEST(MeshTest, SetMaterialCopiesIntoTheCurrentSlotAndStagesBelowTheCount) {
  Mesh m;
  Material source;
  source.stageCount = 1;
  source.stageMode[0] = 2;
  source.stageTexture[0] = 7;
  source.stageScaleU[0] = 3;
  source.stageMode[1] = 4;  // beyond stageCount: not copied
  source.stageTexture[1] = 9;
  source.shellCount = 2;
  source.shellTextures[0] = 11;
  source.shellTextures[1] = 12;
  source.shellTextures[2] = 13;  // beyond shellCount
  source.refractive = true;
  source.castsShadow = false;
  source.shellDirection = Vector3(0, 1, 0);
  m.currentMaterial = 1;
  m.setMaterial(source);
  const Material &got = m.materials[1];
  EXPECT_EQ(1u, got.stageCount);
  EXPECT_EQ(2, got.stageMode[0]);
  EXPECT_EQ(7u, got.stageTexture[0]);
  EXPECT_EQ(3.0f, got.stageScaleU[0]);
  EXPECT_EQ(0, got.stageMode[1]);
  EXPECT_EQ(0u, got.stageTexture[1]);
  EXPECT_EQ(11u, got.shellTextures[0]);
  EXPECT_EQ(12u, got.shellTextures[1]);
  EXPECT_EQ(0u, got.shellTextures[2]);
  EXPECT_TRUE(got.refractive);
  EXPECT_FALSE(got.castsShadow);
  EXPECT_EQ(Vector3(0, 1, 0), got.shellDirection);
  EXPECT_EQ(0u, m.materials[0].stageTexture[0]);  // slot 0 untouched
}

TEST(MeshTest, SetAllVertexColoursTouchesLiveSlotsBelowVertexCount) {
  Mesh m;
  addSquare(m);
  m.removeFace(0);  // frees slot 1; vertexCount 3
  m.setAllVertexColours(Vector3(0.5f, 0.25f, 0), 0.5f);
  EXPECT_EQ(Vector3(0.5f, 0.25f, 0), m.vertices[0]->colour);
  EXPECT_EQ(0.5f, m.vertices[2]->alpha);
  EXPECT_EQ(white, m.vertices[1]->colour);  // dead
  EXPECT_EQ(white, m.vertices[3]->colour);  // slot 3 is not below vertexCount 3
}

TEST(MeshTest, RecentreKeepsTheWorldSpaceShape) {
  Mesh m;
  addSquare(m);
  m.position = Vector3(10, 0, 0);
  std::vector<Vector3> before;
  for (Vertex *v : m.vertices) before.push_back(v->position + m.position);
  m.recentre();
  EXPECT_EQ(Vector3(10.5f, 0.5f, 0), m.position);
  EXPECT_EQ(Vector3(-0.5f, -0.5f, 0), m.vertices[0]->position);
  for (size_t i = 0; i < before.size(); ++i) EXPECT_EQ(before[i], m.vertices[i]->position + m.position);
}

TEST(MeshTest, RecentreIgnoresDeadVertices) {
  Mesh m;
  addSquare(m);
  m.vertices[1]->position = Vector3(100, 100, 100);
  m.removeFace(0);  // slot 1 dies
  m.recentre();
  EXPECT_NEAR(1.0f / 3.0f, m.position.x, 1e-6);
  EXPECT_EQ(Vector3(100, 100, 100), m.vertices[1]->position);
}

namespace {
float halve(float x) { return x * 0.5f; }
}  // namespace

TEST(MeshTest, MoveVerticesScalesTheCallersDirectionInPlace) {
  Mesh m;
  addSquare(m);
  Vector3 direction(0, 0, 1);
  const std::list<int> which{0, 2};
  const std::list<float> weights{0.25f, 1.0f};
  m.normalsDirty = false;
  m.moveVertices(which, 2.0f, direction, false, weights, nullptr);
  EXPECT_EQ(Vector3(0, 0, 2), direction);
  EXPECT_TRUE(m.normalsDirty);
  EXPECT_EQ(Vector3(0, 0, 2), m.vertices[0]->position);
  EXPECT_EQ(Vector3(1, 1, 2), m.vertices[2]->position);
  EXPECT_EQ(Vector3(1, 0, 0), m.vertices[1]->position);

  Vector3 up(0, 0, 1);
  m.moveVertices(which, 1.0f, up, true, weights, nullptr);  // times 1 - weight
  EXPECT_EQ(Vector3(0, 0, 2.75f), m.vertices[0]->position);
  EXPECT_EQ(Vector3(1, 1, 2), m.vertices[2]->position);

  Vector3 again(0, 0, 1);
  m.moveVertices(which, 1.0f, again, true, weights, halve);  // times falloff(1 - weight)
  EXPECT_EQ(Vector3(0, 0, 3.125f), m.vertices[0]->position);
}

TEST(MeshTest, SelectInSphereListsVerticesWeightsAndWholeFaces) {
  Mesh m;
  addSquare(m);
  std::list<int> faces, vertices;
  std::list<float> weights;
  m.selectInSphere(faces, vertices, weights, Vector3(1, 0, 0), 1.0f);
  // Vertices 0 (distance 1), 1 (0), 2 (1) are inside; 3 at sqrt 2 is not.
  EXPECT_EQ((std::list<int>{0, 1, 2}), vertices);
  EXPECT_EQ((std::list<float>{1.0f, 0.0f, 1.0f}), weights);
  EXPECT_EQ((std::list<int>{0}), faces);
  EXPECT_EQ(2, m.faces[1]->selectedCorners);
  // A second call clears the counters first.
  faces.clear();
  vertices.clear();
  weights.clear();
  m.selectInSphere(faces, vertices, weights, Vector3(50, 0, 0), 1.0f);
  EXPECT_TRUE(faces.empty());
  EXPECT_EQ(0, m.faces[0]->selectedCorners);
}

// --- ray tests ---------------------------------------------------------------------

TEST(MeshTest, IntersectFaceHitsInsideAndMissesOutside) {
  Mesh m;
  addSquare(m);
  m.computeFaceNormals();
  m.normalizeFaceNormals();
  float t = -1;
  EXPECT_TRUE(m.intersectFace(0, Vector3(0.75f, 0.25f, -1), Vector3(0.75f, 0.25f, 1), &t));
  EXPECT_NEAR(0.5f, t, 1e-6);
  EXPECT_FALSE(m.intersectFace(0, Vector3(0.25f, 0.75f, -1), Vector3(0.25f, 0.75f, 1), &t));
  EXPECT_FALSE(m.intersectFace(0, Vector3(0.75f, 0.25f, 1), Vector3(0.75f, 0.25f, 2), &t));  // t < 0
  EXPECT_FALSE(m.intersectFace(0, Vector3(0.75f, 0.25f, -2), Vector3(0.75f, 0.25f, -1), &t));  // t > 1
  EXPECT_FALSE(m.intersectFace(0, Vector3(0, 0, 1), Vector3(1, 0, 1), &t));  // parallel
  EXPECT_FALSE(m.intersectFace(5, Vector3(0, 0, -1), Vector3(0, 0, 1), &t));
  EXPECT_FALSE(m.intersectFace(-1, Vector3(0, 0, -1), Vector3(0, 0, 1), &t));
}

TEST(MeshTest, IntersectFaceUsesPositionButNotRotationOrScale) {
  Mesh m;
  addSquare(m);
  m.computeFaceNormals();
  m.normalizeFaceNormals();
  m.position = Vector3(10, 0, 0);
  m.rotation = Vector3(0, 90, 0);
  m.scale = Vector3(5, 5, 5);
  float t;
  EXPECT_FALSE(m.intersectFace(0, Vector3(0.75f, 0.25f, -1), Vector3(0.75f, 0.25f, 1), &t));
  EXPECT_TRUE(m.intersectFace(0, Vector3(10.75f, 0.25f, -1), Vector3(10.75f, 0.25f, 1), &t));
}

TEST(MeshTest, PickKeepsTheNearestHit) {
  Mesh m;
  addSquare(m);
  // A second square further along the ray.
  m.addVertex(Vector3(0, 0, 1), noTex, white);
  m.addVertex(Vector3(1, 0, 1), noTex, white);
  m.addVertex(Vector3(1, 1, 1), noTex, white);
  m.addFace(4, 5, 6);
  m.computeFaceNormals();
  m.normalizeFaceNormals();
  float t;
  int face = -1;
  EXPECT_TRUE(m.pick(Vector3(0.75f, 0.25f, 3), Vector3(0.75f, 0.25f, -1), &t, &face, 0.0f));
  EXPECT_EQ(2, face);
  EXPECT_NEAR(0.5f, t, 1e-6);
  EXPECT_FALSE(m.pick(Vector3(5, 5, 3), Vector3(5, 5, -1), &t, &face, 0.0f));
  EXPECT_EQ(2.0f, t);
  EXPECT_EQ(0, face);
}

TEST(MeshTest, PickPrefiltersByTheFirstCornersDistance) {
  Mesh m;
  addSquare(m);
  m.computeFaceNormals();
  m.normalizeFaceNormals();
  float t;
  int face;
  // The first corner of both faces is (0, 0, 0), at squared distance 9 from the start.
  EXPECT_FALSE(m.pick(Vector3(0.75f, 0.25f, 3), Vector3(0.75f, 0.25f, -1), &t, &face, 8.0f));
  EXPECT_TRUE(m.pick(Vector3(0.75f, 0.25f, 3), Vector3(0.75f, 0.25f, -1), &t, &face, 10.0f));
}

// --- arrays ---------------------------------------------------------------------------

namespace {

// These tests flatten without GL: the path flags are held off (a GL test in
// the same process may have switched buffers on) and restored afterwards.
class MeshArraysTest : public ::testing::Test {
protected:
  void SetUp() override {
    buffers_ = useVertexBuffers;
    lists_ = useDisplayLists;
    useVertexBuffers = useDisplayLists = false;
  }
  void TearDown() override {
    useVertexBuffers = buffers_;
    useDisplayLists = lists_;
  }
  bool buffers_ = false, lists_ = false;
};

}  // namespace

TEST_F(MeshArraysTest, UpdateArraysFlattensPositionsNormalsAndIndices) {
  Mesh m;
  addSquare(m);
  m.vertices[2]->normal = Vector3(0, 0, 1);
  m.flattenArrays();
  EXPECT_EQ(4u, m.vertexCapacity);
  EXPECT_EQ(2u, m.faceCapacity);
  EXPECT_EQ(2u, m.drawnFaceCount);
  EXPECT_EQ(2u, m.drawnFaceCountCopy);
  const uint16_t expected[6] = {0, 1, 2, 0, 2, 3};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], m.indexArray[i]);
    EXPECT_EQ(expected[i], m.indexArrayCopy[i]);
  }
  EXPECT_EQ(1.0f, m.vertexArray[2 * 3 + 0]);
  EXPECT_EQ(1.0f, m.vertexArray[2 * 3 + 1]);
  EXPECT_EQ(1.0f, m.normalArray[2 * 3 + 2]);
  for (unsigned i = 0; i < m.vertexCapacity * 4; ++i) EXPECT_EQ(0.0f, m.colourArrayC[0][i]);
  EXPECT_FALSE(m.anyArrayDirty || m.coloursDirty || m.coloursDirtyToo || m.texCoordsDirty ||
               m.positionsDirty || m.indicesDirty);
}

TEST_F(MeshArraysTest, UpdateArraysColourFormulas) {
  Mesh m;
  addSquare(m);
  m.vertices[1]->colour = Vector3(0.5f, 1.0f, 0.25f);
  m.vertices[1]->alpha = 0.5f;
  m.materials[2].diffuse = Color4(0.5f, 0.5f, 1.0f, 0.8f);
  m.materials[2].ambient = Color4(0.1f, 0.2f, 0.3f, 0.1f);
  m.flattenArrays();
  const float *a = &m.colourArrayA[2][4];
  const float *b = &m.colourArrayB[2][4];
  // A = diffuse * colour + ambient; alpha diffuse.a * va + ambient.a
  EXPECT_FLOAT_EQ(0.5f * 0.5f + 0.1f, a[0]);
  EXPECT_FLOAT_EQ(0.5f * 1.0f + 0.2f, a[1]);
  EXPECT_FLOAT_EQ(1.0f * 0.25f + 0.3f, a[2]);
  EXPECT_FLOAT_EQ(0.8f * 0.5f + 0.1f, a[3]);
  // B = ambient * colour; alpha (diffuse.a + ambient.a) * va
  EXPECT_FLOAT_EQ(0.1f * 0.5f, b[0]);
  EXPECT_FLOAT_EQ(0.2f * 1.0f, b[1]);
  EXPECT_FLOAT_EQ(0.3f * 0.25f, b[2]);
  EXPECT_FLOAT_EQ((0.8f + 0.1f) * 0.5f, b[3]);
}

TEST_F(MeshArraysTest, UpdateArraysTexCoordsUseStageZerosScaleAndOffset) {
  Mesh m;
  m.addVertex(Vector3(), Vector3(0.5f, 0.25f, 9.0f), white);
  m.materials[1].stageScaleU[0] = 2.0f;
  m.materials[1].stageScaleV[0] = 4.0f;
  m.materials[1].stageOffsetU[0] = 0.1f;
  m.materials[1].stageOffsetV[0] = 0.2f;
  m.materials[1].stageScaleU[1] = 100.0f;  // other stages do not reach the array
  m.flattenArrays();
  EXPECT_FLOAT_EQ(0.5f * 2.0f + 0.1f, m.texCoordArray[1][0]);
  EXPECT_FLOAT_EQ(0.25f * 4.0f + 0.2f, m.texCoordArray[1][1]);
  EXPECT_EQ(0.0f, m.texCoordArray[1][2]);
  EXPECT_EQ(0.5f, m.texCoordArray[0][0]);
}

TEST_F(MeshArraysTest, KeepInvisibleFacesFalseSkipsOnlyFullyTransparentFaces) {
  Mesh m;
  addSquare(m);
  m.keepInvisibleFaces = false;
  // Face 0 (0 1 2): one visible corner (0); face 1 (0 2 3): 0 is visible too.
  m.vertices[1]->alpha = 0.0f;
  m.vertices[2]->alpha = 0.0f;
  m.flattenArrays();
  EXPECT_EQ(2u, m.drawnFaceCount);  // a triangle with one visible corner is kept
  m.vertices[0]->alpha = 0.0f;
  m.vertices[3]->alpha = 0.0f;
  m.coloursDirty = true;  // the first colour flag alone rewrites the indices
  m.flattenArrays();
  EXPECT_EQ(0u, m.drawnFaceCount);
  m.vertices[3]->alpha = 1.0f;
  m.coloursDirtyToo = true;  // the second colour flag does not
  m.flattenArrays();
  EXPECT_EQ(0u, m.drawnFaceCount);
}

TEST_F(MeshArraysTest, UpdateArraysRewritesNothingUnlessFlagged) {
  Mesh m;
  addSquare(m);
  m.flattenArrays();
  m.vertices[0]->position = Vector3(7, 7, 7);
  m.anyArrayDirty = true;  // recomputed from the four flags, so this alone does nothing
  m.flattenArrays();
  EXPECT_EQ(0.0f, m.vertexArray[0]);
  m.positionsDirty = true;
  m.flattenArrays();
  EXPECT_EQ(7.0f, m.vertexArray[0]);
}

TEST_F(MeshArraysTest, ArraysGrowAtExactlyTheSlotCountAndNeverShrink) {
  Mesh m;
  addSquare(m);
  m.flattenArrays();
  const float *before = m.vertexArray;
  m.addVertex(Vector3(5, 5, 5), noTex, white);
  m.addFace(0, 1, 4);
  m.flattenArrays();  // grown: contents lost, and only refilled when flagged
  EXPECT_NE(before, m.vertexArray);
  EXPECT_EQ(5u, m.vertexCapacity);
  EXPECT_EQ(3u, m.faceCapacity);
  EXPECT_EQ(0.0f, m.vertexArray[4 * 3]);
  EXPECT_EQ(3u, m.drawnFaceCount);
  while (m.faceCount > 0) m.removeOldestFace();
  m.flattenArrays();
  EXPECT_EQ(5u, m.vertexCapacity);
  EXPECT_EQ(3u, m.faceCapacity);
  // Removal does not flag the indices: the old triangles stay listed until
  // something sets indicesDirty (builders always add faces after removing).
  EXPECT_EQ(3u, m.drawnFaceCount);
  m.indicesDirty = true;
  m.flattenArrays();
  EXPECT_EQ(0u, m.drawnFaceCount);
}

TEST_F(MeshArraysTest, IndicesAreTruncatedToSixteenBits) {
  Mesh m;
  for (int i = 0; i < 65537; ++i) m.addVertex(Vector3(float(i), 0, 0), noTex, white);
  m.addFace(65536, 1, 0);
  m.flattenArrays();
  EXPECT_EQ(0, m.indexArray[0]);  // 65536 wraps silently
  EXPECT_EQ(1, m.indexArray[1]);
}
