#include "texture/TextureStore.h"

#include <GL/glu.h>

#include <cstdio>
#include <cstring>
#include <iostream>

#include "foundation/Vector3.h"
#include "texture/PngFile.h"

namespace {

// The colour parameters as the PNG reader takes them: three floats or null.
struct ColourArguments {
  float scale[3] = {1.0f, 1.0f, 1.0f};
  float offset[3] = {0.0f, 0.0f, 0.0f};
  const float* scaleOrNull = nullptr;
  const float* offsetOrNull = nullptr;

  ColourArguments(const Vector3* colourScale, const Vector3* colourOffset) {
    if (colourScale) {
      for (int i = 0; i < 3; ++i) scale[i] = (*colourScale)[i];
      scaleOrNull = scale;
    }
    if (colourOffset) {
      for (int i = 0; i < 3; ++i) offset[i] = (*colourOffset)[i];
      offsetOrNull = offset;
    }
  }
};

// Old-style component count used as the internal format of loaded images.
constexpr GLint loadedInternalFormat = 4;

// The unpack state for the store's images (RGBA, rows packed, read from
// client memory), set for one upload and restored after it. Whatever a pass
// or a caller left set (a row length, skipped rows, a bound unpack buffer)
// would otherwise make GL, and GLU's own reading of the same state, take the
// pixels with another stride, or from another place, and run past them.
class PackedUnpackState {
 public:
  PackedUnpackState() {
    for (size_t i = 0; i < stateCount; ++i) glGetIntegerv(names[i], &saved[i]);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);  // the GL default; packed RGBA rows are multiples of 4
    for (size_t i = 1; i < stateCount; ++i) glPixelStorei(names[i], 0);
    if (hasUnpackBuffers()) {
      glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &savedBuffer);
      if (savedBuffer != 0) glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    }
  }
  ~PackedUnpackState() {
    for (size_t i = 0; i < stateCount; ++i) glPixelStorei(names[i], saved[i]);
    if (savedBuffer != 0) glBindBuffer(GL_PIXEL_UNPACK_BUFFER, GLuint(savedBuffer));
  }
  PackedUnpackState(const PackedUnpackState&) = delete;
  PackedUnpackState& operator=(const PackedUnpackState&) = delete;

 private:
  static bool hasUnpackBuffers() {
    return (GLEW_VERSION_2_1 || GLEW_ARB_pixel_buffer_object) && glBindBuffer != nullptr;
  }

  static constexpr size_t stateCount = 8;
  // The alignment first: every other entry is set to 0 for the upload.
  static constexpr GLenum names[stateCount] = {
      GL_UNPACK_ALIGNMENT,  GL_UNPACK_ROW_LENGTH,   GL_UNPACK_SKIP_ROWS,   GL_UNPACK_SKIP_PIXELS,
      GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST,    GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_IMAGES};
  GLint saved[stateCount] = {4, 0, 0, 0, 0, 0, 0, 0};
  GLint savedBuffer = 0;
};

}  // namespace

// ---------------------------------------------------------------------------
// Mipmap chains through GLU
// ---------------------------------------------------------------------------
// gluBuild2DMipmaps first scales an image whose sides are not powers of two
// (or that is larger than GL takes) to powers of two near them (6 becomes
// 8, 5 becomes 4). Its scaling filter reads, at weight 0, the row below the
// last row and the pixel after the last pixel of a row, so it reads up to
// one row and one pixel past the end of the image. Mostly that lands in
// other memory of the process and changes nothing; when the image happens
// to end at the end of mapped memory it is a crash (an 8x6 image does it,
// as do 1x3, 2x5 and about one size in six). GLU is therefore given a copy
// with that much zeroed slack behind it; the slack carries weight 0, so the
// levels are what they would be without it.

int buildMipmapChain(const uint8_t* pixels, int32_t width, int32_t height) {
  if (width <= 0 || height <= 0) return GLU_INVALID_VALUE;
  const size_t rowBytes = size_t(width) * 4;
  const size_t imageBytes = rowBytes * size_t(height);
  std::vector<uint8_t> withSlack(imageBytes + rowBytes + 4, 0);
  std::memcpy(withSlack.data(), pixels, imageBytes);
  const PackedUnpackState unpack;
  return gluBuild2DMipmaps(GL_TEXTURE_2D, GL_RGBA, width, height, GL_RGBA, GL_UNSIGNED_BYTE,
                           withSlack.data());
}

// ---------------------------------------------------------------------------
// Records and look-ups
// ---------------------------------------------------------------------------

TextureStore::~TextureStore() {
  for (const TextureRecord& record : textureRecords) {
    GLuint id = record.id;
    glDeleteTextures(1, &id);
  }
  textureRecords.clear();
}

TextureRecord& TextureStore::appendRecord(const std::string& filePath, const std::string& name,
                                          int32_t width, int32_t height, int32_t depth) {
  TextureRecord record;
  record.filePath = filePath;
  record.name = name;
  record.width = width;
  record.height = height;
  record.depth = depth;
  GLuint id = 0;
  glGenTextures(1, &id);
  record.id = id;
  textureRecords.push_back(record);
  return textureRecords.back();
}

const TextureRecord* TextureStore::find(const std::string& name) const {
  for (const TextureRecord& record : textureRecords)
    if (record.name == name) return &record;
  return nullptr;
}

uint32_t TextureStore::findTextureId(const std::string& name) const {
  const TextureRecord* record = find(name);
  return record ? record->id : noTexture;
}

TextureRecord& TextureStore::findTextureRecord(const std::string& name) {
  if (const TextureRecord* record = find(name)) return const_cast<TextureRecord&>(*record);
  scratchRecord = TextureRecord();
  scratchRecord.name = name;
  scratchRecord.id = noTexture;
  return scratchRecord;
}

void TextureStore::applySamplerState(const std::string& name) {
  const TextureRecord* record = find(name);
  if (!record) return;
  glBindTexture(GL_TEXTURE_2D, record->id);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, record->wrapS);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, record->wrapT);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, record->minFilter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, record->magFilter);
}

std::string TextureStore::textureErrorText(int code) {
  switch (code) {
    case 1: return "File open failed.";
    case 2: return "Texture at given name already exists.";
    case 3: return "Not enough memory to read or store the image.";
    case 4: return "Image width or height are not integer power of two.";
    case 5: return "Image format not supported.";
    case 6: return "General error while reading the image.";
    default: return std::string();
  }
}

bool TextureStore::textureFileExists(const std::string& directory, const std::string& stem) {
  const std::string path = directory + stem + ".png";
  FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  std::fclose(file);
  return true;
}

// ---------------------------------------------------------------------------
// Loading from files
// ---------------------------------------------------------------------------

int TextureStore::loadTexture(const std::string& path, const std::string& name,
                              const Vector3* colourScale, const Vector3* colourOffset,
                              bool isCubeMap, const std::vector<std::string>* cubeFaceFiles,
                              float saturation, int mipLevel, bool buildMipmaps) {
  static const std::vector<std::string> noFiles;
  return loadTexture(path, name, colourScale, colourOffset, isCubeMap,
                     cubeFaceFiles ? *cubeFaceFiles : noFiles, saturation, mipLevel, buildMipmaps);
}

int TextureStore::loadTexture(const std::string& path, const std::string& name,
                              const Vector3* colourScale, const Vector3* colourOffset,
                              bool isCubeMap, const std::vector<std::string>& cubeFaceFiles,
                              float saturation, int mipLevel, bool buildMipmaps) {
  const ColourArguments colour(colourScale, colourOffset);
  std::vector<uint8_t> pixels;
  int32_t width = 0, height = 0;

  if (isCubeMap) {
    // Face i goes to POSITIVE_X + i; mipLevel and buildMipmaps play no part.
    // A failing face returns at once and leaves the faces before it in place.
    GLuint id = 0;
    for (size_t i = 0; i < cubeFaceFiles.size(); ++i) {
      const int code = readPngImage(cubeFaceFiles[i], pixels, width, height, colour.scaleOrNull,
                                    colour.offsetOrNull, saturation);
      if (code != 0) return code;
      if (i == 0) id = appendRecord(path, name, width, height, 0).id;
      glBindTexture(GL_TEXTURE_CUBE_MAP, id);
      const PackedUnpackState unpack;
      glTexImage2D(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + i), 0, loadedInternalFormat, width,
                   height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    }
    return 0;
  }

  const int code = readPngImage(path, pixels, width, height, colour.scaleOrNull,
                                colour.offsetOrNull, saturation);
  if (code != 0) return code;

  if (mipLevel == 0) {
    const GLuint id = appendRecord(path, name, width, height, 0).id;
    glBindTexture(GL_TEXTURE_2D, id);
  } else {
    // A further level of the texture made by the preceding level-0 call: it
    // lands in whatever is bound to GL_TEXTURE_2D, and no record is made.
    std::cout << "mipmap level " << mipLevel << " imageSize: " << width << "," << height
              << " texture id: " << findTextureId(name) << "\n\n\n";
  }

  if (buildMipmaps) {
    buildMipmapChain(pixels.data(), width, height);
  } else {
    const PackedUnpackState unpack;
    glTexImage2D(GL_TEXTURE_2D, mipLevel, loadedInternalFormat, width, height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, pixels.data());
  }
  return 0;
}

int TextureStore::loadVolumeTexture(const std::string& directory, const std::string& stem,
                                    const std::string& name, int32_t depth,
                                    const Vector3* colourScale, const Vector3* colourOffset,
                                    float saturation) {
  // A volume of no slices has no size to take; nothing is made.
  if (depth <= 0) return 6;
  const ColourArguments colour(colourScale, colourOffset);
  const std::string base = directory + stem;

  std::vector<uint8_t> volume;
  int32_t width = 0, height = 0;
  for (int32_t i = 0; i < depth; ++i) {
    const std::string slicePath = base + "." + std::to_string(i) + ".png";
    std::vector<uint8_t> slice;
    int32_t sliceWidth = 0, sliceHeight = 0;
    const int code = readPngImage(slicePath, slice, sliceWidth, sliceHeight, colour.scaleOrNull,
                                  colour.offsetOrNull, saturation);
    if (code != 0) return code;
    if (i == 0) {
      width = sliceWidth;
      height = sliceHeight;
      volume.assign(size_t(width) * height * depth * 4, 0);
    } else if (sliceWidth != width || sliceHeight != height) {
      // Every slice must have the first one's size to fit its place.
      return 5;
    }
    std::memcpy(&volume[size_t(i) * width * height * 4], slice.data(), slice.size());
  }

  const GLuint id = appendRecord(stem, name, width, height, depth).id;
  glBindTexture(GL_TEXTURE_3D, id);
  const PackedUnpackState unpack;
  glTexImage3D(GL_TEXTURE_3D, 0, loadedInternalFormat, width, height, depth, 0, GL_RGBA,
               GL_UNSIGNED_BYTE, volume.data());
  return 0;
}

// ---------------------------------------------------------------------------
// Textures from memory
// ---------------------------------------------------------------------------

int TextureStore::createTextureFromMemory(const uint8_t* pixels, const std::string& name,
                                          int32_t width, int32_t height, int32_t internalFormat) {
  const GLuint id = appendRecord(std::string(), name, width, height, 0).id;
  glBindTexture(GL_TEXTURE_2D, id);
  const PackedUnpackState unpack;
  glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
               pixels);
  return 0;
}

int TextureStore::createVolumeTextureFromMemory(const uint8_t* pixels, const std::string& name,
                                                int32_t width, int32_t height, int32_t depth,
                                                int32_t internalFormat) {
  const GLuint id = appendRecord(std::string(), name, width, height, depth).id;
  glBindTexture(GL_TEXTURE_3D, id);
  const PackedUnpackState unpack;
  glTexImage3D(GL_TEXTURE_3D, 0, internalFormat, width, height, depth, 0, GL_RGBA,
               GL_UNSIGNED_BYTE, pixels);
  return 0;
}

int TextureStore::updateTexture(const uint8_t* pixels, const std::string& name) {
  const TextureRecord* record = find(name);
  if (!record) return 2;
  glBindTexture(GL_TEXTURE_2D, record->id);
  const PackedUnpackState unpack;
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, record->width, record->height, GL_RGBA,
                  GL_UNSIGNED_BYTE, pixels);
  return 0;
}

// ---------------------------------------------------------------------------
// Read-back and saving
// ---------------------------------------------------------------------------

int TextureStore::readBackTexture(const std::string& name, uint8_t* pixels) {
  const TextureRecord* record = find(name);
  if (!record) return 2;
  const GLenum target = record->depth == 0 ? GL_TEXTURE_2D : GL_TEXTURE_3D;
  glBindTexture(target, record->id);
  glGetTexImage(target, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  return 0;
}

int TextureStore::saveTexture(const std::string& directory, const std::string& stem,
                              const std::string& name) {
  const TextureRecord* record = find(name);
  // Code 2 for a name that is NOT in the store: its text reads the other way
  // round, and the code stays as it is.
  if (!record) return 2;

  const int32_t sliceCount = record->depth != 0 ? record->depth : 1;
  const size_t sliceBytes = size_t(record->width) * record->height * 4;
  std::vector<uint8_t> pixels(sliceBytes * sliceCount, 0);
  readBackTexture(name, pixels.data());

  for (int32_t i = 0; i < sliceCount; ++i) {
    std::string fileName = directory + stem;
    if (record->depth != 0) fileName += "." + std::to_string(i);
    fileName += ".png";
    std::cout << "Generated and saved image " << fileName << "\n";
    const int code = writePngImage(fileName, pixels.data() + sliceBytes * i, record->width,
                                   record->height);
    if (code != 0) return code;
  }
  return 0;
}
