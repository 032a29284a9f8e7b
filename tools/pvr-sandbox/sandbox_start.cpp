// How a sandbox comes up: the folder, the bus, the service.
#include "sandbox.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "bus.h"
#include "messages.h"
#include "name_watch.h"

namespace sandbox {
namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr std::chrono::seconds bus_start_limit{10};

std::string seconds(std::chrono::seconds time) { return std::to_string(time.count()) + " s"; }

} // namespace

void Sandbox::make_folder()
{
    folder_.emplace(options_.folder, [this](const std::string &path) {
        if (!options_.keeps_folder)
            send(lifeline_.get(), path.data(), path.size(), MSG_NOSIGNAL);
    });
    tell("the folder is " + folder_->path());
    environment_.set("PVR_SANDBOX", folder_->path());
    environment_.add_to_path(program_folder());
    if (!environment_.has("PVR_PLATFORM_CONFIG"))
        environment_.set("PVR_PLATFORM_CONFIG", folder_->write("platform.conf", platform_configuration()));
}

void Sandbox::start_bus()
{
    address_ = bus_address(folder_->claim("bus"));
    environment_.set("DBUS_SYSTEM_BUS_ADDRESS", address_);
    bus_log_.emplace(folder_->make("bus.log"), folder_->file("bus.log"));

    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw system_failure("pipe");
    const Fd reader(ends[0]);
    Fd writer(ends[1]);
    const Fd nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const std::vector<std::string> command = bus_command(folder_->write("bus.conf", bus_configuration(address_)));
    try {
        bus_.emplace(Launch{command, environment_.entries(), {nothing.get(), writer.get(), bus_log_->descriptor()}},
                     signals_);
    } catch (const std::system_error &error) {
        throw Failure(error.code() == std::errc::no_such_file_or_directory
                          ? "dbus-daemon is not found in PATH (Debian has it in the package dbus-daemon)"
                          : std::string("dbus-daemon cannot be started: ") + error.code().message());
    }
    writer.close();

    bool is_listening = false;
    Watch printed;
    printed = loop_.watch(reader.get(), [&] {
        std::array<char, 256> text{};
        is_listening = read(reader.get(), text.data(), text.size()) > 0;
        printed = Watch();
    });
    if (!wait([&] { return is_listening; }, bus_start_limit))
        throw Failure("the bus does not listen after " + seconds(bus_start_limit) + bus_log_->last_lines());
    tell("the bus is " + address_ + ", process " + std::to_string(bus_->id()));
}

ServiceLog Sandbox::open_service_log()
{
    if (options_.service_log.empty())
        return {folder_->make("service.log"), folder_->file("service.log")};
    if (options_.service_log == "-")
        return ServiceLog::standard_error();
    return ServiceLog::file(options_.service_log);
}

void Sandbox::start_service()
{
    const std::string called = "the service " + options_.service;
    if (!service_log_)
        service_log_ = open_service_log();

    // The bus may not have noticed yet that an earlier service has ended.
    const NameWatch name(address_, service_name);
    const auto is_name = [&](NameWatch::State state) { return name.state() == state || !name.error().empty(); };
    const bool is_free =
        wait([&] { return is_name(NameWatch::State::without_owner) || has_command_ended(); }, options_.wait);
    if (has_command_ended())
        return;
    if (!name.error().empty())
        throw Failure("the bus cannot be asked for " + std::string(service_name) + ": " + name.error());
    if (!is_free)
        throw Failure(std::string(service_name) + " is owned by somebody else");

    const Fd nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    std::vector<std::string> command{options_.service};
    command.insert(command.end(), options_.service_options.begin(), options_.service_options.end());
    const int log = service_log_->descriptor();
    try {
        service_started_ = std::chrono::steady_clock::now();
        service_.emplace(Launch{command, environment_.entries(), {nothing.get(), log, log}}, signals_);
    } catch (const std::system_error &error) {
        throw Failure(called + " cannot be started: " + error.code().message());
    }

    const bool is_in_time =
        wait([&] { return is_name(NameWatch::State::owned) || service_->has_ended() || has_command_ended(); },
             options_.wait);
    if (has_command_ended())
        return;
    if (service_->has_ended())
        throw Failure(called + " ended before it owned " + service_name + ", " + service_->end() +
                      service_log_->last_lines());
    if (!name.error().empty())
        throw Failure("the bus cannot be asked for " + std::string(service_name) + ": " + name.error());
    if (!is_in_time)
        throw Failure(called + " does not own " + service_name + " after " + seconds(options_.wait) +
                      service_log_->last_lines());
    tell("the service is ready, process " + std::to_string(service_->id()));
}

} // namespace sandbox
