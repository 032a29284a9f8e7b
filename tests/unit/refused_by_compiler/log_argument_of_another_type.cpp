// The compiler reads a line like any printf.
#include "client/call.h"

using namespace pvr;

void row(const char *name) { INFO("[handle:%d]\n", name); }
