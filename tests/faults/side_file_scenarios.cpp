// The files beside a recording: read, written, and asked about.
#include "faults/scenario.h"
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/little_endian.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

namespace faults {
namespace {

using support::as_little_endian;
using support::content_of;
using support::write_file;

std::string golden(const std::string &name) { return content_of(PVR_GOLDEN_FILES "/" + name); }

/// The folder holds these files and nothing else.
void lay_out(Stage &stage, const std::vector<std::pair<std::string, std::string>> &files)
{
    for (const std::string &name : stage.folder.names())
        std::filesystem::remove(stage.folder / name);
    for (const auto &[name, content] : files)
        write_file(stage.folder / name, content);
}

std::string recording(Stage &stage) { return stage.folder / "a.srf"; }

bool consists_of(const std::string &bytes, char byte)
{
    return std::all_of(bytes.begin(), bytes.end(), [=](char one) { return one == byte; });
}

/// What a buffer holds, by what it might hold; "part" for what is wanted with zeros or untouched bytes among it.
std::string described(const std::string &bytes, const std::string &whole)
{
    if (consists_of(bytes, '\0'))
        return "zero";
    if (bytes == whole)
        return "whole";
    if (consists_of(bytes, '#'))
        return "untouched";
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (bytes[i] != '\0' && bytes[i] != '#' && (i >= whole.size() || bytes[i] != whole[i]))
            return "something else";
    return "part";
}

template <typename T>
std::string bytes_of(const T &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

/// A record none of whose bytes have been written.
template <typename T>
T untouched()
{
    T record;
    std::memset(&record, '#', sizeof record);
    return record;
}

/// What a file holds, by what it held and what it is to hold, and which files lie beside it.
std::string left(Stage &stage, const std::string &name, const std::string &before, const std::string &after)
{
    std::string text;
    for (const std::string &other : stage.folder.names())
        if (other != name)
            text += ", beside " + other;
    if (!std::filesystem::exists(stage.folder / name))
        return "no file" + text;
    const std::string content = content_of(stage.folder / name);
    if (content.empty())
        return "empty" + text;
    if (content == after)
        return "new" + text;
    if (content == before)
        return "old" + text;
    if (content.starts_with(after))
        return "new and more" + text;
    if (after.starts_with(content))
        return "a beginning of the new" + text;
    bool is_mixed = content.size() <= std::min(before.size(), after.size());
    for (std::size_t i = 0; is_mixed && i < content.size(); ++i)
        is_mixed = content[i] == before[i] || content[i] == after[i];
    return (is_mixed ? "old and new mixed" : "something else") + text;
}

const std::string no_override = "the file that overrides the product counts as not there";
const std::string goes_on = "goes on with what is left";
const std::string only_read = "it was only read";
const std::string at_end = "there was nothing more to read";
const std::string waits = "the lock is waited for";

std::vector<Exception> joined(std::vector<Exception> first, const std::vector<Exception> &more)
{
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

/// What working on a locked file gets along with.
std::vector<Exception> locking(const std::string &good)
{
    return {
        {Kind::access, good, no_override},
        {Kind::flock, good, "closing gives up a lock that could not be given back", nullptr, 2},
        {Kind::flock, good, goes_on, "EINTR"},
        {Kind::flock, good, waits, "EWOULDBLOCK", 0, Length::once},
        {Kind::nanosleep, good, goes_on},
    };
}

/// The same for one that is read, by either of the two ways to read.
std::vector<Exception> reading(Kind read, const std::string &good)
{
    return joined(locking(good), {
                                     {read, good, goes_on, "EINTR"},
                                     {read, good, goes_on, "half"},
                                     {Kind::preadv, good, at_end, nullptr, 2},
                                     {Kind::close, good, only_read},
                                 });
}

/// The same for one that is written. The lock is given back, and that it could not be is not looked at.
std::vector<Exception> writing(const std::string &good)
{
    return joined(locking(good), {
                                     {Kind::writev, good, goes_on, "EINTR"},
                                     {Kind::writev, good, goes_on, "half"},
                                     {Kind::ftruncate, good, goes_on, "EINTR"},
                                     {Kind::close, good, "interrupted, it is closed all the same", "EINTR"},
                                     {Kind::request, good, "the service is told, and its answer not looked at"},
                                 });
}

// ---- the info file is read

/// The same for a record. What an older file becomes is what the first call has made of it, which meets no fault.
std::string described_record(const pvr_file_info_s &info, const std::string &file)
{
    static std::map<std::string, std::string> wholes;
    if (!wholes.contains(file))
        wholes[file] = file.starts_with("vexan") ? golden(file) : bytes_of(info);
    pvr_file_info_s cut_off;
    std::memcpy(&cut_off, wholes[file].data(), sizeof cut_off);
    cut_off.record_complete = as_little_endian(std::uint16_t{1});
    cut_off.incomplete_reason = as_little_endian(std::uint16_t{5});
    return bytes_of(info) == bytes_of(cut_off) ? "cut off" : described(bytes_of(info), wholes[file]);
}

Scenario info_read(const std::string &variant, const std::string &file, const std::string &good, const std::string &bad,
                   std::vector<Exception> exceptions)
{
    return {"svc_pvr_get_pvr_file_info",
            variant,
            Start::session,
            [file](Stage &stage) {
                lay_out(stage, {{"a.inf", file.empty() ? "" : golden(file)}});
                stage.answer("is_recording_file", "(0,)");
            },
            [file](Stage &stage) {
                pvr_file_info_s info = untouched<pvr_file_info_s>();
                const int returned = svc_pvr_get_pvr_file_info(recording(stage).c_str(), &info);
                return std::to_string(returned) + "; " + described_record(info, file);
            },
            good,
            bad,
            std::move(exceptions)};
}

std::vector<Scenario> info_reads()
{
    const std::vector<Exception> current =
        joined(reading(Kind::preadv, "0; whole"), {{Kind::preadv, "-2; part", "what could be read", "half and EIO"}});
    const std::vector<Exception> older =
        joined(reading(Kind::preadv, "0; whole"),
               {{Kind::preadv, "0; part", "what could not be read counts as zero, and is converted"},
                {Kind::flock, "0; whole", "an older file is read whoever holds its lock"},
                {Kind::utf16, "0; part", "a name that cannot be converted is left empty"}});
    const std::string cut_off = "0; cut off";
    return {
        info_read("current", "vexan-television.inf", "0; whole", "-2; zero", current),
        info_read(
            "unfinished", "vexan-unfinished.inf", cut_off, "-2; zero",
            joined(reading(Kind::preadv, cut_off),
                   {{Kind::preadv, "-2; part", "what could be read", "half and EIO"},
                    {Kind::request, "0; whole", "while the service cannot be asked it counts as being recorded"}})),
        info_read("Ardel", "ardel-television.inf", "0; whole", "-2; zero", older),
        info_read("Selk", "selk-television.inf", "0; whole", "-2; zero", older),
        info_read("empty", "", "-2; zero", "-2; zero", {}),
    };
}

Scenario audio_only()
{
    return {"svc_pvr_is_audio_only",
            "",
            Start::session,
            [](Stage &stage) {
                lay_out(stage, {{"a.inf", golden("vexan-audio-only.inf")}});
                stage.answer("is_recording_file", "(0,)");
            },
            [](Stage &stage) {
                int is_audio_only = -77;
                const int returned = svc_pvr_is_audio_only(recording(stage).c_str(), &is_audio_only);
                return std::to_string(returned) + "; " + std::to_string(is_audio_only);
            },
            "0; 1",
            "-2; -77",
            reading(Kind::preadv, "0; 1")};
}

// ---- the info file is written

/// A record of the test's own, as it is on disk.
pvr_file_info_s record_to_write()
{
    pvr_file_info_s info;
    auto *bytes = reinterpret_cast<unsigned char *>(&info);
    for (std::size_t i = 0; i < sizeof info; ++i)
        bytes[i] = static_cast<unsigned char>(1 + i % 251);
    info.version = as_little_endian(std::uint16_t{20});
    info.resume_play_pos = as_little_endian(std::uint32_t{1999});
    return info;
}

/// A recording of this name has a file that holds before, and after once it is written; and there may be other files.
Scenario info_written(const std::string &variant, const std::string &name, const std::string &before,
                      const std::string &after, std::vector<std::pair<std::string, std::string>> others,
                      std::vector<Exception> exceptions)
{
    std::string beside;
    for (const auto &[other, content] : others)
        beside += other == "timeshift.tmp" ? ", beside " + other : "";
    const std::string inf = name.substr(0, name.size() - 3) + "inf";
    others.emplace_back(inf, before);
    return {"svc_pvr_set_pvr_file_info_ex",
            variant,
            Start::session,
            [others](Stage &stage) {
                lay_out(stage, others);
                stage.answer("set_pvr_file_info", "(0,)");
            },
            [=](Stage &stage) {
                pvr_file_info_s info = record_to_write();
                const int returned = svc_pvr_set_pvr_file_info_ex((stage.folder / name).c_str(), &info);
                return std::to_string(returned) + "; " + left(stage, inf, before, after);
            },
            "0; new" + beside,
            "-2; old" + beside,
            std::move(exceptions)};
}

/// What writing a generation leaves when it fails half-way.
const std::vector<Exception> torn{
    {Kind::writev, "-2; a beginning of the new", "cut so short that nobody takes it for whole", "half and ENOSPC"},
    {Kind::ftruncate, "-2; a beginning of the new", "cut so short that nobody takes it for whole", "EIO", 1,
     Length::once},
    {Kind::ftruncate, "-2; new and more", "it cannot be cut", "EIO"},
    {Kind::stat, "0; new", "the size is asked for in another way"},
};

/// A current file is opened for writing, the probe is made and removed, and the file is written. The texts say what
/// lies beside the file: always, when the probe cannot be opened, and when it cannot be used.
std::vector<Exception> current(const std::string &beside, const std::string &unopened, const std::string &unusable)
{
    const std::string good = "0; new" + beside;
    std::vector<Exception> exceptions{
        {Kind::open, good, "opened anew once the device takes files", nullptr, 1, Length::once},
        {Kind::open, "0; old" + unopened, "the device takes no files: it was pulled out, probably"},
        {Kind::fstat, good, "opened anew once the device takes files", nullptr, 1, Length::once},
        {Kind::fstat, "-2; old" + beside, "nobody knows of which generation it is", nullptr, 2, Length::once},
        {Kind::fstat, "0; old" + unusable, "the device takes no files: it was pulled out, probably"},
        {Kind::stat, good, "the size is asked for in another way"},
        {Kind::unlink, "0; new, beside a.tmp", "the log says so"},
        {Kind::close, good, "it was the probe", "EIO", 1, Length::once},
        {Kind::close, "-2; new" + beside, "the device may have lost what it has taken", "EIO"},
    };
    for (const Exception &exception : joined(torn, writing(good))) {
        exceptions.push_back(exception);
        if (exception.outcome != good)
            exceptions.back().outcome += beside;
    }
    return exceptions;
}

std::vector<Scenario> info_writes()
{
    const std::string record = bytes_of(record_to_write());
    const std::string old = golden("vexan-television.inf");
    const std::string ardel = golden("ardel-12052.inf");
    std::string ardel_after = ardel.substr(0, 12048);
    ardel_after.replace(788, 4, std::string("\1\0\0\0", 4));

    const std::string probe = ", beside a.tmp";
    const std::string timeshift = ", beside timeshift.tmp";
    const std::vector<Exception> probe_has_a_file{
        {Kind::open, "0; new", "a link in the probe's place gives way", "ELOOP", 2, Length::once},
        {Kind::open, "0; old", "a link in the probe's place gives way", "ELOOP", 0, Length::lasting},
        {Kind::ftruncate, "0; old" + probe, "the device takes no files: it was pulled out, probably", "EIO"},
    };
    const std::vector<Exception> older{
        {Kind::pread, "0; new", goes_on, "EINTR"},
        {Kind::pread, "0; new", goes_on, "half"},
        {Kind::close, "-2; new", "the device may have lost what it has taken", "EIO"},
        {Kind::fstat, "0; old" + probe, "the device takes no files: it was pulled out, probably", nullptr, 2,
         Length::lasting},
    };
    return {
        info_written("current", "a.srf", old, record, {}, current("", "", probe)),
        info_written("current and too long", "a.srf", old + std::string(1000, 'x'), record, {}, current("", "", probe)),
        info_written("current, where the probe has a file", "a.srf", old, record, {{"a.tmp", "x"}},
                     joined(probe_has_a_file, current("", probe, probe))),
        info_written("current, of the live timeshift", "timeshift.tmp", old, record, {{"timeshift.tmp", "x"}},
                     current(timeshift, timeshift, timeshift)),
        info_written("Ardel", "a.srf", ardel, ardel_after, {}, joined(older, joined(torn, writing("0; new")))),
    };
}

// ---- the fingerprint file

constexpr long long first_time = 1766952000;
constexpr long long second_time = 1766952001;
const std::string second_block = "another fingerprint";

void put(std::string &file, std::size_t offset, std::uint32_t number)
{
    number = as_little_endian(number);
    file.replace(offset, sizeof number, bytes_of(number));
}

/// The file of one block with a second one behind it.
std::string two_blocks()
{
    std::string file = golden("one-block.sas");
    put(file, 4, 2);
    put(file, 8 + 8, static_cast<std::uint32_t>(second_time));
    put(file, 2408 + 4, static_cast<std::uint32_t>(second_block.size()));
    put(file, 3608 + 4, static_cast<std::uint32_t>(file.size()));
    return file + second_block;
}

Scenario fingerprint_written(const std::string &variant, const std::string &before, const std::string &after,
                             long long time, const std::string &block, const std::string &bad,
                             const std::vector<Exception> &exceptions)
{
    return {"svc_pvr_write_sas_file",
            variant,
            Start::session,
            [before](Stage &stage) {
                lay_out(stage, {});
                if (!before.empty())
                    write_file(stage.folder / "a.sas", before);
                stage.answer("set_fp_rec_time", "(0,)");
            },
            [=](Stage &stage) {
                const int returned = svc_pvr_write_sas_file(recording(stage).c_str(), time,
                                                            static_cast<int>(block.size()), block.data());
                return std::to_string(returned) + "; " + left(stage, "a.sas", before, after);
            },
            "0; new",
            bad,
            joined({{Kind::request, "-2; new", "the block is in the file, and the service could not be told"}},
                   joined(writing("0; new"), exceptions))};
}

std::vector<Scenario> fingerprints()
{
    const std::string one = golden("one-block.sas");
    const auto read = [](bool has_buffer) {
        return [has_buffer](Stage &stage) {
            int size = -77;
            std::string block(64, '#');
            const int returned =
                svc_pvr_read_sas_file(recording(stage).c_str(), first_time, &size, has_buffer ? block.data() : nullptr);
            const std::string whole = golden("one-block.sas").substr(4808);
            return std::to_string(returned) + "; " + std::to_string(size) + "; " +
                   described(block, whole + std::string(block.size() - whole.size(), '#'));
        };
    };
    const std::string lost = "the device may have lost what it has taken";
    const std::string made = "the file was made, and holds nothing";
    const std::string again = "an empty file may have been made this moment, and is looked at again";
    const std::string behind = "the header is written before the block";
    const std::vector<Exception> first{
        {Kind::close, "-1; new", lost},
        {Kind::flock, "-1; empty", made},
        {Kind::fstat, "-1; empty", made},
        {Kind::writev, "-1; empty", made, "ENOSPC"},
        {Kind::writev, "-1; a beginning of the new", "what could not be written is missing", "half and ENOSPC"},
    };
    const std::vector<Exception> another{
        {Kind::close, "-1; new", lost},
        {Kind::pread, "0; new", goes_on, "EINTR"},
        {Kind::pread, "0; new", goes_on, "half"},
        {Kind::pread, "0; new", again, "EIO", 1, Length::once},
        {Kind::pread, "0; new", again, "end", 1, Length::once},
        {Kind::lseek, "-1; a beginning of the new", behind, nullptr, 2},
        {Kind::writev, "-1; a beginning of the new", behind, nullptr, 2},
        {Kind::writev, "-1; old and new mixed", "as it was up to what could not be written", "half and ENOSPC", 1},
    };
    const auto reading_block = [&](const std::string &good) {
        return joined(
            {{Kind::pread, good, again, "EIO", 1, Length::once}, {Kind::pread, good, again, "end", 1, Length::once}},
            reading(Kind::pread, good));
    };
    const std::string size_first = "the size is told as soon as the block was found";
    const auto prepare = [one](Stage &stage) { lay_out(stage, {{"a.sas", one}}); };
    return {
        fingerprint_written("the first block", "", one, first_time, one.substr(4808), "-1; no file", first),
        fingerprint_written("another block", one, two_blocks(), second_time, second_block, "-1; old", another),
        {"svc_pvr_read_sas_file", "", Start::session, prepare, read(true), "0; 38; whole", "-1; -77; untouched",
         joined(reading_block("0; 38; whole"), {{Kind::pread, "-1; 38; part", size_first, "half and EIO", 2},
                                                {Kind::pread, "-1; 38; untouched", size_first, nullptr, 2}})},
        {"svc_pvr_read_sas_file", "the size alone", Start::session, prepare, read(false), "0; 38; untouched",
         "-1; -77; untouched", reading_block("0; 38; untouched")},
        {"svc_pvr_read_sas_file", "without a file", Start::session, [](Stage &stage) { lay_out(stage, {}); },
         read(true), "-1; -77; untouched", "-1; -77; untouched"},
    };
}

Scenario colour_format()
{
    return {"svc_pvr_get_yuv_info",
            "",
            Start::session,
            [](Stage &stage) {
                lay_out(stage, {{"a.cft", golden("picture.cft")}});
            },
            [](Stage &stage) {
                yuv_info info = untouched<yuv_info>();
                const int returned = svc_pvr_get_yuv_info(recording(stage).c_str(), &info);
                return std::to_string(returned) + "; " + described(bytes_of(info), golden("picture.cft"));
            },
            "0; whole",
            "-2; untouched",
            joined(reading(Kind::pread, "0; whole"),
                   {{Kind::pread, "-2; part", "the record may be partly filled", "half and EIO"}})};
}

} // namespace

std::vector<Scenario> side_file_scenarios()
{
    std::vector<Scenario> all{audio_only(), colour_format()};
    for (auto &family : {info_reads(), info_writes(), fingerprints()})
        std::copy(family.begin(), family.end(), std::back_inserter(all));
    return all;
}

} // namespace faults
