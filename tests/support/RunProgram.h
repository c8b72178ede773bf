// RunProgram: runs a command for tests and collects what it printed.
//
// The command runs through /bin/sh in the given directory, with stdout and
// stderr captured separately, and is killed after timeoutSeconds.
#pragma once
#include <string>
#include <vector>

namespace testrun {

struct Result {
  int exitStatus = -1;     // exit status, or -1 when killed by a signal
  int signal = 0;          // the signal that ended it, 0 if none
  bool timedOut = false;
  std::string out;         // standard output
  std::string err;         // standard error
};

Result run(const std::string& command, const std::string& directory, int timeoutSeconds = 120);

// Like run, for a program that opens the test display: when the display
// refuses the connection for a moment (SDL reports that it could not
// initialise), the run is tried again a few times.
Result runOnDisplay(const std::string& command, const std::string& directory, int timeoutSeconds = 120);

// Runs the ostravine executable from the run directory with the given
// arguments (a plain string, passed through the shell).
Result runOstravine(const std::string& arguments, int timeoutSeconds = 120);

// A run directory of its own, OSTRAVINE_BINARY_DIR/rundirs/<name>: the run
// directory's images, models and music linked in, and as its script either
// the given text (withScript) or none at all. Made afresh on each call.
std::string scratchRunDirectory(const std::string& name, bool withScript, const std::string& scriptText = "");

// Runs the ostravine executable in that directory with the given arguments.
Result runOstravineIn(const std::string& directory, const std::string& arguments, int timeoutSeconds = 120);

// A fresh folder /tmp/ostravine-<name>-XXXXXX, removed with everything in it
// when the object goes; `path` is empty when it could not be made.
struct TempDir {
  std::string path;
  explicit TempDir(const std::string& name);
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
};

// Lines of a text, without their line ends.
std::vector<std::string> lines(const std::string& text);
// The whole file as bytes; empty when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace testrun
