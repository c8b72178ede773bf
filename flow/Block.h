// Block: the node of a parameter flow chart, the process-wide block lists,
// and block creation, connection and removal.
//
// A chart is a tree of blocks whose root, a parameter sink ("in.<scene>.
// <parameter>"), writes its one input into the float of a scene Parameter
// once per frame (see FlowCharts.h). Times in charts are seconds; `sin`
// takes radians.
//
// Layering: this library needs only foundation/ and the scene interface. The
// fields that belong to a block's box (text, number, bound float, key, the
// connection curves that leave it) are kept on the Block itself, so that the
// graph stands and evaluates in a player built without the editor. The
// editor hangs its EditorWindow on `window` through the BlockBoxHooks and
// reads those fields from the block; flow never looks inside the window.
//
// Lifetime: blocks, curves and templates are process-wide and single-
// instance. The lists are never destroyed: at exit every block is still
// reachable through them (the normal end is exit() from inside the loop).
#pragma once
#include <list>
#include <string>
#include <vector>

#include "foundation/Curve.h"

class EditorWindow;  // the editor's box; opaque here
struct Block;
struct ConnectionCurve;

// ---------------------------------------------------------------------------
// Block
// ---------------------------------------------------------------------------

// Computes a block's output from its input values (in `inputs` order) and the
// block itself. Null for `float`, `demotime` and parameter blocks.
using BlockCompute = float (*)(const std::vector<float>& inputValues, Block& block);

// Size and text placement of a block's box in editor pixels, by kind:
//   "float"    75 x 20, text scale 0.65, text Y offset 0
//   "demotime" 45 x 32, 0.55, 7
//   "sin", "mul", "sum" 45 x 26, 0.65, 0
//   "pulse"    95 x 32, 0.65, 0
//   out.       340 x 40, 0.65, 9
//   in.        280 x 40, 0.65, 9
struct BlockBox {
  float width = 0.0f;
  float height = 0.0f;
  float textScale = 1.0f;
  float textOffsetY = 0.0f;
};

struct Block {
  int maxInputs = 0;    // most input connections; -1: no limit
  int maxOutputs = -1;  // most output connections; -1: no limit; 0 marks a parameter sink
  float value = 0.0f;   // the constant of a `float` block
  float dragStep = 0.0f;  // value change per pixel of mouse motion: 0.01 for `float`, else unused
  // "float", "demotime", "sin", "mul", "sum", "pulse", or for a parameter
  // block its full key such as "in.bordersWithin.cameraZoom".
  std::string kindName;
  std::list<Block*> inputs;   // the blocks feeding this one, in connection order = argument order
  std::list<Block*> outputs;  // the blocks this one feeds
  BlockCompute compute = nullptr;
  // Empty except for `pulse`, which holds exactly six values:
  // Raise, Up, Lower, Start, Repeats, Delta (see pulseValue in FlowCharts.h).
  // Never resized after creation, so pointers into it stay valid.
  std::vector<float> settings;

  // ---- the box's fields (the system keeps these on the block's window) ----
  std::string text;           // box text: a float's value as last formatted, "SIN", "DEMO\n TIME", ...
  int number = -1;            // shown behind the text; -1: none. pulse, in. and out. blocks number
                              // themselves 0, 1, 2 ... within their list, without gaps
  float* boundValue = nullptr;  // demotime: the demo time in seconds; in./out.: the parameter's float
  std::string key;            // in./out. blocks: their key (same as kindName); empty for the others
  std::list<ConnectionCurve*> connections;  // owned: one curve for each entry of `outputs`
  BlockBox box;               // size and text placement of the box, from the kind table above

  EditorWindow* window = nullptr;  // the editor's box; null in a player without the editor

  bool onWalkPath = false;  // bookkeeping of evaluation and writing (cycle guard); false between walks
};

// One connection, owned by the `connections` list of its source block.
struct ConnectionCurve {
  Curve curve{false};         // the drawn curve; its points are the editor's business
  Block* source = nullptr;
  Block* destination = nullptr;
  int pickName = 0;           // from the curve pick pool below: 100000 and up
  bool fresh = true;          // set at creation
};

// ---------------------------------------------------------------------------
// Templates: what a new block takes its look and binding from
// ---------------------------------------------------------------------------

// One entry of the toolbox or of the parameter list. The editor registers one
// for each of its tool buttons and parameter entries (with its window and pick
// name); initFlowCharts (FlowCharts.h) registers the ones still missing, with
// no window, so that a player without the editor reads the same charts.
struct BlockTemplate {
  std::string key;            // block kind ("float", ...) or "in.<scene>.<parameter>" / "out...."
  std::string text;           // the entry's text; in./out. boxes copy it ("in.<scene>.\n<parameter>")
  float* boundValue = nullptr;  // demotime: demo seconds; in./out.: the parameter's float
  int pickName = 0;           // the window's pick name; 0: no window, never matched by templatePick
  EditorWindow* window = nullptr;  // the editor's window, or null
};

// Registered templates in order of registration (never destroyed).
extern std::list<BlockTemplate>& blockTemplates;

// Appends a template; returns it (the reference stays valid).
BlockTemplate& addBlockTemplate(const std::string& key, const std::string& text, float* boundValue,
                                int pickName = 0, EditorWindow* window = nullptr);
// The first template with this key, or null.
BlockTemplate* findBlockTemplate(const std::string& key);

// ---------------------------------------------------------------------------
// Creation state and the block lists
// ---------------------------------------------------------------------------

extern std::string templateKey;             // key of the template the next block is made from
extern int templatePick;                    // pick name of the toolbox entry under the mouse; 0: none
extern std::vector<float>* creationValues;  // null except while the script reader creates a block

// Kind lists, in order of creation, never destroyed.
extern std::list<Block*>& parameterSinks;    // in.<scene>.<parameter>: one chart root each
extern std::list<Block*>& parameterSources;  // out.<scene>.<parameter>
extern std::list<Block*>& floatBlocks;
extern std::list<Block*>& demoTimeBlocks;
extern std::list<Block*>& sinBlocks;
extern std::list<Block*>& pulseBlocks;
extern std::list<Block*>& sumBlocks;
extern std::list<Block*>& mulBlocks;
extern std::list<Block*>& reservedBlocks1;   // three reserved kinds: always empty, cleared by a load
extern std::list<Block*>& reservedBlocks2;
extern std::list<Block*>& reservedBlocks3;
// Derived: parameterSinks, parameterSources, floatBlocks, demoTimeBlocks,
// sinBlocks, pulseBlocks, sumBlocks, mulBlocks, concatenated in this order;
// rebuilt after each creation and removal.
extern std::list<Block*>& allBlocks;

// The template for the next block: with templatePick non-zero the template of
// that pick name; otherwise the first whose key equals templateKey; else null.
BlockTemplate* findTemplateWindow();

// Creators. Each takes its template from findTemplateWindow(): returns 1 and
// creates nothing when there is none, else 0. The new block is appended to
// its kind list and allBlocks is rebuilt; the editor's boxCreated hook builds
// its box. A `float` takes its value from creationValues[0] when that is set
// (else 0); a `pulse` takes six settings from creationValues when set (fewer
// than six are padded with the defaults 0.25, 0.5, 0.25, 0, 0, 2 from the
// position where they stop; more are cut), else the defaults.
int createFloatBlock();
int createDemoTimeBlock();
int createSinBlock();
int createMulBlock();
int createSumBlock();
int createPulseBlock();
int createParameterSink();    // template key "in.<scene>.<parameter>"
int createParameterSource();  // template key "out.<scene>.<parameter>"

// The last block created by any creator (null after a load's clearing, and
// when the last creation failed).
Block* lastCreatedBlock();

// Connects source -> destination without any rule: appends destination to
// source.outputs, source to destination.inputs, and a ConnectionCurve to
// source.connections (with a pick name from the pool; the editor's
// curveCreated hook then runs). Returns the curve.
ConnectionCurve* connectBlocks(Block* source, Block* destination);

// True when connecting source -> destination would close a cycle: the walk of
// `inputs` from source meets destination or source itself (connecting a
// block to itself counts). The script reader refuses such connections.
bool wouldCloseCycle(Block* source, Block* destination);

// Removes one connection: returns its pick name, takes the curve out of the
// source's connections and the one pair of entries out of outputs and inputs.
void removeConnection(ConnectionCurve* curve);

// Destroys a block: the first curve of each input that ends here, all curves
// that leave it, every entry for it in its neighbours' lists, then its box
// (boxDestroyed hook) and the block. Does not touch the kind lists.
void destroyBlock(Block* block);

// Takes the block out of kindList (destroying it), lowers the numbers of the
// blocks behind it that are above 0 by one, and rebuilds allBlocks. A block
// not in the list: nothing happens.
void removeBlock(std::list<Block*>& kindList, Block* block);

// The kind list a block belongs to (parameter lists by the "in."/"out."
// prefix of kindName), or null for an unknown kind.
std::list<Block*>* kindListOf(const Block* block);

void rebuildAllBlocks();

// For the script reader: while deferred, rebuildAllBlocks does nothing (a
// load of thousands of blocks stays linear); ending the deferral rebuilds.
void deferAllBlocksRebuild(bool defer);

// Destroys every block and empties every list, the reserved ones too (what a
// load does first), and starts the curve pick names afresh at 100000.
// Templates stay.
void clearAllBlocks();

// Sets a float block's value and its box text (default stream formatting,
// six significant digits), then runs the boxTextChanged hook.
void setFloatValue(Block* block, float value);

// A float formatted as the box text and the script write it: a default
// formatted stream, six significant digits ("0.0025", "1.5", "-30", "1e+06").
std::string formatFloat(float value);

// ---------------------------------------------------------------------------
// Curve pick names
// ---------------------------------------------------------------------------

// Pick names of the connection curves, apart from the windows' (which stay
// below 100000). allocateCurvePick takes the last freed name if there is one,
// else 100000 + the number in use.
int allocateCurvePick(ConnectionCurve* curve);
void releaseCurvePick(int pickName);
ConnectionCurve* curveOfPick(int pickName);  // null when no curve has it

// ---------------------------------------------------------------------------
// Hooks of the editor
// ---------------------------------------------------------------------------

// Set by the editor, all null in a player without it. Each runs after flow has
// done its own part.
struct BlockBoxHooks {
  // A block was created from the template: build block.window (size and text
  // placement from block.box, colours from the template's window), hang it
  // under the flow chart area and centre it; a pulse's properties window too.
  void (*boxCreated)(Block& block, const BlockTemplate& from) = nullptr;
  // The block is about to be released: destroy block.window with its children.
  void (*boxDestroyed)(Block& block) = nullptr;
  // block.text or block.number changed (a float's new value, a renumbering).
  void (*boxTextChanged)(Block& block) = nullptr;
  // A curve was made (pick name allocated) / is about to be released.
  void (*curveCreated)(ConnectionCurve& curve) = nullptr;
  void (*curveDestroyed)(ConnectionCurve& curve) = nullptr;
  // A script load has finished: lay the charts out.
  void (*chartsLoaded)() = nullptr;
};
extern BlockBoxHooks blockBoxHooks;
