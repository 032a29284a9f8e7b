#include "support/private_bus.h"

#include <cerrno>
#include <fstream>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace support {
namespace {

/// Nobody else's socket has this name, in whatever process namespaces they may run.
std::string new_address()
{
    std::string id;
    std::getline(std::ifstream("/proc/sys/kernel/random/uuid"), id);
    return "unix:abstract=pvr-test-" + id;
}

/// A file without a name; the daemon inherits it. Everybody may own and call everything.
int configuration_file(const std::string &address)
{
    const std::string text = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>)" + address + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
)";
    const int file = memfd_create("pvr-test-bus", 0);
    if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::system_error(errno, std::generic_category(), "the private bus's configuration");
    return file;
}

} // namespace

PrivateBus::PrivateBus() : address_(new_address()) { start(); }

void PrivateBus::start()
{
    const int file = configuration_file(address_);
    daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--print-address",
                                             "--config-file=/proc/self/fd/" + std::to_string(file)});
    close(file);
}

void PrivateBus::kill() { daemon_.reset(); }

PrivateBus &bus()
{
    static PrivateBus the_bus;
    return the_bus;
}

} // namespace support
