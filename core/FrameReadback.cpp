// FrameReadback: two pixel pack buffers used in turn, or plain glReadPixels.
// The pack buffer binding is back at 0 whenever a call returns, since other
// readers (frame capture, slot copies) read into client memory.
#include "core/FrameReadback.h"

#include <GL/glew.h>

FrameReadback::FrameReadback(int32_t width_, int32_t height_) : width(width_), height(height_) {
  if (GLEW_VERSION_2_1 || GLEW_ARB_pixel_buffer_object) {
    const GLsizeiptr bytes = GLsizeiptr(width) * height * 4;
    while (glGetError() != GL_NO_ERROR) {
    }  // earlier errors are not ours to judge
    glGenBuffers(2, buffers);
    for (unsigned b : buffers) {
      glBindBuffer(GL_PIXEL_PACK_BUFFER, b);
      glBufferData(GL_PIXEL_PACK_BUFFER, bytes, nullptr, GL_STREAM_READ);
    }
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    if (glGetError() != GL_NO_ERROR) {
      // Too large for the driver, or refused: read the plain way.
      glDeleteBuffers(2, buffers);
      buffers[0] = buffers[1] = 0;
    }
  }
  if (!usesPixelBuffers()) client.resize(size_t(width) * size_t(height) * 4);
}

FrameReadback::~FrameReadback() {
  if (usesPixelBuffers()) glDeleteBuffers(2, buffers);
}

bool FrameReadback::readFrame(const Sink& sink) {
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  if (!usesPixelBuffers()) {
    glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE, client.data());
    return sink(client.data());
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, buffers[next]);
  glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE, nullptr);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  const bool hadPending = pending;
  pending = true;
  next = 1 - next;
  // The buffer that now comes next holds the read of the previous frame.
  return hadPending ? deliver(buffers[next], sink) : true;
}

bool FrameReadback::flush(const Sink& sink) {
  if (!usesPixelBuffers() || !pending) return true;
  pending = false;
  return deliver(buffers[1 - next], sink);
}

bool FrameReadback::deliver(unsigned buffer, const Sink& sink) {
  glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
  const void* pixels = glMapBuffer(GL_PIXEL_PACK_BUFFER, GL_READ_ONLY);
  bool ok = false;
  if (pixels) {
    ok = sink(static_cast<const uint8_t*>(pixels));
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  return ok;
}
