// The kit's lattice, colour families, ring width and swarm sampling: what
// each builds, and how many random numbers it draws, in which order.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "SceneExpectations.h"
#include "SceneTestDemo.h"
#include "foundation/NoiseField.h"
#include "scenes/SceneSkeleton.h"

namespace {

// A bare scene on the skeleton, to call the helpers one by one.
class LatticeScene : public SceneSkeleton {
 public:
  explicit LatticeScene(Demo* demo) : SceneSkeleton(demo, "lattice") {
    setUpCamera("LatticeScene.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));
  }
  void animate(float, float, int32_t) override {}
};

LatticeScene& kit() {
  static LatticeScene* scene = new LatticeScene(&scenetest::demo());  // left alive, as scenes are
  return *scene;
}

// A row of `count` elements of the default shape, for the helpers that work
// on a lattice already built; their object indices, their homes in `homes`.
std::vector<int32_t> row(LatticeScene& s, int32_t count, std::vector<Vector3>& homes) {
  LatticeShape shape;
  shape.countX = count;
  shape.countY = 1;
  shape.countZ = 1;
  std::vector<int32_t> ids;
  s.addLattice("./models/cube.a3d", shape, Material(), Material(), ids, homes);
  return ids;
}

}  // namespace

TEST(SceneKitLattice, ElementsRunXInnermostWithTheirDrawsAndWastedOnes) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  LatticeShape shape;
  shape.countX = 3;
  shape.countY = 2;
  shape.countZ = 2;
  shape.centre = Vector3(1, 0.5f, 0);
  shape.homeScale = Vector3(0.25f, 0.5f, 2.0f);
  shape.tumbleX = 100;
  shape.tumbleY = 60;
  shape.width = 0.1f;
  shape.depth = 0.3f;
  shape.heightScale = 2.0f;
  shape.wastedDraws = 2;
  std::vector<int32_t> ids;
  std::vector<Vector3> homes;
  crtSrand(31);
  const int32_t first = s.addLattice("./models/cube.a3d", shape, Material(), Material(), ids, homes);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(31, 12 * 5)) << "three draws and two wasted per element";
  ASSERT_EQ(ids.size(), 12u);
  EXPECT_EQ(ids[0], first);
  EXPECT_EQ(homes[1], Vector3(0, -0.25f, 0)) << "x runs innermost";
  EXPECT_EQ(homes[3], Vector3(-0.25f, 0.25f, 0));
  EXPECT_EQ(homes[6], Vector3(-0.25f, -0.25f, 2.0f)) << "then y, then z";
  scenetest::expectLattice(s.world, ids, 0, homes, {31, 0}, shape);
}

TEST(SceneKitLattice, ColourFamiliesCycleBySeedOrShareOne) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  std::vector<Vector3> homes;
  std::vector<int32_t> ids = row(s, 8, homes);
  Material picture, glow;
  picture.stageCount = 1;  // a mesh keeps the offsets of the stages it draws
  glow.stageCount = 1;
  ColourFamilies families;
  families.groupSize = 2;
  families.seedBase = 1990;
  families.glowDiffuse = 0.1f;
  families.pictureDiffuse = 0.2f;
  families.pictureAmbient = 0.1f;
  s.applyColourFamilies(families, picture, glow, ids, 0, 8);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(1990 + 3 % 3, 7)) << "object 7 is of family (7 / 2) mod 3 = 0";
  scenetest::expectColourFamilies(s.world, ids, 0, {0, 1, 2, 3, 4, 5, 6, 7}, families);
  const float family0 = s.world.objects[ids[0]]->materials[1].diffuse.x;
  EXPECT_EQ(s.world.objects[ids[1]]->materials[1].diffuse.x, family0);
  EXPECT_NE(s.world.objects[ids[2]]->materials[1].diffuse.x, family0);
  EXPECT_EQ(s.world.objects[ids[6]]->materials[1].diffuse.x, family0) << "three families, then round again";

  ColourFamilies one;
  one.groupSize = 0;
  one.seedBase = 77;
  s.applyColourFamilies(one, picture, glow, ids, 2, 4);
  scenetest::expectColourFamilies(s.world, ids, 2, {0, 1, 2, 3}, one);
  EXPECT_EQ(s.world.objects[ids[2]]->materials[0].diffuse.y, s.world.objects[ids[5]]->materials[0].diffuse.y);
}

TEST(SceneKitLattice, UnitCubesSitOneApartWithTheirOwnTumble) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  const LatticeShape shape = LatticeShape::cubes(2, 3, 2, Vector3(0.5f, 1, 0.5f), 36.0f);
  std::vector<int32_t> ids;
  std::vector<Vector3> homes;
  crtSrand(234);
  s.addLattice("./models/cube.a3d", shape, Material(), Material(), ids, homes);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(234, 12 * 3)) << "three draws per cube, none wasted";
  EXPECT_EQ(homes[0], Vector3(-0.5f, -1, -0.5f));
  EXPECT_EQ(homes[1], Vector3(0.5f, -1, -0.5f)) << "one unit apart";
  EXPECT_EQ(homes[11], Vector3(0.5f, 1, 0.5f));
  scenetest::expectLattice(s.world, ids, 0, homes, {234, 0}, shape);
  crtSrand(234);
  const int r1 = crtRand();
  const int r2 = crtRand();
  const int r3 = crtRand();
  const Mesh& cube = *s.world.objects[ids[0]];
  EXPECT_NEAR(cube.rotation.x, (r2 / 32767.0 - 0.5) * 36 - 90, 1e-4);
  EXPECT_NEAR(cube.rotation.y, (r1 / 32767.0 - 0.5) * 36, 1e-4);
  EXPECT_EQ(cube.scale, Vector3(0.25f, static_cast<float>(r3 / 32767.0 * 0.05 + 0.2), 0.25f));
}

TEST(SceneKitLattice, NarrowDrawsWorkTheColoursInFloat) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  std::vector<Vector3> homes;
  std::vector<int32_t> ids = row(s, 2, homes);
  ColourFamilies families;
  families.groupSize = 1;
  families.seedBase = 1993;
  families.glowDiffuse = 0.05f;
  families.pictureDiffuse = 0.1f;
  families.pictureAmbient = 0.05f;
  Material picture, glow;
  picture.stageCount = 1;
  glow.stageCount = 1;
  s.applyColourFamilies(families, picture, glow, ids, 0, 1);
  const Color4 wide = glow.diffuse;
  families.narrowDraws = true;
  s.applyColourFamilies(families, picture, glow, ids, 0, 2);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(1994, 7)) << "the same draws either way";
  scenetest::expectColourFamilies(s.world, ids, 0, {0, 1}, families);

  crtSrand(1993);
  const float a = static_cast<float>(randomSigned());
  const float b = static_cast<float>(randomSigned());
  const float c = static_cast<float>(randomSigned());
  const Material& g = s.world.objects[ids[0]]->materials[1];
  const Material& p = s.world.objects[ids[0]]->materials[0];
  EXPECT_EQ(g.diffuse.x, (a * 1.65f + 2.5f) * 0.05f);
  EXPECT_EQ(g.diffuse.y, (b * 0.85f + 1.1f) * 0.05f);
  EXPECT_EQ(p.diffuse.z, (c * 0.23f + 0.36f) * 0.1f);
  EXPECT_EQ(p.ambient.x, (a * 0.4f + 0.5f) * 0.05f);
  EXPECT_NE(g.diffuse.x, wide.x) << "seed 1993's glow red differs in the last bit between float and double";
}

TEST(SceneKitLattice, NearRingOfPlatesDrawsItsDepthSigned) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  const RingShape ring = RingShape::nearRing(5);
  crtSrand(102);
  const int32_t first = s.addBoxRing(Material(), Material(), ring);
  EXPECT_EQ(crtRandState(), scenetest::stateAfter(102, 5 * 5));
  scenetest::expectRing(s.world, first, {102, 0}, ring);
  crtSrand(102);
  for (int k = 0; k < 4; ++k) crtRand();
  const double s3 = randomSigned();
  const Mesh& plate = *s.world.objects[first];
  EXPECT_EQ(plate.position.z, 4.0f);
  EXPECT_EQ(plate.scale.x, 5.0f);
  EXPECT_FLOAT_EQ(plate.scale.z, static_cast<float>(2.0 * s3 + 10.0));
  EXPECT_GE(plate.scale.z, 8.0f);
  EXPECT_LE(plate.scale.z, 12.0f);
}

TEST(SceneKitLattice, RingWidthSetsTheBoxesCrossSection) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  RingShape ring;
  ring.count = 6;
  ring.width = 2.0f;
  ring.yRadius = 25.0f;
  crtSrand(8);
  const int32_t first = s.addBoxRing(Material(), Material(), ring);
  scenetest::expectRing(s.world, first, {8, 0}, ring);
  EXPECT_EQ(s.world.objects[first]->scale.x, 2.0f);
}

TEST(SceneKitLattice, SwarmSamplingAndPlacing) {
  REQUIRE_GL(scenetest::width, scenetest::height);
  LatticeScene& s = kit();
  const Vector3 h(0.5f, -0.25f, 0.125f);
  const Vector3 p = SceneSkeleton::swarmSamplePoint(h, 0, 0, 100);
  EXPECT_FLOAT_EQ(p.x, std::cos(0.012f * 0.5f * 12.2f) * 0.123f + 3.4f + 10);
  EXPECT_FLOAT_EQ(p.y, 0.012f * -0.25f + 10);
  EXPECT_FLOAT_EQ(p.z, 0.002f * 0.125f + 10);
  const Vector3 q = SceneSkeleton::swarmSamplePoint(h, 1, 1, 100);
  EXPECT_FLOAT_EQ(q.y, 0.3f * 0.125f * 0.7f + 0.022f * -0.25f + 10);
  EXPECT_FLOAT_EQ(q.z, 0.012f * 0.125f + 10);

  std::vector<Vector3> homes;
  std::vector<int32_t> ids = row(s, 2, homes);
  ids.insert(ids.begin(), -1);  // entry 0 stands for a backdrop
  NoiseField* x = s.makeNoiseField(6, 100);
  NoiseField* y = s.makeNoiseField(6, 101);
  NoiseField* z = s.makeNoiseField(6, 102);
  s.placeOnSwarm(ids, 1, homes, x, y, z, 0.5f, 0.25f, 130);
  NoiseField fx(6, 100), fy(6, 101), fz(6, 102);
  for (int n = 0; n < 2; ++n) {
    const Vector3 at = s.world.objects[ids[n + 1]]->position;
    const Vector3 r = SceneSkeleton::swarmSamplePoint(homes[n], 0.5f, 0.25f, 130);
    EXPECT_FLOAT_EQ(at.x, fx.fractalSum(r, 6) * 12.5f);
    EXPECT_FLOAT_EQ(at.y, fy.fractalSum(r, 7) * 12.5f);
    EXPECT_FLOAT_EQ(at.z, fz.fractalSum(r, 6) * 12.5f);
  }
}
