#include "children.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "messages.h"

namespace sandbox {
namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

/// 0 when the process has gone meanwhile.
pid_t parent_of(const std::string &process)
{
    std::string line;
    std::getline(std::ifstream("/proc/" + process + "/stat"), line, '\0');
    // The name may contain anything, brackets and newlines included; the state and the parent follow it.
    const auto bracket = line.rfind(')');
    if (bracket == std::string::npos)
        return 0;
    std::istringstream rest(line.substr(bracket + 1));
    char state = 0;
    pid_t parent = 0;
    rest >> state >> parent;
    return parent;
}

} // namespace

void adopt_orphans()
{
    if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0)
        throw system_failure("orphans cannot be adopted");
}

std::vector<pid_t> own_children()
{
    std::vector<pid_t> children;
    const std::unique_ptr<DIR, CloseFolder> processes(opendir("/proc"));
    if (!processes)
        throw system_failure("/proc cannot be read");
    while (const dirent *entry = readdir(processes.get())) {
        const std::string name = entry->d_name;
        if (std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c) != 0; }) &&
            parent_of(name) == getpid())
            children.push_back(std::stoi(name));
    }
    return children;
}

bool kill_children(std::chrono::seconds limit)
{
    sigset_t child_ended;
    sigemptyset(&child_ended);
    sigaddset(&child_ended, SIGCHLD);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        pid_t reaped = 0;
        do {
            reaped = waitpid(-1, nullptr, WNOHANG);
        } while (reaped > 0);
        if (reaped < 0)
            return true;
        for (const pid_t child : own_children())
            kill(child, SIGKILL);
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        const timespec time{left.count() / 1000, left.count() % 1000 * 1'000'000};
        sigtimedwait(&child_ended, nullptr, &time);
    }
}

} // namespace sandbox
