#include "config_file.h"

#include "device_options.h"
#include "log.h"
#include "pvr_gdbus_generated.h"
#include "test_programme.h"
#include "virtual_clock.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

namespace simulator {
namespace {

constexpr int usual_bit_rate = 4'000'000;
constexpr int usual_radio_bit_rate = TestProgramme::lowest_bit_rate;
constexpr std::string_view of_all_methods = "all";

/// "5-1".
std::optional<std::pair<std::uint16_t, std::uint16_t>> parted_number(const std::string &text)
{
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    const char *behind = text.data() + text.size();
    const auto [dash, error] = std::from_chars(text.data(), behind, major);
    if (error != std::errc() || dash == behind || *dash != '-')
        return std::nullopt;
    const auto [end, second_error] = std::from_chars(dash + 1, behind, minor);
    if (second_error != std::errc() || end != behind)
        return std::nullopt;
    return std::pair(major, minor);
}

void read_number(const TomlTable &table, Channel &channel)
{
    table.require("number", "the number of the channel, such as '5-1'");
    const std::optional<std::string> text = table.text("number");
    if (!text)
        return;
    if (const auto number = parted_number(*text))
        std::tie(channel.major, channel.minor) = *number;
    else
        table.refuse("number", "two whole numbers up to 65535, such as '5-1'");
}

void read_bit_rate(const TomlTable &table, Channel &channel)
{
    if (channel.kind == ChannelKind::analogue) {
        if (table.has("bit_rate"))
            table.refuse("bit_rate", "none of an analogue channel, which has no stream");
        return;
    }
    const int usual = channel.kind == ChannelKind::radio ? usual_radio_bit_rate : usual_bit_rate;
    channel.bits_per_second = static_cast<int>(
        table.integer("bit_rate", TestProgramme::lowest_bit_rate, TestProgramme::highest_bit_rate).value_or(usual));
}

Channel read_channel(const TomlTable &table)
{
    static constexpr const char *kinds[] = {"television", "radio", "analogue"}; // in the order of ChannelKind
    Channel channel{};
    table.require("service_id", "a whole number from 0");
    channel.service_id = table.service_id("service_id").value_or(0);
    table.require("name", "a text");
    channel.name = table.text("name").value_or("");
    read_number(table, channel);
    channel.kind = static_cast<ChannelKind>(table.word("kind", kinds).value_or(0));
    channel.source =
        static_cast<int>(table.integer("source_id", 0, std::numeric_limits<std::int32_t>::max()).value_or(1));
    read_bit_rate(table, channel);
    channel.has_signal = table.boolean("signal").value_or(true);
    channel.is_locked = table.boolean("locked").value_or(false);
    channel.is_scrambled = table.boolean("scrambled").value_or(false);
    channel.titles = table.texts("programmes").value_or(std::vector<std::string>());
    return channel;
}

void read_channels(const TomlFile &file, const TomlTable &root, Equipment &equipment)
{
    if (!root.has("channel"))
        return;
    equipment.channels.clear();
    for (const TomlTable &table : root.tables("channel")) {
        const Channel channel = read_channel(table);
        const bool is_known = std::any_of(equipment.channels.begin(), equipment.channels.end(),
                                          [&](const Channel &other) { return other.service_id == channel.service_id; });
        if (is_known && table.has("service_id"))
            table.refuse("service_id", "another than that of the channels before it");
        if (const auto source = table.text("source"))
            equipment.sources[channel.service_id] = source->starts_with("exec:") ? *source : file.resolved(*source);
        equipment.channels.push_back(channel);
    }
}

void read_devices(const TomlFile &file, const TomlTable &root, Equipment &equipment)
{
    for (const TomlTable &table : root.tables("device")) {
        table.require("name", "a text");
        table.require("folder", "the path of a folder");
        const auto name = table.text("name");
        const auto folder = table.text("folder");
        const bool is_slow = table.boolean("slow").value_or(false);
        if (!name || !folder)
            continue;
        try {
            const DeviceDescription device = described_device(*name, file.resolved(*folder), is_slow);
            for (const DeviceDescription &other : equipment.devices)
                check_together(other, device);
            equipment.devices.push_back(device);
        } catch (const std::invalid_argument &error) {
            table.complain("folder", std::string(error.what()) + ", expected another");
        }
    }
}

/// A key may have a NUL in it, which would end the name that is looked for.
bool is_method(const std::string &key)
{
    return key.find('\0') == std::string::npos &&
           g_dbus_interface_info_lookup_method(org_vexan_tv_pvr_interface_info(), key.c_str()) != nullptr;
}

void read_latencies(const TomlTable &root, Latencies &latencies)
{
    const std::optional<TomlTable> table = root.table("latency");
    if (!table)
        return;
    for (const std::string &key : table->keys()) {
        const auto milliseconds = table->integer(key, 0, Latencies::longest);
        const bool is_of_all = key == of_all_methods;
        if (!is_of_all && !is_method(key))
            table->complain(key, "'" + shown(key) + "' is no method, expected one of org.vexan.tv.pvr, or all");
        else if (milliseconds)
            (is_of_all ? latencies.all : latencies.methods[key]) = static_cast<std::uint32_t>(*milliseconds);
    }
}

} // namespace

Equipment configured(const TomlFile &file, const TomlTable &table)
{
    Equipment equipment;
    equipment.speed = table.number("speed", VirtualClock::slowest, VirtualClock::fastest).value_or(equipment.speed);
    equipment.tuners = static_cast<int>(table.integer("tuners", 1, Equipment::most_tuners).value_or(equipment.tuners));
    if (const auto seconds = table.integer("timeshift", Equipment::shortest_timeshift, Equipment::most_timeshift))
        equipment.longest_timeshift = std::chrono::seconds(*seconds);
    read_latencies(table, equipment.latencies);
    read_devices(file, table, equipment);
    read_channels(file, table, equipment);
    return equipment;
}

Equipment configured(const std::string &path)
{
    const TomlFile file(path);
    Equipment equipment = configured(file, file.root());
    file.finish();
    return equipment;
}

} // namespace simulator
