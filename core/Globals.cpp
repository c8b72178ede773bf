#include "core/Globals.h"

int32_t screenWidth = 800;
int32_t screenHeight = 600;
int32_t colourDepth = 32;
bool fullscreen = true;
bool audioEnabled = true;
bool exactPixels = true;
bool letterbox = true;
bool wideDisplay = false;

int32_t wallTimeMs = 0;
float wallTimeSeconds = 0;
int32_t wallStepMs = 0;
float wallStepSeconds = 0;
int32_t demoTimeMs = 0;
int32_t previousDemoTimeMs = 0;
int32_t demoStepMs = 0;
float demoTimeSeconds = 0;
float demoStepSeconds = 0;
int32_t framesPerSecond = 0;

bool keyLeftShift = false, keyLeftControl = false, keyX = false, keyZ = false, keyS = false, keyL = false,
     keyR = false;
bool keyF[11] = {};

Demo* theDemo = nullptr;
Font* outputFont = nullptr;
