// The methods for channels, and for the values that applications leave with the service.
#pragma once

#include "channels.h"
#include "handles.h"
#include "log.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"
#include "shared_values.h"
#include "signals.h"

#include <functional>
#include <string>
#include <tuple>

namespace simulator {

class ChannelMethods {
public:
    /// is_playing tells whether the picture is that of a recording: nothing is watched live then.
    ChannelMethods(OrgVexanTvPvr *object, const Handles &handles, std::function<bool()> is_playing, Signals &signals,
                   const Log &log);

    /// A call was answered: logs it, and sends what it caused.
    void answered(const std::string &line);

    /// What the person with the remote control does: no method does it.
    Outcome tune(std::uint64_t service_id);
    /// What a broadcast does to the set's clock, or a loss of power.
    void set_date(bool is_set) { channels_.set_date(is_set); }

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
    Outcome set_channel_number_string(int handle, const char *text);
    Outcome set_channel_multilanguage_string(const char *text, int length);
    std::tuple<int> set_share_data(int type, guint64 value);
    std::tuple<gint64, int> get_share_data(int type);

    /// What a function tells of a channel; -2 when there is none.
    template <typename Function>
    int of_channel(guint64 service_id, Function tell) const;

    std::function<bool()> is_playing_;
    Signals &signals_;
    const Log &log_;
    Channels channels_;
    SharedValues values_;
};

} // namespace simulator
