// Where streams come from: the programme, files, and what commands write.
#include "source.h"

#include "support/temporary_folder.h"
#include "test_programme.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

constexpr int bit_rate = 4'000'000;

/// The first packets of the programme.
std::string stream(int packets)
{
    TestProgramme programme(bit_rate);
    std::string bytes;
    for (int i = 0; i < packets; ++i) {
        const Packet packet = programme.next();
        bytes.append(packet.begin(), packet.end());
    }
    return bytes;
}

void write_file(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

std::string read_some(Source &source, std::size_t room)
{
    std::vector<std::uint8_t> bytes(room);
    bytes.resize(source.read(bytes));
    return {bytes.begin(), bytes.end()};
}

/// Reads until this much has come.
std::string read_up_to(Source &source, std::size_t size)
{
    std::string bytes;
    while (bytes.size() < size) {
        const std::string some = read_some(source, size - bytes.size());
        if (some.empty())
            std::this_thread::sleep_for(1ms);
        bytes += some;
    }
    return bytes;
}

struct Whole {
    std::string bytes;
    int error = 0;
    std::string text; ///< of the error
};

/// Reads until no more will come.
Whole read_to_the_end(Source &source)
{
    Whole whole;
    try {
        for (;;)
            whole.bytes += read_up_to(source, packet_size);
    } catch (const std::system_error &error) {
        whole.error = error.code().value();
        whole.text = error.what();
    }
    return whole;
}

std::unique_ptr<Source> run(const std::string &command) { return open_source("exec:" + command, 0); }

/// A pipe in the file system: what a test opens of it tells what a command does, and the other way round.
class Fifo {
public:
    explicit Fifo(const std::string &path) : path_(path)
    {
        if (mkfifo(path.c_str(), 0600) != 0)
            throw std::system_error(errno, std::generic_category(), path);
        file_ = open(path.c_str(), O_RDWR | O_CLOEXEC);
    }
    ~Fifo() { close(file_); }
    Fifo(const Fifo &) = delete;
    Fifo &operator=(const Fifo &) = delete;

    const std::string &path() const { return path_; }
    void write(const std::string &bytes) const
    {
        EXPECT_EQ(::write(file_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    /// Waits until somebody has written something.
    void wait_for_a_writer() const
    {
        char byte = 0;
        EXPECT_EQ(::read(file_, &byte, 1), 1);
    }
    /// Waits until nobody can write any more: until all that had it open are gone.
    void wait_for_the_last_writer()
    {
        const int reading = open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        close(std::exchange(file_, -1)); // it could write, too
        pollfd events{reading, POLLIN, 0};
        EXPECT_EQ(poll(&events, 1, 20'000), 1);
        EXPECT_NE(events.revents & POLLHUP, 0);
        close(reading);
    }

private:
    std::string path_;
    int file_;
};

/// What the shell is to hold open, one process each.
std::string two_writers(const Fifo &fifo)
{
    return "(echo >'" + fifo.path() + "'; sleep 1000) >'" + fifo.path() + "' & (echo >'" + fifo.path() +
           "'; sleep 1000) 3>'" + fifo.path() + "' & ";
}

bool has_children()
{
    siginfo_t news{};
    return waitid(P_ALL, 0, &news, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

std::size_t open_descriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

} // namespace

TEST(Source, IsTheProgrammeAtTheBitRate)
{
    const auto source = open_source("", bit_rate);
    const std::string first = read_some(*source, 40 * packet_size);
    EXPECT_EQ(first + read_some(*source, 60 * packet_size), stream(100));
    const StreamDescription description = source->description();
    EXPECT_EQ(description.programme_number, TestProgramme::programme_number);
    EXPECT_EQ(description.clock_pid, TestProgramme::audio_pid);
    EXPECT_EQ(description.audio_pid, TestProgramme::audio_pid);
    EXPECT_EQ(description.video_pid, 0);
}

TEST(Source, RefusesABitRateThatTheProgrammeDoesNotFitInto)
{
    EXPECT_THROW(open_source("", 187'999), std::system_error);
}

TEST(Source, GivesWholePacketsOnly)
{
    const support::TemporaryFolder folder;
    write_file(folder / "a.ts", stream(20));
    for (const std::string &what : {std::string(), folder / "a.ts", "exec:cat '" + (folder / "a.ts") + "'"}) {
        const auto source = open_source(what, bit_rate);
        EXPECT_EQ(read_up_to(*source, 2 * packet_size), stream(2)) << what;
        EXPECT_EQ(read_some(*source, packet_size - 1), "") << what;
        EXPECT_EQ(read_some(*source, 0), "") << what;
        EXPECT_EQ(read_some(*source, 4 * packet_size - 1), stream(5).substr(2 * packet_size)) << what;
    }
}

TEST(FileSource, StartsAgainBehindItsLastWholePacket)
{
    const support::TemporaryFolder folder;
    for (const int packets : {1, 3, 7})
        for (const std::size_t rest : {0U, 1U, 187U}) {
            write_file(folder / "a.ts", stream(packets) + std::string(rest, '\x47'));
            const auto source = open_source(folder / "a.ts", 0);
            std::string bytes;
            for (const std::size_t room : {2U, 9U, 1U, 30U})
                bytes += read_some(*source, room * packet_size);
            std::string expected;
            while (expected.size() < 42 * packet_size)
                expected += stream(packets);
            EXPECT_EQ(bytes, expected.substr(0, 42 * packet_size)) << packets << " packets and " << rest << " bytes";
        }
}

TEST(FileSource, RefusesWhatIsNoFileThatBeginsWithPackets)
{
    const support::TemporaryFolder folder;
    const Fifo fifo(folder / "fifo");
    write_file(folder / "empty", "");
    write_file(folder / "short", stream(1).substr(0, packet_size - 1));
    write_file(folder / "late", stream(10).substr(1));
    write_file(folder / "two", stream(1) + std::string(packet_size, 'x'));
    write_file(folder / "four", stream(4) + std::string(packet_size, 'x'));
    const std::pair<std::string, int> refusals[] = {
        {folder / "missing", ENOENT}, {folder / "", EISDIR},       {fifo.path(), EINVAL},
        {"/dev/zero", EINVAL},        {folder / "empty", ENOEXEC}, {folder / "short", ENOEXEC},
        {folder / "late", ENOEXEC},   {folder / "two", ENOEXEC},   {folder / "four", ENOEXEC},
    };
    for (const auto &[path, number] : refusals) {
        try {
            open_source(path, bit_rate);
            ADD_FAILURE() << path;
        } catch (const std::system_error &error) {
            EXPECT_EQ(error.code().value(), number) << error.what();
            EXPECT_EQ(std::string(error.what()).substr(0, path.size()), path);
        }
    }
}

TEST(FileSource, EndsWhenTheFileHasBeenEmptied)
{
    const support::TemporaryFolder folder;
    write_file(folder / "a.ts", stream(5));
    const auto source = open_source(folder / "a.ts", 0);
    EXPECT_EQ(read_some(*source, 2 * packet_size), stream(2));
    std::filesystem::resize_file(folder / "a.ts", packet_size - 1);
    EXPECT_THROW(read_some(*source, 2 * packet_size), std::system_error);
    write_file(folder / "a.ts", stream(5));
    EXPECT_THROW(read_some(*source, 2 * packet_size), std::system_error);
}

TEST(CommandSource, GivesAllThatIsWrittenAndThenSaysHowTheCommandEnded)
{
    const support::TemporaryFolder folder;
    write_file(folder / "a.ts", stream(3000));
    const std::string cat = "cat '" + (folder / "a.ts") + "'; ";
    const std::pair<std::string, std::string> endings[] = {
        {"", "ended with status 0"},
        {"exit 3", "ended with status 3"},
        {"kill -KILL $$", "was ended by signal 9"},
        {"exec >&-; sleep 0.05; exit 4", "ended with status 4"},
        {"sleep 1000 & exit 5", "ended with status 5"}, // what holds the output open goes, too
        {"exec >&-; sleep 1000", "has closed its output"},
    };
    for (const auto &[ending, text] : endings) {
        const auto source = run(cat + ending);
        const Whole whole = read_to_the_end(*source);
        EXPECT_EQ(whole.bytes, stream(3000)) << ending;
        EXPECT_EQ(whole.error, ENODATA) << ending;
        EXPECT_EQ(whole.text, "the command " + text + ": No data available");
        const Whole again = read_to_the_end(*source);
        EXPECT_EQ(again.bytes + again.text, whole.text);
        EXPECT_FALSE(has_children()) << ending;
    }
}

TEST(CommandSource, SaysWhyACommandCouldNotBeginAsTheShellDoes)
{
    const auto source = run("exec /nonexistent/program 2>/dev/null");
    EXPECT_EQ(read_to_the_end(*source).text, "the command ended with status 127: No data available");
}

TEST(CommandSource, DoesNotWaitForWhatIsNotYetThere)
{
    const support::TemporaryFolder folder;
    const Fifo fifo(folder / "fifo");
    const auto source = run("cat '" + fifo.path() + "'");
    EXPECT_EQ(read_some(*source, 10 * packet_size), "");
    fifo.write(stream(7).substr(0, 6 * packet_size + 100));
    EXPECT_EQ(read_up_to(*source, 6 * packet_size), stream(6));
    EXPECT_EQ(read_some(*source, packet_size), "");
    fifo.write(stream(7).substr(6 * packet_size + 100));
    EXPECT_EQ(read_up_to(*source, packet_size), stream(7).substr(6 * packet_size));
}

TEST(CommandSource, FindsThePacketsInWhatIsWritten)
{
    const support::TemporaryFolder folder;
    const std::string first = stream(40);
    const std::string second = stream(50).substr(first.size());
    // A sync byte within a packet, and such bytes at a packet's distance, but for fewer packets than are trusted.
    std::string misleading(700, 'x');
    for (const std::size_t at : {0U, 10U, 198U, 386U})
        misleading[at] = 0x47;
    const std::string cut = stream(1).substr(100);
    const std::pair<std::string, std::string> outputs[] = {
        {cut + first, first},
        {misleading + first, first},
        {std::string(100'000, 'x') + first, first},
        {first + cut + second, first + second},
        {first + misleading.substr(1) + second, first + second},
        {first + second.substr(0, 100), first},
        {cut + stream(1), stream(1)}, // too few to be sure, but nothing follows
        {cut + stream(4), stream(4)},
        {"", ""},
        {std::string(1000, 'x'), ""},
    };
    for (const auto &[output, expected] : outputs) {
        write_file(folder / "output", output);
        const auto source = run("cat '" + (folder / "output") + "'");
        const Whole whole = read_to_the_end(*source);
        EXPECT_TRUE(whole.bytes == expected) << whole.bytes.size() << " bytes of " << output.size();
        EXPECT_EQ(whole.error, ENODATA);
    }
}

TEST(CommandSource, EndsWhatWritesNoTransportStream)
{
    const auto source = run("yes");
    const Whole whole = read_to_the_end(*source);
    EXPECT_EQ(whole.bytes, "");
    EXPECT_EQ(whole.error, ENOEXEC);
    EXPECT_EQ(whole.text, "the command writes no transport stream: Exec format error");
    EXPECT_FALSE(has_children());
}

TEST(CommandSource, LetsACommandWriteAMebibyteBeforeAnythingIsRead)
{
    const support::TemporaryFolder folder;
    const Fifo fifo(folder / "fifo");
    constexpr int packets = 5577; // as many as are whole in a mebibyte
    write_file(folder / "a.ts", stream(packets));
    const auto source = run("cat '" + (folder / "a.ts") + "'; echo >'" + fifo.path() + "'; sleep 1000");
    fifo.wait_for_a_writer();
    EXPECT_EQ(read_some(*source, 2 * packets * packet_size), stream(packets));
}

TEST(CommandSource, EndsTheWholeGroupWithTheSource)
{
    const support::TemporaryFolder folder;
    Fifo fifo(folder / "fifo");
    auto source = run(two_writers(fifo) + "wait");
    fifo.wait_for_a_writer();
    fifo.wait_for_a_writer();
    source.reset();
    fifo.wait_for_the_last_writer();
    EXPECT_FALSE(has_children());
}

TEST(CommandSource, EndsTheWholeGroupWithTheCommand)
{
    const support::TemporaryFolder folder;
    Fifo fifo(folder / "fifo");
    const Fifo go(folder / "go");
    const auto source = run(two_writers(fifo) + "read line <'" + go.path() + "'; exit 3");
    fifo.wait_for_a_writer();
    fifo.wait_for_a_writer();
    go.write("\n");
    EXPECT_EQ(read_to_the_end(*source).error, ENODATA);
    fifo.wait_for_the_last_writer();
    EXPECT_FALSE(has_children());
}

TEST(CommandSource, EndsWithTheCommandThoughAProcessOfAnotherGroupCouldStillWrite)
{
    const support::TemporaryFolder folder;
    const Fifo begun(folder / "begun");
    const Fifo held(folder / "held"); // the process ends with it
    const auto source = run("setsid sh -c \"exec <'" + held.path() + "'; echo >'" + begun.path() +
                            "'; exec cat\" 2>/dev/null & read line <'" + begun.path() + "'; exit 6");
    EXPECT_EQ(read_to_the_end(*source).text, "the command ended with status 6: No data available");
}

TEST(CommandSource, LeavesNoDescriptorBehind)
{
    const support::TemporaryFolder folder;
    write_file(folder / "a.ts", stream(20));
    write_file(folder / "text", "text");
    const std::size_t before = open_descriptors();
    for (int i = 0; i < 3; ++i) {
        const auto file = open_source(folder / "a.ts", 0);
        const auto ended = run("cat '" + (folder / "a.ts") + "'");
        read_to_the_end(*ended);
        const auto running = run("sleep 1000");
        read_some(*running, packet_size);
        // The file, the pipe of the command that runs, and the one by which it ends with this process.
        EXPECT_EQ(open_descriptors(), before + 3);
        EXPECT_THROW(open_source(folder / "text", 0), std::system_error);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(CommandSource, StartsTheCommandWithNothingOfThisProcess)
{
    // What a process would hand on: a descriptor, an input, a blocked signal and two ignored ones.
    const int inherited = fcntl(STDERR_FILENO, F_DUPFD, 77);
    ASSERT_GE(inherited, 77);
    const auto handlers = std::pair(std::signal(SIGPIPE, SIG_IGN), std::signal(SIGHUP, SIG_IGN));
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);

    const std::pair<std::string, std::string> ends[] = {
        {"test -e /proc/$$/fd/" + std::to_string(inherited), "ended with status 1"},
        {"test \"$(readlink /proc/$$/fd/0)\" = /dev/null", "ended with status 0"},
        {"test /proc/$$/fd/2 -ef /proc/" + std::to_string(getpid()) + "/fd/2", "ended with status 0"},
        {"kill -PIPE $$", "was ended by signal 13"},
        {"kill -HUP $$", "was ended by signal 1"},
        {"kill -TERM $$", "was ended by signal 15"},
    };
    for (const auto &[command, end] : ends) {
        const auto source = run(command + "; exit $?");
        EXPECT_EQ(read_to_the_end(*source).text, "the command " + end + ": No data available") << command;
    }

    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGPIPE, handlers.first);
    std::signal(SIGHUP, handlers.second);
    close(inherited);
}
