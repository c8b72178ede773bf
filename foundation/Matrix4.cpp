// Matrix4: column-major 4×4 helpers.
#include "foundation/Matrix4.h"

#include <cassert>

void matrixMultiply(const float a[16], const float b[16], float out[16]) {
  assert(out != a && out != b);
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 4; ++r) {
      float sum = 0.0f;
      for (int k = 0; k < 4; ++k) sum += a[k * 4 + r] * b[c * 4 + k];
      out[c * 4 + r] = sum;
    }
  }
}

void matrixTranspose(const float in[16], float out[16]) {
  assert(out != in);
  for (int c = 0; c < 4; ++c)
    for (int r = 0; r < 4; ++r) out[c * 4 + r] = in[r * 4 + c];
}

void matrixInverseRigid(const float in[16], float out[16]) {
  assert(out != in);
  for (int c = 0; c < 3; ++c)
    for (int r = 0; r < 3; ++r) out[c * 4 + r] = in[r * 4 + c];
  out[3] = 0.0f;
  out[7] = 0.0f;
  out[11] = 0.0f;
  out[15] = 1.0f;
  const float tx = in[12], ty = in[13], tz = in[14];
  for (int i = 0; i < 3; ++i) out[12 + i] = -(tx * in[i * 4 + 0] + ty * in[i * 4 + 1] + tz * in[i * 4 + 2]);
}

void matrixGetColumn(const float m[16], float out4[4], int i) {
  for (int k = 0; k < 4; ++k) out4[k] = m[i * 4 + k];
}

void matrixGetRow(const float m[16], float out4[4], int i) {
  for (int k = 0; k < 4; ++k) out4[k] = m[k * 4 + i];
}

void matrixCopy(const float in[16], float out[16]) {
  for (int k = 0; k < 16; ++k) out[k] = in[k];
}
