// The files of a recording that runs: the stream, which grows, and the info file beside it.
#pragma once

#include "descriptor.h"
#include "info_file.h"
#include "playback.h"
#include "source.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace simulator {

/// The name of a timeshift's file, behind a folder's.
constexpr char timeshift_file[] = "/timeshift.tmp";
/// Of a copy that is to become a recording.
constexpr char copy_extension[] = "new";

/// How many bytes arrive in a time.
std::int64_t bytes_in(Microseconds time, int bits_per_second);

/// The stream is locked as long as this lives: whoever finds one that is not knows that it is not being written.
class RecordingFile {
public:
    /// Makes both files. Throws std::system_error, with nothing left behind, also when there are such files already.
    RecordingFile(std::string path, const pvr_file_info_s &info);

    const std::string &path() const { return path_; }
    std::string info_path() const { return with_extension(path_, "inf"); }
    std::int64_t size() const { return size_; }

    /// Lets it grow to a size, as far as the source has something. A failure of the source is a SourceFailure, one of
    /// the device a std::system_error.
    void grow(Source &source, std::int64_t towards);

    /// Gives up what lies before a place, roughly: it takes no room any longer, where the file system can do that, and
    /// reads as zeros. What lies behind it stays where it is. Throws std::system_error.
    void give_up_before(std::int64_t place);

    /// Goes on under another name, and without what lies before a place. Throws std::system_error.
    void move_to(const std::string &path, std::int64_t from = 0);

    /// The end of it: the info file tells the length, and what is missing; the stream was last changed when it ended,
    /// since 1970 UTC. Throws std::system_error.
    void finish(std::int64_t milliseconds, IncompleteReason reason, Microseconds ended);

    /// Removes both files.
    void remove() noexcept;

private:
    void move_content_to(const std::string &path, std::int64_t from);

    std::string path_;
    Descriptor file_;
    std::int64_t size_ = 0;
    std::int64_t given_up_ = 0; ///< so many bytes at the beginning
};

/// Why nothing more comes from a source.
class SourceFailure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace simulator
