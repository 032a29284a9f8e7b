// svc_pvr_get_pvr_file_info, and svc_pvr_is_audio_only, which rests on it, on an info file of any content, size and
// kind, and with every answer that the service can give.
#include "pvr_side_files.h"
#include "support/check.h"
#include "support/machine.h"
#include "support/older_record.h"
#include "support/scene.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

using namespace fuzz;

namespace {

/// What becomes of the info file while it is read.
enum class Meanwhile {
    nothing,
    shrinks,            ///< to half of its size, once it was opened and before it is locked
    lengthens,          ///< in the same moment, from half of its size, or from that of the largest older file
    appears,            ///< only when it has been looked for in vain
    grows,              ///< is empty at first
    grows_after_backup, ///< as well, and there is a backup with the content
};

struct InfoCall : CallOf {
    const char *recording; ///< what the service is asked about
    bool records = true;   ///< whether the product does
};

const InfoCall calls[] = {
    {{Argument::good, "r.srf", "r.inf"}, "r.srf"},
    {{Argument::good, "r.inf", "r.inf"}, "r.srf"},
    {{Argument::good, "r.tmp", "r.inf"}, "r.srf"},
    {{Argument::good, "timeshift.tmp", "timeshift.inf"}, "timeshift.tmp"},
    {{Argument::good, "./timeshift.tmp", "timeshift.inf"}, "./timeshift.srf"},
    {{Argument::good, longest_path.c_str(), "r.inf"}, longest_path.c_str()},
    {{Argument::good, cut_path.c_str(), nullptr}, nullptr},
    {{Argument::refused, "r.SRF", "r.inf"}, nullptr},
    {{Argument::refused, "srf", "inf"}, nullptr},
    {{Argument::refused, "", "r.inf"}, nullptr},
    {{Argument::refused, nullptr, "r.inf"}, nullptr},
    {{Argument::without_output, "r.srf", "r.inf"}, "r.srf"},
    {{Argument::refused, "r.srf", "r.inf"}, nullptr, false},
};

struct PlaceOf {
    Place place;
    Meanwhile meanwhile = Meanwhile::nothing;
};
constexpr PlaceOf places[] = {
    {Place::file},
    {Place::link},
    {Place::locked},
    {Place::lock_given_up},
    {Place::nothing},
    {Place::folder},
    {Place::dangling_link},
    {Place::pipe},
    {Place::device},
    {Place::file, Meanwhile::shrinks},
    {Place::file, Meanwhile::lengthens},
    {Place::nothing, Meanwhile::appears},
    {Place::file, Meanwhile::grows},
    {Place::file, Meanwhile::grows_after_backup},
};

constexpr long sizes[] = {as_it_is, 10905, 12044, 12048, 12052, 10904, 10906, 12043, 12045, 12047, 12051, 12053, 0, 1};

/// What the service says when it is asked whether the recording is being recorded.
struct Service {
    bool is_there;
    int returned;
    int answer;
};
constexpr Service services[] = {{true, 0, 0}, {true, 0, 1}, {true, 0, -1}, {true, -2, 0}, {false, 0, 0}};

/// What a file grows to when what it has does not matter.
constexpr std::uint8_t something[] = {1};

constexpr std::size_t largest_older_file = 12052;
constexpr std::size_t record_complete = 10627, incomplete_reason = 10645, thumbnail_type = 794;

// ---- What the reader asks the service.

Service service;
const char *expected_recording = nullptr;
int questions = 0;

} // namespace

extern "C" int __real_svc_pvr_is_recording_file(const char *path, int *result);
extern "C" int __wrap_svc_pvr_is_recording_file(const char *path, int *result)
{
    ++questions;
    check(expected_recording != nullptr && std::string_view(path) == expected_recording,
          "the service is asked about the recording");
    if (!service.is_there)
        return __real_svc_pvr_is_recording_file(path, result);
    if (service.returned == 0)
        *result = service.answer;
    return service.returned;
}

namespace {

/// The first question of a process opens what GLib keeps open.
bool asked_once()
{
    int answer = 0;
    __real_svc_pvr_is_recording_file("r.srf", &answer);
    return true;
}

struct Expected {
    int result = -2;
    std::vector<std::uint8_t> record = std::vector<std::uint8_t>(record_size);
    int questions = 0;
};

/// What the file holds when it is opened.
Bytes first_content(const Scene &scene, const PlaceOf &place)
{
    if (place.meanwhile == Meanwhile::grows || place.meanwhile == Meanwhile::grows_after_backup)
        return {};
    const Bytes whole = scene.content;
    if (place.meanwhile != Meanwhile::lengthens)
        return whole;
    return whole.size() > largest_older_file ? whole.first(largest_older_file) : scene.half();
}

/// What the reader opens in the end; nothing when there is nothing to open.
Bytes found(const Scene &scene, const PlaceOf &place, const InfoCall &call)
{
    if (!can_be_opened(place.place) || call.file == nullptr)
        return {};
    // No ".bak" fits behind the longest path, which then stands for the file itself.
    const bool has_backup_path = call.path != longest_path.c_str();
    if (first_content(scene, place).empty() && place.meanwhile != Meanwhile::grows_after_backup && has_backup_path)
        return {};
    if (place.meanwhile == Meanwhile::grows_after_backup && !has_backup_path)
        return something;
    return place.meanwhile == Meanwhile::shrinks ? scene.half() : Bytes(scene.content);
}

Expected expected_of(const Scene &scene, const PlaceOf &place, const InfoCall &call)
{
    const Bytes content = found(scene, place, call);
    Expected expected;
    if (content.empty())
        return expected;

    const Bytes readable = scene.readable(content);
    const Generation generation = generation_of(content.size());
    if (generation != Generation::current) {
        const std::size_t size = std::min(readable.size(), image_size(generation));
        expected.record = converted(readable.first(size), generation);
        expected.result = 0;
        return expected;
    }
    if (place.place == Place::locked)
        return expected;
    const std::size_t size = std::min(readable.size(), record_size);
    std::copy_n(readable.begin(), size, expected.record.begin());
    if (size < record_size)
        return expected;
    expected.result = 0;
    if (expected.record[record_complete] == 0 && expected.record[record_complete + 1] == 0) {
        expected.questions = 1;
        if (service.is_there && service.returned == 0 && service.answer == 0) {
            expected.record[record_complete] = 1;
            expected.record[incomplete_reason] = 5;
            expected.record[incomplete_reason + 1] = 0;
        }
    }
    return expected;
}

/// By Meanwhile: the line that the reader logs at that moment, and what somebody else does then.
struct Change {
    const char *moment = nullptr;
    void (*happen)(SideFile &file, const Scene &scene) = nullptr;
};
constexpr Change changes[] = {
    {},
    {"inf file size is", [](SideFile &file, const Scene &scene) { file.write(scene.half()); }},
    {"inf file size is", [](SideFile &file, const Scene &scene) { file.write(scene.content); }},
    {"stat failed", [](SideFile &file, const Scene &) { file.appear(); }},
    {"inf file size is", [](SideFile &file, const Scene &scene) { file.write(scene.content); }},
    {"inf file size is", [](SideFile &file, const Scene &) { file.write(something); }},
};

void arrange(SideFile &file, const Scene &scene, const PlaceOf &place, const InfoCall &call)
{
    const std::string name = call.file != nullptr ? call.file : "r.inf";
    file.put(name, place.place, first_content(scene, place));
    if (place.meanwhile == Meanwhile::grows_after_backup)
        file.add(name + ".bak", scene.content);

    const Change &change = changes[static_cast<int>(place.meanwhile)];
    if (change.happen != nullptr)
        machine.when_logged(change.moment, [&] { change.happen(file, scene); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool has_asked = asked_once();
    static SideFile file;
    Input input(data, size);
    const PlaceOf &place = input.choice(places);
    const InfoCall &call = input.choice(calls);
    service = input.choice(services);
    const bool asks_for_audio = (input.byte() & 1) != 0;
    Scene scene(input, sizes);

    expected_recording = call.recording;
    questions = 0;
    machine.records = call.records;
    const Expected expected = expected_of(scene, place, call);
    arrange(file, scene, place, call);

    Block record(record_size);
    int result = 0;
    int is_audio_only = -7;
    auto *const info =
        call.argument != Argument::without_output ? reinterpret_cast<pvr_file_info_s *>(record.data()) : nullptr;
    run_on_machine([&] {
        result = asks_for_audio ? svc_pvr_is_audio_only(call.path, info != nullptr ? &is_audio_only : nullptr)
                                : svc_pvr_get_pvr_file_info(call.path, info);
    });
    file.check_unchanged();

    if (call.argument != Argument::good) {
        check(result == -2, "a call with a bad argument, or on a product that does not record, is refused");
        check(record.is_untouched() && is_audio_only == -7, "what was passed to a refused call is untouched");
        return 0;
    }
    if (asks_for_audio) {
        std::uint32_t type = 0;
        std::memcpy(&type, expected.record.data() + thumbnail_type, sizeof type);
        const bool is_told = expected.result == 0 && type <= 1;
        check(result == (is_told ? 0 : -2), "audio alone is told of a record that can be read and says 0 or 1");
        check(is_audio_only == (is_told ? static_cast<int>(type) : -7), "audio alone is what the record says");
    } else {
        check(result == expected.result, "reading succeeds for a whole record, and for no other");
        check(record.is(expected.record), "the record is what the file says, byte for byte");
    }
    check(questions == expected.questions, "the service is asked about an unfinished recording, once, and no other");
    return 0;
}
