#include "support/side_file.h"

#include "support/check.h"
#include "support/machine.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace fuzz {
namespace {

constexpr const char *aside = "aside";

/// For what the target itself needs; nothing of it is the reader's fault.
void need(bool holds, const char *what) noexcept
{
    if (holds)
        return;
    std::perror(what);
    std::abort();
}

mode_t kind_of(const std::string &name) noexcept
{
    struct stat status {};
    return lstat(name.c_str(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

/// In memory where there is such a folder: a file is written for each execution.
std::string new_folder()
{
    const char *const chosen = std::getenv("TMPDIR");
    std::string path = chosen != nullptr ? chosen : access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    path += "/pvr-fuzz.XXXXXX";
    need(mkdtemp(path.data()) != nullptr, path.c_str());
    return path;
}

/// Removes the folder once this process has ended, in whatever way: a finding ends it at once.
FILE *keeper_of(const std::string &path)
{
    FILE *const keeper = popen(("trap '' INT TERM HUP; read -r _; rm -rf '" + path + "'").c_str(), "we");
    need(keeper != nullptr, path.c_str());
    return keeper;
}

void write_all(int descriptor, Bytes content, long hole)
{
    need(pwrite(descriptor, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()) &&
             ftruncate(descriptor, static_cast<off_t>(content.size()) + hole) == 0,
         "writing the file");
}

std::size_t entries_here()
{
    DIR *const folder = opendir(".");
    need(folder != nullptr, "the folder");
    std::size_t count = 0;
    while (readdir(folder) != nullptr)
        ++count;
    closedir(folder);
    return count - 2; // itself and the one above
}

int lowest_free_descriptor(int any)
{
    const int lowest = dup(any);
    close(lowest);
    return lowest;
}

} // namespace

bool can_be_opened(Place place) noexcept { return place < Place::nothing; }

SideFile::SideFile()
    : path_(new_folder()), keeper_(keeper_of(path_)), home_(open(".", O_PATH | O_CLOEXEC)),
      folder_(open(path_.c_str(), O_PATH | O_CLOEXEC)),
      file_(openat(folder_, aside, O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
      holder_(openat(folder_, aside, O_RDWR | O_CLOEXEC)), name_(aside)
{
    need(home_ >= 0 && folder_ >= 0 && file_ >= 0 && holder_ >= 0, path_.c_str());
}

SideFile::~SideFile()
{
    for (const int descriptor : {home_, folder_, file_, holder_})
        close(descriptor);
    pclose(keeper_);
}

void SideFile::put(const std::string &name, Place place, Bytes content, long hole)
{
    need(fchdir(folder_) == 0, "the folder");
    clear();
    place_ = name;
    hole_ = hole;
    move_to(can_be_opened(place) && place != Place::link ? name : aside);
    write(place == Place::written_late ? Bytes() : content);

    const char *const path = name.c_str();
    int failure = 0;
    switch (place) {
    case Place::link:
        failure = symlink(aside, path);
        break;
    case Place::locked:
        failure = flock(holder_, LOCK_EX | LOCK_NB);
        break;
    case Place::lock_given_up:
        failure = flock(holder_, LOCK_EX | LOCK_NB);
        machine.when_slept([this] { flock(holder_, LOCK_UN); });
        break;
    case Place::written_late:
        machine.when_slept([this, late = std::vector<std::uint8_t>(content.begin(), content.end())] { write(late); });
        break;
    case Place::folder:
        failure = mkdir(path, 0700);
        break;
    case Place::dangling_link:
        failure = symlink("nowhere", path);
        break;
    case Place::pipe:
        failure = mkfifo(path, 0600);
        break;
    case Place::device:
        failure = symlink("/dev/null", path);
        break;
    case Place::file:
    case Place::nothing:
        break;
    }
    need(failure == 0, path);
    kind_ = kind_of(name);
    next_descriptor_ = lowest_free_descriptor(folder_);
}

void SideFile::add(const std::string &name, Bytes content)
{
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    need(descriptor >= 0, name.c_str());
    added_.push_back(name);
    write_all(descriptor, content, 0);
    close(descriptor);
}

void SideFile::write(Bytes content)
{
    content_.assign(content.begin(), content.end());
    write_all(file_, content, hole_);
}

void SideFile::appear()
{
    move_to(place_);
    kind_ = kind_of(place_);
}

void SideFile::check_unchanged()
{
    check(lowest_free_descriptor(folder_) == next_descriptor_, "a reader closes what it has opened");

    flock(holder_, LOCK_UN);
    check(flock(file_, LOCK_EX | LOCK_NB) == 0 && flock(file_, LOCK_UN) == 0, "a reader leaves no lock behind");

    struct stat status {};
    need(fstat(file_, &status) == 0, "the file");
    check(status.st_size == static_cast<off_t>(content_.size()) + hole_, "a reader leaves the size of the file alone");
    Block found(content_.size());
    need(pread(file_, found.data(), found.size(), 0) == static_cast<ssize_t>(found.size()), "the file");
    check(found.is(content_), "a reader leaves the content of the file alone");

    check(kind_of(place_) == kind_, "a reader leaves alone what lies where the file should be");
    const std::size_t expected = 1 + added_.size() + (kind_ != 0 && name_ != place_ ? 1 : 0);
    check(entries_here() == expected, "a reader makes and removes no files");
    need(fchdir(home_) == 0, "the folder");
}

void SideFile::move_to(const std::string &name)
{
    if (name == name_)
        return;
    need(rename(name_.c_str(), name.c_str()) == 0, name.c_str());
    name_ = name;
}

void SideFile::clear()
{
    for (const std::string &name : added_)
        unlink(name.c_str());
    added_.clear();
    if (!place_.empty() && name_ != place_ && unlink(place_.c_str()) != 0 && errno == EISDIR)
        rmdir(place_.c_str());
}

} // namespace fuzz
