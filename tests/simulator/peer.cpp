#include "peer.h"

#include "bus/main_context.h"
#include "events/names.h"
#include "pvr_events.h"
#include "pvr_records.h"
#include "support/private_bus.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace simulator_test {
namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr char service_path[] = "/org/vexan/tv/pvr";
constexpr char service_interface[] = "org.vexan.tv.pvr";
constexpr char control_name[] = "org.vexan.tv.pvr.Simulator1";
constexpr char control_path[] = "/org/vexan/tv/pvr_simulator";

std::string taken_text(char *text)
{
    std::string result = text;
    g_free(text);
    return result;
}

std::string taken_message(GError *error)
{
    std::string name = taken_text(g_dbus_error_get_remote_error(error));
    g_dbus_error_strip_remote_error(error);
    std::string message = name + ": " + error->message;
    g_error_free(error);
    return message;
}

std::string taken_answer(GVariant *answer, GError *error)
{
    if (answer == nullptr)
        return g_dbus_error_is_remote_error(error) != FALSE ? taken_message(error)
                                                            : throw std::runtime_error(error->message);
    std::string text = taken_text(g_variant_print(answer, FALSE));
    g_variant_unref(answer);
    return text;
}

GVariant *parsed(const std::string &text)
{
    GError *error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, &error);
    if (value == nullptr)
        throw std::runtime_error(text + ": " + error->message);
    return value;
}

/// The record in the digits of a signal, in words.
std::string shown_record(int type, const std::string &digits)
{
    pvr_service_signal record{};
    if (digits.size() != 2 * sizeof record || digits.find_first_not_of("0123456789abcdef") != std::string::npos)
        return "no record: " + digits;
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    std::memcpy(&record, bytes.data(), sizeof record);
    constexpr int of_playbacks[] = {PS_SIGNAL_TYPE_PLAY_STATE_CHANGE,      PS_SIGNAL_TYPE_PLAY_ERROR,
                                    PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START,  PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE,
                                    PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START, PS_SIGNAL_TYPE_NOTIFY_SKIP_START};
    const bool is_of_playback =
        std::find(std::begin(of_playbacks), std::end(of_playbacks), type) != std::end(of_playbacks);
    std::ostringstream text;
    text << pvr::_get_pvr_macro_name(pvr::ps_signal_type_e_str, type) << " of " << int{record.handle} << ": "
         << pvr::_get_pvr_macro_name(is_of_playback ? pvr::ps_play_state_e_str : pvr::ps_record_state_e_str,
                                     record.current_state)
         << " " << record.uri;
    if (record.result != 0)
        text << " error " << int{record.result};
    return text.str();
}

std::vector<std::string> command(std::vector<std::string> options)
{
    options.insert(options.begin(), "pvr-simulator");
    return options;
}

} // namespace

Peer::Peer()
{
    GError *error = nullptr;
    connection_ = g_dbus_connection_new_for_address_sync(
        support::bus().address().c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (connection_ == nullptr)
        throw std::runtime_error(error->message);
    subscription_ = g_dbus_connection_signal_subscribe(connection_, nullptr, service_interface, nullptr, service_path,
                                                       nullptr, G_DBUS_SIGNAL_FLAGS_NONE, on_signal, this, nullptr);
    has_owner(service_name); // the bus has taken note of the subscription when it answers
}

Peer::~Peer()
{
    g_dbus_connection_signal_unsubscribe(connection_, subscription_);
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

std::string Peer::call(const std::string &method, const std::string &arguments)
{
    return call_at(service_name, service_path, service_interface, method, arguments);
}

std::string Peer::control(const std::string &method, const std::string &arguments)
{
    return call_at(control_name, control_path, control_name, method, arguments);
}

std::string Peer::call_at(const char *name, const char *path, const std::string &interface, const std::string &method,
                          const std::string &arguments)
{
    GError *error = nullptr;
    GVariant *answer =
        g_dbus_connection_call_sync(connection_, name, path, interface.c_str(), method.c_str(), parsed(arguments),
                                    nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    return taken_answer(answer, error);
}

void Peer::send(const std::string &method, const std::string &arguments, std::function<void(std::string)> done)
{
    const auto on_answer = [](GObject *connection, GAsyncResult *result, gpointer data) noexcept {
        const auto *function = static_cast<std::function<void(std::string)> *>(data);
        GError *error = nullptr;
        GVariant *answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &error);
        (*function)(taken_answer(answer, error));
        delete function;
    };
    g_dbus_connection_call(connection_, service_name, service_path, service_interface, method.c_str(),
                           parsed(arguments), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, on_answer,
                           new std::function<void(std::string)>(std::move(done)));
}

std::string Peer::introspection()
{
    GError *error = nullptr;
    GVariant *answer = g_dbus_connection_call_sync(connection_, service_name, service_path,
                                                   "org.freedesktop.DBus.Introspectable", "Introspect", nullptr,
                                                   G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    if (answer == nullptr)
        throw std::runtime_error(error->message);
    const char *text = nullptr;
    g_variant_get(answer, "(&s)", &text);
    std::string result = text;
    g_variant_unref(answer);
    return result;
}

void Peer::own(const std::string &name)
{
    constexpr char bus[] = "org.freedesktop.DBus";
    EXPECT_EQ(call_at(bus, "/org/freedesktop/DBus", bus, "RequestName", "('" + name + "', uint32 4)"), "(1,)") << name;
}

bool Peer::has_owner(const std::string &name)
{
    return call_at("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                   "('" + name + "',)") == "(true,)";
}

void Peer::on_signal(GDBusConnection *, const char *, const char *, const char *, const char *signal, GVariant *body,
                     gpointer self) noexcept
{
    std::string line = std::string(signal) + " " + taken_text(g_variant_print(body, FALSE));
    if (std::string_view(signal) == "send_pvr_signal_to_apps") {
        gint type = 0;
        const char *digits = nullptr;
        g_variant_get(body, "(i&s)", &type, &digits);
        line = shown_record(type, digits);
    }
    static_cast<Peer *>(self)->signals_.push_back(std::move(line));
}

Lines Peer::signals()
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    return std::exchange(signals_, {});
}

Lines Peer::signals_until(const std::string &beginning)
{
    const auto is_it = [&](const std::string &line) { return line.starts_with(beginning); };
    support::run_until(nullptr, [&] { return std::any_of(signals_.begin(), signals_.end(), is_it); });
    const auto behind = std::find_if(signals_.begin(), signals_.end(), is_it) + 1;
    Lines lines(signals_.begin(), behind);
    signals_.erase(signals_.begin(), behind);
    return lines;
}

Simulator::Simulator(const std::vector<std::string> &options) : program_(command(options))
{
    if (const std::string line = program_.line(); line != "ready")
        throw std::runtime_error("the service is not ready: " + line + program_.complaints());
}

Simulator::~Simulator()
{
    if (!is_over_)
        log();
}

Lines Simulator::log()
{
    program_.signal(SIGTERM);
    EXPECT_EQ(program_.wait(), 0) << program_.complaints();
    is_over_ = true;
    std::istringstream text(program_.complaints());
    Lines lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

void Simulator::kill()
{
    program_.signal(SIGKILL);
    program_.wait();
    is_over_ = true;
}

} // namespace simulator_test
