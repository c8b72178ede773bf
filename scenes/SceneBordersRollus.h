// SceneBordersRollus: the last scene, on from 232.5 s to the end. A flat
// grid of 320 small slabs comes apart cube by cube into a noise cloud, each
// at its own moment, each spinning by how the noise bends around it. After
// 15 s of scene time a white flash, then the title "ostlb" as 25 wobbling
// layers, and from 20 s a fade to black behind the title.
//
// World units; angles in degrees. The camera and the cubes' moments follow
// the demo clock, the light, the cloud, dust and overlay the scene clock.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"
#include "scenes/SceneSkeleton.h"

class NoiseField;

class SceneBordersRollus : public SceneSkeleton {
 public:
  SceneBordersRollus(Demo* demo, const std::string& name);

  void animate(float sceneSeconds, float demoSeconds, int32_t stepMs) override;
  // Flash, fade and title; nothing (and no random draws) before S passes 15.
  void drawOverlay(float sceneSeconds, float demoSeconds, int32_t stepMs) override;

  // The noise displacement of this scene, v changed in place:
  //   p = (t 0.014 + v.x 0.012 1.2 + 10, cos(v.y 0.42) 3.3 + 10,
  //        sin(v.z 0.02 11.2 + t 0.004112) 8.321 + t 0.00323 + 10)
  //   v = (X.fractalSum(p, 6) 6.5, Y.fractalSum(p, 7) 6.5, Z.fractalSum(p, 6) 6.5)
  void warp(Vector3& v, float t) const;
  // The overlay's strengths at scene time S: flashIn = easeIn(15, 1.5),
  // titleIn = easeIn(15, 10), fadeOut = easeIn(20, 1).
  static float flashIn(float S);
  static float titleIn(float S);
  static float fadeOut(float S);

  int32_t lightObject;                 // object index of the light
  std::vector<int32_t> cubeObjects;    // 321: 0 the slab, 1..320 the cubes
  uint32_t glareCount;                 // 4: billboards 0 to 3 follow the light
  NoiseField* noiseX;                  // NoiseField(6, 108080), owned by the skeleton
  NoiseField* noiseY;                  // NoiseField(6, 15421), owned by the skeleton
  NoiseField* noiseZ;                  // NoiseField(6, 13542), owned by the skeleton
  int32_t cubeCount;                   // 320
  std::vector<Vector3> cubeHomes;      // rest position of each cube
  std::vector<Vector3> rotationHomes;  // filled, not read
  // The cube in work. Their order is part of the design: each spin is a
  // nine-float squared length over the neighbours stored behind it.
  float spinX, spinY, spinZ;           // rotation before scaling by (1 - c)
  Vector3 spareVector;                 // unused, zero
  Vector3 neighbourY;                  // also a noise sample point of the title
  Vector3 neighbourZ;                  // also a noise sample point of the title
  Vector3 neighbourX;
  Vector3 trailingVector;              // unused, zero
  uint32_t dustCount;                  // 300 billboards after the glares
};
