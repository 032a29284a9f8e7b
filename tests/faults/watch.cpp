#include "faults/watch.h"

#include <link.h>
#include <string_view>
#include <vector>

namespace faults {
namespace {

constinit thread_local bool is_watching = false;

struct State {
    std::vector<Fault> faults;
    const Service *service = nullptr;
    Counts counts{};
    int struck = 0;
};
constinit State state; // of the one thread that watches

struct Range {
    ElfW(Addr) begin = 0;
    ElfW(Addr) end = 0;
};

/// Where the library's code is.
Range range_of_library()
{
    Range range;
    dl_iterate_phdr(
        [](dl_phdr_info *object, std::size_t, void *found) {
            if (std::string_view(object->dlpi_name).find("/libpvr-service-api.so") == std::string_view::npos)
                return 0;
            for (int i = 0; i < object->dlpi_phnum; ++i) {
                const ElfW(Phdr) &segment = object->dlpi_phdr[i];
                if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0) {
                    const ElfW(Addr) begin = object->dlpi_addr + segment.p_vaddr;
                    *static_cast<Range *>(found) = {begin, begin + segment.p_memsz};
                }
            }
            return 1;
        },
        &range);
    return range;
}

bool is_library(const void *caller) noexcept
{
    static const Range library = range_of_library();
    const auto address = reinterpret_cast<ElfW(Addr)>(caller);
    return address >= library.begin && address < library.end;
}

} // namespace

std::string to_text(const Fault &fault)
{
    return std::string(name_of(fault.way->kind)) + " " + fault.way->name + ", call " + std::to_string(fault.number) +
           (fault.lasts ? " and all after" : "");
}

bool is_watched(const void *caller) noexcept { return is_watching && is_library(caller); }

std::optional<Strike> strike(Kind kind, const void *caller) noexcept
{
    if (!is_watched(caller))
        return {};
    const int number = ++of(state.counts, kind);
    for (const Fault &fault : state.faults) {
        if (fault.way->kind != kind || (number != fault.number && !(fault.lasts && number > fault.number)))
            continue;
        ++state.struck;
        const bool is_full = fault.way->effect == Effect::fills_up && number > fault.number;
        return Strike{is_full ? Effect::fails : fault.way->effect, fault.way->error};
    }
    return {};
}

const Service &service() noexcept { return *state.service; }

Watch::Watch(std::span<const Fault> faults, const Service &service)
{
    state = {{faults.begin(), faults.end()}, &service, {}, 0};
    is_watching = true;
}

Watch::~Watch() { is_watching = false; }

const Counts &Watch::counts() const { return state.counts; }

int Watch::struck() const { return state.struck; }

} // namespace faults
