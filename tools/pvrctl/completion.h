// What a shell may complete an argument with: said where the argument is defined, found when the shell asks.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "service.h"

namespace pvrctl {

/// The kinds of arguments of which it is known what they may be.
enum class Completes {
    nothing,
    file,         ///< any file
    folder,       ///< any folder
    recording,    ///< any file, and the recordings on the storage devices
    channel,      ///< the channel that is watched, and those that are recorded
    recorded,     ///< a channel that is recorded or timeshifted
    playback,     ///< a handle on which something plays
    handle,       ///< that, or the handle of a recording
    device,       ///< a storage device's handle
    fault,        ///< the number of a fault in the development service
    fault_kind,   ///< what can go wrong there
    fault_target, ///< a method, a signal or a storage device's name
    signal,       ///< a signal of the interface
    date_state,   ///< set, unset
    event,        ///< the type of a signal, or the method of a result
    field,        ///< a field of the info file, to be set
    speed,        ///< how fast is wound
    language,     ///< one that the library has error texts in
    error_code,   ///< one that has an error text of its own
    function,     ///< one that the library exports
    awaited_state,
    awaited_id, ///< a channel that is recorded, or a handle
};

/// Says what an argument takes, and gives it back.
CLI::Option *completes(CLI::Option *argument, Completes what);
Completes what_completes(const CLI::Option *argument);

struct Candidate {
    std::string text;
    std::string description;
};

/// What an argument of some kind may be, as far as anybody can tell. Throws when nobody can.
std::vector<Candidate> candidates(Service &service, Completes what);

} // namespace pvrctl
