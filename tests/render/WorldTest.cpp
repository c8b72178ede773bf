// World: its fields, the add operations, the child links, the light list,
// the matrix walk and what a render with preparation does to its meshes.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "WorldTestHelpers.h"
#include "geometry/A3dFile.h"

namespace {

TEST(World, StartsEmptyWithItsDefaults) {
  World world;
  EXPECT_TRUE(world.objects.empty());
  EXPECT_TRUE(world.children.empty());
  EXPECT_TRUE(world.lights.empty());
  EXPECT_TRUE(world.billboards.empty());
  EXPECT_EQ(world.baseLightAttenuation, 2.0f);
  EXPECT_FLOAT_EQ(world.softShadowMaskBlurAmount, 0.1f);
  EXPECT_EQ(world.softShadowMaskBlurLoops, 3);
}

TEST(World, AddOperationsAppendAnObjectWithItsBookkeeping) {
  World world;
  Material material;
  material.ambient.set(0.25f, 0.5f, 0.75f);
  material.shininess = 50;
  const int a = world.addObject(&material);
  const int b = world.addObject(nullptr);
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 1);
  ASSERT_EQ(world.objects.size(), 2u);
  EXPECT_EQ(world.children.size(), 2u);
  EXPECT_TRUE(world.children[0].empty());
  ASSERT_EQ(world.isRoot.size(), 2u);
  EXPECT_TRUE(world.isRoot[0]);
  EXPECT_TRUE(world.isRoot[1]);
  ASSERT_EQ(world.spareBits.size(), 2u);
  EXPECT_FALSE(world.spareBits[0]);
  EXPECT_FLOAT_EQ(world.objects[a]->materials[0].ambient.y, 0.5f) << "the material goes to slot 0";
  EXPECT_EQ(world.objects[a]->materials[0].shininess, 0.0f);
  EXPECT_FLOAT_EQ(world.objects[b]->materials[0].ambient.y, 0.0f);
}

TEST(World, AddBoxMakesTheBuilderShapeWithTheMaterial) {
  World world;
  Material material;
  material.diffuse.set(0.1f, 0.2f, 0.3f);
  world.addObject(nullptr);
  const int box = world.addBox(3, 3, material, false, true);
  EXPECT_EQ(box, 1);
  const Mesh& mesh = *world.objects[box];
  EXPECT_EQ(mesh.rowCount, 3);
  EXPECT_EQ(mesh.columnCount, 3);
  EXPECT_GT(mesh.faceCount, 0);
  EXPECT_FLOAT_EQ(mesh.materials[0].diffuse.z, 0.3f);
  EXPECT_EQ(world.children.size(), 2u);
}

TEST(World, LibraryShapesAreObjectsToo) {
  World world;
  Material material;
  const int cube = world.addCube(material, false);
  const int sphere = world.addSphere(1.0f, 8, 6, material, false);
  const float positions[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  const float texCoords[6] = {0, 0, 1, 0, 0, 1};
  const int indices[3] = {0, 1, 2};
  const int arrays = world.addFromArrays(positions, texCoords, 3, indices, 1, material);
  EXPECT_EQ(cube, 0);
  EXPECT_EQ(sphere, 1);
  EXPECT_EQ(arrays, 2);
  EXPECT_EQ(world.objects[arrays]->faceCount, 1);
  EXPECT_TRUE(world.objects[arrays]->normalsDirty);
  EXPECT_GT(world.objects[sphere]->faceCount, 0);

  int created = 0;
  const int before = static_cast<int>(world.objects.size());
  EXPECT_EQ(world.explodeFaces(arrays, &created, 0, false, 0.1f, 0.0f, 0.0f, false), before);
  EXPECT_EQ(created, 1);
  EXPECT_EQ(world.objects.size(), size_t(before + 1));
  EXPECT_EQ(world.children.size(), world.objects.size());
  EXPECT_EQ(world.explodeFaces(99, &created, 0, false, 0.1f, 0.0f, 0.0f, false), before + 1)
      << "a bad index makes nothing";
}

TEST(World, AddChildAppendsLinksWithDefaultOptions) {
  World world;
  world.addObject(nullptr);
  world.addObject(nullptr);
  world.addObject(nullptr);
  world.addChild(0, 1, nullptr);
  const unsigned char options[3] = {4, 5, 6};
  world.addChild(0, 2, options);
  world.addChild(7, 1, nullptr);  // no such parent: ignored
  ASSERT_EQ(world.children[0].size(), 2u);
  const ChildLink& first = world.children[0].front();
  EXPECT_EQ(first.child, 1);
  EXPECT_EQ(first.options[0], 1);
  EXPECT_EQ(first.options[1], 1);
  EXPECT_EQ(first.options[2], 1);
  const ChildLink& second = world.children[0].back();
  EXPECT_EQ(second.child, 2);
  EXPECT_EQ(second.options[2], 6);
  EXPECT_TRUE(world.children[1].empty());
}

TEST(World, RefreshLightsFollowsItsTwoFlags) {
  World world;
  const int a = world.addObject(nullptr);
  const int b = world.addObject(nullptr);
  const int c = world.addObject(nullptr);
  world.objects[a]->light()->enabled = true;
  world.objects[c]->light()->enabled = true;
  world.refreshLights(false, false);
  ASSERT_EQ(world.lights.size(), 2u);
  EXPECT_EQ(world.lights.front(), world.objects[a]);
  EXPECT_EQ(world.lights.back(), world.objects[c]);

  world.refreshLights(false, true);
  EXPECT_EQ(world.lights.size(), 4u) << "keepExisting appends to the old list";
  world.refreshLights(true, true);
  EXPECT_EQ(world.lights.size(), 4u);
  world.refreshLights(true, false);
  EXPECT_TRUE(world.lights.empty()) << "keepEmpty without keepExisting leaves it empty";
  (void)b;
}

TEST(World, MeshesOutliveTheirWorld) {
  Mesh* mesh;
  {
    World world;
    mesh = world.objects[world.addObject(nullptr)];
    mesh->position = Vector3(1, 2, 3);
  }
  EXPECT_EQ(mesh->position, Vector3(1, 2, 3)) << "the World frees its vectors, not its meshes";
}

// ---- Model files ------------------------------------------------------------

std::string writeModel(const std::string& name, int quantisation) {
  A3dModel model;
  model.positions = {-1, -1, 0, 1, -1, 0, 0, 1, 0};
  model.texCoords = {0, 0, 1, 0, 0.5f, 1};
  model.indices = {0, 1, 2};
  const std::string path = "world_test_" + name + ".a3d";
  EXPECT_EQ(writeFileBytes(path, encodeA3d(model, quantisation, 0)), 0);
  return path;
}

TEST(World, AddModelLoadsAFileIntoANewObject) {
  World world;
  Material material;
  material.diffuse.set(0.3f, 0.3f, 0.3f);
  world.addObject(nullptr);
  const int index = world.addModel(writeModel("triangle", a3dFloat), material);
  ASSERT_EQ(index, 1);
  const Mesh& mesh = *world.objects[index];
  EXPECT_EQ(mesh.vertexCount, 3);
  EXPECT_EQ(mesh.faceCount, 1);
  EXPECT_TRUE(mesh.normalsDirty);
  EXPECT_FLOAT_EQ(mesh.materials[0].diffuse.x, 0.3f);
  EXPECT_EQ(mesh.vertices[1]->position, Vector3(1, -1, 0));
  EXPECT_EQ(world.children.size(), 2u);
}

TEST(World, AddModelReportsAMissingFile) {
  World world;
  testing::internal::CaptureStdout();
  const int index = world.addModel("./models/no_such_model.a3d", Material());
  const std::string log = testing::internal::GetCapturedStdout();
  EXPECT_EQ(index, -1);
  EXPECT_EQ(log, "ERROR: file ./models/no_such_model.a3d not found\n");
  EXPECT_TRUE(world.objects.empty());
}

TEST(World, AddModelReportsAnEmptyFile) {
  World world;
  { std::ofstream empty("world_test_empty.a3d", std::ios::binary); }
  testing::internal::CaptureStdout();
  const int index = world.addModel("world_test_empty.a3d", Material());
  const std::string log = testing::internal::GetCapturedStdout();
  EXPECT_EQ(index, -2);
  EXPECT_EQ(log, "ERROR: size of the file is 0\n");
  EXPECT_TRUE(world.objects.empty());
}

// ---- Matrices and preparation -------------------------------------------------

void expectMatrix(const float* m, const float* expected) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(m[i], expected[i], 1e-5f) << "element " << i;
}

TEST(World, MatrixWalkMultipliesDownTheHierarchy) {
  REQUIRE_WORLD_GL();
  World world;
  const int parent = world.addObject(nullptr);
  const int child = world.addObject(nullptr);
  Mesh& p = *world.objects[parent];
  Mesh& c = *world.objects[child];
  p.position = Vector3(1, 2, 3);
  p.rotation = Vector3(0, 90, 0);
  p.scale = Vector3(2, 2, 2);
  c.position = Vector3(1, 0, 0);
  world.addChild(parent, child, nullptr);

  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  world.buildMatrices(parent);
  float expected[16];
  glLoadIdentity();
  glTranslatef(1, 2, 3);
  glRotatef(90, 0, 1, 0);
  glScalef(2, 2, 2);
  glGetFloatv(GL_MODELVIEW_MATRIX, expected);
  expectMatrix(p.matrix, expected);
  glTranslatef(1, 0, 0);
  glGetFloatv(GL_MODELVIEW_MATRIX, expected);
  expectMatrix(c.matrix, expected);
  // The child's origin: parent translation + rotated, scaled (1, 0, 0).
  EXPECT_NEAR(c.matrix[12], 1, 1e-5f);
  EXPECT_NEAR(c.matrix[14], 1, 1e-5f);
  glLoadIdentity();
}

TEST(World, CyclicHierarchyStopsInsteadOfRecursingForever) {
  REQUIRE_WORLD_GL();
  World world;
  world.addObject(nullptr);
  world.addObject(nullptr);
  world.addChild(0, 1, nullptr);
  world.addChild(1, 0, nullptr);
  world.objects[0]->scale = Vector3(1, 1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  world.buildMatrices(0);
  glLoadIdentity();
  EXPECT_TRUE(testgl::drainErrors().empty()) << "the walk stays within the modelview stack";
}

TEST(World, PreparingRenderBuildsMatricesNormalsAndArrays) {
  REQUIRE_WORLD_GL();
  wt::Stage s(false);
  Mesh& cube = *s.world.objects[s.cube];
  Mesh& floor = *s.world.objects[s.floor];
  cube.useMatrix = true;
  cube.position = Vector3(0.5f, 0, 0);
  floor.currentMaterial = 0;
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 1, false, s.pool.get(), false, false, false, true);
  EXPECT_EQ(cube.camera, s.camera.get());
  EXPECT_EQ(cube.renderTarget, s.pool.get());
  EXPECT_FALSE(cube.normalsDirty);
  EXPECT_FALSE(cube.positionsDirty) << "updateArrays ran";
  EXPECT_GE(cube.vertexCapacity, 24u);
  EXPECT_FLOAT_EQ(cube.matrix[12], 0.5f) << "useMatrix objects get their world matrix";
  EXPECT_NEAR(cube.vertices[0]->normal.length(), 1.0f, 1e-3f);
  EXPECT_EQ(floor.currentMaterial, 1) << "every mesh takes the material index";
  EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
  EXPECT_EQ(s.pool->lowResolution, 0);
  testgl::drainErrors();
}

TEST(World, DirectPathSetsTheTargetResolutionFromLowOutput) {
  REQUIRE_WORLD_GL();
  wt::Stage s(false);
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, true, false, true);
  EXPECT_EQ(s.pool->lowResolution, 1) << "the direct path leaves the flag as lowOutput set it";
  GLint viewport[4];
  s.camera->applyLow();
  glGetIntegerv(GL_VIEWPORT, viewport);
  s.camera->release();
  EXPECT_EQ(viewport[2], wt::windowW / 2);
  s.pool->lowResolution = 0;
  testgl::drainErrors();
}

TEST(World, RenderWithoutObjectsDrawsNothing) {
  REQUIRE_WORLD_GL();
  World world;
  auto camera = wt::makeCamera(Vector3(0, 0, -5), Vector3(0, 0, 0));
  std::unique_ptr<RenderTarget> pool(rtt::makePool(10));
  rtt::clearTo({10, 20, 30, 255});
  world.render(camera.get(), 0, true, 0, false, pool.get(), false, false, false, true);
  EXPECT_TRUE(rtt::near(rtt::pixel(160, 120), {10, 20, 30, 255}));
  testgl::drainErrors();
}

TEST(World, BasePassLightsFromTheEyeWithTheWorldsAttenuation) {
  REQUIRE_WORLD_GL();
  World world;
  world.baseLightAttenuation = 6.0f;
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(3, 4, 5);
  world.basePass(true);
  glLoadIdentity();
  float value[4];
  glGetLightfv(GL_LIGHT0, GL_POSITION, value);
  EXPECT_EQ(value[0], 0.0f) << "the head-lamp sits at the eye whatever the modelview";
  EXPECT_EQ(value[3], 1.0f);
  glGetLightfv(GL_LIGHT0, GL_CONSTANT_ATTENUATION, value);
  EXPECT_EQ(value[0], 6.0f);
  glGetLightfv(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, value);
  EXPECT_FLOAT_EQ(value[0], 0.1f);
  glGetLightfv(GL_LIGHT0, GL_AMBIENT, value);
  EXPECT_EQ(value[0], 1.0f);
  glGetLightfv(GL_LIGHT0, GL_SPOT_CUTOFF, value);
  EXPECT_EQ(value[0], 180.0f);
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  EXPECT_EQ(rtt::getInt(GL_DEPTH_FUNC), GL_LESS);
  GLboolean mask[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, mask);
  EXPECT_TRUE(mask[0]);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

}  // namespace
