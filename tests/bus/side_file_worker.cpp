// One of several processes that use the same side files at the same time.
//
//   side_file_worker write-blocks RECORDING NUMBER COUNT     files COUNT blocks under times of its own
//   side_file_worker write-info RECORDING NUMBER COUNT       writes records all of whose bytes are NUMBER
//   side_file_worker read-info RECORDING NUMBER COUNT        reads records, all of whose bytes must be the same
//
// Says "ready", then waits for a line on its standard input, then works. Status 1 and a line when something is wrong.
#include "pvr_service_api.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr std::size_t first_free_byte = 2; // behind the version, which the library stamps

bool write_block(const char *recording, int number, int round)
{
    const std::string block(static_cast<std::size_t>(number) * 100, static_cast<char>('a' + number));
    return svc_pvr_write_sas_file(recording, number * 1000LL + round, static_cast<int>(block.size()), block.data()) ==
           0;
}

bool write_info(const char *recording, int number, int)
{
    pvr_file_info_s info;
    std::memset(&info, number, sizeof info);
    return svc_pvr_set_pvr_file_info_ex(recording, &info) == 0;
}

bool read_info(const char *recording, int, int)
{
    pvr_file_info_s info;
    if (svc_pvr_get_pvr_file_info(recording, &info) != 0)
        return false;
    const auto *bytes = reinterpret_cast<const unsigned char *>(&info);
    return std::all_of(bytes + first_free_byte, bytes + sizeof info,
                       [&](unsigned char byte) { return byte == bytes[first_free_byte]; });
}

struct Work {
    const char *name;
    bool (*round)(const char *recording, int number, int round);
};
constexpr Work works[] = {{"write-blocks", write_block}, {"write-info", write_info}, {"read-info", read_info}};

} // namespace

int main(int count, char **arguments)
{
    const auto *const work = std::find_if(std::begin(works), std::end(works), [&](const Work &one) {
        return count == 5 && std::strcmp(one.name, arguments[1]) == 0;
    });
    if (work == std::end(works))
        return 2;
    const int number = std::atoi(arguments[3]);
    svc_pvr_service_init();
    std::puts("ready");
    std::fflush(stdout);
    std::getchar();
    for (int round = 0; round < std::atoi(arguments[4]); ++round)
        if (!work->round(arguments[2], number, round)) {
            std::printf("%s %d failed in round %d\n", work->name, number, round);
            return 1;
        }
    return 0;
}
