// What applications have registered for the service's news.
#pragma once

#include "pvr_service_api.h"

#include <array>
#include <atomic>
#include <mutex>
#include <type_traits>

namespace pvr {

/// A callback and the user data that belongs to it.
template <typename Function>
struct Registration {
    Function function;
    void *user_data;
};

/// Holds one registration, always as a pair. The lock is a leaf and is never held while a callback runs; that there is
/// nothing to be read is seen without it.
template <typename Function>
class Slot {
public:
    void set(Function function, void *user_data) noexcept
    {
        const std::lock_guard lock(mutex_);
        registration_ = {function, user_data};
        is_empty_ = function == nullptr;
    }

    void clear() noexcept { set(nullptr, nullptr); }

    /// Does nothing when another function is registered.
    void clear_if(Function function) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (registration_.function != function)
            return;
        registration_ = {};
        is_empty_ = true;
    }

    Registration<Function> get() const noexcept
    {
        if (is_empty())
            return {};
        const std::lock_guard lock(mutex_);
        return registration_;
    }

    bool is_empty() const noexcept { return is_empty_; }

private:
    mutable std::mutex mutex_;
    Registration<Function> registration_{};
    std::atomic<bool> is_empty_{true};
};

static_assert(std::is_trivially_destructible_v<Slot<pvr_signal_cb>>, "signals may outlive static destructors");

extern Slot<pvr_result_cb> to_pvr_app;
extern Slot<pvr_result_point_cb> to_pvr_app_point;
extern Slot<pvr_result_third_cb> to_other_apps;
extern Slot<pvr_state_cb> to_pvr_get_state;
extern Slot<pvr_signal_cb> signal_cb_func;
extern Slot<pvr_signal_point_cb> signal_pointer_cb_func;

struct SignalListEntry {
    std::atomic<int> is_used; ///< 1 when the entry holds a callback
    pvr_signal_cb function;
    void *user_data;
};

constexpr int signal_list_size = 5;

/// Guards the list, also while the handler is connected on its behalf; taken before the session's lock.
extern std::mutex g_signal_cb_list_mutex;
extern std::array<SignalListEntry, signal_list_size> g_signal_cb_list;

/// What an entry of the list holds now; no function when it is free.
Registration<pvr_signal_cb> listed_signal_cb(int index) noexcept;

} // namespace pvr
