#include "timer.h"

#include <utility>

namespace simulator {
namespace {

constexpr gint64 never = -1;

gboolean dispatch(GSource *source, GSourceFunc function, gpointer data)
{
    g_source_set_ready_time(source, never);
    return function(data);
}

GSourceFuncs functions{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};

} // namespace

Microseconds monotonic_now() { return Microseconds(g_get_monotonic_time()); }

Timer::Timer(std::function<void()> action)
    : action_(std::move(action)), source_(g_source_new(&functions, sizeof(GSource)))
{
    g_source_set_callback(
        source_,
        [](gpointer self) noexcept -> gboolean {
            static_cast<Timer *>(self)->action_();
            return G_SOURCE_CONTINUE;
        },
        this, nullptr);
    g_source_attach(source_, g_main_context_get_thread_default());
}

Timer::~Timer()
{
    g_source_destroy(source_);
    g_source_unref(source_);
}

void Timer::set(std::optional<Microseconds> moment)
{
    g_source_set_ready_time(source_, moment ? moment->count() : never);
}

} // namespace simulator
