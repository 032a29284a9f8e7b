// What the system refused to do with a file, as an exception.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace simulator {

/// Throws errno as std::system_error.
[[noreturn]] inline void throw_errno(const std::string &path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

} // namespace simulator
