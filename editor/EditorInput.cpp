// EditorInput: press, drag and release of the mouse, routed to the windows.
#include "editor/EditorInput.h"

#include <algorithm>

#include "editor/EditorWindow.h"
#include "foundation/InputState.h"

int pickedName = 0;
const InputState* editorInput = nullptr;

bool keyDown(const InputState* input, int code) { return input && input->key(code) >= 0; }
void (*curvePressHandler)(int name) = nullptr;

namespace {

int heldButton = 0;               // 0 none, 1 left, 2 middle, 3 right
EditorWindow* pressWindow = nullptr;
bool pressUsed = false;           // onPress gave 0
int pressX = 0;
int lastX = 0, lastY = 0;
unsigned lastButtons = 0;

bool stillExists(EditorWindow* w) { return w && indexOfWindow(w) >= 0; }

// The zoom scale by which a window's position is multiplied on the screen.
float positionScale(EditorWindow* w) {
  if (!w->isChild) return 1.0f;
  return 1.0f / (1.0f - 2.0f * (w->zoom + w->parentZoom));
}

EditorWindow* nearest(EditorWindow* w, bool (*allows)(EditorWindow*)) {
  for (; w; w = w->parent)
    if (allows(w)) return w;
  return nullptr;
}

bool isMovable(EditorWindow* w) { return w->movable; }
bool isScrollable(EditorWindow* w) { return w->scrollable; }
bool isZoomable(EditorWindow* w) { return w->zoomable; }

}  // namespace

void applyGenericMove(EditorWindow* w, int dx, int dy) {
  float s = positionScale(w);
  w->x += float(dx) / s;
  w->y -= float(dy) / s;
  if (w->limitX) w->x = std::min(std::max(w->x, w->minX), w->maxX);
  if (w->limitY) w->y = std::min(std::max(w->y, w->minY), w->maxY);
}

void applyGenericScroll(EditorWindow* w, int dx, int dy) {
  if (!w->listScroll) w->scrollX += float(dx);
  w->scrollY -= float(dy);
  if (w->limitScrollX) w->scrollX = std::min(std::max(w->scrollX, w->minScrollX), w->maxScrollX);
  if (w->limitScrollY) w->scrollY = std::min(std::max(w->scrollY, w->minScrollY), w->maxScrollY);
}

void applyGenericZoom(EditorWindow* w, int dy) {
  w->zoom -= float(dy) * editorZoomGain;
  w->zoom = std::min(std::max(w->zoom, editorZoomMin), editorZoomMax);
}

void resetEditorPointer() {
  heldButton = 0;
  pressWindow = nullptr;
  pressUsed = false;
}

EditorPointerResult editorPointerFrame(int x, int y, unsigned buttons) {
  EditorPointerResult result;
  const int dx = x - lastX, dy = y - lastY;
  mouseX = x;
  mouseY = y;
  result.frameDeltaX = dx;

  if (heldButton == 0) {
    int button = 0;
    if ((buttons & 1) && !(lastButtons & 1)) button = 1;
    else if ((buttons & 2) && !(lastButtons & 2)) button = 2;
    else if ((buttons & 4) && !(lastButtons & 4)) button = 3;
    if (button) {
      heldButton = button;
      pressX = x;
      mouseDeltaX = 0;
      pickedName = pickAtMouse();
      result.pressed = true;
      result.pressedName = pickedName;
      pressWindow = pickWindow(pickedName);
      pressUsed = false;
      if (button == 1) {
        if (pickedName >= firstCurvePickName) {
          if (curvePressHandler) curvePressHandler(pickedName);
        } else if (pressWindow) {
          selectedWindow = pressWindow;
          if (pressWindow->onPress) pressUsed = pressWindow->onPress(pressWindow) == 0;
          if (!stillExists(pressWindow)) pressWindow = nullptr;
        }
      }
    }
  } else {
    const unsigned mask = 1u << (heldButton - 1);
    if (buttons & mask) {
      mouseDeltaX = x - pressX;
      if (!stillExists(pressWindow)) pressWindow = nullptr;
      if (heldButton == 1) {
        if (pickedName == 0) result.draggingNothing = true;
        if (pressWindow && !pressUsed && (dx || dy)) {
          if (EditorWindow* w = nearest(pressWindow, isMovable)) applyGenericMove(w, dx, dy);
        }
        if (pressWindow && pressWindow->onDrag) pressWindow->onDrag(pressWindow);
      } else if (heldButton == 2 && pressWindow && (dx || dy)) {
        if (EditorWindow* w = nearest(pressWindow, isScrollable)) applyGenericScroll(w, dx, dy);
      } else if (heldButton == 3 && pressWindow && dy) {
        if (EditorWindow* w = nearest(pressWindow, isZoomable)) applyGenericZoom(w, dy);
      }
    } else {
      mouseDeltaX = x - pressX;
      result.released = true;
      if (heldButton == 1 && pressUsed && stillExists(pressWindow)) {
        pickedName = pickAtMouse();
        if (pressWindow->onRelease) pressWindow->onRelease(pressWindow);
      }
      resetEditorPointer();
    }
  }
  lastX = x;
  lastY = y;
  lastButtons = buttons;
  return result;
}
