// One row for each method that is answered: ties a method of an interface to a member function that takes its
// arguments and returns its answer. The generated declarations are the only source of the types.
#pragma once

#include "faults.h"
#include "log.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <gio/gio.h>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

namespace simulator {

/// What a method of org.vexan.tv.pvr is on the service's side: its handler's slot, its completion and its signal.
#define METHOD(name) &OrgVexanTvPvrIface::handle_##name, &org_vexan_tv_pvr_complete_##name, "handle-" #name

namespace row {

inline const char *to_wire(const std::string &text) { return text.c_str(); }
template <typename Value>
Value to_wire(Value value)
{
    return value;
}

inline std::string shown_value(gint value) { return std::to_string(value); }
inline std::string shown_value(gint64 value) { return std::to_string(value); }
inline std::string shown_value(guint64 value) { return std::to_string(value); }
inline std::string shown_value(const std::string &value) { return value.empty() ? "(none)" : shown(value); }
inline std::string shown_value(GVariant *value) { return shown(value); }

/// "handle 1, ok": a result of 0 beside other values in words, everything else by the interface's names.
template <typename... Value>
std::string shown_answer(const GDBusMethodInfo &method, const std::tuple<Value...> &values)
{
    std::string text;
    GDBusArgInfo **info = method.out_args;
    const auto add = [&](const auto &value) {
        const std::string name = (*info++)->name;
        const std::string shown = shown_value(value);
        const bool is_success = sizeof...(Value) > 1 && name == "result" && shown == "0";
        text += (text.empty() ? "" : ", ") + (is_success ? "ok" : name + " " + shown);
    };
    std::apply([&](const auto &...value) { (add(value), ...); }, values);
    return text.empty() ? "ok" : text;
}

/// Sends an answer, and tells it for the log.
template <typename Reply>
std::string send(const Outcome &answer, GDBusMethodInvocation *, Reply reply)
{
    reply(answer.result);
    return answer.is_done() ? "ok" : "refused: " + answer.reason;
}
template <typename Reply>
std::string send(const Untold &answer, GDBusMethodInvocation *, Reply reply)
{
    reply();
    return answer.outcome.is_done() ? "ok" : "refused, untold: " + answer.outcome.reason;
}
template <typename Reply, typename... Out>
std::string send(const std::tuple<Out...> &answer, GDBusMethodInvocation *invocation, Reply reply)
{
    std::string text = shown_answer(*g_dbus_method_invocation_get_method_info(invocation), answer);
    std::apply([&](const auto &...value) { reply(to_wire(value)...); }, answer);
    return text;
}
template <typename Reply, typename... Out>
std::string send(const std::variant<std::tuple<Out...>, Failure> &answer, GDBusMethodInvocation *invocation,
                 Reply reply)
{
    if (const auto *values = std::get_if<std::tuple<Out...>>(&answer)) {
        std::apply([&](const auto &...value) { reply(to_wire(value)...); }, *values);
        return "ok";
    }
    const auto &failure = std::get<Failure>(answer);
    g_dbus_method_invocation_return_dbus_error(invocation, failure.error.c_str(), failure.message.c_str());
    return "refused: " + failure.message;
}

template <typename Object, typename Room, typename Answer, typename Complete, typename... In>
struct Row {
    Room *room;
    Complete *complete;
    Answer (Room::*answer)(In...);

    static gboolean on_call(Object *object, GDBusMethodInvocation *invocation, In... arguments, gpointer row) noexcept
    {
        const Row &self = *static_cast<Row *>(row);
        std::string line = shown_call(*g_dbus_method_invocation_get_method_info(invocation),
                                      g_dbus_method_invocation_get_parameters(invocation));
        self.room->advance();
        const Answer answer = (self.room->*self.answer)(arguments...);
        line += "  " + send(answer, invocation, [&](auto... value) { self.complete(object, invocation, value...); });
        self.room->answered(line);
        return TRUE;
    }
};

} // namespace row

/// Has a room answer a method. The answer is
///     an Outcome for a method of org.vexan.tv.pvr that has only a result,
///     an Untold for one that has nothing to answer,
///     a std::tuple of the method's outputs otherwise, with std::string for texts,
///     or a std::variant of such a tuple and a Failure.
/// First the room's advance() is called, for what is due; then the reply goes, and the room's answered(line) is called.
template <typename Object, typename Interface, typename Room, typename Answer, typename Complete, typename... In>
void connect(Object *object, Room *room, gboolean (*Interface::*)(Object *, GDBusMethodInvocation *, In...),
             Complete *complete, const char *signal, Answer (Room::*answer)(In...))
{
    using Row = row::Row<Object, Room, Answer, Complete, In...>;
    g_signal_connect_data(
        object, signal, G_CALLBACK(&Row::on_call), new Row{room, complete, answer},
        [](gpointer row, GClosure *) { delete static_cast<Row *>(row); }, static_cast<GConnectFlags>(0));
}

} // namespace simulator
