// SceneExpectations: the checks that every scene test shares, so that each
// scene's test states only what is its own. Each check recomputes what the
// scene should hold from the generator and the formulas of the shared shape
// (written out here again, not taken from the kit), starting from a generator
// position given as "seed, then this many draws":
//
//   const auto built = scenetest::buildOnce<SceneBordersMeetus>("bordersMeetus");
//   scenetest::expectConstructionEndsAt(built.stateAfter, 23233, 1200);
//   scenetest::expectRing(s.world, 1, {102, scenetest::noiseDraws(6)}, RingShape());
//   scenetest::expectFlares(s.world, 0, {232, 0}, glareSpec);
//   scenetest::expectDust(s.world, 2, {23233, 0}, dustSpec);
//   scenetest::expectStage(p, 0, stageModulate, "planartexture");
//
// GL is needed for everything that builds a scene (REQUIRE_GL first).
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

#include "SceneTestDemo.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Light.h"
#include "render/World.h"
#include "scenes/SceneKit.h"
#include "texture/TextureStore.h"

namespace scenetest {

// A generator position: srand(seed), then `draws` numbers drawn.
struct DrawsFrom {
  uint32_t seed;
  int draws;
};

inline void startAt(const DrawsFrom& from) {
  crtSrand(from.seed);
  for (int i = 0; i < from.draws; ++i) crtRand();
}

// The numbers that NoiseField(bits, seed) draws after its seeding: three per
// table entry, 2 << (bits - 1) entries.
inline int noiseDraws(int bits) { return 3 * (2 << (bits - 1)); }

// A scene built once per test process, and the generator state its
// constructor left (the generator is set to an unrelated seed first, so the
// scene must seed its own groups).
template <class SceneType>
struct Built {
  SceneType* scene = nullptr;
  uint32_t stateAfter = 0;
};

template <class SceneType>
Built<SceneType>& buildOnce(const char* name) {
  static Built<SceneType> built;
  if (!built.scene) {
    crtSrand(99);
    built.scene = new SceneType(&demo(), name);  // left alive, as the production leaves its scenes
    built.stateAfter = crtRandState();
  }
  return built;
}

// Construction ends exactly `draws` numbers after srand(seed): not one more.
inline void expectConstructionEndsAt(uint32_t state, uint32_t seed, int draws) {
  EXPECT_EQ(state, stateAfter(seed, draws)) << "seed " << seed << ", " << draws << " draws";
  EXPECT_NE(state, stateAfter(seed, draws + 1)) << "one draw too many";
}

inline uint32_t textureId(const char* name) { return demo().textures->findTextureId(name); }

// Stage s of a material: its mode, texture by name, and the two flags.
inline void expectStage(const Material& m, int s, int mode, const char* texture, bool cubeMap = false,
                        bool detail = false) {
  EXPECT_EQ(m.stageMode[s], mode) << "stage " << s;
  EXPECT_EQ(m.stageTexture[s], textureId(texture)) << "stage " << s << " " << texture;
  EXPECT_NE(m.stageTexture[s], noTexture) << texture << " is in the store";
  EXPECT_EQ(m.stageCubeMap[s], cubeMap) << "stage " << s;
  EXPECT_EQ(m.stageDetail[s], detail) << "stage " << s;
}

// A colour as rgb and alpha, to float precision.
inline void expectColour(const Color4& c, const Vector3& rgb, float alpha) {
  EXPECT_FLOAT_EQ(c.x, rgb.x);
  EXPECT_FLOAT_EQ(c.y, rgb.y);
  EXPECT_FLOAT_EQ(c.z, rgb.z);
  EXPECT_FLOAT_EQ(c.alpha, alpha);
}

// Objects first .. first + count - 1 are one batch: the first sets
// batchFirst and keeps its set-up, the last sets batchLast and keeps its
// restore, the ones between do neither.
inline void expectBatch(const World& world, int first, int count) {
  for (int i = 0; i < count; ++i) {
    const Mesh& m = *world.objects[first + i];
    EXPECT_EQ(m.batchFirst, i == 0) << "object " << first + i;
    EXPECT_EQ(m.batchLast, i == count - 1) << "object " << first + i;
    EXPECT_EQ(m.setupState, i == 0) << "object " << first + i;
    EXPECT_EQ(m.restoreState, i == count - 1) << "object " << first + i;
  }
}

// The ring of boxes (see RingShape) from objects `first` on, its draws
// starting at `from`; the glow material's stage 0 texture by name.
inline void expectRing(const World& world, int first, const DrawsFrom& from, const RingShape& shape,
                       const char* glowTexture = nullptr) {
  startAt(from);
  for (int i = 0; i < shape.count; ++i) {
    const double r1 = crtRand() / 32767.0;
    const double r2 = crtRand() / 32767.0;
    const double s1 = (crtRand() / 32767.0 - 0.5) * 2;
    const double s2 = (crtRand() / 32767.0 - 0.5) * 2;
    const double r3 = crtRand() / 32767.0;
    const double d = shape.signedDepth ? (r3 - 0.5) * 2 : r3;
    const Mesh& box = *world.objects[first + i];
    EXPECT_NEAR(box.position.x, std::sin(i) * (r2 * shape.xSpread + shape.xRadius), 1e-4) << "box " << i;
    EXPECT_NEAR(box.position.y, std::cos(i) * (r1 * shape.ySpread + shape.yRadius), 1e-4) << "box " << i;
    EXPECT_EQ(box.position.z, shape.z);
    EXPECT_EQ(box.rotation.x, 0.0f);
    EXPECT_NEAR(box.rotation.y, s2 * shape.yawSpread, 1e-3) << "box " << i;
    EXPECT_NEAR(box.rotation.z, s1 * 20, 1e-4) << "box " << i;
    EXPECT_EQ(box.scale.x, shape.width);
    EXPECT_EQ(box.scale.y, shape.width);
    EXPECT_NEAR(box.scale.z, d * shape.depthSpread + shape.depthBase, 1e-4) << "box " << i;
    EXPECT_TRUE(box.useMatrix);
    EXPECT_GT(box.faceCount, 0);
    if (glowTexture) {
      EXPECT_EQ(box.materials[1].stageTexture[0], textureId(glowTexture)) << "box " << i;
    }
  }
  expectBatch(world, first, shape.count);
}

// The lattice (see LatticeShape): element n is object objectIds[first + n]
// with home homes[n], its draws starting at `from`. Positions are checked
// only while `unmoved`: frames move the elements but never turn or scale them.
inline void expectLattice(const World& world, const std::vector<int32_t>& objectIds, int first,
                          const std::vector<Vector3>& homes, const DrawsFrom& from, const LatticeShape& shape,
                          bool unmoved = true) {
  startAt(from);
  ASSERT_EQ(static_cast<int>(homes.size()), shape.count());
  int n = 0;
  for (int z = 0; z < shape.countZ; ++z)
    for (int y = 0; y < shape.countY; ++y)
      for (int x = 0; x < shape.countX; ++x, ++n) {
        const int r1 = crtRand();
        const int r2 = crtRand();
        const int r3 = crtRand();
        for (int w = 0; w < shape.wastedDraws; ++w) crtRand();
        const Vector3 home((x - shape.centre.x) * shape.homeScale.x, (y - shape.centre.y) * shape.homeScale.y,
                           (z - shape.centre.z) * shape.homeScale.z);
        EXPECT_EQ(homes[n], home) << "element " << n;
        const Mesh& m = *world.objects[objectIds[first + n]];
        if (unmoved) {
          EXPECT_EQ(m.position, home) << "element " << n;
        }
        EXPECT_NEAR(m.rotation.x, (r2 / 32767.0 - 0.5) * shape.tumbleX - 90, 1e-3) << "element " << n;
        EXPECT_NEAR(m.rotation.y, (r1 / 32767.0 - 0.5) * shape.tumbleY, 1e-3) << "element " << n;
        EXPECT_EQ(m.rotation.z, 0.0f);
        EXPECT_FLOAT_EQ(m.scale.x, shape.width) << "element " << n;
        EXPECT_NEAR(m.scale.y, (r3 / 32767.0 * 0.05 + 0.2) * shape.heightScale, 1e-6) << "element " << n;
        EXPECT_FLOAT_EQ(m.scale.z, shape.depth) << "element " << n;
        EXPECT_TRUE(m.useMatrix);
      }
  expectBatch(world, objectIds[first], shape.count());
}

// The colour families (see ColourFamilies) on objectIds[first + i] for the
// objects `which` of the group, each with its own seeding.
inline void expectColourFamilies(const World& world, const std::vector<int32_t>& objectIds, int first,
                                 std::initializer_list<int> which, const ColourFamilies& f) {
  for (int i : which) {
    const uint32_t family = f.groupSize > 0 ? static_cast<uint32_t>((i / f.groupSize) % f.familyCount) : 0u;
    crtSrand(f.seedBase + family);
    const double a = randomSigned(), b = randomSigned(), c = randomSigned();
    const double pu = randomSigned(), pv = randomSigned(), gu = randomSigned(), gv = randomSigned();
    const Mesh& m = *world.objects[objectIds[first + i]];
    const Material& p = m.materials[0];
    const Material& g = m.materials[1];
    EXPECT_NEAR(g.diffuse.x, (a * 1.65 + 2.5) * f.glowDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(g.diffuse.y, (b * 0.85 + 1.1) * f.glowDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(g.diffuse.z, (c * 0.34 + 0.5) * f.glowDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(p.diffuse.x, (a * 1.2 + 1.66) * f.pictureDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(p.diffuse.y, (b * 0.44 + 0.64) * f.pictureDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(p.diffuse.z, (c * 0.23 + 0.36) * f.pictureDiffuse, 1e-4) << "object " << i;
    EXPECT_NEAR(p.ambient.x, (a * 0.4 + 0.5) * f.pictureAmbient, 1e-5) << "object " << i;
    EXPECT_NEAR(p.ambient.y, (b * 0.4 + 0.5) * f.pictureAmbient, 1e-5) << "object " << i;
    EXPECT_NEAR(p.ambient.z, (c * 0.4 + 0.5) * f.pictureAmbient, 1e-5) << "object " << i;
    EXPECT_NEAR(p.stageOffsetU[0], pu + i * 0.232141, 1e-4) << "object " << i;
    EXPECT_NEAR(p.stageOffsetV[0], pv + i * 0.1232141, 1e-4) << "object " << i;
    EXPECT_NEAR(g.stageOffsetU[0], gu + i * 0.232141, 1e-4) << "object " << i;
    EXPECT_NEAR(g.stageOffsetV[0], gv + i * 0.1232141, 1e-4) << "object " << i;
    EXPECT_EQ(m.currentMaterial, 0);
  }
}

// What the colour families leave as the materials held it, on
// objectIds[first + i] for the objects `which`: the glow ambient
// (1, 1, 1) glowAmbient and the stage 0 texture of both looks by name.
inline void expectUnchangedByFamilies(const World& world, const std::vector<int32_t>& objectIds, int first,
                                      std::initializer_list<int> which, float glowAmbient, const char* texture) {
  for (int i : which) {
    const Mesh& m = *world.objects[objectIds[first + i]];
    EXPECT_FLOAT_EQ(m.materials[1].ambient.x, glowAmbient) << "object " << i;
    EXPECT_FLOAT_EQ(m.materials[1].ambient.y, glowAmbient) << "object " << i;
    EXPECT_FLOAT_EQ(m.materials[1].ambient.z, glowAmbient) << "object " << i;
    EXPECT_EQ(m.materials[0].stageTexture[0], textureId(texture)) << "object " << i;
    EXPECT_EQ(m.materials[1].stageTexture[0], textureId(texture)) << "object " << i;
  }
}

// The flares (see FlareSpec) from billboard `first` on, their draws
// starting at `from`. The positions are checked only while `unmoved` (no
// frame has placed them yet).
inline void expectFlares(const World& world, uint32_t first, const DrawsFrom& from, const FlareSpec& spec,
                         bool unmoved = true) {
  startAt(from);
  for (uint32_t i = 0; i < spec.count; ++i) {
    const int a = crtRand();
    crtRand();
    const int b = crtRand();
    const int c = crtRand();
    const Billboard& f = *world.billboards[first + i];
    EXPECT_EQ(f.texture, textureId(spec.texture)) << "flare " << i;
    EXPECT_EQ(f.halfSize, spec.halfSize) << "flare " << i;
    EXPECT_EQ(f.alpha, spec.alpha);
    EXPECT_EQ(f.blendMode, 0);
    EXPECT_FALSE(f.castsShadow);
    if (unmoved) {
      EXPECT_NEAR(f.position.x, a / 32767.0 * 5 + 10, 1e-4) << "flare " << i;
      EXPECT_EQ(f.position.y, 0.0f);
      EXPECT_NEAR(f.position.z, (b / 32767.0 - 0.5) * 2 * 30, 1e-4) << "flare " << i;
    }
    Vector3 colour = spec.colour;
    if (spec.colourRule != FlareSpec::fixedColour) {
      const double v = spec.colourRule == FlareSpec::warmFromRaw ? c : c / 32767.0;
      colour = Vector3(static_cast<float>((v * 0.1 + 0.9) * spec.warmScale),
                       static_cast<float>((v * 0.06 + 0.63) * spec.warmScale),
                       static_cast<float>((v * 0.03 + 0.4) * spec.warmScale));
    }
    const double tolerance = 1e-5 * (1 + std::fabs(colour.x));
    EXPECT_NEAR(f.colour.x, colour.x, tolerance) << "flare " << i;
    EXPECT_NEAR(f.colour.y, colour.y, tolerance) << "flare " << i;
    EXPECT_NEAR(f.colour.z, colour.z, tolerance) << "flare " << i;
  }
}

// The dust (see DustSpec) from billboard `first` on, its draws starting at
// `from`. Positions are checked only while `unmoved`.
inline void expectDust(const World& world, uint32_t first, const DrawsFrom& from, const DustSpec& spec,
                       bool unmoved = true) {
  startAt(from);
  for (uint32_t m = 0; m < spec.count; ++m) {
    const double size = spec.sizeScale * (randomSigned() * 0.025 + 0.15);
    const double a = randomSigned();
    const double b = randomSigned();
    const double c = randomSigned();
    const double spacing = spec.tileSpacingDraw != 0 ? randomUnit() * spec.tileSpacingDraw : 0.0;
    const double shade = spec.shadeByDraw ? (1 - randomUnit() * 0.95) * 1.5 : 1.0;
    const uint32_t j = first + m;
    const Billboard& mote = *world.billboards[j];
    EXPECT_EQ(mote.texture, textureId(j % 2 == 0 ? "mustis2" : "mustis5")) << "mote " << m;
    EXPECT_NEAR(mote.halfSize.x, size, 1e-6) << "mote " << m;
    EXPECT_NEAR(mote.halfSize.y, size, 1e-6);
    EXPECT_EQ(mote.halfSize.z, 1.0f);
    if (unmoved) {
      EXPECT_NEAR(mote.position.x, c * spec.spread.x, 1e-4) << "mote " << m;
      EXPECT_NEAR(mote.position.y, b * spec.spread.y, 1e-4) << "mote " << m;
      EXPECT_NEAR(mote.position.z, a * spec.spread.z + spec.depth, 1e-4) << "mote " << m;
    }
    EXPECT_NEAR(mote.tileSpacing, spacing, 1e-6) << "mote " << m;
    EXPECT_EQ(mote.alpha, spec.alpha);
    EXPECT_NEAR(mote.colour.x, spec.colour.x * shade, 1e-5);
    EXPECT_NEAR(mote.colour.y, spec.colour.y * shade, 1e-5);
    EXPECT_NEAR(mote.colour.z, spec.colour.z * shade, 1e-5);
    EXPECT_EQ(mote.blendMode, 1);
    EXPECT_TRUE(mote.castsShadow);
    EXPECT_EQ(mote.tiled, spec.tiled);
  }
}

// The standard production light at object `index`, ambient (a, a, a, 1).
inline void expectStandardLight(const World& world, int index, float ambient = 0.5f) {
  ASSERT_LT(index, static_cast<int>(world.objects.size()));
  const Light& l = *world.objects[index]->lightRecord;
  EXPECT_TRUE(l.enabled);
  EXPECT_EQ(l.ambient[0], ambient);
  EXPECT_EQ(l.ambient[3], 1.0f);
  EXPECT_EQ(l.diffuse[1], 2.0f);
  EXPECT_EQ(l.specular[2], 0.0f);
  EXPECT_EQ(l.spotExponent, 100.0f);
  EXPECT_EQ(l.spotCutoff, 90.0f);
  EXPECT_EQ(l.constantAttenuation, 0.0f);
  EXPECT_FLOAT_EQ(l.linearAttenuation, 0.01f);
  EXPECT_TRUE(l.castsShadow);
  EXPECT_NE(l.shadowTexture, 0u);
}

// The light object sits on the wandering orbit at angle a (radians), scale
// k, and its Light points at the origin.
inline void expectLightOnOrbit(const World& world, int index, double a, double k = 1.0) {
  const Mesh& light = *world.objects[index];
  EXPECT_NEAR(light.position.x, 12.5 * std::cos(a) * k, 1e-4);
  EXPECT_NEAR(light.position.y, 10.5 * std::sin(a * 0.5) * k, 1e-4);
  EXPECT_EQ(light.position.z, -9.0f);
  const Vector3 p = light.position;
  const double length = std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z);
  EXPECT_NEAR(light.lightRecord->direction.x, -p.x / length, 1e-5);
  EXPECT_NEAR(light.lightRecord->direction.y, -p.y / length, 1e-5);
  EXPECT_NEAR(light.lightRecord->direction.z, -p.z / length, 1e-5);
}

// Flares first .. first + count - 1 hang round the light object at time u
// (see FlareOrbit).
inline void expectFlaresAtLight(const World& world, uint32_t first, uint32_t count, int lightIndex, float u,
                                const FlareOrbit& orbit = FlareOrbit()) {
  const Vector3 light = world.objects[lightIndex]->position;
  for (uint32_t i = 0; i < count; ++i) {
    const double q = u * 0.2;
    const Vector3 at = world.billboards[first + i]->position;
    EXPECT_NEAR(at.x, light.x + std::sin(i * orbit.phaseX + q) * orbit.size.x, 1e-4) << "flare " << i;
    EXPECT_NEAR(at.y, light.y + std::cos(u * 0.314 + i * orbit.phaseY) * orbit.size.y, 1e-4) << "flare " << i;
    EXPECT_NEAR(at.z, light.z + std::cos(std::sin(i * orbit.phaseZ + q)) * orbit.size.z, 1e-4) << "flare " << i;
  }
}

// The positions of billboards first .. first + count - 1, to compare after a frame.
inline std::vector<Vector3> billboardPositions(const World& world, uint32_t first, uint32_t count) {
  std::vector<Vector3> out;
  for (uint32_t i = 0; i < count; ++i) out.push_back(world.billboards[first + i]->position);
  return out;
}

// The motes `which` (counted from billboard `first`) moved from `before` by
// one step of the drift (see DustDrift) through fresh copies of the scene's
// three fields, and carry the step and the time.
inline void expectDustDrifted(const World& world, uint32_t first, const std::vector<Vector3>& before,
                              std::initializer_list<int> which, NoiseField& x, NoiseField& y, NoiseField& z,
                              const DustDrift& drift, int32_t stepMs, float time) {
  const float step = stepMs / 1000.0f;
  for (int m : which) {
    const Billboard& mote = *world.billboards[first + m];
    const Vector3 p = before[m] * drift.sampleScale;
    const Vector3 d(x.fractalSum(p, 5) * step, y.fractalSum(p, 5) * step, z.fractalSum(p, 5) * step * drift.zScale);
    EXPECT_NEAR(mote.position.x, before[m].x + d.x, 1e-5) << "mote " << m;
    EXPECT_NEAR(mote.position.y, before[m].y + d.y, 1e-5) << "mote " << m;
    EXPECT_NEAR(mote.position.z, before[m].z + d.z, 1e-5) << "mote " << m;
    EXPECT_FLOAT_EQ(mote.timeStep, step);
    EXPECT_FLOAT_EQ(mote.time, time);
  }
}

}  // namespace scenetest
