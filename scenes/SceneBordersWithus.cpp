#include "scenes/SceneBordersWithus.h"

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Envelope.h"
#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "render/Overlay.h"

// ===========================================================================
// Construction
// ===========================================================================
SceneBordersWithus::SceneBordersWithus(Demo* demo_, const std::string& name_)
    : SceneSkeleton(demo_, name_),
      lightObject(-1),
      noiseX(nullptr),
      noiseY(nullptr),
      noiseZ(nullptr),
      sliverCount(0),
      rows(0),
      columns(0),
      layers(0),
      fleckCount(0),
      glareCount(0),
      paletteSeed(0),
      softShadowMaskBlurLoops(3.0f),
      spareBlurAmount(0.1f) {
  glowPasses = 8;
  // ---- 1. camera ----
  setUpCamera("SceneBordersWithus.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));

  // ---- 2. the two materials ----
  Material& P = picture;  // material slot 0
  Material& G = glow;     // material slot 1
  material(P).ambient(Vector3(1, 1, 1) * 0.5f, 0.0f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f, 1.0f);
  material(P).stages(2).stage(0, stageModulate, "planartexture").cubeMap(1, stageAdd, "cubemap.bill").scale(0, 1, 1);
  P.refractive = false;
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  material(G).stage(0, stageModulate, "solidnoisebump").cubeMap(1, stageAdd, "cubemap.bill").stages(2);
  material(G).mode(2, stageModulate);  // a third stage mode beyond stageCount: never drawn
  G.refractive = false;

  // ---- 3. the wall's size ----
  rows = 250;
  columns = 3;
  layers = 1;
  objects.assign(760, 0);

  // ---- 4. the backdrop, as tall as the wall ----
  material(P).ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.75f).diffuse(Vector3(0.56f, 0.74f, 1.526f) * 5.1f);
  material(G).diffuse(Vector3(1.15f, 0.76f, 0.3f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f);
  objects[0] = addBackdrop("./models/cube.a3d", P, G,
                           Vector3(columns * 0.5f, rows * 0.5f, 1.0f) * 5.0f, Vector3(0, 0, 10));

  // ---- 5. noise fields: the last seeding is where the plates' draws start ----
  sliverCount = rows * layers * columns;
  noiseX = makeNoiseField(6, 100);
  noiseY = makeNoiseField(6, 101);
  noiseZ = makeNoiseField(6, 102);
  sliverHomes.reserve(sliverCount);

  // ---- 6. the ring of long plates, one batch; they never move ----
  RingShape plates;
  plates.ySpread = 20.0f;
  plates.yRadius = 25.0f;
  plates.depthSpread = 3.0f;
  plates.depthBase = 5.0f;
  plates.width = 2.0f;
  addBoxRing(P, G, plates);

  // ---- 7. sliver looks ----
  material(P).ambient(Vector3(1, 1, 1) * 0.5f).diffuse(Vector3(1.66f, 0.64f, 0.36f) * 5.1f).texture(0, "hopmet");
  material(G).diffuse(Vector3(2.5f, 1.1f, 0.5f) * 1.5f).ambient(Vector3(1, 1, 1) * 0.05f).texture(0, "hopmet");

  // ---- 8. the slivers: layer, row, column, with the column innermost ----
  crtSrand(234);
  LatticeShape wall;
  wall.countX = columns;
  wall.countY = rows;
  wall.countZ = layers;
  wall.centre = Vector3(1.0f, 124.5f, 0.0f);
  wall.homeScale = Vector3(0.25f, 0.25f * 0.5f, 0.25f);  // the rows are then halved
  wall.tumbleX = 143.0f;
  wall.tumbleY = 130.0f;
  wall.width = 0.0625f;
  wall.depth = 0.0625f;  // (0 x the two wasted numbers + 1) 0.0625
  wall.heightScale = 0.25f;
  wall.wastedDraws = 2;  // two randomUnit() powers whose products are multiplied by 0
  std::vector<int32_t> slivers;
  addLattice("./models/cube.a3d", wall, P, G, slivers, sliverHomes);
  for (int32_t n = 0; n < sliverCount; ++n) objects[n + 1] = slivers[n];

  // ---- 9. one palette for the whole wall ----
  paletteSeed = 4517;
  recolourSlivers(paletteSeed);

  // ---- 10. two glares at the light ----
  glareCount = 2;
  crtSrand(232);
  FlareSpec glares;
  glares.count = glareCount;
  glares.texture = "billbig";
  glares.halfSize = Vector3(16, 4, 5);
  glares.alpha = 0.9f;
  glares.colour = Vector3(1, 1, 1) * 0.65f;
  addFlares(glares);

  // ---- 11. the slivers' unused billboards are left out: the next step reseeds ----

  // ---- 12. dark flecks, billboards 2 to 301 ----
  fleckCount = 300;
  crtSrand(23233);
  DustSpec flecks;
  flecks.count = static_cast<uint32_t>(fleckCount);
  flecks.spread = Vector3(9, 9, 10);
  flecks.alpha = 1.0f;
  flecks.colour = Vector3(0, 0, 0);
  addDust(flecks);

  // ---- 13. the light: no ambient of its own ----
  lightObject = addStandardLight(0.0f);

  // ---- 14. the glow group, then the soft shadow pair ----
  addUsualGlowGroup();
  addParameter("softShadowMaskBlurAmount", &world.softShadowMaskBlurAmount, 0.001f, 0, 0);
  addParameter("softShadowMaskBlurLoops", &softShadowMaskBlurLoops, 1.0f, 0, 0);
}

void SceneBordersWithus::recolourSlivers(int32_t seed) {
  for (int32_t n = 0; n < sliverCount; ++n) {
    crtSrand(static_cast<uint32_t>(seed));  // every sliver draws the same numbers
    auto three = []() {
      const double a = randomSigned();
      const double b = randomSigned();
      const double c = randomSigned();
      return Vector3(static_cast<float>(a), static_cast<float>(b), static_cast<float>(c));
    };
    const Vector3 g = three();
    glow.diffuse = Vector3(g.x * 2.5f + 2.5f, g.y * 2.5f + 2.5f, g.z * 2.5f + 2.5f) * 1.5f;
    const Vector3 p = three();
    picture.diffuse = Vector3(p.x * 1.5f + 1.5f, p.y * 1.5f + 1.5f, p.z * 1.5f + 1.5f) * 1.5f;
    const Vector3 q = three();
    picture.ambient = Vector3(q.x + 1.0f, q.y + 1.0f, q.z + 1.0f) * 0.1f;
    const Vector3 r = three();
    glow.ambient = Vector3(r.x + 1.0f, r.y + 1.0f, r.z + 1.0f) * 0.05f;
    drawStageOffsets(picture, glow, n);
    applyLooks(objects[n + 1], picture, glow);
  }
}

// ===========================================================================
// Per frame
// ===========================================================================
void SceneBordersWithus::animate(float sceneSeconds, float demoSeconds, int32_t) {
  const float t = sceneSeconds + 13.0f;
  const float m = demoSeconds + 62.0f;

  // 1. The camera zooms, rolls and dollies on the noise. These write the
  // bound members, so flow charts on them have no lasting effect here.
  const Vector3 v = Vector3(0.01234f, 0.03234f, 0.023345f) * m;
  camera->zoom = noiseX->fractalSum(v, 7) * 0.32f + 0.52f;
  camera->roll = noiseY->fractalSum(v, 7) * 173.2f;
  camera->position.z = noiseZ->fractalSum(v, 7) * 6.2f - 10.0f;

  // 2. The soft shadow blur, truncated.
  world.softShadowMaskBlurLoops = static_cast<int>(softShadowMaskBlurLoops);

  // 3. The light circles above.
  const Vector3 lightPosition = orbitLight(lightObject, t * 0.5f);

  // 4, 5. The slivers on the swarm: the envelopes stretch the sampling.
  const float a = easeInAt(t, 12.0f, 6.0f);
  const float b = easeInAt(t, 6.0f, 6.0f);
  placeOnSwarm(objects, 1, sliverHomes, noiseX, noiseY, noiseZ, a, b, m);

  // 6. The glares round the light.
  flaresFollow(0, glareCount, m, lightPosition);
}

// ===========================================================================
// Overlay: the fade in from black
// ===========================================================================
float SceneBordersWithus::fadeFromBlack(float t) { return easeOutAt(t, 13.75f, 3.25f); }

void SceneBordersWithus::drawOverlay(float sceneSeconds, float, int32_t) {
  const float value = fadeFromBlack(sceneSeconds + 13.0f);
  if (value != 0.0f) drawFlash(0.0f, 0.0f, 0.0f, value, 0.5f);
}
