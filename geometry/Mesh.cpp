// Mesh and Material: slots, free lists, normals, editing and the flattening
// into arrays. Drawing and the copies on the card are in the render layer.
#include "geometry/Mesh.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "foundation/Capabilities.h"

Light *(*createMeshLight)() = nullptr;
void (*destroyMeshLight)(Light *) = nullptr;

// ===========================================================================
// Material
// ===========================================================================
Material::Material()
    : ambient(0.0f, 0.0f, 0.0f, 1.0f),
      diffuse(0.5f, 0.5f, 0.5f, 1.0f),
      specular(0.0f, 0.0f, 0.0f, 1.0f),
      shininess(0.0f),
      stageCount(0),
      weight(1.0f),
      castsShadow(true),
      receivesShadow(true),
      spareFlag(false),
      refractive(false),
      refractionFront(0.15f),
      refractionBack(-0.1f),
      refractionAlpha(0.5f),
      shellsEnabled(false),
      shellCount(0),
      shellSpare(0),
      shellTexture3D(false),
      shellScaleU(2.0f),
      shellScaleV(2.0f),
      shellLength(0.75f),
      wireframe(false) {
  for (int s = 0; s < 3; ++s) {
    stageMode[s] = 0;
    stageTexture[s] = 0;
    stageCubeMap[s] = false;
    stageDetail[s] = false;
    stageScaleU[s] = stageScaleV[s] = 1.0f;
    stageOffsetU[s] = stageOffsetV[s] = 0.0f;
  }
  std::fill(shellTextures, shellTextures + maxShellTextures, 0u);
}

// ===========================================================================
// Construction
// ===========================================================================
Mesh::Mesh()
    : faceCount(0),
      vertexCount(0),
      vertexSlotCount(0),
      normalsDirty(false),
      setupState(true),
      restoreState(true),
      batchFirst(false),
      batchLast(false),
      materials(new Material[materialCount]),
      currentMaterial(0),
      camera(nullptr),
      scale(1.0f, 1.0f, 1.0f),
      visible(true),
      rowCount(0),
      columnCount(0),
      inverted(false),
      vertexArray(nullptr),
      normalArray(nullptr),
      indexArray(nullptr),
      indexArrayCopy(nullptr),
      faceNormalArray(nullptr),
      shellVertexArray(nullptr),
      vertexCapacity(0),
      faceCapacity(0),
      renderTarget(nullptr),
      keepInvisibleFaces(true),
      drawnFaceCount(0),
      drawnFaceCountCopy(0),
      matrix(new float[16]),
      modelviewMatrix(new float[16]),
      lightRecord(createMeshLight ? createMeshLight() : nullptr),
      anyArrayDirty(true),
      coloursDirty(true),
      coloursDirtyToo(true),
      texCoordsDirty(true),
      positionsDirty(true),
      indicesDirty(true),
      useMatrix(false),
      indexBuffer(0), vertexBuffer(0), normalBuffer(0),
      texCoordBuffer0(0), colourBufferA0(0), colourBufferB0(0),
      texCoordBuffer1(0), colourBufferA1(0), colourBufferB1(0),
      colourBList(0), colourAList(0), depthList(0), spareList1(0), spareList2(0),
      colourBListBuilt(false), colourAListBuilt(false), depthListBuilt(false),
      spareBuilt1(false), spareBuilt2(false),
      buffersCreated(false),
      stripMode(false),
      stripIndices(nullptr),
      stripCount(0),
      stripLengths(nullptr) {
  for (int m = 0; m < arrayMaterialCount; ++m) {
    colourArrayA[m] = colourArrayB[m] = colourArrayC[m] = nullptr;
    texCoordArray[m] = nullptr;
    shellColourArray[m] = shellTexCoordArray[m] = nullptr;
  }
  for (int i = 0; i < 16; ++i) matrix[i] = modelviewMatrix[i] = (i % 5 == 0) ? 1.0f : 0.0f;
  faces.reserve(1);
  vertices.reserve(1);
}

Mesh::~Mesh() {
  for (Vertex *v : vertices) delete v;
  for (Face *f : faces) delete f;
  if (vertexCapacity != 0) freeVertexArrays();
  if (faceCapacity != 0) freeFaceArrays();
  delete[] materials;
  if (lightRecord && destroyMeshLight) destroyMeshLight(lightRecord);
  delete[] matrix;
  delete[] modelviewMatrix;
  delete[] stripIndices;
  delete[] stripLengths;
  // GL names are not deleted: meshes live to the end of the run.
}

// ===========================================================================
// Slots
// ===========================================================================
int Mesh::addVertex(const Vector3 &position, const Vector3 &texCoord, const Vector3 &colour) {
  ++vertexCount;
  anyArrayDirty = true;
  int index;
  Vertex *v;
  if (!freeVertices.empty()) {
    index = freeVertices.front();
    freeVertices.pop_front();
    v = vertices[size_t(index)];
    v->dead = false;  // alpha keeps the value the slot had
  } else {
    index = int(vertices.size());
    v = new Vertex();
    vertices.push_back(v);
    ++vertexSlotCount;
  }
  v->position = position;
  v->texCoord = texCoord;
  v->colour = colour;
  return index;
}

namespace {
[[maybe_unused]] bool isSlot(const std::vector<Vertex *> &table, int index) { return index >= 0 && size_t(index) < table.size(); }
}  // namespace

int Mesh::addFace(int a, int b, int c) {
  // Corners name existing vertex slots; callers that read files check first.
  assert(isSlot(vertices, a) && isSlot(vertices, b) && isSlot(vertices, c));
  ++faceCount;
  indicesDirty = true;
  int index;
  Face *f;
  if (!freeFaces.empty()) {
    index = freeFaces.front();
    freeFaces.pop_front();
    f = faces[size_t(index)];
    f->dead = false;
  } else {
    index = int(faces.size());
    f = new Face();
    faces.push_back(f);
  }
  f->vertexIndices[0] = a;
  f->vertexIndices[1] = b;
  f->vertexIndices[2] = c;
  for (int corner : {a, b, c}) vertices[size_t(corner)]->faces.push_back(index);
  liveFaces.push_back(index);
  return index;
}

void Mesh::removeFaceAt(std::list<int>::iterator where) {
  const int index = *where;
  liveFaces.erase(where);
  if (faceCount > 0) --faceCount;
  Face *f = faces[size_t(index)];
  for (int corner : f->vertexIndices) {
    std::list<int> &users = vertices[size_t(corner)]->faces;
    auto it = std::find(users.begin(), users.end(), index);
    if (it != users.end()) users.erase(it);
  }
  for (int corner : f->vertexIndices) releaseVertex(corner);
  f->dead = true;
  freeFaces.push_back(index);
  // indicesDirty is left alone, as the original does: the next addFace sets it.
}

void Mesh::removeOldestFace() {
  if (!liveFaces.empty()) removeFaceAt(liveFaces.begin());
}

void Mesh::removeNewestFace() {
  if (!liveFaces.empty()) removeFaceAt(std::prev(liveFaces.end()));
}

void Mesh::removeFace(int index) {
  if (index < 0 || size_t(index) >= faces.size() || faces[size_t(index)]->dead) return;
  auto it = std::find(liveFaces.begin(), liveFaces.end(), index);
  if (it != liveFaces.end()) removeFaceAt(it);
}

void Mesh::releaseVertex(int index) {
  if (index < 0 || size_t(index) >= vertices.size()) return;
  Vertex *v = vertices[size_t(index)];
  // A slot already free is not freed twice (a face with a repeated corner
  // releases it twice), so the free list never holds a slot two times.
  if (v->dead || !v->faces.empty()) return;
  v->dead = true;
  if (vertexCount > 0) --vertexCount;
  freeVertices.push_back(index);
}

// ===========================================================================
// Normals
// ===========================================================================
void Mesh::computeFaceNormals(const std::list<int> *list) {
  auto compute = [this](int index) {
    if (index < 0 || size_t(index) >= faces.size()) return;
    Face *f = faces[size_t(index)];
    if (f->dead) return;
    const Vector3 &v0 = vertices[size_t(f->vertexIndices[0])]->position;
    const Vector3 &v1 = vertices[size_t(f->vertexIndices[1])]->position;
    const Vector3 &v2 = vertices[size_t(f->vertexIndices[2])]->position;
    f->normal = cross(v1 - v0, v2 - v0);
    f->unitNormal = f->normal;
  };
  if (list)
    for (int i : *list) compute(i);
  else
    for (size_t i = 0; i < faces.size(); ++i) compute(int(i));
}

void Mesh::computeVertexNormals(bool unit, const std::list<int> *list) {
  auto sum = [this](int index) {
    if (index < 0 || size_t(index) >= vertices.size()) return;
    Vertex *v = vertices[size_t(index)];
    if (v->dead) return;
    Vector3 n;
    for (int f : v->faces) n += faces[size_t(f)]->normal;
    v->normal = n;
  };
  auto unitise = [this](int index) {
    if (index < 0 || size_t(index) >= vertices.size()) return;
    Vertex *v = vertices[size_t(index)];
    if (!v->dead) v->normal.setLength(1.0f);
  };
  if (list) {
    for (int i : *list) sum(i);
    if (unit)
      for (int i : *list) unitise(i);
  } else {
    for (size_t i = 0; i < vertices.size(); ++i) sum(int(i));
    if (unit)
      for (size_t i = 0; i < vertices.size(); ++i) unitise(int(i));
  }
}

void Mesh::normalizeFaceNormals(const std::list<int> *list) {
  auto unitise = [this](int index) {
    if (index < 0 || size_t(index) >= faces.size()) return;
    Face *f = faces[size_t(index)];
    if (!f->dead) f->unitNormal.setLength(1.0f);
  };
  if (list)
    for (int i : *list) unitise(i);
  else
    for (size_t i = 0; i < faces.size(); ++i) unitise(int(i));
}

// ===========================================================================
// Editing
// ===========================================================================
void Mesh::setMaterial(const Material &source) {
  Material &m = materials[currentMaterial];
  m.ambient = source.ambient;
  m.ambient.alpha = source.ambient.alpha;
  m.diffuse = source.diffuse;
  m.diffuse.alpha = source.diffuse.alpha;
  m.specular = source.specular;
  m.specular.alpha = source.specular.alpha;
  // shininess is deliberately not copied: a mesh keeps 0 whatever the source says.
  m.stageCount = source.stageCount;
  m.weight = source.weight;
  m.castsShadow = source.castsShadow;
  m.receivesShadow = source.receivesShadow;
  m.spareFlag = source.spareFlag;
  m.refractive = source.refractive;
  m.refractionFront = source.refractionFront;
  m.refractionBack = source.refractionBack;
  m.refractionAlpha = source.refractionAlpha;
  m.shellsEnabled = source.shellsEnabled;
  m.shellCount = source.shellCount;
  m.shellSpare = source.shellSpare;
  m.shellTexture3D = source.shellTexture3D;
  m.shellScaleU = source.shellScaleU;
  m.shellScaleV = source.shellScaleV;
  m.shellDirection = source.shellDirection;
  m.shellLength = source.shellLength;
  m.wireframe = source.wireframe;
  const unsigned shells = std::min<unsigned>(source.shellCount, Material::maxShellTextures);
  for (unsigned k = 0; k < shells; ++k) m.shellTextures[k] = source.shellTextures[k];
  const unsigned stages = std::min<unsigned>(source.stageCount, 3);
  for (unsigned s = 0; s < stages; ++s) {
    m.stageMode[s] = source.stageMode[s];
    m.stageTexture[s] = source.stageTexture[s];
    m.stageCubeMap[s] = source.stageCubeMap[s];
    m.stageDetail[s] = source.stageDetail[s];
    m.stageScaleU[s] = source.stageScaleU[s];
    m.stageScaleV[s] = source.stageScaleV[s];
    m.stageOffsetU[s] = source.stageOffsetU[s];
    m.stageOffsetV[s] = source.stageOffsetV[s];
  }
}

void Mesh::setAllVertexColours(const Vector3 &colour, float alpha) {
  // Only slots below vertexCount, as the original loop bound says.
  const size_t limit = std::min(vertices.size(), size_t(std::max(vertexCount, 0)));
  for (size_t i = 0; i < limit; ++i) {
    Vertex *v = vertices[i];
    if (v->dead) continue;
    v->colour = colour;
    v->alpha = alpha;
  }
}

void Mesh::recentre() {
  Vector3 sum;
  int live = 0;
  for (Vertex *v : vertices)
    if (!v->dead) {
      sum += v->position;
      ++live;
    }
  if (live == 0) return;
  const Vector3 centre = sum * (1.0f / float(live));
  for (Vertex *v : vertices)
    if (!v->dead) v->position -= centre;
  position += centre;
}

void Mesh::moveVertices(const std::list<int> &list, float amount, Vector3 &direction, bool weighted,
                        const std::list<float> &weights, float (*falloff)(float)) {
  direction *= amount;  // deliberately in place: the caller's vector changes
  normalsDirty = true;
  auto w = weights.begin();
  for (int index : list) {
    float factor = 1.0f;
    if (weighted) {
      const float weight = w != weights.end() ? *w : 0.0f;
      factor = falloff ? falloff(1.0f - weight) : 1.0f - weight;
    }
    if (w != weights.end()) ++w;
    if (index < 0 || size_t(index) >= vertices.size()) continue;
    vertices[size_t(index)]->position += direction * factor;
  }
}

void Mesh::selectInSphere(std::list<int> &faceList, std::list<int> &vertexList,
                          std::list<float> &weights, const Vector3 &centre, float radius) {
  for (Face *f : faces)
    if (!f->dead) f->selectedCorners = 0;
  for (size_t i = 0; i < vertices.size(); ++i) {
    Vertex *v = vertices[i];
    if (v->dead) continue;
    const float distance = (v->position - centre).length();
    if (distance <= radius) {
      vertexList.push_back(int(i));
      weights.push_back(distance / radius);
      for (int f : v->faces) {
        Face *face = faces[size_t(f)];
        if (++face->selectedCorners == face->cornerCount) faceList.push_back(f);
      }
    }
  }
}

bool Mesh::intersectFace(int index, const Vector3 &from, const Vector3 &to, float *t) {
  if (index < 0 || size_t(index) >= faces.size()) return false;
  const Face *f = faces[size_t(index)];
  // The segment is taken relative to position only; rotation and scale are
  // ignored.
  const Vector3 a = from - position;
  const Vector3 b = to - position;
  const Vector3 &v0 = vertices[size_t(f->vertexIndices[0])]->position;
  const Vector3 &v1 = vertices[size_t(f->vertexIndices[1])]->position;
  const Vector3 &v2 = vertices[size_t(f->vertexIndices[2])]->position;
  const Vector3 &n = f->unitNormal;
  const float denominator = dot(n, b - a);
  if (denominator == 0.0f) return false;
  const float hit = dot(n, v0 - a) / denominator;
  if (hit < 0.0f || hit > 1.0f) return false;
  const Vector3 p = a + (b - a) * hit;
  // Barycentric coordinates by dot products.
  const Vector3 e0 = v1 - v0, e1 = v2 - v0, ep = p - v0;
  const float d00 = dot(e0, e0), d01 = dot(e0, e1), d11 = dot(e1, e1);
  const float d20 = dot(ep, e0), d21 = dot(ep, e1);
  float det = d00 * d11 - d01 * d01;
  float u = d11 * d20 - d01 * d21;
  float v = d00 * d21 - d01 * d20;
  if (det != 0.0f) {
    u /= det;
    v /= det;
  }  // a zero denominator leaves the raw values, as the original does
  if (u >= 0.0f && v >= 0.0f && u + v <= 1.0f) {
    *t = hit;
    return true;
  }
  return false;
}

bool Mesh::pick(const Vector3 &from, const Vector3 &to, float *t, int *face,
                float maxDistanceSquared) {
  *t = 2.0f;
  *face = 0;
  for (int index : liveFaces) {
    const Face *f = faces[size_t(index)];
    if (maxDistanceSquared != 0.0f) {
      const Vector3 d = vertices[size_t(f->vertexIndices[0])]->position - from;
      if (d.lengthSquared() > maxDistanceSquared) continue;
    }
    float hit;
    if (intersectFace(index, from, to, &hit) && hit < *t) {
      *t = hit;
      *face = index;
    }
  }
  return *t != 2.0f;
}

// ===========================================================================
// Arrays
// ===========================================================================
void Mesh::freeVertexArrays() {
  delete[] vertexArray;
  delete[] normalArray;
  delete[] shellVertexArray;
  vertexArray = normalArray = shellVertexArray = nullptr;
  for (int m = 0; m < arrayMaterialCount; ++m) {
    delete[] colourArrayA[m];
    delete[] colourArrayB[m];
    delete[] colourArrayC[m];
    delete[] texCoordArray[m];
    delete[] shellColourArray[m];
    delete[] shellTexCoordArray[m];
    colourArrayA[m] = colourArrayB[m] = colourArrayC[m] = nullptr;
    texCoordArray[m] = shellColourArray[m] = shellTexCoordArray[m] = nullptr;
  }
}

void Mesh::freeFaceArrays() {
  delete[] indexArray;
  delete[] indexArrayCopy;
  delete[] faceNormalArray;
  indexArray = indexArrayCopy = nullptr;
  faceNormalArray = nullptr;
}

bool Mesh::flattenArrays() {
  // 1. Grow (never shrink). New arrays start zeroed; old contents are lost.
  if (vertexSlotCount > vertexCapacity) {
    freeVertexArrays();
    const size_t n = vertexSlotCount;
    vertexArray = new float[n * 3]();
    normalArray = new float[n * 3]();
    shellVertexArray = new float[n * 3]();
    for (int m = 0; m < arrayMaterialCount; ++m) {
      colourArrayA[m] = new float[n * 4]();
      colourArrayB[m] = new float[n * 4]();
      colourArrayC[m] = new float[n * 4]();  // zero-filled: nothing else writes it
      texCoordArray[m] = new float[n * 3]();
      shellColourArray[m] = new float[n * 4]();
      shellTexCoordArray[m] = new float[n * 3]();
    }
    vertexCapacity = vertexSlotCount;
  }
  if (faceCount > 0 && unsigned(faceCount) > faceCapacity) {
    freeFaceArrays();
    const size_t n = size_t(faceCount);
    indexArray = new uint16_t[n * 3]();
    indexArrayCopy = new uint16_t[n * 3]();
    faceNormalArray = new float[n * 3]();
    faceCapacity = unsigned(faceCount);
  }

  // 2.
  anyArrayDirty = coloursDirty || coloursDirtyToo || texCoordsDirty || positionsDirty;

  // 3. Indices, live faces in slot order. Slots are truncated to 16 bits.
  const bool writeIndices = keepInvisibleFaces ? indicesDirty : (indicesDirty || coloursDirty);
  if (writeIndices) {
    unsigned written = 0;
    for (size_t i = 0; i < faces.size(); ++i) {
      const Face *f = faces[i];
      if (f->dead) continue;
      if (!keepInvisibleFaces) {
        bool allHidden = true;
        for (int corner : f->vertexIndices)
          if (vertices[size_t(corner)]->alpha != 0.0f) allHidden = false;
        if (allHidden) continue;
      }
      if (written >= faceCapacity) break;  // cannot happen: live faces == faceCount
      for (int c = 0; c < 3; ++c) {
        indexArray[written * 3 + c] = uint16_t(f->vertexIndices[c]);
        indexArrayCopy[written * 3 + c] = uint16_t(f->vertexIndices[c]);
      }
      ++written;
    }
    drawnFaceCount = drawnFaceCountCopy = written;
  }

  // 4. Vertex arrays.
  if (anyArrayDirty) {
    if (positionsDirty) {
      for (size_t i = 0; i < vertices.size(); ++i) {
        const Vertex *v = vertices[i];
        if (v->dead) continue;
        for (int c = 0; c < 3; ++c) {
          vertexArray[i * 3 + c] = v->position[c];
          normalArray[i * 3 + c] = v->normal[c];
        }
      }
    }
    if (texCoordsDirty) {
      for (int m = 0; m < arrayMaterialCount; ++m) {
        const Material &mat = materials[m];
        for (size_t i = 0; i < vertices.size(); ++i) {
          const Vertex *v = vertices[i];
          if (v->dead) continue;
          texCoordArray[m][i * 3 + 0] = v->texCoord.x * mat.stageScaleU[0] + mat.stageOffsetU[0];
          texCoordArray[m][i * 3 + 1] = v->texCoord.y * mat.stageScaleV[0] + mat.stageOffsetV[0];
          texCoordArray[m][i * 3 + 2] = 0.0f;  // reserved for shells
        }
      }
    }
    if (coloursDirty || coloursDirtyToo) {
      for (int m = 0; m < arrayMaterialCount; ++m) {
        const Material &mat = materials[m];
        for (size_t i = 0; i < vertices.size(); ++i) {
          const Vertex *v = vertices[i];
          if (v->dead) continue;
          float *a = &colourArrayA[m][i * 4];
          float *b = &colourArrayB[m][i * 4];
          for (int c = 0; c < 3; ++c) {
            a[c] = mat.diffuse[c] * v->colour[c] + mat.ambient[c];
            b[c] = mat.ambient[c] * v->colour[c];
          }
          a[3] = mat.diffuse.alpha * v->alpha + mat.ambient.alpha;
          b[3] = (mat.diffuse.alpha + mat.ambient.alpha) * v->alpha;
        }
      }
    }
  }

  // 5.
  if (!indicesDirty && !anyArrayDirty) {
    anyArrayDirty = coloursDirty = coloursDirtyToo = false;
    texCoordsDirty = positionsDirty = indicesDirty = false;
    return false;
  }

  // 8. (Steps 6 and 7, the card's copies, follow in Mesh::updateArrays.)
  anyArrayDirty = coloursDirty = coloursDirtyToo = false;
  texCoordsDirty = positionsDirty = indicesDirty = false;
  return true;
}
