// Camera::apply, applyLow and release against matrices built here by hand.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Camera.h"
#include "foundation/Matrix4.h"
#include "support/GLTestContext.h"

namespace {

const double degreesToRadians = 3.14159265358979 / 180.0;

void identity(float m[16]) {
  for (int i = 0; i < 16; ++i) m[i] = (i % 5 == 0) ? 1.0f : 0.0f;
}

// out = out · r, where r is glRotatef(degrees, axis).
void rotate(float m[16], float degrees, float ax, float ay, float az) {
  const float c = float(std::cos(degrees * degreesToRadians)), s = float(std::sin(degrees * degreesToRadians));
  const float r[16] = {ax * ax * (1 - c) + c,      ay * ax * (1 - c) + az * s, ax * az * (1 - c) - ay * s, 0,
                       ax * ay * (1 - c) - az * s, ay * ay * (1 - c) + c,      ay * az * (1 - c) + ax * s, 0,
                       ax * az * (1 - c) + ay * s, ay * az * (1 - c) - ax * s, az * az * (1 - c) + c,      0,
                       0,                          0,                          0,                          1};
  float out[16];
  matrixMultiply(m, r, out);
  matrixCopy(out, m);
}

// m = m · lookAt(eye, centre, up), the standard look-at construction.
void lookAt(float m[16], const Vector3& eye, const Vector3& centre, const Vector3& up) {
  const Vector3 f = (centre - eye).normalized();
  const Vector3 s = cross(f, up).normalized();
  const Vector3 u = cross(s, f);
  const float l[16] = {s.x, u.x, -f.x, 0, s.y, u.y, -f.y, 0, s.z, u.z, -f.z, 0, 0, 0, 0, 1};
  float t[16];
  identity(t);
  t[12] = -eye.x;
  t[13] = -eye.y;
  t[14] = -eye.z;
  float lt[16], out[16];
  matrixMultiply(l, t, lt);
  matrixMultiply(m, lt, out);
  matrixCopy(out, m);
}

void expectMatrixNear(const float* actual, const float* expected, float tolerance) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

void currentMatrix(GLenum which, float out[16]) { glGetFloatv(which, out); }

Camera testCamera() {
  Camera c("SceneTest.camera0", 50.0f, 1.6f, 0.5f, 80.0f, 300.7f, 200.2f, 150.9f, 100.4f);
  c.position = Vector3(1, 2, 6);
  c.lookAt(Vector3(0, 0.5f, 0));
  return c;
}

}  // namespace

TEST(CameraGL, ApplyStoresThePerspectiveProjection) {
  REQUIRE_GL(320, 240);
  Camera c = testCamera();
  c.apply();
  const double f = 1.0 / std::tan(c.fieldOfView * 0.5 * degreesToRadians);
  float expected[16] = {};
  expected[0] = float(f / c.aspect);
  expected[5] = float(f);
  expected[10] = (c.farClip + c.nearClip) / (c.nearClip - c.farClip);
  expected[11] = -1.0f;
  expected[14] = 2.0f * c.farClip * c.nearClip / (c.nearClip - c.farClip);
  expectMatrixNear(c.projectionMatrix, expected, 1e-5f);
  float live[16];
  currentMatrix(GL_PROJECTION_MATRIX, live);
  expectMatrixNear(live, expected, 1e-5f);
  c.release();
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(CameraGL, ApplyBuildsTheModelviewInOrder) {
  REQUIRE_GL(320, 240);
  Camera c = testCamera();
  c.roll = 10.0f;
  c.pitch = -20.0f;
  c.yaw = 30.0f;
  c.lookAtRoll = 5.0f;
  c.lookAtPitch = 15.0f;
  c.lookAtYaw = -25.0f;
  c.zoom = 0.25f;
  c.apply();
  float expected[16];
  identity(expected);
  rotate(expected, c.roll, 0, 0, 1);
  rotate(expected, c.pitch, 1, 0, 0);
  rotate(expected, c.yaw, 0, 1, 0);
  lookAt(expected, c.position + c.direction * c.zoom, c.position + c.direction + c.direction * c.zoom,
         c.correctedUp());
  rotate(expected, c.lookAtRoll, 0, 0, 1);
  rotate(expected, c.lookAtPitch, 1, 0, 0);
  rotate(expected, c.lookAtYaw, 0, 1, 0);
  expectMatrixNear(c.modelviewMatrix, expected, 1e-4f);
  float live[16];
  currentMatrix(GL_MODELVIEW_MATRIX, live);
  expectMatrixNear(live, expected, 1e-4f);
  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(mode, GL_MODELVIEW);
  c.release();
  EXPECT_TRUE(testgl::drainErrors().empty());
}

// With angles set the up vector handed to the look-at is the nine-float
// corrected one, which differs from a fully orthogonalised up; the look-at
// only needs it in the plane of up and direction, which it stays in.
TEST(CameraGL, LookAtUsesTheCorrectedUp) {
  REQUIRE_GL(320, 240);
  Camera c = testCamera();
  c.direction = Vector3(0, -4, -4);
  c.pitch = 0.001f;  // small angles still enter the denominator: 32 + 1 + 1e-6
  c.up = Vector3(0, 1, 0);
  c.apply();
  float withCorrectedUp[16];
  identity(withCorrectedUp);
  rotate(withCorrectedUp, c.pitch, 1, 0, 0);
  lookAt(withCorrectedUp, c.eye(), c.centre(), c.correctedUp());
  expectMatrixNear(c.modelviewMatrix, withCorrectedUp, 1e-4f);
  const Vector3 trueUp = c.up - c.up.projectedOn(c.direction);
  EXPECT_GT((c.correctedUp() - trueUp).length(), 0.01f);
  c.release();
}

TEST(CameraGL, ZoomMovesTheEyeAlongTheDirection) {
  REQUIRE_GL(320, 240);
  Camera c("z", 45, 1, 0.1f, 100, 320, 240, 160, 120);
  c.position = Vector3(0, 0, 5);
  c.direction = Vector3(0, 0, -5);
  c.apply();
  EXPECT_NEAR(c.modelviewMatrix[14], -5.0f, 1e-5f);
  c.release();
  c.zoom = 1.0f;  // the eye moves a whole direction length: to the origin
  c.apply();
  EXPECT_NEAR(c.modelviewMatrix[12], 0.0f, 1e-5f);
  EXPECT_NEAR(c.modelviewMatrix[13], 0.0f, 1e-5f);
  EXPECT_NEAR(c.modelviewMatrix[14], 0.0f, 1e-5f);
  c.release();
}

TEST(CameraGL, ApplySetsTheTruncatedViewport) {
  REQUIRE_GL(320, 240);
  Camera c = testCamera();
  c.apply();
  GLint viewport[4] = {};
  glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[0], 0);
  EXPECT_EQ(viewport[1], 0);
  EXPECT_EQ(viewport[2], 300);
  EXPECT_EQ(viewport[3], 200);
  c.release();
  c.applyLow();
  glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[2], 150);
  EXPECT_EQ(viewport[3], 100);
  c.release();
  glViewport(0, 0, testgl::width(), testgl::height());
}

TEST(CameraGL, ApplyLowAfterApplyKeepsTheFullSizeMatrices) {
  REQUIRE_GL(320, 240);
  Camera c = testCamera();
  c.apply();
  c.release();
  float projection[16], modelview[16];
  matrixCopy(c.projectionMatrix, projection);
  matrixCopy(c.modelviewMatrix, modelview);
  c.setFieldOfView(90.0f);
  c.position = Vector3(-3, 1, 2);
  c.applyLow();
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(c.projectionMatrix[i], projection[i]);
    EXPECT_EQ(c.modelviewMatrix[i], modelview[i]);
  }
  // The GL state itself is the changed camera's.
  float live[16];
  currentMatrix(GL_PROJECTION_MATRIX, live);
  EXPECT_GT(std::fabs(live[5] - projection[5]), 0.1f);
  c.release();
  glViewport(0, 0, testgl::width(), testgl::height());
}

TEST(CameraGL, ReleaseRestoresBothStacks) {
  REQUIRE_GL(320, 240);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(-1, 1, -1, 1, -1, 1);
  float projectionBefore[16], modelviewBefore[16];
  currentMatrix(GL_PROJECTION_MATRIX, projectionBefore);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(1, 2, 3);
  currentMatrix(GL_MODELVIEW_MATRIX, modelviewBefore);
  GLint projectionDepth = 0, modelviewDepth = 0;
  glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projectionDepth);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &modelviewDepth);

  glMatrixMode(GL_PROJECTION);  // release leaves modelview whatever mode came before
  Camera c = testCamera();
  c.apply();
  GLint depth = 0;
  glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
  EXPECT_EQ(depth, projectionDepth + 1);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
  EXPECT_EQ(depth, modelviewDepth + 1);
  c.release();

  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(mode, GL_MODELVIEW);
  glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
  EXPECT_EQ(depth, projectionDepth);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
  EXPECT_EQ(depth, modelviewDepth);
  float after[16];
  currentMatrix(GL_PROJECTION_MATRIX, after);
  expectMatrixNear(after, projectionBefore, 0);
  currentMatrix(GL_MODELVIEW_MATRIX, after);
  expectMatrixNear(after, modelviewBefore, 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
  glLoadIdentity();
}
