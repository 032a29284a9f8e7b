// A Recording service for developing applications on a machine that is no television.
#include "control.h"
#include "device_options.h"
#include "log.h"
#include "service.h"
#include "source_options.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <glib-unix.h>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace simulator;

constexpr int success = 0;
constexpr int failure = 1;
constexpr int wrong_usage = 2;
constexpr int most_tuners = 8;
constexpr std::int64_t shortest_timeshift = 10; ///< seconds
constexpr std::int64_t longest_timeshift = 24 * 60 * 60;

/// Runs the default main context until it is told how the program ends.
class MainLoop {
public:
    MainLoop() : loop_(g_main_loop_new(nullptr, FALSE))
    {
        for (const int number : {SIGTERM, SIGINT})
            g_unix_signal_add(
                number,
                [](gpointer self) noexcept -> gboolean {
                    static_cast<MainLoop *>(self)->end(success);
                    return G_SOURCE_CONTINUE;
                },
                this);
    }
    ~MainLoop() { g_main_loop_unref(loop_); }
    MainLoop(const MainLoop &) = delete;
    MainLoop &operator=(const MainLoop &) = delete;

    int run()
    {
        g_main_loop_run(loop_);
        return status_;
    }
    void end(int status)
    {
        status_ = status;
        g_main_loop_quit(loop_);
    }

private:
    GMainLoop *loop_;
    int status_ = success;
};

int complain(const std::string &reason)
{
    std::cerr << "pvr-simulator: " << reason << "\n";
    return failure;
}

int serve(const Log &log, Equipment equipment)
{
    MainLoop loop;
    bool is_lost = false;
    const auto on_bus_lost = [&] {
        if (!is_lost)
            complain("the bus has ended the connection");
        is_lost = true;
        loop.end(failure);
    };
    try {
        Service service(log, std::move(equipment), on_bus_lost);
        service.appear();
        const Control control(service, log, on_bus_lost);
        std::cout << "ready" << std::endl;
        const int status = loop.run();
        service.stop();
        return status;
    } catch (const std::runtime_error &error) {
        return complain(error.what());
    }
}

} // namespace

int main(int count, char **arguments)
{
    CLI::App app("A Recording service for developing applications on a machine that is no television.\n"
                 "Prints \"ready\" once it can be called, and tells on standard error what is asked of it\n"
                 "and what it sends. SIGTERM or Ctrl-C ends it.");
    bool is_quiet = false;
    app.add_flag("--quiet", is_quiet, "Tell only of failures");
    std::vector<std::string> devices;
    std::vector<std::string> slow_devices;
    app.add_option("--device", devices,
                   "A storage device NAME=FOLDER; everything in FOLDER is lost when an application formats\n"
                   "the device. Given again: another one. Without any, and with PVR_SANDBOX set, the device\n"
                   "usb1 in $PVR_SANDBOX/devices/usb1")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--slow-device", slow_devices, "One that turns out to be too slow to be recorded to")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    std::vector<std::string> sources;
    app.add_option("--source", sources,
                   "What a channel broadcasts, ID=SOURCE: a transport stream that starts again at its end, or\n"
                   "exec:COMMAND for the standard output of a command. Given again: another channel.\n"
                   "Without it a programme of silence")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    Equipment equipment;
    app.add_option("--tuners", equipment.tuners, "How many channels can be received at the same time")
        ->capture_default_str()
        ->check(CLI::Range(1, most_tuners));
    std::vector<std::string> bit_rates;
    app.add_option("--bit-rate", bit_rates,
                   "How many bits per second a channel broadcasts, ID=NUMBER. Given again: another channel")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    std::int64_t timeshift = whole_seconds(equipment.longest_timeshift);
    app.add_option("--timeshift", timeshift, "How many seconds a timeshift holds; what comes before them is given up")
        ->capture_default_str()
        ->check(CLI::Range(shortest_timeshift, longest_timeshift));
    app.add_option("--speed", equipment.speed,
                   "How fast time passes: at 60 an hour lasts a minute, for all that is recorded and played")
        ->capture_default_str()
        ->check(CLI::Range(VirtualClock::slowest, VirtualClock::fastest));
    app.set_version_flag("--version", PVR_VERSION);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == success ? success : wrong_usage;
    }

    // Whoever reads the log may leave; the service stays.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not become larger is told of as an error
    std::setvbuf(stderr, nullptr, _IOLBF, BUFSIZ);
    try {
        const char *sandbox = std::getenv("PVR_SANDBOX");
        const bool is_in_sandbox = sandbox != nullptr && *sandbox != '\0';
        const bool are_given = !devices.empty() || !slow_devices.empty();
        equipment.devices =
            is_in_sandbox && !are_given ? sandbox_devices(sandbox) : described_devices(devices, slow_devices);
        equipment.sources = described_sources(sources);
        equipment.bit_rates = described_bit_rates(bit_rates);
        equipment.longest_timeshift = std::chrono::seconds(timeshift);
        if (std::isnan(equipment.speed)) // which is in no range, and passes all the same
            throw std::invalid_argument("--speed is a number");
        return serve(Log(is_quiet), std::move(equipment));
    } catch (const std::invalid_argument &error) {
        complain(error.what());
        return wrong_usage;
    } catch (const std::runtime_error &error) { // of the file system
        return complain(error.what());
    }
}
