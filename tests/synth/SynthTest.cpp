// The soundtrack synthesizer: the score in assets/music, the renderer's
// determinism and levels, and the encoded track in the run directory.
#include <gtest/gtest.h>

#include <mpg123.h>

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

TEST(SynthScore, EverySectionHoldsWholeBeatsNearOneTempo) {
  const synth::Score score = loadTheScore();
  for (size_t i = 0; i < score.sections.size(); ++i) {
    const synth::Section& s = score.sections[i];
    const double beats = (score.sectionEnd(i) - s.start) * s.bpm / 60.0;
    EXPECT_NEAR(beats, std::round(beats), 0.002) << s.name;
    EXPECT_NEAR(s.bpm, 120.0, 2.5) << s.name << ": the tempo should only drift, never jump";
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

TEST(SynthScore, DamagedScoresAreRefusedWithTheLine) {
  std::string error;
  EXPECT_FALSE(parses(minimalScore + "tempo 120\n", &error));
  EXPECT_NE(error.find("line 5"), std::string::npos) << error;
  EXPECT_NE(error.find("unknown statement"), std::string::npos) << error;

  EXPECT_FALSE(parses(minimalScore + "drums d kick x...\n", &error));          // short steps
  EXPECT_FALSE(parses(minimalScore + "drums d cowbell x...x...x...x...\n", &error));
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
