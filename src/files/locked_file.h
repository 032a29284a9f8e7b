// A side file that is held open: a regular file, opened without ever waiting, locked against other processes for a
// bounded time, and unlocked and closed whatever happens.
#pragma once

#include <chrono>
#include <cstddef>
#include <sys/types.h>

namespace pvr {

/// How long a lock that another process holds is waited for, unless a test is in a hurry.
inline std::chrono::milliseconds lock_patience{25'000};

class LockedFile {
public:
    LockedFile() noexcept = default;
    ~LockedFile() { close(); }
    LockedFile(LockedFile &&other) noexcept;
    LockedFile &operator=(LockedFile &&other) noexcept;

    /// Opens a file as it is; nothing that is not a regular file. When it is none, false, and errno says why.
    static LockedFile to_read(const char *path) noexcept;
    static LockedFile to_update(const char *path) noexcept;
    /// Makes a file that was not there; fails with EEXIST when there is one.
    static LockedFile to_create(const char *path) noexcept;
    /// Opens a file, or makes it when there is none.
    static LockedFile to_update_or_create(const char *path) noexcept;
    /// The same, but where there is a symbolic link it fails with ELOOP.
    static LockedFile to_probe(const char *path) noexcept;

    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// In bytes, as it was when the file was opened, or before it was locked: others may have written since.
    long size_when_opened() const noexcept { return size_when_opened_; }
    /// In bytes, as it is now; -1 when the file system does not say.
    long size() const noexcept;

    /// Keeps out everybody else who locks the file. False when somebody held it for all the time one may wait.
    bool lock() noexcept;
    void unlock() noexcept;

    /// Reads as much as there is, at most size, or at most what two pieces hold; returns how much.
    std::size_t read(void *to, std::size_t size, off_t offset) const noexcept;
    std::size_t read(void *first, std::size_t first_size, void *second, std::size_t second_size) const noexcept;

    /// Puts the position of the next write to the file's beginning or its end. 0, or -1 and errno.
    int seek_to_begin() const noexcept;
    int seek_to_end() const noexcept;
    /// Writes at the position, which goes along: one piece, or two in one go. Returns how much arrived, which is less
    /// than all when there is no more room.
    std::size_t write(const void *first, std::size_t first_size, const void *second = nullptr,
                      std::size_t second_size = 0) const noexcept;
    /// Cuts the file, or fills it up with zeros.
    bool resize(long size) const noexcept;

    /// Gives up the lock and the file. False when what was written before has not arrived.
    bool close() noexcept;

private:
    LockedFile(const char *path, int flags) noexcept;
    bool wait_for_lock() const noexcept;

    int descriptor_ = -1;
    bool is_locked_ = false;
    long size_when_opened_ = -1;
};

} // namespace pvr
