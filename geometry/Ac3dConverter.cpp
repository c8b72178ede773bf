// Ac3dConverter: AC3D text reader, source-code dump and ".a3d" writer.
#include "geometry/Ac3dConverter.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "geometry/A3dFile.h"

// ===========================================================================
// Quoting
// ===========================================================================

std::string ac3dExcerpt(const std::string &text, size_t limit) {
  static const char hex[] = "0123456789abcdef";
  std::string out;
  const size_t shown = text.size() < limit ? text.size() : limit;
  for (size_t i = 0; i < shown; ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c < 0x7f && c != '\\') {
      out += char(c);
    } else {
      out += "\\x";
      out += hex[c >> 4];
      out += hex[c & 0xF];
    }
  }
  if (shown < text.size()) out += "...";
  return out;
}

namespace {

// The text as the body of a C string literal: quote and backslash escaped,
// bytes outside printable ASCII as three-digit octal escapes (which, unlike
// hexadecimal ones, cannot run on into a following digit), and "??" broken so
// that no trigraph forms.
std::string cStringBody(const std::string &text) {
  std::string out;
  char previous = 0;
  for (char ch : text) {
    const unsigned char c = static_cast<unsigned char>(ch);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += ch;
    } else if (c == '?' && previous == '?') {
      out += "\\?";
    } else if (c >= 0x20 && c < 0x7f) {
      out += ch;
    } else {
      out += '\\';
      out += char('0' + (c >> 6));
      out += char('0' + ((c >> 3) & 7));
      out += char('0' + (c & 7));
    }
    previous = ch;
  }
  return out;
}

}  // namespace

// ===========================================================================
// Lines and tokens
// ===========================================================================
namespace {

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

// A line that starts like a number: a vertex or reference line.
bool isNumberLine(const std::vector<Token> &tokens) {
  if (tokens.empty() || tokens[0].quoted || tokens[0].text.empty()) return false;
  const char c = tokens[0].text[0];
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

// The fewest bytes that a list entry can take, its line end included (the
// last one of a file may lack it): a vertex "0 0 0", a reference "0 0 0", a
// surface "SURF 0" and "refs 0", an object "OBJECT" and "kids 0".
constexpr unsigned long minimumVertexBytes = 6;
constexpr unsigned long minimumReferenceBytes = 6;
constexpr unsigned long minimumSurfaceBytes = 14;
constexpr unsigned long minimumObjectBytes = 14;

// The most per-line notes (unknown tokens, open quotes) given one by one;
// the rest are counted.
constexpr int lineNotesShown = 10;

// ===========================================================================
// The reader
// ===========================================================================

// What the reader learns about one object.
struct ObjectState {
  bool hasCrease = false;
  bool hasSurfaces = false;
  Ac3dObject object;
  // Surfaces of this object that give no triangles.
  long linesDropped = 0;
  long polygonsDropped = 0;
  long otherSurfacesDropped = 0;
};

class Reader {
public:
  Reader(const std::string &text, const std::string &sourceName, std::ostream &messages)
      : text_(text), source_(sourceName), messages_(messages) {}

  int run(Ac3dObject &result);

private:
  const std::string &text_;
  size_t at_ = 0;           // byte offset of the next line
  size_t lineNumber_ = 0;   // 1-based number of the line last read
  std::string line_;        // the line last read
  std::string source_;
  std::ostream &messages_;
  bool damaged_ = false;
  bool found_ = false;      // the converted object has been read
  int objectsSeen_ = 0;
  int lineNotes_ = 0;
  ObjectState taken_;       // the converted object, with its dropped counts

  // Reports damage at the line last read and marks the file.
  bool fail(const std::string &what) {
    if (!damaged_)
      messages_ << source_ << ":" << lineNumber_ << ": damaged AC3D file: " << what << "\n";
    damaged_ = true;
    return false;
  }
  void note(const std::string &what) { messages_ << source_ << ": " << what << "\n"; }
  // A note about one line; after the first few they are only counted.
  void lineNote(const std::string &what) {
    if (++lineNotes_ <= lineNotesShown)
      messages_ << source_ << ":" << lineNumber_ << ": " << what << "\n";
  }

  // The bytes not read yet.
  unsigned long bytesLeft() const { return (unsigned long)(text_.size() - at_); }

  // Reads the next line ("\r\n", "\n" and a lone "\r" all end one); false at
  // the end of the text.
  bool nextLine() {
    if (at_ >= text_.size()) return false;
    size_t end = at_;
    while (end < text_.size() && text_[end] != '\n' && text_[end] != '\r') ++end;
    line_.assign(text_, at_, end - at_);
    if (end < text_.size()) {
      if (text_[end] == '\r' && end + 1 < text_.size() && text_[end + 1] == '\n') ++end;
      ++end;
    }
    at_ = end;
    ++lineNumber_;
    return true;
  }

  // Next line with at least one token; false at the end of the text.
  bool nextTokens(std::vector<Token> &tokens) {
    while (nextLine()) {
      bool unclosed = false;
      tokens = tokenize(line_, &unclosed);
      if (unclosed) lineNote("a quote is not closed");
      if (!tokens.empty()) return true;
    }
    return false;
  }

  bool readFloats(const std::vector<Token> &tokens, size_t first, size_t count, float *out,
                  const char *what) {
    if (tokens.size() < first + count)
      return fail(std::string("too few numbers for ") + what + " in '" + ac3dExcerpt(line_) + "'");
    for (size_t i = 0; i < count; ++i)
      if (!parseFloat(tokens[first + i].text, &out[i]))
        return fail(std::string("not a number in ") + what + ": '" +
                    ac3dExcerpt(tokens[first + i].text) + "'");
    return true;
  }

  bool readCount(const std::vector<Token> &tokens, const char *what, long *count) {
    if (tokens.size() < 2 || !parseInt(tokens[1].text, count) || *count < 0)
      return fail(std::string("bad count in '") + ac3dExcerpt(line_) + "': " + what +
                  " takes a whole number from 0 to " + std::to_string(LONG_MAX));
    return true;
  }

  // A list count, checked at once against what the rest of the file can hold
  // at `entryBytes` bytes an entry, so that nothing is reserved or read for a
  // count that cannot be met.
  bool readListCount(const std::vector<Token> &tokens, const char *what, const char *entries,
                     unsigned long entryBytes, long *count) {
    if (!readCount(tokens, what, count)) return false;
    const unsigned long most = (bytesLeft() + 1) / entryBytes;
    if ((unsigned long)(*count) > most)
      return fail(std::string(what) + " " + std::to_string(*count) + ": the " +
                  std::to_string(bytesLeft()) + " bytes left in the file hold at most " +
                  std::to_string(most) + " " + entries);
    return true;
  }

  bool skipData(long length);
  bool readObject(int depth);
  bool readVertices(long count, ObjectState &state);
  bool readSurfaces(long count, ObjectState &state);
  bool misplaced(const std::vector<Token> &tokens, size_t objectLine);
};

// A data block: `length` characters on the following lines, a line end
// counting as one.
bool Reader::skipData(long length) {
  if ((unsigned long)length > bytesLeft())
    return fail("data " + std::to_string(length) + ": longer than the " +
                std::to_string(bytesLeft()) + " bytes left in the file");
  long consumed = 0;
  bool first = true;
  while (consumed < length) {
    if (!nextLine()) return fail("the file ends inside a data block");
    consumed += long(line_.size()) + (first ? 0 : 1);
    first = false;
  }
  return true;
}

bool Reader::readVertices(long count, ObjectState &state) {
  std::vector<Token> tokens;
  state.object.vertices.reserve(size_t(count) * 3);  // count is held by the file's size
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
    if (tokens[0].text != "SURF")
      return fail("expected SURF, found '" + ac3dExcerpt(line_) + "' (fewer surfaces than numsurf " +
                  std::to_string(count) + "?)");
    long flags = 0;
    if (tokens.size() < 2 || !parseInt(tokens[1].text, &flags) || flags < 0)
      return fail("bad SURF flags in '" + ac3dExcerpt(line_) + "'");
    long material = 0;
    long refs = -1;
    while (refs < 0) {
      if (!nextTokens(tokens)) return fail("the file ends inside a surface");
      if (tokens[0].text == "mat") {
        if (!readCount(tokens, "mat", &material)) return false;
      } else if (tokens[0].text == "refs") {
        if (!readListCount(tokens, "refs", "references", minimumReferenceBytes, &refs))
          return false;
      } else {
        return fail("expected mat or refs, found '" + ac3dExcerpt(line_) + "'");
      }
    }
    std::vector<int> index(static_cast<size_t>(refs));  // refs is held by the file's size
    std::vector<float> uv(index.size() * 2);
    for (long r = 0; r < refs; ++r) {
      if (!nextTokens(tokens)) return fail("the file ends inside a reference list");
      long vertex = 0;
      if (!isNumberLine(tokens) || !parseInt(tokens[0].text, &vertex))
        return fail("expected a reference (vertex u v), found '" + ac3dExcerpt(line_) +
                    "' (fewer references than refs " + std::to_string(refs) + "?)");
      if (vertex < 0 || vertex >= vertexCount)
        return fail("vertex reference " + std::to_string(vertex) + " outside 0.." +
                    std::to_string(vertexCount - 1));
      index[size_t(r)] = int(vertex);
      if (!readFloats(tokens, 1, 2, &uv[size_t(r) * 2], "a reference")) return false;
    }

    const long type = flags & 0xF;
    if (type == 1 || type == 2) {  // closed and open lines draw no triangles
      ++state.linesDropped;
      continue;
    }
    if (type != 0) {
      ++state.otherSurfacesDropped;
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
      ++state.polygonsDropped;
    }
  }
  return true;
}

// Lines that belong to another part of the grammar, met among an object's
// own lines: a keyword spelt wrong before them (numvert, numsurf) or a
// missing kids line. Skipping them would give the object's body to the wrong
// owner, so they are damage. Returns false (with the message) for those.
bool Reader::misplaced(const std::vector<Token> &tokens, size_t objectLine) {
  const std::string &key = tokens[0].text;
  const std::string where = " in the object of line " + std::to_string(objectLine);
  if (key == "OBJECT")
    return fail("an OBJECT line before the kids line of the object of line " +
                std::to_string(objectLine) + " (kids missing or misspelt?)");
  if (key == "MATERIAL") return fail("a MATERIAL line" + where + ", where materials cannot be");
  if (key == "SURF" || key == "mat" || key == "refs")
    return fail("a surface line '" + ac3dExcerpt(line_) + "' outside a surface list" + where +
                " (numsurf missing or misspelt?)");
  if (isNumberLine(tokens))
    return fail("a line of numbers '" + ac3dExcerpt(line_) + "' outside a vertex or reference list" +
                where + " (numvert or refs missing or misspelt?)");
  return true;
}

bool Reader::readObject(int depth) {
  std::vector<Token> tokens;
  if (!nextTokens(tokens)) return fail("the file ends where an object should start");
  if (tokens[0].text != "OBJECT")
    return fail("expected OBJECT, found '" + ac3dExcerpt(line_) + "'");
  if (depth > 64) return fail("objects nested too deeply");
  const size_t objectLine = lineNumber_;
  ++objectsSeen_;
  ObjectState state;
  bool rotated = false, textured = false, texMapped = false;
  long numvert = -1;

  while (true) {
    if (!nextTokens(tokens))
      return fail("the file ends inside the object of line " + std::to_string(objectLine) +
                  " (no kids line)");
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
      if (!readListCount(tokens, "numvert", "vertices", minimumVertexBytes, &numvert) ||
          !readVertices(numvert, state))
        return false;
    } else if (key == "numsurf") {
      long count = 0;
      if (numvert < 0) return fail("numsurf before numvert");
      if (state.hasSurfaces) return fail("a second numsurf in one object");
      state.hasSurfaces = true;
      if (!readListCount(tokens, "numsurf", "surfaces", minimumSurfaceBytes, &count) ||
          !readSurfaces(count, state))
        return false;
    } else if (key == "kids") {
      long kids = 0;
      if (!readListCount(tokens, "kids", "objects", minimumObjectBytes, &kids)) return false;
      // This object is complete: take it if it is the first usable one.
      if (!found_ && state.hasCrease && state.object.vertexCount() > 0) {
        found_ = true;
        taken_ = state;
        const std::string name = "\"" + ac3dExcerpt(state.object.objectName) + "\"";
        if (rotated) note("the rot of object " + name + " is not applied");
        if (textured) note("the texture name of object " + name + " is not carried");
        if (texMapped) note("texrep and texoff of object " + name + " are not applied");
      }
      for (long k = 0; k < kids; ++k)
        if (!readObject(depth + 1)) return false;
      return true;
    } else if (key == "url" || key == "subdiv" || key == "hidden" || key == "locked" ||
               key == "folded") {
      // Editor state; nothing of it reaches the model.
    } else if (!misplaced(tokens, objectLine)) {
      return false;
    } else {
      lineNote("unknown token '" + ac3dExcerpt(key) + "' skipped");
    }
  }
}

int Reader::run(Ac3dObject &result) {
  std::vector<Token> tokens;
  if (text_.compare(0, 4, "AC3D") != 0) {
    messages_ << source_ << ": not an AC3D file (it does not start with AC3D)\n";
    return ac3dDamaged;
  }
  nextLine();  // the header
  while (true) {
    const size_t at = at_, lineNumber = lineNumber_;
    if (!nextTokens(tokens)) break;
    if (tokens[0].text == "MATERIAL") continue;  // materials are not carried
    at_ = at;
    lineNumber_ = lineNumber;
    if (!readObject(0)) break;
  }
  // Materials come first and at least one object follows them: a file that
  // ends before any object has been cut.
  if (!damaged_ && objectsSeen_ == 0) fail("the file ends before its first OBJECT");
  if (damaged_) return ac3dDamaged;
  if (lineNotes_ > lineNotesShown)
    note(std::to_string(lineNotes_ - lineNotesShown) + " more lines skipped or noted");
  if (!found_) {
    messages_ << source_ << ": no object with a crease line and vertices; nothing written\n";
    return ac3dNothingToConvert;
  }
  Ac3dObject &object = taken_.object;
  const std::string name = "\"" + ac3dExcerpt(object.objectName) + "\"";
  // The counts are those of the converted object; other objects are not read
  // into the model, so what they would lose does not matter.
  if (taken_.linesDropped > 0)
    note(std::to_string(taken_.linesDropped) + " line surfaces dropped from object " + name);
  if (taken_.polygonsDropped > 0)
    note(std::to_string(taken_.polygonsDropped) + " polygons without 3 or 4 corners dropped from object " +
         name);
  if (taken_.otherSurfacesDropped > 0)
    note(std::to_string(taken_.otherSurfacesDropped) + " surfaces of unknown type dropped from object " +
         name);
  if (objectsSeen_ > 1) note("only object " + name + " is converted");

  // Per-vertex texture coordinates: walking the triangles in order, the last
  // corner that touches a vertex wins.
  object.verticeTextureCoords.assign(size_t(object.vertexCount()) * 2, 0.0f);
  for (size_t c = 0; c < object.triangleIndices.size(); ++c) {
    const size_t v = size_t(object.triangleIndices[c]);
    object.verticeTextureCoords[v * 2] = object.cornerTexCoords[c * 2];
    object.verticeTextureCoords[v * 2 + 1] = object.cornerTexCoords[c * 2 + 1];
  }
  result = object;
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
  // Read in blocks rather than by the size that a seek reports, which a
  // directory or a device does not give truthfully.
  std::string text;
  char block[65536];
  while (file.read(block, sizeof block) || file.gcount() > 0)
    text.append(block, size_t(file.gcount()));
  return parseAc3d(text, sourceName, object, messages);
}

std::string ac3dSourceDump(const Ac3dObject &object) {
  std::ostringstream out;
  out << "static const char *objectName = \"" << cStringBody(object.objectName) << "\";\n";
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
