// What applications have registered for the service's news.
#pragma once

#include "pvr_service_api.h"

#include <mutex>
#include <type_traits>

namespace pvr {

/// Holds one callback and the user data that belongs to it, always as a pair. The lock is a leaf
/// and is never held while a callback runs.
template <typename Function>
class Slot {
public:
    struct Registration {
        Function function;
        void *user_data;
    };

    void set(Function function, void *user_data) noexcept
    {
        const std::lock_guard lock(mutex_);
        registration_ = {function, user_data};
    }

    Registration get() const noexcept
    {
        const std::lock_guard lock(mutex_);
        return registration_;
    }

private:
    mutable std::mutex mutex_;
    Registration registration_{};
};

static_assert(std::is_trivially_destructible_v<Slot<pvr_signal_cb>>, "signals may outlive static destructors");

extern Slot<pvr_result_cb> to_pvr_app;
extern Slot<pvr_signal_cb> signal_cb_func;

} // namespace pvr
