#include "signals.h"

#include <initializer_list>

namespace sandbox {

InheritedSignals::InheritedSignals()
{
    sigprocmask(SIG_SETMASK, nullptr, &mask_);
    sigemptyset(&ignored_);
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
            sigaddset(&ignored_, signal);
    }
}

sigset_t InheritedSignals::handled() const
{
    sigset_t handled;
    sigemptyset(&handled);
    for (int signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
        if (sigismember(&ignored_, signal) == 0)
            sigaddset(&handled, signal);
    }
    sigaddset(&handled, SIGCHLD);
    sigaddset(&handled, SIGCONT);
    return handled;
}

void InheritedSignals::restore() const noexcept
{
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        action.sa_handler = sigismember(&ignored_, signal) == 1 ? SIG_IGN : SIG_DFL;
        sigaction(signal, &action, nullptr);
    }
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
}

} // namespace sandbox
