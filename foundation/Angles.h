// Angles: free angle helpers of the maths layer. Angles here are radians
// (objects and cameras elsewhere use degrees).
#pragma once

// Half-open arctangent of y/x with a range of (−π/2, 3π/2):
//   x = 0: −1.5707964 when y < 0, else +1.5707964
//   x > 0: atan(y/x)
//   x < 0: atan(y/x) + 3.14159265358979
// Not atan2: callers subtract π from the result and rely on this range.
float angleOf(float y, float x);

// Planar two-bone inverse kinematics towards (x, y). With r = √(x²+y²), a
// target beyond lengthA + lengthB is pulled back to that radius along its own
// direction. elbow = acos((x²+y² − A² − B²) / (2·A·B)); with
// k1 = A + B·cos(elbow), k2 = B·sin(elbow): base = angleOf(k1·y − k2·x,
// k1·x + k2·y), or ±1.5707964 (sign of the numerator, 0 positive) when the
// denominator is exactly 0. Kept in the library; no scene uses it.
void solveTwoBoneChain(float x, float y, float lengthA, float lengthB, float* elbowAngle, float* baseAngle);
