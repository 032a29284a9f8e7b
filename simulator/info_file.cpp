#include "info_file.h"

#include "descriptor.h"
#include "system_failure.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace simulator {
namespace {

constexpr std::uint16_t layout_version = 20;
constexpr std::uint32_t thumbnail_of_sound = 1;

/// Cuts a text at the end of a character, so that it stays UTF-8.
std::string_view cut(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return text;
    std::size_t size = most;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80)
        --size;
    return text.substr(0, size);
}

bool read_whole(int file, pvr_file_info_s &info)
{
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size == sizeof info &&
           pread(file, &info, sizeof info, 0) == sizeof info;
}

void write_whole(int file, const pvr_file_info_s &info, const std::string &path)
{
    const ssize_t count = pwrite(file, &info, sizeof info, 0);
    if (count >= 0 && count != sizeof info)
        errno = ENOSPC;
    if (count != sizeof info)
        throw_errno(path);
}

/// The lock that applications take as well, for as long as they read; it ends with the descriptor. One that is held
/// for longer must not stop the service.
void lock(int file, const std::string &path)
{
    constexpr int most_tries = 100;
    for (int tries = 0; flock(file, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK || tries == most_tries)
            throw_errno(path);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace

std::string with_extension(std::string path, const char *extension)
{
    constexpr std::size_t length = 3;
    return path.replace(path.size() - std::min(path.size(), length), length, extension);
}

void set_text(char *field, std::size_t size, const std::string &text)
{
    std::memset(field, 0, size);
    const std::string_view fitting = cut(text, size - 1);
    std::copy(fitting.begin(), fitting.end(), field);
}

pvr_file_info_s info_of(const Channel &channel, const std::optional<Programme> &programme,
                        const StreamDescription &stream, std::uint32_t start_time)
{
    pvr_file_info_s info{};
    info.version = layout_version;
    set_text(info.channel_name, sizeof info.channel_name, channel.name);
    if (programme)
        set_text(info.programe_title, sizeof info.programe_title, programme->title);
    set_text(info.channel_num, sizeof info.channel_num,
             std::to_string(channel.major) + "-" + std::to_string(channel.minor));
    info.start_time = start_time;
    info.nThumbnailType = channel.kind == ChannelKind::radio ? thumbnail_of_sound : 0;
    info.video_pid = stream.video_pid;
    info.PCR_pid = stream.clock_pid;
    info.audio_pid = stream.audio_pid;
    info.program_num = stream.programme_number;
    info.major = static_cast<std::uint16_t>(channel.major);
    info.minor = static_cast<std::uint16_t>(channel.minor);
    info.channel_type = static_cast<std::uint16_t>(channel.kind);
    return info;
}

void make_info(const std::string &path, const pvr_file_info_s &info)
{
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!file.is_open())
        throw_errno(path);
    lock(file.number(), path);
    write_whole(file.number(), info, path);
}

std::optional<pvr_file_info_s> read_info(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    pvr_file_info_s info{};
    if (!file.is_open() || !read_whole(file.number(), info))
        return std::nullopt;
    return info;
}

void change_info(const std::string &path, const std::function<void(pvr_file_info_s &)> &change)
{
    const Descriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
    if (!file.is_open() && errno != ENOENT)
        throw_errno(path);
    if (!file.is_open())
        return;
    lock(file.number(), path);
    pvr_file_info_s info{};
    if (!read_whole(file.number(), info))
        return;
    change(info);
    write_whole(file.number(), info, path);
}

} // namespace simulator
