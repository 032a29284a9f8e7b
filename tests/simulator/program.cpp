#include "program.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

extern char **environ;

namespace simulator_test {

namespace {

std::array<int, 2> new_pipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    return ends;
}

/// A pipe that nobody reads: writing to it is an error, and a signal to who does not expect that.
int pipe_without_a_reader()
{
    const std::array<int, 2> ends = new_pipe();
    close(ends[0]);
    return ends[1];
}

} // namespace

Program::Program(std::vector<std::string> command, Complaints complaints)
    : complaints_(complaints == Complaints::are_kept ? memfd_create("complaints", MFD_CLOEXEC)
                                                     : pipe_without_a_reader())
{
    const std::array<int, 2> output = new_pipe();
    output_ = output[0];

    command.front().insert(0, PVR_PROGRAM_FOLDER "/");
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    std::vector<char *> arguments;
    for (std::string &argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, complaints_, STDERR_FILENO);
    const int error = posix_spawnp(&pid_, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), arguments.front());
}

Program::~Program()
{
    if (pid_ > 0) {
        signal(SIGKILL);
        wait();
    }
    close(output_);
    close(complaints_);
}

std::string Program::line()
{
    std::string text;
    for (char c = 0; read(output_, &c, 1) == 1 && c != '\n';)
        text += c;
    return text;
}

void Program::signal(int number) const { kill(pid_, number); }

int Program::wait()
{
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string Program::complaints() const
{
    const off_t size = lseek(complaints_, 0, SEEK_END);
    std::string text(size < 0 ? 0 : static_cast<std::size_t>(size), '\0');
    const ssize_t count = pread(complaints_, text.data(), text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return text;
}

std::string Program::rest()
{
    std::string text;
    for (char c = 0; read(output_, &c, 1) == 1;)
        text += c;
    return text;
}

} // namespace simulator_test
