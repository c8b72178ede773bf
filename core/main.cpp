// The process entry: everything happens in ostravineMain (core/Entry.cpp).
#include "core/Entry.h"

int main(int argc, char** argv) { return ostravineMain(argc, argv); }
