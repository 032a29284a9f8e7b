#include "remove_tree.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "fd.h"

namespace sandbox {
namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

std::string reason(int error) { return std::generic_category().message(error); }

bool is_mounted(int folder)
{
    struct statx status {};
    return statx(folder, "", AT_EMPTY_PATH | AT_NO_AUTOMOUNT, STATX_BASIC_STATS, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/// Opens a folder for reading and writing, whatever its mode says; or fails with errno set.
Fd open_folder(int parent, const std::string &name)
{
    const Fd place(openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!place)
        return {};
    if (is_mounted(place.get())) {
        errno = EBUSY;
        return {};
    }
    // A descriptor of this kind takes no fchmod(). Who may not change the mode learns so when removing.
    chmod(("/proc/self/fd/" + std::to_string(place.get())).c_str(), S_IRWXU);
    return Fd(openat(place.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::vector<std::string> entries(int folder)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, CloseFolder> open(fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (const dirent *entry = open ? readdir(open.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    return names;
}

/// Empties a folder. Folders further down are moved to the top first, and so are those in them: no
/// tree is too deep, and the path of none is ever followed.
class Emptying {
public:
    Emptying(int top, const std::string &path) : top_(top), path_(path) {}

    std::vector<std::string> run()
    {
        do {
            has_moved_ = false;
            for (const std::string &name : entries(top_)) {
                if (!is_left_.contains(name) && unlinkat(top_, name.c_str(), 0) != 0 && errno != ENOENT)
                    remove_folder(name);
            }
        } while (has_moved_);
        return std::move(left_);
    }

private:
    void remove_folder(const std::string &name)
    {
        // Directories cannot be unlinked; for all else the error stands.
        const int error = errno;
        const Fd folder = open_folder(top_, name);
        if (!folder)
            return leave(name, "", errno == ENOTDIR ? error : errno);
        for (const std::string &inner : entries(folder.get())) {
            if (unlinkat(folder.get(), inner.c_str(), 0) == 0 || errno == ENOENT)
                continue;
            if (const int reason = move_up(folder.get(), inner); reason != 0)
                leave(name, "/" + inner, reason);
        }
        if (unlinkat(top_, name.c_str(), AT_REMOVEDIR) != 0 && !is_left_.contains(name))
            leave(name, "", errno);
    }

    /// Returns 0, or the error.
    int move_up(int folder, const std::string &inner)
    {
        const int error = errno;
        // Moving a folder writes to it, to the entry that leads to its parent.
        if (!open_folder(folder, inner))
            return errno == ENOTDIR ? error : errno;
        for (;;) {
            const std::string next = std::to_string(next_++);
            if (renameat(folder, inner.c_str(), top_, next.c_str()) == 0) {
                has_moved_ = true;
                return 0;
            }
            // A folder replaces one that is empty, and nothing else.
            if (errno != EEXIST && errno != ENOTEMPTY && errno != ENOTDIR)
                return errno;
        }
    }

    void leave(const std::string &name, const std::string &inner, int error)
    {
        is_left_.insert(name);
        left_.push_back(path_ + "/" + name + inner + ": " + reason(error));
    }

    int top_;
    const std::string &path_;
    unsigned long next_ = 0;
    bool has_moved_ = false;
    std::set<std::string> is_left_;
    std::vector<std::string> left_;
};

} // namespace

std::vector<std::string> remove_tree(const std::string &path)
{
    if (unlink(path.c_str()) == 0 || errno == ENOENT)
        return {};
    const int error = errno;
    const Fd folder = open_folder(AT_FDCWD, path);
    if (!folder)
        return {path + ": " + reason(errno == ENOTDIR ? error : errno)};
    std::vector<std::string> left = Emptying(folder.get(), path).run();
    if (rmdir(path.c_str()) != 0 && left.empty())
        left.push_back(path + ": " + reason(errno));
    return left;
}

} // namespace sandbox
