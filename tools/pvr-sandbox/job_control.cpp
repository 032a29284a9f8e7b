#include "job_control.h"

#include <csignal>
#include <unistd.h>
#include <utility>

namespace sandbox {

pid_t JobControl::own_group(pid_t command) const
{
    const pid_t group = getpgid(command);
    return group > 0 && group != front_.group ? group : 0;
}

void JobControl::note_stopped(pid_t command)
{
    // A front that has ended is nobody's parent, and its number may be somebody else's.
    if (own_group(command) == 0 || getppid() != front_.id)
        return;
    is_front_suspended_ = true;
    kill(front_.id, SIGTSTP);
}

void JobControl::note_continued()
{
    if (std::exchange(is_front_suspended_, false) && getppid() == front_.id)
        kill(front_.id, SIGCONT);
}

void JobControl::note_front_continued(pid_t command)
{
    is_front_suspended_ = false;
    const pid_t group = own_group(command);
    if (group == 0)
        return;
    terminal_.hand_to(group);
    kill(-group, SIGCONT);
}

} // namespace sandbox
