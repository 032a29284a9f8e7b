#include "terminal.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace pvrctl {
namespace {

std::string_view setting(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Room on a line of the terminal; without its own word what every terminal has.
std::size_t columns_of(int fd)
{
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

void write_progress(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

} // namespace

bool is_coloured(int fd)
{
    if (!setting("NO_COLOR").empty())
        return false;
    if (const std::string_view force = setting("CLICOLOR_FORCE"); !force.empty() && force != "0")
        return true;
    return isatty(fd) != 0 && setting("CLICOLOR") != "0" && setting("TERM") != "dumb";
}

std::string alarming(std::string_view text, int fd)
{
    return is_coloured(fd) ? "\x1b[1;31m" + std::string(text) + "\x1b[0m" : std::string(text);
}

ProgressLine::ProgressLine(bool is_wanted)
    : is_shown_(is_wanted && isatty(STDERR_FILENO) != 0 && setting("TERM") != "dumb")
{
}

ProgressLine::~ProgressLine()
{
    if (is_shown_)
        write_progress("\r\x1b[K");
}

void ProgressLine::show(const std::string &text)
{
    if (is_shown_)
        write_progress('\r' + text.substr(0, columns_of(STDERR_FILENO) - 1) + "\x1b[K");
}

std::string progress_text(std::int64_t seconds, std::int64_t end)
{
    constexpr std::int64_t width = 30;
    const std::string so_far = std::to_string(seconds) + " s";
    if (end <= 0)
        return so_far;
    const auto done = static_cast<std::size_t>(std::clamp<std::int64_t>(seconds * width / end, 0, width));
    return '[' + std::string(done, '#') + std::string(width - done, '.') + "]  " + so_far + " of " +
           std::to_string(end) + " s";
}

} // namespace pvrctl
