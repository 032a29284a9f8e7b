// A line joins its head at compile time.
#include "client/call.h"

using namespace pvr;

void row(const char *text) { INFO(text); }
