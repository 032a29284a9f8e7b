// A file with a line for each call, each signal and whatever else happens, at its moment of the set's time. In it is
// nothing that another run would not have as well.
#pragma once

#include "devices.h"
#include "outcome.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace simulator {

class EventLog {
public:
    /// Makes the file, or empties it. The folders of these devices are in it by their names. Throws std::system_error.
    EventLog(const std::string &path, std::vector<DeviceDescription> devices);

    /// Moments are told by this clock from here on, since now. Before that they are 0.
    void follow(Clock clock);
    /// A service that is killed has written it.
    void line(const std::string &text);

private:
    std::string without_folders(std::string text) const;

    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
    std::vector<DeviceDescription> devices_;
    Clock clock_;
    Microseconds beginning_{0};
};

} // namespace simulator
