// A client process: does one thing as many times as its descriptor tells it to, and tells when it is done.
#include "callers.h"
#include "side_files.h"
#include "signals.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace {

using namespace bench;

/// Serves until the other end is closed.
template <typename Call>
int serve(int descriptor, Call call)
{
    if (!call())
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    std::int32_t count = 0;
    while (read(descriptor, &count, sizeof count) == sizeof count) {
        bool succeeded = true;
        for (std::int32_t made = 0; made < count; ++made)
            succeeded &= call();
        const char done = succeeded ? 'y' : 'n';
        if (write(descriptor, &done, 1) != 1)
            return 1;
    }
    return 0;
}

int call_through_library(int descriptor) { return serve(descriptor, library_play_start); }

int call_bare(int descriptor)
{
    const pvr::OwnedProxy proxy = make_bare_proxy();
    return serve(descriptor, [&proxy] { return proxy && bare_play_start(proxy.get()); });
}

int receive_signals(int descriptor)
{
    constexpr int at_once = 100;
    svc_pvr_service_init();
    svc_pvr_register_signal_cb(on_signal, nullptr);
    return serve(descriptor, [] { return receive(at_once); });
}

int read_files(int descriptor)
{
    const SideFiles files;
    return serve(descriptor, [&files] {
        files.read_current();
        return true;
    });
}

struct Kind {
    std::string_view name;
    int (*serve)(int descriptor);
};
constexpr Kind kinds[] = {
    {"library", call_through_library}, {"bare", call_bare}, {"signals", receive_signals}, {"reading", read_files}};

} // namespace

int main(int argc, char **argv)
{
    const auto *const kind = std::ranges::find(kinds, std::string_view(argc == 3 ? argv[1] : ""), &Kind::name);
    if (kind == std::end(kinds)) {
        std::fputs("usage: pvr-bench-client library|bare|signals|reading DESCRIPTOR\n", stderr);
        return 2;
    }
    return kind->serve(std::atoi(argv[2]));
}
