#include "files/paths.h"

#include "client/log.h"
#include "events/names.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace pvr {
namespace {

constexpr const char *accepted_extensions[] = {".srf", ".inf", ".tmp"};
constexpr std::size_t extension_length = 4;

/// Closes what it opened.
class Opened {
public:
    /// Never waits, not even for the other end of a pipe.
    explicit Opened(const char *path) noexcept : descriptor_(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~Opened()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    Opened(const Opened &) = delete;
    Opened &operator=(const Opened &) = delete;

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    long end() const noexcept { return as_long(lseek(descriptor_, 0, SEEK_END)); }

private:
    int descriptor_;
};

const char *errno_name(int error) noexcept { return _get_pvr_macro_name(ps_os_error_e_str, error); }

} // namespace

int _is_valid_pvr_srf_inf_file(const char *path) noexcept
{
    if (path == nullptr) {
        PLAIN_FAILURE("file_path is null, pls check\n");
        return 0;
    }
    const std::string_view text(path);
    if (text.size() < extension_length) {
        PLAIN_FAILURE("invalid pvr file[%s], wrong extension length[%zu]\n", path, text.size());
        return 0;
    }
    for (const char *extension : accepted_extensions)
        if (text.ends_with(extension))
            return 1;
    PLAIN_FAILURE("invalid pvr file[%s], file extension is not %s or %s or %s\n", path, accepted_extensions[0],
                  accepted_extensions[1], accepted_extensions[2]);
    return 0;
}

SidePath SidePath::with_extension(const char *path, const char (&extension)[4]) noexcept
{
    constexpr std::size_t replaced = sizeof extension - 1;
    const std::size_t length = strnlen(path, capacity - 1);
    if (length < replaced)
        return {};
    return with_suffix({path, length - replaced}, extension);
}

SidePath SidePath::with_suffix(std::string_view path, const char *suffix) noexcept
{
    SidePath side;
    const std::size_t length = path.copy(side.text_, capacity - 1);
    std::memcpy(side.text_ + length, suffix, strnlen(suffix, capacity - 1 - length));
    return side;
}

long _get_file_size(const char *path) noexcept
{
    struct stat status = {};
    errno = 0;
    const int stat_result = stat(path, &status);
    if (stat_result == 0 && status.st_size > 0)
        return as_long(status.st_size);
    int error = errno;
    PLAIN_FAILURE("stat failed iStatRet[%d], errno [%d][%s], path_temp[%s], st_size[%lld], try to use fseek() to get "
                  "file size\n",
                  stat_result, error, errno_name(error), path, static_cast<long long>(status.st_size));

    const Opened file(path);
    error = errno;
    if (!file) {
        PLAIN_FAILURE("open file[%s] failed, errno[%d][%s]\n", path, error, errno_name(error));
        return -1;
    }
    const long size = file.end();
    if (size == 0)
        PLAIN_FAILURE("it seems that open file[%s] failed, errno[%d][%s]\n", path, error, errno_name(error));
    return size;
}

} // namespace pvr
