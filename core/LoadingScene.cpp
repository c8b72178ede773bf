#include "core/LoadingScene.h"

#include <GL/glew.h>
#include <GL/glu.h>
#include <SDL/SDL.h>
#include <SDL/SDL_thread.h>

#include <cmath>

#include "core/Demo.h"
#include "core/SecondContext.h"
#include "render/Font.h"
#include "foundation/Vector3.h"
#include "texture/TextureStore.h"

float loadingPhase = 0;

LoadingScene::LoadingScene(Demo* demo_, const std::string& name_)
    : Scene(name_), demo(demo_), font(nullptr), textures(new TextureStore()) {
  textures->loadTexture("./images/font2.png", "basicOutputFont");
  if (textures->findTextureId("basicOutputFont") != noTexture) {
    TextureRecord& record = textures->findTextureRecord("basicOutputFont");
    const float W = float(record.width), H = float(record.height);
    // Name, first character, columns, rows, then the glyph size, the first
    // glyph's centre and the step between cells, in pixels over the image size.
    font = new Font(textures,
                    FontAtlas{"basicOutputFont", 32, 16, 9, 38 / W, 55 / H, 43 / W, 37 / H, 62.4f / W, 57 / H});
  }
}

LoadingScene::~LoadingScene() {
  delete textures;
  delete font;
}

void loadingGlyphHook(float hookValue, float column, float) {
  const float f = column * 0.2f + hookValue * 0.5f;
  const float w = sinf(cosf(f) * 6.283184f);
  glColor3f(0.75f - w * 0.25f, 0.75f - w * 0.25f, 0.75f - w * 0.25f);
  glTranslatef(0, 0, w);
  glRotatef(sinf(cosf(hookValue * 0.25f + column) * 6.283184f) * 12.0f, 0.13f, 1, 0);
}

void LoadingScene::render(int32_t timeMs, int32_t) {
  loadingPhase += 0.15f;
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
  glEnable(GL_COLOR_MATERIAL);
  glCullFace(GL_BACK);
  glEnable(GL_CULL_FACE);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  gluPerspective(45.0f, 1.333f, 0.1f, 1000.0f);  // the constant aspect: a wide display stretches the text
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(0, -0.0f, sinf(loadingPhase) * 2.3f - 12.0f);
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_BLEND);
  glDisable(GL_LIGHTING);
  glDisable(GL_DEPTH_TEST);
  if (!font) return;
  font->setFrame(Vector3(-2, 3.84f, 0), Vector3(1, 0, -0.5f), Vector3(0, -1, 0));
  font->setColor(1, 1, 1);
  font->setAlpha(1);
  font->setMetrics(1.2f, 0.6f, -0.4f, 0.6f);
  font->setCursor(1, 6);
  // Spelled backwards on purpose: the column advance is negative, so the
  // characters run right to left and the word reads forward on screen.
  const char* text = "...gnidaoL\n";
  const float hookValue = 2 * powf(timeMs / 1000.0f, 1.1f);
  font->draw(text, true, 0, 0, 1.25f, 2.0f, loadingGlyphHook, hookValue, 0);
  glMatrixMode(GL_MODELVIEW);
}

// ---- the loader thread ----
//
// It would draw the loading screen in a context of its own (sharing no
// objects with the main one) while init blocks the main thread: 1001 frames
// of 40 ms. On X11 the second context is made with GLX on the main window's
// drawable. This production never starts it.
static int loaderThreadBody(void* argument) {
  Demo* demo = static_cast<Demo*>(argument);
  void* context = makeSecondContextCurrent(glDeviceContext);
  if (!context) return 0;
  LoadingScene* scene = new LoadingScene(demo, "Loading");
  for (int i = 0; i < 1001; ++i) {
    scene->render(i * 40, 40);
    glFlush();
    swapSecondContext(context);
    SDL_Delay(40);
  }
  delete scene;
  destroySecondContext(context);
  return 0;
}

void startLoadingThread(Demo* demo) { SDL_CreateThread(loaderThreadBody, demo); }
