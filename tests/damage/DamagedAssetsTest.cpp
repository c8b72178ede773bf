// Missing and damaged assets through the real executable. Each run gets a
// run folder of its own: links to the built assets, with the files under
// test missing or replaced by damaged copies. Whatever is damaged, the
// program loads, plays and ends by itself with status 0: a model says in a
// line what is wrong with it, an image is simply left without a texture (the
// texture store prints nothing), the music falls back to the timer with its
// warning. Never a crash, a sanitizer report or a hang.
//
// The list of files is read from the run folder, so assets added later are
// covered without an edit here.
#include <gtest/gtest.h>

#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/VideoEncoder.h"
#include "support/RunProgram.h"

namespace {

#define REQUIRE_DISPLAY() \
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display"

const std::string runDir = OSTRAVINE_RUN_DIR;
const std::string exe = "'" OSTRAVINE_EXECUTABLE "' ";
const char* const assetFolders[] = {"images", "models", "music"};

enum class Damage { Missing, Truncated, Garbage, Garbled };
const Damage allDamages[] = {Damage::Missing, Damage::Truncated, Damage::Garbage, Damage::Garbled};

const char* nameOf(Damage d) {
  switch (d) {
    case Damage::Missing: return "missing";
    case Damage::Truncated: return "truncated";
    case Damage::Garbage: return "garbage";
    case Damage::Garbled: return "garbled";
  }
  return "?";
}

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

bool endsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

const char* const scriptFile = "ostravine.scr";

// Every asset file of the run folder, as "images/bill.png", sorted, and the
// script, which lies in the run folder itself.
std::vector<std::string> assetFiles() {
  std::vector<std::string> files;
  if (access((runDir + "/" + scriptFile).c_str(), R_OK) == 0) files.push_back(scriptFile);
  for (const char* folder : assetFolders) {
    DIR* dir = opendir((runDir + "/" + folder).c_str());
    if (!dir) continue;
    while (dirent* entry = readdir(dir)) {
      const std::string name = entry->d_name;
      if (name == "." || name == ".." || endsWith(name, ".part")) continue;
      files.push_back(std::string(folder) + "/" + name);
    }
    closedir(dir);
  }
  std::sort(files.begin(), files.end());
  return files;
}

using testrun::readFile;

// Bytes that look like nothing, the same in every run.
std::string noise(size_t size, uint32_t seed) {
  std::string bytes(size, '\0');
  uint32_t x = seed * 2654435761u + 12345u;
  for (char& c : bytes) {
    x = x * 1664525u + 1013904223u;
    c = char(x >> 24);
  }
  return bytes;
}

// The damaged form of a file's content: cut at `truncateAt` of its length;
// replaced by noise of the same length; or its start kept (so a reader
// gets past the header) and the rest noise.
std::string damagedContent(const std::string& original, Damage d, uint32_t seed, double truncateAt = 0.5) {
  switch (d) {
    case Damage::Truncated: return original.substr(0, size_t(original.size() * truncateAt));
    case Damage::Garbage: return noise(std::max<size_t>(original.size(), 64), seed);
    case Damage::Garbled: {
      const size_t keep = std::min(original.size(), std::max<size_t>(64, original.size() / 4));
      return original.substr(0, keep) + noise(original.size() - keep, seed);
    }
    case Damage::Missing: break;
  }
  return "";
}

// A run folder under /tmp: links to every asset but the damaged ones,
// which are written (or left out) as asked. Removed at the end.
struct RunFolder {
  std::string path;
  explicit RunFolder(const std::map<std::string, std::string>& replaced, const std::vector<std::string>& missing = {}) {
    char pattern[] = "/tmp/ostravine-damage-XXXXXX";
    if (!mkdtemp(pattern)) return;
    path = pattern;
    for (const char* folder : assetFolders) mkdir((path + "/" + folder).c_str(), 0755);
    for (const std::string& file : assetFiles()) {
      if (std::find(missing.begin(), missing.end(), file) != missing.end()) continue;
      auto it = replaced.find(file);
      if (it == replaced.end()) {
        if (symlink((runDir + "/" + file).c_str(), (path + "/" + file).c_str()) != 0) ADD_FAILURE() << file;
      } else {
        std::ofstream out(path + "/" + file, std::ios::binary);
        out << it->second;
      }
    }
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;
  ~RunFolder() {
    if (!path.empty()) testrun::run("rm -rf '" + path + "'", "");
  }
};

// One file damaged in one way.
RunFolder folderWith(const std::string& file, Damage d, uint32_t seed, double truncateAt = 0.5) {
  std::map<std::string, std::string> replaced;
  if (d == Damage::Missing) return RunFolder(replaced, {file});
  replaced[file] = damagedContent(readFile(runDir + "/" + file), d, seed, truncateAt);
  return RunFolder(replaced);
}

// The run loaded everything, played and ended by itself without a report.
void expectSurvived(const testrun::Result& r, const std::string& what) {
  EXPECT_FALSE(r.timedOut) << what << ": hangs";
  EXPECT_EQ(r.signal, 0) << what << ": killed by signal " << r.signal << "\n" << r.err.substr(0, 4000);
  EXPECT_EQ(r.exitStatus, 0) << what << "\n" << r.err.substr(0, 4000);
  EXPECT_TRUE(has(r.out, "start.\n")) << what;
  EXPECT_FALSE(has(r.err, "runtime error")) << what << "\n" << r.err.substr(0, 4000);
  EXPECT_FALSE(has(r.err, "Sanitizer")) << what << "\n" << r.err.substr(0, 4000);
}

// Loads everything and draws the first two frames at a tiny size.
const std::string shortRun = "-nomusic --windowed --size 32x18 --fixed-fps 1 --to 1000";
// The whole film, one frame a second, rewind and end included.
const std::string wholeFilm = "-nomusic --windowed --size 32x18 --fixed-fps 1";

}  // namespace

// Each image in turn: missing, and damaged in one of the three ways (the
// way turns with the file, so every way meets several images).
TEST(DamagedAssets, EachImageInTurn) {
  REQUIRE_DISPLAY();
  uint32_t n = 0;
  for (const std::string& file : assetFiles()) {
    if (!endsWith(file, ".png")) continue;
    const Damage ways[] = {Damage::Missing, allDamages[1 + n % 3]};
    for (Damage d : ways) {
      RunFolder folder = folderWith(file, d, n);
      expectSurvived(testrun::runOnDisplay(exe + shortRun, folder.path, 120), file + " " + nameOf(d));
    }
    ++n;
  }
  EXPECT_GT(n, 10u);
}

// Each model and every other file but the music and the script in turn, in
// all four ways.
// A model that a scene loads says in a line what is wrong with it when it is
// missing, and then also when it is cut or replaced by noise. (A model that
// no scene loads yet prints nothing in any way.)
TEST(DamagedAssets, EachModelInTurn) {
  REQUIRE_DISPLAY();
  uint32_t n = 0, reported = 0;
  for (const std::string& file : assetFiles()) {
    if (endsWith(file, ".png") || endsWith(file, ".mp3") || file == scriptFile) continue;
    bool loaded = false;
    for (Damage d : allDamages) {
      RunFolder folder = folderWith(file, d, n);
      testrun::Result r = testrun::runOnDisplay(exe + shortRun, folder.path, 120);
      expectSurvived(r, file + " " + nameOf(d));
      const bool line = has(r.out, "ERROR: file ./" + file);
      if (d == Damage::Missing) loaded = line;
      if (loaded && d != Damage::Garbled) {
        EXPECT_TRUE(line) << file << " " << nameOf(d) << "\n" << r.out;
      }
    }
    if (!loaded) std::printf("%s: no scene loads it\n", file.c_str());
    reported += loaded;
    ++n;
  }
  EXPECT_GT(reported, 0u);
}

// What a --trace run shows of the flow charts: the parameters they drive,
// and the rest of the standard output, trace lines left out.
struct ChartTrace {
  std::set<std::string> driven;
  std::string otherLines;
};

ChartTrace chartTraceOf(const std::string& out) {
  ChartTrace trace;
  for (const std::string& line : testrun::lines(out)) {
    char name[256] = {0};
    if (std::sscanf(line.c_str(), "trace: parameter %255s", name) == 1)
      trace.driven.insert(name);
    else if (line.compare(0, 7, "trace: ") != 0)
      trace.otherLines += line + "\n";
  }
  return trace;
}

// The script in each way: missing, empty, cut, noise, and its start kept
// with the rest noise. The reader says nothing about a script: damage only
// leaves fewer charts (none at all when the file is missing or empty), and
// the scenes keep their own defaults for what no chart drives. The film
// plays and ends all the same, and its log is the intact run's line for
// line, but for the trace of the charts.
TEST(DamagedAssets, ScriptInEachWay) {
  REQUIRE_DISPLAY();
  const std::string run = exe + "-nomusic --windowed --size 32x18 --fixed-fps 2 --to 2000 --trace";
  RunFolder intactFolder{std::map<std::string, std::string>()};
  const testrun::Result intactRun = testrun::runOnDisplay(run, intactFolder.path, 120);
  expectSurvived(intactRun, "intact script");
  const ChartTrace intact = chartTraceOf(intactRun.out);
  ASSERT_GT(intact.driven.size(), 4u) << intactRun.out.substr(0, 3000);

  const std::string original = readFile(runDir + "/" + scriptFile);
  struct Case {
    std::string what;
    Damage damage;
    std::string content;
    size_t fewest, most;  // how many parameters its charts may drive
  };
  const size_t all = intact.driven.size();
  const Case cases[] = {
      {"missing", Damage::Missing, "", 0, 0},
      {"empty", Damage::Truncated, "", 0, 0},
      {"cut in half", Damage::Truncated, damagedContent(original, Damage::Truncated, 0), 1, all - 1},
      {"cut after its first chart", Damage::Truncated,
       original.substr(0, original.find('\n', original.find("in.")) + 1), 1, 1},
      {"noise", Damage::Garbage, damagedContent(original, Damage::Garbage, 3), 0, 0},
      {"garbled", Damage::Garbled, damagedContent(original, Damage::Garbled, 5), 1, all - 1},
  };
  for (const Case& c : cases) {
    std::map<std::string, std::string> replaced;
    std::vector<std::string> missing;
    if (c.damage == Damage::Missing)
      missing.push_back(scriptFile);
    else
      replaced[scriptFile] = c.content;
    RunFolder folder(replaced, missing);
    const testrun::Result r = testrun::runOnDisplay(run, folder.path, 120);
    expectSurvived(r, "script " + c.what);
    const ChartTrace trace = chartTraceOf(r.out);
    EXPECT_GE(trace.driven.size(), c.fewest) << c.what;
    EXPECT_LE(trace.driven.size(), c.most) << c.what;
    for (const std::string& name : trace.driven) EXPECT_EQ(intact.driven.count(name), 1u) << c.what << ": " << name;
    EXPECT_EQ(trace.otherLines, intact.otherLines) << c.what;
    EXPECT_FALSE(has(r.err, scriptFile)) << c.what << "\n" << r.err.substr(0, 2000);
  }
}

// The music on the real clock. Near the end: a file that does not decode is
// reported and the run goes on the timer; a cut file (cut late enough that
// the start is not clamped back to the file's end, which would play minutes)
// plays what it has and runs on past its end; both end by themselves at
// 263.5 s. A file that turns to noise after its first minute plays on
// through the damage: it is still playing, past it, when the test stops it.
TEST(DamagedAssets, MusicOnTheRealClock) {
  REQUIRE_DISPLAY();
  const std::string file = "music/ostravine.mp3";
  for (Damage d : {Damage::Missing, Damage::Garbage, Damage::Truncated}) {
    RunFolder folder = folderWith(file, d, 7, 0.99);
    testrun::Result r = testrun::runOnDisplay(exe + "--windowed -res:256 --from 263000", folder.path, 120);
    expectSurvived(r, file + " " + nameOf(d));
    const bool refused = has(r.out, "WARNING: Music file ./music/ostravine.mp3 not found.\n");
    EXPECT_EQ(refused, d != Damage::Truncated) << nameOf(d) << "\n" << r.out;
  }
  // The first quarter (about 66 s) is whole, then noise.
  RunFolder folder = folderWith(file, Damage::Garbled, 7);
  testrun::Result r =
      testrun::runOnDisplay(exe + "--windowed -res:256 --from 64000 --trace", folder.path, 15);
  EXPECT_TRUE(r.timedOut) << r.out.substr(0, 3000) << r.err.substr(0, 3000);
  EXPECT_TRUE(has(r.out, "start.\n"));
  EXPECT_FALSE(has(r.err, "Sanitizer"));
  int last = 0;
  for (const std::string& line : testrun::lines(r.out)) std::sscanf(line.c_str(), "trace: position %d", &last);
  EXPECT_GT(last, 67000) << "it should play on past the damage at about 66.5 s";
}

// The music in a video: one that does not decode gives a warning and a
// silent video; one that ends before the range gives a video whose sound is
// as long as the music lasts (here none).
TEST(DamagedAssets, MusicInAVideo) {
  REQUIRE_DISPLAY();
  if (findOnPath("ffmpeg").empty() || findOnPath("ffprobe").empty()) GTEST_SKIP() << "no ffmpeg";
  const std::string file = "music/ostravine.mp3";
  struct Case {
    Damage damage;
    double truncateAt;
    bool warned;
  } cases[] = {{Damage::Garbage, 0.5, true}, {Damage::Missing, 0.5, true}, {Damage::Truncated, 0.1, false},
               {Damage::Garbled, 0.5, false}};
  for (const Case& c : cases) {
    RunFolder folder = folderWith(file, c.damage, 11, c.truncateAt);
    testrun::Result r = testrun::runOnDisplay(
        exe + "--size 32x18 --fixed-fps 10 --from 200000 --to 200300 --video film.mp4", folder.path, 120);
    expectSurvived(r, std::string("video with music ") + nameOf(c.damage));
    EXPECT_EQ(has(r.out, "WARNING: Music file ./music/ostravine.mp3 cannot be decoded; the video has no sound.\n"),
              c.warned)
        << nameOf(c.damage) << "\n" << r.out;
    testrun::Result probe = testrun::run(
        "ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames "
        "-of default=noprint_wrappers=1:nokey=1 film.mp4",
        folder.path);
    EXPECT_EQ(probe.out, "3\n") << nameOf(c.damage);
  }
}

// The whole film with every file damaged at once, in each of the four ways:
// every scene draws over the missing pieces, through the rewind to the end.
class WholeFilm : public ::testing::TestWithParam<Damage> {};

TEST_P(WholeFilm, WithEveryFileDamaged) {
  REQUIRE_DISPLAY();
  std::map<std::string, std::string> replaced;
  std::vector<std::string> missing;
  uint32_t n = 0;
  for (const std::string& file : assetFiles()) {
    if (GetParam() == Damage::Missing)
      missing.push_back(file);
    else
      replaced[file] = damagedContent(readFile(runDir + "/" + file), GetParam(), n++);
  }
  RunFolder folder(replaced, missing);
  testrun::Result r = testrun::runOnDisplay(exe + wholeFilm + " --trace", folder.path, 900);
  expectSurvived(r, std::string("every file ") + nameOf(GetParam()));
  // It played to its end: the last frame lies past 263.5 s.
  EXPECT_TRUE(has(r.out, "trace: position 264000 ")) << r.out.substr(r.out.size() > 2000 ? r.out.size() - 2000 : 0);
}

INSTANTIATE_TEST_SUITE_P(DamagedAssets, WholeFilm, ::testing::ValuesIn(allDamages),
                         [](const ::testing::TestParamInfo<Damage>& info) { return std::string(nameOf(info.param)); });
