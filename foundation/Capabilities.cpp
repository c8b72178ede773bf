#include "foundation/Capabilities.h"

bool hasDepthTexture = false;
bool hasShadowExtension = false;
bool hasTextureRectangle = false;
bool useFramebufferObjects = false;
bool hasFramebufferObject = false;
bool useVertexBuffers = false;
bool useDisplayLists = false;
bool hasBlendFuncSeparate = false;
bool hasVertexProgram = false;
bool hasFragmentProgram = false;
bool hasTextureEnvCombine = false;
bool hasMultitexture = false;
int textureUnitCount = 0;
