#include "new_file.h"

#include "system_failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace simulator {
namespace {

/// What a file made in the ordinary way may be done with.
mode_t usual_mode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

NewFile::NewFile(std::string path) : path_(std::move(path)), temporary_(path_ + ".XXXXXX")
{
    struct stat status {};
    if (stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EEXIST;
        throw_errno(path_);
    }
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        throw_errno(path_);
}

NewFile::~NewFile()
{
    if (descriptor_ < 0)
        return;
    close(descriptor_);
    unlink(temporary_.c_str());
}

void NewFile::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            throw_errno(path_);
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

void NewFile::publish()
{
    if (fchmod(descriptor_, usual_mode()) != 0)
        throw_errno(path_);
    // Errors of delayed writing come with the close.
    if (const int descriptor = std::exchange(descriptor_, -1);
        close(descriptor) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        const int error = errno;
        unlink(temporary_.c_str());
        errno = error;
        throw_errno(path_);
    }
}

} // namespace simulator
