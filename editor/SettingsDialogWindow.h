// SettingsDialogWindow: the start-up settings dialog, drawn with the editor's
// windows in an SDL window of its own before the production's display opens.
//
// The window is the dialog's client area, 342 x 223 pixels (228 x 137 dialog
// units), captioned "Kestrin - Ostravine". Its picture "./images/dialog1012.png"
// (342 x 226) is laid at the top left at its own size, its last rows below
// the window's edge; the controls stand over it at their places. The frame
// control of a second picture stays empty: that picture would never reach
// the screen, so none is made or loaded.
//
// Mouse: the left button clicks "Begin", "End", a check box, or the list:
// a click on the closed list drops it, a click on an entry chooses it and
// closes it, a click anywhere else closes it; the wheel scrolls a dropped
// list that is longer than it shows. Keys: up and down choose the previous
// and next entry, return is "Begin", escape is "End"; closing the window is
// "End" as well.
#pragma once
#include <string>
#include <vector>

#include "core/SettingsDialog.h"

class EditorWindow;

struct SettingsDialogOptions {
  const std::vector<DisplayMode>* modes = nullptr;  // null: the display's own modes, from SDL
  std::string picturePath;  // non-empty: each picture drawn is written here as a PNG, so the
                            // file shows the dialog as it stood when it closed
  bool trace = false;       // "trace: settings ..." lines: each command, the list dropped and
                            // closed, each picture written, and the dialog first shown
};

// Opens the window, runs the dialog until it closes, then closes the window
// and shuts SDL down again, so that the display opens afresh. Gives 1 for
// "Begin", 0 for "End" (or the window closed), -1 when no window could be
// opened (a message on the error stream says why). The settings hold what
// was chosen.
int runSettingsDialog(const SettingsDialogOptions& options);

// ---- The windows, for the dialog and its tests ----------------------------
// The dialog's windows, one per control in the dialog's order (the bitmap
// frame is built hidden: nothing of it is seen), then the dropped list with
// an entry per size. Coordinates are those of the editor's windows over a
// screen of the dialog's size (editorScreenWidth x editorScreenHeight).
struct SettingsDialogWindows {
  std::vector<EditorWindow*> controls;  // in the order of settingsControls
  std::vector<int> controlIds;
  EditorWindow* listField = nullptr;    // the closed list: the chosen size
  EditorWindow* dropList = nullptr;     // the dropped list, hidden until dropped
  std::vector<EditorWindow*> entries;   // children of dropList, one per size
  std::vector<EditorWindow*> checkMarks;  // per check box: its mark, shown when checked
  std::vector<int> checkMarkIds;
};

// Entries of the dropped list shown at once, and the height of one, pixels.
constexpr int settingsListRows = 7;
constexpr float settingsListRowHeight = 14;

// A control's rectangle in pixels, from the dialog's top left, Y downwards:
// its dialog units times 1.5 across and 1.625 down. The closed list is one
// row of 13 units high; its 76 units are the height with the list dropped.
struct PixelRect {
  float left, top, width, height;
};
PixelRect settingsControlPixels(int controlId);

// Builds the windows for the state; they stay in allWindows until
// destroySettingsDialogWindows.
SettingsDialogWindows buildSettingsDialogWindows(const SettingsDialogState& state);
// Check marks, the chosen size and the list's highlight from the state.
void refreshSettingsDialogWindows(SettingsDialogWindows& windows, const SettingsDialogState& state);
void destroySettingsDialogWindows(SettingsDialogWindows& windows);
