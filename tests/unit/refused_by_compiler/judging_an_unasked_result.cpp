// The result went to the caller, so no rule may judge it.
#include "client/call.h"

using namespace pvr;

int row(std::uint64_t service_id)
{
    Call call(ENTRY("\n"));
    int recording = 0;
    return call.remote(wire::is_recording, service_id, &recording).zero_rule();
}
