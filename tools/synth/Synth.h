// Synth: the soundtrack's score (assets/music/ostravine.score) and the small
// synthesizer that renders it. Times are seconds of music, levels are linear
// amplitudes, notes are MIDI numbers (A4 = 69 = 440 Hz). Rendering is pure
// arithmetic on doubles with its own noise generator: the same score gives
// the same samples on every run.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace synth {

struct Chord {
  int root = 57;        // MIDI note of the root, octave 3
  bool minor = false;
};

// One drum part's bar: 16, 32 or 64 steps that split the bar evenly (finer
// steps place a hit between the sixteenths); 0 rest, 1 hit, 2 accent.
struct DrumPattern {
  std::map<std::string, std::vector<int>> parts;   // "kick", "snare", "hat", "open"
};

// Drum hits at given times, for hit points that follow no bar: seconds from
// the start of the section that plays them, every hit accented.
struct HitList {
  std::map<std::string, std::vector<double>> parts;  // "kick", "snare", "hat", "open", "crash"
};

struct LeadNote {
  int note = -1;        // MIDI note, -1 for a rest
  int steps = 1;        // length in sixteenth notes
};

struct Section {
  double start = 0.0;   // seconds
  double bpm = 120.0;
  std::string name;
  std::string chords = "main";
  std::string drums = "none";
  std::string bass = "none";
  std::string arp = "none";
  std::string lead = "none";
  std::string hits = "none";
  double downbeat = -1.0; // seconds of music where one of its bars starts; below 0: at its start
  double drumsFrom = 0.0; // seconds into the section where the drum pattern begins (hits play from 0)
  double pad = 0.0;
  double arpLevel = 0.0;
  double leadLevel = 0.0;
  double bright = 0.5;  // 0 dark .. 1 open
  int crash = -1;       // -1: on when the section has drums
  double fadeIn = 0.0;  // seconds
  double fadeOut = 0.0; // seconds, ending at the section's end
  double swell = 0.0;   // seconds of a reversed cymbal rising into the start
};

struct Score {
  int rate = 44100;
  double length = 0.0;
  std::map<std::string, std::vector<Chord>> chords;
  std::map<std::string, DrumPattern> drums;
  std::map<std::string, std::string> bass;      // 16-character step strings
  std::map<std::string, std::string> arps;      // 16-character step strings
  std::map<std::string, std::vector<LeadNote>> leads;
  std::map<std::string, HitList> hits;
  std::vector<Section> sections;                // in time order

  double sectionEnd(size_t index) const {
    return index + 1 < sections.size() ? sections[index + 1].start : length;
  }
};

// Parses a score. On a damaged score gives false and a message naming the line.
bool parseScore(const std::string& text, Score& score, std::string& error);
bool loadScore(const std::string& path, Score& score, std::string& error);

// MIDI note of a name such as "A4", "C#5", "Bb3"; -1 if it is not one.
int noteNumber(const std::string& name);

// One drum hit as the renderer plays it: time in seconds of music, the part
// ("kick" or "snare") and its velocity, 0 to 1.
struct DrumHit {
  double time = 0.0;
  std::string part;
  double velocity = 0.0;
};

// Every kick and snare of the track in time order, from the same arrangement
// that render plays: what the show's pictures are kept in step with.
std::vector<DrumHit> drumHits(const Score& score);

// Renders [from, to) seconds of the score: interleaved stereo, 16 bits.
std::vector<int16_t> render(const Score& score, double from, double to);

// A plain PCM WAV file, stereo, 16 bits. False if it cannot be written.
bool writeWav(const std::string& path, const std::vector<int16_t>& samples, int rate);

}  // namespace synth
