// Demo: the timeline (scene list, schedule, effects) and the frame
// composition that renders the scheduled scenes into slots of the
// render-target pool and presents them letterboxed.
#include <GL/glew.h>

#include <algorithm>
#include <cstdio>

#include "core/Demo.h"
#include "foundation/Capabilities.h"
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

int32_t Demo::addEffect(const std::string& kind, int32_t sourceA, int32_t sourceB, int32_t startTime,
                        int32_t endTime_, const std::vector<float>& settings, int32_t reserved) {
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

template <typename T>
static int32_t positionIn(const std::vector<T>& list, T value) {
  auto it = std::find(list.begin(), list.end(), value);
  return it == list.end() ? -1 : int32_t(it - list.begin());
}

int32_t Demo::frame() {
  RenderTarget* targets = renderTargets;
  if (started && targets) {
    const int32_t t = rawPosition() + timeOffset;
    currentTime = t;
    timeStep = t - previousTime;
    previousTime = t;

    if (!paused || refreshOnce) {
      std::vector<Scene*> V = visibleScenes(t);
      targets->firstFreeSlot = int32_t(V.size());
      std::vector<ScheduledEffect*> E = activeEffects(t);
      glViewport(0, 0, areaWidth, areaHeight);

      if (V.empty()) {
        glClearColor(0, 0, 0, 0);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
      } else {
        std::vector<int32_t> L;
        for (Scene* s : V) L.push_back(indexOfScene(s));
        // The consumed layers: those that some active effect takes as a source.
        std::vector<int32_t> C;
        for (int32_t layer : L) {
          if (positionIn(C, layer) >= 0) continue;
          for (ScheduledEffect* e : E) {
            if (e->sourceA == layer || e->sourceB == layer) {
              C.push_back(layer);
              break;
            }
          }
        }

        if (useFramebufferObjects && C.empty()) {
          // Direct path: every scene straight onto the current surface.
          glClearColor(0, 0, 0, 0);
          glClearDepth(1.0);
          glDepthMask(GL_TRUE);
          glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
          glClear(GL_COLOR_BUFFER_BIT);
          for (Scene* s : V) {
            glClear(GL_DEPTH_BUFFER_BIT);
            s->render(t, timeStep);
          }
        } else {
          // Layered path: each scene into its slot, effects into the slots
          // behind them, then every slot laid over black in schedule order.
          for (size_t i = 0; i < V.size(); ++i) {
            targets->lowResolution = 0;
            targets->beginTarget(int32_t(i), true, false);
            glClearColor(0, 0, 0, 0);
            glClearDepth(1.0);
            glDepthMask(GL_TRUE);
            glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            V[i]->render(t, timeStep);
            targets->lowResolution = 0;
            targets->lowResolutionQuad = 0;
            targets->endTarget();
            if (!useFramebufferObjects) targets->copyToSlot(int32_t(i));
          }
          glDisable(GL_DEPTH_TEST);

          std::vector<int32_t> P;
          const int32_t sceneSlots = int32_t(V.size());
          for (size_t n = 0; n < E.size(); ++n) {
            ScheduledEffect* e = E[n];
            targets->beginTarget(sceneSlots + int32_t(n), false, false);
            glClearColor(0, 0, 0, 0);
            glClear(GL_COLOR_BUFFER_BIT);
            targets->lowResolution = targets->lowResolutionQuad = 0;
            int32_t a = positionIn(L, e->sourceA);
            if (a < 0) a = int32_t(L.size());
            int32_t b = positionIn(L, e->sourceB);
            if (b < 0) b = int32_t(L.size());
            float p;
            if (t < e->startTime)
              p = 0;
            else if (t > e->endTime)
              p = 1;
            else
              p = float(t - e->startTime) / float(e->endTime - e->startTime);
            const std::vector<float>& s = e->settings;
            auto setting = [&](size_t k, float fallback) { return k < s.size() ? s[k] : fallback; };
            if (e->kind == "fade") {
              targets->crossFade(p, a, b);
            } else if (e->kind == "fadeOn") {
              targets->drawSlotFaded(a, p, s.empty() ? 0 : int32_t(s[0]));
            } else if (e->kind == "fadeOff") {
              targets->drawSlotFaded(a, 1 - p, s.empty() ? 0 : int32_t(s[0]));
            } else if (e->kind == "blur") {
              // The settings behind the pass count fill the pass's own
              // arguments in order; the defaults are those of a plain white
              // glow without zoom.
              targets->glowPass(a, p, s.empty() ? 5 : int32_t(s[0]), setting(1, 1), setting(2, 1), setting(3, 1),
                                setting(4, 1), setting(5, 1), setting(6, 1), setting(7, 0), 0, true, setting(8, 0),
                                setting(9, 1), setting(10, 1));
            }
            targets->endTarget();
            if (!useFramebufferObjects) targets->copyToSlot(sceneSlots + int32_t(n));
            P.push_back(e->virtualScene);
          }

          std::vector<Scene*> F;
          for (Scene* s : activeScheduled(t))
            if (positionIn(C, indexOfScene(s)) < 0) F.push_back(s);

          glDisable(GL_BLEND);
          glClearColor(0, 0, 0, 0);
          glClear(GL_COLOR_BUFFER_BIT);
          for (Scene* s : F) {
            const int32_t k = indexOfScene(s);
            int32_t slot = positionIn(L, k);
            if (slot < 0) slot = int32_t(L.size()) + positionIn(P, k);
            const int32_t mode = s->blendMode == 0 ? 1 : s->blendMode;
            targets->drawSlot(slot, mode, nullptr, true, nullptr, nullptr, 1.0f);
          }
        }
      }
    }

    // Present.
    targets->lowResolution = targets->lowResolutionQuad = 0;
    if (useFramebufferObjects) {
      glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
      glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
    }
    bool draw = true;
    if (paused) {
      if (refreshOnce) {
        targets->copyToSlot(targets->slotCount - 1);
        refreshOnce = false;
      }
    } else if (!needsPresentCopy && (wideDisplay || !letterbox)) {
      draw = false;  // the frame already stands right in the back buffer
    } else {
      targets->copyToSlot(targets->slotCount - 1);
      refreshOnce = false;
    }
    if (draw) {
      glClearColor(0, 0, 0, 0);
      glClear(GL_COLOR_BUFFER_BIT);
      if (!wideDisplay && letterbox)
        glViewport(0, int32_t(screenHeight * 0.125), screenWidth, int32_t(screenHeight * 0.75));
      else
        glViewport(0, 0, screenWidth, screenHeight);
      targets->drawSlot(targets->slotCount - 1, 0, nullptr, true, nullptr, nullptr, 1.0f);
    }
  }
  seeked = false;
  return 1;
}
