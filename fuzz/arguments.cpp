// The command line of pvrctl, of any words. What it chooses is not done.
#include "command_line.h"
#include "support/check.h"
#include "support/input.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

using namespace fuzz;

namespace {

/// The words, each in memory of its own size, and the program's name before them. NUL or a line end is between two.
class Words {
public:
    explicit Words(Bytes bytes)
    {
        add("pvrctl");
        const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find_first_of(std::string_view("\0\n", 2), begin), text.size());
            add(text.substr(begin, end - begin));
            begin = end + 1;
        }
        for (const auto &word : words_)
            pointers_.push_back(word.get());
        pointers_.push_back(nullptr);
    }

    int count() const { return static_cast<int>(words_.size()); }
    char **pointers() { return pointers_.data(); }

private:
    void add(std::string_view word)
    {
        auto copy = std::make_unique<char[]>(word.size() + 1);
        word.copy(copy.get(), word.size());
        words_.push_back(std::move(copy));
    }

    std::vector<std::unique_ptr<char[]>> words_;
    std::vector<char *> pointers_;
};

int lowest_free_descriptor()
{
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

/// While a line is read. libFuzzer opens, writes and removes files of its own in between.
class Reading {
public:
    Reading() { is_now = true; }
    ~Reading() { is_now = false; }
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    static inline bool is_now = false;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // Help is printed; what libFuzzer says goes to standard error.
    check(std::freopen("/dev/null", "w", stdout) != nullptr, "there is somewhere to print to");
    return 0;
}

extern "C" const char *__asan_default_options() { return "quarantine_size_mb=16"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Words words({data, size});
    const int next = lowest_free_descriptor();
    pvrctl::Output output;
    try {
        const Reading reading;
        pvrctl::CommandLine line;
        static_cast<void>(line.action(output, words.count(), words.pointers()));
    } catch (const pvrctl::Failure &failure) {
        check(failure.code() == pvrctl::ExitCode::usage, "a line that makes no sense is wrong usage, and nothing else");
        check(!std::string_view(failure.what()).empty(), "and it is said why");
    }
    check(lowest_free_descriptor() == next, "reading a line leaves nothing open");
    return 0;
}

// ---- What reading a line has no business with: the linker puts these in its place (--wrap).

namespace {

/// What libFuzzer calls is done; what is called while a line is read should not have been.
template <typename Function, typename... Arguments>
auto in_between(Function function, Arguments... arguments)
{
    check(!Reading::is_now, "reading a line opens no file, changes nothing and starts no program");
    return function(arguments...);
}

} // namespace

extern "C" {
int __real_open(const char *, int, mode_t);
int __real_creat(const char *, mode_t);
int __real_unlink(const char *);
int __real_rename(const char *, const char *);
int __real_mkdir(const char *, mode_t);
int __real_fork();
int __real_execvp(const char *, char *const *);
[[noreturn]] void __real_exit(int);

int __wrap_open(const char *path, int flags, mode_t mode) { return in_between(__real_open, path, flags, mode); }
int __wrap_creat(const char *path, mode_t mode) { return in_between(__real_creat, path, mode); }
int __wrap_unlink(const char *path) { return in_between(__real_unlink, path); }
int __wrap_rename(const char *from, const char *to) { return in_between(__real_rename, from, to); }
int __wrap_mkdir(const char *path, mode_t mode) { return in_between(__real_mkdir, path, mode); }
int __wrap_fork() { return in_between(__real_fork); }
int __wrap_execvp(const char *path, char *const *words) { return in_between(__real_execvp, path, words); }

[[noreturn]] void __wrap_exit(int status)
{
    in_between(__real_exit, status);
    std::abort(); // not reached
}
}
