// What loading the library costs an application that has GLib loaded: the time that dlopen takes, and the pages that
// become the process's own. Each is measured in a process of its own, as a library is loaded but once in one.
#include "rounds.h"

#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace bench;
using benchmark::State;
using Clock = std::chrono::steady_clock;

struct Loaded {
    double nanoseconds;
    double dirty_bytes;
};

/// The private dirty memory of what is mapped from a file, in bytes.
double dirty_bytes_of(const std::string &file)
{
    std::ifstream maps("/proc/self/smaps");
    long kilobytes = 0;
    bool is_inside = false;
    for (std::string line; std::getline(maps, line);) {
        long of_mapping = 0;
        if (line.find('-') < line.find(' ')) // an address range begins a mapping
            is_inside = line.ends_with(file);
        else if (is_inside && std::sscanf(line.c_str(), "Private_Dirty: %ld kB", &of_mapping) == 1)
            kilobytes += of_mapping;
    }
    return 1024.0 * static_cast<double>(kilobytes);
}

/// Nothing when the library cannot be loaded; says why.
std::optional<Loaded> load(const char *library)
{
    const Clock::time_point before = Clock::now();
    if (dlopen(library, RTLD_NOW) == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return {};
    }
    const std::chrono::duration<double, std::nano> elapsed = Clock::now() - before;
    const std::string path(library);
    return Loaded{elapsed.count(), dirty_bytes_of(path.substr(path.rfind('/')))};
}

std::optional<Loaded> load_in_a_child(const char *library)
{
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        const std::optional<Loaded> loaded = load(library);
        const bool is_told = loaded && write(ends[1], &*loaded, sizeof *loaded) == sizeof *loaded;
        _exit(is_told ? 0 : 1);
    }
    close(ends[1]);
    Loaded loaded;
    const bool is_told = child > 0 && read(ends[0], &loaded, sizeof loaded) == sizeof loaded;
    close(ends[0]);
    if (child > 0)
        waitpid(child, nullptr, 0);
    return is_told ? std::optional(loaded) : std::nullopt;
}

/// One process; tells Value of it under the given name.
template <auto Value>
void tell(State &state, const char *counter, const char *library)
{
    for ([[maybe_unused]] auto _ : state) {
        if (const std::optional<Loaded> loaded = load_in_a_child(library))
            state.counters[counter] = (*loaded).*Value;
        else
            state.SkipWithError("not loaded");
    }
}

void load_library(State &state) { tell<&Loaded::nanoseconds>(state, "elapsed_ns", PVR_LIBRARY); }
void load_minimal(State &state) { tell<&Loaded::nanoseconds>(state, "elapsed_ns", PVR_MINIMAL_LIBRARY); }
void load_dirty(State &state) { tell<&Loaded::dirty_bytes>(state, "bytes", PVR_LIBRARY); }

/// Pages of a file that was just made are dirty until they are on the disk, whoever maps them.
bool write_back(const char *file)
{
    const int descriptor = open(file, O_RDONLY);
    const bool is_done = descriptor >= 0 && fsync(descriptor) == 0;
    close(descriptor);
    return is_done;
}

} // namespace

int main(int argc, char **argv)
{
    const Options options = parse(argc, argv, 300);
    if (!write_back(PVR_LIBRARY)) {
        std::perror(PVR_LIBRARY);
        return 2;
    }
    if (dlopen("libgio-2.0.so.0", RTLD_NOW) == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    return run_rounds(
        {{{"load/library", load_library, 1}, {"load/minimal", load_minimal, 1}}, {{"load/dirty", load_dirty, 1}}},
        options);
}
