#include "core/Entry.h"

int ostravineMain(int argc, char** argv) { return 0; }
