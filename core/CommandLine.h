// CommandLine: the production's command line and the player's own options.
//
// The production's words are found by a plain substring search over the whole
// line (the arguments joined by spaces), each word once, in this order:
// "-nomusic", "-music" (wins when both stand), "-fullscreen", "-res:<code>".
// There is no tokenising: a word inside a longer word counts too. The
// resolution code picks the display size from a fixed table; unknown codes
// give 512 x 384.
//
// The player's own options start with "--" and are read as separate
// arguments: they add a windowed mode, a pixel size, a fixed clock, a range
// of the timeline and frame capture, for tests and for rendering to video.
// An argument that is exactly one of them is the player's; any other "--"
// argument holding a production word ("--nomusic", "--res:320") is left to
// the production's search; the rest are refused as unknown options.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

struct ProductionOptions {
  bool audioEnabled = true;
  bool fullscreen = true;
  int32_t resolutionCode = 800600;
  int32_t width = 800;   // pixels, from the resolution code
  int32_t height = 600;
};

// The display size of a resolution code.
void resolutionOfCode(int32_t code, int32_t& width, int32_t& height);

// The arguments after the program name, joined by single spaces.
std::string joinArguments(int argc, char** argv);

ProductionOptions parseProductionLine(const std::string& line);

// Whether a production word stands anywhere in the text.
bool containsProductionWord(const std::string& text);

struct PlayerOptions {
  bool help = false;
  bool windowed = false;        // --windowed
  int32_t sizeWidth = 0;        // --size WxH: display and render size in pixels (0: from the resolution code)
  int32_t sizeHeight = 0;
  int32_t fixedFps = 0;         // --fixed-fps N: the clock advances 1000/N ms per frame (0: real time)
  bool hasFrom = false;         // --from MS: start playing at this music position
  int32_t fromMs = 0;
  bool hasTo = false;           // --to MS: end the run once the position reaches this
  int32_t toMs = 0;
  std::string captureDir;       // --capture DIR: write frames as PNG files into DIR
  std::vector<int32_t> shots;   // --shots MS,MS,...: only the first frame at or past each position
  bool benchmark = false;       // --benchmark: print frame timings per scheduled scene at the end
  bool trace = false;           // --trace: print each frame's clock values
  bool edit = false;            // --edit: the editor is drawn over the show and takes the mouse and keys
  bool lazyTargets = false;     // --lazy-targets: slot storage made on first use, not at start-up
  bool settings = false;        // --settings: the settings dialog opens before the display
  std::string videoFile;        // --video FILE: render the range on the fixed clock into a video file
  bool lossless = false;        // --lossless: with --video, FFV1 and FLAC in a .mkv file
  std::string error;            // non-empty: what was wrong with the options
};

PlayerOptions parsePlayerOptions(int argc, char** argv);

// The text of --help.
std::string playerHelpText();
