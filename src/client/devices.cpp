// Storage devices and the files on them.
#include "client/call.h"
#include "files/paths.h"

using namespace pvr;

unsigned get_size_of_device_info() noexcept { return sizeof(device_info); }

int svc_pvr_get_device_info(int dev_handle, device_info *info) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    OwnedVariant device;
    auto answer = call.remote(wire::get_device_info, dev_handle, &device, service_result);
    if (!answer)
        return answer.transport_rule();
    if (info == nullptr || !device)
        return call.refused(PLAIN_FAILURE("[PS_CALL_METHOD_FAILED][info == NULL]\n"));

    int device_type = 0;
    int file_format = 0;
    const char *device_name = "";
    const char *product_name = "";
    const char *mnt_path = "";
    gint64 total_size = 0;
    gint64 avail_size = 0;
    g_variant_get(device.get(), "(ii&s&s&sxx)", &device_type, &file_format, &device_name, &product_name, &mnt_path,
                  &total_size, &avail_size);
    PLAIN_INFO("device_type[%d] file_format[%d] device_name[%s] product_name[%s] mnt_path[%s] total_size[%lld] "
               "avail_size[%lld]\n",
               device_type, file_format, device_name, product_name, mnt_path, static_cast<long long>(total_size),
               static_cast<long long>(avail_size));
    device_info record{device_type, file_format, {}, {}, {}, total_size, avail_size};
    copy_field(record.device_name, device_name);
    copy_field(record.product_name, product_name);
    copy_field(record.mnt_path, mnt_path);
    *info = record;
    return answer.transport_rule();
}

int svc_pvr_get_default_rec_device(int *dev_handle) noexcept
{
    // deliberately "My maste": the entry line has read so ever since
    Call call(PLAIN_ENTRY("My maste:[%d][%s]\n", identity().g_thread_id, identity().g_thread_name));
    int handle = 0;
    auto answer = call.remote(wire::get_default_rec_device, &handle, service_result);
    if (answer) {
        write_out(dev_handle, handle);
        INFO(" final [dev_handle:%d]\n", handle);
    }
    return answer.transport_rule();
}

int svc_pvr_remove_inf(const char *file_path, int mode) noexcept
{
    Call call(ENTRY("[file_path:%s][mode:%d]\n", file_path, mode));
    if (call && !_is_valid_pvr_srf_inf_file(file_path))
        return call.refused(FAILURE(" file_path[%s] is invalid pvr inf file\n", file_path));

    auto answer = call.remote(wire::remove_inf, file_path, mode, service_result);
    if (answer)
        INFO(" The inf file removed success!\n");
    return answer.transport_rule();
}
