// svc_pvr_read_sas_file on a fingerprint file of any content, size and kind: the size of a block is asked for, then
// the block is read into a buffer of exactly that size.
#include "pvr_side_files.h"
#include "support/check.h"
#include "support/scene.h"

#include <climits>
#include <cstring>
#include <optional>

using namespace fuzz;

namespace {

// Where the header has what; the blocks are behind it.
constexpr std::size_t count_at = 4, times_at = 8, sizes_at = 2408, offsets_at = 3608, header_size = 4808;
constexpr int most_blocks = 300;

const CallOf calls[] = {
    {Argument::good, "r.srf", "r.sas"},
    {Argument::good, "srf", "sas"},
    {Argument::good, longest_path.c_str(), "r.sas"},
    {Argument::good, cut_path.c_str(), nullptr},
    {Argument::refused, "rf", "r.sas"},
    {Argument::refused, "", "r.sas"},
    {Argument::refused, nullptr, "r.sas"},
    {Argument::without_output, "r.srf", "r.sas"},
};

constexpr Place places[] = {Place::file,         Place::link,    Place::locked, Place::lock_given_up,
                            Place::written_late, Place::nothing, Place::folder, Place::dangling_link,
                            Place::pipe,         Place::device};

constexpr long sizes[] = {as_it_is, header_size, header_size - 1, header_size + 1, 0, 1};

/// How much of nothing the file has behind its content: with more than 2 GiB, sizes that no int holds lie within it.
constexpr long holes[] = {0, 1L << 30, 6L << 30};

template <typename T>
T number_at(Bytes content, std::size_t offset) noexcept
{
    T number{};
    std::memcpy(&number, content.data() + offset, sizeof number);
    return number;
}

struct Expected {
    std::optional<int> size; ///< what is told; nothing when no block was found
    Bytes block;             ///< empty when there is none to be read
    bool is_there = false;   ///< the whole block lies within the file
    bool is_in_hole = false; ///< at least a part of it lies behind the content
    bool is_readable = false;
};

Expected expected_of(const Scene &scene, long hole, Place place, const CallOf &call, long long time)
{
    Expected expected;
    const Bytes content = scene.content, readable = scene.readable();
    if (!can_be_opened(place) || place == Place::locked || call.argument != Argument::good || call.file == nullptr ||
        readable.size() < header_size)
        return expected;
    const auto count = number_at<std::int32_t>(content, count_at);
    if (count < 1 || count > most_blocks)
        return expected;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        if (number_at<std::int64_t>(content, times_at + 8 * i) != time)
            continue;
        const std::uint64_t size = number_at<std::uint32_t>(content, sizes_at + 4 * i);
        const std::uint64_t offset = number_at<std::uint32_t>(content, offsets_at + 4 * i);
        expected.size = static_cast<int>(static_cast<std::uint32_t>(size));
        expected.is_there =
            size == 0 || (size <= INT_MAX && offset + size <= content.size() + static_cast<std::size_t>(hole));
        expected.is_in_hole = size > 0 && offset + size > content.size();
        expected.is_readable = size == 0 || (expected.is_there && offset + size <= readable.size());
        if (expected.is_readable && size > 0)
            expected.block = content.subspan(offset, size);
        break;
    }
    return expected;
}

struct Outcome {
    int result = 0;
    int size = -7;
};

Outcome read(SideFile &file, const Scene &scene, long hole, Place place, const CallOf &call, long long time,
             void *buffer)
{
    Outcome outcome;
    file.put(call.file != nullptr ? call.file : "r.sas", place, scene.content, hole);
    int *const size = call.argument != Argument::without_output ? &outcome.size : nullptr;
    run_on_machine([&] { outcome.result = svc_pvr_read_sas_file(call.path, time, size, buffer); });
    file.check_unchanged();
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static SideFile file;
    Input input(data, size);
    const Place place = input.choice(places);
    const CallOf &call = input.choice(calls);
    const std::uint8_t entry = input.byte();
    long long time = input.number();
    long hole = input.choice(holes);
    const Scene scene(input, sizes);
    if (scene.content.size() < header_size || place == Place::written_late)
        hole = 0; // it would be a part of the header
    // Of the first half of all bytes, each asks for the time that the file has in that entry.
    if (entry < 128 && scene.content.size() >= header_size)
        time = number_at<std::int64_t>(scene.content, times_at + 8 * std::size_t{entry});
    const Expected expected = expected_of(scene, hole, place, call, time);

    const Outcome asked = read(file, scene, hole, place, call, time, nullptr);
    check(asked.result == (expected.is_there ? 0 : -1), "a block can be asked for when the file holds all of it");
    check(asked.size == expected.size.value_or(-7), "the size told is the one of the first block of that time");
    if (asked.result == 0)
        check(asked.size >= 0 &&
                  static_cast<std::size_t>(asked.size) <= scene.content.size() + static_cast<std::size_t>(hole),
              "no block is larger than the file, so neither is a buffer for it");

    if (expected.is_there && expected.is_in_hole)
        return 0; // asking is enough: a buffer for it could take 2 GiB

    Block buffer(asked.result == 0 ? static_cast<std::size_t>(asked.size) : 1);
    const Outcome outcome = read(file, scene, hole, place, call, time, buffer.data());
    check(outcome.result == (expected.is_readable ? 0 : -1), "a block can be read when all of it can");
    check(outcome.size == asked.size, "asking and reading tell the same size");
    if (outcome.result == 0)
        check(buffer.is(expected.block), "the block is what the file has at its offset");
    else if (!expected.is_there)
        check(buffer.is_untouched(), "the buffer is untouched when there is no such block");
    return 0;
}
