#include "front.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "children.h"
#include "fd.h"
#include "folder.h"
#include "messages.h"
#include "process.h"
#include "sandbox.h"

namespace sandbox {
namespace {

constexpr std::chrono::seconds patience{5};

int keep(const Options &options, const InheritedSignals &signals, Fd lifeline, Front front)
{
    // A group of its own, so that no key reaches it; but the same session, which the command needs.
    setpgid(0, 0);
    prctl(PR_SET_NAME, "sandbox-keeper");
    adopt_orphans();
    // A foreground process may write to any terminal and change it. The keeper does so from behind.
    sigset_t terminal;
    sigemptyset(&terminal);
    sigaddset(&terminal, SIGTTOU);
    sigprocmask(SIG_BLOCK, &terminal, nullptr);
    return Sandbox(options, signals, std::move(lifeline), front).run();
}

/// Passes on what arrives until the keeper has ended; returns its status.
int relay(pid_t keeper, const sigset_t &handled)
{
    for (;;) {
        const int signal = sigwaitinfo(&handled, nullptr);
        int status = 0;
        if (signal == SIGCHLD && waitpid(keeper, &status, WNOHANG) == keeper)
            return status;
        if (signal > 0 && signal != SIGCHLD)
            kill(keeper, signal);
    }
}

/// The paths that the keeper announced.
std::vector<std::string> announced(int lifeline)
{
    std::vector<std::string> paths;
    std::array<char, PATH_MAX> path{};
    ssize_t length = 0;
    while ((length = recv(lifeline, path.data(), path.size(), MSG_DONTWAIT)) > 0)
        paths.emplace_back(path.data(), static_cast<std::size_t>(length));
    return paths;
}

} // namespace

int run_sandbox(const Options &options, const InheritedSignals &signals)
{
    // A parent may have it ignored, and then nobody's end would be told.
    std::signal(SIGCHLD, SIG_DFL);
    const sigset_t handled = signals.handled();
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    adopt_orphans();
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw system_failure("socketpair");
    Fd own(ends[0]);
    Fd keepers(ends[1]);
    const Front front{getpid(), getpgrp()};

    const pid_t keeper = fork();
    if (keeper < 0)
        throw system_failure("no process can be started");
    if (keeper == 0) {
        own.close();
        return keep(options, signals, std::move(keepers), front);
    }
    keepers.close();
    setpgid(keeper, keeper);

    const int status = relay(keeper, handled);
    // Processes first: what follows may be said to somebody who has stopped reading.
    kill_children(patience);
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    remove_owned(announced(own.get()));
    say("the sandbox's keeper was " + end_in_words(status));
    return own_failure;
}

} // namespace sandbox
