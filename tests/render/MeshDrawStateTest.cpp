// Mesh::draw, more of its rules: the material state it sets, which buffers
// a material slot draws from, strips, and the shadow map's drawing state.
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

namespace {

using wt::ScopedFlag;

void fillSquare(Mesh& mesh) {
  wt::addSquareFaces(mesh);
  mesh.computeFaceNormals();
  mesh.computeVertexNormals(true);
  mesh.normalizeFaceNormals();
}

void flatStage() {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  glEnable(GL_BLEND);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

int centreRed() { return rtt::pixel(wt::windowW / 2, wt::windowH / 2)[0]; }

TEST(MeshDrawState, SetupSetsTheMaterialWithoutAmbient) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  Material material;
  material.specular.set(0.25f, 0.5f, 0.75f);
  mesh.setMaterial(material);
  mesh.materials[0].shininess = 20;  // set by hand: setMaterial never copies it
  fillSquare(mesh);
  mesh.updateArrays();
  flatStage();
  const float ambient[4] = {0.5f, 0.5f, 0.5f, 1};
  glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
  mesh.draw(3, true, 0, false);
  float value[4];
  glGetMaterialfv(GL_FRONT, GL_AMBIENT, value);
  EXPECT_EQ(value[0], 0.0f);
  EXPECT_EQ(value[3], 1.0f);
  glGetMaterialfv(GL_FRONT, GL_SPECULAR, value);
  EXPECT_FLOAT_EQ(value[1], 0.5f);
  glGetMaterialfv(GL_BACK, GL_SHININESS, value);
  EXPECT_EQ(value[0], 20.0f);
  float colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_EQ(colour[0], 1.0f);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDrawState, MaterialSlotsAboveOneDrawFromTheSlotOneBuffers) {
  REQUIRE_WORLD_GL();
  ScopedFlag buffers(useVertexBuffers, true);
  Mesh mesh;
  Material zero, one, two;
  zero.diffuse.set(0.2f, 0.2f, 0.2f);
  one.diffuse.set(0.6f, 0.6f, 0.6f);
  two.diffuse.set(0.9f, 0.9f, 0.9f);
  mesh.setMaterial(zero);
  mesh.currentMaterial = 1;
  mesh.setMaterial(one);
  mesh.currentMaterial = 2;
  mesh.setMaterial(two);
  mesh.currentMaterial = 0;
  fillSquare(mesh);
  mesh.updateArrays();
  ASSERT_TRUE(mesh.buffersCreated);
  flatStage();
  mesh.draw(0, true, 0, false);
  const int red0 = centreRed();
  mesh.currentMaterial = 1;
  flatStage();
  mesh.draw(0, true, 0, false);
  const int red1 = centreRed();
  mesh.currentMaterial = 2;
  flatStage();
  mesh.draw(0, true, 0, false);
  const int red2 = centreRed();
  EXPECT_NEAR(red0, 51, 2);
  EXPECT_NEAR(red1, 153, 2);
  EXPECT_EQ(red2, red1) << "only slots 0 and 1 have buffers; slot 2 draws with slot 1's";

  ScopedFlag clientArrays(useVertexBuffers, false);
  flatStage();
  mesh.draw(0, true, 0, false);
  EXPECT_NEAR(centreRed(), 230, 2) << "client arrays have all four slots";
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDrawState, StripsAreDrawnByDisplayListsOnly) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.setMaterial(Material());
  fillSquare(mesh);
  // One strip over the four corners, 1-based, zero-terminated: a, b, d, c.
  mesh.stripIndices = new int[5]{1, 2, 4, 3, 0};
  mesh.stripMode = true;
  {
    ScopedFlag buffers(useVertexBuffers, true);
    mesh.updateArrays();
    flatStage();
    mesh.draw(0, true, 0, false);
    EXPECT_EQ(centreRed(), 0) << "buffers do not draw strips";
  }
  ScopedFlag lists(useDisplayLists, true);
  mesh.colourAList = glGenLists(1);
  mesh.colourAListBuilt = false;
  flatStage();
  mesh.draw(0, true, 0, false);  // compiles
  mesh.draw(0, true, 0, false);  // draws
  EXPECT_NEAR(centreRed(), 128 + 0, 2) << "the strip covers the square (diffuse 0.5)";
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDrawState, ShadowMapBeginSetsTheDrawingStateOfTheMap) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->shadowMapSize = 64;
  mesh.light()->polygonOffset = true;
  glShadeModel(GL_SMOOTH);
  shadowMapBegin(mesh);
  EXPECT_EQ(rtt::getInt(GL_SHADE_MODEL), GL_FLAT);
  EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
  float factor = 0;
  glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &factor);
  EXPECT_EQ(factor, 1.0f);
  GLboolean colourMask[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, colourMask);
  EXPECT_FALSE(colourMask[0]);
  EXPECT_EQ(rtt::getInt(GL_DEPTH_FUNC), GL_LEQUAL);
  float projection[16];
  glGetFloatv(GL_PROJECTION_MATRIX, projection);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(projection[i], mesh.light()->projectionMatrix[i]);
  shadowMapEnd(mesh);
  glGetBooleanv(GL_COLOR_WRITEMASK, colourMask);
  EXPECT_TRUE(colourMask[0]);

  mesh.light()->polygonOffset = false;
  shadowMapBegin(mesh);
  EXPECT_FALSE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
  shadowMapEnd(mesh);
  testgl::drainErrors();
}

}  // namespace
