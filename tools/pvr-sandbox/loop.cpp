#include "loop.h"

#include <glib-unix.h>
#include <memory>
#include <utility>

namespace sandbox {
namespace {

using Callback = std::function<void()>;

gboolean call(int /*fd*/, GIOCondition /*condition*/, gpointer data)
{
    (*static_cast<Callback *>(data))();
    return G_SOURCE_CONTINUE;
}

void forget(gpointer data) { delete static_cast<Callback *>(data); }

gboolean set_flag(gpointer data)
{
    *static_cast<bool *>(data) = true;
    return G_SOURCE_CONTINUE;
}

} // namespace

Loop::Loop() : context_(g_main_context_new()) { g_main_context_push_thread_default(context_.get()); }

Loop::~Loop()
{
    // What GDBus still has to say releases what it holds.
    while (g_main_context_iteration(context_.get(), FALSE) != FALSE) {
    }
    g_main_context_pop_thread_default(context_.get());
}

Watch Loop::watch(int fd, Callback on_readable)
{
    Watch watch(g_unix_fd_source_new(fd, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR)));
    auto callback = std::make_unique<Callback>(std::move(on_readable));
    g_source_set_callback(watch.get(), G_SOURCE_FUNC(call), callback.release(), forget);
    g_source_attach(watch.get(), context_.get());
    return watch;
}

bool Loop::wait(const std::function<bool()> &condition, std::optional<std::chrono::milliseconds> limit)
{
    bool is_late = false;
    Watch timer;
    if (limit) {
        timer = Watch(g_timeout_source_new(static_cast<guint>(limit->count())));
        g_source_set_callback(timer.get(), set_flag, &is_late, nullptr);
        g_source_attach(timer.get(), context_.get());
    }
    for (;;) {
        if (condition())
            return true;
        if (is_late)
            return false;
        g_main_context_iteration(context_.get(), TRUE);
    }
}

} // namespace sandbox
