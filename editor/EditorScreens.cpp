// EditorScreens: builds the flow chart screen, the four tool panels and the
// quick info screen, in that order, and folds and shows them.
#include "editor/EditorScreens.h"

#include <algorithm>

#include "editor/EditorWindow.h"
#include "editor/FlowChartView.h"
#include "flow/Block.h"
#include "scenes/Scene.h"

EditorWindow* flowScreen = nullptr;
EditorWindow* flowTitle = nullptr;
EditorWindow* flowArea = nullptr;
EditorWindow* filterPanel = nullptr;
EditorWindow* sourcePanel = nullptr;
EditorWindow* functionPanel = nullptr;
EditorWindow* parameterPanel = nullptr;
EditorWindow* parameterList = nullptr;
EditorWindow* parameterScrollKnob = nullptr;
EditorWindow* infoScreen = nullptr;
EditorWindow* infoTitle = nullptr;
EditorWindow* infoText = nullptr;
EditorWindow* infoScrollUp = nullptr;
EditorWindow* infoScrollDown = nullptr;
std::vector<EditorWindow*> parameterEntries;
std::vector<EditorWindow*> filterButtons;
float editorFrameSeconds = 0;

namespace {

// The fixed layout size, whatever the display's resolution.
const int W = 800;
const int H = 600;

const float topAlpha = 0.5f;
const float bottomAlpha = 0.85f;

struct ColourPair {
  Vector3 top, bottom;
};
const ColourPair slate{{0.25f, 0.265f, 0.35f}, {0.25f, 0.265f, 0.35f}};
const ColourPair paper{{0.85f, 0.88f, 0.92f}, {0.65f, 0.68f, 0.72f}};
const ColourPair panelColours{{0.1f, 0.1f, 0.2f}, {0.1f, 0.1f, 0.225f}};
const ColourPair panelTitle{{0.2f, 0.2f, 0.2f}, {0.2f, 0.2f, 0.225f}};
const ColourPair button{{0.1f, 0.1f, 0.1f}, {0.1f, 0.1f, 0.125f}};
const ColourPair tool{{0.125f, 0.125f, 0.125f}, {0.125f, 0.125f, 0.15f}};
const ColourPair entry{{0.2f, 0.23f, 0.2f}, {0.2f, 0.25f, 0.22f}};
const ColourPair info{{0.4f, 0.4f, 0.5f}, {0.1f, 0.1f, 0.35f}};

EditorWindow* makeWindow(const std::string& text, float width, float height, float x, float y,
                         const ColourPair& colours, bool movable = false, bool scrollable = false,
                         WindowPressHandler onPress = nullptr, WindowDragHandler onDrag = nullptr) {
  return new EditorWindow(text, width, height, x, y, movable, scrollable, false, colours.top, topAlpha,
                          colours.bottom, bottomAlpha, onPress, onDrag, nullptr);
}

EditorWindow* child(EditorWindow* parent, EditorWindow* w) {
  addChild(parent, w);
  return w;
}

// ---- Panels and their folding -----------------------------------------------

struct PanelFold {
  EditorWindow* panel;
  EditorWindow* title;
  float unfoldedHeight;
  float foldedScroll;
  bool open;  // starts true; the construction folds every panel once
};
std::vector<PanelFold> panelFolds;

int pressPanelTitle(EditorWindow* title) { return togglePanelFold(title->parent, title); }

EditorWindow* makePanel(float width, float height, float x, float y, const std::string& titleText,
                        float titleWidth, float titleY, float foldedScroll) {
  EditorWindow* panel = makeWindow("", width, height, x, y, panelColours, true);
  EditorWindow* title = child(panel, makeWindow(titleText, titleWidth, 20, 0, titleY, panelTitle, false, false,
                                                pressPanelTitle));
  title->textScale = 0.6f;
  panelFolds.push_back({panel, title, height, foldedScroll, true});
  return panel;
}

// ---- Help ---------------------------------------------------------------------

int pressNothing(EditorWindow*) { return 0; }

void dragInfoUp(EditorWindow*) {
  infoText->scrollY += editorFrameSeconds * 200;
  if (infoText->limitScrollY) infoText->scrollY = std::min(infoText->scrollY, infoText->maxScrollY);
}

void dragInfoDown(EditorWindow*) {
  infoText->scrollY -= editorFrameSeconds * 200;
  if (infoText->limitScrollY) infoText->scrollY = std::max(infoText->scrollY, infoText->minScrollY);
}

}  // namespace

const std::string& helpText() {
  static const std::string text = std::string("F1:\n this info\n\n") + "F2:\n scenes & timeline (TBD)\n\n" +
                                  "F3:\n parameter editing\n\n" + "F10:\n switch edit mode on/off\n\n" + "\n\n" +
                                  "General window handling specific keys:\n\n" +
                                  "mouse left:\n move the selected window\n\n" +
                                  "mouse middle:\n scroll the selected window\n (if scrollable)\n\n" +
                                  "mouse right:\n scale/zoom the selected window\n (if scalable or zoomable)\n\n" +
                                  "\n\n" + "Demo timeline handling specific keys:\n\n" +
                                  "arrows left/right:\n rewind timeline slowly \n\n" +
                                  "arrows up/down:\n rewind time line faster\n\n" + "p:\n pause/unpause\n\n" +
                                  "\n\n" +
                                  "Parameter editing flow chart \n and default value editing common keys:\n\n" +
                                  "left ctrl + left shift + S:\n save all modifications to flow charts\n and to "
                                  "parameter default values\n\n" +
                                  "left ctrl + left shift + L:\n load all\n\n" + "\n\n" +
                                  "Parameter default value\n editing specific keys:\n\n" +
                                  "mouse left+move:\n modify parameter value\n\n" +
                                  "left ctrl + R:\n reset single parameter to default value\n\n" +
                                  "left ctrl + left shift + R:\n reset every parameter to default value\n\n" +
                                  "z/x:\n select modifiable parameter \n\n" + "\n\n" +
                                  "Parameter flow chart\n editing specific keys:\n\n" +
                                  "left shift + mouse left:\n modify flow chart value or open \n it's editing "
                                  "window\n\n" +
                                  "left shift + left ctrl:\n drag the mouse to other block\n to make connection\n\n" +
                                  "delete+mouse left:\n delete some flow chart block\n or connection\n\n" +
                                  "mouse middle on the editing area:\n scroll\n\n" +
                                  "mouse right on the editing area:\n zoom flow charts in/out\n\n";
  return text;
}

int togglePanelFold(EditorWindow* panel, EditorWindow* title) {
  for (PanelFold& fold : panelFolds) {
    if (fold.panel != panel) continue;
    fold.open = !fold.open;
    if (fold.open) {
      panel->height = fold.unfoldedHeight;
      panel->scrollY = 0;
      title->topColor = Vector3(0.5f, 0.5f, 0.52f);
      title->textColor = Vector3(1, 1, 1);
      panel->y -= panel->height * 0.5f - 15;
    } else {
      panel->scrollY = fold.foldedScroll;
      float oldHeight = panel->height;
      panel->height = 25;
      panel->y += oldHeight * 0.5f - 15;
      title->topColor = Vector3(0.1f, 0.1f, 0.12f);
      title->textColor = Vector3(0.5f, 0.5f, 0.5f);
    }
  }
  return 0;
}

void buildEditorWindows(const std::vector<Scene*>& scenes, float* demoTimeSeconds) {
  installFlowChartView();
  // ---- The flow chart screen ----
  flowScreen = makeWindow("", W - 50, H - 50, 0, 0, slate, true);
  flowTitle = child(flowScreen, makeWindow("F3: Param Flow Charts Edit", 410, 20, 0, (H - 50) / 2 - 15, slate));
  flowArea = child(flowScreen, makeWindow("", W - 100, H - 100, 0, 0, paper, false, true));
  flowArea->zoomable = true;
  flowArea->zoom = 0;

  // ---- The panels, laid out from the upper left of the screen ----
  filterPanel = makePanel(280, 150, -W / 2 + 199, H / 2 - 165, "Flow Chart Show Filters", 240, 60, -60);
  sourcePanel = makePanel(152, 86, -W / 2 + 135, H / 2 - 97, "Add Source", 120, 30, -30);
  functionPanel = makePanel(152, 86, -W / 2 + 300, H / 2 - 97, "Add Function", 120, 30, -30);
  parameterPanel = makePanel(340, 296, -W / 2 + 560, H / 2 - 202, "Add Parameter", 180, 135, -135);

  // ---- Tool buttons: the templates of the blocks ----
  struct Tool {
    EditorWindow* panel;
    const char* text;
    const char* key;
    float x, y;
    bool creates;
  };
  const Tool tools[] = {
      {sourcePanel, "FLOAT", "float", -50, 5, true},
      {sourcePanel, "DEMO\n TIME", "demotime", 0, 5, true},
      {sourcePanel, "TIME\n STEP", "timestep", 50, 5, false},
      {sourcePanel, "SCENE\n TIME", "scenetime", -50, -25, false},
      {sourcePanel, "SCENE\n START", "scenestart", 0, -25, false},
      {sourcePanel, "SCENE\n END", "sceneend", 50, -25, false},
      {functionPanel, "SUM", "sum", -50, 5, true},
      {functionPanel, "MUL", "mul", -50, -25, true},
      {functionPanel, "SIN", "sin", 0, 5, true},
      {functionPanel, "PULSE", "pulse", 50, 5, true},
  };
  for (const Tool& t : tools) {
    EditorWindow* w = child(t.panel, makeWindow(t.text, 46, 26, t.x, t.y, tool, false, false,
                                                t.creates ? pressCreateBlock : nullptr));
    w->key = t.key;
    w->textScale = 0.4f;
    if (w->key != "float") w->textPosition.y = 4;
    if (w->key == "demotime") w->boundValue = demoTimeSeconds;
    if (t.creates) addBlockTemplate(w->key, w->text, w->boundValue, w->pickName, w);
  }

  // ---- Filter buttons ----
  struct Filter {
    EditorWindow* panel;
    const char* text;
    float width, x, y;
    WindowPressHandler toggle;
    bool on;
  };
  const Filter filters[] = {
      {filterPanel, "All Scenes", 100, -65, 30, toggleScenesFilterAll, true},
      {filterPanel, "Visible Scenes", 120, 55, 30, toggleScenesFilterVisible, false},
      {filterPanel, "Selected Scenes:", 220, -5, 5, toggleScenesFilterSelected, false},
      {parameterPanel, "In", 30, -135, -120, toggleListFilterIn, true},
      {parameterPanel, "Out", 30, -100, -120, toggleListFilterOut, true},
      {parameterPanel, "Visible", 60, -10, -120, toggleListFilterVisible, false},
  };
  filterButtons.clear();
  for (const Filter& f : filters) {
    EditorWindow* w = child(f.panel, makeWindow(f.text, f.width, 20, f.x, f.y, button, false, false, f.toggle));
    w->textScale = 0.5f;
    filterButtonColor(w, f.on);
    filterButtons.push_back(w);
  }

  // ---- The parameter list ----
  parameterList = child(parameterPanel, makeWindow("", 300, 225, 0, 10, button, false, true));
  parameterList->listScroll = true;
  parameterScrollKnob = child(parameterPanel, new EditorWindow("", 20, 50, 160, 10, true, false, false,
                                                               Vector3(0.4f, 0.4f, 0.4f), topAlpha,
                                                               Vector3(0.4f, 0.4f, 0.425f), bottomAlpha, nullptr,
                                                               scrollParameterListFromKnob, nullptr));
  parameterEntries.clear();
  int i = 0;
  for (Scene* scene : scenes) {
    for (Parameter& p : scene->parameters) {
      for (const char* prefix : {"in.", "out."}) {
        EditorWindow* w = child(parameterList,
                                makeWindow(std::string(prefix) + scene->name + ".\n" + p.name, 275, 32, 0,
                                           30 - 34 * float(i), entry, false, false, pressCreateBlock));
        w->key = std::string(prefix) + scene->name + "." + p.name;
        w->textScale = 0.5f;
        w->textCentred = true;
        w->textPosition.y = 4;
        w->boundValue = p.value;
        addBlockTemplate(w->key, w->text, w->boundValue, w->pickName, w);
        parameterEntries.push_back(w);
        ++i;
      }
    }
  }
  refreshParameterList();

  // ---- The quick info screen ----
  infoScreen = makeWindow("", 550, 380, 0, 0, info, true);
  infoTitle = child(infoScreen, makeWindow("F1: quick info screen", 410, 20, 0, 175, info));
  infoText = child(infoScreen, makeWindow(helpText(), 510, 300, 0, -10, info, false, true));
  infoText->listScroll = true;
  infoText->textScale = 0.75f;
  // The help starts on the window's top line, and scrolls down to its last.
  infoText->textPosition.y = 150 - 12;
  const int helpLines = 1 + int(std::count(helpText().begin(), helpText().end(), '\n'));
  infoText->limitScrollY = true;
  infoText->minScrollY = 0;
  infoText->maxScrollY = std::max(0.0f, float(helpLines) * 24 * 0.75f - 280);
  infoScrollUp = child(infoScreen, makeWindow("V", 35, 20, 0, -170, info, false, false, pressNothing, dragInfoUp));
  infoScrollUp->textScale = 1.25f;
  infoScrollDown =
      child(infoScreen, makeWindow("V", 35, 20, 0, 150, info, false, false, pressNothing, dragInfoDown));
  infoScrollDown->textScale = 1.25f;
  infoScrollDown->textYAxis = Vector3(0, 1, 0);

  // ---- Start: everything folded and hidden ----
  for (PanelFold& fold : panelFolds) togglePanelFold(fold.panel, fold.title);
  hideEditorScreens();
  rebuildTopLevelWindows();
  selectedWindow = nullptr;
}

void hideEditorScreens() {
  flowScreen->visible = false;
  infoScreen->visible = false;
  for (PanelFold& fold : panelFolds) fold.panel->visible = false;
}

void toggleInfoScreen() {
  bool show = !infoScreen->visible;
  hideEditorScreens();
  infoScreen->visible = show;
}

void toggleFlowScreen() {
  bool show = !flowScreen->visible;
  hideEditorScreens();
  flowScreen->visible = show;
  for (PanelFold& fold : panelFolds) fold.panel->visible = show;
}
