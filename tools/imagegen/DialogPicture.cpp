// DialogPicture: see the header.
#include "DialogPicture.h"

#include <algorithm>
#include <cmath>

namespace {

float mix(float a, float b, float t) { return a + (b - a) * t; }

// Lays coverage c over the image in colour, its top left at (left, top).
void stamp(Image& image, const Coverage& c, int left, int top, const Rgba& colour) {
  for (int y = 0; y < c.height; ++y)
    for (int x = 0; x < c.width; ++x) {
      const int px = left + x, py = top + y;
      if (px < 0 || py < 0 || px >= image.width() || py >= image.height()) continue;
      const float a = std::min(1.0f, std::max(0.0f, c.at(x, y))) * colour.a;
      Rgba& p = image.at(px, py);
      p.r = mix(p.r, colour.r, a);
      p.g = mix(p.g, colour.g, a);
      p.b = mix(p.b, colour.b, a);
    }
}

}  // namespace

Image makeDialogPicture(Typeface& sans, Typeface& bold) {
  const int W = 342, H = 226;
  Image image(W, H);
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      const float v = (y + 0.5f) / H;
      // Ground: night blue, darker downwards, with a soft light behind the title.
      const float dx = (x + 0.5f - W * 0.5f) / (W * 0.45f), dy = (y + 0.5f - 38.0f) / 40.0f;
      const float glow = std::exp(-(dx * dx + dy * dy)) * 0.22f;
      // Faint diagonal lines, 9 pixels apart.
      const float phase = std::fmod(float(x + y) + 0.5f, 9.0f);
      const float line = phase < 1.0f ? 0.035f * (1.0f - v) : 0.0f;
      Rgba& p = image.at(x, y);
      p.r = mix(0.07f, 0.015f, v) + glow * 0.55f + line;
      p.g = mix(0.09f, 0.02f, v) + glow * 0.6f + line;
      p.b = mix(0.22f, 0.06f, v) + glow * 0.9f + line;
      p.a = 1;
    }

  // The maker, small and spaced, then the title.
  const Coverage maker = sans.line(U"KESTRIN", 10, 10, 3, 0);
  stamp(image, maker, (W - maker.width) / 2, 9, Rgba{0.96f, 0.72f, 0.32f, 1});
  Coverage title;
  for (float em = 34; em > 10; em -= 1) {
    title = bold.line(U"OSTRAVINE", em, em, em * 0.18f, 0);
    if (title.width <= W - 60) break;
  }
  stamp(image, title, (W - title.width) / 2, 26, Rgba{0.93f, 0.92f, 0.88f, 1});

  // A hairline under the title, fading out at its ends.
  const int lineY = 26 + title.height + 6;
  for (int x = 0; x < W; ++x) {
    const float t = std::fabs((x + 0.5f) / W - 0.5f) / 0.42f;
    const float a = t >= 1 ? 0.0f : (1 - t * t) * 0.7f;
    Rgba& p = image.at(x, lineY);
    p.r = mix(p.r, 0.96f, a);
    p.g = mix(p.g, 0.72f, a);
    p.b = mix(p.b, 0.32f, a);
  }
  return image;
}
