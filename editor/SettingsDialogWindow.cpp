// SettingsDialogWindow: the settings dialog's windows, its picture, and the
// loop that routes the mouse and keys to its rules until a button closes it.
#include <GL/glew.h>

#include "editor/SettingsDialogWindow.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/Globals.h"
#include "editor/EditorWindow.h"
#include "render/Font.h"
#include "texture/PngFile.h"
#include "texture/TextureStore.h"

namespace {

const Vector3 faceLight{0.93f, 0.92f, 0.89f};  // button face, upper edge
const Vector3 faceDark{0.76f, 0.75f, 0.72f};   // button face, lower edge
const Vector3 paper{1, 1, 1};
const Vector3 ink{0, 0, 0};
const Vector3 frameGrey{0.35f, 0.35f, 0.38f};
// The chosen entry of the dropped list. Its text stays dark: the font's
// second pass adds a light text's colour over its whole glyph quads on an
// opaque ground.
const Vector3 highlight{0.62f, 0.76f, 0.97f};

// Check box labels are small: "Exact pixels" has 78 pixels with its box.
const float checkTextScale = 0.33f;
const float buttonTextScale = 0.5f;
const float listTextScale = 0.42f;
const float checkBoxSide = 11;

EditorWindow* makeWindow(const std::string& text, float width, float height, float x, float y,
                         const Vector3& top, const Vector3& bottom, float alpha = 1) {
  return new EditorWindow(text, width, height, x, y, false, false, false, top, alpha, bottom, alpha, nullptr,
                          nullptr, nullptr);
}

// The editor's window centre (from the screen centre, Y upwards) of a
// rectangle given from the top left, Y downwards. The halves of the screen
// are integers, as the toolkit's viewports take them.
float centreX(const PixelRect& r) { return r.left + r.width / 2 - float(editorScreenWidth / 2); }
float centreY(const PixelRect& r) {
  return float(editorScreenHeight - editorScreenHeight / 2) - r.top - r.height / 2;
}

// The group box: an outline one pixel in from its rectangle; nothing inside.
void drawFrameOutline(EditorWindow* w) {
  const float hw = w->contentWidth / 2 - 0.5f, hh = w->contentHeight / 2 - 0.5f;
  glColor4f(1, 1, 1, 0.75f);
  glLineWidth(1);
  glBegin(GL_LINE_LOOP);
  glVertex3f(-hw, -hh, drawDepth);
  glVertex3f(hw, -hh, drawDepth);
  glVertex3f(hw, hh, drawDepth);
  glVertex3f(-hw, hh, drawDepth);
  glEnd();
}

int indexIn(const std::vector<EditorWindow*>& list, const EditorWindow* w) {
  for (size_t i = 0; i < list.size(); ++i)
    if (list[i] == w) return int(i);
  return -1;
}

}  // namespace

PixelRect settingsControlPixels(int controlId) {
  const SettingsControlLayout* c = settingsControl(controlId);
  if (!c) return PixelRect{0, 0, 0, 0};
  const int heightUnits = controlId == settingsResolutionList ? 13 : c->rect.height;
  return PixelRect{c->rect.x * dialogUnitX, c->rect.y * dialogUnitY, c->rect.width * dialogUnitX,
                   heightUnits * dialogUnitY};
}

SettingsDialogWindows buildSettingsDialogWindows(const SettingsDialogState& state) {
  SettingsDialogWindows d;
  for (const SettingsControlLayout& c : settingsControls) {
    const PixelRect r = settingsControlPixels(c.id);
    const std::string kind = c.kind;
    EditorWindow* w = nullptr;
    if (kind == "static") {
      // The frame of the second picture: nothing of it reaches the screen.
      w = makeWindow("", r.width, r.height, centreX(r), centreY(r), faceLight, faceLight, 0);
      w->visible = false;
    } else if (kind == "group box") {
      w = makeWindow("", r.width, r.height, centreX(r), centreY(r), faceLight, faceLight, 0);
      w->customDraw = drawFrameOutline;
    } else if (kind == "combo box") {
      w = makeWindow("", r.width, r.height, centreX(r), centreY(r), paper, paper);
      w->textScale = listTextScale;
      w->textColor = ink;
      w->textCentred = false;
      w->textPosition = Vector3(-r.width / 2 + 4, 0, 0);
      // The drop button at the right end.
      const float side = r.height - 4;
      EditorWindow* drop = makeWindow("v", side, side, r.width / 2 - 2 - side / 2, 0, faceLight, faceDark);
      drop->textScale = listTextScale;
      drop->textColor = ink;
      addChild(w, drop);
      d.listField = w;
    } else if (kind == "button") {
      w = makeWindow(c.text, r.width, r.height, centreX(r), centreY(r), faceLight, faceDark);
      w->textScale = buttonTextScale;
      w->textColor = ink;
    } else {  // check box
      w = makeWindow(c.text, r.width, r.height, centreX(r), centreY(r), faceLight, faceLight);
      w->textScale = checkTextScale;
      w->textColor = ink;
      w->textCentred = false;
      w->textPosition = Vector3(-r.width / 2 + checkBoxSide + 3, 0, 0);
      EditorWindow* box = makeWindow("", checkBoxSide, checkBoxSide, -r.width / 2 + 1 + checkBoxSide / 2, 0,
                                     frameGrey, frameGrey);
      EditorWindow* inside = makeWindow("", checkBoxSide - 2, checkBoxSide - 2, 0, 0, paper, paper);
      EditorWindow* mark = makeWindow("", checkBoxSide - 6, checkBoxSide - 6, 0, 0, ink, ink);
      addChild(w, box);
      addChild(box, inside);
      addChild(inside, mark);
      d.checkMarks.push_back(mark);
      d.checkMarkIds.push_back(c.id);
    }
    d.controls.push_back(w);
    d.controlIds.push_back(c.id);
  }

  // The dropped list: under the closed one, as many rows as fit, over all
  // else (it is built last, so it is drawn last and picked first).
  const PixelRect field = settingsControlPixels(settingsResolutionList);
  const int rows = std::max(1, std::min(settingsListRows, int(state.resolutions.size())));
  const PixelRect listRect{field.left, field.top + field.height, field.width, rows * settingsListRowHeight + 2};
  d.dropList = makeWindow("", listRect.width, listRect.height, centreX(listRect), centreY(listRect), frameGrey,
                          frameGrey);
  d.dropList->visible = false;
  d.dropList->listScroll = true;
  d.dropList->limitScrollY = true;
  d.dropList->minScrollY = 0;
  d.dropList->maxScrollY =
      std::max(0.0f, float(int(state.resolutions.size()) - settingsListRows) * settingsListRowHeight);
  for (size_t i = 0; i < state.resolutions.size(); ++i) {
    const float y = listRect.height / 2 - 1 - (float(i) + 0.5f) * settingsListRowHeight;
    EditorWindow* e = makeWindow(state.resolutions[i], listRect.width - 2, settingsListRowHeight, 0, y, paper, paper);
    e->textScale = listTextScale;
    e->textCentred = false;
    e->textPosition = Vector3(-(listRect.width - 2) / 2 + 4, 0, 0);
    addChild(d.dropList, e);
    d.entries.push_back(e);
  }
  rebuildTopLevelWindows();
  refreshSettingsDialogWindows(d, state);
  return d;
}

void refreshSettingsDialogWindows(SettingsDialogWindows& d, const SettingsDialogState& state) {
  for (size_t i = 0; i < d.checkMarks.size(); ++i) {
    const int id = d.checkMarkIds[i];
    d.checkMarks[i]->visible = id == settingsFullscreenBox    ? state.fullscreenChecked
                               : id == settingsExactPixelsBox ? state.exactPixelsChecked
                                                              : state.audioChecked;
  }
  const bool chosen = state.selected >= 0 && state.selected < int(state.resolutions.size());
  if (d.listField) d.listField->text = chosen ? state.resolutions[size_t(state.selected)] : "";
  for (size_t i = 0; i < d.entries.size(); ++i) {
    const bool on = int(i) == state.selected;
    d.entries[i]->topColor = d.entries[i]->bottomColor = on ? highlight : paper;
    d.entries[i]->textColor = ink;
  }
}

void destroySettingsDialogWindows(SettingsDialogWindows& d) {
  for (EditorWindow* w : d.controls) destroyWindow(w);
  if (d.dropList) destroyWindow(d.dropList);
  d = SettingsDialogWindows();
  rebuildTopLevelWindows();
}

// ---- The running dialog ---------------------------------------------------------

namespace {

struct DialogRun {
  const SettingsDialogOptions& options;
  SettingsDialogState state;
  SettingsDialogWindows windows;
  std::vector<uint8_t> picture;  // the dialog's bitmap, RGBA, top row first
  int32_t pictureWidth = 0, pictureHeight = 0;
  int result = -1;

  explicit DialogRun(const SettingsDialogOptions& o) : options(o) {}

  // "trace: settings control 1009 notification 0: size ..." after a command,
  // "trace: settings opened: size ..." once the dialog has taken the settings.
  void trace(int control, int notification) {
    if (!options.trace) return;
    if (control == 0)
      printf("trace: settings opened: ");
    else
      printf("trace: settings control %d notification %d: ", control, notification);
    printf("size %dx%d wide %d fullscreen %d exactPixels %d audio %d\n", screenWidth, screenHeight, int(wideDisplay),
           int(fullscreen), int(exactPixels), int(audioEnabled));
  }

  void command(int r, int control, int notification) {
    trace(control, notification);
    if (r >= 0) result = r;
    refreshSettingsDialogWindows(windows, state);
  }

  void dropListOpen(bool open) {
    const bool was = windows.dropList->visible;
    windows.dropList->visible = open && !windows.entries.empty();
    if (options.trace && was != windows.dropList->visible)
      printf("trace: settings list %s\n", windows.dropList->visible ? "dropped" : "closed");
    if (!windows.dropList->visible) return;
    // Scrolled so that the chosen entry is in view.
    const float rowTop = float(std::max(0, state.selected)) * settingsListRowHeight;
    float& s = windows.dropList->scrollY;
    if (rowTop < s) s = rowTop;
    if (rowTop + settingsListRowHeight > s + settingsListRows * settingsListRowHeight)
      s = rowTop + settingsListRowHeight - settingsListRows * settingsListRowHeight;
    s = std::min(std::max(s, windows.dropList->minScrollY), windows.dropList->maxScrollY);
  }

  void press(int x, int y) {
    mouseX = x;
    mouseY = y;
    EditorWindow* hit = pickWindow(pickAtMouse());
    int control = -1, entry = -1;
    for (EditorWindow* w = hit; w && control < 0 && entry < 0; w = w->parent) {
      const int c = indexIn(windows.controls, w);
      if (c >= 0) control = windows.controlIds[size_t(c)];
      entry = indexIn(windows.entries, w);
    }
    if (windows.dropList->visible) {
      // A click with the list dropped chooses an entry or only closes it.
      dropListOpen(false);
      if (entry >= 0) command(selectResolution(state, entry), settingsResolutionList, notificationSelectionChanged);
      return;
    }
    if (control == settingsResolutionList)
      dropListOpen(true);
    else if (control >= 0)
      command(clickSettingsControl(state, control), control, notificationClicked);
  }

  void wheel(int rows) {
    if (!windows.dropList->visible) return;
    float& s = windows.dropList->scrollY;
    s = std::min(std::max(s + rows * settingsListRowHeight, windows.dropList->minScrollY),
                 windows.dropList->maxScrollY);
  }

  void key(SDLKey k) {
    if (k == SDLK_UP || k == SDLK_DOWN) {
      if (state.resolutions.empty()) return;
      int next = state.selected < 0 ? 0 : state.selected + (k == SDLK_DOWN ? 1 : -1);
      next = std::min(std::max(next, 0), int(state.resolutions.size()) - 1);
      if (next != state.selected) {
        command(selectResolution(state, next), settingsResolutionList, notificationSelectionChanged);
        if (windows.dropList->visible) dropListOpen(true);
      }
    } else if (k == SDLK_RETURN || k == SDLK_KP_ENTER) {
      command(clickSettingsControl(state, settingsBeginButton), settingsBeginButton, notificationClicked);
    } else if (k == SDLK_ESCAPE) {
      if (windows.dropList->visible)
        dropListOpen(false);
      else
        command(clickSettingsControl(state, settingsEndButton), settingsEndButton, notificationClicked);
    }
  }

  void draw() {
    const int w = editorScreenWidth, h = editorScreenHeight;
    glViewport(0, 0, w, h);
    glClearColor(faceLight.x, faceLight.y, faceLight.z, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDisable(GL_TEXTURE_2D);
    // The bitmap at the top left, at its own size: rows run downwards from
    // the top edge, and those below the window's edge are cut off.
    if (!picture.empty()) {
      glMatrixMode(GL_PROJECTION);
      glLoadIdentity();
      glOrtho(0, w, 0, h, -1, 1);
      glMatrixMode(GL_MODELVIEW);
      glLoadIdentity();
      glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
      glRasterPos2f(0, float(h) - 0.01f);
      glPixelZoom(1, -1);
      glDrawPixels(pictureWidth, pictureHeight, GL_RGBA, GL_UNSIGNED_BYTE, picture.data());
      glPixelZoom(1, 1);
    }
    drawWindows(nullptr);
    glDisable(GL_DEPTH_TEST);
    if (!options.picturePath.empty()) writePicture();
  }

  void writePicture() {
    const int w = editorScreenWidth, h = editorScreenHeight;
    std::vector<uint8_t> bottomUp(size_t(w) * h * 4), topDown(bottomUp.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
    const size_t row = size_t(w) * 4;
    for (int y = 0; y < h; ++y) std::memcpy(&topDown[size_t(y) * row], &bottomUp[size_t(h - 1 - y) * row], row);
    for (size_t i = 3; i < topDown.size(); i += 4) topDown[i] = 255;  // as seen: opaque
    if (writePngImage(options.picturePath, topDown.data(), w, h) != 0)
      fprintf(stderr, "Error: cannot write the settings dialog's picture %s\n", options.picturePath.c_str());
    else if (options.trace)
      printf("trace: settings picture %s\n", options.picturePath.c_str());
  }
};

}  // namespace

namespace {

// The display's sizes at 32 bits per pixel, in SDL's order; none when SDL
// offers any size at all or none.
std::vector<DisplayMode> displayModesFromSdl() {
  std::vector<DisplayMode> modes;
  SDL_PixelFormat format;
  std::memset(&format, 0, sizeof format);
  format.BitsPerPixel = 32;
  format.BytesPerPixel = 4;
  SDL_Rect** rects = SDL_ListModes(&format, SDL_FULLSCREEN | SDL_OPENGL);
  if (!rects || rects == reinterpret_cast<SDL_Rect**>(-1)) return modes;
  for (int i = 0; rects[i]; ++i) modes.push_back(DisplayMode{rects[i]->w, rects[i]->h, 32});
  return modes;
}

}  // namespace

int runSettingsDialog(const SettingsDialogOptions& options) {
  // As the production's display does: sdl12-compat draws GL into a buffer
  // of the window's size and shows it at each swap.
  setenv("SDL12COMPAT_OPENGL_SCALING", "1", 1);
  int initialised = SDL_Init(SDL_INIT_VIDEO);
  for (int retry = 0; initialised < 0 && getenv("DISPLAY") && retry < 4; ++retry) {
    SDL_Quit();
    SDL_Delay(250);
    initialised = SDL_Init(SDL_INIT_VIDEO);
  }
  if (initialised < 0) {
    fprintf(stderr, "Error: Failed to initialize sdl for the settings dialog: %s\n", SDL_GetError());
    return -1;
  }
  const std::vector<DisplayMode> modes = options.modes ? *options.modes : displayModesFromSdl();

  const int width = settingsDialogPixelWidth(), height = settingsDialogPixelHeight();
  SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  if (!SDL_SetVideoMode(width, height, 0, SDL_OPENGL | SDL_DOUBLEBUF)) {
    fprintf(stderr, "Error: Unable to open the settings dialog's window: %s\n", SDL_GetError());
    SDL_Quit();
    return -1;
  }
  SDL_WM_SetCaption(settingsDialogCaption, settingsDialogCaption);
  glewInit();

  const int savedWidth = editorScreenWidth, savedHeight = editorScreenHeight;
  Font* const savedFont = editorFont;
  editorScreenWidth = width;
  editorScreenHeight = height;

  // The texts in the production's font, from a store of the dialog's own
  // (its textures go with the window).
  TextureStore* textures = new TextureStore();
  Font* font = loadOutputFont(textures);
  if (!font) printf("WARNING: ./images/fonge3bb.png not found: the settings dialog shows no texts.\n");
  editorFont = font;

  DialogRun run(options);
  const char* picturePath = "./images/dialog1012.png";
  if (readPngImage(picturePath, run.picture, run.pictureWidth, run.pictureHeight, nullptr, nullptr, 1.0f) != 0) {
    run.picture.clear();
    printf("WARNING: %s cannot be read: the settings dialog shows no picture.\n", picturePath);
  }
  openSettingsDialog(run.state, modes);
  run.windows = buildSettingsDialogWindows(run.state);
  run.trace(0, 0);

  bool shown = false;
  while (run.result < 0) {
    run.draw();
    SDL_GL_SwapBuffers();
    // Whoever drives the dialog may start once it stands on the screen.
    if (options.trace && !shown) printf("trace: settings dialog shown\n");
    shown = true;
    SDL_Event event;
    if (!SDL_WaitEvent(&event)) break;
    do {
      switch (event.type) {
        case SDL_QUIT:
          run.command(clickSettingsControl(run.state, settingsEndButton), settingsEndButton, notificationClicked);
          break;
        case SDL_MOUSEBUTTONDOWN:
          if (event.button.button == SDL_BUTTON_LEFT) run.press(event.button.x, event.button.y);
          if (event.button.button == SDL_BUTTON_WHEELUP) run.wheel(-1);
          if (event.button.button == SDL_BUTTON_WHEELDOWN) run.wheel(1);
          break;
        case SDL_KEYDOWN:
          run.key(event.key.keysym.sym);
          break;
        default:
          break;
      }
    } while (run.result < 0 && SDL_PollEvent(&event));
  }
  if (run.result < 0) run.result = 0;  // the event queue failed: as "End"

  destroySettingsDialogWindows(run.windows);
  delete font;
  delete textures;
  editorFont = savedFont;
  editorScreenWidth = savedWidth;
  editorScreenHeight = savedHeight;
  selectedWindow = nullptr;
  SDL_Quit();
  return run.result;
}
