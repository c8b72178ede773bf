// Camera: set-up rules and the GL-free maths of the look-at.
#include "foundation/Camera.h"

Camera::Camera(const std::string& name_, float fieldOfView_, float aspect_, float nearClip_, float farClip_,
               float width_, float height_, float lowWidth_, float lowHeight_)
    : name(name_), width(width_), height(height_), lowWidth(lowWidth_), lowHeight(lowHeight_) {
  setFieldOfView(fieldOfView_);
  setAspect(aspect_);
  setClip(nearClip_, farClip_);
}

void Camera::setFieldOfView(float degrees) {
  fieldOfView = degrees;
  if (!(fieldOfView > 0.0f && fieldOfView < 180.0f)) fieldOfView = 45.0f;
}

void Camera::setAspect(float aspect_) {
  aspect = aspect_;
  if (aspect < 0.0f) aspect = 1.0f;
}

void Camera::setClip(float nearClip_, float farClip_) {
  nearClip = nearClip_;
  farClip = farClip_;
  if (nearClip < 0.0f || nearClip > farClip) nearClip = 0.1f;
  if (farClip < 0.0f || farClip < nearClip) farClip = 100.0f;
}

void Camera::lookAt(const Vector3& target) { direction = target - position; }

float Camera::directionLengthSquared() const {
  // The six floats behind `direction` are `up` and then roll, pitch, yaw.
  return direction.lengthSquared(up, Vector3(roll, pitch, yaw));
}

Vector3 Camera::correctedUp() const { return up - up.projectedOn(direction, directionLengthSquared()); }

Vector3 Camera::eye() const { return position + direction * zoom; }

Vector3 Camera::centre() const {
  const Vector3 target = direction + position;
  return target + direction * zoom;
}
