#include "simulator.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace pvrctl {
namespace {

std::string name_of_error(const GError *error)
{
    const pvr::OwnedText name(g_dbus_error_get_remote_error(error));
    return name ? name.get() : "";
}

/// What an error of the bus or of the development service comes to.
struct KnownError {
    std::string_view name;
    ExitCode code;
};

constexpr std::array known_errors{
    KnownError{"org.freedesktop.DBus.Error.ServiceUnknown", ExitCode::not_running},
    KnownError{"org.freedesktop.DBus.Error.NameHasNoOwner", ExitCode::not_running},
    KnownError{"org.freedesktop.DBus.Error.Failed", ExitCode::refused},
};

} // namespace

Failure no_simulator()
{
    return {ExitCode::not_running,
            std::string("the development service is not running: nobody owns ") + simulator_name + " on the bus"};
}

Simulator::Simulator(Service &service) : service_(service) { service.find_bus(); }

pvr::OwnedVariant Simulator::ask(const char *method, GVariant *arguments, ExitCode nonsense) const
{
    constexpr int usual_timeout = -1;
    pvr::OwnedError error;
    pvr::OwnedVariant answer(g_dbus_connection_call_sync(bus(), simulator_name, simulator_path, simulator_name, method,
                                                         arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                         usual_timeout, nullptr, error.slot()));
    if (!answer)
        throw failure(method, error.get(), nonsense);
    return answer;
}

Failure Simulator::failure(const char *method, GError *error, ExitCode nonsense) const
{
    const std::string name = name_of_error(error);
    g_dbus_error_strip_remote_error(error);
    if (name == "org.freedesktop.DBus.Error.InvalidArgs")
        return {nonsense, error->message};
    if (name == "org.freedesktop.DBus.Error.NoReply")
        throw SimulatorGone(ExitCode::not_running,
                            std::string("the development service has left the bus during '") + method + "'");
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE)
        return {ExitCode::time_out, std::string("the development service did not answer '") + method + "' in time"};
    if (g_dbus_connection_is_closed(bus()) != FALSE)
        return {ExitCode::not_running, "the system bus cannot be reached: it was lost during the call"};
    for (const KnownError &known : known_errors)
        if (name == known.name)
            return known.code == ExitCode::not_running ? no_simulator() : Failure(known.code, error->message);
    return {ExitCode::failed,
            std::string("'") + method + "' failed: " + (name.empty() ? "" : name + ": ") + error->message};
}

Json bus_value_json(GVariant *value)
{
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return g_variant_get_boolean(value) != FALSE;
    case G_VARIANT_CLASS_BYTE:
        return g_variant_get_byte(value);
    case G_VARIANT_CLASS_INT16:
        return g_variant_get_int16(value);
    case G_VARIANT_CLASS_UINT16:
        return g_variant_get_uint16(value);
    case G_VARIANT_CLASS_INT32:
        return g_variant_get_int32(value);
    case G_VARIANT_CLASS_UINT32:
        return g_variant_get_uint32(value);
    case G_VARIANT_CLASS_INT64:
        return std::int64_t{g_variant_get_int64(value)};
    case G_VARIANT_CLASS_UINT64:
        return std::uint64_t{g_variant_get_uint64(value)};
    case G_VARIANT_CLASS_DOUBLE:
        return g_variant_get_double(value);
    case G_VARIANT_CLASS_STRING:
    case G_VARIANT_CLASS_OBJECT_PATH:
    case G_VARIANT_CLASS_SIGNATURE:
        return g_variant_get_string(value, nullptr);
    case G_VARIANT_CLASS_VARIANT:
        return bus_value_json(pvr::OwnedVariant(g_variant_get_variant(value)).get());
    case G_VARIANT_CLASS_ARRAY:
    case G_VARIANT_CLASS_TUPLE:
    case G_VARIANT_CLASS_DICT_ENTRY:
        break;
    default:
        return bus_value_text(value);
    }
    const bool is_dictionary = g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT) != FALSE;
    Json all = is_dictionary ? Json::object() : Json::array();
    for (std::size_t i = 0; i < g_variant_n_children(value); ++i) {
        Json child = bus_value_json(pvr::OwnedVariant(g_variant_get_child_value(value, i)).get());
        if (is_dictionary)
            all[child[0].get<std::string>()] = child[1];
        else
            all.push_back(std::move(child));
    }
    return all;
}

std::string bus_value_text(GVariant *value) { return pvr::OwnedText(g_variant_print(value, FALSE)).get(); }

} // namespace pvrctl
