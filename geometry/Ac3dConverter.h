// Ac3dConverter: turns one object of an AC3D text model (".ac") into an
// ".a3d" file or into a source-code dump of static arrays. Units are those
// of the source file; corner order (winding) is kept.
//
// The converted object is the first one, in file order (a parent before its
// kids), that has a `crease` line and at least one vertex. Polygons of 3
// references become one triangle, of 4 two triangles (r0 r1 r2, r0 r2 r3);
// other polygons and line surfaces are dropped. Texture coordinates are per
// corner in AC3D and per vertex here: the last corner that touches a vertex
// wins. Materials, textures, texrep/texoff, rot and the other objects are not
// carried; the reader says so on its message stream.
#pragma once
#include <iosfwd>
#include <string>
#include <vector>

// The object as read, before it is written.
struct Ac3dObject {
  std::string objectName;
  float location[3] = {0.0f, 0.0f, 0.0f};
  float creaseAngle = 0.0f;
  std::vector<float> vertices;           // 3 per vertex
  std::vector<int> triangleIndices;      // 3 per triangle
  std::vector<float> cornerTexCoords;    // 6 per triangle: u, v of each corner
  std::vector<int> triangleMaterials;    // 1 per triangle; parsed, not written
  std::vector<float> verticeTextureCoords;  // 2 per vertex, last corner wins

  int vertexCount() const { return int(vertices.size() / 3); }
  int triangleCount() const { return int(triangleIndices.size() / 3); }
};

// Result codes of the reader and the converter.
enum Ac3dResult {
  ac3dOk = 0,
  ac3dNothingToConvert = 1,  // no object with a crease line and vertices: nothing written
  ac3dCannotOpen = 2,        // the source cannot be read, or the target cannot be written
  ac3dDamaged = 3,           // not AC3D, truncated, wrong counts, out-of-range indices
};

// Parses a whole AC3D text. Messages (damage, what is not carried) go to
// `messages`, each naming `sourceName` and, where it applies, the line; what
// they quote from the file is a short printable excerpt.
//
// Damage (ac3dDamaged, with the first problem's line):
// - a count (numvert, numsurf, refs, kids, data) larger than the rest of the
//   file can hold, refused at its own line before anything is reserved, so
//   memory stays bounded by the file's size;
// - a surface, material, OBJECT or number line where an object's own lines
//   are expected: the mark of a misspelt numvert or numsurf or a missing kids
//   line (other unknown tokens are skipped with a note);
// - a file that ends before its first OBJECT (cut in its material list), or
//   anywhere inside an object;
// - bad numbers, references outside the vertex list, a second numvert or
//   numsurf, nesting deeper than 64.
// The counts of dropped surfaces that it reports are those of the converted
// object alone.
int parseAc3d(const std::string &text, const std::string &sourceName, Ac3dObject &object,
              std::ostream &messages);

// Reads the file and parses it.
int readAc3d(const std::string &sourceName, Ac3dObject &object, std::ostream &messages);

// The source-code dump: objectName, location, creaseAngle, numVert,
// numTriangles, vertices, triangleIndices, verticeTextureCoords. The name is
// escaped for a C string literal (quote, backslash, non-printable bytes, "??").
std::string ac3dSourceDump(const Ac3dObject &object);

// Converts sourceName into targetName. binary: the ".a3d" form with
// positionQuantisation and texCoordQuantisation (0 float, 1 16-bit, 2 8-bit),
// assembled in a buffer of 2000000 bytes (a larger model is cut at a write
// boundary, with a warning) and announced with "number of bytes to write: N"
// on standard output. Otherwise the source-code dump. Messages go to standard
// error. Returns an Ac3dResult; nothing is written unless it is ac3dOk.
int convertAc3d(const std::string &sourceName, const std::string &targetName, bool binary,
                int positionQuantisation, int texCoordQuantisation);

// At most `limit` bytes of `text` with every byte outside printable ASCII
// (and the backslash) written as \xNN, and "..." when it was cut: what the
// messages quote from a file.
std::string ac3dExcerpt(const std::string &text, size_t limit = 40);

// The size of the binary writer's buffer.
constexpr size_t ac3dBufferSize = 2000000;
