// pvrctl doctor: the storage device that recordings go to, as the service tells it and as this user finds it.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pvr_service_api.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "doctor.h"
#include "listed.h"

namespace pvrctl {
namespace {

std::string device_name(const Examination &examined)
{
    return "device " + std::to_string(examined.device) + ", " + examined.device_record.device_name;
}

/// 0, or why no file can be made in a folder. What it makes has no name, or none for long.
int write_error(const std::string &folder)
{
    int file = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0 && (errno == EOPNOTSUPP || errno == EISDIR)) { // a file system without nameless files
        std::string name = folder + "/.pvrctl-doctor-XXXXXX";
        file = mkostemp(name.data(), O_CLOEXEC);
        if (file >= 0)
            unlink(name.c_str());
    }
    if (file < 0)
        return errno;
    close(file);
    return 0;
}

} // namespace

Finding examine_device(Examination &examined)
{
    const Service &service = examined.service;
    examined.service.open();
    const std::vector<int> devices = listed(service, svc_pvr_get_device_list);
    const std::vector<int> recordable = listed(service, svc_pvr_get_rec_device_list);
    service.check(svc_pvr_get_default_rec_device(&examined.device));
    if (devices.empty())
        return wrong(ExitCode::not_found, "the service knows no storage device", "Plug one in");
    if (std::ranges::find(devices, examined.device) == devices.end())
        return wrong(ExitCode::not_found,
                     "recordings go to none of the " + std::to_string(devices.size()) + " storage devices",
                     "'pvrctl device list' tells which can be recorded to, 'pvrctl device default' chooses one; one "
                     "that cannot may be read-only or too slow");
    service.check(svc_pvr_get_device_info(examined.device, &examined.device_record));
    if (std::ranges::find(recordable, examined.device) == recordable.end())
        return wrong(ExitCode::refused, device_name(examined) + ", cannot be recorded to, the service says",
                     "It may be read-only, too slow, or not formatted: 'pvrctl device info " +
                         std::to_string(examined.device) + "' tells more, 'pvrctl device default' chooses another");
    return sound(device_name(examined) + ", at " + examined.device_record.mnt_path);
}

Finding examine_folder(Examination &examined)
{
    const std::string folder = examined.device_record.mnt_path;
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return wrong(ExitCode::not_found, "the device's folder '" + folder + "' is not there",
                     "Plug the device in again, or mount it there");
    const int error = write_error(folder);
    if (error == 0)
        return sound("files can be made in " + folder);
    const std::string text = "no file can be made in " + folder + ": " + std::strerror(error);
    if (error == EACCES || error == EPERM)
        return warning(text, "The service may record there all the same. A program of this user cannot change the "
                             "files beside recordings until it may write there");
    if (error == ENOSPC || error == EDQUOT)
        return wrong(ExitCode::refused, text, "Delete recordings, 'pvrctl file delete', or choose another device");
    return wrong(ExitCode::failed, text, "Mount the device so that it can be written to, or choose another");
}

Finding examine_room(Examination &examined)
{
    int is_available = 0;
    examined.service.check(svc_pvr_is_available(&is_available));
    const std::int64_t free = examined.device_record.avail_size;
    const std::int64_t total = examined.device_record.total_size;
    const std::string text = std::to_string(free) + " MiB are free of " + std::to_string(total) + " MiB";
    if (is_available == 1)
        return sound(text);
    return wrong(ExitCode::refused, "the service says that there is no room to record: " + text,
                 "Delete recordings, 'pvrctl file delete', or choose another device, 'pvrctl device default'");
}

} // namespace pvrctl
