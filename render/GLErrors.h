// GLErrors: OpenGL errors reported where they are found, at pass boundaries.
//
// checkGLErrors(boundary) takes every pending glGetError code and writes one
// line per code to the error stream:
//   GL error GL_INVALID_ENUM (0x0500) after <boundary>
// Checks run in debug builds (NDEBUG not defined) and wherever the
// environment has OSTRAVINE_GL_ERRORS set to anything but "0" (the tests set
// it); elsewhere a check is one test of a flag and leaves the errors pending.
// The passes call it as they end: the World's passes, the glow pass, the
// frame composition's steps and the grain overlay. GL thread only.
#pragma once
#include <cstdint>
#include <vector>

// Whether checks run: decided at the first use from the build and the
// environment; setGLErrorChecks overrides that.
bool glErrorChecksOn();
void setGLErrorChecks(bool on);

// Reports and clears every pending error. Gives the number found (0 when
// checks are off).
int32_t checkGLErrors(const char* boundary);

// Takes, unreported, the errors that calls GL refuses on purpose have just
// raised (calls the system keeps as it has them). Check the boundary before
// such calls, so that only their own errors are dropped. Gives the number
// dropped (0 when checks are off: the errors then stay pending, unread).
int32_t dropRefusedCallErrors();

// Errors reported since the process started.
int32_t reportedGLErrorCount();

// The codes reported since the last call, oldest first: tests read them
// together with those still pending, so a check at a boundary hides nothing.
std::vector<uint32_t> takeReportedGLErrors();

// "GL_INVALID_ENUM" and so on; "unknown" for codes outside OpenGL 1.x.
const char* glErrorName(uint32_t code);
