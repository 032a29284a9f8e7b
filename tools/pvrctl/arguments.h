// Arguments: numbers over their whole range, speeds, files.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace pvrctl {

/// A number that the command line may give. Junk and what does not fit are refused, never cut. The numbers are
/// int, std::int64_t and std::uint64_t.
template <typename Number>
CLI::Option *add_number(CLI::App &verb, const std::string &name, Number &value, const std::string &type,
                        const std::string &description, Number least = std::numeric_limits<Number>::min());

/// A handle, which is required.
CLI::Option *add_handle_argument(CLI::App &verb, int &handle);

/// A channel, which is required.
CLI::Option *add_channel_argument(CLI::App &verb, std::uint64_t &service_id);
std::uint64_t parsed_channel(const std::string &text);

/// A number of 32 bits from the text of an option that may be given often.
int parsed_int(const std::string &name, const std::string &text);

struct NumberBounds {
    std::int64_t least;
    std::uint64_t most;
};

/// Reads a whole number, in decimal or with 0x; one below 0 becomes its two's complement. Returns what is wrong with
/// the text, which leaves the number alone, or "".
std::string read_whole(std::string_view text, NumberBounds bounds, std::uint64_t &number);

/// Permissions as chmod(1) takes them, in octal.
CLI::Option *add_permissions(CLI::App &verb, const std::string &name, int &mode, const std::string &description);

/// The speeds as people write them.
std::vector<std::string_view> speed_names();

/// A speed as people write it, stored as the number that the development service takes for it.
CLI::Option *add_speed(CLI::App &verb, int &type);

/// The path of a file that exists, absolute and without symbolic links, as the service is given it. Throws
/// a Failure when there is no such file.
std::string existing_file(const std::string &path);

/// The same for a file that may be gone.
std::string absolute_path(const std::string &path);

} // namespace pvrctl
