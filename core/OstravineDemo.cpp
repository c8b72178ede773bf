#include "core/OstravineDemo.h"

#include <GL/glew.h>

#include <cstdio>

#include "core/Grain.h"
#include "foundation/Vector3.h"
#include "render/RenderTarget.h"
#include "scenes/ProductionScenes.h"
#include "texture/TextureStore.h"

const TextureTableRow productionTextures[16] = {
    {"hopmet", "./images/hopmet.png", false},
    {"planartexture", "./images/hopmetnoiseb.png", false},
    {"solidnoisebump", "./images/solidnoisebump.png", false},
    {"black", "./images/black.png", false},
    {"white", "./images/white.png", false},
    {"bill", "./images/bill.png", true},
    {"billbig", "./images/billbig.png", true},
    {"bill_d2ch", "./images/bill_d2c_holes.png", true},
    {"kestrin", "./images/kestrin.png", true},
    {"ks", "./images/ks.png", true},
    {"ostl", "./images/OSTL512.png", true},
    {"mustis2", "./images/noisis2.png", true},
    {"mustis5", "./images/noisis5.png", true},
    {"ostlb", "./images/OSTL512b.png", true},
    {"mb", "./images/mb.png", true},
    {"cd", "./images/cd.png", true},
};

const char* const productionSceneNames[11] = {
    "performe",       "bordersWithin",   "bordersWithout", "bordersWithme", "bordersWithyou", "bordersWithus",
    "bordersWiththem", "bordersMeetus", "bordersRolin",   "bordersRolout", "bordersRollus",
};

// Not in index order: each scene ends where the next begins.
const ScheduleRow productionSchedule[11] = {
    {0, 26500, 0},          // ScenePerforme
    {26500, 44800, 2},      // SceneBordersWithout
    {44800, 75000, 1},      // SceneBordersWithin
    {75000, 101000, 3},     // SceneBordersWithme
    {101000, 120000, 6},    // SceneBordersWiththem
    {120000, 135000, 5},    // SceneBordersWithus
    {135000, 165000, 7},    // SceneBordersMeetus
    {165000, 187300, 4},    // SceneBordersWithyou
    {187300, 217500, 8},    // SceneBordersRollin
    {217500, 232500, 9},    // SceneBordersRollout
    {232500, 256500, 10},   // SceneBordersRollus
};

OstravineDemo::OstravineDemo(int32_t screenWidth_, int32_t screenHeight_, int32_t areaWidth_, int32_t areaHeight_,
                             bool exactPixels, int32_t colourDepth_, bool fullscreen_, bool showCursor_,
                             bool audioEnabled_)
    : Demo("Ostravine", screenWidth_, screenHeight_, areaWidth_, areaHeight_, exactPixels, colourDepth_, fullscreen_,
           showCursor_, audioEnabled_),
      noisePixels(nullptr) {}

OstravineDemo::~OstravineDemo() {
  delete[] noisePixels;
  noisePixels = nullptr;
}

int32_t OstravineDemo::init() {
  printf("demo init start.\n");

  const Vector3 white(1, 1, 1);
  for (const TextureTableRow& row : productionTextures) {
    textures->loadTexture(row.file, row.name, row.whiteScale ? &white : nullptr, nullptr, false, {}, 1.0f, 0, false);
    glGenerateMipmapEXT(GL_TEXTURE_2D);
  }

  noisePixels = new uint8_t[grainBytes];
  fillInitialGrain(noisePixels);
  textures->createTextureFromMemory(noisePixels, "dynamicNoise", grainSize, grainSize, 4);

  // The picture lies on the +Z face only; the other five are black.
  textures->loadTexture("./images/bill.png", "cubemap.bill", &white, nullptr, true,
                        {"./images/black.png", "./images/black.png", "./images/black.png", "./images/black.png",
                         "./images/bill.png", "./images/black.png"},
                        1.0f, 0, false);
  glGenerateMipmapEXT(GL_TEXTURE_CUBE_MAP);

  renderTargets = new RenderTarget(targetWidth, targetHeight, targetLowWidth, targetLowHeight, effectiveWidth,
                                   effectiveHeight, effectiveLowWidth, effectiveLowHeight, 10);

  // The scene list fixes the indices; the schedule then names scenes by index.
  for (int32_t index = 0; index < 11; ++index) addScene(makeProductionScene(this, index, productionSceneNames[index]));
  for (const ScheduleRow& row : productionSchedule) schedule(row.sceneIndex, row.startTime, row.endTime);

  if (audioEnabled) {
    const char* path = "./music/ostravine.mp3";
    if (loadMusic(path) == 0) {
      audioEnabled = false;
      printf("WARNING: Music file %s not found.\n", path);
    }
  }
  printf("start.\n");
  glViewport(0, 0, areaWidth, areaHeight);
  glEnable(GL_BLEND);
  return 0;
}
