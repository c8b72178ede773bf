#include "scenes/SceneBordersWithme.h"

#include <cmath>

#include "core/Demo.h"
#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Billboard.h"
#include "scenes/CubeLattice.h"

namespace {

constexpr int32_t objectTableSize = 50000;  // room for far more than the 641 objects kept
const Vector3 lookAtPoint(0, 0, -2);

float easeInAt(float t, float start, float duration) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeIn(t, 1.0f, 1.0f);
}

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
  // ---- 1. camera ----
  setUpCamera("SceneBordersWithme.camera0", 75.0f, Vector3(0, 0, -10), lookAtPoint);

  // ---- 2. materials: only stage 0 is drawn ----
  Material picture;
  Material glow;
  for (Material* m : {&picture, &glow}) {
    m->stageCount = 1;
    m->stageMode[0] = 1;
    m->stageTexture[0] = texture("planartexture");
    m->stageMode[1] = 1;
    m->stageTexture[1] = texture("billbig");
    m->stageDetail[1] = true;
    m->stageMode[2] = 2;
    m->stageTexture[2] = texture("cubemap.bill");
    m->stageCubeMap[2] = true;
  }
  picture.ambient = Vector3(1, 1, 1) * 0.5f;
  picture.ambient.alpha = 0.0f;
  picture.diffuse = Vector3(1.66f, 0.82f, 0.36f) * 5.1f;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  glow.diffuse = Vector3(2.5f, 1.1f, 0.5f) * 1.5f;

  // ---- 3. the backdrop ----
  picture.ambient = Vector3(0.4f, 0.4f, 1.82f) * 0.75f;
  picture.diffuse = Vector3(0.56f, 0.74f, 1.526f) * 5.1f;
  glow.diffuse = Vector3(1.15f, 0.76f, 0.3f) * 1.5f;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  objects[0] = world.addModel("./models/cube.a3d", picture);
  setGlowMaterial(objects[0], glow);
  if (Mesh* backdrop = object(objects[0])) {
    backdrop->scale = Vector3(36, 36, 6);
    backdrop->position = Vector3(0, 0, 15);
  }

  // ---- 4. noise fields: the last one's seeding is where the plates' draws start ----
  tileCount = 640;
  noiseX = new NoiseField(6, 100);
  noiseY = new NoiseField(6, 101);
  noiseZ = new NoiseField(6, 102);

  // ---- 5. the ring of plates ----
  addPlateRing(*this, 100, picture, glow);

  // ---- 6, 7. the tunnel: 4 x 4 tiles across, 40 deep ----
  picture.ambient = Vector3(1, 1, 1) * 0.5f;
  picture.diffuse = Vector3(1.66f, 0.82f, 0.36f) * 5.1f;
  glow.diffuse = Vector3(2.5f, 1.1f, 0.5f) * 1.5f;
  glow.ambient = Vector3(1, 1, 1) * 0.05f;
  picture.stageTexture[0] = texture("hopmet");
  glow.stageTexture[0] = texture("hopmet");
  crtSrand(234);
  LatticeSpec tunnel;
  tunnel.countX = 4;
  tunnel.countY = 4;
  tunnel.countZ = 40;
  tunnel.centre = Vector3(1.5f, 1.5f, 19.5f);
  tunnel.tumble = 186.0f;
  std::vector<int32_t> tiles;
  addCubeLattice(*this, tunnel, picture, glow, tiles, tileHomes);
  for (int32_t n = 0; n < tileCount; ++n) objects[n + 1] = tiles[n];

  // ---- 8. a colour for each slice of 16, cycling through three ----
  ColourFamilies families;
  families.groupSize = 16;
  families.seedBase = 1990;
  families.glowDiffuse = 0.1f;
  families.glowAmbient = 0.01f;
  families.pictureDiffuse = 0.2f;
  families.pictureAmbient = 0.1f;
  applyColourFamilies(*this, families, picture, glow, tiles);

  // ---- 9. two glares at the light ----
  crtSrand(232);
  for (uint32_t i = 0; i < billboardGlareCount; ++i) {
    Billboard* glare = new Billboard(camera, true);
    glare->texture = texture("billbig");
    glare->halfSize = Vector3(8, 4, 5);
    const double x = randomUnit();
    (void)crtRand();  // the draw for y is wasted
    const double z = randomSigned();
    glare->position = Vector3(static_cast<float>(x * 5.0 + 10.0), 0.0f, static_cast<float>(z * 30.0));
    glare->alpha = 0.9f;
    const double r = randomUnit();
    glare->colour = Vector3(static_cast<float>(r * 0.1 + 0.9), static_cast<float>(r * 0.06 + 0.63),
                            static_cast<float>(r * 0.03 + 0.4)) *
                    0.65f;
    world.billboards.push_back(glare);
  }

  // ---- 10. dark flecks, numbered on from the glares ----
  fleckCount = 300;
  crtSrand(23233);
  for (int32_t f = 0; f < fleckCount; ++f) {
    const uint32_t j = static_cast<uint32_t>(f) + billboardGlareCount;
    Billboard* fleck = new Billboard(camera, true);
    fleck->texture = texture(j % 2 == 0 ? "mustis2" : "mustis5");
    const float s = static_cast<float>(randomSigned() * 0.025 + 0.15);
    fleck->halfSize = Vector3(s, s, 1.0f);
    const double z = randomSigned();  // z first, then y, then x
    const double y = randomSigned();
    const double x = randomSigned();
    fleck->position = Vector3(static_cast<float>(x * 9.0), static_cast<float>(y * 9.0), static_cast<float>(z * 10.0));
    fleck->alpha = 1.0f;
    fleck->colour = Vector3(0, 0, 0);
    fleck->blendMode = 1;
    fleck->castsShadow = true;
    world.billboards.push_back(fleck);
  }

  // ---- 11, 12. the light and the glow group ----
  lightObject = addStandardLight();
  setUsualGlowDefaults();
  registerGlowParameters();
}

SceneBordersWithme::~SceneBordersWithme() {
  delete noiseX;
  delete noiseY;
  delete noiseZ;
}

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

float SceneBordersWithme::glareSwell(float m) {
  Envelope e;
  e.start = 135.5f;
  e.outStart = 137.0f;
  e.duration = 2.0f;
  e.outDuration = 1.5f;
  return e.easeWindow(m, 1.0f, 0.25f);
}

void SceneBordersWithme::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float t = sceneSeconds;
  const float step = static_cast<float>(stepMs) / 1000.0f;
  const float m = demoSeconds + 49.0f;  // the music time of the section

  // 1-3. The camera drifts up and down the tunnel's mouth, zooms in bursts
  // and rolls.
  Vector3 v = Vector3(0.01234f, 0.01444f, 0.01115f) * (m + 30.5f);
  const float burst = std::fabs(noiseX->fractalSum(v, 7));
  camera->zoom = std::pow(burst, 8.0f) * 7.4f + 0.3f;
  camera->position.y = noiseY->fractalSum(v, 7) * 9.2f;
  camera->position.z = noiseZ->fractalSum(v, 7) - 10.0f;
  camera->direction = lookAtPoint - camera->position;
  v *= 0.77f;
  camera->roll = noiseZ->fractalSum(v, 7) * 123.0f;

  // 4. The light rides in the hollow.
  placeLightAimedAtOrigin(lightObject,
                          Vector3(12.5f * std::cos(t * 0.5f), 10.5f * std::sin(t * 0.25f), -9.0f));
  Mesh* light = object(lightObject);
  const Vector3 lightPosition = light ? light->position : Vector3(0, 0, 0);

  // 5, 6. The tiles, placed from scratch each frame.
  const float a = spreadA(t);
  const float b = spreadB(t);
  for (int32_t i = 1; i <= tileCount; ++i) {
    Mesh* tile = object(objects[i]);
    if (!tile) continue;
    const Vector3 p = tileSamplePoint(tileHomes[i - 1], i, a, b, m);
    tile->position = noisePlace(*noiseX, *noiseY, *noiseZ, p, 7, 6, 7, 6.5f);
  }

  // 7. Glares round the light, swelling once.
  const float swell = 1.0f + 2.0f * glareSwell(m);
  for (uint32_t i = 0; i < billboardGlareCount && i < world.billboards.size(); ++i) {
    const float fi = static_cast<float>(i);
    const Vector3 offset(std::sin(fi * 0.14123f + m * 0.2f) * 0.16f, std::cos(m * 0.314f + fi * 0.1823f) * 0.18f,
                         std::cos(std::sin(fi * 0.74342f + m * 0.2f)) * 0.03f);
    world.billboards[i]->position = offset + lightPosition;
    world.billboards[i]->halfSize = Vector3(8, 4, 5) * swell;
  }

  // 8. Flecks drift along the flow; a negative step takes them back.
  for (int32_t f = 0; f < fleckCount && billboardGlareCount + f < world.billboards.size(); ++f) {
    Billboard* fleck = world.billboards[billboardGlareCount + f];
    fleck->timeStep = step;
    fleck->time = t;
    const Vector3 p = fleck->position * 0.1f;
    Vector3 d = noisePlace(*noiseX, *noiseY, *noiseZ, p, 5, 5, 5, 1.0f) * step;
    d.z *= 0.25f;
    fleck->position += d;
  }
}
