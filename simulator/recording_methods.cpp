#include "recording_methods.h"

#include "method_row.h"

#include <iterator>
#include <optional>
#include <string>

namespace simulator {
namespace {

constexpr int until_it_is_stopped = 0;

std::tuple<int, int> duration_of(const RunningRecording *recording)
{
    if (recording == nullptr)
        return {0, refused_result};
    return {recording->duration, done};
}

} // namespace

RecordingMethods::RecordingMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    connect(object, this, METHOD(call_app), &RecordingMethods::call_app);
    connect(object, this, METHOD(record_start), &RecordingMethods::record_start);
    connect(object, this, METHOD(record_stop), &RecordingMethods::record_stop);
    connect(object, this, METHOD(switch_to_record), &RecordingMethods::switch_to_record);
    connect(object, this, METHOD(sync_stop_pvr), &RecordingMethods::sync_stop_pvr);
    connect(object, this, METHOD(sync_stop_recording), &RecordingMethods::sync_stop_recording);
    connect(object, this, METHOD(set_recording_duration), &RecordingMethods::set_recording_duration);
    connect(object, this, METHOD(set_recording_duration_by_service_id),
            &RecordingMethods::set_recording_duration_by_service_id);
    connect(object, this, METHOD(change_recording_duration_unlimited),
            &RecordingMethods::change_recording_duration_unlimited);
    connect(object, this, METHOD(get_recording_duration), &RecordingMethods::get_recording_duration);
    connect(object, this, METHOD(get_recording_duration_by_service_id),
            &RecordingMethods::get_recording_duration_by_service_id);
    connect(object, this, METHOD(precheck_recording_available), &RecordingMethods::precheck_recording_available);
    connect(object, this, METHOD(inform_third_part), &RecordingMethods::inform_third_part);
    connect(object, this, METHOD(set_ts_auto_start_flag), &RecordingMethods::set_ts_auto_start_flag);
    connect(object, this, METHOD(get_ts_auto_start_flag), &RecordingMethods::get_ts_auto_start_flag);
    connect(object, this, METHOD(set_keep_state_flag), &RecordingMethods::set_keep_state_flag);
}

Outcome RecordingMethods::call_app(int command, guint64 service_id, int number, const char *, guint reminder)
{
    enum Command {
        start_recording,
        start_timeshift,
        stop_recording,
        stop_timeshift,
        set_duration,
        stop_any_timeshift = 7
    };
    Recorder &recorder = set_.recorder;
    switch (command) {
    case start_recording:
        return recorder.start(std::nullopt, service_id, reminder == 0 ? PS_RECORD_TYPE_NORMAL : PS_RECORD_TYPE_TIMER);
    case start_timeshift:
        return recorder.start(std::nullopt, service_id, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    case stop_recording:
        return recorder.stop_recording(service_id);
    case stop_timeshift:
        return recorder.stop_timeshift(service_id);
    case set_duration:
        return recorder.set_duration(recorder.either_of(service_id), number);
    case stop_any_timeshift:
        return recorder.stop_any_timeshift();
    default:
        return refused("no such command");
    }
}

Untold RecordingMethods::record_start(int handle, guint64 service_id, int type)
{
    return {set_.recorder.start(handle, service_id, type)};
}

Untold RecordingMethods::record_stop(int handle) { return {set_.recorder.stop(handle)}; }

Untold RecordingMethods::switch_to_record(int handle, int) { return {set_.recorder.switch_to_record(handle)}; }

Outcome RecordingMethods::sync_stop_pvr(guint64 service_id, const char *)
{
    const RunningRecording *recording = set_.recorder.either_of(service_id);
    if (recording == nullptr)
        return refused("this channel is neither recorded nor timeshifted");
    for (; recording != nullptr; recording = set_.recorder.either_of(service_id))
        set_.recorder.stop(recording->handle, PS_STOP_PVR);
    return {};
}

Outcome RecordingMethods::sync_stop_recording(guint64 service_id, const char *)
{
    return set_.recorder.stop_recording(service_id);
}

Outcome RecordingMethods::set_recording_duration(int handle, int duration)
{
    return set_.recorder.set_duration(set_.recorder.on_handle(handle), duration);
}

Outcome RecordingMethods::set_recording_duration_by_service_id(guint64 service_id, int duration)
{
    return set_.recorder.set_duration(set_.recorder.either_of(service_id), duration);
}

Outcome RecordingMethods::change_recording_duration_unlimited(int handle)
{
    return set_.recorder.set_duration(set_.recorder.on_handle(handle), until_it_is_stopped);
}

std::tuple<int, int> RecordingMethods::get_recording_duration(int handle)
{
    return duration_of(set_.recorder.on_handle(handle));
}

std::tuple<int, int> RecordingMethods::get_recording_duration_by_service_id(guint64 service_id)
{
    return duration_of(set_.recorder.either_of(service_id));
}

std::tuple<int> RecordingMethods::precheck_recording_available(guint64 service_id, int type)
{
    const int code = set_.recorder.precheck(service_id, type);
    constexpr int none = 0;
    set_.signals.result(
        PS_PRECHECK_RECORDING_AVAILABLE, result_value(none, code, none, std::uint64_t{service_id}, type, code),
        "channel " + std::to_string(service_id) + ", PS_PRECHECK_RECORDING_AVAILABLE " + std::to_string(code));
    return code;
}

Untold RecordingMethods::inform_third_part(int command, int error, int type, guint64 service_id, int uid)
{
    // By ps_third_part_command_e. What one application knows, all are told.
    constexpr ps_method_e methods[] = {PS_RECORD_START, PS_RECORD_STOP};
    if (command < 0 || command >= static_cast<int>(std::size(methods)))
        return {refused("no such command")};
    constexpr int none = 0;
    set_.signals.result(methods[command], result_value(none, error, uid, std::uint64_t{service_id}, type, none),
                        "on behalf of an application, recording " + std::to_string(uid) + " of " +
                            std::to_string(service_id) + ", result " + std::to_string(error));
    return {};
}

Outcome RecordingMethods::set_ts_auto_start_flag(int flag)
{
    ts_auto_start_flag_ = flag;
    return {};
}

std::tuple<int, int> RecordingMethods::get_ts_auto_start_flag() { return {ts_auto_start_flag_, done}; }

std::tuple<int> RecordingMethods::set_keep_state_flag(int)
{
    constexpr int stored = 1; // how this one is confirmed, as shared values are
    return stored;
}

} // namespace simulator
