// A service with one device, and an application that records with it.
#pragma once

#include "info_file.h"
#include "peer.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace simulator_test {

class RecordingPeer : public testing::Test {
protected:
    RecordingPeer() { std::filesystem::create_directory(device); }

    void run(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"--device", "usb=" + device});
        simulator.emplace(options);
    }
    /// Lets so many seconds pass at once.
    void step(int seconds) { EXPECT_EQ(peer.control("Step", "(uint64 " + std::to_string(seconds) + ",)"), "()"); }
    std::string start(const std::string &channel, int duration = 0)
    {
        std::string answer = peer.call("call_app", "(0, uint64 " + channel + ", 1, '', uint32 0)");
        if (duration != 0)
            peer.call("call_app", "(4, uint64 " + channel + ", " + std::to_string(duration) + ", '', uint32 0)");
        return answer;
    }
    /// Sets a recording for later, and answers as the service does.
    std::string schedule(const std::string &channel, int in_seconds, int duration)
    {
        return peer.control("ScheduleRecording", "(uint64 " + channel + ", uint64 " + std::to_string(in_seconds) +
                                                     ", uint64 " + std::to_string(duration) + ")");
    }
    std::string of_channel(const std::string &method, const std::string &channel)
    {
        return peer.call(method, "(uint64 " + channel + ",)");
    }
    std::string path_of(const std::string &channel)
    {
        const std::string answer = of_channel("get_recording_uri_by_service_id", channel);
        return answer.substr(2, answer.size() - 5);
    }
    static pvr_file_info_s info(const std::string &path)
    {
        const auto found = simulator::read_info(simulator::with_extension(path, "inf"));
        EXPECT_TRUE(found) << path;
        return found.value_or(pvr_file_info_s{});
    }

    support::TemporaryFolder folder;
    const std::string device = folder / "usb";
    std::optional<Simulator> simulator;
    Peer peer;
};

} // namespace simulator_test
