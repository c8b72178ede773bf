// Tests of the settings dialog's rules, without any window: the check marks
// and settings at opening, the mode list, the preselection of 800x600 and
// 800x576, the toggles, the buttons, and the choice of a size with its wide
// test at 1.34.
#include <gtest/gtest.h>

#include "core/Globals.h"
#include "core/SettingsDialog.h"
#include "foundation/Capabilities.h"

namespace {

std::vector<DisplayMode> modes(std::initializer_list<DisplayMode> list) { return list; }

class SettingsDialogTest : public ::testing::Test {
 protected:
  // The settings as at the start of a run.
  void SetUp() override {
    screenWidth = 800;
    screenHeight = 600;
    fullscreen = true;
    audioEnabled = true;
    exactPixels = true;
    wideDisplay = false;
    useFramebufferObjects = false;
  }
  SettingsDialogState state;
};

}  // namespace

TEST_F(SettingsDialogTest, TheCheckMarksComeFromTheSettingsAndFramebufferObjectsAreCleared) {
  fullscreen = false;
  exactPixels = true;
  audioEnabled = false;
  useFramebufferObjects = true;
  openSettingsDialog(state, {});
  EXPECT_FALSE(state.fullscreenChecked);
  EXPECT_TRUE(state.exactPixelsChecked);
  EXPECT_FALSE(state.audioChecked);
  EXPECT_FALSE(useFramebufferObjects);
}

TEST_F(SettingsDialogTest, TheListHas32BitModesOnlyWithoutPaddingInEnumerationOrderEachSizeOnce) {
  // The same size at two frequencies comes twice from the display.
  const auto list = resolutionListOf(modes({{1024, 768, 32},
                                            {640, 480, 16},
                                            {640, 480, 32},
                                            {1024, 768, 32},
                                            {320, 200, 32},
                                            {1280, 1024, 24},
                                            {800, 600, 32}}));
  EXPECT_EQ(list, (std::vector<std::string>{"1024x768", "640x480", "320x200", "800x600"}));
}

TEST_F(SettingsDialogTest, EightHundredBySixHundredIsPreselectedAndIsNotWide) {
  screenWidth = 1024;
  screenHeight = 768;
  wideDisplay = true;
  openSettingsDialog(state, modes({{1024, 768, 32}, {800, 600, 32}, {640, 480, 32}}));
  EXPECT_EQ(state.selected, 1);
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(screenHeight, 600);
  EXPECT_FALSE(wideDisplay);
}

TEST_F(SettingsDialogTest, WithBothPreselectionsTheSecondWins) {
  openSettingsDialog(state, modes({{800, 576, 32}, {800, 600, 32}, {640, 480, 32}}));
  EXPECT_EQ(state.selected, 0);
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(screenHeight, 576);
  EXPECT_TRUE(wideDisplay);
}

TEST_F(SettingsDialogTest, WithNeitherSizeNothingIsSelectedAndTheSettingsStand) {
  screenWidth = 1024;
  screenHeight = 768;
  wideDisplay = true;
  openSettingsDialog(state, modes({{1280, 1024, 32}, {800, 600, 16}, {640, 480, 32}}));
  EXPECT_EQ(state.selected, -1);
  EXPECT_EQ(screenWidth, 1024);
  EXPECT_EQ(screenHeight, 768);
  EXPECT_TRUE(wideDisplay);
  // Nothing selected: a change notification of the list does nothing.
  EXPECT_EQ(settingsDialogCommand(state, settingsResolutionList, notificationSelectionChanged), -1);
  EXPECT_EQ(screenWidth, 1024);
}

TEST_F(SettingsDialogTest, ChoosingEightHundredBySixHundredAfterThePreselectedWideSizeClearsWide) {
  openSettingsDialog(state, modes({{800, 600, 32}, {800, 576, 32}}));
  ASSERT_TRUE(wideDisplay);
  EXPECT_EQ(selectResolution(state, 0), -1);
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(screenHeight, 600);
  EXPECT_FALSE(wideDisplay);
}

TEST_F(SettingsDialogTest, TwelveEightyByTenTwentyFourIsNotWideAndTwelveEightyByEightHundredIs) {
  chooseResolution("1280x1024");
  EXPECT_FALSE(wideDisplay);
  EXPECT_EQ(screenWidth, 1280);
  EXPECT_EQ(screenHeight, 1024);
  chooseResolution("1280x800");
  EXPECT_TRUE(wideDisplay);
  EXPECT_EQ(screenHeight, 800);
}

TEST_F(SettingsDialogTest, ARatioOfExactlyOnePointThreeFourIsNotWide) {
  wideDisplay = true;
  chooseResolution("134x100");
  EXPECT_FALSE(wideDisplay);
  wideDisplay = true;
  chooseResolution("670x500");
  EXPECT_FALSE(wideDisplay);
  chooseResolution("1341x1000");
  EXPECT_TRUE(wideDisplay);
}

TEST_F(SettingsDialogTest, AFirstNumberOfZeroDoesNothing) {
  wideDisplay = true;
  chooseResolution("0x480");
  chooseResolution("x");
  chooseResolution("");
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(screenHeight, 600);
  EXPECT_TRUE(wideDisplay);
}

TEST_F(SettingsDialogTest, OnlyTheFirstThirtyCharactersOfTheTextAreRead) {
  // 27 blanks, then the size: the height lies beyond the 30th character.
  chooseResolution(std::string(27, ' ') + "640x480");
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(screenHeight, 600);
  chooseResolution(std::string(22, ' ') + "640x480");
  EXPECT_EQ(screenWidth, 640);
  EXPECT_EQ(screenHeight, 480);
}

TEST_F(SettingsDialogTest, CheckBoxesToggleTheirSettingOnAnyNotification) {
  openSettingsDialog(state, {});
  EXPECT_EQ(settingsDialogCommand(state, settingsFullscreenBox, 5), -1);
  EXPECT_FALSE(fullscreen);
  EXPECT_EQ(settingsDialogCommand(state, settingsExactPixelsBox, 0), -1);
  EXPECT_FALSE(exactPixels);
  EXPECT_EQ(settingsDialogCommand(state, settingsAudioBox, 1), -1);
  EXPECT_FALSE(audioEnabled);
  // A notification that is no click leaves the mark as it was: the setting
  // and the mark part ways.
  EXPECT_TRUE(state.fullscreenChecked);
}

TEST_F(SettingsDialogTest, AClickFlipsTheMarkAndTheSettingTogether) {
  openSettingsDialog(state, {});
  EXPECT_EQ(clickSettingsControl(state, settingsAudioBox), -1);
  EXPECT_FALSE(state.audioChecked);
  EXPECT_FALSE(audioEnabled);
  EXPECT_EQ(clickSettingsControl(state, settingsAudioBox), -1);
  EXPECT_TRUE(state.audioChecked);
  EXPECT_TRUE(audioEnabled);
  EXPECT_EQ(clickSettingsControl(state, settingsExactPixelsBox), -1);
  EXPECT_FALSE(state.exactPixelsChecked);
  EXPECT_FALSE(exactPixels);
  // The frames are no buttons.
  EXPECT_EQ(clickSettingsControl(state, settingsGroupBox), -1);
  EXPECT_EQ(clickSettingsControl(state, settingsBitmapFrame), -1);
}

TEST_F(SettingsDialogTest, BeginGivesOneAndEndZeroOnAClickOnly) {
  EXPECT_EQ(settingsDialogCommand(state, settingsBeginButton, notificationClicked), 1);
  EXPECT_EQ(settingsDialogCommand(state, settingsEndButton, notificationClicked), 0);
  EXPECT_EQ(settingsDialogCommand(state, settingsBeginButton, 5), -1);
  EXPECT_EQ(settingsDialogCommand(state, settingsEndButton, 5), -1);
  EXPECT_EQ(clickSettingsControl(state, settingsBeginButton), 1);
  EXPECT_EQ(clickSettingsControl(state, settingsEndButton), 0);
  EXPECT_EQ(settingsDialogCommand(state, 4711, 0), -1);
}

TEST_F(SettingsDialogTest, TheListActsOnASelectionChangeOnly) {
  openSettingsDialog(state, modes({{1280, 800, 32}}));
  state.selected = 0;
  EXPECT_EQ(settingsDialogCommand(state, settingsResolutionList, notificationClicked), -1);
  EXPECT_EQ(screenWidth, 800);
  EXPECT_EQ(settingsDialogCommand(state, settingsResolutionList, notificationSelectionChanged), -1);
  EXPECT_EQ(screenWidth, 1280);
  EXPECT_TRUE(wideDisplay);
  EXPECT_EQ(selectResolution(state, 3), -1) << "out of range: nothing";
  EXPECT_EQ(state.selected, 0);
}

TEST_F(SettingsDialogTest, TheListIsSearchedFromTheStartForAnEntryBeginningWithTheText) {
  const std::vector<std::string> list{"1024x768", "800X600", "800x600"};
  EXPECT_EQ(findResolution(list, "800x600"), 1) << "case is ignored; the first match wins";
  EXPECT_EQ(findResolution(list, "1024"), 0);
  EXPECT_EQ(findResolution(list, "800x576"), -1);
}

TEST_F(SettingsDialogTest, TheLayoutIsTheDialogUnitsInPixels) {
  EXPECT_EQ(settingsDialogPixelWidth(), 342);
  EXPECT_EQ(settingsDialogPixelHeight(), 223);
  ASSERT_NE(settingsControl(settingsExactPixelsBox), nullptr);
  EXPECT_STREQ(settingsControl(settingsExactPixelsBox)->text, "Exact pixels");
  EXPECT_EQ(settingsControl(4711), nullptr);
  const int order[8] = {1003, 1012, 1005, 1004, 1007, 1006, 1009, 1011};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(settingsControls[i].id, order[i]);
}

TEST_F(SettingsDialogTest, AModeListIsReadFromText) {
  std::vector<DisplayMode> m;
  std::string error;
  ASSERT_TRUE(parseDisplayModes("1280x800,640x480x16", m, error)) << error;
  ASSERT_EQ(m.size(), 2u);
  EXPECT_EQ(m[0].width, 1280);
  EXPECT_EQ(m[0].height, 800);
  EXPECT_EQ(m[0].bitsPerPixel, 32);
  EXPECT_EQ(m[1].bitsPerPixel, 16);
  for (const char* bad : {"", "800", "800x", "x600", "800x600x", "800x0", "800x600,", "a00x600", "99999x600",
                          "800x600x32x1", " 800x600"}) {
    std::vector<DisplayMode> kept = m;
    EXPECT_FALSE(parseDisplayModes(bad, kept, error)) << bad;
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(kept.size(), 2u) << "a refused list changes nothing";
  }
}
