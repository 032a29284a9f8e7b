#include "event_loop.h"

#include <algorithm>
#include <glib-unix.h>

namespace pvrctl {

EventLoop::EventLoop()
    : end_source_(g_unix_fd_add(
          ends_.fd(), G_IO_IN, [](int, GIOCondition, void *) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr))
{
}

EventLoop::~EventLoop() { g_source_remove(end_source_); }

bool EventLoop::run_until(const std::function<bool()> &holds, std::optional<int> seconds,
                          std::chrono::milliseconds look)
{
    constexpr std::int64_t microseconds = 1000;
    const std::int64_t deadline = seconds ? g_get_monotonic_time() + std::int64_t{*seconds} * G_USEC_PER_SEC
                                          : std::numeric_limits<std::int64_t>::max();
    ends_.defer();
    while (!holds()) {
        const std::int64_t left = deadline - g_get_monotonic_time();
        if (left <= 0)
            return false;
        const auto longest = static_cast<unsigned>(std::min<std::int64_t>(left / microseconds + 1, look.count()));
        bool is_over = false;
        const unsigned timer = g_timeout_add(
            longest,
            [](void *flag) -> gboolean {
                *static_cast<bool *>(flag) = true;
                return G_SOURCE_REMOVE;
            },
            &is_over);
        g_main_context_iteration(nullptr, TRUE);
        if (!is_over)
            g_source_remove(timer);
        if (ends_.received() != 0)
            throw Interrupted{ends_.received()};
    }
    return true;
}

} // namespace pvrctl
