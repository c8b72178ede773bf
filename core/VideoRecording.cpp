#include "core/VideoRecording.h"

#include <unistd.h>

#include <cstdio>

bool VideoRecording::begin(const std::string& ffmpegPath, const VideoSettings& s) {
  settings = s;
  if (!encoder.start(ffmpegPath, settings)) {
    fprintf(stderr, "ostravine: %s\n", encoder.error.c_str());
    return false;
  }
  readback.reset(new FrameReadback(settings.width, settings.height));
  progress.reset(new ProgressBar(stderr, isatty(fileno(stderr)) != 0, settings.frameCount));
  return true;
}

bool VideoRecording::addFrame() {
  if (failed) return false;
  const bool ok = readback->readFrame([this](const uint8_t* pixels) { return encoder.writeFrame(pixels); });
  if (!ok) {
    failed = true;
    return false;
  }
  ++taken;
  // Frames are counted when read; with pixel buffers the write trails by one.
  progress->update(taken);
  return true;
}

int VideoRecording::end() {
  if (!failed && !readback->flush([this](const uint8_t* pixels) { return encoder.writeFrame(pixels); }))
    failed = true;
  progress->finish(encoder.framesWritten());
  const bool whole = encoder.finish() && !failed;
  readback.reset();
  if (!whole) {
    fprintf(stderr, "ostravine: the video %s is not complete: %s\n", settings.path.c_str(),
            encoder.error.empty() ? "a frame could not be read back" : encoder.error.c_str());
    return 1;
  }
  printf("video: wrote %s, %u frames of %dx%d at %d fps, %s\n", settings.path.c_str(), encoder.framesWritten(),
         settings.width, settings.height, settings.fps, settings.musicPath.empty() ? "no sound" : "with the music");
  if (encoder.framesWritten() < settings.frameCount)
    printf("video: stopped early, after %u of %u frames\n", encoder.framesWritten(), settings.frameCount);
  return 0;
}
