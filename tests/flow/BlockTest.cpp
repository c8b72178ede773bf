// Blocks: creation from templates, the kind table, numbering, the lists,
// connection, removal and the curve pick names.
#include <gtest/gtest.h>

#include <algorithm>

#include "FlowFixture.h"

using flowtest::FlowFixture;

namespace {

using BlockTest = FlowFixture;

TEST_F(BlockTest, CreationWithoutATemplateCreatesNothingAndGivesOne) {
  blockTemplates.clear();
  templateKey = "float";
  EXPECT_EQ(createFloatBlock(), 1);
  EXPECT_EQ(createPulseBlock(), 1);
  templateKey = "in.bordersWithin.cameraZoom";
  EXPECT_EQ(createParameterSink(), 1);
  EXPECT_TRUE(allBlocks.empty());
  EXPECT_TRUE(floatBlocks.empty());
  EXPECT_EQ(lastCreatedBlock(), nullptr);
}

TEST_F(BlockTest, KindTableLimitsBoxesAndTexts) {
  struct Row {
    const char* key;
    int (*create)();
    int maxIn, maxOut;
    float w, h, scale, offset;
    const char* text;
    bool hasCompute;
  };
  const Row rows[] = {
      {"float", createFloatBlock, 0, -1, 75, 20, 0.65f, 0, "0", false},
      {"demotime", createDemoTimeBlock, 0, -1, 45, 32, 0.55f, 7, "DEMO\n TIME", false},
      {"sin", createSinBlock, 1, -1, 45, 26, 0.65f, 0, "SIN", true},
      {"mul", createMulBlock, -1, -1, 45, 26, 0.65f, 0, "MUL", true},
      {"sum", createSumBlock, -1, -1, 45, 26, 0.65f, 0, "SUM", true},
      {"pulse", createPulseBlock, 1, -1, 95, 32, 0.65f, 0, "PULSE", true},
      {"out.bordersWithin.cameraFOV", createParameterSource, 0, -1, 340, 40, 0.65f, 9,
       "out.bordersWithin.\ncameraFOV", false},
      {"in.bordersWithin.cameraFOV", createParameterSink, 1, 0, 280, 40, 0.65f, 9, "in.bordersWithin.\ncameraFOV",
       false},
  };
  for (const Row& r : rows) {
    Block* b = make(r.key, r.create);
    ASSERT_NE(b, nullptr) << r.key;
    EXPECT_EQ(b->kindName, r.key);
    EXPECT_EQ(b->maxInputs, r.maxIn) << r.key;
    EXPECT_EQ(b->maxOutputs, r.maxOut) << r.key;
    EXPECT_EQ(b->box.width, r.w) << r.key;
    EXPECT_EQ(b->box.height, r.h) << r.key;
    EXPECT_FLOAT_EQ(b->box.textScale, r.scale) << r.key;
    EXPECT_EQ(b->box.textOffsetY, r.offset) << r.key;
    EXPECT_EQ(b->text, r.text) << r.key;
    EXPECT_EQ(b->compute != nullptr, r.hasCompute) << r.key;
    EXPECT_EQ(b->settings.size(), std::string(r.key) == "pulse" ? 6u : 0u) << r.key;
  }
}

TEST_F(BlockTest, FloatTakesCreationValueAndFormatsSixDigits) {
  std::vector<float> v{0.1234567f};
  creationValues = &v;
  Block* b = make("float", createFloatBlock);
  creationValues = nullptr;
  EXPECT_FLOAT_EQ(b->value, 0.1234567f);
  EXPECT_EQ(b->text, "0.123457");
  EXPECT_FLOAT_EQ(b->dragStep, 0.01f);
  Block* plain = make("float", createFloatBlock);
  EXPECT_EQ(plain->value, 0.0f);
  EXPECT_EQ(formatFloat(0.0025f), "0.0025");
  EXPECT_EQ(formatFloat(1.5f), "1.5");
  EXPECT_EQ(formatFloat(-30.0f), "-30");
  EXPECT_EQ(formatFloat(1000000.0f), "1e+06");
  EXPECT_EQ(formatFloat(1e-5f), "1e-05");
}

TEST_F(BlockTest, PulseDefaultsAndCreationValuesPaddedOrCut) {
  Block* plain = make("pulse", createPulseBlock);
  EXPECT_EQ(plain->settings, (std::vector<float>{0.25f, 0.5f, 0.25f, 0, 0, 2}));
  std::vector<float> three{1, 2, 3};
  creationValues = &three;
  Block* padded = make("pulse", createPulseBlock);
  EXPECT_EQ(padded->settings, (std::vector<float>{1, 2, 3, 0, 0, 2}));
  std::vector<float> eight{1, 2, 3, 4, 5, 6, 7, 8};
  creationValues = &eight;
  Block* cut = make("pulse", createPulseBlock);
  creationValues = nullptr;
  EXPECT_EQ(cut->settings, (std::vector<float>{1, 2, 3, 4, 5, 6}));
}

TEST_F(BlockTest, BoundValuesComeFromTheTemplates) {
  Block* t = make("demotime", createDemoTimeBlock);
  EXPECT_EQ(t->boundValue, &demoTime);
  Block* in = makeSink("in.bordersWithme.cameraFOV");
  EXPECT_EQ(in->boundValue, &(*withme)["cameraFOV"]);
  EXPECT_EQ(in->key, "in.bordersWithme.cameraFOV");
  Block* out = make("out.bordersWithin.cameraZoom", createParameterSource);
  EXPECT_EQ(out->boundValue, &(*within)["cameraZoom"]);
  Block* f = makeFloat(1);
  EXPECT_EQ(f->boundValue, nullptr);
  EXPECT_TRUE(f->key.empty());
}

TEST_F(BlockTest, ParameterBlocksOnlyFromTheirOwnDirection) {
  templateKey = "out.bordersWithin.cameraZoom";
  EXPECT_EQ(createParameterSink(), 1);
  templateKey = "in.bordersWithin.cameraZoom";
  EXPECT_EQ(createParameterSource(), 1);
  templateKey = "demotime";
  EXPECT_EQ(createParameterSink(), 1);
  EXPECT_TRUE(allBlocks.empty());
}

TEST_F(BlockTest, TemplatePickWinsOverTheKey) {
  addBlockTemplate("sin", "SIN", nullptr, 42);
  templatePick = 42;
  templateKey = "float";
  EXPECT_EQ(findTemplateWindow(), &blockTemplates.back());
  templatePick = 41;  // no such window
  EXPECT_EQ(findTemplateWindow(), nullptr);
  EXPECT_EQ(createSumBlock(), 1);
  templatePick = 0;
  EXPECT_EQ(findTemplateWindow()->key, "float");
}

TEST_F(BlockTest, InitAddsOnlyMissingTemplatesInToolboxThenParameterOrder) {
  std::vector<std::string> keys;
  for (BlockTemplate& t : blockTemplates) keys.push_back(t.key);
  const std::vector<std::string> expected{"float",
                                          "demotime",
                                          "sum",
                                          "mul",
                                          "sin",
                                          "pulse",
                                          "in.bordersWithin.cameraZoom",
                                          "out.bordersWithin.cameraZoom",
                                          "in.bordersWithin.cameraFOV",
                                          "out.bordersWithin.cameraFOV",
                                          "in.bordersWithin.glowBlurAmount",
                                          "out.bordersWithin.glowBlurAmount",
                                          "in.bordersWithme.cameraZoom",
                                          "out.bordersWithme.cameraZoom",
                                          "in.bordersWithme.cameraFOV",
                                          "out.bordersWithme.cameraFOV"};
  EXPECT_EQ(keys, expected);
  // An editor's own templates stand first; init adds nothing of the same key.
  flowtest::resetFlowCharts();
  addBlockTemplate("float", "FLOAT", nullptr, 7);
  initFlowCharts({within.get()}, &demoTime);
  EXPECT_EQ(blockTemplates.front().pickName, 7);
  EXPECT_EQ(std::count_if(blockTemplates.begin(), blockTemplates.end(),
                          [](const BlockTemplate& t) { return t.key == "float"; }),
            1);
  EXPECT_EQ(blockTemplates.size(), 12u);
}

TEST_F(BlockTest, NumbersRunWithinTheirListsAndAllBlocksKeepsKindOrder) {
  Block* m = make("mul", createMulBlock);
  Block* p0 = make("pulse", createPulseBlock);
  Block* s0 = makeSink("in.bordersWithin.cameraZoom");
  Block* f = makeFloat(2);
  Block* p1 = make("pulse", createPulseBlock);
  Block* o0 = make("out.bordersWithin.cameraZoom", createParameterSource);
  Block* s1 = makeSink("in.bordersWithme.cameraZoom");
  Block* t = make("demotime", createDemoTimeBlock);
  Block* sn = make("sin", createSinBlock);
  Block* su = make("sum", createSumBlock);
  EXPECT_EQ(p0->number, 0);
  EXPECT_EQ(p1->number, 1);
  EXPECT_EQ(s0->number, 0);
  EXPECT_EQ(s1->number, 1);
  EXPECT_EQ(o0->number, 0);
  for (Block* b : {m, f, t, sn, su}) EXPECT_EQ(b->number, -1);
  const std::list<Block*> expected{s0, s1, o0, f, t, sn, p0, p1, su, m};
  EXPECT_EQ(allBlocks, expected);
}

TEST_F(BlockTest, ConnectKeepsBothListsAndMakesACurvePerConnection) {
  Block* f = makeFloat(2);
  Block* m = make("mul", createMulBlock);
  ConnectionCurve* c1 = connectBlocks(f, m);
  ConnectionCurve* c2 = connectBlocks(f, m);  // twice from the same source
  EXPECT_EQ(f->outputs, (std::list<Block*>{m, m}));
  EXPECT_EQ(m->inputs, (std::list<Block*>{f, f}));
  EXPECT_EQ(f->connections, (std::list<ConnectionCurve*>{c1, c2}));
  EXPECT_EQ(c1->source, f);
  EXPECT_EQ(c1->destination, m);
  EXPECT_TRUE(c1->fresh);
  EXPECT_EQ(c1->pickName, 100000);
  EXPECT_EQ(c2->pickName, 100001);
  EXPECT_EQ(curveOfPick(100001), c2);
  EXPECT_EQ(evaluateBlock(m), 4.0f);  // the value counts twice
}

TEST_F(BlockTest, CurvePickNamesAreReusedLastFreedFirst) {
  Block* f = makeFloat(1);
  Block* s = make("sum", createSumBlock);
  ConnectionCurve* a = connectBlocks(f, s);
  ConnectionCurve* b = connectBlocks(f, s);
  ConnectionCurve* c = connectBlocks(f, s);
  EXPECT_EQ(c->pickName, 100002);
  removeConnection(a);
  removeConnection(b);
  EXPECT_EQ(curveOfPick(100000), nullptr);
  EXPECT_EQ(connectBlocks(f, s)->pickName, 100001);
  EXPECT_EQ(connectBlocks(f, s)->pickName, 100000);
  EXPECT_EQ(connectBlocks(f, s)->pickName, 100003);
}

TEST_F(BlockTest, RemovingAConnectionTakesOnePairOnly) {
  Block* f = makeFloat(3);
  Block* s = make("sum", createSumBlock);
  ConnectionCurve* first = connectBlocks(f, s);
  connectBlocks(f, s);
  removeConnection(first);
  EXPECT_EQ(f->outputs.size(), 1u);
  EXPECT_EQ(s->inputs.size(), 1u);
  EXPECT_EQ(f->connections.size(), 1u);
  EXPECT_EQ(evaluateBlock(s), 3.0f);
}

TEST_F(BlockTest, DestroyedBlockLeavesNoTraceInItsNeighbours) {
  Block* f = makeFloat(3);
  Block* sn = make("sin", createSinBlock);
  Block* m = make("mul", createMulBlock);
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  connectBlocks(f, sn);
  connectBlocks(f, m);
  connectBlocks(sn, m);
  connectBlocks(sn, m);
  connectBlocks(m, sink);
  removeBlock(sinBlocks, sn);
  EXPECT_EQ(f->outputs, (std::list<Block*>{m}));
  EXPECT_EQ(f->connections.size(), 1u);
  EXPECT_EQ(f->connections.front()->destination, m);
  EXPECT_EQ(m->inputs, (std::list<Block*>{f}));
  EXPECT_TRUE(sinBlocks.empty());
  EXPECT_EQ(allBlocks.size(), 3u);
  EXPECT_EQ(curveOfPick(100000), nullptr);  // f -> sin went back to the pool
  EXPECT_NE(curveOfPick(100001), nullptr);  // f -> mul stays
  EXPECT_EQ(curveOfPick(100002), nullptr);  // both sin -> mul went
  EXPECT_EQ(curveOfPick(100003), nullptr);
}

TEST_F(BlockTest, RemovingAPulseRenumbersTheOnesBehindIt) {
  Block* p0 = make("pulse", createPulseBlock);
  Block* p1 = make("pulse", createPulseBlock);
  Block* p2 = make("pulse", createPulseBlock);
  Block* p3 = make("pulse", createPulseBlock);
  removeBlock(pulseBlocks, p1);
  EXPECT_EQ(pulseBlocks, (std::list<Block*>{p0, p2, p3}));
  EXPECT_EQ(p0->number, 0);
  EXPECT_EQ(p2->number, 1);
  EXPECT_EQ(p3->number, 2);
  // A script written now numbers them 0, 1, 2.
  Block* sink = makeSink("in.bordersWithin.cameraZoom");
  connectBlocks(p3, sink);
  EXPECT_NE(written().find(" in.bordersWithin.cameraZoom = pulse[ 2 ] (  )  \n"), std::string::npos) << written();
  // A block not in the list: nothing happens.
  removeBlock(sinBlocks, p0);
  EXPECT_EQ(pulseBlocks.size(), 3u);
}

TEST_F(BlockTest, RemovingASinkRenumbersSinks) {
  Block* a = makeSink("in.bordersWithin.cameraZoom");
  Block* b = makeSink("in.bordersWithin.cameraFOV");
  Block* c = makeSink("in.bordersWithme.cameraFOV");
  removeBlock(parameterSinks, a);
  EXPECT_EQ(b->number, 0);
  EXPECT_EQ(c->number, 1);
}

TEST_F(BlockTest, KindListOfEachKind) {
  EXPECT_EQ(kindListOf(makeFloat(1)), &floatBlocks);
  EXPECT_EQ(kindListOf(make("demotime", createDemoTimeBlock)), &demoTimeBlocks);
  EXPECT_EQ(kindListOf(make("sin", createSinBlock)), &sinBlocks);
  EXPECT_EQ(kindListOf(make("mul", createMulBlock)), &mulBlocks);
  EXPECT_EQ(kindListOf(make("sum", createSumBlock)), &sumBlocks);
  EXPECT_EQ(kindListOf(make("pulse", createPulseBlock)), &pulseBlocks);
  EXPECT_EQ(kindListOf(makeSink("in.bordersWithin.cameraZoom")), &parameterSinks);
  EXPECT_EQ(kindListOf(make("out.bordersWithin.cameraZoom", createParameterSource)), &parameterSources);
  Block stray;
  stray.kindName = "timestep";
  EXPECT_EQ(kindListOf(&stray), nullptr);
}

TEST_F(BlockTest, CycleTestMeetsTheTargetOrTheSourceUpstream) {
  Block* t = make("demotime", createDemoTimeBlock);
  Block* s = make("sin", createSinBlock);
  Block* m = make("mul", createMulBlock);
  connectBlocks(t, s);
  connectBlocks(s, m);
  EXPECT_TRUE(wouldCloseCycle(m, s));   // mul's output to one of its upstream blocks
  EXPECT_TRUE(wouldCloseCycle(m, t));
  EXPECT_TRUE(wouldCloseCycle(m, m));   // to itself
  EXPECT_FALSE(wouldCloseCycle(t, m));  // a second path downstream is fine
  Block* f = makeFloat(1);
  EXPECT_FALSE(wouldCloseCycle(f, m));
}

// Hooks: the editor's part runs after flow's, with the template of the block.
std::vector<std::string>& hookLog() {
  static std::vector<std::string> log;
  return log;
}

TEST_F(BlockTest, HooksRunForBoxesCurvesTextsAndLoads) {
  hookLog().clear();
  blockBoxHooks.boxCreated = [](Block& b, const BlockTemplate& t) {
    hookLog().push_back("box " + b.kindName + " from " + t.key);
  };
  blockBoxHooks.boxDestroyed = [](Block& b) { hookLog().push_back("unbox " + b.kindName); };
  blockBoxHooks.boxTextChanged = [](Block& b) { hookLog().push_back("text " + b.text); };
  blockBoxHooks.curveCreated = [](ConnectionCurve& c) { hookLog().push_back("curve " + std::to_string(c.pickName)); };
  blockBoxHooks.curveDestroyed = [](ConnectionCurve& c) {
    hookLog().push_back("uncurve " + std::to_string(c.pickName));
  };
  blockBoxHooks.chartsLoaded = []() { hookLog().push_back("loaded"); };
  Block* f = makeFloat(2.5f);
  Block* s = make("sin", createSinBlock);
  connectBlocks(f, s);
  removeBlock(floatBlocks, f);
  read("");
  const std::vector<std::string> expected{"box float from float", "text 2.5",      "box sin from sin",
                                          "curve 100000",         "uncurve 100000", "unbox float",
                                          "unbox sin",            "loaded"};
  EXPECT_EQ(hookLog(), expected);
}

TEST_F(BlockTest, ClearingEmptiesEveryList) {
  makeFloat(1);
  make("pulse", createPulseBlock);
  makeSink("in.bordersWithin.cameraZoom");
  clearAllBlocks();
  for (std::list<Block*>* l : {&parameterSinks, &parameterSources, &floatBlocks, &demoTimeBlocks, &sinBlocks,
                               &pulseBlocks, &sumBlocks, &mulBlocks, &reservedBlocks1, &reservedBlocks2,
                               &reservedBlocks3, &allBlocks})
    EXPECT_TRUE(l->empty());
  EXPECT_FALSE(blockTemplates.empty());
}

}  // namespace
