// The choices behind --video: frame counts, file kinds, ffmpeg's arguments,
// the search for ffmpeg, the child process and the progress line.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "core/ProgressBar.h"
#include "core/VideoEncoder.h"

namespace {

bool contains(const std::vector<std::string>& args, const std::vector<std::string>& run) {
  return std::search(args.begin(), args.end(), run.begin(), run.end()) != args.end();
}

VideoSettings settingsFor(const std::string& path) {
  VideoSettings s;
  s.path = path;
  s.width = 640;
  s.height = 360;
  s.fps = 60;
  s.musicPath = "./music/ostravine.mp3";
  s.fromMs = 1500;
  s.frameCount = 90;
  return s;
}

}  // namespace

TEST(VideoFrameCount, CountsThePositionsBeforeTheEnd) {
  // Frame k shows from + k x 1000 / fps; those before `to` are rendered.
  EXPECT_EQ(videoFrameCount(0, 1000, 60), 60u);
  EXPECT_EQ(videoFrameCount(1000, 1500, 20), 10u);
  EXPECT_EQ(videoFrameCount(0, 263500, 60), 15810u);
  EXPECT_EQ(videoFrameCount(0, 10, 60), 1u);    // 0 ms only; 16.67 ms lies past 10
  EXPECT_EQ(videoFrameCount(0, 17, 60), 2u);    // 0 and 16.67 ms
  EXPECT_EQ(videoFrameCount(0, 1001, 1), 2u);
  EXPECT_EQ(videoFrameCount(500, 500, 60), 0u);
  EXPECT_EQ(videoFrameCount(600, 500, 60), 0u);
  EXPECT_EQ(videoFrameCount(0, 2147483647, 1000), 2147483647u);  // no overflow
}

TEST(VideoFile, ExtensionsChooseTheContainer) {
  EXPECT_EQ(videoFileProblem("film.mp4", false), "");
  EXPECT_EQ(videoFileProblem("dir.v2/FILM.MKV", false), "");
  EXPECT_EQ(videoFileProblem("a.webm", false), "");
  EXPECT_EQ(videoFileProblem("a.mov", false), "");
  EXPECT_NE(videoFileProblem("a.avi", false), "");
  EXPECT_NE(videoFileProblem("dir.mp4/film", false), "");
  EXPECT_NE(videoFileProblem("film", false), "");
  EXPECT_EQ(videoFileProblem("a.mkv", true), "");
  EXPECT_NE(videoFileProblem("a.mp4", true).find("--lossless"), std::string::npos);
}

TEST(VideoFile, Mp4IsH264AndAacFromThePipe) {
  const std::vector<std::string> a = ffmpegArguments(settingsFor("out.mp4"));
  EXPECT_TRUE(contains(a, {"-f", "rawvideo", "-pix_fmt", "bgr0", "-video_size", "640x360", "-framerate", "60",
                           "-i", "pipe:0"}));
  EXPECT_TRUE(contains(a, {"-i", "./music/ostravine.mp3"}));
  EXPECT_TRUE(contains(a, {"-c:v", "libx264"}));
  EXPECT_TRUE(contains(a, {"-pix_fmt", "yuv420p"}));
  EXPECT_TRUE(contains(a, {"-c:a", "aac"}));
  EXPECT_TRUE(contains(a, {"-vf", "vflip"}));
  // 90 frames at 60 fps from 1.5 s: the music from 1.5 s to 3 s.
  EXPECT_TRUE(contains(a, {"-af", "atrim=start=1.500000:end=3.000000,asetpts=PTS-STARTPTS"}));
  EXPECT_FALSE(contains(a, {"-frames:v"}));
  EXPECT_EQ(a.back(), "out.mp4");
}

TEST(VideoFile, OtherContainersAndTheLosslessChoice) {
  std::vector<std::string> a = ffmpegArguments(settingsFor("out.mkv"));
  EXPECT_TRUE(contains(a, {"-c:v", "libx264"}));
  EXPECT_TRUE(contains(a, {"-c:a", "libvorbis"}));
  a = ffmpegArguments(settingsFor("out.webm"));
  EXPECT_TRUE(contains(a, {"-c:v", "libvpx-vp9"}));
  EXPECT_TRUE(contains(a, {"-c:a", "libopus"}));
  VideoSettings lossless = settingsFor("out.mkv");
  lossless.lossless = true;
  a = ffmpegArguments(lossless);
  EXPECT_TRUE(contains(a, {"-c:v", "ffv1"}));
  EXPECT_TRUE(contains(a, {"-c:a", "flac"}));
  EXPECT_FALSE(contains(a, {"yuv420p"}));
}

TEST(VideoFile, SilentVideoHasNoAudioInputAndOddSizesArePadded) {
  VideoSettings s = settingsFor("out.mp4");
  s.musicPath.clear();
  s.width = 321;
  const std::vector<std::string> a = ffmpegArguments(s);
  EXPECT_FALSE(contains(a, {"-map", "1:a:0"}));
  EXPECT_FALSE(contains(a, {"-c:a", "aac"}));
  EXPECT_EQ(std::count(a.begin(), a.end(), "-i"), 1);
  EXPECT_TRUE(contains(a, {"-vf", "vflip,pad=ceil(iw/2)*2:ceil(ih/2)*2"}));
  s.lossless = true;
  EXPECT_TRUE(contains(ffmpegArguments(s), {"-vf", "vflip"}));  // FFV1 keeps any size
}

TEST(VideoFile, FindsExecutablesOnThePath) {
  EXPECT_EQ(findOnPath("sh").empty(), false);
  EXPECT_EQ(findOnPath("/bin/sh"), "/bin/sh");
  EXPECT_EQ(findOnPath("no-such-program-here"), "");
  const char* old = getenv("PATH");
  const std::string saved = old ? old : "";
  setenv("PATH", "/nonexistent", 1);
  EXPECT_EQ(findOnPath("sh"), "");
  setenv("PATH", saved.c_str(), 1);
}

TEST(VideoFile, MusicThatDoesNotDecodeIsNoticed) {
  EXPECT_FALSE(musicFileDecodes("/nonexistent/music.mp3"));
  char garbage[] = "/tmp/ostravine-garbage-XXXXXX";
  const int fd = mkstemp(garbage);
  ASSERT_GE(fd, 0);
  std::string junk(100000, '\0');
  for (size_t i = 0; i < junk.size(); ++i) junk[i] = char((i * 7919u) % 251u);
  ASSERT_EQ(write(fd, junk.data(), junk.size()), ssize_t(junk.size()));
  close(fd);
  EXPECT_FALSE(musicFileDecodes(garbage));
  unlink(garbage);
}

// The encoder's child process, with a stand-in for ffmpeg that stores what
// it reads, and one that refuses to read.
TEST(VideoEncoderProcess, FramesReachTheChildWhole) {
  char dir[] = "/tmp/ostravine-encoder-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string d = dir;
  const std::string fake = d + "/fake-ffmpeg";
  {
    std::ofstream script(fake);
    script << "#!/bin/sh\ncat > '" << d << "/frames.raw'\n";
  }
  chmod(fake.c_str(), 0755);
  VideoSettings s;
  s.path = d + "/out.mp4";
  s.width = 3;
  s.height = 2;
  s.frameCount = 2;
  VideoEncoder encoder;
  ASSERT_TRUE(encoder.start(fake, s)) << encoder.error;
  std::vector<uint8_t> frame(3 * 2 * 4);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = uint8_t(i);
  EXPECT_TRUE(encoder.writeFrame(frame.data()));
  EXPECT_TRUE(encoder.writeFrame(frame.data()));
  EXPECT_TRUE(encoder.finish()) << encoder.error;
  EXPECT_EQ(encoder.framesWritten(), 2u);
  std::ifstream in(d + "/frames.raw", std::ios::binary);
  std::string got((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  ASSERT_EQ(got.size(), 48u);
  EXPECT_EQ(uint8_t(got[23]), 23);
  EXPECT_EQ(uint8_t(got[47]), 23);
  system(("rm -rf '" + d + "'").c_str());
}

TEST(VideoEncoderProcess, AChildThatFailsIsReportedNotFatal) {
  VideoSettings s;
  s.path = "/tmp/unused.mp4";
  s.width = 512;
  s.height = 512;
  VideoEncoder encoder;
  ASSERT_TRUE(encoder.start("/bin/false", s));
  std::vector<uint8_t> frame(512 * 512 * 4, 7);
  bool ok = true;
  // Sooner or later the pipe is found closed; a larger frame than the pipe
  // holds makes it sooner.
  for (int i = 0; i < 50 && ok; ++i) ok = encoder.writeFrame(frame.data());
  EXPECT_FALSE(ok);
  EXPECT_FALSE(encoder.finish());
  EXPECT_NE(encoder.error, "");
}

TEST(VideoEncoderProcess, AMissingProgramCannotStart) {
  VideoSettings s;
  s.path = "/tmp/unused.mp4";
  s.width = 16;
  s.height = 16;
  VideoEncoder encoder;
  EXPECT_FALSE(encoder.start("/nonexistent/ffmpeg", s));
  EXPECT_NE(encoder.error.find("/nonexistent/ffmpeg"), std::string::npos);
}

TEST(Progress, TheLineCarriesAllFigures) {
  EXPECT_EQ(formatProgress(1234, 15810, 41.25, 0), "video 1234/15810 frames   7.8%   41.2 fps 5:53 left");
  EXPECT_EQ(formatProgress(0, 100, 0.0, 10), "video [..........] 0/100 frames   0.0%    0.0 fps --:-- left");
  EXPECT_EQ(formatProgress(50, 100, 10.0, 10), "video [#####.....] 50/100 frames  50.0%   10.0 fps 0:05 left");
  EXPECT_EQ(formatProgress(100, 100, 10.0, 4), "video [####] 100/100 frames 100.0%   10.0 fps 0:00 left");
  EXPECT_EQ(formatProgress(0, 40000, 1.0, 0), "video 0/40000 frames   0.0%    1.0 fps 11:06:40 left");
  EXPECT_EQ(formatProgress(200, 100, 10.0, 0), "video 100/100 frames 100.0%   10.0 fps 0:00 left");
}

TEST(Progress, APlainStreamGetsWholeLinesATerminalOneRewrittenLine) {
  char* text = nullptr;
  size_t size = 0;
  FILE* plain = open_memstream(&text, &size);
  {
    ProgressBar bar(plain, false, 3, 3600.0);
    bar.update(1);
    bar.update(2);
    bar.finish(3);
  }
  fclose(plain);
  // Nothing within the interval; the end is always written.
  const std::string p = text;
  EXPECT_EQ(p.rfind("video 3/3 frames 100.0% ", 0), 0u) << p;
  EXPECT_EQ(p.substr(p.size() - 10), "0:00 left\n") << p;
  EXPECT_EQ(std::count(text, text + size, '\n'), 1);
  EXPECT_EQ(std::count(text, text + size, '\r'), 0);
  free(text);

  // A line already written with the final count is not written again.
  plain = open_memstream(&text, &size);
  {
    ProgressBar bar(plain, false, 3, 0.0);
    bar.update(3);
    bar.finish(3);
  }
  fclose(plain);
  EXPECT_EQ(std::count(text, text + size, '\n'), 1) << text;
  free(text);

  FILE* terminal = open_memstream(&text, &size);
  {
    ProgressBar bar(terminal, true, 3);
    bar.update(1);
    bar.finish(3);
  }
  fclose(terminal);
  const std::string t = text;
  EXPECT_EQ(t.front(), '\r');
  EXPECT_EQ(std::count(t.begin(), t.end(), '\n'), 1);
  EXPECT_EQ(t.back(), '\n');
  EXPECT_NE(t.find("[########################] 3/3 frames 100.0%"), std::string::npos);
  free(text);
}
