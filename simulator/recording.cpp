#include "recording.h"

#include "client/owned.h"
#include "descriptor.h"
#include "recording_name.h"
#include "transport_stream.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <string_view>
#include <sys/stat.h>

namespace simulator {
namespace {

constexpr ps_os_error_e last_named_error = PS_MATH_RESULT_NOT_REPRESENTABLE;

[[noreturn]] void give_up(int error)
{
    const bool is_named = error >= PS_OPERATION_NOT_PERMITTED && error <= last_named_error;
    throw Unplayable(is_named ? static_cast<ps_os_error_e>(error) : PS_INVALID_ARGUMENT, g_strerror(error));
}

} // namespace

std::optional<std::string> local_path(const std::string &uri)
{
    if (uri.starts_with('/'))
        return uri;
    pvr::OwnedText host;
    const pvr::OwnedText path(g_filename_from_uri(uri.c_str(), host.slot(), nullptr));
    if (!path || (host && std::string_view(host.get()) != "localhost"))
        return std::nullopt;
    return path.get();
}

Recording open_recording(const std::string &uri)
{
    const std::optional<std::string> path = local_path(uri);
    if (!path)
        throw Unplayable(PS_INVALID_ARGUMENT, "neither an absolute path nor a file:// URI of this machine");
    if (!path->ends_with(recording_extension))
        throw Unplayable(PS_INVALID_ARGUMENT, "no recording: its name does not end in .srf");

    // Never waits: what is no regular file is refused before anything is read from it.
    const Descriptor file(open(path->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file.is_open() || fstat(file.number(), &status) != 0)
        give_up(errno);
    if (S_ISDIR(status.st_mode))
        give_up(EISDIR);
    if (!S_ISREG(status.st_mode))
        throw Unplayable(PS_INVALID_ARGUMENT, "no regular file");

    try {
        const Microseconds length = transport_stream_length(file.number(), status.st_size);
        const Microseconds ended =
            std::chrono::seconds(status.st_mtim.tv_sec) + Microseconds(status.st_mtim.tv_nsec / 1000);
        return {*path, length, ended};
    } catch (const NoTransportStream &reason) {
        throw Unplayable(PS_EXEC_FORMAT_ERROR, reason.what());
    } catch (const std::system_error &error) {
        give_up(error.code().value());
    }
}

} // namespace simulator
