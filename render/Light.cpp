// Light: GL lights, shadow maps and projected textures (see Light.h).
#include "render/Light.h"

#include <GL/glu.h>

#include <cstdlib>

#include "foundation/Capabilities.h"
#include "geometry/Mesh.h"
#include "render/GLErrors.h"
#include "render/RenderTarget.h"

// ---------------------------------------------------------------------------
// Every Mesh is born owning a Light with the defaults above. The geometry
// layer cannot see this type, so the render layer hands it the two hooks.
// ---------------------------------------------------------------------------
namespace {

Light* newMeshLight() { return new Light(); }
void deleteMeshLight(Light* light) { delete light; }

struct MeshLightHooks {
  MeshLightHooks() {
    createMeshLight = newMeshLight;
    destroyMeshLight = deleteMeshLight;
  }
};
const MeshLightHooks installMeshLightHooks;

// The bias that takes clip space -1..1 to texture space 0..1 on all axes.
const float biasMatrix[16] = {0.5f, 0.0f, 0.0f, 0.0f, 0.0f, 0.5f, 0.0f, 0.0f,
                              0.0f, 0.0f, 0.5f, 0.0f, 0.5f, 0.5f, 0.5f, 1.0f};

// out = a * b, column-major.
void multiply(const float a[16], const float b[16], float out[16]) {
  float r[16];
  for (int c = 0; c < 4; ++c) {
    for (int row = 0; row < 4; ++row) {
      float sum = 0.0f;
      for (int k = 0; k < 4; ++k) sum += a[k * 4 + row] * b[c * 4 + k];
      r[c * 4 + row] = sum;
    }
  }
  for (int i = 0; i < 16; ++i) out[i] = r[i];
}

// Reads the shadow camera (from p towards p + direction, up +y) into viewMatrix.
void placeShadowCamera(Light& light, const Vector3& p) {
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  gluLookAt(p.x, p.y, p.z, p.x + light.direction.x, p.y + light.direction.y, p.z + light.direction.z, 0.0, 1.0,
            0.0);
  glGetFloatv(GL_MODELVIEW_MATRIX, light.viewMatrix);
  glPopMatrix();
}

// Eye-linear S, T, R, Q from the rows of the light's texture matrix, set under
// the current modelview (GL keeps them multiplied by its inverse).
void enableLightTexGen(const Light& light) {
  float t[16];
  lightTextureMatrix(light, t);
  const GLenum coords[4] = {GL_S, GL_T, GL_R, GL_Q};
  const GLenum enables[4] = {GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T, GL_TEXTURE_GEN_R, GL_TEXTURE_GEN_Q};
  for (int row = 0; row < 4; ++row) {
    const float plane[4] = {t[row], t[4 + row], t[8 + row], t[12 + row]};
    glTexGeni(coords[row], GL_TEXTURE_GEN_MODE, GL_EYE_LINEAR);
    glTexGenfv(coords[row], GL_EYE_PLANE, plane);
    glEnable(enables[row]);
  }
}

void disableLightTexGen() {
  glDisable(GL_TEXTURE_GEN_S);
  glDisable(GL_TEXTURE_GEN_T);
  glDisable(GL_TEXTURE_GEN_R);
  glDisable(GL_TEXTURE_GEN_Q);
}

void setProjectionFilters() {
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
}

}  // namespace

// ---------------------------------------------------------------------------
// Creation
// ---------------------------------------------------------------------------

int shadowMapSizeFitting(int maxWidth, int maxHeight) {
  int size = 1;
  while (size <= maxWidth && size <= maxHeight) size *= 2;
  return size / 2;
}

void lightTextureMatrix(const Light& light, float out[16]) {
  float pv[16];
  multiply(light.projectionMatrix, light.viewMatrix, pv);
  multiply(biasMatrix, pv, out);
}

void createShadowMap(Mesh& mesh) {
  Light& light = *mesh.light();
  light.castsShadow = true;
  glGenTextures(1, &light.shadowTexture);
  glBindTexture(GL_TEXTURE_2D, light.shadowTexture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, light.shadowMapSize, light.shadowMapSize, 0,
               GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE, nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);

  if (hasFramebufferObject) {
    glGenFramebuffersEXT(1, &light.shadowFramebuffer);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, light.shadowFramebuffer);
    glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D, light.shadowTexture, 0);
    glDrawBuffer(GL_NONE);
    glReadBuffer(GL_NONE);
    // A map that cannot be drawn ends the run quietly, status 0.
    if (glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT) != GL_FRAMEBUFFER_COMPLETE_EXT) std::exit(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  }

  // The projection is built on the modelview stack and read from there; it
  // stays fixed for the light's life.
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  gluPerspective(light.shadowFieldOfView, 1.0, light.shadowNear, light.shadowFar);
  glGetFloatv(GL_MODELVIEW_MATRIX, light.projectionMatrix);
  // This first view ignores `offset`; applyLight replaces it.
  glLoadIdentity();
  const Vector3& p = mesh.position;
  gluLookAt(p.x, p.y, p.z, p.x + light.direction.x, p.y + light.direction.y, p.z + light.direction.z, 0.0, 1.0,
            0.0);
  glGetFloatv(GL_MODELVIEW_MATRIX, light.viewMatrix);
  glPopMatrix();
}

// ---------------------------------------------------------------------------
// GL light
// ---------------------------------------------------------------------------

void applyLight(Mesh& mesh, int* lightCounter) {
  Light& light = *mesh.light();
  if (!light.enabled) return;

  const int c = *lightCounter;
  GLenum glLight = GL_LIGHT0;
  if (c == 0) {
    glEnable(GL_LIGHT0);
    for (int i = 1; i < 8; ++i) glDisable(GL_LIGHT0 + i);
    glEnable(GL_LIGHTING);
  } else if (c >= 1 && c <= 7) {
    glLight = GL_LIGHT0 + c;
    glEnable(glLight);
  }

  const Vector3 p = mesh.position + light.offset;
  if (light.castsShadow) placeShadowCamera(light, p);

  const float position[4] = {p.x, p.y, p.z, light.positional ? 1.0f : 0.0f};
  glLightfv(glLight, GL_POSITION, position);
  glLightf(glLight, GL_CONSTANT_ATTENUATION, light.constantAttenuation);
  glLightf(glLight, GL_LINEAR_ATTENUATION, light.linearAttenuation);
  glLightf(glLight, GL_QUADRATIC_ATTENUATION, light.quadraticAttenuation);
  glLightfv(glLight, GL_AMBIENT, light.ambient);
  glLightfv(glLight, GL_DIFFUSE, light.diffuse);
  glLightfv(glLight, GL_SPECULAR, light.specular);
  // Deliberate: light-model names given to the per-light call. GL rejects all
  // three with GL_INVALID_ENUM and they have no effect; the calls stay, and
  // their errors are dropped so that pass boundaries report only others.
  checkGLErrors("light set-up");
  glLightfv(glLight, GL_LIGHT_MODEL_AMBIENT, light.lightModelAmbient);
  glLightf(glLight, GL_LIGHT_MODEL_LOCAL_VIEWER, light.lightModelLocalViewer);
  glLightf(glLight, GL_LIGHT_MODEL_TWO_SIDE, light.lightModelTwoSide);
  dropRefusedCallErrors();
  const float direction[3] = {light.direction.x, light.direction.y, light.direction.z};
  glLightfv(glLight, GL_SPOT_DIRECTION, direction);
  glLightf(glLight, GL_SPOT_EXPONENT, light.spotExponent);
  glLightf(glLight, GL_SPOT_CUTOFF, light.spotCutoff);

  if (*lightCounter < 8) ++*lightCounter;
}

// ---------------------------------------------------------------------------
// Drawing the map
// ---------------------------------------------------------------------------

void shadowMapBegin(Mesh& mesh) {
  Light& light = *mesh.light();
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadMatrixf(light.projectionMatrix);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadMatrixf(light.viewMatrix);

  glPushAttrib(GL_VIEWPORT_BIT);
  if (hasFramebufferObject) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
    glViewport(0, 0, light.shadowMapSize, light.shadowMapSize);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, light.shadowFramebuffer);
  } else {
    // Drawn in the lower-left corner of the back buffer, copied at the end.
    glViewport(0, 0, light.shadowMapSize, light.shadowMapSize);
  }

  glEnable(GL_CULL_FACE);
  glCullFace(GL_FRONT);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glShadeModel(GL_FLAT);
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  if (light.polygonOffset) {
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 0.0f);
  }
}

void shadowMapEnd(Mesh& mesh) {
  Light& light = *mesh.light();
  if (hasFramebufferObject) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  } else {
    glBindTexture(GL_TEXTURE_2D, light.shadowTexture);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, light.shadowMapSize, light.shadowMapSize);
  }

  glCullFace(GL_BACK);
  glShadeModel(GL_SMOOTH);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glDepthFunc(GL_LEQUAL);
  glDisable(GL_POLYGON_OFFSET_FILL);
  glDepthMask(GL_TRUE);
  glClearDepth(1.0);
  glClear(GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);

  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glPopAttrib();

  // A shadow pass nested in an open off-screen render gives the surface back.
  if (useFramebufferObjects && mesh.renderTarget) mesh.renderTarget->rebindTarget();
}

// ---------------------------------------------------------------------------
// Projecting the map and the slide
// ---------------------------------------------------------------------------

void shadowCompareBegin(Mesh& mesh) {
  Light& light = *mesh.light();
  glEnable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, light.shadowTexture);
  enableLightTexGen(light);
  setProjectionFilters();
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE_ARB, GL_COMPARE_R_TO_TEXTURE_ARB);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC_ARB, GL_LEQUAL);
  glTexParameteri(GL_TEXTURE_2D, GL_DEPTH_TEXTURE_MODE_ARB, GL_INTENSITY);
  if (light.alphaTestShadow) {
    glAlphaFunc(GL_GREATER, 0.5f);
    glEnable(GL_ALPHA_TEST);
  }
  glDepthFunc(GL_LEQUAL);
}

void shadowCompareEnd(Mesh& mesh) {
  disableLightTexGen();
  glDisable(GL_ALPHA_TEST);
}

void projectedTextureBegin(Mesh& mesh) {
  Light& light = *mesh.light();
  glBindTexture(GL_TEXTURE_2D, light.projectedTexture);
  enableLightTexGen(light);
  setProjectionFilters();
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
}

void projectedTextureEnd(Mesh& mesh) { disableLightTexGen(); }
