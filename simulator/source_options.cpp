#include "source_options.h"

#include "test_programme.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace simulator {
namespace {

template <typename Number>
bool is_number(const std::string &text, Number &number)
{
    const char *behind = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), behind, number);
    return error == std::errc() && end == behind;
}

/// A channel, and what is said of it behind an equals sign.
std::pair<Channel, std::string> parted(const std::string &option, const std::string &form,
                                       const std::vector<Channel> &channels)
{
    const std::size_t equals = std::min(option.find('='), option.size());
    std::uint64_t service_id = 0;
    if (!is_number(option.substr(0, equals), service_id) || equals + 1 >= option.size())
        throw std::invalid_argument("'" + option + "' is not " + form);
    for (const Channel &channel : channels)
        if (channel.service_id == service_id)
            return {channel, option.substr(equals + 1)};
    throw std::invalid_argument("there is no channel " + std::to_string(service_id));
}

} // namespace

std::map<std::uint64_t, std::string> described_sources(const std::vector<std::string> &options,
                                                       const std::vector<Channel> &channels)
{
    std::map<std::uint64_t, std::string> sources;
    for (const std::string &option : options) {
        const auto [channel, source] = parted(option, "ID=SOURCE", channels);
        if (!sources.emplace(channel.service_id, source).second)
            throw std::invalid_argument("channel " + std::to_string(channel.service_id) + " has two sources");
    }
    return sources;
}

std::map<std::uint64_t, int> described_bit_rates(const std::vector<std::string> &options,
                                                 const std::vector<Channel> &channels)
{
    std::map<std::uint64_t, int> bit_rates;
    for (const std::string &option : options) {
        const auto [channel, text] = parted(option, "ID=NUMBER", channels);
        int bit_rate = 0;
        if (!is_number(text, bit_rate))
            throw std::invalid_argument("'" + option + "' is not ID=NUMBER");
        if (bit_rate < TestProgramme::lowest_bit_rate || bit_rate > TestProgramme::highest_bit_rate)
            throw std::invalid_argument("a bit rate is between " + std::to_string(TestProgramme::lowest_bit_rate) +
                                        " and " + std::to_string(TestProgramme::highest_bit_rate));
        if (channel.bits_per_second == 0)
            throw std::invalid_argument("channel " + std::to_string(channel.service_id) + " has no stream");
        if (!bit_rates.emplace(channel.service_id, bit_rate).second)
            throw std::invalid_argument("channel " + std::to_string(channel.service_id) + " has two bit rates");
    }
    return bit_rates;
}

} // namespace simulator
