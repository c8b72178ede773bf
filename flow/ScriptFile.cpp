// ScriptFile: the reader and the writer of "ostravine.scr". See ScriptFile.h.
#include "flow/ScriptFile.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <istream>
#include <ostream>
#include <sstream>
#include <vector>

#include "flow/Block.h"
#include "flow/FlowCharts.h"
#include "scenes/Scene.h"

namespace {

bool holds(const std::string& text, const char* piece) { return text.find(piece) != std::string::npos; }

// Pieces of a text between separators, as strtok gives them: leading,
// trailing and repeated separators vanish.
std::vector<std::string> splitPieces(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::string piece;
  for (char c : text) {
    if (c == separator) {
      if (!piece.empty()) pieces.push_back(piece);
      piece.clear();
    } else {
      piece += c;
    }
  }
  if (!piece.empty()) pieces.push_back(piece);
  return pieces;
}

// The reader's tokens: whitespace-separated words, each split at commas; when
// any piece starts with a number the token is numeric, with the value of the
// last such piece, and its text is empty. A non-numeric token makes the text
// of the token before it `previousName`.
class TokenReader {
 public:
  explicit TokenReader(std::istream& in_) : in(in_) {}

  // False at the end of the stream.
  bool next() {
    std::string word;
    if (!(in >> word)) return false;
    numeric = false;
    for (const std::string& piece : splitPieces(word, ',')) {
      std::istringstream converter(piece);
      float v;
      // The stream stops at the first character that does not fit: "2x" is 2.
      if (converter >> v) {
        numeric = true;
        number = v;
      }
    }
    if (numeric) {
      text.clear();
    } else {
      previousName = text;
      text = word;
    }
    return true;
  }

  std::string text;          // empty for a numeric token
  bool numeric = false;
  float number = 0.0f;
  std::string previousName;  // text of the token before the last non-numeric one

 private:
  std::istream& in;
};

// One open call of the expression reader.
struct ExpressionFrame {
  Block* current;       // the block the expressions read here feed; may be null
  int depth;            // 0 at the sink
  bool enteredSkip;     // no blocks are made in this call
  bool skip;            // the local copy, set by a repeated pulse number
  std::string name;
  bool inBrackets = false;
  int pulseNumber = -1;
};

class ScriptReader {
 public:
  explicit ScriptReader(std::istream& in) : tokens(in) {}

  void run() {
    int section = 0;
    int defaultsState = 0;
    int pulseState = 0;
    int fieldCount = 0;
    Parameter* currentParameter = nullptr;
    std::vector<float> pulseValues;

    while (tokens.next()) {
      const std::string& t = tokens.text;
      if (section == 0) {
        if (holds(t, "parameter_defaults")) {
          section = 1;
          defaultsState = 0;
          currentParameter = nullptr;
        }
      } else if (section == 1) {
        if (holds(t, "pulses")) {
          section = 2;
          pulseState = 0;
        } else if (defaultsState == 0) {
          if (!holds(t, "{") && !holds(t, "}")) {
            currentParameter = findParameter(t);
            defaultsState = 1;
          }
        } else if (defaultsState == 1) {
          if (holds(t, "(")) defaultsState = 2;
        } else if (defaultsState == 2) {
          if (holds(t, ")")) {
            defaultsState = 0;
          } else if (tokens.numeric && currentParameter) {
            *currentParameter->value = tokens.number;
            currentParameter->defaultValue = tokens.number;
          }
        }
      } else if (section == 2) {
        if (holds(t, "parameters")) {
          section = 3;
          defaultsState = 0;
        } else if (pulseState == 0) {
          if (holds(t, "pulse[")) pulseState = 1;
        } else if (pulseState == 1) {
          if (tokens.numeric) {
            pulseValues.clear();  // the pulse's own number is ignored: the file's order numbers them
            pulseState = 2;
          }
        } else if (pulseState == 2) {
          if (holds(t, "(")) {
            pulseState = 3;
            fieldCount = 0;
          }
        } else if (pulseState == 3) {
          if (tokens.numeric) {
            pulseValues.push_back(tokens.number);
            if (++fieldCount == 6) createPulse(pulseValues);
          } else if (holds(t, ",")) {
            // Commas standing alone count as fields too; a pulse that reaches
            // six this way has fewer numbers and is padded with the defaults.
            if (++fieldCount == 6) createPulse(pulseValues);
          } else if (holds(t, ")")) {
            pulseState = 0;
          }
        }
      } else if (section == 3) {
        if (defaultsState == 0 && holds(t, "=")) {
          templateKey = tokens.previousName;
          createParameterSink();
          // A sink that cannot be made feeds its expression into the last sink
          // there is; with none, the expression is read past.
          Block* sink = parameterSinks.empty() ? nullptr : parameterSinks.back();
          readExpression(sink, sink == nullptr);
        } else if (holds(t, "}")) {
          section = 4;
        }
      } else {
        // After the charts: everything is ignored.
      }
    }
  }

 private:
  // "<scene>.<parameter>": the first two pieces between dots.
  Parameter* findParameter(const std::string& text) {
    std::vector<std::string> pieces = splitPieces(text, '.');
    if (pieces.size() < 2) return nullptr;
    for (Scene* scene : flowScenes())
      if (scene->name == pieces[0]) return scene->parameterByName(pieces[1]);
    return nullptr;
  }

  void createPulse(std::vector<float>& values) {
    templateKey = "pulse";
    creationValues = &values;
    createPulseBlock();
    creationValues = nullptr;
  }

  // The block a name stands for at a "(": made new, or an existing pulse.
  Block* resolve(const std::string& name, int pulseNumber) {
    if (name == "pulse") {
      for (Block* b : pulseBlocks)
        if (b->number == pulseNumber) return b;
      return nullptr;
    }
    int (*create)() = nullptr;
    std::list<Block*>* kindList = nullptr;
    if (name == "demotime") {
      create = createDemoTimeBlock;
      kindList = &demoTimeBlocks;
    } else if (name == "sin") {
      create = createSinBlock;
      kindList = &sinBlocks;
    } else if (name == "mul") {
      create = createMulBlock;
      kindList = &mulBlocks;
    } else if (name == "sum") {
      create = createSumBlock;
      kindList = &sumBlocks;
    } else if (name == "float") {
      create = createFloatBlock;
      kindList = &floatBlocks;
    } else if (holds(name, "out.")) {
      create = createParameterSource;
      kindList = &parameterSources;
    } else {
      return nullptr;
    }
    templateKey = name;
    std::vector<float> zero{0.0f};
    if (name == "float") creationValues = &zero;
    const int failed = create();
    creationValues = nullptr;
    if (failed == 0) return kindList->back();
    // An out-of-date name silently takes the last block of its kind.
    return kindList->empty() ? nullptr : kindList->back();
  }

  // Reads one expression into `sink` (the depth-0 call), on its own stack.
  void readExpression(Block* sink, bool skip) {
    std::vector<ExpressionFrame> frames;
    frames.push_back(ExpressionFrame{sink, 0, skip, skip, std::string()});
    while (!frames.empty() && tokens.next()) {
      ExpressionFrame& f = frames.back();
      const std::string& t = tokens.text;
      if (tokens.numeric) {
        if (f.inBrackets) {
          // A pulse number; its second mention reads past the nested expression.
          const float n = std::round(tokens.number);
          f.pulseNumber = std::fabs(n) < 1.0e9f ? int(n) : -1;
          bool seen = false;
          for (int s : seenPulses) seen = seen || s == f.pulseNumber;
          if (seen) f.skip = true;
          seenPulses.push_back(f.pulseNumber);
        } else if (f.current && f.current->kindName == "float") {
          setFloatValue(f.current, tokens.number);
        }
        continue;
      }
      if (holds(t, "(")) {
        Block* block = nullptr;
        if (!f.enteredSkip) block = resolve(f.name, f.pulseNumber);
        // No connection that would close a cycle (a pulse fed by itself).
        bool connected = false;
        if (block && f.current && !wouldCloseCycle(block, f.current)) {
          connectBlocks(block, f.current);
          connected = true;
        }
        // What feeds a block that is not there, or not connected, is read past.
        const bool childSkip = f.skip || !block || !connected;
        // A pulse's input is read only at its first mention: a later mention
        // is connected, and its nested expression read past.
        frames.push_back(ExpressionFrame{block, f.depth + 1, childSkip, childSkip, std::string()});
        continue;
      }
      if (holds(t, ",")) continue;
      if (holds(t, ")") || holds(t, "}")) {
        closeCall(frames);
        continue;
      }
      if (holds(t, "]")) {
        if (f.inBrackets) f.name = "pulse";
        continue;
      }
      if (holds(t, "[")) {
        f.inBrackets = true;
        continue;
      }
      f.inBrackets = false;
      f.name = t;
    }
  }

  // The end of one call: back in the caller, whose local skip is reset; the
  // call at depth 0 is complete after its one block.
  void closeCall(std::vector<ExpressionFrame>& frames) {
    frames.pop_back();
    if (frames.empty()) return;
    ExpressionFrame& caller = frames.back();
    caller.skip = caller.enteredSkip;
    if (caller.depth == 0) frames.pop_back();
  }

  TokenReader tokens;
  std::vector<int> seenPulses;
};

// ---------------------------------------------------------------------------
// Writer
// ---------------------------------------------------------------------------

void writeBlockName(std::ostream& out, const Block* block) {
  if (block->kindName == "pulse")
    out << "pulse" << "[ " << block->number << " ]";
  else
    out << block->kindName;
}

// A sink's expression: its inputs, ", " between them, each written as
// name ( content ) with the content its own inputs, or a float's text. Walked
// on its own stack; a block met again on its own path (a cycle) is written
// with empty content.
void writeExpression(std::ostream& out, Block* sink) {
  struct Frame {
    Block* block;
    std::list<Block*>::iterator next;
  };
  std::vector<Frame> frames;
  sink->onWalkPath = true;
  frames.push_back({sink, sink->inputs.begin()});
  while (!frames.empty()) {
    Frame& f = frames.back();
    if (f.next != f.block->inputs.end()) {
      if (f.next != f.block->inputs.begin()) out << ", ";
      Block* input = *f.next++;
      writeBlockName(out, input);
      out << " ( ";
      if (input->onWalkPath) {
        out << " ) ";
        continue;
      }
      if (input->inputs.empty()) {
        if (input->kindName == "float") out << input->text;
        out << " ) ";
        continue;
      }
      input->onWalkPath = true;
      frames.push_back({input, input->inputs.begin()});
      continue;
    }
    f.block->onWalkPath = false;
    const bool root = frames.size() == 1;
    frames.pop_back();
    if (!root) out << " ) ";
  }
}

}  // namespace

// ---------------------------------------------------------------------------
// Interface
// ---------------------------------------------------------------------------

void readScript(std::istream& in) {
  // The mouse may stand over a toolbox entry: blocks of a load come by key.
  const int savedPick = templatePick;
  templatePick = 0;
  templateKey = "pulse";
  clearAllBlocks();
  deferAllBlocksRebuild(true);
  ScriptReader(in).run();
  deferAllBlocksRebuild(false);
  templatePick = savedPick;
  if (blockBoxHooks.chartsLoaded) blockBoxHooks.chartsLoaded();
}

int loadScript(const std::string& fileName) {
  std::ifstream in(fileName);
  if (!in) {
    // Nothing to read; the clearing still happens.
    std::istringstream nothing;
    readScript(nothing);
    return 1;
  }
  readScript(in);
  return 0;
}

void writeScript(std::ostream& out) {
  out << "parameter_defaults {\n";
  for (Scene* scene : flowScenes())
    for (Parameter& p : scene->parameters)
      out << " " << scene->name << "." << p.name << " = ( " << formatFloat(*p.value) << " )" << "\n";
  out << "}\n";
  out << "pulses {\n";
  for (Block* pulse : pulseBlocks) {
    out << " pulse[ " << pulse->number << " ] = ( ";
    for (size_t i = 0; i < pulse->settings.size(); ++i) {
      if (i > 0) out << ", ";
      out << formatFloat(pulse->settings[i]);
    }
    out << " )\n";
  }
  out << "}\n";
  out << "parameters {\n";
  for (Block* sink : parameterSinks) {
    out << " " << sink->kindName << " = ";
    writeExpression(out, sink);
    out << " \n";
  }
  out << "}\n";
}

int saveScript(const std::string& fileName) {
  std::ofstream out(fileName, std::ios::out | std::ios::trunc);
  writeScript(out);
  out.flush();
  return out ? 0 : 1;
}
