#include "render/MaterialBuilder.h"

#include "texture/TextureStore.h"

MaterialBuilder::MaterialBuilder(Material& material_, const TextureStore* textures_)
    : material(material_), textures(textures_) {}

uint32_t MaterialBuilder::textureId(const char* textureName) const {
  if (!textures) return noTexture;
  return textures->findTextureId(textureName);
}

MaterialBuilder& MaterialBuilder::stages(unsigned count) {
  material.stageCount = count;
  return *this;
}

MaterialBuilder& MaterialBuilder::stage(int s, StageMode mode_, const char* textureName) {
  material.stageMode[s] = mode_;
  material.stageTexture[s] = textureId(textureName);
  return *this;
}

MaterialBuilder& MaterialBuilder::cubeMap(int s, StageMode mode_, const char* textureName) {
  stage(s, mode_, textureName);
  material.stageCubeMap[s] = true;
  return *this;
}

MaterialBuilder& MaterialBuilder::detail(int s, StageMode mode_, const char* textureName) {
  stage(s, mode_, textureName);
  material.stageDetail[s] = true;
  return *this;
}

MaterialBuilder& MaterialBuilder::mode(int s, StageMode mode_) {
  material.stageMode[s] = mode_;
  return *this;
}

MaterialBuilder& MaterialBuilder::texture(int s, const char* textureName) {
  material.stageTexture[s] = textureId(textureName);
  return *this;
}

MaterialBuilder& MaterialBuilder::scale(int s, float u, float v) {
  material.stageScaleU[s] = u;
  material.stageScaleV[s] = v;
  return *this;
}

MaterialBuilder& MaterialBuilder::offset(int s, float u, float v) {
  material.stageOffsetU[s] = u;
  material.stageOffsetV[s] = v;
  return *this;
}

MaterialBuilder& MaterialBuilder::ambient(const Vector3& rgb) {
  material.ambient = rgb;
  return *this;
}

MaterialBuilder& MaterialBuilder::ambient(const Vector3& rgb, float alpha) {
  material.ambient = rgb;
  material.ambient.alpha = alpha;
  return *this;
}

MaterialBuilder& MaterialBuilder::diffuse(const Vector3& rgb) {
  material.diffuse = rgb;
  return *this;
}

MaterialBuilder& MaterialBuilder::diffuse(const Vector3& rgb, float alpha) {
  material.diffuse = rgb;
  material.diffuse.alpha = alpha;
  return *this;
}
