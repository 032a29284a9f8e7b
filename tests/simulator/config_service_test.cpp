// A configuration file as a shell and an application see it.
#include "peer.h"
#include "program.h"
#include "support/files.h"
#include "support/temporary_folder.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace simulator_test;

namespace {

constexpr char two_channels[] = "tuners = 1\ntimeshift = 60\n"
                                "[latency]\nget_handle = 3_600_000\n"
                                "[[device]]\nname = 'stick'\nfolder = 'stick'\n"
                                "[[channel]]\nservice_id = 42\nname = 'Only'\nnumber = '4-2'\nbit_rate = 188_000\n"
                                "[[channel]]\nservice_id = 43\nname = 'Other'\nnumber = '4-3'\n";

class ConfiguredService : public testing::Test {
protected:
    ConfiguredService()
    {
        support::write_file(config, two_channels);
        std::filesystem::create_directory(folder / "stick");
        std::filesystem::create_directory(folder / "other");
    }
    std::string watched() { return peer.call("get_current_livetv_service_id"); }

    /// Of the recording of a channel, in the other folder.
    std::uintmax_t size_of(const std::string &channel) const
    {
        for (const auto &entry : std::filesystem::directory_iterator(folder / "other"))
            if (entry.path().string().ends_with(channel + ".srf"))
                return entry.file_size();
        return 0;
    }

    support::TemporaryFolder folder;
    const std::string config = folder / "a.toml";
    Peer peer;
};

} // namespace

TEST_F(ConfiguredService, HasTheChannelsAndDevicesOfTheFile)
{
    const Simulator simulator({"--config", config});
    EXPECT_EQ(watched(), "(42,)");
    EXPECT_EQ(peer.control("Tune", "(uint64 43,)"), "()");
    EXPECT_EQ(peer.control("Tune", "(uint64 1,)"), "org.freedesktop.DBus.Error.InvalidArgs: no such channel");
    EXPECT_EQ(peer.call("get_rec_device_name"), "('stick', 0)");
}

TEST_F(ConfiguredService, HasWhatTheCommandLineSaysInPlaceOfTheFile)
{
    const Simulator simulator(
        {"--config", config, "--device", "usb9=" + (folder / "other"), "--tuners", "2", "--bit-rate", "43=376000"});
    EXPECT_EQ(peer.call("get_rec_device_name"), "('usb9', 0)");
    EXPECT_EQ(peer.call("get_dev_total"), "(1, 0)");
    for (const std::string channel : {"42", "43"})
        EXPECT_EQ(peer.call("call_app", "(0, uint64 " + channel + ", 1, '', uint32 0)"), "(0,)") << "the second tuner";
    EXPECT_EQ(peer.control("Step", "(uint64 10,)"), "()");
    EXPECT_GE(size_of("Only"), 235'000U);
    EXPECT_GE(size_of("Other"), 470'000U);
}

TEST_F(ConfiguredService, AnswersAsLateAsTheFileTells)
{
    const Simulator simulator({"--config", config});
    bool is_answered = false;
    peer.send("get_handle", "()", [&](const std::string &) { is_answered = true; });
    EXPECT_EQ(peer.call("is_date_set"), "(1,)");
    EXPECT_FALSE(is_answered) << "the later call has overtaken it";
}

TEST_F(ConfiguredService, InASandboxHasTheDeviceOfTheSandboxOnlyWhenItNamesNone)
{
    setenv("PVR_SANDBOX", (folder / "").c_str(), 1);
    {
        const Simulator simulator({"--config", config});
        EXPECT_EQ(peer.call("get_rec_device_name"), "('stick', 0)");
    }
    support::write_file(config, "tuners = 1\n");
    const Simulator simulator({"--config", config});
    unsetenv("PVR_SANDBOX");
    EXPECT_EQ(peer.call("get_rec_device_name"), "('usb1', 0)");
}

TEST_F(ConfiguredService, IsNotStartedFromAFileWithMistakes)
{
    support::write_file(config, "tuners = 9\nspeeed = 1\n");
    Program program({"pvr-simulator", "--config", config});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.rest(), "");
    EXPECT_EQ(program.complaints(),
              config + ":1: tuners is 9, expected a whole number from 1 to 8\n" + config +
                  ":2: 'speeed' is no key here, expected speed, tuners, timeshift, latency, device or channel\n");
}

TEST_F(ConfiguredService, IsNotStartedFromAFileThatCannotBeRead)
{
    for (const std::string &path : {folder / "missing", folder.path()}) {
        Program program({"pvr-simulator", "--config", path});
        EXPECT_EQ(program.wait(), 2);
        EXPECT_EQ(program.complaints().substr(0, 15), "pvr-simulator: ");
        EXPECT_NE(program.complaints().find(path), std::string::npos) << program.complaints();
    }
}

TEST_F(ConfiguredService, RefusesOptionsAboutChannelsThatTheFileDoesNotHave)
{
    Program program({"pvr-simulator", "--config", config, "--bit-rate", "1=188000"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.complaints(), "pvr-simulator: there is no channel 1\n");
}
