// Demo: construction and display start-up, cameras, tear-down.
// The music and clocks live in DemoMusic.cpp, the timeline and frame
// composition in DemoTimeline.cpp.
#include "core/Demo.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/MusicStream.h"
#include "core/SecondContext.h"
#include "render/Font.h"
#include "foundation/Camera.h"
#include "foundation/Capabilities.h"
#include "render/RenderTarget.h"
#include "scenes/Scene.h"
#include "texture/TextureStore.h"

SDL_Rect** displayModes = nullptr;
void* glDeviceContext = nullptr;

static int32_t smallestPowerOfTwoNotBelow(int32_t v) {
  int32_t p = 1;
  while (p < v) p *= 2;
  return p;
}

static int32_t largestPowerOfTwoNotAbove(int32_t v) {
  int32_t p = 1;
  while (p * 2 <= v) p *= 2;
  return p;
}

TargetSizes computeTargetSizes(int32_t areaWidth, int32_t areaHeight, bool exactPixels) {
  TargetSizes s{areaWidth, areaHeight, 1, 1};
  if (exactPixels) {
    s.targetWidth = smallestPowerOfTwoNotBelow(areaWidth);
    s.targetHeight = smallestPowerOfTwoNotBelow(areaHeight);
  } else {
    s.targetWidth = largestPowerOfTwoNotAbove(areaWidth);
    s.targetHeight = largestPowerOfTwoNotAbove(areaHeight);
    s.areaWidth = s.targetWidth;
    s.areaHeight = s.targetHeight;
  }
  return s;
}

Demo::Demo(const std::string& title_, int32_t screenWidth_, int32_t screenHeight_, int32_t areaWidth_,
           int32_t areaHeight_, bool exactPixels, int32_t colourDepth_, bool fullscreen_, bool showCursor_,
           bool audioEnabled_)
    : title(title_),
      areaWidth(areaWidth_),
      areaHeight(areaHeight_),
      screenWidth(screenWidth_),
      screenHeight(screenHeight_),
      textures(nullptr),
      colourDepth(colourDepth_),
      fullscreen(fullscreen_),
      showCursor(showCursor_),
      needsPresentCopy(false),
      seeked(false),
      targetWidth(1),
      targetHeight(1),
      targetLowWidth(0),
      targetLowHeight(0),
      effectiveWidth(0),
      effectiveHeight(0),
      effectiveLowWidth(0),
      effectiveLowHeight(0),
      font(nullptr),
      alternativeFont(nullptr),
      useAlternativeFont(false),
      renderTargets(nullptr),
      audioStarted(false),
      music(nullptr),
      audioEnabled(audioEnabled_),
      musicLoaded(false),
      endTime(0),
      started(false),
      paused(false),
      refreshOnce(false),
      currentTime(0),
      previousTime(0),
      timeStep(0),
      timeOffset(0),
      sceneCount(0),
      virtualSceneCount(0),
      letterbox(true),
      wideDisplay(false),
      mouseButtons(0),
      mouseX(0),
      mouseY(0) {
  // A negative area leaves the object inert: no display at all.
  if (areaWidth < 0 || areaHeight < 0) return;

  timeOffset = 0;
  openDisplay(title, screenWidth, screenHeight, areaWidth, areaHeight, colourDepth, fullscreen, showCursor);

  // Black at once, before the probes and the load.
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  SDL_GL_SwapBuffers();

  probeExtensions();
  sizeRenderTargets(exactPixels);

  glViewport(0, 0, areaWidth, areaHeight);
  effectiveWidth = areaWidth;
  effectiveHeight = areaHeight;
  effectiveLowWidth = areaWidth / 2;
  effectiveLowHeight = areaHeight / 2;
  targetLowWidth = targetWidth / 2;
  targetLowHeight = targetHeight / 2;
  printf("Screen effective area size: %d, %d\n", effectiveWidth, effectiveHeight);
  printf("Screen effective area low size: %d, %d\n", effectiveLowWidth, effectiveLowHeight);
  printf("Render-target size: %d, %d\n", targetWidth, targetHeight);

  currentTime = sceneCount = virtualSceneCount = timeStep = 0;
  audioStarted = musicLoaded = started = paused = seeked = false;
  endTime = 0;

  textures = new TextureStore();
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);

  // The output font: a glyph grid of 16 columns and 14 rows from character 32.
  if (Font* output = loadOutputFont(textures)) font = output;

  useAlternativeFont = false;
  frameTimer.start();
  previousTime = frameTimer.elapsed();
  // The drawable of the GL context, for a second context on the loader thread.
  glDeviceContext = currentGLDrawable();
}

Demo::~Demo() {
  delete music;  // stops the audio callback before SDL goes
  music = nullptr;
  for (SceneEntry& entry : scenes)
    if (entry.index < sceneCount) delete entry.scene;
  delete textures;
  delete font;
  delete alternativeFont;
  SDL_Quit();
}

Font* Demo::currentFont() { return useAlternativeFont ? alternativeFont : font; }

int32_t Demo::openDisplay(const std::string& title_, int32_t screenWidth_, int32_t screenHeight_, int32_t, int32_t,
                          int32_t, bool fullscreen_, bool showCursor_) {
  // sdl12-compat renders every GL mode into a framebuffer of the requested
  // size and scales it onto the window at each swap: full screen then fills
  // the monitor without a mode switch. Framebuffer 0 must then be bound
  // through SDL's own entry points (see probeExtensions).
  setenv("SDL12COMPAT_OPENGL_SCALING", "1", 1);
  // A busy X server can refuse a connection for a moment; where a display is
  // named at all, a few more tries come before the failure is reported.
  int initialised = SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER);
  for (int retry = 0; initialised < 0 && getenv("DISPLAY") && retry < 4; ++retry) {
    SDL_Quit();  // a half-made start would leave the GL attributes unheard
    SDL_Delay(250);
    initialised = SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER);
  }
  if (initialised < 0) {
    fprintf(stderr, "Error: Failed to initialize sdl: %s\n", SDL_GetError());
    return 1;
  }
  // Every Timer reads SDL's ticks from here on (unless the fixed clock is on).
  setTickSource(SDL_GetTicks);
  SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, 0);
  SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, 0);
  displayModes = SDL_ListModes(nullptr, SDL_FULLSCREEN | SDL_HWSURFACE);

  Uint32 flags = fullscreen_ ? (SDL_FULLSCREEN | SDL_DOUBLEBUF | SDL_OPENGL | SDL_HWSURFACE)
                             : (SDL_DOUBLEBUF | SDL_OPENGL | SDL_HWSURFACE);
  if (screenWidth_ == 1) flags = SDL_NOFRAME | SDL_OPENGL | SDL_HWSURFACE;
  if (!SDL_SetVideoMode(screenWidth_, screenHeight_, 0, flags)) {
    fprintf(stderr, "Error: Unable to create OpenGL screen:%s\n", SDL_GetError());
    SDL_Quit();
    return 2;
  }
  if (!showCursor_) SDL_ShowCursor(0);
  SDL_WM_SetCaption(title_.c_str(), title_.c_str());

  glClearColor(0, 0, 0, 1);
  glClearDepth(1.0);
  glDepthFunc(GL_LESS);
  glEnable(GL_DEPTH_TEST);
  glShadeModel(GL_SMOOTH);
  glEnable(GL_LIGHTING);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
  glEnable(GL_COLOR_MATERIAL);
  glCullFace(GL_BACK);
  glEnable(GL_CULL_FACE);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  gluPerspective(45.0f, float(screenWidth_) / float(screenHeight_), 0.1f, 1000.0f);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  return 1;
}

// OSTRAVINE_HIDE_EXTENSIONS (a list of extension names) makes the probes
// treat those extensions as missing, so that a poorer driver can be tried on
// any machine.
static bool hiddenExtension(const char* message) {
  const char* hidden = getenv("OSTRAVINE_HIDE_EXTENSIONS");
  if (!hidden) return false;
  // The message starts with the extension's name less its "GL_" prefix.
  std::string name = message;
  if (name.compare(0, 9, "WARNING: ") == 0) name = name.substr(9);
  name = "GL_" + name.substr(0, name.find(' '));
  const std::string list = std::string(",") + hidden + ",";
  return list.find("," + name + ",") != std::string::npos;
}

// Each probe failure is a log line followed by one empty line, except the
// framebuffer warning. Only missing multitexturing is fatal.
void Demo::probeExtensions() {
  const bool glewReady = glewInit() == GLEW_OK;
  auto probe = [&](bool present, const char* message, bool extraNewline) {
    present = present && !hiddenExtension(message);
    if (!present) printf(extraNewline ? "%s\n" : "%s", message);
    return present;
  };
  hasDepthTexture = probe(glewReady && GLEW_ARB_depth_texture, "ARB_depth_texture not supported.\n", true);
  hasShadowExtension = probe(glewReady && GLEW_ARB_shadow, "ARB_shadow not supported.\n", true);
  probe(glewReady && GLEW_ARB_texture_rectangle, "ARB_texture_rectangle not supported.\n", true);
  hasTextureRectangle = false;  // deliberately off whatever the driver offers
  const bool fbo = probe(glewReady && GLEW_EXT_framebuffer_object,
                         "WARNING: EXT_framebuffer_object not supported.\n", false);
  useFramebufferObjects = fbo && useFramebufferObjects;
  useVertexBuffers = true;
  hasFramebufferObject = fbo;
  useDisplayLists = false;
  if (glewReady && fbo) {
    // Under sdl12-compat's scaling, "framebuffer 0" is SDL's own framebuffer:
    // binding it must go through SDL's wrapped entry points, not the driver's.
    if (void* p = SDL_GL_GetProcAddress("glBindFramebufferEXT"))
      glBindFramebufferEXT = reinterpret_cast<PFNGLBINDFRAMEBUFFEREXTPROC>(p);
    if (glBindFramebuffer)
      if (void* p = SDL_GL_GetProcAddress("glBindFramebuffer"))
        glBindFramebuffer = reinterpret_cast<PFNGLBINDFRAMEBUFFERPROC>(p);
  }
  GLint attachments = 0;  // stays 0 where the query is unknown
  if (glewReady) glGetIntegerv(GL_MAX_COLOR_ATTACHMENTS_EXT, &attachments);
  printf("maximum fbo color attachments: %d\n", attachments);
  hasBlendFuncSeparate = probe(glewReady && GLEW_EXT_blend_func_separate, "EXT_blend_func_separate not supported.\n", true);
  hasVertexProgram = probe(glewReady && GLEW_ARB_vertex_program, "ARB_vertex_program not supported.\n", true);
  hasFragmentProgram = probe(glewReady && GLEW_ARB_fragment_program, "ARB_fragment_program not supported.\n", true);
  hasTextureEnvCombine =
      probe(glewReady && GLEW_EXT_texture_env_combine, "EXT_texture_env_combine not supported.\n", true);
  hasMultitexture = glewReady && GLEW_ARB_multitexture && !hiddenExtension("ARB_multitexture ");
  if (!hasMultitexture) {
    printf("ARB_multitexture not supported.\n\n");
    printf("Sorry, multitexturing support is definitely required to run this demonstration.\n");
    fflush(stdout);
    exit(4);
  }
  GLint units = 0;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
  textureUnitCount = units;
  printf("Number of texture units supported %d\n", textureUnitCount);
}

void Demo::sizeRenderTargets(bool exactPixels) {
  TargetSizes s = computeTargetSizes(areaWidth, areaHeight, exactPixels);
  areaWidth = s.areaWidth;
  areaHeight = s.areaHeight;
  targetWidth = s.targetWidth;
  targetHeight = s.targetHeight;
  needsPresentCopy = !(areaWidth == screenWidth && areaHeight == screenHeight);
}

Camera* Demo::camera(const std::string& name, float fieldOfView, float nearClip, float farClip, float aspect) {
  if (aspect == 0) aspect = float(screenWidth) / float(screenHeight);
  if (Camera* existing = cameraByName(name)) return existing;
  // The float constant 1.333, not 4/3: a 4:3 display gets a camera of about
  // 16:9 to match the letterbox band of 3/4 of the height.
  if (!wideDisplay && letterbox) aspect *= 1.333f;
  Camera* c = new Camera(name, fieldOfView, aspect, nearClip, farClip, float(effectiveWidth), float(effectiveHeight),
                         float(effectiveLowWidth), float(effectiveLowHeight));
  cameras.push_back(c);
  return c;
}

Camera* Demo::cameraByName(const std::string& name) {
  for (Camera* c : cameras)
    if (c->name == name) return c;
  return nullptr;
}
