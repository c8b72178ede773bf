// --video through the real executable: tiny sizes and short ranges, decoded
// again with ffmpeg and ffprobe to count and compare the frames and to find
// the music in step.
#include <gtest/gtest.h>

#include <mpg123.h>
#include <stdlib.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "core/VideoEncoder.h"
#include "support/ImageCompare.h"
#include "support/RunProgram.h"

namespace {

bool has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

#define REQUIRE_DISPLAY() \
  if (!std::getenv("DISPLAY")) GTEST_SKIP() << "no display"
#define REQUIRE_FFMPEG() \
  if (findOnPath("ffmpeg").empty() || findOnPath("ffprobe").empty()) GTEST_SKIP() << "no ffmpeg"

using testrun::readFile;

// ffprobe's key=value lines for one stream ("v:0", "a:0"); empty when the
// stream does not exist.
std::map<std::string, std::string> probe(const std::string& file, const std::string& stream) {
  testrun::Result r = testrun::run("ffprobe -v error -count_frames -select_streams " + stream +
                                       " -show_entries stream=codec_name,width,height,nb_read_frames,duration,"
                                       "sample_rate -of default=noprint_wrappers=1 '" +
                                       file + "'",
                                   "");
  std::map<std::string, std::string> values;
  for (const std::string& line : testrun::lines(r.out)) {
    const size_t eq = line.find('=');
    if (eq != std::string::npos) values[line.substr(0, eq)] = line.substr(eq + 1);
  }
  return values;
}

// The first video stream in a line: "codec WIDTHxHEIGHT, N frames".
std::string videoStream(const std::string& file) {
  std::map<std::string, std::string> v = probe(file, "v:0");
  return v["codec_name"] + " " + v["width"] + "x" + v["height"] + ", " + v["nb_read_frames"] + " frames";
}

// Every video frame decoded to packed RGB, one after the other.
std::string decodedFrames(const std::string& file, const std::string& dir) {
  const std::string raw = dir + "/decoded.rgb";
  testrun::run("ffmpeg -v error -y -i '" + file + "' -map 0:v:0 -f rawvideo -pix_fmt rgb24 '" + raw + "'", "");
  std::string bytes = readFile(raw);
  remove(raw.c_str());
  return bytes;
}

// The sound track decoded to interleaved signed 16-bit stereo at 44.1 kHz.
std::vector<int16_t> decodedSound(const std::string& file, const std::string& dir) {
  const std::string raw = dir + "/decoded.pcm";
  testrun::run("ffmpeg -v error -y -i '" + file + "' -map 0:a:0 -f s16le -ac 2 -ar 44100 '" + raw + "'", "");
  const std::string bytes = readFile(raw);
  remove(raw.c_str());
  std::vector<int16_t> samples(bytes.size() / 2);
  if (!samples.empty()) memcpy(samples.data(), bytes.data(), samples.size() * 2);
  return samples;
}

// The music as the player's own decoder gives it, interleaved stereo.
std::vector<int16_t> musicByPlayerDecoder(long& rate) {
  std::vector<int16_t> samples;
  mpg123_init();
  int error = 0;
  mpg123_handle* h = mpg123_new(nullptr, &error);
  mpg123_param(h, MPG123_ADD_FLAGS, MPG123_QUIET, 0.0);
  mpg123_format_none(h);
  mpg123_format(h, 44100, MPG123_STEREO, MPG123_ENC_SIGNED_16);
  if (mpg123_open(h, OSTRAVINE_RUN_DIR "/music/ostravine.mp3") == MPG123_OK) {
    int channels = 0, encoding = 0;
    mpg123_getformat(h, &rate, &channels, &encoding);
    unsigned char buffer[65536];
    size_t done = 0;
    int r;
    while ((r = mpg123_read(h, buffer, sizeof buffer, &done)) == MPG123_OK || done > 0) {
      const size_t old = samples.size();
      samples.resize(old + done / 2);
      memcpy(samples.data() + old, buffer, done / 2 * 2);
      if (r != MPG123_OK) break;
    }
    mpg123_close(h);
  }
  mpg123_delete(h);
  return samples;
}

const char* const exe = "'" OSTRAVINE_EXECUTABLE "' ";

}  // namespace

TEST(Video, RefusalsComeBeforeTheDisplayInOneLine) {
  struct Case {
    std::string arguments, message;
  } cases[] = {
      {"--video film.avi", "does not end in .mp4"},
      {"--video film.mp4 --lossless", "--lossless writes FFV1 into a .mkv file"},
      {"--lossless", "--lossless goes with --video"},
      {"--video", "--video needs a file name"},
      {"--video film.mp4 --from 263500", "no frame lies from 263500 ms to 263500 ms"},
      {"--video film.mp4 --from 400000", "no frame lies from 400000 ms"},
      {"--video film.mp4 --from 2000 --to 1000", "--to lies before --from"},
  };
  for (const Case& c : cases) {
    // No display: a refusal must not need one.
    testrun::Result r = testrun::run(std::string("env -u DISPLAY ") + exe + c.arguments, OSTRAVINE_RUN_DIR);
    EXPECT_EQ(r.exitStatus, 2) << c.arguments << "\n" << r.out << r.err;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << "\n" << r.err;
    EXPECT_EQ(testrun::lines(r.err).size(), 1u) << r.err;
    EXPECT_EQ(r.out, "");
  }
}

TEST(Video, WithoutFfmpegOneLineAndStatus2) {
  testrun::Result r = testrun::run(std::string("env PATH=/nonexistent ") + exe + "-nomusic --video film.mp4",
                                   OSTRAVINE_RUN_DIR);
  EXPECT_EQ(r.exitStatus, 2) << r.out << r.err;
  EXPECT_EQ(r.err, "ostravine: --video needs ffmpeg, which is not on PATH (Debian: apt-get install ffmpeg)\n");
  EXPECT_EQ(r.out, "");
}

// Frame-exact: 500 ms at 20 fps are 10 frames, the same decoded frames in two
// renders; the music lasts as long as the frames, and -nomusic leaves it out.
TEST(Video, ExactFrameCountSameFramesAndTheMusicBeside) {
  REQUIRE_DISPLAY();
  REQUIRE_FFMPEG();
  testrun::TempDir d("video");
  const std::string range = " --size 64x36 --fixed-fps 20 --from 15000 --to 15500 --video ";
  testrun::Result first = testrun::runOnDisplay(exe + range + "'" + d.path + "/a.mp4'", OSTRAVINE_RUN_DIR, 300);
  ASSERT_EQ(first.exitStatus, 0) << first.out << first.err;
  EXPECT_TRUE(has(first.out, "video: wrote " + d.path + "/a.mp4, 10 frames of 64x36 at 20 fps, with the music\n"))
      << first.out;
  // Not a terminal: plain lines, the last with the whole count.
  EXPECT_TRUE(has(first.err, "video 10/10 frames 100.0%")) << first.err;
  EXPECT_FALSE(has(first.err, "\r"));
  testrun::Result second =
      testrun::runOnDisplay(exe + std::string("-nomusic") + range + "'" + d.path + "/b.mp4'", OSTRAVINE_RUN_DIR, 300);
  ASSERT_EQ(second.exitStatus, 0) << second.out << second.err;
  EXPECT_TRUE(has(second.out, "10 frames of 64x36 at 20 fps, no sound\n")) << second.out;

  EXPECT_EQ(videoStream(d.path + "/a.mp4"), "h264 64x36, 10 frames");
  EXPECT_EQ(probe(d.path + "/b.mp4", "v:0")["nb_read_frames"], "10");
  std::map<std::string, std::string> a = probe(d.path + "/a.mp4", "a:0");
  EXPECT_EQ(a["codec_name"], "aac");
  EXPECT_NEAR(atof(a["duration"].c_str()), 0.5, 0.03);
  EXPECT_TRUE(probe(d.path + "/b.mp4", "a:0").empty());

  const std::string framesA = decodedFrames(d.path + "/a.mp4", d.path);
  const std::string framesB = decodedFrames(d.path + "/b.mp4", d.path);
  ASSERT_EQ(framesA.size(), 10u * 64 * 36 * 3);
  EXPECT_TRUE(framesA == framesB);
  // The frames show the scene, not an empty screen.
  size_t lit = 0;
  for (unsigned char c : framesA) lit += c > 40;
  EXPECT_GT(lit, framesA.size() / 50);
}

// Lossless: the decoded frames are exactly the frames that --capture writes
// from the same run, upright; the FLAC sound is the music from --from on, in
// step to the sample with what the player's own decoder gives.
TEST(Video, LosslessFramesAreTheShownFramesAndTheSoundIsInStep) {
  REQUIRE_DISPLAY();
  REQUIRE_FFMPEG();
  testrun::TempDir d("video");
  testrun::Result r = testrun::runOnDisplay(exe + std::string("--size 40x30 --fixed-fps 20 --from 15000 --to 15300 "
                                                              "--lossless --capture '") +
                                                d.path + "' --video '" + d.path + "/film.mkv'",
                                            OSTRAVINE_RUN_DIR, 300);
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  std::map<std::string, std::string> v = probe(d.path + "/film.mkv", "v:0");
  EXPECT_EQ(v["codec_name"], "ffv1");
  EXPECT_EQ(v["nb_read_frames"], "6");
  const std::string frames = decodedFrames(d.path + "/film.mkv", d.path);
  const size_t frameBytes = 40 * 30 * 3;
  ASSERT_EQ(frames.size(), 6 * frameBytes);
  for (int k = 0; k < 6; ++k) {
    char name[64];
    snprintf(name, sizeof name, "/frame-%06d.png", k);
    testimg::Image shot;
    ASSERT_TRUE(testimg::readPng(d.path + name, shot)) << name;
    ASSERT_EQ(shot.width * shot.height, 40 * 30);
    size_t differing = 0;
    for (size_t p = 0; p < size_t(40 * 30); ++p)
      for (int c = 0; c < 3; ++c) differing += uint8_t(frames[k * frameBytes + p * 3 + c]) != shot.rgba[p * 4 + c];
    EXPECT_EQ(differing, 0u) << "frame " << k;
  }

  std::map<std::string, std::string> a = probe(d.path + "/film.mkv", "a:0");
  EXPECT_EQ(a["codec_name"], "flac");
  long rate = 0;
  const std::vector<int16_t> music = musicByPlayerDecoder(rate);
  ASSERT_EQ(rate, 44100);
  const std::vector<int16_t> sound = decodedSound(d.path + "/film.mkv", d.path);
  // 300 ms of stereo at 44.1 kHz.
  EXPECT_NEAR(double(sound.size()), 2 * 13230.0, 2 * 2.0);
  // The lag that matches best within 50 ms either way must be 0, with the
  // two decoders agreeing to a few steps of 16 bits.
  const long start = 15000L * 44100 / 1000;
  ASSERT_GT(music.size(), size_t(2 * (start + 13230 + 2205)));
  ASSERT_GT(sound.size(), size_t(2 * 10000));
  double loudness = 0;
  for (size_t i = 0; i < 20000; ++i) loudness += std::fabs(double(sound[i]));
  ASSERT_GT(loudness / 20000, 100.0) << "the stretch is too quiet to find a lag in";
  long bestLag = 0;
  double bestError = 1e300;
  for (long lag = -2205; lag <= 2205; ++lag) {
    double error = 0;
    for (size_t i = 0; i < 20000; ++i) {
      const double diff = double(sound[i]) - double(music[size_t(2 * (start + lag)) + i]);
      error += diff * diff;
    }
    if (error < bestError) bestError = error, bestLag = lag;
  }
  EXPECT_EQ(bestLag, 0);
  EXPECT_LT(std::sqrt(bestError / 20000), 8.0);
}

// Other containers follow the extension; an odd size is padded to even for
// the 4:2:0 codecs.
TEST(Video, ContainersFollowTheExtension) {
  REQUIRE_DISPLAY();
  REQUIRE_FFMPEG();
  testrun::TempDir d("video");
  for (const std::string name : {"film.webm", "film.mkv"}) {
    testrun::Result r = testrun::runOnDisplay(
        exe + std::string("--size 33x21 --fixed-fps 10 --from 15000 --to 15300 --video '") + d.path + "/" + name + "'",
        OSTRAVINE_RUN_DIR, 300);
    ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
    std::map<std::string, std::string> v = probe(d.path + "/" + name, "v:0");
    std::map<std::string, std::string> a = probe(d.path + "/" + name, "a:0");
    EXPECT_EQ(v["codec_name"], name == "film.webm" ? "vp9" : "h264");
    EXPECT_EQ(a["codec_name"], name == "film.webm" ? "opus" : "vorbis");
    EXPECT_EQ(v["width"], "34");
    EXPECT_EQ(v["height"], "22");
    EXPECT_EQ(v["nb_read_frames"], "3");
  }
}

// The README's play command on a machine without a display: one line says
// so, and the film (here a stretch of three frames, --from and --to going to
// the program) is rendered with its music into ostravine.mp4 in the folder
// the command was started from, at 1280x720, with the progress bar.
TEST(Video, ThePlayCommandWithoutADisplayRendersTheFilmIntoTheCurrentFolder) {
  REQUIRE_FFMPEG();
  if (findOnPath("xvfb-run").empty()) GTEST_SKIP() << "no xvfb-run";
  testrun::TempDir d("video");
  ASSERT_FALSE(d.path.empty());
  testrun::Result r = testrun::run("env -u DISPLAY SKIP_DEPS=1 SKIP_BUILD=1 BUILD_DIR='" OSTRAVINE_BINARY_DIR
                                   "' bash '" OSTRAVINE_SOURCE_DIR "/scripts/play.sh' --from 60000 --to 60050",
                                   d.path, 300);
  ASSERT_EQ(r.exitStatus, 0) << r.out << r.err;
  const std::vector<std::string> out = testrun::lines(r.out);
  ASSERT_FALSE(out.empty());
  EXPECT_EQ(out[0], "No display (DISPLAY is not set): rendering the film to " + d.path +
                        "/ostravine.mp4 at 1280x720 instead of playing it.");
  EXPECT_TRUE(has(r.out, "video: wrote " + d.path + "/ostravine.mp4, 3 frames of 1280x720 at 60 fps, with the music\n"))
      << r.out;
  EXPECT_TRUE(has(r.err, "video 3/3 frames 100.0%")) << r.err;
  EXPECT_EQ(videoStream(d.path + "/ostravine.mp4"), "h264 1280x720, 3 frames");
  EXPECT_EQ(probe(d.path + "/ostravine.mp4", "a:0")["codec_name"], "aac");
}
