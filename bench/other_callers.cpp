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

using OwnedMessage = std::unique_ptr<DBusMessage, decltype(&dbus_message_unref)>;

} // namespace

SdBusCaller::SdBusCaller()
{
    sd_bus *bus = nullptr;
    if (sd_bus_open_system(&bus) < 0)
        throw std::runtime_error("sd-bus has no connection to the private bus");
    bus_.reset(bus);
}

bool SdBusCaller::play_start() noexcept
{
    sd_bus_message *reply = nullptr;
    std::int32_t result = 0;
    const bool is_answered = sd_bus_call_method(bus_.get(), service, object, interface_name, method, nullptr, &reply,
                                                "isi", handle, uri, start_position) >= 0 &&
                             sd_bus_message_read(reply, "i", &result) >= 0;
    sd_bus_message_unref(reply);
    return is_answered && result == 1;
}

void close_connection(DBusConnection *connection)
{
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

LibdbusCaller::LibdbusCaller() : connection_(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr), close_connection)
{
    if (connection_ == nullptr)
        throw std::runtime_error("libdbus has no connection to the private bus");
    dbus_connection_set_exit_on_disconnect(connection_.get(), FALSE);
}

bool LibdbusCaller::play_start() noexcept
{
    const OwnedMessage call(dbus_message_new_method_call(service, object, interface_name, method), dbus_message_unref);
    const dbus_int32_t sent_handle = handle, sent_position = start_position;
    const char *const sent_uri = uri;
    if (!call || dbus_message_append_args(call.get(), DBUS_TYPE_INT32, &sent_handle, DBUS_TYPE_STRING, &sent_uri,
                                          DBUS_TYPE_INT32, &sent_position, DBUS_TYPE_INVALID) == FALSE)
        return false;
    const OwnedMessage reply(
        dbus_connection_send_with_reply_and_block(connection_.get(), call.get(), DBUS_TIMEOUT_USE_DEFAULT, nullptr),
        dbus_message_unref);
    dbus_int32_t result = 0;
    return reply && dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_INT32, &result, DBUS_TYPE_INVALID) != FALSE &&
           result == 1;
}

} // namespace bench
