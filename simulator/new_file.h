// A file that appears under its name once it is whole.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace simulator {

/// Written under a temporary name in the same folder, which is removed unless the file was published.
/// Everything throws std::system_error.
class NewFile {
public:
    explicit NewFile(std::string path);
    ~NewFile();
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    void write(std::span<const std::uint8_t> bytes);
    /// Takes the place of whatever has the name.
    void publish();

private:
    std::string path_;
    std::string temporary_;
    int descriptor_ = -1;
};

} // namespace simulator
