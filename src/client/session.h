// The process-wide session with the Recording service: one proxy, made on first use, shared by
// all calls, replaced when the service or the bus has gone.
#pragma once

#include "client/log.h"
#include "client/owned.h"
#include "client/renewable_mutex.h"

#include <atomic>

namespace pvr {

/// What a "g-signal" of the proxy is handed to.
using SignalHandler = void(GDBusProxy *proxy, const char *sender_name, const char *signal_name, GVariant *parameters,
                           void *user_data);

// Written under the session's lock; read anywhere, also for log lines alone.
extern std::atomic<GDBusProxy *> g_pvr_proxy;   ///< null when there is no session
extern std::atomic<unsigned long> g_handler_id; ///< 0 when no handler is connected

/// Stands in log lines, deliberately the same on every product.
inline constexpr char project_model[] = "emulator";

/// Serialises readers of recording-info files; initialised together with the session's own lock.
extern RenewableMutex g_mutex_get_info;

/// A strong reference to the session's proxy, made if there is none; null, with a log line at
/// here, when none can be had. No lock is held once this returns.
OwnedProxy acquire_session(Here here) noexcept;

/// The same for a session that was made before, and is replaced if it was lost meanwhile; null,
/// with a log line at here, when there is none.
OwnedProxy existing_session(Here here) noexcept;

/// Tells the session that a call on its proxy failed, so that the next call replaces a proxy whose
/// owner has gone or whose connection is closed.
void note_failed_call(const OwnedProxy &proxy, const GError *error) noexcept;

/// Refuses, with a log line at here, a forked child whose parent had a session: the connection and
/// its worker thread are the parent's, and are never touched. Takes no lock. 0 for everybody else.
int check_owner(Here here) noexcept;

/// Connects the handler to the proxy's "g-signal" if there is a proxy and nothing is connected yet.
void connect_signal_handler(SignalHandler *handler) noexcept;

/// Disconnects the handler, if there is a proxy and one is connected.
void disconnect_signal_handler() noexcept;

/// Whether an address is no mutex's at all. It cannot be for the library's own, and is tested all the same.
bool is_corrupt_address(const void *address) noexcept;

} // namespace pvr
