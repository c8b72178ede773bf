#include "core/CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

void resolutionOfCode(int32_t code, int32_t& width, int32_t& height) {
  switch (code) {
    case 256: case 256192: width = 256; height = 192; break;
    case 256144: width = 256; height = 144; break;
    case 320: case 320240: width = 320; height = 240; break;
    case 640: case 640480: width = 640; height = 480; break;
    case 640400: width = 640; height = 400; break;
    case 640360: width = 640; height = 360; break;
    case 704480: width = 704; height = 480; break;
    case 720480: width = 720; height = 480; break;
    case 800: case 800600: width = 800; height = 600; break;
    case 800500: width = 800; height = 500; break;
    case 800450: width = 800; height = 450; break;
    case 854480: width = 854; height = 480; break;
    case 1024: case 1024768: width = 1024; height = 768; break;
    case 1024640: width = 1024; height = 640; break;
    case 1024576: width = 1024; height = 576; break;
    case 1280: case 12801024: width = 1280; height = 1024; break;
    case 1280800: width = 1280; height = 800; break;
    case 1280720: width = 1280; height = 720; break;
    // 512, 512384 and every code not above: not the 800 x 600 default.
    default: width = 512; height = 384; break;
  }
}

std::string joinArguments(int argc, char** argv) {
  std::string line;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) line += ' ';
    line += argv[i];
  }
  return line;
}

// The production's words, as parseProductionLine searches for them.
static const char* const productionWords[] = {"-nomusic", "-music", "-fullscreen", "-res:"};

bool containsProductionWord(const std::string& text) {
  for (const char* word : productionWords)
    if (text.find(word) != std::string::npos) return true;
  return false;
}

ProductionOptions parseProductionLine(const std::string& line) {
  ProductionOptions o;
  if (line.find("-nomusic") != std::string::npos) o.audioEnabled = false;
  if (line.find("-music") != std::string::npos) o.audioEnabled = true;
  if (line.find("-fullscreen") != std::string::npos) o.fullscreen = true;
  size_t res = line.find("-res:");
  if (res != std::string::npos) sscanf(line.c_str() + res, "-res:%d", &o.resolutionCode);
  resolutionOfCode(o.resolutionCode, o.width, o.height);
  return o;
}

static bool parseInt(const char* text, int32_t& out) {
  char* end = nullptr;
  long v = strtol(text, &end, 10);
  if (end == text || *end != '\0' || v < -2147483647L || v > 2147483647L) return false;
  out = int32_t(v);
  return true;
}

PlayerOptions parsePlayerOptions(int argc, char** argv) {
  PlayerOptions o;
  auto fail = [&](const std::string& message) {
    if (o.error.empty()) o.error = message;
  };
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a.compare(0, 2, "--") != 0) continue;  // the production's words are read elsewhere
    auto value = [&](const char* what) -> const char* {
      if (i + 1 >= argc) {
        fail(a + " needs " + what);
        return nullptr;
      }
      return argv[++i];
    };
    if (a == "--help") {
      o.help = true;
    } else if (a == "--windowed") {
      o.windowed = true;
    } else if (a == "--benchmark") {
      o.benchmark = true;
    } else if (a == "--trace") {
      o.trace = true;
    } else if (a == "--edit") {
      o.edit = true;
    } else if (a == "--lazy-targets") {
      o.lazyTargets = true;
    } else if (a == "--settings") {
      o.settings = true;
    } else if (a == "--size") {
      if (const char* v = value("a size WxH")) {
        int w = 0, h = 0;
        char tail = 0;
        if (sscanf(v, "%dx%d%c", &w, &h, &tail) != 2 || w < 16 || h < 16 || w > 8192 || h > 8192)
          fail(std::string("--size: '") + v + "' is not a size WxH between 16 and 8192 pixels");
        else
          o.sizeWidth = w, o.sizeHeight = h;
      }
    } else if (a == "--fixed-fps") {
      if (const char* v = value("a frame rate")) {
        if (!parseInt(v, o.fixedFps) || o.fixedFps < 1 || o.fixedFps > 1000)
          fail(std::string("--fixed-fps: '") + v + "' is not a frame rate from 1 to 1000");
      }
    } else if (a == "--from") {
      if (const char* v = value("a position in milliseconds")) {
        o.hasFrom = parseInt(v, o.fromMs) && o.fromMs >= 0;
        if (!o.hasFrom) fail(std::string("--from: '") + v + "' is not a position in milliseconds");
      }
    } else if (a == "--to") {
      if (const char* v = value("a position in milliseconds")) {
        o.hasTo = parseInt(v, o.toMs) && o.toMs >= 0;
        if (!o.hasTo) fail(std::string("--to: '") + v + "' is not a position in milliseconds");
      }
    } else if (a == "--video") {
      if (const char* v = value("a file name")) {
        o.videoFile = v;
        if (o.videoFile.empty()) fail("--video needs a file name");
      }
    } else if (a == "--lossless") {
      o.lossless = true;
    } else if (a == "--capture") {
      if (const char* v = value("a directory")) o.captureDir = v;
    } else if (a == "--shots") {
      if (const char* v = value("a list of positions")) {
        std::stringstream list(v);
        std::string item;
        while (std::getline(list, item, ',')) {
          int32_t ms = 0;
          if (!parseInt(item.c_str(), ms) || ms < 0)
            fail(std::string("--shots: '") + item + "' is not a position in milliseconds");
          else
            o.shots.push_back(ms);
        }
        if (o.shots.empty()) fail("--shots: no positions given");
      }
    } else if (!containsProductionWord(a)) {
      // "--nomusic" or "--res:320" is no option of the player's, but the
      // production's search over the whole line acts on the word inside it.
      fail("unknown option " + a + " (try --help)");
    }
  }
  if (o.hasFrom && o.hasTo && o.toMs < o.fromMs) fail("--to lies before --from");
  if (!o.shots.empty() && o.captureDir.empty()) o.captureDir = ".";
  if (o.lossless && o.videoFile.empty()) fail("--lossless goes with --video");
  return o;
}

std::string playerHelpText() {
  return
      "Usage: ostravine [production words] [player options]\n"
      "\n"
      "Plays the production from the current directory, which must hold images/,\n"
      "models/, music/ and (optionally) ostravine.scr.\n"
      "\n"
      "Production words (found anywhere in the line, even inside other words,\n"
      "so --nomusic and --res:320 act as -nomusic and -res:320):\n"
      "  -nomusic          play without music, on the wall clock\n"
      "  -music            play with music (wins over -nomusic)\n"
      "  -fullscreen       full screen (the default; always on unless --windowed)\n"
      "  -res:CODE         display size: 256 256192 256144 320 320240 512 512384\n"
      "                    640 640480 640400 640360 704480 720480 800 800600\n"
      "                    800500 800450 854480 1024 1024768 1024640 1024576\n"
      "                    1280 12801024 1280800 1280720; any other code: 512x384\n"
      "\n"
      "Player options:\n"
      "  --help            this text\n"
      "  --windowed        a window instead of full screen\n"
      "  --size WxH        display and render size in pixels, beyond the table\n"
      "  --fixed-fps N     a fixed clock: every frame advances exactly 1000/N ms,\n"
      "                    so every run gives the same frames (plays without music)\n"
      "  --from MS         start at this position of the timeline (milliseconds)\n"
      "  --to MS           end the run (status 0) at the first frame at or past MS\n"
      "  --capture DIR     write every frame as DIR/frame-NNNNNN.png\n"
      "  --shots MS,MS,... with --capture: write only the first frame at or past\n"
      "                    each position, as DIR/shot-MS.png\n"
      "  --video FILE      render the range (--from, --to) on the fixed clock (60 fps\n"
      "                    unless --fixed-fps) into a video with the music, through\n"
      "                    ffmpeg: .mp4 and .mov H.264 and AAC, .mkv H.264 and Vorbis,\n"
      "                    .webm VP9 and Opus; a progress bar goes to stderr\n"
      "  --lossless        with --video FILE.mkv: FFV1 and FLAC, for further editing\n"
      "  --benchmark       print frame-time figures per scheduled scene at the end\n"
      "  --trace           print each frame's clock values (position, rewind offset,\n"
      "                    picture time, step, paused) and the value of each\n"
      "                    parameter a flow chart drives\n"
      "  --edit            the editor over the show: F1 help, F3 flow charts, F10 edit\n"
      "                    mode; ctrl+shift+S/L save/load ostravine.scr, which is\n"
      "                    also read again whenever it changes on disk\n"
      "  --lazy-targets    off-screen slots get their memory when first used, not at\n"
      "                    start-up: less memory and a quicker start, same picture\n"
      "  --settings        first the settings dialog: a size from the display's modes,\n"
      "                    Fullscreen, Exact pixels, Audio; Begin plays, End ends\n"
      "                    (environment OSTRAVINE_DISPLAY_MODES=WxH[xBITS],... gives\n"
      "                    the list of modes instead of the display's)\n"
      "\n"
      "Keys: up/down seek 1.5 s, right/left seek 0.1 s, p pauses, escape quits.\n";
}
