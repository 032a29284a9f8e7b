#include "shared_values.h"

namespace simulator {

Outcome SharedValues::set(int type, std::int64_t value)
{
    if (values_.size() >= most_values && !values_.contains(type))
        return refused("too many kinds of values");
    values_[type] = value;
    return {};
}

std::optional<std::int64_t> SharedValues::get(int type) const
{
    const auto found = values_.find(type);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

Outcome SharedValues::set_channel_number(int handle, const std::string &text)
{
    if (!handles_.is_issued(handle))
        return refused("no such handle");
    if (text.size() > longest_channel_number)
        return refused("a channel number of more than 255 bytes");
    std::erase_if(channel_numbers_, [&](const auto &entry) { return !handles_.is_issued(entry.first); });
    channel_numbers_[handle] = text;
    return {};
}

std::string SharedValues::channel_number(int handle) const
{
    const auto found = channel_numbers_.find(handle);
    return found == channel_numbers_.end() || !handles_.is_issued(handle) ? std::string() : found->second;
}

Outcome SharedValues::set_channel_names(const std::string &text, int length)
{
    if (length < 0)
        return refused("a length below 0");
    channel_names_ = text.substr(0, static_cast<std::size_t>(length));
    return {};
}

} // namespace simulator
