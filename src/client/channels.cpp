// Channels: what is on them, of which kind they are, and which ones are watched.
#include "client/byte_order.h"
#include "client/call.h"

#include <cinttypes>
#include <concepts>
#include <optional>

using namespace pvr;

namespace {

/// Takes the elements of an "a(v)" one after the other, as long as each has the type asked for.
class VariantReader {
public:
    explicit VariantReader(const OwnedVariant &array) noexcept : array_(array.get()) {}

    template <typename T>
    std::optional<T> next() noexcept
    {
        if (index_ >= g_variant_n_children(array_))
            return {};
        g_variant_get_child(array_, index_++, "(v)", element_.slot());
        if constexpr (std::same_as<T, int>) {
            if (g_variant_is_of_type(element_.get(), G_VARIANT_TYPE_INT32) != FALSE)
                return g_variant_get_int32(element_.get());
        } else if constexpr (std::same_as<T, std::uint32_t>) {
            if (g_variant_is_of_type(element_.get(), G_VARIANT_TYPE_UINT32) != FALSE)
                return g_variant_get_uint32(element_.get());
        } else {
            static_assert(std::same_as<T, const char *>);
            if (g_variant_is_of_type(element_.get(), G_VARIANT_TYPE_STRING) != FALSE)
                return g_variant_get_string(element_.get(), nullptr);
        }
        return {};
    }

private:
    GVariant *array_;
    gsize index_ = 0;
    OwnedVariant element_; ///< keeps the text that next handed out
};

/// Stores the fields in order; the first that cannot be read ends the decoding.
void store_channel_info(Here here, const OwnedVariant &array, channel_info &info) noexcept
{
    VariantReader reader(array);
    const auto major = reader.next<int>();
    if (!major)
        return;
    info.major = little_endian(*major);
    PLAIN_INFO_AT(here, "major [%d]\n", *major);

    const auto minor = reader.next<int>();
    if (!minor)
        return;
    info.minor = little_endian(*minor);
    PLAIN_INFO_AT(here, "minor [%d]\n", *minor);

    const auto start_time = reader.next<std::uint32_t>();
    if (!start_time)
        return;
    info.start_time = little_endian(*start_time);
    PLAIN_INFO_AT(here, "start time [%ld]\n", static_cast<long>(*start_time));

    const auto end_time = reader.next<std::uint32_t>();
    if (!end_time)
        return;
    info.end_time = little_endian(*end_time);
    PLAIN_INFO_AT(here, "end time [%ld]\n", static_cast<long>(*end_time));

    const auto channel_name = reader.next<const char *>();
    if (!channel_name)
        return;
    copy_bytes(info.channel_name, *channel_name, 254); // deliberately without a terminator
    PLAIN_INFO_AT(here, "channel name [%s]\n", *channel_name);

    const auto program_title = reader.next<const char *>();
    if (!program_title)
        return;
    copy_bytes(info.program_title, *program_title, 254); // deliberately without a terminator
    PLAIN_INFO_AT(here, "program title [%s]\n", *program_title);
}

} // namespace

int svc_pvr_get_channel_info(std::uint64_t service_id, channel_info *info) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    OwnedVariant fields;
    auto answer = call.remote(wire::get_channel_info, service_id, &fields, service_result);
    if (!answer)
        return answer.transport_rule();
    if (info == nullptr || !fields)
        return call.refused(PLAIN_FAILURE("[return PS_CALL_METHOD_FAILED]\n"));
    store_channel_info(Here(), fields, *info);
    return answer.transport_rule();
}

int svc_pvr_is_no_signal_channel(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_no_signal_channel, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" svc_pvr_is_no_signal_channel done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_is_audio_only_channel(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_audio_only_channel, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" svc_pvr_is_audio_only_channel done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_is_child_lock_channel(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_child_lock_channel, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" svc_pvr_is_child_lock_channel done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_is_analog_channel(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_analog_channel, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" svc_pvr_is_analog_channel done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_is_all_descrambled(int *result) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_all_descrambled, &value);
    if (answer)
        write_out(result, value);
    return answer.transport_rule();
}

int svc_pvr_get_av_status(std::uint64_t service_id, int *av_status) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int status = 0;
    auto answer = call.remote(wire::get_av_status, service_id, &status);
    if (answer) {
        write_out(av_status, status);
        INFO("[av_status:%d]\n", status);
    }
    return answer.transport_rule();
}

int svc_pvr_is_date_set(int *result) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_date_set, &value);
    if (answer) {
        write_out(result, value);
        INFO(" svc_pvr_is_date_set done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_get_current_service_id(std::uint64_t *service_id) noexcept
{
    Call call(ENTRY("\n"));
    std::uint64_t current = 0;
    auto answer = call.remote(wire::get_current_service_id, &current);
    if (answer)
        write_out(service_id, current);
    return answer.transport_rule();
}

int svc_pvr_get_current_livetv_service_id(std::uint64_t *service_id) noexcept
{
    Call call(ENTRY("\n"));
    std::uint64_t current = 0;
    auto answer = call.remote(wire::get_current_livetv_service_id, &current);
    if (answer)
        write_out(service_id, current);
    return answer.transport_rule();
}

int svc_pvr_set_channel_multilanguage_string(const char *data, int length) noexcept
{
    Call call(ENTRY("[data:%s][length:%d]\n", data, length));
    auto answer = call.remote(wire::set_channel_multilanguage_string, data, length, service_result);
    return answer.transport_rule();
}

int svc_pvr_set_channel_number_string(int handle, const char *channel_number_name) noexcept
{
    Call call(ENTRY("[handle:%d][channel_number_name:%s]\n", handle, channel_number_name));
    auto answer = call.remote(wire::set_channel_number_string, handle, channel_number_name, service_result);
    return answer.zero_rule();
}
