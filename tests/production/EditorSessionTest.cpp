// The editor made live, through the real program: a scripted session under
// the test display (tests/production/editor_session.sh, driven with xdotool)
// opens the flow chart screen, makes a DEMO TIME block, connects it to the
// first parameter of the list and saves; the saved script holds the chart,
// and a fresh run reads it and drives the parameter with the timeline.
// Also: without --edit the editor draws nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace {

using testrun::readFile;

// The value of "<name> = ( v )" in the parameter_defaults section, or NaN.
double defaultOf(const std::string& script, const std::string& name) {
  std::smatch m;
  std::regex line("\n " + std::regex_replace(name, std::regex(R"(\.)"), R"(\.)") + R"( = \( ([-0-9.e+]+) \))");
  if (!std::regex_search(script, m, line)) return std::nan("");
  return std::atof(m[1].str().c_str());
}

}  // namespace

TEST(EditorSession, AChartMadeWithTheMouseIsSavedAndDrivesTheParameterInAFreshRun) {
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  if (testrun::run("command -v xdotool", ".").exitStatus != 0)
    FAIL() << "xdotool is needed (scripts/install-deps.sh installs it)";
  const std::string work = std::string(OSTRAVINE_BINARY_DIR) + "/editor-session";
  testrun::Result r = testrun::run("bash " + std::string(OSTRAVINE_SOURCE_DIR) + "/tests/production/editor_session.sh " +
                                       OSTRAVINE_RUN_DIR + " " + work,
                                   ".", 540);
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;

  // The session's save holds the chart: a demotime block into the first sink of the list.
  const std::string first = readFile(work + "/first.scr");
  std::smatch chart;
  ASSERT_TRUE(std::regex_search(first, chart, std::regex(R"(\n in\.([A-Za-z]+)\.([A-Za-z]+) = demotime \(  \)  \n)")))
      << first;
  const std::string parameter = chart[1].str() + "." + chart[2].str();

  // The fresh run read it: it writes the same chart back, and the parameter,
  // saved twice a few seconds apart from 5 s on, follows the timeline.
  const std::string fresh1 = readFile(work + "/fresh1.scr");
  const std::string fresh2 = readFile(work + "/fresh2.scr");
  EXPECT_NE(fresh1.find(chart[0].str()), std::string::npos) << fresh1;
  const double v1 = defaultOf(fresh1, parameter), v2 = defaultOf(fresh2, parameter);
  EXPECT_GE(v1, 5.0) << parameter;
  EXPECT_GT(v2, v1) << parameter;
}

TEST(EditorSession, WithoutEditNothingOfTheEditorIsDrawn) {
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display";
  // The same frame with and without --edit: with all screens hidden the edit
  // mode draws only the selected parameter's line at the bottom left.
  const std::string dir = std::string(OSTRAVINE_BINARY_DIR) + "/editor-overlay";
  testrun::run("rm -rf " + dir + " && mkdir -p " + dir + "/plain " + dir + "/edit", ".");
  const std::string common = "-nomusic --windowed --size 320x240 --fixed-fps 25 --from 20000 --capture ";
  testrun::Result plain = testrun::runOstravine(common + dir + "/plain --shots 20200", 300);
  testrun::Result edit = testrun::runOstravine(common + dir + "/edit --shots 20200 --edit", 300);
  ASSERT_EQ(plain.exitStatus, 0) << plain.err;
  ASSERT_EQ(edit.exitStatus, 0) << edit.err;
  testimg::Image a, b;
  ASSERT_TRUE(testimg::readPng(dir + "/plain/shot-20200.png", a));
  ASSERT_TRUE(testimg::readPng(dir + "/edit/shot-20200.png", b));
  ASSERT_EQ(a.width, b.width);
  // Rows 0 to 219 (from the top) are the same; the bottom rows carry the
  // selected parameter in edit mode.
  const size_t upper = size_t(a.width) * 4 * 220;
  int differing = 0;
  for (size_t i = 0; i < upper; ++i) differing += std::abs(int(a.rgba[i]) - int(b.rgba[i])) > 2;
  EXPECT_EQ(differing, 0);
  int bottomDiffering = 0;
  for (size_t i = upper; i < a.rgba.size(); ++i) bottomDiffering += a.rgba[i] != b.rgba[i];
  EXPECT_GT(bottomDiffering, 0) << "edit mode shows the selected parameter";
}
