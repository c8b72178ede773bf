// Textures: the generators of the production's pictures.
//
// Organic surfaces are built from TileNoise fields (seamless on the tile) and
// a tileable cell pattern; light sprites from radial profiles; titles from
// FreeType lettering with a soft glow. All seeds are constants.
#include "Textures.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "TileNoise.h"
#include "foundation/Random.h"

// ---------------------------------------------------------------------------
// Small helpers
// ---------------------------------------------------------------------------

static float clamp01(float v) { return v < 0 ? 0 : (v > 1 ? 1 : v); }
static float mix(float a, float b, float t) { return a + (b - a) * t; }
static float smoothstep(float e0, float e1, float x) {
  float t = clamp01((x - e0) / (e1 - e0));
  return t * t * (3 - 2 * t);
}
static const float kPi = 3.14159265358979f;

// Blurs a w x h field with three box passes of the given radius (close to a
// Gaussian of sigma ~ radius). Outside the field counts as 0, or as the
// opposite edge when wrap is set.
static void blur(std::vector<float>& field, int w, int h, int radius, bool wrap) {
  if (radius <= 0) return;
  const float norm = 1.0f / (2 * radius + 1);
  // One box pass along a line of n values, stride apart, as a running sum.
  std::vector<float> line;
  auto pass = [&](float* start, int n, int stride) {
    line.resize(n);
    for (int i = 0; i < n; ++i) line[i] = start[static_cast<ptrdiff_t>(i) * stride];
    auto fetch = [&](int i) -> float {
      if (wrap) return line[((i % n) + n) % n];
      return (i < 0 || i >= n) ? 0.0f : line[i];
    };
    float sum = 0;
    for (int k = -radius; k <= radius; ++k) sum += fetch(k);
    for (int i = 0; i < n; ++i) {
      start[static_cast<ptrdiff_t>(i) * stride] = sum * norm;
      sum += fetch(i + radius + 1) - fetch(i - radius);
    }
  };
  for (int round = 0; round < 3; ++round) {
    for (int y = 0; y < h; ++y) pass(&field[static_cast<size_t>(y) * w], w, 1);
    for (int x = 0; x < w; ++x) pass(&field[x], h, w);
  }
}

// A tileable cell pattern: one jittered point in each of n x n cells of the
// unit tile. nearest() gives the distances to the nearest and second nearest
// point (in tile units, across the seams) and the nearest point's cell.
class TileCells {
 public:
  TileCells(int n, uint32_t seed) : n_(n), points_(static_cast<size_t>(n) * n * 2), depth_(n * n) {
    crtSrand(seed);
    for (int i = 0; i < n * n; ++i) {
      points_[2 * i] = (i % n + 0.15f + 0.7f * static_cast<float>(randomUnit())) / n;
      points_[2 * i + 1] = (i / n + 0.15f + 0.7f * static_cast<float>(randomUnit())) / n;
      depth_[i] = 0.55f + 0.45f * static_cast<float>(randomUnit());
    }
  }
  void nearest(float u, float v, float& d1, float& d2, int& cell) const {
    const int cx = static_cast<int>(std::floor(u * n_));
    const int cy = static_cast<int>(std::floor(v * n_));
    d1 = d2 = 1e9f;
    cell = 0;
    for (int dy = -2; dy <= 2; ++dy)
      for (int dx = -2; dx <= 2; ++dx) {
        int gx = cx + dx, gy = cy + dy;
        int wx = ((gx % n_) + n_) % n_, wy = ((gy % n_) + n_) % n_;
        int i = wy * n_ + wx;
        float px = points_[2 * i] + static_cast<float>(gx - wx) / n_;
        float py = points_[2 * i + 1] + static_cast<float>(gy - wy) / n_;
        float d = std::sqrt((px - u) * (px - u) + (py - v) * (py - v));
        if (d < d1) {
          d2 = d1;
          d1 = d;
          cell = i;
        } else if (d < d2) {
          d2 = d;
        }
      }
  }
  float depth(int cell) const { return depth_[cell]; }
  int count() const { return n_; }

 private:
  int n_;
  std::vector<float> points_;
  std::vector<float> depth_;
};

// ---------------------------------------------------------------------------
// Material textures
// ---------------------------------------------------------------------------

Image makeHammeredMetal() {
  const int S = 512;
  TileFractal mottle(4, 5, 1101);
  TileFractal tint(2, 4, 1202);
  TileFractal brush(8, 4, 1303, 0.6f);
  TileFractal fine(64, 2, 1404);
  TileFractal warp(8, 3, 1505);
  TileCells dents(11, 1606);

  // Height of the hammer dents: each cell a shallow bowl of its own depth,
  // the bowls meeting in soft ridges.
  std::vector<float> height(static_cast<size_t>(S) * S);
  const float cellSize = 1.0f / dents.count();
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float u = (x + 0.5f) / S, v = (y + 0.5f) / S;
      float wu = u + 0.012f * warp.sample(u, v, 0.2f);
      float wv = v + 0.012f * warp.sample(u, v, 5.7f);
      float d1, d2;
      int cell;
      dents.nearest(wu, wv, d1, d2, cell);
      float r = d1 / cellSize;
      float bowl = r * r * dents.depth(cell);
      float ridge = smoothstep(0.0f, 0.12f, (d2 - d1) / cellSize);
      height[static_cast<size_t>(y) * S + x] = bowl * 0.8f + (1.0f - ridge) * 0.04f;
    }
  blur(height, S, S, 2, true);

  Image image(S, S);
  const float lx = -0.45f, ly = -0.55f, lz = 0.70f;  // light from the upper left
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float u = (x + 0.5f) / S, v = (y + 0.5f) / S;
      auto h = [&](int xx, int yy) {
        xx = (xx + S) % S;
        yy = (yy + S) % S;
        return height[static_cast<size_t>(yy) * S + xx];
      };
      float dx = (h(x + 1, y) - h(x - 1, y)) * 4.5f;
      float dy = (h(x, y + 1) - h(x, y - 1)) * 4.5f;
      float len = std::sqrt(dx * dx + dy * dy + 1.0f);
      float shade = (-dx * lx - dy * ly + lz) / len;  // ~0.7 on flat ground

      float tone = mottle.sample(u, v) * 1.6f;
      float streak = brush.sampleStretched(u, v, 1, 16);
      float grain = fine.sample(u, v);
      float base = 0.60f + 0.10f * tone + 0.09f * streak + 0.04f * grain;
      float lit = base * (0.45f + 0.75f * shade) + 0.22f * std::pow(clamp01(shade - 0.55f) / 0.45f, 6.0f);

      float warm = smoothstep(-0.15f, 0.45f, tint.sample(u, v) * 1.5f);
      float r = lit * mix(0.90f, 1.04f, warm);
      float g = lit * mix(0.95f, 0.95f, warm);
      float b = lit * mix(1.02f, 0.82f, warm);
      image.at(x, y) = {clamp01(r), clamp01(g), clamp01(b), 1};
    }

  // Fine scratches, mostly along the brushing; painted with wrap-around so the
  // tile stays seamless.
  crtSrand(1707);
  for (int i = 0; i < 36; ++i) {
    float x0 = static_cast<float>(randomUnit()) * S;
    float y0 = static_cast<float>(randomUnit()) * S;
    float angle = static_cast<float>(randomSigned()) * 0.35f;
    float length = 20.0f + static_cast<float>(randomUnit()) * 110.0f;
    float strength = (static_cast<float>(randomUnit()) < 0.6f ? 0.05f : -0.04f) *
                     (0.5f + 0.5f * static_cast<float>(randomUnit()));
    for (float t = 0; t < length; t += 1.0f) {
      float fade = std::sin(kPi * t / length);
      Rgba& p = image.at(static_cast<int>(std::floor(x0 + t * std::cos(angle))),
                         static_cast<int>(std::floor(y0 + t * std::sin(angle))));
      float d = strength * fade;
      p.r = clamp01(p.r + d);
      p.g = clamp01(p.g + d);
      p.b = clamp01(p.b + d);
    }
  }
  return image;
}

Image makeNoisyMetal(const Image& metal) {
  Image image = metal;
  const int S = image.width();
  TileFractal stains(4, 6, 2101);
  TileFractal blotch(16, 3, 2202);
  TileFractal pits(128, 1, 2303);
  TileFractal grain(256, 1, 2404);
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float u = (x + 0.5f) / S, v = (y + 0.5f) / S;
      Rgba& p = image.at(x, y);
      float lum = 0.30f * p.r + 0.55f * p.g + 0.15f * p.b;
      float s = smoothstep(-0.05f, 0.40f, stains.sample(u, v) * 1.7f + blotch.sample(u, v) * 0.5f);
      // Stained areas: darker, rust-brown.
      float rr = mix(p.r, lum * 0.92f, s * 0.7f);
      float gg = mix(p.g, lum * 0.72f, s * 0.7f);
      float bb = mix(p.b, lum * 0.55f, s * 0.7f);
      float dark = 1.0f - 0.45f * s;
      // Pitting: small dark specks all over, more of them in the stains.
      float pit = smoothstep(0.80f - 0.2f * s, 1.00f - 0.2f * s, pits.sample(u, v) * 1.4f);
      dark *= 1.0f - 0.5f * pit;
      float n = grain.sample(u, v) * 0.07f;
      image.at(x, y) = {clamp01(rr * dark + n), clamp01(gg * dark + n), clamp01(bb * dark + n), 1};
    }
  return image;
}

Image makeSolidNoiseBump() {
  const int S = 256;
  std::vector<TileNoise> fields;
  for (int k = 0; k < 6; ++k) fields.emplace_back(4 << k, 3101 + 17 * k);
  TileFractal cloud(4, 5, 3202);
  std::vector<float> value(static_cast<size_t>(S) * S);
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float u = (x + 0.5f) / S, v = (y + 0.5f) / S;
      float billow = 0, total = 0, amp = 1;
      for (const TileNoise& f : fields) {
        float p = static_cast<float>(f.period());
        billow += amp * std::fabs(f.sample(u * p, v * p, 0.5f));
        total += amp;
        amp *= 0.55f;
      }
      billow /= total;
      float c = 0.5f + 0.5f * cloud.sample(u, v) * 1.8f;
      value[static_cast<size_t>(y) * S + x] = smoothstep(0.18f, 0.82f, c * 0.75f + billow * 1.1f - 0.1f);
    }
  Image image(S, S);
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      auto h = [&](int xx, int yy) { return value[static_cast<size_t>((yy + S) % S) * S + (xx + S) % S]; };
      float g = h(x, y);
      // A touch of relief from the upper left, so the cloud reads as a surface.
      float relief = (h(x - 1, y - 1) - h(x + 1, y + 1)) * 1.5f;
      float out = clamp01(g * 0.92f + relief + 0.03f);
      image.at(x, y) = {out, out, out, 1};
    }
  return image;
}

Image makeFlat(int size, float value) {
  Image image(size, size);
  image.fill({value, value, value, 1});
  return image;
}

// ---------------------------------------------------------------------------
// Light sprites
// ---------------------------------------------------------------------------

// Calls f(dx, dy, r) for every pixel, with dx, dy from -1 to 1 (0 at the
// centre, 1 at the middle of an edge) and r their length; f returns colour.
template <class F>
static Image radialSprite(int size, F f) {
  Image image(size, size);
  for (int y = 0; y < size; ++y)
    for (int x = 0; x < size; ++x) {
      float dx = ((x + 0.5f) / size) * 2 - 1;
      float dy = ((y + 0.5f) / size) * 2 - 1;
      float r = std::sqrt(dx * dx + dy * dy);
      Rgba c = f(dx, dy, r);
      // Everything fades out before the border: the sprites are clamped and
      // added, and a lit edge would show as a hard frame.
      float window = smoothstep(0.98f, 0.72f, r);
      image.at(x, y) = {clamp01(c.r * window), clamp01(c.g * window), clamp01(c.b * window), 1};
    }
  return image;
}

Image makeHighlight() {
  return radialSprite(256, [](float, float, float r) {
    float i = 1.1f * std::exp(-(r / 0.16f) * (r / 0.16f)) + 0.42f * std::exp(-(r / 0.42f) * (r / 0.42f));
    return Rgba{i, i * 0.96f, i * 0.89f, 1};
  });
}

// "billbig" is a flare sprite and also the picture a light casts: the
// materials project it from the light over the whole shadow-map frustum,
// where it multiplies the light. So besides the hot core it carries a broad
// pool that stays bright out to about half the radius; a sprite that is all
// core would shrink every light to a pin-point.
Image makeGlowSprite() {
  return radialSprite(256, [](float dx, float dy, float r) {
    float core = 0.9f * std::exp(-(r / 0.08f) * (r / 0.08f));
    float pool = 0.9f * (1.0f - smoothstep(0.15f, 0.9f, r));
    float streak = 0.22f * std::exp(-(dy / 0.03f) * (dy / 0.03f)) * std::exp(-(dx / 0.55f) * (dx / 0.55f));
    float i = core + pool + streak;
    return Rgba{i, i * 0.98f, i * 0.95f, 1};
  });
}

Image makeHoledGlare() {
  TileNoise rays(16, 4101);
  // Dark holes: an inner ring of seven and an outer ring of five, like the
  // ghosts of an aperture.
  struct Hole {
    float x, y, radius;
  };
  std::vector<Hole> holes;
  crtSrand(4202);
  for (int i = 0; i < 7; ++i) {
    float a = (i + 0.2f * static_cast<float>(randomSigned())) * 2 * kPi / 7;
    holes.push_back({0.36f * std::cos(a), 0.36f * std::sin(a), 0.06f + 0.02f * static_cast<float>(randomUnit())});
  }
  for (int i = 0; i < 5; ++i) {
    float a = (i + 0.5f + 0.2f * static_cast<float>(randomSigned())) * 2 * kPi / 5;
    holes.push_back({0.62f * std::cos(a), 0.62f * std::sin(a), 0.045f + 0.02f * static_cast<float>(randomUnit())});
  }
  return radialSprite(256, [&](float dx, float dy, float r) {
    float core = 0.9f * std::exp(-(r / 0.06f) * (r / 0.06f));
    float halo = 0.45f * std::exp(-(r / 0.30f) * (r / 0.30f));
    float angle = std::atan2(dy, dx);
    float ray = rays.sample((angle / (2 * kPi) + 0.5f) * 16.0f, 0.5f, 0.5f);
    float rayLight = std::pow(clamp01(0.5f + 0.9f * ray), 5.0f) * 0.55f * std::exp(-r / 0.32f);
    // The ring splits its colours slightly, as a lens ghost does.
    auto ring = [&](float radius) { return 0.32f * std::exp(-((r - radius) / 0.03f) * ((r - radius) / 0.03f)); };
    float base = core + halo + rayLight;
    float hole = 1.0f;
    for (const Hole& h : holes) {
      float d = std::sqrt((dx - h.x) * (dx - h.x) + (dy - h.y) * (dy - h.y));
      hole *= 1.0f - 0.88f * smoothstep(h.radius, h.radius * 0.6f, d);
    }
    return Rgba{(base + ring(0.64f)) * hole, (base * 0.97f + ring(0.625f)) * hole,
                (base * 0.92f + ring(0.60f)) * hole, 1};
  });
}

// ---------------------------------------------------------------------------
// Motes
// ---------------------------------------------------------------------------

Image makeMote(int variant) {
  const int S = 128;
  TileNoise warpA(8, 5101 + variant * 100), warpB(8, 5202 + variant * 100), detail(32, 5303 + variant * 100);
  struct Speck {
    float x, y, radius;
  };
  std::vector<Speck> specks;
  if (variant == 0) {
    specks.push_back({0.0f, 0.0f, 0.46f});
    crtSrand(5404);
    for (int i = 0; i < 4; ++i) {
      float a = static_cast<float>(randomUnit()) * 2 * kPi;
      specks.push_back({0.62f * std::cos(a), 0.62f * std::sin(a), 0.06f + 0.05f * static_cast<float>(randomUnit())});
    }
  } else {
    crtSrand(5505);
    for (int i = 0; i < 9; ++i) {
      float a = static_cast<float>(randomUnit()) * 2 * kPi;
      float d = 0.55f * std::sqrt(static_cast<float>(randomUnit()));
      specks.push_back({d * std::cos(a), d * std::sin(a), 0.07f + 0.15f * static_cast<float>(randomUnit())});
    }
  }
  Image image(S, S);
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float dx = ((x + 0.5f) / S) * 2 - 1;
      float dy = ((y + 0.5f) / S) * 2 - 1;
      // Ragged outlines: the distance is bent by two noise fields.
      float wx = dx + 0.16f * warpA.sample(dx * 4 + 8, dy * 4 + 8, 0.3f);
      float wy = dy + 0.16f * warpB.sample(dx * 4 + 8, dy * 4 + 8, 0.7f);
      float alpha = 0;
      for (const Speck& s : specks) {
        float d = std::sqrt((wx - s.x) * (wx - s.x) + (wy - s.y) * (wy - s.y)) / s.radius;
        alpha = std::max(alpha, smoothstep(1.0f, 0.75f, d));
      }
      float grain = detail.sample(dx * 16 + 16, dy * 16 + 16, 0.5f);
      alpha *= 0.72f + 0.28f * smoothstep(-0.4f, 0.3f, grain);
      alpha *= smoothstep(0.97f, 0.85f, std::max(std::fabs(dx), std::fabs(dy)));  // clear border
      float shade = 0.85f + 0.15f * grain;
      image.at(x, y) = {clamp01(shade), clamp01(shade), clamp01(shade), clamp01(alpha)};
    }
  return image;
}

// ---------------------------------------------------------------------------
// Titles
// ---------------------------------------------------------------------------

// Places coverage centred in a w x h field; returns the field.
static std::vector<float> centred(const Coverage& c, int w, int h) {
  std::vector<float> field(static_cast<size_t>(w) * h, 0.0f);
  int ox = (w - c.width) / 2, oy = (h - c.height) / 2;
  for (int y = 0; y < c.height; ++y)
    for (int x = 0; x < c.width; ++x) {
      int fx = ox + x, fy = oy + y;
      if (fx >= 0 && fy >= 0 && fx < w && fy < h) field[static_cast<size_t>(fy) * w + fx] = c.at(x, y);
    }
  return field;
}

Image makeTitle(Typeface& face, const std::u32string& text, int width, int height, float emHeight,
                float widthStretch, float tracking, float glow) {
  // Shrink until the lettering with its glow fits with a clear margin: the
  // image is clamped, and ink at the border would smear to the quad's edge.
  // The glow spreads three blur radii; the margin keeps it off the border.
  const int glowRadius = std::max(2, height / 24);
  const int margin = std::max(height / 10, 3 * glowRadius + 3);
  Coverage c;
  for (float em = emHeight; em > 4; em -= 1.0f) {
    c = face.line(text, em * widthStretch, em, tracking * em / emHeight, 0);
    if (c.width <= width - 2 * margin && c.height <= height - 2 * margin) break;
  }
  std::vector<float> ink = centred(c, width, height);
  std::vector<float> halo = ink;
  blur(halo, width, height, glowRadius, false);
  Image image(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      size_t i = static_cast<size_t>(y) * width + x;
      image.at(x, y) = {1, 1, 1, clamp01(std::max(ink[i], halo[i] * glow))};
    }
  return image;
}

Image makeLogo(Typeface& face, bool onBlack, int size) {
  const int S = size;
  const float k = S / 512.0f;  // the layout of the 512 logo, scaled
  Coverage c;
  for (float em = 64; em > 8; em -= 1.0f) {
    c = face.line(U"OSTRAVINE", em, em, em * 0.22f, 0);
    if (c.width <= static_cast<int>(S * 0.84f)) break;
  }
  std::vector<float> ink = centred(c, S, S);
  // Two hairlines above and below the name, fading out at their ends.
  const float lineGap = c.height * 0.5f + 26.0f * k;
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      float dyTop = std::fabs((y + 0.5f) - (S * 0.5f - lineGap));
      float dyBottom = std::fabs((y + 0.5f) - (S * 0.5f + lineGap));
      float line = std::max(smoothstep(1.3f, 0.4f, dyTop), smoothstep(1.3f, 0.4f, dyBottom));
      float ends = smoothstep(0.44f, 0.30f, std::fabs((x + 0.5f) / S - 0.5f));
      float& v = ink[static_cast<size_t>(y) * S + x];
      v = std::max(v, line * ends * 0.85f);
    }
  std::vector<float> bloom = ink;
  blur(bloom, S, S, std::max(1, static_cast<int>(9 * k)), false);
  std::vector<float> haze = ink;
  blur(haze, S, S, std::max(1, static_cast<int>(28 * k)), false);
  Image image(S, S);
  for (int y = 0; y < S; ++y)
    for (int x = 0; x < S; ++x) {
      size_t i = static_cast<size_t>(y) * S + x;
      // The haze reaches far; it fades out before the border, which must stay
      // black for clamped, additive drawing.
      const int edge = std::min(std::min(x, y), std::min(S - 1 - x, S - 1 - y));
      float v = clamp01(ink[i] + bloom[i] * 0.55f + haze[i] * 0.5f) * smoothstep(0.0f, 48.0f * k, float(edge));
      if (onBlack)
        image.at(x, y) = {v * 0.93f, v * 0.97f, v, 1};
      else
        image.at(x, y) = {1, 1, 1, v};
    }
  return image;
}

Image inCentre(const Image& picture, int width, int height, const Rgba& surround) {
  Image canvas(width, height);
  canvas.fill(surround);
  const int ox = (width - picture.width()) / 2, oy = (height - picture.height()) / 2;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x) {
      const int cx = ox + x, cy = oy + y;
      if (cx >= 0 && cy >= 0 && cx < width && cy < height) canvas.at(cx, cy) = picture.at(x, y);
    }
  return canvas;
}
