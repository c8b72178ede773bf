// EditorSession: the editor made live, one call a frame from the player's
// loop when it runs with --edit. After the picture is composed it routes the
// mouse to the windows, acts on the editing keys, reads the script again when
// the file changed on disk, and draws the windows, the selected parameter and
// the messages over the picture.
//
// Keys (edges are taken from the session's own last-frame key state):
//   F10                         edit mode on/off; off draws and routes nothing
//                               (the script is still watched). On at start.
//   F1 / F3                     quick info screen / flow chart screen with its
//                               panels; each toggles, showing one hides the
//                               other, and either turns edit mode on.
//   left ctrl + left shift + S  save the script; + L load it (then laid out)
//   left ctrl + R               selected parameter back to its default;
//                               + left shift: every parameter of every scene
//   z / x                       select the previous / next parameter of the
//                               first scene on screen
//   mouse left + move           on no window: the selected parameter changes
//                               by one step per pixel of X motion
// In edit mode the selected parameter stands at the bottom left of the
// screen as "<scene>.<parameter> = <value>"; messages at the top (see
// drawMessages). Keys count as down from the update that first sees them
// (keyDown), so a slow frame loses no quick press.
#pragma once
#include <string>
#include <vector>

class Font;
class InputState;
class Scene;

struct EditorSessionFrame {
  int screenWidth = 800;      // the drawing area, pixels
  int screenHeight = 600;
  float realSeconds = 0;      // wall clock since start
  float frameSeconds = 0;     // wall time of the last frame
  int mouseX = 0, mouseY = 0; // window coordinates, Y downwards
  unsigned mouseButtons = 0;  // bit 0 left, bit 1 middle, bit 2 right
  const InputState* input = nullptr;
  std::vector<Scene*> scenesOnScreen;  // visible at the current time, in list order
};

// Starts the session: edit mode on, every screen hidden, the script file's
// state remembered so that only later changes reload it.
void startEditorSession(Font* font, const std::string& scriptFile);

void editorSessionFrame(const EditorSessionFrame& frame);

// Whether edit mode is on.
bool editorEditMode();

// The selected parameter of the first scene on screen, or null.
struct Parameter;
Parameter* selectedParameterOf(const std::vector<Scene*>& scenesOnScreen);
