// EditorWindow: the one widget of the editor. A rectangle with a vertical
// colour gradient, an optional text, optional children and optional handlers;
// buttons, labels, sliders, panels and flow chart boxes are all windows.
//
// Coordinates are pixels, X to the right, Y upwards. x and y give the centre
// of a window, relative to the centre of its parent, or of the screen for a
// top-level window. Every window is drawn in a viewport of its own, clipped to
// its parent's rectangle; picking runs the same traversal in OpenGL selection
// mode and names windows by `pickName` (1, 2, 3 ... = position in
// `allWindows`) and connection curves by names from 100000 on.
//
// Zoom: a window's `zoom` z scales its children by 1 / (1 - 2 z), their
// positions and their sizes; z must stay below 0.5 (at 0.5 it divides by
// zero). Scroll moves the children and the curves of a window, in screen
// pixels, and a window's own text.
#pragma once
#include <string>
#include <vector>

#include "foundation/Vector3.h"

class EditorWindow;
class Font;
struct Block;

typedef int (*WindowPressHandler)(EditorWindow* window);     // 0: press used; 1: generic action goes on
typedef void (*WindowDragHandler)(EditorWindow* window);
typedef void (*WindowReleaseHandler)(EditorWindow* window);
typedef void (*WindowDrawHandler)(EditorWindow* window);

class EditorWindow {
 public:
  // Sets the defaults and appends the window to `allWindows`, with the pick
  // name 1 + the count of windows before it. It is not hung under anything.
  EditorWindow(const std::string& text, float width, float height, float x, float y, bool movable,
               bool scrollable, bool scalable, const Vector3& topColor, float topAlpha,
               const Vector3& bottomColor, float bottomAlpha, WindowPressHandler onPress,
               WindowDragHandler onDrag, WindowReleaseHandler onRelease);
  // Releases nothing: destroyWindow unlinks the window and destroys its subtree.
  ~EditorWindow();

  std::string text;            // an empty text draws nothing
  std::string caption;         // prefix of text for value windows, such as "Raise:\n"
  std::string key;             // block kind of a toolbox entry, "in."/"out." key of a parameter entry
  int number = -1;             // shown behind text unless it is -1
  int* numberSource = nullptr; // when set, number is copied from it at each draw
  float width, height;         // size on the screen, pixels
  float x, y;                  // centre, relative to the parent's centre
  bool limitX = false;         // X motion limited to minX..maxX
  float minX = 0, maxX = 0;
  bool limitY = false;         // Y motion limited to minY..maxY
  float minY = 0, maxY = 0;
  float contentWidth, contentHeight;  // extent of the gradient quad, content units; width, height
  float scrollX = 0, scrollY = 0;     // offset of the children, the curves and the own text
  bool limitScrollX = false;
  float minScrollX = 0, maxScrollX = 0;
  bool limitScrollY = false;
  float minScrollY = 0, maxScrollY = 0;
  float zoom = 0;              // children scaled by 1 / (1 - 2 zoom); below 0.5
  bool movable;                // mouse left moves the window
  bool scrollable;             // mouse middle scrolls it
  bool listScroll = false;     // a vertical list: scrolling is limited to Y
  bool flagReserved = false;   // never set
  bool scalable;               // mouse right would scale it; no window uses it
  bool zoomable = false;       // mouse right zooms; the flow chart area only
  bool flagReserved2 = false;  // never set
  Vector3 bottomColor;         // gradient colour of the lower edge
  float bottomAlpha;
  Vector3 topColor;            // gradient colour of the upper edge
  float topAlpha;
  std::vector<EditorWindow*> children;  // owned
  EditorWindow* parent = nullptr;
  bool visible = true;         // a hidden window is skipped with its whole subtree
  bool isChild = false;        // set when hung under a parent
  int pickName;                // OpenGL selection name = position in allWindows, from 1
  float clipLeft = 0, clipRight = 0, clipBottom = 0, clipTop = 0;  // screen pixels, set by the parent
  float parentX = 0, parentY = 0;  // accumulated screen offset from the screen centre, set by the parent
  float parentZoom = 0;        // accumulated zoom of the ancestors, set by the parent
  WindowPressHandler onPress;
  WindowDragHandler onDrag;
  WindowReleaseHandler onRelease;
  float textScale = 1;         // text metrics are multiplied by it
  bool textCentred = true;     // each line centred on the text position
  Vector3 textColor{1, 1, 1};
  float textAlpha = 1;
  Vector3 textPosition{0, 0, 0};  // first line; Z overwritten at each draw
  Vector3 textXAxis{1, 0, 0};
  Vector3 textYAxis{0, -1, 0};    // lines run downwards
  float* boundValue = nullptr;    // the float this window shows or changes
  Block* block = nullptr;      // the block whose box this is; its connection curves live on the block
  EditorWindow* propertiesWindow = nullptr;   // the window this window opens
  EditorWindow* ownerWindow = nullptr;        // the window a close button hides
  WindowDrawHandler customDraw = nullptr;     // drawn after the connections, before the text
  void* customData = nullptr;                 // the Block of a pulse graph

  // The text as drawn: text, then number unless it is -1 (numberSource first).
  std::string displayText();
};

// A timed on-screen message; times in real seconds since the program started.
struct EditorMessage {
  std::string text;
  float startTime;
  float duration;
};

// ---- Process-wide state ----------------------------------------------------
extern std::vector<EditorWindow*> allWindows;       // creation order; entry n has pick name n + 1
extern std::vector<EditorWindow*> topLevelWindows;  // isChild false, from rebuildTopLevelWindows
extern EditorWindow* selectedWindow;                // the window last picked
extern float drawDepth;       // Z of the next primitive: 10 at each redraw, -0.01 after each quad and text
extern bool pickingMode;      // true during the selection pass
extern int mouseX, mouseY;    // window coordinates, Y downwards
extern int mouseDeltaX;       // X motion since the press; read by drag handlers
extern bool hideTexts;        // true suppresses all window texts
extern std::vector<EditorMessage> messages;

// What the editor needs to know of its host, set before drawing: the screen
// in pixels (the drawing area of the display), the font of the windows, and
// the real time in seconds that messages are timed against.
extern int editorScreenWidth;   // 800
extern int editorScreenHeight;  // 600
extern Font* editorFont;        // null: texts are not drawn
extern float editorRealSeconds;

// Draws the connection curves of a window's children (step 4 of drawing a
// window); the flow chart view sets it. Null draws none.
extern WindowDrawHandler drawChildConnections;

// Curve pick names start here; window pick names stay below.
constexpr int firstCurvePickName = 100000;

// ---- Operations ------------------------------------------------------------
// Hangs child under parent: sets isChild and parent, appends to children.
void addChild(EditorWindow* parent, EditorWindow* child);
// topLevelWindows = the windows of allWindows with isChild false, in order.
void rebuildTopLevelWindows();
// parent null: draws every visible top-level window with its subtree (or,
// with pickingMode, runs the selection traversal); otherwise that subtree.
void drawWindows(EditorWindow* parent);
// The window with this pick name, or null.
EditorWindow* pickWindow(int name);
// Entry by position in allWindows, or null; position of a window, or -1.
EditorWindow* windowAt(int index);
int indexOfWindow(const EditorWindow* window);
// Unlinks the window from the list and its parent, renumbers the windows
// behind it, and destroys it with its children and its properties window.
void destroyWindow(EditorWindow* window);
// Appends a message timed from editorRealSeconds.
void showMessage(const std::string& text, float duration);

// Runs a selection pass of every visible window at (mouseX, mouseY) and gives
// the name under the mouse: a window's pick name, a curve's name (from
// 100000), or 0 for nothing. The selection buffer holds 4096 entries (enough
// for about a thousand hits); of the hits, the one with the smallest minimum
// depth wins, which is the one drawn last, so children win over their
// parents and texts over their boxes. Hits under name 0 (drawing that names
// nothing) are passed over. When two hits share a depth the later one wins.
int pickAtMouse();

// Draws the live messages, newest at the bottom, centred at the top of the
// screen on a dark band; drops each whose time is over.
void drawMessages();
