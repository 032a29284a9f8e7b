#include "folder.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "bus.h"
#include "messages.h"
#include "remove_tree.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

constexpr char socket_name[] = "/bus";

void check_length(const std::string &path, const std::string &remedy)
{
    if (path.size() + sizeof socket_name - 1 > longest_socket_path)
        throw Failure("the path " + path + " is too long: the bus's socket in it may have " +
                      std::to_string(longest_socket_path) + " bytes; " + remedy);
}

fs::path absolute(const fs::path &path)
{
    std::error_code error;
    fs::path whole = fs::absolute(path, error);
    if (error)
        throw system_failure("the folder " + path.string() + " has no absolute path", error.value());
    return whole;
}

std::string make_temporary()
{
    const char *set = std::getenv("TMPDIR");
    const fs::path parent = absolute(set != nullptr && *set != '\0' ? set : "/tmp");
    std::string path = parent / "pvr-sandbox-XXXXXX";
    check_length(path, "set TMPDIR to a folder with a shorter one");
    if (mkdtemp(path.data()) == nullptr)
        throw system_failure("no temporary folder can be made in " + parent.string() +
                             " (TMPDIR says where it is made)");
    return path;
}

std::string make_given(const fs::path &path)
{
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    if (error)
        throw system_failure("the folder " + path.string() + " cannot be reached", error.value());
    check_length(real, "choose a folder with a shorter one");
    // What goes wrong here goes wrong again below.
    fs::create_directories(real.parent_path(), error);
    if (mkdir(real.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        throw system_failure("the folder " + path.string() + " cannot be made");
    if (!fs::is_directory(real, error))
        throw system_failure(path.string() + " is no folder", ENOTDIR);
    return real;
}

/// Without the slash behind the last name, which would make the name empty.
fs::path trimmed(const std::string &path)
{
    const auto end = path.find_last_not_of('/');
    return absolute(end == std::string::npos ? path : path.substr(0, end + 1));
}

} // namespace

Folder::Folder(const std::string &path, Announce announce)
    : path_(path.empty() ? make_temporary() : make_given(trimmed(path))), is_temporary_(path.empty()),
      announce_(std::move(announce))
{
    if (is_temporary_) {
        owned_.push_back(path_);
        announce_(path_);
    }
}

void Folder::own(const std::string &path)
{
    if (is_temporary_)
        return;
    owned_.push_back(path);
    announce_(path);
}

std::string Folder::claim(const std::string &name)
{
    std::string path = file(name);
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0)
        throw Failure(path + " is there already: another sandbox uses this folder, or left it behind");
    own(path);
    return path;
}

Fd Folder::make(const std::string &name)
{
    const std::string path = file(name);
    Fd made(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!made && errno == EEXIST)
        throw Failure(path + " is there already: another sandbox uses this folder, or left it behind");
    if (!made)
        throw system_failure(path + " cannot be made");
    own(path);
    return made;
}

std::string Folder::write(const std::string &name, const std::string &text)
{
    const Fd made = make(name);
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t written = ::write(made.get(), text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR)
            throw system_failure(file(name) + " cannot be written");
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return file(name);
}

void Folder::remove()
{
    remove_owned(owned_);
    owned_.clear();
}

void remove_owned(const std::vector<std::string> &paths)
{
    for (const std::string &path : paths) {
        for (const std::string &left : remove_tree(path))
            say("cannot remove " + left);
    }
}

} // namespace sandbox
