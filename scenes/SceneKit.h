// SceneKit: the shapes that the production's scenes share, stated as data,
// and built by the helpers of SceneSkeleton (scenes/SceneSkeleton.h). Each
// helper's comment gives the exact order of its random draws: a scene that
// calls them in the order its design tells still draws the system's sequence.
//
// ---- Usage: a scene in outline ----------------------------------------------
//
//   // SceneExample.h
//   class SceneExample : public SceneSkeleton {
//    public:
//     SceneExample(Demo* demo, const std::string& name);   // built for this Demo, never the global
//     void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
//     void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;  // optional
//     int32_t lightObject = -1;
//     NoiseField *noiseX = nullptr, *noiseY = nullptr, *noiseZ = nullptr;  // the skeleton owns them
//   };
//
//   // SceneExample.cpp: the constructor reads as the design's build order.
//   SceneExample::SceneExample(Demo* demo, const std::string& name) : SceneSkeleton(demo, name) {
//     glowPasses = 6;
//     setUpCamera("SceneExample.camera0", 75.0f, Vector3(0, 0, -10), Vector3(0, 0, 0));
//     Material P, G;                                   // picture (slot 0), glow (slot 1)
//     material(P).stages(2).stage(0, stageModulate, "planartexture").cubeMap(1, stageAdd, "cubemap.bill")
//                .ambient(Vector3(0.4f, 0.4f, 1.82f) * 0.75f, 0.0f);   // (rgb, alpha) or (rgb): alpha kept
//     material(G).stages(2).stage(0, stageModulate, "solidnoisebump").cubeMap(1, stageAdd, "cubemap.bill");
//     addBackdrop("./models/cube.a3d", P, G, Vector3(7.5f, 7.5f, 1) * 5.0f, Vector3(0, 0, 10));
//     noiseX = makeNoiseField(6, 100);                 // seeding draws: make them where the design says
//     noiseY = makeNoiseField(6, 101);
//     noiseZ = makeNoiseField(6, 102);
//     addBoxRing(P, G);                                // RingShape for other rings (width: thinner boxes,
//                                                      // RingShape::nearRing(70): the close plates)
//     // Lattices of tumbled models (needles, slivers, sheets, small cubes) and their colours:
//     //   addLattice("./models/cube.a3d", LatticeShape(), P, G, ids, homes);   // LatticeShape::cubes(...)
//     //   applyColourFamilies(families, P, G, ids, 0, count);
//     //   per frame: placeOnSwarm(ids, 1, homes, noiseX, noiseY, noiseZ, e1, e2, T);
//     //          or: position = noisePlace(*noiseX, *noiseY, *noiseZ, p, 6, 7, 6, 6.5f);
//     crtSrand(234);
//     addModelBatch("./models/cube.a3d", 450, P, G, [this](int32_t n, int32_t index, Mesh* cube) {
//       const int r1 = crtRand();                      // draw first: the callback runs for a missing model too
//       if (!cube) return;
//       cube->rotation = ...;
//     });
//     for (int32_t i = 0; i < 450; ++i) { crtSrand(342435); ...; drawStageOffsets(P, G, i); applyLooks(101 + i, P, G); }
//     crtSrand(232);
//     FlareSpec glares;                                // defaults: 2 x "billbig" (8, 4, 5), alpha 0.9
//     glares.texture = "bill_d2ch";
//     addFlares(glares);                               // billboards 0, 1
//     crtSrand(23233);
//     DustSpec dust;                                   // defaults: 300 black motes, spread (9, 9, 10)
//     addDust(dust);                                   // billboards 2 .. 301
//     lightObject = addStandardLight();
//     addUsualGlowGroup();                             // the last step
//   }
//
//   void SceneExample::animate(float S, float demoSeconds, int32_t stepMs) {
//     const float T = demoSeconds + 80.0f;
//     const Vector3 light = orbitLight(lightObject, S * -0.12f + 4.712389f);
//     const float e1 = easeInAt(S, 12.0f, 6.0f);       // envelopes as one expression (foundation/Envelope.h)
//     flaresFollow(0, 2, T, light);                    // FlareOrbit for wider swarms
//     DustDrift drift;
//     drift.sampleScale = 0.033f;
//     drift.zScale = 0.125f;
//     driftDust(2, 300, noiseX, noiseY, noiseZ, S, stepMs, drift);
//   }
//
//   void SceneExample::drawOverlay(float S, float, int32_t) {
//     const float f = beatSum(S, beats, 23, 0.75f);
//     if (f != 0.0f) drawFlash(1, 1, 1, f * f * f * f, 0.5f);   // render/Overlay.h
//     // Titles: { OverlayScope o(options); bindTitleTexture(texture("ks"), GL_ADD); texturedQuad(1.05f); }
//     // Layered titles: { OverlayScope o(options); TitleLayers t; ...; drawTitleLayers(t, *noiseA, *noiseC, b, g, X); }
//   }
//
// Where the pieces live: scenes/SceneSkeleton.h (the helpers), render/MaterialBuilder.h,
// render/Overlay.h, foundation/Envelope.h (easeInAt, easeOutAt, easeWindowAt, beatSum),
// geometry/Mesh.h (StageMode, MeshPass, MaterialSlot). A scene with its own frame calls
// renderGlowSource, renderGlowBlur, renderFinalPicture and drawGlow itself.
//
// Tests state only what is their own with tests/scenes/SceneExpectations.h:
// buildOnce, expectConstructionEndsAt, expectRing, expectFlares, expectDust,
// expectDustDrifted, expectStage, expectColour, expectBatch, expectStandardLight,
// expectLightOnOrbit, expectFlaresAtLight.
#pragma once
#include <GL/glew.h>

#include <cstdint>

#include "foundation/Vector3.h"

// The ring of boxes that stands behind several scenes: `count` boxes around
// the z axis at depth z, one batch of addBox(3, 3, picture, false, true) with
// the glow material in slot 1. Box i (i in radians) with five draws, in this
// order: r1, r2 = randomUnit(), s1, s2 = randomSigned(), then d, which is
// randomUnit() or, with signedDepth, randomSigned():
//   position (sin(i) (r2 xSpread + xRadius), cos(i) (r1 ySpread + yRadius), z)
//   rotation (0, s2 yawSpread, s1 20); scale (width, width, d depthSpread + depthBase)
// The defaults are the far ring of long boxes; nearRing() gives the close,
// short ring of plates of the noise-cube scenes.
struct RingShape {
  float xSpread = 20.0f, xRadius = 35.0f;
  float ySpread = 20.0f, yRadius = 35.0f;
  float depthSpread = 10.0f, depthBase = 15.0f;
  int32_t count = 100;
  float width = 5.0f;  // x and y scale of each box
  float z = 9.0f;
  float yawSpread = 50.0f;
  bool signedDepth = false;  // the fifth draw is randomSigned(), not randomUnit()

  // `count` plates at z = 4: radius 2 r + 20, yaw s 180, depth 2 s + 10.
  static RingShape nearRing(int32_t count) {
    RingShape ring;
    ring.xSpread = ring.ySpread = 2.0f;
    ring.xRadius = ring.yRadius = 20.0f;
    ring.depthSpread = 2.0f;
    ring.depthBase = 10.0f;
    ring.count = count;
    ring.z = 4.0f;
    ring.yawSpread = 180.0f;
    ring.signedDepth = true;
    return ring;
  }
};

// A tumbled lattice of models: countX x countY x countZ of one model file,
// x running innermost, then y, then z, one batch, the glow material in slot
// 1. Element n at lattice cell (x, y, z):
//   home = ((x - centre.x) homeScale.x, (y - centre.y) homeScale.y, (z - centre.z) homeScale.z)
//   position = home
// Draws per element, in this order: r1, r2, r3 = rand(), then `wastedDraws`
// more numbers drawn and dropped, all drawn whether or not the model loaded:
//   rotation ((r2 / 32767 - 0.5) tumbleX - 90, (r1 / 32767 - 0.5) tumbleY, 0), useMatrix true
//   scale (width, (r3 / 32767 0.05 + 0.2) heightScale, depth)
// The defaults are the block of tall thin needles (15 x 15 x 2); cubes()
// gives the unit-spaced lattice of small cubes of the noise-cube scenes.
struct LatticeShape {
  int32_t countX = 15, countY = 15, countZ = 2;
  Vector3 centre = Vector3(7, 7, 0.5f);
  Vector3 homeScale = Vector3(0.25f, 0.25f, 0.25f);
  float tumbleX = 186.0f, tumbleY = 186.0f;
  float width = 0.01875f, depth = 0.01875f;
  float heightScale = 4.5f;
  int32_t wastedDraws = 0;
  int32_t count() const { return countX * countY * countZ; }

  // Cubes one unit apart round `centre`, tumbled by `tumble` degrees about
  // both axes: scale (0.25, r3 / 32767 0.05 + 0.2, 0.25).
  static LatticeShape cubes(int32_t countX, int32_t countY, int32_t countZ, const Vector3& centre, float tumble) {
    LatticeShape shape;
    shape.countX = countX;
    shape.countY = countY;
    shape.countZ = countZ;
    shape.centre = centre;
    shape.homeScale = Vector3(1, 1, 1);
    shape.tumbleX = shape.tumbleY = tumble;
    shape.width = shape.depth = 0.25f;
    shape.heightScale = 1.0f;
    return shape;
  }
};

// Warm colour families over a group of objects. For object i of the group:
//   srand(seedBase + (i / groupSize) mod familyCount), or srand(seedBase) for
//   every object when groupSize is 0 (all then draw the same colour)
//   a, b, c = randomSigned(), in this order
//   glow diffuse    (a 1.65 + 2.5, b 0.85 + 1.1, c 0.34 + 0.5) glowDiffuse
//   picture diffuse (a 1.2 + 1.66, b 0.44 + 0.64, c 0.23 + 0.36) pictureDiffuse
//   picture ambient (a 0.4 + 0.5, b 0.4 + 0.5, c 0.4 + 0.5) pictureAmbient
//   then the four stage-offset draws (picture U, V, glow U, V) of
//   SceneSkeleton::drawStageOffsets, and glow to slot 1, picture to slot 0.
// Alphas and the glow ambient stay as the materials hold them. The colours
// are worked in double and narrowed at the end; with narrowDraws a, b, c are
// narrowed to float first and the colours worked in float, which differs in
// the last bit (the noise-cube scenes' colours are made that way).
struct ColourFamilies {
  int32_t groupSize = 0;
  uint32_t seedBase = 1445430;
  int32_t familyCount = 3;
  float glowDiffuse = 1.0f;
  float pictureDiffuse = 1.0f;
  float pictureAmbient = 1.0f;
  bool narrowDraws = false;
};

// Flares (glares): the sprites that hang round the wandering light, each a
// Billboard(camera, true) with `texture`, `halfSize` and `alpha`, blendMode
// 0 (additive). Draws per flare, in this order: first = rand(), one rand()
// dropped, third = rand(), then one colour draw c = rand():
//   position (first / 32767 5 + 10, 0, 2 (third / 32767 - 0.5) 30)  (the first frame moves it)
//   colour by `colourRule`:
//     fixedColour    `colour`; c is dropped
//     warmFromRaw    (c 0.1 + 0.9, c 0.06 + 0.63, c 0.03 + 0.4) warmScale, c the raw 0..32767
//                    value: the channels land far above 1 and GL clamps them
//     warmFromUnit   the same with c / 32767
struct FlareSpec {
  enum ColourRule { fixedColour, warmFromRaw, warmFromUnit };
  uint32_t count = 2;
  const char* texture = "billbig";
  Vector3 halfSize = Vector3(8, 4, 5);
  float alpha = 0.9f;
  ColourRule colourRule = fixedColour;
  Vector3 colour = Vector3(1, 1, 1) * 0.65f;  // fixedColour
  float warmScale = 0.65f;                    // warmFromRaw, warmFromUnit
};

// How flare i of a group hangs round the light at time u (seconds):
//   (sin(i phaseX + u 0.2) size.x, cos(u 0.314 + i phaseY) size.y, cos(sin(i phaseZ + u 0.2)) size.z)
// added to the light's position. The defaults are the close, breathing swarm.
struct FlareOrbit {
  float phaseX = 0.14123f, phaseY = 0.1823f, phaseZ = 0.74342f;
  Vector3 size = Vector3(0.16f, 0.17999999f, 0.03f);
};

// Dust motes: `count` Billboard(camera, true) appended to the World, the
// texture "mustis2" at an even billboard index and "mustis5" at an odd one,
// blendMode 1 (alpha), castsShadow true: dark specks that shadow what lies
// behind them. Draws per mote, in this order (s: randomSigned, r: randomUnit):
//   size = sizeScale (s 0.025 + 0.15): halfSize (size, size, 1)
//   a, b, c = s, s, s: position (c spread.x, b spread.y, a spread.z + depth)
//   then, only when tileSpacingDraw is not 0: tileSpacing = r tileSpacingDraw
//   then, only when shadeByDraw: colour = colour ((1 - r 0.95) 1.5)
// alpha, colour, tiled as given; tileSpacing 0 unless drawn.
struct DustSpec {
  uint32_t count = 300;
  Vector3 spread = Vector3(9, 9, 10);
  float depth = 0.0f;
  float sizeScale = 1.0f;
  float alpha = 1.0f;
  Vector3 colour = Vector3(0, 0, 0);
  bool tiled = false;
  double tileSpacingDraw = 0.0;  // double: the product is taken in double, as the system does
  bool shadeByDraw = false;
};

// The per-frame drift of dust along a steady noise flow, for each mote:
//   timeStep = stepMs / 1000, time = the scene's time
//   p = position sampleScale
//   d = (X.fractalSum(p, 5), Y.fractalSum(p, 5), Z.fractalSum(p, 5)) stepMs / 1000; d.z *= zScale
//   position += d
// A negative step takes the motes back along the flow. No random draws.
struct DustDrift {
  float sampleScale = 0.1f;
  float zScale = 1.0f;
};

// A title burst into 25 noise-stretched layers (SceneSkeleton::drawTitleLayers).
// g is the disorder: 1 spreads the layers wide, near 0 they lie on each other.
// Seen from about a third of a unit through a 75-degree camera, only the
// middle fifth of the picture fills the screen: title pictures carry their
// lettering small in the centre (tools/imagegen).
struct TitleLayers {
  GLuint texture = 0;
  GLenum blendDestination = GL_ONE_MINUS_SRC_ALPHA;
  float heightSpread = 1.2f;
  Vector3 rim = Vector3(0.66f, 0.9f, 1.5f);
  float rimAlpha = 0.0f;
  float coreAlpha = 0.0f;
};
