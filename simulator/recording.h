// What a uri names: a recording's file, its length and when it was made; or why it cannot be played.
#pragma once

#include "playback.h"
#include "pvr_events.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace simulator {

struct Recording {
    std::string path;
    Microseconds length;
    Microseconds ended; ///< since 1970 UTC
};

/// A uri that cannot be played.
class Unplayable : public std::runtime_error {
public:
    Unplayable(ps_os_error_e code, const std::string &reason) : std::runtime_error(reason), code_(code) {}
    ps_os_error_e code() const { return code_; }

private:
    ps_os_error_e code_;
};

/// The path that an absolute path or a file:// URI of this machine names; nothing for any other text.
std::optional<std::string> local_path(const std::string &uri);

/// Reads what there is to know about a recording. Throws Unplayable.
Recording open_recording(const std::string &uri);

} // namespace simulator
