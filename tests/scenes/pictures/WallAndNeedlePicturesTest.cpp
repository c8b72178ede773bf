// Frames of the greetings, the wall and the folding sheet, played by the
// executable from each scene's start on a fixed clock and compared with
// reference pictures.
#include "ScenePictures.h"

using scenepictures::playAndCompare;

// The needles with the greetings climbing through the glow at 2 s and 7 s of
// scene time, and the fade to black nearly done at 18.6 s.
TEST(ScenePictures, NeedlesWithTheGreetingsInTheGlow) {
  playAndCompare("bordersWiththem", 4, 101000, {103000, 108000, 119600});
}

// The wall coming in from black (2.5 s), its soft shadows under the circling
// light, and near its end.
TEST(ScenePictures, WallOfSliversWithItsSoftShadows) {
  playAndCompare("bordersWithus", 4, 120000, {122500, 127000, 134500});
}

// The first flash fading over the sheet, the sheet between the flashes
// (7.5 s) and folded and torn later on.
TEST(ScenePictures, SheetUnfoldedAndFolded) {
  playAndCompare("bordersWithyou", 4, 165000, {165250, 172500, 176000, 187000});
}
