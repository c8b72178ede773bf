#include "foundation/Random.h"

namespace {
uint32_t state = 1;  // never seeded: the runtime starts from 1
}

void crtSrand(uint32_t seed) { state = seed; }

int crtRand() {
  state = state * 214013u + 2531011u;  // unsigned: wraps modulo 2^32 by definition
  return int((state >> 16) & 0x7FFFu);
}

uint32_t crtRandState() { return state; }

double randomUnit() { return crtRand() / 32767.0; }

double randomSigned() { return (crtRand() / 32767.0 - 0.5) * 2; }
