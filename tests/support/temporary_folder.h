// A folder of a test's own, removed at its end.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace support {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        // No random letters: log lines are compared with what looks like an address taken out.
        const std::string prefix =
            std::filesystem::temp_directory_path() / ("pvr-test-" + std::to_string(getpid()) + "-");
        for (int number = 0; path_.empty(); ++number)
            if (std::filesystem::create_directory(prefix + std::to_string(number)))
                path_ = prefix + std::to_string(number);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &path() const { return path_; }
    std::string operator/(const std::string &name) const { return path_ + "/" + name; }

    /// What lies in it, sorted.
    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string path_;
};

} // namespace support
