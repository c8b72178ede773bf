// A3dMesh: turns a decoded ".a3d" model into the records of a Mesh.
#include <iostream>

#include "geometry/A3dFile.h"
#include "geometry/Mesh.h"

void buildMeshFromA3d(Mesh &mesh, const A3dModel &model, const std::string &name) {
  mesh.normalsDirty = true;
  const uint32_t vertexCount = model.vertexCount();
  std::vector<int> slots(vertexCount);
  for (uint32_t i = 0; i < vertexCount; ++i) {
    const float *p = &model.positions[size_t(i) * 3];
    const float u = size_t(i) * 2 + 1 < model.texCoords.size() ? model.texCoords[size_t(i) * 2] : 0.0f;
    const float v = size_t(i) * 2 + 1 < model.texCoords.size() ? model.texCoords[size_t(i) * 2 + 1] : 0.0f;
    slots[i] = mesh.addVertex(Vector3(p[0], p[1], p[2]), Vector3(u, v, 0.0f), Vector3(1.0f, 1.0f, 1.0f));
  }
  // The original does not check the indices; a face naming a vertex the
  // file does not have would read outside the slot table, so it is skipped.
  uint32_t skipped = 0;
  for (uint32_t f = 0; f < model.faceCount(); ++f) {
    const int *corner = &model.indices[size_t(f) * 3];
    bool inside = true;
    for (int c = 0; c < 3; ++c)
      if (corner[c] < 0 || uint32_t(corner[c]) >= vertexCount) inside = false;
    if (!inside) {
      ++skipped;
      continue;
    }
    mesh.addFace(slots[size_t(corner[0])], slots[size_t(corner[1])], slots[size_t(corner[2])]);
  }
  if (skipped > 0)
    std::cout << "ERROR: file " << name << " has " << skipped
              << " triangles with a vertex index beyond " << vertexCount << "; they are left out\n";
}
