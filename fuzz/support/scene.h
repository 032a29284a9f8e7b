// What the targets that read a file have in common: the file's content, and the disk that it lies on.
#pragma once

#include "support/input.h"
#include "support/machine.h"
#include "support/side_file.h"

#include <algorithm>
#include <string>

namespace fuzz {

enum class Argument { good, refused, without_output };

struct CallOf {
    Argument argument;
    const char *path;
    const char *file; ///< what the reader reads; null when the path is cut, and so names none
};

/// Names "r.srf" in 255 characters, which is the most that a path can have.
const std::string longest_path = [] {
    std::string path;
    while (path.size() < 250)
        path += "./";
    return path + "r.srf";
}();
/// The same in more.
const std::string cut_path = "./" + longest_path;

inline constexpr long as_it_is = -1;

struct Scene {
    /// Takes the disk, a choice of sizes and the content from the input, and sets the machine accordingly.
    template <std::size_t count>
    Scene(Input &input, const long (&sizes)[count])
    {
        static constexpr Disk disks[] = {Disk::whole, Disk::piecemeal, Disk::interrupted, Disk::failing};
        machine.disk = input.choice(disks);
        const std::size_t parameter = input.byte();
        const long size = input.choice(sizes);
        content = sized(input.rest(), size);
        machine.piece = 64 * (parameter + 1);
        machine.readable = content.size() * parameter / 255;
    }

    /// What can be read of the content, or of another that lies on the same disk.
    Bytes readable(Bytes all) const noexcept
    {
        return machine.disk == Disk::failing ? all.first(std::min(all.size(), machine.readable)) : all;
    }
    Bytes readable() const noexcept { return readable(content); }

    Bytes half() const noexcept { return Bytes(content).first(content.size() / 2); }

    std::vector<std::uint8_t> content;
};

} // namespace fuzz
