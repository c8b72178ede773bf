#include <gtest/gtest.h>

#include "foundation/Camera.h"

namespace {

Camera makeCamera() { return Camera("SceneTest.camera0", 60.0f, 1.5f, 0.5f, 200.0f, 800.0f, 600.0f, 400.0f, 300.0f); }

}  // namespace

TEST(Camera, ConstructorStoresValuesAndDefaults) {
  const Camera c = makeCamera();
  EXPECT_EQ(c.name, "SceneTest.camera0");
  EXPECT_EQ(c.fieldOfView, 60.0f);
  EXPECT_EQ(c.aspect, 1.5f);
  EXPECT_EQ(c.nearClip, 0.5f);
  EXPECT_EQ(c.farClip, 200.0f);
  EXPECT_EQ(c.width, 800.0f);
  EXPECT_EQ(c.height, 600.0f);
  EXPECT_EQ(c.lowWidth, 400.0f);
  EXPECT_EQ(c.lowHeight, 300.0f);
  EXPECT_EQ(c.position, Vector3(0, 0, 0));
  EXPECT_EQ(c.direction, Vector3(0, 0, 1));
  EXPECT_EQ(c.up, Vector3(0, 1, 0));
  EXPECT_EQ(c.roll, 0.0f);
  EXPECT_EQ(c.pitch, 0.0f);
  EXPECT_EQ(c.yaw, 0.0f);
  EXPECT_EQ(c.lookAtRoll, 0.0f);
  EXPECT_EQ(c.lookAtPitch, 0.0f);
  EXPECT_EQ(c.lookAtYaw, 0.0f);
  EXPECT_EQ(c.zoom, 0.0f);
}

TEST(Camera, ConstructorAppliesTheSetUpRules) {
  const Camera c("c", 200.0f, -2.0f, -1.0f, -5.0f, 1, 1, 1, 1);
  EXPECT_EQ(c.fieldOfView, 45.0f);
  EXPECT_EQ(c.aspect, 1.0f);
  EXPECT_EQ(c.nearClip, 0.1f);
  EXPECT_EQ(c.farClip, 100.0f);
}

TEST(Camera, FieldOfViewOutsideTheOpenRangeBecomes45) {
  Camera c = makeCamera();
  c.setFieldOfView(180.0f);
  EXPECT_EQ(c.fieldOfView, 45.0f);
  c.setFieldOfView(90.0f);
  EXPECT_EQ(c.fieldOfView, 90.0f);
  c.setFieldOfView(0.0f);
  EXPECT_EQ(c.fieldOfView, 45.0f);
  c.setFieldOfView(179.5f);
  EXPECT_EQ(c.fieldOfView, 179.5f);
  c.setFieldOfView(-10.0f);
  EXPECT_EQ(c.fieldOfView, 45.0f);
  c.setFieldOfView(0.001f);
  EXPECT_EQ(c.fieldOfView, 0.001f);
}

TEST(Camera, NegativeAspectBecomesOne) {
  Camera c = makeCamera();
  c.setAspect(-0.5f);
  EXPECT_EQ(c.aspect, 1.0f);
  c.setAspect(0.0f);
  EXPECT_EQ(c.aspect, 0.0f);
  c.setAspect(2.0f);
  EXPECT_EQ(c.aspect, 2.0f);
}

TEST(Camera, ClipRules) {
  Camera c = makeCamera();
  c.setClip(1.0f, 50.0f);
  EXPECT_EQ(c.nearClip, 1.0f);
  EXPECT_EQ(c.farClip, 50.0f);
  c.setClip(-1.0f, 50.0f);  // negative near
  EXPECT_EQ(c.nearClip, 0.1f);
  EXPECT_EQ(c.farClip, 50.0f);
  c.setClip(60.0f, 50.0f);  // near beyond far: near falls back, far stands
  EXPECT_EQ(c.nearClip, 0.1f);
  EXPECT_EQ(c.farClip, 50.0f);
  c.setClip(0.5f, -3.0f);  // negative far: both fall back
  EXPECT_EQ(c.nearClip, 0.1f);
  EXPECT_EQ(c.farClip, 100.0f);
  c.setClip(0.05f, 0.05f);  // equal is allowed
  EXPECT_EQ(c.nearClip, 0.05f);
  EXPECT_EQ(c.farClip, 0.05f);
}

TEST(Camera, LookAtSetsDirectionFromPosition) {
  Camera c = makeCamera();
  c.position = Vector3(1, 2, 3);
  c.lookAt(Vector3(4, 4, 4));
  EXPECT_EQ(c.direction, Vector3(3, 2, 1));
}

TEST(Camera, UpOrthogonalToDirectionIsKept) {
  const Camera c = makeCamera();
  EXPECT_EQ(c.correctedUp(), Vector3(0, 1, 0));
}

// The up correction divides by the nine floats from `direction` on: with
// direction (0, 1, 1) and up (0, 1, 0) that is 2 + 1 = 3, not |direction|² = 2,
// so the corrected up is not orthogonal to the direction.
TEST(Camera, UpCorrectionUsesTheNineFloatDenominator) {
  Camera c = makeCamera();
  c.direction = Vector3(0, 1, 1);
  EXPECT_EQ(c.directionLengthSquared(), 3.0f);
  const Vector3 u = c.correctedUp();
  EXPECT_EQ(u, Vector3(0, 1, 0) - Vector3(0, 1, 1) * (1.0f / 3.0f));
  EXPECT_NE(dot(u, c.direction), 0.0f);
}

TEST(Camera, AnglesEnterTheUpCorrection) {
  Camera c = makeCamera();
  c.direction = Vector3(0, 1, 1);
  c.roll = 3.0f;
  c.pitch = 1.0f;
  c.yaw = 2.0f;
  EXPECT_EQ(c.directionLengthSquared(), 2.0f + 1.0f + 9.0f + 1.0f + 4.0f);
  EXPECT_EQ(c.correctedUp(), Vector3(0, 1, 0) - Vector3(0, 1, 1) * (1.0f / 17.0f));
  c.up = Vector3(0, 2, 0);
  EXPECT_EQ(c.directionLengthSquared(), 2.0f + 4.0f + 14.0f);
}

TEST(Camera, ZoomDolliesEyeAndCentre) {
  Camera c = makeCamera();
  c.position = Vector3(1, 2, 3);
  c.direction = Vector3(0, 0, 2);
  EXPECT_EQ(c.eye(), Vector3(1, 2, 3));
  EXPECT_EQ(c.centre(), Vector3(1, 2, 5));
  c.zoom = 0.5f;
  EXPECT_EQ(c.eye(), Vector3(1, 2, 4));
  EXPECT_EQ(c.centre(), Vector3(1, 2, 6));
}
