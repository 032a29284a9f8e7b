#include "recovery.h"

#include "descriptor.h"
#include "info_file.h"
#include "recording_file.h"
#include "recording_name.h"
#include "transport_stream.h"

#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace simulator {
namespace {

namespace fs = std::filesystem;

/// A stream that nobody writes any more, for as long as it is kept open.
Descriptor abandoned(const std::string &path)
{
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    const bool is_free = file.is_open() && flock(file.number(), LOCK_EX | LOCK_NB) == 0;
    return is_free ? std::move(file) : Descriptor();
}

/// As its clock tells; 0 when it has none.
std::uint32_t milliseconds_of(const Descriptor &stream)
{
    struct stat status {};
    if (fstat(stream.number(), &status) != 0)
        return 0;
    try {
        const Microseconds length = transport_stream_length(stream.number(), status.st_size);
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(length).count());
    } catch (const std::runtime_error &) { // it is none, or cannot be read
        return 0;
    }
}

std::optional<std::string> complete(const std::string &path)
{
    const std::string info_path = with_extension(path, "inf");
    const auto info = read_info(info_path);
    if (!info || info->record_complete != 0)
        return std::nullopt;
    const Descriptor stream = abandoned(path);
    if (!stream.is_open())
        return std::nullopt;
    const std::uint32_t milliseconds = milliseconds_of(stream);
    try {
        change_info(info_path, [&](pvr_file_info_s &changed) {
            changed.duration = milliseconds;
            changed.record_complete = 1;
            changed.incomplete_reason = was_cut_off;
        });
    } catch (const std::system_error &error) {
        return std::string("a recording that was cut off stays unfinished: ") + error.what();
    }
    return path + " was cut off after " + std::to_string(milliseconds / 1000) + " s";
}

} // namespace

std::vector<std::string> recover(const std::string &folder)
{
    std::vector<std::string> news;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (std::error_code ignored; entry->path().extension() == recording_extension &&
                                     entry->symlink_status(ignored).type() == fs::file_type::regular)
            if (auto line = complete(entry->path()))
                news.push_back(std::move(*line));
    const std::string shift = folder + timeshift_file;
    if (abandoned(shift).is_open() && fs::remove(shift, error)) {
        fs::remove(with_extension(shift, "inf"), error);
        news.push_back(shift + " was left over");
    }
    if (const std::string copy = with_extension(shift, copy_extension); abandoned(copy).is_open())
        fs::remove(copy, error);
    return news;
}

} // namespace simulator
