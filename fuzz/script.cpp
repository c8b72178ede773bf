// Fuzz target: the script reader. Any bytes are read as a script file into a
// fresh flow chart state, whose charts are then evaluated for a few frames
// (times inside the film, at its edges and far outside it), written back,
// and the written text read and evaluated once more, as a save and a load
// in the editor would do. The scenes are stand-ins with the production's
// scene names and the parameters every scene registers, so the shipped
// script and its variations reach every state of the reader.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "flow/Block.h"
#include "flow/FlowCharts.h"
#include "flow/ScriptFile.h"
#include "scenes/Scene.h"

namespace {

const char* const sceneNames[] = {"performe",        "bordersWithin", "bordersWithout", "bordersWithme",
                                  "bordersWithyou",  "bordersWithus", "bordersWiththem", "bordersMeetus",
                                  "bordersRolin",    "bordersRolout", "bordersRollus"};
const char* const parameterNames[] = {
    "cameraZoom",   "cameraFOV",      "cameraRoll",      "cameraPitch",   "cameraYaw",
    "cameraLookAtRoll", "cameraLookAtPitch", "cameraLookAtYaw", "glowFadeOut", "glowBlurAmount",
    "glowBlurMode", "glowBlurZoom",   "glowBlurZoomPowBase", "glowBlurZoomPow", "glowBlurAlpha"};
constexpr size_t parameterCount = sizeof(parameterNames) / sizeof(parameterNames[0]);

// A scene that only holds its parameters' floats.
class StandInScene : public Scene {
 public:
  explicit StandInScene(const std::string& name) : Scene(name), values(parameterCount, 1.0f) {
    for (size_t i = 0; i < parameterCount; ++i) addParameter(parameterNames[i], &values[i], 0.01f, 0, 0);
  }
  void render(int32_t, int32_t) override {}
  // Every parameter back to its first value, so each input starts alike.
  void reset() {
    for (Parameter& p : parameters) *p.value = p.defaultValue = 1.0f;
  }

  std::vector<float> values;  // sized once: the parameters point into it
};

std::vector<StandInScene*> scenes;
float demoTimeSeconds = 0.0f;

void setUp() {
  std::vector<Scene*> list;
  for (const char* name : sceneNames) {
    scenes.push_back(new StandInScene(name));  // lives to the end, as the production's scenes do
    list.push_back(scenes.back());
  }
  initFlowCharts(list, &demoTimeSeconds);
}

// A few frames: the film's start, a beat inside it, the rewind's edges, its
// end, and times no film has.
void evaluateSomeFrames() {
  const float times[] = {0.0f, 1.5f, 27.8f, 255.8f, 263.5f, -3.0f, 1.0e7f};
  for (float t : times) {
    demoTimeSeconds = t;
    evaluateFlowCharts();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (scenes.empty()) setUp();
  for (StandInScene* scene : scenes) scene->reset();

  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  readScript(in);
  evaluateSomeFrames();

  std::ostringstream out;
  writeScript(out);
  std::istringstream again(out.str());
  readScript(again);
  evaluateSomeFrames();

  clearAllBlocks();
  return 0;
}
