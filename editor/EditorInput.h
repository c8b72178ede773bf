// EditorInput: routes the mouse to the editor windows, once per frame.
//
// A press of a button runs a selection pass at the mouse. For the left button
// the picked window becomes `selectedWindow` and its onPress runs; when that
// gives 0 the press is used (a connection or a value change), onDrag runs
// while the button is held, and at the release a second selection pass sets
// `pickedName` to what is under the mouse and onRelease of the pressed window
// runs. When onPress gives 1, or the window has none, the generic action of
// the button applies instead, to the picked window or the nearest ancestor
// that allows it:
//   left   moves a movable window by the mouse motion, 1:1 on the screen
//          (divided by the zoom scale of its ancestors), within minX..maxX and
//          minY..maxY where limited; then onDrag runs on the pressed window
//          (a scroll knob reads its new place there).
//   middle scrolls a scrollable window by the mouse motion, 1:1, within its
//          scroll limits; a listScroll window scrolls on Y only.
//   right  zooms a zoomable window: zoom += 0.0025 per pixel of upward
//          motion, kept within -1.5 (children at a quarter size) and 0.4
//          (five times), safely below the 0.5 that divides by zero.
// mouseDeltaX is the X motion since the press. A left press on no window (a
// press on the show itself) is reported to the host as a plain drag, for
// "mouse left+move" of the selected parameter. A left press on a connection
// curve is passed to `curvePressHandler`.
#pragma once

class EditorWindow;
class InputState;

// The key state that handlers read at a press (left control, left shift,
// delete); null reads every key as free.
extern const InputState* editorInput;

// Whether a key is down for the editor: its value is 0 or above, so a key
// pressed since the last update (which reads exactly 0) already counts; on a
// slow frame a quick press with a click is not lost. Null input: never.
bool keyDown(const InputState* input, int code);

extern int pickedName;  // selection name under the mouse, from the last selection pass

// Zoom limits and gains of the generic actions.
constexpr float editorZoomGain = 0.0025f;  // zoom per pixel of upward motion
constexpr float editorZoomMin = -1.5f;
constexpr float editorZoomMax = 0.4f;

// Called with the pick name when the left button is pressed on a curve.
extern void (*curvePressHandler)(int name);

// What a frame of mouse input did, for the host.
struct EditorPointerResult {
  bool pressed = false;        // a button went down this frame
  bool released = false;       // a button came up this frame
  int pressedName = 0;         // pick name at the press
  bool draggingNothing = false;  // left held after a press on no window
  int frameDeltaX = 0;         // X motion since the last frame, pixels
};

// Button mask: bit 0 left, bit 1 middle, bit 2 right (SDL's order). x and y
// in window coordinates, Y downwards.
EditorPointerResult editorPointerFrame(int x, int y, unsigned buttons);

// Applies a motion of (dx, dy) screen pixels (Y downwards) with one button to
// a window, as the generic actions above do. Exposed for tests.
void applyGenericMove(EditorWindow* window, int dx, int dy);
void applyGenericScroll(EditorWindow* window, int dx, int dy);
void applyGenericZoom(EditorWindow* window, int dy);

// Forgets a press in progress (after the windows it named were destroyed).
void resetEditorPointer();
