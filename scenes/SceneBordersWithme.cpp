#include "scenes/SceneBordersWithme.h"

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"

namespace {

constexpr int32_t objectTableSize = 50000;  // room for far more than the 641 objects kept
const Vector3 lookAtPoint(0, 0, -2);

}  // namespace

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithme::SceneBordersWithme(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objects(objectTableSize, 0),
      billboardGlareCount(2),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      tileCount(0),
      fleckCount(0) {
  glowPasses = 8;
  setUpCamera("SceneBordersWithme.camera0", 75.0f, Vector3(0, 0, -10), lookAtPoint);

  // Only stage 0 is drawn. The backdrop's colours replace the first ones
  // before anything is built with them.
  Material picture, glow;
  material(picture).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill")
      .ambient(Vector3(1, 1, 1) * 0.5f, 0.0f).diffuse(Vector3(1.66f, 0.82f, 0.36f) * 5.1f);
  material(glow).stages(1).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig")
      .cubeMap(2, stageAdd, "cubemap.bill")
      .ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f);
  material(picture).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.75f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(glow).diffuse(Vector3(1.15f, 0.76f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  objects[0] = addBackdrop("./models/cube.a3d", picture, glow, Vector3(36, 36, 6), Vector3(0, 0, 15));

  // The last field's seeding is where the plates' draws start.
  tileCount = 640;
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  addBoxRing(picture, glow, RingShape::nearRing(100));

  // The tunnel, 4 x 4 across and 40 deep; a colour for each slice of 16,
  // cycling through three.
  material(picture).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.82f, 0.36f) * 5.1f)
      .texture(0, "hopmet");
  material(glow).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f).texture(0, "hopmet");
  crtSrand(234);
  std::vector<int32_t> tiles;
  addLattice("./models/cube.a3d", LatticeShape::cubes(4, 4, 40, Vector3(1.5f, 1.5f, 19.5f), 186.0f), picture, glow,
             tiles, tileHomes);
  for (int32_t n = 0; n < tileCount; ++n) objects[n + 1] = tiles[n];
  material(glow).ambient(Vector3(1, 1, 1) * 0.01f);  // every tile's; the families leave it alone
  ColourFamilies families;
  families.groupSize = 16;
  families.seedBase = 1990;
  families.glowDiffuse = 0.1f;
  families.pictureDiffuse = 0.2f;
  families.pictureAmbient = 0.1f;
  families.narrowDraws = true;
  applyColourFamilies(families, picture, glow, tiles, 0, tileCount);

  crtSrand(232);
  FlareSpec glares;
  glares.count = billboardGlareCount;
  glares.colourRule = FlareSpec::warmFromUnit;
  addFlares(glares);

  // Dark flecks, numbered on from the glares.
  fleckCount = 300;
  crtSrand(23233);
  DustSpec flecks;
  flecks.count = static_cast<uint32_t>(fleckCount);
  flecks.spread = Vector3(9, 9, 10);
  addDust(flecks);

  lightObject = addStandardLight();
  addUsualGlowGroup();
}

SceneBordersWithme::~SceneBordersWithme() = default;

// ===========================================================================
// Per frame
// ===========================================================================
float SceneBordersWithme::spreadA(float t) { return easeInAt(t, 11.5f, 3.0f); }
float SceneBordersWithme::spreadB(float t) { return easeInAt(t, 7.3f, 3.5f); }

Vector3 SceneBordersWithme::tileSamplePoint(const Vector3& h, int32_t i, float a, float b, float m) {
  const float k = a * 0.01f + 0.002f;
  return Vector3(k * h.x + m * 0.034f + 10.0f, b * 0.3f * h.z * 0.7f + k * h.y + i * 0.00003f + 10.0f,
                 k * h.z + 10.0f);
}

float SceneBordersWithme::glareSwell(float m) { return easeWindowAt(m, 135.5f, 2.0f, 137.0f, 1.5f, 1.0f, 0.25f); }

void SceneBordersWithme::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float t = sceneSeconds;
  const float m = demoSeconds + 49.0f;  // the music time of the section

  // The camera drifts up and down the tunnel's mouth, zooms in bursts and
  // rolls; it keeps looking at the same point.
  Vector3 v = Vector3(0.01234f, 0.01444f, 0.01115f) * (m + 30.5f);
  camera->zoom = std::pow(std::fabs(noiseX->fractalSum(v, 7)), 8.0f) * 7.4f + 0.3f;
  camera->position.y = noiseY->fractalSum(v, 7) * 9.2f;
  camera->position.z = noiseZ->fractalSum(v, 7) - 10.0f;
  camera->direction = lookAtPoint - camera->position;
  v *= 0.77f;
  camera->roll = noiseZ->fractalSum(v, 7) * 123.0f;

  const Vector3 light = orbitLight(lightObject, t * 0.5f);

  // The tiles, placed from scratch each frame.
  const float a = spreadA(t), b = spreadB(t);
  for (int32_t i = 1; i <= tileCount; ++i) {
    if (Mesh* tile = object(objects[i]))
      tile->position = noisePlace(*noiseX, *noiseY, *noiseZ, tileSamplePoint(tileHomes[i - 1], i, a, b, m), 7, 6, 7,
                                  6.5f);
  }

  // Glares round the light, swelling once.
  FlareOrbit orbit;
  orbit.size.y = 0.18f;
  flaresFollow(0, billboardGlareCount, m, light, orbit);
  for (uint32_t i = 0; i < billboardGlareCount && i < world.billboards.size(); ++i)
    world.billboards[i]->halfSize = Vector3(8, 4, 5) * (1.0f + 2.0f * glareSwell(m));

  driftDust(billboardGlareCount, static_cast<uint32_t>(fleckCount), noiseX, noiseY, noiseZ, t, stepMs,
            DustDrift{0.1f, 0.25f});
}
