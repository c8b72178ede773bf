// Tests of the editor's screens: every window built at start in its order
// and place, the templates that new blocks take their looks from, panel
// folding, the help text, the F1/F3 screens, the parameter list filters, and
// reference pictures of the flow chart screen and the quick info screen
// (drawn at 800 x 600 with the production's font, compared at half size:
// mean difference 2, at most 1 % of pixels off by more than 48).
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <sstream>

#include "EditorTestSetup.h"
#include "render/Font.h"
#include "support/GLTestContext.h"
#include "support/ImageCompare.h"
#include "texture/TextureStore.h"

using namespace editortest;

namespace {

class EditorScreensTest : public ::testing::Test {
 protected:
  void SetUp() override { startEditor(); }
};

EditorWindow* childWithText(EditorWindow* parent, const std::string& text) {
  for (EditorWindow* c : parent->children)
    if (c->text == text) return c;
  return nullptr;
}

}  // namespace

TEST_F(EditorScreensTest, AfterStartEveryWindowExistsInTheOrderOfTheScreens) {
  // 3 of the flow screen, 4 panels with their titles, 10 tools, 6 filter
  // buttons, the list and its knob, 8 parameter entries, 5 of the info screen.
  EXPECT_EQ(allWindows.size(), 3u + 8u + 10u + 6u + 2u + 8u + 5u);
  EXPECT_EQ(allWindows[0], flowScreen);
  EXPECT_EQ(allWindows[1], flowTitle);
  EXPECT_EQ(allWindows[2], flowArea);
  EXPECT_EQ(allWindows[3], filterPanel);
  EXPECT_EQ(allWindows.back(), infoScrollDown);
  EXPECT_EQ(flowTitle->text, "F3: Param Flow Charts Edit");
  EXPECT_EQ(flowTitle->y, 260);
  EXPECT_EQ(flowArea->parent, flowScreen);
  EXPECT_TRUE(flowArea->zoomable);
  EXPECT_TRUE(flowArea->scrollable);
  EXPECT_EQ(flowArea->width, 700);
  EXPECT_EQ(flowScreen->width, 750);
  EXPECT_EQ(topLevelWindows.size(), 6u) << "flow screen, four panels, info screen";
  EXPECT_EQ(selectedWindow, nullptr);
  EXPECT_EQ(infoTitle->text, "F1: quick info screen");
  EXPECT_EQ(infoScrollDown->textYAxis.y, 1) << "the V stands on its head";
  EXPECT_EQ(flowScreen->topAlpha, 0.5f);
  EXPECT_EQ(flowScreen->bottomAlpha, 0.85f);
}

TEST_F(EditorScreensTest, EveryBlockKindAndParameterHasItsTemplateWindow) {
  for (const char* key : {"float", "demotime", "sum", "mul", "sin", "pulse", "in.sceneA.cameraZoom",
                          "out.sceneA.cameraZoom", "in.sceneB.cameraFOV", "out.sceneB.cameraFOV"}) {
    BlockTemplate* t = findBlockTemplate(key);
    ASSERT_NE(t, nullptr) << key;
    ASSERT_NE(t->window, nullptr) << key;
    EXPECT_EQ(t->window->key, key);
    EXPECT_EQ(t->pickName, t->window->pickName);
  }
  EXPECT_EQ(findBlockTemplate("demotime")->boundValue, &demoSeconds);
  EditorWindow* entry = windowWithKey("out.sceneB.cameraFOV");
  EXPECT_EQ(entry->text, "out.sceneB.\ncameraFOV");
  EXPECT_EQ(entry->boundValue, &static_cast<TestScene*>(testScenes()[1])->fieldOfView);
  EXPECT_EQ(entry->width, 275);
  // The four inert entries have no press handler.
  for (const char* key : {"timestep", "scenetime", "scenestart", "sceneend"}) {
    ASSERT_NE(windowWithKey(key), nullptr) << key;
    EXPECT_EQ(windowWithKey(key)->onPress, nullptr) << key;
  }
  EXPECT_EQ(windowWithKey("float")->textPosition.y, 0);
  EXPECT_EQ(windowWithKey("sum")->textPosition.y, 4);
}

TEST_F(EditorScreensTest, PanelsStartFoldedWithTheirTitlesInPlace) {
  // The filter panel: unfolded 150 high at H/2 - 165 = 135; folded 25 high,
  // raised by 60, scrolled by -60, so its title at (0, 60) stays at 195.
  EXPECT_EQ(filterPanel->height, 25);
  EXPECT_EQ(filterPanel->y, 195);
  EXPECT_EQ(filterPanel->scrollY, -60);
  EditorWindow* title = childWithText(filterPanel, "Flow Chart Show Filters");
  ASSERT_NE(title, nullptr);
  EXPECT_EQ(title->textColor.x, 0.5f);
  EXPECT_EQ(parameterPanel->y, 98 + 133);
}

TEST_F(EditorScreensTest, APanelFoldedTwiceStandsWhereItStood) {
  EditorWindow* title = childWithText(parameterPanel, "Add Parameter");
  ASSERT_NE(title, nullptr);
  const float x = parameterPanel->x, y = parameterPanel->y, h = parameterPanel->height;
  EXPECT_EQ(press(title), 0);
  EXPECT_EQ(parameterPanel->height, 296);
  EXPECT_EQ(parameterPanel->y, 98);
  EXPECT_EQ(parameterPanel->scrollY, 0);
  EXPECT_EQ(title->textColor.x, 1);
  EXPECT_EQ(title->topColor.x, 0.5f);
  EXPECT_EQ(togglePanelFold(parameterPanel, title), 0);
  EXPECT_EQ(parameterPanel->x, x);
  EXPECT_EQ(parameterPanel->y, y);
  EXPECT_EQ(parameterPanel->height, h);
  EXPECT_EQ(parameterPanel->scrollY, -135);
}

TEST_F(EditorScreensTest, WithInAndOutOffTheListIsEmpty) {
  toggleListFilterIn(filterButtons[3]);
  toggleListFilterOut(filterButtons[4]);
  for (EditorWindow* e : parameterEntries) EXPECT_FALSE(e->visible);
  EXPECT_EQ(parameterScrollKnob->height, 230);
  EXPECT_EQ(parameterList->scrollY, 83);
  EXPECT_EQ(filterButtons[3]->topColor.y, 0.1f);
}

TEST_F(EditorScreensTest, TheVisibleListFilterKeepsTheEntriesOfScenesOnScreen) {
  activeSceneNames = {"sceneA"};
  toggleListFilterVisible(filterButtons[5]);
  for (EditorWindow* e : parameterEntries)
    EXPECT_EQ(e->visible, e->text.find("sceneA") != std::string::npos) << e->text;
  activeSceneNames.clear();
}

TEST_F(EditorScreensTest, F1AndF3ShowTheirScreensAndExcludeEachOther) {
  EXPECT_FALSE(flowScreen->visible);
  EXPECT_FALSE(infoScreen->visible);
  toggleFlowScreen();
  EXPECT_TRUE(flowScreen->visible);
  EXPECT_TRUE(filterPanel->visible && sourcePanel->visible && functionPanel->visible && parameterPanel->visible);
  toggleInfoScreen();
  EXPECT_TRUE(infoScreen->visible);
  EXPECT_FALSE(flowScreen->visible);
  EXPECT_FALSE(parameterPanel->visible);
  toggleInfoScreen();
  EXPECT_FALSE(infoScreen->visible);
}

TEST_F(EditorScreensTest, TheHelpTextIsTheDefinitionOfTheKeys) {
  const std::string& help = helpText();
  EXPECT_EQ(help.rfind("F1:\n this info\n\nF2:\n scenes & timeline (TBD)\n\n", 0), 0u);
  EXPECT_NE(help.find("left ctrl + left shift + S:\n save all modifications to flow charts\n"), std::string::npos);
  EXPECT_NE(help.find("modify flow chart value or open \n it's editing window"), std::string::npos);
  EXPECT_NE(help.find("arrows left/right:\n rewind timeline slowly \n\n"), std::string::npos);
  const std::string end = "mouse right on the editing area:\n zoom flow charts in/out\n\n";
  EXPECT_EQ(help.substr(help.size() - end.size()), end);
  EXPECT_EQ(infoText->text, help);
  EXPECT_TRUE(infoText->listScroll);
}

TEST_F(EditorScreensTest, TheInfoScrollButtonsScrollByFrameTime) {
  infoText->scrollY = 0;
  editorFrameSeconds = 0.5f;
  infoScrollUp->onDrag(infoScrollUp);
  EXPECT_EQ(infoText->scrollY, 100);
  infoScrollDown->onDrag(infoScrollDown);
  EXPECT_EQ(infoText->scrollY, 0);
  EXPECT_EQ(press(infoScrollUp), 0) << "the press itself does nothing and moves nothing";
}

// ---- Reference pictures -----------------------------------------------------------------------

namespace {

Font* productionFont() {
  static Font* font = nullptr;
  if (!font) {
    TextureStore* store = new TextureStore;
    if (store->loadTexture("./images/fonge3bb.png", "basicOutputFont", nullptr, nullptr, false, {}, 1.0f, 0, true) != 0)
      return nullptr;
    TextureRecord& r = store->findTextureRecord("basicOutputFont");
    r.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    const float W = float(r.width), H = float(r.height);
    font = new Font(store, FontAtlas{"basicOutputFont", 32, 16, 14, 58 / W, 54 / H, 39 / W, 30 / H, 80 / W,
                                     58.5f / H});
  }
  return font;
}

// Draws the windows over a dark picture and compares the half-size picture.
void compareScreen(const std::string& name) {
  glViewport(0, 0, 800, 600);
  glClearColor(0.05f, 0.08f, 0.12f, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  drawWindows(nullptr);
  EXPECT_TRUE(testgl::drainErrors().empty());
  std::vector<uint8_t> full = testgl::readPixels(0, 0, 800, 600);
  testimg::Image half;
  half.width = 400;
  half.height = 300;
  half.rgba.resize(400 * 300 * 4);
  for (int y = 0; y < 300; ++y)
    for (int x = 0; x < 400; ++x)
      for (int c = 0; c < 4; ++c) {
        int sum = 0;
        for (int dy = 0; dy < 2; ++dy)
          for (int dx = 0; dx < 2; ++dx) sum += full[size_t(((2 * y + dy) * 800 + 2 * x + dx) * 4 + c)];
        half.rgba[size_t((y * 400 + x) * 4 + c)] = c == 3 ? 255 : uint8_t(sum / 4);
      }
  const std::string actual = std::string(OSTRAVINE_BINARY_DIR) + "/" + name;
  ASSERT_TRUE(testimg::writePng(actual, half));
  testimg::Comparison c = testimg::compareToReference(actual, name);
  EXPECT_TRUE(c.passed) << c.message;
}

}  // namespace

TEST_F(EditorScreensTest, FlowChartScreenPicture) {
  REQUIRE_GL(800, 600);
  editorFont = productionFont();
  ASSERT_NE(editorFont, nullptr) << "the build writes ./images/fonge3bb.png into the run directory";
  std::istringstream script(
      "parameter_defaults {\n}\n"
      "pulses {\n"
      " pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 )\n"
      "}\n"
      "parameters {\n"
      " in.sceneA.cameraFOV = sum ( float ( 75 ) , mul ( float ( 5 ) , pulse[ 0 ] ( demotime (  )  )  )  )  \n"
      " in.sceneB.cameraZoom = sin ( out.sceneA.cameraFOV (  )  )  \n"
      "}\n");
  readScript(script);
  toggleFlowScreen();
  for (EditorWindow* panel : {sourcePanel, functionPanel})
    togglePanelFold(panel, panel->children[0]);
  // The charts reach past the area's left edge: scrolled right, as by a middle drag.
  flowArea->scrollX = 110;
  // The second chart's wide out. box stands over the first chart's left end: moved down, as by a left drag.
  for (Block* b : parameterSinks)
    if (b->kindName == "in.sceneB.cameraZoom") {
      b->window->y -= 40;
      b->inputs.front()->window->y -= 40;
      b->inputs.front()->inputs.front()->window->y -= 40;
    }
  compareScreen("editor_flow_screen.png");
  for (EditorWindow* panel : {sourcePanel, functionPanel})
    togglePanelFold(panel, panel->children[0]);
  editorFont = nullptr;
}

TEST_F(EditorScreensTest, QuickInfoScreenPicture) {
  REQUIRE_GL(800, 600);
  editorFont = productionFont();
  ASSERT_NE(editorFont, nullptr);
  toggleInfoScreen();
  infoText->scrollY = 0;
  compareScreen("editor_info_screen.png");
  editorFont = nullptr;
}
