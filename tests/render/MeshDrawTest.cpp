// Mesh::draw: the early returns, material and texture stages per pass, the
// three submission paths, batches, two-pass stages, shells, refraction and
// the light-following texture matrix.
#include <gtest/gtest.h>

#include <cmath>

#include "WorldTestHelpers.h"
#include "render/MeshDraw.h"

namespace {

using wt::ScopedFlag;

// A square from -0.5 to 0.5 in x and y at z = 0, facing +z, in two triangles.
void fillSquare(Mesh& mesh) {
  wt::addSquareFaces(mesh);
  mesh.normalsDirty = true;
}

// What World render does to a visible mesh when preparing.
void prepare(Mesh& mesh) {
  mesh.computeFaceNormals();
  mesh.computeVertexNormals(true);
  mesh.normalizeFaceNormals();
  mesh.normalsDirty = false;
  mesh.anyArrayDirty = true;
  mesh.positionsDirty = true;
  mesh.updateArrays();
}

// Identity matrices (the square covers the middle of the window), lighting,
// culling and depth off, blending on over a black picture.
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

Material greyMaterial(float diffuse) {
  Material m;
  m.diffuse.set(diffuse, diffuse, diffuse);
  return m;
}

struct SquareMesh {
  Mesh mesh;
  explicit SquareMesh(const Material& material) {
    mesh.setMaterial(material);
    fillSquare(mesh);
    prepare(mesh);
  }
};

int centreRed() { return rtt::pixel(wt::windowW / 2, wt::windowH / 2)[0]; }

TEST(MeshDraw, MeshWithoutFacesReturnsAtOnce) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  glColor4f(0.25f, 0.5f, 0.75f, 1.0f);
  mesh.draw(3, true, 0, false);
  float colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(colour[0], 0.25f) << "no state was set";
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDraw, HiddenMeshOutsideABatchReturnsAtOnce) {
  REQUIRE_WORLD_GL();
  SquareMesh s(greyMaterial(0.8f));
  s.mesh.visible = false;
  flatStage();
  glColor4f(0.25f, 0.5f, 0.75f, 1.0f);
  s.mesh.draw(0, true, 0, false);
  float colour[4];
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(colour[0], 0.25f);
  EXPECT_EQ(centreRed(), 0);
}

TEST(MeshDraw, DrawsTheColourArrayOfItsPass) {
  REQUIRE_WORLD_GL();
  Material material = greyMaterial(0.4f);
  material.ambient.set(0.2f, 0.2f, 0.2f);
  SquareMesh s(material);
  flatStage();
  glBlendFunc(GL_ONE, GL_ZERO);
  s.mesh.draw(0, true, 0, false);
  // Pass 0 blends (SRC_ALPHA, ONE) onto black: array A = diffuse + ambient.
  EXPECT_NEAR(centreRed(), 153, 2);
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE);
  flatStage();
  s.mesh.draw(3, true, 0, false);
  // Pass 3: array B = ambient, blend (SRC_ALPHA, ONE_MINUS_SRC_ALPHA).
  EXPECT_NEAR(centreRed(), 51, 2);
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDraw, AllThreeSubmissionPathsGiveTheSamePicture) {
  REQUIRE_WORLD_GL();
  int results[3];
  for (int path = 0; path < 3; ++path) {
    ScopedFlag lists(useDisplayLists, path == 2);
    ScopedFlag buffers(useVertexBuffers, path == 1);
    SquareMesh s(greyMaterial(0.6f));
    if (path == 2) {
      GLuint base = glGenLists(3);
      s.mesh.colourAList = base;
      s.mesh.colourBList = base + 1;
      s.mesh.depthList = base + 2;
      s.mesh.colourAListBuilt = s.mesh.colourBListBuilt = s.mesh.depthListBuilt = false;
      flatStage();
      s.mesh.draw(0, true, 0, false);
      EXPECT_EQ(centreRed(), 0) << "a list compiled by a call is not drawn by it";
      EXPECT_TRUE(s.mesh.colourAListBuilt);
    }
    flatStage();
    s.mesh.draw(0, true, 0, false);
    results[path] = centreRed();
    EXPECT_TRUE(testgl::drainErrors().empty()) << "path " << path;
  }
  EXPECT_NEAR(results[0], 153, 2);
  EXPECT_EQ(results[1], results[0]);
  EXPECT_EQ(results[2], results[0]);
}

TEST(MeshDraw, BuffersAreUsedWhenTheFlagIsOn) {
  REQUIRE_WORLD_GL();
  SquareMesh s(greyMaterial(0.6f));
  ASSERT_TRUE(s.mesh.buffersCreated);
  s.mesh.restoreState = false;
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), GLint(s.mesh.indexBuffer));
  EXPECT_EQ(rtt::getInt(GL_ARRAY_BUFFER_BINDING_ARB), GLint(s.mesh.vertexBuffer));
  EXPECT_TRUE(glIsEnabled(GL_COLOR_ARRAY));
  s.mesh.restoreState = true;
  s.mesh.setupState = false;
  s.mesh.draw(0, true, 0, false);
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), 0);
  EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
}

TEST(MeshDraw, DepthPassSubmitsPositionsOnly) {
  REQUIRE_WORLD_GL();
  SquareMesh s(greyMaterial(0.6f));
  s.mesh.restoreState = false;
  flatStage();
  glColor4f(0.5f, 0.5f, 0.5f, 1.0f);
  s.mesh.draw(4, true, 0, false);
  EXPECT_TRUE(glIsEnabled(GL_VERTEX_ARRAY));
  EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
  EXPECT_FALSE(glIsEnabled(GL_NORMAL_ARRAY));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D)) << "2D stays enabled in pass 4";
  EXPECT_FALSE(glIsEnabled(GL_NORMALIZE));
  glDisableClientState(GL_VERTEX_ARRAY);
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
  glDisable(GL_TEXTURE_2D);
}

TEST(MeshDraw, HiddenBatchFirstSetsUpTheStateButDrawsNothing) {
  REQUIRE_WORLD_GL();
  Material material = greyMaterial(0.6f);
  SquareMesh first(material), middle(material), last(material);
  first.mesh.batchFirst = true;
  first.mesh.restoreState = false;
  first.mesh.visible = false;
  first.mesh.position = Vector3(-0.5f, 0, 0);
  middle.mesh.setupState = middle.mesh.restoreState = false;
  middle.mesh.position = Vector3(0.5f, 0, 0);
  last.mesh.setupState = false;
  last.mesh.batchLast = true;
  last.mesh.visible = false;

  flatStage();
  first.mesh.draw(0, true, 0, false);
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), GLint(first.mesh.indexBuffer));
  EXPECT_TRUE(glIsEnabled(GL_VERTEX_ARRAY));
  const int leftX = wt::windowW / 4, rightX = wt::windowW * 3 / 4;
  EXPECT_EQ(rtt::pixel(leftX, wt::windowH / 2)[0], 0) << "the hidden first mesh draws nothing";
  middle.mesh.draw(0, true, 0, false);
  EXPECT_NEAR(rtt::pixel(rightX, wt::windowH / 2)[0], 153, 2) << "the middle mesh draws by the first's state";
  EXPECT_TRUE(glIsEnabled(GL_VERTEX_ARRAY));
  last.mesh.draw(0, true, 0, false);
  EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY)) << "a hidden batchLast still restores";
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDraw, BatchMemberDrawnAloneDrawsNothing) {
  REQUIRE_WORLD_GL();
  SquareMesh s(greyMaterial(0.6f));
  s.mesh.setupState = s.mesh.restoreState = false;
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_EQ(centreRed(), 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

// A uniform grey texture with its mipmaps (the stages filter by mipmap).
GLuint greyTexture(uint8_t v) {
  const GLuint texture = wt::makeSpriteTexture(4, v, v, v, false);
  std::vector<uint8_t> level1(2 * 2 * 4, v), level2(4, v);
  level1[3] = level1[7] = level1[11] = level1[15] = 255;
  level2[3] = 255;
  glTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, level1.data());
  glTexImage2D(GL_TEXTURE_2D, 2, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, level2.data());
  return texture;
}

Material stagedMaterial(int stages, GLuint texture) {
  Material m = greyMaterial(0.4f);
  m.stageCount = stages;
  for (int s = 0; s < stages; ++s) {
    m.stageMode[s] = 1;
    m.stageTexture[s] = texture;
  }
  return m;
}

bool unitHas2D(int unit) {
  glActiveTextureARB(GL_TEXTURE0_ARB + unit);
  const bool on = glIsEnabled(GL_TEXTURE_2D);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  return on;
}

GLint unitTexture(int unit) {
  glActiveTextureARB(GL_TEXTURE0_ARB + unit);
  const GLint t = rtt::getInt(GL_TEXTURE_BINDING_2D);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  return t;
}

TEST(MeshDraw, BasePassIgnoresStagesOneAndTwo) {
  REQUIRE_WORLD_GL();
  const GLuint texture = greyTexture(200);
  SquareMesh s(stagedMaterial(3, texture));
  s.mesh.restoreState = false;
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_TRUE(unitHas2D(1)) << "a light pass uses every stage";
  EXPECT_TRUE(unitHas2D(2));
  s.mesh.draw(3, true, 0, false);
  EXPECT_TRUE(unitHas2D(0));
  EXPECT_EQ(unitTexture(0), GLint(texture));
  EXPECT_FALSE(unitHas2D(1)) << "pass 3 switches stage 1 off";
  EXPECT_FALSE(unitHas2D(2)) << "pass 3 switches stage 2 off";
  EXPECT_EQ(rtt::getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_TRUE(glIsEnabled(GL_NORMALIZE));
  rtt::resetState();
  glDisableClientState(GL_VERTEX_ARRAY);
  glDisableClientState(GL_NORMAL_ARRAY);
  glDisableClientState(GL_COLOR_ARRAY);
  glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
  glDeleteTextures(1, &texture);
}

TEST(MeshDraw, ShadowUnitShiftMovesStagesOneAndTwoUp) {
  REQUIRE_WORLD_GL();
  const GLuint stage0 = greyTexture(10), stage1 = greyTexture(20);
  Material material = stagedMaterial(2, stage0);
  material.stageTexture[1] = stage1;
  SquareMesh s(material);
  s.mesh.restoreState = false;
  flatStage();
  glActiveTextureARB(GL_TEXTURE1_ARB);
  glBindTexture(GL_TEXTURE_2D, 0);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  s.mesh.draw(2, true, 0, true);
  EXPECT_EQ(unitTexture(0), GLint(stage0));
  EXPECT_EQ(unitTexture(2), GLint(stage1)) << "stage 1 on unit 2";
  EXPECT_EQ(unitTexture(1), 0) << "unit 1 is left to the shadow map";
  rtt::resetState();
  glDisableClientState(GL_VERTEX_ARRAY);
  glDisableClientState(GL_NORMAL_ARRAY);
  glDisableClientState(GL_COLOR_ARRAY);
  glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

TEST(MeshDraw, RestoreStatePutsTheUnitsBack) {
  REQUIRE_WORLD_GL();
  const GLuint texture = greyTexture(100);
  SquareMesh s(stagedMaterial(3, texture));
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_EQ(rtt::getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  EXPECT_TRUE(unitHas2D(0));
  EXPECT_FALSE(unitHas2D(1));
  EXPECT_FALSE(unitHas2D(2));
  EXPECT_FALSE(unitHas2D(3));
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_EQ(rtt::texEnvMode(), GL_ADD);
  glActiveTextureARB(GL_TEXTURE2_ARB);
  float m[16];
  glGetFloatv(GL_TEXTURE_MATRIX, m);
  EXPECT_EQ(m[0], 1.0f) << "the stage-2 texture matrix is reset";
  EXPECT_EQ(m[8], 0.0f);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_EQ(rtt::texEnvMode(), GL_MODULATE);
  EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
  EXPECT_EQ(rtt::getInt(GL_MATRIX_MODE), GL_MODELVIEW);
  EXPECT_TRUE(testgl::drainErrors().empty());
  glDeleteTextures(1, &texture);
}

TEST(MeshDraw, TwoPassStageDrawsUntexturedThenTexturedAdditively) {
  REQUIRE_WORLD_GL();
  const GLuint texture = greyTexture(128);
  Material material = stagedMaterial(1, texture);
  SquareMesh once(material);
  flatStage();
  once.mesh.draw(0, true, 0, false);
  EXPECT_NEAR(centreRed(), 51, 2) << "mode 1: colour x texture";

  material.stageMode[0] = 3;
  SquareMesh twice(material);
  flatStage();
  twice.mesh.draw(0, true, 0, false);
  EXPECT_NEAR(centreRed(), 102 + 51, 3) << "mode 3: the plain colour, then colour x texture added";
  EXPECT_TRUE(testgl::drainErrors().empty());
  glDeleteTextures(1, &texture);
}

TEST(MeshDraw, ShellsWithoutLayersSetTheirStateAndDrawNothing) {
  REQUIRE_WORLD_GL();
  Material material = greyMaterial(0.6f);
  SquareMesh plain(material);
  flatStage();
  plain.mesh.draw(0, true, 0, false);
  const int without = centreRed();
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE);

  material.shellsEnabled = true;
  material.shellCount = 0;
  SquareMesh shelled(material);
  flatStage();
  glDepthMask(GL_FALSE);
  shelled.mesh.draw(0, true, 0, false);
  EXPECT_EQ(centreRed(), without) << "no shell is submitted";
  EXPECT_EQ(rtt::getInt(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA) << "the shell blending was set";
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  GLboolean depthMask = GL_FALSE;
  glGetBooleanv(GL_DEPTH_WRITEMASK, &depthMask);
  EXPECT_TRUE(depthMask);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(MeshDraw, ShellsAreDrawnLayerByLayer) {
  REQUIRE_WORLD_GL();
  const GLuint texture = greyTexture(255);
  Material material = greyMaterial(0.3f);
  material.shellsEnabled = true;
  material.shellCount = 2;
  material.shellTextures[0] = texture;
  material.shellTextures[1] = texture;
  material.stageMode[0] = 1;
  SquareMesh s(material);
  flatStage();
  s.mesh.draw(3, true, 0, false);
  // Base colour B is 0 here; the shells blend colour A (0.3) over it twice.
  const int red = centreRed();
  EXPECT_GT(red, 60);
  EXPECT_TRUE(testgl::drainErrors().empty());
  glDeleteTextures(1, &texture);
}

TEST(MeshDraw, WireframeDrawsOnlyTheEdges) {
  REQUIRE_WORLD_GL();
  Material material = greyMaterial(0.6f);
  material.wireframe = true;
  SquareMesh s(material);
  s.mesh.scale = Vector3(1.5f, 1.5f, 1);
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_LT(rtt::pixel(wt::windowW / 2 + 30, wt::windowH / 2 + 10)[0], 10) << "inside the square stays empty";
  GLint mode[2];
  glGetIntegerv(GL_POLYGON_MODE, mode);
  EXPECT_EQ(mode[0], GL_FILL) << "restored";
  glDisable(GL_LINE_SMOOTH);
}

TEST(MeshDraw, ObjectTransformComesFromTheMatrixOrTheFields) {
  REQUIRE_WORLD_GL();
  SquareMesh s(greyMaterial(0.6f));
  s.mesh.position = Vector3(0.5f, 0, 0);
  for (int i = 0; i < 16; ++i) s.mesh.matrix[i] = (i % 5 == 0) ? 1.0f : 0.0f;
  s.mesh.matrix[12] = -0.5f;
  s.mesh.useMatrix = true;
  const int leftX = wt::windowW / 4, rightX = wt::windowW * 3 / 4;
  flatStage();
  s.mesh.draw(0, true, 0, false);
  EXPECT_GT(rtt::pixel(leftX, wt::windowH / 2)[0], 100) << "useMatrix: drawn by the matrix";
  EXPECT_EQ(rtt::pixel(rightX, wt::windowH / 2)[0], 0);
  flatStage();
  s.mesh.draw(0, false, 0, false);
  EXPECT_EQ(rtt::pixel(leftX, wt::windowH / 2)[0], 0);
  EXPECT_GT(rtt::pixel(rightX, wt::windowH / 2)[0], 100) << "without allowMatrix: by the position";
  s.mesh.useMatrix = false;
  s.mesh.rotation = Vector3(0, 0, 90);
  s.mesh.scale = Vector3(2, 0.2f, 1);
  s.mesh.position = Vector3(0, 0, 0);
  flatStage();
  s.mesh.draw(0, true, 0, false);
  // Scaled flat along x, then turned by 90 degrees about z: a tall thin bar.
  EXPECT_GT(rtt::pixel(wt::windowW / 2, wt::windowH / 2 + 100)[0], 100);
  EXPECT_EQ(rtt::pixel(wt::windowW / 2 + 60, wt::windowH / 2)[0], 0);
}

TEST(MeshDraw, EyeSpaceMovesTheNormalTipToo) {
  Mesh mesh;
  mesh.addVertex(Vector3(1, 0, 0), Vector3(), Vector3(1, 1, 1));
  mesh.vertices[0]->normal = Vector3(0, 1, 0);
  for (int i = 0; i < 16; ++i) mesh.modelviewMatrix[i] = (i % 5 == 0) ? 1.0f : 0.0f;
  mesh.modelviewMatrix[12] = 2;
  mesh.modelviewMatrix[14] = -5;
  computeEyeSpace(mesh);
  EXPECT_EQ(mesh.vertices[0]->eyePosition, Vector3(3, 0, -5));
  EXPECT_EQ(mesh.vertices[0]->eyeNormal, Vector3(2, 1, -5)) << "the translation applies to the normal as well";
}

TEST(MeshDraw, RefractionCoordinateFollowsItsFormula) {
  float s, t;
  refractionTexCoord(Vector3(1, 0.5f, -3), Vector3(0.2f, 0.1f, 0), 0.15f, 0.625f, 0.9375f, &s, &t);
  EXPECT_FLOAT_EQ(s, (1 * 0.33333334f / 3 + 0.5f) * 0.625f + 0.15f * 0.2f);
  EXPECT_FLOAT_EQ(t, 0.15f * 1.3333f * 0.1f + (0.5f * 0.44444668f / 3 + 0.5f) * 0.9375f);
  refractionTexCoord(Vector3(30, 30, -1), Vector3(0, 0, 0), 0, 1, 1, &s, &t);
  EXPECT_FLOAT_EQ(s, 0.9f);
  EXPECT_FLOAT_EQ(t, 0.75f) << "t stops lower than s";
}

TEST(MeshDraw, VertexBehindTheEyeIsClampedWithoutDividingByZero) {
  float s, t;
  refractionTexCoord(Vector3(1, -1, 2), Vector3(0, 0, 0), 0.15f, 1, 1, &s, &t);
  EXPECT_TRUE(std::isfinite(s));
  EXPECT_TRUE(std::isfinite(t));
  EXPECT_FLOAT_EQ(s, 0.9f);
  EXPECT_FLOAT_EQ(t, 0.1f);
  refractionTexCoord(Vector3(0, 0, 0), Vector3(0, 0, 0), 0, 1, 1, &s, &t);
  EXPECT_FLOAT_EQ(s, 0.5f);
  EXPECT_FLOAT_EQ(t, 0.5f);
}

TEST(MeshDraw, RefractiveMeshDrawsInnerAndOuterSurfaceFromTheCopiedPicture) {
  REQUIRE_WORLD_GL();
  ScopedFlag clientArrays(useVertexBuffers, false);
  std::unique_ptr<RenderTarget> pool(rtt::makePool(10));
  testgl::drainErrors();  // the pool's constructor leaves a deliberate one
  Material material = greyMaterial(0.5f);
  material.refractive = true;
  material.stageCount = 1;
  material.stageMode[0] = 1;
  SquareMesh s(material);
  s.mesh.renderTarget = pool.get();
  s.mesh.modelviewMatrix[0] = 0;  // overwritten by the draw
  flatStage();
  glTranslatef(0, 0, -2);
  const float alphaB = s.mesh.colourArrayB[0][3];
  const float normalZ = s.mesh.normalArray[2];
  s.mesh.draw(0, true, 0, false);
  EXPECT_EQ(s.mesh.modelviewMatrix[0], 1.0f) << "the modelview was read for eye space";
  EXPECT_FLOAT_EQ(s.mesh.vertices[0]->eyePosition.z, -2.0f);
  EXPECT_FLOAT_EQ(s.mesh.colourArrayB[0][3], alphaB) << "the two submissions undo each other's alpha";
  EXPECT_FLOAT_EQ(s.mesh.normalArray[2], normalZ) << "and the normal flip";
  const float u = s.mesh.texCoordArray[0][0];
  EXPECT_GE(u, 0.1f);
  EXPECT_LE(u, 0.9f);
  EXPECT_EQ(rtt::getInt(GL_CULL_FACE_MODE), GL_BACK) << "the outer surface is drawn last";
  glLoadIdentity();
  const auto errors = testgl::drainErrors();
  EXPECT_TRUE(errors.empty()) << "first error " << (errors.empty() ? 0 : errors.front());
}

TEST(MeshDraw, StageTwoFollowsTheLightInEyeSpace) {
  REQUIRE_WORLD_GL();
  Camera camera("probe.camera0", 45, 1, 0.1f, 100, 64, 64, 32, 32);
  Mesh mesh;
  mesh.camera = &camera;
  mesh.position = Vector3(1, 0, 0);
  mesh.lightPosition = Vector3(0, 0, 0);
  glActiveTextureARB(GL_TEXTURE2_ARB);
  lightFollowingTextureMatrix(mesh);
  float m[16];
  glGetFloatv(GL_TEXTURE_MATRIX, m);
  glLoadIdentity();
  glMatrixMode(GL_TEXTURE);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  // d = (1, 0, 0): a = angleOf(1, 0) = pi/2, b = 0; the second rotation is
  // -(pi/2 - pi)/pi * 180 = 90 degrees about y.
  EXPECT_NEAR(m[0], 0, 1e-5f);
  EXPECT_NEAR(m[2], -1, 1e-5f);
  EXPECT_NEAR(m[8], 1, 1e-5f);
  EXPECT_NEAR(m[5], 1, 1e-5f);
  EXPECT_EQ(rtt::getInt(GL_MATRIX_MODE), GL_MODELVIEW);
}

TEST(MeshDraw, StageModesMapToEnvironmentModes) {
  EXPECT_EQ(stageEnvironmentMode(1), GLenum(GL_MODULATE));
  EXPECT_EQ(stageEnvironmentMode(2), GLenum(GL_ADD));
  EXPECT_EQ(stageEnvironmentMode(3), GLenum(GL_MODULATE));
  EXPECT_EQ(stageEnvironmentMode(4), GLenum(GL_BLEND));
  EXPECT_EQ(stageEnvironmentMode(0), 0u);
}

TEST(MeshDraw, CubeMapStageUsesReflectionGeneration) {
  REQUIRE_WORLD_GL();
  GLuint cube = 0;
  glGenTextures(1, &cube);
  cubeMapBegin(cube);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_CUBE_MAP));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_GEN_R));
  GLint mode = 0;
  glGetTexGeniv(GL_S, GL_TEXTURE_GEN_MODE, &mode);
  EXPECT_EQ(mode, GL_REFLECTION_MAP);
  cubeMapEnd();
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_CUBE_MAP));
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_GEN_S));
  glDeleteTextures(1, &cube);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

}  // namespace
