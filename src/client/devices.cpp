// Storage devices.
#include "client/byte_order.h"
#include "client/call.h"

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
    device_info record{little_endian(device_type), little_endian(file_format), {}, {}, {},
                       little_endian(total_size),  little_endian(avail_size)};
    copy_field(record.device_name, device_name);
    copy_field(record.product_name, product_name);
    copy_field(record.mnt_path, mnt_path);
    *info = record;
    return answer.transport_rule();
}

int svc_pvr_get_device_list(int *list, int length, int *num_of_list) noexcept
{
    Call call(ENTRY("[length:%d]\n", length));
    OwnedVariant devices;
    int count = 0;
    auto answer = call.remote(wire::get_device_list, length, &devices, &count, service_result);
    if (answer) {
        write_out(num_of_list, count);
        store_list(Here(), devices, count, list, length);
        INFO("[length:%d][num_of_list:%d]\n", length, count);
    }
    return answer.transport_rule();
}

int svc_pvr_get_rec_device_list(int *list, int length, int *num_of_list) noexcept
{
    Call call(ENTRY("[length:%d]\n", length));
    OwnedVariant devices;
    int count = 0;
    auto answer = call.remote(wire::get_rec_device_list, length, &devices, &count, service_result);
    if (answer) {
        write_out(num_of_list, count);
        store_list(Here(), devices, count, list, length);
        INFO("[length:%d][num_of_list:%d]\n", length, count);
    }
    return answer.transport_rule();
}

int svc_pvr_get_dev_total(int *dev_total) noexcept
{
    Call call(ENTRY("\n"));
    int total = 0;
    auto answer = call.remote(wire::get_dev_total, &total, service_result);
    if (answer) {
        write_out(dev_total, total);
        INFO(", dev_total[%d]\n", total);
    }
    return answer.transport_rule();
}

int svc_pvr_get_rec_dev_total(int *rec_dev_total) noexcept
{
    Call call(ENTRY("\n"));
    int total = 0;
    auto answer = call.remote(wire::get_record_dev_total, &total, service_result);
    if (answer) {
        write_out(rec_dev_total, total);
        INFO(", rec_dev_total[%d]\n", total);
    }
    return answer.transport_rule();
}

int svc_pvr_get_rec_dev_name(int device_key) noexcept
{
    Call call(ENTRY("[device_key:%d]\n", device_key));
    OwnedText name;
    auto answer = call.remote(wire::get_rec_dev_name, device_key, &name, service_result);
    if (answer)
        INFO(" get name: %s\n", name.get()); // deliberately all that becomes of the name
    return answer.transport_rule();
}

int svc_pvr_get_default_rec_dev_name(char *dev_name) noexcept
{
    Call call(ENTRY("\n"));
    OwnedText name;
    auto answer = call.remote(wire::get_rec_device_name, &name, service_result);
    if (answer) {
        copy_text(dev_name, name);
        if (*name.get() == '\0')
            INFO(" dev_name is null\n");
    }
    return answer.transport_rule();
}

int svc_pvr_get_rec_product_name(const char *mnt_path, char *product_name) noexcept
{
    Call call(ENTRY("[mnt_path:%s]\n", mnt_path));
    if (call && mnt_path == nullptr)
        return call.refused(FAILURE(" The mnt_path is null\n"));

    OwnedText name;
    auto answer = call.remote(wire::get_product_name, mnt_path, &name);
    if (answer)
        copy_text(product_name, name);
    return answer.transport_rule();
}

// ---- which device recordings go to

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

int svc_pvr_set_default_rec_device(int dev_handle) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    auto answer = call.remote(wire::set_default_rec_device, dev_handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_get_next_def_rec_dev(int *dev_handle) noexcept
{
    Call call(ENTRY("\n"));
    int handle = 0;
    auto answer = call.remote(wire::get_next_def_rec_dev, &handle, service_result);
    if (answer)
        write_out(dev_handle, handle);
    return answer.transport_rule();
}

int svc_pvr_get_potential_rec_dev(int *dev_handle) noexcept
{
    Call call(ENTRY("\n"));
    int handle = 0;
    auto answer = call.remote(wire::get_potential_rec_dev, &handle, service_result);
    if (answer)
        write_out(dev_handle, handle);
    return answer.transport_rule();
}

int svc_pvr_get_rec_dev_capacity(int dev_handle, rec_dev_capacity *capacity) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle)); // deliberately only logged: the service tells of its own device
    std::int64_t available_size = 0;
    std::int64_t total_size = 0;
    auto answer = call.remote(wire::get_rec_dev_capacity, &available_size, &total_size);
    if (answer)
        write_out(capacity, rec_dev_capacity{little_endian(available_size), little_endian(total_size)});
    return answer.transport_rule();
}

int svc_pvr_is_exist_rec_device(int *exists) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_exist_rec_device, &value);
    if (answer)
        write_out(exists, value);
    return answer.transport_rule();
}

int svc_pvr_is_available(int *available) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_available, &value);
    if (answer)
        write_out(available, value);
    return answer.transport_rule();
}

int svc_pvr_is_available_device() noexcept
{
    ENTRY("\n"); // deliberately no call and no support check
    return PS_SUCCESS;
}

// ---- check, format, test

int svc_pvr_check_device(int dev_handle) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    auto answer = call.remote(wire::check_device, dev_handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_format(int dev_handle, int dev_type) noexcept
{
    Call call(ENTRY("[dev_handle:%d][dev_type:%d]\n", dev_handle, dev_type));
    auto answer = call.remote(wire::format, dev_handle, dev_type, service_result);
    if (answer)
        INFO(" format done g_result:%d\n", answer.result());
    return answer.zero_rule();
}

int svc_pvr_start_performance_test(int dev_handle) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    auto answer = call.remote(wire::start_performance_test, dev_handle, service_result);
    return answer.zero_rule();
}

int svc_pvr_get_performance_test_result(int dev_handle, int *result) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    int outcome = 0;
    auto answer = call.remote(wire::get_performance_test_result, dev_handle, &outcome);
    if (answer)
        write_out(result, outcome);
    return answer.transport_rule();
}

int svc_pvr_is_need_performance_test(int dev_handle) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    constexpr int first_device = 0; // deliberately asked about, whatever the caller asks
    auto answer = call.remote(wire::is_need_performance_test, first_device, service_result);
    return answer.one_is_success_rule();
}
