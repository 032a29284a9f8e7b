// The file that a reader reads, in a folder of the process's own: put in its place before a call, compared with what
// was put there afterwards.
#pragma once

#include "support/input.h"

#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace fuzz {

/// What lies where the reader looks for its file.
enum class Place {
    file,
    link,          ///< a symbolic link that leads to it
    locked,        ///< by somebody who does not give it up
    lock_given_up, ///< by somebody who gives it up while the reader waits
    written_late,  ///< an empty file; somebody fills it while the reader sleeps
    nothing,
    folder,
    dangling_link,
    pipe,
    device,
};

/// Whether the reader gets a file to read there.
bool can_be_opened(Place place) noexcept;

class SideFile {
public:
    SideFile();
    ~SideFile();
    SideFile(const SideFile &) = delete;
    SideFile &operator=(const SideFile &) = delete;

    /// Enters the folder and puts the file there, with a hole of so many bytes behind its content.
    void put(const std::string &name, Place place, Bytes content, long hole = 0);
    /// Adds another file, until the next put().
    void add(const std::string &name, Bytes content);

    // What somebody else does to the file while it is read.
    void write(Bytes content);
    void appear();

    /// Checks that nothing has changed but what was done here, that no lock and no descriptor was left, and leaves the
    /// folder.
    void check_unchanged();

private:
    void move_to(const std::string &name);
    void clear();

    std::string path_;
    FILE *keeper_;
    int home_, folder_;
    int file_, holder_; ///< descriptors of the file; the holder's has the lock, when somebody holds it
    std::string name_;  ///< what the file is called now
    std::string place_; ///< the name under which the reader looks for it
    std::vector<std::string> added_;
    std::vector<std::uint8_t> content_;
    long hole_ = 0;
    mode_t kind_ = 0; ///< of what lies in the place; 0 for nothing
    int next_descriptor_ = -1;
};

} // namespace fuzz
