#include "event_log.h"

#include "system_failure.h"

#include <cctype>
#include <cerrno>
#include <chrono>
#include <utility>

namespace simulator {
namespace {

/// Whether the name of a folder goes on with this character.
bool is_in_name(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '-' || character == '_' ||
           character == '.';
}

} // namespace

EventLog::EventLog(const std::string &path, std::vector<DeviceDescription> devices)
    : file_(std::fopen(path.c_str(), "we"), &std::fclose), devices_(std::move(devices))
{
    if (!file_)
        throw_errno("cannot write " + path);
}

void EventLog::follow(Clock clock)
{
    beginning_ = clock();
    clock_ = std::move(clock);
}

void EventLog::line(const std::string &text)
{
    const Microseconds moment = clock_ ? clock_() - beginning_ : Microseconds(0);
    std::fprintf(file_.get(), "%10.3f  %s\n", std::chrono::duration<double>(moment).count(),
                 without_folders(text).c_str());
    std::fflush(file_.get());
}

std::string EventLog::without_folders(std::string text) const
{
    for (const DeviceDescription &device : devices_)
        for (std::size_t at = text.find(device.folder); at != std::string::npos;
             at = text.find(device.folder, at + 1)) {
            const std::size_t end = at + device.folder.size();
            if (end == text.size() || !is_in_name(text[end]))
                text.replace(at, device.folder.size(), device.name + ":");
        }
    return text;
}

} // namespace simulator
