// MusicStream against short MP3 files made here with the lame encoder, on
// SDL's dummy audio driver (which paces its callbacks at the real-time rate).
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <SDL.h>
#include <unistd.h>

#include "core/MusicStream.h"
#include "support/RunProgram.h"

namespace {

using Clock = std::chrono::steady_clock;

void putLe(std::ofstream& out, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.put(char((value >> (8 * i)) & 0xFF));
}

// A 16-bit sine tone, seconds long.
void writeSineWav(const std::string& path, double seconds, double frequency, uint32_t rate = 44100,
                  uint32_t channels = 2) {
  const uint32_t frames = uint32_t(seconds * rate);
  const uint32_t frameBytes = 2 * channels;
  std::ofstream out(path, std::ios::binary);
  out.write("RIFF", 4);
  putLe(out, 36 + frames * frameBytes, 4);
  out.write("WAVEfmt ", 8);
  putLe(out, 16, 4);
  putLe(out, 1, 2);
  putLe(out, channels, 2);
  putLe(out, rate, 4);
  putLe(out, rate * frameBytes, 4);
  putLe(out, frameBytes, 2);
  putLe(out, 16, 2);
  out.write("data", 4);
  putLe(out, frames * frameBytes, 4);
  for (uint32_t i = 0; i < frames; ++i) {
    const double v = 0.3 * std::sin(2.0 * M_PI * frequency * i / rate);
    const uint32_t s = uint32_t(uint16_t(int16_t(std::lround(v * 32767.0))));
    for (uint32_t c = 0; c < channels; ++c) putLe(out, s, 2);
  }
}

class MusicStreamTest : public ::testing::Test {
protected:
  // Each test runs in its own process under CTest, so each makes its own
  // files in its own directory.
  void SetUp() override {
    if (testrun::run("command -v lame", "/").exitStatus != 0)
      GTEST_SKIP() << "the lame encoder is not installed (scripts/install-deps.sh installs it)";
    char pattern[] = "/tmp/ostravine-music-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    writeSineWav(dir + "/tone.wav", 3.0, 440.0);
    const testrun::Result r =
        testrun::run("lame --quiet -b 128 --noreplaygain tone.wav tone.mp3", dir, 60);
    ASSERT_EQ(r.exitStatus, 0) << r.err;
    mp3 = dir + "/tone.mp3";
  }
  void TearDown() override {
    if (!dir.empty()) testrun::run("rm -rf '" + dir + "'", "/");
  }

  // Polls until the stream's position reaches ms or the time runs out; gives
  // the wall-clock milliseconds it took, or -1.
  static long waitForPosition(MusicStream& music, uint32_t ms, int timeoutMs = 10000) {
    const auto start = Clock::now();
    while (true) {
      const long took =
          long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
      if (music.positionMs() >= ms) return took;
      if (took > timeoutMs) return -1;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  std::string dir;
  std::string mp3;
};

void sleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

// An exit handler registered before the stream opens runs after the
// stream's own: it tells by its exit status whether the device is closed.
void exitWithTheDeviceStatus() { _exit(SDL_GetAudioStatus() == SDL_AUDIO_STOPPED ? 0 : 3); }

}  // namespace

TEST_F(MusicStreamTest, NothingBeforeOpen) {
  MusicStream music;
  EXPECT_EQ(music.positionMs(), 0u);
  EXPECT_EQ(music.lengthMs(), 0u);
  music.setPositionMs(500);
  EXPECT_EQ(music.positionMs(), 0u);
}

TEST_F(MusicStreamTest, OpensPausedAtZero) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  EXPECT_TRUE(music.isPaused());
  EXPECT_EQ(music.positionMs(), 0u);
  sleepMs(300);
  EXPECT_EQ(music.positionMs(), 0u);
}

TEST_F(MusicStreamTest, LengthIsTheFilesWithinAFrame) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  // One MPEG-1 layer III frame is 1152 samples, 26 ms at 44.1 kHz.
  EXPECT_NEAR(double(music.lengthMs()), 3000.0, 27.0);
}

TEST_F(MusicStreamTest, PositionAdvancesAtTheRealTimeRate) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  const auto start = Clock::now();
  music.setPaused(false);
  EXPECT_FALSE(music.isPaused());
  const long took = waitForPosition(music, 600);
  ASSERT_GE(took, 0) << "the position never reached 600 ms";
  // Never faster than the sound itself (one device buffer of slack).
  const long wall =
      long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
  EXPECT_GE(wall, 600 - 60);
  // Readings never go back while playing.
  uint32_t previous = music.positionMs();
  for (int i = 0; i < 50; ++i) {
    const uint32_t now = music.positionMs();
    EXPECT_GE(now, previous);
    previous = now;
    sleepMs(2);
  }
}

TEST_F(MusicStreamTest, PauseHoldsThePositionAndResumeGoesOnFromIt) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPaused(false);
  ASSERT_GE(waitForPosition(music, 300), 0);
  music.setPaused(true);
  EXPECT_TRUE(music.isPaused());
  const uint32_t held = music.positionMs();
  EXPECT_GE(held, 300u);
  sleepMs(600);
  EXPECT_EQ(music.positionMs(), held);
  music.setPaused(false);
  const uint32_t resumed = music.positionMs();
  EXPECT_GE(resumed, held);
  // At most the sound already handed to the device before the pause (and a
  // slow machine's scheduling) lies between the two; the pause does not count.
  EXPECT_LT(resumed, held + 300) << "resuming must not jump";
  ASSERT_GE(waitForPosition(music, held + 200), 0);
}

TEST_F(MusicStreamTest, SeekWhilePausedMovesThePositionExactly) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPositionMs(1500);
  EXPECT_EQ(music.positionMs(), 1500u);
  music.setPositionMs(1);
  EXPECT_EQ(music.positionMs(), 1u);
  music.setPositionMs(2999 < music.lengthMs() ? 2999 : music.lengthMs());
  EXPECT_EQ(music.positionMs(), 2999 < music.lengthMs() ? 2999u : music.lengthMs());
  EXPECT_TRUE(music.isPaused());
}

TEST_F(MusicStreamTest, SeekWhilePlayingMovesThePosition) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPaused(false);
  ASSERT_GE(waitForPosition(music, 100), 0);
  music.setPositionMs(2000);
  const uint32_t afterForward = music.positionMs();
  EXPECT_GE(afterForward, 2000u);
  EXPECT_LT(afterForward, 2300u);
  ASSERT_GE(waitForPosition(music, 2100), 0);
  music.setPositionMs(200);
  const uint32_t afterBack = music.positionMs();
  EXPECT_GE(afterBack, 200u);
  EXPECT_LT(afterBack, 500u);
}

TEST_F(MusicStreamTest, SeekPastTheEndIsClampedToTheLength) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPositionMs(100000);
  EXPECT_EQ(music.positionMs(), music.lengthMs());
  music.setPositionMs(0xFFFFFFFFu);
  EXPECT_EQ(music.positionMs(), music.lengthMs());
}

TEST_F(MusicStreamTest, PositionKeepsAdvancingPastTheEnd) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  const uint32_t length = music.lengthMs();
  music.setPositionMs(length - 100);
  music.setPaused(false);
  const auto start = Clock::now();
  ASSERT_GE(waitForPosition(music, length + 400), 0) << "the position stopped at the end";
  const long wall =
      long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
  EXPECT_GE(wall, 500 - 60) << "silence past the end still runs at the real-time rate";
  // A seek back into the file plays it again.
  music.setPositionMs(1000);
  EXPECT_LT(music.positionMs(), 1300u);
}

TEST_F(MusicStreamTest, OpeningTwiceGivesFalseTheSecondTime) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPositionMs(700);
  EXPECT_FALSE(music.open(mp3));
  EXPECT_EQ(music.positionMs(), 700u) << "the refused open leaves the stream as it was";
}

TEST_F(MusicStreamTest, MissingFileGivesFalse) {
  MusicStream music;
  EXPECT_FALSE(music.open(dir + "/no-such-file.mp3"));
  EXPECT_EQ(music.positionMs(), 0u);
  EXPECT_EQ(music.lengthMs(), 0u);
  // The stream can still be opened after a failure.
  EXPECT_TRUE(music.open(mp3));
}

TEST_F(MusicStreamTest, DamagedFilesGiveFalse) {
  {
    std::ofstream text(dir + "/text.mp3", std::ios::binary);
    for (int i = 0; i < 2000; ++i) text << "this is not a sound file, line " << i << "\n";
  }
  { std::ofstream empty(dir + "/empty.mp3", std::ios::binary); }
  MusicStream music;
  EXPECT_FALSE(music.open(dir + "/text.mp3"));
  EXPECT_FALSE(music.open(dir + "/empty.mp3"));
  EXPECT_FALSE(music.open(dir));  // a directory
  EXPECT_EQ(music.positionMs(), 0u);
  EXPECT_EQ(music.lengthMs(), 0u);
}

TEST_F(MusicStreamTest, TruncatedFileOpensAndPlaysWhatIsThere) {
  // The first 40% of the file: no crash, and the clock runs on past the cut.
  std::ifstream in(mp3, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  {
    std::ofstream out(dir + "/cut.mp3", std::ios::binary);
    out.write(bytes.data(), std::streamsize(bytes.size() * 4 / 10));
  }
  MusicStream music;
  ASSERT_TRUE(music.open(dir + "/cut.mp3"));
  EXPECT_LT(music.lengthMs(), 2000u);
  EXPECT_GT(music.lengthMs(), 500u);
  music.setPositionMs(music.lengthMs() - 50);
  music.setPaused(false);
  ASSERT_GE(waitForPosition(music, music.lengthMs() + 300), 0);
}

TEST_F(MusicStreamTest, NoAudioDeviceGivesFalse) {
  // A driver that does not exist stands for a machine without sound.
  const char* saved = std::getenv("SDL_AUDIODRIVER");
  const std::string previous = saved ? saved : "";
  setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
  {
    MusicStream music;
    EXPECT_FALSE(music.open(mp3));
    EXPECT_EQ(music.positionMs(), 0u);
  }
  if (saved)
    setenv("SDL_AUDIODRIVER", previous.c_str(), 1);
  else
    unsetenv("SDL_AUDIODRIVER");
  MusicStream music;
  EXPECT_TRUE(music.open(mp3));
}

TEST_F(MusicStreamTest, SpectrumIsZeros) {
  MusicStream music;
  ASSERT_TRUE(music.open(mp3));
  music.setPaused(false);
  ASSERT_GE(waitForPosition(music, 100), 0);
  std::vector<float> values(64, 1.0f);
  music.spectrum(values.data(), 64, 0, 0);
  for (float v : values) EXPECT_EQ(v, 0.0f);
}

TEST_F(MusicStreamTest, MonoFileAtAnotherRate) {
  // 48 kHz mono: the device is opened at the file's own format.
  writeSineWav(dir + "/mono.wav", 2.0, 330.0, 48000, 1);
  const testrun::Result r = testrun::run("lame --quiet -m m -b 64 --noreplaygain mono.wav mono.mp3", dir, 60);
  ASSERT_EQ(r.exitStatus, 0) << r.err;
  MusicStream music;
  ASSERT_TRUE(music.open(dir + "/mono.mp3"));
  // One MPEG-1 layer III frame at 48 kHz is 24 ms.
  EXPECT_NEAR(double(music.lengthMs()), 2000.0, 25.0);
  music.setPositionMs(1234);
  EXPECT_EQ(music.positionMs(), 1234u);
  music.setPaused(false);
  ASSERT_GE(waitForPosition(music, 1500), 0);
}

// The frame loop ends the process with exit() and leaves the stream
// undestroyed and playing. The device must be closed before the libraries'
// destructors run (the SDL 1.2 layer unloads SDL 2 then, under its audio
// thread); a handler that runs after the stream's own finds it closed.
TEST_F(MusicStreamTest, ProcessExitClosesAPlayingDeviceThatWasNeverDestroyed) {
  // A child that runs this test alone from the start: no stream of an
  // earlier test has registered its handler there.
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        std::atexit(exitWithTheDeviceStatus);
        MusicStream* music = new MusicStream();  // never deleted, as the Demo on the frame loop's stack
        if (!music->open(mp3)) _exit(4);
        music->setPaused(false);
        sleepMs(100);
        if (SDL_GetAudioStatus() != SDL_AUDIO_PLAYING) _exit(5);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}
