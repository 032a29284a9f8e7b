// svc_pvr_get_yuv_info on a colour-format file of any content, size and kind.
#include "pvr_side_files.h"
#include "support/check.h"
#include "support/scene.h"

#include <algorithm>

using namespace fuzz;

namespace {

constexpr std::size_t format_size = 52;

const CallOf calls[] = {
    {Argument::good, "r.srf", "r.cft"},
    {Argument::good, "./r.srf", "r.cft"},
    {Argument::good, "r.anything.any", "r.anything.cft"},
    {Argument::good, longest_path.c_str(), "r.cft"},
    {Argument::good, cut_path.c_str(), nullptr},
    {Argument::refused, ".srf", "r.cft"},
    {Argument::refused, "", "r.cft"},
    {Argument::refused, nullptr, "r.cft"},
    {Argument::without_output, "r.srf", "r.cft"},
};

constexpr Place places[] = {Place::file,   Place::link,          Place::locked, Place::nothing,
                            Place::folder, Place::dangling_link, Place::pipe,   Place::device};

constexpr long sizes[] = {as_it_is, format_size, format_size - 1, format_size + 1, 0, 1};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static SideFile file;
    Input input(data, size);
    const Place place = input.choice(places);
    const CallOf &call = input.choice(calls);
    const Scene scene(input, sizes);
    file.put(call.file != nullptr ? call.file : "r.cft", place, scene.content);

    Block format(format_size);
    int result = 0;
    auto *const info =
        call.argument != Argument::without_output ? reinterpret_cast<yuv_info *>(format.data()) : nullptr;
    run_on_machine([&] { result = svc_pvr_get_yuv_info(call.path, info); });
    file.check_unchanged();

    const bool is_found = call.argument == Argument::good && can_be_opened(place) && call.file != nullptr;
    const Bytes readable = is_found ? scene.readable() : Bytes();
    check(result == (readable.size() >= format_size ? 0 : -2), "reading succeeds for a whole record, and for no other");
    check(format.is(readable.first(std::min(readable.size(), format_size))),
          "the record is what the file says, byte for byte, and untouched where it says nothing");
    return 0;
}
