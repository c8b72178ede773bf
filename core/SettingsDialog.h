// SettingsDialog: the rules of the start-up settings dialog, apart from any
// drawing or window system. The dialog offers the display's sizes and three
// check boxes, writes its choices straight into the process-wide settings
// (screenWidth, screenHeight, wideDisplay, fullscreen, exactPixels,
// audioEnabled; useFramebufferObjects is cleared when it opens), and closes
// with 1 ("Begin": play) or 0 ("End").
//
// Controls are named by their ids; notifications are the ones a click gives
// (0) and a change of the list's selection (1). The procedure toggles a
// setting on any notification of its check box, so the setting follows the
// check mark only while every notification is a click (kept as it is).
//
// Sizes are pixels. A mode list entry is width, "x", height, without padding.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

// ---- Controls, in the dialog's order ------------------------------------------
constexpr int settingsBitmapFrame = 1003;  // static frame of the second bitmap; shows nothing
constexpr int settingsGroupBox = 1012;     // frame round the check boxes
constexpr int settingsResolutionList = 1005;  // drop-down list of the display's sizes
constexpr int settingsBeginButton = 1004;  // "Begin": closes with 1
constexpr int settingsEndButton = 1007;    // "End": closes with 0
constexpr int settingsFullscreenBox = 1006;   // "Fullscreen"
constexpr int settingsExactPixelsBox = 1009;  // "Exact pixels"
constexpr int settingsAudioBox = 1011;        // "Audio"

constexpr int notificationClicked = 0;           // a button or check box was clicked
constexpr int notificationSelectionChanged = 1;  // the list's selection changed

// Ratios of width / height above this (compared as floats) are wide displays.
constexpr float wideDisplayRatio = 1.34f;

// The dialog's layout in dialog units, and their size in pixels: an 8-point
// "MS Sans Serif" dialog unit is 1.5 pixels across and 1.625 pixels down.
struct DialogRect {
  int x, y, width, height;  // dialog units
};
constexpr float dialogUnitX = 1.5f;   // pixels per horizontal dialog unit
constexpr float dialogUnitY = 1.625f; // pixels per vertical dialog unit
constexpr int dialogWidthUnits = 228;
constexpr int dialogHeightUnits = 137;
const char* const settingsDialogCaption = "Kestrin - Ostravine";

struct SettingsControlLayout {
  int id;
  const char* kind;  // "static", "group box", "combo box", "button", "check box"
  const char* text;
  DialogRect rect;
};
// The eight controls in their order.
extern const SettingsControlLayout settingsControls[8];
const SettingsControlLayout* settingsControl(int id);

// The dialog's client size in pixels (228 x 137 units: 342 x 223).
int settingsDialogPixelWidth();
int settingsDialogPixelHeight();

// ---- Display modes -------------------------------------------------------------
struct DisplayMode {
  int32_t width = 0;
  int32_t height = 0;
  int32_t bitsPerPixel = 32;
};

// The sizes a list offers, from modes in enumeration order: 32 bits per pixel
// only, "WxH" without padding, and a size seen before skipped by comparing
// the strings (the frequency is not part of a mode here).
std::vector<std::string> resolutionListOf(const std::vector<DisplayMode>& modes);

// A mode list written as text, for tests and odd displays: entries
// "WIDTHxHEIGHT" or "WIDTHxHEIGHTxBITS" (bits 32 when left out), separated by
// commas, in enumeration order. Sides 1 to 16384. On a fault, false and a
// message naming the entry.
bool parseDisplayModes(const std::string& text, std::vector<DisplayMode>& modes, std::string& error);

// The environment variable that, when set, replaces the display's own modes.
const char* const displayModesVariable = "OSTRAVINE_DISPLAY_MODES";

// ---- The dialog's state and procedure ----------------------------------------
struct SettingsDialogState {
  bool fullscreenChecked = false;   // the check marks, as drawn
  bool exactPixelsChecked = false;
  bool audioChecked = false;
  std::vector<std::string> resolutions;  // the list's entries
  int selected = -1;                // index into resolutions; -1: nothing selected
};

// The index of the first entry that begins with text, case ignored (the
// list's own search from the start), or -1.
int findResolution(const std::vector<std::string>& resolutions, const std::string& text);

// Opening: check marks from the settings, useFramebufferObjects cleared, the
// list filled from the modes, then "800x600" and after it "800x576" selected
// where present (the second wins), each writing its size and wideDisplay.
// With neither, nothing is selected and the settings stand.
void openSettingsDialog(SettingsDialogState& state, const std::vector<DisplayMode>& modes);

// The choice of a size from the list's text: at most its first 30
// characters, split at "x", each part read as an integer. A first number of
// 0 (or a text with no second part) does nothing; otherwise screenWidth and
// screenHeight take the numbers and wideDisplay is width / height > 1.34.
void chooseResolution(const std::string& text);

// A command from a control: 1 or 0 when it closes the dialog with that
// result, -1 while it stays open. Toggles and the list's choice act here.
int settingsDialogCommand(SettingsDialogState& state, int controlId, int notification);

// What a click on a control does: a check box flips its own mark and
// notifies; a button notifies; the other controls do nothing. Gives the
// command's result.
int clickSettingsControl(SettingsDialogState& state, int controlId);

// Selects an entry of the list (out of range: nothing) and notifies the
// change. Gives the command's result.
int selectResolution(SettingsDialogState& state, int index);
