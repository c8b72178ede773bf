// Batches: a hundred cubes drawn as one batch (state set up by the first,
// restored by the last) give the same picture as the same cubes drawn one by
// one, through the shadow map, base and light passes of a World.
#include <gtest/gtest.h>

#include "WorldTestHelpers.h"

namespace {

// The stage's floor and light over a 10 x 10 grid of small turned cubes.
// batched: the cubes form one batch; otherwise each sets up and restores.
testimg::Image renderGrid(bool batched) {
  wt::Stage s;
  s.world.objects[s.cube]->visible = false;
  const Material material = wt::colouredMaterial(Vector3(0.25f, 0.2f, 0.35f), Vector3(0.5f, 0.7f, 0.9f));
  std::vector<int> cubes;
  for (int j = 0; j < 10; ++j) {
    for (int i = 0; i < 10; ++i) {
      const int index = wt::addCube(s.world, material, Vector3(-2.7f + 0.6f * i, -0.75f + 0.02f * ((i * 7 + j * 3) % 10), -2.7f + 0.6f * j),
                                    Vector3(0.18f, 0.18f + 0.02f * ((i + j) % 5), 0.18f));
      s.world.objects[index]->rotation = Vector3(0, float((i * 37 + j * 11) % 90), 0);
      cubes.push_back(index);
    }
  }
  if (batched) {
    for (size_t k = 0; k < cubes.size(); ++k) {
      Mesh& mesh = *s.world.objects[cubes[k]];
      if (k == 0) {
        mesh.batchFirst = true;
        mesh.restoreState = false;
      } else if (k + 1 == cubes.size()) {
        mesh.setupState = false;
        mesh.batchLast = true;
      } else {
        mesh.setupState = false;
        mesh.restoreState = false;
      }
    }
  }
  wt::clearPicture();
  s.world.render(s.camera.get(), 0, true, 0, false, s.pool.get(), false, false, false, true);
  testgl::drainErrors();
  if (batched) {
    // Only the first mesh of a batch gets buffers on the card.
    EXPECT_TRUE(s.world.objects[cubes[0]]->buffersCreated);
    EXPECT_FALSE(s.world.objects[cubes[1]]->buffersCreated);
  }
  return wt::grab();
}

TEST(MeshDrawBatch, HundredCubesAsOneBatchMatchTheCubesDrawnOneByOne) {
  REQUIRE_WORLD_GL();
  const testimg::Image single = renderGrid(false);
  const testimg::Image batch = renderGrid(true);
  const auto same = testimg::compare(batch, single, testimg::Tolerance{0.5, 16, 0.002});
  EXPECT_TRUE(same.passed) << same.message;
  const auto result = wt::matchesReference(batch, "world_batch_cubes.png");
  EXPECT_TRUE(result.passed) << result.message;
  EXPECT_EQ(rtt::getInt(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB), 0) << "the batch's last mesh restored the state";
}

}  // namespace
