// The soundtrack in step with the picture: wherever a scene pulses, flashes
// or flares on fixed times, the synth's score has a kick or a snare within
// 10 ms. The pulse times are derived here from each scene's own timing (its
// envelopes and beat lists, and how its clock relates to the timeline), in
// timeline seconds; the hits come from the synth's own arrangement, exactly
// as it renders them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "core/OstravineDemo.h"
#include "core/PlaybackControl.h"
#include "foundation/Envelope.h"
#include "scenes/SceneBordersMeetus.h"
#include "scenes/ScenePerforme.h"
#include "tools/synth/Synth.h"

namespace {

const double tolerance = 0.010;       // seconds between a pulse and its hit
const double scanStep = 0.0005;       // seconds between samples of a pulse signal

const synth::Score& theScore() {
  static const synth::Score score = [] {
    synth::Score s;
    std::string error;
    EXPECT_TRUE(synth::loadScore(std::string(OSTRAVINE_SOURCE_DIR) + "/assets/music/ostravine.score", s, error))
        << error;
    return s;
  }();
  return score;
}

const std::vector<synth::DrumHit>& theHits() {
  static const std::vector<synth::DrumHit> hits = synth::drumHits(theScore());
  return hits;
}

// Seconds from t to the nearest kick or snare.
double distanceToHit(const std::vector<synth::DrumHit>& hits, double t) {
  double best = 1e9;
  for (const synth::DrumHit& hit : hits) best = std::min(best, std::fabs(hit.time - t));
  return best;
}

// Times in [from, to) where f leaves 0: the instant a flash or a title strikes.
std::vector<double> onsets(const std::function<float(double)>& f, double from, double to) {
  std::vector<double> out;
  float before = f(from - scanStep);
  for (double t = from; t < to; t += scanStep) {
    const float now = f(t);
    if (before == 0.0f && now > 0.0f) out.push_back(t);
    before = now;
  }
  return out;
}

// Times in [from, to) where f peaks above floor: the middle of a pulse that
// swells and falls.
std::vector<double> peaks(const std::function<float(double)>& f, double from, double to, float floor) {
  std::vector<double> out;
  float a = f(from - 2 * scanStep), b = f(from - scanStep);
  for (double t = from; t < to; t += scanStep) {
    const float c = f(t);
    if (b > a && b >= c && b > floor) out.push_back(t - scanStep);
    a = b;
    b = c;
  }
  return out;
}

Envelope window(float start, float outStart, float duration, float outDuration) {
  Envelope e;
  e.start = start;
  e.outStart = outStart;
  e.duration = duration;
  e.outDuration = outDuration;
  return e;
}

Envelope rise(float start, float duration) { return window(start, 0.0f, duration, 0.0f); }

// ---------------------------------------------------------------------------
// The pulses of each scene, in timeline seconds, inside [start, end)
// ---------------------------------------------------------------------------

// ScenePerforme: the titles "kestrin" and "ks" strike when their envelopes
// leave 0 (scene seconds = timeline seconds - start).
std::vector<double> performePulses(double start, double end) {
  std::vector<double> out = onsets([&](double x) { return ScenePerforme::kestrinStrength(float(x - start)); }, start, end);
  for (double t : onsets([&](double x) { return ScenePerforme::ksStrength(float(x - start)); }, start, end))
    out.push_back(t);
  return out;
}

// SceneBordersWithout: d = timeline + 24; two pulses a bar of 1.875 s,
// acc = sum over i = 0..10 of easeWindow(d, 1, 2) of (o + 53.4, out + 0.4,
// 0.6, 1) and of (o + 54.25, ...), o = 1.875 i. The ripple of the motes beats
// with acc: each pulse peaks about 0.55 s after its window opens.
std::vector<double> withoutPulses(double start, double end) {
  auto acc = [](double x) {
    const float d = float(x) + 24.0f;
    float sum = 0.0f;
    for (int i = 0; i <= 10; ++i) {
      const float o = float(i) * 1.875f;
      sum += window(o + 53.4f, o + 53.4f + 0.4f, 0.6f, 1.0f).easeWindow(d, 1.0f, 2.0f);
      sum += window(o + 54.25f, o + 54.25f + 0.4f, 0.6f, 1.0f).easeWindow(d, 1.0f, 2.0f);
    }
    return sum;
  };
  return peaks(acc, start, end, 0.3f);
}

// SceneBordersWithin: d = timeline + 34; acc = sum over i = 0..32 of
// 0.9 x easeWindow(d, 1, 2) of (o + 42.6625, out + 0.4, 0.6, 1) plus the same
// of (o + 43.5125, ...), o = 1.875 i; the glow and the flares pump with
// acc^5 and acc^6, at its peaks. The titles "mb" and "cd" burst out of a
// white flash at full strength when easeIn of (20, 0.33) and of (23.7, 0.33)
// leave 0, in scene seconds.
std::vector<double> withinPulses(double start, double end) {
  auto acc = [](double x) {
    const float d = float(x) + 34.0f;
    float sum = 0.0f;
    for (int i = 0; i <= 32; ++i) {
      const float o = float(i) * 1.875f;
      const float v = window(o + 42.6625f, o + 42.6625f + 0.4f, 0.6f, 1.0f).easeWindow(d, 1.0f, 2.0f);
      const float w = window(o + 43.5125f, o + 43.5125f + 0.4f, 0.6f, 1.0f).easeWindow(d, 1.0f, 2.0f);
      sum += v * 0.9f + w;
    }
    return sum;
  };
  std::vector<double> out = peaks(acc, start, end, 0.3f);
  for (float title : {20.0f, 23.7f})
    for (double t : onsets([&](double x) { return rise(title, 0.33f).easeIn(float(x - start), 1.0f, 1.0f); }, start, end))
      out.push_back(t);
  return out;
}

// SceneBordersWithme: m = timeline + 49; the two glares grow by
// easeWindow(m, 1, 0.25) of (135.5, out 137, 2, 1.5): they flare when it
// leaves 0, with a fast attack.
std::vector<double> withmePulses(double start, double end) {
  return onsets([](double x) { return window(135.5f, 137.0f, 2.0f, 1.5f).easeWindow(float(x) + 49.0f, 1.0f, 0.25f); },
                start, end);
}

// SceneBordersMeetus: the white flash f = easeOut(0, 0.75) plus easeOut(b,
// 0.75) for each beat b of its list, in scene seconds: full white at 0 and at
// every beat. SceneBordersRollin swells its glare and glow with the same f on
// its own scene clock.
std::vector<double> beatListPulses(double start, double end) {
  std::vector<double> out = {start};
  for (float b : SceneBordersMeetus::beats)
    if (start + b < end) out.push_back(start + double(b));
  return out;
}

// SceneBordersWithyou: six white flashes falling over 0.75 s from the scene
// seconds 0, 1, 2.8, 3.8, 4.8 and 6.5.
std::vector<double> withyouPulses(double start, double) {
  std::vector<double> out;
  for (double s : {0.0, 1.0, 2.8, 3.8, 4.8, 6.5}) out.push_back(start + s);
  return out;
}

// SceneBordersRollus: the white flash 1 - easeIn(S, 1, 1) of (15, 1.5), full
// when the envelope leaves 0 at 15 s of scene time.
std::vector<double> rollusPulses(double start, double end) {
  return onsets([&](double x) { return rise(15.0f, 1.5f).easeIn(float(x - start), 1.0f, 1.0f); }, start, end);
}

// Scenes that only fade: SceneBordersWiththem (the greetings, a fade to black
// at its end), SceneBordersWithus (a fade in from black), SceneBordersRollout.
std::vector<double> noPulses(double, double) { return {}; }

struct SceneTiming {
  int32_t sceneIndex;
  const char* scene;
  std::vector<double> (*pulses)(double start, double end);
  size_t count;  // pulses in the scene's stretch, so that a derivation that finds none fails
};

const SceneTiming sceneTimings[] = {
    {0, "ScenePerforme", performePulses, 2},
    {2, "SceneBordersWithout", withoutPulses, 16},
    {1, "SceneBordersWithin", withinPulses, 30},
    {3, "SceneBordersWithme", withmePulses, 1},
    {6, "SceneBordersWiththem", noPulses, 0},
    {5, "SceneBordersWithus", noPulses, 0},
    {7, "SceneBordersMeetus", beatListPulses, 24},
    {4, "SceneBordersWithyou", withyouPulses, 6},
    {8, "SceneBordersRollin", beatListPulses, 24},
    {9, "SceneBordersRollout", noPulses, 0},
    {10, "SceneBordersRollus", rollusPulses, 1},
};

const SceneTiming& timingOf(int32_t sceneIndex) {
  for (const SceneTiming& t : sceneTimings)
    if (t.sceneIndex == sceneIndex) return t;
  ADD_FAILURE() << "no timing for scene " << sceneIndex;
  return sceneTimings[0];
}

// The music under a scene: its schedule row, cut where the picture rewinds.
struct Stretch {
  double start, end;
};

Stretch stretchOf(int32_t sceneIndex) {
  for (const ScheduleRow& row : productionSchedule)
    if (row.sceneIndex == sceneIndex)
      return {row.startTime / 1000.0, std::min(row.endTime, RewindControl::rewindAtMs) / 1000.0};
  ADD_FAILURE() << "scene " << sceneIndex << " is not scheduled";
  return {0.0, 0.0};
}

// Every pulse of the scene in its stretch has a hit within the tolerance.
void expectInStep(int32_t sceneIndex, const std::vector<synth::DrumHit>& hits) {
  const SceneTiming& timing = timingOf(sceneIndex);
  const Stretch stretch = stretchOf(sceneIndex);
  std::vector<double> pulses = timing.pulses(stretch.start, stretch.end);
  pulses.erase(std::remove_if(pulses.begin(), pulses.end(),
                              [&](double t) { return t < stretch.start || t >= stretch.end; }),
               pulses.end());
  EXPECT_EQ(pulses.size(), timing.count) << timing.scene << ": pulses found in " << stretch.start << " to "
                                         << stretch.end << " s";
  for (double t : pulses)
    EXPECT_LE(distanceToHit(hits, t), tolerance) << timing.scene << " pulses at " << t << " s";
}

}  // namespace

// ---------------------------------------------------------------------------
// Scene by scene
// ---------------------------------------------------------------------------

TEST(SoundtrackInStep, ScenePerforme) { expectInStep(0, theHits()); }
TEST(SoundtrackInStep, SceneBordersWithout) { expectInStep(2, theHits()); }
TEST(SoundtrackInStep, SceneBordersWithin) { expectInStep(1, theHits()); }
TEST(SoundtrackInStep, SceneBordersWithme) { expectInStep(3, theHits()); }
TEST(SoundtrackInStep, SceneBordersWiththem) { expectInStep(6, theHits()); }
TEST(SoundtrackInStep, SceneBordersWithus) { expectInStep(5, theHits()); }
TEST(SoundtrackInStep, SceneBordersMeetus) { expectInStep(7, theHits()); }
TEST(SoundtrackInStep, SceneBordersWithyou) { expectInStep(4, theHits()); }
TEST(SoundtrackInStep, SceneBordersRollin) { expectInStep(8, theHits()); }
TEST(SoundtrackInStep, SceneBordersRollout) { expectInStep(9, theHits()); }
TEST(SoundtrackInStep, SceneBordersRollus) { expectInStep(10, theHits()); }

// The pulses of the bar-keeping scenes: two a bar of 1.875 s, 0.85 s apart.
TEST(SoundtrackInStep, NoiseCubesPulseTwiceABar) {
  for (int32_t scene : {2, 1}) {
    const Stretch stretch = stretchOf(scene);
    const std::vector<double> pulses = timingOf(scene).pulses(stretch.start, stretch.end);
    ASSERT_GE(pulses.size(), 4u);
    EXPECT_NEAR(pulses[2] - pulses[0], 1.875, 0.001) << scene;
    EXPECT_NEAR(pulses[3] - pulses[1], 1.875, 0.001) << scene;
    const double apart = std::min(pulses[1] - pulses[0], pulses[2] - pulses[1]);
    EXPECT_NEAR(apart, 0.85, 0.001) << scene;
  }
}

// The check itself: a hit 20 ms off a pulse is not in step, 5 ms is.
TEST(SoundtrackInStep, HitsOffThePulseAreCaught) {
  synth::Score score;
  std::string error;
  ASSERT_TRUE(synth::parseScore("rate 22050\nlength 4\nchords c C\nhits h kick 1.02 2.005\n"
                                "section 0 120 only chords=c hits=h\n",
                                score, error))
      << error;
  const std::vector<synth::DrumHit> hits = synth::drumHits(score);
  EXPECT_GT(distanceToHit(hits, 1.0), tolerance);
  EXPECT_LE(distanceToHit(hits, 2.0), tolerance);
}

// ---------------------------------------------------------------------------
// The whole timeline
// ---------------------------------------------------------------------------

TEST(SoundtrackInStep, WholeTimeline) {
  const synth::Score& score = theScore();
  const std::vector<synth::DrumHit>& hits = theHits();
  // The schedule covers the timeline without a gap, each scene under its
  // own section of the score, and every scene's pulses have their hits.
  double expectedStart = 0.0;
  size_t pulses = 0;
  for (const ScheduleRow& row : productionSchedule) {
    const double start = row.startTime / 1000.0;
    EXPECT_DOUBLE_EQ(start, expectedStart) << timingOf(row.sceneIndex).scene;
    expectedStart = row.endTime / 1000.0;
    const bool sectionStartsHere =
        std::any_of(score.sections.begin(), score.sections.end(),
                    [&](const synth::Section& s) { return std::fabs(s.start - start) < 1e-9; });
    EXPECT_TRUE(sectionStartsHere) << timingOf(row.sceneIndex).scene << ": no section starts at " << start << " s";
    expectInStep(row.sceneIndex, hits);
    pulses += timingOf(row.sceneIndex).count;
  }
  EXPECT_EQ(pulses, 104u);

  // At the rewind the picture runs back while the music plays on; after it
  // lands, until the end, the picture shows SceneBordersWithout from 27.8 s
  // on, with no pulse in that stretch: the music there, the thinning rewind
  // section, has no drums.
  RewindControl rewind;
  int32_t offset = 0, landedAtMs = -1, lastPictureMs = 0;
  for (int32_t position = RewindControl::rewindAtMs - 1000; position <= 263500; ++position) {
    offset = rewind.update(position, offset);
    if (rewind.rewindStarted && !rewind.rewinding && landedAtMs < 0) landedAtMs = position;
    lastPictureMs = position + offset;
  }
  ASSERT_GT(landedAtMs, 0);
  const double landed = (landedAtMs + offset) / 1000.0, last = lastPictureMs / 1000.0;
  EXPECT_NEAR(landed, 27.8, 0.001);
  EXPECT_GT(last, 28.9);
  const std::vector<double> after = timingOf(2).pulses(landed, last);
  EXPECT_TRUE(after.empty()) << "a pulse at " << after.front() << " s of picture after the rewind";
  for (const synth::DrumHit& hit : hits)
    EXPECT_LT(hit.time, RewindControl::rewindAtMs / 1000.0) << "a " << hit.part << " in the rewind";
}
