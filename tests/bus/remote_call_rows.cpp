// What the families' rows share.
#include "bus/remote_call.h"

#include <algorithm>
#include <cstring>
#include <iterator>

std::ostream &operator<<(std::ostream &out, const RemoteCall &row) { return out << row.name; }

std::vector<RemoteCall> joined(std::vector<std::vector<RemoteCall>> groups)
{
    std::vector<RemoteCall> all;
    for (auto &group : groups)
        std::move(group.begin(), group.end(), std::back_inserter(all));
    return all;
}

std::string text_of(const char *buffer, std::size_t size) { return {buffer, strnlen(buffer, size)}; }

const std::vector<RemoteCall> &all_calls()
{
    static const std::vector<RemoteCall> rows =
        joined({channel_calls(), device_calls(), list_calls(), playback_calls(), recording_calls(),
                recording_files_calls(), recording_state_calls(), status_calls()});
    return rows;
}
