// What the refused ones look like when they are right.
#include "client/call.h"

using namespace pvr;

int row(int handle, std::uint64_t service_id)
{
    Call call(ENTRY("[handle:%d]\n", handle));
    int recording = 0;
    auto answer = call.remote(wire::is_recording, service_id, &recording);
    auto judged = call.remote(wire::play_stop, handle, service_result);
    return answer ? judged.zero_rule() : answer.transport_rule();
}
