// Writing recording-info files. The generation that is on disk stays: a current file is replaced, an older one keeps
// everything but the position at which playback was left.
#include "client/byte_order.h"
#include "client/call.h"
#include "files/locked_file.h"
#include "files/older_generations.h"
#include "files/paths.h"
#include "files/write_probe.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

using namespace pvr;

namespace {

constexpr std::uint16_t layout_version = 20;

/// Writes over what the file holds, from the beginning, and cuts off what it held beyond.
bool replace_content(const LockedFile &file, long old_size, const void *content, std::size_t size) noexcept
{
    const std::size_t arrived = file.write(content, size);
    if (arrived == size && (old_size <= static_cast<long>(size) || file.resize(static_cast<long>(size))))
        return true;
    // What did not arrive whole must never be read as if it had: no generation is this short.
    if (arrived > 0)
        file.resize(static_cast<long>(std::min(arrived, sizeof(pvr_file_info_s) - 1)));
    return false;
}

int refuse_write(const char *path) noexcept
{
    return Call::refused(PLAIN_FAILURE("write inf file failed, the path is [%s]\n", path));
}

int write_older(LockedFile file, bool is_locked, long size, const char *path, const OlderGeneration &generation,
                const pvr_file_info_s &info) noexcept
{
    PLAIN_INFO("write to %s inf file!\n", generation.name);
    const bool is_writable = static_cast<bool>(file);
    if (!is_writable) {
        file = LockedFile::to_read(path);
        if (!file)
            return Call::refused(PLAIN_FAILURE("can't open the file[%s]\n", path));
        file.lock(); // whoever holds it: it is only read
    }
    unsigned char image[largest_older_image];
    const bool is_whole = file.read(image, generation.size, 0) == generation.size;
    PLAIN_INFO("fread file return [result:%d], file size [%ld]\n", is_whole ? 1 : 0, size);
    if (!is_whole)
        return PS_CALL_METHOD_FAILED;

    const std::uint32_t seconds = little_endian(info.resume_play_pos) / 1000;
    const std::uint32_t in_file = little_endian(seconds);
    std::memcpy(image + older_resume_position, &in_file, sizeof in_file);
    PLAIN_INFO("set ulResumePlayTime is %lu\n", static_cast<unsigned long>(seconds));

    if (!is_writable)
        return Call::refused(PLAIN_FAILURE("can't open the file[%s]\n", path));
    if (!is_locked || file.seek_to_begin() != 0 || !replace_content(file, size, image, generation.size) ||
        !file.close())
        return refuse_write(path);
    PLAIN_INFO("write inf file success, the path is [%s]\n", path);
    return PS_SUCCESS;
}

int write_current(LockedFile file, bool is_locked, long size, const char *path, const char *named,
                  pvr_file_info_s &info) noexcept
{
    PLAIN_INFO("write to Vexan info file!\n");
    if (_is_usb_disconnect(path, named) != 0)
        return PS_SUCCESS; // deliberately: a device that was pulled out is no fault of the caller's
    if (!file) {
        file = LockedFile::to_update_or_create(path);
        is_locked = file && file.lock();
        size = file ? file.size() : 0;
    }
    if (!file)
        return Call::refused(PLAIN_FAILURE("failed to open file,fd == NULL,the path is [%s]\n", path));
    PLAIN_INFO("success to open file,the path is [%s]\n", path);
    if (!is_locked || size < 0) // nobody knows of which generation it is, or what has to be cut off
        return refuse_write(path);
    if (const int code = file.seek_to_begin(); code != 0)
        return Call::refused(PLAIN_FAILURE("fseek failed, retn code[%d]\n", code));

    info.version = little_endian(layout_version);
    if (!replace_content(file, size, &info, sizeof info) || !file.close())
        return refuse_write(path);
    PLAIN_INFO("write inf file success, the path is [%s]\n", path);
    return PS_SUCCESS;
}

} // namespace

int svc_pvr_set_pvr_file_info_ex(const char *file_path, pvr_file_info_s *info) noexcept
{
    const Call call(ENTRY(" [file_path:%s]\n", file_path));
    if (const int code = call.session_rule(); code != PS_SUCCESS)
        return code;
    if (file_path == nullptr)
        return call.refused(PLAIN_FAILURE("the file path of srf is null\n"));
    if (!_is_valid_pvr_srf_inf_file(file_path))
        return call.refused(PLAIN_FAILURE("invalid file[%s]\n", file_path));
    if (info == nullptr)
        return call.refused(PLAIN_FAILURE("there is no record to write\n"));

    const SidePath path = SidePath::with_extension(file_path, "inf");
    PLAIN_INFO("the path of inf file is [%s]\n", path.c_str());
    const long size = _get_file_size(path.c_str());
    PLAIN_INFO("inf file size is [%lu]\n", static_cast<unsigned long>(size));
    if (size <= 0)
        return call.refused(PLAIN_FAILURE("failed to get file size for inf file[%s]\n", path.c_str()));

    PLAIN_INFO("after build buf, buf_len is [%d], buf is [%s], sizeof(pvr_file_info_s) is [%zu]\n", 1, "",
               sizeof *info);
    // Deliberately whatever the service says: it is only told.
    static_cast<void>(call.remote(wire::set_pvr_file_info, path.c_str(), "", 1, service_result));
    PLAIN_INFO("write_inf_file, path [%s]\n", path.c_str());

    // One lock from the first read to the last write, so that nothing that others write meanwhile is lost.
    LockedFile file = LockedFile::to_update(path.c_str());
    const bool is_locked = file && file.lock();
    const long locked_size = file ? file.size() : size;
    const OlderGeneration *const generation = older_generation(locked_size);
    return generation != nullptr
               ? write_older(std::move(file), is_locked, locked_size, path.c_str(), *generation, *info)
               : write_current(std::move(file), is_locked, locked_size, path.c_str(), file_path, *info);
}
