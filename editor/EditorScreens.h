// EditorScreens: the concrete windows of the editor, built once at start.
//
// Two full screens: the flow chart screen (F3) with the four tool panels
// beside it, and the quick info screen (F1). Sizes and positions are in
// pixels of a fixed 800 x 600 layout (W and H), centred on the display
// whatever its resolution. All windows have a top alpha of 0.5 and a bottom
// alpha of 0.85. At the end of the construction the panels and both screens
// are hidden, the top-level list is rebuilt and the selection cleared; the
// script is loaded after it, since blocks take their looks and their bound
// floats from the tool buttons and the parameter entries.
#pragma once
#include <string>
#include <vector>

class EditorWindow;
class Scene;

// Builds every editor window for these scenes (list order; each scene's
// parameters in registration order). demoTimeSeconds is the clock that
// "demotime" blocks read, in seconds. Called once, after the Demo has its scenes.
void buildEditorWindows(const std::vector<Scene*>& scenes, float* demoTimeSeconds);

// The onPress of a panel title: folds or unfolds the panel, keeping the title
// where it stands on the screen. Gives 0.
int togglePanelFold(EditorWindow* panel, EditorWindow* title);

// The quick info text, the definition of the editing keys.
const std::string& helpText();

// The windows, once built.
extern EditorWindow* flowScreen;
extern EditorWindow* flowTitle;
extern EditorWindow* flowArea;   // parent of every block box
extern EditorWindow* filterPanel;
extern EditorWindow* sourcePanel;
extern EditorWindow* functionPanel;
extern EditorWindow* parameterPanel;
extern EditorWindow* parameterList;
extern EditorWindow* parameterScrollKnob;
extern EditorWindow* infoScreen;
extern EditorWindow* infoTitle;
extern EditorWindow* infoText;
extern EditorWindow* infoScrollUp;
extern EditorWindow* infoScrollDown;
extern std::vector<EditorWindow*> parameterEntries;  // in., out. of each parameter, in order
extern std::vector<EditorWindow*> filterButtons;     // All, Visible, Selected, In, Out, Visible

// Real seconds between the last two frames; the info scroll buttons move by it.
extern float editorFrameSeconds;

// ---- Screens ---------------------------------------------------------------
// F1 shows or hides the quick info screen; F3 the flow chart screen with its
// four panels. The two exclude each other: showing one hides the other.
void toggleInfoScreen();
void toggleFlowScreen();
// Hides both screens and the panels.
void hideEditorScreens();
