// The wire takes an int, and a bool is none.
#include "client/call.h"

using namespace pvr;

int row(bool handle)
{
    Call call(ENTRY("\n"));
    return call.remote(wire::play_stop, handle, service_result).transport_rule();
}
