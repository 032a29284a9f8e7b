// Whole files as texts.
#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace support {

inline std::string content_of(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void write_file(const std::string &path, const std::string &content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!(file << content).flush())
        throw std::runtime_error("cannot write " + path);
}

} // namespace support
