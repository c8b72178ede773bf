// Demo: music and clocks. The music position in milliseconds is the master
// clock when a file is loaded; otherwise playTimer stands in with the same
// operations, so everything else behaves the same without music.
#include <SDL/SDL.h>

#include "core/Demo.h"
#include "core/MusicStream.h"

int32_t Demo::initAudio() {
  if (audioStarted) return 0;
  music = new MusicStream();
  audioStarted = true;
  return 1;
}

int32_t Demo::loadMusic(const std::string& path) {
  initAudio();
  if (musicLoaded) return 0;
  if (!music->open(path)) return 0;  // opened paused at position 0: silent until start()
  endTime = int32_t(music->lengthMs());
  musicLoaded = true;
  return 1;
}

void Demo::start() {
  frameTimer.reset();
  if (musicLoaded)
    music->setPaused(false);
  else
    playTimer.start();
  currentTime = previousTime = position();
  started = true;
}

void Demo::pause() {
  if (musicLoaded)
    music->setPaused(true);
  else
    playTimer.pause();
  paused = true;
}

void Demo::resume() {
  currentTime = previousTime = rawPosition();
  if (musicLoaded)
    music->setPaused(false);
  else
    playTimer.resume();
  paused = false;
}

int32_t Demo::rawPosition() { return musicLoaded ? int32_t(music->positionMs()) : playTimer.elapsed(); }

int32_t Demo::position() {
  currentTime = rawPosition();
  return currentTime;
}

int32_t Demo::seek(int32_t deltaMs) {
  int32_t p = rawPosition() + deltaMs;
  if (endTime != 0 && p > endTime) p = endTime;
  if (p < 0) p = 0;
  currentTime = p;
  if (musicLoaded)
    music->setPositionMs(uint32_t(p));
  else
    playTimer.setElapsed(p);
  seeked = true;
  return 1;
}

int32_t Demo::setPosition(int32_t ms) {
  int32_t result = 1;
  if (endTime != 0 && ms > endTime) {
    ms = endTime;
    result = 0;
  } else if (ms < 0) {
    ms = 0;
    result = 0;
  }
  currentTime = ms;
  if (musicLoaded)
    music->setPositionMs(uint32_t(ms));
  else
    playTimer.setElapsed(ms);
  seeked = true;
  return result;
}

void Demo::spectrum(float* values, int32_t numValues, int32_t channelOffset, int32_t windowType) {
  if (music) {
    music->spectrum(values, numValues, channelOffset, windowType);
  } else {
    for (int32_t i = 0; i < numValues; ++i) values[i] = 0;
  }
}
