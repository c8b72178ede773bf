// EditorTestSetup: the editor windows built once per test process over two
// small test scenes, as the program builds them at start, and helpers that
// press, drag and release the way the mouse routing does.
#pragma once
#include <string>
#include <vector>

#include "editor/EditorInput.h"
#include "editor/EditorScreens.h"
#include "editor/EditorWindow.h"
#include "editor/FlowChartView.h"
#include "flow/FlowCharts.h"
#include "foundation/InputState.h"
#include "scenes/Scene.h"

namespace editortest {

// "sceneA" and "sceneB", each with cameraZoom (1, step 0.0025) and cameraFOV
// (75, step 0.25).
class TestScene : public Scene {
 public:
  explicit TestScene(const std::string& name) : Scene(name) {
    addParameter("cameraZoom", &zoom, 0.0025f, 0, 0);
    addParameter("cameraFOV", &fieldOfView, 0.25f, 0, 0);
  }
  void render(int32_t, int32_t) override {}
  float zoom = 1;
  float fieldOfView = 75;
};

inline std::vector<Scene*>& testScenes() {
  static std::vector<Scene*> scenes{new TestScene("sceneA"), new TestScene("sceneB")};
  return scenes;
}

inline float demoSeconds = 0;
inline InputState* keys = nullptr;

// Builds the windows once, then brings the editor back to its start state:
// no blocks, screens hidden, filters as at start, keys free.
inline void startEditor() {
  static bool built = false;
  if (!built) {
    built = true;
    keys = new InputState();
    buildEditorWindows(testScenes(), &demoSeconds);
    initFlowCharts(testScenes(), &demoSeconds);
  }
  for (int& k : keys->keys) k = -1;
  editorInput = keys;
  resetEditorPointer();
  clearAllBlocks();
  hideEditorScreens();
  messages.clear();
  flowScreen->x = flowScreen->y = 0;
  infoScreen->x = infoScreen->y = 0;
  flowArea->zoom = 0;
  flowArea->scrollX = flowArea->scrollY = 0;
  if (!scenesFilterAll) toggleScenesFilterAll(filterButtons[0]);
  if (!listFilterIn) toggleListFilterIn(filterButtons[3]);
  if (!listFilterOut) toggleListFilterOut(filterButtons[4]);
  if (listFilterVisible) toggleListFilterVisible(filterButtons[5]);
  dragMode = 0;
  connectSourcePick = connectTargetPick = 0;
  editorScreenWidth = 800;
  editorScreenHeight = 600;
}

inline void hold(int code, bool down) { keys->keys[size_t(code)] = down ? 100 : -100; }

inline EditorWindow* windowWithKey(const std::string& key) {
  for (EditorWindow* w : allWindows)
    if (w->key == key) return w;
  return nullptr;
}

// Presses a window as the routing does: the pick name under the mouse, then onPress.
inline int press(EditorWindow* w) {
  pickedName = w->pickName;
  selectedWindow = w;
  return w->onPress ? w->onPress(w) : 1;
}

// Creates a block through its toolbox entry or parameter entry.
inline Block* create(const std::string& key) {
  EditorWindow* tool = windowWithKey(key);
  if (!tool || press(tool) != 0) return nullptr;
  return lastCreatedBlock();
}

// A control press on the source box and a release over the target box.
inline void connectByMouse(Block* from, Block* to) {
  hold(inputKeyLeftControl, true);
  press(from->window);
  hold(inputKeyLeftControl, false);
  pickedName = to->window->pickName;
  if (from->window->onRelease) from->window->onRelease(from->window);
}

inline std::string lastMessage() { return messages.empty() ? std::string() : messages.back().text; }

}  // namespace editortest
