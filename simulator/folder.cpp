#include "folder.h"

#include "descriptor.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace simulator {
namespace {

[[noreturn]] void give_up(int error, const std::string &name)
{
    throw std::system_error(error, std::generic_category(), name);
}

/// A folder that is open.
class OpenFolder {
public:
    /// Throws std::system_error when the name is no folder, or is a link.
    OpenFolder(int parent, const std::string &name, int flags = O_RDONLY)
        : descriptor_(openat(parent, name.c_str(), flags | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))
    {
        if (!descriptor_.is_open())
            give_up(errno, name);
    }

    int number() const { return descriptor_.number(); }
    dev_t file_system() const
    {
        struct stat status {};
        if (fstat(number(), &status) != 0)
            give_up(errno, "fstat");
        return status.st_dev;
    }

private:
    Descriptor descriptor_;
};

struct Entry {
    std::string name;
    bool is_folder;
};

std::vector<Entry> entries_of(const OpenFolder &folder)
{
    // A descriptor of its own: closedir closes it.
    const int copy = openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *stream = copy < 0 ? nullptr : fdopendir(copy);
    if (stream == nullptr) {
        const int error = errno;
        if (copy >= 0)
            close(copy);
        give_up(error, ".");
    }
    std::vector<Entry> entries;
    while (const dirent *found = readdir(stream)) {
        const std::string name = found->d_name;
        struct stat status {};
        if (name != "." && name != ".." && fstatat(folder.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
            entries.push_back({name, S_ISDIR(status.st_mode)});
    }
    closedir(stream);
    return entries;
}

void remove_entries(const OpenFolder &folder, dev_t file_system)
{
    for (const auto &[name, is_folder] : entries_of(folder)) {
        if (is_folder) {
            const OpenFolder inner(folder.number(), name);
            if (inner.file_system() != file_system)
                give_up(EXDEV, name);
            remove_entries(inner, file_system);
        }
        if (unlinkat(folder.number(), name.c_str(), is_folder ? AT_REMOVEDIR : 0) != 0)
            give_up(errno, name);
    }
}

std::vector<std::string> parts_of(std::string_view path)
{
    std::vector<std::string> parts;
    while (!path.empty()) {
        const std::string_view part = path.substr(0, path.find('/'));
        if (part == "." || part == "..")
            give_up(EINVAL, std::string(part));
        if (!part.empty())
            parts.emplace_back(part);
        path.remove_prefix(std::min(part.size() + 1, path.size()));
    }
    return parts;
}

} // namespace

Space space_of(const std::string &folder)
{
    constexpr std::uint64_t mebibyte = 1 << 20;
    struct statvfs status {};
    if (statvfs(folder.c_str(), &status) != 0)
        return {};
    const std::uint64_t block = status.f_frsize;
    return {static_cast<std::int64_t>(status.f_bavail * block / mebibyte),
            static_cast<std::int64_t>(status.f_blocks * block / mebibyte)};
}

bool is_folder(const std::string &path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool is_writable(const std::string &folder) { return access(folder.c_str(), W_OK | X_OK) == 0; }

void remove_content(const std::string &folder)
{
    const OpenFolder descriptor(AT_FDCWD, folder);
    remove_entries(descriptor, descriptor.file_system());
}

void make_folder_below(const std::string &folder, std::string_view below, mode_t mode)
{
    const std::vector<std::string> parts = parts_of(below);
    if (parts.empty())
        give_up(EEXIST, folder);
    OpenFolder parent(AT_FDCWD, folder, O_PATH);
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
        parent = OpenFolder(parent.number(), parts[i], O_PATH);
    if (mkdirat(parent.number(), parts.back().c_str(), mode) != 0)
        give_up(errno, parts.back());
}

} // namespace simulator
