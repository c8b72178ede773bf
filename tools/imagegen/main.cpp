// imagegen: writes every picture of the production into one folder.
//
//   imagegen <output folder> [<font folder>]
//
// The font folder holds the DejaVu faces (default
// /usr/share/fonts/truetype/dejavu). Output is deterministic: the same build
// writes the same bytes on every run. Exit status 0 on success, 1 on any
// failure, with a line on the error stream saying what failed.
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "DialogPicture.h"
#include "GlyphGrid.h"
#include "Image.h"
#include "Lettering.h"
#include "Textures.h"

namespace {

struct Writer {
  std::string folder;
  bool failed = false;
  void write(const std::string& name, const Image& image, int channels) {
    std::string error;
    if (!writePng(folder + "/" + name, image, channels, error)) {
      std::fprintf(stderr, "imagegen: %s\n", error.c_str());
      failed = true;
    }
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: imagegen <output folder> [<font folder>]\n");
    return 1;
  }
  Writer out{argv[1]};
  std::error_code made;
  std::filesystem::create_directories(out.folder, made);
  if (!std::filesystem::is_directory(out.folder, made)) {
    std::fprintf(stderr, "imagegen: cannot create folder %s\n", out.folder.c_str());
    return 1;
  }
  const std::string fonts = argc > 2 ? argv[2] : "/usr/share/fonts/truetype/dejavu";

  Typeface mono(fonts + "/DejaVuSansMono.ttf");
  Typeface sans(fonts + "/DejaVuSans.ttf");
  Typeface bold(fonts + "/DejaVuSans-Bold.ttf");
  Typeface serif(fonts + "/DejaVuSerif.ttf");
  for (Typeface* face : {&mono, &sans, &bold, &serif}) {
    if (!face->ok()) {
      std::fprintf(stderr, "imagegen: %s (package fonts-dejavu-core)\n", face->error().c_str());
      return 1;
    }
  }

  // Surfaces.
  const Image metal = makeHammeredMetal();
  out.write("hopmet.png", metal, 3);
  out.write("hopmetnoiseb.png", makeNoisyMetal(metal), 3);
  out.write("solidnoisebump.png", makeSolidNoiseBump(), 3);
  // black.png and bill.png are faces of one cube map: both square, same size.
  out.write("black.png", makeFlat(256, 0.0f), 3);
  out.write("white.png", makeFlat(64, 1.0f), 3);
  out.write("bill.png", makeHighlight(), 3);
  out.write("billbig.png", makeGlowSprite(), 3);
  out.write("bill_d2c_holes.png", makeHoledGlare(), 3);

  // The maker titles are shown on a 3 : 1 quad, so their 4 : 1 pictures hold
  // letters widened by 4 / 3.
  out.write("kestrin.png", makeTitle(sans, U"KESTRIN", 512, 128, 84, 4.0f / 3.0f, 16, 0.35f), 4);
  out.write("ks.png", makeTitle(serif, U"presents", 512, 128, 84, 4.0f / 3.0f, 6, 0.35f), 4);
  // The layered titles are seen from a third of a unit away through the
  // camera's 75 degrees: only about the middle fifth of the picture fills the
  // screen, so the lettering sits there, small, on a clear surround.
  const Rgba clear{1, 1, 1, 0};
  out.write("mb.png", inCentre(makeTitle(bold, U"mb", 128, 96, 80, 1.0f, 4, 0.3f), 512, 512, clear), 4);
  out.write("cd.png", inCentre(makeTitle(bold, U"cd", 128, 96, 80, 1.0f, 4, 0.3f), 512, 512, clear), 4);
  out.write("OSTL512.png", makeLogo(sans, false), 4);
  out.write("OSTL512b.png", inCentre(makeLogo(sans, true, 200), 512, 512, Rgba{0, 0, 0, 1}), 3);

  out.write("noisis2.png", makeMote(0), 4);
  out.write("noisis5.png", makeMote(1), 4);

  out.write("fonge3bb.png", buildGlyphGrid(mono, mainFontLayout()), 4);
  out.write("font2.png", buildGlyphGrid(mono, loadingFontLayout()), 4);

  // The settings dialog's picture, opaque like the dialog it fills.
  out.write("dialog1012.png", makeDialogPicture(sans, bold), 3);
  return out.failed ? 1 : 0;
}
