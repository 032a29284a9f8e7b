// The recordings on the devices, running or not: their files. Nothing beside the devices is touched.
#pragma once

#include "devices.h"
#include "outcome.h"

#include <optional>
#include <string>

namespace simulator {

class StoredRecordings {
public:
    static constexpr int widest_thumbnail = 4096; ///< and highest

    explicit StoredRecordings(const Devices &devices) : devices_(devices) {}

    /// The path of a recording on a device that is there; nothing for anything else.
    std::optional<std::string> path(const std::string &uri) const;
    /// How many there are on all devices.
    int count() const;

    /// Removes a recording and what lies beside it.
    Outcome remove(const std::string &path) const;
    Outcome remove_info(const std::string &path) const;
    /// Makes a thumbnail, and the file that tells its form.
    Outcome make_thumbnail(const std::string &path, int width, int height) const;
    /// Whether its info file tells that it is not for children.
    bool is_locked(const std::string &path) const;

private:
    const Devices &devices_;
};

} // namespace simulator
