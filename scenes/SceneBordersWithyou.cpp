#include "scenes/SceneBordersWithyou.h"

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"

const float SceneBordersWithyou::flashStarts[6] = {0.0f, 1.0f, 2.8f, 3.8f, 4.8f, 6.5f};

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithyou::SceneBordersWithyou(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      objects(635, 0),
      billboardGlareCount(2),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      tileCount(0),
      fleckCount(0) {
  glowPasses = 7;
  // ---- 1. camera ----
  setUpCamera("SceneBordersWithyou.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- 2. materials: only stage 0 of the picture is scaled ----
  Material P;  // picture, material slot 0
  Material G;  // glow, material slot 1
  material(P).ambient(Vector3(1, 1, 1) * 0.5f, 0.0f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).stages(3);
  material(P).scale(0, 3.0f, 3.0f);
  material(G).ambient(Vector3(1, 1, 1) * 0.05f).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).stages(3);
  for (Material* m : {&P, &G}) {
    material(*m).stage(0, stageModulate, "planartexture").detail(1, stageModulate, "billbig").cubeMap(2, stageAdd,
                                                                                                       "cubemap.bill");
  }

  // ---- 3. the backdrop ----
  material(P).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.35f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.76f, 0.3f) * 3.5f).ambient(Vector3(1, 1, 1) * 0.15f);
  objects[0] = addBackdrop("./models/cube.a3d", P, G, Vector3(62.5f, 62.5f, 5.0f), Vector3(0, 0, 10));

  // ---- 4. noise fields: the last seeding is where the plates' draws start ----
  tileCount = 625;
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  tileHomes.reserve(tileCount);

  // ---- 5. the ring of plates, one batch; they never move ----
  addBoxRing(P, G);

  // ---- 6. tile looks ----
  material(P).ambient(Vector3(1, 1, 1) * 0.15f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).scale(0, 0.5f, 0.5f);
  material(P).texture(0, "hopmet");
  material(G).texture(0, "hopmet").diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.01f);

  // ---- 7. the sheet: rows y, columns x innermost; three draws each ----
  crtSrand(234);
  LatticeShape sheet;
  sheet.countX = 25;
  sheet.countY = 25;
  sheet.countZ = 1;
  sheet.centre = Vector3(12, 12, 0);
  sheet.width = 0.125f;
  sheet.depth = 0.125f;
  sheet.heightScale = 0.5f;
  std::vector<int32_t> tiles;
  addLattice("./models/cube.a3d", sheet, P, G, tiles, tileHomes);
  for (int32_t n = 0; n < tileCount; ++n) objects[n + 1] = tiles[n];

  // ---- 8. one colour for all tiles: the seed is the same for every index ----
  ColourFamilies colours;
  colours.groupSize = 0;
  colours.seedBase = 1445430;
  colours.glowDiffuse = 0.5f;
  colours.pictureDiffuse = 0.4f;
  colours.pictureAmbient = 0.125f;
  applyColourFamilies(colours, P, G, tiles, 0, tileCount);

  // ---- 9. two glares at the light ----
  crtSrand(232);
  FlareSpec glares;
  glares.count = billboardGlareCount;
  glares.texture = "billbig";
  glares.halfSize = Vector3(8, 2, 5);
  glares.alpha = 0.9f;
  glares.colour = Vector3(1, 1, 1) * 0.65f;
  addFlares(glares);

  // ---- 10. dark blue flecks, billboards 2 to 101 (the tiles' unused
  // billboards are left out: this seeding would overwrite theirs) ----
  fleckCount = 100;
  crtSrand(23233);
  DustSpec flecks;
  flecks.count = fleckCount;
  flecks.spread = Vector3(9, 9, 10);
  flecks.alpha = 0.75f;
  flecks.colour = Vector3(0.08f, 0.11f, 0.3f);
  flecks.tiled = false;
  flecks.tileSpacingDraw = 1.0;
  addDust(flecks);

  // ---- 11. the light and the glow group ----
  lightObject = addStandardLight();
  addUsualGlowGroup();
}

// ===========================================================================
// Per frame
// ===========================================================================
Vector3 SceneBordersWithyou::tilePosition(const Vector3& h, float a, float b, float m) {
  const float k = a * 0.01f;
  const Vector3 v1((k + 0.012f) * h.x + m * 0.034f + 10.0f, b * 0.3f * h.z * 0.7f + (k + 0.012f) * h.y + 10.0f,
                   (k + 0.002f) * h.z + 10.0f);
  const float px = noiseX->fractalSum(v1, 2) * 12.5f;
  const float py = noiseY->fractalSum(v1, 1) * 12.5f;
  const float pz = noiseZ->fractalSum(v1, 2) * 12.5f;
  const Vector3 v2((k + 0.0512f) * px + 20.0f, (k + 0.06712f) * py + 20.0f, (k + 0.0702f) * pz + 20.0f);
  const float x = noiseX->fractalSum(v2, 6) * 6.5f;
  const float y = noiseY->fractalSum(v2, 5) * 6.5f;
  const float z = noiseZ->fractalSum(v2, 6) * 6.5f;
  return Vector3(x, y, z);
}

void SceneBordersWithyou::animate(float sceneSeconds, float demoSeconds, int32_t stepMs) {
  const float t = sceneSeconds + 16.0f;
  const float m = demoSeconds - 5.0f;

  // 1, 2. The camera swings high above the sheet and looks at the origin.
  const Vector3 v = Vector3(0.01234f, 0.03234f, 0.023345f) * m;
  const float x = noiseX->fractalSum(v, 7) * 2.32f;
  const float height = std::fabs(noiseY->fractalSum(v, 7));
  const float z = noiseZ->fractalSum(v, 7) * 2.2f - 10.0f;
  camera->position = Vector3(x, height * height * height * 343.2f, z);
  camera->direction = Vector3(0, 0, 0) - camera->position;

  // 3. The light.
  const Vector3 lightPosition = orbitLight(lightObject, t * 0.5f);

  // 4, 5. The sheet through the two lookups; the envelopes tear it open.
  const float a = easeInAt(t, 12.0f, 6.0f);
  const float b = easeInAt(t, 6.0f, 6.0f);
  for (int32_t i = 1; i <= tileCount; ++i) {
    Mesh* tile = object(objects[i]);
    if (tile) tile->position = tilePosition(tileHomes[i - 1], a, b, m);
  }

  // 6. Glares round the light; their size does not pulse here.
  FlareOrbit orbit;
  orbit.size.y = 0.18f;
  flaresFollow(0, billboardGlareCount, m, lightPosition, orbit);

  // 7. Flecks drift on the flow; a negative step takes them back.
  DustDrift drift;
  drift.sampleScale = 0.15f;
  drift.zScale = 0.75f;
  driftDust(billboardGlareCount, fleckCount, noiseX, noiseY, noiseZ, t, stepMs, drift);
}

// ===========================================================================
// Overlay: the six flashes
// ===========================================================================
float SceneBordersWithyou::flash(float s) {
  // The flash from 0 always counts; the others once s is past their start.
  const float f = beatSum(s, flashStarts + 1, 5, 0.75f);
  return f * f * f * f;
}

void SceneBordersWithyou::drawOverlay(float sceneSeconds, float, int32_t) {
  const float t = sceneSeconds + 16.0f;
  const float value = flash(t - 16.0f);  // the seconds since the scene began
  if (value != 0.0f) drawFlash(1.0f, 1.0f, 1.0f, value, 0.5f);  // above 1 after overlaps: GL clamps it
}
