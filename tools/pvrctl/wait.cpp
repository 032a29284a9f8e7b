#include "wait.h"

#include <ctime>
#include <glib.h>
#include <thread>

namespace pvrctl {
namespace {

void drop_news()
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
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

} // namespace pvrctl
