// The two programs as a shell sees them: what they print, and how they end.
#include "peer.h"
#include "program.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <glib.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace simulator_test;

namespace {

/// The bus address that programs find, for as long as this lives.
class BusAddress {
public:
    explicit BusAddress(const char *address) { setenv("DBUS_SYSTEM_BUS_ADDRESS", address, 1); }
    ~BusAddress() { setenv("DBUS_SYSTEM_BUS_ADDRESS", support::bus().address().c_str(), 1); }
    BusAddress(const BusAddress &) = delete;
    BusAddress &operator=(const BusAddress &) = delete;
};

} // namespace

TEST(SimulatorProgram, SaysOnceThatItIsReadyAndEndsOnASignal)
{
    for (const int number : {SIGTERM, SIGINT}) {
        Program program({"pvr-simulator"});
        EXPECT_EQ(program.line(), "ready");
        program.signal(number);
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(program.rest(), "");
        EXPECT_EQ(program.complaints(), "");
    }
}

TEST(SimulatorProgram, OwnsBothNamesWhenItIsReadyAndNeitherAfterwards)
{
    Peer peer;
    {
        const Simulator simulator;
        EXPECT_TRUE(peer.has_owner("org.vexan.tv.pvr.server"));
        EXPECT_TRUE(peer.has_owner("org.vexan.tv.pvr.Simulator1"));
    }
    EXPECT_FALSE(peer.has_owner("org.vexan.tv.pvr.server"));
    EXPECT_FALSE(peer.has_owner("org.vexan.tv.pvr.Simulator1"));
}

TEST(SimulatorProgram, SaysNothingOfCallsWhenQuiet)
{
    Program program({"pvr-simulator", "--quiet"});
    ASSERT_EQ(program.line(), "ready");
    Peer peer;
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("set_fp_rec_time", "('/a.srf', 1)"), "(-2,)");
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.complaints(), "");
}

TEST(SimulatorProgram, EndsCleanlyWhileItPlaysAndHoldsCallsBack)
{
    const support::TemporaryFolder folder;
    Program make({"pvr-make-stream", folder / "a.srf"});
    ASSERT_EQ(make.wait(), 0);
    const Simulator simulator; // checks how it ends
    Peer peer;
    peer.control("DelayMethod", "('get_handle', uint32 3600000, uint32 1)");
    peer.send("get_handle", "()", [](const std::string &) {});
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("play_start", "(1, '" + (folder / "a.srf") + "', 0)"), "(0,)");
}

TEST(SimulatorProgram, RefusesABusWhereOneOfItsNamesIsTaken)
{
    for (const std::string name : {"org.vexan.tv.pvr.server", "org.vexan.tv.pvr.Simulator1"}) {
        Peer other;
        other.own(name);
        Program program({"pvr-simulator"});
        EXPECT_EQ(program.wait(), 1);
        EXPECT_EQ(program.rest(), "");
        EXPECT_EQ(program.complaints(),
                  "pvr-simulator: cannot own " + name + ": another service on this bus owns it\n");
    }
}

TEST(SimulatorProgram, SaysThatThereIsNoBus)
{
    const std::string beginning = "pvr-simulator: cannot reach the system bus: ";
    for (const char *address : {"unix:path=/nonexistent/bus", "no address", "unix:"}) {
        const BusAddress nowhere(address);
        Program program({"pvr-simulator"});
        EXPECT_EQ(program.wait(), 1) << address;
        EXPECT_EQ(program.rest(), "");
        const std::string complaint = program.complaints();
        EXPECT_EQ(complaint.substr(0, beginning.size()), beginning);
        EXPECT_EQ(complaint.find('\n'), complaint.size() - 1) << complaint;
        EXPECT_GT(complaint.size(), beginning.size() + 5);
    }
}

TEST(SimulatorProgram, EndsWithTheBus)
{
    Program program({"pvr-simulator"});
    ASSERT_EQ(program.line(), "ready");
    support::bus().kill();
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.complaints(), "pvr-simulator: the bus has ended the connection\n");
}

TEST(SimulatorProgram, StaysWhenNobodyReadsItsLog)
{
    Program program({"pvr-simulator"}, Program::Complaints::are_not_read);
    ASSERT_EQ(program.line(), "ready");
    Peer peer;
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)");
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST(SimulatorProgram, HasOneDeviceInASandbox)
{
    const support::TemporaryFolder folder;
    setenv("PVR_SANDBOX", (folder / "").c_str(), 1);
    const Simulator simulator;
    unsetenv("PVR_SANDBOX");
    Peer peer;
    EXPECT_EQ(peer.call("get_product_name", "('" + (folder / "devices/usb1") + "',)"), "('Development storage usb1',)");
    EXPECT_EQ(peer.call("get_rec_device_name"), "('usb1', 0)");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "devices/usb1"));
}

TEST(SimulatorProgram, HasOnlyTheDevicesAskedForInASandbox)
{
    const support::TemporaryFolder folder;
    setenv("PVR_SANDBOX", (folder / "").c_str(), 1);
    const Simulator simulator({"--device", "none yet=" + (folder / "later")});
    unsetenv("PVR_SANDBOX");
    Peer peer;
    EXPECT_EQ(peer.call("get_dev_total"), "(0, 0)");
    EXPECT_EQ(folder.names(), Lines());
    std::filesystem::create_directory(folder / "later");
    EXPECT_EQ(peer.call("get_rec_device_name"), "('none yet', 0)");
}

TEST(SimulatorProgram, RefusesDevicesThatItMustNotFormat)
{
    const support::TemporaryFolder folder;
    std::filesystem::create_directory_symlink("/", folder / "link");
    const std::string home = std::filesystem::canonical(g_get_home_dir());
    const std::string nested = "pvr-simulator: the folders of a and b overlap\n";
    const std::pair<std::vector<std::string>, std::string> refusals[] = {
        {{"--device", "a"}, "pvr-simulator: 'a' is not NAME=FOLDER\n"},
        {{"--device", "=/a"}, "pvr-simulator: '=/a' is not NAME=FOLDER\n"},
        {{"--slow-device", "a="}, "pvr-simulator: 'a=' is not NAME=FOLDER\n"},
        {{"--device", "a=\xff"}, "pvr-simulator: the name or the folder of a device is not UTF-8\n"},
        {{"--device", "a=/"}, "pvr-simulator: / holds the home folder, and a device can be formatted\n"},
        {{"--device", "a=" + (folder / "link")},
         "pvr-simulator: / holds the home folder, and a device can be formatted\n"},
        {{"--device", "a=" + home + "/"},
         "pvr-simulator: " + home + " holds the home folder, and a device can be formatted\n"},
        {{"--device", "a=" + (folder / "a"), "--device", "b=" + (folder / "a/b")}, nested},
        {{"--device", "a=" + (folder / "a/b"), "--slow-device", "b=" + (folder / "a")}, nested},
        {{"--device", "a=" + (folder / "a"), "--device", "a=" + (folder / "b")},
         "pvr-simulator: two devices are named a\n"},
    };
    for (const auto &[options, complaint] : refusals) {
        std::vector<std::string> command{"pvr-simulator"};
        command.insert(command.end(), options.begin(), options.end());
        Program program(command);
        EXPECT_EQ(program.wait(), 2) << complaint;
        EXPECT_EQ(program.complaints(), complaint);
    }
}

TEST(SimulatorProgram, SaysThatItCannotMakeTheDeviceOfASandbox)
{
    setenv("PVR_SANDBOX", "/dev/null", 1);
    Program program({"pvr-simulator"});
    unsetenv("PVR_SANDBOX");
    EXPECT_EQ(program.wait(), 1);
    EXPECT_NE(program.complaints().find("Not a directory"), std::string::npos) << program.complaints();
}

TEST(Programs, ExplainThemselves)
{
    for (const std::string name : {"pvr-simulator", "pvr-make-stream"}) {
        Program version({name, "--version"});
        EXPECT_EQ(version.wait(), 0);
        EXPECT_EQ(version.rest(), "10.8.1\n");
        Program help({name, "--help"});
        EXPECT_EQ(help.wait(), 0);
        EXPECT_NE(help.rest().find("Usage: "), std::string::npos);
    }
}

TEST(Programs, RefuseWhatTheyDoNotUnderstand)
{
    const support::TemporaryFolder folder;
    const std::vector<std::string> commands[] = {
        {"pvr-simulator", "--unknown"},
        {"pvr-simulator", "argument"},
        {"pvr-simulator", "--speed", "0"},
        {"pvr-simulator", "--speed", "-1"},
        {"pvr-simulator", "--speed", "nan"},
        {"pvr-simulator", "--speed", "10001"},
        {"pvr-simulator", "--speed", "fast"},
        {"pvr-simulator", "--timeshift", "9"},
        {"pvr-simulator", "--timeshift", "86401"},
        {"pvr-make-stream"},
        {"pvr-make-stream", folder / "a.srf", folder / "b.srf"},
        {"pvr-make-stream", "--seconds", "0", folder / "a.srf"},
        {"pvr-make-stream", "--seconds", "-1", folder / "a.srf"},
        {"pvr-make-stream", "--seconds", "86401", folder / "a.srf"},
        {"pvr-make-stream", "--seconds", "ten", folder / "a.srf"},
        {"pvr-make-stream", "--bit-rate", "187999", folder / "a.srf"},
        {"pvr-make-stream", "--bit-rate", "50000001", folder / "a.srf"},
        {"pvr-make-stream", "--bit-rate", "4M", folder / "a.srf"},
    };
    for (const auto &command : commands) {
        Program program(command);
        EXPECT_EQ(program.wait(), 2) << command.back();
        EXPECT_NE(program.complaints(), "") << command.back();
    }
    EXPECT_EQ(folder.names(), Lines());
}

TEST(MakeStreamProgram, WritesAFileOfTheLengthAskedFor)
{
    const support::TemporaryFolder folder;
    Program program({"pvr-make-stream", "--seconds", "3", folder / "a.srf"});
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.rest() + program.complaints(), "");
    EXPECT_EQ(std::filesystem::file_size(folder / "a.srf"), 3U * 125 * 188);
}

TEST(MakeStreamProgram, WritesAFileOfTheRateAskedFor)
{
    const support::TemporaryFolder folder;
    for (const auto &[rate, bytes] : {std::pair("3760000", 3U * 2500 * 188), std::pair("50000000", 18'749'992U)}) {
        Program program({"pvr-make-stream", "--bit-rate", rate, "--seconds", "3", folder / "a.srf"});
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(std::filesystem::file_size(folder / "a.srf"), bytes);
    }
}

TEST(MakeStreamProgram, SaysWhyItCannotWrite)
{
    const support::TemporaryFolder folder;
    Program program({"pvr-make-stream", folder / "missing/a.srf"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.complaints(),
              "pvr-make-stream: cannot write " + (folder / "missing/a.srf") + ": No such file or directory\n");
}

TEST(SimulatorProgram, RefusesBroadcastsThatItDoesNotUnderstand)
{
    const std::pair<std::vector<std::string>, std::string> refusals[] = {
        {{"--source", "1"}, "pvr-simulator: '1' is not ID=SOURCE\n"},
        {{"--source", "1="}, "pvr-simulator: '1=' is not ID=SOURCE\n"},
        {{"--source", "one=a.ts"}, "pvr-simulator: 'one=a.ts' is not ID=SOURCE\n"},
        {{"--source", "=a.ts"}, "pvr-simulator: '=a.ts' is not ID=SOURCE\n"},
        {{"--source", "99=a.ts"}, "pvr-simulator: there is no channel 99\n"},
        {{"--source", "1=a.ts", "--source", "1=b.ts"}, "pvr-simulator: channel 1 has two sources\n"},
        {{"--bit-rate", "1"}, "pvr-simulator: '1' is not ID=NUMBER\n"},
        {{"--bit-rate", "1=fast"}, "pvr-simulator: '1=fast' is not ID=NUMBER\n"},
        {{"--bit-rate", "99=188000"}, "pvr-simulator: there is no channel 99\n"},
        {{"--bit-rate", "1=187999"}, "pvr-simulator: a bit rate is between 188000 and 50000000\n"},
        {{"--bit-rate", "1=50000001"}, "pvr-simulator: a bit rate is between 188000 and 50000000\n"},
        {{"--bit-rate", "4=188000"}, "pvr-simulator: channel 4 has no stream\n"},
        {{"--bit-rate", "1=188000", "--bit-rate", "1=188000"}, "pvr-simulator: channel 1 has two bit rates\n"},
    };
    for (const auto &[options, complaint] : refusals) {
        std::vector<std::string> command{"pvr-simulator"};
        command.insert(command.end(), options.begin(), options.end());
        Program program(command);
        EXPECT_EQ(program.wait(), 2) << complaint;
        EXPECT_EQ(program.complaints(), complaint);
    }
}

TEST(SimulatorProgram, RecordsFromACommand)
{
    const support::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "usb");
    Program make({"pvr-make-stream", "--seconds", "5", folder / "a.ts"});
    ASSERT_EQ(make.wait(), 0);
    const Simulator simulator({"--device", "usb=" + (folder / "usb"), "--source",
                               "1=exec:cat " + (folder / "a.ts") + "; sleep 1000", "--source",
                               "2=" + (folder / "missing.ts"), "--tuners", "3"});
    Peer peer;
    EXPECT_EQ(peer.call("call_app", "(0, uint64 1, 1, '', uint32 0)"), "(0,)");
    EXPECT_EQ(peer.call("call_app", "(0, uint64 2, 1, '', uint32 0)"), "(9,)");
    EXPECT_EQ(peer.call("call_app", "(0, uint64 3, 1, '', uint32 0)"), "(0,)") << "three tuners";
    const std::string answer = peer.call("get_recording_uri", "(1,)");
    const std::string file = answer.substr(2, answer.size() - 5);
    while (std::filesystem::file_size(file) < 100'000)
        g_usleep(1000);
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    std::ifstream recorded(file), broadcast(folder / "a.ts");
    std::string one(100'000, 0), other(100'000, 0);
    recorded.read(one.data(), 100'000);
    broadcast.read(other.data(), 100'000);
    EXPECT_EQ(one, other);
}
