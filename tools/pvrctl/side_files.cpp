#include "side_files.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <glib.h>
#include <iterator>
#include <pvr_service_api.h>
#include <string_view>
#include <system_error>

#include "failure.h"

namespace pvrctl {
namespace {

constexpr std::size_t longest_path = 255;      ///< the library cuts what is longer
constexpr std::size_t most_read = 16384;       ///< of an info file; none is that long
constexpr std::size_t replaced_characters = 3; ///< of the extension, without its dot
constexpr std::string_view recording_extensions[] = {".srf", ".inf", ".tmp"};

// Here and in the other commands, numbers are taken from files and records as they lie there.
static_assert(std::endian::native == std::endian::little);

struct OlderSize {
    long bytes;
    const char *generation;
};
constexpr OlderSize older_sizes[] = {{12052, "Ardel"}, {12048, "Ardel"}, {12044, "Selk"}};

const char *older_generation_of(long size)
{
    const auto *const found = std::ranges::find(older_sizes, size, &OlderSize::bytes);
    return found != std::end(older_sizes) ? found->generation : nullptr;
}

bool is_missing(int error) { return error == ENOENT || error == ENOTDIR; }

std::string quoted(const std::string &path) { return '\'' + path + '\''; }

} // namespace

RecordingPath::RecordingPath(const std::string &path)
{
    if (path.empty())
        throw Failure(ExitCode::not_found, "'': " + std::string(std::strerror(ENOENT)));
    if (std::ranges::none_of(recording_extensions,
                             [&](std::string_view extension) { return path.ends_with(extension); }))
        throw Failure(ExitCode::usage, quoted(path) + " names no recording: it has to end in .srf, .inf or .tmp");

    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (!error)
        path_ = std::filesystem::weakly_canonical(absolute.parent_path(), error) / absolute.filename();
    if (error && path.size() <= longest_path)
        throw Failure(ExitCode::not_found, quoted(path) + ": " + error.message());
    if (error || path_.size() > longest_path)
        throw Failure(ExitCode::usage, "the path of the file is longer than 255 bytes: " + (error ? path : path_));
    if (g_utf8_validate(path_.c_str(), -1, nullptr) == FALSE)
        throw Failure(ExitCode::usage, "the path of the file is not UTF-8: " + path_);
}

std::string RecordingPath::beside(const char *extension) const
{
    return path_.substr(0, path_.size() - replaced_characters) + extension;
}

std::string RecordingPath::recording() const
{
    if (!path_.ends_with(".inf"))
        return path_;
    return beside(path_.ends_with("/timeshift.inf") ? "tmp" : "srf");
}

pvr::LockedFile opened_beside(const std::string &path)
{
    pvr::LockedFile file = pvr::LockedFile::to_read(path.c_str());
    const int error = errno;
    if (!file && (error == EISDIR || error == EINVAL))
        throw Failure(ExitCode::failed, quoted(path) + " is no regular file");
    if (!file)
        throw Failure(is_missing(error) ? ExitCode::not_found : ExitCode::failed,
                      quoted(path) + ": " + std::strerror(error));
    return file;
}

pvr::LockedFile locked_beside(const std::string &path)
{
    pvr::LockedFile file = opened_beside(path);
    if (!file.lock())
        throw Failure(ExitCode::failed,
                      quoted(path) + " cannot be locked: " +
                          (errno == EWOULDBLOCK ? "another process holds its lock" : std::strerror(errno)));
    return file;
}

std::uint64_t InfoFile::number(std::size_t offset, std::size_t width) const
{
    std::uint64_t value = 0;
    std::memcpy(&value, bytes.data() + offset, width);
    return value;
}

const char *InfoFile::generation() const
{
    if (const char *older = older_generation_of(size))
        return older;
    return bytes.size() >= sizeof(pvr_file_info_s) ? "Vexan" : nullptr;
}

bool InfoFile::is_older() const { return older_generation_of(size) != nullptr; }

pvr_file_info_s InfoFile::record() const
{
    pvr_file_info_s record{};
    std::memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof record));
    return record;
}

InfoFile read_info_file(const std::string &path)
{
    const pvr::LockedFile file = locked_beside(path);
    InfoFile info{path, file.size(), std::string(most_read, '\0')};
    info.bytes.resize(file.read(info.bytes.data(), most_read, 0));
    if (info.bytes.size() < most_read)
        info.size = static_cast<long>(info.bytes.size()); // whoever ignores the lock may have changed it since
    return info;
}

void check_size(const InfoFile &file)
{
    if (file.generation() == nullptr)
        throw Failure(ExitCode::failed, quoted(file.path) + " is no info file: it has " + std::to_string(file.size) +
                                            " bytes, and none has fewer than " +
                                            std::to_string(sizeof(pvr_file_info_s)));
}

pvr_file_info_s handed_out_record(const Service &service, const RecordingPath &path)
{
    pvr_file_info_s record{};
    if (svc_pvr_get_pvr_file_info(path.c_str(), &record) == PS_SUCCESS)
        return record;
    service.check_product();
    throw Failure(ExitCode::failed, quoted(path.beside("inf")) + " cannot be read. PVR_LOG=stderr tells why");
}

} // namespace pvrctl
