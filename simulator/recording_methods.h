// The methods that start, stop and steer recordings and timeshift.
#pragma once

#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <tuple>

namespace simulator {

class RecordingMethods : public MethodRoom {
public:
    RecordingMethods(OrgVexanTvPvr *object, Television &set);

private:
    Outcome call_app(int command, guint64 service_id, int number, const char *text, guint reminder);
    Untold record_start(int handle, guint64 service_id, int type);
    Untold record_stop(int handle);
    Untold switch_to_record(int handle, int switch_type);
    Outcome sync_stop_pvr(guint64 service_id, const char *called_app);
    Outcome sync_stop_recording(guint64 service_id, const char *called_app);
    Outcome set_recording_duration(int handle, int duration);
    Outcome set_recording_duration_by_service_id(guint64 service_id, int duration);
    Outcome change_recording_duration_unlimited(int handle);
    std::tuple<int, int> get_recording_duration(int handle);
    std::tuple<int, int> get_recording_duration_by_service_id(guint64 service_id);
    std::tuple<int> precheck_recording_available(guint64 service_id, int type);
    Untold inform_third_part(int command, int error, int type, guint64 service_id, int uid);
    Outcome set_ts_auto_start_flag(int flag);
    std::tuple<int, int> get_ts_auto_start_flag();
    std::tuple<int> set_keep_state_flag(int flag);

    int ts_auto_start_flag_ = 0;
};

} // namespace simulator
