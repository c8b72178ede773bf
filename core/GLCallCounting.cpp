// GLCallCounting: the executable's counting GL entry points for --benchmark.
//
// The executable is linked with --wrap for the GL 1.1 calls below, so every
// call of them anywhere in the program comes here first; GL 1.2 and later
// calls go through GLEW's pointers, and installDrawCounting swaps the ones
// that draw. Each entry point passes the call on unchanged; only while the
// frame profile is on does it count (draw calls, triangles, pixels copied).
#include "core/GLCallCounting.h"

#include <GL/glew.h>

#include "render/FrameProfile.h"

extern "C" {
void __real_glBegin(GLenum mode);
void __real_glEnd();
void __real_glVertex2f(GLfloat x, GLfloat y);
void __real_glVertex3f(GLfloat x, GLfloat y, GLfloat z);
void __real_glDrawArrays(GLenum mode, GLint first, GLsizei count);
void __real_glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices);
void __real_glCallList(GLuint list);
void __real_glCopyTexSubImage2D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y,
                                GLsizei width, GLsizei height);
void __real_glCopyTexImage2D(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                             GLsizei height, GLint border);
}

namespace {

GLenum blockMode = 0;
uint64_t blockVertices = 0;
PFNGLDRAWRANGEELEMENTSPROC realDrawRangeElements = nullptr;

void GLAPIENTRY countingDrawRangeElements(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type,
                                          const void* indices) {
  if (frameprofile::on) frameprofile::countDraw(frameprofile::trianglesOf(mode, uint64_t(count)));
  realDrawRangeElements(mode, start, end, count, type, indices);
}

}  // namespace

extern "C" {

void __wrap_glBegin(GLenum mode) {
  blockMode = mode;
  blockVertices = 0;
  __real_glBegin(mode);
}

void __wrap_glEnd() {
  if (frameprofile::on) frameprofile::countDraw(frameprofile::trianglesOf(blockMode, blockVertices));
  __real_glEnd();
}

void __wrap_glVertex2f(GLfloat x, GLfloat y) {
  ++blockVertices;
  __real_glVertex2f(x, y);
}

void __wrap_glVertex3f(GLfloat x, GLfloat y, GLfloat z) {
  ++blockVertices;
  __real_glVertex3f(x, y, z);
}

void __wrap_glDrawArrays(GLenum mode, GLint first, GLsizei count) {
  if (frameprofile::on) frameprofile::countDraw(frameprofile::trianglesOf(mode, uint64_t(count)));
  __real_glDrawArrays(mode, first, count);
}

void __wrap_glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices) {
  if (frameprofile::on) frameprofile::countDraw(frameprofile::trianglesOf(mode, uint64_t(count)));
  __real_glDrawElements(mode, count, type, indices);
}

void __wrap_glCallList(GLuint list) {
  if (frameprofile::on) frameprofile::countDraw(0);  // what a list holds is not known here
  __real_glCallList(list);
}

void __wrap_glCopyTexSubImage2D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y,
                                GLsizei width, GLsizei height) {
  if (frameprofile::on) frameprofile::countCopy(x, y, width, height);
  __real_glCopyTexSubImage2D(target, level, xoffset, yoffset, x, y, width, height);
}

void __wrap_glCopyTexImage2D(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                             GLsizei height, GLint border) {
  if (frameprofile::on) frameprofile::countCopy(x, y, width, height);
  __real_glCopyTexImage2D(target, level, internalformat, x, y, width, height, border);
}

}  // extern "C"

void installDrawCounting() {
  if (glDrawRangeElements && glDrawRangeElements != countingDrawRangeElements) {
    realDrawRangeElements = glDrawRangeElements;
    glDrawRangeElements = countingDrawRangeElements;
  }
}
