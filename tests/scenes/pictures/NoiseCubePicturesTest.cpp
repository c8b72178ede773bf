// Frames of the three noise-cube scenes and of the landing after the rewind,
// played by the executable from each scene's start on a fixed clock and
// compared with reference pictures.
#include "ScenePictures.h"

using scenepictures::playAndCompare;

// Out of black under the title "ostlb": its layers spread wide at first, the
// title over black at 1 s, the picture coming through at 2.5 s, the cubes and
// the rolling camera without the overlay at 9.5 s.
TEST(ScenePictures, OpeningOutOfBlackWithTheTitle) {
  playAndCompare("bordersWithout", 5, 26500, {26700, 27500, 29000, 36000});
}

// The thread of cubes at 3 s, spreading at 13.2 s, then the cloud under the
// titles "mb" (20.7 s) and "cd" (24.2 s of scene time).
TEST(ScenePictures, ThreadThatSpreadsIntoACloudWithBothTitles) {
  playAndCompare("bordersWithin", 4, 44800, {47800, 58000, 65500, 69000});
}

// The tunnel at its start, in the middle as the glares swell, and at its end.
TEST(ScenePictures, TunnelAtStartMiddleAndEnd) { playAndCompare("bordersWithme", 3, 75000, {75200, 88000, 100600}); }

// Through the rewind: the picture passes SceneBordersWithout on its way back
// (262 s of music) and lands on it at 27.8 s of picture time. Its clock has
// run back below 0 in this short run, so the landing shows the scene's black
// opening under the spread title layers.
TEST(ScenePictures, TheRewindLandsOnTheOpeningScene) { playAndCompare("rewind", 5, 255600, {262000, 263400}); }
