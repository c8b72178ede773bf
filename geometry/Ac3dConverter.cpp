// Ac3dConverter: AC3D text reader, source-code dump and ".a3d" writer.
#include "geometry/Ac3dConverter.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "geometry/A3dFile.h"

// ===========================================================================
// Lines and tokens
// ===========================================================================
namespace {

// The text as lines, with "\r\n", "\n" and a lone "\r" all ending a line.
std::vector<std::string> splitLines(const std::string &text) {
  std::vector<std::string> lines;
  std::string line;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n' || c == '\r') {
      lines.push_back(line);
      line.clear();
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      line += c;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

struct Token {
  std::string text;
  bool quoted = false;
};

// Splits on blanks; a double-quoted run is one token without its quotes.
std::vector<Token> tokenize(const std::string &line, bool *unclosedQuote) {
  std::vector<Token> tokens;
  *unclosedQuote = false;
  size_t i = 0;
  while (i < line.size()) {
    if (line[i] == ' ' || line[i] == '\t') {
      ++i;
      continue;
    }
    Token token;
    if (line[i] == '"') {
      const size_t close = line.find('"', i + 1);
      token.quoted = true;
      if (close == std::string::npos) {
        *unclosedQuote = true;
        token.text = line.substr(i + 1);
        i = line.size();
      } else {
        token.text = line.substr(i + 1, close - i - 1);
        i = close + 1;
      }
    } else {
      const size_t end = line.find_first_of(" \t", i);
      token.text = line.substr(i, end == std::string::npos ? std::string::npos : end - i);
      i = end == std::string::npos ? line.size() : end;
    }
    tokens.push_back(token);
  }
  return tokens;
}

bool parseFloat(const std::string &s, float *value) {
  if (s.empty()) return false;
  errno = 0;
  char *end = nullptr;
  // Parsed in double so that three-digit exponents beyond float range give
  // a clear result (infinity or zero) rather than a parse failure.
  const double v = std::strtod(s.c_str(), &end);
  if (end != s.c_str() + s.size()) return false;
  if (!std::isfinite(v) || std::fabs(v) > 3.4e38) return false;
  *value = float(v);
  return true;
}

bool parseInt(const std::string &s, long *value) {
  if (s.empty()) return false;
  errno = 0;
  char *end = nullptr;
  long v;
  // Hexadecimal with 0x or 0X, otherwise decimal (a leading 0 is not octal).
  if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X'))
    v = std::strtol(s.c_str() + 2, &end, 16);
  else
    v = std::strtol(s.c_str(), &end, 10);
  if (end != s.c_str() + s.size() || errno == ERANGE) return false;
  *value = v;
  return true;
}

// ===========================================================================
// The reader
// ===========================================================================

// What the reader learns about one object.
struct ObjectState {
  bool hasCrease = false;
  Ac3dObject object;
};

class Reader {
public:
  Reader(const std::string &text, const std::string &sourceName, std::ostream &messages)
      : lines_(splitLines(text)), source_(sourceName), messages_(messages) {}

  int run(Ac3dObject &result);

private:
  std::vector<std::string> lines_;
  size_t next_ = 0;         // index of the next line to read
  std::string source_;
  std::ostream &messages_;
  bool damaged_ = false;
  bool found_ = false;      // the converted object has been read
  int objectsSeen_ = 0;
  int polygonsDropped_ = 0;
  int linesDropped_ = 0;
  int otherSurfacesDropped_ = 0;
  int unknownTokens_ = 0;
  Ac3dObject result_;

  // Reports damage at the line last read (1-based) and marks the file.
  bool fail(const std::string &what) {
    if (!damaged_)
      messages_ << source_ << ":" << next_ << ": damaged AC3D file: " << what << "\n";
    damaged_ = true;
    return false;
  }
  void note(const std::string &what) { messages_ << source_ << ": " << what << "\n"; }

  // Next line with at least one token; false at the end of the text.
  bool nextTokens(std::vector<Token> &tokens) {
    while (next_ < lines_.size()) {
      bool unclosed = false;
      tokens = tokenize(lines_[next_++], &unclosed);
      if (unclosed) note("line " + std::to_string(next_) + ": a quote is not closed");
      if (!tokens.empty()) return true;
    }
    return false;
  }

  bool readFloats(const std::vector<Token> &tokens, size_t first, size_t count, float *out,
                  const char *what) {
    if (tokens.size() < first + count) return fail(std::string("too few numbers for ") + what);
    for (size_t i = 0; i < count; ++i)
      if (!parseFloat(tokens[first + i].text, &out[i]))
        return fail(std::string("not a number in ") + what + ": '" + tokens[first + i].text + "'");
    return true;
  }

  bool readCount(const std::vector<Token> &tokens, const char *what, long *count) {
    if (tokens.size() < 2 || !parseInt(tokens[1].text, count) || *count < 0)
      return fail(std::string("bad count after ") + what);
    return true;
  }

  bool skipData(long length);
  bool readObject(int depth);
  bool readVertices(long count, ObjectState &state);
  bool readSurfaces(long count, ObjectState &state);
};

// A data block: `length` characters on the following lines, a line end
// counting as one.
bool Reader::skipData(long length) {
  long consumed = 0;
  bool first = true;
  while (consumed < length) {
    if (next_ >= lines_.size()) return fail("the file ends inside a data block");
    consumed += long(lines_[next_++].size()) + (first ? 0 : 1);
    first = false;
  }
  return true;
}

bool Reader::readVertices(long count, ObjectState &state) {
  std::vector<Token> tokens;
  state.object.vertices.reserve(size_t(count) * 3);
  for (long i = 0; i < count; ++i) {
    if (!nextTokens(tokens)) return fail("the file ends inside the vertex list");
    float v[3];
    // A vertex line may carry a normal after the position; it is not used.
    if (!readFloats(tokens, 0, 3, v, "a vertex")) return false;
    state.object.vertices.insert(state.object.vertices.end(), v, v + 3);
  }
  return true;
}

bool Reader::readSurfaces(long count, ObjectState &state) {
  std::vector<Token> tokens;
  const long vertexCount = long(state.object.vertices.size() / 3);
  Ac3dObject &object = state.object;
  for (long s = 0; s < count; ++s) {
    if (!nextTokens(tokens)) return fail("the file ends inside the surface list");
    if (tokens[0].text != "SURF") return fail("expected SURF, found '" + tokens[0].text + "'");
    long flags = 0;
    if (tokens.size() < 2 || !parseInt(tokens[1].text, &flags) || flags < 0)
      return fail("bad SURF flags");
    long material = 0;
    long refs = -1;
    while (refs < 0) {
      if (!nextTokens(tokens)) return fail("the file ends inside a surface");
      if (tokens[0].text == "mat") {
        if (!readCount(tokens, "mat", &material)) return false;
      } else if (tokens[0].text == "refs") {
        if (!readCount(tokens, "refs", &refs)) return false;
      } else {
        return fail("expected mat or refs, found '" + tokens[0].text + "'");
      }
    }
    std::vector<int> index(size_t(refs) > 0 ? size_t(refs) : 0);
    std::vector<float> uv(index.size() * 2);
    for (long r = 0; r < refs; ++r) {
      if (!nextTokens(tokens)) return fail("the file ends inside a reference list");
      long vertex = 0;
      if (!parseInt(tokens[0].text, &vertex)) return fail("bad vertex reference '" + tokens[0].text + "'");
      if (vertex < 0 || vertex >= vertexCount)
        return fail("vertex reference " + std::to_string(vertex) + " outside 0.." +
                    std::to_string(vertexCount - 1));
      index[size_t(r)] = int(vertex);
      if (!readFloats(tokens, 1, 2, &uv[size_t(r) * 2], "a reference")) return false;
    }

    const long type = flags & 0xF;
    if (type == 1 || type == 2) {  // closed and open lines draw no triangles
      ++linesDropped_;
      continue;
    }
    if (type != 0) {
      ++otherSurfacesDropped_;
      continue;
    }
    auto addTriangle = [&](int a, int b, int c) {
      for (int k : {a, b, c}) {
        object.triangleIndices.push_back(index[size_t(k)]);
        object.cornerTexCoords.push_back(uv[size_t(k) * 2]);
        object.cornerTexCoords.push_back(uv[size_t(k) * 2 + 1]);
      }
      object.triangleMaterials.push_back(int(material));
    };
    if (refs == 3) {
      addTriangle(0, 1, 2);
    } else if (refs == 4) {
      addTriangle(0, 1, 2);
      addTriangle(0, 2, 3);
    } else {
      ++polygonsDropped_;
    }
  }
  return true;
}

bool Reader::readObject(int depth) {
  std::vector<Token> tokens;
  if (!nextTokens(tokens)) return fail("the file ends where an object should start");
  if (tokens[0].text != "OBJECT") return fail("expected OBJECT, found '" + tokens[0].text + "'");
  if (depth > 64) return fail("objects nested too deeply");
  ++objectsSeen_;
  ObjectState state;
  bool rotated = false, textured = false, texMapped = false;
  long numvert = -1;

  while (true) {
    if (!nextTokens(tokens)) return fail("the file ends inside an object (no kids line)");
    const std::string &key = tokens[0].text;
    if (key == "name") {
      if (tokens.size() < 2) return fail("name without a value");
      state.object.objectName = tokens[1].text;
    } else if (key == "data") {
      long length = 0;
      if (!readCount(tokens, "data", &length) || !skipData(length)) return false;
    } else if (key == "texture") {
      textured = true;
    } else if (key == "texrep" || key == "texoff") {
      float v[2];
      if (!readFloats(tokens, 1, 2, v, key.c_str())) return false;
      if (v[0] != (key == "texrep" ? 1.0f : 0.0f) || v[1] != (key == "texrep" ? 1.0f : 0.0f))
        texMapped = true;
    } else if (key == "rot") {
      float m[9];
      if (!readFloats(tokens, 1, 9, m, "rot")) return false;
      const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
      for (int i = 0; i < 9; ++i) rotated = rotated || m[i] != identity[i];
    } else if (key == "loc") {
      if (!readFloats(tokens, 1, 3, state.object.location, "loc")) return false;
    } else if (key == "crease") {
      if (!readFloats(tokens, 1, 1, &state.object.creaseAngle, "crease")) return false;
      state.hasCrease = true;
    } else if (key == "numvert") {
      if (numvert >= 0) return fail("a second numvert in one object");
      if (!readCount(tokens, "numvert", &numvert) || !readVertices(numvert, state)) return false;
    } else if (key == "numsurf") {
      long count = 0;
      if (numvert < 0) return fail("numsurf before numvert");
      if (!readCount(tokens, "numsurf", &count) || !readSurfaces(count, state)) return false;
    } else if (key == "kids") {
      long kids = 0;
      if (!readCount(tokens, "kids", &kids)) return false;
      // This object is complete: take it if it is the first usable one.
      if (!found_ && state.hasCrease && state.object.vertexCount() > 0) {
        found_ = true;
        result_ = state.object;
        if (rotated) note("the rot of object \"" + result_.objectName + "\" is not applied");
        if (textured) note("the texture name of object \"" + result_.objectName + "\" is not carried");
        if (texMapped)
          note("texrep and texoff of object \"" + result_.objectName + "\" are not applied");
      }
      for (long k = 0; k < kids; ++k)
        if (!readObject(depth + 1)) return false;
      return true;
    } else if (key == "url" || key == "subdiv" || key == "hidden" || key == "locked" ||
               key == "folded") {
      // Editor state; nothing of it reaches the model.
    } else {
      ++unknownTokens_;
      note("line " + std::to_string(next_) + ": unknown token '" + key + "' skipped");
    }
  }
}

int Reader::run(Ac3dObject &result) {
  std::vector<Token> tokens;
  if (lines_.empty() || lines_[0].compare(0, 4, "AC3D") != 0) {
    messages_ << source_ << ": not an AC3D file (it does not start with AC3D)\n";
    return ac3dDamaged;
  }
  next_ = 1;
  while (next_ < lines_.size()) {
    const size_t at = next_;
    if (!nextTokens(tokens)) break;
    if (tokens[0].text == "MATERIAL") continue;  // materials are not carried
    next_ = at;
    if (!readObject(0)) break;
  }
  if (damaged_) return ac3dDamaged;
  if (linesDropped_ > 0) note(std::to_string(linesDropped_) + " line surfaces dropped");
  if (polygonsDropped_ > 0)
    note(std::to_string(polygonsDropped_) + " polygons without 3 or 4 corners dropped");
  if (otherSurfacesDropped_ > 0)
    note(std::to_string(otherSurfacesDropped_) + " surfaces of unknown type dropped");
  if (!found_) {
    messages_ << source_ << ": no object with a crease line and vertices; nothing written\n";
    return ac3dNothingToConvert;
  }
  if (objectsSeen_ > 1) note("only object \"" + result_.objectName + "\" is converted");

  // Per-vertex texture coordinates: walking the triangles in order, the last
  // corner that touches a vertex wins.
  result_.verticeTextureCoords.assign(size_t(result_.vertexCount()) * 2, 0.0f);
  for (size_t c = 0; c < result_.triangleIndices.size(); ++c) {
    const size_t v = size_t(result_.triangleIndices[c]);
    result_.verticeTextureCoords[v * 2] = result_.cornerTexCoords[c * 2];
    result_.verticeTextureCoords[v * 2 + 1] = result_.cornerTexCoords[c * 2 + 1];
  }
  result = result_;
  return ac3dOk;
}

}  // namespace

// ===========================================================================
// Public operations
// ===========================================================================
int parseAc3d(const std::string &text, const std::string &sourceName, Ac3dObject &object,
              std::ostream &messages) {
  object = Ac3dObject();
  Reader reader(text, sourceName, messages);
  return reader.run(object);
}

int readAc3d(const std::string &sourceName, Ac3dObject &object, std::ostream &messages) {
  object = Ac3dObject();
  std::ifstream file(sourceName, std::ios::binary);
  if (!file) {
    messages << sourceName << ": cannot be opened\n";
    return ac3dCannotOpen;
  }
  std::ostringstream text;
  text << file.rdbuf();
  return parseAc3d(text.str(), sourceName, object, messages);
}

std::string ac3dSourceDump(const Ac3dObject &object) {
  std::ostringstream out;
  out << "static const char *objectName = \"" << object.objectName << "\";\n";
  out << "\n";
  out << "static float location[3] = { " << object.location[0] << ", " << object.location[1]
      << ", " << object.location[2] << " };\n";
  out << "\n";
  out << "static float creaseAngle = " << object.creaseAngle << ";\n";
  out << "\n";
  out << "static int numVert = " << object.vertexCount() << ";\n";
  out << "\n";
  out << "static int numTriangles = " << object.triangleCount() << ";\n";
  out << "\n";
  const int nv = object.vertexCount();
  const int nt = object.triangleCount();
  out << "static float vertices[" << nv << "][3] = {\n";
  for (int i = 0; i < nv; ++i)
    out << " { " << object.vertices[size_t(i) * 3] << ", " << object.vertices[size_t(i) * 3 + 1]
        << ", " << object.vertices[size_t(i) * 3 + 2] << " }" << (i + 1 < nv ? "," : "") << "\n";
  out << "};\n";
  out << "\n";
  out << "static int triangleIndices[" << nt << "][3] = {\n";
  for (int i = 0; i < nt; ++i)
    out << " { " << object.triangleIndices[size_t(i) * 3] << ", "
        << object.triangleIndices[size_t(i) * 3 + 1] << ", "
        << object.triangleIndices[size_t(i) * 3 + 2] << " }" << (i + 1 < nt ? "," : "") << "\n";
  out << "};\n";
  out << "\n";
  // The spelling "verticeTextureCoords" is the system's own.
  out << "static float verticeTextureCoords[" << nv << "][2] = {\n";
  for (int i = 0; i < nv; ++i)
    out << " { " << object.verticeTextureCoords[size_t(i) * 2] << ", "
        << object.verticeTextureCoords[size_t(i) * 2 + 1] << " }" << (i + 1 < nv ? "," : "")
        << "\n";
  out << "};\n";
  return out.str();
}

int convertAc3d(const std::string &sourceName, const std::string &targetName, bool binary,
                int positionQuantisation, int texCoordQuantisation) {
  Ac3dObject object;
  const int result = readAc3d(sourceName, object, std::cerr);
  if (result != ac3dOk) return result;

  if (!binary) {
    std::ofstream file(targetName, std::ios::trunc);
    if (!file) {
      std::cerr << targetName << ": cannot be written\n";
      return ac3dCannotOpen;
    }
    file << ac3dSourceDump(object);
    return file ? ac3dOk : ac3dCannotOpen;
  }

  A3dModel model;
  model.creaseAngle = object.creaseAngle;
  for (int i = 0; i < 3; ++i) model.location[i] = object.location[i];
  model.positions = object.vertices;
  model.texCoords = object.verticeTextureCoords;
  model.indices = object.triangleIndices;
  const std::vector<uint8_t> bytes =
      encodeA3d(model, positionQuantisation, texCoordQuantisation, ac3dBufferSize);
  const std::vector<uint8_t> whole = encodeA3d(model, positionQuantisation, texCoordQuantisation);
  if (bytes.size() < whole.size())
    std::cerr << sourceName << ": the model needs " << whole.size() << " bytes, more than "
              << ac3dBufferSize << "; the file is cut at " << bytes.size() << "\n";
  std::cout << "number of bytes to write: " << bytes.size() << "\n";
  if (writeFileBytes(targetName, bytes) != 0) {
    std::cerr << targetName << ": cannot be written\n";
    return ac3dCannotOpen;
  }
  return ac3dOk;
}
