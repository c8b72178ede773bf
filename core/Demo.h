// Demo: the engine object. It owns the display, the render sizes, the
// texture store, the cameras, the music and its clocks, and the timeline of
// scenes with its frame composition.
//
// Sizes are pixels. Times are signed 32-bit milliseconds: position() is the
// raw music (or play timer) position; currentTime adds timeOffset, the rewind
// control of the frame loop. Log lines go to stdout (stderr for SDL errors),
// plain, without levels.
#pragma once
#include <SDL/SDL.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "foundation/Timer.h"

class Camera;
class Font;
class MusicStream;
class RenderTarget;
class Scene;
class TextureStore;

struct SceneEntry {
  int32_t index;  // 0, 1, 2 ... in order of adding; real scenes first, virtual ones behind
  Scene* scene;   // owned by the Demo
};

struct ScheduleEntry {
  Scene* scene;       // not owned
  int32_t startTime;  // ms, inclusive
  int32_t endTime;    // ms, exclusive
};

struct ScheduledEffect {
  std::string kind;             // "fade", "fadeOn", "fadeOff" or "blur"; anything else draws nothing
  std::vector<float> settings;  // the effect's own numbers, in order
  int32_t sourceA;              // scene index
  int32_t sourceB;              // scene index, or -1
  int32_t startTime;            // ms, inclusive
  int32_t endTime;              // ms, exclusive
  int32_t virtualScene;         // index of the virtual scene standing for the result
  int32_t reserved;             // stored, not read
};

class Demo {
 public:
  Demo(const std::string& title, int32_t screenWidth, int32_t screenHeight, int32_t areaWidth, int32_t areaHeight,
       bool exactPixels, int32_t colourDepth, bool fullscreen, bool showCursor, bool audioEnabled);
  virtual int32_t init() = 0;
  virtual ~Demo();

  Font* currentFont();

  // Gives 1 on success and after a failed SDL_Init, 2 when no video mode could be set.
  int32_t openDisplay(const std::string& title, int32_t screenWidth, int32_t screenHeight, int32_t areaWidth,
                      int32_t areaHeight, int32_t colourDepth, bool fullscreen, bool showCursor);

  // The camera of that name, made on first use; later requests get the first
  // object unchanged. aspect 0 means screenWidth / screenHeight.
  Camera* camera(const std::string& name, float fieldOfView, float nearClip, float farClip, float aspect = 0);
  Camera* cameraByName(const std::string& name);

  // ---- music and clocks ----
  int32_t initAudio();
  int32_t loadMusic(const std::string& path);  // 1 on success, else 0
  void start();
  void pause();
  void resume();
  int32_t position();            // raw position, ms, without timeOffset; stored in currentTime
  int32_t seek(int32_t deltaMs);  // gives 1
  int32_t setPosition(int32_t ms);
  bool isStarted() const { return started; }
  bool isPaused() const { return paused; }
  void spectrum(float* values, int32_t numValues, int32_t channelOffset, int32_t windowType);

  // ---- scene list, schedule, effects ----
  int32_t addScene(Scene* scene);
  int32_t addVirtualScene(int32_t sourceA, int32_t sourceB);
  Scene* sceneByIndex(int32_t index);
  int32_t indexOfScene(Scene* scene);
  int32_t sceneIndexOfName(const std::string& name);  // index of the first scene of that name, or -1
  Scene* sceneByName(const std::string& name);
  std::vector<Scene*> allScenes();
  int32_t schedule(int32_t index, int32_t startTime, int32_t endTime);
  int32_t addEffect(const std::string& kind, int32_t sourceA, int32_t sourceB, int32_t startTime, int32_t endTime,
                    const std::vector<float>& settings, int32_t reserved);
  std::vector<Scene*> activeScheduled(int32_t t);
  std::vector<Scene*> visibleScenes(int32_t t);
  std::vector<Scene*> activeVirtualScenes(int32_t t);
  std::vector<ScheduledEffect*> activeEffects(int32_t t);

  // Renders the scheduled scenes into slots, composes and presents them. Gives 1.
  int32_t frame();

  // ---- members, in the system's order ----
  std::string title;
  int32_t areaWidth;
  int32_t areaHeight;
  int32_t screenWidth;
  int32_t screenHeight;
  TextureStore* textures;          // owned
  std::vector<Camera*> cameras;    // creation order; the cameras are never freed
  int32_t colourDepth;             // stored, not used further
  bool fullscreen;
  bool showCursor;
  bool needsPresentCopy;           // the effective area differs from the display mode
  bool seeked;                     // set by a seek, cleared by each frame; read by no one
  int32_t targetWidth;
  int32_t targetHeight;
  int32_t targetLowWidth;
  int32_t targetLowHeight;
  int32_t effectiveWidth;
  int32_t effectiveHeight;
  int32_t effectiveLowWidth;
  int32_t effectiveLowHeight;
  Font* font;                      // owned
  Font* alternativeFont;           // owned; stays null in this production
  bool useAlternativeFont;
  RenderTarget* renderTargets;     // made by init, not freed
  bool audioStarted;               // the music system exists
  MusicStream* music;              // our stream in place of the sound library's system, sound and channel
  bool audioEnabled;               // cleared by init when the file fails to load
  std::string musicFileName;       // empty; no operation fills it
  bool musicLoaded;                // position comes from the music
  int32_t endTime;                 // ms: the file's length when loaded, then 263500 from the entry
  Timer playTimer;                 // position source when there is no music
  Timer frameTimer;                // runs from construction; read once
  bool started;
  bool paused;
  bool refreshOnce;                // asks a paused frame to render once; nothing sets it
  int32_t currentTime;             // ms, rewind offset included
  int32_t previousTime;
  int32_t timeStep;                // may be negative
  int32_t timeOffset;              // added to the position by frame()
  int32_t sceneCount;
  int32_t virtualSceneCount;
  bool letterbox;
  bool wideDisplay;
  std::list<SceneEntry> scenes;
  std::list<ScheduleEntry> schedules;   // the schedule list (the name schedule is its add operation)
  std::list<ScheduledEffect> effects;
  int32_t mouseButtons;
  int32_t mouseX;
  int32_t mouseY;

 private:
  int32_t rawPosition();  // music or playTimer, without storing it
  void sizeRenderTargets(bool exactPixels);
  void probeExtensions();
};

// The render-target sizing rule on its own, for the Demo and its tests:
// exactPixels keeps the area and rounds the targets up to powers of two;
// otherwise targets round down and the area shrinks to them.
struct TargetSizes {
  int32_t areaWidth, areaHeight, targetWidth, targetHeight;
};
TargetSizes computeTargetSizes(int32_t areaWidth, int32_t areaHeight, bool exactPixels);

// The display modes SDL listed at start-up; kept, not used further.
extern SDL_Rect** displayModes;
// The GL context's drawable, for a second context (the loader thread).
extern void* glDeviceContext;
