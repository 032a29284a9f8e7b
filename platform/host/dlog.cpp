// Host stand-in of the platform's log.
//
//   PVR_LOG        off (default), stderr, journal, or file:PATH (lines are appended)
//   PVR_LOG_LEVEL  debug, info (default), warning or error: the least priority that is kept
//
// Both are read once, when the library is loaded.
#include <dlog.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <glib.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/uio.h>
#include <unistd.h>

namespace {

enum class Destination { nowhere, descriptor, journal };

struct Level {
    std::string_view name;
    int priority;
    GLogLevelFlags glib_level;
    const char *syslog_priority;
};

constexpr std::array levels{
    Level{"debug", 3, G_LOG_LEVEL_DEBUG, "7"},
    Level{"info", 4, G_LOG_LEVEL_INFO, "6"},
    Level{"warning", 5, G_LOG_LEVEL_WARNING, "4"},
    Level{"error", 6, G_LOG_LEVEL_CRITICAL, "3"},
};

const Level &level_of(int priority) { return levels[static_cast<std::size_t>(std::clamp(priority, 3, 6) - 3)]; }

struct Settings {
    Destination destination = Destination::nowhere;
    int descriptor = -1;
    int least_priority = 4;
};

Settings settings_from_environment()
{
    Settings settings;
    const char *level = std::getenv("PVR_LOG_LEVEL");
    if (level != nullptr && *level != '\0') {
        const auto known = std::ranges::find(levels, std::string_view(level), &Level::name);
        if (known != levels.end())
            settings.least_priority = known->priority;
        else
            std::fprintf(stderr, "PVR_LOG_LEVEL: '%s' is none of debug, info, warning, error\n", level);
    }

    const char *destination = std::getenv("PVR_LOG");
    const std::string_view name = destination != nullptr ? destination : "";
    constexpr std::string_view file_prefix = "file:";
    if (name == "stderr") {
        settings.destination = Destination::descriptor;
        settings.descriptor = STDERR_FILENO;
    } else if (name == "journal") {
        settings.destination = Destination::journal;
    } else if (name.starts_with(file_prefix)) {
        const std::string path(name.substr(file_prefix.size()));
        settings.descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (settings.descriptor >= 0)
            settings.destination = Destination::descriptor;
        else
            std::fprintf(stderr, "PVR_LOG: cannot write %s: %m\n", path.c_str());
    } else if (!name.empty() && name != "off") {
        std::fprintf(stderr, "PVR_LOG: '%s' is none of off, stderr, journal, file:PATH\n", destination);
    }
    return settings;
}

const Settings settings = settings_from_environment();

/// One write per line, so that the lines of several threads and processes never mix.
void write_line(int priority, const char *tag, std::string_view text)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 128> head{};
    const int length =
        std::snprintf(head.data(), head.size(), "%02d:%02d:%02d.%06ld %d %s %-7s ", local.tm_hour, local.tm_min,
                      local.tm_sec, now.tv_nsec / 1000, getpid(), tag, level_of(priority).name.data());
    std::array<iovec, 2> parts{{
        {head.data(), std::min(static_cast<std::size_t>(std::max(length, 0)), head.size() - 1)},
        {const_cast<char *>(text.data()), text.size()},
    }};
    [[maybe_unused]] const ssize_t written = writev(settings.descriptor, parts.data(), parts.size());
}

void write_to_journal(int priority, const char *tag, std::string_view text)
{
    const Level &level = level_of(priority);
    const std::string message(text.substr(0, text.find_last_not_of('\n') + 1));
    const std::array<GLogField, 3> fields{{
        {"MESSAGE", message.c_str(), -1},
        {"PRIORITY", level.syslog_priority, -1},
        {"SYSLOG_IDENTIFIER", tag, -1},
    }};
    g_log_writer_journald(level.glib_level, fields.data(), fields.size(), nullptr);
}

[[gnu::noinline, gnu::format(printf, 3, 0)]] int print(int priority, const char *tag, const char *format,
                                                       va_list arguments)
{
    char *formatted = nullptr;
    const int length = vasprintf(&formatted, format, arguments);
    if (length < 0)
        return length;

    const std::unique_ptr<char, decltype(&std::free)> owner(formatted, &std::free);
    const std::string_view text(formatted, static_cast<std::size_t>(length));
    if (settings.destination == Destination::journal)
        write_to_journal(priority, tag, text);
    else
        write_line(priority, tag, text);
    return length;
}

} // namespace

int __dlog_print(int, int priority, const char *tag, const char *format, ...) noexcept
{
    if (settings.destination == Destination::nowhere || priority < settings.least_priority)
        return 0; // the usual case, and the only one that has to be fast

    va_list arguments;
    va_start(arguments, format);
    const int length = print(priority, tag, format, arguments);
    va_end(arguments);
    return length;
}
