// The event loop: one GLib main context, which GDBus answers in too.
#pragma once

#include <chrono>
#include <functional>
#include <gio/gio.h>
#include <optional>

#include "client/owned.h"

namespace sandbox {

inline void remove_source(GSource *source)
{
    g_source_destroy(source);
    g_source_unref(source);
}

/// Ends the watching where its owner ends.
using Watch = pvr::Owned<GSource, remove_source>;

/// The default main context of the thread that made it.
class Loop {
public:
    Loop();
    Loop(const Loop &) = delete;
    Loop &operator=(const Loop &) = delete;
    ~Loop();

    /// Calls back as long as the descriptor can be read or is at its end.
    [[nodiscard]] Watch watch(int fd, std::function<void()> on_readable);

    /// Handles events until the condition holds. Returns false when the time is up before.
    bool wait(const std::function<bool()> &condition, std::optional<std::chrono::milliseconds> limit = {});

private:
    pvr::OwnedContext context_;
};

} // namespace sandbox
