// Tests of the flow chart view: boxes made from the toolbox, connecting and
// refusing by the rules with their messages, value changes, the pulse
// properties window, deleting boxes and curves, the layout from right to
// left, the filters, and the parameter list's scroll.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <sstream>

#include "EditorTestSetup.h"
#include "support/GLTestContext.h"

using namespace editortest;

namespace {

class FlowChartViewTest : public ::testing::Test {
 protected:
  void SetUp() override { startEditor(); }
};

bool hasWindow(EditorWindow* w) { return indexOfWindow(w) >= 0; }

}  // namespace

// ---- Boxes ---------------------------------------------------------------------------

TEST_F(FlowChartViewTest, AToolPressMakesABoxUnderTheAreaCentredInItsVisiblePart) {
  flowArea->scrollX = 40;
  flowArea->scrollY = -10;
  flowArea->zoom = 0.25f;
  Block* b = create("sin");
  ASSERT_NE(b, nullptr);
  ASSERT_NE(b->window, nullptr);
  EXPECT_EQ(b->window->parent, flowArea);
  EXPECT_EQ(b->window->text, "SIN");
  EXPECT_EQ(b->window->width, 45);
  EXPECT_EQ(b->window->height, 26);
  EXPECT_TRUE(b->window->movable);
  EXPECT_EQ(b->window->x, -40 * 0.5f);
  EXPECT_EQ(b->window->y, 10 * 0.5f);
  EXPECT_EQ(b->window->topColor.x, windowWithKey("sin")->topColor.x);
}

TEST_F(FlowChartViewTest, AParameterEntryPressMakesASinkBoundToTheParameter) {
  Block* sink = create("in.sceneB.cameraFOV");
  ASSERT_NE(sink, nullptr);
  EXPECT_EQ(sink->kindName, "in.sceneB.cameraFOV");
  EXPECT_EQ(sink->window->key, "in.sceneB.cameraFOV");
  EXPECT_EQ(sink->window->displayText(), "in.sceneB.\ncameraFOV0");
  EXPECT_EQ(sink->boundValue, &static_cast<TestScene*>(testScenes()[1])->fieldOfView);
}

// ---- Connecting and refusing ------------------------------------------------------------

TEST_F(FlowChartViewTest, AControlDragConnectsAndSaysBetweenWhichPickNames) {
  Block* f = create("float");
  Block* sink = create("in.sceneA.cameraZoom");
  hold(inputKeyLeftControl, true);
  EXPECT_EQ(press(f->window), 0);
  EXPECT_EQ(lastMessage(), "Drag the mouse to make\n 0 output to the block.");
  hold(inputKeyLeftControl, false);
  pickedName = sink->window->pickName;
  f->window->onRelease(f->window);
  ASSERT_EQ(sink->inputs.size(), 1u);
  EXPECT_EQ(sink->inputs.front(), f);
  ASSERT_EQ(f->connections.size(), 1u);
  EXPECT_EQ(lastMessage(), "Connection between " + std::to_string(f->window->pickName) + " and " +
                               std::to_string(sink->window->pickName));
}

TEST_F(FlowChartViewTest, ConnectingABoxToItselfDoesNothingAndSaysNothing) {
  Block* s = create("sum");
  connectByMouse(s, s);
  EXPECT_TRUE(s->inputs.empty());
  EXPECT_EQ(messages.size(), 1u) << "only the drag hint of the press";
}

TEST_F(FlowChartViewTest, DraggingFromAnInBoxAlwaysHitsTheMaximumOutputsOfZero) {
  Block* sink = create("in.sceneA.cameraZoom");
  Block* s = create("sum");
  connectByMouse(sink, s);
  EXPECT_TRUE(s->inputs.empty());
  EXPECT_EQ(lastMessage(), "Maximum outputs (0) \n of block in.sceneA.\ncameraZoom0 already used.");
  EXPECT_EQ(messages.back().duration, 2);
}

TEST_F(FlowChartViewTest, DraggingToAFloatDemotimeOrOutBoxHitsTheMaximumInputsOfZero) {
  Block* s = create("sum");
  for (const char* key : {"float", "demotime", "out.sceneA.cameraFOV"}) {
    Block* target = create(key);
    connectByMouse(s, target);
    EXPECT_TRUE(target->inputs.empty()) << key;
    EXPECT_EQ(lastMessage(), "Maximum inputs (0) \n of block " + target->window->displayText() + " already used.")
        << key;
  }
}

TEST_F(FlowChartViewTest, DraggingToAFedSinPulseOrInBoxHitsTheMaximumInputsOfOne) {
  Block* a = create("demotime");
  Block* b = create("float");
  for (const char* key : {"sin", "pulse", "in.sceneA.cameraZoom"}) {
    Block* target = create(key);
    connectByMouse(a, target);
    ASSERT_EQ(target->inputs.size(), 1u) << key;
    connectByMouse(b, target);
    EXPECT_EQ(target->inputs.size(), 1u) << key;
    EXPECT_EQ(lastMessage(), "Maximum inputs (1) \n of block " + target->window->displayText() + " already used.")
        << key;
  }
}

TEST_F(FlowChartViewTest, ConnectingAMulToItsOwnUpstreamIsNotPossible) {
  Block* s = create("sum");
  Block* m = create("mul");
  connectByMouse(s, m);
  ASSERT_EQ(m->inputs.size(), 1u);
  connectByMouse(m, s);
  EXPECT_TRUE(s->inputs.empty());
  EXPECT_EQ(lastMessage(), "Connection NOT possible!");
}

TEST_F(FlowChartViewTest, AMulFedTwiceFromOneSourceHasTwoCurvesAndCountsItTwice) {
  Block* f = create("float");
  setFloatValue(f, 3);
  Block* m = create("mul");
  connectByMouse(f, m);
  connectByMouse(f, m);
  EXPECT_EQ(m->inputs.size(), 2u);
  EXPECT_EQ(f->connections.size(), 2u);
  EXPECT_NE(f->connections.front()->pickName, f->connections.back()->pickName);
  EXPECT_EQ(evaluateBlock(m), 9);
}

TEST_F(FlowChartViewTest, APlainPressOfASourceBoxIsNoConnectionAttempt) {
  Block* f = create("float");
  EXPECT_EQ(press(f->window), 1);
  EXPECT_EQ(connectSourcePick, 0);
  Block* p = create("pulse");
  EXPECT_EQ(press(p->window), 1);
  EXPECT_EQ(connectSourcePick, p->window->pickName) << "a pulse leaves it set";
}

// ---- Values ------------------------------------------------------------------------------

TEST_F(FlowChartViewTest, AFloatValueDragOf100PixelsChangesTheValueBy1) {
  Block* f = create("float");
  setFloatValue(f, 0.5f);
  hold(inputKeyLeftShift, true);
  EXPECT_EQ(press(f->window), 0);
  hold(inputKeyLeftShift, false);
  EXPECT_EQ(dragMode, 1);
  mouseDeltaX = 100;
  f->window->onDrag(f->window);
  EXPECT_FLOAT_EQ(f->value, 1.5f);
  EXPECT_EQ(f->window->text, "1.5");
  mouseDeltaX = -50;
  f->window->onDrag(f->window);
  EXPECT_FLOAT_EQ(f->value, 0.0f);
}

TEST_F(FlowChartViewTest, TheValueWindowDragOf100PixelsChangesBy1AndOf200By32) {
  Block* p = create("pulse");
  EditorWindow* frame = p->window->propertiesWindow;
  ASSERT_NE(frame, nullptr);
  EditorWindow* raise = nullptr;
  for (EditorWindow* c : frame->children)
    if (c->caption == "Raise:\n") raise = c;
  ASSERT_NE(raise, nullptr);
  EXPECT_EQ(raise->text, "Raise:\n 0.25");
  EXPECT_EQ(raise->boundValue, &p->settings[0]);
  EXPECT_EQ(press(raise), 0);
  mouseDeltaX = 50;
  raise->onDrag(raise);
  EXPECT_FLOAT_EQ(p->settings[0], 0.75f);
  mouseDeltaX = 100;
  raise->onDrag(raise);
  EXPECT_FLOAT_EQ(p->settings[0], 1.25f);
  mouseDeltaX = 200;
  raise->onDrag(raise);
  EXPECT_FLOAT_EQ(p->settings[0], 32.25f);
  mouseDeltaX = -200;
  raise->onDrag(raise);
  EXPECT_FLOAT_EQ(p->settings[0], -31.75f);
  EXPECT_EQ(raise->text, "Raise:\n -31.75");
}

// ---- Pulse properties ------------------------------------------------------------------------

TEST_F(FlowChartViewTest, AShiftPressOpensThePulsePropertiesUnderTheBox) {
  Block* p = create("pulse");
  EditorWindow* frame = p->window->propertiesWindow;
  ASSERT_NE(frame, nullptr);
  EXPECT_FALSE(frame->visible);
  EXPECT_EQ(frame->parent, flowArea);
  EXPECT_EQ(frame->children.size(), 9u);
  p->window->x = 30;
  p->window->y = 100;
  hold(inputKeyLeftShift, true);
  EXPECT_EQ(press(p->window), 0);
  EXPECT_TRUE(frame->visible);
  EXPECT_EQ(frame->x, 30);
  EXPECT_EQ(frame->y, 100 - 150 - 16 - 5);
  EditorWindow* title = frame->children[0];
  EXPECT_EQ(title->displayText(), "Properties of PULSE0");
  EditorWindow* close = frame->children[1];
  EXPECT_EQ(close->text, "X");
  EXPECT_EQ(press(close), 1);
  EXPECT_FALSE(frame->visible);
}

TEST_F(FlowChartViewTest, DeletingAPulseWithOpenPropertiesDestroysThemToo) {
  Block* p = create("pulse");
  Block* q = create("pulse");
  EditorWindow* frame = p->window->propertiesWindow;
  EditorWindow* box = p->window;
  hold(inputKeyLeftShift, true);
  press(box);
  hold(inputKeyLeftShift, false);
  ASSERT_TRUE(frame->visible);
  hold(inputKeyDelete, true);
  EXPECT_EQ(press(box), 1);
  hold(inputKeyDelete, false);
  EXPECT_FALSE(hasWindow(box));
  EXPECT_FALSE(hasWindow(frame));
  EXPECT_EQ(pulseBlocks.size(), 1u);
  EXPECT_EQ(q->number, 0) << "the pulse behind it is renumbered";
  EXPECT_EQ(q->window->displayText(), "PULSE0");
  // Pick names stay the positions in the list.
  for (size_t i = 0; i < allWindows.size(); ++i) EXPECT_EQ(allWindows[i]->pickName, int(i) + 1);
}

TEST_F(FlowChartViewTest, DeletingABoxTakesItsConnectionsAlong) {
  Block* f = create("float");
  Block* s = create("sin");
  Block* sink = create("in.sceneA.cameraZoom");
  connectByMouse(f, s);
  connectByMouse(s, sink);
  hold(inputKeyDelete, true);
  press(s->window);
  hold(inputKeyDelete, false);
  EXPECT_TRUE(f->connections.empty());
  EXPECT_TRUE(f->outputs.empty());
  EXPECT_TRUE(sink->inputs.empty());
  EXPECT_EQ(sinBlocks.size(), 0u);
}

// ---- Layout ----------------------------------------------------------------------------------

TEST_F(FlowChartViewTest, ChartsAreLaidOutFromRightToLeftGrowingDownwards) {
  std::istringstream script(
      "parameter_defaults {\n}\npulses {\n}\n"
      "parameters {\n"
      " in.sceneA.cameraZoom = sum ( float ( 1 ) , sin ( demotime (  )  )  )  \n"
      " in.sceneB.cameraFOV = float ( 75 )  \n"
      "}\n");
  readScript(script);
  ASSERT_EQ(parameterSinks.size(), 2u);
  Block* sink = parameterSinks.front();
  Block* sum = sink->inputs.front();
  Block* one = sum->inputs.front();
  Block* sine = sum->inputs.back();
  Block* time = sine->inputs.front();
  EXPECT_EQ(sink->window->x, 150);
  EXPECT_EQ(sink->window->y, 0);
  EXPECT_EQ(sum->window->x, 150 - 140 - 80);
  EXPECT_EQ(sum->window->y, 0);
  EXPECT_EQ(one->window->x, sum->window->x - 22.5f - 80);
  EXPECT_EQ(one->window->y, 0);
  EXPECT_EQ(sine->window->x, one->window->x);
  EXPECT_EQ(sine->window->y, -50) << "row 0 + offset 1, placed with offset 1";
  EXPECT_EQ(time->window->x, sine->window->x - 22.5f - 80);
  EXPECT_EQ(time->window->y, -50 - 25);
  Block* second = parameterSinks.back();
  // The first chart used rows 0 to 2 (its deepest offset 2), and two rows lie between charts.
  EXPECT_EQ(second->window->y, -(2 + 2) * 25.0f);
}

TEST_F(FlowChartViewTest, TheVisibleFilterShowsOnlyTheChartsOfScenesOnScreen) {
  std::istringstream script(
      "parameter_defaults {\n}\npulses {\n}\n"
      "parameters {\n"
      " in.sceneA.cameraZoom = sin ( demotime (  )  )  \n"
      " in.sceneB.cameraFOV = float ( 75 )  \n"
      "}\n");
  readScript(script);
  Block* a = parameterSinks.front();
  Block* b = parameterSinks.back();
  activeSceneNames = {"sceneB"};
  toggleScenesFilterVisible(filterButtons[1]);
  EXPECT_FALSE(scenesFilterAll);
  EXPECT_FALSE(a->window->visible);
  EXPECT_FALSE(a->inputs.front()->window->visible);
  EXPECT_TRUE(b->window->visible);
  EXPECT_TRUE(b->inputs.front()->window->visible);
  EXPECT_EQ(b->window->y, 0) << "the shown chart takes the first row";
  EXPECT_EQ(filterButtons[1]->topColor.y, 0.4f);
  EXPECT_EQ(filterButtons[0]->topColor.y, 0.1f);
  toggleScenesFilterSelected(filterButtons[2]);
  EXPECT_FALSE(b->window->visible) << "nothing chooses scenes yet: all charts hidden";
  toggleScenesFilterSelected(filterButtons[2]);
  EXPECT_FALSE(scenesFilterAll || scenesFilterVisible || scenesFilterSelected);
  activeSceneNames.clear();
}

// ---- Parameter list ------------------------------------------------------------------------

TEST_F(FlowChartViewTest, WithSixEntriesOrFewerTheListIsNotReallyScrollable) {
  // "In" alone: the four in. entries of the two test scenes.
  toggleListFilterOut(filterButtons[4]);
  int shown = 0;
  for (EditorWindow* e : parameterEntries) shown += e->visible;
  EXPECT_EQ(shown, 4);
  EXPECT_EQ(parameterScrollKnob->height, 230);
  EXPECT_LE(parameterList->scrollY, 83);
  parameterScrollKnob->y = parameterScrollKnob->minY;
  scrollParameterListFromKnob(parameterScrollKnob);
  EXPECT_LE(parameterList->scrollY, 83);
}

TEST_F(FlowChartViewTest, ShownEntriesStack34Apart) {
  int n = 0;
  for (EditorWindow* e : parameterEntries) {
    ASSERT_TRUE(e->visible);
    EXPECT_EQ(e->y, -34.0f * float(n));
    ++n;
  }
  EXPECT_EQ(parameterList->maxScrollY, 34.0f * float(n));
  EXPECT_EQ(parameterScrollKnob->x, 160);
}

// ---- Drawing and picking the charts ----------------------------------------------------------

TEST_F(FlowChartViewTest, ACurveIsPickedByItsNameAndDeletedWithTheDeleteKey) {
  REQUIRE_GL(800, 600);
  toggleFlowScreen();
  Block* f = create("float");
  Block* sink = create("in.sceneA.cameraZoom");
  f->window->x = -200;
  sink->window->x = 100;
  connectByMouse(f, sink);
  ASSERT_EQ(f->connections.size(), 1u);
  const int name = f->connections.front()->pickName;
  EXPECT_GE(name, firstCurvePickName);
  drawWindows(nullptr);  // the curves take their points at a draw
  // Half way along the curve, at the height of the two boxes: x = 400 - 200 + 37.5 .. 400 + 100 - 140.
  Vector3 middle;
  f->connections.front()->curve.evaluate(0.5f, middle);
  mouseX = 400 + int(middle.x);
  mouseY = 300 - int(middle.y);
  EXPECT_EQ(pickAtMouse(), name);
  // A press on it with delete held removes the connection.
  mouseX = 400 + int(middle.x);
  EditorPointerResult r = editorPointerFrame(mouseX, mouseY, 0);
  (void)r;
  hold(inputKeyDelete, true);
  editorPointerFrame(mouseX, mouseY, 1);
  editorPointerFrame(mouseX, mouseY, 0);
  hold(inputKeyDelete, false);
  EXPECT_TRUE(f->connections.empty());
  EXPECT_TRUE(sink->inputs.empty());
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST_F(FlowChartViewTest, HidingTheFlowScreenHidesTheBoxes) {
  REQUIRE_GL(800, 600);
  toggleFlowScreen();
  Block* s = create("sin");
  s->window->x = 50;
  s->window->y = 40;
  mouseX = 450;
  mouseY = 260;
  EXPECT_EQ(pickAtMouse(), s->window->pickName);
  toggleFlowScreen();
  EXPECT_FALSE(flowScreen->visible);
  EXPECT_EQ(pickAtMouse(), 0);
}

// ---- The pulse graph ---------------------------------------------------------------------------

namespace {
std::vector<float> graphTimes;
float recordingCompute(const std::vector<float>& in, Block& block) {
  graphTimes.push_back(in.empty() ? -1 : in[0]);
  return computePulse(in, block);
}
}  // namespace

TEST_F(FlowChartViewTest, ThePulseGraphSamplesTheBlockOverItsTimeRange) {
  REQUIRE_GL(800, 600);
  toggleFlowScreen();
  Block* p = create("pulse");
  p->settings = {0.25f, 0.5f, 0.25f, 1, 2, 2};  // Raise, Up, Lower, Start, Repeats, Delta
  hold(inputKeyLeftShift, true);
  press(p->window);
  hold(inputKeyLeftShift, false);
  EditorWindow* graph = p->window->propertiesWindow->children.back();
  ASSERT_EQ(graph->customData, p);
  EXPECT_TRUE(graph->scrollable);
  p->compute = recordingCompute;
  graphTimes.clear();
  drawWindows(nullptr);
  // round(2 x 370) samples from Start over Delta x Repeats + Up + Raise + Lower + Start.
  ASSERT_EQ(graphTimes.size(), 740u);
  EXPECT_FLOAT_EQ(graphTimes.front(), 1);
  const float span = (2 * 2 + 0.5f + 0.25f + 0.25f + 1) - 1;
  EXPECT_NEAR(graphTimes.back(), 1 + 739.0f / 740 * span, 1e-4);
  // A middle drag on X shifts the range by a second per 100 pixels, on Y stretches it.
  graph->scrollX = 100;
  graph->scrollY = 100;
  graphTimes.clear();
  drawWindows(nullptr);
  ASSERT_FALSE(graphTimes.empty());
  EXPECT_FLOAT_EQ(graphTimes.front(), 0);
  EXPECT_NEAR(graphTimes.back(), (2 * 6 - 1 - 0) * 739.0f / 740, 1e-3);
  // The drawn curve: the graph's picture changes with the settings.
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  drawWindows(nullptr);
  std::vector<uint8_t> before = testgl::readPixels(0, 0, 800, 600);
  p->settings[5] = 0;  // Delta 0: a flat 0
  glClear(GL_COLOR_BUFFER_BIT);
  drawWindows(nullptr);
  std::vector<uint8_t> after = testgl::readPixels(0, 0, 800, 600);
  EXPECT_NE(before, after);
  EXPECT_TRUE(testgl::drainErrors().empty());
  p->compute = computePulse;
}
