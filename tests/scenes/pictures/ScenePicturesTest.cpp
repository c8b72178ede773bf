// Frames of the opening, the cube field and the rolling scenes, each played
// by the executable from its start on a fixed clock, compared with reference
// pictures.
#include "ScenePictures.h"

using scenepictures::playAndCompare;

// The wall under the wandering light; then before, during and after each
// maker title ("kestrin" at 15.8 s, "ks" at 21.4 s).
TEST(ScenePictures, OpeningWithTheMakerTitles) {
  playAndCompare("performe", 10, 0, {6000, 15000, 16000, 17000, 21000, 22000, 23500});
}

// Just after the first flash, the swarm before the slab, and the end.
TEST(ScenePictures, CubeField) { playAndCompare("bordersMeetus", 5, 135000, {135800, 145000, 153000, 164500}); }

// The rolling bars: early, on the swing, and near the end.
TEST(ScenePictures, RollingBars) {
  playAndCompare("bordersRolin", 10, 187300, {188000, 195000, 205000, 216000}, "--size 256x144");
}

// The column of slats, ten seconds into its own time from the first frame.
TEST(ScenePictures, ColumnOfSlats) {
  playAndCompare("bordersRolout", 10, 217500, {219000, 225000, 232000}, "--size 256x144");
}

// The grid coming apart, the flash fading into the title, the wobble dying
// away, and the fade to black behind the title.
TEST(ScenePictures, TheEnd) {
  playAndCompare("bordersRollus", 10, 232500, {236000, 244000, 248500, 250000, 254500}, "--size 256x144");
}
