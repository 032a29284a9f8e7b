// A pthread mutex that svc_pvr_service_init initialises anew each time, without ever doing so
// under a holder or a waiter.
#pragma once

#include <mutex>
#include <pthread.h>
#include <type_traits>

namespace pvr {

/**
 * Initialising a mutex that others wait on loses their wake-up, so a guard that is never
 * initialised again surrounds every hold and every renewal. The guard is recursive: who holds the
 * guard alone may renew, lock and unlock the mutex below it.
 */
class RenewableMutex {
public:
    /// Initialises the mutex anew unless somebody holds it. Never waits. Returns pthread's error, 0 for none.
    int renew() noexcept
    {
        const std::unique_lock<std::recursive_mutex> alone(guard_, std::try_to_lock);
        if (!alone || is_held_)
            return 0;
        if (is_initialised_)
            pthread_mutex_destroy(&mutex_);
        const int error = pthread_mutex_init(&mutex_, nullptr);
        is_initialised_ = error == 0;
        return error;
    }

    void lock() noexcept
    {
        guard_.lock();
        if (is_initialised_) // the guard alone excludes others where initialising has failed
            pthread_mutex_lock(&mutex_);
        is_held_ = true;
    }

    void unlock() noexcept
    {
        is_held_ = false;
        if (is_initialised_)
            pthread_mutex_unlock(&mutex_);
        guard_.unlock();
    }

    std::recursive_mutex &guard() noexcept { return guard_; }
    const void *address() const noexcept { return &mutex_; }

private:
    std::recursive_mutex guard_;
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    bool is_initialised_ = true;
    bool is_held_ = false;
};

static_assert(std::is_trivially_destructible_v<RenewableMutex>, "threads may outlive static destructors");

} // namespace pvr
