#include "channel_methods.h"

#include "method_row.h"

#include <glib.h>
#include <optional>
#include <utility>

namespace simulator {
namespace {

constexpr int stored = 1; ///< how shared values are confirmed, unlike everything else
constexpr int no_handle = 0;
constexpr std::uint64_t no_channel = 0;

std::int64_t wall_now() { return g_get_real_time() / G_USEC_PER_SEC; }

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

ChannelMethods::ChannelMethods(OrgVexanTvPvr *object, const Handles &handles, std::function<bool()> is_playing,
                               Signals &signals, const Log &log)
    : is_playing_(std::move(is_playing)), signals_(signals), log_(log), channels_(built_in_channels(), wall_now),
      values_(handles)
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
    connect(object, this, METHOD(set_channel_number_string), &ChannelMethods::set_channel_number_string);
    connect(object, this, METHOD(set_channel_multilanguage_string), &ChannelMethods::set_channel_multilanguage_string);
    connect(object, this, METHOD(set_share_data), &ChannelMethods::set_share_data);
    connect(object, this, METHOD(get_share_data), &ChannelMethods::get_share_data);
}

void ChannelMethods::answered(const std::string &line)
{
    log_.line(line);
    signals_.publish();
}

Outcome ChannelMethods::tune(std::uint64_t service_id)
{
    Outcome outcome = channels_.tune(service_id);
    if (outcome.is_done())
        signals_.result(PS_SEND_CHANNEL_CHANGE, result_value(no_handle),
                        "tuned to channel " + std::to_string(service_id) + ", PS_SEND_CHANNEL_CHANGE");
    signals_.publish();
    return outcome;
}

template <typename Function>
int ChannelMethods::of_channel(guint64 service_id, Function tell) const
{
    const Channel *channel = channels_.find(service_id);
    return channel != nullptr ? int{tell(*channel)} : refused_result;
}

std::tuple<GVariant *, int> ChannelMethods::get_channel_info(guint64 service_id)
{
    const Channel *channel = channels_.find(service_id);
    if (channel == nullptr)
        return {g_variant_new_array(G_VARIANT_TYPE("(v)"), nullptr, 0), refused_result};
    return {described(*channel, channels_.programme(*channel).value_or(Programme{})), done};
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

std::tuple<int> ChannelMethods::is_date_set() { return channels_.is_date_set() ? 1 : 0; }

std::tuple<guint64> ChannelMethods::get_current_service_id() { return channels_.current(); }

std::tuple<guint64> ChannelMethods::get_current_livetv_service_id()
{
    return is_playing_() ? no_channel : channels_.current();
}

std::tuple<int> ChannelMethods::is_all_descrambled()
{
    return channels_.are_descrambled({}) ? 1 : 0; // nothing records
}

std::tuple<int> ChannelMethods::get_av_status(guint64 service_id)
{
    return of_channel(service_id, Channels::seen_and_heard);
}

Outcome ChannelMethods::set_channel_number_string(int handle, const char *text)
{
    return values_.set_channel_number(handle, text);
}

Outcome ChannelMethods::set_channel_multilanguage_string(const char *text, int length)
{
    return values_.set_channel_names(text, length);
}

std::tuple<int> ChannelMethods::set_share_data(int type, guint64 value)
{
    const Outcome outcome = values_.set(type, static_cast<std::int64_t>(value)); // the wire carries the bit pattern
    return outcome.is_done() ? stored : outcome.result;
}

std::tuple<gint64, int> ChannelMethods::get_share_data(int type)
{
    const std::optional<std::int64_t> value = values_.get(type);
    return {value.value_or(0), value ? stored : refused_result};
}

} // namespace simulator
