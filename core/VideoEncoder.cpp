// VideoEncoder: ffmpeg as a child process fed through a pipe, and the choice
// of its arguments.
#include "core/VideoEncoder.h"

#include <errno.h>
#include <fcntl.h>
#include <mpg123.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern char** environ;

// ---------------------------------------------------------------------------
// Frame counts, file kinds, arguments
// ---------------------------------------------------------------------------

uint32_t videoFrameCount(int32_t fromMs, int32_t toMs, int32_t fps) {
  if (fps <= 0 || toMs <= fromMs) return 0;
  const uint64_t span = uint64_t(int64_t(toMs) - int64_t(fromMs));
  return uint32_t((span * uint64_t(fps) + 999) / 1000);
}

namespace {

std::string lowerExtension(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot);
  for (char& c : ext) c = char(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

std::string formatSeconds(double seconds) {
  char buffer[32];
  snprintf(buffer, sizeof buffer, "%.6f", seconds);
  return buffer;
}

}  // namespace

std::string videoFileProblem(const std::string& path, bool lossless) {
  const std::string ext = lowerExtension(path);
  if (lossless) {
    if (ext != ".mkv") return "--lossless writes FFV1 into a .mkv file, not '" + path + "'";
    return "";
  }
  if (ext == ".mp4" || ext == ".m4v" || ext == ".mov" || ext == ".mkv" || ext == ".webm") return "";
  return "--video: '" + path + "' does not end in .mp4, .m4v, .mov, .mkv or .webm";
}

std::string videoFolderProblem(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
  struct stat st;
  if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return path + " is a folder";
  if (stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return "the folder " + folder + " does not exist";
  if (access(folder.c_str(), W_OK | X_OK) != 0) return "cannot write into " + folder + ": " + strerror(errno);
  return "";
}

std::vector<std::string> ffmpegArguments(const VideoSettings& s) {
  const std::string ext = lowerExtension(s.path);
  std::vector<std::string> a = {"-hide_banner", "-loglevel", "error", "-nostats", "-y"};
  // Input 0: the frames, raw, from the pipe.
  a.insert(a.end(), {"-f", "rawvideo", "-pix_fmt", "bgr0", "-video_size",
                     std::to_string(s.width) + "x" + std::to_string(s.height), "-framerate",
                     std::to_string(s.fps), "-i", "pipe:0"});
  const bool sound = !s.musicPath.empty();
  if (sound) a.insert(a.end(), {"-i", s.musicPath});
  a.insert(a.end(), {"-map", "0:v:0"});
  if (sound) a.insert(a.end(), {"-map", "1:a:0"});

  // OpenGL gives the bottom row first. 4:2:0 chroma wants even sizes.
  std::string videoFilter = "vflip";
  if (!s.lossless && (s.width % 2 != 0 || s.height % 2 != 0)) videoFilter += ",pad=ceil(iw/2)*2:ceil(ih/2)*2";
  a.insert(a.end(), {"-vf", videoFilter});
  if (sound) {
    // The music from the first frame's position for exactly as long as the
    // frames last. The trim decodes from the file's start, so it is exact to
    // the sample, where a seek in the input would land on a nearby frame.
    const double start = s.fromMs / 1000.0;
    const double length = double(s.frameCount) / double(s.fps);
    a.insert(a.end(), {"-af", "atrim=start=" + formatSeconds(start) + ":end=" + formatSeconds(start + length) +
                                  ",asetpts=PTS-STARTPTS"});
  }

  if (s.lossless) {
    a.insert(a.end(), {"-c:v", "ffv1", "-level", "3", "-g", "1"});
    if (sound) a.insert(a.end(), {"-c:a", "flac"});
  } else if (ext == ".webm") {
    a.insert(a.end(), {"-c:v", "libvpx-vp9", "-crf", "30", "-b:v", "0", "-row-mt", "1", "-deadline", "good",
                       "-cpu-used", "4", "-pix_fmt", "yuv420p"});
    if (sound) a.insert(a.end(), {"-c:a", "libopus", "-b:a", "160k"});
  } else {
    // veryfast: about a third of the default preset's time for a little
    // more size at the same quality, so the encoder costs little beside
    // the rendering.
    a.insert(a.end(), {"-c:v", "libx264", "-preset", "veryfast", "-crf", "18", "-pix_fmt", "yuv420p"});
    if (sound) {
      if (ext == ".mkv")
        a.insert(a.end(), {"-c:a", "libvorbis", "-q:a", "6"});
      else
        a.insert(a.end(), {"-c:a", "aac", "-b:a", "192k"});
    }
    if (ext != ".mkv") a.insert(a.end(), {"-movflags", "+faststart"});
  }
  // No -frames:v: reaching it would close the audio too, before its first
  // packet when the trim starts late in the music. The pipe carries exactly
  // frameCount frames and then ends.
  a.push_back(s.path);
  return a;
}

std::string findOnPath(const std::string& name) {
  auto executable = [](const std::string& p) {
    struct stat st;
    return stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode) && access(p.c_str(), X_OK) == 0;
  };
  if (name.find('/') != std::string::npos) return executable(name) ? name : "";
  const char* path = getenv("PATH");
  if (!path) return "";
  std::string list = path;
  size_t begin = 0;
  while (begin <= list.size()) {
    size_t end = list.find(':', begin);
    if (end == std::string::npos) end = list.size();
    std::string dir = list.substr(begin, end - begin);
    if (dir.empty()) dir = ".";
    const std::string candidate = dir + "/" + name;
    if (executable(candidate)) return candidate;
    begin = end + 1;
  }
  return "";
}

bool musicFileDecodes(const std::string& path) {
  int error = MPG123_OK;
  mpg123_init();  // a no-op on current libraries, needed by old ones
  mpg123_handle* handle = mpg123_new(nullptr, &error);
  if (!handle) return false;
  mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0.0);
  bool ok = false;
  if (mpg123_open(handle, path.c_str()) == MPG123_OK) {
    long rate = 0;
    int channels = 0, encoding = 0;
    unsigned char buffer[16384];
    size_t done = 0;
    if (mpg123_getformat(handle, &rate, &channels, &encoding) == MPG123_OK) {
      const int r = mpg123_read(handle, buffer, sizeof buffer, &done);
      ok = (r == MPG123_OK || r == MPG123_DONE) && done > 0;
    }
    mpg123_close(handle);
  }
  mpg123_delete(handle);
  return ok;
}

// ---------------------------------------------------------------------------
// The child process
// ---------------------------------------------------------------------------

VideoEncoder::~VideoEncoder() {
  if (child > 0) finish();
}

bool VideoEncoder::start(const std::string& ffmpegPath, const VideoSettings& settings) {
  frameBytes = size_t(settings.width) * size_t(settings.height) * 4;
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) {
    error = std::string("cannot make a pipe for ffmpeg: ") + strerror(errno);
    return false;
  }
  // A larger pipe means fewer switches between us and ffmpeg; the kernel
  // may refuse, and the default works too.
  fcntl(fds[1], F_SETPIPE_SZ, 1 << 20);

  std::vector<std::string> args = ffmpegArguments(settings);
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(ffmpegPath.c_str()));
  for (std::string& a : args) argv.push_back(&a[0]);
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[0], 0);
  pid_t pid = -1;
  const int rc = posix_spawn(&pid, ffmpegPath.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(fds[0]);
  if (rc != 0) {
    close(fds[1]);
    error = "cannot start " + ffmpegPath + ": " + strerror(rc);
    return false;
  }
  child = pid;
  pipeFd = fds[1];
  // A failing ffmpeg must give us an error from write, not end us silently.
  signal(SIGPIPE, SIG_IGN);
  return true;
}

bool VideoEncoder::writeFrame(const uint8_t* pixels) {
  if (pipeFd < 0) return false;
  size_t left = frameBytes;
  const uint8_t* p = pixels;
  while (left > 0) {
    const ssize_t n = write(pipeFd, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      error = "ffmpeg stopped reading frames (" + std::string(strerror(errno)) + ")";
      return false;
    }
    p += n;
    left -= size_t(n);
  }
  ++written;
  return true;
}

bool VideoEncoder::finish() {
  if (pipeFd >= 0) {
    close(pipeFd);
    pipeFd = -1;
  }
  if (child <= 0) return error.empty();
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  child = -1;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return error.empty();
  if (error.empty()) {
    if (WIFEXITED(status))
      error = "ffmpeg failed with status " + std::to_string(WEXITSTATUS(status));
    else
      error = "ffmpeg ended by signal " + std::to_string(WTERMSIG(status));
  }
  return false;
}
