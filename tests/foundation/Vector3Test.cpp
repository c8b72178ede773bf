#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Color4.h"
#include "foundation/Vector3.h"

namespace {

void expectNear(const Vector3& a, const Vector3& b, float tolerance = 1e-6f) {
  EXPECT_NEAR(a.x, b.x, tolerance);
  EXPECT_NEAR(a.y, b.y, tolerance);
  EXPECT_NEAR(a.z, b.z, tolerance);
}

}  // namespace

TEST(Vector3, DefaultIsZero) {
  Vector3 v;
  EXPECT_EQ(v.x, 0.0f);
  EXPECT_EQ(v.y, 0.0f);
  EXPECT_EQ(v.z, 0.0f);
}

TEST(Vector3, SetAndIndexAccess) {
  Vector3 v;
  v.set(1, 2, 3);
  EXPECT_EQ(v[0], 1.0f);
  EXPECT_EQ(v[1], 2.0f);
  EXPECT_EQ(v[2], 3.0f);
  v[0] = 7;
  v[1] = 8;
  v[2] = 9;
  EXPECT_EQ(v, Vector3(7, 8, 9));
  const Vector3 c(4, 5, 6);
  EXPECT_EQ(c[0] + c[1] + c[2], 15.0f);
}

TEST(Vector3, SelfAssignmentKeepsValue) {
  Vector3 v(1, 2, 3);
  Vector3& alias = v;
  v = alias;
  EXPECT_EQ(v, Vector3(1, 2, 3));
}

TEST(Vector3, ComponentWiseArithmetic) {
  const Vector3 a(1, 2, 3), b(10, 20, 30);
  EXPECT_EQ(a + b, Vector3(11, 22, 33));
  EXPECT_EQ(b - a, Vector3(9, 18, 27));
  Vector3 c = a;
  c += b;
  EXPECT_EQ(c, Vector3(11, 22, 33));
  c -= a;
  EXPECT_EQ(c, b);
  EXPECT_EQ(a * 2.0f, Vector3(2, 4, 6));
  EXPECT_EQ(2.0f * a, Vector3(2, 4, 6));
  c = a;
  c *= 3.0f;
  EXPECT_EQ(c, Vector3(3, 6, 9));
  EXPECT_EQ(-a, Vector3(-1, -2, -3));
}

// Division is a true division: find values where x / s and x * (1 / s)
// differ in the last bit, and check that the operators give the former.
TEST(Vector3, DivisionIsTrueDivision) {
  const float s = 10.0f;
  float differing = 0;
  for (int i = 1; i < 10000 && differing == 0; ++i) {
    volatile float x = float(i) * 0.37f;
    volatile float reciprocal = 1.0f / s;
    if (x / s != x * reciprocal) differing = x;
  }
  ASSERT_NE(differing, 0.0f);
  const Vector3 v(differing, differing, differing);
  const Vector3 q = v / s;
  EXPECT_EQ(q.x, differing / s);
  EXPECT_EQ(q.y, differing / s);
  EXPECT_EQ(q.z, differing / s);
  Vector3 w = v;
  w /= s;
  EXPECT_EQ(w, q);
}

// The sum is carried in extended precision: in plain float arithmetic
// 1e8 + 1 - 1e8 would be 0.
TEST(Vector3, DotUsesExtendedPrecision) {
  const Vector3 a(1e8f, 1.0f, -1e8f), b(1, 1, 1);
  EXPECT_EQ(dot(a, b), 1.0f);
  EXPECT_EQ(dot(Vector3(1, 2, 3), Vector3(4, 5, 6)), 32.0f);
}

TEST(Vector3, Cross) {
  EXPECT_EQ(cross(Vector3(1, 0, 0), Vector3(0, 1, 0)), Vector3(0, 0, 1));
  EXPECT_EQ(cross(Vector3(0, 1, 0), Vector3(0, 0, 1)), Vector3(1, 0, 0));
  // (a.y·b.z − a.z·b.y, a.z·b.x − a.x·b.z, a.x·b.y − a.y·b.x)
  EXPECT_EQ(cross(Vector3(1, 2, 3), Vector3(4, 5, 6)), Vector3(2 * 6 - 3 * 5, 3 * 4 - 1 * 6, 1 * 5 - 2 * 4));
}

TEST(Vector3, LengthAndStandAloneLengthSquared) {
  EXPECT_EQ(Vector3(3, 4, 12).length(), 13.0f);
  EXPECT_EQ(Vector3(3, 4, 12).lengthSquared(), 169.0f);
}

TEST(Vector3, NineFloatLengthSquaredSumsTheNeighbours) {
  const Vector3 v(1, 2, 3), next(4, 5, 6), afterNext(7, 8, 9);
  EXPECT_EQ(v.lengthSquared(next, afterNext), 1.0f + 4 + 9 + 16 + 25 + 36 + 49 + 64 + 81);
  EXPECT_EQ(v.lengthSquared(Vector3(), Vector3()), v.lengthSquared());
}

TEST(Vector3, NormalizedOfZeroIsZero) {
  const Vector3 n = Vector3(0, 0, 0).normalized();
  EXPECT_EQ(n, Vector3(0, 0, 0));
  EXPECT_FALSE(std::isnan(n.x) || std::isnan(n.y) || std::isnan(n.z));
}

TEST(Vector3, NormalizedMultipliesByTheReciprocal) {
  const Vector3 v(3, 4, 0.5f);
  const float l = std::sqrt(3.0f * 3.0f + 4.0f * 4.0f + 0.5f * 0.5f);
  const float inverse = 1.0f / l;
  const Vector3 n = v.normalized();
  EXPECT_EQ(n, Vector3(3 * inverse, 4 * inverse, 0.5f * inverse));
  EXPECT_NEAR(n.length(), 1.0f, 1e-6f);
}

TEST(Vector3, SetLengthOneOfThreeIsJustUnderOne) {
  Vector3 v(3, 0, 0);
  v.setLength(1.0f);
  EXPECT_LT(v.x, 1.0f);
  EXPECT_GT(v.x, 0.9999f);
  EXPECT_EQ(v.x, 3.0f * (1.0f / (3.0f + 1e-06f)));
  EXPECT_EQ(v.y, 0.0f);
  EXPECT_EQ(v.z, 0.0f);
}

TEST(Vector3, SetLengthOfZeroStaysZero) {
  Vector3 v;
  v.setLength(5.0f);
  EXPECT_EQ(v, Vector3(0, 0, 0));
}

TEST(Vector3, SetLengthScalesToTarget) {
  Vector3 v(0, 6, 8);
  v.setLength(5.0f);
  EXPECT_NEAR(v.length(), 5.0f, 1e-5f);
  EXPECT_LT(v.length(), 5.0f);
}

TEST(Vector3, RotatedAroundAxisIndexFormulas) {
  const Vector3 v(1.5f, -2.0f, 0.75f);
  const float a = 0.6f, c = std::cos(a), s = std::sin(a);
  EXPECT_EQ(v.rotatedAroundAxisIndex(0, a), Vector3(v.x, c * v.y + s * v.z, c * v.z - s * v.y));
  EXPECT_EQ(v.rotatedAroundAxisIndex(1, a), Vector3(c * v.x + s * v.z, v.y, c * v.z - s * v.x));
  EXPECT_EQ(v.rotatedAroundAxisIndex(2, a), Vector3(c * v.x - s * v.y, c * v.y + s * v.x, v.z));
}

TEST(Vector3, RotatedAroundAxisIndexQuarterTurns) {
  const float quarter = 1.5707964f;
  expectNear(Vector3(0, 1, 0).rotatedAroundAxisIndex(0, quarter), Vector3(0, 0, -1));
  expectNear(Vector3(1, 0, 0).rotatedAroundAxisIndex(1, quarter), Vector3(0, 0, -1));
  expectNear(Vector3(1, 0, 0).rotatedAroundAxisIndex(2, quarter), Vector3(0, 1, 0));
}

TEST(Vector3, RotatedAroundOtherAxisIndexIsUnset) {
  EXPECT_EQ(Vector3(1, 2, 3).rotatedAroundAxisIndex(3, 0.5f), Vector3(0, 0, 0));
  EXPECT_EQ(Vector3(1, 2, 3).rotatedAroundAxisIndex(-1, 0.5f), Vector3(0, 0, 0));
}

TEST(Vector3, RotatedAroundUnitAxisMatchesRodrigues) {
  const Vector3 u = Vector3(1, 2, 2) / 3.0f;
  const Vector3 v(0.3f, -1.2f, 2.5f);
  const float a = 1.1f;
  // v' = v·cos a + (u × v)·sin a + u·(u·v)·(1 − cos a)
  const Vector3 expected = v * std::cos(a) + cross(u, v) * std::sin(a) + u * (dot(u, v) * (1 - std::cos(a)));
  expectNear(v.rotatedAround(u, a), expected, 1e-5f);
  expectNear(v.rotatedAround(Vector3(0, 0, 1), a), v.rotatedAroundAxisIndex(2, a), 1e-6f);
  expectNear(v.rotatedAround(Vector3(0, 1, 0), a), v.rotatedAroundAxisIndex(1, a), 1e-6f);
  // Axis 0 turns the other way round.
  expectNear(v.rotatedAround(Vector3(1, 0, 0), a), v.rotatedAroundAxisIndex(0, -a), 1e-6f);
}

// For a non-unit axis the cos term is the written one, not v − u(u·v).
TEST(Vector3, RotatedAroundNonUnitAxisUsesTheWrittenCosTerm) {
  const Vector3 u(0, 0, 2), v(1, 1, 1);
  const float a = 0.4f, c = std::cos(a), s = std::sin(a);
  const float d = 2.0f;
  const Vector3 r = v.rotatedAround(u, a);
  EXPECT_NEAR(r.x, 0 * d + ((0 + 4) * 1 - (0 + 2) * 0) * c + (0 * 1 - 2 * 1) * s, 1e-6f);
  EXPECT_NEAR(r.y, 0 * d + ((4 + 0) * 1 - (2 + 0) * 0) * c + (2 * 1 - 0 * 1) * s, 1e-6f);
  EXPECT_NEAR(r.z, 2 * d + ((0 + 0) * 1 - (0 + 0) * 2) * c + (0 - 0) * s, 1e-6f);
}

TEST(Vector3, ProjectedOnStandAlone) {
  EXPECT_EQ(Vector3(1, 1, 0).projectedOn(Vector3(2, 0, 0)), Vector3(1, 0, 0));
  EXPECT_EQ(Vector3(3, 4, 5).projectedOn(Vector3(0, 0, 2)), Vector3(0, 0, 5));
}

TEST(Vector3, ProjectedOnWithNineFloatDenominator) {
  const Vector3 onto(0, 1, 1), v(0, 1, 0);
  // dot 1, denominator 4 instead of |onto|² = 2: half the true projection.
  EXPECT_EQ(v.projectedOn(onto, 4.0f), Vector3(0, 0.25f, 0.25f));
}

TEST(Color4, SetWritesOnlyTheColourChannels) {
  Color4 c(0.1f, 0.2f, 0.3f, 0.4f);
  c.set(1, 0.5f, 0.25f);
  EXPECT_EQ(c.red(), 1.0f);
  EXPECT_EQ(c.green(), 0.5f);
  EXPECT_EQ(c.blue(), 0.25f);
  EXPECT_EQ(c.alpha, 0.4f);
}

TEST(Color4, AssigningAVectorKeepsAlpha) {
  Color4 c(0, 0, 0, 0.7f);
  c = Vector3(1, 0.63f, 0.4f) * 0.5f;
  EXPECT_EQ(c[0], 0.5f);
  EXPECT_EQ(c[1], 0.315f);
  EXPECT_EQ(c[2], 0.2f);
  EXPECT_EQ(c.alpha, 0.7f);
  float rgba[4];
  c.toArray(rgba);
  EXPECT_EQ(rgba[0], 0.5f);
  EXPECT_EQ(rgba[3], 0.7f);
}
