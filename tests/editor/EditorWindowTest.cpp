// Tests of the editor window toolkit: the record and its list, the child
// tree, drawing with per-window viewports and clipping (read back from a
// small GL window), picking through the selection pass, destruction and
// renumbering, the timed messages, and the mouse routing of press, drag and
// release with the generic move, scroll and zoom.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <vector>

#include "editor/EditorInput.h"
#include "editor/EditorWindow.h"
#include "support/GLTestContext.h"

namespace {

const int kW = 200, kH = 200;

void clearWindows() {
  resetEditorPointer();
  while (!allWindows.empty()) destroyWindow(allWindows.back());
  topLevelWindows.clear();
  messages.clear();
  selectedWindow = nullptr;
  editorScreenWidth = kW;
  editorScreenHeight = kH;
  editorFont = nullptr;
  hideTexts = false;
}

EditorWindow* makeWindow(float w, float h, float x, float y, const Vector3& colour, bool movable = false,
                         bool scrollable = false, WindowPressHandler press = nullptr, WindowDragHandler drag = nullptr,
                         WindowReleaseHandler release = nullptr) {
  return new EditorWindow("", w, h, x, y, movable, scrollable, false, colour, 1, colour, 1, press, drag, release);
}

struct Rgb {
  int r, g, b;
};

// The colour at a GL window position (Y upwards).
Rgb at(int x, int y) {
  std::vector<uint8_t> p = testgl::readPixels(x, y, 1, 1);
  return {p[0], p[1], p[2]};
}

bool isColour(Rgb c, const Vector3& v) {
  return std::abs(c.r - int(v.x * 255)) < 4 && std::abs(c.g - int(v.y * 255)) < 4 && std::abs(c.b - int(v.z * 255)) < 4;
}

void drawAll() {
  glViewport(0, 0, kW, kH);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawWindows(nullptr);
}

// Pick at a GL window position (Y upwards).
int pickAt(int x, int y) {
  mouseX = x;
  mouseY = kH - y;
  return pickAtMouse();
}

const Vector3 kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1), kGrey(0.5f, 0.5f, 0.5f);

// Windows that other suites of this process built are set aside for the
// test, so that its own windows count from pick name 1, and come back after.
class EditorWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    saved.swap(allWindows);
    clearWindows();
  }
  void TearDown() override {
    clearWindows();
    allWindows.swap(saved);
    rebuildTopLevelWindows();
  }
  std::vector<EditorWindow*> saved;
};

}  // namespace

// ---- Record and list ---------------------------------------------------------------

TEST_F(EditorWindowTest, ConstructorSetsTheDefaultsAndAppendsWithTheNextPickName) {
  EditorWindow* a = makeWindow(30, 20, 5, 6, kRed, true, false);
  EditorWindow* b = makeWindow(10, 10, 0, 0, kGreen);
  ASSERT_EQ(allWindows.size(), 2u);
  EXPECT_EQ(a->pickName, 1);
  EXPECT_EQ(b->pickName, 2);
  EXPECT_EQ(a->number, -1);
  EXPECT_EQ(a->contentWidth, 30);
  EXPECT_EQ(a->contentHeight, 20);
  EXPECT_EQ(a->zoom, 0);
  EXPECT_TRUE(a->visible);
  EXPECT_FALSE(a->isChild);
  EXPECT_TRUE(a->movable);
  EXPECT_FALSE(a->scrollable);
  EXPECT_EQ(a->textScale, 1);
  EXPECT_TRUE(a->textCentred);
  EXPECT_EQ(a->textYAxis.y, -1);
  EXPECT_EQ(a->parent, nullptr);
  EXPECT_EQ(pickWindow(2), b);
  EXPECT_EQ(windowAt(0), a);
  EXPECT_EQ(indexOfWindow(b), 1);
  EXPECT_EQ(pickWindow(3), nullptr);
  EXPECT_EQ(pickWindow(0), nullptr);
}

TEST_F(EditorWindowTest, AddChildAndTopLevelList) {
  EditorWindow* a = makeWindow(30, 20, 0, 0, kRed);
  EditorWindow* b = makeWindow(10, 10, 0, 0, kGreen);
  EditorWindow* c = makeWindow(10, 10, 0, 0, kBlue);
  addChild(a, b);
  EXPECT_TRUE(b->isChild);
  EXPECT_EQ(b->parent, a);
  ASSERT_EQ(a->children.size(), 1u);
  rebuildTopLevelWindows();
  ASSERT_EQ(topLevelWindows.size(), 2u);
  EXPECT_EQ(topLevelWindows[0], a);
  EXPECT_EQ(topLevelWindows[1], c);
}

TEST_F(EditorWindowTest, NumberZeroIsShownAndOnlyMinusOneHides) {
  EditorWindow* w = new EditorWindow("PULSE", 10, 10, 0, 0, false, false, false, kRed, 1, kRed, 1, nullptr, nullptr,
                                     nullptr);
  EXPECT_EQ(w->displayText(), "PULSE");
  w->number = 0;
  EXPECT_EQ(w->displayText(), "PULSE0");
  int source = 7;
  w->numberSource = &source;
  EXPECT_EQ(w->displayText(), "PULSE7");
  EXPECT_EQ(w->number, 7);
  source = -1;
  EXPECT_EQ(w->displayText(), "PULSE");
}

TEST_F(EditorWindowTest, DestroyingTheThirdOfFiveRenumbersTheLastTwo) {
  std::vector<EditorWindow*> w;
  for (int i = 0; i < 5; ++i) w.push_back(makeWindow(10, 10, 0, 0, kRed));
  selectedWindow = w[2];
  destroyWindow(w[2]);
  EXPECT_EQ(selectedWindow, nullptr);
  ASSERT_EQ(allWindows.size(), 4u);
  EXPECT_EQ(w[3]->pickName, 3);
  EXPECT_EQ(w[4]->pickName, 4);
  EXPECT_EQ(pickWindow(3), w[3]);
  EXPECT_EQ(pickWindow(4), w[4]);
}

TEST_F(EditorWindowTest, DestroyTakesTheChildrenAndThePropertiesWindowAlong) {
  EditorWindow* area = makeWindow(100, 100, 0, 0, kGrey);
  EditorWindow* box = makeWindow(10, 10, 0, 0, kRed);
  EditorWindow* label = makeWindow(5, 5, 0, 0, kGreen);
  EditorWindow* properties = makeWindow(50, 50, 0, 0, kBlue);
  EditorWindow* propertiesChild = makeWindow(5, 5, 0, 0, kBlue);
  EditorWindow* other = makeWindow(10, 10, 0, 0, kRed);
  addChild(area, box);
  addChild(box, label);
  addChild(area, properties);
  addChild(properties, propertiesChild);
  addChild(area, other);
  box->propertiesWindow = properties;
  destroyWindow(box);
  ASSERT_EQ(allWindows.size(), 2u);
  EXPECT_EQ(allWindows[0], area);
  EXPECT_EQ(allWindows[1], other);
  EXPECT_EQ(other->pickName, 2);
  ASSERT_EQ(area->children.size(), 1u);
  EXPECT_EQ(area->children[0], other);
}

TEST_F(EditorWindowTest, MessagesLiveForTheirDurationOfRealTime) {
  editorRealSeconds = 10;
  showMessage("one", 2);
  showMessage("two", 4);
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].startTime, 10);
  EXPECT_EQ(messages[1].duration, 4);
  REQUIRE_GL(kW, kH);
  editorRealSeconds = 11.5f;
  drawMessages();
  EXPECT_EQ(messages.size(), 2u);
  editorRealSeconds = 12.5f;
  drawMessages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].text, "two");
  editorRealSeconds = 14.5f;
  drawMessages();
  EXPECT_TRUE(messages.empty());
}

// ---- Drawing ---------------------------------------------------------------------------

TEST_F(EditorWindowTest, EachWindowDrawsItsRectangleCentredOnTheScreen) {
  REQUIRE_GL(kW, kH);
  EditorWindow* a = makeWindow(60, 40, 20, -30, kRed);
  (void)a;
  rebuildTopLevelWindows();
  drawAll();
  // Centre (100 + 20, 100 - 30) = (120, 70); spans x 90..150, y 50..90.
  EXPECT_TRUE(isColour(at(120, 70), kRed));
  EXPECT_TRUE(isColour(at(91, 51), kRed));
  EXPECT_TRUE(isColour(at(148, 88), kRed));
  EXPECT_TRUE(isColour(at(88, 70), Vector3(0, 0, 0)));
  EXPECT_TRUE(isColour(at(120, 92), Vector3(0, 0, 0)));
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST_F(EditorWindowTest, TheGradientRunsFromTheBottomColourToTheTopColour) {
  REQUIRE_GL(kW, kH);
  new EditorWindow("", 100, 100, 0, 0, false, false, false, Vector3(1, 1, 1), 1, Vector3(0, 0, 0), 1, nullptr,
                   nullptr, nullptr);
  rebuildTopLevelWindows();
  drawAll();
  EXPECT_LT(at(100, 55).r, 40);
  EXPECT_GT(at(100, 145).r, 215);
  EXPECT_NEAR(at(100, 100).r, 128, 8);
}

TEST_F(EditorWindowTest, ChildrenStandRelativeToTheParentAndScrollWithIt) {
  REQUIRE_GL(kW, kH);
  EditorWindow* parent = makeWindow(160, 160, 0, 0, kGrey);
  EditorWindow* child = makeWindow(20, 20, 40, 40, kRed);
  addChild(parent, child);
  rebuildTopLevelWindows();
  drawAll();
  EXPECT_TRUE(isColour(at(140, 140), kRed));
  parent->scrollX = -30;
  parent->scrollY = -10;
  drawAll();
  EXPECT_TRUE(isColour(at(110, 130), kRed));
  EXPECT_TRUE(isColour(at(140, 140), kGrey));
}

TEST_F(EditorWindowTest, ZoomQuarterDrawsTheChildrenAtTwiceTheSize) {
  REQUIRE_GL(kW, kH);
  EditorWindow* screen = makeWindow(190, 190, 0, 0, kGrey);
  EditorWindow* area = makeWindow(180, 180, 0, 0, kBlue);
  EditorWindow* box = makeWindow(20, 20, 10, 0, kRed);
  addChild(screen, area);
  addChild(area, box);
  rebuildTopLevelWindows();
  drawAll();
  // Unzoomed: centre x 110, spans 100..120.
  EXPECT_TRUE(isColour(at(118, 100), kRed));
  EXPECT_TRUE(isColour(at(124, 100), kBlue));
  area->zoom = 0.25f;
  drawAll();
  // Twice the size at twice the distance: centre x 120, spans 100..140, y 80..120.
  EXPECT_TRUE(isColour(at(121, 100), kRed));
  EXPECT_TRUE(isColour(at(138, 118), kRed));
  EXPECT_TRUE(isColour(at(102, 82), kRed));
  EXPECT_TRUE(isColour(at(142, 100), kBlue));
  EXPECT_TRUE(isColour(at(98, 100), kBlue));
}

TEST_F(EditorWindowTest, ZoomStaysBelowOneHalfWhereTheScaleWouldDivideByZero) {
  EditorWindow* area = makeWindow(100, 100, 0, 0, kGrey);
  area->zoomable = true;
  for (int i = 0; i < 100; ++i) applyGenericZoom(area, -50);  // upwards: zoom in
  EXPECT_LT(area->zoom, 0.5f);
  EXPECT_EQ(area->zoom, editorZoomMax);
  for (int i = 0; i < 1000; ++i) applyGenericZoom(area, 50);
  EXPECT_EQ(area->zoom, editorZoomMin);
  EXPECT_GT(1 - 2 * area->zoom, 0);
}

TEST_F(EditorWindowTest, AWindowOutsideItsParentsClipDrawsNothingNorDoItsChildren) {
  REQUIRE_GL(kW, kH);
  EditorWindow* parent = makeWindow(100, 100, 0, 0, kGrey);
  EditorWindow* outside = makeWindow(20, 20, 80, 0, kRed);      // x 70..90 of the parent's -50..50
  EditorWindow* grandchild = makeWindow(200, 200, -80, 0, kGreen);  // would cover the parent if drawn
  addChild(parent, outside);
  addChild(outside, grandchild);
  rebuildTopLevelWindows();
  drawAll();
  EXPECT_TRUE(isColour(at(100, 100), kGrey));
  EXPECT_TRUE(isColour(at(180, 100), Vector3(0, 0, 0)));
  EXPECT_TRUE(isColour(at(60, 100), kGrey));
  EXPECT_NE(pickAt(180, 100), outside->pickName);
  EXPECT_EQ(pickAt(100, 100), parent->pickName);
}

TEST_F(EditorWindowTest, AChildIsClippedToItsParent) {
  REQUIRE_GL(kW, kH);
  EditorWindow* parent = makeWindow(100, 100, 0, 0, kGrey);
  EditorWindow* child = makeWindow(40, 40, 50, 0, kRed);  // half over the right edge
  addChild(parent, child);
  rebuildTopLevelWindows();
  drawAll();
  EXPECT_TRUE(isColour(at(145, 100), kRed));
  EXPECT_TRUE(isColour(at(155, 100), Vector3(0, 0, 0)));
  EXPECT_EQ(pickAt(145, 100), child->pickName);
  EXPECT_EQ(pickAt(160, 100), 0);
}

TEST_F(EditorWindowTest, HiddenWindowsDrawNothingWithTheirSubtree) {
  REQUIRE_GL(kW, kH);
  EditorWindow* parent = makeWindow(100, 100, 0, 0, kGrey);
  EditorWindow* child = makeWindow(40, 40, 0, 0, kRed);
  EditorWindow* grandchild = makeWindow(10, 10, 0, 0, kGreen);
  addChild(parent, child);
  addChild(child, grandchild);
  rebuildTopLevelWindows();
  drawAll();
  EXPECT_TRUE(isColour(at(100, 100), kGreen));
  child->visible = false;
  drawAll();
  EXPECT_TRUE(isColour(at(100, 100), kGrey));
  EXPECT_EQ(pickAt(100, 100), parent->pickName);
}

TEST_F(EditorWindowTest, DrawingLeavesTheGLStateAsFound) {
  REQUIRE_GL(kW, kH);
  makeWindow(100, 100, 0, 0, kGrey);
  rebuildTopLevelWindows();
  glEnable(GL_DEPTH_TEST);
  glDisable(GL_BLEND);
  glViewport(3, 4, 50, 60);
  drawWindows(nullptr);
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[0], 3);
  EXPECT_EQ(viewport[3], 60);
  EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  EXPECT_TRUE(testgl::drainErrors().empty());
}

// ---- Picking -----------------------------------------------------------------------------

TEST_F(EditorWindowTest, PickingNamesTheTopmostWindowUnderTheMouse) {
  REQUIRE_GL(kW, kH);
  EditorWindow* back = makeWindow(150, 150, 0, 0, kGrey);
  EditorWindow* child = makeWindow(40, 40, -30, 0, kRed);
  EditorWindow* front = makeWindow(60, 60, 40, 40, kBlue);  // a later top-level window over the back one
  addChild(back, child);
  rebuildTopLevelWindows();
  EXPECT_EQ(pickAt(70, 100), child->pickName);
  EXPECT_EQ(pickAt(100, 60), back->pickName);
  EXPECT_EQ(pickAt(140, 140), front->pickName);
  EXPECT_EQ(pickAt(5, 5), 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST_F(EditorWindowTest, PickingFollowsTheZoomedPlaceOfAChild) {
  REQUIRE_GL(kW, kH);
  EditorWindow* area = makeWindow(190, 190, 0, 0, kGrey);
  EditorWindow* box = makeWindow(20, 20, 30, 0, kRed);
  addChild(area, box);
  rebuildTopLevelWindows();
  EXPECT_EQ(pickAt(130, 100), box->pickName);
  area->zoom = 0.25f;  // box at x 160, 40 wide
  EXPECT_EQ(pickAt(130, 100), area->pickName);
  EXPECT_EQ(pickAt(175, 115), box->pickName);
}

// ---- Mouse routing ------------------------------------------------------------------------

namespace {
int presses = 0, drags = 0, releases = 0;
int pressResult = 0;
int releasePicked = -1;
int countPress(EditorWindow*) {
  ++presses;
  return pressResult;
}
void countDrag(EditorWindow*) { ++drags; }
void countRelease(EditorWindow*) {
  ++releases;
  releasePicked = pickedName;
}
// Mouse in GL coordinates (Y upwards), as the host passes it (Y downwards).
EditorPointerResult mouse(int x, int y, unsigned buttons) { return editorPointerFrame(x, kH - y, buttons); }
}  // namespace

TEST_F(EditorWindowTest, AUsedPressDragsAndReleasesWithTheNameUnderTheMouse) {
  REQUIRE_GL(kW, kH);
  presses = drags = releases = 0;
  pressResult = 0;
  EditorWindow* a = makeWindow(40, 40, -50, 0, kRed, true, false, countPress, countDrag, countRelease);
  EditorWindow* b = makeWindow(40, 40, 50, 0, kBlue);
  rebuildTopLevelWindows();
  mouse(50, 100, 0);
  EditorPointerResult r = mouse(50, 100, 1);
  EXPECT_TRUE(r.pressed);
  EXPECT_EQ(r.pressedName, a->pickName);
  EXPECT_EQ(selectedWindow, a);
  EXPECT_EQ(presses, 1);
  mouse(100, 100, 1);
  EXPECT_EQ(mouseDeltaX, 50);
  mouse(150, 100, 1);
  EXPECT_EQ(drags, 2);
  EXPECT_EQ(a->x, -50) << "a used press does not move the window";
  mouse(150, 100, 0);
  EXPECT_EQ(releases, 1);
  EXPECT_EQ(releasePicked, b->pickName);
}

TEST_F(EditorWindowTest, AnUnusedPressMovesTheWindowAndSkipsTheRelease) {
  REQUIRE_GL(kW, kH);
  presses = drags = releases = 0;
  pressResult = 1;
  EditorWindow* a = makeWindow(40, 40, -50, 0, kRed, true, false, countPress, countDrag, countRelease);
  a->limitY = true;
  a->minY = -10;
  a->maxY = 10;
  rebuildTopLevelWindows();
  mouse(50, 100, 0);
  mouse(50, 100, 1);
  mouse(70, 150, 1);
  EXPECT_EQ(a->x, -30);
  EXPECT_EQ(a->y, 10) << "limited to maxY";
  mouse(70, 150, 0);
  EXPECT_EQ(releases, 0);
}

TEST_F(EditorWindowTest, MiddleScrollsTheNearestScrollableWindowAndAListOnlyOnY) {
  REQUIRE_GL(kW, kH);
  EditorWindow* list = makeWindow(150, 150, 0, 0, kGrey, false, true);
  EditorWindow* entry = makeWindow(40, 20, 0, 0, kRed);
  addChild(list, entry);
  rebuildTopLevelWindows();
  mouse(100, 100, 0);
  mouse(100, 100, 2);
  mouse(110, 80, 2);
  EXPECT_EQ(list->scrollX, 10);
  EXPECT_EQ(list->scrollY, -20);
  mouse(110, 80, 0);
  list->listScroll = true;
  list->limitScrollY = true;
  list->minScrollY = -5;
  list->maxScrollY = 100;
  mouse(110, 80, 2);
  mouse(150, 60, 2);
  EXPECT_EQ(list->scrollX, 10);
  EXPECT_EQ(list->scrollY, -5);
  mouse(150, 60, 0);
}

TEST_F(EditorWindowTest, RightZoomsTheZoomableArea) {
  REQUIRE_GL(kW, kH);
  EditorWindow* area = makeWindow(150, 150, 0, 0, kGrey);
  area->zoomable = true;
  rebuildTopLevelWindows();
  mouse(100, 100, 0);
  mouse(100, 100, 4);
  mouse(100, 140, 4);  // 40 pixels upwards
  EXPECT_NEAR(area->zoom, 40 * editorZoomGain, 1e-6);
  mouse(100, 140, 0);
}

TEST_F(EditorWindowTest, MovingAZoomedChildFollowsTheMouse) {
  EditorWindow* area = makeWindow(150, 150, 0, 0, kGrey);
  EditorWindow* box = makeWindow(20, 20, 0, 0, kRed, true);
  addChild(area, box);
  box->parentZoom = 0.25f;  // as the parent's draw sets it
  applyGenericMove(box, 20, -10);
  EXPECT_EQ(box->x, 10);
  EXPECT_EQ(box->y, 5);
}
