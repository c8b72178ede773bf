// Tests of the settings dialog's windows: the controls at their dialog units
// in pixels, each picked where it is drawn (in a GL window of the dialog's
// size), the dropped list over the other controls, and the check marks and
// the chosen size following the state.
#include <GL/glew.h>
#include <gtest/gtest.h>

#include "editor/EditorWindow.h"
#include "editor/SettingsDialogWindow.h"
#include "support/GLTestContext.h"

namespace {

class SettingsDialogWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    while (!allWindows.empty()) destroyWindow(allWindows.back());
    editorScreenWidth = settingsDialogPixelWidth();
    editorScreenHeight = settingsDialogPixelHeight();
    editorFont = nullptr;
    state.resolutions = {"1280x1024", "1280x800", "1024x768", "800x600", "800x576", "640x480", "320x240",
                         "320x200", "256x192"};
    state.selected = 4;
    state.fullscreenChecked = true;
    state.exactPixelsChecked = false;
    state.audioChecked = true;
    windows = buildSettingsDialogWindows(state);
  }
  void TearDown() override { destroySettingsDialogWindows(windows); }

  // The control whose window (or a child of it) is under a point of the
  // dialog, from its top left; 0 for none, -2 for the dropped list.
  int controlAt(float x, float y) {
    mouseX = int(x);
    mouseY = int(y);
    for (EditorWindow* w = pickWindow(pickAtMouse()); w; w = w->parent) {
      for (size_t i = 0; i < windows.controls.size(); ++i)
        if (windows.controls[i] == w) return windows.controlIds[i];
      if (w == windows.dropList) return -2;
    }
    return 0;
  }
  static float middleX(const PixelRect& r) { return r.left + r.width / 2; }
  static float middleY(const PixelRect& r) { return r.top + r.height / 2; }

  SettingsDialogState state;
  SettingsDialogWindows windows;
};

}  // namespace

TEST_F(SettingsDialogWindowTest, ControlsStandAtTheirDialogUnitsInPixels) {
  const PixelRect begin = settingsControlPixels(settingsBeginButton);
  EXPECT_FLOAT_EQ(begin.left, 3);
  EXPECT_FLOAT_EQ(begin.top, 196.625f);
  EXPECT_FLOAT_EQ(begin.width, 165);
  EXPECT_FLOAT_EQ(begin.height, 21.125f);
  // The closed list is one row high.
  const PixelRect list = settingsControlPixels(settingsResolutionList);
  EXPECT_FLOAT_EQ(list.left, 90);
  EXPECT_FLOAT_EQ(list.top, 71.5f);
  EXPECT_FLOAT_EQ(list.height, 13 * 1.625f);
  ASSERT_EQ(windows.controls.size(), 8u);
  // The window of "Begin": centred from the screen centre, Y upwards.
  EXPECT_FLOAT_EQ(windows.controls[3]->x, 3 + 82.5f - 171);
  EXPECT_FLOAT_EQ(windows.controls[3]->y, 112 - 196.625f - 21.125f / 2);
  EXPECT_EQ(windows.controls[3]->text, "Begin");
  EXPECT_EQ(windows.controls[4]->text, "End");
  EXPECT_EQ(windows.controls[6]->text, "Exact pixels");
  EXPECT_FALSE(windows.controls[0]->visible) << "the second bitmap's frame shows nothing";
}

TEST_F(SettingsDialogWindowTest, TheMarksAndTheChosenSizeFollowTheState) {
  ASSERT_EQ(windows.checkMarks.size(), 3u);
  EXPECT_EQ(windows.checkMarkIds, (std::vector<int>{settingsFullscreenBox, settingsExactPixelsBox, settingsAudioBox}));
  EXPECT_TRUE(windows.checkMarks[0]->visible);
  EXPECT_FALSE(windows.checkMarks[1]->visible);
  EXPECT_TRUE(windows.checkMarks[2]->visible);
  EXPECT_EQ(windows.listField->text, "800x576");
  EXPECT_EQ(windows.entries.size(), 9u);
  EXPECT_FALSE(windows.dropList->visible);
  state.exactPixelsChecked = true;
  state.selected = -1;
  refreshSettingsDialogWindows(windows, state);
  EXPECT_TRUE(windows.checkMarks[1]->visible);
  EXPECT_EQ(windows.listField->text, "");
}

TEST_F(SettingsDialogWindowTest, EachControlIsPickedWhereItIsDrawn) {
  REQUIRE_GL(342, 223);
  for (int id : {settingsResolutionList, settingsBeginButton, settingsEndButton, settingsFullscreenBox,
                 settingsExactPixelsBox, settingsAudioBox}) {
    const PixelRect r = settingsControlPixels(id);
    EXPECT_EQ(controlAt(middleX(r), middleY(r)), id) << id;
    // Just inside the left edge too (the check boxes' own boxes stand there).
    EXPECT_EQ(controlAt(r.left + 2, middleY(r)), id) << id;
  }
  // Between the check boxes lies the group box's frame; above the list, nothing.
  EXPECT_EQ(controlAt(141, 115), settingsGroupBox);
  EXPECT_EQ(controlAt(171, 30), 0);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST_F(SettingsDialogWindowTest, TheDroppedListLiesOverTheCheckBoxesAndShowsSevenRows) {
  REQUIRE_GL(342, 223);
  windows.dropList->visible = true;
  const PixelRect exact = settingsControlPixels(settingsExactPixelsBox);
  EXPECT_EQ(controlAt(middleX(exact), middleY(exact)), -2);
  EXPECT_FLOAT_EQ(windows.dropList->height, 7 * settingsListRowHeight + 2);
  EXPECT_FLOAT_EQ(windows.dropList->maxScrollY, 2 * settingsListRowHeight) << "nine sizes, seven shown";
  // The second row is the second entry.
  const PixelRect list = settingsControlPixels(settingsResolutionList);
  mouseX = int(list.left + 40);
  mouseY = int(list.top + list.height + 1 + 1.5f * settingsListRowHeight);
  EXPECT_EQ(pickWindow(pickAtMouse()), windows.entries[1]);
  // Scrolled by two rows, the eighth entry stands at the sixth row.
  windows.dropList->scrollY = 2 * settingsListRowHeight;
  mouseY = int(list.top + list.height + 1 + 5.5f * settingsListRowHeight);
  EXPECT_EQ(pickWindow(pickAtMouse()), windows.entries[7]);
  EXPECT_TRUE(testgl::drainErrors().empty());
}
