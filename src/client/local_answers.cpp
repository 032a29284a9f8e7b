// Calls that older applications still make and that the library answers by itself.
#include "client/call.h"

using namespace pvr;

int svc_pvr_set_highlight_player_flag(int flag) noexcept
{
    ENTRY("[flag:%d]\n", flag);
    return judged(Success::is_one, g_result); // deliberately of whatever call came last
}
