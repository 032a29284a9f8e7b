// The methods for channels, and for the values that applications leave with the service.
#pragma once

#include "channels.h"
#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <tuple>

namespace simulator {

class ChannelMethods : public MethodRoom {
public:
    ChannelMethods(OrgVexanTvPvr *object, Television &set);

private:
    std::tuple<GVariant *, int> get_channel_info(guint64 service_id);
    std::tuple<int> is_analog_channel(guint64 service_id);
    std::tuple<int> is_child_lock_channel(guint64 service_id);
    std::tuple<int> is_audio_only_channel(guint64 service_id);
    std::tuple<int> is_no_signal_channel(guint64 service_id);
    std::tuple<int> is_date_set();
    std::tuple<guint64> get_current_service_id();
    std::tuple<guint64> get_current_livetv_service_id();
    std::tuple<int> is_all_descrambled();
    std::tuple<int> get_av_status(guint64 service_id);
    std::tuple<int, int> is_change_available_on_recording(guint64 service_id);
    std::tuple<int> is_source_change_available_on_recording(int source_type);
    std::tuple<> set_change_channel_flag(guint64 result);
    Outcome set_channel_number_string(int handle, const char *text);
    Outcome set_channel_multilanguage_string(const char *text, int length);
    std::tuple<int> set_share_data(int type, guint64 value);
    std::tuple<gint64, int> get_share_data(int type);

    /// What a function tells of a channel; -2 when there is none.
    template <typename Function>
    int of_channel(guint64 service_id, Function tell) const;
};

} // namespace simulator
