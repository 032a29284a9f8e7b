#include "files/write_probe.h"

#include "client/log.h"
#include "files/locked_file.h"
#include "files/paths.h"

#include <cerrno>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace pvr {
namespace {

constexpr std::string_view timeshift = "timeshift.tmp";

std::string_view base_name(std::string_view path) noexcept
{
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? path : path.substr(slash + 1);
}

/// By name, or as what both names lead to.
bool is_same_file(const char *one, const char *other) noexcept
{
    struct stat of_one {
    }, of_other{};
    return std::string_view(one) == other || (stat(one, &of_one) == 0 && stat(other, &of_other) == 0 &&
                                              of_one.st_dev == of_other.st_dev && of_one.st_ino == of_other.st_ino);
}

/// Leaves an empty file of the probe's name. A symbolic link gives way to it: what the link leads to is not ours.
bool make_empty(const char *name) noexcept
{
    LockedFile file = LockedFile::to_probe(name);
    if (!file && errno == ELOOP && unlink(name) == 0)
        file = LockedFile::to_create(name);
    return file && (file.size_when_opened() == 0 || file.resize(0));
}

} // namespace

int _is_usb_disconnect(const char *path, const char *named) noexcept
{
    const SidePath probe = SidePath::with_extension(path, "tmp");
    const char *const name = probe.c_str();
    const bool is_spared = base_name(name) == timeshift || (named != nullptr && is_same_file(name, named));
    if (is_spared ? !LockedFile::to_update_or_create(name) : !make_empty(name)) {
        PLAIN_FAILURE("We can't create file in recording device path\n");
        return 1;
    }
    PLAIN_INFO("We can create file\n");
    if (is_spared)
        return 0;
    if (unlink(name) == 0)
        PLAIN_INFO("Remove temp file success!\n");
    else
        PLAIN_FAILURE("Remove temp file failed!\n");
    return 0;
}

} // namespace pvr
