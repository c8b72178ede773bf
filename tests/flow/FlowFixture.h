// FlowFixture: a clean flow chart state for each test, with two small scenes
// whose parameters are plain floats, and a demo time the test sets.
#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "flow/Block.h"
#include "flow/FlowCharts.h"
#include "flow/ScriptFile.h"
#include "scenes/Scene.h"

namespace flowtest {

// A scene with named float parameters, registered in the order given.
class ParameterScene : public Scene {
 public:
  ParameterScene(const std::string& name, const std::vector<std::pair<std::string, float>>& parameterList)
      : Scene(name), values(parameterList.size()) {
    for (size_t i = 0; i < parameterList.size(); ++i) {
      values[i] = parameterList[i].second;
      addParameter(parameterList[i].first, &values[i], 0.01f, 0, 0);
    }
  }
  void render(int32_t, int32_t) override {}
  float& operator[](const std::string& parameterName) { return *parameterByName(parameterName)->value; }

  std::vector<float> values;  // sized once: the parameters point into it
};

// Empties every list, every template and every hook.
inline void resetFlowCharts() {
  blockBoxHooks = BlockBoxHooks();
  clearAllBlocks();
  initFlowCharts({}, nullptr);  // forgets the scenes
  blockTemplates.clear();
  templateKey.clear();
  templatePick = 0;
  creationValues = nullptr;
}

class FlowFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    resetFlowCharts();
    within = std::make_unique<ParameterScene>(
        "bordersWithin", std::vector<std::pair<std::string, float>>{
                             {"cameraZoom", 1.0f}, {"cameraFOV", 75.0f}, {"glowBlurAmount", 0.5f}});
    withme = std::make_unique<ParameterScene>(
        "bordersWithme", std::vector<std::pair<std::string, float>>{{"cameraZoom", 2.0f}, {"cameraFOV", 60.0f}});
    initFlowCharts({within.get(), withme.get()}, &demoTime);
  }
  void TearDown() override { resetFlowCharts(); }

  // Makes a block of the template key; fails the test when it cannot.
  Block* make(const std::string& key, int (*create)()) {
    templateKey = key;
    EXPECT_EQ(create(), 0) << key;
    return lastCreatedBlock();
  }
  Block* makeFloat(float v) {
    Block* b = make("float", createFloatBlock);
    setFloatValue(b, v);
    return b;
  }
  Block* makeSink(const std::string& key) { return make(key, createParameterSink); }

  void read(const std::string& script) {
    std::istringstream in(script);
    readScript(in);
  }
  std::string written() {
    std::ostringstream out;
    writeScript(out);
    return out.str();
  }

  float demoTime = 0.0f;
  std::unique_ptr<ParameterScene> within;
  std::unique_ptr<ParameterScene> withme;
};

}  // namespace flowtest
