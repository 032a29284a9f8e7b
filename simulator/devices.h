// The storage devices: folders that come and go. One is what recordings go to; each can be formatted and measured,
// which takes time. It knows no bus; what happens is told to an observer.
#pragma once

#include "faults.h"
#include "folder.h"
#include "handles.h"
#include "outcome.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

struct DeviceDescription {
    std::string name;
    std::string folder;   ///< absolute and without links
    bool is_slow = false; ///< too slow to be recorded to, as a measurement will find out

    bool operator==(const DeviceDescription &) const = default;
};

/// What happened to a device.
struct DeviceEvent {
    enum Kind {
        came,      ///< its folder is there
        left,      ///< its folder is there no longer
        formatted, ///< result is 0, or the error that kept something on it
        measured   ///< result is 1 for fast enough, 0 for too slow, -2 when the device has left meanwhile
    };

    Kind kind;
    int handle;
    std::string name;
    std::string mount_path;
    int result = 0;

    bool operator==(const DeviceEvent &) const = default;
};

class Devices {
public:
    using SpaceOf = std::function<Space(const std::string &folder)>;
    using Observer = std::function<void(const DeviceEvent &)>;

    static constexpr Microseconds format_time = std::chrono::seconds(1);
    static constexpr Microseconds measuring_time = std::chrono::seconds(1);
    /// How often the folders are looked at when nobody calls.
    static constexpr Microseconds look_interval = std::chrono::seconds(1);
    /// Free space, in MiB, below which a recording is not begun.
    static constexpr std::int64_t least_space = 50;

    static constexpr int none = 0; ///< for a handle

    struct Device {
        enum class Job { none, format, measure };

        DeviceDescription description;
        int handle = none;             ///< of a device that is there
        std::optional<bool> is_fast{}; ///< as the last measurement found
        Job job = Job::none;
        Microseconds job_end{0};

        bool is_there() const { return handle != none; }
        std::string product() const { return "Development storage " + description.name; }
        const std::string &mount_path() const { return description.folder; }
    };

    Devices(std::vector<DeviceDescription> descriptions, Clock clock, SpaceOf space_of, Observer observer,
            Pace pace = usual_pace);

    /// From here on these faults decide which device is out and which is full.
    void suffer(Faults &faults) { faults_ = &faults; }

    /// Of all there may be, whether or not they are there.
    std::vector<std::string> names() const;

    /// In the order of their descriptions.
    std::vector<int> all() const;
    /// Those that can be recorded to: writable, not being formatted, and not found too slow.
    std::vector<int> recordable() const;

    /// Null when there is no such device.
    const Device *find(int handle) const;
    const Device *mounted_at(const std::string &path) const;
    Space space(int handle) const;
    /// Whether a path lies on a device that is pulled out although its folder is there.
    bool is_out_of_reach(const std::string &path) const;
    /// Whether something may be written to the device that a path is on; to be asked before each write, once.
    bool finds_room(const std::string &path) const;

    /// What recordings go to: the one chosen, or else the first that can be recorded to.
    int default_device() const;
    /// What would follow on that one, in their order and around; none when it is the only one.
    int next_default() const;
    /// The one with the most free space that can be recorded to.
    int roomiest() const;
    /// The first of all.
    int first() const;
    /// Whether a recording has somewhere to go.
    bool is_available() const;

    /// The choice holds for as long as the service runs, also while the device is away.
    Outcome set_default(int handle);
    Outcome check(int handle);
    /// Removes everything on a device, in a while.
    Outcome format(int handle);
    /// Finds out how fast a device is, in a while.
    Outcome measure(int handle);
    /// 1 for fast enough, 0 for too slow, -2 when there is no such device or it was not measured since it came or was
    /// formatted.
    int measured(int handle) const;
    /// Makes a folder on a device, at an absolute path and with permissions as mkdir(2) takes them.
    Outcome make_folder(const std::string &path, int permissions);

    /// When to look again, or something will be over.
    std::optional<Microseconds> due() const;
    /// Notices what has come or left, and ends what is over.
    void advance();

private:
    const Device *device_of(const std::string &path) const;
    bool is_full(const Device &device) const;
    bool is_pulled(const Device &device) const;
    static bool is_recordable(const Device &device);
    Outcome begin(int handle, Device::Job job, Microseconds time);
    void look();
    void end_job(Device &device);
    void tell(DeviceEvent::Kind kind, const Device &device, int result = 0);

    std::vector<Device> devices_;
    Clock clock_;
    SpaceOf space_of_;
    Observer observer_;
    Pace pace_;
    Handles handles_;
    std::string chosen_; ///< its name
    Microseconds next_look_{0};
    Faults *faults_ = nullptr; ///< null: nothing goes wrong on purpose
};

} // namespace simulator
