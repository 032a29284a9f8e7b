// The private bus: where it listens, and how its daemon is configured and started.
#pragma once

#include <string>
#include <vector>

namespace sandbox {

/// The longest path that dbus-daemon listens at, in bytes; the kernel would take 107.
constexpr std::size_t longest_socket_path = 99;

/// Any path, as an address that all clients understand.
std::string bus_address(const std::string &socket);

std::string bus_configuration(const std::string &address);

/// The daemon prints its address on standard output once it listens.
std::vector<std::string> bus_command(const std::string &configuration);

} // namespace sandbox
