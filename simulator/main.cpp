// A Recording service for developing applications on a machine that is no television.
#include "control.h"
#include "log.h"
#include "service.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <glib-unix.h>
#include <iostream>
#include <stdexcept>

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

int serve(const Log &log)
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
        Service service(log, on_bus_lost);
        service.appear();
        const Control control(service, log, on_bus_lost);
        std::cout << "ready" << std::endl;
        return loop.run();
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
    app.set_version_flag("--version", PVR_VERSION);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == success ? success : wrong_usage;
    }

    // Whoever reads the log may leave; the service stays.
    std::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stderr, nullptr, _IOLBF, BUFSIZ);
    return serve(Log(is_quiet));
}
