// The methods that ask about recordings and timeshift.
#pragma once

#include "method_room.h"
#include "pvr_gdbus_generated.h"

#include <string>
#include <tuple>

namespace simulator {

class RecordingQueryMethods : public MethodRoom {
public:
    RecordingQueryMethods(OrgVexanTvPvr *object, Television &set);

private:
    std::tuple<int> is_recording(guint64 service_id);
    std::tuple<int> is_timer_recording(guint64 service_id);
    std::tuple<int> is_timeshifting(guint64 service_id);
    std::tuple<int> is_recording_now();
    std::tuple<int> is_timeshifting_now();
    std::tuple<int> is_recording_with_main_tuner(guint64 service_id);
    std::tuple<int> is_past_record_complete(guint64 service_id);
    std::tuple<int> get_current_recording_count();
    std::tuple<GVariant *, int> get_recording_service_id_list();
    std::tuple<int> get_recording_type_by_service_id(guint64 service_id);
    std::tuple<int, int, int> get_record_state_by_service_id(guint64 service_id);
    std::tuple<int, gint64, gint64, int> get_progress_by_service_id(guint64 service_id);
    std::tuple<GVariant *> get_recording_info(int handle);
    std::tuple<int> get_max_recordable_time();
    std::tuple<std::string> get_recording_uri(int handle);
    std::tuple<std::string> get_recording_uri_by_service_id(guint64 service_id);
    std::tuple<std::string> get_current_recording_uri();
    std::tuple<std::string> get_inf_uri(int handle);
};

} // namespace simulator
