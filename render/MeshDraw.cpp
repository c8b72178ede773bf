// Mesh::draw and its helpers (see render/MeshDraw.h and geometry/Mesh.h).
//
// One call draws one mesh for one pass of the World. Batches: a mesh with
// setupState sets materials, textures and array pointers; one with
// restoreState undoes them; a mesh with neither draws through whatever the
// previous mesh bound, under its own matrix. That is how hundreds of copies of
// one model cost one state set-up per pass.
#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "foundation/Angles.h"
#include "foundation/Camera.h"
#include "foundation/Capabilities.h"
#include "geometry/Mesh.h"
#include "render/MeshDraw.h"
#include "render/RenderTarget.h"

namespace {

// The colours a submission carries.
enum class Colours { A, B, None };

// Index into the per-material arrays (four of them): materials 4 to 7 have no
// arrays of their own, so they fall back to slot 0 rather than reading past.
int arraySlot(const Mesh& mesh) {
  return (mesh.currentMaterial >= 0 && mesh.currentMaterial < Mesh::arrayMaterialCount) ? mesh.currentMaterial : 0;
}

Material& currentMaterialOf(Mesh& mesh) {
  const int m = (mesh.currentMaterial >= 0 && mesh.currentMaterial < Mesh::materialCount) ? mesh.currentMaterial : 0;
  return mesh.materials[m];
}

GLenum stageUnit(int stage, bool shadowUnitShift) {
  if (stage == 0) return GL_TEXTURE0_ARB;
  return GL_TEXTURE0_ARB + stage + (shadowUnitShift ? 1 : 0);
}

// ---- Submission through buffer objects ------------------------------------

void bindBuffers(Mesh& mesh, Colours colours) {
  const bool first = mesh.currentMaterial == 0;
  glEnableClientState(GL_VERTEX_ARRAY);
  if (colours != Colours::None) {
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  }
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, mesh.indexBuffer);
  if (colours != Colours::None) {
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, mesh.normalBuffer);
    glNormalPointer(GL_FLOAT, 0, nullptr);
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, first ? mesh.texCoordBuffer0 : mesh.texCoordBuffer1);
    glTexCoordPointer(3, GL_FLOAT, 0, nullptr);
    GLuint colourBuffer;
    if (colours == Colours::B)
      colourBuffer = first ? mesh.colourBufferB0 : mesh.colourBufferB1;
    else
      colourBuffer = first ? mesh.colourBufferA0 : mesh.colourBufferA1;
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, colourBuffer);
    glColorPointer(4, GL_FLOAT, 0, nullptr);
  }
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, mesh.vertexBuffer);
  glVertexPointer(3, GL_FLOAT, 0, nullptr);
}

void unbindArrays(Colours colours) {
  glDisableClientState(GL_VERTEX_ARRAY);
  if (colours != Colours::None) {
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  }
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

// ---- Submission through client arrays -------------------------------------

void bindClientArrays(Mesh& mesh, Colours colours) {
  const int m = arraySlot(mesh);
  glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
  glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
  glEnableClientState(GL_VERTEX_ARRAY);
  if (colours != Colours::None) {
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glNormalPointer(GL_FLOAT, 0, mesh.normalArray);
    glTexCoordPointer(3, GL_FLOAT, 0, mesh.texCoordArray[m]);
    glColorPointer(4, GL_FLOAT, 0, colours == Colours::B ? mesh.colourArrayB[m] : mesh.colourArrayA[m]);
  }
  glVertexPointer(3, GL_FLOAT, 0, mesh.vertexArray);
}

// ---- Submission through display lists -------------------------------------

void emitVertex(const Mesh& mesh, unsigned v, Colours colours, int m) {
  if (colours != Colours::None) {
    const float* n = mesh.normalArray + v * 3;
    const float* t = mesh.texCoordArray[m] + v * 3;
    const float* c = (colours == Colours::B ? mesh.colourArrayB[m] : mesh.colourArrayA[m]) + v * 4;
    glNormal3f(n[0], n[1], n[2]);
    glTexCoord2f(t[0], t[1]);
    glColor4f(c[0], c[1], c[2], c[3]);
  }
  const float* p = mesh.vertexArray + v * 3;
  glVertex3f(p[0], p[1], p[2]);
}

void compileList(const Mesh& mesh, Colours colours) {
  const int m = arraySlot(mesh);
  if (!mesh.vertexArray || mesh.vertexCapacity == 0) return;
  if (mesh.stripMode) {
    glBegin(GL_TRIANGLE_STRIP);
    // 1-based indices up to the zero terminator; out-of-range entries are skipped.
    for (const int* s = mesh.stripIndices; s && *s != 0; ++s) {
      const int v = *s - 1;
      if (v >= 0 && static_cast<unsigned>(v) < mesh.vertexCapacity) emitVertex(mesh, v, colours, m);
    }
    glEnd();
  } else {
    if (!mesh.indexArray) return;
    glBegin(GL_TRIANGLES);
    for (unsigned i = 0; i < mesh.drawnFaceCount * 3; ++i) {
      const unsigned v = mesh.indexArray[i];
      if (v < mesh.vertexCapacity) emitVertex(mesh, v, colours, m);
    }
    glEnd();
  }
}

void submitDisplayList(Mesh& mesh, int pass, Colours colours, bool drawIt) {
  if (!drawIt) return;
  GLuint* list;
  bool* built;
  if (pass == meshPassBase) {
    list = &mesh.colourBList;
    built = &mesh.colourBListBuilt;
  } else if (pass < 3) {
    list = &mesh.colourAList;
    built = &mesh.colourAListBuilt;
  } else {
    list = &mesh.depthList;
    built = &mesh.depthListBuilt;
  }
  if (!*built) {
    // A list compiled here is not drawn by this same call.
    glNewList(*list, GL_COMPILE);
    compileList(mesh, colours);
    glEndList();
    *built = true;
  } else {
    glCallList(*list);
  }
}

// One submission by the path the capability flags choose: display lists win
// over buffers, buffers over client arrays. drawIt false only binds (a hidden
// batchFirst) or only restores (a hidden batchLast).
void submit(Mesh& mesh, int pass, Colours colours, bool drawIt) {
  if (useDisplayLists) {
    submitDisplayList(mesh, pass, colours, drawIt);
    return;
  }
  const bool buffers = useVertexBuffers;
  if (mesh.setupState) {
    if (buffers)
      bindBuffers(mesh, colours);
    else
      bindClientArrays(mesh, colours);
  }
  if (drawIt && !mesh.stripMode && mesh.drawnFaceCount > 0) {
    if (buffers) {
      // Index offset 0 is only meaningful with an element buffer bound: a
      // batch member drawn with nothing set up before it draws nothing.
      GLint elementBuffer = 0;
      glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING_ARB, &elementBuffer);
      if (elementBuffer != 0)
        glDrawRangeElements(GL_TRIANGLES, 0, mesh.vertexSlotCount, mesh.drawnFaceCount * 3, GL_UNSIGNED_SHORT,
                            nullptr);
    } else if (mesh.indexArray && mesh.vertexSlotCount > 0) {
      // Client memory: the range names the last index that exists.
      glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
      glDrawRangeElements(GL_TRIANGLES, 0, mesh.vertexSlotCount - 1, mesh.drawnFaceCount * 3, GL_UNSIGNED_SHORT,
                          mesh.indexArray);
    }
  }
  if (mesh.restoreState) unbindArrays(colours);
}

// ---- Shells ----------------------------------------------------------------

void drawShells(Mesh& mesh, Material& f, int pass) {
  const int m = arraySlot(mesh);
  if (!f.shellTexture3D) {
    glEnable(GL_TEXTURE_2D);
    const unsigned count = std::min<unsigned>(f.shellCount, Material::maxShellTextures);
    for (unsigned k = 0; k < count; ++k) {
      glBindTexture(GL_TEXTURE_2D, f.shellTextures[k]);
      glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
      glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
      glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
      glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    }
  } else {
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_TEXTURE_3D);
    glBindTexture(GL_TEXTURE_3D, f.shellTextures[0]);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  }

  if (pass < 4) {
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  } else {
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
  }
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glCullFace(GL_BACK);

  const unsigned slots = std::min<unsigned>(mesh.vertexCapacity, static_cast<unsigned>(mesh.vertices.size()));
  const float* source = pass < 4 ? mesh.colourArrayA[m] : mesh.colourArrayC[m];
  float* colours = mesh.shellColourArray[m];
  float* texCoords = mesh.shellTexCoordArray[m];
  if (!colours || !texCoords || !mesh.shellVertexArray || !mesh.indexArray || !mesh.normalArray) return;
  for (unsigned i = 0; i < slots; ++i) {
    const Vertex* v = mesh.vertices[i];
    if (!v || v->dead) continue;
    for (int c = 0; c < 4; ++c) colours[i * 4 + c] = source ? source[i * 4 + c] : 0.0f;
    texCoords[i * 3 + 0] = v->texCoord.x * f.shellScaleU;
    texCoords[i * 3 + 1] = v->texCoord.y * f.shellScaleV;
    texCoords[i * 3 + 2] = 0.0f;
  }

  for (unsigned k = 0; k < f.shellCount; ++k) {
    const float height = f.shellLength * static_cast<float>(k) / static_cast<float>(f.shellCount);
    float third = 0.0f;
    if (!f.shellTexture3D) {
      if (k < static_cast<unsigned>(Material::maxShellTextures)) glBindTexture(GL_TEXTURE_2D, f.shellTextures[k]);
      const GLenum mode = stageEnvironmentMode(f.stageMode[0]);
      if (mode) glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, mode);
    } else {
      third = static_cast<float>(k) / static_cast<float>(f.shellCount);
    }
    for (unsigned i = 0; i < slots; ++i) {
      const Vertex* v = mesh.vertices[i];
      if (!v || v->dead) continue;
      const Vector3 p = v->position + (f.shellDirection + v->normal) * height;
      mesh.shellVertexArray[i * 3 + 0] = p.x;
      mesh.shellVertexArray[i * 3 + 1] = p.y;
      mesh.shellVertexArray[i * 3 + 2] = p.z;
      texCoords[i * 3 + 2] = third;
    }
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glEnableClientState(GL_VERTEX_ARRAY);
    glNormalPointer(GL_FLOAT, 0, mesh.normalArray);
    glColorPointer(4, GL_FLOAT, 0, colours);
    glTexCoordPointer(3, GL_FLOAT, 0, texCoords);
    glVertexPointer(3, GL_FLOAT, 0, mesh.shellVertexArray);
    if (mesh.drawnFaceCount > 0 && mesh.vertexSlotCount > 0)
      glDrawRangeElements(GL_TRIANGLES, 0, mesh.vertexSlotCount - 1, mesh.drawnFaceCount * 3, GL_UNSIGNED_SHORT,
                          mesh.indexArray);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
  }

  glDisable(GL_TEXTURE_3D);
  glDisable(GL_ALPHA_TEST);
  glEnable(GL_TEXTURE_2D);
  glDepthMask(GL_TRUE);
}

}  // namespace

// ---------------------------------------------------------------------------
// Helpers
// ---------------------------------------------------------------------------

void cubeMapBegin(GLuint texture) {
  glEnable(GL_TEXTURE_CUBE_MAP);
  glBindTexture(GL_TEXTURE_CUBE_MAP, texture);
  glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
  glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
  glTexGeni(GL_R, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
  glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  glEnable(GL_TEXTURE_GEN_S);
  glEnable(GL_TEXTURE_GEN_T);
  glEnable(GL_TEXTURE_GEN_R);
}

void cubeMapEnd() {
  glDisable(GL_TEXTURE_CUBE_MAP);
  glDisable(GL_TEXTURE_GEN_S);
  glDisable(GL_TEXTURE_GEN_T);
  glDisable(GL_TEXTURE_GEN_R);
}

GLenum stageEnvironmentMode(int stageMode) {
  switch (stageMode) {
    case stageModulate: return GL_MODULATE;
    case stageAdd: return GL_ADD;
    case stageModulateTwoPass: return GL_MODULATE;
    case stageBlend: return GL_BLEND;
    default: return 0;
  }
}

void computeEyeSpace(Mesh& mesh) {
  const float* m = mesh.modelviewMatrix;
  auto transform = [m](const Vector3& v) {
    // Full 4x4 with w = 1, for the normal as well (see the header).
    return Vector3(m[0] * v.x + m[4] * v.y + m[8] * v.z + m[12], m[1] * v.x + m[5] * v.y + m[9] * v.z + m[13],
                   m[2] * v.x + m[6] * v.y + m[10] * v.z + m[14]);
  };
  for (Vertex* v : mesh.vertices) {
    if (!v || v->dead) continue;
    v->eyePosition = transform(v->position);
    v->eyeNormal = transform(v->normal);
  }
}

void refractionTexCoord(const Vector3& e, const Vector3& n, float offset, float W, float H, float* s, float* t) {
  const float z = std::max(-e.z, 1e-05f);
  float u = (e.x * 0.33333334f / z + 0.5f) * W + offset * n.x;
  float v = offset * 1.3333f * n.y + (e.y * 0.44444668f / z + 0.5f) * H;
  *s = std::min(std::max(u, 0.1f), 0.9f);
  *t = std::min(std::max(v, 0.1f), 0.75f);
}

void refractionPrepare(Mesh& mesh, int p) {
  const Material& constants = mesh.materials[0];
  const int m = arraySlot(mesh);
  RenderTarget* target = mesh.renderTarget;
  if (target) target->copyToSlot(target->firstFreeSlot + 3);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  float offset;
  float alphaFactor;
  if (p == 0) {
    offset = constants.refractionFront;
    glCullFace(GL_FRONT);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
    alphaFactor = constants.refractionAlpha;
  } else {
    glCullFace(GL_BACK);
    offset = constants.refractionBack;
    alphaFactor = 1.0f / constants.refractionAlpha;
  }

  const unsigned slots = std::min<unsigned>(mesh.vertexCapacity, static_cast<unsigned>(mesh.vertices.size()));
  for (unsigned i = 0; i < slots; ++i) {
    const Vertex* v = mesh.vertices[i];
    if (!v || v->dead) continue;
    if (mesh.colourArrayB[m]) mesh.colourArrayB[m][i * 4 + 3] *= alphaFactor;
    if (mesh.colourArrayC[m]) mesh.colourArrayC[m][i * 4 + 3] *= alphaFactor;
    if (mesh.normalArray) {
      for (int c = 0; c < 3; ++c) mesh.normalArray[i * 3 + c] = -mesh.normalArray[i * 3 + c];
    }
  }

  float W = 1.0f, H = 1.0f;
  if (target && target->width > 0 && target->height > 0) {
    W = static_cast<float>(target->effectiveWidth) / static_cast<float>(target->width);
    H = static_cast<float>(target->effectiveHeight) / static_cast<float>(target->height);
  }
  float* texCoords = mesh.texCoordArray[m];
  if (!texCoords) return;
  for (unsigned i = 0; i < slots; ++i) {
    const Vertex* v = mesh.vertices[i];
    if (!v || v->dead) continue;
    refractionTexCoord(v->eyePosition, v->eyeNormal, offset, W, H, &texCoords[i * 3], &texCoords[i * 3 + 1]);
    texCoords[i * 3 + 2] = 0.0f;
  }
}

void lightFollowingTextureMatrix(Mesh& mesh) {
  const Vector3 d = mesh.position - mesh.lightPosition;
  static const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const float* m = mesh.camera ? mesh.camera->modelviewMatrix : identity;
  const Vector3 e(m[0] * d.x + m[4] * d.y + m[8] * d.z, m[1] * d.x + m[5] * d.y + m[9] * d.z,
                  m[2] * d.x + m[6] * d.y + m[10] * d.z);
  const float h = std::sqrt(e.x * e.x + e.z * e.z);
  const float a = angleOf(e.x, e.z);
  const float b = angleOf(e.y, h);
  glMatrixMode(GL_TEXTURE);
  glLoadIdentity();
  // The two spellings of pi are kept as they are: double in the first
  // division and the subtraction, float in the last division.
  glRotatef(static_cast<float>(b * (-2) / 3.14159265358979 * 180), 1.0f, 0.0f, 0.0f);
  glRotatef(static_cast<float>(-(a - 3.14159265358979) / 3.1415927f * 180), 0.0f, 1.0f, 0.0f);
  glMatrixMode(GL_MODELVIEW);
}

// ---------------------------------------------------------------------------
// Mesh::draw
// ---------------------------------------------------------------------------

void Mesh::draw(int pass, bool allowMatrix, int reserved, bool shadowUnitShift) {
  (void)reserved;  // has no effect
  if (faces.empty()) return;
  if (!visible && !batchFirst && !batchLast) return;

  Material& material = currentMaterialOf(*this);
  const bool wireframe = material.wireframe;

  glPushMatrix();
  if (wireframe) {
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glEnable(GL_LINE_SMOOTH);
    glLineWidth(1.0f);
  }

  // Object transform.
  if (useMatrix && allowMatrix) {
    glMultMatrixf(matrix);
  } else {
    glTranslatef(position.x, position.y, position.z);
    glRotatef(rotation.x, 1.0f, 0.0f, 0.0f);
    glRotatef(rotation.y, 0.0f, 1.0f, 0.0f);
    glRotatef(rotation.z, 0.0f, 0.0f, 1.0f);
    glScalef(scale.x, scale.y, scale.z);
  }

  if (material.refractive && pass < 4) {
    glGetFloatv(GL_MODELVIEW_MATRIX, modelviewMatrix);
    computeEyeSpace(*this);
  }

  // Material and texture stages.
  int submissions = 1;
  const unsigned stages = std::min<unsigned>(material.stageCount, 3);
  if (setupState) {
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    const float noAmbient[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, noAmbient);
    float specular[4];
    material.specular.toArray(specular);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, material.shininess);

    if (pass == 1 || pass > 3) {
      glEnable(GL_TEXTURE_2D);
      glDisable(GL_NORMALIZE);
    } else {
      if (stages == 0) {
        glDisable(GL_TEXTURE_2D);
      } else {
        for (unsigned s = 0; s < stages; ++s) {
          glActiveTextureARB(stageUnit(s, shadowUnitShift));
          if (s == 2) lightFollowingTextureMatrix(*this);
          if (material.stageMode[s] == stageOff || (pass > 2 && s != 0)) {
            glDisable(GL_TEXTURE_2D);
            continue;
          }
          if (material.stageCubeMap[s]) {
            cubeMapBegin(material.stageTexture[s]);
          } else {
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, material.stageTexture[s]);
          }
          const GLenum mode = stageEnvironmentMode(material.stageMode[s]);
          if (mode) glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, mode);
          if (material.stageMode[s] == stageModulateTwoPass) submissions = 2;
          if (!material.stageCubeMap[s]) {
            const GLint wrap = s == 0 ? GL_REPEAT : GL_CLAMP;
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
          }
        }
        glEnable(GL_NORMALIZE);
      }
    }
    // A refractive body is drawn twice: inner surface, then outer.
    if (material.refractive) submissions = 2;

    glActiveTextureARB(GL_TEXTURE0_ARB);
    if (pass < 3) {
      glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    } else {
      glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      submissions = 1;
    }
  }

  // Geometry.
  if (visible) {
    if (pass < 4) {
      const Colours colours = pass == meshPassBase ? Colours::B : Colours::A;
      for (int p = 0; p < submissions; ++p) {
        if (material.refractive) refractionPrepare(*this, p);
        if (material.stageMode[0] == stageModulateTwoPass) {
          if (p == 0) {
            glDisable(GL_TEXTURE_2D);
          } else {
            glEnable(GL_TEXTURE_2D);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE);
          }
        }
        submit(*this, pass, colours, true);
      }
    } else {
      submit(*this, pass, Colours::None, true);
    }
    if (material.shellsEnabled) drawShells(*this, material, pass);
  } else {
    // A hidden batchFirst still binds for its batch; a hidden batchLast
    // still releases it.
    submit(*this, pass, pass < meshPassDepth ? (pass == meshPassBase ? Colours::B : Colours::A) : Colours::None, false);
  }

  // Restore.
  if (restoreState) {
    for (unsigned s = 0; s < stages; ++s) {
      if (material.stageMode[s] != stageOff && material.stageCubeMap[s]) {
        glActiveTextureARB(stageUnit(s, shadowUnitShift));
        cubeMapEnd();
      }
    }
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glActiveTextureARB(GL_TEXTURE0_ARB);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_CUBE_MAP);
    glActiveTextureARB(shadowUnitShift ? GL_TEXTURE2_ARB : GL_TEXTURE1_ARB);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
    glDisable(GL_TEXTURE_CUBE_MAP);
    glDisable(GL_TEXTURE_2D);
    for (GLenum unit = GL_TEXTURE2_ARB; unit <= GL_TEXTURE3_ARB; ++unit) {
      glActiveTextureARB(unit);
      glMatrixMode(GL_TEXTURE);
      glLoadIdentity();
      glMatrixMode(GL_MODELVIEW);
      glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD);
      glDisable(GL_TEXTURE_CUBE_MAP);
      glDisable(GL_TEXTURE_2D);
    }
    glActiveTextureARB(GL_TEXTURE0_ARB);
    if (wireframe) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  }

  glPopMatrix();
}
