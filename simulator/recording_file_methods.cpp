#include "recording_file_methods.h"

#include "info_file.h"
#include "method_row.h"

#include <optional>
#include <string>

namespace simulator {
namespace {

constexpr char timeshift_without_folder[] = "timeshift.tmp"; // as the library asks about a timeshift

} // namespace

RecordingFileMethods::RecordingFileMethods(OrgVexanTvPvr *object, Television &set)
    : MethodRoom(set), stored_(set.devices)
{
    connect(object, this, METHOD(delete_record_file), &RecordingFileMethods::delete_record_file);
    connect(object, this, METHOD(delete_segment_record), &RecordingFileMethods::delete_segment_record);
    connect(object, this, METHOD(remove_inf), &RecordingFileMethods::remove_inf);
    connect(object, this, METHOD(is_recording_file), &RecordingFileMethods::is_recording_file);
    connect(object, this, METHOD(check_parent_lock), &RecordingFileMethods::check_parent_lock);
    connect(object, this, METHOD(get_system_record_num), &RecordingFileMethods::get_system_record_num);
    connect(object, this, METHOD(make_thumbnail_file), &RecordingFileMethods::make_thumbnail_file);
    connect(object, this, METHOD(set_pvr_file_info), &RecordingFileMethods::set_pvr_file_info);
    connect(object, this, METHOD(set_fp_rec_time), &RecordingFileMethods::set_fp_rec_time);
}

template <typename Action>
Outcome RecordingFileMethods::on_idle_recording(const std::string &uri, Action action)
{
    const std::optional<std::string> path = stored_.path(uri);
    if (!path)
        return refused("no recording on a device");
    if (set_.recorder.writing(*path) != nullptr)
        return refused("it is being recorded");
    if (set_.player.plays_from(*path))
        return refused("it is being played");
    return action(*path);
}

Outcome RecordingFileMethods::delete_record_file(const char *uri)
{
    return on_idle_recording(uri, [this](const std::string &path) { return stored_.remove(path); });
}

Outcome RecordingFileMethods::delete_segment_record(guint64 service_id)
{
    Outcome outcome = refused("no part of a programme was recorded of this channel");
    for (const std::string &path : set_.recorder.take_segments(service_id))
        outcome = delete_record_file(path.c_str());
    return outcome;
}

Outcome RecordingFileMethods::remove_inf(const char *path, int)
{
    return on_idle_recording(with_extension(path, "srf"),
                             [this](const std::string &recording) { return stored_.remove_info(recording); });
}

std::tuple<int> RecordingFileMethods::is_recording_file(const char *path)
{
    const std::string asked = path;
    for (const RunningRecording *recording : set_.recorder.running())
        if (recording->file.path() == asked || (recording->is_timeshift() && asked == timeshift_without_folder))
            return 1;
    return 0;
}

std::tuple<int> RecordingFileMethods::check_parent_lock(const char *path)
{
    const std::optional<std::string> recording = stored_.path(path);
    if (!recording)
        return refused_result;
    return stored_.is_locked(*recording) ? 1 : 0;
}

std::tuple<int> RecordingFileMethods::get_system_record_num() { return stored_.count(); }

Outcome RecordingFileMethods::make_thumbnail_file(const char *path, int, int height, int width)
{
    const std::optional<std::string> recording = stored_.path(path);
    if (!recording)
        return refused("no recording on a device");
    const pvr_service_signal record = signal_record(0, *recording, 0);
    set_.signals.notify(PS_SIGNAL_TYPE_NOTIFY_PRE_THUMB_START, record,
                        "a thumbnail, PS_SIGNAL_TYPE_NOTIFY_PRE_THUMB_START");
    Outcome outcome = stored_.make_thumbnail(*recording, width, height);
    set_.signals.result(PS_SEND_THUMBNAIL_RESULT, result_value(outcome.result, *recording),
                        "a thumbnail, PS_SEND_THUMBNAIL_RESULT " + std::to_string(outcome.result));
    set_.signals.notify(PS_SIGNAL_TYPE_THUMB_DONE, signal_record(0, *recording, 0, outcome.result),
                        "a thumbnail, PS_SIGNAL_TYPE_THUMB_DONE");
    return outcome;
}

// Who writes a file beside a recording does so by himself, before or after he tells this service.
Outcome RecordingFileMethods::set_pvr_file_info(const char *path, const char *, int)
{
    return on_recording(with_extension(path, "srf"));
}

Outcome RecordingFileMethods::set_fp_rec_time(const char *uri, int) { return on_recording(uri); }

Outcome RecordingFileMethods::on_recording(const std::string &uri) const
{
    return stored_.path(uri) ? Outcome{} : refused("no recording on a device");
}

} // namespace simulator
