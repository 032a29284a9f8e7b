#include "device_options.h"

#include <algorithm>
#include <filesystem>
#include <glib.h>
#include <iterator>
#include <stdexcept>

namespace simulator {
namespace {

std::filesystem::path resolved(const std::filesystem::path &path)
{
    const std::filesystem::path whole = std::filesystem::weakly_canonical(std::filesystem::absolute(path));
    return whole.has_filename() ? whole : whole.parent_path(); // without a slash at its end
}

/// Whether one lies in the other, or is the other.
bool is_within(const std::filesystem::path &inner, const std::filesystem::path &outer)
{
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

/// The bus carries nothing else.
void check_text(const std::string &text)
{
    if (g_utf8_validate(text.c_str(), -1, nullptr) == FALSE)
        throw std::invalid_argument("the name or the folder of a device is not UTF-8");
}

DeviceDescription described(const std::string &option, bool is_slow)
{
    check_text(option);
    const std::size_t equals = option.find('=');
    const std::string name = option.substr(0, equals);
    if (equals == std::string::npos || name.empty() || equals + 1 == option.size())
        throw std::invalid_argument("'" + option + "' is not NAME=FOLDER");
    return described_device(name, option.substr(equals + 1), is_slow);
}

} // namespace

DeviceDescription described_device(const std::string &name, const std::string &folder, bool is_slow)
try {
    const std::filesystem::path whole = resolved(folder);
    check_text(whole.string());
    if (is_within(resolved(g_get_home_dir()), whole))
        throw std::invalid_argument(whole.string() + " holds the home folder, and a device can be formatted");
    return {name, whole.string(), is_slow};
} catch (const std::filesystem::filesystem_error &error) { // of a path that is too long, or of links in a circle
    throw std::invalid_argument("the folder of " + name + ": " + error.code().message());
}

void check_together(const DeviceDescription &one, const DeviceDescription &other)
{
    if (one.name == other.name)
        throw std::invalid_argument("two devices are named " + one.name);
    if (is_within(one.folder, other.folder) || is_within(other.folder, one.folder))
        throw std::invalid_argument("the folders of " + one.name + " and " + other.name + " overlap");
}

std::vector<DeviceDescription> described_devices(const std::vector<std::string> &fast,
                                                 const std::vector<std::string> &slow)
{
    std::vector<DeviceDescription> devices;
    for (const std::string &option : fast)
        devices.push_back(described(option, false));
    for (const std::string &option : slow)
        devices.push_back(described(option, true));
    for (auto one = devices.begin(); one != devices.end(); ++one)
        for (auto other = std::next(one); other != devices.end(); ++other)
            check_together(*one, *other);
    return devices;
}

std::vector<DeviceDescription> sandbox_devices(const std::string &sandbox)
{
    const std::filesystem::path folder = resolved(sandbox) / "devices" / "usb1";
    check_text(folder.string());
    std::filesystem::create_directories(folder);
    return {{"usb1", resolved(folder).string()}};
}

} // namespace simulator
