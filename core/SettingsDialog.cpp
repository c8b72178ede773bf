// SettingsDialog: the dialog's rules; see the header.
#include "core/SettingsDialog.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "core/Globals.h"
#include "foundation/Capabilities.h"

const SettingsControlLayout settingsControls[8] = {
    {settingsBitmapFrame, "static", "", {34, 62, 164, 17}},
    {settingsGroupBox, "group box", "", {34, 57, 164, 22}},
    {settingsResolutionList, "combo box", "", {60, 44, 110, 76}},
    {settingsBeginButton, "button", "Begin", {2, 121, 110, 13}},
    {settingsEndButton, "button", "End", {116, 121, 110, 13}},
    {settingsFullscreenBox, "check box", "Fullscreen", {40, 66, 50, 9}},
    {settingsExactPixelsBox, "check box", "Exact pixels", {140, 66, 52, 9}},
    {settingsAudioBox, "check box", "Audio", {98, 66, 36, 9}},
};

const SettingsControlLayout* settingsControl(int id) {
  for (const SettingsControlLayout& c : settingsControls)
    if (c.id == id) return &c;
  return nullptr;
}

int settingsDialogPixelWidth() { return int(dialogWidthUnits * dialogUnitX + 0.5f); }
int settingsDialogPixelHeight() { return int(dialogHeightUnits * dialogUnitY + 0.5f); }

// ---- Display modes ---------------------------------------------------------------

std::vector<std::string> resolutionListOf(const std::vector<DisplayMode>& modes) {
  std::vector<std::string> list;
  for (const DisplayMode& m : modes) {
    if (m.bitsPerPixel != 32) continue;
    const std::string text = std::to_string(m.width) + "x" + std::to_string(m.height);
    bool seen = false;
    for (const std::string& s : list) seen = seen || s == text;
    if (!seen) list.push_back(text);
  }
  return list;
}

namespace {

// A whole decimal number from 1 to limit, digits only.
bool readSide(const std::string& text, int32_t limit, int32_t& value) {
  if (text.empty() || text.size() > 5) return false;
  for (char c : text)
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  value = int32_t(std::atoi(text.c_str()));
  return value >= 1 && value <= limit;
}

}  // namespace

bool parseDisplayModes(const std::string& text, std::vector<DisplayMode>& modes, std::string& error) {
  std::vector<DisplayMode> found;
  size_t start = 0;
  for (;;) {
    const size_t comma = text.find(',', start);
    const std::string entry = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    std::vector<std::string> parts;
    size_t from = 0;
    for (;;) {
      const size_t x = entry.find('x', from);
      parts.push_back(entry.substr(from, x == std::string::npos ? std::string::npos : x - from));
      if (x == std::string::npos) break;
      from = x + 1;
    }
    DisplayMode m;
    const bool good = (parts.size() == 2 || parts.size() == 3) && readSide(parts[0], 16384, m.width) &&
                      readSide(parts[1], 16384, m.height) &&
                      (parts.size() == 2 || readSide(parts[2], 64, m.bitsPerPixel));
    if (!good) {
      error = "'" + entry + "' is not a display mode WIDTHxHEIGHT or WIDTHxHEIGHTxBITS";
      return false;
    }
    found.push_back(m);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  modes = found;
  return true;
}

// ---- State and procedure -----------------------------------------------------------

int findResolution(const std::vector<std::string>& resolutions, const std::string& text) {
  for (size_t i = 0; i < resolutions.size(); ++i) {
    const std::string& s = resolutions[i];
    if (s.size() < text.size()) continue;
    bool same = true;
    for (size_t k = 0; k < text.size() && same; ++k)
      same = std::tolower(static_cast<unsigned char>(s[k])) == std::tolower(static_cast<unsigned char>(text[k]));
    if (same) return int(i);
  }
  return -1;
}

void openSettingsDialog(SettingsDialogState& state, const std::vector<DisplayMode>& modes) {
  state.fullscreenChecked = fullscreen;
  state.exactPixelsChecked = exactPixels;
  state.audioChecked = audioEnabled;
  useFramebufferObjects = false;

  state.resolutions = resolutionListOf(modes);
  state.selected = -1;

  // Both searches run; when both sizes are offered the second one stands.
  const int standard = findResolution(state.resolutions, "800x600");
  if (standard >= 0) {
    state.selected = standard;
    wideDisplay = false;
    screenWidth = 800;
    screenHeight = 600;
  }
  const int wide = findResolution(state.resolutions, "800x576");
  if (wide >= 0) {
    state.selected = wide;
    wideDisplay = true;
    screenWidth = 800;
    screenHeight = 576;
  }
}

void chooseResolution(const std::string& text) {
  // The list's text is read into a buffer of 30 characters.
  char buffer[31];
  std::strncpy(buffer, text.c_str(), 30);
  buffer[30] = '\0';
  char* context = nullptr;
  const char* first = strtok_r(buffer, "x", &context);
  const char* second = first ? strtok_r(nullptr, "x", &context) : nullptr;
  const int32_t width = first ? int32_t(std::atoi(first)) : 0;
  if (width == 0 || !second) return;
  const int32_t height = int32_t(std::atoi(second));
  // A float ratio against a float bound: exactly 1.34 (134 x 100, 670 x 500)
  // is not wide.
  wideDisplay = float(width) / float(height) > wideDisplayRatio;
  screenWidth = width;
  screenHeight = height;
}

int settingsDialogCommand(SettingsDialogState& state, int controlId, int notification) {
  switch (controlId) {
    case settingsBeginButton:
      return notification == notificationClicked ? 1 : -1;
    case settingsEndButton:
      return notification == notificationClicked ? 0 : -1;
    case settingsFullscreenBox:
      fullscreen = !fullscreen;
      return -1;
    case settingsExactPixelsBox:
      exactPixels = !exactPixels;
      return -1;
    case settingsAudioBox:
      audioEnabled = !audioEnabled;
      return -1;
    case settingsResolutionList:
      if (notification == notificationSelectionChanged && state.selected >= 0 &&
          state.selected < int(state.resolutions.size()))
        chooseResolution(state.resolutions[size_t(state.selected)]);
      return -1;
    default:
      return -1;
  }
}

int clickSettingsControl(SettingsDialogState& state, int controlId) {
  switch (controlId) {
    case settingsFullscreenBox:
      state.fullscreenChecked = !state.fullscreenChecked;
      break;
    case settingsExactPixelsBox:
      state.exactPixelsChecked = !state.exactPixelsChecked;
      break;
    case settingsAudioBox:
      state.audioChecked = !state.audioChecked;
      break;
    case settingsBeginButton:
    case settingsEndButton:
      break;
    default:
      return -1;
  }
  return settingsDialogCommand(state, controlId, notificationClicked);
}

int selectResolution(SettingsDialogState& state, int index) {
  if (index < 0 || index >= int(state.resolutions.size())) return -1;
  state.selected = index;
  return settingsDialogCommand(state, settingsResolutionList, notificationSelectionChanged);
}
