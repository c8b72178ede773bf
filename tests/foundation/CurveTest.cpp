#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Curve.h"

namespace {

Vector3 bezier(const Vector3& p0, const Vector3& p1, const Vector3& p2, const Vector3& p3, float u) {
  const float a = 1.0f - u;
  return p0 * (a * a * a) + p1 * (3.0f * a * a * u) + p2 * (3.0f * a * u * u) + p3 * (u * u * u);
}

Curve bentOpenCurve() {
  Curve c(false);
  c.addPoint(0, 0, 0);
  c.addPoint(1, 2, 0);
  c.addPoint(3, 1, 1);
  c.addPoint(4, -1, 2);
  c.computeTangents(false, 0.5f);
  return c;
}

}  // namespace

TEST(Curve, ConstructorTakesClosedAndLoops) {
  Curve open(false), closed(true);
  EXPECT_FALSE(open.closed);
  EXPECT_FALSE(open.loops);
  EXPECT_TRUE(closed.closed);
  EXPECT_TRUE(closed.loops);
  EXPECT_EQ(open.count, 0);
  EXPECT_GE(open.points.capacity(), 1000u);
  EXPECT_GE(open.tangents.capacity(), 1000u);
}

TEST(Curve, AddPointAppendsPointAndZeroTangent) {
  Curve c(false);
  c.addPoint(Vector3(1, 2, 3));
  c.addPoint(4, 5, 6);
  EXPECT_EQ(c.count, 2);
  ASSERT_EQ(c.points.size(), 2u);
  ASSERT_EQ(c.tangents.size(), 2u);
  EXPECT_EQ(c.points[1], Vector3(4, 5, 6));
  EXPECT_EQ(c.tangents[0], Vector3());
  EXPECT_EQ(c.tangents[1], Vector3());
}

TEST(Curve, OpenTangentsAreScaledDifferences) {
  Curve c = bentOpenCurve();
  const std::vector<Vector3>& p = c.points;
  EXPECT_EQ(c.tangents[0], (p[1] - p[0]) * 0.5f);
  EXPECT_EQ(c.tangents[1], (p[2] - p[0]) * 0.5f);
  EXPECT_EQ(c.tangents[2], (p[3] - p[1]) * 0.5f);
  EXPECT_EQ(c.tangents[3], (p[3] - p[2]) * 0.5f);
  EXPECT_EQ(c.tension, 0.5f);
  EXPECT_FALSE(c.normalizeFlag);
}

TEST(Curve, ClosedTangentsWrapAround) {
  Curve c(true);
  c.addPoint(0, 0, 0);
  c.addPoint(1, 0, 0);
  c.addPoint(1, 1, 0);
  c.addPoint(0, 1, 0);
  c.computeTangents(false, 2.0f);
  const std::vector<Vector3>& p = c.points;
  EXPECT_EQ(c.tangents[0], (p[1] - p[3]) * 2.0f);
  EXPECT_EQ(c.tangents[3], (p[0] - p[2]) * 2.0f);
  EXPECT_EQ(c.tangents[1], (p[2] - p[0]) * 2.0f);
}

// The normalise flag is stored but does not change the handles: tension 0.05
// scales them by 0.05 rather than setting their length to 0.05.
TEST(Curve, NormalizeFlagLeavesHandlesScaledByTension) {
  Curve a = bentOpenCurve(), b = bentOpenCurve();
  a.computeTangents(false, 0.05f);
  b.computeTangents(true, 0.05f);
  EXPECT_TRUE(b.normalizeFlag);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(a.tangents[i], b.tangents[i]);
  EXPECT_EQ(b.tangents[1], (b.points[2] - b.points[0]) * 0.05f);
  EXPECT_GT(std::fabs(b.tangents[1].length() - 0.05f), 0.01f);
}

TEST(Curve, ComputeTangentsResetsTravelAndLength) {
  Curve c = bentOpenCurve();
  c.travel = 0.5f;
  c.length = 7.0f;
  c.computeTangents(false, 0.5f);
  EXPECT_EQ(c.travel, 0.0f);
  EXPECT_EQ(c.length, 0.0f);
}

TEST(Curve, TwoPointsOrFewerDoNothing) {
  Curve c(false);
  c.addPoint(0, 0, 0);
  c.addPoint(1, 1, 1);
  c.computeTangents(false, 1.0f);
  EXPECT_EQ(c.tangents[0], Vector3());
  EXPECT_EQ(c.tangents[1], Vector3());
  Vector3 out(9, 9, 9);
  c.evaluate(0.5f, out);
  EXPECT_EQ(out, Vector3(9, 9, 9));
}

TEST(Curve, EvaluatePassesThroughThePoints) {
  Curve c = bentOpenCurve();
  Vector3 out;
  c.evaluate(0.0f, out);
  EXPECT_EQ(out, c.points[0]);
  c.evaluate(1.0f / 3.0f, out);
  EXPECT_NEAR(out.x, c.points[1].x, 1e-5f);
  EXPECT_NEAR(out.y, c.points[1].y, 1e-5f);
  c.evaluate(0.99999994f, out);  // just below 1 reaches the end
  EXPECT_NEAR(out.x, c.points[3].x, 1e-4f);
  EXPECT_NEAR(out.y, c.points[3].y, 1e-4f);
  EXPECT_NEAR(out.z, c.points[3].z, 1e-4f);
}

TEST(Curve, EvaluateAtOneIsTheStart) {
  Curve c = bentOpenCurve();
  Vector3 atZero, atOne, atTwoAndAQuarter, atQuarter;
  c.evaluate(0.0f, atZero);
  c.evaluate(1.0f, atOne);
  EXPECT_EQ(atOne, atZero);
  c.evaluate(2.25f, atTwoAndAQuarter);
  c.evaluate(0.25f, atQuarter);
  EXPECT_EQ(atTwoAndAQuarter, atQuarter);
}

TEST(Curve, OpenCurveOfThreePointsHasTwoSegments) {
  Curve c(false);
  c.addPoint(0, 0, 0);
  c.addPoint(2, 2, 0);
  c.addPoint(4, 0, 1);
  c.computeTangents(false, 0.5f);
  Vector3 out;
  // g = 0.25 · 2 = 0.5: segment 0, u = 0.5.
  c.evaluate(0.25f, out);
  EXPECT_EQ(c.p0, c.points[0]);
  EXPECT_EQ(c.p1, c.points[0] + c.tangents[0]);
  EXPECT_EQ(c.p3, c.points[1]);
  EXPECT_EQ(c.p2, c.points[1] - c.tangents[1]);
  EXPECT_EQ(out, bezier(c.p0, c.p1, c.p2, c.p3, 0.5f));
  // g = 0.75 · 2 = 1.5: segment 1.
  c.evaluate(0.75f, out);
  EXPECT_EQ(c.p0, c.points[1]);
  EXPECT_EQ(c.p3, c.points[2]);
  EXPECT_EQ(out, bezier(c.p0, c.p1, c.p2, c.p3, 0.5f));
  // g = 0.5 · 2 = 1 exactly: the start of segment 1.
  c.evaluate(0.5f, out);
  EXPECT_EQ(out, c.points[1]);
  // Just below the end the next index is clamped to the last point.
  c.evaluate(0.9999f, out);
  EXPECT_EQ(c.p0, c.points[1]);
  EXPECT_EQ(c.p3, c.points[2]);
}

TEST(Curve, ClosedCurveLastSegmentJoinsTheFirstPoint) {
  Curve c(true);
  c.addPoint(0, 0, 0);
  c.addPoint(1, 0, 0);
  c.addPoint(1, 1, 0);
  c.addPoint(0, 1, 0);
  c.computeTangents(false, 0.5f);
  Vector3 out;
  c.evaluate(0.875f, out);  // g = 3.5: from point 3 to point 0
  EXPECT_EQ(c.p0, c.points[3]);
  EXPECT_EQ(c.p3, c.points[0]);
  EXPECT_EQ(out, bezier(c.p0, c.p1, c.p2, c.p3, 0.5f));
  c.evaluate(0.25f, out);
  EXPECT_EQ(out, c.points[1]);
}

TEST(Curve, NegativeParameterStaysInsideThePoints) {
  Curve c = bentOpenCurve();
  Vector3 out;
  c.evaluate(-0.9f, out);
  EXPECT_EQ(c.p0, c.points[0]);
}

TEST(Curve, AdvanceMovesByDistanceOverLength) {
  Curve c = bentOpenCurve();
  c.length = 10.0f;
  Vector3 out, expected;
  c.advance(2.5f, out);
  EXPECT_EQ(c.travel, 0.25f);
  c.evaluate(0.25f, expected);
  EXPECT_EQ(out, expected);
}

TEST(Curve, AdvanceOnAnOpenCurveStopsAtOneWhichIsTheStart) {
  Curve c = bentOpenCurve();
  c.length = 1.0f;
  Vector3 out;
  c.advance(5.0f, out);
  EXPECT_EQ(c.travel, 1.0f);
  EXPECT_EQ(out, c.points[0]);
}

TEST(Curve, AdvanceOnALoopingCurveWraps) {
  Curve c(true);
  c.addPoint(0, 0, 0);
  c.addPoint(1, 0, 0);
  c.addPoint(1, 1, 0);
  c.addPoint(0, 1, 0);
  c.computeTangents(false, 0.5f);
  c.length = 4.0f;
  Vector3 out, expected;
  c.advance(5.0f, out);
  EXPECT_EQ(c.travel, 1.25f);
  c.evaluate(0.25f, expected);
  EXPECT_EQ(out, expected);
}

TEST(Curve, EstimateLengthOfAStraightLine) {
  Curve c(false);
  for (int i = 0; i < 4; ++i) c.addPoint(float(i), 0, 0);
  c.computeTangents(false, 1.0f / 6.0f);  // handles a third of a segment: no backtracking
  int steps = 0;
  const float length = c.estimateLength(&steps);
  EXPECT_EQ(length, c.length);
  // The last chord, at most √0.001 long, is not counted.
  EXPECT_LE(length, 3.0f);
  EXPECT_GT(length, 3.0f - 0.0317f);
  EXPECT_GT(steps, 0);
  EXPECT_EQ(steps % c.count, 0);
}

TEST(Curve, EstimateLengthKeepsGivenSteps) {
  Curve c = bentOpenCurve();
  int steps = 17;
  c.estimateLength(&steps);
  EXPECT_EQ(steps, 17);
  EXPECT_GT(c.length, 0.0f);
}

TEST(Curve, EstimateLengthOfACircle) {
  Curve c(true);
  const int n = 32;
  for (int i = 0; i < n; ++i) {
    const float a = float(i) * 6.2831855f / n;
    c.addPoint(std::cos(a), std::sin(a), 0);
  }
  c.computeTangents(false, 1.0f / 6.0f);  // handle = central difference / 6: a smooth circle
  int steps = 0;
  c.estimateLength(&steps);
  EXPECT_NEAR(c.length, 6.2831855f, 0.04f);
  EXPECT_EQ(steps % n, 0);
}

TEST(Curve, ResampledSpacesPointsEvenly) {
  Curve c(false);
  for (int i = 0; i < 5; ++i) c.addPoint(float(i) * 2.0f, 0, 0);
  const float tension = 1.0f / 6.0f;
  c.computeTangents(true, tension);
  Curve out(false);
  int steps = 16;
  c.resampled(out, &steps);
  ASSERT_GE(out.count, 12);
  ASSERT_LE(out.count, 21);
  EXPECT_EQ(out.points[0], c.points[0]);
  const float target = c.length / 16.0f;
  for (int i = 1; i < out.count; ++i) {
    const float chord = (out.points[i] - out.points[i - 1]).length();
    EXPECT_NEAR(chord, target, 0.1f + 1e-4f) << i;
  }
  EXPECT_TRUE(out.normalizeFlag);
  EXPECT_EQ(out.tension, tension * 5.0f / 16.0f);
}

// On a straight line whose ends start slowly the shortest chord is the very
// first one, δ = 1/(count·100) from the start; the step count follows from it.
TEST(Curve, EstimateLengthStepCountFromTheShortestChord) {
  Curve c(false);
  for (int i = 0; i < 4; ++i) c.addPoint(float(i), 0, 0);
  c.computeTangents(false, 1.0f / 6.0f);
  int steps = 0;
  c.estimateLength(&steps);
  Vector3 start, first;
  c.evaluate(0.0f, start);
  c.evaluate(1.0f / 400.0f, first);
  const float shortest = std::sqrt((first - start).lengthSquared());
  int expected = int(std::pow(4.0f * 256.0f, 0.33333334f) * c.length / shortest);
  expected = expected - expected % 4 + 4;
  EXPECT_EQ(steps, expected);
  EXPECT_GT(steps, 1000);
}
