// LoadingScene: the word "Loading" in a wobbling 3D text, drawn once before
// the production loads. It keeps its own texture store and font so that it
// could run in a second GL context on the loader thread, which this
// production builds but does not start.
#pragma once
#include <cstdint>

#include "scenes/Scene.h"

class Demo;
class Font;
class TextureStore;

// Counts render calls: the swing of the text follows calls, not time.
extern float loadingPhase;

class LoadingScene : public Scene {
 public:
  LoadingScene(Demo* demo, const std::string& name);
  ~LoadingScene() override;
  // Draws the text; stepMs is not used. Leaves the model-view matrix mode current.
  void render(int32_t timeMs, int32_t stepMs) override;

  Demo* demo;             // not owned
  Font* font;             // owned
  TextureStore* textures; // owned; the loading screen's own store
};

// The font's per-glyph hook: a wave of brightness, depth and tilt along the text.
void loadingGlyphHook(float hookValue, float column, float row);

// Starts the loader thread that would animate the loading screen in a second
// GL context for about 40 seconds. Nothing in this production calls it.
void startLoadingThread(Demo* demo);
