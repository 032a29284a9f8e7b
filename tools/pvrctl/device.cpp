// pvrctl device: the storage devices, which of them recordings go to, and what is done to them.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "listed.h"
#include "states.h"
#include "wait.h"

namespace pvrctl {
namespace {

struct Device {
    int handle;
    device_info info;
    bool is_recordable;
    bool is_default;
};

bool holds(const std::vector<int> &handles, int handle) { return std::ranges::find(handles, handle) != handles.end(); }

int default_device(const Service &service)
{
    int handle = 0;
    service.check(svc_pvr_get_default_rec_device(&handle));
    return handle;
}

/// A handle that the service does not list is told of no device.
void require_device(const Service &service, int handle)
{
    if (!holds(listed(service, svc_pvr_get_device_list), handle))
        throw Failure(ExitCode::not_found, "there is no device " + std::to_string(handle));
}

Device device_on(const Service &service, int handle)
{
    device_info info{};
    service.check(svc_pvr_get_device_info(handle, &info));
    return {handle, info, holds(listed(service, svc_pvr_get_rec_device_list), handle),
            default_device(service) == handle};
}

Json device_json(const Device &device)
{
    const auto number = [](std::int64_t value) { return value; }; // the record's members are not aligned
    return {{"handle", device.handle},
            {"name", device.info.device_name},
            {"product", device.info.product_name},
            {"mount_path", device.info.mnt_path},
            {"device_type", number(device.info.device_type)},
            {"file_format", number(device.info.file_format)},
            {"total_size", number(device.info.total_size)},
            {"avail_size", number(device.info.avail_size)},
            {"recordable", device.is_recordable},
            {"default", device.is_default}};
}

std::string space_text(std::int64_t available, std::int64_t total)
{
    return std::to_string(available) + " MiB free of " + std::to_string(total) + " MiB";
}

std::string device_line(const Device &device)
{
    return std::string(device.info.device_name) + ", " + device.info.mnt_path + ", " +
           space_text(device.info.avail_size, device.info.total_size) +
           (device.is_recordable ? "" : ", not recordable") + (device.is_default ? ", the default" : "");
}

// ---- list, info, default, total

void list_devices(Service &service, Output &output)
{
    service.open();
    Json devices = Json::array();
    std::vector<Row> rows;
    for (const int handle : listed(service, svc_pvr_get_device_list)) {
        const Device device = device_on(service, handle);
        devices.push_back(device_json(device));
        rows.push_back({std::to_string(handle), device_line(device)});
    }
    if (rows.empty())
        rows.push_back({"devices", "none"});
    const std::size_t count = devices.size();
    output.show({{"devices", std::move(devices)}, {"count", count}}, rows);
}

/// What the development service takes the numbers of a measurement for.
std::string speed_text(int result)
{
    constexpr std::array<std::pair<int, const char *>, 3> texts{
        {{1, "fast enough"}, {0, "too slow"}, {-2, "not measured"}}};
    for (const auto &[number, text] : texts)
        if (number == result)
            return text;
    return "unknown, the service answers " + std::to_string(result);
}

int measured_speed(const Service &service, int handle)
{
    int result = 0;
    service.check(svc_pvr_get_performance_test_result(handle, &result));
    return result;
}

void show_device(const Service &service, const Output &output, int handle)
{
    const Device device = device_on(service, handle);
    const int speed = measured_speed(service, handle);
    Json data = device_json(device);
    data["performance"] = speed;
    output.show(data, {{"handle", std::to_string(handle)},
                       {"name", device.info.device_name},
                       {"product", device.info.product_name},
                       {"mounted at", device.info.mnt_path},
                       {"device type", std::to_string(device.info.device_type)},
                       {"file system", std::to_string(device.info.file_format)},
                       {"space", space_text(device.info.avail_size, device.info.total_size)},
                       {"recordable", device.is_recordable ? "yes" : "no"},
                       {"default", device.is_default ? "yes" : "no"},
                       {"performance", speed_text(speed)}});
}

void describe_device(Service &service, Output &output, int handle)
{
    service.open();
    require_device(service, handle);
    show_device(service, output, handle);
}

void choose_default(Service &service, Output &output, std::optional<int> chosen)
{
    service.open();
    if (chosen) {
        require_device(service, *chosen);
        service.check(svc_pvr_set_default_rec_device(*chosen));
    }
    const int handle = default_device(service);
    if (chosen && handle != *chosen)
        throw Failure(ExitCode::refused,
                      "the service does not record to device " + std::to_string(*chosen) + " by default");
    if (!holds(listed(service, svc_pvr_get_device_list), handle))
        throw Failure(ExitCode::not_found, "there is no device to record to");
    show_device(service, output, handle);
}

void count_devices(Service &service, Output &output)
{
    int devices = 0;
    int recordable = 0;
    int is_available = 0;
    rec_dev_capacity capacity{};
    service.open();
    service.check(svc_pvr_get_dev_total(&devices));
    service.check(svc_pvr_get_rec_dev_total(&recordable));
    service.check(svc_pvr_is_available(&is_available));
    service.check(svc_pvr_get_rec_dev_capacity(default_device(service), &capacity));
    const std::int64_t total_size = capacity.total_size;
    const std::int64_t available_size = capacity.available_size;
    output.show({{"devices", devices},
                 {"recordable", recordable},
                 {"available", answer_json(is_available)},
                 {"total_size", total_size},
                 {"available_size", available_size}},
                {{"devices", std::to_string(devices)},
                 {"recordable", std::to_string(recordable)},
                 {"can record", answer_text(is_available)},
                 {"default has", space_text(available_size, total_size)}});
}

// ---- check, format, test

void check_device(Service &service, Output &output, int handle)
{
    service.open();
    require_device(service, handle);
    service.check(svc_pvr_check_device(handle));
    output.show({{"handle", handle}, {"checked", true}}, {{"checked", std::to_string(handle)}});
}

/// The first number that the service has told since, of whatever device.
std::optional<int> told_result(Service &service)
{
    for (const News &news : service.take_news())
        if (news.numbers.size() == 1)
            return news.numbers[0];
    return std::nullopt;
}

std::string os_error(int error)
{
    constexpr int last_shared = PS_MATH_RESULT_NOT_REPRESENTABLE; // up to here they are errno's
    std::string text = std::to_string(error);
    if (error > 0 && error <= last_shared)
        text += std::string(", ") + std::strerror(error);
    return text;
}

/// Nothing but the service's news tells the end of a format.
int format_result(Service &service, const std::optional<std::string> &owner)
{
    for (;;) {
        if (const std::optional<int> result = told_result(service))
            return *result;
        if (service.owner() != owner)
            throw Failure(ExitCode::not_running, "the Recording service has ended before it told how the format went");
        pause(look_interval);
    }
}

void format_device(Service &service, Output &output, int handle, bool is_waiting)
{
    service.open();
    require_device(service, handle);
    const std::optional<std::string> owner = service.owner();
    device_info info{};
    service.check(svc_pvr_get_device_info(handle, &info));
    service.listen(PS_FORMAT);
    const int result = svc_pvr_format(handle, info.device_type);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service does not format device " + std::to_string(handle));
    if (is_waiting)
        if (const int error = format_result(service, owner); error != 0)
            throw Failure(ExitCode::failed, "device " + std::to_string(handle) +
                                                " was not formatted; the service says " + os_error(error));
    output.show({{"handle", handle}, {"formatted", is_waiting}},
                {{is_waiting ? "formatted" : "formatting", std::to_string(handle)}});
}

/// An earlier result stays until the new one is there: the service's news tell that it is, or another result does.
int test_result(Service &service, int handle, int before)
{
    for (;;) {
        const bool is_told = told_result(service).has_value();
        const int result = measured_speed(service, handle);
        if (is_told || result != before)
            return result;
        pause(look_interval);
    }
}

void test_device(Service &service, Output &output, int handle, bool is_waiting)
{
    service.open();
    require_device(service, handle);
    const int before = measured_speed(service, handle);
    service.listen(PS_PERFORMANCE_TEST);
    const int result = svc_pvr_start_performance_test(handle);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service does not measure device " + std::to_string(handle));
    if (!is_waiting) {
        output.show({{"handle", handle}, {"performance", nullptr}}, {{"measuring", std::to_string(handle)}});
        return;
    }
    const int speed = test_result(service, handle, before);
    if (speed < 0)
        throw Failure(ExitCode::failed, "device " + std::to_string(handle) + " was not measured; the service says " +
                                            std::to_string(speed));
    output.show({{"handle", handle}, {"performance", speed}},
                {{"handle", std::to_string(handle)}, {"performance", speed_text(speed)}});
}

// ---- the grammar

CLI::Option *add_device_argument(CLI::App &verb, int &handle)
{
    return completes(add_number(verb, "HANDLE", handle, "", "the device's handle, as 'device list' tells it"),
                     Completes::device);
}

struct DeviceVerb {
    const char *name;
    const char *description;
    const char *example;
    void (*action)(Service &, Output &, int handle);
};

constexpr std::array device_verbs{
    DeviceVerb{"info", "Tell everything about a device", "device info 1", describe_device},
    DeviceVerb{"check", "Have the service check a device. How it went cannot be told.", "device check 1", check_device},
};

/// What takes the service a while.
struct DeviceJob {
    const char *name;
    const char *description;
    const char *example;
    const char *waiting_example;
    const char *waiting;
    void (*action)(Service &, Output &, int handle, bool is_waiting);
};

constexpr std::array device_jobs{
    DeviceJob{"format",
              "Format a device: everything on it is lost. With --wait the command takes the next news of a "
              "format for its own: the service does not tell of which device they are.",
              "device format 1", "device format 1 --wait", "stay until the service tells how it went", format_device},
    DeviceJob{"test", "Measure whether a device is fast enough", "device test 1", "device test 1 --wait",
              "stay until it is measured, and tell the result", test_device},
};

} // namespace

void add_device(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "device", "Storage devices that recordings go to",
                                   {"device list", "device default 2", "device test 1 --wait"});
    object.require_subcommand(1);
    choose(commands, add_command(object, "list", "List the devices", {"device list", "device list --json"}),
           list_devices);
    choose(
        commands,
        add_command(object, "total", "Count the devices, and tell whether there is room to record", {"device total"}),
        count_devices);

    const auto handle = std::make_shared<int>();
    CLI::App &chosen = add_command(object, "default", "Tell or choose the device that recordings go to",
                                   {"device default", "device default 2"});
    const CLI::Option *given = add_device_argument(chosen, *handle);
    choose(commands, chosen, [handle, given](Service &service, Output &output) {
        choose_default(service, output, given->count() > 0 ? std::optional(*handle) : std::nullopt);
    });

    for (const DeviceVerb &known : device_verbs) {
        CLI::App &verb = add_command(object, known.name, known.description, {known.example});
        add_device_argument(verb, *handle)->required();
        choose(commands, verb,
               [handle, &known](Service &service, Output &output) { known.action(service, output, *handle); });
    }
    for (const DeviceJob &known : device_jobs) {
        CLI::App &verb = add_command(object, known.name, known.description, {known.example, known.waiting_example});
        const auto is_waiting = std::make_shared<bool>();
        add_device_argument(verb, *handle)->required();
        verb.add_flag("--wait", *is_waiting, known.waiting);
        choose(commands, verb, [handle, is_waiting, &known](Service &service, Output &output) {
            known.action(service, output, *handle, *is_waiting);
        });
    }
}

} // namespace pvrctl
