// World: objects, the matrix walk and the render passes (see World.h).
#include "render/World.h"

#include <GL/glew.h>

#include <cstdio>
#include <iostream>

#include "foundation/Camera.h"
#include "foundation/Capabilities.h"
#include "geometry/A3dFile.h"
#include "render/FrameProfile.h"
#include "render/GLErrors.h"
#include "render/RenderTarget.h"

namespace {

// Meshes and billboards outlive their World (see World.h); they are parked
// here so that they stay reachable to the end of the process.
std::vector<void*>& survivors() {
  static std::vector<void*>* list = new std::vector<void*>();
  return *list;
}

// Deep enough for any real hierarchy and within the 32 entries GL promises
// for the modelview stack; a cyclic hierarchy stops here instead of
// recursing without end.
constexpr int maxHierarchyDepth = 24;

void applyCamera(Camera* camera, bool low) {
  if (!camera) return;
  if (low)
    camera->applyLow();
  else
    camera->apply();
}

void releaseCamera(Camera* camera) {
  if (camera) camera->release();
}

void setLowResolution(RenderTarget* target, int value) {
  if (target) target->lowResolution = value;
}

}  // namespace

World::World() = default;

World::~World() {
  for (Mesh* mesh : objects) survivors().push_back(mesh);
  for (Billboard* billboard : billboards) survivors().push_back(billboard);
}

// ---------------------------------------------------------------------------
// Adding objects
// ---------------------------------------------------------------------------

int World::addObject(const Material* material) {
  Mesh* mesh = new Mesh();
  if (material) mesh->setMaterial(*material);  // currentMaterial is 0 on a new mesh
  objects.push_back(mesh);
  children.emplace_back();
  isRoot.push_back(true);
  spareBits.push_back(false);
  return static_cast<int>(objects.size()) - 1;
}

int World::addModel(const std::string& fileName, const Material& material) {
  A3dModel model;
  const int result = readA3d(fileName, model);
  if (result != a3dOk) return result;
  const int index = addObject(&material);
  buildMeshFromA3d(*objects[index], model, fileName);
  objects[index]->normalsDirty = true;
  return index;
}

int World::addLight(LightParameters& light, float unusedNear, float unusedFar, int maxWidth, int maxHeight) {
  (void)unusedNear;
  (void)unusedFar;
  const int index = addObject(nullptr);
  Mesh& mesh = *objects[index];

  // Without framebuffer objects the map is drawn in the back buffer and must
  // fit the window.
  if (light.castsShadow && !hasFramebufferObject &&
      (light.shadowMapSize > maxWidth || light.shadowMapSize > maxHeight)) {
    light.shadowMapSize = shadowMapSizeFitting(maxWidth, maxHeight);
  }
  if (light.castsShadow) std::cout << "final shadowmap size is " << light.shadowMapSize << std::endl;

  // Only these fields are taken from the block; the rest keep the defaults
  // of a new mesh whatever the block says. Intended: every shadow map has
  // a 60-degree view over 0.1..100 and polygon offset on.
  Light& target = *mesh.light();
  target.enabled = light.enabled;
  for (int c = 0; c < 4; ++c) {
    target.ambient[c] = light.ambient[c];
    target.diffuse[c] = light.diffuse[c];
    target.specular[c] = light.specular[c];
  }
  target.direction = light.direction;
  target.positional = light.positional;
  target.offset = light.offset;
  target.spotExponent = light.spotExponent;
  target.spotCutoff = light.spotCutoff;
  target.constantAttenuation = light.constantAttenuation;
  target.linearAttenuation = light.linearAttenuation;
  target.quadraticAttenuation = light.quadraticAttenuation;
  target.castsShadow = light.castsShadow;
  target.shadowMapSize = light.shadowMapSize;

  if (target.castsShadow) {
    glActiveTextureARB(GL_TEXTURE1_ARB);
    glEnable(GL_TEXTURE_2D);
    createShadowMap(mesh);
    glDisable(GL_TEXTURE_2D);
    glActiveTextureARB(GL_TEXTURE0_ARB);
  }
  return index;
}

Mesh* World::object(int index) const {
  return (index >= 0 && index < static_cast<int>(objects.size())) ? objects[index] : nullptr;
}

int World::addBox(int rows, int columns, const Material& material, bool inverted, bool cubeUV) {
  const int index = addObject(&material);
  buildBox(*objects[index], rows, columns, inverted, cubeUV);
  return index;
}

int World::addSphere(float radius, int segments, int rings, const Material& material, bool inverted) {
  const int index = addObject(&material);
  buildSphere(*objects[index], radius, segments, rings, inverted);
  return index;
}

int World::addTube(const Curve& curve, int stations, int sides, const Material& material, const Vector3& reference,
                   float radius, bool inverted) {
  const int index = addObject(&material);
  buildTube(*objects[index], curve, stations, sides, reference, radius, inverted);
  return index;
}

int World::addRibbon(const Material& material) {
  const int index = addObject(&material);
  buildRibbon(*objects[index]);
  return index;
}

int World::addCube(const Material& material, bool inverted) {
  const int index = addObject(&material);
  buildCube(*objects[index], inverted);
  return index;
}

int World::addFromArrays(const float* positions, const float* texCoords, int vertexCount, const int* indices,
                         int faceCount, const Material& material) {
  const int index = addObject(&material);
  buildFromArrays(*objects[index], positions, texCoords, vertexCount, indices, faceCount);
  return index;
}

void World::shapeBox(int index, int rows, int columns, const ShapeParameters& p, bool cubeUV) {
  if (Mesh* mesh = object(index)) ::shapeBox(*mesh, rows, columns, p, cubeUV);
}

void World::shapeSphere(int index, float radius, int segments, int rings, const ShapeParameters& p,
                        bool mapFromUnit, VertexCallback callback) {
  if (Mesh* mesh = object(index)) ::shapeSphere(*mesh, radius, segments, rings, p, mapFromUnit, callback);
}

int World::explodeFaces(int index, int* created, int mode, bool solid, float height, float spread, float bias,
                        bool centre) {
  const int first = static_cast<int>(objects.size());
  Mesh* source = object(index);
  if (!source) return first;
  // The builder copies the source's materials 0 and 1 into each piece.
  ::explodeFaces(*source, [this]() { return objects[addObject(nullptr)]; }, created, mode, solid, height, spread,
                 bias, centre);
  return first;
}

void World::sphericalTexCoords(int index) {
  if (Mesh* mesh = object(index)) ::sphericalTexCoords(*mesh);
}

void World::addChild(int parent, int child, const unsigned char* options) {
  if (parent < 0 || parent >= static_cast<int>(children.size())) return;
  ChildLink link;
  link.child = child;
  if (options) {
    for (int i = 0; i < 3; ++i) link.options[i] = options[i];
  }
  children[parent].push_back(link);
}

void World::refreshLights(bool keepEmpty, bool keepExisting) {
  if (!keepExisting) lights.clear();
  if (keepEmpty) return;
  for (Mesh* mesh : objects) {
    if (mesh->light() && mesh->light()->enabled) lights.push_back(mesh);
  }
}

void World::copyVertices(int fromObject, int toObject) {
  Mesh* from = object(fromObject);
  Mesh* to = object(toObject);
  if (from && to) ::copyVertices(*from, *to);
}

void World::setLightVectors(Mesh& light) {
  const Vector3 direction = light.light() ? light.light()->direction : Vector3(0.0f, 0.0f, 1.0f);
  for (Mesh* mesh : objects) {
    mesh->lightPosition = light.position;
    mesh->lightDirection = direction;
  }
}

// ---------------------------------------------------------------------------
// Matrices
// ---------------------------------------------------------------------------

void World::buildMatrices(int i) { buildMatricesAt(i, 0); }

void World::buildMatricesAt(int i, int depth) {
  if (i < 0 || i >= static_cast<int>(objects.size()) || depth > maxHierarchyDepth) return;
  Mesh& mesh = *objects[i];
  glTranslatef(mesh.position.x, mesh.position.y, mesh.position.z);
  glRotatef(mesh.rotation.x, 1.0f, 0.0f, 0.0f);
  glRotatef(mesh.rotation.y, 0.0f, 1.0f, 0.0f);
  glRotatef(mesh.rotation.z, 0.0f, 0.0f, 1.0f);
  glScalef(mesh.scale.x, mesh.scale.y, mesh.scale.z);
  glGetFloatv(GL_MODELVIEW_MATRIX, mesh.matrix);
  for (const ChildLink& link : children[i]) {
    glPushMatrix();
    buildMatricesAt(link.child, depth + 1);
    glPopMatrix();
  }
}

// ---------------------------------------------------------------------------
// Passes
// ---------------------------------------------------------------------------

void World::drawBillboards(bool depthWrite, bool shadowCastersOnly) {
  if (billboards.empty()) return;
  Billboard& first = *billboards.front();
  billboardBegin(first);
  for (Billboard* billboard : billboards) {
    if (shadowCastersOnly && !billboard->castsShadow) continue;
    billboard->draw(first, depthWrite);
  }
  billboardEnd();
}

void World::basePass(bool writeColour) {
  glEnable(GL_LIGHTING);
  glEnable(GL_LIGHT0);
  glEnable(GL_COLOR_MATERIAL);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_BLEND);
  glEnable(GL_CULL_FACE);
  glCullFace(GL_BACK);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);

  if (!writeColour) {
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  } else {
    // A head-lamp at the eye: the position is given in eye space.
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    const float position[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightfv(GL_LIGHT0, GL_POSITION, position);
    glPopMatrix();
    glLightf(GL_LIGHT0, GL_CONSTANT_ATTENUATION, baseLightAttenuation);
    glLightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, 0.0f);
    glLightf(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 0.1f);
    const float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    const float black[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightfv(GL_LIGHT0, GL_AMBIENT, white);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, white);
    glLightfv(GL_LIGHT0, GL_SPECULAR, black);
  }
  glLightf(GL_LIGHT0, GL_SPOT_EXPONENT, 0.0f);
  glLightf(GL_LIGHT0, GL_SPOT_CUTOFF, 180.0f);

  glDepthFunc(GL_LESS);
  if (!skipping) {
    for (Mesh* mesh : objects) mesh->draw(meshPassBase, true, 0, false);
  }
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glDisable(GL_LIGHTING);
  checkGLErrors("World base pass");
}

void World::litPass(bool blended) {
  if (blended) {
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  }
  glEnable(GL_LIGHTING);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glEnable(GL_COLOR_MATERIAL);

  for (Mesh* lightMesh : lights) {
    Light& light = *lightMesh->light();
    int counter = 0;
    if (!light.castsShadow) {
      applyLight(*lightMesh, &counter);
      setLightVectors(*lightMesh);
      if (!skipping) {
        for (Mesh* mesh : objects) mesh->draw(meshPassLight, true, 0, false);
      }
    } else {
      glActiveTextureARB(GL_TEXTURE1_ARB);
      glEnable(GL_TEXTURE_2D);
      shadowCompareBegin(*lightMesh);
      // The compare result (1 lit, 0 in shadow) must multiply the light's
      // colour. The unit's environment is whatever an earlier draw left:
      // the state restore of every unshifted mesh draw (base pass, shadow
      // map) sets GL_ADD here, which would add 1 to every unshadowed point
      // inside the map's frustum and turn it white instead of shadowing.
      glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
      glActiveTextureARB(GL_TEXTURE2_ARB);
      projectedTextureBegin(*lightMesh);
      glActiveTextureARB(GL_TEXTURE0_ARB);
      applyLight(*lightMesh, &counter);
      setLightVectors(*lightMesh);
      if (!skipping) {
        for (Mesh* mesh : objects) {
          const int m = (mesh->currentMaterial >= 0 && mesh->currentMaterial < Mesh::materialCount)
                            ? mesh->currentMaterial
                            : 0;
          const bool receives = mesh->materials[m].receivesShadow;
          if (!receives) {
            glActiveTextureARB(GL_TEXTURE1_ARB);
            glDisable(GL_TEXTURE_2D);
            glActiveTextureARB(GL_TEXTURE0_ARB);
          }
          // Unit 1 holds the map: the material's stages 1 and 2 move up one.
          mesh->draw(meshPassShadowedLight, true, 0, true);
          if (!receives) {
            glActiveTextureARB(GL_TEXTURE1_ARB);
            glEnable(GL_TEXTURE_2D);
            glActiveTextureARB(GL_TEXTURE0_ARB);
          }
        }
      }
      glActiveTextureARB(GL_TEXTURE1_ARB);
      shadowCompareEnd(*lightMesh);
      glDisable(GL_TEXTURE_2D);
      glActiveTextureARB(GL_TEXTURE2_ARB);
      projectedTextureEnd(*lightMesh);
      glDisable(GL_TEXTURE_2D);
      glActiveTextureARB(GL_TEXTURE0_ARB);
    }
    glEnable(GL_BLEND);
  }

  glDisable(GL_BLEND);
  glDepthFunc(GL_LESS);
  glDisable(GL_LIGHTING);
  drawBillboards(false, false);
  checkGLErrors("World lit pass");
}

void World::shadowMapPass() {
  FramePassScope pass(FramePass::shadowMap);
  glEnable(GL_CULL_FACE);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LESS);
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_BLEND);

  for (Mesh* lightMesh : lights) {
    if (!lightMesh->light()->castsShadow) continue;
    int counter = 0;
    applyLight(*lightMesh, &counter);
    shadowMapBegin(*lightMesh);
    glClear(GL_DEPTH_BUFFER_BIT);
    drawBillboards(true, true);
    if (!skipping) {
      for (Mesh* mesh : objects) {
        const int m = (mesh->currentMaterial >= 0 && mesh->currentMaterial < Mesh::materialCount)
                          ? mesh->currentMaterial
                          : 0;
        if (!mesh->materials[m].castsShadow) continue;
        glCullFace(GL_FRONT);
        mesh->draw(meshPassDepth, true, 0, false);
      }
    }
    shadowMapEnd(*lightMesh);
  }

  glEnable(GL_BLEND);
  glDepthFunc(GL_LESS);
  glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
  glCullFace(GL_BACK);
  checkGLErrors("World shadow map pass");
}

int World::shadowMaskPass(RenderTarget* target, bool prepare) {
  if (prepare) shadowMapPass();
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glEnable(GL_TEXTURE_2D);
  glDisable(GL_LIGHTING);
  glDisable(GL_COLOR_MATERIAL);

  const int base = target->firstFreeSlot;
  int k = 0;
  for (Mesh* lightMesh : lights) {
    if (!lightMesh->light()->castsShadow) continue;
    // The raw mask: white where the map says lit, black in shadow.
    glDepthFunc(GL_LESS);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    target->beginTarget(base + 2 + k, true, false);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    shadowCompareBegin(*lightMesh);
    setLightVectors(*lightMesh);
    if (!skipping) {
      for (Mesh* mesh : objects) mesh->draw(meshPassDepth, true, 0, false);
    }
    shadowCompareEnd(*lightMesh);
    target->endTarget();
    if (!useFramebufferObjects) target->copyToSlot(base + 2 + k);

    // The blurred mask.
    glEnable(GL_BLEND);
    target->beginTarget(base + 1 + k, false, false);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    target->glowPass(base + 2 + k, GlowOptions::shadowMaskBlur(softShadowMaskBlurAmount, softShadowMaskBlurLoops));
    target->endTarget();
    if (!useFramebufferObjects) target->copyToSlot(base + 1 + k);
    glDepthMask(GL_TRUE);
    ++k;
  }
  checkGLErrors("World shadow mask pass");
  return k;
}

void World::lightImagePass(int k) {
  glDisable(GL_BLEND);
  glEnable(GL_LIGHTING);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LESS);
  glEnable(GL_COLOR_MATERIAL);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glEnable(GL_TEXTURE_2D);

  int index = 0;
  for (Mesh* lightMesh : lights) {
    if (index++ != k) continue;
    glActiveTextureARB(GL_TEXTURE1_ARB);
    glEnable(GL_TEXTURE_2D);
    projectedTextureBegin(*lightMesh);
    glActiveTextureARB(GL_TEXTURE0_ARB);
    int counter = 0;
    applyLight(*lightMesh, &counter);
    glDisable(GL_BLEND);
    setLightVectors(*lightMesh);
    if (!skipping) {
      for (Mesh* mesh : objects) mesh->draw(meshPassShadowedLight, true, 0, false);
    }
    glActiveTextureARB(GL_TEXTURE1_ARB);
    projectedTextureEnd(*lightMesh);
    glDisable(GL_TEXTURE_2D);
    glActiveTextureARB(GL_TEXTURE0_ARB);
  }

  for (GLenum unit : {GL_TEXTURE3_ARB, GL_TEXTURE2_ARB}) {
    glActiveTextureARB(unit);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_CUBE_MAP);
  }
  glActiveTextureARB(GL_TEXTURE0_ARB);
  glDisable(GL_BLEND);
  glDepthFunc(GL_LESS);
  glDisable(GL_LIGHTING);
  drawBillboards(false, false);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  checkGLErrors("World light image pass");
}

// ---------------------------------------------------------------------------
// render
// ---------------------------------------------------------------------------

WorldRenderOptions WorldRenderOptions::glowSource() {
  WorldRenderOptions options;
  options.prepare = true;
  options.materialIndex = 1;
  options.softShadows = false;
  options.lowShadow = true;
  options.lowOutput = true;
  options.baseAsImage = true;
  return options;
}

WorldRenderOptions WorldRenderOptions::finalPicture() {
  WorldRenderOptions options;
  options.prepare = false;
  options.materialIndex = 0;
  options.softShadows = true;
  options.lowShadow = true;
  options.lowOutput = false;
  options.baseAsImage = false;
  return options;
}

void World::render(Camera* camera, RenderTarget* target, const WorldRenderOptions& o) {
  render(camera, o.skipObjects, o.prepare, o.materialIndex, o.softShadows, target, o.lowShadow, o.lowOutput,
         o.baseAsImage, o.baseWritesColour);
}

void World::render(Camera* camera, int skipObjects, bool prepare, int materialIndex, bool softShadows,
                   RenderTarget* target, bool lowShadow, bool lowOutput, bool baseAsImage, bool baseWritesColour) {
  skipping = skipObjects != 0;

  if (prepare) {
    refreshLights(false, false);
    for (size_t i = 0; i < objects.size(); ++i) {
      isRoot[i] = true;
      objects[i]->camera = camera;
      objects[i]->renderTarget = target;
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    if (!skipping) {
      for (size_t i = 0; i < objects.size(); ++i) {
        if (!isRoot[i] || !objects[i]->useMatrix) continue;
        glPushMatrix();
        buildMatrices(static_cast<int>(i));
        glPopMatrix();
      }
    }
    glPopMatrix();
    if (!skipping) {
      for (Mesh* mesh : objects) {
        if (!mesh->visible) continue;
        if (mesh->normalsDirty) {
          mesh->computeFaceNormals();
          mesh->computeVertexNormals(true);
          mesh->normalizeFaceNormals();
          mesh->normalsDirty = false;
          mesh->anyArrayDirty = true;
          mesh->positionsDirty = true;
        }
        mesh->updateArrays();
      }
    }
  }

  glEnable(GL_CULL_FACE);
  if (!skipping) {
    for (Mesh* mesh : objects) mesh->currentMaterial = materialIndex;
  }

  // Direct path.
  if (!softShadows || !target) {
    setLowResolution(target, lowOutput ? 1 : 0);
    applyCamera(camera, lowOutput);
    if (prepare) shadowMapPass();
    basePass(baseWritesColour);
    litPass(baseWritesColour);
    releaseCamera(camera);
    skipping = false;
    return;
  }

  // Soft path.
  const bool lowMasks = lowShadow || lowOutput;
  applyCamera(camera, lowMasks);
  target->lowResolution = lowMasks ? 1 : 0;
  const int base = target->firstFreeSlot;
  const int masks = shadowMaskPass(target, prepare);
  releaseCamera(camera);

  if (baseAsImage) {
    applyCamera(camera, true);
    target->lowResolution = 1;
    target->beginTarget(base + 1 + masks, true, false);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    basePass(baseWritesColour);
    target->endTarget();
    if (!useFramebufferObjects) target->copyToSlot(base + 1 + masks);
    releaseCamera(camera);
  }

  applyCamera(camera, lowOutput);
  target->lowResolution = lowOutput ? 1 : 0;
  int k = 0;
  for (auto it = lights.begin(); it != lights.end(); ++it, ++k) {
    target->beginTarget(base + 2 + masks + k, true, false);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    lightImagePass(k);
    target->endTarget();
    if (!useFramebufferObjects) target->copyToSlot(base + 2 + masks + k);
  }

  glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
  glEnable(GL_BLEND);
  glDisable(GL_DEPTH_TEST);
  if (!baseAsImage) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    target->lowResolution = 0;
    basePass(baseWritesColour);
  } else {
    glClear(GL_COLOR_BUFFER_BIT);
    target->lowResolution = 1;
    target->drawSlot(base + 1 + masks, slotBlendAlpha, nullptr, true, nullptr, nullptr, 1.0f);
  }

  target->lowResolution = lowMasks ? 1 : 0;
  target->lowResolutionB = lowOutput ? 1 : 0;
  glDisable(GL_LIGHTING);
  // Mask k goes with light k: this assumes every light casts a shadow, as
  // the scenes' lights all do.
  k = 0;
  for (auto it = lights.begin(); it != lights.end(); ++it, ++k) {
    target->combineSlots(base + 1 + k, base + 2 + masks + k, false, true);
  }
  target->lowResolution = 0;
  target->lowResolutionB = 0;
  releaseCamera(camera);
  skipping = false;
  checkGLErrors("World soft shadow composition");
}
