#include "arguments.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <glib.h>
#include <iterator>
#include <memory>
#include <system_error>
#include <type_traits>

#include "completion.h"
#include "failure.h"

namespace pvrctl {
namespace {

struct Speed {
    std::string_view name;
    int type;
};

constexpr std::array speeds{
    Speed{"2", 1},  Speed{"4", 2},   Speed{"8", 3},   Speed{"16", 4},  Speed{"32", 5},
    Speed{"64", 6}, Speed{"128", 7}, Speed{"1/2", 8}, Speed{"1/4", 9}, Speed{"1/8", 10},
};

template <typename Number>
Number parsed_number(const std::string &name, std::string_view text, Number least, int base = 10)
{
    std::string_view digits = text;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-')
        digits.remove_prefix(1);
    // A number below 0 is one all the same where none can be.
    const bool is_negative = std::is_unsigned_v<Number> && digits.size() > 1 && digits[0] == '-' && digits[1] != '-';
    if (is_negative)
        digits.remove_prefix(1);
    Number value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    if (end != digits.data() + digits.size() || error == std::errc::invalid_argument)
        throw CLI::ValidationError(name, "'" + std::string(text) + "' is no whole number");
    if (error == std::errc::result_out_of_range || value < least || (is_negative && value != 0))
        throw CLI::ValidationError(name, "'" + std::string(text) + "' is not between " + std::to_string(least) +
                                             " and " + std::to_string(std::numeric_limits<Number>::max()));
    return value;
}

/// The service is given texts in UTF-8 only.
std::string sendable(std::string path)
{
    if (g_utf8_validate(path.c_str(), -1, nullptr) == FALSE)
        throw Failure(ExitCode::usage, "the path of the file is not UTF-8: " + path);
    return path;
}

} // namespace

template <typename Number>
CLI::Option *add_number(CLI::App &verb, const std::string &name, Number &value, const std::string &type,
                        const std::string &description, Number least)
{
    const CLI::callback_t store = [name, &value, least](const CLI::results_t &texts) {
        value = parsed_number<Number>(name, texts.at(0), least);
        return true;
    };
    return verb.add_option(name, store, description)->type_name(type);
}

template CLI::Option *add_number(CLI::App &, const std::string &, int &, const std::string &, const std::string &, int);
template CLI::Option *add_number(CLI::App &, const std::string &, std::int64_t &, const std::string &,
                                 const std::string &, std::int64_t);
template CLI::Option *add_number(CLI::App &, const std::string &, std::uint64_t &, const std::string &,
                                 const std::string &, std::uint64_t);

CLI::Option *add_handle_argument(CLI::App &verb, int &handle)
{
    return completes(add_number(verb, "HANDLE", handle, "", "a handle, as the service issued it")->required(),
                     Completes::playback);
}

CLI::Option *add_channel_argument(CLI::App &verb, std::uint64_t &service_id)
{
    return completes(add_number(verb, "SERVICE_ID", service_id, "", "the channel's service id")->required(),
                     Completes::channel);
}

std::uint64_t parsed_channel(const std::string &text) { return parsed_number<std::uint64_t>("SERVICE_ID", text, 0); }

int parsed_int(const std::string &name, const std::string &text)
{
    return parsed_number(name, text, std::numeric_limits<int>::min());
}

std::string read_whole(std::string_view text, NumberBounds bounds, std::uint64_t &number)
{
    std::string_view digits = text;
    const bool is_negative = digits.starts_with('-');
    if (is_negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const bool is_hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (is_hexadecimal)
        digits.remove_prefix(2);
    std::uint64_t size = 0;
    const char *const last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, size, is_hexadecimal ? 16 : 10);
    if (digits.empty() || end != last || error == std::errc::invalid_argument)
        return '\'' + std::string(text) + "' is no whole number, in decimal or with 0x";
    const std::uint64_t most_below = ~static_cast<std::uint64_t>(bounds.least) + 1;
    if (error == std::errc::result_out_of_range || size > (is_negative ? most_below : bounds.most))
        return '\'' + std::string(text) + "' is not between " + std::to_string(bounds.least) + " and " +
               std::to_string(bounds.most);
    number = is_negative ? ~size + 1 : size;
    return "";
}

CLI::Option *add_permissions(CLI::App &verb, const std::string &name, int &mode, const std::string &description)
{
    const CLI::callback_t store = [name, &mode](const CLI::results_t &texts) {
        constexpr int octal = 8;
        if (texts.at(0).find_first_not_of("01234567") != std::string::npos)
            throw CLI::ValidationError(name, "'" + texts.at(0) + "' is no octal number");
        mode = parsed_number(name, texts.at(0), 0, octal);
        return true;
    };
    return verb.add_option(name, store, description)->type_name("OCTAL");
}

std::vector<std::string_view> speed_names()
{
    std::vector<std::string_view> names;
    std::ranges::transform(speeds, std::back_inserter(names), &Speed::name);
    return names;
}

CLI::Option *add_speed(CLI::App &verb, int &type)
{
    const CLI::callback_t store = [&type](const CLI::results_t &texts) {
        const auto speed = std::ranges::find(speeds, std::string_view(texts.at(0)), &Speed::name);
        if (speed == speeds.end())
            throw CLI::ValidationError("--speed",
                                       "'" + texts.at(0) + "' is none of 2, 4, 8, 16, 32, 64, 128, 1/2, 1/4, 1/8");
        type = speed->type;
        return true;
    };
    return completes(verb.add_option("--speed", store,
                                     "2, 4, 8, 16, 32, 64 or 128 times; 1/2, 1/4 or 1/8 for slow motion; without it 2")
                         ->type_name("SPEED"),
                     Completes::speed);
}

std::string existing_file(const std::string &path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    if (!resolved)
        throw Failure(ExitCode::not_found, "'" + path + "': " + std::strerror(errno));
    return sendable(resolved.get());
}

std::string absolute_path(const std::string &path)
{
    if (path.empty())
        throw Failure(ExitCode::not_found, "'': " + std::string(std::strerror(ENOENT)));
    std::error_code error;
    const std::filesystem::path resolved =
        std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
    if (error)
        throw Failure(ExitCode::not_found, "'" + path + "': " + error.message());
    return sendable(resolved);
}

} // namespace pvrctl
