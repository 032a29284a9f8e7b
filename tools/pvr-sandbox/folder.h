// The folder of a sandbox: what it makes there, and that this is removed.
#pragma once

#include "fd.h"

#include <functional>
#include <string>
#include <vector>

namespace sandbox {

class Folder {
public:
    /// Hears of each path that is to be removed in the end, as soon as it is there.
    using Announce = std::function<void(const std::string &path)>;

    /// Makes a temporary folder in $TMPDIR or /tmp when the path is empty, which only its user may enter.
    /// A path that is given is made if missing, and only the sandbox's own files in it are removed.
    Folder(const std::string &path, Announce announce);

    /// Absolute, without symbolic links when it was given.
    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

    /// A path that something else makes, such as a socket. Refuses one that is there already.
    std::string claim(const std::string &name);
    /// A new file, written at its end. Refuses a name that is there already.
    Fd make(const std::string &name);
    std::string write(const std::string &name, const std::string &text);

    /// Says what cannot be removed.
    void remove();

private:
    void own(const std::string &path);

    std::string path_;
    bool is_temporary_;
    Announce announce_;
    std::vector<std::string> owned_;
};

/// Removes paths that a folder announced, and says which cannot be removed.
void remove_owned(const std::vector<std::string> &paths);

} // namespace sandbox
