#include "failure.h"

#include <array>

namespace pvrctl {

std::span<const ExitCodeText> exit_codes()
{
    static constexpr std::array table{
        ExitCodeText{ExitCode::done, "done", "done"},
        ExitCodeText{ExitCode::failed, "failed", "failed for another reason"},
        ExitCodeText{ExitCode::usage, "usage", "the command line is wrong; nothing was done"},
        ExitCodeText{ExitCode::time_out, "time-out", "no answer of the service, event or state came in time"},
        ExitCodeText{ExitCode::not_running, "not-running", "the service is not running, or there is no bus"},
        ExitCodeText{ExitCode::not_recording, "not-recording", "the product or its service does not record"},
        ExitCodeText{ExitCode::not_found, "not-found",
                     "not found: a file, a channel, a device, a recording, a value, a language"},
        ExitCodeText{ExitCode::refused, "refused", "the service refused"},
    };
    return table;
}

} // namespace pvrctl
