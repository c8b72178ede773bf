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
  std::vector<int32_t> ids;
  std::vector<Vector3> homes;
  LatticeShape shape;
  shape.countX = 4;
  shape.countY = 2;
  shape.countZ = 1;
  s.addLattice("./models/cube.a3d", shape, Material(), Material(), ids, homes);
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

  std::vector<int32_t> ids;
  std::vector<Vector3> homes;
  LatticeShape shape;
  shape.countX = 2;
  shape.countY = 1;
  shape.countZ = 1;
  s.addLattice("./models/cube.a3d", shape, Material(), Material(), ids, homes);
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
