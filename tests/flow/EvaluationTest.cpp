// Evaluation: every formula at several inputs, the order and the recursion of
// evaluateFlowCharts, sinks without input, cycles and runaway charts.
#include <gtest/gtest.h>

#include <cmath>

#include "FlowFixture.h"

using flowtest::FlowFixture;

namespace {

using EvaluationTest = FlowFixture;

TEST_F(EvaluationTest, FloatGivesItsValue) {
  for (float v : {0.0f, 1.5f, -30.0f, 1e6f}) EXPECT_EQ(evaluateBlock(makeFloat(v)), v);
}

TEST_F(EvaluationTest, DemoTimeReadsTheBoundSeconds) {
  Block* t = make("demotime", createDemoTimeBlock);
  for (float s : {0.0f, 12.5f, 263.5f}) {
    demoTime = s;
    EXPECT_EQ(evaluateBlock(t), s);
  }
}

TEST_F(EvaluationTest, SinIsTheSinglePrecisionSineOfItsInputInRadians) {
  for (float x : {0.0f, 0.5f, 1.5707964f, 3.1415927f, -2.0f, 100.0f}) {
    Block* s = make("sin", createSinBlock);
    connectBlocks(makeFloat(x), s);
    EXPECT_EQ(evaluateBlock(s), std::sin(x)) << x;
  }
  EXPECT_EQ(evaluateBlock(make("sin", createSinBlock)), 0.0f);  // no input reads 0
}

TEST_F(EvaluationTest, MulIsTheProductAndOneWithoutInput) {
  Block* m = make("mul", createMulBlock);
  EXPECT_EQ(evaluateBlock(m), 1.0f);
  connectBlocks(makeFloat(2), m);
  EXPECT_EQ(evaluateBlock(m), 2.0f);
  connectBlocks(makeFloat(-3), m);
  EXPECT_EQ(evaluateBlock(m), -6.0f);
  connectBlocks(makeFloat(0.5f), m);
  EXPECT_EQ(evaluateBlock(m), -3.0f);
}

TEST_F(EvaluationTest, SumIsTheSumAndZeroWithoutInput) {
  Block* s = make("sum", createSumBlock);
  EXPECT_EQ(evaluateBlock(s), 0.0f);
  connectBlocks(makeFloat(75), s);
  EXPECT_EQ(evaluateBlock(s), 75.0f);
  connectBlocks(makeFloat(-5), s);
  connectBlocks(makeFloat(0.25f), s);
  EXPECT_EQ(evaluateBlock(s), 70.25f);
}

TEST_F(EvaluationTest, ParameterSourceReadsTheLiveParameter) {
  Block* out = make("out.bordersWithin.cameraFOV", createParameterSource);
  EXPECT_EQ(evaluateBlock(out), 75.0f);
  (*within)["cameraFOV"] = 12.0f;
  EXPECT_EQ(evaluateBlock(out), 12.0f);
}

TEST_F(EvaluationTest, SinkWritesItsFirstInputIntoTheParameter) {
  Block* sink = makeSink("in.bordersWithme.cameraFOV");
  Block* s = make("sum", createSumBlock);
  connectBlocks(makeFloat(75), s);
  Block* m = make("mul", createMulBlock);
  connectBlocks(makeFloat(5), m);
  Block* sn = make("sin", createSinBlock);
  connectBlocks(make("demotime", createDemoTimeBlock), sn);
  connectBlocks(sn, m);
  connectBlocks(m, s);
  connectBlocks(s, sink);
  for (float t : {0.0f, 0.5f, 2.0f}) {
    demoTime = t;
    evaluateFlowCharts();
    EXPECT_FLOAT_EQ((*withme)["cameraFOV"], 75.0f + 5.0f * std::sin(t)) << t;
  }
  EXPECT_EQ((*withme)["cameraZoom"], 2.0f);  // parameters without a sink are not touched
}

TEST_F(EvaluationTest, SinkWithoutInputLeavesItsParameterAlone) {
  makeSink("in.bordersWithin.cameraZoom");
  (*within)["cameraZoom"] = 3.25f;
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 3.25f);
}

TEST_F(EvaluationTest, SinkWithSeveralInputsWritesTheFirstAfterEvaluatingAll) {
  static int calls;
  calls = 0;
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  Block* a = make("sum", createSumBlock);
  Block* b = make("sum", createSumBlock);
  a->compute = [](const std::vector<float>&, Block&) { return float(++calls); };
  b->compute = a->compute;
  connectBlocks(a, sink);
  connectBlocks(b, sink);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_EQ(calls, 2);
}

TEST_F(EvaluationTest, InputsAreEvaluatedInListOrderDepthFirst) {
  static std::string order;
  order.clear();
  auto tag = [](const std::vector<float>& in, Block& b) {
    order += b.text;
    return in.empty() ? 0.0f : in[0];
  };
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  Block* root = make("sum", createSumBlock);
  Block* left = make("sum", createSumBlock);
  Block* leftLeaf = make("sum", createSumBlock);
  Block* right = make("sum", createSumBlock);
  for (auto [b, name] : {std::pair{root, "R"}, {left, "L"}, {leftLeaf, "l"}, {right, "r"}}) {
    b->text = name;
    b->compute = tag;
  }
  connectBlocks(leftLeaf, left);
  connectBlocks(left, root);
  connectBlocks(right, root);
  connectBlocks(root, sink);
  evaluateFlowCharts();
  EXPECT_EQ(order, "lLrR");
}

TEST_F(EvaluationTest, BlockFeedingTwoSinksIsEvaluatedTwicePerFrame) {
  static int calls;
  calls = 0;
  Block* shared = make("sum", createSumBlock);
  shared->compute = [](const std::vector<float>&, Block&) { return float(++calls); };
  connectBlocks(shared, makeSink("in.bordersWithin.cameraZoom"));
  connectBlocks(shared, makeSink("in.bordersWithin.cameraFOV"));
  evaluateFlowCharts();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_EQ((*within)["cameraFOV"], 2.0f);
}

TEST_F(EvaluationTest, SourceOfALaterSinkLagsOneFrameAndOfAnEarlierOneDoesNot) {
  // in.cameraFOV = demotime; in.cameraZoom = out.cameraFOV (FOV's sink first)
  Block* fovSink = makeSink("in.bordersWithin.cameraFOV");
  connectBlocks(make("demotime", createDemoTimeBlock), fovSink);
  Block* zoomSink = makeSink("in.bordersWithin.cameraZoom");
  connectBlocks(make("out.bordersWithin.cameraFOV", createParameterSource), zoomSink);
  // in.glowBlurAmount = out.cameraZoom, whose sink stands earlier too;
  // in.bordersWithme.cameraFOV stands first and reads out.glowBlurAmount: it lags.
  Block* glowSink = makeSink("in.bordersWithin.glowBlurAmount");
  connectBlocks(make("out.bordersWithin.cameraZoom", createParameterSource), glowSink);
  Block* lagging = makeSink("in.bordersWithme.cameraFOV");
  connectBlocks(make("out.bordersWithin.glowBlurAmount", createParameterSource), lagging);
  parameterSinks.remove(lagging);
  parameterSinks.push_front(lagging);

  demoTime = 1.0f;
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraFOV"], 1.0f);
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);      // same frame
  EXPECT_EQ((*within)["glowBlurAmount"], 1.0f);  // same frame
  EXPECT_EQ((*withme)["cameraFOV"], 0.5f);       // last frame's: the built-in 0.5
  demoTime = 2.0f;
  evaluateFlowCharts();
  EXPECT_EQ((*within)["glowBlurAmount"], 2.0f);
  EXPECT_EQ((*withme)["cameraFOV"], 1.0f);
}

// ---- cycles and runaway charts ----

TEST_F(EvaluationTest, ABlockFeedingItselfReadsZeroWhereTheCycleCloses) {
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  Block* s = make("sum", createSumBlock);
  connectBlocks(makeFloat(2), s);
  connectBlocks(s, s);  // sum(2, itself)
  connectBlocks(s, sink);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 2.0f);
  evaluateFlowCharts();  // the guard leaves nothing marked behind
  EXPECT_EQ((*within)["cameraZoom"], 2.0f);
  EXPECT_FALSE(s->onWalkPath);
}

TEST_F(EvaluationTest, ALongerCycleIsCutWhereItClosesFromEachEntry) {
  // sink <- mul(float 3, sum(float 1, mul))
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  Block* m = make("mul", createMulBlock);
  Block* s = make("sum", createSumBlock);
  connectBlocks(makeFloat(3), m);
  connectBlocks(s, m);
  connectBlocks(makeFloat(1), s);
  connectBlocks(m, s);
  connectBlocks(m, sink);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 3.0f);  // 3 * (1 + 0)
  EXPECT_EQ(evaluateBlock(s), 1.0f);         // entered at the sum: 1 + 3 * 0
}

TEST_F(EvaluationTest, AVeryDeepChainEvaluatesWithoutOverflow) {
  // 300000 sums in a row, far deeper than the call stack would take.
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  std::vector<std::unique_ptr<Block>> chain;
  chain.push_back(std::make_unique<Block>());
  chain.back()->value = 0.5f;
  for (int i = 0; i < 300000; ++i) {
    auto s = std::make_unique<Block>();
    s->compute = computeSum;
    s->inputs.push_back(chain.back().get());
    chain.push_back(std::move(s));
  }
  sink->inputs.push_back(chain.back().get());
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 0.5f);
  sink->inputs.clear();
}

TEST_F(EvaluationTest, ExponentiallySharedChartStopsAtTheVisitBudget) {
  // Each layer is a mul fed twice by the layer below: 2^40 paths.
  Block* first = makeSink("in.bordersWithin.cameraFOV");
  connectBlocks(makeFloat(7), first);
  Block* below = makeFloat(1);
  for (int i = 0; i < 40; ++i) {
    Block* m = make("mul", createMulBlock);
    connectBlocks(below, m);
    connectBlocks(below, m);
    below = m;
  }
  connectBlocks(below, makeSink("in.bordersWithin.cameraZoom"));
  Block* after = makeSink("in.bordersWithin.glowBlurAmount");
  connectBlocks(makeFloat(9), after);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraFOV"], 7.0f);        // before the runaway chart: written
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);       // untouched
  EXPECT_EQ((*within)["glowBlurAmount"], 0.5f);   // after it: untouched this frame
  for (Block* b : allBlocks) EXPECT_FALSE(b->onWalkPath);
  // A chart that fits the budget still runs: 2^18 paths.
  flowtest::resetFlowCharts();
  initFlowCharts({within.get()}, &demoTime);
  below = makeFloat(1);
  for (int i = 0; i < 18; ++i) {
    Block* m = make("sum", createSumBlock);
    connectBlocks(below, m);
    connectBlocks(below, m);
    below = m;
  }
  connectBlocks(below, makeSink("in.bordersWithin.cameraZoom"));
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 262144.0f);
}

}  // namespace
