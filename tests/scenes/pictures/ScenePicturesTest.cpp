// Frames of the opening and of the cube field, played by the executable from
// each scene's start on a fixed clock (so that what is integrated over steps,
// the motes, is the same every run), compared with reference pictures.
#include "ScenePictures.h"

using scenepictures::playAndCompare;

// The wall under the wandering light; then before, during and after each
// maker title ("kestrin" at 15.8 s, "ks" at 21.4 s).
TEST(ScenePictures, OpeningWithTheMakerTitles) {
  playAndCompare("performe", 10, 0, {6000, 15000, 16000, 17000, 21000, 22000, 23500});
}

// Just after the first flash, the swarm before the slab, and the end.
TEST(ScenePictures, CubeField) { playAndCompare("bordersMeetus", 5, 135000, {135800, 145000, 153000, 164500}); }
