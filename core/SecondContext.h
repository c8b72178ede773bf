// SecondContext: the X11/GLX glue for a second GL context on another thread
// (the loader thread). Kept apart because X11's headers define names (Font)
// that clash with the engine's.
#pragma once

// The drawable of the GL context current on this thread, or null.
void* currentGLDrawable();

// Makes a new context, sharing nothing with the first, current on this
// thread for the given drawable. Gives an opaque handle, or null on failure.
void* makeSecondContextCurrent(void* drawable);

// Swaps the drawable's buffers from this thread.
void swapSecondContext(void* handle);

// Releases and destroys the context.
void destroySecondContext(void* handle);
