// a3dconv: command-line entry of the AC3D converter.
//
//   a3dconv [-c] [-p 0|1|2] [-t 0|1|2] source.ac target
//
// Without -c it writes the binary ".a3d" form, with positions (-p) and
// texture coordinates (-t) stored as 0 float, 1 16-bit or 2 8-bit; -c writes
// the source-code dump instead. Exit status 0 when written; 1 when the source
// has no object to convert; 2 when a file cannot be read or written; 3 for a
// damaged source; 64 for a bad command line.
#include <cstring>
#include <iostream>
#include <string>

#include "geometry/Ac3dConverter.h"

namespace {

int usage(const char *why) {
  std::cerr << "a3dconv: " << why << "\n"
            << "usage: a3dconv [-c] [-p 0|1|2] [-t 0|1|2] source.ac target\n";
  return 64;
}

bool form(const char *text, int *out) {
  if (std::strlen(text) != 1 || text[0] < '0' || text[0] > '2') return false;
  *out = text[0] - '0';
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  bool binary = true;
  int positions = 0, texCoords = 0;
  std::string files[2];
  int fileCount = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "-c") {
      binary = false;
    } else if (arg == "-p" || arg == "-t") {
      if (i + 1 >= argc || !form(argv[i + 1], arg == "-p" ? &positions : &texCoords))
        return usage("-p and -t take 0, 1 or 2");
      ++i;
    } else if (!arg.empty() && arg[0] == '-') {
      return usage(("unknown option " + arg).c_str());
    } else if (fileCount < 2) {
      files[fileCount++] = arg;
    } else {
      return usage("too many file names");
    }
  }
  if (fileCount != 2) return usage("a source and a target are needed");
  return convertAc3d(files[0], files[1], binary, positions, texCoords);
}
