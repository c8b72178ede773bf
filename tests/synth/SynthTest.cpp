// The soundtrack synthesizer: the score in assets/music, the renderer's
// determinism and levels, and the encoded track in the run directory.
#include <gtest/gtest.h>

#include <mpg123.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/RunProgram.h"
#include "tools/synth/Synth.h"

namespace {

const std::string scorePath = std::string(OSTRAVINE_SOURCE_DIR) + "/assets/music/ostravine.score";

synth::Score loadTheScore() {
  synth::Score score;
  std::string error;
  EXPECT_TRUE(synth::loadScore(scorePath, score, error)) << error;
  return score;
}

std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

double rms(const std::vector<int16_t>& samples) {
  double sum = 0.0;
  for (int16_t s : samples) sum += double(s) * double(s);
  return samples.empty() ? 0.0 : std::sqrt(sum / double(samples.size()));
}

int peak(const std::vector<int16_t>& samples) {
  int p = 0;
  for (int16_t s : samples) p = std::max(p, std::abs(int(s)));
  return p;
}

// RMS of a few seconds in the middle of the section that starts at start.
double sectionRms(const synth::Score& score, double start, double seconds = 4.0) {
  return rms(synth::render(score, start + 2.0, start + 2.0 + seconds));
}

bool parses(const std::string& text, std::string* error = nullptr) {
  synth::Score score;
  std::string message;
  const bool ok = synth::parseScore(text, score, message);
  if (error) *error = message;
  return ok;
}

const std::string minimalScore =
    "rate 22050\n"
    "length 4\n"
    "chords c C\n"
    "section 0 120 only chords=c pad=1\n";

class SynthFiles : public ::testing::Test {
protected:
  void SetUp() override {
    char pattern[] = "/tmp/ostravine-synth-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
  }
  void TearDown() override {
    if (!dir.empty()) testrun::run("rm -rf '" + dir + "'", "/");
  }
  std::string dir;
};

}  // namespace

// ---------------------------------------------------------------------------
// The score
// ---------------------------------------------------------------------------

TEST(SynthScore, TrackIsLongEnoughForTheWholeShow) {
  const synth::Score score = loadTheScore();
  EXPECT_GE(score.length, 264.0);
  EXPECT_EQ(score.rate, 44100);
}

TEST(SynthScore, SectionsStartWhereTheScenesStart) {
  const synth::Score score = loadTheScore();
  const double starts[] = {0.0, 26.5, 44.8, 75.0, 101.0, 120.0, 135.0, 165.0, 187.3, 217.5, 232.5, 255.8};
  ASSERT_EQ(score.sections.size(), std::size(starts));
  for (size_t i = 0; i < score.sections.size(); ++i) EXPECT_DOUBLE_EQ(score.sections[i].start, starts[i]) << i;
}

TEST(SynthScore, TemposStayInOneRange) {
  // Sections change tempo to meet the picture's pulses (128 bpm for the bars
  // of 1.875 s, 150 bpm where the flashes fall on tenths of a second), but
  // the track stays in one range, and a named downbeat lies within a bar of
  // its section's start.
  const synth::Score score = loadTheScore();
  for (const synth::Section& s : score.sections) {
    EXPECT_GE(s.bpm, 115.0) << s.name;
    EXPECT_LE(s.bpm, 165.0) << s.name;
    if (s.downbeat >= 0) {
      EXPECT_GE(s.downbeat, s.start) << s.name;
      EXPECT_LT(s.downbeat, s.start + 240.0 / s.bpm) << s.name;
    }
  }
}

TEST(SynthScore, ArrangementBuildsAndThinsOutAtTheRewind) {
  const synth::Score score = loadTheScore();
  const auto& sections = score.sections;
  // Every part plays somewhere, and the last sections before the rewind
  // carry the most.
  auto parts = [](const synth::Section& s) {
    return int(s.drums != "none") + int(s.bass != "none") + int(s.pad > 0) + int(s.lead != "none") +
           int(s.arp != "none" && s.arpLevel > 0);
  };
  EXPECT_EQ(parts(sections[10]), 5);
  EXPECT_LE(parts(sections[0]), 3);
  EXPECT_EQ(sections[11].drums, "none") << "the rewind at 255.8 s thins out";
  EXPECT_EQ(sections[11].lead, "none");
  EXPECT_GT(sections[11].fadeOut, 0.0);
  EXPECT_GE(sections[10].bright, sections[1].bright);
}

TEST(SynthScore, NoteNames) {
  EXPECT_EQ(synth::noteNumber("A4"), 69);
  EXPECT_EQ(synth::noteNumber("C4"), 60);
  EXPECT_EQ(synth::noteNumber("C#5"), 73);
  EXPECT_EQ(synth::noteNumber("Bb3"), 58);
  EXPECT_EQ(synth::noteNumber("G#4"), 68);
  EXPECT_EQ(synth::noteNumber("C-1"), 0);
  EXPECT_EQ(synth::noteNumber("H4"), -1);
  EXPECT_EQ(synth::noteNumber("A"), -1);
  EXPECT_EQ(synth::noteNumber("A#"), -1);
  EXPECT_EQ(synth::noteNumber("A4x"), -1);
  EXPECT_EQ(synth::noteNumber("G99"), -1);
}

TEST(SynthScore, MinimalScoreParses) {
  std::string error;
  EXPECT_TRUE(parses(minimalScore, &error)) << error;
  // A '#' that starts a word is a comment; inside a note name it is a sharp.
  EXPECT_TRUE(parses(minimalScore + "# a comment\nlead x G#4:4 -:4 # trailing comment\n", &error)) << error;
}

TEST(SynthScore, HitsDownbeatsAndFineStepsParse) {
  synth::Score score;
  std::string error;
  ASSERT_TRUE(synth::parseScore(minimalScore + "drums d kick X" + std::string(63, '.') + " snare x" + std::string(15, '.') + "\n"
                                               "hits h kick 0.5 0.75\nhits h crash 0.5\nhits h snare 0.9\n"
                                               "section 3 128 late chords=c drums=d hits=h downbeat=3.2 drumsFrom=0.4\n",
                                score, error))
      << error;
  ASSERT_EQ(score.sections.size(), 2u);
  const synth::Section& late = score.sections[1];
  EXPECT_EQ(late.hits, "h");
  EXPECT_DOUBLE_EQ(late.downbeat, 3.2);
  EXPECT_DOUBLE_EQ(late.drumsFrom, 0.4);
  EXPECT_EQ(score.drums.at("d").parts.at("kick").size(), 64u);
  EXPECT_EQ(score.drums.at("d").parts.at("snare").size(), 16u);
  const synth::HitList& hits = score.hits.at("h");
  EXPECT_EQ(hits.parts.at("kick"), (std::vector<double>{0.5, 0.75}));
  EXPECT_EQ(hits.parts.at("crash"), (std::vector<double>{0.5}));
  EXPECT_EQ(hits.parts.at("snare"), (std::vector<double>{0.9}));
  // Without a downbeat the bars start at the section's start.
  EXPECT_LT(score.sections[0].downbeat, 0.0);
}

TEST(SynthScore, DamagedScoresAreRefusedWithTheLine) {
  std::string error;
  EXPECT_FALSE(parses(minimalScore + "tempo 120\n", &error));
  EXPECT_NE(error.find("line 5"), std::string::npos) << error;
  EXPECT_NE(error.find("unknown statement"), std::string::npos) << error;

  EXPECT_FALSE(parses(minimalScore + "drums d kick x...\n", &error));          // short steps
  EXPECT_FALSE(parses(minimalScore + "drums d kick x...x...x...x...x...\n", &error));  // 20 steps
  EXPECT_NE(error.find("16, 32 or 64"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "drums d cowbell x...x...x...x...\n", &error));
  EXPECT_FALSE(parses(minimalScore + "hits h cowbell 1\n", &error));
  EXPECT_NE(error.find("unknown hit part"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "hits h kick -1\n", &error));
  EXPECT_FALSE(parses(minimalScore + "hits h kick soon\n", &error));
  EXPECT_FALSE(parses(minimalScore + "hits h kick\n", &error));
  EXPECT_FALSE(parses(minimalScore + "section 1 120 late chords=c hits=missing\n", &error));
  EXPECT_NE(error.find("unknown hits"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "hits h snare 0.5 3.5\nsection 1 120 late chords=c hits=h\n", &error));
  EXPECT_NE(error.find("ends before its snare hit"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "section 1 120 late chords=c downbeat=-2\n", &error));
  EXPECT_FALSE(parses(minimalScore + "bass b rrrrzzzzrrrrrrrr\n", &error));
  EXPECT_FALSE(parses(minimalScore + "arp a 0123401234012340\n", &error));
  EXPECT_FALSE(parses(minimalScore + "lead l A4\n", &error));                   // no length
  EXPECT_FALSE(parses(minimalScore + "lead l Q4:2\n", &error));
  EXPECT_FALSE(parses(minimalScore + "lead l A4:0\n", &error));
  EXPECT_FALSE(parses(minimalScore + "chords x Am Zm\n", &error));
  EXPECT_FALSE(parses(minimalScore + "section 1 120 late chords=c drums=missing\n", &error));
  EXPECT_NE(error.find("unknown drums"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "section 0 120 again chords=c\n", &error));
  EXPECT_NE(error.find("time order"), std::string::npos) << error;
  EXPECT_FALSE(parses(minimalScore + "section 1 120 odd chords=c loud=3\n", &error));
  EXPECT_FALSE(parses(minimalScore + "section 1 120 odd chords=c pad=loud\n", &error));
  EXPECT_FALSE(parses(minimalScore + "section 1 5 slow chords=c\n", &error));
  EXPECT_FALSE(parses(minimalScore + "section 5 120 afterTheEnd chords=c\n", &error));
  EXPECT_FALSE(parses("rate 44100\nlength 10\nchords c C\n", &error));           // no sections
  EXPECT_FALSE(parses("rate 12\nlength 10\nchords c C\nsection 0 120 s chords=c\n", &error));
}

TEST(SynthScore, MissingScoreFileIsRefused) {
  synth::Score score;
  std::string error;
  EXPECT_FALSE(synth::loadScore("/nonexistent/ostravine.score", score, error));
  EXPECT_NE(error.find("cannot read"), std::string::npos);
}

// ---------------------------------------------------------------------------
// Drum hits: where the kicks and snares fall
// ---------------------------------------------------------------------------

namespace {

std::vector<synth::DrumHit> hitsOf(const std::string& text) {
  synth::Score score;
  std::string error;
  EXPECT_TRUE(synth::parseScore(text, score, error)) << error;
  return synth::drumHits(score);
}

std::vector<double> timesOf(const std::vector<synth::DrumHit>& hits, const std::string& part) {
  std::vector<double> out;
  for (const synth::DrumHit& h : hits)
    if (h.part == part) out.push_back(h.time);
  return out;
}

void expectTimes(const std::vector<double>& got, const std::vector<double>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-9) << i;
}

const std::string drumScore = "rate 22050\nlength 4\nchords c C\n"
                              "drums d kick x...x...x...x... snare ....x.......x... hat xxxxxxxxxxxxxxxx\n";

}  // namespace

TEST(SynthHits, PatternStepsFromTheSectionStart) {
  // 120 bpm, two whole bars: kicks on the beats, snares on two and four.
  const std::vector<synth::DrumHit> hits = hitsOf(drumScore + "section 0 120 s chords=c drums=d crash=0\n");
  expectTimes(timesOf(hits, "kick"), {0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5});
  expectTimes(timesOf(hits, "snare"), {0.5, 1.5, 2.5, 3.5});
  EXPECT_TRUE(std::is_sorted(hits.begin(), hits.end(),
                             [](const synth::DrumHit& a, const synth::DrumHit& b) { return a.time < b.time; }));
  EXPECT_DOUBLE_EQ(hits.front().velocity, 0.75);
}

TEST(SynthHits, DownbeatGivesAPickupAndAFill) {
  // Bars from 0.25 s: the section opens with the end of a bar and a kick on
  // its first instant (with the cymbal); the short last bar from 2.25 s keeps
  // its kicks and snares and rolls in sixteenths up to the end.
  const std::vector<synth::DrumHit> hits = hitsOf(drumScore + "section 0 120 s chords=c drums=d downbeat=0.25\n");
  expectTimes(timesOf(hits, "kick"), {0, 0.25, 0.75, 1.25, 1.75, 2.25, 2.75, 3.25, 3.75});
  std::vector<double> snares = {0.75, 1.75};
  for (int j = 0; j < 14; ++j) snares.push_back(2.25 + j * 0.125);
  snares.push_back(2.75);
  snares.push_back(3.75);
  std::sort(snares.begin(), snares.end());
  expectTimes(timesOf(hits, "snare"), snares);
  // The roll rises to full strength.
  std::vector<double> roll;
  for (const synth::DrumHit& h : hits)
    if (h.part == "snare" && h.time > 2.2 && h.velocity != 0.75) roll.push_back(h.velocity);
  ASSERT_EQ(roll.size(), 14u);
  EXPECT_TRUE(std::is_sorted(roll.begin(), roll.end()));
  EXPECT_DOUBLE_EQ(roll.back(), 1.0);
}

TEST(SynthHits, FineStepsHitsAndLateDrums) {
  // 64 steps a bar place a kick between the sixteenths; the drum pattern
  // waits for drumsFrom, the hits do not.
  const std::vector<synth::DrumHit> hits =
      hitsOf("rate 22050\nlength 4\nchords c C\n"
             "drums d kick ...................................X............................\n"
             "hits h snare 0.3 0.9\nhits h crash 0.3\n"
             "section 0 120 s chords=c drums=d hits=h drumsFrom=1.5 crash=0\n");
  expectTimes(timesOf(hits, "kick"), {2.0 + 35.0 / 64.0 * 2.0});
  expectTimes(timesOf(hits, "snare"), {0.3, 0.9});
  EXPECT_DOUBLE_EQ(hits.front().velocity, 1.0) << "hits are accented";
}

TEST(SynthHits, TheTrackHasItsDrums) {
  const std::vector<synth::DrumHit> hits = synth::drumHits(loadTheScore());
  EXPECT_GT(timesOf(hits, "kick").size(), 200u);
  EXPECT_GT(timesOf(hits, "snare").size(), 150u);
  EXPECT_GE(hits.front().time, 0.0);
  EXPECT_LT(hits.back().time, 255.8) << "the rewind has no drums";
}

// ---------------------------------------------------------------------------
// Rendering
// ---------------------------------------------------------------------------

TEST(SynthRender, SameScoreSameSamples) {
  const synth::Score score = loadTheScore();
  const std::vector<int16_t> a = synth::render(score, 131.0, 139.0);
  const std::vector<int16_t> b = synth::render(score, 131.0, 139.0);
  ASSERT_EQ(a.size(), size_t(8 * 44100 * 2));
  EXPECT_TRUE(a == b);
  EXPECT_GT(rms(a), 500.0) << "the excerpt should not be silent";
}

TEST(SynthRender, NoClippingAnywhereLoud) {
  const synth::Score score = loadTheScore();
  for (double start : {135.0, 187.3, 232.5, 250.0}) {
    const std::vector<int16_t> samples = synth::render(score, start, start + 5.0);
    EXPECT_LT(peak(samples), 32000) << "at " << start;
    EXPECT_GT(peak(samples), 8000) << "at " << start;
  }
}

TEST(SynthRender, SectionsChangeAndTheMusicBuilds) {
  const synth::Score score = loadTheScore();
  const double opening = sectionRms(score, 4.0);
  const double within = sectionRms(score, 26.5);
  const double meetus = sectionRms(score, 135.0);
  const double rollus = sectionRms(score, 240.0);
  const double rewind = sectionRms(score, 256.0);
  EXPECT_GT(opening, 100.0);
  EXPECT_LT(opening, within);
  EXPECT_LT(within, rollus);
  EXPECT_LT(meetus, rollus * 1.05);
  EXPECT_LT(rewind, rollus * 0.7) << "the rewind thins out";
}

TEST(SynthRender, DrumsStartOnTheSectionsFirstBeat) {
  // The first section with drums starts at 26.5 s with a kick and a cymbal:
  // the 20 ms after it are far louder than the 20 ms before it.
  const synth::Score score = loadTheScore();
  const double before = rms(synth::render(score, 26.48, 26.5));
  const double after = rms(synth::render(score, 26.5, 26.52));
  EXPECT_GT(after, before * 3.0);
}

TEST(SynthRender, FadesOutToSilenceAtTheEnd) {
  const synth::Score score = loadTheScore();
  const std::vector<int16_t> last = synth::render(score, score.length - 0.05, score.length);
  EXPECT_LT(peak(last), 400);
  EXPECT_EQ(synth::render(score, 300.0, 310.0).size(), 0u);
  EXPECT_EQ(synth::render(score, 10.0, 5.0).size(), 0u);
  EXPECT_EQ(synth::render(score, score.length - 1.0, score.length + 5.0).size(), size_t(44100 * 2));
}

TEST(SynthRender, MinimalScoreRendersAtItsRate) {
  synth::Score score;
  std::string error;
  ASSERT_TRUE(synth::parseScore(minimalScore, score, error)) << error;
  const std::vector<int16_t> samples = synth::render(score, 0.0, 4.0);
  EXPECT_EQ(samples.size(), size_t(4 * 22050 * 2));
  EXPECT_GT(rms(samples), 50.0);
}

TEST(SynthRender, SwellRisesIntoItsSection) {
  const std::string base = "rate 22050\nlength 8\nchords c C\nsection 0 120 first chords=c pad=0.2\n";
  synth::Score plain, swelling;
  std::string error;
  ASSERT_TRUE(synth::parseScore(base + "section 4 120 second chords=c pad=0.2\n", plain, error)) << error;
  ASSERT_TRUE(synth::parseScore(base + "section 4 120 second chords=c pad=0.2 swell=2\n", swelling, error)) << error;
  // Before the swell both are the same; in its last half second it is loud.
  EXPECT_TRUE(synth::render(plain, 0.5, 1.5) == synth::render(swelling, 0.5, 1.5));
  const double plainEnd = rms(synth::render(plain, 3.5, 4.0));
  const double swellEnd = rms(synth::render(swelling, 3.5, 4.0));
  const double swellStart = rms(synth::render(swelling, 2.0, 2.5));
  EXPECT_GT(swellEnd, plainEnd * 2.0);
  EXPECT_GT(swellEnd, swellStart * 1.5) << "a swell rises";
}

// ---------------------------------------------------------------------------
// Files: the WAV writer, the tool, the encoder, the built track
// ---------------------------------------------------------------------------

TEST_F(SynthFiles, WavFileHasAPlainPcmHeader) {
  const std::vector<int16_t> samples = {0, 1, -1, 32767, -32768, 100};
  ASSERT_TRUE(synth::writeWav(dir + "/x.wav", samples, 44100));
  const std::string bytes = readBytes(dir + "/x.wav");
  ASSERT_EQ(bytes.size(), 44u + 12u);
  EXPECT_EQ(bytes.substr(0, 4), "RIFF");
  EXPECT_EQ(bytes.substr(8, 8), "WAVEfmt ");
  EXPECT_EQ(bytes.substr(36, 4), "data");
  EXPECT_EQ(uint8_t(bytes[4]), 36u + 12u);
  EXPECT_EQ(uint8_t(bytes[22]), 2u);      // channels
  EXPECT_EQ(uint8_t(bytes[40]), 12u);     // data bytes
  EXPECT_EQ(uint8_t(bytes[44 + 6]), 0xFFu);  // 32767, little-endian
  EXPECT_EQ(uint8_t(bytes[44 + 7]), 0x7Fu);
  EXPECT_FALSE(synth::writeWav("/nonexistent/dir/x.wav", samples, 44100));
}

TEST_F(SynthFiles, ToolRendersTheSameBytesEveryRun) {
  const std::string tool = OSTRAVINE_SYNTH;
  const std::string command = "'" + tool + "' '" + scorePath + "' ";
  ASSERT_EQ(testrun::run(command + "a.wav 200 203", dir).exitStatus, 0);
  ASSERT_EQ(testrun::run(command + "b.wav 200 203", dir).exitStatus, 0);
  const std::string a = readBytes(dir + "/a.wav");
  EXPECT_EQ(a.size(), 44u + 3u * 44100u * 4u);
  EXPECT_TRUE(a == readBytes(dir + "/b.wav"));
}

TEST_F(SynthFiles, ToolListsTheDrumHits) {
  const std::string tool = OSTRAVINE_SYNTH;
  const testrun::Result listed = testrun::run("'" + tool + "' --hits '" + scorePath + "'", dir);
  ASSERT_EQ(listed.exitStatus, 0) << listed.err;
  const std::vector<synth::DrumHit> hits = synth::drumHits(loadTheScore());
  std::istringstream lines(listed.out);
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    std::istringstream words(line);
    double time = 0, velocity = 0;
    std::string part;
    ASSERT_TRUE(bool(words >> time >> part >> velocity)) << line;
    ASSERT_LT(count, hits.size());
    EXPECT_NEAR(time, hits[count].time, 0.000001) << line;
    EXPECT_EQ(part, hits[count].part) << line;
  }
  EXPECT_EQ(count, hits.size());
  const testrun::Result missing = testrun::run("'" + tool + "' --hits missing.score", dir);
  EXPECT_EQ(missing.exitStatus, 1);
  EXPECT_NE(missing.err.find("cannot read"), std::string::npos) << missing.err;
}

TEST_F(SynthFiles, ToolRefusesBadArguments) {
  const std::string tool = OSTRAVINE_SYNTH;
  const testrun::Result usage = testrun::run("'" + tool + "'", dir);
  EXPECT_EQ(usage.exitStatus, 2);
  EXPECT_NE(usage.err.find("usage"), std::string::npos);
  {
    std::ofstream bad(dir + "/bad.score");
    bad << "length ten\n";
  }
  const testrun::Result damaged = testrun::run("'" + tool + "' bad.score out.wav", dir);
  EXPECT_EQ(damaged.exitStatus, 1);
  EXPECT_NE(damaged.err.find("line 1"), std::string::npos) << damaged.err;
  const testrun::Result empty = testrun::run("'" + tool + "' '" + scorePath + "' out.wav 400 410", dir);
  EXPECT_EQ(empty.exitStatus, 1);
}

TEST_F(SynthFiles, EncodingTheSameSoundGivesTheSameBytes) {
  if (testrun::run("command -v lame", "/").exitStatus != 0) GTEST_SKIP() << "the lame encoder is not installed";
  const synth::Score score = loadTheScore();
  ASSERT_TRUE(synth::writeWav(dir + "/x.wav", synth::render(score, 150.0, 154.0), score.rate));
  const std::string lame = "lame --quiet -b 160 --noreplaygain x.wav ";
  ASSERT_EQ(testrun::run(lame + "a.mp3", dir).exitStatus, 0);
  ASSERT_EQ(testrun::run(lame + "b.mp3", dir).exitStatus, 0);
  const std::string a = readBytes(dir + "/a.mp3");
  EXPECT_GT(a.size(), 10000u);
  EXPECT_TRUE(a == readBytes(dir + "/b.mp3"));
}

TEST(SynthTrack, BuiltTrackDecodesAndLastsTheWholeShow) {
  const std::string path = std::string(OSTRAVINE_RUN_DIR) + "/music/ostravine.mp3";
  if (!std::ifstream(path)) GTEST_SKIP() << path << " was not built (is lame installed?)";
  ASSERT_EQ(mpg123_init(), MPG123_OK);
  int error = 0;
  mpg123_handle* handle = mpg123_new(nullptr, &error);
  ASSERT_NE(handle, nullptr);
  ASSERT_EQ(mpg123_open(handle, path.c_str()), MPG123_OK);
  long rate = 0;
  int channels = 0, encoding = 0;
  ASSERT_EQ(mpg123_getformat(handle, &rate, &channels, &encoding), MPG123_OK);
  EXPECT_EQ(rate, 44100);
  EXPECT_EQ(channels, 2);
  ASSERT_EQ(mpg123_scan(handle), MPG123_OK);
  const double seconds = double(mpg123_length(handle)) / double(rate);
  EXPECT_GE(seconds, 264.0);
  EXPECT_LT(seconds, 300.0);
  mpg123_close(handle);
  mpg123_delete(handle);
}

TEST(SynthTrack, ScoreTravelsWithTheTrack) {
  // The show reads the tempo and section times from the run directory.
  const std::string copy = readBytes(std::string(OSTRAVINE_RUN_DIR) + "/music/ostravine.score");
  ASSERT_FALSE(copy.empty()) << "music/ostravine.score is missing from the run directory";
  EXPECT_TRUE(copy == readBytes(scorePath));
}
