#include "sandbox.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <set>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "children.h"
#include "messages.h"

namespace sandbox {
namespace {

using namespace std::chrono_literals;

/// How long a process that is asked to end may take before it is killed.
constexpr auto grace = 3s;
/// How long one that is killed may take; beyond that it is not ours to end.
constexpr auto patience = 5s;
/// From one start of the service to the next.
constexpr auto restart_interval = 1s;

/// A signal ended the sandbox before the command ran.
struct Interrupted {
    int signal;
};

/// There is nobody left to tell.
struct Abandoned {};

} // namespace

Sandbox::Sandbox(const Options &options, const InheritedSignals &signals, Fd lifeline, Front front)
    : options_(options), signals_(signals), lifeline_(std::move(lifeline)), job_control_(front)
{
    const sigset_t handled = signals.handled();
    signal_fd_ = Fd(signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signal_fd_)
        throw system_failure("signals cannot be received");
    signal_watch_ = loop_.watch(signal_fd_.get(), [this] { take_signals(); });
    say_only_until_end_of(lifeline_.get());
    lifeline_watch_ = loop_.watch(lifeline_.get(), [this] {
        is_front_gone_ = true;
        lifeline_watch_ = Watch();
    });
}

int Sandbox::run()
{
    int status = own_failure;
    try {
        make_folder();
        start_bus();
        if (options_.has_service)
            start_service();
        status = run_command();
    } catch (const Interrupted &interrupted) {
        status = 128 + interrupted.signal;
    } catch (const Abandoned &) {
        status = own_failure;
    } catch (const std::exception &error) {
        say(error.what());
    }
    for (const auto finish : {&Sandbox::end_everything, &Sandbox::remove_folder}) {
        try {
            (this->*finish)();
        } catch (const std::exception &error) {
            say(error.what());
            status = own_failure;
        }
    }
    return status;
}

int Sandbox::run_command()
{
    // The last moment for a signal to mean the sandbox.
    take_signals();
    wait([] { return true; });
    try {
        command_.emplace(
            Launch{.arguments = options_.command, .environment = environment_.entries(), .group = job_control_.group()},
            signals_);
    } catch (const std::system_error &error) {
        say(options_.command.front() + ": " + error.code().message());
        return error.code() == std::errc::no_such_file_or_directory ? 127 : 126;
    }
    tell("the command is process " + std::to_string(command_->id()));
    while (!command_->has_ended()) {
        wait([&] { return command_->has_ended() || (service_ && service_->has_ended()); });
        if (!command_->has_ended())
            restart_or_stop();
    }
    tell("the command ended, " + command_->end());
    return command_->exit_status();
}

void Sandbox::restart_or_stop()
{
    const std::string ended = "the service ended, " + service_->end();
    service_.reset();
    switch (options_.on_service_exit) {
    case OnServiceExit::stop:
        throw Failure(ended + service_log_->last_lines());
    case OnServiceExit::keep:
        say(ended);
        return;
    case OnServiceExit::restart:
        say(ended + "; it is started again");
        const auto pause = service_started_ + restart_interval - std::chrono::steady_clock::now();
        wait([&] { return has_command_ended(); },
             std::chrono::ceil<std::chrono::milliseconds>(std::max(pause, decltype(pause)::zero())));
        if (!has_command_ended())
            start_service();
    }
}

bool Sandbox::has_to_end() const { return is_front_gone_ || interruption_ != 0 || (bus_ && bus_->has_ended()); }

bool Sandbox::wait(const std::function<bool()> &condition, std::optional<std::chrono::milliseconds> limit)
{
    const bool is_in_time = loop_.wait([&] { return has_to_end() || condition(); }, limit);
    if (is_front_gone_)
        throw Abandoned();
    if (interruption_ != 0)
        throw Interrupted{interruption_};
    if (!has_command_ended() && bus_ && bus_->has_ended())
        throw Failure("the bus ended, " + bus_->end() + bus_log_->last_lines());
    return is_in_time;
}

void Sandbox::take_signals()
{
    signalfd_siginfo taken{};
    while (read(signal_fd_.get(), &taken, sizeof taken) == static_cast<ssize_t>(sizeof taken)) {
        const int signal = static_cast<int>(taken.ssi_signo);
        if (signal == SIGCHLD)
            reap();
        else if (!command_)
            interruption_ = signal != SIGCONT ? signal : interruption_;
        else if (signal == SIGCONT && !command_->has_ended())
            job_control_.note_front_continued(command_->id());
        else if (signal == SIGTERM || signal == SIGHUP)
            command_->send(signal);
        // The keys of the terminal reach the command by themselves.
    }
}

void Sandbox::reap()
{
    int status = 0;
    for (pid_t process = 0; (process = waitpid(-1, &status, WNOHANG | WUNTRACED | WCONTINUED)) > 0;) {
        const bool is_command = command_ && process == command_->id();
        if (WIFSTOPPED(status) || WIFCONTINUED(status)) {
            if (is_command && WIFSTOPPED(status))
                job_control_.note_stopped(process);
            else if (is_command)
                job_control_.note_continued();
            continue;
        }
        for (std::optional<Process> *known : {&bus_, &service_, &command_}) {
            if (*known)
                (*known)->note_end(process, status);
        }
    }
}

void Sandbox::end_children(const std::function<bool(pid_t)> &is_selected)
{
    std::set<pid_t> asked;
    std::vector<pid_t> left;
    // The children of a process that ends become ours, and so are ended in their turn.
    const auto have_ended = [&](int signal) {
        left = own_children();
        std::erase_if(left, [&](pid_t child) { return !is_selected(child); });
        for (const pid_t child : left) {
            if (signal == SIGKILL || asked.insert(child).second) {
                kill(child, signal);
                kill(child, SIGCONT);
            }
        }
        return left.empty();
    };
    const bool have_obeyed =
        !is_front_gone_ && loop_.wait([&] { return is_front_gone_ || have_ended(SIGTERM); }, grace) && left.empty();
    if (have_obeyed || loop_.wait([&] { return have_ended(SIGKILL); }, patience))
        return;
    for (const pid_t child : left)
        say("process " + std::to_string(child) + " cannot be ended");
}

void Sandbox::end_everything()
{
    const auto is = [](const std::optional<Process> &process, pid_t child) {
        return process && process->id() == child;
    };
    end_children([&](pid_t child) { return !is(bus_, child) && !is(service_, child); });
    if (command_ && command_->has_ended() && command_->exit_status() > 128)
        job_control_.note_killed();
    end_children([&](pid_t child) { return !is(bus_, child); });
    end_children([](pid_t) { return true; });
    job_control_.note_continued();
}

void Sandbox::remove_folder()
{
    if (!folder_)
        return;
    if (!options_.keeps_folder)
        folder_->remove();
    else if (!is_front_gone_)
        say("the folder is kept: " + folder_->path());
}

void Sandbox::tell(const std::string &text) const
{
    if (options_.is_verbose)
        say(text);
}

} // namespace sandbox
