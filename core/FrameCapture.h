// FrameCapture: writes what the frame left in the back buffer as a PNG file
// (RGBA, top row first), for the fixed-clock renders of tests and videos.
#pragma once
#include <cstdint>
#include <string>

// Reads width x height pixels from the lower-left corner of the current
// read buffer and writes them to path. Gives false (and prints why) when the
// file cannot be written.
bool captureFrame(const std::string& path, int32_t width, int32_t height);

// Makes sure frames can be written into folder: creates it when it is
// missing (its parent must exist). Gives "" when it is a writable folder,
// else what is wrong, for one line of message.
std::string prepareCaptureFolder(const std::string& folder);
