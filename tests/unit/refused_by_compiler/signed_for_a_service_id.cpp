// Service ids are unsigned; a signed one would change its value.
#include "client/call.h"

using namespace pvr;

int row(std::int64_t service_id)
{
    Call call(ENTRY("\n"));
    int recording = 0;
    return call.remote(wire::is_recording, service_id, &recording).transport_rule();
}
