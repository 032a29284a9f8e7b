// Logs what its arguments say, for a test that looks at what became of it. The stand-in reads its
// settings when it is loaded, so each case is a process of its own.
//
//   write_log lines                        one line per priority, 2 to 7; prints what each returned
//   write_log many COUNT LENGTH CHARACTER  COUNT lines of LENGTH characters
//   write_log text TEXT                    one line, at error
#include <cstdio>
#include <dlog.h>
#include <string>
#include <string_view>

int main(int argc, char **argv)
{
    const std::string_view what = argc > 1 ? argv[1] : "";
    if (what == "lines" && argc == 2) {
        for (int priority = 2; priority <= 7; ++priority)
            std::printf("%d ", __dlog_print(0, priority, "TAG", "priority %d\n", priority));
        std::printf("\n");
    } else if (what == "many" && argc == 5) {
        const std::string text(std::stoul(argv[3]), argv[4][0]);
        for (int count = std::stoi(argv[2]); count > 0; --count)
            __dlog_print(0, 6, "TAG", "[%s]\n", text.c_str());
    } else if (what == "text" && argc == 3) {
        __dlog_print(0, 6, "TAG", "%s\n", argv[2]);
    } else {
        std::fprintf(stderr, "usage: write_log lines | many COUNT LENGTH CHARACTER | text TEXT\n");
        return 2;
    }
    return 0;
}
