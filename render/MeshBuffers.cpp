// MeshBuffers: the GL side of a mesh's arrays, the copies on the card. The
// flattening itself (Mesh::flattenArrays) is geometry and knows no GL; this
// finishes Mesh::updateArrays with the buffers and the display-list names.
#include <GL/glew.h>

#include "foundation/Capabilities.h"
#include "geometry/Mesh.h"

void Mesh::updateArrays() {
  // Steps 1 to 5 and 8; nothing to copy when nothing was rewritten.
  if (!flattenArrays()) return;

  // 6. Buffers, created and filled once. A mesh with neither setupState nor
  // restoreState draws through the first mesh of its batch and gets none.
  if (useVertexBuffers && !useDisplayLists && !buffersCreated && (setupState || restoreState)) {
    const GLsizeiptr vertex3 = GLsizeiptr(vertexCapacity) * 3 * sizeof(float);
    const GLsizeiptr vertex4 = GLsizeiptr(vertexCapacity) * 4 * sizeof(float);
    GLuint names[9];
    glGenBuffersARB(9, names);
    indexBuffer = names[0];
    vertexBuffer = names[1];
    normalBuffer = names[2];
    texCoordBuffer0 = names[3];
    colourBufferA0 = names[4];
    colourBufferB0 = names[5];
    texCoordBuffer1 = names[6];
    colourBufferA1 = names[7];
    colourBufferB1 = names[8];
    glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    glBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, GLsizeiptr(drawnFaceCount) * 3 * 2, indexArray, GL_STATIC_DRAW_ARB);
    const struct {
      GLuint name;
      GLsizeiptr size;
      const float* data;
    } uploads[] = {
        {vertexBuffer, vertex3, vertexArray},         {normalBuffer, vertex3, normalArray},
        {texCoordBuffer0, vertex3, texCoordArray[0]}, {colourBufferA0, vertex4, colourArrayA[0]},
        {colourBufferB0, vertex4, colourArrayB[0]},   {texCoordBuffer1, vertex3, texCoordArray[1]},
        {colourBufferA1, vertex4, colourArrayA[1]},   {colourBufferB1, vertex4, colourArrayB[1]},
    };
    for (const auto& u : uploads) {
      glBindBufferARB(GL_ARRAY_BUFFER_ARB, u.name);
      glBufferDataARB(GL_ARRAY_BUFFER_ARB, u.size, u.data, GL_STATIC_DRAW_ARB);
    }
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    buffersCreated = true;
  }

  // 7. Display lists: five new names (old ones are not deleted), compiled on
  // first draw.
  if (useDisplayLists) {
    colourBList = glGenLists(1);
    colourAList = glGenLists(1);
    depthList = glGenLists(1);
    spareList1 = glGenLists(1);
    spareList2 = glGenLists(1);
    colourBListBuilt = colourAListBuilt = depthListBuilt = spareBuilt1 = spareBuilt2 = false;
  }
}
