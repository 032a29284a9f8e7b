// The converters of older info files, on images of exactly their size, and the turning of units on a text that is
// exactly as long as its terminator says.
#include "files/older_generations.h"
#include "support/check.h"
#include "support/older_record.h"

#include <algorithm>

using namespace fuzz;

namespace {

struct Converter {
    Generation generation;
    void (*convert)(pvr_file_info_s *info, const unsigned char *image);
};
constexpr Converter converters[] = {{Generation::ardel, pvr::_field_converter_ardel},
                                    {Generation::selk, pvr::_field_converter_selk}};

void convert(const Converter &converter, Bytes bytes)
{
    const std::size_t size = image_size(converter.generation);
    Block image(size, 0);
    image.copy(bytes.first(std::min(bytes.size(), size)));
    const Block before(Bytes(image.data(), size));
    Block record(record_size, 0);
    converter.convert(reinterpret_cast<pvr_file_info_s *>(record.data()), image.data());
    check(record.is(converted({image.data(), size}, converter.generation)),
          "every byte of the record is what the layout says");
    check(image.is({before.data(), size}), "the image stays as it is");
}

void turn(Bytes bytes)
{
    std::size_t units = 0;
    bool is_ended = false;
    while (!is_ended && units < pvr::units_in_older_text && 2 * units + 1 < bytes.size()) {
        is_ended = bytes[2 * units] == 0 && bytes[2 * units + 1] == 0;
        ++units;
    }
    if (!is_ended && units < pvr::units_in_older_text)
        return; // it would go on behind the input
    const Block text(bytes.first(2 * units));
    Block turned(2 * units);
    pvr::_trans_string(reinterpret_cast<unsigned short *>(turned.data()), text.data());
    for (std::size_t i = 0; i < units; ++i)
        check(turned.data()[2 * i] == bytes[2 * i + 1] && turned.data()[2 * i + 1] == bytes[2 * i],
              "a unit is turned, up to and with the zero unit");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const Converter &converter = input.choice(converters);
    convert(converter, input.rest());
    turn(input.rest());
    return 0;
}
