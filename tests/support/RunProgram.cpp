#include "support/RunProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace testrun {

namespace {
// Programs run by tests report every GL error at their pass boundaries
// (unless the environment says otherwise), as debug builds do.
const bool glErrorsReported = setenv("OSTRAVINE_GL_ERRORS", "1", 0) == 0;
}  // namespace

Result run(const std::string& command, const std::string& directory, int timeoutSeconds) {
  Result r;
  int outPipe[2], errPipe[2];
  if (pipe(outPipe) != 0 || pipe(errPipe) != 0) return r;
  pid_t pid = fork();
  if (pid < 0) return r;
  if (pid == 0) {
    setpgid(0, 0);
    dup2(outPipe[1], 1);
    dup2(errPipe[1], 2);
    close(outPipe[0]);
    close(errPipe[0]);
    if (!directory.empty() && chdir(directory.c_str()) != 0) _exit(127);
    execl("/bin/sh", "sh", "-c", command.c_str(), (char*)nullptr);
    _exit(127);
  }
  close(outPipe[1]);
  close(errPipe[1]);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  bool outOpen = true, errOpen = true;
  char buffer[65536];
  while (outOpen || errOpen) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      r.timedOut = true;
      kill(-pid, SIGKILL);
      break;
    }
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int n = poll(fds, 2, int(left.count() > 1000 ? 1000 : left.count()));
    if (n <= 0) continue;
    for (int i = 0; i < 2; ++i) {
      if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
      ssize_t got = read(fds[i].fd, buffer, sizeof buffer);
      if (got <= 0) {
        (i == 0 ? outOpen : errOpen) = false;
      } else {
        (i == 0 ? r.out : r.err).append(buffer, size_t(got));
      }
    }
  }
  close(outPipe[0]);
  close(errPipe[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (WIFEXITED(status)) r.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) r.signal = WTERMSIG(status);
  return r;
}

Result runOnDisplay(const std::string& command, const std::string& directory, int timeoutSeconds) {
  Result r;
  for (int attempt = 0; attempt < 4; ++attempt) {
    if (attempt > 0) usleep(300000);
    r = run(command, directory, timeoutSeconds);
    if (!getenv("DISPLAY") || r.err.find("Error: Failed to initialize sdl:") == std::string::npos) break;
  }
  return r;
}

Result runOstravine(const std::string& arguments, int timeoutSeconds) {
  return runOnDisplay(std::string("'") + OSTRAVINE_EXECUTABLE + "' " + arguments, OSTRAVINE_RUN_DIR, timeoutSeconds);
}

std::string scratchRunDirectory(const std::string& name, bool withScript, const std::string& scriptText) {
  const std::string parent = std::string(OSTRAVINE_BINARY_DIR) + "/rundirs";
  mkdir(parent.c_str(), 0755);
  const std::string dir = parent + "/" + name;
  mkdir(dir.c_str(), 0755);
  for (const char* folder : {"images", "models", "music"}) {
    const std::string link = dir + "/" + folder;
    unlink(link.c_str());
    if (symlink((std::string(OSTRAVINE_RUN_DIR) + "/" + folder).c_str(), link.c_str()) != 0) return std::string();
  }
  const std::string script = dir + "/ostravine.scr";
  unlink(script.c_str());
  if (withScript) std::ofstream(script) << scriptText;
  return dir;
}

Result runOstravineIn(const std::string& directory, const std::string& arguments, int timeoutSeconds) {
  return runOnDisplay(std::string("'") + OSTRAVINE_EXECUTABLE + "' " + arguments, directory, timeoutSeconds);
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) result.push_back(line);
  return result;
}

TempDir::TempDir(const std::string& name) {
  std::string pattern = "/tmp/ostravine-" + name + "-XXXXXX";
  if (mkdtemp(&pattern[0])) path = pattern;
}

TempDir::~TempDir() {
  if (!path.empty()) run("rm -rf '" + path + "'", "");
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

}  // namespace testrun
