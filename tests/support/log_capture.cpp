#include "support/log_capture.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlog.h>
#include <filesystem>
#include <mutex>
#include <pthread.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace support {
namespace {

std::mutex mutex;
std::vector<LoggedLine> lines;
Lines malformed;
std::string awaited;
std::function<void()> reaction_to_awaited;

// A child forked while another thread logs has to be able to log as well.
[[maybe_unused]] const int survives_forks =
    pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); });

std::string without_addresses(std::string text)
{
    constexpr std::string_view prefix = "0x";
    constexpr std::string_view stand_in = "PTR";
    for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at)) {
        if (at > 0 && std::isalnum(static_cast<unsigned char>(text[at - 1])) != 0) { // the end of a word, as of s390x
            at += prefix.size();
            continue;
        }
        const std::size_t end = std::min(text.find_first_not_of("0123456789abcdef", at + prefix.size()), text.size());
        text.replace(at, end - at, stand_in);
        at += stand_in.size();
    }
    return text;
}

void keep(int log_id, int priority, const char *tag, const std::string &line)
{
    const auto colon = line.find(": ");
    const auto open = line.find('(', colon);
    const auto close = line.find(") > ", open);
    const std::lock_guard lock(mutex);
    if (close == std::string::npos || line.back() != '\n') {
        malformed.push_back(line);
        return;
    }
    lines.push_back({log_id, priority, tag, line.substr(0, colon), line.substr(colon + 2, open - colon - 2),
                     line.substr(close + 4, line.size() - close - 5)});
}

void react(const std::string &line)
{
    std::unique_lock lock(mutex);
    if (!reaction_to_awaited || line.find(awaited) == std::string::npos)
        return;
    const std::function<void()> reaction = std::exchange(reaction_to_awaited, nullptr);
    lock.unlock();
    reaction();
}

std::string line(int priority, const std::string &head, const std::string &text)
{
    return std::to_string(priority) + " [PVR][API]" + head + text;
}

} // namespace

std::vector<LoggedLine> logged()
{
    const std::lock_guard lock(mutex);
    return std::exchange(lines, {});
}

Lines logged_lines()
{
    Lines result;
    for (const LoggedLine &line : logged())
        result.push_back(std::to_string(line.priority) + " " + without_addresses(line.text));
    return result;
}

void when_logged(const std::string &text, std::function<void()> reaction)
{
    const std::lock_guard lock(mutex);
    awaited = text;
    reaction_to_awaited = std::move(reaction);
}

Lines malformed_lines()
{
    const std::lock_guard lock(mutex);
    return malformed;
}

std::string my_master()
{
    const std::string executable = std::filesystem::read_symlink("/proc/self/exe").filename();
    return "My master:[" + std::to_string(getpid()) + "][" + executable + "]";
}

std::string entry(const std::string &text) { return line(6, "[EST][10.8.1]", my_master() + text); }
std::string failure(const std::string &text) { return entry(text); }
std::string exception(const std::string &text) { return line(6, "[EXP][10.8.1]", my_master() + text); }
std::string info(const std::string &text) { return line(4, "[10.8.1]", my_master() + text); }
std::string plain_entry(const std::string &text) { return line(6, "[EST][10.8.1]", text); }
std::string plain_info(const std::string &text) { return line(4, "[10.8.1]", text); }
std::string detail(const std::string &text) { return line(3, "[10.8.1]", text); }

std::string support_line(int answer)
{
    return "system_info_get_custom_bool for com.brimmel/featureconf/pvr.pvr_support is called, bSupportPVR[" +
           std::to_string(answer) + "]";
}

} // namespace support

int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...) noexcept
{
    char *text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0)
        std::abort();
    support::keep(log_id, priority, tag, text);
    support::react(text);
    std::free(text);
    return length;
}
