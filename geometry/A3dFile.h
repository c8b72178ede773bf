// A3dFile: the system's compact binary triangle model (".a3d", under
// "./models/"). Little-endian, no padding. Positions and texture coordinates
// are 32-bit floats or quantised to 16 or 8 bits with a per-axis offset and
// scale: value = q / 65535.0 (or / 255.0) * scale - offset.
//
// Layout: magic "000\0" (not checked), flags u32, vertexCount u32, faceCount
// u32, creaseAngle f32, [position offset xyz, scale xyz], [texture offset uv,
// scale uv], location xyz f32, positions, indices (u16 when vertexCount <
// 65536, else u32), texture coordinates. Normals, colours and materials are
// not stored.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class Mesh;

// Flag bits of the header.
enum A3dFlags : uint32_t {
  a3dPositions16 = 1,  // positions are uint16 (wins over a3dPositions8)
  a3dPositions8 = 2,   // positions are uint8
  a3dTexCoords16 = 4,  // texture coordinates are uint16 (wins over a3dTexCoords8)
  a3dTexCoords8 = 8,   // texture coordinates are uint8
};

// Storage forms as the converter names them: 0 float, 1 16-bit, 2 8-bit.
enum A3dQuantisation { a3dFloat = 0, a3dBits16 = 1, a3dBits8 = 2 };

// A decoded model: 3 floats per vertex, 2 texture floats per vertex, 3
// indices per triangle, in file order.
struct A3dModel {
  uint32_t flags = 0;
  float creaseAngle = 0.0f;   // from the source model; no effect on loading
  float location[3] = {0.0f, 0.0f, 0.0f};  // from the source model; not used
  std::vector<float> positions;
  std::vector<float> texCoords;
  std::vector<int> indices;

  uint32_t vertexCount() const { return uint32_t(positions.size() / 3); }
  uint32_t faceCount() const { return uint32_t(indices.size() / 3); }
};

// Result codes of readA3d.
enum A3dReadResult {
  a3dOk = 0,
  a3dNotFound = -1,   // "ERROR: file <name> not found"
  a3dEmpty = -2,      // "ERROR: size of the file is 0"
  a3dDamaged = -3,    // shorter than its header says; a message names the file
};

// Reads and decodes a whole file. The two failures of the loader print their
// messages on standard output; a file too short for the counts in its header
// is refused with a message (nothing is read past the end). The magic is not
// checked.
int readA3d(const std::string &fileName, A3dModel &model);

// Decodes an in-memory file image; `name` is used in messages only.
int decodeA3d(const std::vector<uint8_t> &bytes, const std::string &name, A3dModel &model);

// Fills a mesh: one addVertex per vertex in file order (texture coordinates
// (u, v, 0), colour 1, 1, 1), then one addFace per triangle with the corner
// order kept, and sets normalsDirty. Triangles naming a vertex beyond the
// model's vertex count are skipped with a message.
void buildMeshFromA3d(Mesh &mesh, const A3dModel &model, const std::string &name = std::string());

// Encodes a model in the given forms (A3dQuantisation values). This is the
// converter's writer: by default it keeps its texture-bounds quirk (the
// texture bounds are compared on texture values but taken from the position
// array, see A3dFile.cpp), so quantised texture coordinates only decode right
// when the positions span them. exactTexBounds takes the bounds from the
// texture values themselves. Writes that would pass `limit` bytes are dropped
// whole, which cuts the image at a write boundary.
std::vector<uint8_t> encodeA3d(const A3dModel &model, int positionQuantisation,
                               int texCoordQuantisation, size_t limit = SIZE_MAX,
                               bool exactTexBounds = false);

// Writes bytes to a file; 0 on success, -1 when it cannot be written.
int writeFileBytes(const std::string &fileName, const std::vector<uint8_t> &bytes);
