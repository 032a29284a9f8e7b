// What applications leave with the service: values for one another, and texts for recordings. It knows no bus.
#pragma once

#include "handles.h"
#include "outcome.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace simulator {

class SharedValues {
public:
    /// So many values are kept; an application that makes up more kinds of them is refused.
    static constexpr std::size_t most_values = 1000;
    /// What an info file has room for.
    static constexpr std::size_t longest_channel_number = 255;

    explicit SharedValues(const Handles &handles) : handles_(handles) {}

    /// Takes the place of the value of that type.
    Outcome set(int type, std::int64_t value);
    std::optional<std::int64_t> get(int type) const;

    /// A recording's channel number as text, until its handle is released.
    Outcome set_channel_number(int handle, const std::string &text);
    std::string channel_number(int handle) const;

    /// The channel's name in several languages: the first length bytes of the text.
    Outcome set_channel_names(const std::string &text, int length);
    const std::string &channel_names() const { return channel_names_; }

private:
    const Handles &handles_;
    std::map<int, std::int64_t> values_;
    std::map<int, std::string> channel_numbers_;
    std::string channel_names_;
};

} // namespace simulator
