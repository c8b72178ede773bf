// FlowCharts: per-frame evaluation and the block formulas. See FlowCharts.h.
#include "flow/FlowCharts.h"

#include <cmath>

#include "scenes/Scene.h"

namespace {

std::vector<Scene*>& boundScenes = *new std::vector<Scene*>;

constexpr float pi = 3.1415927f;

// One open block of an evaluation: its next input to visit and where its
// input values begin on the value stack.
struct EvaluationFrame {
  Block* block;
  std::list<Block*>::iterator nextInput;
  size_t valuesStart;
};

// Evaluates the chart below `root` on explicit stacks, in the order of the
// recursive definition: inputs in list order, depth first, no caching. A block
// already open on the path reads 0 (a cycle cut where it closes). `visits`
// counts down; when it runs out the walk stops and `exhausted` is set.
float evaluateChart(Block* root, long& visits, bool& exhausted) {
  static std::vector<EvaluationFrame>& frames = *new std::vector<EvaluationFrame>;
  static std::vector<float>& values = *new std::vector<float>;
  static std::vector<float>& arguments = *new std::vector<float>;
  frames.clear();
  values.clear();
  exhausted = false;

  if (--visits < 0) {
    exhausted = true;
    return 0.0f;
  }
  root->onWalkPath = true;
  frames.push_back({root, root->inputs.begin(), 0});
  float result = 0.0f;
  while (!frames.empty()) {
    EvaluationFrame& top = frames.back();
    if (top.nextInput != top.block->inputs.end()) {
      Block* input = *top.nextInput++;
      if (input->onWalkPath) {
        values.push_back(0.0f);
        continue;
      }
      if (--visits < 0) {
        exhausted = true;
        break;
      }
      input->onWalkPath = true;
      frames.push_back({input, input->inputs.begin(), values.size()});
      continue;
    }
    // All inputs are in: this block's own value.
    Block* block = top.block;
    const size_t start = top.valuesStart;
    float value;
    if (block->maxOutputs == 0) {
      value = values.size() > start ? values[start] : 0.0f;
    } else if (block->compute) {
      arguments.assign(values.begin() + long(start), values.end());
      value = block->compute(arguments, *block);
    } else {
      value = block->boundValue ? *block->boundValue : block->value;
    }
    values.resize(start);
    block->onWalkPath = false;
    frames.pop_back();
    if (frames.empty())
      result = value;
    else
      values.push_back(value);
  }
  // An interrupted walk leaves its open blocks marked: clear them.
  for (EvaluationFrame& f : frames) f.block->onWalkPath = false;
  frames.clear();
  return exhausted ? 0.0f : result;
}

}  // namespace

// ---------------------------------------------------------------------------
// Binding to the production
// ---------------------------------------------------------------------------

void initFlowCharts(const std::vector<Scene*>& scenes, float* demoTimeSeconds) {
  boundScenes = scenes;
  auto ensure = [](const std::string& key, const std::string& text, float* bound) {
    if (!findBlockTemplate(key)) addBlockTemplate(key, text, bound);
  };
  ensure("float", "FLOAT", nullptr);
  ensure("demotime", "DEMO\n TIME", demoTimeSeconds);
  ensure("sum", "SUM", nullptr);
  ensure("mul", "MUL", nullptr);
  ensure("sin", "SIN", nullptr);
  ensure("pulse", "PULSE", nullptr);
  for (Scene* scene : scenes) {
    for (Parameter& p : scene->parameters) {
      ensure("in." + scene->name + "." + p.name, "in." + scene->name + ".\n" + p.name, p.value);
      ensure("out." + scene->name + "." + p.name, "out." + scene->name + ".\n" + p.name, p.value);
    }
  }
}

const std::vector<Scene*>& flowScenes() { return boundScenes; }

// ---------------------------------------------------------------------------
// Evaluation
// ---------------------------------------------------------------------------

float evaluateBlock(Block* block) {
  long visits = maxBlockVisitsPerFrame;
  bool exhausted = false;
  return evaluateChart(block, visits, exhausted);
}

void evaluateFlowCharts() {
  long visits = maxBlockVisitsPerFrame;
  for (Block* sink : parameterSinks) {
    if (sink->inputs.empty() || !sink->boundValue) continue;  // nothing to write: the parameter keeps its value
    bool exhausted = false;
    const float value = evaluateChart(sink, visits, exhausted);
    if (exhausted) return;
    *sink->boundValue = value;
  }
}

// ---------------------------------------------------------------------------
// Formulas
// ---------------------------------------------------------------------------

float computeSin(const std::vector<float>& inputValues, Block&) {
  return std::sin(inputValues.empty() ? 0.0f : inputValues[0]);
}

float computeMul(const std::vector<float>& inputValues, Block&) {
  float product = 1.0f;
  for (float v : inputValues) product *= v;
  return product;
}

float computeSum(const std::vector<float>& inputValues, Block&) {
  float sum = 0.0f;
  for (float v : inputValues) sum += v;
  return sum;
}

float computePulse(const std::vector<float>& inputValues, Block& block) {
  return pulseValue(block.settings, inputValues.empty() ? 0.0f : inputValues[0]);
}

const std::vector<float>& defaultPulseSettings() {
  static const std::vector<float>& defaults = *new std::vector<float>{0.25f, 0.5f, 0.25f, 0.0f, 0.0f, 2.0f};
  return defaults;
}

float pulseValue(const std::vector<float>& settings, float t) {
  const std::vector<float>& d = defaultPulseSettings();
  auto setting = [&](size_t i) { return i < settings.size() ? settings[i] : d[i]; };
  const float raise = setting(0), up = setting(1), lower = setting(2);
  const float start = setting(3), repeatsSetting = setting(4), delta = setting(5);

  const float length = raise + up + lower;
  const float period = length > delta ? length : delta;
  const float inverse = delta != 0.0f ? 1.0f / period : 0.0f;
  // Truncation toward zero, as everywhere; a Repeats beyond the int range is
  // taken as that range's end rather than overflowing.
  const int repeats = repeatsSetting >= 2147483520.0f    ? 2147483647
                      : repeatsSetting <= -2147483520.0f ? -2147483647
                      : repeatsSetting != repeatsSetting ? 0
                                                         : int(repeatsSetting);
  // The window of a limited pulse ends at Start + repeats * Delta: Delta, not period.
  if (repeats != 0 && (t < start || t > start + float(repeats) * delta)) return 0.0f;

  float phase = (t - start) * inverse;
  phase -= std::trunc(phase);  // a negative phase stays negative

  const float riseLength = raise * inverse;
  const float fallStart = (raise + up) * inverse;
  const float fallLength = lower * inverse;
  float rise;
  if (phase <= 0.0f)
    rise = 0.0f;
  else if (phase > riseLength)
    rise = 1.0f;
  else
    rise = 0.5f - 0.5f * std::cos(pi * phase / riseLength);
  float fall;
  if (phase <= fallStart)
    fall = 1.0f;
  else if (phase > fallStart + fallLength)
    fall = 0.0f;
  else
    fall = 0.5f - 0.5f * std::cos(pi * (1.0f - (phase - fallStart) / fallLength));
  return std::sqrt(rise * fall);
}
