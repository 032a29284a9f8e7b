#include "source_options.h"

#include "channels.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

namespace simulator {

std::map<std::uint64_t, std::string> described_sources(const std::vector<std::string> &options)
{
    const std::vector<Channel> channels = built_in_channels();
    std::map<std::uint64_t, std::string> sources;
    for (const std::string &option : options) {
        const std::size_t equals = std::min(option.find('='), option.size());
        std::uint64_t service_id = 0;
        const auto [end, error] = std::from_chars(option.data(), option.data() + equals, service_id);
        if (error != std::errc() || end != option.data() + equals || equals + 1 >= option.size())
            throw std::invalid_argument("'" + option + "' is not ID=SOURCE");
        if (std::none_of(channels.begin(), channels.end(),
                         [&](const Channel &channel) { return channel.service_id == service_id; }))
            throw std::invalid_argument("there is no channel " + std::to_string(service_id));
        if (!sources.emplace(service_id, option.substr(equals + 1)).second)
            throw std::invalid_argument("channel " + std::to_string(service_id) + " has two sources");
    }
    return sources;
}

} // namespace simulator
