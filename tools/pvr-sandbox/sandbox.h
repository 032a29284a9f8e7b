// The sandbox itself: what is started, in which order, and how all of it ends.
#pragma once

#include "environment.h"
#include "fd.h"
#include "folder.h"
#include "job_control.h"
#include "loop.h"
#include "options.h"
#include "process.h"
#include "service_log.h"
#include "signals.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace sandbox {

/// The keeper: runs in a process of its own, which the user's end of the sandbox starts and waits for.
class Sandbox {
public:
    /// The lifeline is at its end when the front has ended; it takes the paths that are to be removed.
    Sandbox(const Options &options, const InheritedSignals &signals, Fd lifeline, Front front);

    /// Returns the exit status of the whole, with everything ended and removed.
    int run();

private:
    // In sandbox_start.cpp
    void make_folder();
    void start_bus();
    void start_service();
    ServiceLog open_service_log();

    int run_command();
    void restart_or_stop();
    void end_everything();
    void remove_folder();

    /// Handles events until the condition holds, false when the time is up before. Throws when the
    /// sandbox has to end first.
    bool wait(const std::function<bool()> &condition, std::optional<std::chrono::milliseconds> limit = {});
    bool has_to_end() const;
    bool has_command_ended() const { return command_ && command_->has_ended(); }

    void take_signals();
    void reap();

    /// Ends the children that are selected: first asks them, then kills them.
    void end_children(const std::function<bool(pid_t)> &is_selected);
    void tell(const std::string &text) const;

    const Options &options_;
    const InheritedSignals &signals_;
    Fd lifeline_;
    JobControl job_control_;

    Loop loop_;
    Fd signal_fd_;
    Watch signal_watch_;
    Watch lifeline_watch_;
    bool is_front_gone_ = false;
    int interruption_ = 0;

    Environment environment_;
    std::optional<Folder> folder_;
    std::string address_;
    std::optional<ServiceLog> bus_log_;
    std::optional<ServiceLog> service_log_;
    std::optional<Process> bus_;
    std::optional<Process> service_;
    std::chrono::steady_clock::time_point service_started_;
    std::optional<Process> command_;
};

} // namespace sandbox
