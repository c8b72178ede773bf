#include "scenes/CubeLattice.h"

#include <cmath>

#include "foundation/NoiseField.h"
#include "foundation/Random.h"
#include "geometry/Mesh.h"
#include "render/Overlay.h"
#include "scenes/SceneSkeleton.h"

void addCubeLattice(SceneSkeleton& scene, const LatticeSpec& spec, const Material& picture, const Material& glow,
                    std::vector<int32_t>& objects, std::vector<Vector3>& homes) {
  const int32_t count = spec.countX * spec.countY * spec.countZ;
  objects.assign(count, -1);
  homes.assign(count, Vector3());
  scene.addModelBatch("./models/cube.a3d", count, picture, glow, [&](int32_t n, int32_t index, Mesh* cube) {
    const int32_t x = n % spec.countX, y = (n / spec.countX) % spec.countY, z = n / (spec.countX * spec.countY);
    objects[n] = index;
    homes[n] = Vector3(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)) - spec.centre;
    const int r = crtRand();
    const int s = crtRand();
    const int q = crtRand();
    if (!cube) return;
    cube->position = homes[n];
    cube->rotation = Vector3(static_cast<float>((s / 32767.0 - 0.5) * spec.tumble - 90.0),
                             static_cast<float>((r / 32767.0 - 0.5) * spec.tumble), 0.0f);
    cube->useMatrix = true;
    cube->scale = Vector3(0.25f, static_cast<float>(q / 32767.0 * 0.05 + 0.2), 0.25f);
  });
}

void applyCubeColourFamilies(SceneSkeleton& scene, const CubeColourFamilies& f, Material& picture, Material& glow,
                         const std::vector<int32_t>& objects) {
  for (int32_t n = 0; n < static_cast<int32_t>(objects.size()); ++n) {
    crtSrand(static_cast<uint32_t>((n / f.groupSize) % 3) + f.seedBase);
    const float a = static_cast<float>(randomSigned());
    const float b = static_cast<float>(randomSigned());
    const float c = static_cast<float>(randomSigned());
    scene.material(glow)
        .diffuse(Vector3(a * 1.65f + 2.5f, b * 0.85f + 1.1f, c * 0.34f + 0.5f) * f.glowDiffuse)
        .ambient(Vector3(1, 1, 1) * f.glowAmbient);
    scene.material(picture)
        .diffuse(Vector3(a * 1.2f + 1.66f, b * 0.44f + 0.64f, c * 0.23f + 0.36f) * f.pictureDiffuse)
        .ambient(Vector3(a * 0.4f + 0.5f, b * 0.4f + 0.5f, c * 0.4f + 0.5f) * f.pictureAmbient);
    scene.drawStageOffsets(picture, glow, n);
    scene.applyLooks(objects[n], picture, glow);
  }
}

int32_t addPlateRing(SceneSkeleton& scene, int32_t count, const Material& picture, const Material& glow) {
  return scene.addBoxBatch(count, picture, glow, [](int32_t i, int32_t, Mesh* plate) {
    const double r1 = randomUnit();
    const double r2 = randomUnit();
    const double s1 = randomSigned();
    const double s2 = randomSigned();
    const double s3 = randomSigned();
    if (!plate) return;
    const double angle = static_cast<double>(i);  // radians
    plate->position = Vector3(static_cast<float>(std::sin(angle) * (2.0 * r2 + 20.0)),
                              static_cast<float>(std::cos(angle) * (2.0 * r1 + 20.0)), 4.0f);
    plate->rotation = Vector3(0.0f, static_cast<float>(s2 * 180.0), static_cast<float>(s1 * 20.0));
    plate->useMatrix = true;
    plate->scale = Vector3(5.0f, 5.0f, static_cast<float>(2.0 * s3 + 10.0));
  });
}

Vector3 noisePlace(NoiseField& x, NoiseField& y, NoiseField& z, const Vector3& p, int octavesX, int octavesY,
                   int octavesZ, float reach) {
  const float px = x.fractalSum(p, octavesX) * reach;
  const float py = y.fractalSum(p, octavesY) * reach;
  const float pz = z.fractalSum(p, octavesZ) * reach;
  return Vector3(px, py, pz);
}

void drawTitleLayers(const TitleLayers& title, NoiseField& a, NoiseField& c, float slide, float g, float X) {
  glEnable(GL_TEXTURE_2D);
  glTranslatef(0.0f, 0.0f, slide * 0.15f - 0.1f);
  bindTitleTexture(title.texture, GL_MODULATE);
  linearFilters();
  glBlendFunc(GL_SRC_ALPHA, title.blendDestination);
  glDisable(GL_CULL_FACE);
  glDisable(GL_DEPTH_TEST);
  for (int i = 0; i < 25; ++i) {
    glPushMatrix();
    const Vector3 p1(i * 0.11f + X * 0.1f, 1.53f, 4.3f);
    const Vector3 p2(X * 0.88f, 0.5f, i * 0.1234f + 0.5f);
    glScalef((a.sample(p1) * 0.2f + i / 25.0f) * g * 10.5f + 1.0f, c.sample(p2) * title.heightSpread * g + 1.0f,
             1.0f);
    glColor4f(title.rim.x, title.rim.y, title.rim.z, title.rimAlpha);
    texturedQuad(1.05f);
    glColor4f(0.02f, 0.02f, 0.02f, title.coreAlpha);
    texturedQuad(1.0f);
    glPopMatrix();
  }
}
