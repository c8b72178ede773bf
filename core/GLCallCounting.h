// GLCallCounting: counting GL entry points of the executable (see the .cpp).
#pragma once

// Puts the counting draw entry behind GLEW's glDrawRangeElements pointer.
// Call once after GLEW is ready, before the profile is turned on.
void installDrawCounting();
