#include "editor/EditorScreens.h"

void buildEditorWindows() {}
