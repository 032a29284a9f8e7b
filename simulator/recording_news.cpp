#include "recording_news.h"

#include "events/names.h"

#include <iterator>
#include <string>

namespace simulator {
namespace {

const char *name_of(ps_method_e method) { return pvr::_get_pvr_macro_name(pvr::ps_method_e_str, method); }
const char *name_of(ps_signal_type_e type) { return pvr::_get_pvr_macro_name(pvr::ps_signal_type_e_str, type); }
const char *name_of(ps_record_state_e state) { return pvr::_get_pvr_macro_name(pvr::ps_record_state_e_str, state); }
const char *name_of(int type) { return pvr::_get_pvr_macro_name(pvr::ps_record_type_e_str, type); }

std::string recording(const RecordingEvent &event)
{
    return "recording " + std::to_string(event.handle) + " of " + std::to_string(event.service_id);
}

template <ps_signal_type_e type>
void noticed(Signals &signals, const RecordingEvent &event)
{
    signals.notify(type, signal_record(event.handle, event.path, event.state, event.result),
                   recording(event) + ", " + name_of(type));
}

void answered(Signals &signals, const RecordingEvent &event)
{
    const std::string outcome = event.result == 0 ? "" : " with " + std::to_string(event.result);
    signals.result(
        event.method,
        result_value(event.handle, event.result, event.uid, event.service_id, std::int32_t{event.type}, event.result),
        recording(event) + ", " + name_of(event.method) + outcome);
    if (event.method == PS_RECORD_START && event.result == is_scrambled)
        signals.result(PS_RECORD_NOT_ALLOWED_BY_CA, result_value(event.handle, event.path),
                       recording(event) + ", " + name_of(PS_RECORD_NOT_ALLOWED_BY_CA));
}

void changed(Signals &signals, const RecordingEvent &event)
{
    signals.notify(PS_SIGNAL_TYPE_RECORD_STATE_CHANGE,
                   signal_record(event.handle, event.path, event.state, event.result),
                   recording(event) + " is " + name_of(event.state));
}

void retyped(Signals &signals, const RecordingEvent &event)
{
    signals.notify(PS_SIGNAL_TYPE_RECORD_TYPE_CHANGE,
                   signal_record(event.handle, event.path, event.state, event.result),
                   recording(event) + " is " + name_of(event.type));
}

void measured(Signals &signals, const RecordingEvent &event)
{
    signals.result(PS_UPLOAD_RECORD_DURATION, result_value(event.handle, event.seconds, event.bits_per_second),
                   recording(event) + ", " + name_of(PS_UPLOAD_RECORD_DURATION) + " " + std::to_string(event.seconds) +
                       " s");
}

void duration_set(Signals &signals, const RecordingEvent &event)
{
    signals.result(PS_SET_DURATION_ALREADY, result_value(event.handle),
                   recording(event) + ", " + name_of(PS_SET_DURATION_ALREADY) + " " + std::to_string(event.seconds) +
                       " s");
}

} // namespace

void announce_recording(Signals &signals, const RecordingEvent &event)
{
    // By kind, in their order.
    constexpr void (*announcements[])(Signals &, const RecordingEvent &) = {
        noticed<PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START>,
        answered,
        changed,
        retyped,
        noticed<PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_FINISH>,
        noticed<PS_SIGNAL_TYPE_RECORD_ERROR>,
        measured,
        noticed<PS_SIGNAL_TYPE_NOTIFY_RECORD_DONE>,
        duration_set,
    };
    static_assert(std::size(announcements) == RecordingEvent::became_busy);
    announcements[event.kind](signals, event);
}

} // namespace simulator
