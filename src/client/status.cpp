// Queries about state, channels and services, and the values that applications share.
#include "client/call.h"

#include <cinttypes>
#include <concepts>
#include <optional>

using namespace pvr;

namespace {

/// The service's answer to svc_pvr_is_support_pvr once it was other than 0, which is never asked again.
constinit std::atomic<int> support_answer{0};

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
    info.major = *major;
    PLAIN_INFO_AT(here, "major [%d]\n", *major);

    const auto minor = reader.next<int>();
    if (!minor)
        return;
    info.minor = *minor;
    PLAIN_INFO_AT(here, "minor [%d]\n", *minor);

    const auto start_time = reader.next<std::uint32_t>();
    if (!start_time)
        return;
    info.start_time = *start_time;
    PLAIN_INFO_AT(here, "start time [%ld]\n", static_cast<long>(*start_time));

    const auto end_time = reader.next<std::uint32_t>();
    if (!end_time)
        return;
    info.end_time = *end_time;
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

int svc_pvr_get_pvr_state(int *play_state, int *record_state) noexcept
{
    Call call(ENTRY("\n"));
    int play = 0;
    int record = 0;
    auto answer = call.remote(wire::get_pvr_state, &play, &record);
    if (answer) {
        write_out(play_state, play);
        write_out(record_state, record);
    }
    return answer.transport_rule();
}

int svc_pvr_get_progress(int handle, int *out_result, std::int64_t *relative_second,
                         std::int64_t *absolute_second) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    int outcome = 0;
    std::int64_t relative = 0;
    std::int64_t absolute = 0;
    auto answer = call.remote(wire::get_progress, handle, &outcome, &relative, &absolute, service_result);
    if (answer) {
        write_out(out_result, outcome);
        write_out(relative_second, relative);
        write_out(absolute_second, absolute);
    }
    return answer.transport_rule();
}

int svc_pvr_set_share_data(int share_data_type, std::int64_t share_data_value) noexcept
{
    Call call(ENTRY("[share_data_type:%d][share_data_value:%" PRId64 "]\n", share_data_type, share_data_value));
    auto answer = call.remote(wire::set_share_data, share_data_type,
                              static_cast<std::uint64_t>(share_data_value), // the wire carries the bit pattern
                              service_result);
    return answer.one_is_success_rule();
}

int svc_pvr_is_support_pvr(int *supported) noexcept
{
    const Here here = ENTRY("\n");
    if (const int known = support_answer; known != 0) {
        write_out(supported, known == 1 ? 1 : 0);
        PLAIN_INFO("[result:%d]\n", known == 1 ? 1 : 0);
        return PS_SUCCESS;
    }

    Call call = Call::on_existing_session(here);
    int result = 0;
    auto answer = call.remote(wire::is_support_pvr, &result);
    if (!answer)
        return answer.transport_rule();
    write_out(supported, result == 1 ? 1 : 0);
    if (result == 0) {
        PLAIN_FAILURE("[PS_FACTORY_ERROR]\n");
        return PS_FACTORY_ERROR;
    }
    support_answer = result;
    PLAIN_INFO("[result:%d]\n", result == 1 ? 1 : 0);
    return PS_SUCCESS;
}
