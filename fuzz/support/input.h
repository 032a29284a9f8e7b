// An input taken apart: its first bytes choose what the reader meets, the rest is the file.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) noexcept : rest_(data, size) {}

    /// 0 when the input has no more.
    std::uint8_t byte() noexcept
    {
        if (rest_.empty())
            return 0;
        const std::uint8_t first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }

    std::int64_t number() noexcept
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 8)
            value |= std::uint64_t{byte()} << shift;
        return static_cast<std::int64_t>(value);
    }

    /// Half of all bytes stand for the first choice, which is the ordinary one.
    template <typename T, std::size_t count>
    const T &choice(const T (&choices)[count]) noexcept
    {
        const std::uint8_t chosen = byte();
        return choices[chosen < 128 ? 0 : chosen % count];
    }

    /// As many as there are, at most.
    Bytes take(std::size_t size) noexcept
    {
        const Bytes taken = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    Bytes rest() const noexcept { return rest_; }

private:
    Bytes rest_;
};

/// So many bytes, cut or filled up with zeros. A negative size takes them as they are.
inline std::vector<std::uint8_t> sized(Bytes bytes, long size)
{
    std::vector<std::uint8_t> result(bytes.begin(), bytes.end());
    if (size >= 0)
        result.resize(static_cast<std::size_t>(size));
    return result;
}

/// A heap block of exactly this size, so that the address sanitizer sees every byte read or written beyond it.
class Block {
public:
    explicit Block(std::size_t size, std::uint8_t fill = untouched)
        : data_(std::make_unique<std::uint8_t[]>(size)), size_(size)
    {
        std::memset(data_.get(), fill, size);
    }
    explicit Block(Bytes bytes) : Block(bytes.size()) { copy(bytes); }

    void copy(Bytes bytes) noexcept
    {
        if (!bytes.empty())
            std::memcpy(data_.get(), bytes.data(), bytes.size());
    }

    std::uint8_t *data() noexcept { return data_.get(); }
    const std::uint8_t *data() const noexcept { return data_.get(); }
    std::size_t size() const noexcept { return size_; }

    /// Holds these bytes, then nothing but the filling.
    bool is(Bytes bytes, std::uint8_t fill = untouched) const noexcept
    {
        if (bytes.size() > size_ || (!bytes.empty() && std::memcmp(data(), bytes.data(), bytes.size()) != 0))
            return false;
        const std::size_t filled = size_ - bytes.size();
        const std::uint8_t *const first = data() + bytes.size();
        // All are like the first when each is like the one before.
        return filled == 0 || (*first == fill && std::memcmp(first, first + 1, filled - 1) == 0);
    }
    bool is_untouched() const noexcept { return is({}); }

private:
    static constexpr std::uint8_t untouched = 0xa5;

    std::unique_ptr<std::uint8_t[]> data_;
    std::size_t size_;
};

} // namespace fuzz
