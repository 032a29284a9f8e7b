// A folder of a test's own, removed at its end.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

class TemporaryFolder {
public:
    TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "pvr-simulator-test.XXXXXX").string())
    {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), path_);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

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
