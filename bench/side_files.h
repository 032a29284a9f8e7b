// What the files beside a recording cost, each beside the system calls that it takes.
#pragma once

#include "callers.h"
#include "rounds.h"

#include <string>

namespace bench {

/// A recording's side files in memory, gone at the end: an info file of each kind, and a fingerprint file.
class SideFiles {
public:
    SideFiles();
    ~SideFiles();
    SideFiles(const SideFiles &) = delete;
    SideFiles &operator=(const SideFiles &) = delete;

    const std::string &current() const { return current_; }
    const std::string &older() const { return older_; }
    const std::string &fingerprints() const { return fingerprints_; }
    /// Where the probe of whether the device takes files is made.
    const std::string &probe() const { return probe_; }

    /// Fail the program when the library cannot read what it should.
    void read_current() const;
    void read_older() const;
    void read_fingerprint() const;

private:
    std::string folder_, current_, older_, fingerprints_, probe_;
};

Group reading_current(const SideFiles &files);
Group reading_older(const SideFiles &files);
Group finding_fingerprint(const SideFiles &files);
/// With the service's being told.
Group writing(const SideFiles &files, Callers &callers);

} // namespace bench
