// FlowCharts: the process-wide parameter flow charts and the script file.
//
// evaluateFlowCharts walks every parameter chart once per frame and writes
// each result into the float its Parameter is bound to; loadScript reads
// "ostravine.scr" (parameter defaults, pulses and charts). Until the block
// graph lands there are no charts: evaluation does nothing and the script
// reader leaves every default as the scenes set it.
#pragma once
#include <string>

void evaluateFlowCharts();

// Reads the script file; a missing file is a normal case (empty charts).
// Gives 0.
int loadScript(const std::string& path);
