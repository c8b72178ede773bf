// Angles: half-open arctangent and the two-bone solver.
#include "foundation/Angles.h"

#include <cmath>

float angleOf(float y, float x) {
  if (x == 0.0f) return y < 0.0f ? -1.5707964f : 1.5707964f;
  const float ratio = y / x;
  if (x > 0.0f) return static_cast<float>(std::atan(static_cast<double>(ratio)));
  // x < 0 (and NaN): shifted by the double π, so the range runs to 3π/2.
  return static_cast<float>(std::atan(static_cast<double>(ratio)) + 3.14159265358979);
}

void solveTwoBoneChain(float x, float y, float lengthA, float lengthB, float* elbowAngle, float* baseAngle) {
  const float reach = lengthA + lengthB;
  const float r = std::sqrt(x * x + y * y);
  if (r > reach) {
    x = x / r * reach;
    y = y / r * reach;
  }
  const float elbow = std::acos((x * x + y * y - lengthA * lengthA - lengthB * lengthB) / (2.0f * lengthA * lengthB));
  const float k1 = lengthA + lengthB * std::cos(elbow);
  const float k2 = lengthB * std::sin(elbow);
  const float numerator = k1 * y - k2 * x;
  const float denominator = k1 * x + k2 * y;
  float base;
  if (denominator == 0.0f)
    base = numerator >= 0.0f ? 1.5707964f : -1.5707964f;
  else
    base = angleOf(numerator, denominator);
  *elbowAngle = elbow;
  *baseAngle = base;
}
