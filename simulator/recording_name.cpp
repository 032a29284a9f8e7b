#include "recording_name.h"

#include <algorithm>
#include <ctime>
#include <unistd.h>

namespace simulator {
namespace {

constexpr std::size_t longest_channel = 100; ///< in a file name; the path has to fit an application's 255 bytes

/// The part of a file name that tells the channel.
std::string file_name_of(const std::string &channel)
{
    std::string name = channel.substr(0, longest_channel);
    std::replace_if(
        name.begin(), name.end(),
        [](char character) {
            const bool is_plain = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                                  (character >= 'a' && character <= 'z');
            return !is_plain;
        },
        '-');
    return name;
}

std::string stamp(std::int64_t seconds)
{
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &parts);
    return text;
}

} // namespace

std::string new_recording_path(const std::string &folder, const std::string &channel, std::optional<std::int64_t> time)
{
    const std::string beginning = folder + "/" + (time ? stamp(*time) : "undated") + "-" + file_name_of(channel);
    std::string path = beginning + recording_extension;
    for (int number = 2; access(path.c_str(), F_OK) == 0; ++number)
        path = beginning + "-" + std::to_string(number) + recording_extension;
    return path;
}

} // namespace simulator
