// The material builder: every call sets exactly the fields it names, with the
// stage modes by name and texture names through the store.
#include <gtest/gtest.h>

#include "geometry/Mesh.h"
#include "render/MaterialBuilder.h"
#include "texture/TextureStore.h"

TEST(MaterialBuilder, StageModesKeepTheirNumbers) {
  EXPECT_EQ(stageOff, 0);
  EXPECT_EQ(stageModulate, 1);
  EXPECT_EQ(stageAdd, 2);
  EXPECT_EQ(stageModulateTwoPass, 3);
  EXPECT_EQ(stageBlend, 4);
  EXPECT_EQ(meshPassLight, 0);
  EXPECT_EQ(meshPassShadowedLight, 2);
  EXPECT_EQ(meshPassBase, 3);
  EXPECT_EQ(meshPassDepth, 4);
  EXPECT_EQ(pictureMaterial, 0);
  EXPECT_EQ(glowMaterial, 1);
}

TEST(MaterialBuilder, StagesAndTheirFlags) {
  Material m;
  const Material defaults;
  MaterialBuilder(m, nullptr)
      .stages(3)
      .stage(0, stageModulate, "hopmet")
      .detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill")
      .scale(0, 4.0f, 2.0f)
      .offset(1, 0.25f, 0.5f);
  EXPECT_EQ(m.stageCount, 3u);
  EXPECT_EQ(m.stageMode[0], 1);
  EXPECT_EQ(m.stageMode[1], 1);
  EXPECT_EQ(m.stageMode[2], 2);
  EXPECT_FALSE(m.stageDetail[0]);
  EXPECT_TRUE(m.stageDetail[1]);
  EXPECT_FALSE(m.stageCubeMap[1]);
  EXPECT_TRUE(m.stageCubeMap[2]);
  EXPECT_EQ(m.stageScaleU[0], 4.0f);
  EXPECT_EQ(m.stageScaleV[0], 2.0f);
  EXPECT_EQ(m.stageScaleU[1], defaults.stageScaleU[1]);
  EXPECT_EQ(m.stageOffsetU[1], 0.25f);
  EXPECT_EQ(m.stageOffsetV[1], 0.5f);
  EXPECT_EQ(m.stageOffsetU[0], defaults.stageOffsetU[0]);
  // No store: every name is unknown.
  for (int s = 0; s < 3; ++s) EXPECT_EQ(m.stageTexture[s], noTexture);
}

TEST(MaterialBuilder, ModeAndTextureAloneLeaveTheRest) {
  Material m;
  MaterialBuilder b(m, nullptr);
  b.cubeMap(2, stageAdd, "cubemap.bill").mode(2, stageModulate);
  EXPECT_EQ(m.stageMode[2], 1) << "the second assignment stands";
  EXPECT_TRUE(m.stageCubeMap[2]);
  m.stageTexture[0] = 77;
  b.mode(0, stageBlend);
  EXPECT_EQ(m.stageTexture[0], 77u);
  b.texture(0, "nothing");
  EXPECT_EQ(m.stageTexture[0], noTexture);
  EXPECT_EQ(m.stageMode[0], 4);
  EXPECT_EQ(b.textureId("hopmet"), noTexture);
}

TEST(MaterialBuilder, ColoursKeepOrSetTheAlpha) {
  Material m;
  m.ambient.alpha = 0.25f;
  m.diffuse.alpha = 0.75f;
  MaterialBuilder b(m, nullptr);
  b.ambient(Vector3(1, 2, 3)).diffuse(Vector3(4, 5, 6));
  EXPECT_EQ(m.ambient, Vector3(1, 2, 3));
  EXPECT_EQ(m.ambient.alpha, 0.25f);
  EXPECT_EQ(m.diffuse, Vector3(4, 5, 6));
  EXPECT_EQ(m.diffuse.alpha, 0.75f);
  b.ambient(Vector3(0.5f, 0.5f, 0.5f), 0.0f).diffuse(Vector3(1, 1, 1), 1.0f);
  EXPECT_EQ(m.ambient.alpha, 0.0f);
  EXPECT_EQ(m.diffuse.alpha, 1.0f);
}

TEST(MaterialBuilder, NamesResolveThroughTheStore) {
  TextureStore store;  // empty: the look-up reports the unknown name as noTexture
  Material m;
  MaterialBuilder(m, &store).stage(0, stageModulate, "hopmet");
  EXPECT_EQ(m.stageTexture[0], noTexture);
  EXPECT_EQ(m.stageTexture[0], store.findTextureId("hopmet"));
}
