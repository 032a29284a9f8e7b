#include "handle_methods.h"

#include "method_row.h"

#include <optional>

namespace simulator {

HandleMethods::HandleMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    connect(object, this, METHOD(get_handle), &HandleMethods::get_handle);
    connect(object, this, METHOD(get_handle_for_record), &HandleMethods::get_handle_for_record);
    connect(object, this, METHOD(get_handle_for_playback), &HandleMethods::get_handle);
    connect(object, this, METHOD(release_handle), &HandleMethods::release_handle);
    connect(object, this, METHOD(stop_pvr), &HandleMethods::stop_pvr);
    connect(object, this, METHOD(stop_playing_and_recording), &HandleMethods::stop_playing_and_recording);
    connect(object, this, METHOD(get_progress), &HandleMethods::get_progress);
    connect(object, this, METHOD(get_pvr_state), &HandleMethods::get_pvr_state);
    connect(object, this, METHOD(is_support_pvr), &HandleMethods::is_support_pvr);
}

std::tuple<int, int> HandleMethods::get_handle() { return {set_.player.get_handle(), done}; }

std::tuple<GVariant *, int> HandleMethods::get_handle_for_record()
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("ai"));
    int count = 0;
    for (const RunningRecording *recording : set_.recorder.running()) {
        g_variant_builder_add(&list, "i", recording->handle);
        ++count;
    }
    return {g_variant_builder_end(&list), count};
}

Outcome HandleMethods::release_handle(int handle)
{
    const RunningRecording *recording = set_.recorder.on_handle(handle);
    const bool goes_with_it = recording != nullptr && recording->is_handle_ours;
    if (recording != nullptr)
        set_.recorder.stop(handle);
    return goes_with_it ? Outcome() : set_.player.release(handle);
}

Outcome HandleMethods::stop_pvr(int handle) { return stop(handle); }

Outcome HandleMethods::stop_playing_and_recording(int handle, int) { return stop(handle); }

Outcome HandleMethods::stop(int handle)
{
    if (set_.recorder.on_handle(handle) != nullptr)
        return set_.recorder.stop(handle, PS_STOP_PVR);
    return set_.player.stop(handle);
}

std::tuple<int, gint64, gint64, int> HandleMethods::get_progress(int handle)
{
    if (const std::optional<Progress> progress = set_.player.progress(handle))
        return {progress->state, progress->relative_second, progress->absolute_second, done};
    if (const RunningRecording *recording = set_.recorder.on_handle(handle))
        return {PS_RECORD_STATE_REC, set_.recorder.seconds(*recording), gint64{set_.clock.wall_seconds()}, done};
    return {0, 0, 0, refused_result};
}

std::tuple<int, int> HandleMethods::get_pvr_state()
{
    return {set_.player.state(), set_.recorder.is_busy() ? PS_RECORD_STATE_REC : PS_RECORD_STATE_STOP};
}

std::tuple<int> HandleMethods::is_support_pvr() { return 1; }

} // namespace simulator
