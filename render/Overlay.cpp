#include "render/Overlay.h"

OverlayScope::OverlayScope(const OverlayOptions& options) {
  glDisable(GL_LIGHTING);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();  // the camera's projection stays
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  if (options.depth != 0.0f) glTranslatef(0.0f, 0.0f, options.depth);
  glEnable(GL_BLEND);
  if (options.alphaBlend) glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_COLOR_MATERIAL);
  if (options.noCullNoDepth) {
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
  }
  if (options.textured) {
    glEnable(GL_TEXTURE_2D);
  } else {
    glDisable(GL_TEXTURE_2D);
  }
}

OverlayScope::~OverlayScope() {
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}

void screenQuad(float h, float z) {
  glBegin(GL_QUADS);
  glVertex3f(-h, -h, z);
  glVertex3f(h, -h, z);
  glVertex3f(h, h, z);
  glVertex3f(-h, h, z);
  glEnd();
}

void texturedQuad(float h, float z) {
  glBegin(GL_QUADS);
  glTexCoord2f(0.0f, 1.0f);
  glVertex3f(-h, -h, z);
  glTexCoord2f(1.0f, 1.0f);
  glVertex3f(h, -h, z);
  glTexCoord2f(1.0f, 0.0f);
  glVertex3f(h, h, z);
  glTexCoord2f(0.0f, 0.0f);
  glVertex3f(-h, h, z);
  glEnd();
}

void bindTitleTexture(GLuint texture, GLenum environment) {
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<GLint>(environment));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
}

void linearFilters() {
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

void drawFlash(float r, float g, float b, float a, float depth) {
  OverlayOptions options;
  options.depth = depth;
  OverlayScope overlay(options);
  glColor4f(r, g, b, a);
  screenQuad(1.0f);
  glEnable(GL_TEXTURE_2D);
}
