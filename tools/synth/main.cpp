// ostravine-synth: renders the soundtrack's score to a WAV file.
//
//   ostravine-synth <score> <out.wav> [from to]
//
// from and to are seconds; without them the whole track is rendered. The
// build encodes the result to music/ostravine.mp3 with lame.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/synth/Synth.h"

int main(int argc, char** argv) {
  if (argc != 3 && argc != 5) {
    std::fprintf(stderr, "usage: %s <score> <out.wav> [from to]\n", argv[0]);
    return 2;
  }
  synth::Score score;
  std::string error;
  if (!synth::loadScore(argv[1], score, error)) {
    std::fprintf(stderr, "ostravine-synth: %s\n", error.c_str());
    return 1;
  }
  double from = 0.0, to = score.length;
  if (argc == 5) {
    from = std::atof(argv[3]);
    to = std::atof(argv[4]);
  }
  const std::vector<int16_t> samples = synth::render(score, from, to);
  if (samples.empty()) {
    std::fprintf(stderr, "ostravine-synth: nothing to render between %g and %g s\n", from, to);
    return 1;
  }
  if (!synth::writeWav(argv[2], samples, score.rate)) {
    std::fprintf(stderr, "ostravine-synth: cannot write %s\n", argv[2]);
    return 1;
  }
  return 0;
}
