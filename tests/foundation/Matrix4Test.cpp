#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Matrix4.h"

namespace {

// Column-major rotation about z by angle a, then translation t.
void rigid(float a, float tx, float ty, float tz, float out[16]) {
  const float c = std::cos(a), s = std::sin(a);
  const float m[16] = {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, tx, ty, tz, 1};
  matrixCopy(m, out);
}

bool nearIdentity(const float m[16], float tolerance) {
  for (int c = 0; c < 4; ++c)
    for (int r = 0; r < 4; ++r)
      if (std::fabs(m[c * 4 + r] - (c == r ? 1.0f : 0.0f)) > tolerance) return false;
  return true;
}

}  // namespace

TEST(Matrix4, DefaultIsIdentity) {
  Matrix4 m;
  EXPECT_TRUE(nearIdentity(m.data(), 0));
}

TEST(Matrix4, MultiplyIsColumnMajor) {
  float a[16], b[16], out[16];
  for (int i = 0; i < 16; ++i) {
    a[i] = float(i + 1);
    b[i] = float(i * 2 - 7);
  }
  matrixMultiply(a, b, out);
  for (int c = 0; c < 4; ++c)
    for (int r = 0; r < 4; ++r) {
      float sum = 0;
      for (int k = 0; k < 4; ++k) sum += a[k * 4 + r] * b[c * 4 + k];
      EXPECT_EQ(out[c * 4 + r], sum) << "c " << c << " r " << r;
    }
  // A translation applied after a scale: the translation column stays.
  const float scale[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
  const float move[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1};
  matrixMultiply(move, scale, out);
  EXPECT_EQ(out[0], 2.0f);
  EXPECT_EQ(out[12], 5.0f);
  EXPECT_EQ(out[13], 6.0f);
  matrixMultiply(scale, move, out);
  EXPECT_EQ(out[12], 10.0f);
}

TEST(Matrix4, TransposeMovesAllSixteen) {
  float in[16], out[16];
  for (int i = 0; i < 16; ++i) in[i] = float(i);
  matrixTranspose(in, out);
  for (int c = 0; c < 4; ++c)
    for (int r = 0; r < 4; ++r) EXPECT_EQ(out[c * 4 + r], in[r * 4 + c]);
}

TEST(Matrix4, InverseRigidUndoesARigidMatrix) {
  float m[16], inv[16], product[16];
  rigid(0.7f, 3, -2, 5, m);
  matrixInverseRigid(m, inv);
  EXPECT_EQ(inv[3], 0.0f);
  EXPECT_EQ(inv[7], 0.0f);
  EXPECT_EQ(inv[11], 0.0f);
  EXPECT_EQ(inv[15], 1.0f);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(inv[12 + i], -(m[12] * m[i * 4] + m[13] * m[i * 4 + 1] + m[14] * m[i * 4 + 2]));
    for (int j = 0; j < 3; ++j) EXPECT_EQ(inv[i * 4 + j], m[j * 4 + i]);
  }
  matrixMultiply(m, inv, product);
  EXPECT_TRUE(nearIdentity(product, 1e-5f));
  matrixMultiply(inv, m, product);
  EXPECT_TRUE(nearIdentity(product, 1e-5f));
}

TEST(Matrix4, InverseRigidOfAScaledMatrixIsWrong) {
  float m[16], inv[16], product[16];
  rigid(0.3f, 1, 2, 3, m);
  for (int i = 0; i < 12; ++i) m[i] *= 2.0f;  // scale the rotation part
  matrixInverseRigid(m, inv);
  matrixMultiply(m, inv, product);
  EXPECT_FALSE(nearIdentity(product, 1e-3f));
}

TEST(Matrix4, ColumnAndRow) {
  float m[16], out[4];
  for (int i = 0; i < 16; ++i) m[i] = float(i);
  matrixGetColumn(m, out, 2);
  EXPECT_EQ(out[0], 8.0f);
  EXPECT_EQ(out[1], 9.0f);
  EXPECT_EQ(out[2], 10.0f);
  EXPECT_EQ(out[3], 11.0f);
  matrixGetRow(m, out, 1);
  EXPECT_EQ(out[0], 1.0f);
  EXPECT_EQ(out[1], 5.0f);
  EXPECT_EQ(out[2], 9.0f);
  EXPECT_EQ(out[3], 13.0f);
}

TEST(Matrix4, Copy) {
  float in[16], out[16] = {};
  for (int i = 0; i < 16; ++i) in[i] = float(i) * 0.5f;
  matrixCopy(in, out);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(out[i], in[i]);
}
