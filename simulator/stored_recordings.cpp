#include "stored_recordings.h"

#include "info_file.h"
#include "new_file.h"
#include "recording.h"
#include "recording_name.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <vector>

namespace simulator {
namespace {

namespace fs = std::filesystem;

/// The extensions of what lies beside a recording.
constexpr const char *companions[] = {"inf", "sas", "cft", "yuv"};

/// The form of a thumbnail: its colour format, its size, and room that nobody uses.
struct ThumbnailForm {
    std::int32_t color_format;
    std::int32_t width;
    std::int32_t height;
    std::array<std::uint8_t, 40> reserved;
};
static_assert(sizeof(ThumbnailForm) == 52);

constexpr std::int32_t planar_4_2_0 = 1;

/// A slope from black to white: the development service decodes no pictures.
std::vector<std::uint8_t> picture(int width, int height)
{
    constexpr std::uint8_t no_colour = 128;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(columns * rows * 3 / 2);
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column)
            bytes.push_back(static_cast<std::uint8_t>(255 * column / columns));
    bytes.resize(columns * rows + 2 * ((columns + 1) / 2) * ((rows + 1) / 2), no_colour);
    return bytes;
}

void write_file(const std::string &path, std::span<const std::uint8_t> bytes)
{
    NewFile file(path);
    file.write(bytes);
    file.publish();
}

} // namespace

std::optional<std::string> StoredRecordings::path(const std::string &uri) const
{
    const std::optional<std::string> path = local_path(uri);
    if (!path || !path->ends_with(recording_extension))
        return std::nullopt;
    std::error_code error;
    const fs::path folder = fs::canonical(fs::path(*path).parent_path(), error);
    if (error)
        return std::nullopt;
    const fs::path whole = folder / fs::path(*path).filename();
    for (const int handle : devices_.all())
        if (whole.string().starts_with(devices_.find(handle)->mount_path() + "/") &&
            fs::symlink_status(whole, error).type() == fs::file_type::regular)
            return whole.string();
    return std::nullopt;
}

int StoredRecordings::count() const
{
    int count = 0;
    for (const int handle : devices_.all()) {
        std::error_code error;
        fs::recursive_directory_iterator entry(devices_.find(handle)->mount_path(),
                                               fs::directory_options::skip_permission_denied, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
            if (entry->path().extension() == recording_extension &&
                entry->symlink_status(error).type() == fs::file_type::regular)
                ++count;
    }
    return count;
}

Outcome StoredRecordings::remove(const std::string &path) const
{
    std::error_code error;
    fs::remove(path, error);
    if (error)
        return refused(error.message());
    for (const char *extension : companions)
        fs::remove(with_extension(path, extension), error);
    return {};
}

Outcome StoredRecordings::remove_info(const std::string &path) const
{
    std::error_code error;
    if (!fs::remove(with_extension(path, "inf"), error))
        return refused(error ? error.message() : "it has no info file");
    return {};
}

Outcome StoredRecordings::make_thumbnail(const std::string &path, int width, int height) const
{
    if (width < 1 || width > widest_thumbnail || height < 1 || height > widest_thumbnail)
        return refused("no such size");
    if (!devices_.finds_room(path))
        return refused("the device is full");
    const ThumbnailForm form{planar_4_2_0, width, height, {}};
    try {
        write_file(with_extension(path, "yuv"), picture(width, height));
        write_file(with_extension(path, "cft"), {reinterpret_cast<const std::uint8_t *>(&form), sizeof form});
    } catch (const std::system_error &error) {
        return refused(error.what());
    }
    return {};
}

bool StoredRecordings::is_locked(const std::string &path) const
{
    const auto info = read_info(with_extension(path, "inf"));
    return info && info->rating != 0;
}

} // namespace simulator
