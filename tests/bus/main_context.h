// A main context that a thread of its own runs, as an application's main loop would.
#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <glib.h>
#include <thread>

namespace support {

class ContextThread {
public:
    explicit ContextThread(GMainContext *context)
        : context_(context), thread_([this] {
              while (!is_over_)
                  g_main_context_iteration(context_, TRUE);
          })
    {
    }
    ~ContextThread()
    {
        is_over_ = true;
        g_main_context_wakeup(context_);
        thread_.join();
    }
    ContextThread(const ContextThread &) = delete;
    ContextThread &operator=(const ContextThread &) = delete;

private:
    GMainContext *context_;
    std::atomic<bool> is_over_{false};
    std::thread thread_;
};

/// Runs the context on this thread until the condition holds.
inline void run_until(GMainContext *context, const std::function<bool()> &condition)
{
    while (!condition())
        if (g_main_context_iteration(context, FALSE) == FALSE)
            std::this_thread::yield();
}

} // namespace support
