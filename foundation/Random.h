// Random: the one global random generator of the system, and its two helpers.
//
// Every scene's geometry is drawn from seeded sequences of this generator, so
// it reproduces the Microsoft C runtime's rand/srand exactly, whatever C
// library this build runs on:
//   state x (32 bits): x = x * 214013 + 2531011;  output (x >> 16) & 0x7FFF
//   RAND_MAX 32767; a generator that was never seeded starts from x = 1.
// The C library's own rand() must never be called anywhere in this system.
// One global state, main thread only; the order of draws is part of each
// scene's definition.
#pragma once
#include <cstdint>

constexpr int crtRandMax = 32767;

// srand: sets the state to seed.
void crtSrand(uint32_t seed);

// rand: advances the state and gives 15 bits, 0 to 32767.
int crtRand();

// The raw 32-bit state, for tests that check how many numbers were drawn.
uint32_t crtRandState();

// crtRand() / 32767.0, from 0 to 1 inclusive. Computed in double, the
// platform's widest float of the original build, before any narrowing.
double randomUnit();

// (crtRand() / 32767.0 - 0.5) * 2, from -1 to 1 inclusive.
double randomSigned();
