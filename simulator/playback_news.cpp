#include "playback_news.h"

#include "events/names.h"

#include <cstdio>
#include <iterator>
#include <string>

namespace simulator {
namespace {

const char *name_of(ps_method_e method) { return pvr::_get_pvr_macro_name(pvr::ps_method_e_str, method); }
const char *name_of(ps_signal_type_e type) { return pvr::_get_pvr_macro_name(pvr::ps_signal_type_e_str, type); }
const char *name_of(ps_play_state_e state) { return pvr::_get_pvr_macro_name(pvr::ps_play_state_e_str, state); }

std::string shown_seconds(Microseconds position)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(position.count()) / 1e6);
    return text;
}

std::string playback(const PlaybackEvent &event) { return "playback " + std::to_string(event.handle); }

std::string at_its_place(const PlaybackEvent &event) { return " at " + shown_seconds(event.position); }

void notify(Signals &signals, ps_signal_type_e type, const PlaybackEvent &event, const std::string &text)
{
    signals.notify(type, signal_record(event.handle, event.uri, event.state, event.result), text);
}

void answered(Signals &signals, const PlaybackEvent &event)
{
    const std::string outcome = event.result == 0 ? " done" : " refused with " + std::to_string(event.result);
    signals.result(event.command, result_value(event.handle, event.result, std::int32_t{event.state}),
                   playback(event) + ", " + name_of(event.command) + outcome +
                       (event.result == 0 ? at_its_place(event) : ""));
}

void will_start(Signals &signals, const PlaybackEvent &event)
{
    signals.result(PS_PRE_PLAY_START, result_value(event.handle, event.result),
                   playback(event) + ", " + name_of(PS_PRE_PLAY_START));
    notify(signals, PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START, event,
           playback(event) + ", " + name_of(PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START));
}

void changed(Signals &signals, const PlaybackEvent &event)
{
    notify(signals, PS_SIGNAL_TYPE_PLAY_STATE_CHANGE, event,
           playback(event) + " is " + name_of(event.state) + at_its_place(event));
}

template <ps_signal_type_e type>
void noticed(Signals &signals, const PlaybackEvent &event)
{
    notify(signals, type, event, playback(event) + ", " + name_of(type));
}

template <ps_method_e method>
void reported(Signals &signals, const PlaybackEvent &event)
{
    signals.result(method, result_value(event.handle), playback(event) + ", " + name_of(method));
}

} // namespace

void announce_playback(Signals &signals, const PlaybackEvent &event)
{
    // By kind, in their order.
    constexpr void (*announcements[])(Signals &, const PlaybackEvent &) = {
        answered,
        will_start,
        noticed<PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START>,
        noticed<PS_SIGNAL_TYPE_NOTIFY_SKIP_START>,
        changed,
        reported<PS_PLAY_BEGIN>,
        reported<PS_PLAY_END>,
        noticed<PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE>,
        noticed<PS_SIGNAL_TYPE_PLAY_ERROR>,
    };
    static_assert(std::size(announcements) == PlaybackEvent::became_busy);
    announcements[event.kind](signals, event);
}

} // namespace simulator
