// CubeLatticeExpectations: the checks of the shapes of scenes/CubeLattice.h
// (the lattice, its colour families, the near ring of plates), in the manner
// of SceneExpectations.h: each recomputes what the scene should hold from the
// generator and the formulas, written out here again.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "SceneExpectations.h"
#include "scenes/CubeLattice.h"

namespace scenetest {

// The lattice of `spec` from object `first` on, its draws starting at
// srand(234); `homes` as the scene keeps them. Frames move the cubes but never
// turn or scale them, so this holds after frames too.
inline void expectLattice(const World& world, int first, const LatticeSpec& spec, const std::vector<Vector3>& homes) {
  const int count = spec.countX * spec.countY * spec.countZ;
  ASSERT_EQ(static_cast<int>(homes.size()), count);
  startAt({234, 0});
  int n = 0;
  for (int z = 0; z < spec.countZ; ++z)
    for (int y = 0; y < spec.countY; ++y)
      for (int x = 0; x < spec.countX; ++x, ++n) {
        const int r = crtRand(), s = crtRand(), q = crtRand();
        EXPECT_EQ(homes[n], Vector3(x - spec.centre.x, y - spec.centre.y, z - spec.centre.z)) << "cube " << n;
        const Mesh& cube = *world.objects[first + n];
        EXPECT_NEAR(cube.rotation.x, (s / 32767.0 - 0.5) * spec.tumble - 90, 1e-3) << "cube " << n;
        EXPECT_NEAR(cube.rotation.y, (r / 32767.0 - 0.5) * spec.tumble, 1e-3) << "cube " << n;
        EXPECT_EQ(cube.rotation.z, 0.0f);
        EXPECT_EQ(cube.scale.x, 0.25f);
        EXPECT_NEAR(cube.scale.y, q / 32767.0 * 0.05 + 0.2, 1e-6) << "cube " << n;
        EXPECT_EQ(cube.scale.z, 0.25f);
        EXPECT_TRUE(cube.useMatrix);
      }
  expectBatch(world, first, count);
}

// The colour families of `f` on cubes `which` of the lattice from object
// `first` on, each reseeded as the family says; the stage 0 textures by name.
inline void expectColourFamilies(const World& world, int first, const CubeColourFamilies& f, std::initializer_list<int> which,
                                 const char* texture) {
  for (int n : which) {
    startAt({static_cast<uint32_t>((n / f.groupSize) % 3) + f.seedBase, 0});
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double v1 = randomSigned(), v2 = randomSigned(), v3 = randomSigned(), v4 = randomSigned();
    const Material& p = world.objects[first + n]->materials[0];
    const Material& g = world.objects[first + n]->materials[1];
    EXPECT_NEAR(g.diffuse.x, (a * 1.65 + 2.5) * f.glowDiffuse, 1e-5) << "cube " << n;
    EXPECT_NEAR(g.diffuse.y, (b * 0.85 + 1.1) * f.glowDiffuse, 1e-5) << "cube " << n;
    EXPECT_NEAR(g.diffuse.z, (c * 0.34 + 0.5) * f.glowDiffuse, 1e-5) << "cube " << n;
    EXPECT_FLOAT_EQ(g.ambient.x, f.glowAmbient);
    EXPECT_NEAR(p.diffuse.x, (a * 1.2 + 1.66) * f.pictureDiffuse, 1e-5) << "cube " << n;
    EXPECT_NEAR(p.diffuse.y, (b * 0.44 + 0.64) * f.pictureDiffuse, 1e-5) << "cube " << n;
    EXPECT_NEAR(p.diffuse.z, (c * 0.23 + 0.36) * f.pictureDiffuse, 1e-5) << "cube " << n;
    EXPECT_NEAR(p.ambient.x, (a * 0.4 + 0.5) * f.pictureAmbient, 1e-5) << "cube " << n;
    EXPECT_NEAR(p.ambient.z, (c * 0.4 + 0.5) * f.pictureAmbient, 1e-5) << "cube " << n;
    EXPECT_NEAR(p.stageOffsetU[0], v1 + n * 0.232141, 1e-4) << "cube " << n;
    EXPECT_NEAR(p.stageOffsetV[0], v2 + n * 0.1232141, 1e-4) << "cube " << n;
    EXPECT_NEAR(g.stageOffsetU[0], v3 + n * 0.232141, 1e-4) << "cube " << n;
    EXPECT_NEAR(g.stageOffsetV[0], v4 + n * 0.1232141, 1e-4) << "cube " << n;
    EXPECT_EQ(p.stageTexture[0], textureId(texture));
    EXPECT_EQ(g.stageTexture[0], textureId(texture));
    EXPECT_EQ(world.objects[first + n]->currentMaterial, 0);
  }
}

// The near ring of `count` plates from object `first` on, its draws starting
// at `from`.
inline void expectPlateRing(const World& world, int first, const DrawsFrom& from, int count) {
  startAt(from);
  for (int i = 0; i < count; ++i) {
    const double r1 = randomUnit(), r2 = randomUnit();
    const double s1 = randomSigned(), s2 = randomSigned(), s3 = randomSigned();
    const Mesh& plate = *world.objects[first + i];
    EXPECT_NEAR(plate.position.x, std::sin(i) * (2 * r2 + 20), 1e-4) << "plate " << i;
    EXPECT_NEAR(plate.position.y, std::cos(i) * (2 * r1 + 20), 1e-4) << "plate " << i;
    EXPECT_EQ(plate.position.z, 4.0f);
    EXPECT_EQ(plate.rotation.x, 0.0f);
    EXPECT_NEAR(plate.rotation.y, s2 * 180, 1e-3) << "plate " << i;
    EXPECT_NEAR(plate.rotation.z, s1 * 20, 1e-4) << "plate " << i;
    EXPECT_EQ(plate.scale.x, 5.0f);
    EXPECT_EQ(plate.scale.y, 5.0f);
    EXPECT_NEAR(plate.scale.z, 2 * s3 + 10, 1e-4) << "plate " << i;
    EXPECT_TRUE(plate.useMatrix);
    EXPECT_GT(plate.faceCount, 0);
  }
  expectBatch(world, first, count);
}

}  // namespace scenetest
