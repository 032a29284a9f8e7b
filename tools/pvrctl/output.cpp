#include "output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "terminal.h"

namespace pvrctl {
namespace {

constexpr std::size_t columns = 80;

/// The service cuts texts by bytes, so what it hands out need not be whole UTF-8.
std::string on_one_line(const Json &data) { return data.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n'; }

const ExitCodeText &text_of(ExitCode code) { return *std::ranges::find(exit_codes(), code, &ExitCodeText::code); }

} // namespace

void Output::show(const Json &data, const std::vector<Row> &rows) const
{
    if (form_ == Form::json)
        print(on_one_line(data));
    if (form_ != Form::text)
        return;

    std::size_t width = 0;
    for (const Row &row : rows)
        width = std::max(width, row.label.size());
    std::string text;
    for (const Row &row : rows)
        text += row.label + std::string(width - row.label.size() + 2, ' ') + printable(row.text) + '\n';
    print(text);
}

void Output::show_line(const Json &data, const std::string &text) const
{
    if (form_ != Form::nothing)
        print(form_ == Form::json ? on_one_line(data) : text + '\n');
}

void Output::print(const std::string &text) const
{
    errno = 0;
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (is_written)
        return;
    const int error = errno;
    const std::string message = std::string("cannot write to standard output: ") + std::strerror(error);
    if (error == EPIPE)
        throw ReaderGone(ExitCode::failed, message);
    throw Failure(ExitCode::failed, message);
}

void Output::report(const Failure &failure) const noexcept
try {
    std::string text;
    if (form_ == Form::json) {
        text = on_one_line({{"error",
                             {{"code", static_cast<int>(failure.code())},
                              {"name", text_of(failure.code()).name},
                              {"message", failure.what()}}}});
    } else {
        constexpr std::string_view prefix = "pvrctl:";
        text = wrapped(std::string(prefix) + ' ' + printable(failure.what()), prefix.size() + 1) + '\n';
        text.replace(0, prefix.size(), alarming(prefix, STDERR_FILENO));
    }
    std::fwrite(text.data(), 1, text.size(), stderr);
} catch (...) {
    std::fputs("pvrctl: out of memory\n", stderr);
}

std::string printable(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            result += c;
            continue;
        }
        std::array<char, 5> escape{};
        std::snprintf(escape.data(), escape.size(), "\\x%02x", byte);
        result += escape.data();
    }
    return result;
}

std::string hexadecimal(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        text += {digits[byte >> 4], digits[byte & 0xf]};
    }
    return text;
}

std::string local_time(std::int64_t seconds)
{
    const auto when = static_cast<std::time_t>(seconds);
    std::tm local{};
    std::array<char, 64> text{};
    if (localtime_r(&when, &local) == nullptr)
        return {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

std::string wrapped(std::string_view text, std::size_t indent)
{
    std::string result;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (column > indent && column + 1 + end > columns) {
            result += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (column > 0) {
            result += ' ';
            ++column;
        }
        result += text.substr(0, end);
        column += end;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

} // namespace pvrctl
