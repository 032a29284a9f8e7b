// pvrctl inf verify: looks for what is wrong with info files, in their own bytes and without the library.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <glib.h>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "command.h"
#include "files/older_generations.h"
#include "files/record_layout.h"
#include "side_files.h"

namespace pvrctl {
namespace {

constexpr std::uint64_t layout_version = 20;

struct Problem {
    bool is_wrong; ///< or else worth a warning
    std::optional<std::size_t> offset;
    std::string text;
};

/// A file, and what was found in it.
struct Verified {
    std::string path;
    std::optional<InfoFile> file;
    std::vector<Problem> problems;
    bool is_missing = false;

    void wrong(std::optional<std::size_t> offset, std::string text)
    {
        problems.push_back({true, offset, std::move(text)});
    }
    void warn(std::optional<std::size_t> offset, std::string text)
    {
        problems.push_back({false, offset, std::move(text)});
    }
    bool is_sound() const { return std::ranges::none_of(problems, &Problem::is_wrong); }
};

std::string in_hexadecimal(unsigned number, int digits)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%0*x", digits, number);
    return text.data();
}

/// Where a number lies, and what it may be.
struct NumberPlace {
    std::size_t offset;
    std::size_t width;
    const char *name;
};

constexpr NumberPlace place_of(std::string_view name)
{
    const auto *const field =
        std::ranges::find_if(pvr::record_fields, [=](const pvr::RecordField &known) { return name == known.name; });
    return {field->offset, field->width, field->name};
}

/// The numbers that are looked at, which lie elsewhere in older files.
struct NumberPlaces {
    NumberPlace thumbnail_type, duration, resume_position;
};
constexpr NumberPlaces current_numbers{place_of("nThumbnailType"), place_of("duration"), place_of("resume_play_pos")};
constexpr NumberPlaces older_numbers{
    {784, 4, "nThumbnailType"}, {776, 4, "duration"}, {pvr::older_resume_position, 4, "resume_play_pos"}};

std::uint64_t number_at(const InfoFile &file, const NumberPlace &place)
{
    return file.number(place.offset, place.width);
}

void verify_limit(Verified &verified, const NumberPlace &place, std::uint64_t most)
{
    if (const std::uint64_t number = number_at(*verified.file, place); number > most)
        verified.wrong(place.offset,
                       std::string(place.name) + " is " + std::to_string(number) + ", and neither 0 nor 1");
}

void verify_numbers(Verified &verified, const NumberPlaces &places, bool is_finished)
{
    verify_limit(verified, places.thumbnail_type, 1);
    const std::uint64_t duration = number_at(*verified.file, places.duration);
    const std::uint64_t position = number_at(*verified.file, places.resume_position);
    // The length of a recording that is under way is not told yet.
    if (is_finished && position > duration)
        verified.wrong(places.resume_position.offset, "resume_play_pos is " + std::to_string(position) +
                                                          ", behind the end of the recording at " +
                                                          std::to_string(duration));
}

void verify_text(Verified &verified, const char *name, std::size_t offset, std::size_t width)
{
    const std::string_view field = std::string_view(verified.file->bytes).substr(offset, width);
    const std::string_view text = field.substr(0, field.find('\0'));
    if (text.size() == field.size())
        verified.wrong(offset + width - 1, std::string(name) + " does not end: there is no zero byte in it");
    const char *end = nullptr;
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), &end) != FALSE)
        return;
    const auto at = static_cast<std::size_t>(end - text.data());
    verified.wrong(offset + at, std::string(name) + " is no UTF-8 from the byte " +
                                    in_hexadecimal(static_cast<unsigned char>(text[at]), 2) + " on");
}

/// A text of 256 units in UTF-16.
struct OlderTextPlace {
    std::size_t offset;
    const char *name;
    bool is_high_byte_first;
    std::size_t read_units; ///< those behind are not read
    const char *without_end;
};
constexpr OlderTextPlace older_texts[] = {
    {0, "channel_name", true, pvr::units_in_older_text / 2, "its first 128 units are read"},
    {792, "programe_title", false, pvr::units_in_older_text, "it is read as empty"},
};

unsigned unit_at(const InfoFile &file, const OlderTextPlace &place, std::size_t index)
{
    const auto first = static_cast<unsigned>(file.number(place.offset + 2 * index, 1));
    const auto second = static_cast<unsigned>(file.number(place.offset + 2 * index + 1, 1));
    return place.is_high_byte_first ? first << 8 | second : second << 8 | first;
}

bool is_first_half(unsigned unit) { return (unit & 0xfc00U) == 0xd800U; }
bool is_second_half(unsigned unit) { return (unit & 0xfc00U) == 0xdc00U; }

void verify_older_text(Verified &verified, const OlderTextPlace &place)
{
    std::array<unsigned, pvr::units_in_older_text> units{};
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = unit_at(*verified.file, place, i);
    const auto length = static_cast<std::size_t>(std::ranges::find(units, 0U) - units.begin());
    const std::size_t end = std::min(length, place.read_units);
    if (length == units.size())
        verified.wrong(place.offset + 2 * (length - 1), std::string(place.name) +
                                                            " does not end: there is no zero unit in it, and " +
                                                            place.without_end);
    else if (length > place.read_units)
        verified.warn(place.offset + 2 * place.read_units,
                      std::string(place.name) + " goes on behind the units that are read");
    for (std::size_t i = 0; i < end; ++i) {
        if (is_first_half(units[i]) && i + 1 < end && is_second_half(units[i + 1])) {
            ++i;
        } else if (is_first_half(units[i]) || is_second_half(units[i])) {
            verified.wrong(place.offset + 2 * i, std::string(place.name) +
                                                     " is no UTF-16: " + in_hexadecimal(units[i], 4) +
                                                     " is half a pair, and the text is read as empty");
            return;
        }
    }
}

void verify_current(Verified &verified)
{
    const InfoFile &file = *verified.file;
    if (file.size > static_cast<long>(sizeof(pvr_file_info_s)))
        verified.warn(sizeof(pvr_file_info_s),
                      "the file is read as the current generation although it is longer; what follows is not read");
    constexpr NumberPlace version = place_of("version");
    if (const std::uint64_t number = number_at(file, version); number != layout_version)
        verified.wrong(version.offset, "version is " + std::to_string(number) + ", not 20");
    for (const pvr::RecordField &field : pvr::record_fields)
        if (field.kind == pvr::FieldKind::text)
            verify_text(verified, field.name, field.offset, field.width);
    constexpr NumberPlace complete = place_of("record_complete");
    verify_limit(verified, complete, 1);
    verify_numbers(verified, current_numbers, number_at(file, complete) != 0);
}

void verify_older(Verified &verified)
{
    for (const OlderTextPlace &place : older_texts)
        verify_older_text(verified, place);
    verify_text(verified, "channel_num", 512, 256);
    verify_numbers(verified, older_numbers, true);
}

void verify_recording(Verified &verified, const RecordingPath &path)
{
    const std::string recording = path.recording();
    struct stat status {};
    if (stat(recording.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        verified.wrong(std::nullopt, "there is no recording '" + recording + "' beside it");
}

Verified verified_file(const RecordingPath &path)
{
    Verified verified{path.beside("inf"), {}, {}};
    try {
        verified.file = read_info_file(verified.path);
        check_size(*verified.file);
    } catch (const Failure &failure) {
        verified.is_missing = failure.code() == ExitCode::not_found;
        verified.wrong(verified.file ? std::optional(verified.file->bytes.size()) : std::nullopt, failure.what());
        return verified;
    }
    if (verified.file->is_older())
        verify_older(verified);
    else
        verify_current(verified);
    verify_recording(verified, path);
    return verified;
}

Json verified_json(const Verified &verified)
{
    Json problems = Json::array();
    for (const Problem &problem : verified.problems)
        problems.push_back({{"severity", problem.is_wrong ? "error" : "warning"},
                            {"offset", problem.offset ? Json(*problem.offset) : Json()},
                            {"message", problem.text}});
    const char *generation = verified.file ? verified.file->generation() : nullptr;
    return {{"file", verified.path},
            {"size", verified.file ? Json(verified.file->size) : Json()},
            {"generation", generation != nullptr ? Json(generation) : Json()},
            {"sound", verified.is_sound()},
            {"problems", std::move(problems)}};
}

void add_rows(const Verified &verified, std::vector<Row> &rows)
{
    rows.push_back({"file", verified.path});
    if (verified.file && verified.file->generation() != nullptr)
        rows.push_back({"generation", std::string(verified.file->generation()) + ", " +
                                          std::to_string(verified.file->size) + " bytes"});
    for (const Problem &problem : verified.problems)
        rows.push_back({problem.is_wrong ? "wrong" : "warning",
                        (problem.offset ? "at " + std::to_string(*problem.offset) + ": " : "") + problem.text});
    if (verified.is_sound())
        rows.push_back({"sound", "yes"});
}

void verify_files(Output &output, const std::vector<std::string> &files)
{
    std::vector<RecordingPath> paths(files.begin(), files.end()); // what is no path is told before anything is read
    Json data = Json::array();
    std::vector<Row> rows;
    std::size_t unsound = 0;
    std::size_t missing = 0;
    for (const RecordingPath &path : paths) {
        const Verified verified = verified_file(path);
        unsound += verified.is_sound() ? 0U : 1U;
        missing += verified.is_missing ? 1U : 0U;
        data.push_back(verified_json(verified));
        add_rows(verified, rows);
    }
    output.show({{"files", std::move(data)}, {"sound", unsound == 0}}, rows);
    if (unsound > 0)
        throw Failure(unsound == missing ? ExitCode::not_found : ExitCode::failed,
                      std::to_string(unsound) + " of " + std::to_string(paths.size()) +
                          (unsound == missing ? " info files not found" : " info files not sound"));
}

} // namespace

void add_inf_verify(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(object, "verify",
                                 "Look for what is wrong with info files: size, texts and numbers that make no sense, "
                                 "and whether there is a recording. It ends with 1 when anything is; a warning is not "
                                 "wrong.",
                                 {"inf verify first.srf", "inf verify first.srf second.srf"});
    const auto files = std::make_shared<std::vector<std::string>>();
    completes(verb.add_option("FILE", *files, "recordings or their info files: .srf, .inf or .tmp")
                  ->required()
                  ->type_name(""),
              Completes::recording);
    choose(commands, verb, [files](Service &, Output &output) { verify_files(output, *files); });
}

} // namespace pvrctl
