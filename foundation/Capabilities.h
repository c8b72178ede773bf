// Capabilities: the process-wide OpenGL capability flags.
//
// The display start-up probes the driver once and writes these; the texture,
// render and editor layers read them. They are plain values so that every
// layer can see them without depending on the Demo (and so this header needs
// no OpenGL). Start values are those before any probe.
#pragma once

extern bool hasDepthTexture;        // GL_ARB_depth_texture; read by nothing
extern bool hasShadowExtension;     // GL_ARB_shadow; read by nothing
extern bool hasTextureRectangle;    // forced false whatever the probe says
extern bool useFramebufferObjects;  // off in this production: the entry clears it and nothing sets it
extern bool hasFramebufferObject;   // GL_EXT_framebuffer_object; the shadow maps use it
extern bool useVertexBuffers;       // always true after the probe
extern bool useDisplayLists;        // always false after the probe
extern bool hasBlendFuncSeparate;   // GL_EXT_blend_func_separate
extern bool hasVertexProgram;       // GL_ARB_vertex_program; read by nothing
extern bool hasFragmentProgram;     // GL_ARB_fragment_program; read by nothing
extern bool hasTextureEnvCombine;   // GL_EXT_texture_env_combine; read by nothing
extern bool hasMultitexture;        // GL_ARB_multitexture; required
extern int textureUnitCount;        // GL_MAX_TEXTURE_UNITS; logged only
