#include "support/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

extern char **environ;

namespace support {

ChildProcess::ChildProcess(const std::vector<std::string> &command)
{
    std::array<int, 2> output{};
    if (pipe2(output.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");

    std::vector<std::string> guarded{"setpriv", "--pdeathsig", "KILL"};
    guarded.insert(guarded.end(), command.begin(), command.end());
    std::vector<char *> arguments;
    for (std::string &argument : guarded)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const int error = posix_spawnp(&pid_, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    for (char c = 0; error == 0 && read(output[0], &c, 1) == 1 && c != '\n';)
        first_line_ += c;
    close(output[0]);
    if (first_line_.empty())
        throw std::runtime_error(command.front() + " did not start");
}

ChildProcess::~ChildProcess()
{
    if (pid_ <= 0)
        return;
    kill(pid_, SIGKILL);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept
    : pid_(std::exchange(other.pid_, -1)), first_line_(std::move(other.first_line_))
{
}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept
{
    std::swap(pid_, other.pid_);
    std::swap(first_line_, other.first_line_);
    return *this;
}

} // namespace support
