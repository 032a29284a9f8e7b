// A shell with job control as the command: it has a process group and the terminal for itself.
#pragma once

#include "terminal.h"

#include <sys/types.h>

namespace sandbox {

/// The process that the user started, and its process group.
struct Front {
    pid_t id;
    pid_t group;
};

/// Keys stop and continue the front and a command in its group by themselves. A shell in a group of its
/// own suspends itself alone: then the shell that started the sandbox waits for the front to stop, and
/// continues the front only.
class JobControl {
public:
    explicit JobControl(Front front) : front_(front), terminal_(front.group) {}

    pid_t group() const { return front_.group; }

    void note_stopped(pid_t command);
    /// Also when the command has ended: a front that stayed suspended would not end.
    void note_continued();
    void note_front_continued(pid_t command);

    /// The terminal may be as the command wanted it.
    void note_killed() const { terminal_.restore(); }

private:
    /// 0 when the command is in the front's.
    pid_t own_group(pid_t command) const;

    Front front_;
    Terminal terminal_;
    bool is_front_suspended_ = false;
};

} // namespace sandbox
