#include "support/scripted_service.h"

#include "support/private_bus.h"

#include <ostream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace support {
namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr char object_path[] = "/org/vexan/tv/pvr";
constexpr char interface_name[] = "org.vexan.tv.pvr";

[[noreturn]] void give_up(GError *error)
{
    const std::string message = error->message;
    g_error_free(error);
    throw std::runtime_error("scripted service: " + message);
}

GVariant *parsed(const std::string &text)
{
    GError *error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, &error);
    if (value == nullptr)
        give_up(error);
    return value;
}

GDBusConnection *connected()
{
    GError *error = nullptr;
    GDBusConnection *connection = g_dbus_connection_new_for_address_sync(
        bus().address().c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (connection == nullptr)
        give_up(error);
    return connection;
}

void own_name(GDBusConnection *connection)
{
    GError *error = nullptr;
    GVariant *reply = g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", service_name, 4U), G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    if (reply == nullptr)
        give_up(error);
    g_variant_unref(reply);
}

} // namespace

std::ostream &operator<<(std::ostream &out, const Request &request)
{
    return out << request.method << " " << request.signature << " " << request.arguments << " at " << request.path
               << (request.is_reply_expected ? "" : " (no reply expected)");
}

Request request(const std::string &method, const std::string &signature, const std::string &arguments)
{
    return {method, signature, arguments, object_path, true};
}

ScriptedService::ScriptedService() { come_back(); }

ScriptedService::~ScriptedService()
{
    vanish();
    for (GDBusMessage *call : unanswered_)
        g_object_unref(call);
}

void ScriptedService::script(const std::string &method, Reply reply)
{
    const std::lock_guard lock(mutex_);
    script_[method] = std::move(reply);
}

void ScriptedService::script(const std::string &method, const std::string &arguments, Reply reply)
{
    script(method + arguments, std::move(reply));
}

std::size_t ScriptedService::answer_late(const std::function<std::string(const std::string &method)> &values)
{
    std::vector<GDBusMessage *> calls;
    {
        const std::lock_guard lock(mutex_);
        calls = std::exchange(unanswered_, {});
    }
    for (GDBusMessage *call : calls) {
        GDBusMessage *answer = g_dbus_message_new_method_reply(call);
        g_dbus_message_set_body(answer, parsed(values(g_dbus_message_get_member(call))));
        g_dbus_connection_send_message(connection_, answer, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
        g_object_unref(answer);
        g_object_unref(call);
    }
    g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
    return calls.size();
}

std::vector<Request> ScriptedService::requests()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(requests_, {});
}

void ScriptedService::wait_for_request()
{
    std::unique_lock lock(mutex_);
    came_.wait(lock, [this] { return !requests_.empty(); });
}

void ScriptedService::emit(const std::string &signal, const std::string &body)
{
    GError *error = nullptr;
    if (g_dbus_connection_emit_signal(connection_, nullptr, object_path, interface_name, signal.c_str(), parsed(body),
                                      &error) == FALSE)
        give_up(error);
    g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
}

void ScriptedService::vanish()
{
    GDBusConnection *connection = nullptr;
    {
        const std::lock_guard lock(mutex_);
        connection = std::exchange(connection_, nullptr);
    }
    if (connection == nullptr)
        return;
    g_dbus_connection_close_sync(connection, nullptr, nullptr);
    g_object_unref(connection);
}

void ScriptedService::come_back()
{
    GDBusConnection *connection = connected();
    g_dbus_connection_add_filter(connection, on_message, this, nullptr);
    own_name(connection);
    const std::lock_guard lock(mutex_);
    connection_ = connection;
}

GDBusMessage *ScriptedService::on_message(GDBusConnection *connection, GDBusMessage *message, gboolean is_incoming,
                                          gpointer self) noexcept
{
    auto &service = *static_cast<ScriptedService *>(self);
    if (is_incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL ||
        !service.is_taken(g_dbus_message_get_interface(message)))
        return message;
    service.handle(connection, message);
    g_object_unref(message);
    return nullptr;
}

bool ScriptedService::is_taken(const char *interface)
{
    const std::string name = interface != nullptr ? interface : "";
    const std::lock_guard lock(mutex_);
    return name == interface_name || (name == "org.freedesktop.DBus.Introspectable" && script_.contains("Introspect"));
}

void ScriptedService::handle(GDBusConnection *connection, GDBusMessage *call)
{
    GVariant *body = g_dbus_message_get_body(call);
    char *arguments = body != nullptr ? g_variant_print(body, TRUE) : g_strdup("()");
    const bool is_reply_expected = (g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0;
    const std::string method = g_dbus_message_get_member(call);
    Reply reply;
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(
            {method, g_dbus_message_get_signature(call), arguments, g_dbus_message_get_path(call), is_reply_expected});
        if (const auto exact = script_.find(method + arguments); exact != script_.end())
            reply = exact->second;
        else if (const auto scripted = script_.find(method); scripted != script_.end())
            reply = scripted->second;
        if (reply.kind == Reply::silence)
            unanswered_.push_back(static_cast<GDBusMessage *>(g_object_ref(call)));
    }
    g_free(arguments);
    came_.notify_all();

    GDBusMessage *answer = nullptr;
    switch (reply.kind) {
    case Reply::values:
        answer = g_dbus_message_new_method_reply(call);
        g_dbus_message_set_body(answer, parsed(reply.text));
        break;
    case Reply::error:
        answer = g_dbus_message_new_method_error_literal(call, reply.text.c_str(), reply.message.c_str());
        break;
    case Reply::silence:
        return;
    case Reply::vanish: // never from GDBus's own thread, which the closing has to wait for
        std::thread([this] { vanish(); }).detach();
        return;
    }
    if (is_reply_expected)
        g_dbus_connection_send_message(connection, answer, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(answer);
}

} // namespace support
