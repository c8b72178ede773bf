// TileNoise: seamless gradient noise for the generator's organic textures.
//
// A field of period P (a power of two, in lattice cells) repeats after P cells
// along every axis, so sampling it at (u * P, v * P, z) with u, v in [0, 1)
// covers a texture that tiles without a seam. Stretched sampling stays
// seamless as long as each axis scale is a whole multiple of P.
// Values are roughly -1 to 1. Built on the system's NoiseField, whose lattice
// wraps after its table size; only non-negative coordinates are sampled (the
// field mirrors at the origin). Constructing one reseeds the global random
// generator, as NoiseField does.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/NoiseField.h"

class TileNoise {
 public:
  TileNoise(int period, uint32_t seed);

  int period() const { return period_; }

  // One noise value at a lattice-space point with non-negative coordinates.
  float sample(float x, float y, float z) const;

 private:
  int period_;
  mutable NoiseField field_;  // sampling writes the field's scratch members
};

// Fractal sum of `octaves` independent fields: octave k has period
// basePeriod << k and amplitude gain^k. The sum is divided by the sum of the
// amplitudes, so the result stays roughly in -1 to 1.
class TileFractal {
 public:
  TileFractal(int basePeriod, int octaves, uint32_t seed, float gain = 0.5f);

  // u, v in texture units (one tile = 1); z moves through the field.
  float sample(float u, float v, float z = 0.5f) const;
  // Stretched sampling: the u axis gets stretchU times the frequency of v
  // (a whole number keeps the tile seamless).
  float sampleStretched(float u, float v, int stretchU, int stretchV, float z = 0.5f) const;

 private:
  std::vector<TileNoise> fields_;
  float gain_;
};
