// EditorSession: keys, mouse, the watched script and the overlay of --edit.
#include <GL/glew.h>

#include "editor/EditorSession.h"

#include <sys/stat.h>

#include <algorithm>
#include <iterator>

#include "editor/EditorInput.h"
#include "editor/EditorScreens.h"
#include "editor/EditorWindow.h"
#include "editor/FlowChartView.h"
#include "render/Font.h"
#include "flow/FlowCharts.h"
#include "foundation/InputState.h"
#include "scenes/Scene.h"

namespace {

bool editMode = false;
std::string scriptPath;

// The script file's state on disk when it was last read or written.
struct FileStamp {
  bool exists = false;
  long long seconds = 0, nanoseconds = 0, size = 0;
  bool operator!=(const FileStamp& o) const {
    return exists != o.exists || seconds != o.seconds || nanoseconds != o.nanoseconds || size != o.size;
  }
};
FileStamp scriptStamp;

FileStamp stampOf(const std::string& path) {
  FileStamp s;
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return s;
  s.exists = true;
  s.seconds = st.st_mtim.tv_sec;
  s.nanoseconds = st.st_mtim.tv_nsec;
  s.size = st.st_size;
  return s;
}

// Key codes of the edges the session acts on.
const int keyCodes[] = {inputKeyF1, inputKeyF1 + 2, inputKeyF1 + 9, 's', 'l', 'r', 'z', 'x'};
enum { kF1, kF3, kF10, kS, kL, kR, kZ, kX, kCount };
// Down at the last frame; all down at the start, so that the first frame
// makes no edges.
bool wasHeld[kCount] = {true, true, true, true, true, true, true, true};

void loadAndLayOut() {
  resetEditorPointer();
  loadScript(scriptPath);
  scriptStamp = stampOf(scriptPath);
}

void drawSelectedParameter(const EditorSessionFrame& f) {
  Parameter* p = selectedParameterOf(f.scenesOnScreen);
  if (!p || !editorFont || hideTexts) return;
  std::string line = f.scenesOnScreen.front()->name + "." + p->name + " = " + formatFloat(*p->value);
  glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_VIEWPORT_BIT | GL_CURRENT_BIT | GL_TEXTURE_BIT);
  glViewport(0, 0, f.screenWidth, f.screenHeight);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glOrtho(0, f.screenWidth, 0, f.screenHeight, -100, 100);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glDisable(GL_TEXTURE_2D);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  const float k = 0.5f;
  glColor4f(0.05f, 0.05f, 0.1f, 0.7f);
  glBegin(GL_QUADS);
  glVertex2f(0, 0);
  glVertex2f(float(line.size()) * 16 * k + 16, 0);
  glVertex2f(float(line.size()) * 16 * k + 16, 20);
  glVertex2f(0, 20);
  glEnd();
  Font& font = *editorFont;
  font.setFrame(Vector3(8 + 8 * k, 10, 0), Vector3(1, 0, 0), Vector3(0, -1, 0));
  font.setColor(0.6f, 1.0f, 0.6f, 1.0f);
  font.setMetrics(28 * k, 24 * k, 16 * k, 24 * k);
  font.setCursor(0, 0);
  font.draw(line, false);
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glPopAttrib();
}

}  // namespace

bool editorEditMode() { return editMode; }

Parameter* selectedParameterOf(const std::vector<Scene*>& scenesOnScreen) {
  if (scenesOnScreen.empty()) return nullptr;
  Scene* scene = scenesOnScreen.front();
  if (scene->parameters.empty()) return nullptr;
  int index = std::min(std::max(scene->selectedParameter, 0), int(scene->parameters.size()) - 1);
  auto it = scene->parameters.begin();
  std::advance(it, index);
  return &*it;
}

void startEditorSession(Font* font, const std::string& scriptFile) {
  editorFont = font;
  scriptPath = scriptFile;
  scriptStamp = stampOf(scriptPath);
  editMode = true;
  if (flowScreen) hideEditorScreens();
}

void editorSessionFrame(const EditorSessionFrame& f) {
  editorScreenWidth = f.screenWidth;
  editorScreenHeight = f.screenHeight;
  editorRealSeconds = f.realSeconds;
  editorFrameSeconds = f.frameSeconds;
  editorInput = f.input;
  activeSceneNames.clear();
  for (Scene* s : f.scenesOnScreen) activeSceneNames.push_back(s->name);

  // ---- Keys ----
  bool held[kCount] = {}, pressed[kCount] = {};
  for (int i = 0; i < kCount; ++i) {
    held[i] = keyDown(f.input, keyCodes[i]);
    pressed[i] = held[i] && !wasHeld[i];
    wasHeld[i] = held[i];
  }
  const bool control = keyDown(f.input, inputKeyLeftControl);
  const bool shift = keyDown(f.input, inputKeyLeftShift);
  if (pressed[kF10]) editMode = !editMode;
  if (pressed[kF1] && flowScreen) {
    toggleInfoScreen();
    editMode = true;
  }
  if (pressed[kF3] && flowScreen) {
    toggleFlowScreen();
    editMode = true;
  }
  if (editMode && control && shift && pressed[kS]) {
    int failed = saveScript(scriptPath);
    scriptStamp = stampOf(scriptPath);
    showMessage(failed ? "Could not write " + scriptPath : "Saved " + scriptPath, 2);
  }
  if (editMode && control && shift && pressed[kL]) {
    loadAndLayOut();
    showMessage("Loaded " + scriptPath, 2);
  }
  if (editMode && control && pressed[kR]) {
    if (shift) {
      for (Scene* scene : flowScenes())
        for (Parameter& p : scene->parameters) *p.value = p.defaultValue;
    } else if (Parameter* p = selectedParameterOf(f.scenesOnScreen)) {
      *p->value = p->defaultValue;
    }
  }
  if (editMode && !control && (pressed[kZ] || pressed[kX]) && !f.scenesOnScreen.empty()) {
    Scene* scene = f.scenesOnScreen.front();
    int count = int(scene->parameters.size());
    if (count > 0)
      scene->selectedParameter = std::min(std::max(scene->selectedParameter + (pressed[kX] ? 1 : -1), 0), count - 1);
  }

  // ---- The script, changed on disk ----
  FileStamp now = stampOf(scriptPath);
  if (now != scriptStamp) {
    scriptStamp = now;
    if (now.exists) {
      loadAndLayOut();
      showMessage("Read " + scriptPath + " again", 2);
    }
  }

  if (!editMode) return;

  // ---- Mouse ----
  EditorPointerResult pointer = editorPointerFrame(f.mouseX, f.mouseY, f.mouseButtons);
  if (pointer.draggingNothing && pointer.frameDeltaX != 0)
    if (Parameter* p = selectedParameterOf(f.scenesOnScreen)) *p->value += float(pointer.frameDeltaX) * p->step;

  // ---- Drawing ----
  drawWindows(nullptr);
  drawSelectedParameter(f);
  drawMessages();
}
