// The lean reader of info files, which takes every file for one of the current generation.
#include "files/info_reader.h"
#include "support/check.h"
#include "support/older_record.h"
#include "support/scene.h"

#include <algorithm>

using namespace fuzz;

namespace {

const CallOf calls[] = {
    {Argument::good, "r.srf", "r.inf"},
    {Argument::good, "r.inf", "r.inf"},
    {Argument::good, "timeshift.tmp", "timeshift.inf"},
    {Argument::good, longest_path.c_str(), "r.inf"},
    {Argument::good, cut_path.c_str(), nullptr},
    {Argument::refused, "r.INF", "r.inf"},
    {Argument::refused, "inf", "inf"},
    {Argument::refused, nullptr, "r.inf"},
    {Argument::without_output, "r.srf", "r.inf"},
};

constexpr Place places[] = {Place::file,   Place::link,          Place::locked, Place::nothing,
                            Place::folder, Place::dangling_link, Place::pipe,   Place::device};

constexpr long sizes[] = {as_it_is, 10905, 10904, 10906, 12044, 12048, 0, 1};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static SideFile file;
    Input input(data, size);
    const Place place = input.choice(places);
    const CallOf &call = input.choice(calls);
    const Scene scene(input, sizes);
    file.put(call.file != nullptr ? call.file : "r.inf", place, scene.content);

    Block record(record_size);
    int result = 0;
    auto *const info =
        call.argument != Argument::without_output ? reinterpret_cast<pvr_file_info_s *>(record.data()) : nullptr;
    run_on_machine([&] { result = pvr::_svc_pvr_get_pvr_file_info_vexan(call.path, info); });
    file.check_unchanged();

    if (call.argument != Argument::good) {
        check(result == -2, "a call with a bad argument is refused");
        check(record.is_untouched(), "the record of a refused call is untouched");
        return 0;
    }
    // Deliberately also a file that somebody holds locked.
    const Bytes readable = can_be_opened(place) && call.file != nullptr ? scene.readable() : Bytes();
    check(result == (readable.size() >= record_size ? 0 : -2), "reading succeeds for a whole record, and for no other");
    check(record.is(readable.first(std::min(readable.size(), record_size)), 0),
          "the record is what the file says, byte for byte, and zero where it says nothing");
    return 0;
}
