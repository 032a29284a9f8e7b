// The storage devices on a real bus: every method about them, and the signals that tell of them.
#include "peer.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <sys/statvfs.h>

using namespace simulator_test;

namespace fs = std::filesystem;

namespace {

class DeviceService : public testing::Test {
protected:
    /// Has a device measured, and waits until that is over.
    std::string measure(int device)
    {
        EXPECT_EQ(peer.call("start_performance_test", "(" + std::to_string(device) + ",)"), "(0,)");
        return peer.signals_until("result_to_apps (15").back();
    }

    // The devices are there before the service is.
    support::TemporaryFolder folder;
    const std::string one = made("one");
    const std::string two = made("two");
    const std::string slow = made("slow");
    Simulator simulator{{"--device", "one=" + one, "--slow-device", "slow=" + slow, "--device", "two=" + two + "/"}};
    Peer peer;

private:
    std::string made(const std::string &name) const
    {
        fs::create_directory(folder / name);
        return folder / name;
    }
};

class NoDeviceService : public testing::Test {
protected:
    Simulator simulator;
    Peer peer;
};

} // namespace

TEST_F(DeviceService, ListsItsDevices)
{
    EXPECT_EQ(peer.call("get_device_list", "(10,)"), "([1, 2, 3], 3, 0)");
    EXPECT_EQ(peer.call("get_device_list", "(2,)"), "([1, 2], 3, 0)");
    EXPECT_EQ(peer.call("get_device_list", "(0,)"), "([], 3, 0)");
    EXPECT_EQ(peer.call("get_device_list", "(-1,)"), "([], 3, 0)");
    EXPECT_EQ(peer.call("get_rec_device_list", "(10,)"), "([1, 2, 3], 3, 0)");
    EXPECT_EQ(peer.call("get_rec_device_list", "(1,)"), "([1], 3, 0)");
    EXPECT_EQ(peer.call("get_dev_total"), "(3, 0)");
    EXPECT_EQ(peer.call("get_record_dev_total"), "(3, 0)");
    EXPECT_EQ(peer.call("check_device", "(3,)"), "(0,)");
    EXPECT_EQ(peer.call("check_device", "(4,)"), "(-2,)");
}

TEST_F(DeviceService, DescribesADevice)
{
    struct statvfs status {};
    ASSERT_EQ(statvfs(two.c_str(), &status), 0);
    const std::string total = std::to_string(status.f_blocks * status.f_frsize >> 20);
    const std::string answer = peer.call("get_device_info", "(2,)");
    const std::regex form(R"(\(\(1, 0, 'two', 'Development storage two', '([^']*)', (\d+), (\d+)\), 0\))");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(answer, parts, form)) << answer;
    EXPECT_EQ(parts[1], two);
    EXPECT_EQ(parts[2], total);
    EXPECT_LE(std::stoll(parts[3]), std::stoll(total));
    EXPECT_EQ(peer.call("get_device_info", "(9,)"), "((0, 0, '', '', '', 0, 0), -2)");
    EXPECT_EQ(peer.call("get_rec_dev_name", "(2,)"), "('two', 0)");
    EXPECT_EQ(peer.call("get_rec_dev_name", "(9,)"), "('', -2)");
    EXPECT_EQ(peer.call("get_product_name", "('" + two + "',)"), "('Development storage two',)");
    EXPECT_EQ(peer.call("get_product_name", "('/',)"), "('',)");
    const std::string capacity = peer.call("get_rec_dev_capacity");
    EXPECT_TRUE(capacity.ends_with(", " + total + ")")) << capacity;
}

TEST_F(DeviceService, ChangesTheDefaultDevice)
{
    EXPECT_EQ(peer.call("get_default_rec_device"), "(1, 0)");
    EXPECT_EQ(peer.call("get_next_def_rec_dev"), "(2, 0)");
    EXPECT_EQ(peer.call("set_default_rec_device", "(3,)"), "(0,)");
    EXPECT_EQ(peer.call("get_default_rec_device"), "(3, 0)");
    EXPECT_EQ(peer.call("get_rec_device_name"), "('slow', 0)");
    EXPECT_EQ(peer.call("get_next_def_rec_dev"), "(1, 0)");
    EXPECT_EQ(peer.call("get_potential_rec_dev"), "(1, 0)") << "all have the same room, and this is the first";
    EXPECT_EQ(peer.call("set_default_rec_device", "(9,)"), "(-2,)");
    EXPECT_EQ(peer.call("get_default_rec_device"), "(3, 0)");
    EXPECT_EQ(peer.call("is_exist_rec_device"), "(1,)");
}

TEST_F(DeviceService, MeasuresADevice)
{
    EXPECT_EQ(peer.call("is_need_performance_test", "(0,)"), "(1,)") << "0 stands for the first";
    EXPECT_EQ(peer.call("get_performance_test_result", "(1,)"), "(-2,)");
    EXPECT_EQ(measure(1), "result_to_apps (15, <(1,)>)");
    EXPECT_EQ(peer.call("get_performance_test_result", "(1,)"), "(1,)");
    EXPECT_EQ(peer.call("is_need_performance_test", "(0,)"), "(0,)");
    EXPECT_EQ(peer.call("is_need_performance_test", "(2,)"), "(1,)");
    EXPECT_EQ(peer.call("is_need_performance_test", "(9,)"), "(-2,)");
    EXPECT_EQ(peer.call("start_performance_test", "(9,)"), "(-2,)");
    EXPECT_EQ(peer.call("set_default_rec_device", "(3,)"), "(0,)");
    EXPECT_EQ(measure(3), "result_to_apps (15, <(0,)>)");
    EXPECT_EQ(peer.call("get_rec_device_list", "(10,)"), "([1, 2], 2, 0)");
    EXPECT_EQ(peer.call("get_default_rec_device"), "(1, 0)") << "the chosen one has turned out to be too slow";
}

TEST_F(DeviceService, FormatsADevice)
{
    std::ofstream(one + "/recording.srf") << "content";
    std::ofstream(two + "/recording.srf") << "content";
    fs::create_directory_symlink(two, one + "/link");
    EXPECT_EQ(peer.call("format", "(1, 0)"), "(0,)");
    EXPECT_EQ(peer.call("format", "(1, 0)"), "(-2,)") << "it is under way";
    EXPECT_EQ(peer.call("get_default_rec_device"), "(2, 0)");
    EXPECT_EQ(peer.signals_until("result_to_apps"), (Lines{"result_to_apps (14, <(0,)>)"}));
    EXPECT_TRUE(fs::is_empty(one));
    EXPECT_TRUE(fs::exists(two + "/recording.srf"));
    EXPECT_EQ(peer.call("format", "(9, 0)"), "(-2,)");
}

TEST_F(DeviceService, MakesAFolderOnADevice)
{
    EXPECT_EQ(peer.call("mkdir", "('" + one + "/contents', 448)"), "(0,)");
    EXPECT_EQ(fs::status(one + "/contents").permissions(), fs::perms::owner_all);
    EXPECT_EQ(peer.call("mkdir", "('" + (folder / "beside") + "', 448)"), "(-2,)");
    EXPECT_FALSE(fs::exists(folder / "beside"));
}

TEST_F(DeviceService, LogsWhatHappens)
{
    peer.call("check_device", "(9,)");
    peer.call("get_default_rec_device");
    measure(3);
    fs::remove(one);
    peer.signals_until("result_to_apps (102");
    EXPECT_EQ(simulator.log(), (Lines{
                                   "device 1 is one at " + one,
                                   "device 2 is two at " + two,
                                   "device 3 is slow at " + slow,
                                   "check_device(deviceHandle 9)  refused: no such device",
                                   "get_default_rec_device()  handle 1, ok",
                                   "start_performance_test(deviceHandle 3)  ok",
                                   "signal: device 3, PS_PERFORMANCE_TEST 0",
                                   "signal: device 1, PS_REMOVE_DEV",
                               }));
}

TEST_F(DeviceService, NoticesByItselfThatADeviceIsGone)
{
    fs::remove(two);
    EXPECT_EQ(peer.signals_until("result_to_apps"), (Lines{"result_to_apps (102, <('" + two + "',)>)"}));
}

TEST_F(NoDeviceService, RefusesWhatNeedsADevice)
{
    const std::pair<std::string, std::string> answers[] = {
        {"get_default_rec_device", "(0, -2)"},
        {"get_next_def_rec_dev", "(0, -2)"},
        {"get_potential_rec_dev", "(0, -2)"},
        {"get_rec_device_name", "('', -2)"},
        {"get_dev_total", "(0, 0)"},
        {"get_record_dev_total", "(0, 0)"},
        {"get_rec_dev_capacity", "(0, 0)"},
        {"is_exist_rec_device", "(0,)"},
        {"is_available", "(0,)"},
    };
    for (const auto &[method, answer] : answers)
        EXPECT_EQ(peer.call(method), answer) << method;
    EXPECT_EQ(peer.call("is_need_performance_test", "(0,)"), "(-2,)");
    EXPECT_EQ(peer.call("mkdir", "('/tmp', 448)"), "(-2,)");
}
