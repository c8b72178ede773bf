// Billboard: screen-aligned quads drawn in immediate mode (see Billboard.h).
#include "render/Billboard.h"

namespace {

// The corners of one quad centred on (cx, cy) of the current origin, in the
// order the texture expects: (0,0) lower left, (0,1) upper left, (1,1) upper
// right, (1,0) lower right. Inside glBegin(GL_QUADS).
void quadCorners(float cx, float cy, float x, float y) {
  glTexCoord2f(0.0f, 0.0f);
  glVertex3f(cx - x, cy - y, 0.0f);
  glTexCoord2f(0.0f, 1.0f);
  glVertex3f(cx - x, cy + y, 0.0f);
  glTexCoord2f(1.0f, 1.0f);
  glVertex3f(cx + x, cy + y, 0.0f);
  glTexCoord2f(1.0f, 0.0f);
  glVertex3f(cx + x, cy - y, 0.0f);
}

void drawQuad(float x, float y) {
  glBegin(GL_QUADS);
  quadCorners(0.0f, 0.0f, x, y);
  glEnd();
}

}  // namespace

Billboard::Billboard(Camera* camera, bool ownsMatrices) : camera(camera) {
  if (ownsMatrices) {
    viewMatrix = new float[16]();
    modelMatrix = new float[16]();
  }
}

Billboard::~Billboard() {
  delete[] viewMatrix;
  delete[] modelMatrix;
}

void billboardBegin(Billboard& first) {
  // A first billboard made without matrices is a caller's mistake; give it
  // its own storage rather than writing through a null pointer.
  if (!first.viewMatrix) first.viewMatrix = new float[16]();
  if (!first.modelMatrix) first.modelMatrix = new float[16]();

  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_BLEND);
  glDisable(GL_CULL_FACE);

  glGetFloatv(GL_MODELVIEW_MATRIX, first.viewMatrix);
  glGetFloatv(GL_MODELVIEW_MATRIX, first.modelMatrix);

  // Keep the translation column, replace the rotation by the identity: the
  // quads then face the screen whatever way the camera looks.
  float* v = first.viewMatrix;
  v[0] = 1.0f; v[1] = 0.0f; v[2] = 0.0f;
  v[4] = 0.0f; v[5] = 1.0f; v[6] = 0.0f;
  v[8] = 0.0f; v[9] = 0.0f; v[10] = 1.0f;
  glLoadMatrixf(v);
  glEnable(GL_TEXTURE_2D);
  glDisable(GL_COLOR_MATERIAL);
}

void Billboard::draw(Billboard& first, bool depthWrite) {
  if (castsShadow && depthWrite) {
    glDepthMask(GL_TRUE);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.01f);
  } else {
    glDepthMask(GL_FALSE);
  }

  glBindTexture(GL_TEXTURE_2D, texture);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  if (blendMode == 0) {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
  } else if (blendMode == 1) {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  }

  glPushMatrix();
  // The position through the camera's rotation (upper 3x3 of the saved
  // modelview, column-major); the translation is already loaded.
  const float* m = first.modelMatrix;
  const float px = position.x, py = position.y, pz = position.z;
  glTranslatef(px * m[0] + py * m[4] + pz * m[8],
               px * m[1] + py * m[5] + pz * m[9],
               px * m[2] + py * m[6] + pz * m[10]);
  glRotatef(-0.0f, 1.0f, 0.0f, 0.0f);  // a fixed no-op, kept in the order of calls

  if (tiled) {
    glColor4f(colour.x, colour.y, colour.z, alpha * 0.75f);
    // The nine tiles in one draw, row by row from the lower left: each
    // tile's offset goes into its corners rather than into a matrix of its
    // own, which would cost the renderer a draw per tile.
    glBegin(GL_QUADS);
    for (int j = -1; j <= 1; ++j) {
      for (int i = -1; i <= 1; ++i) quadCorners(i * 0.5f * tileSpacing, j * 0.5f * tileSpacing, halfSize.x, halfSize.y);
    }
    glEnd();
  } else {
    glColor4f(colour.x, colour.y, colour.z, alpha);
    drawQuad(halfSize.x, halfSize.y);
  }
  glPopMatrix();
}

void billboardEnd() {
  glPopMatrix();
  glDisable(GL_ALPHA_TEST);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_COLOR_MATERIAL);
  glDepthMask(GL_TRUE);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}
