// FlowChartView: the flow charts as an editable picture. Block boxes are
// windows under the flow chart area; charts are laid out from right to left
// (the parameter sink at the right, its sources to the left, the tree growing
// downwards); connections are curves with arrow heads; the box handlers
// connect, change values, open the pulse properties and delete.
//
// Keys read at a press: left control starts a connection, left shift a value
// change (or opens a pulse's properties), delete deletes the box, or the
// curve under the mouse. Refusals are timed messages.
#pragma once
#include <string>
#include <vector>

class Block;
class EditorWindow;

// Sets the block graph's box hooks, the curve drawing of the windows and the
// press on a curve to this view's. buildEditorWindows calls it.
void installFlowChartView();

// ---- Editing state ----------------------------------------------------------
extern EditorWindow* pressedWindow;  // window of the last press
extern Block* pressedBlock;          // block of pressedWindow; otherwise keeps the previous one
extern int dragMode;                 // 0: a press means connecting; 1: changing a value
extern float dragStartValue;         // the value at the start of a change
extern int connectSourcePick;        // box where a connection starts; 0 for none
extern int connectTargetPick;        // box where the mouse was released

// The chart filters (only one on at a time; all may be off) and the
// parameter list filters.
extern bool scenesFilterAll, scenesFilterVisible, scenesFilterSelected;
extern bool listFilterIn, listFilterOut, listFilterVisible;

// Names of the scenes active at the current demo time, for the "Visible"
// filters; the host refreshes it.
extern std::vector<std::string> activeSceneNames;

// Top colours of the filter buttons.
void filterButtonColor(EditorWindow* button, bool on);

// Sets selectedWindow and pressedWindow to the window of pickedName,
// connectSourcePick to pickedName, and finds pressedBlock. Gives 1.
int updateSelection();
// Shows the charts the filter admits and places their boxes.
void layoutFlowCharts();
// Applies the list filters and lays out the parameter list.
void refreshParameterList();
// The parameter list knob's onDrag: the list's scroll from the knob's place.
void scrollParameterListFromKnob(EditorWindow* knob);

// Filter button handlers (onPress of the six filter buttons).
int toggleScenesFilterAll(EditorWindow* button);
int toggleScenesFilterVisible(EditorWindow* button);
int toggleScenesFilterSelected(EditorWindow* button);
int toggleListFilterIn(EditorWindow* button);
int toggleListFilterOut(EditorWindow* button);
int toggleListFilterVisible(EditorWindow* button);

// Toolbox and parameter list press handlers: create a block from the window
// that was pressed.
int pressCreateBlock(EditorWindow* toolWindow);

// Draws the curves of a window's visible children, with their arrow heads.
void drawFlowConnections(EditorWindow* parent);
