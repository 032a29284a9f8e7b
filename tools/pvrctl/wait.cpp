#include "wait.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <glib.h>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

#include "failure.h"

namespace pvrctl {
namespace {

void drop_news()
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

// What the handler may touch.
constinit std::atomic<int> kept_signal{0};
constinit std::atomic<int> wake_fd{-1}; ///< -1 until signals are deferred
static_assert(std::atomic<int>::is_always_lock_free);

void on_end_signal(int signal)
{
    const int error = errno;
    if (wake_fd < 0 || kept_signal.exchange(signal) != 0)
        _exit(Interrupted{signal}.exit_code());
    const std::uint64_t one = 1;
    if (write(wake_fd, &one, sizeof one) < 0)
        _exit(Interrupted{signal}.exit_code());
    errno = error;
}

} // namespace

void pause(std::chrono::milliseconds time)
{
    drop_news();
    std::this_thread::sleep_for(time);
}

StopSignals::StopSignals()
{
    sigemptyset(&signals_);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_IGN)
            sigaddset(&signals_, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
}

int StopSignals::pause(std::chrono::milliseconds time)
{
    using std::chrono::nanoseconds;
    using std::chrono::seconds;
    drop_news();
    const auto whole = std::chrono::duration_cast<seconds>(time);
    const timespec limit{whole.count(), nanoseconds(time - whole).count()};
    const int signal = sigtimedwait(&signals_, nullptr, &limit);
    if (signal <= 0) // nothing came in that time, or it was a stop and a continuation
        return 0;
    pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
    return signal;
}

EndSignals::EndSignals() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (fd_ < 0)
        throw Failure(ExitCode::failed, std::string("no descriptor is free: ") + std::strerror(errno));
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = on_end_signal;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

EndSignals::~EndSignals()
{
    wake_fd = -1; // the program is about to end: a signal does that from here on
    close(fd_);
}

void EndSignals::defer() noexcept { wake_fd = fd_; }

int EndSignals::received() const noexcept { return kept_signal; }

} // namespace pvrctl
