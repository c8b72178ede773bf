// VideoEncoder: the film as a video file, through an ffmpeg child process.
//
// Frames travel as raw pixels through a pipe into ffmpeg's standard input:
// 4 bytes a pixel in the order blue, green, red, unused (ffmpeg's "bgr0"),
// rows bottom first as OpenGL reads them; ffmpeg turns them upright. The
// music is ffmpeg's second input, cut to the rendered range, so sound and
// picture start together and the audio lasts exactly as long as the frames.
//
// The container and codecs follow the file's extension, as ffmpeg users
// expect: .mp4, .m4v and .mov get H.264 and AAC, .mkv H.264 and Vorbis,
// .webm VP9 and Opus. With `lossless`, a .mkv file gets FFV1 and FLAC, for
// editing the film further. Lossy H.264 and VP9 need even sizes: an odd
// width or height is padded with one black column or row.
//
// Times are milliseconds of the timeline; sizes are pixels.
#pragma once
#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

struct VideoSettings {
  std::string path;          // the file to write; overwritten if it exists
  int32_t width = 0;
  int32_t height = 0;
  int32_t fps = 60;          // frames per second of the fixed clock
  bool lossless = false;     // FFV1 and FLAC (needs a .mkv file)
  std::string musicPath;     // empty: a video without sound
  int32_t fromMs = 0;        // where the music starts, the first frame's position
  uint32_t frameCount = 0;   // frames that will be written
};

// The number of frames whose position lies in [fromMs, toMs) on a clock of
// fps frames a second: frame k shows fromMs + k x 1000 / fps, so this is
// ceil((toMs - fromMs) x fps / 1000); 0 when toMs is not after fromMs.
uint32_t videoFrameCount(int32_t fromMs, int32_t toMs, int32_t fps);

// What is wrong with writing this file in this way, or "" when nothing is:
// an extension outside the list above, or `lossless` on anything but .mkv.
std::string videoFileProblem(const std::string& path, bool lossless);

// What stands in the way of creating the file: its folder missing or not
// writable, or the name being a folder; "" when nothing does.
std::string videoFolderProblem(const std::string& path);

// ffmpeg's arguments (without the program name) for these settings.
std::vector<std::string> ffmpegArguments(const VideoSettings& settings);

// The full path of an executable found on PATH, or "" when there is none.
std::string findOnPath(const std::string& name);

// Whether the music file opens and its first frame decodes with libmpg123:
// a damaged or missing file makes a silent video instead of a failed one.
bool musicFileDecodes(const std::string& path);

class VideoEncoder {
 public:
  VideoEncoder() = default;
  ~VideoEncoder();
  VideoEncoder(const VideoEncoder&) = delete;
  VideoEncoder& operator=(const VideoEncoder&) = delete;

  // Starts ffmpeg (the executable at ffmpegPath) with a pipe on its standard
  // input. False, with `error` set, when it cannot be started.
  bool start(const std::string& ffmpegPath, const VideoSettings& settings);

  // Writes one frame of width x height x 4 bytes. False (and `error` set)
  // once ffmpeg has stopped reading: it has failed, and said why on stderr.
  bool writeFrame(const uint8_t* pixels);

  // Closes the pipe and waits for ffmpeg to finish the file. False, with
  // `error` set, when it ended with a failure.
  bool finish();

  uint32_t framesWritten() const { return written; }
  std::string error;

 private:
  int pipeFd = -1;     // our end of ffmpeg's standard input
  pid_t child = -1;
  size_t frameBytes = 0;
  uint32_t written = 0;
};
