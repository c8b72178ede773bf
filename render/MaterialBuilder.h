// MaterialBuilder: writes a Material step by step with named stage modes and
// texture names resolved through a TextureStore, so a scene states a look as
// one chain:
//   MaterialBuilder(picture, store).stages(2)
//       .stage(0, stageModulate, "planartexture").scale(0, 4, 4)
//       .cubeMap(1, stageAdd, "cubemap.bill");
// It edits the Material it was given in place and nothing else; each call
// sets exactly the fields it names, so a chain may follow earlier changes
// (the scenes change one pair of materials from group to group). Colours:
// colour(rgb) keeps the alpha, colour(rgb, alpha) sets both. A name that is
// not in the store (or no store at all) gives noTexture, without a word.
// Draws no random numbers.
#pragma once
#include <cstdint>

#include "foundation/Vector3.h"
#include "geometry/Mesh.h"

class TextureStore;

class MaterialBuilder {
 public:
  MaterialBuilder(Material& material, const TextureStore* textures);

  MaterialBuilder& stages(unsigned count);  // stageCount
  // stageMode[s] and stageTexture[s].
  MaterialBuilder& stage(int s, StageMode mode, const char* textureName);
  // stage() plus stageCubeMap[s] true: a reflection-mapped cube map.
  MaterialBuilder& cubeMap(int s, StageMode mode, const char* textureName);
  // stage() plus stageDetail[s] true.
  MaterialBuilder& detail(int s, StageMode mode, const char* textureName);
  MaterialBuilder& mode(int s, StageMode mode);                // stageMode[s] alone
  MaterialBuilder& texture(int s, const char* textureName);    // stageTexture[s] alone
  MaterialBuilder& scale(int s, float u, float v);             // stageScaleU/V[s]
  MaterialBuilder& offset(int s, float u, float v);            // stageOffsetU/V[s]

  MaterialBuilder& ambient(const Vector3& rgb);                // alpha kept
  MaterialBuilder& ambient(const Vector3& rgb, float alpha);
  MaterialBuilder& diffuse(const Vector3& rgb);                // alpha kept
  MaterialBuilder& diffuse(const Vector3& rgb, float alpha);

  // The GL name of a texture of the store, noTexture when unknown.
  uint32_t textureId(const char* textureName) const;

  Material& material;
  const TextureStore* textures;  // not owned; may be null
};
