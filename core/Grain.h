// Grain: the film grain "dynamicNoise", a 256 x 256 RGBA texture rewritten on
// the processor every frame from a seed made of the music position, and laid
// over the finished picture.
//
// The grain is a pure function of the position: a paused production shows a
// still grain, and a repeated position repeats it.
#pragma once
#include <cstdint>

class TextureStore;

constexpr int32_t grainSize = 256;  // texels a side
constexpr int32_t grainBytes = grainSize * grainSize * 4;

// The start-up content: srand(123456); rgb 0, alpha = trunc(randomUnit() x 0.5 x 255).
void fillInitialGrain(uint8_t* pixels);

// The per-frame content: srand(demoTimeMs + 123456); rgb (8, 16, 255),
// alpha = trunc(r x r x 0.125 x 255) with r = randomUnit(), so 0 to 31.
void fillFrameGrain(uint8_t* pixels, int32_t demoTimeMs);

// Draws "dynamicNoise" over the current viewport with the projection that
// stands (the display's perspective): the quad at z = -1 overfills the
// viewport on purpose. Leaves lighting, colour material and culling off and
// blending on, as the frame loop expects.
void drawGrainOverlay(TextureStore& textures, int32_t windowWidth, int32_t windowHeight);
