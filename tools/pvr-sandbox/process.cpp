#include "process.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "fd.h"

namespace sandbox {
namespace {

/// A child of fork() in a process with threads may neither lock nor allocate: all it needs is made before.
struct Prepared {
    std::vector<char *> arguments;
    std::vector<char *> environment;
    const std::array<int, 3> &standard;
    const InheritedSignals &signals;
    pid_t group;
    pid_t parent;
    int report;
};

std::vector<char *> pointers(const std::vector<std::string> &texts)
{
    std::vector<char *> all;
    all.reserve(texts.size() + 1);
    for (const std::string &text : texts)
        all.push_back(const_cast<char *>(text.c_str()));
    all.push_back(nullptr);
    return all;
}

bool leave_family(const Prepared &child) noexcept
{
    if (child.group != 0)
        return setpgid(0, child.group) == 0;
    return setsid() >= 0 && close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

bool redirect(const std::array<int, 3> &standard) noexcept
{
    for (int target = 0; target < 3; ++target) {
        const int source = standard[static_cast<std::size_t>(target)];
        if (source >= 0 && dup2(source, target) < 0)
            return false;
    }
    return true;
}

[[noreturn]] void become(const Prepared &child) noexcept
{
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0) {
        // A parent that ended before the request sends no signal any more.
        if (getppid() != child.parent)
            _exit(1);
        if (leave_family(child) && redirect(child.standard)) {
            child.signals.restore();
            environ = const_cast<char **>(child.environment.data());
            execvp(child.arguments.front(), child.arguments.data());
        }
    }
    const int error = errno;
    [[maybe_unused]] const auto written = write(child.report, &error, sizeof error);
    _exit(1);
}

/// The error that kept the child from being executed, or 0: then its end of the pipe was closed by exec.
int reported_error(int report)
{
    int error = 0;
    ssize_t length = 0;
    do {
        length = read(report, &error, sizeof error);
    } while (length < 0 && errno == EINTR);
    return length == static_cast<ssize_t>(sizeof error) ? error : 0;
}

} // namespace

Process::Process(const Launch &launch, const InheritedSignals &signals)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const Fd reader(ends[0]);
    Fd writer(ends[1]);

    const Prepared child{pointers(launch.arguments),
                         pointers(launch.environment),
                         launch.standard,
                         signals,
                         launch.group,
                         getpid(),
                         writer.get()};
    id_ = fork();
    if (id_ < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (id_ == 0)
        become(child);

    writer.close();
    if (const int error = reported_error(reader.get()); error != 0) {
        while (waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
        }
        throw std::system_error(error, std::generic_category(), launch.arguments.front());
    }
}

void Process::note_end(pid_t process, int status)
{
    if (process != id_ || has_ended_)
        return;
    status_ = status;
    has_ended_ = true;
}

void Process::send(int signal) const
{
    if (!has_ended_)
        kill(id_, signal);
}

int Process::exit_status() const { return WIFSIGNALED(status_) ? 128 + WTERMSIG(status_) : WEXITSTATUS(status_); }

std::string Process::end() const { return end_in_words(status_); }

std::string end_in_words(int status)
{
    if (!WIFSIGNALED(status))
        return "exit status " + std::to_string(WEXITSTATUS(status));
    const int signal = WTERMSIG(status);
    const char *name = sigabbrev_np(signal);
    if (name == nullptr)
        return "killed by signal " + std::to_string(signal);
    return std::string("killed by SIG") + name + " (" + sigdescr_np(signal) + ")";
}

} // namespace sandbox
