#include "scenes/SceneBordersWithout.h"

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

constexpr int32_t objectIdCount = 410;  // ten more than the objects kept; the extra ones stay unused

// One hit of the beat: rises for 0.6 s from `start`, falls from start + 0.4
// for 1 s, power 2.
float hitAt(float d, float start) { return easeWindowAt(d, start, 0.6f, start + 0.4f, 1.0f, 1.0f, 2.0f); }

}  // namespace

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithout::SceneBordersWithout(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objectIds(objectIdCount, 0),
      flareCount(2),
      noiseA(nullptr),
      noiseB(nullptr),
      noiseC(nullptr),
      cubeCount(400),
      moteCount(75) {
  glowPasses = 8;
  setUpCamera("SceneBordersWithout.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // The sister scene's looks: only stage 0 is drawn.
  Material picture, glow;
  material(picture).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .stage(2, stageAdd, "cubemap.bill")
      .ambient(Vector3(0.4f, 0.74f, 1.82f) * 0.75f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(glow).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .stage(2, stageModulate, "cubemap.bill")
      .ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(1.15f, 0.66f, 0.3f) * 1.5f);

  objectIds[0] = addBackdrop("./models/cube.a3d", picture, glow, Vector3(5, 5, 1) * 6.0f, Vector3(0, 0, 10));

  // The last field's seeding is where the ring's draws start; the ring is
  // closer and shorter than the long boxes of the other scenes.
  noiseA = makeNoiseField(6, 100);
  noiseB = makeNoiseField(6, 101);
  noiseC = makeNoiseField(6, 102);
  addBoxRing(picture, glow, RingShape::nearRing(70));

  // The lattice tumbles freely; one colour family for each run of 100.
  material(picture).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f)
      .texture(0, "hopmet");
  material(glow).ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).texture(0, "hopmet");
  crtSrand(234);
  std::vector<int32_t> cubes;
  addLattice("./models/cube.a3d", LatticeShape::cubes(10, 10, 4, Vector3(4.5f, 4.5f, 1.5f), 186.0f), picture, glow,
             cubes, basePositions);
  for (int32_t n = 0; n < cubeCount; ++n) objectIds[n + 1] = cubes[n];
  material(glow).ambient(Vector3(1, 1, 1) * 0.015f);  // every cube's; the families leave it alone
  ColourFamilies families;
  families.groupSize = 100;
  families.seedBase = 1993;
  families.glowDiffuse = 0.075f;
  families.pictureDiffuse = 0.3f;
  families.pictureAmbient = 0.15f;
  families.narrowDraws = true;
  applyColourFamilies(families, picture, glow, cubes, 0, cubeCount);

  crtSrand(232);
  FlareSpec flares;
  flares.count = flareCount;
  flares.colourRule = FlareSpec::warmFromRaw;
  addFlares(flares);

  // Wine-red motes in tiles of 3 x 3.
  crtSrand(23233);
  DustSpec motes;
  motes.count = moteCount;
  motes.spread = Vector3(9, 9, 2);
  motes.sizeScale = 2.0f;
  motes.alpha = 0.75f;
  motes.colour = Vector3(0.25f, 0.12f, 0.12f);
  motes.tiled = true;
  motes.shadeByDraw = true;
  addDust(motes);

  lightObject = addStandardLight();
  addUsualGlowGroup();
}

SceneBordersWithout::~SceneBordersWithout() = default;

// ===========================================================================
// Per frame
// ===========================================================================
float SceneBordersWithout::spreadE1(float s) { return easeInAt(s, 16.0f, 6.0f); }
float SceneBordersWithout::spreadE2(float s) { return easeInAt(s, 6.0f, 5.0f); }

Vector3 SceneBordersWithout::cubeSamplePoint(const Vector3& b, int32_t n, float e1, float e2, float d) {
  const float k = e1 * 0.01f + 0.002f;
  const float q = e2 * 0.3f;
  // The time term of z is multiplied by 0 on purpose: the cloud does not drift in depth.
  return Vector3(k * b.x + d * 0.034f + 10.0f, q * b.z * 0.7f + k * b.y + n * 0.00003f + 10.0f,
                 d * 0.0f + k * b.z + 10.0f);
}

float SceneBordersWithout::barStart(int32_t i) { return i * 1.875f + 53.4f - 24.0f; }

float SceneBordersWithout::beat(float d) {
  float acc = 0.0f;
  for (int32_t i = 0; i <= 10; ++i) {
    const float o = i * 1.875f;
    acc += hitAt(d, o + 53.4f);
    acc += hitAt(d, o + 54.25f);
  }
  return acc;
}

float SceneBordersWithout::rippleSpacing(float acc, float s, float r) {
  const double pi = 3.141593;
  return static_cast<float>(0.5 * (acc * 5.0 * std::sin(2.0 * s * pi * 1.5 + r * pi)) / (r + 1.0));
}

float SceneBordersWithout::titleStrength(float s) { return easeOutAt(s, 3.0f, 1.5f); }
float SceneBordersWithout::titleSlide(float s) { return easeOutAt(s, 0.0f, 10.0f); }
float SceneBordersWithout::blackness(float s) { return easeOutAt(s, 2.0f, 1.0f); }
float SceneBordersWithout::titleDisorder(float s) { return 1.0f - 0.996f * easeInAt(s, 0.0f, 1.0f, 1.0f, 2.0f); }

void SceneBordersWithout::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float s = sceneSeconds;
  const float d = demoSeconds + 24.0f;

  // The camera rolls wildly and pumps its zoom; it moves only in depth.
  // These write the bound members, so flow charts on them do not last.
  const Vector3 p(d * 0.01234f, d * 0.03234f, d * 0.023345f);
  camera->zoom = noiseA->fractalSum(p, 7) * 0.32f + 0.52f;
  camera->roll = noiseB->fractalSum(p, 7) * 173.2f;
  camera->position.z = noiseC->fractalSum(p, 7) * 6.2f - 10.0f;

  const Vector3 light = orbitLight(lightObject, s * 0.5f);

  // The lattice spreads as the envelopes stretch the sampling.
  const float e1 = spreadE1(s), e2 = spreadE2(s);
  for (int32_t n = 1; n <= cubeCount; ++n) {
    if (Mesh* cube = object(objectIds[n]))
      cube->position = noisePlace(*noiseA, *noiseB, *noiseC, cubeSamplePoint(basePositions[n - 1], n, e1, e2, d), 7,
                                  6, 7, 6.5f);
  }

  flaresFollow(0, flareCount, d, light);

  // The motes drift, and the beat sends a ripple of tile spacing out from
  // the centre.
  driftDust(flareCount, moteCount, noiseA, noiseB, noiseC, s, stepMs, DustDrift{0.1f, 0.1f});
  const float acc = beat(d);
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m) {
    Billboard* mote = world.billboards[flareCount + m];
    const float r = std::sqrt(mote->position.x * mote->position.x + mote->position.y * mote->position.y) * 0.5f;
    savedMotePositions[m] = mote->position;
    mote->tileSpacing = rippleSpacing(acc, s, r);
  }
}

void SceneBordersWithout::render(int32_t timeMs, int32_t stepMs) {
  SceneSkeleton::render(timeMs, stepMs);
  // The positions saved by the frame go back into the motes: the same
  // values, so this has no visible effect.
  for (uint32_t m = 0; m < moteCount && flareCount + m < world.billboards.size(); ++m)
    world.billboards[flareCount + m]->position = savedMotePositions[m];
}

// ===========================================================================
// Overlay: out of black, under the title
// ===========================================================================
void SceneBordersWithout::drawOverlay(float sceneSeconds, float, int32_t) {
  const float s = sceneSeconds;
  const float e3 = titleStrength(s);
  if (e3 == 0.0f) return;  // the overlay ends at 4.5 s
  OverlayScope overlay(OverlayOptions{0.667f});
  const float e5 = blackness(s);
  if (e5 != 0.0f) {
    glColor4f(0.0f, 0.0f, 0.0f, e5);
    screenQuad(1.0f);
  }
  TitleLayers layers;
  layers.texture = texture("ostlb");
  layers.blendDestination = GL_ONE;  // added to the picture
  layers.heightSpread = 2.2f;
  layers.rim = Vector3(0.22f, 0.3f, 0.5f);
  layers.rimAlpha = e3 * 0.5f;
  layers.coreAlpha = e3 * 0.75f;
  drawTitleLayers(layers, *noiseA, *noiseC, titleSlide(s), titleDisorder(s), s);
}
