// How recordings end that nobody stops: with the service, with what they need, and how it all looks after a day.
#include "recording_peer.h"
#include "support/private_bus.h"
#include "test_programme.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace simulator_test;

namespace {

namespace fs = std::filesystem;

/// What a command and all that it starts hold open, and so tells how long they live.
class Life {
public:
    explicit Life(const std::string &path) : path_(path)
    {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        reading_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    }
    ~Life() { close(reading_); }
    Life(const Life &) = delete;
    Life &operator=(const Life &) = delete;

    /// A command that broadcasts a file, and then nothing more, together with another process.
    std::string command(const std::string &stream) const
    {
        return "exec 3>'" + path_ + "'; sleep 1000 & echo >&3; cat '" + stream + "'; sleep 1000";
    }
    void await_begin() { await(POLLIN); }
    void await_end()
    {
        char byte = 0;
        EXPECT_EQ(read(reading_, &byte, 1), 1);
        await(POLLHUP);
    }

private:
    void await(short event) const
    {
        pollfd events{reading_, event, 0};
        EXPECT_EQ(poll(&events, 1, 20'000), 1);
        EXPECT_NE(events.revents & event, 0);
    }

    std::string path_;
    int reading_;
};

class EndingRecordings : public RecordingPeer {
protected:
    /// Records channels 1, from a command, and 3, and timeshifts channel 3.
    void record_it_all()
    {
        simulator::write_test_programme(folder / "a.ts", 5);
        run({"--source", "1=exec:" + life.command(folder / "a.ts")});
        EXPECT_EQ(start("1"), "(0,)");
        EXPECT_EQ(start("3"), "(0,)");
        EXPECT_EQ(peer.call("call_app", "(1, uint64 3, 1, '', uint32 0)"), "(0,)");
        life.await_begin();
        step(60);
        EXPECT_TRUE(fs::exists(device + "/timeshift.tmp"));
    }
    void expect_failure(const std::string &path, int code, int reason)
    {
        const std::string text = std::to_string(code);
        const Lines told = peer.signals_until("result_to_apps (200, <(0,)>)");
        EXPECT_NE(std::find(told.begin(), told.end(),
                            "PS_SIGNAL_TYPE_RECORD_ERROR of 1: PS_RECORD_STATE_REC " + path + " error " + text),
                  told.end());
        EXPECT_NE(std::find(told.begin(), told.end(),
                            "result_to_apps (109, <(1, " + text + ", 1, uint64 3, 0, " + text + ")>)"),
                  told.end());
        EXPECT_EQ(of_channel("is_recording", "3"), "(0,)");
        EXPECT_EQ(of_channel("is_past_record_complete", "3"), "(0,)");
        if (fs::exists(path)) {
            EXPECT_EQ(int{info(path).record_complete}, 1);
            EXPECT_EQ(int{info(path).incomplete_reason}, reason);
        }
    }

    Life life{folder / "life"};
};

/// Files of the programs that are started meanwhile do not grow beyond a size.
class LimitedFiles {
public:
    explicit LimitedFiles(rlim_t size)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LimitedFiles() { setrlimit(RLIMIT_FSIZE, &before_); }
    LimitedFiles(const LimitedFiles &) = delete;
    LimitedFiles &operator=(const LimitedFiles &) = delete;

private:
    rlimit before_{};
};

struct Footprint {
    long memory; ///< KiB
    long descriptors;
};

Footprint footprint(pid_t process)
{
    const std::string folder = "/proc/" + std::to_string(process);
    std::ifstream status(folder + "/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with("VmRSS:")) {
    }
    return {std::stol(line.substr(6)), std::distance(fs::directory_iterator(folder + "/fd"), fs::directory_iterator())};
}

} // namespace

TEST_F(EndingRecordings, EndProperlyWithTheService)
{
    record_it_all();
    const std::string one = path_of("1"), other = path_of("3");
    peer.signals();
    simulator->log();
    for (const std::string &path : {one, other}) {
        EXPECT_EQ(int{info(path).record_complete}, 1);
        EXPECT_EQ(int{info(path).incomplete_reason}, 0);
        EXPECT_GE(std::uint32_t{info(path).duration}, 60'000U);
    }
    EXPECT_GE(fs::file_size(other), 60U * 23'500);
    EXPECT_FALSE(fs::exists(device + "/timeshift.tmp"));
    EXPECT_FALSE(fs::exists(device + "/timeshift.inf"));
    life.await_end();
    const Lines told = peer.signals_until("result_to_apps (200, <(0,)>)");
    EXPECT_EQ(std::count_if(told.begin(), told.end(),
                            [](const std::string &line) { return line.starts_with("result_to_apps (11, "); }),
              3)
        << "whoever listens learns of it";
}

TEST_F(EndingRecordings, EndProperlyWithTheBus)
{
    Program program({"pvr-simulator", "--quiet", "--device", "usb=" + device});
    ASSERT_EQ(program.line(), "ready");
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(60);
    support::bus().kill();
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.complaints(), "pvr-simulator: the bus has ended the connection\n");
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(int{info(path).incomplete_reason}, 0);
}

TEST_F(EndingRecordings, AreSetRightAfterTheServiceWasKilled)
{
    record_it_all();
    const std::string path = path_of("3");
    simulator->kill();
    life.await_end(); // the command and what it has started
    EXPECT_EQ(int{info(path).record_complete}, 0);
    EXPECT_TRUE(fs::exists(device + "/timeshift.tmp"));
    run();
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(int{info(path).incomplete_reason}, 4);
    EXPECT_GE(std::uint32_t{info(path).duration}, 59'900U) << "as long as its stream";
    EXPECT_FALSE(fs::exists(device + "/timeshift.tmp"));
    EXPECT_FALSE(fs::exists(device + "/timeshift.inf"));
    EXPECT_EQ(peer.call("get_system_record_num"), "(2,)");
    const Lines log = simulator->log();
    EXPECT_NE(std::find_if(log.begin(), log.end(),
                           [&](const std::string &line) { return line.starts_with(path + " was cut off after "); }),
              log.end());
}

TEST_F(EndingRecordings, AreSetRightWhenTheirDeviceComesBack)
{
    run();
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(60);
    fs::rename(device, folder / "pulled");
    expect_failure(path, 100, 2);
    const std::string moved = folder / ("pulled/" + fs::path(path).filename().string());
    EXPECT_EQ(int{info(moved).record_complete}, 0) << "nobody could write to it";
    fs::rename(folder / "pulled", device);
    EXPECT_EQ(peer.call("get_dev_total"), "(1, 0)");
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(int{info(path).incomplete_reason}, 4);
    EXPECT_GE(std::uint32_t{info(path).duration}, 59'900U);
}

TEST_F(EndingRecordings, EndWithADeviceThatIsFull)
{
    {
        const LimitedFiles limit(1'000'000);
        run();
    }
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(600);
    EXPECT_EQ(fs::file_size(path), 1'000'000U);
    expect_failure(path, 160, 1);
    EXPECT_EQ(start("3"), "(0,)") << "the service goes on";
}

TEST_F(EndingRecordings, EndWithADeviceThatIsPulledOut)
{
    run();
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(60);
    fs::remove_all(device);
    expect_failure(path, 100, 2);
    EXPECT_EQ(start("3"), "(101,)");
    fs::create_directory(device);
    EXPECT_EQ(start("3"), "(0,)");
}

TEST_F(EndingRecordings, EndWithACommandThatHasEnded)
{
    simulator::write_test_programme(folder / "a.ts", 2);
    run({"--source", "3=exec:cat '" + (folder / "a.ts") + "'"});
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(60); // more than there is
    expect_failure(path, 9, 3);
    EXPECT_EQ(fs::file_size(path), fs::file_size(folder / "a.ts"));
}

TEST_F(EndingRecordings, EndWithAFileThatCannotBeReadAnyMore)
{
    simulator::write_test_programme(folder / "a.ts", 2);
    run({"--source", "3=" + (folder / "a.ts")});
    EXPECT_EQ(start("3"), "(0,)");
    const std::string path = path_of("3");
    step(60);
    EXPECT_GE(fs::file_size(path), 60U * 23'500) << "over and over";
    fs::resize_file(folder / "a.ts", 0);
    expect_failure(path, 9, 3);
    EXPECT_EQ(start("3"), "(9,)");
}

TEST_F(EndingRecordings, LeaveNothingInTheServiceAfterADay)
{
    // The address sanitizer would keep what is released.
    const char *options = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", ((options != nullptr ? options + std::string(":") : "") + "quarantine_size_mb=1").c_str(),
           1);
    run({"--quiet"});
    constexpr long slack = 4096; // KiB: what a heap keeps for later
    Footprint first_hour{};
    for (int hour = 1; hour <= 24; ++hour) {
        EXPECT_EQ(peer.control("ScheduleRecording", "(uint64 1, uint64 3590, uint64 1)"),
                  "(" + std::to_string(hour) + ",)");
        EXPECT_EQ(start("3", 600), "(0,)");
        const std::string path = path_of("3");
        step(60);
        const std::string answer = peer.call("get_handle");
        const std::string handle = answer.substr(1, answer.find(',') - 1);
        EXPECT_EQ(peer.call("play_start", "(" + handle + ", '" + path + "', 0)"), "(0,)");
        step(3540);
        EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)") << "recorded and played to its end";
        EXPECT_EQ(peer.call("release_handle", "(" + handle + ",)"), "(0,)");
        EXPECT_EQ(std::uint32_t{info(path).duration}, 600'000U);
        for (const auto &entry : fs::directory_iterator(device))
            fs::remove(entry.path());
        peer.signals();
        if (hour == 1)
            first_hour = footprint(simulator->pid());
    }
    const Footprint day = footprint(simulator->pid());
    EXPECT_EQ(day.descriptors, first_hour.descriptors);
    EXPECT_LE(day.memory, first_hour.memory + slack);
    RecordProperty("first_hour_KiB", static_cast<int>(first_hour.memory));
    RecordProperty("day_KiB", static_cast<int>(day.memory));
    if (options != nullptr)
        setenv("ASAN_OPTIONS", options, 1);
    else
        unsetenv("ASAN_OPTIONS");
}
