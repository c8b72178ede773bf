#include "flow/FlowCharts.h"

void evaluateFlowCharts() {}

int loadScript(const std::string&) { return 0; }
