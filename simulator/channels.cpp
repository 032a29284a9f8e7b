#include "channels.h"

#include <algorithm>
#include <utility>

namespace simulator {

std::vector<Channel> built_in_channels()
{
    constexpr std::uint64_t behind_32_bits = 0x1'0000'0007; // service ids take all of their 64 bits
    constexpr std::uint64_t behind_63_bits = 0x8000'0000'0000'0008;
    using enum ChannelKind;
    const std::vector<std::string> silence = {"Silence", "More Silence", "Silence Today"};
    // id, name, major, minor, kind, source, bit/s, has signal, is locked, is scrambled, titles
    return {
        {1, "First", 1, 1, television, 1, 4'000'000, true, false, false, {"News", "Weather", "First Film"}},
        {2, "Second", 2, 1, television, 1, 4'000'000, true, false, false, {"Gardens", "Quiz"}},
        {3, "Radio Three", 3, 1, radio, 1, 188'000, true, false, false, silence},
        {4, "Analogue Four", 4, 0, analogue, 2, 0, true, false, false, {}},
        {5, "Locked Five", 5, 1, television, 1, 4'000'000, true, true, false, {"Late Film"}},
        {6, "Dark Six", 6, 1, television, 3, 4'000'000, false, false, false, {"Nobody Sees This"}},
        {behind_32_bits, "Scrambled Seven", 7, 1, television, 3, 8'000'000, true, false, true, {"Paid Film"}},
        {behind_63_bits, "Far Eight", 8, 2, television, 3, 2'000'000, true, false, false, {"Far Away", "Farther"}},
    };
}

Channels::Channels(std::vector<Channel> channels, WallClock clock)
    : channels_(std::move(channels)), clock_(std::move(clock)), current_(channels_.front().service_id)
{
}

const Channel *Channels::find(std::uint64_t service_id) const
{
    const auto found = std::find_if(channels_.begin(), channels_.end(),
                                    [&](const Channel &channel) { return channel.service_id == service_id; });
    return found == channels_.end() ? nullptr : &*found;
}

std::optional<Programme> Channels::programme(const Channel &channel) const
{
    if (!is_date_set_ || !channel.has_signal || channel.titles.empty())
        return std::nullopt;
    const std::int64_t number = clock_() / programme_length;
    const std::string &title = channel.titles[static_cast<std::size_t>(number) % channel.titles.size()];
    return Programme{title, static_cast<std::uint32_t>(number * programme_length),
                     static_cast<std::uint32_t>((number + 1) * programme_length)};
}

int Channels::seen_and_heard(const Channel &channel)
{
    constexpr int sound = 1;
    constexpr int picture = 2;
    if (!channel.has_signal || channel.is_locked || channel.is_scrambled)
        return 0;
    return channel.kind == ChannelKind::radio ? sound : sound + picture;
}

bool Channels::are_descrambled(std::span<const std::uint64_t> service_ids) const
{
    return std::all_of(service_ids.begin(), service_ids.end(), [&](std::uint64_t id) {
        const Channel *channel = find(id);
        return channel != nullptr && !channel->is_scrambled;
    });
}

Outcome Channels::tune(std::uint64_t service_id)
{
    if (find(service_id) == nullptr)
        return refused("no such channel");
    current_ = service_id;
    return {};
}

} // namespace simulator
