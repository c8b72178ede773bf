// Curve: a piecewise cubic through points, Catmull-Rom style, each segment
// held in Bézier form with a tension-scaled central difference as handle.
// The flow chart view draws connections with it and the tube builder sweeps
// along it. The parameter t runs 0..1 over the whole curve; its integer part
// is dropped, so t = 1 is the start again.
//
// Use: construct, addPoint for every point, computeTangents once, then
// evaluate / advance.
#pragma once

#include <vector>

#include "foundation/Vector3.h"

class Curve {
 public:
  explicit Curve(bool closed);

  // Append a point and a zero tangent; `count` rises.
  void addPoint(const Vector3& point);
  void addPoint(float x, float y, float z);

  // Stores both arguments, zeroes `travel` and `length`. With more than two
  // points: closed, tangent[0] = p[1] − p[last], tangent[last] = p[0] − p[last−1];
  // open, tangent[0] = p[1] − p[0], tangent[last] = p[last] − p[last−1];
  // inside, tangent[i] = p[i+1] − p[i−1]; then every tangent times `tension`.
  // `normalize` does not change the result: handles are scaled by `tension`,
  // not set to that length.
  void computeTangents(bool normalize, float tension);

  // The point at t; leaves `out` untouched with two points or fewer.
  // f = t − trunc(t). Closed: g = f·count, k = (int)g (count wraps to 0),
  // next = k+1 (wraps to 0). Open: g = f·(count−1), k = (int)g and next = k+1,
  // both clamped to count−1. With u = g − (int)g:
  // out = (1−u)³p0 + 3(1−u)²u·p1 + 3(1−u)u²·p2 + u³p3, where p0 = points[k],
  // p1 = p0 + tangents[k], p3 = points[next], p2 = p3 − tangents[next].
  void evaluate(float t, Vector3& out);

  // travel += distance / length; clamped to 1 unless the curve loops; then
  // evaluate(travel). An open curve advanced to its end therefore shows its
  // start point (t = 1 is t = 0); kept as it is.
  void advance(float distance, Vector3& out);

  // Arc length by walking t from 0 to 1 in chords of squared length at most
  // 0.001 (each move tries δ = 1/(int)(count·100), then δ/2, δ/4, ...); the
  // chord that reaches t = 1 is not counted. Sets and returns `length`.
  // When *steps is 0 on entry it receives a sample count suited to the
  // curve: (int)((count·256)^0.33333334 · length / shortest chord), made a
  // multiple of count by steps − steps % count + count.
  float estimateLength(int* steps);

  // Fills `out` with points about length / *steps apart (the step adapts by
  // ×0.95 / ×1.05 until the chord is within ±0.1 of that target), then calls
  // out.computeTangents(normalizeFlag, tension·count / *steps).
  void resampled(Curve& out, int* steps);

  std::vector<Vector3> points;    // reserves 1000
  std::vector<Vector3> tangents;  // reserves 1000; same size as points
  bool closed;                    // the last point joins the first
  int count = 0;                  // number of points
  Vector3 p0, p1, p2, p3;         // Bézier control points of the segment last evaluated
  float travel = 0.0f;            // position of advance, 0 to 1
  float length = 0.0f;            // arc length, from estimateLength
  float tension = 0.0f;           // as last given to computeTangents
  bool normalizeFlag = false;     // as last given to computeTangents
  bool loops;                     // advance wraps instead of stopping at 1; the constructor's `closed`
};
