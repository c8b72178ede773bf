// Curve: tangents, evaluation, length estimate and resampling.
#include "foundation/Curve.h"

#include <cfloat>
#include <cmath>
#include <cstdint>

namespace {

// Segment index from a segment coordinate g, truncating toward zero. Values
// below zero (negative t) and NaN give 0, so the index never leaves the
// point list; callers pass t ≥ 0.
inline int segmentIndex(float g) {
  if (!(g > 0.0f)) return 0;
  if (g >= 2147483520.0f) return INT32_MAX;
  return static_cast<int>(g);
}

// Float to int, truncating; out of range and NaN give INT32_MIN as the
// processor's own conversion does.
inline int truncateToInt(float v) {
  if (v > -2147483648.0f && v < 2147483648.0f) return static_cast<int>(v);
  return INT32_MIN;
}

}  // namespace

Curve::Curve(bool closed_) : closed(closed_), loops(closed_) {
  points.reserve(1000);
  tangents.reserve(1000);
}

void Curve::addPoint(const Vector3& point) {
  points.push_back(point);
  tangents.push_back(Vector3());
  ++count;
}

void Curve::addPoint(float x, float y, float z) { addPoint(Vector3(x, y, z)); }

void Curve::computeTangents(bool normalize, float tension_) {
  normalizeFlag = normalize;
  tension = tension_;
  travel = 0.0f;
  length = 0.0f;
  if (count <= 2) return;
  const int last = count - 1;
  if (closed) {
    tangents[0] = points[1] - points[last];
    tangents[last] = points[0] - points[last - 1];
  } else {
    tangents[0] = points[1] - points[0];
    tangents[last] = points[last] - points[last - 1];
  }
  for (int i = 1; i < last; ++i) tangents[i] = points[i + 1] - points[i - 1];
  for (int i = 0; i < count; ++i) {
    if (normalize) {
      // A unit copy is made and dropped: handles stay scaled by tension
      // alone, with or without the flag. Kept so; callers pass true.
      Vector3 unit = tangents[i].normalized();
      (void)unit;
    }
    tangents[i] *= tension;
  }
}

void Curve::evaluate(float t, Vector3& out) {
  if (count <= 2) return;
  const float f = t - std::trunc(t);  // t = 1 evaluates as t = 0
  float g;
  int k, next;
  if (closed) {
    g = f * static_cast<float>(count);
    k = segmentIndex(g);
    if (k >= count) k = 0;
    next = k + 1;
    if (next >= count) next = 0;
  } else {
    g = f * static_cast<float>(count - 1);
    k = segmentIndex(g);
    if (k > count - 1) k = count - 1;
    next = k + 1;
    if (next > count - 1) next = count - 1;
  }
  p0 = points[k];
  p1 = p0 + tangents[k];
  p3 = points[next];
  p2 = p3 - tangents[next];
  const float u = g - std::trunc(g);
  const float a = 1.0f - u;
  out = p0 * (a * a * a) + p1 * (3.0f * a * a * u) + p2 * (3.0f * a * u * u) + p3 * (u * u * u);
}

void Curve::advance(float distance, Vector3& out) {
  travel += distance / length;
  if (!loops && travel > 1.0f) travel = 1.0f;
  evaluate(travel, out);
}

float Curve::estimateLength(int* steps) {
  Vector3 last;
  evaluate(0.0f, last);
  float t = 0.0f;
  float sum = 0.0f;
  float shortest = FLT_MAX;
  const float firstDelta = 1.0f / static_cast<float>(count * 100);
  for (;;) {
    float delta = firstDelta;
    float nextT = t + delta;
    Vector3 p = last;
    float chordSquared = 0.0f;
    bool end = false;
    for (;;) {
      nextT = t + delta;
      if (nextT >= 1.0f || nextT == t) {  // the chord reaching 1 is not counted
        end = true;
        break;
      }
      evaluate(nextT, p);
      chordSquared = (p - last).lengthSquared();
      if (chordSquared <= 0.001f) break;
      delta *= 0.5f;
    }
    if (end) break;
    const float chord = std::sqrt(chordSquared);
    sum += chord;
    if (chord < shortest) shortest = chord;
    last = p;
    t = nextT;
  }
  length = sum;
  if (*steps == 0 && count > 0) {
    int s = truncateToInt(std::pow(static_cast<float>(count * 256), 0.33333334f) * length / shortest);
    s = s - s % count + count;
    *steps = s;
  }
  return length;
}

void Curve::resampled(Curve& out, int* steps) {
  estimateLength(steps);
  if (*steps <= 0) return;  // nothing sensible to sample
  const float target = length / static_cast<float>(*steps);
  float step = 1.0f / static_cast<float>(*steps);
  float t = 0.0f;
  Vector3 last;
  evaluate(0.0f, last);
  out.addPoint(last);
  for (;;) {
    Vector3 p = last;
    float candidate = t;
    bool end = false;
    // The step adapts until the chord fits; the bound only stops a step that
    // would swing around the window for ever.
    for (int tries = 0; tries < 1000; ++tries) {
      if (t + step >= 1.0f) {
        end = true;
        break;
      }
      candidate = t + step;
      evaluate(candidate, p);
      const float chord = (p - last).length();
      if (chord > target + 0.1f)
        step *= 0.95f;
      else if (chord < target - 0.1f)
        step *= 1.05f;
      else
        break;
    }
    if (end || candidate == t) break;
    t = candidate;
    out.addPoint(p);
    last = p;
  }
  out.computeTangents(normalizeFlag, tension * static_cast<float>(count) / static_cast<float>(*steps));
}
