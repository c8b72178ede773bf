// Fuzz target: the a3d model reader. Any bytes are decoded as a model file;
// a model that decodes is built into a mesh and given its normals, as a
// scene does with it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "geometry/A3dFile.h"
#include "geometry/Mesh.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::vector<uint8_t> bytes(data, data + size);
  A3dModel model;
  if (decodeA3d(bytes, "fuzz.a3d", model) != a3dOk) return 0;
  Mesh mesh;
  buildMeshFromA3d(mesh, model, "fuzz.a3d");
  mesh.computeFaceNormals();
  mesh.computeVertexNormals(true);
  return 0;
}
