#include "files/info_reader.h"

#include "client/byte_order.h"
#include "client/call.h"
#include "client/session.h"
#include "client/support.h"
#include "files/locked_file.h"
#include "files/older_generations.h"
#include "files/paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string_view>

using namespace pvr;

namespace {

constexpr std::uint16_t cut_off = 5; ///< incomplete_reason of a recording that ended without being finished

/// A file that is open, or why it is not, and its size.
struct Measured {
    LockedFile file;
    int error;
    long size; ///< as _get_file_size() tells it
};

Measured measured(const char *path) noexcept
{
    Measured result{LockedFile::to_read(path), errno, 0};
    if (result.file)
        result.size = result.file.size_when_opened();
    if (result.size <= 0)
        result.size = _get_file_size(path); // tells in the log what is the matter
    return result;
}

/// The record, and where an older file goes on behind it.
struct Image {
    pvr_file_info_s &info;
    /// One byte more than any older file has.
    unsigned char rest[largest_older_file + 1 - sizeof(pvr_file_info_s)] = {};
    std::size_t size = 0; ///< what there was of both
};

/// Reads all there is in one go, straight into the record where that is what the file holds, and clears what of the
/// record is not read. A file that somebody else keeps locked is read if it is an older one.
void read_image(Measured &inf, bool is_locked, Image &image) noexcept
{
    const bool is_readable = inf.file && (is_locked || older_generation(inf.size) != nullptr);
    if (is_readable)
        image.size = inf.file.read(&image.info, sizeof image.info, image.rest, sizeof image.rest);
    const std::size_t filled = std::min(image.size, sizeof image.info);
    std::memset(reinterpret_cast<unsigned char *>(&image.info) + filled, 0, sizeof image.info - filled);

    const auto expected = std::min(static_cast<std::size_t>(inf.size), sizeof image.info + sizeof image.rest);
    if (is_readable && is_locked && image.size != expected)
        inf.size = inf.file.size(); // it has changed before it was locked; nobody changes it any more
}

bool convert_older(const Measured &inf, const char *path, const OlderGeneration &generation, Image &image) noexcept
{
    PLAIN_INFO("this is %s inf file!\n", generation.name);
    if (!inf.file) {
        PLAIN_FAILURE("can't open the file[%s]\n", path);
        return false;
    }
    // Whatever could not be read is zero, and is converted all the same.
    unsigned char whole[largest_older_image];
    std::memcpy(whole, &image.info, sizeof image.info);
    std::memcpy(whole + sizeof image.info, image.rest, sizeof whole - sizeof image.info);
    PLAIN_INFO("fread file return [result:%d], file size [%ld]\n", image.size >= generation.size ? 1 : 0, inf.size);
    image.info = {};
    generation.convert(&image.info, whole);
    return true;
}

bool is_current(const Measured &inf, bool is_locked, const char *path, const Image &image) noexcept
{
    PLAIN_INFO("this is Vexan inf file!\n");
    if (!inf.file) {
        PLAIN_FAILURE("can't open the file[%s], errno [%d]\n", path, inf.error);
        return false;
    }
    if (!is_locked) {
        PLAIN_FAILURE("flock fail\n");
        return false;
    }
    const bool is_whole = image.size >= sizeof image.info;
    PLAIN_INFO("fread file return [result:%d], file size [%zu]\n", is_whole ? 1 : 0, sizeof image.info);
    if (!is_whole)
        PLAIN_FAILURE("error file or old info file\n");
    return is_whole;
}

/// A recording that is not finished although nobody records it has been cut off. Tells so in the record alone.
void repair(pvr_file_info_s &info, const char *recording) noexcept
{
    // Without an answer it counts as being recorded: one that is must not be taken for complete.
    int is_recording = 1;
    svc_pvr_is_recording_file(recording, &is_recording);
    if (is_recording != 0)
        return;
    PLAIN_FAILURE("the recorded file has some exception!!!\n");
    info.record_complete = little_endian(std::uint16_t{1});
    info.incomplete_reason = little_endian(cut_off);
}

void log_record(Here here, const pvr_file_info_s &info) noexcept
{
    // No text need end within its field.
    PLAIN_INFO_AT(here,
                  "inf file info 01: channel_num[%.256s] channel_name[%.256s] channel_type[%u], major[%u] minor[%u] "
                  "program_num[%u] programe_title[%.256s], duration[%lu] resume_play_pos[%lu] start_time[%lu]\n",
                  info.channel_num, info.channel_name, unsigned{little_endian(info.channel_type)},
                  unsigned{little_endian(info.major)}, unsigned{little_endian(info.minor)},
                  unsigned{little_endian(info.program_num)}, info.programe_title,
                  static_cast<unsigned long>(little_endian(info.duration)),
                  static_cast<unsigned long>(little_endian(info.resume_play_pos)),
                  static_cast<unsigned long>(little_endian(info.start_time)));
    PLAIN_INFO_AT(here,
                  "inf file info 02: video_pid[%d] audio_pid[%d] PCR_pid[%d] video_type[%d] audio_type[%d], "
                  "flag_HD[%u] rating[%u] flag_TTX[%u] repeat_type[%u] record_complete[%u] incomplete_reason[%u]\n",
                  static_cast<int>(little_endian(info.video_pid)), static_cast<int>(little_endian(info.audio_pid)),
                  static_cast<int>(little_endian(info.PCR_pid)), static_cast<int>(little_endian(info.video_type)),
                  static_cast<int>(little_endian(info.audio_type)), little_endian(info.flag_HD) & 0xffffU,
                  unsigned{little_endian(info.rating)}, little_endian(info.flag_TTX) & 0xffffU,
                  unsigned{little_endian(info.repeat_type)}, unsigned{little_endian(info.record_complete)},
                  unsigned{little_endian(info.incomplete_reason)});
    for (std::size_t line = 0; line < 7; ++line) {
        unsigned char bytes[6];
        std::memcpy(bytes, info.programe_title + 6 * line, sizeof bytes);
        PLAIN_INFO_AT(here, "pvr_info->programe_title_buf [%x][%x][%x] [%x][%x][%x]\n", unsigned{bytes[0]},
                      unsigned{bytes[1]}, unsigned{bytes[2]}, unsigned{bytes[3]}, unsigned{bytes[4]},
                      unsigned{bytes[5]});
    }
}

} // namespace

unsigned get_size_of_pvr_file_info() noexcept { return sizeof(pvr_file_info_s); }

int svc_pvr_get_pvr_file_info(const char *file_path, pvr_file_info_s *info) noexcept
{
    const Here here = ENTRY(" [file_path:%s]\n", file_path);
    if (const int refusal = check_support(here); refusal != PS_SUCCESS)
        return refusal;
    if (!_is_valid_pvr_srf_inf_file(file_path))
        return Call::refused(PLAIN_FAILURE("invalid file[%s]\n", file_path));
    if (info == nullptr)
        return Call::refused(PLAIN_FAILURE("there is no record to fill\n"));

    SidePath path = SidePath::with_extension(file_path, "inf");
    const bool is_timeshift = std::string_view(file_path) == "timeshift.tmp";
    const SidePath recording =
        is_timeshift ? SidePath::with_suffix(file_path, "") : SidePath::with_extension(file_path, "srf");
    PLAIN_INFO("file path [%s]\n", file_path);
    PLAIN_INFO("the path of inf file is [%s]\n", path.c_str());

    Measured inf = measured(path.c_str());
    PLAIN_INFO("inf file size is [%ld]. srf_file_path[%s]\n", inf.size, recording.c_str());
    if (inf.size == 0) {
        const SidePath backup = SidePath::with_suffix(path.c_str(), ".bak");
        const long size = _get_file_size(path.c_str()); // deliberately not the backup's
        if (size == 0) {
            *info = {};
            PLAIN_FAILURE("file size[%ld] of bak inf file is still not valid\n", size);
            return Call::refused(PLAIN_FAILURE("failed to get file size from inf file and bak inf file\n"));
        }
        path = backup;
        PLAIN_INFO("file size[%ld] of bak inf file is valid, so try to read data from bak inf file[%s]\n", size,
                   path.c_str());
        inf = {LockedFile::to_read(path.c_str()), errno, size};
        if (inf.file)
            inf.size = inf.file.size_when_opened();
    }

    const OlderGeneration *generation = nullptr;
    {
        const std::lock_guard lock(g_mutex_get_info);
        const bool is_locked = inf.file && inf.file.lock();
        Image image{*info};
        read_image(inf, is_locked, image);
        generation = older_generation(inf.size);
        const bool is_read = generation != nullptr ? convert_older(inf, path.c_str(), *generation, image)
                                                   : is_current(inf, is_locked, path.c_str(), image);
        inf.file.close();
        if (!is_read)
            return PS_CALL_METHOD_FAILED;
    }
    if (generation == nullptr) {
        if (info->record_complete == 0)
            repair(*info, recording.c_str());
        log_record(here, *info);
    }
    return PS_SUCCESS;
}

int pvr::_svc_pvr_get_pvr_file_info_vexan(const char *file_path, pvr_file_info_s *info) noexcept
{
    PLAIN_ENTRY("file_path:%s\n", file_path);
    if (!_is_valid_pvr_srf_inf_file(file_path))
        return Call::refused(PLAIN_FAILURE("invalid file[%s]\n", file_path));
    if (info == nullptr)
        return Call::refused(PLAIN_FAILURE("there is no record to fill\n"));
    *info = {};
    const SidePath path = SidePath::with_extension(file_path, "inf");
    PLAIN_INFO("file path [%s]\n", file_path);
    PLAIN_INFO("the path of inf file is [%s]\n", path.c_str());

    const LockedFile file = LockedFile::to_read(path.c_str());
    const int error = errno;
    if (!file)
        return Call::refused(PLAIN_FAILURE("can't open the file[%s], errno [%d]\n", path.c_str(), error));
    const bool is_whole = file.read(info, sizeof *info, 0) == sizeof *info;
    PLAIN_INFO("fread file return [result:%d], file size [%zu]\n", is_whole ? 1 : 0, sizeof *info);
    if (!is_whole)
        return Call::refused(PLAIN_FAILURE("error file or old info file\n"));
    PLAIN_INFO("duration [%ld], rating [%d], start time [%ld], program title [%.256s], major [%d], minor [%d] "
               "content_version[%d]\n",
               static_cast<long>(little_endian(info->duration)), int{little_endian(info->rating)},
               static_cast<long>(little_endian(info->start_time)), info->programe_title,
               int{little_endian(info->major)}, int{little_endian(info->minor)}, int{info->content_version});
    return PS_SUCCESS;
}
