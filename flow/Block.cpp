// Block: the block lists, creation, connection and removal. See Block.h.
#include "flow/Block.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <unordered_set>
#include <utility>

#include "flow/FlowCharts.h"

// ---------------------------------------------------------------------------
// Process-wide state. The lists are made once and never destroyed, so that
// every block stays reachable until the process exits.
// ---------------------------------------------------------------------------

std::list<BlockTemplate>& blockTemplates = *new std::list<BlockTemplate>;

std::string templateKey;
int templatePick = 0;
std::vector<float>* creationValues = nullptr;

std::list<Block*>& parameterSinks = *new std::list<Block*>;
std::list<Block*>& parameterSources = *new std::list<Block*>;
std::list<Block*>& floatBlocks = *new std::list<Block*>;
std::list<Block*>& demoTimeBlocks = *new std::list<Block*>;
std::list<Block*>& sinBlocks = *new std::list<Block*>;
std::list<Block*>& pulseBlocks = *new std::list<Block*>;
std::list<Block*>& sumBlocks = *new std::list<Block*>;
std::list<Block*>& mulBlocks = *new std::list<Block*>;
std::list<Block*>& reservedBlocks1 = *new std::list<Block*>;
std::list<Block*>& reservedBlocks2 = *new std::list<Block*>;
std::list<Block*>& reservedBlocks3 = *new std::list<Block*>;
std::list<Block*>& allBlocks = *new std::list<Block*>;

BlockBoxHooks blockBoxHooks;

namespace {

Block* lastCreated = nullptr;

// Pick names of curves in use (by name, so that a chart of thousands of
// curves is cleared quickly), and those given back.
std::map<int, ConnectionCurve*>& curvePicks = *new std::map<int, ConnectionCurve*>;
std::list<int>& freeCurvePicks = *new std::list<int>;

// While a script is read, allBlocks is rebuilt once at the end instead of
// after every creation.
bool rebuildDeferred = false;

constexpr int firstCurvePick = 100000;

bool startsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

// The kinds: their box, their limits and their function.
struct Kind {
  const char* name;
  BlockBox box;
  int maxInputs;
  int maxOutputs;
  BlockCompute compute;
  const char* text;  // box text; null: taken from elsewhere
};

const Kind floatKind{"float", {75, 20, 0.65f, 0}, 0, -1, nullptr, nullptr};
const Kind demoTimeKind{"demotime", {45, 32, 0.55f, 7}, 0, -1, nullptr, "DEMO\n TIME"};
const Kind sinKind{"sin", {45, 26, 0.65f, 0}, 1, -1, computeSin, "SIN"};
const Kind mulKind{"mul", {45, 26, 0.65f, 0}, -1, -1, computeMul, "MUL"};
const Kind sumKind{"sum", {45, 26, 0.65f, 0}, -1, -1, computeSum, "SUM"};
const Kind pulseKind{"pulse", {95, 32, 0.65f, 0}, 1, -1, computePulse, "PULSE"};
const Kind sourceKind{"out.", {340, 40, 0.65f, 9}, 0, -1, nullptr, nullptr};
const Kind sinkKind{"in.", {280, 40, 0.65f, 9}, 1, 0, nullptr, nullptr};

// The creation steps shared by every kind.
int createBlock(const Kind& kind, std::list<Block*>& kindList) {
  lastCreated = nullptr;
  BlockTemplate* from = findTemplateWindow();
  if (!from) return 1;
  const bool parameterBlock = &kind == &sourceKind || &kind == &sinkKind;
  // A parameter block is made only from a parameter entry of its own
  // direction: a sink bound to anything else would write into a float that
  // is no parameter (or through null).
  if (parameterBlock && (!startsWith(from->key, kind.name) || !from->boundValue)) return 1;

  Block* block = new Block;
  block->maxInputs = kind.maxInputs;
  block->maxOutputs = kind.maxOutputs;
  block->box = kind.box;
  if (&kind == &floatKind) {
    block->value = creationValues && !creationValues->empty() ? (*creationValues)[0] : 0.0f;
    block->dragStep = 0.01f;
    block->text = formatFloat(block->value);
  } else if (kind.text) {
    block->text = kind.text;
  }
  if (&kind == &pulseKind) {
    block->settings = defaultPulseSettings();
    if (creationValues)
      for (size_t i = 0; i < creationValues->size() && i < block->settings.size(); ++i)
        block->settings[i] = (*creationValues)[i];
    block->number = int(kindList.size());
  }
  if (&kind == &demoTimeKind) block->boundValue = from->boundValue;
  if (parameterBlock) {
    block->boundValue = from->boundValue;
    block->key = from->key;
    block->text = from->text;
    block->number = int(kindList.size());
  }
  block->compute = kind.compute;
  block->kindName = parameterBlock ? from->key : kind.name;
  kindList.push_back(block);
  lastCreated = block;
  if (blockBoxHooks.boxCreated) blockBoxHooks.boxCreated(*block, *from);
  rebuildAllBlocks();
  return 0;
}

void destroyCurve(ConnectionCurve* curve) {
  if (blockBoxHooks.curveDestroyed) blockBoxHooks.curveDestroyed(*curve);
  releaseCurvePick(curve->pickName);
  delete curve;
}

void removeAll(std::list<Block*>& list, Block* block) { list.remove(block); }

}  // namespace

// ---------------------------------------------------------------------------
// Templates
// ---------------------------------------------------------------------------

BlockTemplate& addBlockTemplate(const std::string& key, const std::string& text, float* boundValue, int pickName,
                                EditorWindow* window) {
  blockTemplates.push_back(BlockTemplate{key, text, boundValue, pickName, window});
  return blockTemplates.back();
}

BlockTemplate* findBlockTemplate(const std::string& key) {
  for (BlockTemplate& t : blockTemplates)
    if (t.key == key) return &t;
  return nullptr;
}

BlockTemplate* findTemplateWindow() {
  if (templatePick != 0) {
    for (BlockTemplate& t : blockTemplates)
      if (t.pickName == templatePick) return &t;
    return nullptr;
  }
  return findBlockTemplate(templateKey);
}

// ---------------------------------------------------------------------------
// Creation
// ---------------------------------------------------------------------------

int createFloatBlock() { return createBlock(floatKind, floatBlocks); }
int createDemoTimeBlock() { return createBlock(demoTimeKind, demoTimeBlocks); }
int createSinBlock() { return createBlock(sinKind, sinBlocks); }
int createMulBlock() { return createBlock(mulKind, mulBlocks); }
int createSumBlock() { return createBlock(sumKind, sumBlocks); }
int createPulseBlock() { return createBlock(pulseKind, pulseBlocks); }
int createParameterSink() { return createBlock(sinkKind, parameterSinks); }
int createParameterSource() { return createBlock(sourceKind, parameterSources); }

Block* lastCreatedBlock() { return lastCreated; }

std::string formatFloat(float value) {
  std::ostringstream out;
  out << double(value);
  return out.str();
}

void setFloatValue(Block* block, float value) {
  block->value = value;
  block->text = formatFloat(value);
  if (blockBoxHooks.boxTextChanged) blockBoxHooks.boxTextChanged(*block);
}

// ---------------------------------------------------------------------------
// Connections
// ---------------------------------------------------------------------------

ConnectionCurve* connectBlocks(Block* source, Block* destination) {
  source->outputs.push_back(destination);
  destination->inputs.push_back(source);
  ConnectionCurve* curve = new ConnectionCurve;
  curve->source = source;
  curve->destination = destination;
  curve->fresh = true;
  curve->pickName = allocateCurvePick(curve);
  source->connections.push_back(curve);
  if (blockBoxHooks.curveCreated) blockBoxHooks.curveCreated(*curve);
  return curve;
}

bool wouldCloseCycle(Block* source, Block* destination) {
  // Walk everything upstream of source, each block once.
  std::vector<Block*> pending{source};
  std::unordered_set<Block*> seen;
  while (!pending.empty()) {
    Block* b = pending.back();
    pending.pop_back();
    for (Block* in : b->inputs) {
      if (in == destination || in == source) return true;
      if (seen.insert(in).second) pending.push_back(in);
    }
  }
  return source == destination;
}

void removeConnection(ConnectionCurve* curve) {
  Block* source = curve->source;
  Block* destination = curve->destination;
  source->connections.remove(curve);
  auto out = std::find(source->outputs.begin(), source->outputs.end(), destination);
  if (out != source->outputs.end()) source->outputs.erase(out);
  auto in = std::find(destination->inputs.begin(), destination->inputs.end(), source);
  if (in != destination->inputs.end()) destination->inputs.erase(in);
  destroyCurve(curve);
}

// ---------------------------------------------------------------------------
// Removal
// ---------------------------------------------------------------------------

void destroyBlock(Block* block) {
  // 1. For each input entry, the first curve of that input ending here.
  for (Block* in : block->inputs) {
    for (auto it = in->connections.begin(); it != in->connections.end(); ++it) {
      if ((*it)->destination == block) {
        ConnectionCurve* curve = *it;
        in->connections.erase(it);
        destroyCurve(curve);
        break;
      }
    }
  }
  // 2. Every curve that leaves this block.
  for (ConnectionCurve* curve : block->connections) destroyCurve(curve);
  block->connections.clear();
  // 3. The neighbours forget it (a block feeding itself included).
  for (Block* in : std::vector<Block*>(block->inputs.begin(), block->inputs.end()))
    if (in != block) removeAll(in->outputs, block);
  for (Block* out : std::vector<Block*>(block->outputs.begin(), block->outputs.end()))
    if (out != block) removeAll(out->inputs, block);
  // 4. The box, then the block.
  if (blockBoxHooks.boxDestroyed) blockBoxHooks.boxDestroyed(*block);
  if (lastCreated == block) lastCreated = nullptr;
  delete block;
}

void removeBlock(std::list<Block*>& kindList, Block* block) {
  auto it = std::find(kindList.begin(), kindList.end(), block);
  if (it == kindList.end()) return;
  destroyBlock(block);
  it = kindList.erase(it);
  // Numbers stay contiguous: the blocks behind move down by one.
  for (; it != kindList.end(); ++it) {
    if ((*it)->number > 0) {
      --(*it)->number;
      if (blockBoxHooks.boxTextChanged) blockBoxHooks.boxTextChanged(**it);
    }
  }
  rebuildAllBlocks();
}

std::list<Block*>* kindListOf(const Block* block) {
  const std::string& k = block->kindName;
  if (startsWith(k, "in.")) return &parameterSinks;
  if (startsWith(k, "out.")) return &parameterSources;
  if (k == "float") return &floatBlocks;
  if (k == "demotime") return &demoTimeBlocks;
  if (k == "sin") return &sinBlocks;
  if (k == "pulse") return &pulseBlocks;
  if (k == "sum") return &sumBlocks;
  if (k == "mul") return &mulBlocks;
  return nullptr;
}

void deferAllBlocksRebuild(bool defer) {
  rebuildDeferred = defer;
  if (!defer) rebuildAllBlocks();
}

void rebuildAllBlocks() {
  if (rebuildDeferred) return;
  allBlocks.clear();
  for (std::list<Block*>* list : {&parameterSinks, &parameterSources, &floatBlocks, &demoTimeBlocks, &sinBlocks,
                                  &pulseBlocks, &sumBlocks, &mulBlocks})
    allBlocks.insert(allBlocks.end(), list->begin(), list->end());
}

void clearAllBlocks() {
  const bool deferred = rebuildDeferred;
  rebuildDeferred = false;
  rebuildAllBlocks();
  rebuildDeferred = deferred;
  std::vector<Block*> all(allBlocks.begin(), allBlocks.end());
  for (Block* b : all) destroyBlock(b);
  for (std::list<Block*>* list : {&parameterSinks, &parameterSources, &floatBlocks, &demoTimeBlocks, &sinBlocks,
                                  &pulseBlocks, &sumBlocks, &mulBlocks, &reservedBlocks1, &reservedBlocks2,
                                  &reservedBlocks3, &allBlocks})
    list->clear();
  lastCreated = nullptr;
  // No curve is left: the pick names start again at the first.
  curvePicks.clear();
  freeCurvePicks.clear();
}

// ---------------------------------------------------------------------------
// Curve pick names
// ---------------------------------------------------------------------------

int allocateCurvePick(ConnectionCurve* curve) {
  int name;
  if (!freeCurvePicks.empty()) {
    name = freeCurvePicks.back();
    freeCurvePicks.pop_back();
  } else {
    name = firstCurvePick + int(curvePicks.size());
  }
  curvePicks[name] = curve;
  return name;
}

void releaseCurvePick(int pickName) {
  if (curvePicks.erase(pickName) > 0) freeCurvePicks.push_back(pickName);
}

ConnectionCurve* curveOfPick(int pickName) {
  auto it = curvePicks.find(pickName);
  return it == curvePicks.end() ? nullptr : it->second;
}
