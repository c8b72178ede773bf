#include "core/FrameCapture.h"

#include <GL/glew.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <cstdio>
#include <cstring>
#include <vector>

bool captureFrame(const std::string& path, int32_t width, int32_t height) {
  std::vector<uint8_t> bottomUp(size_t(width) * height * 4);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
  // The screen shows no alpha: the file is opaque, as the picture is seen.
  for (size_t i = 3; i < bottomUp.size(); i += 4) bottomUp[i] = 255;
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = png_uint_32(width);
  image.height = png_uint_32(height);
  image.format = PNG_FORMAT_RGBA;
  // A negative row stride writes the GL rows (bottom first) top first.
  const png_int_32 stride = -png_int_32(width * 4);
  if (!png_image_write_to_file(&image, path.c_str(), 0, bottomUp.data(), stride, nullptr)) {
    fprintf(stderr, "Error: cannot write frame %s: %s\n", path.c_str(), image.message);
    return false;
  }
  return true;
}

std::string prepareCaptureFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST)
    return "cannot make the folder " + folder + ": " + strerror(errno);
  struct stat st;
  if (stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return folder + " is not a folder";
  if (access(folder.c_str(), W_OK | X_OK) != 0) return "cannot write into " + folder + ": " + strerror(errno);
  return "";
}
