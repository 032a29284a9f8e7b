#include "support/private_bus.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern char **environ;

namespace support {
namespace {

std::filesystem::path new_folder()
{
    std::string pattern = std::filesystem::temp_directory_path() / "pvr-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), pattern);
    return pattern;
}

void write_configuration(const std::filesystem::path &file, const std::string &address)
{
    std::ofstream(file) << R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>)" << address << R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true"/>
    <allow receive_requested_reply="true"/>
  </policy>
  <limit name="max_connections_per_user">4096</limit>
  <limit name="max_completed_connections">4096</limit>
</busconfig>
)";
}

} // namespace

PrivateBus::PrivateBus() : folder_(new_folder()), address_("unix:path=" + (folder_ / "bus").string())
{
    write_configuration(folder_ / "bus.conf", address_);
    start();
}

PrivateBus::~PrivateBus()
{
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateBus::start()
{
    int ready[2];
    if (pipe(ready) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");

    // setpriv has the kernel end the bus when the test process ends, whichever way it does.
    const std::string configuration = "--config-file=" + (folder_ / "bus.conf").string();
    const std::string print_address = "--print-address=" + std::to_string(ready[1]);
    const char *arguments[] = {"setpriv",  "--pdeathsig",         "KILL", "dbus-daemon", configuration.c_str(),
                               "--nofork", print_address.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, ready[0]);
    const std::string log = folder_ / "bus.log";
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int error = posix_spawnp(&pid_, arguments[0], &actions, nullptr, const_cast<char **>(arguments), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    char first = 0;
    const bool is_ready = error == 0 && read(ready[0], &first, 1) == 1;
    close(ready[0]);
    if (!is_ready)
        throw std::runtime_error("the private dbus-daemon did not start");
}

void PrivateBus::kill()
{
    if (pid_ <= 0)
        return;
    ::kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
    std::error_code ignored;
    std::filesystem::remove(folder_ / "bus", ignored);
}

PrivateBus &bus()
{
    static PrivateBus the_bus;
    return the_bus;
}

} // namespace support
