// OstravineDemo: the production. Its init is the whole manifest: which image
// goes under which texture name, which scenes exist and when each is on, and
// which music plays.
#pragma once
#include <cstdint>

#include "core/Demo.h"

class OstravineDemo : public Demo {
 public:
  OstravineDemo(int32_t screenWidth, int32_t screenHeight, int32_t areaWidth, int32_t areaHeight, bool exactPixels,
                int32_t colourDepth, bool fullscreen, bool showCursor, bool audioEnabled);
  ~OstravineDemo() override;
  int32_t init() override;

  uint8_t* noisePixels;  // 256 x 256 RGBA grain buffer; made by init
};

// One row of the production's texture table.
struct TextureTableRow {
  const char* name;
  const char* file;
  bool whiteScale;  // colourScale (1, 1, 1) as a real vector; false passes none
};
extern const TextureTableRow productionTextures[16];

// One row of the production's schedule: the scene's index in the scene list.
struct ScheduleRow {
  int32_t startTime;  // ms, inclusive
  int32_t endTime;    // ms, exclusive
  int32_t sceneIndex;
};
extern const ScheduleRow productionSchedule[11];

// The scenes' short names by index; two are spelled with one l on purpose.
extern const char* const productionSceneNames[11];
