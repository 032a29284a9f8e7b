// Lists of the service, read whole.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "service.h"

namespace pvrctl {

/// Calls one of the library's functions that list something. What is listed may grow between two questions, so there
/// may have to be more of them.
template <typename T>
std::vector<T> listed(const Service &service, int (*call)(T *list, int length, int *count))
{
    constexpr int most = 65536;
    std::vector<T> list;
    for (;;) {
        int count = 0;
        const auto room = static_cast<int>(list.size());
        service.check(call(list.data(), room, &count));
        if (count <= room) {
            list.resize(static_cast<std::size_t>(std::max(count, 0)));
            return list;
        }
        if (count > most)
            throw Failure(ExitCode::failed, "the service lists " + std::to_string(count) +
                                                " elements, which are more "
                                                "than can be");
        list.assign(static_cast<std::size_t>(count), T{});
    }
}

} // namespace pvrctl
