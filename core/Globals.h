// Process-wide values of the production: the settings read from the command
// line before the Demo exists, the clock values that the frame loop rewrites
// every frame, the sampled key flags, and the singletons.
//
// Clock values: *Ms are signed 32-bit milliseconds, *Seconds the same / 1000.
// demoTime* is the raw music (or timer) position without the rewind offset:
// the flow charts read demoTimeSeconds.
#pragma once
#include <cstdint>

class Demo;
class Font;

// ---- settings (start values as at process start) ----
extern int32_t screenWidth;      // 800; replaced through the resolution code
extern int32_t screenHeight;     // 600
extern int32_t colourDepth;      // 32; passed to the Demo, which keeps it unused
extern bool fullscreen;          // true; no word of the command line turns it off
extern bool audioEnabled;        // true; whether the music is loaded at all
extern bool exactPixels;         // true; how render-target sizes are chosen
extern bool letterbox;           // true; copied into the Demo after construction
extern bool wideDisplay;         // false; copied into the Demo after construction

// ---- clock values, rewritten by the frame loop ----
extern int32_t wallTimeMs;
extern float wallTimeSeconds;
extern int32_t wallStepMs;
extern float wallStepSeconds;
extern int32_t demoTimeMs;
extern int32_t previousDemoTimeMs;
extern int32_t demoStepMs;
extern float demoTimeSeconds;
extern float demoStepSeconds;
extern int32_t framesPerSecond;  // frames in the last full second; 0 until one has passed

// ---- sampled key flags: true while the key is held; hooks for an active editor ----
extern bool keyLeftShift, keyLeftControl, keyX, keyZ, keyS, keyL, keyR;
extern bool keyF[11];  // keyF[1] .. keyF[10]

// ---- singletons ----
extern Demo* theDemo;
extern Font* outputFont;  // the Demo's current font just after its construction
