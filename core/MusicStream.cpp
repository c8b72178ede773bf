// MusicStream: libmpg123 decoding straight into SDL's audio callback.
//
// The callback runs on SDL's audio thread and holds SDL's audio lock while
// it runs; every member it touches is read and written from the main thread
// only under SDL_LockAudio. Decoding happens a device buffer at a time in the
// callback, so opening reads no more than the frame headers.
#include "core/MusicStream.h"

#include <SDL.h>
#include <mpg123.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

// Frames per device buffer: about 46 ms at 44.1 kHz, short enough for a
// responsive seek, long enough to ride out a slow frame of the picture.
const int deviceBufferFrames = 2048;

int64_t steadyMicros() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// The process may end by exit() with the stream still playing (the frame
// loop's exit leaves the Demo, and with it this stream, undestroyed). The
// SDL 1.2 layer unloads SDL 2 in a library destructor at process exit; if
// SDL 2's audio thread is inside the device callback then, it runs into
// unmapped code. Closing the device first joins that thread. Handlers
// registered with atexit run before the libraries' destructors.
void closeAudioAtExit() {
  if (SDL_WasInit(SDL_INIT_AUDIO)) SDL_CloseAudio();
}

bool initialiseDecoderLibrary() {
  static std::once_flag once;
  static bool ok = false;
  std::call_once(once, [] { ok = mpg123_init() == MPG123_OK; });
  return ok;
}

}  // namespace

MusicStream::MusicStream() = default;

MusicStream::~MusicStream() {
  if (opened) SDL_CloseAudio();
  if (audioInitialised) SDL_QuitSubSystem(SDL_INIT_AUDIO);
  if (decoder) {
    mpg123_close(decoder);
    mpg123_delete(decoder);
  }
}

// ---------------------------------------------------------------------------
// Opening
// ---------------------------------------------------------------------------

bool MusicStream::open(const std::string& path) {
  if (opened) return false;
  if (!initialiseDecoderLibrary()) return false;

  int error = MPG123_OK;
  mpg123_handle* handle = mpg123_new(nullptr, &error);
  if (!handle) return false;
  // Damaged files are reported by the result, not by lines on stderr.
  mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0.0);

  // Signed 16-bit samples at the file's own rate and channel count: SDL
  // converts for the device if it has to.
  mpg123_format_none(handle);
  const long* rates = nullptr;
  size_t rateCount = 0;
  mpg123_rates(&rates, &rateCount);
  for (size_t i = 0; i < rateCount; ++i)
    mpg123_format(handle, rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16);

  long fileRate = 0;
  int fileChannels = 0;
  int encoding = 0;
  auto fail = [&] {
    mpg123_close(handle);
    mpg123_delete(handle);
    return false;
  };
  if (mpg123_open(handle, path.c_str()) != MPG123_OK) return fail();
  if (mpg123_getformat(handle, &fileRate, &fileChannels, &encoding) != MPG123_OK) return fail();
  if (fileRate <= 0 || (fileChannels != 1 && fileChannels != 2)) return fail();
  // A header-only pass over the file: exact length and a seek index, without
  // decoding any sound.
  if (mpg123_scan(handle) != MPG123_OK) return fail();
  const off_t length = mpg123_length(handle);
  if (length <= 0) return fail();
  if (mpg123_seek(handle, 0, SEEK_SET) < 0) return fail();

  bool startedAudio = false;
  if (!SDL_WasInit(SDL_INIT_AUDIO)) {
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) < 0) return fail();
    startedAudio = true;
  }

  decoder = handle;
  rate = fileRate;
  channels = fileChannels;
  lengthFrames = uint64_t(length);
  handedFrames = lastChunkFrames = heldFrame = lastReported = 0;
  lastChunkMicros = steadyMicros();
  decoderDone = false;
  paused = true;

  SDL_AudioSpec wanted;
  std::memset(&wanted, 0, sizeof wanted);
  wanted.freq = int(fileRate);
  wanted.format = AUDIO_S16SYS;
  wanted.channels = Uint8(fileChannels);
  wanted.samples = deviceBufferFrames;
  wanted.callback = &MusicStream::audioCallback;
  wanted.userdata = this;
  // No "obtained" format asked back: SDL then takes exactly this one and converts
  // for the device itself. The device starts paused.
  if (SDL_OpenAudio(&wanted, nullptr) < 0) {
    if (startedAudio) SDL_QuitSubSystem(SDL_INIT_AUDIO);
    decoder = nullptr;
    rate = 0;
    channels = 0;
    lengthFrames = 0;
    return fail();
  }
  audioInitialised = startedAudio;
  opened = true;
  static std::once_flag registered;
  std::call_once(registered, [] { std::atexit(closeAudioAtExit); });
  return true;
}

// ---------------------------------------------------------------------------
// The audio thread
// ---------------------------------------------------------------------------

void MusicStream::audioCallback(void* self, uint8_t* stream, int length) {
  static_cast<MusicStream*>(self)->fill(stream, length);
}

// Decodes the next stretch of the file into the device buffer; once the file
// has run out the rest is silence, and the counter goes on regardless.
void MusicStream::fill(uint8_t* stream, int length) {
  const int frameBytes = 2 * channels;
  const size_t wanted = size_t(length / frameBytes) * size_t(frameBytes);
  size_t done = 0;
  int formatChanges = 0;
  while (!decoderDone && done < wanted) {
    size_t got = 0;
    const int result = mpg123_read(decoder, stream + done, wanted - done, &got);
    done += got;
    if (result == MPG123_NEW_FORMAT && formatChanges++ < 4) continue;
    // The end of the file, or a read that brings nothing (an error the
    // decoder could not step over), ends the sound.
    if (result == MPG123_DONE || got == 0) decoderDone = true;
  }
  // Keep whole frames only: a partial frame would shift the channels.
  done -= done % size_t(frameBytes);
  std::memset(stream + done, 0, size_t(length) - done);

  const uint64_t frames = uint64_t(length / frameBytes);
  handedFrames += frames;
  lastChunkFrames = frames;
  lastChunkMicros = steadyMicros();
}

// ---------------------------------------------------------------------------
// Control and position
// ---------------------------------------------------------------------------

uint64_t MusicStream::currentFrame() const {
  if (paused) return heldFrame;
  const uint64_t chunkStart = handedFrames - lastChunkFrames;
  int64_t elapsed = steadyMicros() - lastChunkMicros;
  if (elapsed < 0) elapsed = 0;
  uint64_t advance = uint64_t(elapsed) * uint64_t(rate) / 1000000u;
  if (advance > lastChunkFrames) advance = lastChunkFrames;
  return chunkStart + advance;
}

uint32_t MusicStream::framesToMs(uint64_t frames) const {
  if (rate <= 0) return 0;
  return uint32_t(frames * 1000u / uint64_t(rate));
}

void MusicStream::setPaused(bool pause) {
  if (!opened) {
    paused = pause;
    return;
  }
  if (pause == paused) return;
  SDL_LockAudio();
  if (pause) {
    heldFrame = currentFrame();
    if (heldFrame < lastReported) heldFrame = lastReported;
  } else {
    // Go on from the held position: the sound already handed over but not
    // yet counted is counted as the first chunk after the pause.
    lastChunkFrames = handedFrames > heldFrame ? handedFrames - heldFrame : 0;
    if (handedFrames < heldFrame) handedFrames = heldFrame;
    lastChunkMicros = steadyMicros();
    lastReported = heldFrame;
  }
  paused = pause;
  SDL_UnlockAudio();
  SDL_PauseAudio(pause ? 1 : 0);
}

bool MusicStream::isPaused() const { return paused; }

uint32_t MusicStream::positionMs() {
  if (!opened) return 0;
  SDL_LockAudio();
  uint64_t frame = currentFrame();
  if (!paused) {
    if (frame < lastReported) frame = lastReported;
    lastReported = frame;
  }
  SDL_UnlockAudio();
  return framesToMs(frame);
}

void MusicStream::setPositionMs(uint32_t ms) {
  if (!opened) return;
  // Rounded up so that reading the position back gives ms exactly.
  uint64_t target = (uint64_t(ms) * uint64_t(rate) + 999u) / 1000u;
  if (target > lengthFrames) target = lengthFrames;
  SDL_LockAudio();
  const off_t reached = mpg123_seek(decoder, off_t(target), SEEK_SET);
  decoderDone = reached < 0 || target >= lengthFrames;
  handedFrames = target;
  lastChunkFrames = 0;
  lastChunkMicros = steadyMicros();
  heldFrame = target;
  lastReported = target;
  SDL_UnlockAudio();
}

uint32_t MusicStream::lengthMs() const { return framesToMs(lengthFrames); }

void MusicStream::spectrum(float* values, int numValues, int channelOffset, int windowType) {
  if (!values) return;
  for (int i = 0; i < numValues; ++i) values[i] = 0.0f;
}
