// Envelope: ramps and cosine eases.
#include "foundation/Envelope.h"

#include <cmath>

namespace {

const float envelopePi = 3.1415927f;

float easeInOver(float t, float start, float duration, float spanScale, float frequency, float power) {
  if (t <= start) return 0.0f;
  if (t > start + duration * spanScale) return 1.0f;  // also covers duration 0 without a division
  const float x = std::pow((t - start) / duration, power);
  const float r = 0.5f - 0.5f * std::cos(x * frequency * envelopePi);
  return r > 1.0f ? 1.0f : r;
}

float easeOutOver(float t, float start, float duration, float spanScale, float frequency, float power) {
  if (t <= start) return 1.0f;
  if (t > start + duration * spanScale) return 0.0f;
  const float x = std::pow(1.0f - (t - start) / duration, power);
  const float r = 0.5f - 0.5f * std::cos(x * frequency * envelopePi);
  return r > 1.0f ? 1.0f : r;
}

}  // namespace

float Envelope::rampUp(float t) const {
  if (t <= start) return 0.0f;
  if (t <= start + duration) return (t - start) / duration;
  return 1.0f;
}

float Envelope::rampDown(float t) const { return 1.0f - rampUp(t); }

float Envelope::easeIn(float t, float frequency, float power) const {
  return easeInOver(t, start, duration, spanScale, frequency, power);
}

float Envelope::easeOut(float t, float frequency, float power) const {
  return easeOutOver(t, start, duration, spanScale, frequency, power);
}

float Envelope::easeWindow(float t, float frequency, float power) const {
  return easeInOver(t, start, duration, spanScale, frequency, power) *
         easeOutOver(t, outStart, outDuration, spanScale, frequency, power);
}

float easeInAt(float t, float start, float duration, float frequency, float power) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeIn(t, frequency, power);
}

float easeOutAt(float t, float start, float duration, float frequency, float power) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  return e.easeOut(t, frequency, power);
}

float easeWindowAt(float t, float start, float duration, float outStart, float outDuration, float frequency,
                   float power) {
  Envelope e;
  e.start = start;
  e.duration = duration;
  e.outStart = outStart;
  e.outDuration = outDuration;
  return e.easeWindow(t, frequency, power);
}

float beatSum(float t, const float* beats, int beatCount, float duration) {
  float f = easeOutAt(t, 0.0f, duration);
  for (int i = 0; i < beatCount; ++i) {
    if (t > beats[i]) f += easeOutAt(t, beats[i], duration);
  }
  return f;
}
