#include "side_files.h"

#include "files/fingerprint.h"
#include "pvr_gdbus_generated.h"
#include "pvr_service_api.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {
namespace {

using benchmark::State;

constexpr std::size_t older_size = 12048;
constexpr std::size_t block_size = 1000;
constexpr int blocks = pvr::most_fingerprints;

void check(bool succeeded)
{
    if (!succeeded)
        throw std::runtime_error("a side file could not be read or written");
}

void write_file(const std::string &path, const void *content, std::size_t size)
{
    std::ofstream file(path, std::ios::binary);
    file.write(static_cast<const char *>(content), static_cast<std::streamsize>(size));
    check(static_cast<bool>(file.flush()));
}

/// The system calls of reading, as a program makes them that knows what it will find.
void read_bare(const char *path, void *to, std::size_t size)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    flock(file, LOCK_EX);
    check(pread(file, to, size, 0) == static_cast<ssize_t>(size));
    flock(file, LOCK_UN);
    close(file);
}

Group reading(const std::string &name, const std::string &path, std::size_t size, std::function<void()> library)
{
    const auto bare = [path, size](State &state) {
        place_client(Placement::one_cpu);
        std::array<char, older_size> bytes;
        for ([[maybe_unused]] auto _ : state) {
            read_bare(path.c_str(), bytes.data(), size);
            benchmark::DoNotOptimize(bytes);
        }
    };
    const auto of_library = [library = std::move(library)](State &state) {
        place_client(Placement::one_cpu);
        for ([[maybe_unused]] auto _ : state)
            library();
    };
    return {{name + "/library", of_library, 200}, {name + "/bare", bare, 200}};
}

} // namespace

SideFiles::SideFiles()
    : folder_("/dev/shm/pvr-bench-" + std::to_string(getpid())), current_(folder_ + "/current.inf"),
      older_(folder_ + "/older.inf"), fingerprints_(folder_ + "/recording.sas"), probe_(folder_ + "/current.tmp")
{
    std::filesystem::create_directory(folder_);
    pvr_file_info_s info{};
    info.record_complete = 1; // or the service would be asked
    std::strcpy(info.programe_title, "a title");
    write_file(current(), &info, sizeof info);

    std::array<char, older_size> older_image{};
    older_image[1] = 'a';   // a channel name
    older_image[792] = 'a'; // and a title
    write_file(older(), older_image.data(), older_image.size());

    pvr::FingerprintHeader header{};
    header.count = blocks;
    for (int i = 0; i < blocks; ++i) {
        header.recTime[i] = i;
        header.bufSize[i] = block_size;
        header.offset[i] = static_cast<std::uint32_t>(sizeof header + static_cast<std::size_t>(i) * block_size);
    }
    std::string content(reinterpret_cast<const char *>(&header), sizeof header);
    content.append(blocks * block_size, 'b');
    write_file(fingerprints(), content.data(), content.size());
}

SideFiles::~SideFiles() { std::filesystem::remove_all(folder_); }

void SideFiles::read_current() const
{
    pvr_file_info_s info;
    check(svc_pvr_get_pvr_file_info(current().c_str(), &info) == PS_SUCCESS);
    benchmark::DoNotOptimize(info);
}

void SideFiles::read_older() const
{
    pvr_file_info_s info;
    check(svc_pvr_get_pvr_file_info(older().c_str(), &info) == PS_SUCCESS && info.channel_name[0] == 'a');
}

void SideFiles::read_fingerprint() const
{
    std::array<char, block_size> block;
    int size = 0;
    check(svc_pvr_read_sas_file(fingerprints().c_str(), blocks - 1, &size, block.data()) == PS_SUCCESS);
    benchmark::DoNotOptimize(block);
}

Group reading_current(const SideFiles &files)
{
    return reading("files/current", files.current(), sizeof(pvr_file_info_s), [&files] { files.read_current(); });
}

Group reading_older(const SideFiles &files)
{
    return reading("files/older", files.older(), older_size, [&files] { files.read_older(); });
}

Group finding_fingerprint(const SideFiles &files)
{
    const auto library = [&files](State &state) {
        place_client(Placement::one_cpu);
        for ([[maybe_unused]] auto _ : state)
            files.read_fingerprint();
    };
    const auto bare = [path = files.fingerprints()](State &state) {
        place_client(Placement::one_cpu);
        std::array<char, sizeof(pvr::FingerprintHeader)> header;
        std::array<char, block_size> block;
        constexpr off_t offset = sizeof header + (blocks - 1) * block_size;
        for ([[maybe_unused]] auto _ : state) {
            const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
            struct stat status {};
            check(fstat(file, &status) == 0 && S_ISREG(status.st_mode));
            flock(file, LOCK_EX);
            check(pread(file, header.data(), header.size(), 0) == static_cast<ssize_t>(header.size()));
            check(pread(file, block.data(), block.size(), offset) == static_cast<ssize_t>(block.size()));
            flock(file, LOCK_UN);
            close(file);
            benchmark::DoNotOptimize(block);
        }
    };
    return {{"files/fingerprint/library", library, 200}, {"files/fingerprint/bare", bare, 200}};
}

Group writing(const SideFiles &files, Callers &callers)
{
    const auto library = [&](State &state) {
        callers.prepare(Placement::one_cpu);
        pvr_file_info_s info{};
        info.record_complete = 1;
        for ([[maybe_unused]] auto _ : state)
            check(svc_pvr_set_pvr_file_info_ex(files.current().c_str(), &info) == PS_SUCCESS);
    };
    const auto bare = [&](State &state) {
        callers.prepare(Placement::one_cpu);
        pvr_file_info_s info{};
        info.record_complete = 1;
        const std::string path = files.current(), probe = files.probe();
        for ([[maybe_unused]] auto _ : state) {
            int result = 0;
            check(org_vexan_tv_pvr_call_set_pvr_file_info_sync(reinterpret_cast<OrgVexanTvPvr *>(callers.bare()),
                                                               path.c_str(), "", 1, &result, nullptr,
                                                               nullptr) != FALSE);
            close(open(probe.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
            unlink(probe.c_str());
            const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
            flock(file, LOCK_EX);
            check(pwrite(file, &info, sizeof info, 0) == sizeof info);
            flock(file, LOCK_UN);
            close(file);
        }
    };
    return {{"files/write/library", library, 30}, {"files/write/bare", bare, 30}};
}

} // namespace bench
