#include "events/signal_path.h"

#include "client/byte_order.h"
#include "client/log.h"
#include "client/outputs.h"
#include "client/owned.h"
#include "client/session.h"
#include "events/callbacks.h"
#include "events/hexadecimal.h"
#include "events/names.h"
#include "pvr_events.h"

#include <cstring>

namespace pvr {
namespace {

constexpr std::size_t digits_of_record = 2 * sizeof(pvr_service_signal);
static_assert(digits_of_record == 582);

constexpr std::size_t longest_logged_text = 1024;

bool is_anybody_listening() noexcept
{
    if (!signal_cb_func.is_empty() || !signal_pointer_cb_func.is_empty())
        return true;
    for (int index = 0; index < signal_list_size; ++index)
        if (listed_signal_cb(index).function != nullptr)
            return true;
    return false;
}

const char *state_name(int type, int state) noexcept
{
    switch (type) {
    case PS_SIGNAL_TYPE_RECORD_STATE_CHANGE:
        return _get_pvr_macro_name(ps_record_state_e_str, state);
    case PS_SIGNAL_TYPE_PLAY_STATE_CHANGE:
        return _get_pvr_macro_name(ps_play_state_e_str, state);
    default:
        return "N/A";
    }
}

void log_length(Here here, const char *text, std::size_t length) noexcept
{
    char beginning[longest_logged_text + 1];
    beginning[copy_bytes(beginning, text, longest_logged_text)] = '\0';
    PLAIN_FAILURE_AT(here, "buf length[%zu] is invalid, and it should be [%zu]. str_buf[%s]\n", length,
                     digits_of_record, beginning);
}

void log_record(Here here, int type, const pvr_service_signal &record) noexcept
{
    char uri[sizeof record.uri + 1]; // nobody promises that the field ends in NUL
    uri[copy_bytes(uri, record.uri, sizeof record.uri)] = '\0';
    PLAIN_INFO_AT(here,
                  "signal_type[%s|%d] result[%d] handle[%d] profile_type[%d] screen_id[%d] uri[%s] current_state[%s]\n",
                  _get_pvr_macro_name(ps_signal_type_e_str, type), type, int{little_endian(record.result)},
                  int{little_endian(record.handle)}, int{little_endian(record.profile_type)},
                  int{little_endian(record.screen_id)}, uri, state_name(type, little_endian(record.current_state)));
}

void deliver(Here here, const pvr_service_signal &record) noexcept
{
    if (const auto [function, user_data] = signal_cb_func.get(); function != nullptr)
        function(record, user_data);
    else
        PLAIN_INFO_AT(here, "signal_cb_func[%p] is null, so don't call signal_cb_func\n",
                      reinterpret_cast<void *>(function));

    if (const auto [function, user_data] = signal_pointer_cb_func.get(); function != nullptr) {
        PLAIN_INFO_AT(here, "signal_pointer_cb_func[%p] is called\n", reinterpret_cast<void *>(function));
        pvr_service_signal copy = record;
        function(&copy, user_data);
    }

    // Each entry is read when its turn comes: what a callback has taken back is not called any more.
    for (int index = 0; index < signal_list_size; ++index)
        if (const auto [function, user_data] = listed_signal_cb(index); function != nullptr)
            function(record, user_data);
}

} // namespace

void _pvr_signal_receive(const char *sender_name, const char *signal_name, GVariant *parameters) noexcept
{
    if (!is_anybody_listening())
        return;
    const Here here = PLAIN_INFO(
        "Receive signal from %s with name[%s] and proxy[%p], signal_cb_func[%p] signal_pointer_cb_func[%p]\n",
        sender_name, signal_name, static_cast<void *>(g_pvr_proxy.load()),
        reinterpret_cast<void *>(signal_cb_func.get().function),
        reinterpret_cast<void *>(signal_pointer_cb_func.get().function));
    if (parameters == nullptr || std::strcmp(g_variant_get_type_string(parameters), "(is)") != 0) {
        PLAIN_FAILURE("g_variant_get get str_buf failed\n");
        return;
    }

    // Member by member: g_variant_get() with "&s" would first write the whole tuple anew.
    const OwnedVariant type_value(g_variant_get_child_value(parameters, 0));
    const OwnedVariant text_value(g_variant_get_child_value(parameters, 1));
    const int type = g_variant_get_int32(type_value.get());
    gsize length = 0;
    const char *text = g_variant_get_string(text_value.get(), &length);
    if (length != digits_of_record) {
        log_length(here, text, length);
        return;
    }
    pvr_service_signal record;
    decode_hexadecimal(reinterpret_cast<std::uint8_t *>(&record), sizeof record, text);
    log_record(here, type, record);
    if (type > PS_SIGNAL_TYPE_NONE && type < PS_SIGNAL_TYPE_MAX)
        deliver(here, record);
}

} // namespace pvr
