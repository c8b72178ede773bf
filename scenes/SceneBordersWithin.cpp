#include "scenes/SceneBordersWithin.h"

#include <GL/glew.h>

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "render/Overlay.h"

namespace {

constexpr int32_t objectIdCount = 430;  // ten more than the objects kept; the extra ones stay unused

// One hit of the beat: rises for 0.6 s from `start`, falls from start + 0.4
// for 1 s, power 2.
float hitAt(float d, float start) { return easeWindowAt(d, start, 0.6f, start + 0.4f, 1.0f, 1.0f, 2.0f); }

}  // namespace

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithin::SceneBordersWithin(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objectIds(objectIdCount, 0),
      flareCount(2),
      noiseA(nullptr),
      noiseB(nullptr),
      noiseC(nullptr),
      cubeCount(420),
      moteCount(150) {
  glowPasses = 8;
  glowSourceWritesColour = false;  // the glow source's base pass only fills depth
  setUpCamera("SceneBordersWithin.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // Only stage 0 is drawn; stages 1 and 2 stay in the record unused.
  Material picture, glow;
  material(picture).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .stage(2, stageAdd, "cubemap.bill")
      .ambient(Vector3(0.4f, 0.74f, 1.82f) * 0.75f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(glow).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .stage(2, stageModulate, "cubemap.bill")
      .ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(1.15f, 0.66f, 0.3f) * 1.5f);

  objectIds[0] = addBackdrop("./models/cube.a3d", picture, glow, Vector3(2.5f, 6, 1) * 6.0f, Vector3(0, 0, 10));

  // The last field's seeding is where the ring's draws start.
  noiseA = makeNoiseField(6, 111);
  noiseB = makeNoiseField(6, 121);
  noiseC = makeNoiseField(6, 131);
  RingShape ring;
  ring.count = 60;
  addBoxRing(picture, glow, ring);

  // The lattice of cubes, one colour family for each run of 60.
  material(picture).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f)
      .texture(0, "hopmet");
  material(glow).ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).texture(0, "hopmet");
  crtSrand(234);
  std::vector<int32_t> cubes;
  addLattice("./models/cube.a3d", LatticeShape::cubes(5, 12, 7, Vector3(2, 5.5f, 3), 36.0f), picture, glow, cubes,
             basePositions);
  for (int32_t n = 0; n < cubeCount; ++n) objectIds[n + 1] = cubes[n];
  material(glow).ambient(Vector3(1, 1, 1) * 0.01f);  // every cube's; the families leave it alone
  ColourFamilies families;
  families.groupSize = 60;
  families.seedBase = 1993;
  families.glowDiffuse = 0.05f;
  families.pictureDiffuse = 0.1f;
  families.pictureAmbient = 0.05f;
  families.narrowDraws = true;
  applyColourFamilies(families, picture, glow, cubes, 0, cubeCount);

  // Flares at the light; the motes go on from their sequence.
  crtSrand(232);
  FlareSpec flares;
  flares.count = flareCount;
  flares.halfSize = Vector3(8, 4, 5) * 1.5f;
  flares.colourRule = FlareSpec::warmFromRaw;
  addFlares(flares);
  DustSpec motes;
  motes.count = moteCount;
  motes.spread = Vector3(10, 10, 10);
  addDust(motes);

  lightObject = addStandardLight();
  addUsualGlowGroup();
}

SceneBordersWithin::~SceneBordersWithin() = default;

// ===========================================================================
// Per frame
// ===========================================================================
float SceneBordersWithin::spreadE1(float s) { return easeInAt(s, 12.0f, 8.0f); }
float SceneBordersWithin::spreadE2(float s) { return easeInAt(s, 4.5f, 7.5f); }

Vector3 SceneBordersWithin::cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d) {
  const float k = e1 * 0.01f + 0.002f;
  return Vector3(k * b.x + d * 0.034f + 10.0f, e2 * b.z * 0.7f + n * 0.001f + k * b.y + 10.0f,
                 d * 0.02f + k * b.z + 10.0f);
}

float SceneBordersWithin::barStart(int32_t i) { return i * 1.875f + 42.6625f - 34.0f; }

float SceneBordersWithin::beat(float d) {
  float acc = 0.0f;
  for (int32_t i = 0; i <= 32; ++i) {
    const float o = i * 1.875f;
    const float v = hitAt(d, o + 42.6625f);
    const float w = hitAt(d, o + 43.5125f);
    acc += v * 0.9f + w;
  }
  return acc;
}

void SceneBordersWithin::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float d = demoSeconds + 34.0f;  // decorrelates this scene's noise from the others'

  // The camera shakes round its place.
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  camera->position = Vector3(0, 0, -10) + Vector3(noiseA->fractalSum(p, 7) * 3.72f, noiseB->fractalSum(p, 7) * 3.2f,
                                                  noiseC->fractalSum(p, 7) * 5.2f);

  const Vector3 light = orbitLight(lightObject, s * 0.5f);

  // The thread unfolds into a cloud as the envelopes stretch the sampling.
  const float e1 = spreadE1(s), e2 = spreadE2(s);
  for (int32_t n = 1; n <= cubeCount; ++n) {
    if (Mesh* cube = object(objectIds[n]))
      cube->position = noisePlace(*noiseA, *noiseB, *noiseC, cubeSamplePoint(basePositions[n - 1], n, e1, e2, d), 6,
                                  7, 6, 6.5f);
  }

  // The beat tightens the glow and swells the flares.
  const float acc = beat(d);
  glowAmountDrop = static_cast<float>(std::pow(acc, 5.0) * 0.333);
  flaresFollow(0, flareCount, d, light);
  for (uint32_t i = 0; i < flareCount && i < world.billboards.size(); ++i)
    world.billboards[i]->halfSize = Vector3(8, 4, 5) * static_cast<float>(std::pow(acc, 6.0) * 4.25 + 0.75);

  // The motes stay near their depth.
  driftDust(flareCount, moteCount, noiseA, noiseB, noiseC, s, stepMs, DustDrift{0.1f, 0.25f});
}

// ===========================================================================
// Overlay: "mb", then "cd", each out of a white flash
// ===========================================================================
void SceneBordersWithin::drawOverlay(float sceneSeconds, float, int32_t) {
  const float s = sceneSeconds;
  struct Title {
    const char* name;
    float T, U, X;
  };
  for (const Title& title : {Title{"mb", 20.0f, 22.25f, s - 10.0f}, Title{"cd", 23.7f, 25.95f, s - 13.7f}}) {
    const float a = easeInAt(s, title.T, 0.33f);
    const float b = easeInAt(s, title.T, 2.5f);
    const float c = easeOutAt(s, title.U, 0.5f);
    if (a == 0.0f) continue;
    OverlayOptions options;
    options.depth = 0.67f;
    options.alphaBlend = false;  // the flash blends with the function that stands
    OverlayScope overlay(options);
    glColor4f(1.0f - a, 1.0f - a, 1.0f - a, 1.0f - a);
    screenQuad(1.0f);
    TitleLayers layers;
    layers.texture = texture(title.name);
    layers.rimAlpha = c * 0.75f;
    layers.coreAlpha = c * 0.75f;
    const float g = 1.0f - 0.95f * easeInAt(s, title.T, 0.5f, 1.0f, 2.0f);  // settles from 1 to 0.05
    drawTitleLayers(layers, *noiseA, *noiseC, b, g, title.X);
  }
}
