#include "other_callers.h"

#include "callers.h"

#include <cstdint>
#include <stdexcept>

namespace bench {
namespace {

constexpr char service[] = "org.vexan.tv.pvr.server";
constexpr char object[] = "/org/vexan/tv/pvr";
constexpr char interface_name[] = "org.vexan.tv.pvr";
constexpr char method[] = "play_start";

} // namespace

SdBusCaller::SdBusCaller()
{
    if (sd_bus_open_system(&bus_) < 0)
        throw std::runtime_error("sd-bus has no connection to the private bus");
}

SdBusCaller::~SdBusCaller() { sd_bus_flush_close_unref(bus_); }

bool SdBusCaller::play_start() noexcept
{
    sd_bus_message *reply = nullptr;
    std::int32_t result = 0;
    const bool is_answered = sd_bus_call_method(bus_, service, object, interface_name, method, nullptr, &reply, "isi",
                                                handle, uri, start_position) >= 0 &&
                             sd_bus_message_read(reply, "i", &result) >= 0;
    sd_bus_message_unref(reply);
    return is_answered && result == 1;
}

LibdbusCaller::LibdbusCaller() : connection_(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr))
{
    if (connection_ == nullptr)
        throw std::runtime_error("libdbus has no connection to the private bus");
    dbus_connection_set_exit_on_disconnect(connection_, FALSE);
}

LibdbusCaller::~LibdbusCaller()
{
    dbus_connection_close(connection_);
    dbus_connection_unref(connection_);
}

bool LibdbusCaller::play_start() noexcept
{
    DBusMessage *const call = dbus_message_new_method_call(service, object, interface_name, method);
    const dbus_int32_t sent_handle = handle, sent_position = start_position;
    const char *const sent_uri = uri;
    if (call == nullptr || dbus_message_append_args(call, DBUS_TYPE_INT32, &sent_handle, DBUS_TYPE_STRING, &sent_uri,
                                                    DBUS_TYPE_INT32, &sent_position, DBUS_TYPE_INVALID) == FALSE)
        return false;
    DBusMessage *const reply =
        dbus_connection_send_with_reply_and_block(connection_, call, DBUS_TIMEOUT_USE_DEFAULT, nullptr);
    dbus_message_unref(call);
    if (reply == nullptr)
        return false;
    dbus_int32_t result = 0;
    const bool is_read = dbus_message_get_args(reply, nullptr, DBUS_TYPE_INT32, &result, DBUS_TYPE_INVALID) != FALSE;
    dbus_message_unref(reply);
    return is_read && result == 1;
}

} // namespace bench
