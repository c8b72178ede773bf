#include <gtest/gtest.h>

#include "foundation/Capabilities.h"

// Before any probe every flag is off: the display start-up is what sets them.
TEST(Capabilities, StartOff) {
  EXPECT_FALSE(useFramebufferObjects);
  EXPECT_FALSE(hasMultitexture);
  EXPECT_EQ(textureUnitCount, 0);
}
