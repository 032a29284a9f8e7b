#include "completion.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <map>
#include <pvr_gdbus_generated.h>
#include <pvr_service_api.h>
#include <string_view>
#include <system_error>
#include <utility>

#include "arguments.h"
#include "call_row.h"
#include "events/names.h"
#include "files/record_layout.h"
#include "languages.h"
#include "listed.h"
#include "playback.h"
#include "recordings.h"
#include "simulator.h"
#include "until.h"

namespace pvrctl {
namespace {

using Candidates = std::vector<Candidate>;

/// The parser's options have no room for it.
std::map<const CLI::Option *, Completes> &kinds_of_arguments()
{
    static std::map<const CLI::Option *, Completes> kinds;
    return kinds;
}

/// Makes the session with a service that runs already: asking for words is no reason to have the bus start one.
bool is_there(Service &service)
{
    service.find_bus();
    if (!service.owner())
        return false;
    service.open();
    return true;
}

// ---- what does not change

Candidates words(std::initializer_list<const char *> texts)
{
    Candidates found;
    for (const char *text : texts)
        found.push_back({text, ""});
    return found;
}

Candidates known_speeds(Service &)
{
    Candidates found;
    for (const std::string_view speed : speed_names())
        found.push_back({std::string(speed), speed.find('/') == std::string_view::npos ? "winds" : "slow motion"});
    return found;
}

Candidates date_states(Service &) { return words({"set", "unset"}); }

Candidates fault_kinds(Service &)
{
    return {{"delay", "calls of a method wait"},
            {"no-answer", "calls of a method are never answered"},
            {"error", "calls of a method fail"},
            {"result", "a method answers another result"},
            {"wrong-type", "a method answers another type"},
            {"crash", "a method's call kills the service"},
            {"drop", "a signal is lost"},
            {"duplicate", "a signal is sent twice"},
            {"hold", "a signal comes behind the next"},
            {"short-record", "half of a signal's digits are missing"},
            {"no-digits", "a signal's digits are none"},
            {"wrong-variant", "a signal's variant holds a text"},
            {"device-full", "a storage device is full"},
            {"device-pulled", "a storage device is gone"}};
}

Candidates wire_signals(Service &)
{
    Candidates found;
    for (GDBusSignalInfo *const *signal = org_vexan_tv_pvr_interface_info()->signals; *signal != nullptr; ++signal)
        found.push_back({(*signal)->name, "a signal"});
    return found;
}

Candidates events(Service &)
{
    Candidates found;
    for (const pvr::NamedCode *table : {pvr::ps_signal_type_e_str, pvr::ps_method_e_str})
        for (; table->name != nullptr; ++table)
            found.push_back({table->name, std::to_string(table->value)});
    return found;
}

Candidates fields(Service &)
{
    Candidates found;
    for (const pvr::RecordField &field : pvr::record_fields)
        if (std::string_view(field.name) != "version")
            found.push_back({field.name + std::string("="), ""});
    return found;
}

// ---- what the library has

std::string error_text(int code)
{
    std::array<char, 255> text{};
    return svc_pvr_get_err_text(code, 0, text.data()) == PS_SUCCESS ? text.data() : "";
}

Candidates text_languages(Service &)
{
    error_text(0); // binds the catalogues
    Candidates found;
    for (const std::string &language : catalogues_in(catalogue_directory()))
        found.push_back({language, ""});
    return found;
}

Candidates error_codes(Service &)
{
    constexpr int last_of_all = 300;
    const std::string unknown = error_text(std::numeric_limits<int>::min());
    const Language english(fallback_language);
    const std::string translated = error_text(std::numeric_limits<int>::min());
    Candidates found;
    for (int code = 1; code <= last_of_all; ++code)
        if (std::string text = error_text(code); !text.empty() && text != unknown && text != translated)
            found.push_back({std::to_string(code), std::move(text)});
    return found;
}

// ---- what the service tells

Candidates running(Service &service)
{
    if (!is_there(service))
        return {};
    Candidates found;
    for (const Recording &recording : running_recordings(service))
        found.push_back({std::to_string(recording.service_id), recording_text(recording)});
    return found;
}

Candidates channels(Service &service)
{
    Candidates found = running(service);
    std::uint64_t watched = 0;
    if (is_there(service) && svc_pvr_get_current_livetv_service_id(&watched) == PS_SUCCESS && watched != 0)
        found.push_back({std::to_string(watched), "watched"});
    return found;
}

/// The service lists no handles of playbacks. Those that it issues first are looked at.
Candidates playbacks(Service &service)
{
    constexpr int last_looked_at = 32;
    if (!is_there(service))
        return {};
    Candidates found;
    for (int handle = 1; handle <= last_looked_at; ++handle)
        if (const Playback playback = playback_of(service, handle); playback.is_running())
            found.push_back({std::to_string(handle), "plays " + playback.uri});
    return found;
}

Candidates handles(Service &service)
{
    Candidates found = playbacks(service);
    if (!is_there(service))
        return found;
    for (const int handle : listed(service, svc_pvr_get_handle_for_record))
        found.push_back({std::to_string(handle), "records"});
    return found;
}

struct KnownDevice {
    int handle;
    device_info record;
};

std::vector<KnownDevice> known_devices(Service &service)
{
    if (!is_there(service))
        return {};
    std::vector<KnownDevice> devices;
    for (const int handle : listed(service, svc_pvr_get_device_list)) {
        device_info record{};
        service.check(svc_pvr_get_device_info(handle, &record));
        devices.push_back({handle, record});
    }
    return devices;
}

Candidates devices(Service &service)
{
    Candidates found;
    for (const KnownDevice &device : known_devices(service))
        found.push_back(
            {std::to_string(device.handle), std::string(device.record.device_name) + ", " + device.record.mnt_path});
    return found;
}

Candidates recordings(Service &service)
{
    Candidates found;
    for (const KnownDevice &device : known_devices(service)) {
        std::error_code error;
        for (const auto &entry : std::filesystem::directory_iterator(device.record.mnt_path, error))
            if (entry.path().extension() == ".srf")
                found.push_back({entry.path(), std::string("on ") + device.record.device_name});
    }
    return found;
}

Candidates fault_targets(Service &service)
{
    Candidates found = wire_signals(service);
    for (GDBusMethodInfo *const *method = org_vexan_tv_pvr_interface_info()->methods; *method != nullptr; ++method)
        found.push_back({(*method)->name, "a method"});
    try {
        for (const KnownDevice &device : known_devices(service))
            found.push_back({device.record.device_name, "a storage device"});
    } catch (const Failure &) {
        return found; // it can be told what to do when its service is not there
    }
    return found;
}

Candidates faults(Service &service)
{
    const pvr::OwnedVariant answer = Simulator(service).ask("ListFaults");
    const Json all = bus_value_json(answer.get());
    Candidates found;
    for (const Json &fault : all.at(0))
        found.push_back({fault[0].dump(), fault[1].get<std::string>() + ' ' + fault[2].get<std::string>()});
    return found;
}

Candidates functions(Service &)
{
    Candidates all;
    for (const ExportedFunction &function : exported_functions())
        all.push_back({std::string(function.name), ""});
    return all;
}

Candidates awaited_ids(Service &service)
{
    Candidates all = running(service);
    const Candidates more = handles(service);
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

struct Source {
    Completes what;
    Candidates (*found)(Service &service);
};

constexpr std::array sources{
    Source{Completes::recording, recordings},
    Source{Completes::channel, channels},
    Source{Completes::recorded, running},
    Source{Completes::playback, playbacks},
    Source{Completes::handle, handles},
    Source{Completes::device, devices},
    Source{Completes::fault, faults},
    Source{Completes::fault_kind, fault_kinds},
    Source{Completes::fault_target, fault_targets},
    Source{Completes::signal, wire_signals},
    Source{Completes::date_state, date_states},
    Source{Completes::event, events},
    Source{Completes::field, fields},
    Source{Completes::speed, known_speeds},
    Source{Completes::language, text_languages},
    Source{Completes::error_code, error_codes},
    Source{Completes::function, functions},
    Source{Completes::awaited_state, [](Service &) { return awaited_states_offered(); }},
    Source{Completes::awaited_id, awaited_ids},
};

} // namespace

CLI::Option *completes(CLI::Option *argument, Completes what)
{
    kinds_of_arguments()[argument] = what;
    return argument;
}

Completes what_completes(const CLI::Option *argument)
{
    const auto found = kinds_of_arguments().find(argument);
    return found != kinds_of_arguments().end() ? found->second : Completes::nothing;
}

std::vector<Candidate> candidates(Service &service, Completes what)
{
    for (const Source &source : sources)
        if (source.what == what)
            return source.found(service);
    return {};
}

} // namespace pvrctl
