// FlowCharts: evaluation of the parameter flow charts, once per frame.
//
// evaluateFlowCharts walks the sinks in parameterSinks order and writes each
// chart's result into the float its Parameter is bound to, before the scenes
// draw. Nothing is cached: a block feeding two places is evaluated once for
// each path, and an out. block reads this frame's value of a parameter whose
// sink stands earlier in parameterSinks, last frame's when it stands later.
// Demo time is the raw timeline position in seconds. No range or NaN checks:
// whatever a chart computes is stored.
//
// Choices made here where the system leaves them open:
// - A sink without input leaves its parameter untouched; `sin` and `pulse`
//   without input read 0.
// - Cycles (only a hand-written script or a direct connectBlocks call can make
//   one; the script reader refuses them) are cut where they close: a block met
//   again while its own evaluation is still open reads 0 there.
// - Evaluation uses its own stack, not the call stack, so however deep a
//   chart is it cannot overflow; and one frame visits at most
//   maxBlockVisitsPerFrame blocks (a hand-made graph that shares blocks
//   layer upon layer grows exponentially): a sink whose chart runs past that
//   leaves its parameter untouched, as do the sinks after it.
#pragma once
#include <string>
#include <vector>

#include "flow/Block.h"
#include "flow/ScriptFile.h"

class Scene;

// Ties the charts to the production: the scenes that the script's names are
// looked up in (and written for), and the float that demotime blocks read.
// Then registers, in this order and only where no template of the key exists
// yet, the templates "float", "demotime" (bound to demoTimeSeconds), "sum",
// "mul", "sin", "pulse", and for each parameter of each scene (scenes in
// list order, parameters in registration order) "in.<scene>.<parameter>"
// and "out.<scene>.<parameter>" bound to the parameter's float, with the
// text "in.<scene>.\n<parameter>" and "out.<scene>.\n<parameter>".
void initFlowCharts(const std::vector<Scene*>& scenes, float* demoTimeSeconds);

// The scenes given to initFlowCharts, in list order.
const std::vector<Scene*>& flowScenes();

// Evaluates one block's chart: inputs first, in list order, then
//   sink (maxOutputs 0): its first input's value
//   compute set: compute(input values, block)
//   else: *boundValue when bound, else value.
// A sink without input gives 0 here (evaluateFlowCharts does not store it).
float evaluateBlock(Block* block);

// For each sink of parameterSinks, in order: evaluate and store through its
// boundValue. Called once per frame by the main loop.
void evaluateFlowCharts();

constexpr long maxBlockVisitsPerFrame = 1L << 20;

// ---- the formulas (π is the float 3.1415927) ----

float computeSin(const std::vector<float>& inputValues, Block& block);    // sinf(first); 0 without input
float computeMul(const std::vector<float>& inputValues, Block& block);    // product, 1 without input
float computeSum(const std::vector<float>& inputValues, Block& block);    // sum, 0 without input
float computePulse(const std::vector<float>& inputValues, Block& block);  // pulseValue(settings, first or 0)

// The pulse: a soft repeating bump over time t (seconds). settings are
// Raise, Up, Lower, Start, Repeats, Delta (six values; missing ones read as
// the defaults 0.25, 0.5, 0.25, 0, 0, 2).
//   length = Raise + Up + Lower; period = max(Delta, length) (unused beyond
//   this: kept as the system computes it); inverse = 1/period, or 0 when
//   Delta is 0 (which makes the pulse 0 everywhere).
//   repeats = (int)Repeats; with repeats != 0 the result is 0 for t < Start
//   or t > Start + repeats·Delta (Delta, not period). repeats 0: for ever,
//   both ways.
//   phase = frac((t − Start)·inverse), the fraction keeping its sign.
//   rise = 0 for phase <= 0, 1 past Raise·inverse, else 0.5 − 0.5·cos(π·phase/(Raise·inverse))
//   fall = 1 up to (Raise+Up)·inverse, 0 past its end (Lower·inverse later),
//          else 0.5 − 0.5·cos(π·(1 − (phase − fallStart)/(Lower·inverse)))
//   result = sqrt(rise·fall).
float pulseValue(const std::vector<float>& settings, float t);

// The defaults of a new pulse.
const std::vector<float>& defaultPulseSettings();
