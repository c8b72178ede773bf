// EditorWindow: construction, the window list and child tree, drawing with a
// viewport per window, the selection pass, and the timed messages.
#include <GL/glew.h>

#include "editor/EditorWindow.h"

#include <GL/glu.h>

#include <algorithm>
#include <cmath>

#include "render/Font.h"

std::vector<EditorWindow*> allWindows;
std::vector<EditorWindow*> topLevelWindows;
EditorWindow* selectedWindow = nullptr;
float drawDepth = 10;
bool pickingMode = false;
int mouseX = 0, mouseY = 0;
int mouseDeltaX = 0;
bool hideTexts = false;
std::vector<EditorMessage> messages;

int editorScreenWidth = 800;
int editorScreenHeight = 600;
Font* editorFont = nullptr;
float editorRealSeconds = 0;
WindowDrawHandler drawChildConnections = nullptr;

EditorWindow::EditorWindow(const std::string& text_, float width_, float height_, float x_, float y_,
                           bool movable_, bool scrollable_, bool scalable_, const Vector3& topColor_,
                           float topAlpha_, const Vector3& bottomColor_, float bottomAlpha_,
                           WindowPressHandler onPress_, WindowDragHandler onDrag_,
                           WindowReleaseHandler onRelease_)
    : text(text_),
      width(width_),
      height(height_),
      x(x_),
      y(y_),
      contentWidth(width_),
      contentHeight(height_),
      movable(movable_),
      scrollable(scrollable_),
      scalable(scalable_),
      bottomColor(bottomColor_),
      bottomAlpha(bottomAlpha_),
      topColor(topColor_),
      topAlpha(topAlpha_),
      pickName(int(allWindows.size()) + 1),
      onPress(onPress_),
      onDrag(onDrag_),
      onRelease(onRelease_) {
  allWindows.push_back(this);
}

EditorWindow::~EditorWindow() = default;

std::string EditorWindow::displayText() {
  if (numberSource) number = *numberSource;
  if (number == -1) return text;
  return text + std::to_string(number);
}

// ---- List and tree ------------------------------------------------------------

void addChild(EditorWindow* parent, EditorWindow* child) {
  child->isChild = true;
  parent->children.push_back(child);
  child->parent = parent;
}

void rebuildTopLevelWindows() {
  topLevelWindows.clear();
  for (EditorWindow* w : allWindows)
    if (!w->isChild) topLevelWindows.push_back(w);
}

EditorWindow* pickWindow(int name) {
  if (name < 1 || name > int(allWindows.size())) return nullptr;
  EditorWindow* w = allWindows[size_t(name - 1)];
  return w->pickName == name ? w : nullptr;
}

EditorWindow* windowAt(int index) {
  if (index < 0 || index >= int(allWindows.size())) return nullptr;
  return allWindows[size_t(index)];
}

int indexOfWindow(const EditorWindow* window) {
  for (size_t i = 0; i < allWindows.size(); ++i)
    if (allWindows[i] == window) return int(i);
  return -1;
}

static void eraseFrom(std::vector<EditorWindow*>& list, EditorWindow* window) {
  list.erase(std::remove(list.begin(), list.end(), window), list.end());
}

void destroyWindow(EditorWindow* window) {
  if (!window) return;
  if (selectedWindow == window) selectedWindow = nullptr;
  int index = indexOfWindow(window);
  if (index < 0) return;  // already gone
  allWindows.erase(allWindows.begin() + index);
  eraseFrom(topLevelWindows, window);
  if (window->parent) eraseFrom(window->parent->children, window);

  std::vector<EditorWindow*> doomed = window->children;
  if (window->propertiesWindow) doomed.push_back(window->propertiesWindow);
  for (EditorWindow* child : window->children) child->parent = nullptr;  // their parent goes first

  // The pick name stays the position in the list.
  for (size_t i = size_t(index); i < allWindows.size(); ++i) allWindows[i]->pickName = int(i) + 1;

  delete window;
  for (EditorWindow* w : doomed) destroyWindow(w);
}

void showMessage(const std::string& text, float duration) {
  messages.push_back({text, editorRealSeconds, duration});
}

// ---- Drawing ------------------------------------------------------------------

static int roundToInt(float v) { return int(std::lround(v)); }

// The mouse in GL window coordinates (Y upwards).
static float mouseGlX() { return float(mouseX); }
static float mouseGlY() { return float(editorScreenHeight - mouseY); }

// In the selection pass every window's projection is preceded by a pick
// region of 3 x 3 pixels at the mouse, over the window's own viewport, so a
// window is hit exactly where it is drawn.
static void pickRegion() {
  if (!pickingMode) return;
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  gluPickMatrix(mouseGlX(), mouseGlY(), 3, 3, viewport);
}

static void drawText(EditorWindow* w) {
  if (hideTexts || w->text.empty() || !editorFont) return;
  glLoadName(GLuint(w->pickName));
  glPushMatrix();
  glTranslatef(w->scrollX, w->scrollY, 0);
  Vector3 position = w->textPosition;
  position.z = drawDepth;
  w->textPosition.z = drawDepth;
  Font& font = *editorFont;
  font.setFrame(position, w->textXAxis, w->textYAxis);
  font.setColor(w->textColor);
  font.setAlpha(w->textAlpha);
  std::string s = w->displayText();
  float k = w->textScale;
  font.setMetrics(28 * k, 24 * k, 16 * k, 24 * k);
  font.setCursor(0, 0);
  font.draw(s, w->textCentred, 0, 0, 1, 1, nullptr, 0, 0);
  font.setCursor(0, 0);
  font.draw(s, w->textCentred, 0, 0, 1, 1, nullptr, 0, 1);
  glPopMatrix();
  glDisable(GL_TEXTURE_2D);
  glDisable(GL_ALPHA_TEST);
  glDisable(GL_COLOR_MATERIAL);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

// One window in its own viewport and projection: the gradient quad, the
// curves of its children, the custom drawing, the text.
static void drawOneWindow(EditorWindow* w) {
  glLoadName(GLuint(w->pickName));
  float hw = w->contentWidth / 2, hh = w->contentHeight / 2;
  glBegin(GL_QUADS);
  glColor4f(w->bottomColor.x, w->bottomColor.y, w->bottomColor.z, w->bottomAlpha);
  glVertex3f(-hw, -hh, drawDepth);
  glVertex3f(hw, -hh, drawDepth);
  glColor4f(w->topColor.x, w->topColor.y, w->topColor.z, w->topAlpha);
  glVertex3f(hw, hh, drawDepth);
  glVertex3f(-hw, hh, drawDepth);
  glEnd();
  drawDepth -= 0.01f;
  glLoadName(0);

  glLineWidth(2);
  glEnable(GL_LINE_SMOOTH);
  if (drawChildConnections) drawChildConnections(w);
  glDisable(GL_LINE_SMOOTH);
  glLoadName(0);

  if (w->customDraw) w->customDraw(w);

  drawText(w);
  drawDepth -= 0.01f;
  glLoadName(0);
}

static void drawChild(EditorWindow* w) {
  if (!w->visible) return;
  const int sw = editorScreenWidth, sh = editorScreenHeight;
  const float scale = 1.0f / (1.0f - 2.0f * (w->zoom + w->parentZoom));
  const float parentScale = 1.0f / (1.0f - 2.0f * w->parentZoom);
  // The window stands at its scaled position and, scaled by its ancestors'
  // zoom, takes that much more room on the screen.
  const float screenW = w->width * parentScale, screenH = w->height * parentScale;
  const int left = roundToInt(float(sw / 2) + scale * w->x + w->parentX - screenW / 2);
  const int bottom = roundToInt(scale * w->y + w->parentY + float(sh / 2) - screenH / 2);
  const int pw = roundToInt(screenW), ph = roundToInt(screenH);

  // Cut against the clip rectangle, never below 0 on any side.
  const float cutL = std::max(0.0f, w->clipLeft - float(left));
  const float cutR = std::max(0.0f, float(left + pw) - w->clipRight);
  const float cutB = std::max(0.0f, w->clipBottom - float(bottom));
  const float cutT = std::max(0.0f, float(bottom + ph) - w->clipTop);
  const float visibleW = float(pw) - cutL - cutR, visibleH = float(ph) - cutB - cutT;

  if (pickingMode && (mouseGlX() < w->clipLeft || mouseGlX() > w->clipRight || mouseGlY() < w->clipBottom ||
                      mouseGlY() > w->clipTop))
    return;
  if (pw <= 0 || ph <= 0 || visibleW <= 0 || visibleH <= 0) return;
  const float fl = cutL / float(pw), fr = cutR / float(pw), fb = cutB / float(ph), ft = cutT / float(ph);
  const float oLeft = -screenW / 2 + fl * screenW, oRight = screenW / 2 - fr * screenW;
  const float oBottom = -screenH / 2 + fb * screenH, oTop = screenH / 2 - ft * screenH;
  if (!(oLeft < oRight) || !(oBottom < oTop)) return;

  glViewport(GLint(float(left) + cutL), GLint(float(bottom) + cutB), GLsizei(visibleW), GLsizei(visibleH));
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  pickRegion();
  glOrtho(oLeft, oRight, oBottom, oTop, 100, -100);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glScalef(parentScale, parentScale, 1);
  drawOneWindow(w);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);

  for (EditorWindow* child : w->children) {
    child->clipLeft = std::max(float(left), w->clipLeft);
    child->clipRight = std::min(float(left + pw), w->clipRight);
    child->clipBottom = std::max(float(bottom), w->clipBottom);
    child->clipTop = std::min(float(bottom + ph), w->clipTop);
    child->parentZoom = w->zoom + w->parentZoom;
    child->parentX = w->x * scale + w->scrollX + w->parentX;
    child->parentY = w->y * scale + w->scrollY + w->parentY;
    drawChild(child);
  }
}

void drawWindows(EditorWindow* parent) {
  if (parent) {
    drawChild(parent);
    return;
  }
  const int sw = editorScreenWidth, sh = editorScreenHeight;
  glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_VIEWPORT_BIT | GL_LINE_BIT | GL_CURRENT_BIT |
               GL_DEPTH_BUFFER_BIT | GL_TEXTURE_BIT);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glDisable(GL_TEXTURE_2D);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glDisable(GL_FOG);
  glDisable(GL_ALPHA_TEST);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  drawDepth = 10;

  for (EditorWindow* w : topLevelWindows) {
    if (!w->visible) continue;
    glLoadName(0);
    const int left = roundToInt(float(sw / 2) + w->x - w->width / 2);
    const int bottom = roundToInt(float(sh / 2) + w->y - w->height / 2);
    const int pw = roundToInt(w->width), ph = roundToInt(w->height);
    if (pw <= 0 || ph <= 0) continue;
    glViewport(left, bottom, pw, ph);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    pickRegion();
    glOrtho(-w->width / 2, w->width / 2, -w->height / 2, w->height / 2, 100, -100);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    drawOneWindow(w);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);

    for (EditorWindow* child : w->children) {
      child->clipLeft = float(roundToInt(w->x) + sw / 2) - w->width / 2;
      child->clipRight = child->clipLeft + float(pw);
      child->clipBottom = float(roundToInt(w->y) + sh / 2) - w->height / 2;
      child->clipTop = child->clipBottom + float(ph);
      child->parentZoom = w->zoom;
      child->parentX = w->x + w->scrollX;
      child->parentY = w->y + w->scrollY;
      drawChild(child);
    }
  }

  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glLoadName(0);
  glPopAttrib();
}

// ---- Picking ------------------------------------------------------------------

int pickAtMouse() {
  static GLuint buffer[4096];
  glSelectBuffer(4096, buffer);
  glRenderMode(GL_SELECT);
  glInitNames();
  glPushName(0);
  pickingMode = true;
  drawWindows(nullptr);
  pickingMode = false;
  GLint hits = glRenderMode(GL_RENDER);
  // An overflowing buffer reports -1: read the records that did fit.
  int name = 0;
  GLuint bestDepth = 0;
  bool found = false;
  size_t at = 0;
  for (GLint h = 0; (hits < 0 || h < hits) && at + 3 <= 4096; ++h) {
    GLuint count = buffer[at];
    GLuint minDepth = buffer[at + 1];
    if (count == 0 || at + 3 + count > 4096) break;
    GLuint top = buffer[at + 3 + count - 1];
    if (top != 0 && (!found || minDepth <= bestDepth)) {
      found = true;
      bestDepth = minDepth;
      name = int(top);
    }
    at += 3 + count;
  }
  return name;
}

// ---- Messages -----------------------------------------------------------------

void drawMessages() {
  const float now = editorRealSeconds;
  messages.erase(std::remove_if(messages.begin(), messages.end(),
                                [now](const EditorMessage& m) { return m.startTime + m.duration < now; }),
                 messages.end());
  if (messages.empty() || !editorFont) return;
  const int sw = editorScreenWidth, sh = editorScreenHeight;
  glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_VIEWPORT_BIT | GL_CURRENT_BIT | GL_TEXTURE_BIT);
  glViewport(0, 0, sw, sh);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glOrtho(0, sw, 0, sh, -100, 100);
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glDisable(GL_TEXTURE_2D);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  const float k = 0.6f, lineHeight = 24 * k;
  float top = float(sh) - 30;
  for (const EditorMessage& m : messages) {
    int lines = 1 + int(std::count(m.text.begin(), m.text.end(), '\n'));
    float bandHeight = float(lines) * lineHeight + 10;
    glDisable(GL_TEXTURE_2D);
    glColor4f(0.05f, 0.05f, 0.1f, 0.75f);
    glBegin(GL_QUADS);
    glVertex2f(float(sw) * 0.2f, top - bandHeight);
    glVertex2f(float(sw) * 0.8f, top - bandHeight);
    glVertex2f(float(sw) * 0.8f, top);
    glVertex2f(float(sw) * 0.2f, top);
    glEnd();
    Font& font = *editorFont;
    font.setFrame(Vector3(float(sw / 2), top - 5 - lineHeight / 2, 0), Vector3(1, 0, 0), Vector3(0, -1, 0));
    font.setColor(1.0f, 0.9f, 0.5f, 1.0f);
    font.setMetrics(28 * k, 24 * k, 16 * k, lineHeight);
    font.setCursor(0, 0);
    font.draw(m.text, true, 0, 0, 1, 1, nullptr, 0, 0);
    glDisable(GL_ALPHA_TEST);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    top -= bandHeight + 6;
  }
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glPopAttrib();
}
