// boneyshape: writes "boney.ac", the bone of the opening wall, as AC3D text.
//
//   boneyshape target.ac
//
// A lathe around the y axis from -1 to 1: a thin shaft with a knob at each
// end, the knobs widened in x. 13 columns per ring (the last repeats the
// first so the texture wraps cleanly), poles at y = -1 and y = 1. u runs
// round the shaft, v along it (v = 0 at the top). Quads are counter-clockwise
// seen from outside. The output is deterministic text.
#include <cmath>
#include <cstdio>

namespace {

struct Ring {
  float y, radius;
};

// The profile from bottom to top, symmetric about y = 0.
const Ring profile[] = {
    {-0.99f, 0.12f}, {-0.96f, 0.24f}, {-0.9f, 0.32f}, {-0.8f, 0.36f}, {-0.7f, 0.31f},
    {-0.6f, 0.22f},  {-0.45f, 0.16f}, {-0.25f, 0.14f}, {0.0f, 0.13f},  {0.25f, 0.14f},
    {0.45f, 0.16f},  {0.6f, 0.22f},   {0.7f, 0.31f},   {0.8f, 0.36f},  {0.9f, 0.32f},
    {0.96f, 0.24f},  {0.99f, 0.12f},
};
constexpr int ringCount = sizeof(profile) / sizeof(profile[0]);
constexpr int columns = 13;  // 12 sides and the repeated seam column

// The knobs are wider across x than through z.
float stretchX(float y) {
  const float a = std::fabs(y);
  if (a >= 0.6f) return 1.5f;
  if (a <= 0.45f) return 1.0f;
  return 1.0f + 0.5f * (a - 0.45f) / 0.15f;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: boneyshape target.ac\n");
    return 64;
  }
  FILE *out = std::fopen(argv[1], "w");
  if (!out) {
    std::fprintf(stderr, "boneyshape: %s cannot be written\n", argv[1]);
    return 2;
  }
  const int vertexCount = ringCount * columns + 2;
  const int bottom = ringCount * columns, top = bottom + 1;
  std::fprintf(out, "AC3Db\n");
  std::fprintf(out, "MATERIAL \"bone\" rgb 0.9 0.88 0.8  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.3 0.3 0.3  shi 20  trans 0\n");
  std::fprintf(out, "OBJECT world\nkids 1\nOBJECT poly\nname \"boney\"\nloc 0 0 0\ncrease 45.000000\n");
  std::fprintf(out, "numvert %d\n", vertexCount);
  for (int r = 0; r < ringCount; ++r)
    for (int c = 0; c < columns; ++c) {
      const float theta = 6.2831855f * float(c % (columns - 1)) / float(columns - 1);
      const float x = std::sin(theta) * profile[r].radius * stretchX(profile[r].y);
      const float z = std::cos(theta) * profile[r].radius;
      std::fprintf(out, "%.6f %.6f %.6f\n", x, profile[r].y, z);
    }
  std::fprintf(out, "0 -1 0\n0 1 0\n");
  auto u = [](int c) { return float(c) / float(columns - 1); };
  auto v = [](float y) { return (1.0f - y) * 0.5f; };
  const int quads = (ringCount - 1) * (columns - 1);
  const int fans = 2 * (columns - 1);
  std::fprintf(out, "numsurf %d\n", quads + fans);
  for (int r = 0; r + 1 < ringCount; ++r)
    for (int c = 0; c + 1 < columns; ++c) {
      const int a = r * columns + c, b = a + 1, cc = a + columns + 1, d = a + columns;
      std::fprintf(out, "SURF 0x10\nmat 0\nrefs 4\n");
      std::fprintf(out, "%d %.6f %.6f\n", a, u(c), v(profile[r].y));
      std::fprintf(out, "%d %.6f %.6f\n", b, u(c + 1), v(profile[r].y));
      std::fprintf(out, "%d %.6f %.6f\n", cc, u(c + 1), v(profile[r + 1].y));
      std::fprintf(out, "%d %.6f %.6f\n", d, u(c), v(profile[r + 1].y));
    }
  for (int c = 0; c + 1 < columns; ++c) {
    std::fprintf(out, "SURF 0x10\nmat 0\nrefs 3\n");
    std::fprintf(out, "%d 0.5 1\n%d %.6f %.6f\n%d %.6f %.6f\n", bottom, c + 1, u(c + 1),
                 v(profile[0].y), c, u(c), v(profile[0].y));
    const int last = (ringCount - 1) * columns;
    std::fprintf(out, "SURF 0x10\nmat 0\nrefs 3\n");
    std::fprintf(out, "%d 0.5 0\n%d %.6f %.6f\n%d %.6f %.6f\n", top, last + c, u(c),
                 v(profile[ringCount - 1].y), last + c + 1, u(c + 1), v(profile[ringCount - 1].y));
  }
  std::fprintf(out, "kids 0\n");
  return std::fclose(out) == 0 ? 0 : 2;
}
