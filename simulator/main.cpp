// A Recording service for developing applications on a machine that is no television.
#include "command_line.h"
#include "control.h"
#include "event_log.h"
#include "log.h"
#include "scenario_file.h"
#include "service.h"
#include "toml_file.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <glib-unix.h>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace simulator;

constexpr int success = 0;
constexpr int failure = 1;
constexpr int wrong_usage = 2;

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

int serve(Log &log, Scenario scenario, const std::string &event_log)
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
        std::optional<EventLog> events;
        if (!event_log.empty()) {
            events.emplace(event_log, scenario.equipment.devices);
            log.copy_to([&](const std::string &text) { events->line(text); });
        }
        Service service(log, std::move(scenario.equipment), on_bus_lost);
        if (events)
            events->follow([&service] { return service.set().clock.now(); });
        // First the control: who waits for the service finds both.
        const Control control(service, log, on_bus_lost);
        service.appear();
        std::optional<ScenarioPlayer> player;
        if (!scenario.steps.empty())
            player.emplace(std::move(scenario.steps), service, log).play();
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
    const CommandLine given(app);
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
        Log log(given.is_quiet());
        return serve(log, given.scenario(is_in_sandbox ? std::optional<std::string>(sandbox) : std::nullopt),
                     given.event_log());
    } catch (const WrongFile &error) { // each of its lines names the file
        std::cerr << error.what() << "\n";
        return wrong_usage;
    } catch (const std::invalid_argument &error) {
        complain(error.what());
        return wrong_usage;
    } catch (const std::runtime_error &error) { // of the file system
        return complain(error.what());
    }
}
