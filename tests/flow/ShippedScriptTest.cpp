// The production's own script, assets/ostravine.scr: it reads whole, round
// trips through the writer, survives truncation at every byte, and drives
// the parameters it names. The scenes are stand-ins with the names the script
// uses, so this runs without the production.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>

#include "FlowFixture.h"

namespace {

std::string shippedText() {
  std::ifstream in(std::string(OSTRAVINE_SOURCE_DIR) + "/assets/ostravine.scr");
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string section(const std::string& text, const std::string& opening) {
  const size_t from = text.find(opening);
  if (from == std::string::npos) return std::string();
  return text.substr(from, text.find("}\n", from) + 2 - from);
}

const char* productionScenes[] = {"performe",        "bordersWithin", "bordersWithout", "bordersWithme",
                                  "bordersWithyou",  "bordersWithus", "bordersWiththem", "bordersMeetus",
                                  "bordersRolin",    "bordersRolout", "bordersRollus"};
const char* sceneParameters[] = {"cameraZoom",          "cameraFOV",       "cameraRoll",       "cameraPitch",
                                 "cameraYaw",           "cameraLookAtRoll", "cameraLookAtPitch", "cameraLookAtYaw",
                                 "glowFadeOut",         "glowBlurAmount",  "glowBlurMode",     "glowBlurZoom",
                                 "glowBlurZoomPowBase", "glowBlurZoomPow", "glowBlurAlpha"};

class ShippedScriptTest : public flowtest::FlowFixture {
 protected:
  void SetUp() override {
    FlowFixture::SetUp();
    text = shippedText();
    ASSERT_FALSE(text.empty()) << "assets/ostravine.scr is missing";
  }
  // Stand-ins for the given scenes, each with the fifteen parameters every
  // production scene registers (field of view 75 and the usual glow), in the
  // production's order.
  void useScenes(const std::vector<std::string>& names) {
    flowtest::resetFlowCharts();
    stand.clear();
    std::vector<Scene*> scenes;
    for (const char* name : productionScenes) {
      if (std::find(names.begin(), names.end(), name) == names.end()) continue;
      std::vector<std::pair<std::string, float>> parameters;
      for (const char* p : sceneParameters) parameters.emplace_back(p, 0.0f);
      stand.push_back(std::make_unique<flowtest::ParameterScene>(name, parameters));
      (*stand.back())["cameraFOV"] = 75.0f;
      (*stand.back())["glowBlurAmount"] = 0.45f;
      (*stand.back())["glowBlurAlpha"] = 1.0f;
      (*stand.back())["glowBlurZoomPowBase"] = 1.5f;
      (*stand.back())["glowBlurZoomPow"] = 1.0f;
      scenes.push_back(stand.back().get());
    }
    initFlowCharts(scenes, &demoTime);
  }
  flowtest::ParameterScene& scene(const std::string& name) {
    for (auto& s : stand)
      if (s->name == name) return *s;
    throw std::runtime_error("no scene " + name);
  }
  std::vector<std::string> allNames() { return std::vector<std::string>(std::begin(productionScenes), std::end(productionScenes)); }

  std::string text;
  std::vector<std::unique_ptr<flowtest::ParameterScene>> stand;
};

TEST_F(ShippedScriptTest, NamesOnlyProductionScenesAndTheirParameters) {
  useScenes(allNames());
  read(text);
  for (Block* sink : parameterSinks) EXPECT_EQ(sink->inputs.size(), 1u) << sink->kindName;
  // Every key the file names has its template: nothing was read into the
  // wrong sink.
  std::istringstream words(text);
  std::string word;
  while (words >> word) {
    if (word.rfind("in.", 0) == 0 || word.rfind("out.", 0) == 0) {
      EXPECT_NE(findBlockTemplate(word), nullptr) << word;
    }
  }
  EXPECT_EQ(parameterSinks.size(), size_t(std::count(text.begin(), text.end(), '=') -
                                          std::count(text.begin(), text.begin() + text.find("parameters {"), '=')));
}

TEST_F(ShippedScriptTest, RoundTripsThroughTheWriter) {
  useScenes(allNames());
  read(text);
  const size_t blocks = allBlocks.size();
  const std::string first = written();
  // The pulses and the charts come back exactly as shipped: the file is in
  // the writer's form.
  EXPECT_EQ(section(first, "pulses {\n"), section(text, "pulses {\n"));
  EXPECT_EQ(section(first, "parameters {\n"), section(text, "parameters {\n"));
  // Each shipped default is among the written ones.
  std::istringstream defaults(section(text, "parameter_defaults {\n"));
  std::string line;
  while (std::getline(defaults, line))
    if (line.find(" = ( ") != std::string::npos) {
      EXPECT_NE(first.find(line + "\n"), std::string::npos) << line;
    }
  // And the writer's form reads back to the same charts.
  read(first);
  EXPECT_EQ(allBlocks.size(), blocks);
  EXPECT_EQ(written(), first);
}

TEST_F(ShippedScriptTest, TruncatedAtEveryByteReadsWhatStandsBeforeTheCut) {
  useScenes(allNames());
  read(text);
  const size_t whole = allBlocks.size();
  size_t atLastBlank = 0;
  for (size_t k = 0; k <= text.size(); ++k) {
    read(text.substr(0, k));
    evaluateFlowCharts();
    const size_t n = allBlocks.size();
    ASSERT_LE(n, whole) << "cut at " << k;
    ASSERT_GE(n, atLastBlank) << "cut at " << k;
    if (k < text.size() && isspace(static_cast<unsigned char>(text[k]))) atLastBlank = n;
  }
}

TEST_F(ShippedScriptTest, WithOnlyTheOpeningAndTheCubeFieldBuiltEveryPulseStillHasItsClock) {
  // While the other scenes are pending their charts cannot be made; the
  // pulses they share must still be fed by demo time from the charts that can.
  useScenes({"performe", "bordersMeetus"});
  read(text);
  ASSERT_FALSE(pulseBlocks.empty());
  for (Block* pulse : pulseBlocks) {
    ASSERT_GE(pulse->inputs.size(), 1u) << "pulse " << pulse->number;
    EXPECT_EQ(pulse->inputs.front()->kindName, "demotime") << "pulse " << pulse->number;
  }
  std::set<std::string> sinks;
  for (Block* sink : parameterSinks) sinks.insert(sink->kindName);
  EXPECT_TRUE(sinks.count("in.performe.cameraFOV"));
  EXPECT_TRUE(sinks.count("in.bordersMeetus.cameraFOV"));
}

TEST_F(ShippedScriptTest, OpeningAndCubeFieldPulseOnTheirBeats) {
  useScenes(allNames());
  read(text);
  // The opening's field of view narrows just after each beat of the 128 bpm
  // grid (from its fourth bar on) and is back at 75 before the next.
  for (int beat = 16; beat < 50; ++beat) {
    const float at = beat * 0.46875f;
    demoTime = at + 0.04f;
    evaluateFlowCharts();
    EXPECT_LT(scene("performe")["cameraFOV"], 73.0f) << at;
    demoTime = at + 0.44f;
    evaluateFlowCharts();
    EXPECT_EQ(scene("performe")["cameraFOV"], 75.0f) << at;
  }
  // The cube field's punches fall on its own flashes (scene time 2.9, 3.9,
  // 4.9 ... from 135 s), not between them.
  for (float flash : {137.9f, 138.9f, 139.9f, 141.5f, 149.0f, 160.0f, 162.0f}) {
    demoTime = flash + 0.05f;
    evaluateFlowCharts();
    EXPECT_LT(scene("bordersMeetus")["cameraFOV"], 72.0f) << flash;
    EXPECT_GT(scene("bordersMeetus")["glowBlurAmount"], 0.6f) << flash;
    demoTime = flash + 0.7f;
    evaluateFlowCharts();
    EXPECT_EQ(scene("bordersMeetus")["cameraFOV"], 75.0f) << flash;
  }
}

TEST_F(ShippedScriptTest, BrightensTheOpeningsGlow) {
  useScenes(allNames());
  read(text);
  EXPECT_EQ(scene("performe")["glowBlurMode"], 1.0f);  // plain additive glow: the dark wall reads
  EXPECT_EQ(scene("performe").parameterByName("glowBlurMode")->defaultValue, 1.0f);
}

}  // namespace
