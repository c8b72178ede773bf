// Entry: the command line, the start-up order and the frame loop.
#pragma once

int ostravineMain(int argc, char** argv);
