// Entry: reads the command line into the process-wide settings, makes the
// one OstravineDemo, shows the loading frame, lets the production load, and
// runs the frame loop for the length of the music. The normal end is exit(0)
// from inside the loop; the Demo on the stack is not destroyed on that path.
// The entry is the one place below the editor that calls it, and only when
// built with it (OSTRAVINE_EDITOR).
#include "core/Entry.h"

#include <GL/glew.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/Benchmark.h"
#include "core/CommandLine.h"
#include "core/FrameCapture.h"
#include "core/GLCallCounting.h"
#include "core/Globals.h"
#include "core/Grain.h"
#include "core/LoadingScene.h"
#include "core/OstravineDemo.h"
#include "core/PlaybackControl.h"
#include "core/SettingsDialog.h"
#include "core/VideoRecording.h"
#include "flow/FlowCharts.h"
#include "render/RenderTarget.h"
#include "foundation/Capabilities.h"
#include "foundation/InputState.h"
#include "foundation/Timer.h"
#include "texture/TextureStore.h"
#ifdef OSTRAVINE_WITH_EDITOR
#include "editor/EditorScreens.h"
#include "editor/EditorSession.h"
#include "editor/SettingsDialogWindow.h"
#endif

namespace {

// The fixed clock: ticks advance by exactly 1000/fps ms a frame, counted from
// the frame number so that no rounding accumulates.
struct FixedClock {
  int32_t fps = 0;
  uint32_t baseTicks = 1000;  // not 0: a timer started at tick 0 would read as never started
  uint32_t frameNumber = 0;
  void begin() {
    if (fps > 0) setFixedTicks(baseTicks);
  }
  void advance() {
    if (fps <= 0) return;
    ++frameNumber;
    setFixedTicks(baseTicks + uint32_t(uint64_t(frameNumber) * 1000u / uint32_t(fps)));
  }
};

[[noreturn]] void exitProgram(int status) {
  delete theInput;
  theInput = nullptr;
  fflush(stdout);
  exit(status);
}

}  // namespace

int ostravineMain(int argc, char** argv) {
  // Log lines are read live by whoever redirects them.
  setvbuf(stdout, nullptr, _IOLBF, 0);

  const PlayerOptions player = parsePlayerOptions(argc, argv);
  if (player.help) {
    fputs(playerHelpText().c_str(), stdout);
    return 0;
  }
  if (!player.error.empty()) {
    fprintf(stderr, "ostravine: %s\n", player.error.c_str());
    return 2;
  }
  if (!player.captureDir.empty()) {
    const std::string problem = prepareCaptureFolder(player.captureDir);
    if (!problem.empty()) {
      fprintf(stderr, "ostravine: --capture: %s\n", problem.c_str());
      return 2;
    }
  }
#ifndef OSTRAVINE_WITH_EDITOR
  // The dialog is drawn with the editor's windows.
  if (player.settings) {
    fprintf(stderr, "ostravine: --settings: this player is built without the editor, which draws the settings dialog\n");
    return 2;
  }
#endif
  // A mode list of its own for the settings dialog, for tests and displays
  // that offer too few modes.
  std::vector<DisplayMode> givenModes;
  const char* modesText = getenv(displayModesVariable);
  if (player.settings && modesText) {
    std::string problem;
    if (!parseDisplayModes(modesText, givenModes, problem)) {
      fprintf(stderr, "ostravine: %s: %s\n", displayModesVariable, problem.c_str());
      return 2;
    }
  }
  // The production ends at this music position (the Demo's endTime).
  const int32_t productionEndMs = 263500;

  // --video: everything that can be refused is refused before the display opens.
  const bool makingVideo = !player.videoFile.empty();
  std::string ffmpegPath;
  VideoSettings video;
  if (makingVideo) {
    std::string problem = videoFileProblem(player.videoFile, player.lossless);
    if (problem.empty() && !(problem = videoFolderProblem(player.videoFile)).empty())
      problem = "--video: " + problem;
    if (!problem.empty()) {
      fprintf(stderr, "ostravine: %s\n", problem.c_str());
      return 2;
    }
    ffmpegPath = findOnPath("ffmpeg");
    if (ffmpegPath.empty()) {
      fprintf(stderr, "ostravine: --video needs ffmpeg, which is not on PATH (Debian: apt-get install ffmpeg)\n");
      return 2;
    }
    video.path = player.videoFile;
    video.lossless = player.lossless;
    video.fps = player.fixedFps > 0 ? player.fixedFps : 60;
    video.fromMs = player.hasFrom ? player.fromMs : 0;
    const int32_t toMs = player.hasTo && player.toMs < productionEndMs ? player.toMs : productionEndMs;
    video.frameCount = videoFrameCount(video.fromMs, toMs, video.fps);
    if (video.frameCount == 0) {
      fprintf(stderr, "ostravine: --video: no frame lies from %d ms to %d ms (the film ends at %d ms)\n",
              video.fromMs, toMs, productionEndMs);
      return 2;
    }
  }

  // Start-up 1: settings from the command line.
  const ProductionOptions production = parseProductionLine(joinArguments(argc, argv));
  screenWidth = production.width;
  screenHeight = production.height;
  colourDepth = 32;
  fullscreen = production.fullscreen;
  audioEnabled = production.audioEnabled;
  exactPixels = true;
  letterbox = true;
  wideDisplay = false;
  useFramebufferObjects = false;
  if (player.sizeWidth > 0) {
    screenWidth = player.sizeWidth;
    screenHeight = player.sizeHeight;
  }
#ifdef OSTRAVINE_WITH_EDITOR
  // The settings dialog, before anything opens the display: its choices
  // replace the size and the settings above; --windowed still wins.
  if (player.settings) {
    SettingsDialogOptions dialog;
    if (modesText) dialog.modes = &givenModes;
    // With --capture the dialog's picture is kept as it stood when it closed.
    if (!player.captureDir.empty()) dialog.picturePath = player.captureDir + "/settings-dialog.png";
    dialog.trace = player.trace;
    const int go = runSettingsDialog(dialog);
    if (go < 0) return 1;
    if (go == 0) {
      puts("Settings dialog: End.");
      return 0;
    }
    printf("Settings dialog: Begin with %dx%d, wide display %d, fullscreen %d, exact pixels %d, audio %d.\n",
           screenWidth, screenHeight, int(wideDisplay), int(fullscreen), int(exactPixels), int(audioEnabled));
    // The line above is what the dialog chose; say so when the command line overrules it.
    if (fullscreen && player.windowed) puts("Settings dialog: --windowed overrules \"Fullscreen\": playing in a window.");
  }
#endif
  if (player.windowed || makingVideo) fullscreen = false;
  FixedClock fixedClock;
  fixedClock.fps = makingVideo ? video.fps : player.fixedFps;
  if (fixedClock.fps > 0) audioEnabled = false;  // the music cannot follow a fixed clock
  fixedClock.begin();
  Benchmark benchmark(player.benchmark);

  // Start-up 2 and 3: the Demo, which opens the display.
  OstravineDemo demo(screenWidth, screenHeight, screenWidth, screenHeight, exactPixels, colourDepth, fullscreen,
                     false, audioEnabled);
  theDemo = &demo;
  demo.letterbox = letterbox;
  demo.wideDisplay = wideDisplay;
  outputFont = demo.currentFont();
  if (player.benchmark) {
    installDrawCounting();
    benchmark.displayReady(screenWidth, screenHeight);
  }

  // Start-up 4: not started yet, so this only clears the seek flag.
  demo.frame();

  // Start-up 5: the one frame of the loading screen; the scene is kept for good.
  LoadingScene* loading = new LoadingScene(&demo, "Loading");
  loading->render(0, 0);
  SDL_GL_SwapBuffers();

  // Start-up 6: everything loads here.
  lazySlotStorage = player.lazyTargets;
  demo.init();
  // The benchmark's empty frame: nothing scheduled, only composition,
  // present, grain and swap.
  if (player.benchmark && getenv("OSTRAVINE_BENCHMARK_EMPTY")) demo.schedules.clear();

  // Start-up 7.
  FrameRateCounter frameRate;
  bool pauseLatch = false;
  Timer wallTimer;
  wallTimer.reset();
  wallTimer.start();
  int32_t lastWallMs = wallTimer.elapsed();

  // Start-up 8 to 10. The editor's windows are built in every run with the
  // editor (blocks take their looks from them); only --edit draws them and
  // feeds them input. The flow charts learn the scenes and the demo time after
  // the editor has registered its template windows, so that only the
  // templates a player without the editor lacks are added.
#ifdef OSTRAVINE_WITH_EDITOR
  buildEditorWindows(demo.allScenes(), &demoTimeSeconds);
#endif
  theInput = new InputState();
  initFlowCharts(demo.allScenes(), &demoTimeSeconds);
  loadScript("ostravine.scr");
#ifdef OSTRAVINE_WITH_EDITOR
  if (player.edit) startEditorSession(outputFont, "ostravine.scr");
#else
  if (player.edit) puts("This player is built without the editor: --edit does nothing.");
#endif

  // Start-up 11.
  RewindControl rewind;
  demo.endTime = productionEndMs;
  demo.start();
  if (player.hasFrom) {
    // Start there as if the production began there: the first frame's step
    // is the ordinary one, not the whole jump.
    demo.seek(player.fromMs);
    demo.previousTime = demo.currentTime;
    demoTimeMs = demo.currentTime;
  }

  VideoRecording recording;
  if (makingVideo) {
    video.width = screenWidth;
    video.height = screenHeight;
    // The music goes into the file unless -nomusic; a file that does not
    // decode makes a silent video rather than a failed one.
    const char* musicPath = "./music/ostravine.mp3";
    if (production.audioEnabled) {
      if (musicFileDecodes(musicPath))
        video.musicPath = musicPath;
      else
        printf("WARNING: Music file %s cannot be decoded; the video has no sound.\n", musicPath);
    }
    if (!recording.begin(ffmpegPath, video)) exitProgram(1);
  }

  size_t nextShot = 0;
  uint32_t capturedFrames = 0;
  for (;;) {
    benchmark.frameBegins();
    // 1, 2: clocks.
    wallTimeMs = wallTimer.elapsed();
    wallStepMs = wallTimeMs - lastWallMs;
    previousDemoTimeMs = demoTimeMs;
    wallTimeSeconds = wallTimeMs / 1000.0f;
    wallStepSeconds = wallStepMs / 1000.0f;
    demoTimeMs = demo.position();

    // 3: the rewind near the end.
    demo.timeOffset = rewind.update(demoTimeMs, demo.timeOffset);

    // 4: frame counters and demo steps.
    frameRate.addFrame(wallStepMs);
    framesPerSecond = frameRate.framesPerSecond;
    lastWallMs = wallTimeMs;
    demoStepMs = demoTimeMs - previousDemoTimeMs;
    demoTimeSeconds = demoTimeMs / 1000.0f;
    demoStepSeconds = demoStepMs / 1000.0f;

    // 5: the grain of this position.
    {
      FramePassScope pass(FramePass::grain);
      fillFrameGrain(demo.noisePixels, demoTimeMs);
      demo.textures->updateTexture(demo.noisePixels, "dynamicNoise");
    }

    // 6: flow charts drive the parameters.
    evaluateFlowCharts();

    // 7: mouse state for the editor.
    SDL_PumpEvents();
    int mx = 0, my = 0;
    demo.mouseButtons = SDL_GetMouseState(&mx, &my) & 0xFF;
    demo.mouseX = mx;
    demo.mouseY = my;

    // 8: the frame.
    {
      FramePassScope pass(FramePass::composition);
      demo.frame();
    }

    if (player.trace) {
      printf("trace: position %d offset %d picture %d step %d paused %d\n", demoTimeMs, demo.timeOffset,
             demo.currentTime, demo.timeStep, int(demo.isPaused()));
      // What the flow charts wrote this frame, one line per chart.
      for (Block* sink : parameterSinks)
        if (sink->boundValue) printf("trace: parameter %s %g\n", sink->kindName.c_str() + 3, double(*sink->boundValue));
    }

    // 9: grain over the picture, inside the viewport the frame left.
    {
      FramePassScope pass(FramePass::grain);
      drawGrainOverlay(*demo.textures, screenWidth, screenHeight);
    }

    // 10: a fast paused production is slowed down.
    if (pausedFrameShouldWait(demo.isPaused(), framesPerSecond) && fixedClock.fps == 0) SDL_Delay(10);

    // 11: the lists the editor reads its selection from.
    std::vector<Scene*> visibleNow = demo.visibleScenes(demo.currentTime);
    std::vector<ScheduledEffect*> activeNow = demo.activeEffects(demo.currentTime);

    // 12: keys.
    theInput->update();

#ifdef OSTRAVINE_WITH_EDITOR
    // The editor over the composed picture, before the frame is captured and shown.
    if (player.edit) {
      EditorSessionFrame editorFrame;
      editorFrame.screenWidth = screenWidth;
      editorFrame.screenHeight = screenHeight;
      editorFrame.realSeconds = wallTimeSeconds;
      editorFrame.frameSeconds = wallStepSeconds;
      editorFrame.mouseX = demo.mouseX;
      editorFrame.mouseY = demo.mouseY;
      editorFrame.mouseButtons = unsigned(demo.mouseButtons);
      editorFrame.input = theInput;
      editorFrame.scenesOnScreen = visibleNow;
      editorSessionFrame(editorFrame);
    }
#endif

    // Frame capture (the player's own addition): what is about to be shown.
    if (!player.captureDir.empty()) {
      bool take = player.shots.empty();
      std::string name;
      if (take) {
        char buffer[64];
        snprintf(buffer, sizeof buffer, "/frame-%06u.png", capturedFrames);
        name = buffer;
      } else if (nextShot < player.shots.size() && demoTimeMs >= player.shots[nextShot]) {
        take = true;
        name = "/shot-" + std::to_string(player.shots[nextShot]) + ".png";
        while (nextShot < player.shots.size() && demoTimeMs >= player.shots[nextShot]) ++nextShot;
      }
      if (take) {
        glFinish();
        captureFrame(player.captureDir + name, screenWidth, screenHeight);
        ++capturedFrames;
      }
    }

    // --video: this frame into the file.
    if (makingVideo && !recording.addFrame()) break;

    // 13: the end of the production.
    if (demo.position() > demo.endTime) break;
    if (player.hasTo && demoTimeMs >= player.toMs) break;
    if (!player.shots.empty() && nextShot >= player.shots.size()) break;

    // 14, 15: seek and pause keys.
    // A video follows the fixed clock alone: keys do not move it.
    if (!makingVideo)
      applySeekKeys(demo, theInput->key(SDLK_UP), theInput->key(SDLK_DOWN), theInput->key(SDLK_RIGHT),
                    theInput->key(SDLK_LEFT));
    if (!makingVideo && pauseKeyToggles(theInput->key(SDLK_p), pauseLatch)) {
      if (demo.isPaused())
        demo.resume();
      else
        demo.pause();
    }

    // 16: show it.
    {
      FramePassScope pass(FramePass::swap);
      SDL_GL_SwapBuffers();
    }
    benchmark.frameEnds(demo);
    // The video's last frame is shown and counted like the others; the file
    // then has all it asked for.
    if (makingVideo && recording.complete()) break;

    // 17: key flags for an active editor.
    keyLeftShift = theInput->key(SDLK_LSHIFT) > 0;
    keyLeftControl = theInput->key(SDLK_LCTRL) > 0;
    keyX = theInput->key(SDLK_x) > 0;
    keyZ = theInput->key(SDLK_z) > 0;
    keyS = theInput->key(SDLK_s) > 0;
    keyL = theInput->key(SDLK_l) > 0;
    for (int f = 1; f <= 10; ++f) keyF[f] = theInput->key(SDLK_F1 + f - 1) > 0;
    keyR = theInput->key(SDLK_r) > 0;

    // 18, 19: one event a frame.
    if (takeOneEventWantsExit()) break;

    // 20: the lists go; the fixed clock moves on.
    fixedClock.advance();
  }
  benchmark.report(demo);
  exitProgram(makingVideo ? recording.end() : 0);
}
