// An event of the service as pvrctl monitor shows it: the library's records as JSON, and as one line for people.
#pragma once

#include <cstdint>
#include <optional>
#include <pvr_records.h>
#include <string>

#include "output.h"

namespace pvrctl {

/// The type of a pvr_service_signal or the method of a pvr_service_result by its name in pvr_events.h; nothing when
/// there is no such name.
std::optional<int> signal_type_named(const std::string &name);
std::optional<int> method_named(const std::string &name);

/// What happened, without when.
struct Event {
    const char *kind;
    Json fields;
    std::string text;
};

/// The type is not in the record. It is -1 when it is not known.
Event signal_event(int type, const pvr_service_signal &signal);
Event result_event(const pvr_service_result &result);
Event other_event(const pvr_result_third &third);
Event service_state_event(int state);
/// Kinds "connected" and "disconnected", with the owner of the service's name that has come or gone.
Event owner_event(const char *kind, const std::string &owner);

/// A time in microseconds since 1970 UTC: for programs, and as the clock on the wall shows it.
std::string in_utc(std::int64_t time);
std::string on_the_clock(std::int64_t time);

/// The events of a run, numbered from 1.
class Stamp {
public:
    /// Shows an event with its number and the time, now.
    void show(const Output &output, const Event &event);

private:
    unsigned long long seq_ = 0;
};

} // namespace pvrctl
