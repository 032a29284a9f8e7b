// The files beside a recording as a command sees them: their paths, and what an info file holds byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <pvr_records.h>
#include <string>

#include "files/locked_file.h"
#include "service.h"

namespace pvrctl {

/// A recording, by a path that the library takes whole: absolute, its folder without symbolic links, in UTF-8. The name
/// stays as it was given, because the files lie beside the name and not beside what it leads to.
class RecordingPath {
public:
    /// Throws a Failure when it is none: the library would cut it, or look for something else.
    explicit RecordingPath(const std::string &path);

    const char *c_str() const noexcept { return path_.c_str(); }

    /// The file beside it with another extension, of three characters.
    std::string beside(const char *extension) const;

    /// The recording itself, also when the path is that of its info file.
    std::string recording() const;

private:
    std::string path_;
};

/// Opens a file beside a recording; with its lock, too. They throw a Failure that says why that cannot be.
pvr::LockedFile opened_beside(const std::string &path);
pvr::LockedFile locked_beside(const std::string &path);

/// An info file as it is on the disk.
struct InfoFile {
    std::string path;
    long size = 0;
    std::string bytes; ///< no more than any generation has

    /// A number of up to 8 bytes.
    std::uint64_t number(std::size_t offset, std::size_t width) const;
    /// "Vexan", "Selk" or "Ardel"; null when it is too short to be any.
    const char *generation() const;
    /// Of a generation whose layout is not that of the record.
    bool is_older() const;
    /// What a file of the current generation says.
    pvr_file_info_s record() const;
};
InfoFile read_info_file(const std::string &path);

/// Throws a Failure for what is too short to be an info file.
void check_size(const InfoFile &file);

/// What the library hands out of it. Of a recording that is not finished it asks the service.
pvr_file_info_s handed_out_record(const Service &service, const RecordingPath &path);

} // namespace pvrctl
