// The colour-format file beside a recording: how its thumbnail is coded, and how large it is.
#include "client/byte_order.h"
#include "client/call.h"
#include "files/locked_file.h"
#include "files/paths.h"

#include <cerrno>
#include <string_view>

using namespace pvr;

int svc_pvr_get_yuv_info(const char *uri, yuv_info *yuv_info) noexcept
{
    ENTRY(" uri[%p]\n", static_cast<const void *>(uri));
    if (uri == nullptr || yuv_info == nullptr)
        return Call::refused(FAILURE(", the parameter uri or yuv_info is null, pls the caller module check it\n"));
    constexpr std::size_t extension_length = 4, shortest = extension_length + 1;
    const std::string_view text(uri);
    if (text.size() < shortest)
        return Call::refused(FAILURE(", uri[%s] length is too short\n", uri));

    const SidePath path = SidePath::with_suffix(text.substr(0, text.size() - extension_length), ".cft");
    const LockedFile file = LockedFile::to_read(path.c_str()); // deliberately without a lock
    const int error = errno;
    if (!file)
        return Call::refused(FAILURE(", open cft file[%s] failed with error:%d\n", path.c_str(), error));
    if (file.read(yuv_info, sizeof *yuv_info, 0) != sizeof *yuv_info)
        return Call::refused(FAILURE(", fread cft file[%s] failed\n", path.c_str()));
    INFO(" uri[%s] result[%d] color_format[%d] height[%d] width[%d]\n", uri, PS_SUCCESS,
         int{little_endian(yuv_info->color_format)}, int{little_endian(yuv_info->height)},
         int{little_endian(yuv_info->width)});
    return PS_SUCCESS;
}
