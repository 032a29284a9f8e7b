// A rule judges what a call returned: without the call there is nothing to judge.
#include "client/call.h"

using namespace pvr;

int row()
{
    Call call(ENTRY("\n"));
    return call.transport_rule();
}
