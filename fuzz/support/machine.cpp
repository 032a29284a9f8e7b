#include "support/machine.h"

#include "files/locked_file.h"
#include "support/check.h"
#include "support/complaints.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlog.h>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/uio.h>
#include <system_info.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fuzz {

Machine machine;

namespace {

using Clock = std::chrono::steady_clock;

bool is_running = false;
bool was_interrupted = false;
int sleeps = 0;
Clock::duration now{};

bool interrupts() noexcept
{
    was_interrupted = is_running && machine.disk == Disk::interrupted && !was_interrupted;
    if (was_interrupted)
        errno = EINTR;
    return was_interrupted;
}

/// How much of a read the disk does; nothing, and errno says why, when it fails.
std::optional<std::size_t> allowed_of(std::size_t size, off_t offset) noexcept
{
    if (!is_running)
        return size;
    if (interrupts())
        return {};
    if (machine.disk == Disk::piecemeal)
        return std::min(size, machine.piece);
    const auto begin = static_cast<std::size_t>(offset);
    if (machine.disk != Disk::failing)
        return size;
    if (begin < machine.readable)
        return std::min(size, machine.readable - begin);
    errno = EIO;
    return {};
}

/// Does it once.
void do_now(std::function<void()> &what)
{
    if (const std::function<void()> taken = std::exchange(what, nullptr))
        taken();
}

} // namespace

void run_on_machine(const std::function<void()> &call)
{
    sleeps = 0;
    was_interrupted = false;
    is_running = true;
    call();
    is_running = false;
    machine.at_sleep = nullptr;
    machine.at_line = nullptr;
}

} // namespace fuzz

using namespace fuzz;

Clock::time_point wrapped_now() noexcept asm("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");
Clock::time_point wrapped_now() noexcept { return Clock::time_point(now); }

extern "C" {

int LLVMFuzzerInitialize(int *, char ***)
{
    // No bus: what the reader asks the service fails at once.
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    make_complaints_findings();
    pvr::lock_patience = std::chrono::milliseconds(20);
    return 0;
}

/// Memory that was freed is kept from use for a while; in less of it the caches serve better.
const char *__asan_default_options() { return "quarantine_size_mb=16"; }

ssize_t __real_pread(int descriptor, void *to, size_t size, off_t offset);
ssize_t __wrap_pread(int descriptor, void *to, size_t size, off_t offset)
{
    const std::optional<std::size_t> allowed = allowed_of(size, offset);
    return allowed ? __real_pread(descriptor, to, *allowed, offset) : -1;
}

ssize_t __real_preadv(int descriptor, const iovec *pieces, int count, off_t offset);
ssize_t __wrap_preadv(int descriptor, const iovec *pieces, int count, off_t offset)
{
    std::vector<iovec> some(pieces, pieces + count);
    std::size_t size = 0;
    for (const iovec &piece : some)
        size += piece.iov_len;
    const std::optional<std::size_t> allowed = allowed_of(size, offset);
    std::size_t left = allowed.value_or(0);
    for (iovec &piece : some) {
        piece.iov_len = std::min(piece.iov_len, left);
        left -= piece.iov_len;
    }
    return allowed ? __real_preadv(descriptor, some.data(), count, offset) : -1;
}

int __real_flock(int descriptor, int operation);
int __wrap_flock(int descriptor, int operation)
{
    return (operation & LOCK_NB) != 0 && interrupts() ? -1 : __real_flock(descriptor, operation);
}

int __real_access(const char *path, int mode);
int __wrap_access(const char *path, int mode)
{
    // The whole machine's: it would make every product record.
    if (std::string_view(path) == "/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR") {
        errno = ENOENT;
        return -1;
    }
    return __real_access(path, mode);
}

int __wrap_nanosleep(const timespec *time, timespec *)
{
    // Wakes late, as on a busy machine: what is tried again until a deadline is not tried hundreds of times.
    now += 20 * (std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
    if (++sleeps == 3)
        do_now(machine.at_sleep);
    return 0;
}

int __dlog_print(int, int, const char *, const char *format, ...) noexcept
{
    // Formatted, so that the address sanitizer sees what a line reads.
    static char line[8192];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    check(length > 0 && static_cast<std::size_t>(length) < sizeof line, "a log line can be formatted");
    check(line[length - 1] == '\n', "a log line ends with a newline");
    if (machine.at_line && std::strstr(format, machine.awaited) != nullptr)
        do_now(machine.at_line);
    return length;
}

int system_info_get_custom_bool(const char *, bool *value)
{
    *value = machine.records;
    return 0;
}

} // extern "C"
