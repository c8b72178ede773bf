// A3dFile: reading, decoding and encoding of ".a3d" model files.
#include "geometry/A3dFile.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>

// ===========================================================================
// Little-endian helpers
// ===========================================================================
namespace {

// Reads values at a running offset. The caller has checked the total size
// against the header, so the reads never pass the end.
struct ByteReader {
  const std::vector<uint8_t> &bytes;
  size_t offset;

  uint32_t u32() {
    uint32_t v = uint32_t(bytes[offset]) | uint32_t(bytes[offset + 1]) << 8 |
                 uint32_t(bytes[offset + 2]) << 16 | uint32_t(bytes[offset + 3]) << 24;
    offset += 4;
    return v;
  }
  uint16_t u16() {
    uint16_t v = uint16_t(bytes[offset] | bytes[offset + 1] << 8);
    offset += 2;
    return v;
  }
  uint8_t u8() { return bytes[offset++]; }
  float f32() {
    uint32_t bits = u32();
    float v;
    std::memcpy(&v, &bits, 4);
    return v;
  }
};

// Appends values; once one write would pass the limit, it and every later
// write are dropped, so an oversized model is cut at a write boundary.
struct ByteWriter {
  std::vector<uint8_t> bytes;
  size_t limit;
  bool cut = false;

  bool room(size_t n) {
    if (!cut && bytes.size() + n <= limit) return true;
    cut = true;
    return false;
  }
  void u32(uint32_t v) {
    if (!room(4)) return;
    for (int i = 0; i < 4; ++i) bytes.push_back(uint8_t(v >> (8 * i)));
  }
  void u16(uint16_t v) {
    if (!room(2)) return;
    bytes.push_back(uint8_t(v));
    bytes.push_back(uint8_t(v >> 8));
  }
  void u8(uint8_t v) {
    if (!room(1)) return;
    bytes.push_back(v);
  }
  void f32(float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    u32(bits);
  }
};

int positionForm(uint32_t flags) {
  if (flags & a3dPositions16) return a3dBits16;
  if (flags & a3dPositions8) return a3dBits8;
  return a3dFloat;
}

int texCoordForm(uint32_t flags) {
  if (flags & a3dTexCoords16) return a3dBits16;
  if (flags & a3dTexCoords8) return a3dBits8;
  return a3dFloat;
}

uint64_t componentSize(int form) { return form == a3dBits16 ? 2 : form == a3dBits8 ? 1 : 4; }

// value = q / 65535.0 * scale - offset (or / 255.0), in double as written.
float decodeComponent(ByteReader &in, int form, float offset, float scale) {
  if (form == a3dBits16) return float(in.u16() / 65535.0 * scale - offset);
  if (form == a3dBits8) return float(in.u8() / 255.0 * scale - offset);
  return in.f32();
}

// q = (offset + value) / scale * 65535.0 (or 255.0), truncated. A flat axis
// (scale 0) stores 0, and the result is held inside the integer range, so the
// conversion is always defined.
uint32_t quantise(float value, float offset, float scale, double top) {
  if (scale == 0.0f) return 0;
  double q = double((offset + value) / scale) * top;
  if (!(q > 0.0)) return 0;
  if (q > top) return uint32_t(top);
  return uint32_t(q);
}

void writeComponent(ByteWriter &out, int form, float value, float offset, float scale) {
  if (form == a3dBits16)
    out.u16(uint16_t(quantise(value, offset, scale, 65535.0)));
  else if (form == a3dBits8)
    out.u8(uint8_t(quantise(value, offset, scale, 255.0)));
  else
    out.f32(value);
}

}  // namespace

// ===========================================================================
// Reading
// ===========================================================================
int decodeA3d(const std::vector<uint8_t> &bytes, const std::string &name, A3dModel &model) {
  model = A3dModel();
  const uint64_t size = bytes.size();
  if (size == 0) {
    std::cout << "ERROR: size of the file is 0\n";
    return a3dEmpty;
  }
  if (size < 20) {
    std::cout << "ERROR: file " << name << " is damaged: " << size
              << " bytes is shorter than the header\n";
    return a3dDamaged;
  }

  ByteReader in{bytes, 4};  // the magic is not checked
  model.flags = in.u32();
  const uint32_t vertexCount = in.u32();
  const uint32_t faceCount = in.u32();
  model.creaseAngle = in.f32();

  // The original walks the buffer unchecked; here a file shorter than its
  // header promises is refused before anything is read past the end.
  const int pForm = positionForm(model.flags);
  const int tForm = texCoordForm(model.flags);
  const uint64_t indexSize = vertexCount < 65536 ? 2 : 4;
  const uint64_t needed = 20 + (pForm != a3dFloat ? 24 : 0) + (tForm != a3dFloat ? 16 : 0) + 12 +
                          uint64_t(vertexCount) * 3 * componentSize(pForm) +
                          uint64_t(faceCount) * 3 * indexSize +
                          uint64_t(vertexCount) * 2 * componentSize(tForm);
  if (size < needed) {
    std::cout << "ERROR: file " << name << " is damaged: " << size << " bytes, its header asks for "
              << needed << "\n";
    return a3dDamaged;
  }

  float positionOffset[3] = {0, 0, 0}, positionScale[3] = {1, 1, 1};
  float texOffset[2] = {0, 0}, texScale[2] = {1, 1};
  if (pForm != a3dFloat) {
    for (float &v : positionOffset) v = in.f32();
    for (float &v : positionScale) v = in.f32();
  }
  if (tForm != a3dFloat) {
    for (float &v : texOffset) v = in.f32();
    for (float &v : texScale) v = in.f32();
  }
  for (float &v : model.location) v = in.f32();

  model.positions.resize(size_t(vertexCount) * 3);
  for (size_t i = 0; i < model.positions.size(); ++i)
    model.positions[i] = decodeComponent(in, pForm, positionOffset[i % 3], positionScale[i % 3]);
  model.indices.resize(size_t(faceCount) * 3);
  for (int &index : model.indices)
    index = indexSize == 2 ? int(in.u16()) : int(in.u32());  // widened as the loader does
  model.texCoords.resize(size_t(vertexCount) * 2);
  for (size_t i = 0; i < model.texCoords.size(); ++i)
    model.texCoords[i] = decodeComponent(in, tForm, texOffset[i % 2], texScale[i % 2]);
  return a3dOk;
}

int readA3d(const std::string &fileName, A3dModel &model) {
  model = A3dModel();
  std::FILE *file = std::fopen(fileName.c_str(), "rb");
  if (!file) {
    std::cout << "ERROR: file " << fileName << " not found\n";
    return a3dNotFound;
  }
  // Read to the end rather than trusting a seek: a directory or a device
  // opens but has no meaningful size, and reads as empty here.
  std::vector<uint8_t> bytes;
  uint8_t chunk[65536];
  size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.insert(bytes.end(), chunk, chunk + got);
  std::fclose(file);
  return decodeA3d(bytes, fileName, model);
}

// ===========================================================================
// Writing
// ===========================================================================
std::vector<uint8_t> encodeA3d(const A3dModel &model, int positionQuantisation,
                               int texCoordQuantisation, size_t limit, bool exactTexBounds) {
  ByteWriter out{{}, limit};
  const uint32_t vertexCount = model.vertexCount();
  const uint32_t faceCount = model.faceCount();

  out.u8('0');
  out.u8('0');
  out.u8('0');
  out.u8(0);
  uint32_t flags = 0;
  if (positionQuantisation == a3dBits16) flags |= a3dPositions16;
  if (positionQuantisation == a3dBits8) flags |= a3dPositions8;
  if (texCoordQuantisation == a3dBits16) flags |= a3dTexCoords16;
  if (texCoordQuantisation == a3dBits8) flags |= a3dTexCoords8;
  out.u32(flags);
  out.u32(vertexCount);
  out.u32(faceCount);
  out.f32(model.creaseAngle);

  const int pForm = positionForm(flags);
  const int tForm = texCoordForm(flags);
  // Missing texture coordinates count as 0.
  auto texAt = [&model](size_t k) { return k < model.texCoords.size() ? model.texCoords[k] : 0.0f; };

  float positionOffset[3] = {0, 0, 0}, positionScale[3] = {1, 1, 1};
  if (pForm != a3dFloat) {
    float minimum[3] = {1000000.0f, 1000000.0f, 1000000.0f};
    float maximum[3] = {-1000000.0f, -1000000.0f, -1000000.0f};
    for (size_t i = 0; i < size_t(vertexCount) * 3; ++i) {
      const float v = model.positions[i];
      if (v < minimum[i % 3]) minimum[i % 3] = v;
      if (v > maximum[i % 3]) maximum[i % 3] = v;
    }
    for (int a = 0; a < 3; ++a) {
      positionOffset[a] = -minimum[a];
      positionScale[a] = maximum[a] - minimum[a];
    }
    for (float v : positionOffset) out.f32(v);
    for (float v : positionScale) out.f32(v);
  }

  float texOffset[2] = {0, 0}, texScale[2] = {1, 1};
  if (tForm != a3dFloat) {
    float minimum[2] = {1000000.0f, 1000000.0f};
    float maximum[2] = {-1000000.0f, -1000000.0f};
    for (size_t k = 0; k < size_t(vertexCount) * 2; ++k) {
      const float t = texAt(k);
      // Deliberate: the comparison reads the texture value, but the new bound
      // is read from the position array at the same index. Kept so that files
      // match the converter's; exactTexBounds is the corrected form.
      const float bound = exactTexBounds ? t : model.positions[k];
      if (t < minimum[k % 2]) minimum[k % 2] = bound;
      if (t > maximum[k % 2]) maximum[k % 2] = bound;
    }
    for (int a = 0; a < 2; ++a) {
      texOffset[a] = -minimum[a];
      texScale[a] = maximum[a] - minimum[a];
    }
    for (float v : texOffset) out.f32(v);
    for (float v : texScale) out.f32(v);
  }

  for (float v : model.location) out.f32(v);
  for (size_t i = 0; i < size_t(vertexCount) * 3; ++i)
    writeComponent(out, pForm, model.positions[i], positionOffset[i % 3], positionScale[i % 3]);
  for (size_t i = 0; i < size_t(faceCount) * 3; ++i) {
    if (vertexCount < 65536)
      out.u16(uint16_t(model.indices[i]));  // fits: indices are below vertexCount
    else
      out.u32(uint32_t(model.indices[i]));
  }
  for (size_t k = 0; k < size_t(vertexCount) * 2; ++k)
    writeComponent(out, tForm, texAt(k), texOffset[k % 2], texScale[k % 2]);
  return std::move(out.bytes);
}

int writeFileBytes(const std::string &fileName, const std::vector<uint8_t> &bytes) {
  std::ofstream file(fileName, std::ios::binary | std::ios::trunc);
  if (!file) return -1;
  file.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
  return file ? 0 : -1;
}
