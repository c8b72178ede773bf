// ostravine-synth: renders the soundtrack's score to a WAV file, or lists
// its drum hits.
//
//   ostravine-synth <score> <out.wav> [from to]
//   ostravine-synth --hits <score>
//
// from and to are seconds; without them the whole track is rendered. The
// build encodes the result to music/ostravine.mp3 with lame. --hits prints
// every kick and snare as the renderer plays it, one a line: the time in
// seconds of music, the part and the velocity.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/synth/Synth.h"

int main(int argc, char** argv) {
  const bool listHits = argc == 3 && std::strcmp(argv[1], "--hits") == 0;
  if (!listHits && argc != 3 && argc != 5) {
    std::fprintf(stderr, "usage: %s <score> <out.wav> [from to]\n       %s --hits <score>\n", argv[0], argv[0]);
    return 2;
  }
  synth::Score score;
  std::string error;
  if (!synth::loadScore(argv[listHits ? 2 : 1], score, error)) {
    std::fprintf(stderr, "ostravine-synth: %s\n", error.c_str());
    return 1;
  }
  if (listHits) {
    for (const synth::DrumHit& hit : synth::drumHits(score))
      std::printf("%.6f %s %.2f\n", hit.time, hit.part.c_str(), hit.velocity);
    return 0;
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
