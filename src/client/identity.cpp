#include "client/identity.h"

#include "client/log.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>
#include <sys/types.h>
#include <unistd.h>

namespace pvr {
namespace {

constexpr std::size_t longest_target = 255;

constinit const Identity nobody{};

void set_name(Identity &identity, std::string_view name) noexcept
{
    static_assert(longest_target < sizeof identity.g_thread_name);
    std::memcpy(identity.g_thread_name, name.data(), name.size());
    identity.g_thread_name[name.size()] = '\0';
}

} // namespace

constinit std::atomic<const Identity *> captured_identity{&nobody};

void _get_pid_name() noexcept
{
    const pid_t pid = getpid();
    const Identity *known = captured_identity.load(std::memory_order_acquire);
    if (known->g_thread_id == pid && known->g_thread_name[0] != '\0')
        return;

    auto *fresh = new (std::nothrow) Identity{pid, {}, known};
    if (fresh == nullptr)
        return;

    char link[256];
    char target[256] = {};
    std::snprintf(link, sizeof link, "/proc/%d/exe", pid);
    const ssize_t length = readlink(link, target, sizeof target);
    if (static_cast<std::size_t>(length) > longest_target) { // a failure, -1, is a great length too
        set_name(*fresh, "NULL");
        target[longest_target] = '\0';
    } else {
        const std::string_view path(target, static_cast<std::size_t>(length));
        set_name(*fresh, path.substr(path.rfind('/') + 1)); // npos + 1 is 0: the whole target
    }
    PLAIN_INFO("Called szPID:%s\n", target);

    // Whoever publishes first has captured it; nothing that was published is ever freed, because
    // another thread may be printing it.
    if (!captured_identity.compare_exchange_strong(known, fresh, std::memory_order_acq_rel)) {
        delete fresh;
        return;
    }
    PLAIN_INFO("g_thread_id[%d] g_thread_name[%s]\n", fresh->g_thread_id, fresh->g_thread_name);
}

} // namespace pvr
