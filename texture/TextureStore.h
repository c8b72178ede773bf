// TextureStore: every named image texture of the system, with PNG reading and writing.
//
// A list of TextureRecords in order of creation, looked up by exact name (the
// first match wins; names are never checked for duplicates). Sizes are pixels;
// images are RGBA 8 bits a channel, the file's first row being texture row 0
// (never flipped). Operations return error codes: 0 success, else 1 to 6 as
// textureErrorText tells. Every upload takes its pixels from client memory
// as packed rows, setting the unpack state for the call and restoring it
// after. Everything runs on the thread of the GL context the textures
// belong to; the store has no locks.
#pragma once
#include <GL/glew.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

class Vector3;

// What findTextureId gives for a name that is not in the store. It is bound
// like any texture name by callers that do not check, leaving that stage
// without a usable image.
constexpr uint32_t noTexture = 10001000;

struct TextureRecord {
  std::string filePath;          // the file read; empty for a texture made from memory
  std::string name;              // look-up key, compared exactly
  int32_t width = 0;             // pixels
  int32_t height = 0;            // pixels
  int32_t depth = 0;             // slices of a volume texture; 0 for 2D and cube maps
  uint32_t id = 0;               // GL texture name
  // Sampler wishes, not GL state: they reach GL only through applySamplerState.
  int32_t wrapS = GL_REPEAT;
  int32_t wrapT = GL_REPEAT;
  int32_t minFilter = GL_LINEAR;
  int32_t magFilter = GL_LINEAR;
};

// The whole mip chain of a packed RGBA image (width x height x 4 bytes, of
// which nothing beyond is read) into the texture bound to GL_TEXTURE_2D,
// through gluBuild2DMipmaps with GL_RGBA as internal format. The unpack state
// is set for packed rows for the call and restored after it. Returns GLU's
// code, 0 on success.
int buildMipmapChain(const uint8_t* pixels, int32_t width, int32_t height);

class TextureStore {
 public:
  TextureStore() = default;
  // Deletes every record's GL texture, one at a time in list order, then
  // clears the list. Needs the store's GL context to be current.
  ~TextureStore();
  TextureStore(const TextureStore&) = delete;
  TextureStore& operator=(const TextureStore&) = delete;

  // Reads a PNG and makes a texture of it. This is the one entry that all
  // production code uses.
  //   colourScale   null = (1, 1, 1); per-channel factors for red, green, blue
  //   colourOffset  null = 0; only its first component is used, for all three
  //                 channels, in units of full scale (1 adds 255)
  //   isCubeMap     false: a 2D texture from `path`. true: `path` only fills
  //                 filePath; the faces come from cubeFaceFiles in the order
  //                 +X, -X, +Y, -Y, +Z, -Z (the count is not checked).
  //   saturation    1 leaves colours alone, 0 gives grey
  //   mipLevel      0 makes a record and binds the new texture to
  //                 GL_TEXTURE_2D. Above 0 no record is made: the level goes
  //                 into the texture bound to GL_TEXTURE_2D, and a line naming
  //                 level, size and the GL name found under `name` is printed.
  //   buildMipmaps  the whole chain through gluBuild2DMipmaps instead of one
  //                 glTexImage2D level
  // No sampler state is sent; callers wanting mip levels either pass
  // buildMipmaps or call glGenerateMipmapEXT while the texture is still bound.
  // cubeFaceFiles may be given as a list ({"a.png", ...}), as {} or as a
  // pointer (null for none); both forms do the same.
  int loadTexture(const std::string& path, const std::string& name,
                  const Vector3* colourScale = nullptr, const Vector3* colourOffset = nullptr,
                  bool isCubeMap = false, const std::vector<std::string>* cubeFaceFiles = nullptr,
                  float saturation = 1.0f, int mipLevel = 0, bool buildMipmaps = false);
  int loadTexture(const std::string& path, const std::string& name, const Vector3* colourScale,
                  const Vector3* colourOffset, bool isCubeMap,
                  const std::vector<std::string>& cubeFaceFiles, float saturation = 1.0f,
                  int mipLevel = 0, bool buildMipmaps = false);

  // The record's GL name, or noTexture. First match from the start of the list.
  uint32_t findTextureId(const std::string& name) const;

  // The record itself, for changing its sampler wishes or reading its size.
  // Callers check the name with findTextureId first; for an unknown name this
  // gives a scratch record (id noTexture) that belongs to no texture.
  TextureRecord& findTextureRecord(const std::string& name);

  // Binds the texture to GL_TEXTURE_2D and sends, in this order, WRAP_S, WRAP_T,
  // MIN_FILTER and MAG_FILTER from the record. An unknown name does nothing.
  void applySamplerState(const std::string& name);

  // A 2D texture from caller-owned RGBA pixels: glTexImage2D level 0 with the
  // given internal format. The texture stays bound to GL_TEXTURE_2D. Returns 0.
  int createTextureFromMemory(const uint8_t* pixels, const std::string& name, int32_t width,
                              int32_t height, int32_t internalFormat);

  // Replaces the whole of level 0 of a 2D texture with RGBA pixels of the
  // record's size (glTexSubImage2D). Returns 0; an unknown name does nothing
  // and returns 2.
  int updateTexture(const uint8_t* pixels, const std::string& name);

  // The text of an error code; empty for 0 and unknown codes.
  static std::string textureErrorText(int code);

  // Whether "<directory><stem>.png" opens for reading. directory ends with its separator.
  static bool textureFileExists(const std::string& directory, const std::string& stem);

  // ---- volumes, read-back and saving -------------------------------------

  // A volume texture from caller-owned RGBA pixels (width x height x depth,
  // slice after slice): glTexImage3D level 0. Stays bound to GL_TEXTURE_3D. Returns 0.
  int createVolumeTextureFromMemory(const uint8_t* pixels, const std::string& name, int32_t width,
                                    int32_t height, int32_t depth, int32_t internalFormat);

  // Reads `depth` slices "<directory><stem>.<i>.png", i from 0, into one volume
  // texture, with the colour parameters of loadTexture. Any failing slice
  // returns its code and makes nothing. Slices must all have the first
  // one's size (else 5). filePath of the record is `stem`.
  int loadVolumeTexture(const std::string& directory, const std::string& stem,
                        const std::string& name, int32_t depth,
                        const Vector3* colourScale = nullptr,
                        const Vector3* colourOffset = nullptr, float saturation = 1.0f);

  // Copies level 0 into caller memory (width x height x max(depth, 1) x 4
  // bytes), binding it to GL_TEXTURE_2D, or GL_TEXTURE_3D for a volume.
  // Returns 0; an unknown name does nothing and returns 2.
  int readBackTexture(const std::string& name, uint8_t* pixels);

  // Writes the texture out as PNG: "<directory><stem>.png" for a 2D texture,
  // "<directory><stem>.<i>.png" for slice i of a volume, printing
  // "Generated and saved image <file>" for each. An unknown name returns 2
  // (whose text says the opposite; the code is kept as it is). 1 when a file
  // does not open, 6 on a libpng failure; files already written stay.
  int saveTexture(const std::string& directory, const std::string& stem, const std::string& name);

  // The records in order of creation.
  const std::list<TextureRecord>& records() const { return textureRecords; }

 private:
  TextureRecord& appendRecord(const std::string& filePath, const std::string& name,
                              int32_t width, int32_t height, int32_t depth);
  const TextureRecord* find(const std::string& name) const;

  std::list<TextureRecord> textureRecords;
  TextureRecord scratchRecord;  // what findTextureRecord gives for an unknown name
};
