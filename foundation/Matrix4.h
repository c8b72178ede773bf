// Matrix4: sixteen floats in OpenGL column-major order, element m[c*4 + r]
// for column c and row r: the very array that glLoadMatrixf, glMultMatrixf
// and glGetFloatv(GL_MODELVIEW_MATRIX) take. The operations are free
// functions on plain float[16] so that any such array can be used directly.
#pragma once

struct Matrix4 {
  float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  // identity

  float* data() { return m; }
  const float* data() const { return m; }
  float& operator[](int i) { return m[i]; }
  const float& operator[](int i) const { return m[i]; }
};

// out = a·b: out[c*4+r] = Σk a[k*4+r]·b[c*4+k]. `out` must not alias a or b.
void matrixMultiply(const float a[16], const float b[16], float out[16]);

// Plain transpose of all 16 elements. `out` must not alias `in`.
void matrixTranspose(const float in[16], float out[16]);

// Inverse of a rotation-plus-translation matrix: the upper 3×3 transposed,
// last row (0, 0, 0, 1), and out[12+i] = −(t · column i of in) with
// t = (in[12], in[13], in[14]). A matrix with scale gets a wrong inverse;
// no caller has one. `out` must not alias `in`.
void matrixInverseRigid(const float in[16], float out[16]);

// The four floats of column i: m[i*4 .. i*4+3].
void matrixGetColumn(const float m[16], float out4[4], int i);

// The four floats of row i: m[i], m[4+i], m[8+i], m[12+i].
void matrixGetRow(const float m[16], float out4[4], int i);

// 16-float copy.
void matrixCopy(const float in[16], float out[16]);
