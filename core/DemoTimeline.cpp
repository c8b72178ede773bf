// Demo: the timeline (scene list, schedule, effects) and the frame
// composition that renders the scheduled scenes into slots of the
// render-target pool and presents them letterboxed.
#include <GL/glew.h>

#include <algorithm>
#include <cstdio>

#include "core/Demo.h"
#include "foundation/Capabilities.h"
#include "render/GLErrors.h"
#include "render/RenderTarget.h"
#include "scenes/Scene.h"

int32_t Demo::addScene(Scene* scene) {
  int32_t index = int32_t(scenes.size());
  scenes.push_back(SceneEntry{index, scene});
  ++sceneCount;
  return index;
}

int32_t Demo::addVirtualScene(int32_t sourceA, int32_t sourceB) {
  char buffer[64];
  snprintf(buffer, sizeof buffer, "virtual%d", virtualSceneCount);
  std::string name = buffer;
  for (int32_t source : {sourceA, sourceB}) {
    if (source == -1) continue;
    Scene* s = sceneByIndex(source);
    name = name + "_" + (s ? s->name : std::string("(null)"));
  }
  int32_t index = sceneCount + virtualSceneCount;
  scenes.push_back(SceneEntry{index, new VirtualScene(this, name)});
  ++virtualSceneCount;
  return index;
}

Scene* Demo::sceneByIndex(int32_t index) {
  if (index < 0 || index >= sceneCount + virtualSceneCount) return nullptr;
  for (SceneEntry& e : scenes)
    if (e.index == index) return e.scene;
  return nullptr;
}

int32_t Demo::indexOfScene(Scene* scene) {
  for (SceneEntry& e : scenes)
    if (e.scene == scene) return e.index;
  return -1;
}

int32_t Demo::sceneIndexOfName(const std::string& name) {
  for (SceneEntry& e : scenes)
    if (e.scene->name == name) return e.index;
  return -1;
}

Scene* Demo::sceneByName(const std::string& name) {
  for (SceneEntry& e : scenes)
    if (e.scene->name == name) return e.scene;
  return nullptr;
}

std::vector<Scene*> Demo::allScenes() {
  std::vector<Scene*> result;
  for (SceneEntry& e : scenes) result.push_back(e.scene);
  return result;
}

int32_t Demo::schedule(int32_t index, int32_t startTime, int32_t endTime_) {
  if (Scene* s = sceneByIndex(index)) schedules.push_back(ScheduleEntry{s, startTime, endTime_});
  return 0;
}

int32_t Demo::addEffect(const std::string& kind, int32_t sourceA, int32_t sourceB, int32_t startTime, int32_t endTime_,
                        const std::vector<float>& settings, int32_t reserved) {
  int32_t virtualIndex = addVirtualScene(sourceA, sourceB);
  effects.push_back(ScheduledEffect{kind, settings, sourceA, sourceB, startTime, endTime_, virtualIndex, reserved});
  return virtualIndex;
}

std::vector<Scene*> Demo::activeScheduled(int32_t t) {
  std::vector<Scene*> result;
  for (ScheduleEntry& e : schedules)
    if (e.startTime <= t && t < e.endTime) result.push_back(e.scene);
  return result;
}

std::vector<Scene*> Demo::visibleScenes(int32_t t) {
  std::vector<Scene*> result;
  for (ScheduleEntry& e : schedules) {
    if (!(e.startTime <= t && t < e.endTime)) continue;
    int32_t index = indexOfScene(e.scene);
    if (index >= 0 && index < sceneCount) result.push_back(e.scene);
  }
  return result;
}

std::vector<Scene*> Demo::activeVirtualScenes(int32_t t) {
  std::vector<Scene*> result;
  for (ScheduleEntry& e : schedules) {
    if (!(e.startTime <= t && t < e.endTime)) continue;
    if (indexOfScene(e.scene) >= sceneCount) result.push_back(e.scene);
  }
  return result;
}

std::vector<ScheduledEffect*> Demo::activeEffects(int32_t t) {
  std::vector<ScheduledEffect*> result;
  for (ScheduledEffect& e : effects)
    if (e.startTime <= t && t < e.endTime) result.push_back(&e);
  return result;
}

// ---------------------------------------------------------------------------
// Frame composition
//
// A frame has three steps: the layers (each visible scene renders into its own
// slot, in schedule order), the effects (each active effect renders from
// those slots into a slot behind them), and the composition (every scheduled
// scene that no effect consumes, and every effect result, laid over black in
// schedule order); then the present step letterboxes the picture into the
// display. Slot i holds layer i; effect n's result lies in slot layers + n.
// ---------------------------------------------------------------------------

template <typename T>
static int32_t positionIn(const std::vector<T>& list, T value) {
  auto it = std::find(list.begin(), list.end(), value);
  return it == list.end() ? -1 : int32_t(it - list.begin());
}

static void clearSurface(bool depthToo) {
  glClearColor(0, 0, 0, 0);
  if (depthToo) glClearDepth(1.0);
  glClear(depthToo ? GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT : GL_COLOR_BUFFER_BIT);
}

// The layers that some active effect takes as a source, each once, in layer order.
static std::vector<int32_t> consumedLayers(const std::vector<int32_t>& layerScenes,
                                           const std::vector<ScheduledEffect*>& effectsNow) {
  std::vector<int32_t> consumed;
  for (int32_t layer : layerScenes) {
    if (positionIn(consumed, layer) >= 0) continue;
    for (ScheduledEffect* effect : effectsNow) {
      if (effect->sourceA == layer || effect->sourceB == layer) {
        consumed.push_back(layer);
        break;
      }
    }
  }
  return consumed;
}

// With framebuffer objects and nothing consumed: every scene straight onto
// the current surface, no slots.
static void renderScenesDirectly(const std::vector<Scene*>& visible, int32_t t, int32_t step) {
  glClearColor(0, 0, 0, 0);
  glClearDepth(1.0);
  glDepthMask(GL_TRUE);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glClear(GL_COLOR_BUFFER_BIT);
  for (Scene* scene : visible) {
    glClear(GL_DEPTH_BUFFER_BIT);
    scene->render(t, step);
  }
}

// Step 1: each visible scene into its slot.
static void renderLayers(RenderTarget& targets, const std::vector<Scene*>& visible, int32_t t, int32_t step) {
  for (size_t layer = 0; layer < visible.size(); ++layer) {
    targets.lowResolution = 0;
    targets.beginTarget(int32_t(layer), true, false);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    clearSurface(true);
    visible[layer]->render(t, step);
    targets.lowResolution = 0;
    targets.lowResolutionQuad = 0;
    targets.endTarget();
    if (!useFramebufferObjects) targets.copyToSlot(int32_t(layer));
  }
  glDisable(GL_DEPTH_TEST);
  checkGLErrors("frame layers");
}

// How far the effect has run at t: 0 before its start, 1 after its end.
static float effectProgress(const ScheduledEffect& effect, int32_t t) {
  if (t < effect.startTime) return 0;
  if (t > effect.endTime) return 1;
  return float(t - effect.startTime) / float(effect.endTime - effect.startTime);
}

// One effect from the layer slots onto the current surface. A source that
// is not a layer now reads the first slot behind the layers.
static void drawEffect(RenderTarget& targets, const ScheduledEffect& effect, const std::vector<int32_t>& layerScenes,
                       int32_t t) {
  const int32_t notALayer = int32_t(layerScenes.size());
  int32_t slotA = positionIn(layerScenes, effect.sourceA);
  if (slotA < 0) slotA = notALayer;
  int32_t slotB = positionIn(layerScenes, effect.sourceB);
  if (slotB < 0) slotB = notALayer;
  const float progress = effectProgress(effect, t);
  const std::vector<float>& settings = effect.settings;
  auto setting = [&](size_t k, float fallback) { return k < settings.size() ? settings[k] : fallback; };
  if (effect.kind == "fade") {
    targets.crossFade(progress, slotA, slotB);
  } else if (effect.kind == "fadeOn") {
    targets.drawSlotFaded(slotA, progress, settings.empty() ? 0 : int32_t(settings[0]));
  } else if (effect.kind == "fadeOff") {
    targets.drawSlotFaded(slotA, 1 - progress, settings.empty() ? 0 : int32_t(settings[0]));
  } else if (effect.kind == "blur") {
    // The settings behind the pass count fill the pass's own arguments in
    // order; the defaults are those of a plain white glow without zoom.
    GlowOptions blur;
    blur.amount = progress;
    blur.passes = settings.empty() ? 5 : int32_t(settings[0]);
    blur.spreadX = setting(1, 1);
    blur.spreadY = setting(2, 1);
    blur.alpha = setting(3, 1);
    blur.tintRed = setting(4, 1);
    blur.tintGreen = setting(5, 1);
    blur.tintBlue = setting(6, 1);
    blur.fadeOut = setting(7, 0);
    blur.zoom = setting(8, 0);
    blur.zoomPowBase = setting(9, 1);
    blur.zoomPow = setting(10, 1);
    targets.glowPass(slotA, blur);
  }
}

// Step 2: each active effect into the slot behind the layers and the effects
// before it. Gives the virtual scene standing for each result, in slot order.
static std::vector<int32_t> renderEffects(RenderTarget& targets, const std::vector<ScheduledEffect*>& effectsNow,
                                          const std::vector<int32_t>& layerScenes, int32_t t) {
  std::vector<int32_t> resultScenes;
  const int32_t firstEffectSlot = int32_t(layerScenes.size());
  for (size_t n = 0; n < effectsNow.size(); ++n) {
    const int32_t slot = firstEffectSlot + int32_t(n);
    targets.beginTarget(slot, false, false);
    clearSurface(false);
    targets.lowResolution = targets.lowResolutionQuad = 0;
    drawEffect(targets, *effectsNow[n], layerScenes, t);
    targets.endTarget();
    if (!useFramebufferObjects) targets.copyToSlot(slot);
    resultScenes.push_back(effectsNow[n]->virtualScene);
  }
  checkGLErrors("frame effects");
  return resultScenes;
}

// Step 3: the scheduled scenes that no effect consumes, layers and effect
// results alike, over black in schedule order. A scene blends by alpha
// unless it names another drawSlot mode.
static void composeLayers(Demo& demo, int32_t t, const std::vector<int32_t>& layerScenes,
                          const std::vector<int32_t>& consumed, const std::vector<int32_t>& effectResultScenes) {
  std::vector<Scene*> shown;
  for (Scene* scene : demo.activeScheduled(t))
    if (positionIn(consumed, demo.indexOfScene(scene)) < 0) shown.push_back(scene);

  glDisable(GL_BLEND);
  clearSurface(false);
  for (Scene* scene : shown) {
    const int32_t sceneIndex = demo.indexOfScene(scene);
    int32_t slot = positionIn(layerScenes, sceneIndex);
    if (slot < 0) slot = int32_t(layerScenes.size()) + positionIn(effectResultScenes, sceneIndex);
    const int32_t mode = scene->blendMode == 0 ? slotBlendAlpha : scene->blendMode;
    demo.renderTargets->drawSlot(slot, mode, nullptr, true, nullptr, nullptr, 1.0f);
  }
  checkGLErrors("frame composition");
}

// One scene, nothing else scheduled and no effect running, laid by alpha:
// its layer, drawn over black without blending, would give the back buffer
// its own colours again (only the alpha would turn opaque, and the present
// draws the picture opaque anyway). Such a frame needs neither the layer copy
// nor the composition.
static bool aloneOnScreen(Demo& demo, const std::vector<Scene*>& visible,
                          const std::vector<ScheduledEffect*>& effectsNow, int32_t t) {
  if (visible.size() != 1 || !effectsNow.empty()) return false;
  if (demo.activeScheduled(t).size() != 1) return false;
  const int32_t mode = visible.front()->blendMode;
  return mode == 0 || mode == slotBlendAlpha;
}

// The lone scene straight into the back buffer, as its layer is drawn.
static void renderAlone(RenderTarget& targets, Scene& scene, int32_t t, int32_t step) {
  targets.lowResolution = 0;
  glDepthMask(GL_TRUE);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  clearSurface(true);
  scene.render(t, step);
  targets.lowResolution = 0;
  targets.lowResolutionQuad = 0;
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_BLEND);
  checkGLErrors("frame layers");
}

// The picture of time t in the back buffer: layers, effects, composition.
static void renderPicture(Demo& demo, int32_t t) {
  RenderTarget& targets = *demo.renderTargets;
  const std::vector<Scene*> visible = demo.visibleScenes(t);
  targets.firstFreeSlot = int32_t(visible.size());
  const std::vector<ScheduledEffect*> effectsNow = demo.activeEffects(t);
  glViewport(0, 0, demo.areaWidth, demo.areaHeight);

  if (visible.empty()) {
    clearSurface(true);
    return;
  }
  std::vector<int32_t> layerScenes;  // the scene index of each layer
  for (Scene* scene : visible) layerScenes.push_back(demo.indexOfScene(scene));
  const std::vector<int32_t> consumed = consumedLayers(layerScenes, effectsNow);

  if (useFramebufferObjects && consumed.empty()) {
    renderScenesDirectly(visible, t, demo.timeStep);
    return;
  }
  if (aloneOnScreen(demo, visible, effectsNow, t)) {
    renderAlone(targets, *visible.front(), t, demo.timeStep);
    return;
  }
  renderLayers(targets, visible, t, demo.timeStep);
  const std::vector<int32_t> effectResultScenes = renderEffects(targets, effectsNow, layerScenes, t);
  composeLayers(demo, t, layerScenes, consumed, effectResultScenes);
}

// Present: the picture copied into the last slot and drawn back letterboxed
// into the band of 3/4 of the display height. A paused frame shows the last
// copy again; a frame that already stands right needs no copy.
static void present(Demo& demo) {
  RenderTarget& targets = *demo.renderTargets;
  targets.lowResolution = targets.lowResolutionQuad = 0;
  if (useFramebufferObjects) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  }
  const int32_t presentSlot = targets.slotCount - 1;
  bool draw = true;
  if (demo.isPaused()) {
    if (demo.refreshOnce) {
      targets.copyToSlot(presentSlot);
      demo.refreshOnce = false;
    }
  } else if (!demo.needsPresentCopy && (demo.wideDisplay || !demo.letterbox)) {
    draw = false;  // the frame already stands right in the back buffer
  } else {
    targets.copyToSlot(presentSlot);
    demo.refreshOnce = false;
  }
  if (draw) {
    clearSurface(false);
    if (!demo.wideDisplay && demo.letterbox)
      glViewport(0, int32_t(demo.screenHeight * 0.125), demo.screenWidth, int32_t(demo.screenHeight * 0.75));
    else
      glViewport(0, 0, demo.screenWidth, demo.screenHeight);
    targets.drawSlot(presentSlot, slotBlendOff, nullptr, true, nullptr, nullptr, 1.0f);
  }
  checkGLErrors("frame present");
}

int32_t Demo::frame() {
  if (started && renderTargets) {
    const int32_t t = rawPosition() + timeOffset;
    currentTime = t;
    timeStep = t - previousTime;
    previousTime = t;
    if (!paused || refreshOnce) renderPicture(*this, t);
    present(*this);
  }
  seeked = false;
  return 1;
}
