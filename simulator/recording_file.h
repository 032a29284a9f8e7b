// The files of a recording that runs: the stream, which grows, and the info file beside it.
#pragma once

#include "descriptor.h"
#include "info_file.h"
#include "source.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace simulator {

class RecordingFile {
public:
    /// So much is written at a time, at most: the service answers in between.
    static constexpr std::int64_t most_at_once = std::int64_t{8} << 20;

    /// Makes both files. Throws std::system_error, with nothing left behind, also when there are such files already.
    RecordingFile(std::string path, const pvr_file_info_s &info);

    const std::string &path() const { return path_; }
    std::string info_path() const { return with_extension(path_, "inf"); }
    std::int64_t size() const { return size_; }

    /// Lets it grow towards a size as far as the source has something. False when there is more to write at once
    /// than may be. A failure of the source is a SourceFailure, one of the device a std::system_error.
    bool grow(Source &source, std::int64_t towards);

    /// Goes on under another name. Throws std::system_error.
    void move_to(const std::string &path);

    /// The end of it: the info file tells the length, and what is missing. Throws std::system_error.
    void finish(std::int64_t milliseconds, IncompleteReason reason);

    /// Removes both files.
    void remove() noexcept;

private:
    std::string path_;
    Descriptor file_;
    std::int64_t size_ = 0;
};

/// Why nothing more comes from a source.
class SourceFailure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace simulator
