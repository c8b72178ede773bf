// Vector3: three single-precision floats x, y, z, the point and direction type
// of every 3D module. Plain value semantics; a default-constructed vector is
// (0, 0, 0). Angles given to the rotations are radians.
//
// Two operations carry a deliberate quirk of this vector type: its squared
// length, as used by projections, is the sum of nine consecutive floats, the
// vector and the six floats stored behind it. A stand-alone vector has no such
// neighbours, so `lengthSquared()` gives its own three squares, and the
// nine-float form is spelled out with the neighbours passed explicitly
// (`lengthSquared(next, afterNext)`), which is how the camera and the cube
// spin of the last scene use it.
#pragma once

class Vector3 {
 public:
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;

  Vector3() = default;
  Vector3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

  void set(float x_, float y_, float z_) {
    x = x_;
    y = y_;
    z = z_;
  }

  // Component by index: 0 is x, 1 is y, 2 is z. Any other index is a
  // programming error; it is answered with z rather than a stray read.
  float& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
  const float& operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }

  Vector3 operator+(const Vector3& b) const { return Vector3(x + b.x, y + b.y, z + b.z); }
  Vector3 operator-(const Vector3& b) const { return Vector3(x - b.x, y - b.y, z - b.z); }
  Vector3 operator-() const { return Vector3(-x, -y, -z); }
  Vector3& operator+=(const Vector3& b) {
    x += b.x;
    y += b.y;
    z += b.z;
    return *this;
  }
  Vector3& operator-=(const Vector3& b) {
    x -= b.x;
    y -= b.y;
    z -= b.z;
    return *this;
  }
  Vector3 operator*(float s) const { return Vector3(x * s, y * s, z * s); }
  Vector3& operator*=(float s) {
    x *= s;
    y *= s;
    z *= s;
    return *this;
  }
  // A true division of each component, not a multiplication by 1/s: the two
  // differ in the last bit.
  Vector3 operator/(float s) const { return Vector3(x / s, y / s, z / s); }
  Vector3& operator/=(float s) {
    x /= s;
    y /= s;
    z /= s;
    return *this;
  }

  bool operator==(const Vector3& b) const { return x == b.x && y == b.y && z == b.z; }
  bool operator!=(const Vector3& b) const { return !(*this == b); }

  // sqrt(x² + y² + z²).
  float length() const;

  // x² + y² + z²: the stand-alone form of the nine-float sum below.
  float lengthSquared() const;

  // The nine-float sum: this vector's three squares plus those of the six
  // floats stored behind it, given as the two vectors that hold them.
  // Intended, not a bug: see the camera's up correction.
  float lengthSquared(const Vector3& next, const Vector3& afterNext) const;

  // Unit copy: l = |v|, l = 1e-08 when exactly 0, each component times 1/l.
  // A zero vector stays zero.
  Vector3 normalized() const;

  // In place: each component times target / (|v| + 1e-06). The bias is kept
  // on purpose: setLength(1) gives a length just under 1, never exactly 1,
  // and a zero vector stays zero.
  void setLength(float target);

  // Rotation by `angle` about coordinate axis 0 (x), 1 (y) or 2 (z), with
  // c = cos, s = sin:
  //   axis 0: y' = c·y + s·z, z' = c·z − s·y
  //   axis 1: x' = c·x + s·z, z' = c·z − s·x
  //   axis 2: x' = c·x − s·y, y' = c·y + s·x
  // Axis 0 thus turns the opposite way to axes 1 and 2 (and to rotatedAround);
  // kept, callers are built on it. Another index leaves the result unset,
  // which here is (0, 0, 0).
  Vector3 rotatedAroundAxisIndex(int axis, float angle) const;

  // Rotation by `angle` about the unit axis u (Rodrigues), with d = u·v:
  //   x' = u.x·d + ((u.y²+u.z²)·v.x − (u.y·v.y + u.z·v.z)·u.x)·c + (u.y·v.z − u.z·v.y)·s
  // and y', z' by cyclic exchange. The cos term does not assume |u| = 1.
  Vector3 rotatedAround(const Vector3& axis, float angle) const;

  // onto · ((this · onto) / onto.lengthSquared()), the stand-alone form.
  Vector3 projectedOn(const Vector3& onto) const;

  // The same with the denominator given, for the nine-float form:
  // onto · ((this · onto) / ontoLengthSquared).
  Vector3 projectedOn(const Vector3& onto, float ontoLengthSquared) const;
};

inline Vector3 operator*(float s, const Vector3& v) { return v * s; }

// a.x·b.x + a.y·b.y + a.z·b.z, summed in extended precision (long double)
// and returned as a float.
float dot(const Vector3& a, const Vector3& b);

// (a.y·b.z − a.z·b.y, a.z·b.x − a.x·b.z, a.x·b.y − a.y·b.x).
Vector3 cross(const Vector3& a, const Vector3& b);
