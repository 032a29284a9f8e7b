// Decoding digits, compared with the scan that it stands for.
#include "events/hexadecimal.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scan.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::size_t count = size / 2;
    const Block characters(Bytes(data, 2 * count));
    Block bytes(count);
    pvr::decode_hexadecimal(bytes.data(), count, reinterpret_cast<const char *>(characters.data()));
    for (std::size_t i = 0; i < count; ++i)
        check(bytes.data()[i] == scanned(data[2 * i], data[2 * i + 1]), "each pair is decoded as it would be scanned");
    check(characters.is({data, 2 * count}), "the characters stay as they are");
    return 0;
}
