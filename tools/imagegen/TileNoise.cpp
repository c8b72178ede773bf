// TileNoise: seamless noise from NoiseField, and its fractal sums.
#include "TileNoise.h"

#include <cassert>

static int bitsOfPeriod(int period) {
  assert(period > 1 && (period & (period - 1)) == 0);
  int bits = 0;
  while ((1 << bits) < period) ++bits;
  return bits;
}

TileNoise::TileNoise(int period, uint32_t seed) : period_(period), field_(bitsOfPeriod(period), seed) {}

float TileNoise::sample(float x, float y, float z) const {
  // NoiseField's values reach about -2 to 2 at the extremes but mostly stay
  // within -1 to 1; scaled so the texture code sees about the spread of a
  // unit-gradient noise.
  return field_.sample(Vector3(x, y, z)) * 0.9f;
}

TileFractal::TileFractal(int basePeriod, int octaves, uint32_t seed, float gain) : gain_(gain) {
  for (int k = 0; k < octaves; ++k) fields_.emplace_back(basePeriod << k, seed + 7919u * k);
}

float TileFractal::sample(float u, float v, float z) const { return sampleStretched(u, v, 1, 1, z); }

float TileFractal::sampleStretched(float u, float v, int stretchU, int stretchV, float z) const {
  float sum = 0, amplitude = 1, total = 0;
  for (const TileNoise& f : fields_) {
    const float p = static_cast<float>(f.period());
    sum += amplitude * f.sample(u * p * stretchU, v * p * stretchV, z + 0.37f * total);
    total += amplitude;
    amplitude *= gain_;
  }
  return total > 0 ? sum / total : 0.0f;
}
