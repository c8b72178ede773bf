// MusicStream: one MP3 file streamed from disk into the SDL audio device.
// Positions and lengths are milliseconds of sound; the position counts the
// sample frames handed to the device, so it is the master clock of the show.
// libmpg123 decodes in the audio callback, a buffer at a time: nothing is
// decoded in advance, which keeps opening cheap.
#pragma once

#include <cstdint>
#include <string>

struct mpg123_handle_struct;

class MusicStream {
public:
  MusicStream();
  ~MusicStream();
  MusicStream(const MusicStream&) = delete;
  MusicStream& operator=(const MusicStream&) = delete;

  // Opens the stream paused at position 0. False on any failure: a missing
  // or undecodable file, no audio device, or a stream that is already open
  // (the second successful call is refused, the first stays as it was).
  // Once a stream has opened, process exit closes the audio device before
  // the libraries unload, also for a stream that is never destroyed.
  bool open(const std::string& path);

  void setPaused(bool paused);
  bool isPaused() const;

  // Milliseconds of sound played so far; 0 before open. Between device
  // callbacks the reading moves on with the wall clock, never past the
  // sound already handed over, so it advances smoothly and never goes back
  // except on a seek. Past the end of the file the stream plays silence and
  // the position keeps advancing at the real-time rate.
  uint32_t positionMs();

  // Moves playback to ms; a position past the end is clamped to the length.
  void setPositionMs(uint32_t ms);

  // The file's length in milliseconds (decoder delay and padding excluded);
  // 0 before open.
  uint32_t lengthMs() const;

  // Fills values with zeros: nothing in the production reads a spectrum,
  // no picture depends on the sound's content.
  void spectrum(float* values, int numValues, int channelOffset, int windowType);

private:
  static void audioCallback(void* self, uint8_t* stream, int length);
  void fill(uint8_t* stream, int length);
  uint64_t currentFrame() const;   // position in frames; caller holds the audio lock
  uint32_t framesToMs(uint64_t frames) const;

  mpg123_handle_struct* decoder = nullptr;
  bool opened = false;             // a file is open and the device runs
  bool audioInitialised = false;   // this object started SDL's audio subsystem
  bool paused = true;
  long rate = 0;                   // sample frames per second
  int channels = 0;
  uint64_t lengthFrames = 0;

  // Shared with the audio callback, guarded by SDL_LockAudio.
  uint64_t handedFrames = 0;       // stream position at the end of the sound handed over
  uint64_t lastChunkFrames = 0;    // frames handed over by the latest callback
  int64_t lastChunkMicros = 0;     // steady-clock time of the latest callback
  bool decoderDone = false;        // the file has run out: silence from here on
  uint64_t heldFrame = 0;          // the position while paused
  uint64_t lastReported = 0;       // keeps readings from going back between seeks
};
