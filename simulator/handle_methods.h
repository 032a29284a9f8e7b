// The methods for handles, whatever they stand for, and for the set as a whole.
#pragma once

#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <tuple>

namespace simulator {

class HandleMethods : public MethodRoom {
public:
    HandleMethods(OrgVexanTvPvr *object, Television &set);

private:
    std::tuple<int, int> get_handle();
    std::tuple<GVariant *, int> get_handle_for_record();
    Outcome release_handle(int handle);
    Outcome stop_pvr(int handle);
    Outcome stop_playing_and_recording(int handle, int set_source);
    std::tuple<int, gint64, gint64, int> get_progress(int handle);
    std::tuple<int, int> get_pvr_state();
    std::tuple<int> is_support_pvr();

    Outcome stop(int handle);
};

} // namespace simulator
