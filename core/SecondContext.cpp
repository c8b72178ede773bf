#include "core/SecondContext.h"

#include <GL/glx.h>

#include <cstdint>

namespace {
struct Handle {
  Display* display;
  GLXDrawable drawable;
  GLXContext context;
};
}  // namespace

void* currentGLDrawable() { return reinterpret_cast<void*>(uintptr_t(glXGetCurrentDrawable())); }

void* makeSecondContextCurrent(void* drawableHandle) {
  Display* display = glXGetCurrentDisplay();
  if (!display) display = XOpenDisplay(nullptr);
  const GLXDrawable drawable = GLXDrawable(reinterpret_cast<uintptr_t>(drawableHandle));
  if (!display || !drawable) return nullptr;
  int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8, None};
  XVisualInfo* visual = glXChooseVisual(display, DefaultScreen(display), attributes);
  if (!visual) return nullptr;
  GLXContext context = glXCreateContext(display, visual, nullptr, True);
  XFree(visual);
  if (!context) return nullptr;
  if (!glXMakeCurrent(display, drawable, context)) {
    glXDestroyContext(display, context);
    return nullptr;
  }
  return new Handle{display, drawable, context};
}

void swapSecondContext(void* handle) {
  Handle* h = static_cast<Handle*>(handle);
  glXSwapBuffers(h->display, h->drawable);
}

void destroySecondContext(void* handle) {
  Handle* h = static_cast<Handle*>(handle);
  glXMakeCurrent(h->display, None, nullptr);
  glXDestroyContext(h->display, h->context);
  delete h;
}
