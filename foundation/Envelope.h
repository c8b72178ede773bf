// Envelope: the time shaping that scenes use for fades. Times are scene
// seconds; results run 0 to 1. The constructor sets start = duration = 0 and
// spanScale = 1 and leaves outStart and outDuration unset (here 0): scenes
// assign the fields they need. π in the cosines is the float 3.1415927.
#pragma once

class Envelope {
 public:
  Envelope() = default;

  // 0 for t ≤ start; (t − start)/duration up to start + duration; 1 beyond.
  float rampUp(float t) const;
  // 1 − rampUp(t).
  float rampDown(float t) const;

  // 0 for t ≤ start; 1 for t > start + duration·spanScale; otherwise
  // x = ((t − start)/duration)^power and 0.5 − 0.5·cos(x·frequency·π), at
  // most 1. Frequency 1, power 1 is a raised cosine; higher frequencies
  // oscillate.
  float easeIn(float t, float frequency, float power) const;

  // 1 for t ≤ start; 0 for t > start + duration·spanScale; otherwise
  // x = (1 − (t − start)/duration)^power and the same cosine, at most 1.
  float easeOut(float t, float frequency, float power) const;

  // easeIn on (start, duration) times easeOut on (outStart, outDuration),
  // both with spanScale.
  float easeWindow(float t, float frequency, float power) const;

  float start = 0.0f;        // seconds
  float outStart = 0.0f;     // seconds; start of the fall of easeWindow
  float duration = 0.0f;     // seconds
  float outDuration = 0.0f;  // seconds
  float spanScale = 1.0f;    // stretches the span after which the ease is complete
};

// ---- One-expression forms ---------------------------------------------------
// Scenes read their envelopes as one expression of the time t (seconds):
// easeInAt(S, 12, 6) is an Envelope with start 12 and duration 6 (spanScale
// 1) eased in at S. frequency and power default to 1, the raised cosine.

float easeInAt(float t, float start, float duration, float frequency = 1.0f, float power = 1.0f);
float easeOutAt(float t, float start, float duration, float frequency = 1.0f, float power = 1.0f);
// easeIn on (start, duration) times easeOut on (outStart, outDuration).
float easeWindowAt(float t, float start, float duration, float outStart, float outDuration, float frequency = 1.0f,
                   float power = 1.0f);

// The beat flash sum: easeOutAt(t, 0, duration) plus easeOutAt(t, b,
// duration) for every beat b of the list with t > b, summed in list order.
// Overlapping beats add, so the sum may pass 1.
float beatSum(float t, const float* beats, int beatCount, float duration);
