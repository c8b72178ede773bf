// Color4: a red, green, blue triple shaped like a Vector3 (x is red, y green,
// z blue, all the Vector3 arithmetic applies) followed by a separate alpha.
// Channels are floats, normally 0 to 1.
//
// `set(r, g, b)` and assignment from a Vector3 write the three colour
// channels only; alpha is always assigned separately by whoever needs it.
#pragma once

#include "foundation/Vector3.h"

class Color4 : public Vector3 {
 public:
  float alpha = 1.0f;

  Color4() = default;
  Color4(float r, float g, float b, float a) : Vector3(r, g, b), alpha(a) {}

  // Colour channels only; alpha keeps its value.
  Color4& operator=(const Vector3& rgb) {
    x = rgb.x;
    y = rgb.y;
    z = rgb.z;
    return *this;
  }

  float red() const { return x; }
  float green() const { return y; }
  float blue() const { return z; }

  // The four channels in the order glColor4fv and glMaterialfv read them.
  void toArray(float out[4]) const {
    out[0] = x;
    out[1] = y;
    out[2] = z;
    out[3] = alpha;
  }
};
