#include "devices.h"

#include "pvr_events.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

namespace simulator {
Devices::Devices(std::vector<DeviceDescription> descriptions, Clock clock, SpaceOf space_of, Observer observer,
                 Pace pace)
    : clock_(std::move(clock)), space_of_(std::move(space_of)), observer_(std::move(observer)), pace_(std::move(pace))
{
    for (DeviceDescription &description : descriptions)
        devices_.push_back({.description = std::move(description)});
    advance();
}

std::vector<int> Devices::all() const
{
    std::vector<int> handles;
    for (const Device &device : devices_)
        if (device.is_there())
            handles.push_back(device.handle);
    return handles;
}

std::vector<int> Devices::recordable() const
{
    std::vector<int> handles;
    for (const Device &device : devices_)
        if (is_recordable(device))
            handles.push_back(device.handle);
    return handles;
}

bool Devices::is_recordable(const Device &device)
{
    return device.is_there() && device.job != Device::Job::format && device.is_fast.value_or(true) &&
           is_writable(device.mount_path());
}

const Devices::Device *Devices::find(int handle) const
{
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [&](const Device &device) { return device.is_there() && device.handle == handle; });
    return found == devices_.end() ? nullptr : &*found;
}

const Devices::Device *Devices::mounted_at(const std::string &path) const
{
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device &device) {
        return device.is_there() && device.mount_path() == path;
    });
    return found == devices_.end() ? nullptr : &*found;
}

Space Devices::space(int handle) const
{
    const Device *device = find(handle);
    if (device == nullptr)
        return {};
    Space space = space_of_(device->mount_path());
    if (is_full(*device))
        space.available = 0;
    return space;
}

std::vector<std::string> Devices::names() const
{
    std::vector<std::string> names;
    for (const Device &device : devices_)
        names.push_back(device.description.name);
    return names;
}

const Devices::Device *Devices::device_of(const std::string &path) const
{
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device &device) {
        return path == device.mount_path() || path.starts_with(device.mount_path() + "/");
    });
    return found == devices_.end() ? nullptr : &*found;
}

bool Devices::is_full(const Device &device) const
{
    return faults_ != nullptr && faults_->is_full(device.description.name);
}

bool Devices::is_pulled(const Device &device) const
{
    return faults_ != nullptr && faults_->is_pulled(device.description.name);
}

bool Devices::is_out_of_reach(const std::string &path) const
{
    const Device *device = device_of(path);
    return device != nullptr && is_pulled(*device);
}

bool Devices::finds_room(const std::string &path) const
{
    const Device *device = device_of(path);
    return faults_ == nullptr || device == nullptr ||
           faults_->take(Occasion::writing, device->description.name) == nullptr;
}

int Devices::default_device() const
{
    for (const Device &device : devices_)
        if (device.description.name == chosen_ && is_recordable(device))
            return device.handle;
    const std::vector<int> handles = recordable();
    return handles.empty() ? none : handles.front();
}

int Devices::next_default() const
{
    const std::vector<int> handles = recordable();
    if (handles.size() < 2)
        return none;
    const auto next = std::next(std::find(handles.begin(), handles.end(), default_device()));
    return next == handles.end() ? handles.front() : *next;
}

int Devices::roomiest() const
{
    const std::vector<int> handles = recordable();
    const auto most = std::max_element(handles.begin(), handles.end(), [this](int one, int other) {
        return space(one).available < space(other).available;
    });
    return most == handles.end() ? none : *most;
}

int Devices::first() const
{
    const std::vector<int> handles = all();
    return handles.empty() ? none : handles.front();
}

bool Devices::is_available() const
{
    const int handle = default_device();
    return handle != none && space(handle).available >= least_space;
}

Outcome Devices::set_default(int handle)
{
    advance();
    const Device *device = find(handle);
    if (device == nullptr)
        return refused("no such device");
    if (!is_recordable(*device))
        return refused("it cannot be recorded to");
    chosen_ = device->description.name;
    return {};
}

Outcome Devices::check(int handle)
{
    advance();
    return find(handle) != nullptr ? Outcome() : refused("no such device");
}

Outcome Devices::format(int handle) { return begin(handle, Device::Job::format, format_time); }

Outcome Devices::measure(int handle) { return begin(handle, Device::Job::measure, measuring_time); }

Outcome Devices::begin(int handle, Device::Job job, Microseconds time)
{
    advance();
    const auto device = std::find_if(devices_.begin(), devices_.end(), [&](const Device &candidate) {
        return candidate.is_there() && candidate.handle == handle;
    });
    if (device == devices_.end())
        return refused("no such device");
    if (device->job != Device::Job::none)
        return refused("the device is being formatted or measured");
    device->job = job;
    device->job_end = clock_() + time;
    return {};
}

int Devices::measured(int handle) const
{
    const Device *device = find(handle);
    return device == nullptr || !device->is_fast ? refused_result : int{*device->is_fast};
}

Outcome Devices::make_folder(const std::string &path, int permissions)
{
    constexpr int all_permissions = 0777;
    advance();
    if (permissions < 0 || permissions > all_permissions)
        return refused("no such permissions");
    for (const Device &device : devices_) {
        const std::string beginning = device.mount_path() + "/";
        if (!device.is_there() || !path.starts_with(beginning))
            continue;
        if (device.job == Device::Job::format)
            return refused("the device is being formatted");
        if (!finds_room(path))
            return refused("the device is full");
        try {
            make_folder_below(device.mount_path(), std::string_view(path).substr(beginning.size()),
                              static_cast<mode_t>(permissions));
        } catch (const std::system_error &error) {
            return refused(error.code().message());
        }
        return {};
    }
    return refused("not on a device");
}

std::optional<Microseconds> Devices::due() const
{
    if (devices_.empty())
        return std::nullopt;
    Microseconds moment = next_look_;
    for (const Device &device : devices_)
        if (device.job != Device::Job::none)
            moment = std::min(moment, device.job_end);
    return moment;
}

void Devices::advance()
{
    look();
    for (Device &device : devices_)
        if (device.job != Device::Job::none && device.job_end <= clock_())
            end_job(device);
}

void Devices::look()
{
    next_look_ = clock_() + pace_(look_interval);
    for (Device &device : devices_) {
        const bool is_there = is_folder(device.mount_path()) && !is_pulled(device);
        if (is_there && !device.is_there()) {
            device.handle = handles_.issue();
            tell(DeviceEvent::came, device);
        } else if (!is_there && device.is_there()) {
            const Device gone = std::exchange(device, Device{.description = device.description});
            handles_.release(gone.handle);
            if (gone.job == Device::Job::format)
                tell(DeviceEvent::formatted, gone, PS_NO_SUCH_DEVICE);
            if (gone.job == Device::Job::measure)
                tell(DeviceEvent::measured, gone, refused_result);
            tell(DeviceEvent::left, gone);
        }
    }
}

void Devices::end_job(Device &device)
{
    if (std::exchange(device.job, Device::Job::none) == Device::Job::measure) {
        device.is_fast = !device.description.is_slow;
        tell(DeviceEvent::measured, device, int{*device.is_fast});
        return;
    }
    int error = 0;
    try {
        remove_content(device.mount_path());
    } catch (const std::system_error &reason) {
        error = reason.code().value();
    }
    device.is_fast.reset();
    tell(DeviceEvent::formatted, device, error);
}

void Devices::tell(DeviceEvent::Kind kind, const Device &device, int result)
{
    observer_({kind, device.handle, device.description.name, device.mount_path(), result});
}

} // namespace simulator
