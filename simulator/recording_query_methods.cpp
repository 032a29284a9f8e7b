#include "recording_query_methods.h"

#include "method_row.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace simulator {
namespace {

int count_of_recordings(const Recorder &recorder)
{
    const auto running = recorder.running();
    return static_cast<int>(std::count_if(
        running.begin(), running.end(), [](const RunningRecording *recording) { return !recording->is_timeshift(); }));
}

std::string path_of(const RunningRecording *recording) { return recording != nullptr ? recording->file.path() : ""; }

} // namespace

RecordingQueryMethods::RecordingQueryMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    using Self = RecordingQueryMethods;
    connect(object, this, METHOD(is_recording), &Self::is_recording);
    connect(object, this, METHOD(is_timer_recording), &Self::is_timer_recording);
    connect(object, this, METHOD(is_timeshifting), &Self::is_timeshifting);
    connect(object, this, METHOD(is_recording_now), &Self::is_recording_now);
    connect(object, this, METHOD(is_timeshifting_now), &Self::is_timeshifting_now);
    connect(object, this, METHOD(is_recording_with_main_tuner), &Self::is_recording_with_main_tuner);
    connect(object, this, METHOD(is_past_record_complete), &Self::is_past_record_complete);
    connect(object, this, METHOD(get_current_recording_count), &Self::get_current_recording_count);
    connect(object, this, METHOD(get_recording_service_id_list), &Self::get_recording_service_id_list);
    connect(object, this, METHOD(get_recording_type_by_service_id), &Self::get_recording_type_by_service_id);
    connect(object, this, METHOD(get_record_state_by_service_id), &Self::get_record_state_by_service_id);
    connect(object, this, METHOD(get_progress_by_service_id), &Self::get_progress_by_service_id);
    connect(object, this, METHOD(get_recording_info), &Self::get_recording_info);
    connect(object, this, METHOD(get_max_recordable_time), &Self::get_max_recordable_time);
    connect(object, this, METHOD(get_recording_uri), &Self::get_recording_uri);
    connect(object, this, METHOD(get_recording_uri_by_service_id), &Self::get_recording_uri_by_service_id);
    connect(object, this, METHOD(get_current_recording_uri), &Self::get_current_recording_uri);
    connect(object, this, METHOD(get_inf_uri), &Self::get_inf_uri);
}

std::tuple<int> RecordingQueryMethods::is_recording(guint64 service_id)
{
    return set_.recorder.recording_of(service_id) != nullptr ? 1 : 0;
}

std::tuple<int> RecordingQueryMethods::is_timer_recording(guint64 service_id)
{
    const RunningRecording *recording = set_.recorder.recording_of(service_id);
    return recording != nullptr && recording->type == PS_RECORD_TYPE_TIMER ? 1 : 0;
}

std::tuple<int> RecordingQueryMethods::is_timeshifting(guint64 service_id)
{
    return set_.recorder.timeshift_of(service_id) != nullptr ? 1 : 0;
}

std::tuple<int> RecordingQueryMethods::is_recording_now() { return count_of_recordings(set_.recorder) > 0 ? 1 : 0; }

std::tuple<int> RecordingQueryMethods::is_timeshifting_now()
{
    const auto running = set_.recorder.running();
    return !running.empty() && running.back()->is_timeshift() ? 1 : 0; // they stand last
}

std::tuple<int> RecordingQueryMethods::is_recording_with_main_tuner(guint64 service_id)
{
    // The main tuner is the one whose channel is watched.
    return service_id == set_.channels.current() ? is_recording(service_id) : std::tuple<int>(0);
}

std::tuple<int> RecordingQueryMethods::is_past_record_complete(guint64 service_id)
{
    return set_.recorder.is_last_complete(service_id) ? 1 : 0;
}

std::tuple<int> RecordingQueryMethods::get_current_recording_count() { return count_of_recordings(set_.recorder); }

std::tuple<GVariant *, int> RecordingQueryMethods::get_recording_service_id_list()
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("at"));
    const auto running = set_.recorder.running();
    for (const RunningRecording *recording : running)
        g_variant_builder_add(&list, "t", guint64{recording->service_id});
    return {g_variant_builder_end(&list), static_cast<int>(running.size())};
}

std::tuple<int> RecordingQueryMethods::get_recording_type_by_service_id(guint64 service_id)
{
    const RunningRecording *recording = set_.recorder.either_of(service_id);
    return recording != nullptr ? recording->type : PS_RECORD_TYPE_NONE;
}

std::tuple<int, int, int> RecordingQueryMethods::get_record_state_by_service_id(guint64 service_id)
{
    const RunningRecording *recording = set_.recorder.either_of(service_id);
    if (recording == nullptr)
        return {PS_RECORD_STATE_STOP, 0, refused_result};
    return {PS_RECORD_STATE_REC, recording->is_timeshift() ? 1 : 0, done};
}

std::tuple<int, gint64, gint64, int> RecordingQueryMethods::get_progress_by_service_id(guint64 service_id)
{
    const RunningRecording *recording = set_.recorder.either_of(service_id);
    if (recording == nullptr)
        return {0, 0, 0, refused_result};
    return {PS_RECORD_STATE_REC, set_.recorder.seconds(*recording), gint64{set_.clock.wall_seconds()}, done};
}

std::tuple<GVariant *> RecordingQueryMethods::get_recording_info(int handle)
{
    const RunningRecording *recording = set_.recorder.on_handle(handle);
    if (recording == nullptr)
        return g_variant_new("(tiii)", guint64{0}, PS_RECORD_TYPE_NONE, PS_RECORD_STATE_STOP, 0);
    return g_variant_new("(tiii)", guint64{recording->service_id}, recording->type, PS_RECORD_STATE_REC,
                         set_.recorder.seconds(*recording));
}

std::tuple<int> RecordingQueryMethods::get_max_recordable_time()
{
    constexpr std::int64_t bits_per_mebibyte = std::int64_t{8} << 20;
    const std::int64_t space = set_.devices.space(set_.devices.default_device()).available;
    const int rate = set_.channels.find(set_.channels.current())->bits_per_second;
    if (rate == 0)
        return 0; // what is watched cannot be recorded
    return static_cast<int>(std::min<std::int64_t>(space * bits_per_mebibyte / rate, std::numeric_limits<int>::max()));
}

std::tuple<std::string> RecordingQueryMethods::get_recording_uri(int handle)
{
    return path_of(set_.recorder.on_handle(handle));
}

std::tuple<std::string> RecordingQueryMethods::get_recording_uri_by_service_id(guint64 service_id)
{
    return path_of(set_.recorder.either_of(service_id));
}

std::tuple<std::string> RecordingQueryMethods::get_current_recording_uri() { return path_of(set_.recorder.newest()); }

std::tuple<std::string> RecordingQueryMethods::get_inf_uri(int handle)
{
    const RunningRecording *recording = set_.recorder.on_handle(handle);
    return recording != nullptr ? recording->file.info_path() : "";
}

} // namespace simulator
