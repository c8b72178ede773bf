// NoiseField: seeded 3D gradient noise, the organic motion of every scene.
// Pure maths, no OpenGL. Samples are floats of about −2 to 2; coordinates are
// whatever units the caller samples in (one cell per unit).
//
// Construction reseeds the one global random generator (crtSrand(seed)) and
// draws exactly 3·size numbers from it; code that draws afterwards without
// seeding gets the continuation of that sequence, which scenes rely on.
// Sampling writes scratch state into the object: it is not const and a field
// is not to be shared between threads.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vector3.h"

class NoiseField {
 public:
  // Tables of size = 2 << (bits − 1) entries (scenes use bits 6, so 64).
  // bits is kept within 1..24.
  NoiseField(int bits, uint32_t seed);

  // One noise value at the point:
  //  1. ix, iy, iz = coordinates truncated toward zero; fractions
  //     fx = |x − ix| (likewise y, z) — the absolute value mirrors the noise
  //     at the origin on purpose; gx = fx − 1 (likewise gy, gz).
  //  2. cells wrap as i & mask when i ≥ 0, −((−i) & mask) when negative.
  //  3. fade(t) = ((6t − 15)t + 10)t³; u, v, w = fade(fx), fade(fy), fade(fz).
  //  4. hash (32-bit, every table index & mask):
  //     a = iy + permutationB[iz],   b = ix + permutationA[a], c = ix + permutationA[a + 1],
  //     d = iy + permutationB[iz+1], e = ix + permutationA[d], f = ix + permutationA[d + 1].
  //  5. G(k, p, q, r) = gradient row gradientIndex[k] · (p, q, r);
  //     n00 = (1−u)G(b, fx, fy, fz) + uG(b+1, gx, fy, fz)
  //     n10 = (1−u)G(c, fx, gy, fz) + uG(c+1, gx, gy, fz)
  //     n01 = (1−u)G(e, fx, fy, gz) + uG(e+1, gx, fy, gz)
  //     n11 = (1−u)G(f, fx, gy, gz) + uG(f+1, gx, gy, gz)
  //  6. result = w(n01(1−v) + n11·v) + (1−w)(n00(1−v) + n10·v).
  float sample(const Vector3& point);

  // Σ sample(point·2^i)·0.5^i for i < octaves; 0 for no octaves.
  float fractalSum(const Vector3& point, int octaves);

  // The same, summing the absolute value of each scaled sample.
  float fractalAbsSum(const Vector3& point, int octaves);

  // The constant gradient table: the twelve edge directions of a cube, rows
  // of three, in this order.
  static const int gradientTable[36];

  int32_t size;                        // table entries, a power of two
  int32_t mask;                        // size − 1
  std::vector<Vector3> gradients;      // 2·size entries, allocated and left unused
  std::vector<int32_t> gradientIndex;  // row start in gradientTable (0, 3, ... 33); first size used of 2·size
  std::vector<int32_t> permutationA;   // a permutation of 0..size−1; first size used of 2·size
  std::vector<int32_t> permutationB;   // a second permutation; likewise
  Vector3 workPoint;                   // scratch point of the octave loops
};
