#include "service_log.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>

#include "messages.h"

namespace sandbox {
namespace {

constexpr off_t bytes_shown = 2000;
constexpr int lines_shown = 10;

/// The last lines of a text, indented; the first one is dropped when it begins somewhere in the middle.
std::string indented_end(std::string text, bool is_cut)
{
    while (text.ends_with('\n'))
        text.pop_back();
    std::size_t begin = text.size();
    for (int lines = 0; lines < lines_shown && begin > 0; ++lines) {
        const auto newline = text.rfind('\n', begin - 1);
        if (newline == std::string::npos && is_cut && lines > 0)
            break;
        begin = newline == std::string::npos ? 0 : newline;
    }
    std::string shown;
    for (const char c : text.substr(begin)) {
        if (c == '\n' || shown.empty())
            shown += "\n    ";
        if (c != '\n')
            shown += c;
    }
    return shown;
}

} // namespace

ServiceLog ServiceLog::standard_error() { return {Fd(), ""}; }

ServiceLog ServiceLog::file(const std::string &path)
{
    // Opening a pipe that nobody reads would wait for ever.
    Fd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!fd)
        throw system_failure("the service's log " + path + " cannot be opened");
    fcntl(fd.get(), F_SETFL, O_APPEND);
    ServiceLog log(std::move(fd), path);
    struct stat status {};
    if (fstat(log.fd_.get(), &status) == 0)
        log.begin_ = status.st_size;
    return log;
}

std::string ServiceLog::last_lines() const
{
    if (!fd_)
        return "; what it wrote is above";
    const Fd reader(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!reader || fstat(reader.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return "; its log is " + path_;
    std::array<char, bytes_shown> buffer{};
    const off_t begin = std::max(begin_, status.st_size - bytes_shown);
    const ssize_t length = pread(reader.get(), buffer.data(), buffer.size(), begin);
    if (length <= 0)
        return "; it wrote nothing";
    return "; its last lines:" +
           indented_end(std::string(buffer.data(), static_cast<std::size_t>(length)), begin > begin_);
}

} // namespace sandbox
