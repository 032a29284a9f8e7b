#include "recording_file.h"

#include "system_failure.h"
#include "transport_stream.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <span>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace simulator {
namespace {

/// So much is written at a time, at most. What is given up comes in such pieces: whole packets, and whole blocks of the
/// file system.
constexpr std::size_t chunk = packet_size * 1024;

void write_all(int file, std::span<const std::uint8_t> bytes, const std::string &path)
{
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            throw_errno(path);
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

/// A file that was not there, locked.
Descriptor new_stream(const std::string &path)
{
    Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!file.is_open())
        throw_errno(path);
    flock(file.number(), LOCK_EX | LOCK_NB); // a file system without locks has to do, too
    return file;
}

/// Gives names to two files that nobody else has, or leaves both as they were.
void rename_both(const std::pair<std::string, std::string> &one, const std::pair<std::string, std::string> &other)
{
    if (renameat2(AT_FDCWD, one.first.c_str(), AT_FDCWD, one.second.c_str(), RENAME_NOREPLACE) != 0)
        throw_errno(one.second);
    if (renameat2(AT_FDCWD, other.first.c_str(), AT_FDCWD, other.second.c_str(), RENAME_NOREPLACE) != 0) {
        const int error = errno;
        std::rename(one.second.c_str(), one.first.c_str());
        errno = error;
        throw_errno(other.second);
    }
}

} // namespace

std::int64_t bytes_in(Microseconds time, int bits_per_second)
{
    constexpr std::int64_t bits_per_byte = 8;
    constexpr std::int64_t second = Microseconds::period::den;
    const std::int64_t seconds = time.count() / second;
    return seconds * bits_per_second / bits_per_byte +
           time.count() % second * bits_per_second / (bits_per_byte * second);
}

RecordingFile::RecordingFile(std::string path, const pvr_file_info_s &info)
    : path_(std::move(path)), file_(new_stream(path_))
{
    try {
        make_info(info_path(), info);
    } catch (const std::system_error &error) {
        std::remove(path_.c_str());
        if (error.code() != std::errc::file_exists) // somebody else's
            std::remove(info_path().c_str());
        throw;
    }
}

void RecordingFile::grow(Source &source, std::int64_t towards)
{
    constexpr auto packet = static_cast<std::int64_t>(packet_size);
    const std::int64_t missing = std::max<std::int64_t>(towards - size_, 0) / packet * packet;
    std::vector<std::uint8_t> bytes(std::min(static_cast<std::size_t>(missing), chunk));
    const std::int64_t end = size_ + missing;
    while (size_ < end) {
        const std::size_t wanted = std::min(static_cast<std::size_t>(end - size_), bytes.size());
        std::size_t count = 0;
        try {
            count = source.read(std::span(bytes).first(wanted));
        } catch (const std::system_error &error) {
            throw SourceFailure(error.what());
        }
        if (count == 0)
            return;
        write_all(file_.number(), std::span(bytes).first(count), path_);
        size_ += static_cast<std::int64_t>(count);
    }
}

void RecordingFile::give_up_before(std::int64_t place)
{
    constexpr auto piece = static_cast<std::int64_t>(chunk);
    place = std::min(place, size_) / piece * piece;
    if (place <= given_up_)
        return;
    const int result =
        fallocate(file_.number(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, given_up_, place - given_up_);
    if (result != 0 && errno != EOPNOTSUPP)
        throw_errno(path_);
    given_up_ = place;
}

void RecordingFile::move_to(const std::string &path, std::int64_t from)
{
    if (from > 0)
        return move_content_to(path, from);
    rename_both({info_path(), with_extension(path, "inf")}, {path_, path});
    path_ = path;
}

void RecordingFile::move_content_to(const std::string &path, std::int64_t from)
{
    constexpr auto packet = static_cast<std::int64_t>(packet_size);
    from = std::min(from, size_) / packet * packet;
    // Under a name of no recording until it is whole.
    const std::string copy = with_extension(path_, copy_extension);
    std::remove(copy.c_str()); // what a crash has left behind
    Descriptor file = new_stream(copy);
    try {
        std::vector<std::uint8_t> bytes(chunk);
        for (std::int64_t place = from; place < size_;) {
            const ssize_t count = pread(file_.number(), bytes.data(), bytes.size(), place);
            if (count < 0 && errno == EINTR)
                continue;
            if (count == 0)
                errno = EIO; // somebody has cut it
            if (count <= 0)
                throw_errno(path_);
            write_all(file.number(), std::span(bytes).first(static_cast<std::size_t>(count)), copy);
            place += count;
        }
        rename_both({info_path(), with_extension(path, "inf")}, {copy, path});
    } catch (const std::system_error &) {
        std::remove(copy.c_str());
        throw;
    }
    std::remove(path_.c_str());
    file_ = std::move(file);
    path_ = path;
    size_ -= from;
    given_up_ = 0;
}

void RecordingFile::finish(std::int64_t milliseconds, IncompleteReason reason, Microseconds ended)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(ended);
    const timespec moment{static_cast<std::time_t>(seconds.count()),
                          static_cast<long>((ended - seconds).count() * 1000)};
    const timespec moments[] = {moment, moment};
    futimens(file_.number(), moments); // where that is not possible, the machine's time stays
    file_ = Descriptor();
    change_info(info_path(), [&](pvr_file_info_s &info) {
        info.duration = static_cast<std::uint32_t>(std::min<std::int64_t>(milliseconds, UINT32_MAX));
        info.record_complete = 1;
        info.incomplete_reason = reason;
    });
}

void RecordingFile::remove() noexcept
{
    file_ = Descriptor();
    std::remove(path_.c_str());
    std::remove(info_path().c_str());
}

} // namespace simulator
