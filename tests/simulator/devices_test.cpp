// The storage devices, with a clock that the test moves and folders of its own; and what is done to such a folder.
#include "devices.h"

#include "pvr_events.h"
#include "support/temporary_folder.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <utility>
#include <vector>

using namespace simulator;
using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;
using List = std::vector<int>;

class DevicesTest : public testing::Test {
protected:
    DevicesTest()
    {
        for (const char *name : {"one", "two", "slow"})
            fs::create_directory(folder / name);
    }

    Lines events() { return std::exchange(events_, {}); }
    void pass(Microseconds time)
    {
        now += time;
        devices().advance();
    }
    /// Made when first used, once the test has arranged the folders.
    Devices &devices()
    {
        if (!devices_)
            devices_.emplace(
                std::vector<DeviceDescription>{
                    {"one", folder / "one"}, {"two", folder / "two"}, {"slow", folder / "slow", true}},
                [this] { return now; }, [this](const std::string &path) { return space[path]; },
                [this](const DeviceEvent &event) {
                    const char *kinds[] = {"came", "left", "formatted", "measured"};
                    const bool has_result = event.kind >= DeviceEvent::formatted;
                    events_.push_back(std::to_string(event.handle) + " " + event.name + " " + kinds[event.kind] +
                                      (has_result ? " " + std::to_string(event.result) : ""));
                    EXPECT_EQ(event.mount_path, folder / event.name);
                });
        return *devices_;
    }

    support::TemporaryFolder folder;
    Microseconds now = 1000s;
    std::map<std::string, Space> space;

private:
    Lines events_;
    std::optional<Devices> devices_;
};

/// The code of the error that a function throws; 0 when it does not.
template <typename Function>
int error_of(Function function)
{
    try {
        function();
    } catch (const std::system_error &error) {
        return error.code().value();
    }
    return 0;
}

} // namespace

TEST_F(DevicesTest, AreThereForAsLongAsTheirFolders)
{
    fs::remove(folder / "two");
    EXPECT_EQ(devices().all(), (List{1, 2}));
    EXPECT_EQ(events(), (Lines{"1 one came", "2 slow came"}));
    fs::create_directory(folder / "two");
    fs::remove(folder / "one");
    EXPECT_EQ(devices().due(), now + Devices::look_interval);
    pass(Devices::look_interval);
    EXPECT_EQ(devices().all(), (List{3, 2}));
    EXPECT_EQ(events(), (Lines{"1 one left", "3 two came"}));
    EXPECT_EQ(devices().find(1), nullptr);
    EXPECT_EQ(devices().check(1).reason, "no such device");
    EXPECT_TRUE(devices().check(3).is_done());
    EXPECT_EQ(devices().first(), 3);
}

TEST_F(DevicesTest, AreNoLinksAndNoFiles)
{
    fs::remove(folder / "one");
    fs::remove(folder / "slow");
    fs::create_directory_symlink(folder / "two", folder / "one");
    std::ofstream(folder / "slow") << "a file";
    EXPECT_EQ(events(), Lines());
    EXPECT_EQ(devices().all(), (List{1}));
    EXPECT_EQ(devices().mounted_at(folder / "two"), devices().find(1));
    EXPECT_EQ(devices().mounted_at(folder / "one"), nullptr);
}

TEST(NoDevices, NeedNoAttention)
{
    Devices none(
        {}, [] { return Microseconds(0); }, space_of, [](const DeviceEvent &) {});
    EXPECT_EQ(none.due(), std::nullopt);
    EXPECT_EQ(none.default_device(), Devices::none);
    EXPECT_EQ(none.next_default(), Devices::none);
    EXPECT_EQ(none.roomiest(), Devices::none);
    EXPECT_EQ(none.first(), Devices::none);
    EXPECT_FALSE(none.is_available());
    EXPECT_EQ(none.space(1).total, 0);
    EXPECT_EQ(none.make_folder("/a", 0755).reason, "not on a device");
}

TEST_F(DevicesTest, TakeRecordingsOnTheFirstUntilAnotherIsChosen)
{
    EXPECT_EQ(devices().default_device(), 1);
    EXPECT_EQ(devices().next_default(), 2);
    EXPECT_TRUE(devices().set_default(3).is_done());
    EXPECT_EQ(devices().default_device(), 3);
    EXPECT_EQ(devices().next_default(), 1) << "the first follows the last";
    EXPECT_EQ(devices().set_default(7).reason, "no such device");
    EXPECT_EQ(devices().default_device(), 3);
}

TEST_F(DevicesTest, RememberWhichWasChosenWhileItIsAway)
{
    EXPECT_TRUE(devices().set_default(2).is_done());
    fs::remove(folder / "two");
    pass(1s);
    EXPECT_EQ(devices().default_device(), 1);
    fs::create_directory(folder / "two");
    pass(1s);
    EXPECT_EQ(devices().default_device(), 4);
}

TEST_F(DevicesTest, TellWhichHasMostRoom)
{
    space = {{folder / "one", {10, 500}}, {folder / "two", {80, 100}}, {folder / "slow", {80, 200}}};
    EXPECT_EQ(devices().roomiest(), 2);
    space[folder / "slow"].available = 81;
    EXPECT_EQ(devices().roomiest(), 3);
    EXPECT_EQ(devices().space(3).total, 200);
}

TEST_F(DevicesTest, AreAvailableWithEnoughRoomOnTheDefaultOne)
{
    space[folder / "one"].available = Devices::least_space - 1;
    space[folder / "two"].available = 1000;
    EXPECT_FALSE(devices().is_available());
    space[folder / "one"].available = Devices::least_space;
    EXPECT_TRUE(devices().is_available());
}

TEST_F(DevicesTest, FindOutHowFastTheyAre)
{
    EXPECT_EQ(devices().measured(1), -2);
    EXPECT_TRUE(devices().measure(1).is_done());
    EXPECT_TRUE(devices().measure(3).is_done());
    EXPECT_EQ(devices().measure(1).reason, "the device is being formatted or measured");
    EXPECT_EQ(devices().measure(9).reason, "no such device");
    events();
    pass(Devices::measuring_time - 1us);
    EXPECT_EQ(events(), Lines());
    EXPECT_EQ(devices().measured(1), -2);
    EXPECT_EQ(devices().recordable(), (List{1, 2, 3}));
    EXPECT_EQ(devices().due(), now + 1us);
    pass(1us);
    EXPECT_EQ(events(), (Lines{"1 one measured 1", "3 slow measured 0"}));
    EXPECT_EQ(devices().measured(1), 1);
    EXPECT_EQ(devices().measured(3), 0);
    EXPECT_EQ(devices().recordable(), (List{1, 2})) << "what is too slow is not recorded to";
    EXPECT_EQ(devices().set_default(3).reason, "it cannot be recorded to");
}

TEST_F(DevicesTest, AreEmptyOnceFormatted)
{
    std::ofstream(folder / "one/recording.srf") << "content";
    std::ofstream(folder / "two/recording.srf") << "content";
    EXPECT_TRUE(devices().measure(1).is_done());
    pass(Devices::measuring_time);
    events();
    EXPECT_TRUE(devices().format(1).is_done());
    EXPECT_EQ(devices().recordable(), (List{2, 3})) << "while it is formatted";
    EXPECT_EQ(devices().default_device(), 2);
    EXPECT_EQ(devices().make_folder(folder / "one/new", 0755).reason, "the device is being formatted");
    EXPECT_EQ(devices().format(1).reason, "the device is being formatted or measured");
    EXPECT_EQ(devices().measure(1).reason, "the device is being formatted or measured");
    pass(Devices::format_time - 1us);
    EXPECT_TRUE(fs::exists(folder / "one/recording.srf"));
    EXPECT_EQ(events(), Lines());
    pass(1us);
    EXPECT_EQ(events(), (Lines{"1 one formatted 0"}));
    EXPECT_TRUE(fs::is_empty(folder / "one"));
    EXPECT_TRUE(fs::exists(folder / "two/recording.srf"));
    EXPECT_EQ(devices().default_device(), 1);
    EXPECT_EQ(devices().measured(1), -2) << "the measurement no longer holds";
}

TEST_F(DevicesTest, TellWhenOneLeavesInTheMiddleOfSomething)
{
    EXPECT_TRUE(devices().format(1).is_done());
    EXPECT_TRUE(devices().measure(2).is_done());
    events();
    fs::remove(folder / "one");
    fs::remove(folder / "two");
    pass(1us);
    EXPECT_EQ(events(), (Lines{"1 one formatted 19", "1 one left", "2 two measured -2", "2 two left"}));
    fs::create_directory(folder / "one");
    std::ofstream(folder / "one/new.srf") << "content";
    pass(10s);
    EXPECT_EQ(events(), (Lines{"4 one came"}));
    EXPECT_TRUE(fs::exists(folder / "one/new.srf")) << "it was another device that was to be formatted";
}

TEST_F(DevicesTest, TakeFoldersWithinThemselvesOnly)
{
    fs::create_directory_symlink(folder / "two", folder / "one/link");
    fs::create_directory(folder / "beside");
    const std::pair<std::string, std::string> paths[] = {
        {folder / "one/a", ""},
        {folder / "one/a//b/", ""},
        {folder / "one/a", "File exists"},
        {folder / "one/missing/b", "No such file or directory"},
        {folder / "one/link/b", "Not a directory"},
        {folder / "one/../beside/b", "Invalid argument"},
        {folder / "one/./b", "Invalid argument"},
        {folder / "one/", "File exists"},
        {folder / "one", "not on a device"},
        {folder / "oneself", "not on a device"},
        {folder / "beside/b", "not on a device"},
        {"one/b", "not on a device"},
        {"", "not on a device"},
    };
    for (const auto &[path, reason] : paths)
        EXPECT_EQ(devices().make_folder(path, 0755).reason, reason) << path;
    EXPECT_TRUE(fs::is_directory(folder / "one/a/b"));
    EXPECT_TRUE(fs::is_empty(folder / "two"));
    EXPECT_TRUE(fs::is_empty(folder / "beside"));
}

TEST_F(DevicesTest, GiveFoldersThePermissionsAskedFor)
{
    const mode_t mask = umask(022);
    EXPECT_TRUE(devices().make_folder(folder / "one/a", 0710).is_done());
    umask(mask);
    EXPECT_EQ(fs::status(folder / "one/a").permissions(), static_cast<fs::perms>(0710));
    EXPECT_EQ(devices().make_folder(folder / "one/b", -1).reason, "no such permissions");
    EXPECT_EQ(devices().make_folder(folder / "one/b", 01000).reason, "no such permissions");
}

TEST(RemoveContent, LeavesNothingInAFolderAndTouchesNothingOutside)
{
    const support::TemporaryFolder folder;
    fs::create_directories(folder / "inside/deep/deeper");
    fs::create_directory(folder / "outside");
    std::ofstream(folder / "outside/kept") << "content";
    std::ofstream(folder / "inside/.hidden") << "content";
    std::ofstream(folder / "inside/deep/deeper/file") << "content";
    fs::create_directory_symlink(folder / "outside", folder / "inside/link");
    fs::create_directory_symlink(folder / "outside", folder / "inside/deep/link");
    fs::create_symlink(folder / "outside/kept", folder / "inside/file link");
    EXPECT_EQ(mkfifo((folder / "inside/pipe").c_str(), 0600), 0);
    remove_content(folder / "inside");
    EXPECT_TRUE(fs::is_empty(folder / "inside"));
    EXPECT_TRUE(fs::exists(folder / "outside/kept"));
}

TEST(RemoveContent, RefusesWhatIsNoFolder)
{
    const support::TemporaryFolder folder;
    fs::create_directory(folder / "outside");
    std::ofstream(folder / "outside/kept") << "content";
    fs::create_directory_symlink(folder / "outside", folder / "link");
    EXPECT_EQ(error_of([&] { remove_content(folder / "link"); }), ENOTDIR);
    EXPECT_EQ(error_of([&] { remove_content(folder / "missing"); }), ENOENT);
    EXPECT_TRUE(fs::exists(folder / "outside/kept"));
}

TEST(SpaceOf, IsThatOfTheFileSystemInMebibytes)
{
    const support::TemporaryFolder folder;
    const fs::space_info expected = fs::space(folder / "");
    const Space space = space_of(folder / "");
    EXPECT_EQ(space.total, static_cast<std::int64_t>(expected.capacity >> 20));
    EXPECT_LE(space.available, space.total);
    EXPECT_EQ(space_of(folder / "missing").total, 0);
}
