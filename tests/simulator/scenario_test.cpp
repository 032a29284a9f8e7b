// The scenarios that are shipped, each played with an application that uses the library, on a real bus: what happens is
// what the committed log of its events tells.
#include "info_file.h"
#include "peer.h"
#include "program.h"
#include "pvr_events.h"
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace simulator_test;

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t first = 1;
constexpr std::uint64_t scrambled = 7;

class Scenario : public testing::Test {
protected:
    Scenario() { fs::create_directory(device); }
    ~Scenario() override { EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS); }
    Scenario(const Scenario &) = delete;
    Scenario &operator=(const Scenario &) = delete;

    std::vector<std::string> options(const std::string &name) const
    {
        return {"--device", "usb1=" + device, "--scenario", PVR_SCENARIOS "/" + name + ".toml", "--event-log", log};
    }
    int handle()
    {
        int handle = 0;
        EXPECT_EQ(svc_pvr_get_handle(&handle), PS_SUCCESS);
        return handle;
    }
    static void record(int handle, std::uint64_t service_id = first)
    {
        EXPECT_EQ(svc_pvr_record_start(handle, service_id, PS_RECORD_TYPE_NORMAL), PS_SUCCESS);
    }
    static void stop_recording(int handle) { EXPECT_EQ(svc_pvr_record_stop(handle), PS_SUCCESS); }
    /// The recording of a channel, of which there is one.
    std::string recording(const std::string &channel) const
    {
        for (const auto &entry : fs::directory_iterator(device))
            if (entry.path().string().ends_with(channel + ".srf"))
                return entry.path();
        return "none";
    }
    void expect_log_of(const std::string &name)
    {
        EXPECT_EQ(support::content_of(log), support::content_of(PVR_SCENARIO_LOGS "/" + name + ".log"));
    }

    support::TemporaryFolder folder;
    const std::string device = folder / "usb1";
    const std::string log = folder / "events.log";
};

} // namespace

TEST_F(Scenario, OfANormalEvening)
{
    {
        const Simulator simulator(options("evening"));
        const int recorder = handle();
        record(recorder);
        int player = 0;
        EXPECT_EQ(svc_pvr_get_handle_for_playback(&player), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_play_start(player, recording("First").c_str(), 0), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_play_pause(player), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_play_resume(player), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_play_stop(player), PS_SUCCESS);
        stop_recording(recorder);
    }
    expect_log_of("evening");
    EXPECT_EQ(fs::file_size(recording("First")), 540U * 23'500);
    EXPECT_EQ(fs::file_size(recording("Radio-Three")), 120U * 23'500);
}

TEST_F(Scenario, OfAFullDisk)
{
    {
        const Simulator simulator(options("full-disk"));
        const int recorder = handle();
        record(recorder);
        record(recorder);
        record(recorder);
        stop_recording(recorder);
    }
    expect_log_of("full-disk");
}

TEST_F(Scenario, OfAStickThatIsPulledOut)
{
    {
        const Simulator simulator(options("pulled-stick"));
        const int recorder = handle();
        record(recorder);
        record(recorder);
        record(recorder);
        stop_recording(recorder);
    }
    expect_log_of("pulled-stick");
}

TEST_F(Scenario, OfAServiceThatCrashes)
{
    {
        std::vector<std::string> command = options("crash");
        command.insert(command.begin(), "pvr-simulator");
        Program service(command);
        ASSERT_EQ(service.line(), "ready");
        const int recorder = handle();
        record(recorder);
        int is_recording = 0;
        while (svc_pvr_is_recording(first, &is_recording) != PS_SUCCESS) { // until it has come back
        }
        EXPECT_EQ(is_recording, 1);
        EXPECT_EQ(svc_pvr_record_stop(recorder), PS_CALL_METHOD_FAILED);
        EXPECT_EQ(service.wait(), 128 + SIGKILL);
    }
    expect_log_of("crash");
    const Simulator again({"--device", "usb1=" + device});
    const auto info = simulator::read_info(simulator::with_extension(recording("First"), "inf"));
    ASSERT_TRUE(info);
    EXPECT_EQ(int{info->incomplete_reason}, 4);
}

TEST_F(Scenario, OfAScrambledChannel)
{
    {
        const Simulator simulator(options("scrambled"));
        EXPECT_EQ(svc_pvr_precheck_recording_available(scrambled, PS_RECORD_TYPE_NORMAL), 256);
        const int recorder = handle();
        record(recorder, scrambled);
        record(recorder);
        stop_recording(recorder);
    }
    expect_log_of("scrambled");
    EXPECT_EQ(recording("Scrambled-Seven"), "none");
}

TEST_F(Scenario, PassesNoTimeWhileItWaitsForACall)
{
    support::write_file(folder / "a.toml", "start = 2024-03-01T20:15:00+01:00\n"
                                           "[[step]]\nat = 5.5\ncall = 'is_date_set'\n"
                                           "[[step]]\nat = 3600\nnote = 'an hour'\n");
    {
        const Simulator simulator({"--scenario", folder / "a.toml", "--event-log", log});
        Peer peer;
        peer.call("is_support_pvr");
        EXPECT_EQ(peer.call("is_date_set"), "(1,)");
        peer.call("is_support_pvr");
        peer.control("Step", "(uint64 1,)");
        peer.call("is_support_pvr");
    }
    EXPECT_EQ(support::content_of(log), "     5.500  scenario: waits for is_date_set\n"
                                        "     5.500  is_support_pvr()  result 1\n"
                                        "     5.500  is_date_set()  result 1\n"
                                        "  3600.000  scenario: an hour\n"
                                        "  3600.000  scenario: it is over\n"
                                        "  3600.000  is_support_pvr()  result 1\n"
                                        "  3601.000  control: Step(seconds 1)  ok\n"
                                        "  3601.000  is_support_pvr()  result 1\n");
}
