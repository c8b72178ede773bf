// Synth: score reader and renderer for the soundtrack.
//
// The renderer turns each section into note events (drums, bass, pad chords,
// arpeggio, lead) and renders every event on its own straight into a stereo
// mix: oscillators with band-limited edges, a state-variable filter per
// voice, exponential envelopes. A ping-pong delay gives the lead and the
// arpeggio some space, and a soft knee on the master keeps every sample
// inside the 16-bit range. Every voice is computed from its own start, and
// noise comes from a generator seeded by the event, so an excerpt holds the
// same voices as the whole track.
#include "tools/synth/Synth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace synth {

// ===========================================================================
// Score reading
// ===========================================================================

int noteNumber(const std::string& name) {
  if (name.size() < 2) return -1;
  static const int pitchClass[7] = {9, 11, 0, 2, 4, 5, 7};  // A B C D E F G
  const char letter = name[0];
  if (letter < 'A' || letter > 'G') return -1;
  int pc = pitchClass[letter - 'A'];
  size_t i = 1;
  if (name[i] == '#') {
    ++pc;
    ++i;
  } else if (name[i] == 'b') {
    --pc;
    ++i;
  }
  if (i >= name.size()) return -1;
  int octave = 0;
  bool negative = false;
  if (name[i] == '-') {
    negative = true;
    ++i;
  }
  if (i >= name.size()) return -1;
  for (; i < name.size(); ++i) {
    if (name[i] < '0' || name[i] > '9') return -1;
    octave = octave * 10 + (name[i] - '0');
    if (octave > 9) return -1;
  }
  if (negative) octave = -octave;
  const int note = 12 * (octave + 1) + pc;
  return note >= 0 && note <= 127 ? note : -1;
}

namespace {

bool parseChord(const std::string& text, Chord& chord) {
  std::string name = text;
  chord.minor = false;
  if (name.size() >= 2 && name.back() == 'm') {
    chord.minor = true;
    name.pop_back();
  }
  const int note = noteNumber(name + "3");
  if (note < 0) return false;
  chord.root = note;
  return true;
}

bool parseNumber(const std::string& text, double& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end && *end == '\0' && std::isfinite(value);
}

bool validSteps(const std::string& steps, const std::string& allowed, size_t length = 16) {
  if (length && steps.size() != length) return false;
  for (char c : steps)
    if (allowed.find(c) == std::string::npos) return false;
  return true;
}

}  // namespace

bool parseScore(const std::string& text, Score& score, std::string& error) {
  score = Score();
  score.length = 0.0;
  std::istringstream lines(text);
  std::string line;
  int lineNumber = 0;
  auto fail = [&](const std::string& message) {
    error = "score line " + std::to_string(lineNumber) + ": " + message;
    return false;
  };
  while (std::getline(lines, line)) {
    ++lineNumber;
    // A comment starts with a '#' at the start of a word (C#5 is a note).
    for (size_t i = 0; i < line.size(); ++i) {
      if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) {
        line.erase(i);
        break;
      }
    }
    std::istringstream words(line);
    std::vector<std::string> w;
    for (std::string word; words >> word;) w.push_back(word);
    if (w.empty()) continue;
    const std::string& kind = w[0];
    if (kind == "rate") {
      double rate = 0;
      if (w.size() != 2 || !parseNumber(w[1], rate) || rate < 8000 || rate > 192000)
        return fail("rate wants one number of Hz between 8000 and 192000");
      score.rate = int(rate);
    } else if (kind == "length") {
      if (w.size() != 2 || !parseNumber(w[1], score.length) || score.length <= 0 || score.length > 3600)
        return fail("length wants one positive number of seconds");
    } else if (kind == "chords") {
      if (w.size() < 3) return fail("chords wants a name and at least one chord");
      std::vector<Chord> progression;
      for (size_t i = 2; i < w.size(); ++i) {
        Chord chord;
        if (!parseChord(w[i], chord)) return fail("not a chord: " + w[i]);
        progression.push_back(chord);
      }
      score.chords[w[1]] = progression;
    } else if (kind == "drums") {
      if (w.size() < 4 || w.size() % 2 != 0) return fail("drums wants a name and pairs of part and steps");
      DrumPattern pattern;
      for (size_t i = 2; i + 1 < w.size(); i += 2) {
        if (w[i] != "kick" && w[i] != "snare" && w[i] != "hat" && w[i] != "open")
          return fail("unknown drum part: " + w[i]);
        const size_t n = w[i + 1].size();
        if ((n != 16 && n != 32 && n != 64) || !validSteps(w[i + 1], ".xX", 0))
          return fail("drum steps are 16, 32 or 64 of '.', 'x', 'X'");
        std::vector<int> steps;
        for (char c : w[i + 1]) steps.push_back(c == '.' ? 0 : c == 'x' ? 1 : 2);
        pattern.parts[w[i]] = steps;
      }
      score.drums[w[1]] = pattern;
    } else if (kind == "bass") {
      if (w.size() != 3 || !validSteps(w[2], ".rfo-")) return fail("bass wants a name and 16 steps of '.', 'r', 'f', 'o', '-'");
      score.bass[w[1]] = w[2];
    } else if (kind == "arp") {
      if (w.size() != 3 || !validSteps(w[2], ".0123")) return fail("arp wants a name and 16 steps of '.', '0' to '3'");
      score.arps[w[1]] = w[2];
    } else if (kind == "lead") {
      if (w.size() < 3) return fail("lead wants a name and notes");
      std::vector<LeadNote> phrase;
      for (size_t i = 2; i < w.size(); ++i) {
        const size_t colon = w[i].find(':');
        double steps = 0;
        if (colon == std::string::npos || !parseNumber(w[i].substr(colon + 1), steps) || steps < 1 || steps > 256 ||
            steps != std::floor(steps))
          return fail("lead notes are written note:steps, not " + w[i]);
        LeadNote note;
        note.steps = int(steps);
        const std::string name = w[i].substr(0, colon);
        if (name != "-") {
          note.note = noteNumber(name);
          if (note.note < 0) return fail("not a note: " + name);
        }
        phrase.push_back(note);
      }
      score.leads[w[1]] = phrase;
    } else if (kind == "hits") {
      if (w.size() < 4) return fail("hits wants a name, a part and at least one time");
      if (w[2] != "kick" && w[2] != "snare" && w[2] != "hat" && w[2] != "open" && w[2] != "crash")
        return fail("unknown hit part: " + w[2]);
      std::vector<double>& times = score.hits[w[1]].parts[w[2]];
      for (size_t i = 3; i < w.size(); ++i) {
        double t = 0;
        if (!parseNumber(w[i], t) || t < 0) return fail("hit times are seconds from the section's start, not " + w[i]);
        times.push_back(t);
      }
    } else if (kind == "section") {
      if (w.size() < 4) return fail("section wants a start, a bpm and a name");
      Section section;
      if (!parseNumber(w[1], section.start) || section.start < 0) return fail("bad section start: " + w[1]);
      if (!parseNumber(w[2], section.bpm) || section.bpm < 20 || section.bpm > 400) return fail("bad bpm: " + w[2]);
      if (!score.sections.empty() && section.start <= score.sections.back().start)
        return fail("sections must be in time order");
      section.name = w[3];
      for (size_t i = 4; i < w.size(); ++i) {
        const size_t eq = w[i].find('=');
        if (eq == std::string::npos) return fail("section settings are key=value, not " + w[i]);
        const std::string key = w[i].substr(0, eq);
        const std::string value = w[i].substr(eq + 1);
        double number = 0;
        const bool isNumber = parseNumber(value, number) && number >= 0;
        if (key == "chords") section.chords = value;
        else if (key == "drums") section.drums = value;
        else if (key == "bass") section.bass = value;
        else if (key == "arp") section.arp = value;
        else if (key == "lead") section.lead = value;
        else if (key == "hits") section.hits = value;
        else if (!isNumber) return fail("bad value for " + key + ": " + value);
        else if (key == "pad") section.pad = number;
        else if (key == "arpLevel") section.arpLevel = number;
        else if (key == "leadLevel") section.leadLevel = number;
        else if (key == "bright") section.bright = std::min(number, 1.0);
        else if (key == "crash") section.crash = number != 0 ? 1 : 0;
        else if (key == "fadeIn") section.fadeIn = number;
        else if (key == "fadeOut") section.fadeOut = number;
        else if (key == "swell") section.swell = std::min(number, 16.0);
        else if (key == "downbeat") section.downbeat = number;
        else if (key == "drumsFrom") section.drumsFrom = number;
        else return fail("unknown section setting: " + key);
      }
      score.sections.push_back(section);
    } else {
      return fail("unknown statement: " + kind);
    }
  }
  lineNumber = 0;
  if (score.sections.empty()) return fail("the score has no sections");
  if (score.length <= score.sections.back().start) return fail("the length ends before the last section starts");
  // Every name a section uses must be defined.
  for (size_t i = 0; i < score.sections.size(); ++i) {
    const Section& s = score.sections[i];
    if (s.hits != "none") {
      if (!score.hits.count(s.hits)) return fail("section " + s.name + " uses unknown hits " + s.hits);
      for (const auto& part : score.hits.at(s.hits).parts)
        for (double t : part.second)
          if (s.start + t >= score.sectionEnd(i))
            return fail("section " + s.name + " ends before its " + part.first + " hit at " + std::to_string(t) + " s");
    }
    if (!score.chords.count(s.chords)) return fail("section " + s.name + " uses unknown chords " + s.chords);
    if (s.drums != "none" && !score.drums.count(s.drums)) return fail("section " + s.name + " uses unknown drums " + s.drums);
    if (s.bass != "none" && !score.bass.count(s.bass)) return fail("section " + s.name + " uses unknown bass " + s.bass);
    if (s.arp != "none" && !score.arps.count(s.arp)) return fail("section " + s.name + " uses unknown arp " + s.arp);
    if (s.lead != "none" && !score.leads.count(s.lead)) return fail("section " + s.name + " uses unknown lead " + s.lead);
  }
  return true;
}

bool loadScore(const std::string& path, Score& score, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "cannot read the score " + path;
    return false;
  }
  std::ostringstream text;
  text << in.rdbuf();
  return parseScore(text.str(), score, error);
}

// ===========================================================================
// Building blocks
// ===========================================================================

namespace {

const double twoPi = 6.283185307179586;

double noteHz(double note) { return 440.0 * std::pow(2.0, (note - 69.0) / 12.0); }

// Xorshift noise, seeded per event: white noise in -1..1.
struct Noise {
  uint32_t state;
  explicit Noise(uint32_t seed) : state(seed * 2654435761u + 0x9E3779B9u) {
    if (state == 0) state = 1;
  }
  double next() {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return double(state) / 2147483647.5 - 1.0;
  }
};

// The correction that takes the step out of a naive sawtooth or square at a
// phase wrap (polynomial band-limited step); t is the phase 0..1, dt the
// phase increment per sample.
double polyBlep(double t, double dt) {
  if (t < dt) {
    t /= dt;
    return t + t - t * t - 1.0;
  }
  if (t > 1.0 - dt) {
    t = (t - 1.0) / dt;
    return t * t + t + t + 1.0;
  }
  return 0.0;
}

struct Oscillator {
  double phase = 0.0;
  double saw(double dt) {
    const double v = 2.0 * phase - 1.0 - polyBlep(phase, dt);
    advance(dt);
    return v;
  }
  double square(double dt) {
    double v = phase < 0.5 ? 1.0 : -1.0;
    v += polyBlep(phase, dt);
    double shifted = phase + 0.5;
    if (shifted >= 1.0) shifted -= 1.0;
    v -= polyBlep(shifted, dt);
    advance(dt);
    return v;
  }
  void advance(double dt) {
    phase += dt;
    if (phase >= 1.0) phase -= 1.0;
  }
};

// State-variable filter, trapezoidal form: stable at any cutoff.
struct Filter {
  double ic1 = 0.0, ic2 = 0.0;
  double a1 = 1.0, a2 = 0.0, a3 = 0.0, k = 1.0;
  double low = 0.0, band = 0.0, high = 0.0;
  void set(double cutoffHz, double q, double rate) {
    const double fc = std::min(std::max(cutoffHz, 20.0), 0.45 * rate);
    const double g = std::tan(M_PI * fc / rate);
    k = 1.0 / q;
    a1 = 1.0 / (1.0 + g * (g + k));
    a2 = g * a1;
    a3 = g * a2;
  }
  void run(double v0) {
    const double v3 = v0 - ic2;
    const double v1 = a1 * ic1 + a2 * v3;
    const double v2 = ic2 + a2 * ic1 + a3 * v3;
    ic1 = 2.0 * v1 - ic1;
    ic2 = 2.0 * v2 - ic2;
    low = v2;
    band = v1;
    high = v0 - k * v1 - v2;
  }
};

// Filter cutoffs are refreshed every this many samples, not every sample.
const int controlPeriod = 32;

// Every voice ends with a 15 ms fade to zero, so cutting off what is left of
// an exponential tail never clicks.
double tailTaper(int64_t i, int64_t n, int rate) {
  const double left = double(n - i) / (0.015 * rate);
  return left < 1.0 ? left : 1.0;
}

// The mix: a window of the track, dry and delay-send buses.
struct Mix {
  int rate;
  int64_t first;                 // sample index of the window's first frame
  int64_t frames;
  std::vector<double> left, right, sendLeft, sendRight;

  Mix(int rate_, int64_t first_, int64_t frames_)
      : rate(rate_), first(first_), frames(frames_), left(size_t(frames_)), right(size_t(frames_)),
        sendLeft(size_t(frames_)), sendRight(size_t(frames_)) {}

  // Whether a voice from sample a to sample b reaches into the window.
  bool touches(int64_t a, int64_t b) const { return b > first && a < first + frames; }

  void add(int64_t index, double l, double r, double send = 0.0) {
    const int64_t i = index - first;
    if (i < 0 || i >= frames) return;
    left[size_t(i)] += l;
    right[size_t(i)] += r;
    if (send != 0.0) {
      sendLeft[size_t(i)] += l * send;
      sendRight[size_t(i)] += r * send;
    }
  }
  int64_t sampleAt(double seconds) const { return int64_t(std::llround(seconds * rate)); }
};

// Constant-power pan: -1 left, +1 right.
void panGains(double pan, double& l, double& r) {
  const double angle = (pan + 1.0) * 0.25 * M_PI;
  l = std::cos(angle);
  r = std::sin(angle);
}

// ===========================================================================
// Instruments
// ===========================================================================

// Kick: a sine falling from about 155 Hz to 45 Hz, with a click on top.
void kick(Mix& mix, double t, double velocity) {
  const int64_t s0 = mix.sampleAt(t);
  const int64_t n = int64_t(0.5 * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  Noise noise(uint32_t(s0) ^ 0x1234u);
  double phase = 0.0;
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    const double hz = 45.0 + 110.0 * std::exp(-tt / 0.03);
    phase += hz / mix.rate;
    const double body = std::sin(twoPi * phase) * std::exp(-tt / 0.17);
    const double click = noise.next() * std::exp(-tt / 0.002) * 0.25;
    const double v = (body + click) * velocity * 0.85 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v, v);
  }
}

// Snare: high-passed noise and a short 190 Hz tone.
void snare(Mix& mix, double t, double velocity) {
  const int64_t s0 = mix.sampleAt(t);
  const int64_t n = int64_t(0.3 * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  Noise noise(uint32_t(s0) ^ 0x5678u);
  Filter hp;
  hp.set(1400.0, 0.8, mix.rate);
  double l, r;
  panGains(-0.1, l, r);
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    hp.run(noise.next());
    const double v = (hp.high * std::exp(-tt / 0.07) * 0.55 + std::sin(twoPi * 190.0 * tt) * std::exp(-tt / 0.035) * 0.45) *
                     velocity * 0.55 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v * l, v * r);
  }
}

// Hi-hat: thin high-passed noise, closed or open.
void hat(Mix& mix, double t, double velocity, bool open) {
  const int64_t s0 = mix.sampleAt(t);
  const double decay = open ? 0.11 : 0.022;
  const int64_t n = int64_t((open ? 0.5 : 0.12) * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  Noise noise(uint32_t(s0) ^ (open ? 0x9ABCu : 0xDEF0u));
  Filter hp;
  hp.set(7500.0, 0.7, mix.rate);
  double l, r;
  panGains(0.3, l, r);
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    hp.run(noise.next());
    const double v = hp.high * std::exp(-tt / decay) * velocity * 0.12 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v * l, v * r);
  }
}

// Crash cymbal: wide, long high-passed noise that marks a new section.
void crash(Mix& mix, double t) {
  const int64_t s0 = mix.sampleAt(t);
  const int64_t n = int64_t(3.0 * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  Noise noiseL(uint32_t(s0) ^ 0x1111u), noiseR(uint32_t(s0) ^ 0x2222u);
  Filter hpL, hpR;
  hpL.set(4000.0, 0.7, mix.rate);
  hpR.set(4200.0, 0.7, mix.rate);
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    const double env = std::exp(-tt / 0.8) * 0.2 * tailTaper(i, n, mix.rate);
    hpL.run(noiseL.next());
    hpR.run(noiseR.next());
    mix.add(s0 + i, hpL.high * env, hpR.high * env);
  }
}

// Swell: a cymbal played backwards, rising over seconds into time t and
// stopping dead there, to lead into a new section.
void swell(Mix& mix, double t, double seconds) {
  const int64_t s1 = mix.sampleAt(t);
  const int64_t n = int64_t(seconds * mix.rate);
  const int64_t s0 = s1 - n;
  if (n <= 0 || !mix.touches(s0, s1)) return;
  Noise noiseL(uint32_t(s1) ^ 0x3333u), noiseR(uint32_t(s1) ^ 0x4444u);
  Filter bpL, bpR;
  for (int64_t i = 0; i < n; ++i) {
    const double toGo = double(n - i) / mix.rate;
    if (i % controlPeriod == 0) {
      // The band climbs from 1 kHz to 8 kHz as the swell rises.
      const double cutoff = 1000.0 * std::pow(8.0, double(i) / double(n));
      bpL.set(cutoff, 1.2, mix.rate);
      bpR.set(cutoff * 1.05, 1.2, mix.rate);
    }
    const double env = std::exp(-toGo / (0.3 * seconds)) * 0.22 * std::min(1.0, double(i) / (0.05 * mix.rate));
    bpL.run(noiseL.next());
    bpR.run(noiseR.next());
    mix.add(s0 + i, bpL.band * env, bpR.band * env);
  }
}

// Bass: sawtooth and a sine an octave down through a low-pass that snaps
// shut after the attack.
void bass(Mix& mix, double t, double duration, int note, double bright) {
  const int64_t s0 = mix.sampleAt(t);
  const double release = 0.05;
  const int64_t n = int64_t((duration + release) * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  const double hz = noteHz(note);
  const double dt = hz / mix.rate;
  Oscillator saw;
  double subPhase = 0.0;
  Filter lp;
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    if (i % controlPeriod == 0) lp.set((150.0 + 700.0 * bright) * (1.0 + 3.0 * std::exp(-tt / 0.07)), 1.4, mix.rate);
    double env = std::min(1.0, tt / 0.004);
    if (tt > duration) env *= std::exp(-(tt - duration) / (release / 4.0));
    subPhase += 0.5 * dt;
    if (subPhase >= 1.0) subPhase -= 1.0;
    lp.run(saw.saw(dt) * 0.7 + std::sin(twoPi * subPhase) * 0.6);
    const double v = lp.low * env * 0.3 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v, v);
  }
}

// Pad: three detuned sawtooths spread across the stereo field, slow attack
// and release, a gentle low-pass that breathes with a slow wave.
void pad(Mix& mix, double t, double duration, int note, double level, double bright) {
  const int64_t s0 = mix.sampleAt(t);
  const double attack = 0.35, release = 0.8;
  const int64_t n = int64_t((duration + release * 3.0) * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  const double hz = noteHz(note);
  const double detune[3] = {-0.09, 0.0, 0.08};  // semitones
  const double pans[3] = {-0.7, 0.0, 0.7};
  double dts[3], gl[3], gr[3];
  Oscillator osc[3];
  for (int k = 0; k < 3; ++k) {
    dts[k] = hz * std::pow(2.0, detune[k] / 12.0) / mix.rate;
    panGains(pans[k], gl[k], gr[k]);
    osc[k].phase = 0.31 * k + 0.17 * (note % 5) / 5.0;  // voices start out of phase
    if (osc[k].phase >= 1.0) osc[k].phase -= 1.0;
  }
  Filter lpL, lpR;
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    if (i % controlPeriod == 0) {
      const double cutoff = (350.0 + 2400.0 * bright) * (1.0 + 0.25 * std::sin(twoPi * 0.23 * (t + tt)));
      lpL.set(cutoff, 0.9, mix.rate);
      lpR.set(cutoff, 0.9, mix.rate);
    }
    double env = std::min(1.0, tt / attack);
    if (tt > duration) env *= std::exp(-(tt - duration) / release);
    double l = 0.0, r = 0.0;
    for (int k = 0; k < 3; ++k) {
      const double v = osc[k].saw(dts[k]);
      l += v * gl[k];
      r += v * gr[k];
    }
    lpL.run(l);
    lpR.run(r);
    const double g = env * level * 0.045 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, lpL.low * g, lpR.low * g, 0.15);
  }
}

// Lead: square and sawtooth a few cents apart, with a delayed vibrato and a
// filter that opens on each note.
void lead(Mix& mix, double t, double duration, int note, double level, double bright) {
  const int64_t s0 = mix.sampleAt(t);
  const double release = 0.12;
  const int64_t n = int64_t((duration + release * 4.0) * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  const double hz = noteHz(note);
  Oscillator a, b;
  Filter lp;
  double l, r;
  panGains(0.1, l, r);
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    if (i % controlPeriod == 0) lp.set((900.0 + 4500.0 * bright) * (1.0 + 1.5 * std::exp(-tt / 0.12)), 1.3, mix.rate);
    const double vibrato = 1.0 + 0.004 * std::sin(twoPi * 5.5 * tt) * std::min(1.0, std::max(0.0, (tt - 0.2) / 0.3));
    const double dt = hz * vibrato / mix.rate;
    double env = std::min(1.0, tt / 0.012);
    env *= 0.75 + 0.25 * std::exp(-tt / 0.25);
    if (tt > duration) env *= std::exp(-(tt - duration) / release);
    lp.run(a.square(dt) * 0.5 + b.saw(dt * 1.003) * 0.5);
    const double v = lp.low * env * level * 0.2 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v * l, v * r, 0.35);
  }
}

// Arpeggio: short square plucks, alternating sides.
void arpNote(Mix& mix, double t, int note, double level, double bright, double pan) {
  const int64_t s0 = mix.sampleAt(t);
  const int64_t n = int64_t(0.35 * mix.rate);
  if (!mix.touches(s0, s0 + n)) return;
  const double dt = noteHz(note) / mix.rate;
  Oscillator osc;
  Filter lp;
  double l, r;
  panGains(pan, l, r);
  for (int64_t i = 0; i < n; ++i) {
    const double tt = double(i) / mix.rate;
    if (i % controlPeriod == 0) lp.set((900.0 + 3000.0 * bright) * (0.4 + 0.6 * std::exp(-tt / 0.06)), 1.1, mix.rate);
    const double env = std::min(1.0, tt / 0.003) * std::exp(-tt / 0.085);
    lp.run(osc.square(dt));
    const double v = lp.low * env * level * 0.13 * tailTaper(i, n, mix.rate);
    mix.add(s0 + i, v * l, v * r, 0.45);
  }
}

// ===========================================================================
// Arrangement
// ===========================================================================

// Places a pitch class into [low, low + 12).
int placeInOctave(int note, int low) {
  int pc = ((note % 12) + 12) % 12;
  int n = pc;
  while (n < low) n += 12;
  return n;
}

void chordTones(const Chord& chord, int low, int tones[3]) {
  tones[0] = placeInOctave(chord.root, low);
  tones[1] = placeInOctave(chord.root + (chord.minor ? 3 : 4), low);
  tones[2] = placeInOctave(chord.root + 7, low);
  std::sort(tones, tones + 3);
}

// One note or hit of the arrangement, in seconds of music.
enum class Voice { kick, snare, hat, open, crash, swell, bass, pad, lead, arp };

struct Event {
  Voice voice;
  double time;
  double velocity = 1.0;  // drums; the swell's length in seconds
  double duration = 0.0;  // tuned voices
  int note = 0;
  double level = 0.0;
  double bright = 0.5;
  double pan = 0.0;
};

// Rounds toward minus infinity, for bar numbers of steps before the downbeat.
long floorDiv(long a, long b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

// Grid tolerance: a time this close to a step counts as on it.
const double onGrid = 1e-6;

// The section's events. Its bars run at downbeat + n * 240 / bpm, so a
// section whose downbeat is not its start opens with part of a bar (a
// pickup); a short last bar is a drum fill. Steps are sixteenth notes
// counted from the downbeat (negative before it).
void arrangeSection(std::vector<Event>& out, const Score& score, size_t index) {
  const Section& s = score.sections[index];
  const double end = score.sectionEnd(index);
  const double bar = 240.0 / s.bpm;
  const double step = bar / 16.0;
  const double downbeat = s.downbeat >= 0.0 ? s.downbeat : s.start;
  const long firstStep = long(std::ceil((s.start - downbeat) / step - onGrid));
  const long endStep = long(std::ceil((end - downbeat) / step - onGrid));  // the first step at or after the end
  if (endStep <= firstStep) return;
  const long firstFullBar = floorDiv(firstStep + 15, 16);  // the first bar that starts inside the section
  const long lastBar = floorDiv(endStep - 1, 16);
  const bool shortLastBar = downbeat + double(lastBar + 1) * bar > end + onGrid;
  const bool fill = shortLastBar && lastBar >= firstFullBar;
  const std::vector<Chord>& progression = score.chords.at(s.chords);
  // The pickup plays the chord of the first full bar.
  auto chordOf = [&](long n) -> const Chord& {
    return progression[size_t(std::max(n - firstFullBar, 0L)) % progression.size()];
  };
  auto sameChord = [&](long a, long b) {
    const Chord& x = chordOf(a);
    const Chord& y = chordOf(b);
    return x.root == y.root && x.minor == y.minor;
  };
  auto stepTime = [&](long j) { return downbeat + double(j) * step; };

  // The cut: a cymbal on the section's first instant and a reversed one
  // rising into it.
  const size_t sectionFirst = out.size();
  const bool hasDrums = s.drums != "none";
  const bool withCrash = s.crash == 1 || (s.crash == -1 && hasDrums);
  if (withCrash) out.push_back({Voice::crash, s.start});
  if (s.swell > 0) out.push_back({Voice::swell, s.start, s.swell});

  // Drums: each part on its own grid of 16, 32 or 64 steps a bar. In a fill
  // bar the kick and snare keep their places and a snare roll rising in
  // sixteenths takes the place of the cymbals.
  if (hasDrums) {
    for (const auto& part : score.drums.at(s.drums).parts) {
      const long n = long(part.second.size());
      const double partStep = bar / double(n);
      const bool cymbal = part.first == "hat" || part.first == "open";
      const Voice voice = part.first == "kick" ? Voice::kick
                          : part.first == "snare" ? Voice::snare
                          : part.first == "hat" ? Voice::hat : Voice::open;
      for (long j = long(std::ceil((s.start - downbeat) / partStep - onGrid));; ++j) {
        const double t = downbeat + double(j) * partStep;
        if (t >= end - onGrid) break;
        if (t < s.start + s.drumsFrom - onGrid) continue;
        if (fill && cymbal && floorDiv(j, n) == lastBar) continue;
        const int hit = part.second[size_t(j - floorDiv(j, n) * n)];
        if (hit) out.push_back({voice, t, hit == 2 ? 1.0 : 0.75});
      }
    }
    if (fill) {
      const long from = std::max(lastBar * 16, firstStep);
      const long rollSteps = endStep - from;
      for (long j = from; j < endStep; ++j)
        if (stepTime(j) >= s.start + s.drumsFrom - onGrid)
          out.push_back({Voice::snare, stepTime(j), 0.35 + 0.65 * double(j - from + 1) / double(rollSteps)});
    }
  }

  // The kick of the cut, unless a kick or a snare of the section is about to
  // sound anyway (within a tenth of a second).
  const bool startsOnDownbeat = std::fabs(s.start - downbeat - std::round((s.start - downbeat) / bar) * bar) < onGrid;
  if (withCrash && hasDrums && !startsOnDownbeat) {
    const bool drumSoon = std::any_of(out.begin() + long(sectionFirst), out.end(), [&](const Event& e) {
      return (e.voice == Voice::kick || e.voice == Voice::snare) && e.time < s.start + 0.1;
    });
    if (!drumSoon) out.push_back({Voice::kick, s.start, 1.0});
  }

  // Hits at their own times.
  if (s.hits != "none") {
    for (const auto& part : score.hits.at(s.hits).parts) {
      const Voice voice = part.first == "kick" ? Voice::kick
                          : part.first == "snare" ? Voice::snare
                          : part.first == "hat" ? Voice::hat
                          : part.first == "open" ? Voice::open : Voice::crash;
      for (double t : part.second) out.push_back({voice, s.start + t, 1.0});
    }
  }

  for (long j = firstStep; j < endStep; ++j) {
    const double t = stepTime(j);
    const long n = floorDiv(j, 16);
    const int k = int(j - n * 16);
    const Chord& chord = chordOf(n);

    // Bass: notes on 'r', 'f', 'o', held through the '-' after them.
    if (s.bass != "none") {
      const std::string& pattern = score.bass.at(s.bass);
      const char c = pattern[size_t(k)];
      if (c == 'r' || c == 'f' || c == 'o') {
        int held = 1;
        while (k + held < 16 && pattern[size_t(k + held)] == '-' && j + held < endStep) ++held;
        const int root = placeInOctave(chord.root, 33);
        Event e{Voice::bass, t};
        e.duration = (held - 0.25) * step;  // a short gap before the next note
        e.note = root + (c == 'f' ? 7 : c == 'o' ? 12 : 0);
        e.bright = s.bright;
        out.push_back(e);
      }
    }

    // Arpeggio over the chord, an octave and more above the pad.
    if (s.arp != "none" && s.arpLevel > 0) {
      const char c = score.arps.at(s.arp)[size_t(k)];
      if (c >= '0' && c <= '3') {
        int tones[3];
        chordTones(chord, 64, tones);
        Event e{Voice::arp, t};
        e.note = c == '3' ? tones[0] + 12 : tones[c - '0'];
        e.level = s.arpLevel;
        e.bright = s.bright;
        e.pan = (k % 2) ? 0.5 : -0.5;
        out.push_back(e);
      }
    }

    // Pad: the chord held for as many bars as it repeats; the first from the
    // section's very start.
    if (s.pad > 0 && (j == firstStep || (k == 0 && !sameChord(n - 1, n)))) {
      long next = n + 1;
      while (next <= lastBar && sameChord(n, next)) ++next;
      const double from = j == firstStep ? s.start : t;
      const double chordEnd = std::min(end, downbeat + double(next) * bar);
      int tones[3];
      chordTones(chord, 55, tones);
      for (int tone : tones) {
        Event e{Voice::pad, from};
        e.duration = chordEnd - from;
        e.note = tone;
        e.level = s.pad;
        e.bright = s.bright;
        out.push_back(e);
      }
      Event low{Voice::pad, from};
      low.duration = chordEnd - from;
      low.note = placeInOctave(chord.root, 43);
      low.level = s.pad * 0.7;
      low.bright = s.bright;
      out.push_back(low);
    }
  }

  // Lead: the phrase from the first full bar, repeated to the section's end.
  if (s.lead != "none" && s.leadLevel > 0) {
    const std::vector<LeadNote>& phrase = score.leads.at(s.lead);
    long position = firstFullBar * 16;
    for (size_t i = 0; position < endStep; ++i) {
      const LeadNote& note = phrase[i % phrase.size()];
      const long steps = std::min(long(note.steps), endStep - position);
      if (note.note >= 0) {
        Event e{Voice::lead, stepTime(position)};
        e.duration = double(steps) * step * 0.92;
        e.note = note.note;
        e.level = s.leadLevel;
        e.bright = s.bright;
        out.push_back(e);
      }
      position += note.steps;
    }
  }
}

std::vector<Event> arrange(const Score& score) {
  std::vector<Event> events;
  for (size_t i = 0; i < score.sections.size(); ++i) arrangeSection(events, score, i);
  return events;
}

void play(Mix& mix, const Event& e) {
  switch (e.voice) {
    case Voice::kick: kick(mix, e.time, e.velocity); break;
    case Voice::snare: snare(mix, e.time, e.velocity); break;
    case Voice::hat: hat(mix, e.time, e.velocity, false); break;
    case Voice::open: hat(mix, e.time, e.velocity, true); break;
    case Voice::crash: crash(mix, e.time); break;
    case Voice::swell: swell(mix, e.time, e.velocity); break;
    case Voice::bass: bass(mix, e.time, e.duration, e.note, e.bright); break;
    case Voice::pad: pad(mix, e.time, e.duration, e.note, e.level, e.bright); break;
    case Voice::lead: lead(mix, e.time, e.duration, e.note, e.level, e.bright); break;
    case Voice::arp: arpNote(mix, e.time, e.note, e.level, e.bright, e.pan); break;
  }
}

// Master level at time t: the sections' fades.
double fadeGain(const Score& score, double t) {
  double gain = 1.0;
  for (size_t i = 0; i < score.sections.size(); ++i) {
    const Section& s = score.sections[i];
    const double end = score.sectionEnd(i);
    if (t < s.start || t >= end) continue;
    if (s.fadeIn > 0 && t < s.start + s.fadeIn) gain *= (t - s.start) / s.fadeIn;
    if (s.fadeOut > 0 && t > end - s.fadeOut) gain *= std::max(0.0, (end - t) / s.fadeOut);
  }
  return gain;
}

// Soft knee: straight up to 0.8, then a curve that never reaches 1.
double softClip(double x) {
  const double knee = 0.8;
  const double a = std::fabs(x);
  if (a <= knee) return x;
  const double y = knee + (1.0 - knee) * std::tanh((a - knee) / (1.0 - knee));
  return x < 0 ? -y : y;
}

}  // namespace

// ===========================================================================
// Rendering and output
// ===========================================================================

std::vector<int16_t> render(const Score& score, double from, double to) {
  from = std::max(0.0, from);
  to = std::min(to, score.length);
  if (to <= from) return {};
  const int64_t first = int64_t(std::llround(from * score.rate));
  const int64_t frames = int64_t(std::llround(to * score.rate)) - first;
  if (frames <= 0) return {};
  Mix mix(score.rate, first, frames);
  for (const Event& e : arrange(score)) play(mix, e);

  // Ping-pong delay on the send bus, three sixteenths of the playing
  // section's tempo long, so that the echoes fall on its grid.
  const size_t lineSize = size_t(3 * score.rate);  // room for the slowest tempo, 20 bpm
  std::vector<double> lineL(lineSize, 0.0), lineR(lineSize, 0.0);
  size_t cursor = 0, section = 0;
  const double feedback = 0.42, wet = 0.5;
  // Leaves the loudest hits (kick on bass on pad) just under the soft knee.
  const double masterGain = 0.72;
  std::vector<int16_t> out(size_t(frames) * 2);
  for (int64_t i = 0; i < frames; ++i) {
    const double t = double(first + i) / score.rate;
    while (section + 1 < score.sections.size() && t >= score.sections[section + 1].start) ++section;
    const size_t delay = size_t(45.0 / score.sections[section].bpm * score.rate);
    const size_t read = (cursor + lineSize - delay) % lineSize;
    const double echoL = lineL[read], echoR = lineR[read];
    lineL[cursor] = mix.sendRight[size_t(i)] + echoR * feedback;
    lineR[cursor] = mix.sendLeft[size_t(i)] + echoL * feedback;
    cursor = (cursor + 1) % lineSize;
    const double gain = masterGain * fadeGain(score, t);
    const double l = softClip((mix.left[size_t(i)] + echoL * wet) * gain);
    const double r = softClip((mix.right[size_t(i)] + echoR * wet) * gain);
    out[size_t(i) * 2] = int16_t(std::lround(l * 32000.0));
    out[size_t(i) * 2 + 1] = int16_t(std::lround(r * 32000.0));
  }
  return out;
}

std::vector<DrumHit> drumHits(const Score& score) {
  std::vector<DrumHit> hits;
  for (const Event& e : arrange(score)) {
    if (e.voice == Voice::kick) hits.push_back({e.time, "kick", e.velocity});
    if (e.voice == Voice::snare) hits.push_back({e.time, "snare", e.velocity});
  }
  std::stable_sort(hits.begin(), hits.end(), [](const DrumHit& a, const DrumHit& b) { return a.time < b.time; });
  return hits;
}

bool writeWav(const std::string& path, const std::vector<int16_t>& samples, int rate) {
  std::ofstream out(path, std::ios::binary);
  if (!out) return false;
  auto put = [&](uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.put(char((value >> (8 * i)) & 0xFF));
  };
  const uint32_t dataBytes = uint32_t(samples.size() * 2);
  out.write("RIFF", 4);
  put(36 + dataBytes, 4);
  out.write("WAVEfmt ", 8);
  put(16, 4);
  put(1, 2);                      // PCM
  put(2, 2);                      // stereo
  put(uint32_t(rate), 4);
  put(uint32_t(rate) * 4, 4);     // bytes per second
  put(4, 2);                      // bytes per frame
  put(16, 2);                     // bits per sample
  out.write("data", 4);
  put(dataBytes, 4);
  for (int16_t s : samples) put(uint32_t(uint16_t(s)), 2);
  return bool(out);
}

}  // namespace synth
