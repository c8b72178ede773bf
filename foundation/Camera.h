// Camera: a named perspective camera. Angles in degrees; sizes in pixels
// (floats); the direction is the look-at target minus the position, not
// normalised. Matrices are OpenGL column-major (see Matrix4.h).
//
// The data and the maths live here, in the GL-free foundation layer; the
// three members that talk to OpenGL — apply(), applyLow() and release() —
// are defined in render/CameraGL.cpp and need ov_render at link time.
#pragma once

#include <string>

#include "foundation/Vector3.h"

class Camera {
 public:
  // The rules of setFieldOfView, setAspect and setClip apply to the
  // given values.
  Camera(const std::string& name, float fieldOfView, float aspect, float nearClip, float farClip, float width,
         float height, float lowWidth, float lowHeight);

  // Outside the open range 0..180 degrees it becomes 45.
  void setFieldOfView(float degrees);
  // A negative aspect becomes 1.
  void setAspect(float aspect);
  // nearClip becomes 0.1 if negative or beyond farClip; then farClip becomes
  // 100 if negative or below nearClip.
  void setClip(float nearClip, float farClip);
  // direction = target − position.
  void lookAt(const Vector3& target);

  // The up vector that apply() hands to the look-at: up minus its projection
  // on direction, where the projection's denominator is the nine-float sum
  // |direction|² + |up|² + roll² + pitch² + yaw² of the fields stored from
  // `direction` on. So the default up comes out slightly tilted, and a camera
  // with angles is not fully orthogonalised. Intended; do not correct.
  Vector3 correctedUp() const;
  // The nine-float sum above.
  float directionLengthSquared() const;
  // position + zoom·direction and position + direction + zoom·direction.
  Vector3 eye() const;
  Vector3 centre() const;

  // Sets projection and modelview for a full-size render, in order:
  // projection: push, identity, gluPerspective(fieldOfView, aspect, nearClip,
  // farClip), copied into projectionMatrix; modelview: push, identity,
  // rotate roll about z, pitch about x, yaw about y, gluLookAt(eye(),
  // centre(), correctedUp()), rotate lookAtRoll, lookAtPitch, lookAtYaw
  // likewise, copied into modelviewMatrix; viewport 0, 0, (int)width,
  // (int)height. Leaves the matrix mode at modelview.
  void apply();
  // The same without copying either matrix, with the viewport lowWidth,
  // lowHeight: the stored matrices stay those of the last apply().
  void applyLow();
  // Pops the projection, then the modelview stack; leaves the matrix mode at
  // modelview.
  void release();

  std::string name;            // parameter prefix, such as "SceneBordersWithus.camera0"
  Vector3 position;            // 0, 0, 0
  Vector3 direction{0, 0, 1};  // look-at target minus position
  Vector3 up{0, 1, 0};
  float roll = 0.0f;   // applied before the look-at, about z
  float pitch = 0.0f;  // before the look-at, about x
  float yaw = 0.0f;    // before the look-at, about y
  float lookAtRoll = 0.0f;   // applied after the look-at, about z
  float lookAtPitch = 0.0f;  // after the look-at, about x
  float lookAtYaw = 0.0f;    // after the look-at, about y
  float fieldOfView = 45.0f;  // vertical, degrees
  float zoom = 0.0f;          // dolly of eye and target along direction, in direction lengths
  float aspect = 1.0f;
  float nearClip = 0.1f;
  float farClip = 100.0f;
  float width = 0.0f;      // viewport of apply()
  float height = 0.0f;
  float lowWidth = 0.0f;   // viewport of applyLow()
  float lowHeight = 0.0f;
  float projectionMatrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  // copy taken by apply()
  float modelviewMatrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};   // copy taken by apply(); billboards and refraction read it
};
