#include "files/locked_file.h"

#include "files/paths.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace pvr {
namespace {

constexpr mode_t readable_and_writable = 0666;

/// What has been transferred when a file has no more to give or to take.
template <typename Transfer>
std::size_t transferred(std::size_t size, Transfer transfer) noexcept
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = transfer(done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

/// What is left of two pieces, as the system takes them: for both directions, and so not const.
struct Pieces {
    Pieces(const void *first, std::size_t first_size, const void *second, std::size_t second_size,
           std::size_t done) noexcept
        : parts{rest(first, first_size, std::min(done, first_size)),
                rest(second, second_size, done - std::min(done, first_size))}
    {
    }

    static iovec rest(const void *piece, std::size_t size, std::size_t done) noexcept
    {
        return {const_cast<char *>(static_cast<const char *>(piece)) + done, size - done};
    }

    iovec parts[2];
};

} // namespace

LockedFile::LockedFile(const char *path, int flags) noexcept
    : descriptor_(open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, readable_and_writable))
{
    if (descriptor_ < 0)
        return;
    struct stat status {};
    if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_when_opened_ = as_long(status.st_size);
        return;
    }
    close();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

LockedFile::LockedFile(LockedFile &&other) noexcept { *this = std::move(other); }

LockedFile &LockedFile::operator=(LockedFile &&other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(is_locked_, other.is_locked_);
    std::swap(size_when_opened_, other.size_when_opened_);
    return *this;
}

LockedFile LockedFile::to_read(const char *path) noexcept { return {path, O_RDONLY}; }
LockedFile LockedFile::to_update(const char *path) noexcept { return {path, O_RDWR}; }
LockedFile LockedFile::to_create(const char *path) noexcept { return {path, O_RDWR | O_CREAT | O_EXCL}; }
LockedFile LockedFile::to_update_or_create(const char *path) noexcept { return {path, O_RDWR | O_CREAT}; }
LockedFile LockedFile::to_probe(const char *path) noexcept { return {path, O_RDWR | O_CREAT | O_NOFOLLOW}; }

long LockedFile::size() const noexcept
{
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? as_long(status.st_size) : -1;
}

bool LockedFile::lock() noexcept
{
    is_locked_ = flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || wait_for_lock();
    return is_locked_;
}

bool LockedFile::wait_for_lock() const noexcept
{
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + lock_patience;
    // The kernel's own waiting knows no end, so the lock is asked for again and again.
    for (std::chrono::microseconds pause = 50us;; pause = std::min<std::chrono::microseconds>(2 * pause, 5ms)) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(pause);
        if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0)
            return true;
    }
}

void LockedFile::unlock() noexcept
{
    // Closing alone would leave the lock to a child that was forked meanwhile.
    if (std::exchange(is_locked_, false))
        flock(descriptor_, LOCK_UN);
}

std::size_t LockedFile::read(void *to, std::size_t size, off_t offset) const noexcept
{
    return transferred(size, [=, this](std::size_t done) {
        return pread(descriptor_, static_cast<char *>(to) + done, size - done, offset + static_cast<off_t>(done));
    });
}

std::size_t LockedFile::read(void *first, std::size_t first_size, void *second, std::size_t second_size) const noexcept
{
    return transferred(first_size + second_size, [=, this](std::size_t done) {
        const Pieces pieces(first, first_size, second, second_size, done);
        return preadv(descriptor_, pieces.parts, 2, static_cast<off_t>(done));
    });
}

int LockedFile::seek_to_begin() const noexcept { return lseek(descriptor_, 0, SEEK_SET) < 0 ? -1 : 0; }
int LockedFile::seek_to_end() const noexcept { return lseek(descriptor_, 0, SEEK_END) < 0 ? -1 : 0; }

std::size_t LockedFile::write(const void *first, std::size_t first_size, const void *second,
                              std::size_t second_size) const noexcept
{
    return transferred(first_size + second_size, [=, this](std::size_t done) {
        const Pieces pieces(first, first_size, second, second_size, done);
        return writev(descriptor_, pieces.parts, 2);
    });
}

bool LockedFile::resize(long size) const noexcept
{
    int result = -1;
    do
        result = ftruncate(descriptor_, size);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

bool LockedFile::close() noexcept
{
    unlock();
    const int descriptor = std::exchange(descriptor_, -1);
    // Interrupted, it is closed all the same.
    return descriptor < 0 || ::close(descriptor) == 0 || errno == EINTR;
}

} // namespace pvr
