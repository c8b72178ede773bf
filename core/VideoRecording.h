// VideoRecording: what the frame loop does for --video. Each finished frame
// is read back (one frame late where pixel buffers allow), sent to ffmpeg,
// and counted on the progress bar; the end closes the file and reports.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "core/FrameReadback.h"
#include "core/ProgressBar.h"
#include "core/VideoEncoder.h"

class VideoRecording {
 public:
  // Starts ffmpeg for settings.frameCount frames. False (with a message on
  // stderr) when it cannot start.
  bool begin(const std::string& ffmpegPath, const VideoSettings& settings);

  // Takes the frame in the read buffer. False when the encoder has failed.
  bool addFrame();

  // Frames taken so far; the loop stops at settings.frameCount.
  uint32_t framesTaken() const { return taken; }
  bool complete() const { return taken >= settings.frameCount; }

  // Sends what is still waiting, waits for ffmpeg and says what was
  // written. Gives the exit status: 0 when the file is whole, else 1.
  int end();

 private:
  VideoSettings settings;
  VideoEncoder encoder;
  std::unique_ptr<FrameReadback> readback;
  std::unique_ptr<ProgressBar> progress;
  uint32_t taken = 0;
  bool failed = false;
};
