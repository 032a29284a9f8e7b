// A Recording service that does nothing. It answers every call with success, that is with zeros and empty
// texts, or with what it is told:
//     idle_service [METHOD=VALUES…]      VALUES as GVariant text, such as get_handle=(1, 0)
// A method that is named several times gives its answers in turn, and the last one from then on.
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <gio/gio.h>
#include <map>
#include <string>

#include "pvr_gdbus_generated.h"

namespace {

std::map<std::string, std::deque<std::string>> answers;

[[noreturn]] void give_up(const std::string &why)
{
    std::fprintf(stderr, "idle_service: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

std::string type_of_answer(GDBusMethodInvocation *call)
{
    std::string type = "(";
    for (GDBusArgInfo **out = g_dbus_method_invocation_get_method_info(call)->out_args; out != nullptr && *out; ++out)
        type += (*out)->signature;
    return type + ")";
}

/// Data that is too short for its type reads as zeros and empty texts.
GVariant *zeros(const GVariantType *type)
{
    GVariant *empty = g_variant_ref_sink(g_variant_new_from_data(type, nullptr, 0, FALSE, nullptr, nullptr));
    GVariant *values = g_variant_get_normal_form(empty);
    g_variant_unref(empty);
    return values;
}

void on_call(GDBusConnection *, const char *, const char *, const char *, const char *method, GVariant *,
             GDBusMethodInvocation *call, gpointer)
{
    const std::string type = type_of_answer(call);
    const auto told = answers.find(method);
    GVariant *values = nullptr;
    if (told == answers.end()) {
        values = zeros(G_VARIANT_TYPE(type.c_str()));
    } else {
        GError *error = nullptr;
        values = g_variant_parse(G_VARIANT_TYPE(type.c_str()), told->second.front().c_str(), nullptr, nullptr, &error);
        if (values == nullptr)
            give_up(told->first + ": " + error->message);
        if (told->second.size() > 1)
            told->second.pop_front();
    }
    g_dbus_method_invocation_return_value(call, values);
    g_variant_unref(values);
}

} // namespace

int main(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t sign = argument.find('=');
        if (sign == std::string::npos)
            give_up(argument + " is not METHOD=VALUES");
        answers[argument.substr(0, sign)].push_back(argument.substr(sign + 1));
    }

    GError *error = nullptr;
    GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
    if (bus == nullptr)
        give_up(error->message);
    constexpr GDBusInterfaceVTable table = {on_call, nullptr, nullptr, {}};
    if (g_dbus_connection_register_object(bus, "/org/vexan/tv/pvr", org_vexan_tv_pvr_interface_info(), &table, nullptr,
                                          nullptr, &error) == 0)
        give_up(error->message);
    g_bus_own_name_on_connection(bus, "org.vexan.tv.pvr.server", G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                 nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
