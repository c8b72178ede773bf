// FlowChartView: boxes, curves, layout, filters and the box handlers.
#include <GL/glew.h>

#include "editor/FlowChartView.h"

#include <algorithm>
#include <cmath>

#include "editor/EditorInput.h"
#include "editor/EditorScreens.h"
#include "editor/EditorWindow.h"
#include "render/Font.h"
#include "flow/FlowCharts.h"
#include "foundation/InputState.h"

EditorWindow* pressedWindow = nullptr;
Block* pressedBlock = nullptr;
int dragMode = 0;
float dragStartValue = 0;
int connectSourcePick = 0;
int connectTargetPick = 0;
bool scenesFilterAll = true, scenesFilterVisible = false, scenesFilterSelected = false;
bool listFilterIn = true, listFilterOut = true, listFilterVisible = false;
std::vector<std::string> activeSceneNames;

namespace {

bool keyHeld(int code) { return keyDown(editorInput, code); }

Block* blockOfWindow(EditorWindow* w) {
  if (!w) return nullptr;
  for (Block* b : allBlocks)
    if (b->window == w) return b;
  return nullptr;
}

// ---- Filters -------------------------------------------------------------------

// The three chart filters: one on switches the others off.
int toggleSceneFilter(bool& filter) {
  bool* filters[3] = {&scenesFilterAll, &scenesFilterVisible, &scenesFilterSelected};
  filter = !filter;
  if (filter)
    for (bool* f : filters)
      if (f != &filter) *f = false;
  for (int i = 0; i < 3 && i < int(filterButtons.size()); ++i) filterButtonColor(filterButtons[size_t(i)], *filters[i]);
  layoutFlowCharts();
  return 0;
}

int toggleListFilter(bool& filter, int buttonIndex) {
  filter = !filter;
  if (buttonIndex < int(filterButtons.size())) filterButtonColor(filterButtons[size_t(buttonIndex)], filter);
  refreshParameterList();
  return 0;
}

// ---- Layout ----------------------------------------------------------------------

void showChart(Block* block) {
  if (block->window) block->window->visible = true;
  for (Block* input : block->inputs) showChart(input);
}

// Places a block's box and, to its left, the boxes that feed it; rows are
// 25 pixels high and grow downwards.
void placeBlock(Block* block, int row, int off, float x, float y, int& rowsUsed) {
  EditorWindow* w = block->window;
  if (!w || !w->visible) return;
  rowsUsed = std::max(rowsUsed, int(block->inputs.size()) + off);
  w->x = x;
  w->y = float(row + off) * -25 + y;
  size_t j = 0;
  for (Block* input : block->inputs) {
    placeBlock(input, row + off, off, x - w->width / 2 - 80, y, rowsUsed);
    if (++j < block->inputs.size()) ++off;
  }
}

// ---- Box handlers ------------------------------------------------------------------

void startConnection(EditorWindow* box) {
  dragMode = 0;
  showMessage("Drag the mouse to make\n " + box->displayText() + " output to the block.", 4);
}

int pressBox(EditorWindow* box, bool changesValue, bool opensProperties, bool clearsSource) {
  updateSelection();
  Block* block = blockOfWindow(box);
  if (!block) return 1;
  dragMode = 0;
  if (keyHeld(inputKeyLeftControl)) {
    startConnection(box);
    return 0;
  }
  if (keyHeld(inputKeyLeftShift) && changesValue) {
    dragMode = 1;
    dragStartValue = block->value;
    return 0;
  }
  if (keyHeld(inputKeyLeftShift) && opensProperties) {
    dragMode = 1;
    if (EditorWindow* frame = box->propertiesWindow) {
      frame->visible = true;
      frame->x = box->x;
      frame->y = box->y - frame->height / 2 - box->height / 2 - 5;
    }
    return 0;
  }
  if (keyHeld(inputKeyDelete)) {
    if (std::list<Block*>* kindList = kindListOf(block)) removeBlock(*kindList, block);
    return 1;
  }
  if (clearsSource) connectSourcePick = 0;
  return 1;
}

int pressFloatBox(EditorWindow* box) { return pressBox(box, true, false, true); }
int pressPulseBox(EditorWindow* box) { return pressBox(box, false, true, false); }
int pressFunctionBox(EditorWindow* box) { return pressBox(box, false, false, false); }
int pressSourceBox(EditorWindow* box) { return pressBox(box, false, false, true); }

void dragFloatBox(EditorWindow* box) {
  if (dragMode != 1) return;
  Block* block = blockOfWindow(box);
  if (!block) return;
  setFloatValue(block, float(mouseDeltaX) * block->dragStep + dragStartValue);
}

void releaseBox(EditorWindow*) {
  if (dragMode != 0) return;
  connectTargetPick = pickedName;
  EditorWindow* sourceWindow = pickWindow(connectSourcePick);
  EditorWindow* targetWindow = pickWindow(connectTargetPick);
  Block* target = blockOfWindow(targetWindow);
  Block* source = blockOfWindow(sourceWindow);
  if (!target || !source || source == target) return;
  if (source->maxOutputs != -1 && int(source->outputs.size()) >= source->maxOutputs) {
    showMessage("Maximum outputs (" + std::to_string(source->maxOutputs) + ") \n of block " +
                    sourceWindow->displayText() + " already used.",
                2);
  } else if (target->maxInputs != -1 && int(target->inputs.size()) >= target->maxInputs) {
    showMessage("Maximum inputs (" + std::to_string(target->maxInputs) + ") \n of block " +
                    targetWindow->displayText() + " already used.",
                2);
  } else if (wouldCloseCycle(source, target)) {
    showMessage("Connection NOT possible!", 2);
  } else {
    connectBlocks(source, target);
    showMessage("Connection between " + std::to_string(connectSourcePick) + " and " +
                    std::to_string(connectTargetPick),
                2);
  }
}

// ---- Pulse properties --------------------------------------------------------------

int pressClose(EditorWindow* close) {
  if (close->ownerWindow) close->ownerWindow->visible = false;
  return 1;
}

void setValueText(EditorWindow* w) {
  if (w->boundValue) w->text = w->caption + " " + formatFloat(*w->boundValue);
}

int pressValue(EditorWindow* w) {
  updateSelection();
  dragMode = 1;
  dragStartValue = w->boundValue ? *w->boundValue : 0;
  return 0;
}

void dragValue(EditorWindow* w) {
  if (!w->boundValue) return;
  const float m = float(mouseDeltaX);
  const float offset = std::fabs(m) < 100 ? m * 0.01f : std::copysign(std::pow(std::fabs(m) * 0.01f, 5.0f), m);
  *w->boundValue = dragStartValue + offset;
  setValueText(w);
}

// The pulse's function over a stretch of time, with ticks and their times.
void drawPulseGraph(EditorWindow* window) {
  Block* block = static_cast<Block*>(window->customData);
  if (!block || block->settings.size() < 6) return;
  const std::vector<float>& p = block->settings;
  const float raise = p[0], up = p[1], lower = p[2], start = p[3], repeats = p[4], delta = p[5];
  const float w = window->width, h = window->height;
  const float shift = window->scrollX / 100;
  const float tStart = start - shift;
  const float tEnd = (window->scrollY + 100) / 100 * (delta * repeats + up + raise + lower + start) - shift;
  const float span = tEnd - tStart;
  if (!(span > 0) || !std::isfinite(span)) return;  // nothing to plot over an empty or reversed range
  const float tick = float(int(std::min(span, 1e6f)) + 1) * 0.125f;
  const float plotWidth = w - 15, left = w * -0.5f;
  auto xOf = [&](float t) { return t / span * plotWidth + left; };

  glPushMatrix();
  glTranslatef(15 - tStart / span * w, 15, 0);
  glLineWidth(1);
  glColor4f(window->topColor.x * 3, window->topColor.y * 3, window->topColor.z * 3, window->topAlpha * 1.5f);
  const int samples = int(std::lround(2 * w));
  glBegin(GL_LINES);
  float lastX = 0, lastY = 0;
  for (int i = 0; i < samples; ++i) {
    float t = float(i) / float(samples) * span + tStart;
    std::vector<float> in{t};
    float v = block->compute ? block->compute(in, *block) : pulseValue(p, t);
    float px = xOf(t), py = v * (h - 17) - h / 2;
    if (i > 0) {
      glVertex3f(lastX, lastY, drawDepth);
      glVertex3f(px, py, drawDepth);
    }
    lastX = px;
    lastY = py;
  }
  glEnd();
  glColor4f(window->topColor.x * 2, window->topColor.y * 2, window->topColor.z * 2, window->topAlpha * 1.5f);
  glBegin(GL_LINES);
  for (float t = tStart; t < tEnd; t += tick / 2) {
    glVertex3f(xOf(t), -h / 2, drawDepth);
    glVertex3f(xOf(t), -h / 2 - 10, drawDepth);
  }
  glEnd();
  if (!hideTexts && editorFont) {
    Font& font = *editorFont;
    for (float t = tStart; t < tEnd; t += tick) {
      font.setFrame(Vector3(xOf(t), -h / 2 - 10, drawDepth), window->textXAxis, window->textYAxis);
      font.setColor(window->textColor);
      font.setAlpha(window->textAlpha);
      font.setMetrics(12.6f, 10.8f, 7.2f, 10.8f);
      font.setCursor(0, 0);
      font.draw(formatFloat(t), true);
    }
  }
  glDisable(GL_TEXTURE_2D);
  glDisable(GL_ALPHA_TEST);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glPopMatrix();
}

EditorWindow* buildPulseProperties(Block& block, const Vector3& top, float topA, const Vector3& bottom,
                                   float bottomA) {
  auto make = [&](const std::string& text, float width, float height, float x, float y, WindowPressHandler press,
                  WindowDragHandler drag) {
    return new EditorWindow(text, width, height, x, y, false, false, false, top, topA, bottom, bottomA, press, drag,
                            nullptr);
  };
  EditorWindow* frame = make("", 400, 300, 0, 0, nullptr, nullptr);
  frame->movable = true;
  frame->visible = false;
  EditorWindow* title = make("Properties of PULSE", 370, 28, 0, 130, nullptr, nullptr);
  title->numberSource = &block.number;
  title->textScale = 0.65f;
  addChild(frame, title);
  EditorWindow* close = make("X", 20, 20, 185, 130, pressClose, nullptr);
  close->textScale = 0.5f;
  close->ownerWindow = frame;
  addChild(frame, close);
  struct Field {
    const char* caption;
    float x, y;
  };
  const Field fields[6] = {{"Raise:\n", -115, 100}, {"Up:\n", 0, 100},      {"Lower:\n", 115, 100},
                           {"Start:\n", -115, 60},  {"Repeats:\n", 0, 60}, {"Delta:\n", 115, 60}};
  for (int i = 0; i < 6; ++i) {
    EditorWindow* v = make("", 100, 36, fields[i].x, fields[i].y, pressValue, dragValue);
    v->caption = fields[i].caption;
    v->textScale = 0.65f;
    v->textPosition.y = 5;
    if (size_t(i) < block.settings.size()) v->boundValue = &block.settings[size_t(i)];
    setValueText(v);
    addChild(frame, v);
  }
  EditorWindow* graph = make("", 370, 70, 0, -75, nullptr, nullptr);
  graph->scrollable = true;
  graph->customDraw = drawPulseGraph;
  graph->customData = &block;
  addChild(frame, graph);
  addChild(flowArea, frame);
  return frame;
}

// ---- Hooks from the block graph -------------------------------------------------------

void boxCreated(Block& block, const BlockTemplate& from) {
  if (!flowArea) return;
  Vector3 top(0.125f, 0.125f, 0.125f), bottom(0.125f, 0.125f, 0.15f);
  float topA = 0.5f, bottomA = 0.85f;
  if (from.window) {
    top = from.window->topColor;
    bottom = from.window->bottomColor;
    topA = from.window->topAlpha;
    bottomA = from.window->bottomAlpha;
  }
  WindowPressHandler press = pressFunctionBox;
  WindowDragHandler drag = nullptr;
  if (block.kindName == "float") {
    press = pressFloatBox;
    drag = dragFloatBox;
  } else if (block.kindName == "pulse") {
    press = pressPulseBox;
  } else if (block.kindName == "demotime" || block.kindName.rfind("in.", 0) == 0 ||
             block.kindName.rfind("out.", 0) == 0) {
    press = pressSourceBox;
  }
  EditorWindow* w = new EditorWindow(block.text, block.box.width, block.box.height, 0, 0, true, false, false, top,
                                     topA, bottom, bottomA, press, drag, releaseBox);
  w->textScale = block.box.textScale;
  w->textPosition.y = block.box.textOffsetY;
  w->numberSource = &block.number;
  w->key = block.key;
  w->boundValue = block.boundValue;
  w->block = &block;
  block.window = w;
  addChild(flowArea, w);
  // Centred in the visible part of the area.
  const float s = 1 - 2 * flowArea->zoom;
  w->x = -flowArea->scrollX * s;
  w->y = -flowArea->scrollY * s;
  if (block.kindName == "pulse") w->propertiesWindow = buildPulseProperties(block, top, topA, bottom, bottomA);
}

void boxDestroyed(Block& block) {
  if (pressedBlock == &block) pressedBlock = nullptr;
  if (block.window) {
    if (pressedWindow == block.window) pressedWindow = nullptr;
    destroyWindow(block.window);
  }
  block.window = nullptr;
}

void boxTextChanged(Block& block) {
  if (block.window) block.window->text = block.text;
}

void chartsLoaded() { layoutFlowCharts(); }

// Left press on a curve: with the delete key held the connection goes.
void pressCurve(int name) {
  if (!keyHeld(inputKeyDelete)) return;
  if (ConnectionCurve* curve = curveOfPick(name)) removeConnection(curve);
}

}  // namespace

void installFlowChartView() {
  blockBoxHooks.boxCreated = boxCreated;
  blockBoxHooks.boxDestroyed = boxDestroyed;
  blockBoxHooks.boxTextChanged = boxTextChanged;
  blockBoxHooks.chartsLoaded = chartsLoaded;
  drawChildConnections = drawFlowConnections;
  curvePressHandler = pressCurve;
}

void filterButtonColor(EditorWindow* button, bool on) {
  button->topColor = on ? Vector3(0.1f, 0.4f, 0.12f) : Vector3(0.1f, 0.1f, 0.12f);
}

int updateSelection() {
  pressedWindow = pickWindow(pickedName);
  selectedWindow = pressedWindow;
  connectSourcePick = pickedName;
  if (Block* b = blockOfWindow(pressedWindow)) pressedBlock = b;
  return 1;
}

int toggleScenesFilterAll(EditorWindow*) { return toggleSceneFilter(scenesFilterAll); }
int toggleScenesFilterVisible(EditorWindow*) { return toggleSceneFilter(scenesFilterVisible); }
int toggleScenesFilterSelected(EditorWindow*) { return toggleSceneFilter(scenesFilterSelected); }
int toggleListFilterIn(EditorWindow*) { return toggleListFilter(listFilterIn, 3); }
int toggleListFilterOut(EditorWindow*) { return toggleListFilter(listFilterOut, 4); }
int toggleListFilterVisible(EditorWindow*) { return toggleListFilter(listFilterVisible, 5); }

void layoutFlowCharts() {
  if (scenesFilterAll) {
    for (Block* b : allBlocks)
      if (b->window) b->window->visible = true;
  } else {
    for (Block* b : allBlocks)
      if (b->window) b->window->visible = false;
    if (scenesFilterVisible)
      for (const std::string& scene : activeSceneNames)
        for (Block* sink : parameterSinks)
          if (sink->window && sink->window->key.find(scene) != std::string::npos) showChart(sink);
  }
  int row = 0;
  for (Block* sink : parameterSinks) {
    if (!sink->window || !sink->window->visible) continue;
    int rowsUsed = 0;
    placeBlock(sink, row, 0, 150, 0, rowsUsed);
    row += rowsUsed + 2;
  }
}

void refreshParameterList() {
  if (!parameterList) return;
  for (EditorWindow* e : parameterEntries) e->visible = false;
  int n = 0;
  for (EditorWindow* e : parameterEntries) {
    if (listFilterIn && e->text.find("in.") != std::string::npos) e->visible = true;
    if (listFilterOut && e->text.find("out.") != std::string::npos) e->visible = true;
    if (e->visible && listFilterVisible) {
      bool active = false;
      for (const std::string& scene : activeSceneNames)
        if (e->text.find(scene) != std::string::npos) active = true;
      if (!active) e->visible = false;
    }
    if (e->visible) {
      e->y = float(n) * -34;
      ++n;
    }
  }
  parameterList->scrollY = 0;
  parameterList->limitScrollY = true;
  parameterList->minScrollY = 0;
  parameterList->maxScrollY = float(n) * 34;
  EditorWindow* knob = parameterScrollKnob;
  knob->limitX = true;
  knob->minX = knob->maxX = 160;
  knob->width = 20;
  knob->height = n == 0 ? 230 : std::min(230.0f, 230.0f * 230.0f / (float(n) * 34));
  knob->limitY = true;
  knob->contentHeight = knob->height;
  knob->minY = knob->height / 2 - 105;
  knob->maxY = 125 - knob->height / 2;
  knob->y = knob->maxY;
  scrollParameterListFromKnob(knob);
}

void scrollParameterListFromKnob(EditorWindow* knob) {
  int n = 0;
  for (EditorWindow* e : parameterEntries)
    if (e->visible) ++n;
  if (knob->maxY - knob->minY <= 0.0001f)
    parameterList->scrollY = 83;
  else
    parameterList->scrollY = (knob->maxY - knob->y) / (knob->maxY - knob->minY) * float(n - 6) * 34 + 83;
}

int pressCreateBlock(EditorWindow* toolWindow) {
  templatePick = pickedName;
  templateKey = toolWindow->key;
  int result = 1;
  const std::string& key = toolWindow->key;
  if (key == "float") result = createFloatBlock();
  else if (key == "demotime") result = createDemoTimeBlock();
  else if (key == "sin") result = createSinBlock();
  else if (key == "mul") result = createMulBlock();
  else if (key == "sum") result = createSumBlock();
  else if (key == "pulse") result = createPulseBlock();
  else if (key.rfind("in.", 0) == 0) result = createParameterSink();
  else if (key.rfind("out.", 0) == 0) result = createParameterSource();
  templatePick = 0;
  return result;
}

void drawFlowConnections(EditorWindow* parent) {
  for (EditorWindow* S : parent->children) {
    if (!S->visible || !S->block) continue;
    Block* block = S->block;
    const float s = 1 / (1 - 2 * S->parentZoom);
    glColor4f(S->topColor.x, S->topColor.y, S->topColor.z, S->topAlpha);
    int i = 0;
    for (ConnectionCurve* c : block->connections) {
      EditorWindow* D = c->destination ? c->destination->window : nullptr;
      if (!D) {
        ++i;
        continue;
      }
      const float d = std::fabs(D->x - S->x - D->width / 2 - S->width / 2) / 200;
      const float sy = (S->y + S->height / 2 - S->height * 0.1f * float(i)) * s;
      const float sx = S->x + S->width / 2, dx = D->x - D->width / 2;
      Curve& curve = c->curve;
      curve.points.clear();
      curve.tangents.clear();
      curve.count = 0;
      curve.addPoint(sx * s, sy, 0);
      curve.addPoint((sx + d * 15) * s, sy, 0);
      curve.addPoint((sx + d * 35) * s, sy, 0);
      curve.addPoint((dx - d * 35) * s, D->y * s, 0);
      curve.addPoint((dx - d * 15) * s, D->y * s, 0);
      curve.addPoint(dx * s, D->y * s, 0);
      curve.computeTangents(true, d * 0.05f);

      glLoadName(GLuint(c->pickName));
      Vector3 point, last;
      glBegin(GL_LINE_STRIP);
      for (int k = 0; k < 25; ++k) {
        // t = 1 would be the start again: the last sample stops just short of it.
        curve.evaluate(std::min(float(k) / 24, 0.99999f), point);
        glVertex3f(point.x + parent->scrollX, point.y + parent->scrollY, drawDepth);
        last = Vector3(point.x + parent->scrollX, point.y + parent->scrollY, drawDepth);
      }
      glEnd();
      glBegin(GL_LINES);
      glVertex3f(last.x, last.y, last.z);
      glVertex3f(last.x - 8, last.y + 5, last.z);
      glVertex3f(last.x, last.y, last.z);
      glVertex3f(last.x - 8, last.y - 5, last.z);
      glEnd();
      ++i;
    }
  }
}
