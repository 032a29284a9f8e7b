#include "terminal.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace sandbox {

Terminal::Terminal(pid_t group) : fd_(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)), group_(group)
{
    has_modes_ = fd_ && tcgetpgrp(fd_.get()) == group_ && tcgetattr(fd_.get(), &modes_) == 0;
}

void Terminal::hand_to(pid_t group) const
{
    if (fd_ && tcgetpgrp(fd_.get()) == group_)
        tcsetpgrp(fd_.get(), group);
}

void Terminal::restore() const
{
    if (!has_modes_)
        return;
    const pid_t foreground = tcgetpgrp(fd_.get());
    const bool is_nobodys = foreground > 0 && kill(-foreground, 0) != 0 && errno == ESRCH;
    if (foreground != group_ && !is_nobodys)
        return;
    tcsetpgrp(fd_.get(), group_);
    tcsetattr(fd_.get(), TCSANOW, &modes_);
}

} // namespace sandbox
