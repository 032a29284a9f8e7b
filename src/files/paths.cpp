#include "files/paths.h"

#include "client/log.h"

#include <string_view>

namespace pvr {
namespace {

constexpr const char *accepted_extensions[] = {".srf", ".inf", ".tmp"};
constexpr std::size_t extension_length = 4;

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

} // namespace pvr
