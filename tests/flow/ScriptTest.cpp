// The script file: the writer's exact form, the reader's state machine and
// its differences from the writer, the edge cases, files on disk.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>

#include "FlowFixture.h"
#include "ScriptSamples.h"

using flowtest::FlowFixture;

namespace {

class ScriptTest : public FlowFixture {
 protected:
  // A description of the charts: each block of allBlocks with its kind,
  // number, value or settings and the indices of its inputs.
  std::string charts() {
    std::vector<Block*> all(allBlocks.begin(), allBlocks.end());
    auto index = [&](Block* b) { return std::find(all.begin(), all.end(), b) - all.begin(); };
    std::ostringstream out;
    for (Block* b : all) {
      out << b->kindName << "#" << b->number << " v" << b->value << " [";
      for (float s : b->settings) out << s << " ";
      out << "] <-";
      for (Block* in : b->inputs) out << " " << index(in);
      out << " ->";
      for (Block* o : b->outputs) out << " " << index(o);
      out << "\n";
    }
    return out.str();
  }
  int count(const std::list<Block*>& l) { return int(l.size()); }
};

// The sections before the charts, empty.
const std::string defaultsHead = "parameter_defaults {\n}\n";
const std::string head = "parameter_defaults {\n}\npulses {\n}\n";

const char* smallFile =
    "parameter_defaults {\n"
    " bordersWithme.cameraZoom = ( 1 )\n"
    " bordersWithme.cameraFOV = ( 75 )\n"
    "}\n"
    "pulses {\n"
    " pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 )\n"
    "}\n"
    "parameters {\n"
    " in.bordersWithme.cameraFOV = sum ( float ( 75 ) , mul ( float ( 5 ) , pulse[ 0 ] ( demotime (  )  )  )  )  \n"
    "}\n";

TEST_F(ScriptTest, TheSmallCompleteFileReadsAndWritesBackAsItIs) {
  initFlowCharts({withme.get()}, &demoTime);
  read(smallFile);
  EXPECT_EQ(count(parameterSinks), 1);
  EXPECT_EQ(count(pulseBlocks), 1);
  EXPECT_EQ(count(floatBlocks), 2);
  EXPECT_EQ(count(allBlocks), 7);
  EXPECT_EQ((*withme)["cameraZoom"], 1.0f);
  EXPECT_EQ(written(), smallFile);
  demoTime = 0.5f;
  evaluateFlowCharts();
  EXPECT_EQ((*withme)["cameraFOV"], 80.0f);
}

TEST_F(ScriptTest, WriterFormsOfEachKind) {
  Block* sink = makeSink("in.bordersWithin.cameraFOV");
  Block* m = make("mul", createMulBlock);
  Block* s = make("sin", createSinBlock);
  connectBlocks(makeFloat(2), m);
  connectBlocks(make("demotime", createDemoTimeBlock), s);
  connectBlocks(s, m);
  connectBlocks(m, sink);
  Block* p = make("pulse", createPulseBlock);
  make("pulse", createPulseBlock);
  make("pulse", createPulseBlock);
  Block* p3 = make("pulse", createPulseBlock);
  connectBlocks(make("demotime", createDemoTimeBlock), p3);
  connectBlocks(p3, makeSink("in.bordersWithin.cameraZoom"));
  connectBlocks(make("out.bordersWithin.cameraFOV", createParameterSource), makeSink("in.bordersWithme.cameraZoom"));
  connectBlocks(makeFloat(0.5f), makeSink("in.bordersWithme.cameraFOV"));
  makeSink("in.bordersWithin.glowBlurAmount");
  (void)p;
  const std::string w = written();
  EXPECT_NE(w.find(" in.bordersWithin.cameraFOV = mul ( float ( 2 ) , sin ( demotime (  )  )  )  \n"),
            std::string::npos)
      << w;
  EXPECT_NE(w.find(" in.bordersWithin.cameraZoom = pulse[ 3 ] ( demotime (  )  )  \n"), std::string::npos) << w;
  EXPECT_NE(w.find(" in.bordersWithme.cameraZoom = out.bordersWithin.cameraFOV (  )  \n"), std::string::npos) << w;
  EXPECT_NE(w.find(" in.bordersWithme.cameraFOV = float ( 0.5 )  \n"), std::string::npos) << w;
  // A sink without input writes nothing after " = ".
  EXPECT_NE(w.find(" in.bordersWithin.glowBlurAmount =  \n"), std::string::npos) << w;
  EXPECT_NE(w.find(" pulse[ 3 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 )\n}\n"), std::string::npos) << w;
}

TEST_F(ScriptTest, WriterSavesLiveValuesNotDefaults) {
  (*within)["cameraFOV"] = 33.5f;
  const std::string w = written();
  EXPECT_EQ(w.substr(0, w.find("}")),
            "parameter_defaults {\n"
            " bordersWithin.cameraZoom = ( 1 )\n"
            " bordersWithin.cameraFOV = ( 33.5 )\n"
            " bordersWithin.glowBlurAmount = ( 0.5 )\n"
            " bordersWithme.cameraZoom = ( 2 )\n"
            " bordersWithme.cameraFOV = ( 60 )\n");
  EXPECT_EQ(within->parameterByName("cameraFOV")->defaultValue, 75.0f);
}

// ---- edge cases ----

TEST_F(ScriptTest, EmptyFileGivesEmptyChartsAndKeepsDefaults) {
  makeSink("in.bordersWithin.cameraZoom");
  (*within)["cameraZoom"] = 4.0f;
  read("");
  EXPECT_TRUE(allBlocks.empty());
  EXPECT_TRUE(parameterSinks.empty());
  EXPECT_EQ((*within)["cameraZoom"], 4.0f);
  EXPECT_EQ(within->parameterByName("cameraZoom")->defaultValue, 1.0f);
}

TEST_F(ScriptTest, CommaTokenIsNumericWithTheLastValue) {
  read("parameter_defaults { bordersWithin.cameraZoom = ( 1,2 ) bordersWithin.cameraFOV = ( ,,7,, ) }");
  EXPECT_EQ((*within)["cameraZoom"], 2.0f);
  EXPECT_EQ(within->parameterByName("cameraZoom")->defaultValue, 2.0f);
  EXPECT_EQ((*within)["cameraFOV"], 7.0f);
}

TEST_F(ScriptTest, ANumberStopsAtTheFirstCharacterThatDoesNotFit) {
  read("parameter_defaults { bordersWithin.cameraZoom = ( 2x ) }");
  EXPECT_EQ((*within)["cameraZoom"], 2.0f);
}

TEST_F(ScriptTest, PulsesAreNumberedByTheirOrderInTheFile) {
  read(defaultsHead + "pulses {\n pulse[ 9 ] = ( 1, 2, 3, 4, 5, 6 )\n}\n");
  ASSERT_EQ(count(pulseBlocks), 1);
  EXPECT_EQ(pulseBlocks.front()->number, 0);
  EXPECT_EQ(pulseBlocks.front()->settings, (std::vector<float>{1, 2, 3, 4, 5, 6}));
}

TEST_F(ScriptTest, FiveNumbersMakeNoPulseAndTheNextPulseLineStartsAfresh) {
  read(defaultsHead + "pulses {\n pulse[ 0 ] = ( 1, 2, 3, 4, 5 )\n pulse[ 1 ] = ( 6, 7, 8, 9, 10, 11 )\n}\n");
  ASSERT_EQ(count(pulseBlocks), 1);
  EXPECT_EQ(pulseBlocks.front()->settings, (std::vector<float>{6, 7, 8, 9, 10, 11}));
}

TEST_F(ScriptTest, CommasStandingAloneCountSoThreeNumbersMakeAPaddedPulse) {
  read(defaultsHead + "pulses {\n pulse[ 0 ] = ( 1 , 2 , 3 , 4 , 5 , 6 )\n}\n");
  ASSERT_EQ(count(pulseBlocks), 1);
  EXPECT_EQ(pulseBlocks.front()->settings, (std::vector<float>{1, 2, 3, 0, 0, 2}));
}

TEST_F(ScriptTest, APulseInTwoChartsHasOneInputAndTwoOutputs) {
  read(defaultsHead + "pulses { pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 ) }\nparameters {\n"
       " in.bordersWithin.cameraZoom = pulse[ 0 ] ( demotime (  )  )  \n"
       " in.bordersWithin.cameraFOV = pulse[ 0 ] ( demotime (  )  )  \n}\n");
  EXPECT_EQ(count(demoTimeBlocks), 1);
  Block* p = pulseBlocks.front();
  EXPECT_EQ(p->inputs.size(), 1u);
  EXPECT_EQ(p->outputs.size(), 2u);
  demoTime = 0.5f;
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_EQ((*within)["cameraFOV"], 1.0f);
  // Written in full at both places, read back the same.
  const std::string w = written();
  read(w);
  EXPECT_EQ(count(demoTimeBlocks), 1);
  EXPECT_EQ(written(), w);
}

TEST_F(ScriptTest, FloatKeepsSixSignificantDigitsThroughTheFile) {
  Block* f = makeFloat(0.1234567f);
  connectBlocks(f, makeSink("in.bordersWithin.cameraZoom"));
  read(written());
  ASSERT_EQ(count(floatBlocks), 1);
  EXPECT_EQ(floatBlocks.front()->value, 0.123457f);
  EXPECT_EQ(floatBlocks.front()->text, "0.123457");
}

TEST_F(ScriptTest, ExponentFormsWithTwoAndThreeDigitsReadAlike) {
  read("parameter_defaults {\n bordersWithin.cameraZoom = ( 1e-005 )\n bordersWithin.cameraFOV = ( 1e+006 )\n"
       " bordersWithme.cameraZoom = ( 1e-05 )\n bordersWithme.cameraFOV = ( 2.5E+01 )\n}\n"
       "pulses { pulse[ 0 ] = ( 1e-001, 5e-002, 0, 1.5e+001, 0, 2e+000 ) }\n"
       "parameters { in.bordersWithin.glowBlurAmount = float ( -1.25e+002 ) }\n");
  EXPECT_EQ((*within)["cameraZoom"], 1e-5f);
  EXPECT_EQ((*within)["cameraFOV"], 1e6f);
  EXPECT_EQ((*withme)["cameraZoom"], 1e-5f);
  EXPECT_EQ((*withme)["cameraFOV"], 25.0f);
  EXPECT_EQ(pulseBlocks.front()->settings, (std::vector<float>{0.1f, 0.05f, 0, 15, 0, 2}));
  EXPECT_EQ(floatBlocks.front()->value, -125.0f);
}

TEST_F(ScriptTest, WrittenAndReadAgainGivesTheSameChartsWithTheSameNumbers) {
  read(flowtest::everyConstructScript());
  const std::string before = charts();
  const std::string w = written();
  EXPECT_EQ(w, flowtest::everyConstructScript());
  read(w);
  EXPECT_EQ(charts(), before);
  EXPECT_EQ(written(), w);
  EXPECT_EQ(count(allBlocks), 24);
  EXPECT_EQ(count(pulseBlocks), 3);
  EXPECT_EQ(count(parameterSinks), 4);
  EXPECT_EQ(count(parameterSources), 1);
}

TEST_F(ScriptTest, EveryConstructEvaluates) {
  read(flowtest::everyConstructScript());
  demoTime = 12.1f;
  evaluateFlowCharts();
  EXPECT_FLOAT_EQ((*within)["cameraFOV"], 75.0f + 5.0f * pulseValue({0.25f, 0.5f, 0.25f, 0, 0, 2}, 12.1f));
  EXPECT_FLOAT_EQ((*within)["cameraZoom"],
                  (*within)["cameraFOV"] * 0.0133333f * std::sin(12.1f * 3.14159f));
  EXPECT_FLOAT_EQ((*withme)["cameraFOV"], pulseValue({0.25f, 0.5f, 0.25f, 0, 0, 2}, 12.1f) +
                                              pulseValue({0.05f, 0.1f, 0.3f, 12, 4, 0.46875f}, 11.6f) +
                                              pulseValue({0, 1, 0, 1e-5f, 1, 3}, 0.0f));
  EXPECT_FLOAT_EQ((*within)["glowBlurAmount"], 0.123457f);
  EXPECT_EQ((*withme)["cameraZoom"], 1e6f);  // a default, not driven
}

// ---- the reader's differences from the writer ----

TEST_F(ScriptTest, AFloatsValueIsRecognisedByPositionNotSyntax) {
  read(head + "parameters { in.bordersWithin.cameraZoom = float ( anything 4 ) }");
  ASSERT_EQ(count(floatBlocks), 1);
  EXPECT_EQ(floatBlocks.front()->value, 4.0f);
  // A number where a block's inputs stand is not a float: ignored.
  read(head + "parameters { in.bordersWithin.cameraZoom = sum ( 5 , float ( 3 ) ) }");
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 3.0f);
}

TEST_F(ScriptTest, AnEmptyRightSideTakesTheNextLinesExpression) {
  read(head + "parameters {\n in.bordersWithin.cameraZoom =  \n in.bordersWithin.cameraFOV = float ( 3 )  \n}\n");
  ASSERT_EQ(count(parameterSinks), 1);
  EXPECT_EQ(parameterSinks.front()->kindName, "in.bordersWithin.cameraZoom");
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 3.0f);
  EXPECT_EQ((*within)["cameraFOV"], 75.0f);
}

TEST_F(ScriptTest, SectionWordsAnywhereInATokenChangeTheSection) {
  read("parameter_defaults { bordersWithin.cameraZoom = ( 3 ) xpulsesx bordersWithin.cameraFOV = ( 9 ) "
       "pulse[ 0 ] = ( 1, 1, 1, 1, 1, 1 ) ]parameters[ in.bordersWithin.glowBlurAmount = float ( 2 ) }");
  EXPECT_EQ((*within)["cameraZoom"], 3.0f);
  EXPECT_EQ((*within)["cameraFOV"], 75.0f);  // read as pulse-section words: no default
  EXPECT_EQ(count(pulseBlocks), 1);
  EXPECT_EQ(count(parameterSinks), 1);
  // The braces of the first two sections are not needed.
  read("parameter_defaults bordersWithin.cameraZoom = ( 5 ) pulses pulse[ 0 ] = ( 1, 2, 3, 4, 5, 6 ) parameters");
  EXPECT_EQ((*within)["cameraZoom"], 5.0f);
  EXPECT_EQ(count(pulseBlocks), 1);
}

TEST_F(ScriptTest, UnknownNamesInTheDefaultsAreSkippedSilently) {
  read("parameter_defaults {\n gone.cameraZoom = ( 3 )\n bordersWithin.gone = ( 4 )\n bordersWithin = ( 6 )\n"
       " bordersWithin.cameraFOV = ( 5 )\n}\n");
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_EQ((*within)["cameraFOV"], 5.0f);
  EXPECT_EQ((*withme)["cameraZoom"], 2.0f);
}

TEST_F(ScriptTest, NothingBeforeTheDefaultsSectionIsRead) {
  read("bordersWithin.cameraZoom = ( 3 ) parameters { in.bordersWithin.cameraZoom = float ( 1 ) }");
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_TRUE(allBlocks.empty());
}

TEST_F(ScriptTest, EverythingAfterTheChartsIsIgnored) {
  read(head + "parameters { in.bordersWithin.cameraZoom = float ( 1 ) } in.bordersWithin.cameraFOV = float ( 2 ) "
       "parameter_defaults { bordersWithin.cameraFOV = ( 3 ) }");
  EXPECT_EQ(count(parameterSinks), 1);
  EXPECT_EQ((*within)["cameraFOV"], 75.0f);
}

// ---- failures ----

TEST_F(ScriptTest, AnUnknownSinkFeedsTheLastSinkThereIs) {
  read(head + "parameters {\n in.bordersWithin.cameraZoom = float ( 1 )  \n in.gone.cameraZoom = float ( 2 )  \n}\n");
  ASSERT_EQ(count(parameterSinks), 1);
  EXPECT_EQ(parameterSinks.front()->inputs.size(), 2u);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
}

TEST_F(ScriptTest, AnUnknownSinkWithNoSinkYetIsReadPast) {
  read(head + "parameters {\n in.gone.cameraZoom = sum ( float ( 2 ) , demotime (  )  )  \n"
       " in.bordersWithin.cameraZoom = float ( 1 )  \n}\n");
  EXPECT_EQ(count(parameterSinks), 1);
  EXPECT_EQ(count(allBlocks), 2);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
}

TEST_F(ScriptTest, ASinkIsMadeFromParameterEntriesOnly) {
  read(head + "parameters {\n demotime = float ( 2 )  \n float = float ( 3 )  \n}\n");
  EXPECT_TRUE(parameterSinks.empty());
  EXPECT_TRUE(allBlocks.empty());
  evaluateFlowCharts();
}

TEST_F(ScriptTest, AMissingPulseConnectsNothingAndItsInputIsReadPast) {
  read(head + "parameters {\n in.bordersWithin.cameraZoom = pulse[ 3 ] ( demotime (  )  )  \n"
       " in.bordersWithin.cameraFOV = float ( 1 )  \n}\n");
  EXPECT_EQ(count(parameterSinks), 2);
  EXPECT_TRUE(parameterSinks.front()->inputs.empty());
  EXPECT_TRUE(demoTimeBlocks.empty());
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 1.0f);
  EXPECT_EQ((*within)["cameraFOV"], 1.0f);
}

TEST_F(ScriptTest, UnknownBlockNamesAreReadPastWithWhatTheyHold) {
  read(head + "parameters {\n in.bordersWithin.cameraZoom = sum ( float ( 1 ) , cos ( float ( 5 ) , sin ( float ( 1 ) ) ) "
       ", float ( 2 )  )  \n}\n");
  EXPECT_EQ(count(floatBlocks), 2);
  EXPECT_TRUE(sinBlocks.empty());
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 3.0f);
}

TEST_F(ScriptTest, AnOutOfDateSourceTakesTheLastSourceThereIs) {
  read(head + "parameters {\n in.bordersWithin.cameraZoom = out.bordersWithme.cameraFOV (  )  \n"
       " in.bordersWithin.cameraFOV = out.bordersWithin.gone (  )  \n}\n");
  EXPECT_EQ(count(parameterSources), 1);
  EXPECT_EQ(parameterSources.front()->outputs.size(), 2u);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraFOV"], 60.0f);
  // With no source yet there is nothing to take.
  read(head + "parameters {\n in.bordersWithin.cameraFOV = out.bordersWithin.gone (  )  \n}\n");
  EXPECT_TRUE(parameterSinks.front()->inputs.empty());
}

TEST_F(ScriptTest, APulseFedByItselfIsNotConnected) {
  read(defaultsHead + "pulses { pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 ) }\nparameters {\n"
       " in.bordersWithin.cameraZoom = pulse[ 0 ] ( pulse[ 0 ] ( demotime (  )  )  )  \n"
       " in.bordersWithin.cameraFOV = float ( 3 )  \n}\n");
  Block* p = pulseBlocks.front();
  EXPECT_TRUE(p->inputs.empty());
  EXPECT_EQ(p->outputs.size(), 1u);
  EXPECT_TRUE(demoTimeBlocks.empty());
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 0.0f);
  EXPECT_EQ((*within)["cameraFOV"], 3.0f);
  // Two pulses feeding each other: the connection that closes the loop is refused.
  read(defaultsHead + "pulses { pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 ) pulse[ 1 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 ) }\n"
       "parameters {\n in.bordersWithin.cameraZoom = pulse[ 0 ] ( pulse[ 1 ] ( pulse[ 0 ] (  )  )  )  \n}\n");
  Block* p0 = pulseBlocks.front();
  Block* p1 = pulseBlocks.back();
  EXPECT_EQ(p0->inputs, (std::list<Block*>{p1}));
  EXPECT_TRUE(p1->inputs.empty());
  EXPECT_EQ(p0->outputs, (std::list<Block*>{parameterSinks.front()}));
  evaluateFlowCharts();
}

TEST_F(ScriptTest, ALoadReplacesTheChartsButLeavesUnmentionedParameters) {
  read(flowtest::everyConstructScript());
  read("parameter_defaults { bordersWithin.cameraZoom = ( 9 ) }");
  EXPECT_TRUE(allBlocks.empty());
  EXPECT_EQ((*within)["cameraZoom"], 9.0f);
  EXPECT_EQ((*within)["cameraFOV"], 70.0f);  // from the first load
}

TEST_F(ScriptTest, TheMouseOverAToolboxEntryDoesNotChangeWhatALoadMakes) {
  addBlockTemplate("sin", "SIN", nullptr, 17);
  templatePick = 17;
  read(flowtest::everyConstructScript());
  EXPECT_EQ(count(pulseBlocks), 3);
  EXPECT_EQ(count(floatBlocks), 6);
  EXPECT_EQ(templatePick, 17);
}

// ---- files ----

class ScriptFileTest : public ScriptTest {
 protected:
  void SetUp() override {
    ScriptTest::SetUp();
    char pattern[] = "/tmp/ostravine-script-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
  }
  void TearDown() override {
    std::remove((dir + "/ostravine.scr").c_str());
    rmdir(dir.c_str());
    ScriptTest::TearDown();
  }
  std::string dir;
};

TEST_F(ScriptFileTest, SaveAndLoadThroughAFile) {
  read(flowtest::everyConstructScript());
  const std::string path = dir + "/ostravine.scr";
  EXPECT_EQ(saveScript(path), 0);
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), flowtest::everyConstructScript());
  clearAllBlocks();
  EXPECT_EQ(loadScript(path), 0);
  EXPECT_EQ(written(), flowtest::everyConstructScript());
  // Saving again truncates: a shorter script leaves nothing of the longer.
  clearAllBlocks();
  EXPECT_EQ(saveScript(path), 0);
  std::ifstream again(path);
  std::stringstream shorter;
  shorter << again.rdbuf();
  EXPECT_EQ(shorter.str(), written());
}

TEST_F(ScriptFileTest, AMissingFileClearsTheChartsAndKeepsTheDefaults) {
  read(flowtest::everyConstructScript());
  EXPECT_EQ(loadScript(dir + "/no-such.scr"), 1);
  EXPECT_TRUE(allBlocks.empty());
  EXPECT_EQ((*within)["cameraFOV"], 70.0f);
}

TEST_F(ScriptFileTest, AnUnwritableFileGivesOneAndNoCrash) {
  EXPECT_EQ(saveScript(dir + "/no-such-folder/ostravine.scr"), 1);
}

}  // namespace
