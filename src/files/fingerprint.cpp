// The fingerprint file beside a recording: up to 300 blocks of bytes, each under the time at which it was taken.
#include "files/fingerprint.h"

#include "client/call.h"
#include "files/locked_file.h"
#include "files/paths.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <iterator>
#include <limits>
#include <optional>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace pvr;

namespace {

constexpr std::uint32_t layout_version = 20150825;
constexpr int failed = -1;

int refused(Here) noexcept { return failed; }

bool has_count(const FingerprintHeader &header, int most) noexcept { return header.count >= 1 && header.count <= most; }

/// A file that is locked and has a header. Another process may have made it this moment and not written it yet, so
/// an empty one is looked at again for a while.
enum class Opened { whole, without_header, not_at_all };

template <typename Open>
Opened open_locked(Open open, LockedFile &file, FingerprintHeader &header) noexcept
{
    using namespace std::chrono_literals;
    std::optional<std::chrono::steady_clock::time_point> deadline;
    for (;;) {
        file = open();
        if (!file || !file.lock())
            return Opened::not_at_all;
        const std::size_t size = file.read(&header, sizeof header, 0);
        if (size == sizeof header) {
            turn_little_endian(header);
            return Opened::whole;
        }
        const auto now = std::chrono::steady_clock::now();
        if (!deadline)
            deadline = now + 1s;
        if (size > 0 || now >= *deadline)
            return Opened::without_header;
        file.close();
        std::this_thread::sleep_for(5ms);
    }
}

/// Fills a file that was made just now, in one write.
int write_first(LockedFile file, std::int64_t time, int size, const void *block) noexcept
{
    if (!file.lock())
        return failed;
    FingerprintHeader header{};
    header.version = layout_version;
    header.count = 1;
    header.recTime[0] = time;
    header.bufSize[0] = static_cast<std::uint32_t>(size);
    header.offset[0] = sizeof header;
    turn_little_endian(header);

    const std::size_t arrived = file.write(&header, sizeof header, block, static_cast<std::size_t>(size));
    if (arrived < sizeof header)
        return refused(PLAIN_FAILURE("write header data error\n"));
    if (arrived < sizeof header + static_cast<std::size_t>(size) || !file.close())
        return refused(PLAIN_FAILURE("write first sas data error\n"));
    return PS_SUCCESS;
}

/// Files a block behind the others.
int append(const char *path, std::int64_t time, int size, const void *block) noexcept
{
    PLAIN_INFO("the sas file exist.\n");
    LockedFile file;
    FingerprintHeader header{};
    switch (open_locked([path] { return LockedFile::to_update(path); }, file, header)) {
    case Opened::not_at_all:
        return failed;
    case Opened::without_header:
        return refused(PLAIN_FAILURE("read header data error\n"));
    case Opened::whole:
        break;
    }
    if (!has_count(header, most_fingerprints - 1))
        return refused(PLAIN_FAILURE("Invalid finger print count: %d\n", header.count));

    const auto next = static_cast<std::size_t>(header.count);
    // Deliberately computed rather than taken from the file's end: the two agree while the file holds nothing else.
    const std::uint64_t offset = std::uint64_t{header.offset[next - 1]} + header.bufSize[next - 1];
    if (offset > std::numeric_limits<std::uint32_t>::max())
        return refused(PLAIN_FAILURE("the file is full: a block at %" PRIu64 " could not be found again\n", offset));
    header.recTime[next] = time;
    header.bufSize[next] = static_cast<std::uint32_t>(size);
    header.offset[next] = static_cast<std::uint32_t>(offset);
    ++header.count;
    PLAIN_INFO("recTime: %lld, bufSize: %d, offset: %d\n", static_cast<long long>(time), size,
               static_cast<int>(header.offset[next]));

    turn_little_endian(header);
    if (file.seek_to_begin() != 0 || file.write(&header, sizeof header) != sizeof header)
        return refused(PLAIN_FAILURE("write header data error\n"));
    if (file.seek_to_end() != 0 ||
        file.write(block, static_cast<std::size_t>(size)) != static_cast<std::size_t>(size) || !file.close())
        return refused(PLAIN_FAILURE("write new sas data error\n"));
    return PS_SUCCESS;
}

int store(const char *path, std::int64_t time, int size, const void *block) noexcept
{
    if (access(path, F_OK) != 0) {
        PLAIN_INFO("the file does not exists, Create it firstly.\n");
        if (LockedFile file = LockedFile::to_create(path))
            return write_first(std::move(file), time, size, block);
        if (errno != EEXIST)
            return failed;
        // somebody else was quicker
    }
    return append(path, time, size, block);
}

} // namespace

int svc_pvr_write_sas_file(const char *file_path, long long recTime, int bufSize, const void *buf) noexcept
{
    const Here here = ENTRY(" recTime[%lld] 2016-01-06\n", recTime);
    if (file_path == nullptr || bufSize < 0 || (bufSize > 0 && buf == nullptr))
        return failed;
    const SidePath path = SidePath::with_extension(file_path, "sas");
    if (!path)
        return failed;
    PLAIN_INFO("file path: %s\n", path.c_str());
    if (store(path.c_str(), recTime, bufSize, buf) != PS_SUCCESS)
        return failed;
    PLAIN_INFO("Finish write...\n");
    INFO(" someione\n");

    // The block is kept whatever the service says.
    const Call call(here);
    if (!call)
        return call.code();
    const auto time = static_cast<int>(static_cast<std::uint32_t>(recTime));
    auto answer = call.remote(wire::set_fp_rec_time, file_path, time, service_result);
    if (answer)
        PLAIN_INFO("org_vexan_tv_pvr_call_set_fp_rec_time_sync is called, nRecTime[%d]\n", time);
    return answer.transport_rule();
}

int svc_pvr_read_sas_file(const char *file_path, long long recTime, int *bufSize, void *buf) noexcept
{
    ENTRY(" recTime[%lld]\n", recTime);
    if (file_path == nullptr || bufSize == nullptr)
        return failed;
    const SidePath path = SidePath::with_extension(file_path, "sas");
    if (!path)
        return failed;
    PLAIN_INFO("file path: %s\n", path.c_str());

    LockedFile file;
    FingerprintHeader header{};
    switch (open_locked([&path] { return LockedFile::to_read(path.c_str()); }, file, header)) {
    case Opened::not_at_all:
        return access(path.c_str(), F_OK) != 0 ? refused(PLAIN_FAILURE("No such sas file.\n")) : failed;
    case Opened::without_header:
        return refused(PLAIN_FAILURE("read header data error\n"));
    case Opened::whole:
        break;
    }
    if (!has_count(header, most_fingerprints))
        return refused(PLAIN_FAILURE("Invalid finger print count: %d\n", header.count));

    const std::int64_t *const times_end = header.recTime + header.count;
    const std::int64_t *const found = std::find(std::cbegin(header.recTime), times_end, std::int64_t{recTime});
    if (found == times_end)
        return refused(PLAIN_FAILURE("No matched time.\n"));
    const auto index = found - header.recTime;
    const std::uint32_t size = header.bufSize[index];
    const std::uint32_t offset = header.offset[index];
    *bufSize = static_cast<int>(size);
    PLAIN_INFO("bufSize: %d, offset: %ld\n", *bufSize, static_cast<long>(offset));
    if (size > 0) {
        const std::int64_t end = std::int64_t{offset} + size;
        const bool is_inside =
            size <= std::numeric_limits<int>::max() && (end <= file.size_when_opened() || end <= file.size());
        if (!is_inside || (buf != nullptr && file.read(buf, size, offset) != size))
            return refused(PLAIN_FAILURE("read buffer data error\n"));
    }
    PLAIN_INFO("Finish Read...\n");
    return PS_SUCCESS;
}
