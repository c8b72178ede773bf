// FrameReadback: the pixels of each finished frame, read back from the
// current read buffer without stalling the frame where the driver allows.
//
// With pixel buffer objects (OpenGL 2.1 or GL_ARB_pixel_buffer_object) the
// read of frame n is only started when frame n is done, into one of two
// buffers, and its pixels are taken one frame later, when frame n + 1 has
// been drawn: by then the copy has long finished, and mapping the buffer
// does not wait. Without them every read is immediate.
//
// Pixels are 4 bytes each in the order blue, green, red, unused ("bgr0"),
// rows bottom first, from the lower-left width x height of the buffer.
#pragma once
#include <cstdint>
#include <functional>
#include <vector>

class FrameReadback {
 public:
  FrameReadback(int32_t width, int32_t height);
  ~FrameReadback();
  FrameReadback(const FrameReadback&) = delete;
  FrameReadback& operator=(const FrameReadback&) = delete;

  using Sink = std::function<bool(const uint8_t* pixels)>;

  // Reads the frame that stands in the read buffer now. The sink receives
  // the frame that is ready: with pixel buffers the one read before this
  // (none the first time), else this one. The sink's false is passed on.
  bool readFrame(const Sink& sink);

  // Hands the frame still waiting in a pixel buffer, if any, to the sink.
  bool flush(const Sink& sink);

  bool usesPixelBuffers() const { return buffers[0] != 0; }

 private:
  bool deliver(unsigned buffer, const Sink& sink);

  int32_t width;
  int32_t height;
  unsigned buffers[2] = {0, 0};
  int next = 0;              // the buffer that the next read goes into
  bool pending = false;      // the other buffer holds a read not yet delivered
  std::vector<uint8_t> client;  // the immediate path's memory
};
