// Tests of the --edit session's frame: F1, F3 and F10, the save and load
// keys, the parameter keys (reset, z/x selection, mouse left + move), and the
// script read again when the file changes on disk.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "EditorTestSetup.h"
#include "editor/EditorSession.h"
#include "support/GLTestContext.h"
#include "support/RunProgram.h"

using namespace editortest;

namespace {

class EditorSessionKeysTest : public ::testing::Test {
 protected:
  // A script file of each test's own: CTest runs these tests side by side.
  const std::string kScript = std::string(OSTRAVINE_BINARY_DIR) + "/editor-session-" +
                              ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".scr";

  void SetUp() override {
    startEditor();
    std::remove(kScript.c_str());
    startEditorSession(nullptr, kScript);
    for (Scene* s : testScenes()) {
      s->selectedParameter = 0;
      for (Parameter& p : s->parameters) {
        p.defaultValue = p.name == "cameraZoom" ? 1 : 75;  // as registered; a load may have rewritten them
        *p.value = p.defaultValue;
      }
    }
    frame();  // the first frame makes no edges
  }
  void TearDown() override { std::remove(kScript.c_str()); }

  void frame(int x = 0, int y = 0, unsigned buttons = 0) {
    EditorSessionFrame f;
    f.screenWidth = 800;
    f.screenHeight = 600;
    f.realSeconds = seconds += 0.04f;
    f.frameSeconds = 0.04f;
    f.mouseX = x;
    f.mouseY = y;
    f.mouseButtons = buttons;
    f.input = keys;
    f.scenesOnScreen = {testScenes()[1]};
    editorSessionFrame(f);
  }
  // A key down for one frame and up for the next.
  void tap(int code) {
    hold(code, true);
    frame();
    hold(code, false);
    frame();
  }
  float seconds = 0;
  TestScene& sceneB() { return *static_cast<TestScene*>(testScenes()[1]); }
};

using testrun::readFile;

}  // namespace

TEST_F(EditorSessionKeysTest, F3AndF1ShowTheirScreensAndF10SwitchesEditMode) {
  REQUIRE_GL(800, 600);
  EXPECT_TRUE(editorEditMode());
  tap(inputKeyF1 + 2);
  EXPECT_TRUE(flowScreen->visible);
  EXPECT_TRUE(parameterPanel->visible);
  tap(inputKeyF1);
  EXPECT_TRUE(infoScreen->visible);
  EXPECT_FALSE(flowScreen->visible);
  tap(inputKeyF1 + 9);
  EXPECT_FALSE(editorEditMode());
  tap(inputKeyF1 + 9);
  EXPECT_TRUE(editorEditMode());
  tap(inputKeyF1);
  EXPECT_FALSE(infoScreen->visible);
  // Held keys act once.
  hold(inputKeyF1 + 2, true);
  frame();
  frame();
  frame();
  hold(inputKeyF1 + 2, false);
  frame();
  EXPECT_TRUE(flowScreen->visible);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST_F(EditorSessionKeysTest, ControlShiftSSavesAndControlShiftLLoads) {
  REQUIRE_GL(800, 600);
  Block* f = create("float");
  setFloatValue(f, 2.5f);
  Block* sink = create("in.sceneA.cameraFOV");
  connectByMouse(f, sink);
  hold(inputKeyLeftControl, true);
  hold(inputKeyLeftShift, true);
  tap('s');
  const std::string saved = readFile(kScript);
  EXPECT_NE(saved.find(" in.sceneA.cameraFOV = float ( 2.5 )  \n"), std::string::npos) << saved;
  EXPECT_EQ(lastMessage(), "Saved " + kScript);
  hold(inputKeyLeftControl, false);
  hold(inputKeyLeftShift, false);
  frame();
  clearAllBlocks();
  EXPECT_TRUE(parameterSinks.empty());
  hold(inputKeyLeftControl, true);
  hold(inputKeyLeftShift, true);
  tap('l');
  hold(inputKeyLeftControl, false);
  hold(inputKeyLeftShift, false);
  ASSERT_EQ(parameterSinks.size(), 1u);
  EXPECT_EQ(parameterSinks.front()->window->x, 150) << "laid out after the load";
  EXPECT_EQ(parameterSinks.front()->inputs.front()->value, 2.5f);
}

TEST_F(EditorSessionKeysTest, TheScriptIsReadAgainWhenTheFileChangesOnDisk) {
  REQUIRE_GL(800, 600);
  {
    std::ofstream out(kScript);
    out << "parameter_defaults {\n sceneB.cameraZoom = ( 3 )\n}\npulses {\n}\nparameters {\n"
           " in.sceneB.cameraFOV = sin ( demotime (  )  )  \n}\n";
  }
  frame();
  ASSERT_EQ(parameterSinks.size(), 1u);
  EXPECT_EQ(sceneB().zoom, 3);
  // Unchanged: not read again (the blocks stay the same objects).
  Block* sink = parameterSinks.front();
  frame();
  EXPECT_EQ(parameterSinks.front(), sink);
  // Changed (a different size is enough, whatever the clock's resolution).
  {
    std::ofstream out(kScript);
    out << "parameter_defaults {\n sceneB.cameraZoom = ( 4 )\n}\npulses {\n}\nparameters {\n}\n";
  }
  frame();
  EXPECT_TRUE(parameterSinks.empty());
  EXPECT_EQ(sceneB().zoom, 4);
}

TEST_F(EditorSessionKeysTest, ZAndXSelectAParameterAndControlRResetsIt) {
  REQUIRE_GL(800, 600);
  EXPECT_EQ(selectedParameterOf({&sceneB()})->name, "cameraZoom");
  tap('x');
  EXPECT_EQ(sceneB().selectedParameter, 1);
  tap('x');
  EXPECT_EQ(sceneB().selectedParameter, 1) << "stays on the last";
  tap('z');
  tap('z');
  EXPECT_EQ(sceneB().selectedParameter, 0);
  tap('x');
  sceneB().fieldOfView = 10;
  sceneB().zoom = 7;
  hold(inputKeyLeftControl, true);
  tap('r');
  EXPECT_EQ(sceneB().fieldOfView, 75);
  EXPECT_EQ(sceneB().zoom, 7);
  hold(inputKeyLeftShift, true);
  tap('r');
  EXPECT_EQ(sceneB().zoom, 1);
  hold(inputKeyLeftShift, false);
  hold(inputKeyLeftControl, false);
  frame();
}

TEST_F(EditorSessionKeysTest, MouseLeftAndMoveOnNoWindowChangesTheSelectedParameterByItsStep) {
  REQUIRE_GL(800, 600);
  sceneB().selectedParameter = 1;  // cameraFOV, step 0.25
  frame(100, 100, 0);
  frame(100, 100, 1);
  frame(120, 100, 1);
  frame(110, 90, 1);
  frame(110, 90, 0);
  EXPECT_FLOAT_EQ(sceneB().fieldOfView, 75 + 10 * 0.25f);
  // On a window the press is the window's.
  tap(inputKeyF1 + 2);
  frame(400, 300, 0);
  frame(400, 300, 1);
  frame(450, 300, 1);
  frame(450, 300, 0);
  EXPECT_FLOAT_EQ(sceneB().fieldOfView, 75 + 10 * 0.25f);
}
