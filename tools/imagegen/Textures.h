// Textures: the production's pictures, one generator function each.
//
// Every function is a pure function of its constants and seeds: the same call
// gives the same pixels on every run. Sizes are in pixels. "Tileable" means
// the left and right, top and bottom edges meet without a seam (the scenes
// shift material textures by random offsets on REPEAT wrap).
#pragma once
#include "Image.h"
#include "Lettering.h"

// Material textures (stored opaque RGB).
Image makeHammeredMetal();      // "hopmet.png": 512 x 512, tileable metal, the most seen surface
Image makeNoisyMetal(const Image& metal);  // "hopmetnoiseb.png": the hammered metal weathered and stained
Image makeSolidNoiseBump();     // "solidnoisebump.png": 256 x 256, grey cloud noise that decides what glows

Image makeFlat(int size, float value);  // "black.png", "white.png"

// Light sprites (opaque RGB, black at every edge: clamped and added).
Image makeHighlight();   // "bill.png": 256 x 256, the lit face of the environment cube map
Image makeGlowSprite();  // "billbig.png": 256 x 256, soft flare blob
Image makeHoledGlare();  // "bill_d2c_holes.png": 256 x 256, glare with a ring and dark holes

// Motes (RGBA: white, the shape in alpha, transparent surround).
Image makeMote(int variant);  // 0: "noisis2.png" ragged blob, 1: "noisis5.png" cluster of specks

// Titles. Alpha carries the lettering; colour is white throughout.
// widthStretch widens the letters for quads that show the image narrower
// than its pixels (3 : 1 quad over a 4 : 1 image: 4 / 3).
Image makeTitle(Typeface& face, const std::u32string& text, int width, int height, float emHeight,
                float widthStretch, float tracking, float glow);
// The "Ostravine" logo, size x size: light lettering between two hairlines.
// onBlack: opaque on black (for additive drawing); otherwise on transparent.
Image makeLogo(Typeface& face, bool onBlack, int size = 512);
// `picture` in the middle of a width x height canvas of `surround`: for
// titles that a scene shows through a small window round the image's centre.
Image inCentre(const Image& picture, int width, int height, const Rgba& surround);
