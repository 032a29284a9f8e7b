#include "channel_methods.h"

#include "info_file.h"
#include "method_row.h"

#include <algorithm>
#include <cstdint>
#include <glib.h>
#include <optional>
#include <system_error>
#include <vector>

namespace simulator {
namespace {

constexpr int stored = 1; ///< how shared values are confirmed, unlike everything else
constexpr std::uint64_t nothing_live = 0;

/// Major and minor number, start and end of the programme, name of the channel, title; each in a variant of its own.
GVariant *described(const Channel &channel, const Programme &programme)
{
    GVariant *members[] = {
        g_variant_new_int32(channel.major),         g_variant_new_int32(channel.minor),
        g_variant_new_uint32(programme.start),      g_variant_new_uint32(programme.end),
        g_variant_new_string(channel.name.c_str()), g_variant_new_string(programme.title.c_str()),
    };
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(v)"));
    for (GVariant *member : members)
        g_variant_builder_add(&list, "(v)", member);
    return g_variant_builder_end(&list);
}

} // namespace

ChannelMethods::ChannelMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    connect(object, this, METHOD(get_channel_info), &ChannelMethods::get_channel_info);
    connect(object, this, METHOD(is_analog_channel), &ChannelMethods::is_analog_channel);
    connect(object, this, METHOD(is_child_lock_channel), &ChannelMethods::is_child_lock_channel);
    connect(object, this, METHOD(is_audio_only_channel), &ChannelMethods::is_audio_only_channel);
    connect(object, this, METHOD(is_no_signal_channel), &ChannelMethods::is_no_signal_channel);
    connect(object, this, METHOD(is_date_set), &ChannelMethods::is_date_set);
    connect(object, this, METHOD(get_current_service_id), &ChannelMethods::get_current_service_id);
    connect(object, this, METHOD(get_current_livetv_service_id), &ChannelMethods::get_current_livetv_service_id);
    connect(object, this, METHOD(is_all_descrambled), &ChannelMethods::is_all_descrambled);
    connect(object, this, METHOD(get_av_status), &ChannelMethods::get_av_status);
    connect(object, this, METHOD(is_change_available_on_recording), &ChannelMethods::is_change_available_on_recording);
    connect(object, this, METHOD(is_source_change_available_on_recording),
            &ChannelMethods::is_source_change_available_on_recording);
    connect(object, this, METHOD(set_change_channel_flag), &ChannelMethods::set_change_channel_flag);
    connect(object, this, METHOD(set_channel_number_string), &ChannelMethods::set_channel_number_string);
    connect(object, this, METHOD(set_channel_multilanguage_string), &ChannelMethods::set_channel_multilanguage_string);
    connect(object, this, METHOD(set_share_data), &ChannelMethods::set_share_data);
    connect(object, this, METHOD(get_share_data), &ChannelMethods::get_share_data);
}

template <typename Function>
int ChannelMethods::of_channel(guint64 service_id, Function tell) const
{
    const Channel *channel = set_.channels.find(service_id);
    return channel != nullptr ? int{tell(*channel)} : refused_result;
}

std::tuple<GVariant *, int> ChannelMethods::get_channel_info(guint64 service_id)
{
    const Channel *channel = set_.channels.find(service_id);
    if (channel == nullptr)
        return {g_variant_new_array(G_VARIANT_TYPE("(v)"), nullptr, 0), refused_result};
    return {described(*channel, set_.channels.programme(*channel).value_or(Programme{})), done};
}

std::tuple<int> ChannelMethods::is_analog_channel(guint64 service_id)
{
    return of_channel(service_id, [](const Channel &channel) { return channel.kind == ChannelKind::analogue; });
}

std::tuple<int> ChannelMethods::is_child_lock_channel(guint64 service_id)
{
    return of_channel(service_id, [](const Channel &channel) { return channel.is_locked; });
}

std::tuple<int> ChannelMethods::is_audio_only_channel(guint64 service_id)
{
    return of_channel(service_id, [](const Channel &channel) { return channel.kind == ChannelKind::radio; });
}

std::tuple<int> ChannelMethods::is_no_signal_channel(guint64 service_id)
{
    return of_channel(service_id, [](const Channel &channel) { return !channel.has_signal; });
}

std::tuple<int> ChannelMethods::is_date_set() { return set_.channels.is_date_set() ? 1 : 0; }

std::tuple<guint64> ChannelMethods::get_current_service_id() { return set_.channels.current(); }

std::tuple<guint64> ChannelMethods::get_current_livetv_service_id()
{
    return set_.player.is_playing() ? nothing_live : set_.channels.current();
}

std::tuple<int> ChannelMethods::is_all_descrambled()
{
    return set_.channels.are_descrambled(set_.recorder.channels()) ? 1 : 0;
}

std::tuple<int> ChannelMethods::get_av_status(guint64 service_id)
{
    return of_channel(service_id, Channels::seen_and_heard);
}

std::tuple<int, int> ChannelMethods::is_change_available_on_recording(guint64 service_id)
{
    constexpr int no_handle = 0;
    if (set_.channels.find(service_id) == nullptr)
        return {refused_result, no_handle};
    if (set_.recorder.can_receive(service_id))
        return {1, no_handle};
    return {0, set_.recorder.running().front()->handle};
}

std::tuple<int> ChannelMethods::is_source_change_available_on_recording(int source_type)
{
    const std::vector<std::uint64_t> recorded = set_.recorder.channels();
    return std::all_of(recorded.begin(), recorded.end(),
                       [&](std::uint64_t id) { return set_.channels.find(id)->source == source_type; })
               ? 1
               : 0;
}

std::tuple<> ChannelMethods::set_change_channel_flag(guint64 result)
{
    set_.answer_change(result == 1); // the wire carries the bit pattern of a signed number
    return {};
}

Outcome ChannelMethods::set_channel_number_string(int handle, const char *text)
{
    Outcome outcome = set_.values.set_channel_number(handle, text);
    const RunningRecording *recording = set_.recorder.on_handle(handle);
    if (!outcome.is_done() || recording == nullptr)
        return outcome;
    try {
        change_info(recording->file.info_path(),
                    [&](pvr_file_info_s &info) { set_text(info.channel_num, sizeof info.channel_num, text); });
    } catch (const std::system_error &error) {
        return refused(error.what());
    }
    return {};
}

Outcome ChannelMethods::set_channel_multilanguage_string(const char *text, int length)
{
    return set_.values.set_channel_names(text, length);
}

std::tuple<int> ChannelMethods::set_share_data(int type, guint64 value)
{
    const Outcome outcome = set_.values.set(type, static_cast<std::int64_t>(value)); // the wire carries the bit pattern
    return outcome.is_done() ? stored : outcome.result;
}

std::tuple<gint64, int> ChannelMethods::get_share_data(int type)
{
    const std::optional<std::int64_t> value = set_.values.get(type);
    return {value.value_or(0), value ? stored : refused_result};
}

} // namespace simulator
