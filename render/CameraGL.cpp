// CameraGL: the OpenGL side of Camera (foundation/Camera.h), kept out of the
// GL-free foundation layer. Sets the projection and modelview stacks and the
// viewport for a full-size or a low-resolution render.
#include <GL/glew.h>
#include <GL/glu.h>

#include "foundation/Camera.h"

namespace {

// Both stacks pushed and loaded; shared by apply and applyLow.
void loadCameraMatrices(const Camera& camera) {
  const Vector3 u = camera.correctedUp();
  const Vector3 eye = camera.eye();
  const Vector3 centre = camera.centre();

  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  gluPerspective(camera.fieldOfView, camera.aspect, camera.nearClip, camera.farClip);

  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glRotatef(camera.roll, 0.0f, 0.0f, 1.0f);
  glRotatef(camera.pitch, 1.0f, 0.0f, 0.0f);
  glRotatef(camera.yaw, 0.0f, 1.0f, 0.0f);
  gluLookAt(eye.x, eye.y, eye.z, centre.x, centre.y, centre.z, u.x, u.y, u.z);
  glRotatef(camera.lookAtRoll, 0.0f, 0.0f, 1.0f);
  glRotatef(camera.lookAtPitch, 1.0f, 0.0f, 0.0f);
  glRotatef(camera.lookAtYaw, 0.0f, 1.0f, 0.0f);
}

}  // namespace

void Camera::apply() {
  loadCameraMatrices(*this);
  glGetFloatv(GL_PROJECTION_MATRIX, projectionMatrix);
  glGetFloatv(GL_MODELVIEW_MATRIX, modelviewMatrix);
  glViewport(0, 0, static_cast<int>(width), static_cast<int>(height));
}

void Camera::applyLow() {
  loadCameraMatrices(*this);
  glViewport(0, 0, static_cast<int>(lowWidth), static_cast<int>(lowHeight));
}

void Camera::release() {
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
}
