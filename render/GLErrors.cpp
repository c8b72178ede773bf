#include "render/GLErrors.h"

#include <GL/glew.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int checksState = -1;  // -1 not decided yet, 0 off, 1 on
int32_t reportedCount = 0;
std::vector<uint32_t> reportedSinceTaken;  // bounded by the tests that take them

bool decideChecks() {
#ifndef NDEBUG
  return true;
#else
  const char* setting = std::getenv("OSTRAVINE_GL_ERRORS");
  return setting && *setting && std::strcmp(setting, "0") != 0;
#endif
}

}  // namespace

bool glErrorChecksOn() {
  if (checksState < 0) checksState = decideChecks() ? 1 : 0;
  return checksState == 1;
}

void setGLErrorChecks(bool on) { checksState = on ? 1 : 0; }

const char* glErrorName(uint32_t code) {
  switch (code) {
    case GL_INVALID_ENUM: return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE: return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION: return "GL_INVALID_OPERATION";
    case GL_STACK_OVERFLOW: return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW: return "GL_STACK_UNDERFLOW";
    case GL_OUT_OF_MEMORY: return "GL_OUT_OF_MEMORY";
    case GL_INVALID_FRAMEBUFFER_OPERATION_EXT: return "GL_INVALID_FRAMEBUFFER_OPERATION";
    default: return "unknown";
  }
}

int32_t checkGLErrors(const char* boundary) {
  if (!glErrorChecksOn()) return 0;
  int32_t found = 0;
  // A driver keeps at most one flag per kind of error; the bound only guards
  // against one that keeps answering without a context.
  for (int i = 0; i < 16; ++i) {
    const GLenum code = glGetError();
    if (code == GL_NO_ERROR) break;
    fprintf(stderr, "GL error %s (0x%04x) after %s\n", glErrorName(code), unsigned(code), boundary);
    if (reportedSinceTaken.size() < 1024) reportedSinceTaken.push_back(code);
    ++found;
  }
  reportedCount += found;
  return found;
}

int32_t dropRefusedCallErrors() {
  if (!glErrorChecksOn()) return 0;
  int32_t dropped = 0;
  while (dropped < 16 && glGetError() != GL_NO_ERROR) ++dropped;
  return dropped;
}

int32_t reportedGLErrorCount() { return reportedCount; }

std::vector<uint32_t> takeReportedGLErrors() {
  std::vector<uint32_t> codes;
  codes.swap(reportedSinceTaken);
  return codes;
}
