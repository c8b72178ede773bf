// The settings dialog through the real program: --settings opens it before
// the display, on a test display of its own driven with xdotool
// (tests/production/settings_dialog.sh) and with the mode list of
// OSTRAVINE_DISPLAY_MODES. A size chosen in the dropped list and a check box
// clicked reach the production's start-up; the arrow keys and return do the
// same; "End" ends the program with status 0 before any display opens; the
// dialog's picture matches its reference. Without --settings nothing
// of the dialog appears, and a damaged mode list is refused with a message.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace {

using testrun::readFile;

bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

// Runs the named runs of the session in a work folder of the test's own
// (CTest runs the tests side by side). Gives the folder.
std::string session(const std::string& runs) {
  const std::string work = std::string(OSTRAVINE_BINARY_DIR) + "/settings-dialog-" +
                           ::testing::UnitTest::GetInstance()->current_test_info()->name();
  testrun::Result r = testrun::run("bash " + std::string(OSTRAVINE_SOURCE_DIR) +
                                       "/tests/production/settings_dialog.sh " + OSTRAVINE_RUN_DIR + " " + work +
                                       " " + runs,
                                   ".", 540);
  EXPECT_EQ(r.exitStatus, 0) << r.out << r.err;
  return work;
}

bool sessionPossible() {
  if (!std::getenv("DISPLAY")) return false;
  return testrun::run("command -v xdotool", ".").exitStatus == 0;
}

}  // namespace

TEST(SettingsDialogProgram, ASizeChosenInTheListAndExactPixelsClickedOffReachTheStartUp) {
  if (!sessionPossible()) GTEST_SKIP() << "needs a display and xdotool (scripts/install-deps.sh)";
  const std::string work = session("begin");
  const std::string log = readFile(work + "/begin.log");
  EXPECT_EQ(readFile(work + "/begin.status"), "0\n") << log;
  // 800x576 was preselected (it follows 800x600 in the list, and the second search wins).
  EXPECT_TRUE(has(log, "trace: settings opened: size 800x576 wide 1 fullscreen 1 exactPixels 1 audio 0\n")) << log;
  EXPECT_TRUE(has(log, "Settings dialog: Begin with 1280x800, wide display 1, fullscreen 1, exact pixels 0, audio 0.\n"))
      << log;
  // The session runs with --windowed, which overrules the checked "Fullscreen", and the log says so.
  EXPECT_TRUE(has(log, "Settings dialog: --windowed overrules \"Fullscreen\": playing in a window.\n")) << log;
  // Without exact pixels the area is the largest powers of two that fit.
  EXPECT_TRUE(has(log, "Screen effective area size: 1024, 512\n")) << log;
  EXPECT_TRUE(has(log, "Render-target size: 1024, 512\n")) << log;
  EXPECT_TRUE(has(log, "\nstart.\n")) << log;
}

TEST(SettingsDialogProgram, TheDownArrowChoosesTheNextSizeAndReturnBegins) {
  if (!sessionPossible()) GTEST_SKIP() << "needs a display and xdotool (scripts/install-deps.sh)";
  const std::string work = session("keys");
  const std::string log = readFile(work + "/keys.log");
  EXPECT_EQ(readFile(work + "/keys.status"), "0\n") << log;
  EXPECT_TRUE(has(log, "Settings dialog: Begin with 640x480, wide display 0, fullscreen 1, exact pixels 1, audio 0.\n"))
      << log;
  EXPECT_TRUE(has(log, "Screen effective area size: 640, 480\n")) << log;
  EXPECT_TRUE(has(log, "Render-target size: 1024, 512\n")) << log;
}

TEST(SettingsDialogProgram, EndEndsTheProgramWithStatusZeroBeforeTheDisplayOpens) {
  if (!sessionPossible()) GTEST_SKIP() << "needs a display and xdotool (scripts/install-deps.sh)";
  const std::string work = session("end");
  const std::string log = readFile(work + "/end.log");
  EXPECT_EQ(readFile(work + "/end.status"), "0\n") << log;
  EXPECT_TRUE(has(log, "Settings dialog: End.\n")) << log;
  EXPECT_FALSE(has(log, "Screen effective area size")) << log;
  EXPECT_FALSE(has(log, "start.")) << log;
  // The dialog as it stood when "End" was pressed, unchanged since it
  // opened: its picture, the preselected 800x576, the boxes checked but
  // Audio (-nomusic), the two buttons.
  testimg::Comparison c = testimg::compareToReference(work + "/shots/settings-dialog.png", "settings_dialog.png");
  EXPECT_TRUE(c.passed) << c.message;
}

TEST(SettingsDialogProgram, WithoutTheOptionNoDialogOpensAndTheModeListIsNotRead) {
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  testrun::Result r = testrun::runOnDisplay(std::string("OSTRAVINE_DISPLAY_MODES=nonsense '") + OSTRAVINE_EXECUTABLE +
                                                "' -nomusic --windowed --size 64x48 --fixed-fps 25 --to 40 --trace",
                                            OSTRAVINE_RUN_DIR, 300);
  EXPECT_EQ(r.exitStatus, 0) << r.out << r.err;
  EXPECT_FALSE(has(r.out, "Settings dialog")) << r.out;
  EXPECT_FALSE(has(r.out, "trace: settings")) << r.out;
  EXPECT_TRUE(has(r.out, "Screen effective area size: 64, 48\n")) << r.out;
}

TEST(SettingsDialogProgram, ADamagedModeListIsRefusedWithAMessageBeforeAnyWindowOpens) {
  // No display is needed: the list is read before anything opens.
  testrun::Result r = testrun::run(std::string("DISPLAY= OSTRAVINE_DISPLAY_MODES=800x600,12x '") +
                                       OSTRAVINE_EXECUTABLE + "' --settings",
                                   OSTRAVINE_RUN_DIR, 60);
  EXPECT_EQ(r.exitStatus, 2);
  EXPECT_EQ(r.err, "ostravine: OSTRAVINE_DISPLAY_MODES: '12x' is not a display mode WIDTHxHEIGHT or WIDTHxHEIGHTxBITS\n");
  EXPECT_EQ(r.out, "");
}
