#include "recording_file.h"

#include "transport_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace simulator {
namespace {

constexpr std::size_t chunk = packet_size * 1024;

[[noreturn]] void give_up(const std::string &path) { throw std::system_error(errno, std::generic_category(), path); }

void write_all(int file, std::span<const std::uint8_t> bytes, const std::string &path)
{
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            give_up(path);
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

} // namespace

RecordingFile::RecordingFile(std::string path, const pvr_file_info_s &info)
    : path_(std::move(path)),
      file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0666))
{
    if (!file_.is_open())
        give_up(path_);
    try {
        make_info(info_path(), info);
    } catch (const std::system_error &error) {
        std::remove(path_.c_str());
        if (error.code() != std::errc::file_exists) // somebody else's
            std::remove(info_path().c_str());
        throw;
    }
}

bool RecordingFile::grow(Source &source, std::int64_t towards)
{
    std::vector<std::uint8_t> bytes(chunk);
    const std::int64_t end = std::min(towards, size_ + most_at_once);
    while (end - size_ >= static_cast<std::int64_t>(packet_size)) {
        const std::int64_t packets = (end - size_) / static_cast<std::int64_t>(packet_size);
        const std::size_t wanted = std::min(static_cast<std::size_t>(packets) * packet_size, bytes.size());
        std::size_t count = 0;
        try {
            count = source.read(std::span(bytes).first(wanted));
        } catch (const std::system_error &error) {
            throw SourceFailure(error.what());
        }
        if (count == 0)
            return true;
        write_all(file_.number(), std::span(bytes).first(count), path_);
        size_ += static_cast<std::int64_t>(count);
    }
    return end == towards;
}

void RecordingFile::move_to(const std::string &path)
{
    const std::string info = info_path();
    const std::string new_info = with_extension(path, "inf");
    if (renameat2(AT_FDCWD, info.c_str(), AT_FDCWD, new_info.c_str(), RENAME_NOREPLACE) != 0)
        give_up(new_info);
    if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0) {
        const int error = errno;
        std::rename(new_info.c_str(), info.c_str());
        errno = error;
        give_up(path);
    }
    path_ = path;
}

void RecordingFile::finish(std::int64_t milliseconds, IncompleteReason reason)
{
    file_ = Descriptor();
    change_info(info_path(), [&](pvr_file_info_s &info) {
        info.duration = static_cast<std::uint32_t>(milliseconds);
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
