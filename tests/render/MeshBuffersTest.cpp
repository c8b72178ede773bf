// Mesh::updateArrays on a GL context: buffers are made and filled once, only
// for meshes that set up or restore state; display lists get new names.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <vector>

#include "foundation/Capabilities.h"
#include "geometry/Builders.h"
#include "geometry/Mesh.h"
#include "support/GLTestContext.h"

namespace {

// Restores the two path flags whatever a test does with them.
struct PathFlags {
  bool buffers = useVertexBuffers, lists = useDisplayLists;
  ~PathFlags() {
    useVertexBuffers = buffers;
    useDisplayLists = lists;
  }
};

template <typename T>
std::vector<T> bufferContents(GLenum target, GLuint name, size_t count) {
  std::vector<T> data(count);
  glBindBufferARB(target, name);
  glGetBufferSubDataARB(target, 0, GLsizeiptrARB(count * sizeof(T)), data.data());
  glBindBufferARB(target, 0);
  return data;
}

}  // namespace

TEST(MeshBuffersTest, BuffersAreCreatedAndFilledOnce) {
  REQUIRE_GL(64, 64);
  PathFlags keep;
  useVertexBuffers = true;
  useDisplayLists = false;
  Mesh m;
  buildBox(m, 3, 3, false, true);
  m.computeFaceNormals();
  m.computeVertexNormals(true);
  m.updateArrays();
  ASSERT_TRUE(m.buffersCreated);
  const GLuint names[9] = {m.indexBuffer,     m.vertexBuffer,   m.normalBuffer,
                           m.texCoordBuffer0, m.colourBufferA0, m.colourBufferB0,
                           m.texCoordBuffer1, m.colourBufferA1, m.colourBufferB1};
  for (int i = 0; i < 9; ++i) {
    EXPECT_NE(0u, names[i]);
    for (int j = 0; j < i; ++j) EXPECT_NE(names[i], names[j]);
  }
  const auto indices = bufferContents<uint16_t>(GL_ELEMENT_ARRAY_BUFFER_ARB, m.indexBuffer, m.drawnFaceCount * 3);
  for (size_t i = 0; i < indices.size(); ++i) EXPECT_EQ(m.indexArray[i], indices[i]);
  const auto positions = bufferContents<float>(GL_ARRAY_BUFFER_ARB, m.vertexBuffer, m.vertexSlotCount * 3);
  for (size_t i = 0; i < positions.size(); ++i) EXPECT_EQ(m.vertexArray[i], positions[i]);
  const auto coloursB1 = bufferContents<float>(GL_ARRAY_BUFFER_ARB, m.colourBufferB1, m.vertexSlotCount * 4);
  for (size_t i = 0; i < coloursB1.size(); ++i) EXPECT_EQ(m.colourArrayB[1][i], coloursB1[i]);

  // Later edits reach the arrays but not the card.
  m.vertices[0]->position = Vector3(42, 42, 42);
  m.positionsDirty = true;
  m.updateArrays();
  EXPECT_EQ(names[1], m.vertexBuffer);
  EXPECT_EQ(42.0f, m.vertexArray[0]);
  EXPECT_NE(42.0f, bufferContents<float>(GL_ARRAY_BUFFER_ARB, m.vertexBuffer, 1)[0]);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshBuffersTest, AMiddleMeshOfABatchGetsNoBuffers) {
  REQUIRE_GL(64, 64);
  PathFlags keep;
  useVertexBuffers = true;
  useDisplayLists = false;
  Mesh m;
  buildCube(m, false);
  m.setupState = false;
  m.restoreState = false;
  m.updateArrays();
  EXPECT_FALSE(m.buffersCreated);
  EXPECT_EQ(0u, m.vertexBuffer);
  EXPECT_EQ(12u, m.drawnFaceCount);
}

TEST(MeshBuffersTest, NothingDirtyMeansNoUpload) {
  REQUIRE_GL(64, 64);
  PathFlags keep;
  useVertexBuffers = true;
  useDisplayLists = false;
  Mesh m;
  m.anyArrayDirty = m.coloursDirty = m.coloursDirtyToo = false;
  m.texCoordsDirty = m.positionsDirty = m.indicesDirty = false;
  m.updateArrays();
  EXPECT_FALSE(m.buffersCreated);
}

TEST(MeshBuffersTest, DisplayListsGetFiveNewNamesOnEveryRebuild) {
  REQUIRE_GL(64, 64);
  PathFlags keep;
  useVertexBuffers = true;
  useDisplayLists = true;  // wins over buffers
  Mesh m;
  buildCube(m, false);
  m.updateArrays();
  EXPECT_FALSE(m.buffersCreated);
  const GLuint first = m.colourBList;
  EXPECT_NE(0u, first);
  EXPECT_NE(first, m.colourAList);
  EXPECT_NE(m.depthList, m.spareList2);
  m.colourBListBuilt = m.depthListBuilt = true;
  m.positionsDirty = true;
  m.updateArrays();
  EXPECT_NE(first, m.colourBList);  // the old names are not deleted
  EXPECT_FALSE(m.colourBListBuilt);
  EXPECT_FALSE(m.depthListBuilt);
  EXPECT_TRUE(testgl::drainErrors().empty());
}
