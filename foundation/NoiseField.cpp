// NoiseField: table set-up from the global generator, and the sampling.
#include "foundation/NoiseField.h"

#include <cmath>
#include <utility>

#include "foundation/Random.h"

const int NoiseField::gradientTable[36] = {
    0, 1, 1,  0, 1, -1,  0, -1, 1,  0, -1, -1,  //
    1, 0, 1,  1, 0, -1,  -1, 0, 1,  -1, 0, -1,  //
    1, 1, 0,  1, -1, 0,  -1, 1, 0,  -1, -1, 0,
};

namespace {

// Float to 32-bit integer, truncating toward zero. Values outside the range
// (and NaN) give INT32_MIN, as the processor's own conversion does, instead
// of undefined behaviour.
inline int32_t truncateToInt32(float v) {
  if (v > -2147483648.0f && v < 2147483648.0f) return static_cast<int32_t>(v);
  return INT32_MIN;
}

// Wrapped cell number: i & mask for i ≥ 0, −((−i) & mask) below zero, so
// negative cells stay negative. Done in unsigned arithmetic so that INT32_MIN
// wraps as two's complement does.
inline int32_t wrapCell(int32_t i, int32_t mask) {
  const uint32_t m = static_cast<uint32_t>(mask);
  if (i >= 0) return static_cast<int32_t>(static_cast<uint32_t>(i) & m);
  const uint32_t magnitude = (0u - static_cast<uint32_t>(i)) & m;
  return -static_cast<int32_t>(magnitude);
}

// Sum of two 32-bit integers with two's complement wrap-around.
inline int32_t add32(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t tableIndex(int32_t k, int32_t mask) {
  return static_cast<int32_t>(static_cast<uint32_t>(k) & static_cast<uint32_t>(mask));
}

inline float fade(float t) { return ((t * 6.0f - 15.0f) * t + 10.0f) * (t * t * t); }

}  // namespace

NoiseField::NoiseField(int bits, uint32_t seed) {
  if (bits < 1) bits = 1;  // 2 << (bits − 1) needs bits ≥ 1
  if (bits > 24) bits = 24;
  size = 2 << (bits - 1);
  mask = size - 1;
  gradients.assign(2 * size, Vector3());
  gradientIndex.assign(2 * size, 0);
  permutationA.assign(2 * size, 0);
  permutationB.assign(2 * size, 0);

  // Reseeds the global generator: the scene's later draws continue this
  // sequence, so the order of draws below is fixed.
  crtSrand(seed);
  for (int32_t i = 0; i < size; ++i) {
    gradientIndex[i] = (crtRand() % 12) * 3;
    permutationA[i] = i;
    permutationB[i] = i;
  }
  for (int32_t i = 0; i < size; ++i) {
    int32_t j = crtRand() & mask;
    std::swap(permutationA[i], permutationA[j]);
    j = crtRand() & mask;
    std::swap(permutationB[i], permutationB[j]);
  }
}

float NoiseField::sample(const Vector3& point) {
  const float x = point.x, y = point.y, z = point.z;
  int32_t ix = truncateToInt32(x);
  int32_t iy = truncateToInt32(y);
  int32_t iz = truncateToInt32(z);
  // The absolute value mirrors the noise at each axis through the origin; wanted.
  const float fx = std::fabs(x - static_cast<float>(ix));
  const float fy = std::fabs(y - static_cast<float>(iy));
  const float fz = std::fabs(z - static_cast<float>(iz));
  const float gx = fx - 1.0f, gy = fy - 1.0f, gz = fz - 1.0f;

  ix = wrapCell(ix, mask);
  iy = wrapCell(iy, mask);
  iz = wrapCell(iz, mask);

  const float u = fade(fx), v = fade(fy), w = fade(fz);

  const int32_t* pa = permutationA.data();
  const int32_t* pb = permutationB.data();
  const int32_t a = add32(iy, pb[tableIndex(iz, mask)]);
  const int32_t b = add32(ix, pa[tableIndex(a, mask)]);
  const int32_t c = add32(ix, pa[tableIndex(add32(a, 1), mask)]);
  const int32_t d = add32(iy, pb[tableIndex(add32(iz, 1), mask)]);
  const int32_t e = add32(ix, pa[tableIndex(d, mask)]);
  const int32_t f = add32(ix, pa[tableIndex(add32(d, 1), mask)]);

  const int32_t* gi = gradientIndex.data();
  auto G = [&](int32_t k, float p, float q, float r) {
    const int* row = gradientTable + gi[tableIndex(k, mask)];
    return row[0] * p + row[1] * q + row[2] * r;
  };

  const float n00 = (1.0f - u) * G(b, fx, fy, fz) + u * G(add32(b, 1), gx, fy, fz);
  const float n10 = (1.0f - u) * G(c, fx, gy, fz) + u * G(add32(c, 1), gx, gy, fz);
  const float n01 = (1.0f - u) * G(e, fx, fy, gz) + u * G(add32(e, 1), gx, fy, gz);
  const float n11 = (1.0f - u) * G(f, fx, gy, gz) + u * G(add32(f, 1), gx, gy, gz);

  return w * (n01 * (1.0f - v) + n11 * v) + (1.0f - w) * (n00 * (1.0f - v) + n10 * v);
}

float NoiseField::fractalSum(const Vector3& point, int octaves) {
  float sum = 0.0f;
  float amplitude = 1.0f;
  workPoint = point;
  for (int i = 0; i < octaves; ++i) {
    sum += sample(workPoint) * amplitude;
    workPoint *= 2.0f;
    amplitude *= 0.5f;
  }
  return sum;
}

float NoiseField::fractalAbsSum(const Vector3& point, int octaves) {
  float sum = 0.0f;
  float amplitude = 1.0f;
  workPoint = point;
  for (int i = 0; i < octaves; ++i) {
    sum += std::fabs(sample(workPoint) * amplitude);
    workPoint *= 2.0f;
    amplitude *= 0.5f;
  }
  return sum;
}
