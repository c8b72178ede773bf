// EditorScreens: the editor's windows (help screens, flow chart screen and
// the template windows that new blocks are made from). They are built once
// at start and lie idle: the production's frame loop neither draws them nor
// feeds them input.
#pragma once

// Builds every editor window; called once after the Demo has its scenes.
void buildEditorWindows();
