#include "command_line.h"

#include "config_file.h"
#include "device_options.h"
#include "source_options.h"

#include <chrono>
#include <cmath>
#include <stdexcept>

namespace simulator {
namespace {

void add_list(CLI::App &app, const std::string &name, std::vector<std::string> &values, const std::string &description)
{
    app.add_option(name, values, description)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::string decimal(double number)
{
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

} // namespace

CommandLine::CommandLine(CLI::App &app)
{
    const Equipment usual;
    app.add_flag("--quiet", is_quiet_, "Tell only of failures");
    CLI::Option *config =
        app.add_option("--config", config_,
                       "A file that tells all this and more: channels, devices, latencies. What the options\n"
                       "say holds in its place");
    app.add_option("--scenario", scenario_,
                   "A file that tells what happens to the set, and when. Its time stands still but for that")
        ->excludes(config);
    app.add_option("--event-log", event_log_,
                   "A file for a line of each call, each signal and whatever else happens, with the set's time");
    add_list(app, "--device", devices_,
             "A storage device NAME=FOLDER; everything in FOLDER is lost when an application formats\n"
             "the device. Given again: another one. Without any, and with PVR_SANDBOX set, the device\n"
             "usb1 in $PVR_SANDBOX/devices/usb1");
    add_list(app, "--slow-device", slow_devices_, "One that turns out to be too slow to be recorded to");
    add_list(app, "--source", sources_,
             "What a channel broadcasts, ID=SOURCE: a transport stream that starts again at its end, or\n"
             "exec:COMMAND for the standard output of a command. Given again: another channel.\n"
             "Without it a programme of silence");
    app.add_option("--tuners", tuners_, "How many channels can be received at the same time")
        ->default_str(std::to_string(usual.tuners))
        ->check(CLI::Range(1, Equipment::most_tuners));
    add_list(app, "--bit-rate", bit_rates_,
             "How many bits per second a channel broadcasts, ID=NUMBER. Given again: another channel");
    app.add_option("--timeshift", timeshift_, "How many seconds a timeshift holds; what comes before them is given up")
        ->default_str(std::to_string(whole_seconds(usual.longest_timeshift)))
        ->check(CLI::Range(Equipment::shortest_timeshift, Equipment::most_timeshift));
    app.add_option("--speed", speed_,
                   "How fast time passes: at 60 an hour lasts a minute, for all that is recorded and played")
        ->default_str(decimal(usual.speed))
        ->check(CLI::Range(VirtualClock::slowest, VirtualClock::fastest));
}

Scenario CommandLine::scenario(const std::optional<std::string> &sandbox) const
{
    const auto change = [&](Equipment &equipment) {
        overrule(equipment);
        if (sandbox && equipment.devices.empty())
            equipment.devices = sandbox_devices(*sandbox);
    };
    if (!scenario_.empty())
        return read_scenario(scenario_, change);
    Scenario without_steps;
    if (!config_.empty())
        without_steps.equipment = configured(config_);
    change(without_steps.equipment);
    return without_steps;
}

void CommandLine::overrule(Equipment &equipment) const
{
    if (!devices_.empty() || !slow_devices_.empty())
        equipment.devices = described_devices(devices_, slow_devices_);
    for (const auto &[service_id, source] : described_sources(sources_, equipment.channels))
        equipment.sources[service_id] = source;
    const auto bit_rates = described_bit_rates(bit_rates_, equipment.channels);
    for (Channel &channel : equipment.channels)
        if (const auto given = bit_rates.find(channel.service_id); given != bit_rates.end())
            channel.bits_per_second = given->second;
    equipment.tuners = tuners_.value_or(equipment.tuners);
    equipment.speed = speed_.value_or(equipment.speed);
    if (std::isnan(equipment.speed)) // which is in no range, and passes all the same
        throw std::invalid_argument("--speed is a number");
    if (timeshift_)
        equipment.longest_timeshift = std::chrono::seconds(*timeshift_);
}

} // namespace simulator
