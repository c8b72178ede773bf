// Vector3: the operations that are more than one line.
#include "foundation/Vector3.h"

#include <cmath>

float Vector3::length() const { return std::sqrt(x * x + y * y + z * z); }

float Vector3::lengthSquared() const { return x * x + y * y + z * z; }

float Vector3::lengthSquared(const Vector3& next, const Vector3& afterNext) const {
  // Summed in storage order, one float after the other, as the nine-float
  // walk does.
  float sum = x * x;
  sum += y * y;
  sum += z * z;
  sum += next.x * next.x;
  sum += next.y * next.y;
  sum += next.z * next.z;
  sum += afterNext.x * afterNext.x;
  sum += afterNext.y * afterNext.y;
  sum += afterNext.z * afterNext.z;
  return sum;
}

Vector3 Vector3::normalized() const {
  float l = std::sqrt(x * x + y * y + z * z);
  if (l == 0.0f) l = 1e-08f;  // keeps a zero vector at zero instead of NaN
  const float inverse = 1.0f / l;
  return Vector3(x * inverse, y * inverse, z * inverse);
}

void Vector3::setLength(float target) {
  const float l = std::sqrt(x * x + y * y + z * z);
  const float factor = target / (l + 1e-06f);  // bias kept: result slightly short of target
  x *= factor;
  y *= factor;
  z *= factor;
}

Vector3 Vector3::rotatedAroundAxisIndex(int axis, float angle) const {
  const float c = std::cos(angle);
  const float s = std::sin(angle);
  Vector3 r;
  switch (axis) {
    case 0:
      r.x = x;
      r.y = c * y + s * z;
      r.z = c * z - s * y;
      break;
    case 1:
      r.y = y;
      r.x = c * x + s * z;
      r.z = c * z - s * x;
      break;
    case 2:
      r.z = z;
      r.x = c * x - s * y;
      r.y = c * y + s * x;
      break;
    default:
      break;  // left unset; callers only pass 0, 1 and 2
  }
  return r;
}

Vector3 Vector3::rotatedAround(const Vector3& u, float angle) const {
  const float c = std::cos(angle);
  const float s = std::sin(angle);
  const float d = dot(u, *this);
  Vector3 r;
  r.x = u.x * d + ((u.y * u.y + u.z * u.z) * x - (u.y * y + u.z * z) * u.x) * c + (u.y * z - u.z * y) * s;
  r.y = u.y * d + ((u.z * u.z + u.x * u.x) * y - (u.z * z + u.x * x) * u.y) * c + (u.z * x - u.x * z) * s;
  r.z = u.z * d + ((u.x * u.x + u.y * u.y) * z - (u.x * x + u.y * y) * u.z) * c + (u.x * y - u.y * x) * s;
  return r;
}

Vector3 Vector3::projectedOn(const Vector3& onto) const { return projectedOn(onto, onto.lengthSquared()); }

Vector3 Vector3::projectedOn(const Vector3& onto, float ontoLengthSquared) const {
  return onto * (dot(*this, onto) / ontoLengthSquared);
}

float dot(const Vector3& a, const Vector3& b) {
  const long double sum = static_cast<long double>(a.x) * b.x + static_cast<long double>(a.y) * b.y +
                          static_cast<long double>(a.z) * b.z;
  return static_cast<float>(sum);
}

Vector3 cross(const Vector3& a, const Vector3& b) {
  return Vector3(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}
