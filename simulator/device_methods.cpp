#include "device_methods.h"

#include "method_row.h"

#include <algorithm>
#include <utility>

namespace simulator {
namespace {

constexpr gint32 usb = 1;
constexpr gint32 unknown_file_system = 0;

/// A handle and its result: refused when there is no device.
std::tuple<int, int> answer(int handle) { return {handle, handle != Devices::none ? done : refused_result}; }

int count(const std::vector<int> &handles) { return static_cast<int>(handles.size()); }

/// As many of the handles as there is room for, and how many there are.
std::tuple<GVariant *, int, int> listed(const std::vector<int> &handles, int room)
{
    const auto most = static_cast<std::size_t>(std::max(room, 0));
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("ai"));
    for (std::size_t i = 0; i < std::min(handles.size(), most); ++i)
        g_variant_builder_add(&list, "i", handles[i]);
    return {g_variant_builder_end(&list), count(handles), done};
}

std::tuple<std::string, int> name_of(const Devices::Device *device)
{
    if (device == nullptr)
        return {"", refused_result};
    return {device->description.name, done};
}

} // namespace

DeviceMethods::DeviceMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    connect(object, this, METHOD(format), &DeviceMethods::format);
    connect(object, this, METHOD(is_need_performance_test), &DeviceMethods::is_need_performance_test);
    connect(object, this, METHOD(start_performance_test), &DeviceMethods::start_performance_test);
    connect(object, this, METHOD(get_performance_test_result), &DeviceMethods::get_performance_test_result);
    connect(object, this, METHOD(check_device), &DeviceMethods::check_device);
    connect(object, this, METHOD(get_default_rec_device), &DeviceMethods::get_default_rec_device);
    connect(object, this, METHOD(get_potential_rec_dev), &DeviceMethods::get_potential_rec_dev);
    connect(object, this, METHOD(get_next_def_rec_dev), &DeviceMethods::get_next_def_rec_dev);
    connect(object, this, METHOD(get_device_list), &DeviceMethods::get_device_list);
    connect(object, this, METHOD(get_rec_device_list), &DeviceMethods::get_rec_device_list);
    connect(object, this, METHOD(get_device_info), &DeviceMethods::get_device_info);
    connect(object, this, METHOD(get_dev_total), &DeviceMethods::get_dev_total);
    connect(object, this, METHOD(get_record_dev_total), &DeviceMethods::get_record_dev_total);
    connect(object, this, METHOD(get_rec_device_name), &DeviceMethods::get_rec_device_name);
    connect(object, this, METHOD(get_rec_dev_name), &DeviceMethods::get_rec_dev_name);
    connect(object, this, METHOD(set_default_rec_device), &DeviceMethods::set_default_rec_device);
    connect(object, this, METHOD(get_rec_dev_capacity), &DeviceMethods::get_rec_dev_capacity);
    connect(object, this, METHOD(is_exist_rec_device), &DeviceMethods::is_exist_rec_device);
    connect(object, this, METHOD(is_available), &DeviceMethods::is_available);
    connect(object, this, METHOD(get_product_name), &DeviceMethods::get_product_name);
    connect(object, this, METHOD(mkdir), &DeviceMethods::mkdir);
}

Outcome DeviceMethods::format(int handle, int)
{
    return set_.recorder.is_writing_to(handle) ? refused("it is being recorded to") : set_.devices.format(handle);
}

std::tuple<int> DeviceMethods::is_need_performance_test(int handle)
{
    const Devices &devices = set_.devices;
    const int asked = handle == Devices::none ? devices.first() : handle; // the library always asks about device 0
    if (devices.find(asked) == nullptr)
        return refused_result;
    return devices.measured(asked) == refused_result ? 1 : 0;
}

Outcome DeviceMethods::start_performance_test(int handle) { return set_.devices.measure(handle); }

std::tuple<int> DeviceMethods::get_performance_test_result(int handle) { return set_.devices.measured(handle); }

Outcome DeviceMethods::check_device(int handle) { return set_.devices.check(handle); }

std::tuple<int, int> DeviceMethods::get_default_rec_device() { return answer(set_.devices.default_device()); }

std::tuple<int, int> DeviceMethods::get_potential_rec_dev() { return answer(set_.devices.roomiest()); }

std::tuple<int, int> DeviceMethods::get_next_def_rec_dev() { return answer(set_.devices.next_default()); }

std::tuple<GVariant *, int, int> DeviceMethods::get_device_list(int length)
{
    return listed(set_.devices.all(), length);
}

std::tuple<GVariant *, int, int> DeviceMethods::get_rec_device_list(int length)
{
    return listed(set_.devices.recordable(), length);
}

std::tuple<GVariant *, int> DeviceMethods::get_device_info(int handle)
{
    const Devices::Device *device = set_.devices.find(handle);
    if (device == nullptr)
        return {g_variant_new("(iisssxx)", 0, 0, "", "", "", gint64{0}, gint64{0}), refused_result};
    const Space space = set_.devices.space(handle);
    return {g_variant_new("(iisssxx)", usb, unknown_file_system, device->description.name.c_str(),
                          device->product().c_str(), device->mount_path().c_str(), gint64{space.total},
                          gint64{space.available}),
            done};
}

std::tuple<int, int> DeviceMethods::get_dev_total() { return {count(set_.devices.all()), done}; }

std::tuple<int, int> DeviceMethods::get_record_dev_total() { return {count(set_.devices.recordable()), done}; }

std::tuple<std::string, int> DeviceMethods::get_rec_device_name()
{
    const Devices &devices = set_.devices;
    return name_of(devices.find(devices.default_device()));
}

std::tuple<std::string, int> DeviceMethods::get_rec_dev_name(int handle) { return name_of(set_.devices.find(handle)); }

Outcome DeviceMethods::set_default_rec_device(int handle) { return set_.devices.set_default(handle); }

std::tuple<gint64, gint64> DeviceMethods::get_rec_dev_capacity()
{
    const Devices &devices = set_.devices;
    const Space space = devices.space(devices.default_device());
    return {space.available, space.total};
}

std::tuple<int> DeviceMethods::is_exist_rec_device() { return set_.devices.recordable().empty() ? 0 : 1; }

std::tuple<int> DeviceMethods::is_available() { return set_.devices.is_available() ? 1 : 0; }

std::tuple<std::string> DeviceMethods::get_product_name(const char *mount_path)
{
    const Devices::Device *device = set_.devices.mounted_at(mount_path);
    return device != nullptr ? device->product() : std::string();
}

Outcome DeviceMethods::mkdir(const char *path, int permissions) { return set_.devices.make_folder(path, permissions); }

} // namespace simulator
