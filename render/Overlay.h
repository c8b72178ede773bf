// Overlay: screen-space drawing over a finished picture (titles, flashes,
// fades), in the projection that the camera left applied. Coordinates are
// eye space with an identity modelview: quads at z = -1 with corners at +-h
// fill the view of a 90-degree camera at h = 1 and more at other fields of
// view. GL thread only. Draws no random numbers.
//
//   {
//     OverlayScope overlay(OverlayOptions{0.5f});   // flash quad half a unit nearer
//     glColor4f(1, 1, 1, flash);
//     screenQuad(1.0f);
//   }                                                // matrices popped here
#pragma once
#include <GL/glew.h>

struct OverlayOptions {
  float depth = 0.0f;          // glTranslatef(0, 0, depth) after the identity, when not 0
  bool textured = false;       // GL_TEXTURE_2D on (true) or off (false)
  bool alphaBlend = true;      // glBlendFunc(SRC_ALPHA, ONE_MINUS_SRC_ALPHA); false keeps the current function
  bool noCullNoDepth = false;  // also disables GL_CULL_FACE and GL_DEPTH_TEST
};

// Entering: disables GL_LIGHTING; pushes the projection matrix (unchanged)
// and the modelview matrix, loads the modelview identity, translates by
// `depth`; enables GL_BLEND (and sets the alpha blend function, by option);
// selects texture unit 0; disables GL_TEXTURE_CUBE_MAP and GL_COLOR_MATERIAL;
// GL_TEXTURE_2D and culling and depth test by option.
// Leaving: pops the modelview and the projection matrix and ends with
// GL_MODELVIEW current. The switches above stay as the overlay left them, as
// the production's overlays do: the frame's own passes set what they need.
class OverlayScope {
 public:
  explicit OverlayScope(const OverlayOptions& options = OverlayOptions());
  ~OverlayScope();
  OverlayScope(const OverlayScope&) = delete;
  OverlayScope& operator=(const OverlayScope&) = delete;
};

// One GL_QUADS quad at z with corners (-h, -h), (h, -h), (h, h), (-h, h) and
// no texture coordinates (flashes and fades).
void screenQuad(float h, float z = -1.0f);
// The same quad with texture coordinates (0, 1), (1, 1), (1, 0), (0, 0) at
// those corners: the image upright (titles).
void texturedQuad(float h, float z = -1.0f);

// Binds a title texture on the active unit with environment `environment`
// (GL_ADD, GL_MODULATE) and wrap GL_CLAMP in S and T.
void bindTitleTexture(GLuint texture, GLenum environment);
// GL_LINEAR min and mag filters on the bound 2D texture.
void linearFilters();

// A full-screen flash or fade: an OverlayScope at `depth`, texturing off,
// colour (r, g, b, a), screenQuad(1), then GL_TEXTURE_2D back on. Colours
// above 1 are clamped by GL.
void drawFlash(float r, float g, float b, float a, float depth);
