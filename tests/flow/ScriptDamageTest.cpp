// The reader over damaged scripts: truncated at every byte, with unknown
// words, huge numbers, missing brackets and braces, random bytes and absurd
// nesting. Never a crash; a damaged script yields fewer blocks, and what
// stood before the damage is read.
#include <gtest/gtest.h>

#include <cstdint>

#include "FlowFixture.h"
#include "ScriptSamples.h"

using flowtest::FlowFixture;

namespace {

class ScriptDamageTest : public FlowFixture {
 protected:
  // Reads the text, then evaluates and writes what came of it (neither may
  // crash on a partial chart), and gives the number of blocks.
  size_t readCount(const std::string& text) {
    read(text);
    evaluateFlowCharts();
    (void)written();
    return allBlocks.size();
  }
  // Deterministic numbers for the mutations (a small linear congruential
  // generator; the C library's is not ours to reseed here).
  uint32_t next() {
    state = state * 1103515245u + 12345u;
    return (state >> 8) & 0xFFFFFF;
  }
  uint32_t state = 20241123u;
};


using Damage = ScriptDamageTest;

TEST_F(Damage, TruncatedAtEveryByteOfAScriptWithEveryConstruct) {
  const std::string& text = flowtest::everyConstructScript();
  const size_t whole = readCount(text);
  ASSERT_EQ(whole, 24u);
  size_t atLastBlank = 0;
  for (size_t k = 0; k <= text.size(); ++k) {
    const size_t n = readCount(text.substr(0, k));
    ASSERT_LE(n, whole) << "cut at " << k;
    ASSERT_GE(n, atLastBlank) << "cut at " << k;
    if (k < text.size() && isspace(static_cast<unsigned char>(text[k]))) atLastBlank = n;
  }
  // Cut inside the second chart: the first chart is read whole.
  const size_t cut = text.find(" in.bordersWithin.cameraZoom");
  read(text.substr(0, cut + 40));
  ASSERT_GE(parameterSinks.size(), 1u);
  demoTime = 0.5f;
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraFOV"], 80.0f);
}

TEST_F(Damage, UnknownWordsAnywhere) {
  const std::string& text = flowtest::everyConstructScript();
  const size_t whole = readCount(text);
  for (const char* word : {"bogus", "in.nothing.here", "out.nothing.here", "float[", "12abc", "parameter_default"}) {
    for (size_t k = 0; k < text.size(); ++k) {
      if (text[k] != ' ') continue;
      const std::string damaged = text.substr(0, k) + " " + word + text.substr(k);
      const size_t n = readCount(damaged);
      // An out-of-date out. name takes the last source there is, a number
      // is read as one, and "float[" opens brackets: those may attach more.
      const std::string w = word;
      if (w == "bogus" || w == "in.nothing.here" || w == "parameter_default") {
        ASSERT_LE(n, whole) << word << " at " << k;
      }
    }
  }
}

TEST_F(Damage, HugeAndOddNumbersInEveryNumberPlace) {
  const std::string& text = flowtest::everyConstructScript();
  const size_t whole = readCount(text);
  const char* numbers[] = {"1e39",       "-1e39", "1e999", "-1e999", "1e-999", "99999999999999999999999999",
                           "3.4e38,3.4e38", "nan",   "inf",   "-0",     "0x1p3",  "2147483648"};
  // Every token that starts with a digit or a minus sign, replaced in turn.
  std::vector<std::pair<size_t, size_t>> places;
  for (size_t k = 0; k < text.size(); ++k) {
    if ((k == 0 || text[k - 1] == ' ') && (isdigit(static_cast<unsigned char>(text[k])) || text[k] == '-')) {
      size_t e = text.find_first_of(" \n", k);
      places.emplace_back(k, e - k);
    }
  }
  ASSERT_GT(places.size(), 30u);
  for (auto [at, length] : places) {
    for (const char* number : numbers) {
      std::string damaged = text;
      damaged.replace(at, length, number);
      ASSERT_LE(readCount(damaged), whole) << number << " at " << at;
    }
  }
  // A huge pulse number refers to no pulse; a huge Repeats is an endless pulse.
  read("parameter_defaults {\n}\npulses {\n pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 1e30, 2 )\n}\nparameters {\n"
       " in.bordersWithin.cameraZoom = pulse[ 1e30 ] ( demotime (  )  )  \n"
       " in.bordersWithin.cameraFOV = pulse[ 0 ] ( demotime (  )  )  \n}\n");
  EXPECT_TRUE(parameterSinks.front()->inputs.empty());
  demoTime = 4.5f;
  evaluateFlowCharts();
  EXPECT_NEAR((*within)["cameraFOV"], 1.0f, 1e-6f);
}

TEST_F(Damage, MissingBracketsBracesCommasAndEqualSigns) {
  const std::string& text = flowtest::everyConstructScript();
  for (char c : {'{', '}', '(', ')', '[', ']', ',', '=', '\n'}) {
    // Each occurrence alone, then all of them at once.
    for (size_t k = text.find(c); k != std::string::npos; k = text.find(c, k + 1)) {
      std::string damaged = text;
      damaged.erase(k, 1);
      readCount(damaged);
    }
    std::string stripped;
    for (char d : text)
      if (d != c) stripped += d;
    readCount(stripped);
  }
  // Without the braces of the first two sections everything is still read.
  std::string unbraced = text;
  for (const char* piece : {"parameter_defaults {\n", "}\npulses {\n"}) {
    const size_t at = unbraced.find(piece);
    unbraced.replace(at, std::string(piece).size(), std::string(piece).find("pulses") != std::string::npos
                                                        ? "pulses\n"
                                                        : "parameter_defaults\n");
  }
  unbraced.replace(unbraced.find("}\nparameters"), 2, "");
  EXPECT_EQ(readCount(unbraced), 24u);
}

TEST_F(Damage, RandomBytesAndRandomTokens) {
  const std::string& text = flowtest::everyConstructScript();
  const size_t whole = readCount(text);
  const char* tokens[] = {"(", ")", "{", "}", "[", "]", ",", "=", "pulse[", "sum", "mul", "sin", "float",
                          "demotime", "pulses", "parameters", "0", "3", "-1", "in.bordersWithin.cameraZoom",
                          "out.bordersWithin.cameraFOV", "bordersWithme.cameraFOV", "\n", "\t", "\x01", "\xff"};
  for (int round = 0; round < 600; ++round) {
    std::string damaged = text;
    const int changes = 1 + int(next() % 12);
    for (int c = 0; c < changes; ++c) {
      const size_t at = next() % (damaged.size() + 1);
      switch (next() % 3) {
        case 0:  // a random byte over one
          if (at < damaged.size()) damaged[at] = char(next() & 0xFF);
          break;
        case 1:  // a token put in
          damaged.insert(at, std::string(" ") + tokens[next() % (sizeof tokens / sizeof *tokens)] + " ");
          break;
        default:  // a stretch cut out
          damaged.erase(at, next() % 20);
          break;
      }
    }
    readCount(damaged);
  }
  // After all that, the whole script still reads as before.
  EXPECT_EQ(readCount(text), whole);
  const std::string w = written();
  EXPECT_EQ(w.substr(w.find("pulses {")), text.substr(text.find("pulses {")));
}

TEST_F(Damage, BinaryGarbage) {
  std::string garbage;
  for (int i = 0; i < 20000; ++i) garbage += char(next() & 0xFF);
  readCount(garbage);
  readCount("parameter_defaults {\n}\npulses {\n}\nparameters {\n in.bordersWithin.cameraZoom = " + garbage);
  SUCCEED();
}

TEST_F(Damage, AbsurdNestingReadsEvaluatesAndWritesWithoutOverflow) {
  const int depth = 50000;
  std::string text = "parameter_defaults {\n}\npulses {\n}\nparameters {\n in.bordersWithin.cameraZoom = ";
  for (int i = 0; i < depth; ++i) text += "sum ( ";
  text += "float ( 0.5 ) ";
  for (int i = 0; i < depth; ++i) text += " ) ";
  text += " \n}\n";
  EXPECT_EQ(readCount(text), size_t(depth) + 2);
  evaluateFlowCharts();
  EXPECT_EQ((*within)["cameraZoom"], 0.5f);
  const std::string w = written();
  read(w);
  EXPECT_EQ(allBlocks.size(), size_t(depth) + 2);
  // Unclosed, the same depth is read to the end of the file.
  std::string open = "parameter_defaults {\n}\npulses {\n}\nparameters {\n in.bordersWithin.cameraZoom = ";
  for (int i = 0; i < depth; ++i) open += "mul ( ";
  EXPECT_EQ(readCount(open), size_t(depth) + 1);
}

}  // namespace
