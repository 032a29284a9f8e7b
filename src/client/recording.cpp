// Recording and timeshift: start, stop, durations, flags, and what a change of channel would do to them.
#include "client/byte_order.h"
#include "client/call.h"

#include <cinttypes>

using namespace pvr;

namespace {

/// What call_app is to do.
struct AppCommand {
    static constexpr int start_recording = 0;
    static constexpr int start_timeshift = 1;
    static constexpr int stop_recording = 2;
    static constexpr int stop_timeshift = 3;
    static constexpr int set_duration = 4;
    static constexpr int stop_timeshift_of_any_channel = 7;
};

constexpr std::uint64_t no_service_id = 0;
constexpr int show_nothing = 0; // deliberately what every stop command sends, whatever it was given
constexpr const char *no_text = "";
constexpr std::uint32_t no_reminder = 0;

} // namespace

// ---- start and stop by channel: one method of the service takes them all, told apart by a command

int svc_pvr_start_recording(std::uint64_t service_id, int show, const char *extra) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][show:%d][extra:%s]\n", service_id, show, extra));
    auto answer =
        call.remote(wire::call_app, AppCommand::start_recording, service_id, show, extra, no_reminder, service_result);
    return answer.transport_rule();
}

int svc_pvr_start_recording_ex(std::uint64_t service_id, int show, const char *extra, long reminder) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][show:%d][extra:%s][reminder:%ld]\n", service_id, show, extra, reminder));
    auto answer = call.remote(wire::call_app, AppCommand::start_recording, service_id, show, extra,
                              static_cast<std::uint32_t>(reminder), service_result);
    return answer.transport_rule();
}

int svc_pvr_start_timeshift(std::uint64_t service_id, int show, const char *extra) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][show:%d][extra:%s]\n", service_id, show, extra));
    auto answer =
        call.remote(wire::call_app, AppCommand::start_timeshift, service_id, show, extra, no_reminder, service_result);
    return answer.transport_rule();
}

int svc_pvr_stop_recording(std::uint64_t service_id, int show, const char *extra) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][show:%d]\n", service_id, show));
    auto answer = call.remote(wire::call_app, AppCommand::stop_recording, service_id, show_nothing, extra, no_reminder,
                              service_result);
    return answer.transport_rule();
}

int svc_pvr_stop_timeshift(std::uint64_t service_id, int show, const char *extra) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][show:%d]\n", service_id, show));
    auto answer = call.remote(wire::call_app, AppCommand::stop_timeshift, service_id, show_nothing, extra, no_reminder,
                              service_result);
    return answer.transport_rule();
}

int svc_pvr_stop_timeshift_without_service_id(int show, const char *extra) noexcept
{
    Call call(ENTRY("[show:%d]\n", show));
    auto answer = call.remote(wire::call_app, AppCommand::stop_timeshift_of_any_channel, no_service_id, show_nothing,
                              extra, no_reminder, service_result);
    return answer.transport_rule();
}

int svc_pvr_set_record_duration(std::uint64_t service_id, int duration) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][duration:%d]\n", service_id, duration));
    auto answer = call.remote(wire::call_app, AppCommand::set_duration, service_id, duration, no_text, no_reminder,
                              service_result);
    return answer.transport_rule();
}

// ---- recording by handle

int svc_pvr_record_start(int handle, std::uint64_t service_id, int record_type) noexcept
{
    Call call(ENTRY("[handle:%d][service_id:%" PRIu64 "][record_type:%d]\n", handle, service_id, record_type));
    auto answer = call.remote(wire::record_start, handle, service_id, record_type);
    if (answer)
        INFO(" Method: pvr_record_start call finish.\n");
    return answer.transport_rule();
}

int svc_pvr_record_stop(int handle) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    auto answer = call.remote(wire::record_stop, handle);
    return answer.transport_rule();
}

int svc_pvr_record_pause(int handle) noexcept
{
    ENTRY("[handle:%d]\n", handle); // deliberately no call and no support check
    return PS_SUCCESS;
}

int svc_pvr_record_resume(int handle) noexcept
{
    ENTRY("[handle:%d]\n", handle); // deliberately no call and no support check
    return PS_SUCCESS;
}

int svc_pvr_switch_to_record(int handle, int switch_type) noexcept
{
    Call call(ENTRY("[handle:%d][switch_type:%d]\n", handle, switch_type));
    auto answer = call.remote(wire::switch_to_record, handle, switch_type);
    return answer.transport_rule();
}

int svc_pvr_stop_pvr(int handle) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    auto answer = call.remote(wire::stop_pvr, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_stop_pvr_sync(std::uint64_t service_id, const char *called_app) noexcept
{
    // Deliberately asynchronous in spite of its name: nothing waits, and no failure comes back.
    Call call(ENTRY("[service_id:%" PRIu64 "][called_app:%s]\n", service_id, called_app));
    auto answer = call.post(wire::sync_stop_pvr, service_id, called_app);
    return answer.transport_rule();
}

int svc_pvr_stop_reocrding_sync(std::uint64_t service_id, const char *called_app) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][called_app:%s]\n", service_id, called_app));
    auto answer = call.remote(wire::sync_stop_recording, service_id, called_app, service_result);
    return answer.zero_rule();
}

// ---- how long

int svc_pvr_change_recording_duration_unlimited(int handle) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    auto answer = call.remote(wire::change_recording_duration_unlimited, handle, service_result);
    return answer.zero_rule();
}

int svc_pvr_set_recording_duration(int handle, int duration) noexcept
{
    Call call(ENTRY("[handle:%d][duration:%d]\n", handle, duration));
    auto answer = call.remote(wire::set_recording_duration, handle, duration, service_result);
    return answer.zero_rule();
}

int svc_pvr_get_recording_duration(int handle, int *duration) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    int length = 0;
    auto answer = call.remote(wire::get_recording_duration, handle, &length, service_result);
    if (answer)
        write_out(duration, length);
    return answer.transport_rule();
}

int svc_pvr_set_recording_duration_by_service_id(std::uint64_t service_id, int duration) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][duration:%d]\n", service_id, duration));
    auto answer = call.remote(wire::set_recording_duration_by_service_id, service_id, duration, service_result);
    return answer.transport_rule();
}

int svc_pvr_get_recording_duration_by_service_id(std::uint64_t service_id, int *duration) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int length = 0;
    auto answer = call.remote(wire::get_recording_duration_by_service_id, service_id, &length, service_result);
    if (answer)
        write_out(duration, length);
    return answer.transport_rule();
}

int svc_pvr_get_max_recordable_time(int *time) noexcept
{
    Call call(ENTRY("\n"));
    int longest = 0;
    auto answer = call.remote(wire::get_max_recordable_time, &longest);
    if (answer) {
        write_out(time, longest);
        INFO("[time:%d]\n", longest);
    }
    return answer.transport_rule();
}

int svc_pvr_get_remaining_time(int type, int *remaining) noexcept
{
    constexpr std::int64_t bytes_per_second[] = {2'621'440, 1'310'720}; // of any other type, and of type 1
    Call call(ENTRY("[type:%d]\n", type));
    if (!call)
        return call.code();
    // Deliberately unchecked: without a device the record stays empty, and nothing remains.
    int dev_handle = -1;
    svc_pvr_get_default_rec_device(&dev_handle);
    device_info device{};
    svc_pvr_get_device_info(dev_handle, &device);
    const auto available =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(little_endian(device.avail_size)) << 20);
    write_out(remaining, static_cast<int>(available / bytes_per_second[type == 1 ? 1 : 0]));
    return PS_SUCCESS;
}
