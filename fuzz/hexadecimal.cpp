// Decoding digits, compared with the scan that it stands for.
#include "events/hexadecimal.h"
#include "support/check.h"
#include "support/input.h"

#include <cstdio>
#include <vector>

using namespace fuzz;

namespace {

/// What is scanned from each pair of characters.
std::vector<std::uint8_t> scan_all()
{
    std::vector<std::uint8_t> scanned;
    scanned.reserve(0x10000);
    for (unsigned pair = 0; pair < 0x10000; ++pair) {
        const char characters[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xff), '\0'};
        unsigned value = 0;
        std::sscanf(characters, "%02x", &value);
        scanned.push_back(static_cast<std::uint8_t>(value));
    }
    return scanned;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::vector<std::uint8_t> scanned = scan_all();
    const std::size_t count = size / 2;
    const Block characters(Bytes(data, 2 * count));
    Block bytes(count);
    pvr::decode_hexadecimal(bytes.data(), count, reinterpret_cast<const char *>(characters.data()));
    for (std::size_t i = 0; i < count; ++i)
        check(bytes.data()[i] == scanned[std::size_t{data[2 * i]} << 8 | data[2 * i + 1]],
              "each pair is decoded as it would be scanned");
    check(characters.is({data, 2 * count}), "the characters stay as they are");
    return 0;
}
