#include "support/described_set.h"

#include "pvr_gdbus_generated.h"
#include "support/check.h"

#include <glib.h>
#include <set>
#include <string>

namespace fuzz {
namespace {

bool is_text(const std::string &text)
{
    return !text.empty() && g_utf8_validate(text.c_str(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

bool is_within(std::int64_t number, std::int64_t least, std::int64_t most) { return number >= least && number <= most; }

void check_channel(const simulator::Channel &channel)
{
    check(is_text(channel.name), "a channel has a name");
    const bool has_stream = channel.kind != simulator::ChannelKind::analogue;
    check(has_stream ? is_within(channel.bits_per_second, 188'000, 50'000'000) : channel.bits_per_second == 0,
          "a stream is neither too slow nor too fast");
    check(channel.source >= 0, "a reception has a number");
    for (const std::string &title : channel.titles)
        check(is_text(title), "a programme has a title");
}

void check_method(const std::string &name)
{
    const GDBusMethodInfo *const method =
        g_dbus_interface_info_lookup_method(org_vexan_tv_pvr_interface_info(), name.c_str());
    check(method != nullptr && method->name == name, "it is a method that waits");
}

} // namespace

void check_equipment(const simulator::Equipment &equipment)
{
    check(equipment.speed >= 0.01 && equipment.speed <= 10'000, "time passes, and not too fast");
    check(is_within(equipment.tuners, 1, 8), "there is a tuner");
    check(is_within(simulator::whole_seconds(equipment.longest_timeshift), 10, 86'400), "a timeshift holds something");

    check(!equipment.channels.empty(), "there is a channel");
    std::set<std::uint64_t> ids;
    for (const simulator::Channel &channel : equipment.channels) {
        check(ids.insert(channel.service_id).second, "each channel has an id of its own");
        check_channel(channel);
    }
    for (const auto &[id, source] : equipment.sources)
        check(ids.contains(id) && !source.empty(), "what is broadcast is broadcast on a channel");

    std::set<std::string> names, folders;
    for (const simulator::DeviceDescription &device : equipment.devices) {
        check(is_text(device.name) && names.insert(device.name).second, "each device has a name of its own");
        check(is_text(device.folder) && folders.insert(device.folder).second, "and a folder of its own");
        check(device.folder.starts_with('/') && device.folder != "/", "which is not the whole machine");
    }
    check(is_within(equipment.latencies.all, 0, 3'600'000), "no call waits for more than an hour");
    for (const auto &[method, milliseconds] : equipment.latencies.methods) {
        check_method(method);
        check(is_within(milliseconds, 0, 3'600'000), "nor one of a method");
    }
}

} // namespace fuzz
