// pvrctl doctor: the bus, and the service on it, by plain GDBus with a limit of its own.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <pvr_gdbus_generated.h>
#include <string>

#include "doctor.h"

namespace pvrctl {
namespace {

constexpr char probed_service[] = "org.vexan.tv.pvr.server";
constexpr char probed_path[] = "/org/vexan/tv/pvr";
constexpr char probed_interface[] = "org.vexan.tv.pvr";
constexpr char harmless_method[] = "is_support_pvr"; ///< changes nothing
constexpr char bus_itself[] = "org.freedesktop.DBus";
constexpr char address_variable[] = "DBUS_SYSTEM_BUS_ADDRESS";
constexpr char try_sandbox[] = "'pvr-sandbox -- COMMAND' brings a bus and the development service";

int in_milliseconds(std::chrono::seconds time)
{
    constexpr std::chrono::milliseconds most{G_MAXINT};
    return static_cast<int>(std::min(std::chrono::milliseconds(time), most).count());
}

pvr::OwnedVariant ask_bus(const Examination &examined, const char *method, GVariant *arguments, const char *type)
{
    pvr::OwnedError error;
    pvr::OwnedVariant answer(g_dbus_connection_call_sync(
        examined.service.bus(), bus_itself, "/org/freedesktop/DBus", bus_itself, method, arguments,
        G_VARIANT_TYPE(type), G_DBUS_CALL_FLAGS_NONE, in_milliseconds(examined.limit), nullptr, error.slot()));
    if (!answer)
        throw Failure(ExitCode::not_running,
                      std::string("the bus does not answer '") + method + "': " + error->message);
    return answer;
}

} // namespace

// ---- a call that goes on

ProbeCall::ProbeCall(GDBusConnection *bus, const char *method, std::chrono::seconds limit)
    : cancellable_(g_cancellable_new())
{
    const pvr::Owned<GDBusMessage, g_object_unref> call(
        g_dbus_message_new_method_call(probed_service, probed_path, probed_interface, method));
    g_dbus_connection_send_message_with_reply(bus, call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, in_milliseconds(limit),
                                              nullptr, cancellable_.get(), end, this);
}

ProbeCall::~ProbeCall()
{
    g_cancellable_cancel(cancellable_.get());
    wait(); // what is told of the end of the call is told to this
}

void ProbeCall::end(GObject *bus, GAsyncResult *result, gpointer self) noexcept
{
    auto &call = *static_cast<ProbeCall *>(self);
    call.reply_ = pvr::Owned<GDBusMessage, g_object_unref>(
        g_dbus_connection_send_message_with_reply_finish(G_DBUS_CONNECTION(bus), result, call.error_.slot()));
    call.is_over_ = true;
}

void ProbeCall::look()
{
    while (!is_over_ && g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

void ProbeCall::wait()
{
    while (!is_over_)
        g_main_context_iteration(nullptr, TRUE);
}

// ---- the checks

Finding examine_bus(Examination &examined)
{
    const char *variable = std::getenv(address_variable);
    const bool is_told = variable != nullptr && *variable != '\0';
    pvr::OwnedError error;
    const pvr::OwnedText address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, error.slot()));
    const std::string text = std::string(address ? address.get() : error->message) +
                             (is_told ? std::string(", as ") + address_variable + " says" : ", the usual address");
    try {
        examined.service.find_bus(examined.limit);
    } catch (const Failure &failure) {
        return wrong(failure.code(), std::string(failure.what()) + " (" + text + ")",
                     (is_told ? std::string("Correct or remove ") + address_variable
                              : std::string("Start the system bus, or name another in ") + address_variable) +
                         "; " + try_sandbox);
    }
    return sound(text);
}

Finding examine_service(Examination &examined)
{
    if (const std::optional<std::string> owner = examined.service.owner()) {
        guint32 process = 0;
        g_variant_get(
            ask_bus(examined, "GetConnectionUnixProcessID", g_variant_new("(s)", owner->c_str()), "(u)").get(), "(u)",
            &process);
        return sound("it runs as " + *owner + ", process " + std::to_string(process));
    }
    const pvr::OwnedVariant answer = ask_bus(examined, "ListActivatableNames", nullptr, "(as)");
    const char **names = nullptr;
    g_variant_get(answer.get(), "(^a&s)", &names);
    const bool is_activatable = g_strv_contains(names, probed_service) != FALSE;
    g_free(static_cast<void *>(names));
    if (is_activatable)
        return warning(
            std::string("nobody owns ") + probed_service + ", but the bus starts a service at the first call", "");
    return wrong(ExitCode::not_running,
                 std::string("nobody owns ") + probed_service + " on the bus, which cannot start it either",
                 std::string("Start the service; without a television, ") + try_sandbox);
}

/// The bus refuses a call before it takes the next one: once it has answered another question, the call is on its way.
Finding examine_policy(Examination &examined)
{
    examined.call.emplace(examined.service.bus(), harmless_method, examined.limit);
    ask_bus(examined, "GetId", nullptr, "(s)");
    examined.call->look();
    GDBusMessage *reply = examined.call->reply();
    const bool is_refusal =
        reply != nullptr && g_dbus_message_get_message_type(reply) == G_DBUS_MESSAGE_TYPE_ERROR &&
        g_strcmp0(g_dbus_message_get_sender(reply), bus_itself) == 0 &&
        g_strcmp0(g_dbus_message_get_error_name(reply), "org.freedesktop.DBus.Error.AccessDenied") == 0;
    if (!is_refusal)
        return sound("the bus lets this user call the service");
    pvr::OwnedError error;
    g_dbus_message_to_gerror(reply, error.slot());
    g_dbus_error_strip_remote_error(error.get());
    return wrong(ExitCode::failed, std::string("the bus refuses calls of the service: ") + error->message,
                 "Install the policy org.vexan.tv.pvr.conf where the bus looks for such files, as "
                 "/etc/dbus-1/system.d, and have the bus read its configuration again");
}

Finding examine_answer(Examination &examined)
{
    ProbeCall &call = *examined.call;
    call.wait();
    const std::string question = std::string("'") + harmless_method + "'";
    if (g_error_matches(call.error(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE)
        return wrong(ExitCode::time_out,
                     "the service did not answer " + question + " within " + std::to_string(examined.limit.count()) +
                         " s",
                     "It hangs, or waits for something: look at its log, or start it anew. Of the development service "
                     "'pvrctl sim fault list' tells what it was told not to answer");
    if (call.reply() == nullptr)
        return wrong(ExitCode::not_running, "the bus was lost during " + question + ": " + call.error()->message, "");
    pvr::OwnedError error;
    if (g_dbus_message_to_gerror(call.reply(), error.slot()) != FALSE) {
        g_dbus_error_strip_remote_error(error.get());
        return wrong(ExitCode::failed,
                     "the service answers " + question + " with " + g_dbus_message_get_error_name(call.reply()) + ": " +
                         error->message,
                     "Look at the service's log; another program may own its name");
    }
    GVariant *body = g_dbus_message_get_body(call.reply());
    if (body == nullptr || g_variant_is_of_type(body, G_VARIANT_TYPE("(i)")) == FALSE)
        return wrong(ExitCode::failed, "the service's answer to " + question + " is no number",
                     "Service and library are of different versions: update the older one");
    g_variant_get(body, "(i)", &examined.answer);
    return sound("the service answers");
}

Finding examine_records(Examination &examined)
{
    if (examined.answer == 1)
        return sound("the service says that it records");
    return wrong(ExitCode::not_recording,
                 "the service says that it does not record: it answers " + std::to_string(examined.answer),
                 "Its product does not record, or was not recognised: look at the service's log");
}

// ---- interface

namespace {

std::string signature_of(GDBusArgInfo *const *arguments)
{
    std::string types;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        types += (*arguments)->signature;
    return types;
}

bool has_method(GDBusInterfaceInfo *interface, const GDBusMethodInfo &wanted)
{
    const GDBusMethodInfo *found = g_dbus_interface_info_lookup_method(interface, wanted.name);
    return found != nullptr && signature_of(found->in_args) == signature_of(wanted.in_args) &&
           signature_of(found->out_args) == signature_of(wanted.out_args);
}

} // namespace

Finding examine_interface(Examination &examined)
{
    pvr::OwnedError error;
    const pvr::OwnedVariant answer(g_dbus_connection_call_sync(examined.service.bus(), probed_service, probed_path,
                                                               "org.freedesktop.DBus.Introspectable", "Introspect",
                                                               nullptr, G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE,
                                                               in_milliseconds(examined.limit), nullptr, error.slot()));
    if (!answer)
        return skipped("the service does not describe itself");
    const char *xml = nullptr;
    g_variant_get(answer.get(), "(&s)", &xml);
    const pvr::Owned<GDBusNodeInfo, g_dbus_node_info_unref> node(g_dbus_node_info_new_for_xml(xml, error.slot()));
    GDBusInterfaceInfo *there = node ? g_dbus_node_info_lookup_interface(node.get(), probed_interface) : nullptr;
    if (there == nullptr)
        return skipped("the service does not describe itself");

    std::size_t all = 0;
    std::string other;
    std::size_t others = 0;
    for (GDBusMethodInfo *const *method = org_vexan_tv_pvr_interface_info()->methods; *method != nullptr; ++method) {
        ++all;
        if (has_method(there, **method))
            continue;
        ++others;
        other += (other.empty() ? "" : ", ") + std::string((*method)->name);
    }
    if (others > 0)
        return wrong(ExitCode::failed,
                     "the service lacks " + std::to_string(others) + " of the library's " + std::to_string(all) +
                         " methods, or has them with other types: " + other,
                     "Service and library are of different versions: update the older one");
    return sound("the service has all " + std::to_string(all) + " methods that the library calls");
}

} // namespace pvrctl
