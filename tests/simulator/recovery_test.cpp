// What a service that was ended in the middle has left on a device.
#include "recovery.h"

#include "recorder_fixture.h"
#include "test_programme.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/file.h>
#include <vector>

using namespace recorder_test;

namespace {

class Recovery : public testing::Test {
protected:
    void leave(const std::string &name, int seconds, bool is_complete)
    {
        write_test_programme(folder / (name + ".srf"), seconds);
        pvr_file_info_s info{};
        info.start_time = 42;
        info.record_complete = is_complete ? 1 : 0;
        make_info(folder / (name + ".inf"), info);
    }
    std::string bytes(const std::string &name) const
    {
        std::ifstream stream(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    support::TemporaryFolder folder;
};

} // namespace

TEST_F(Recovery, MarksWhatWasCutOffAsIncomplete)
{
    leave("a", 12, false);
    std::ofstream(folder / "a.srf", std::ios::binary | std::ios::app) << std::string(100, 'x'); // within a packet
    EXPECT_EQ(recover(folder.path()), (Lines{folder / "a.srf was cut off after 12 s"}));
    const pvr_file_info_s info = *read_info(folder / "a.inf");
    EXPECT_NEAR(static_cast<double>(info.duration), 12'000, 50);
    EXPECT_EQ(int{info.record_complete}, 1);
    EXPECT_EQ(int{info.incomplete_reason}, 4);
    EXPECT_EQ(std::uint32_t{info.start_time}, 42U) << "everything else stays";
    EXPECT_EQ(recover(folder.path()), Lines()) << "once";
}

TEST_F(Recovery, KnowsNoLengthOfWhatHasHardlyBegun)
{
    leave("a", 1, false);
    fs::resize_file(folder / "a.srf", 0);
    EXPECT_EQ(recover(folder.path()), (Lines{folder / "a.srf was cut off after 0 s"}));
    EXPECT_EQ(int{read_info(folder / "a.inf")->record_complete}, 1);
}

TEST_F(Recovery, LeavesAloneWhatWasNotCutOff)
{
    leave("complete", 2, true);
    leave("alone", 2, false);
    fs::remove(folder / "alone.inf"); // no more is known of it than of any other file
    leave("older", 2, false);
    fs::resize_file(folder / "older.inf", 100);
    leave("linked", 2, false);
    fs::rename(folder / "linked.srf", folder / "other");
    fs::create_symlink(folder / "other", folder / "linked.srf");
    std::vector<std::string> before;
    for (const std::string &name : folder.names())
        before.push_back(name + bytes(name));
    EXPECT_EQ(recover(folder.path()), Lines());
    std::vector<std::string> after;
    for (const std::string &name : folder.names())
        after.push_back(name + bytes(name));
    EXPECT_TRUE(before == after);
}

TEST_F(Recovery, LeavesAloneWhatAnotherServiceIsWriting)
{
    RecordingFile recording(folder / "a.srf", pvr_file_info_s{});
    RecordingFile shift(folder / "timeshift.tmp", pvr_file_info_s{});
    EXPECT_EQ(recover(folder.path()), Lines());
    EXPECT_EQ(int{read_info(folder / "a.inf")->record_complete}, 0);
    EXPECT_TRUE(fs::exists(folder / "timeshift.tmp"));
    EXPECT_TRUE(fs::exists(folder / "timeshift.inf"));
}

TEST_F(Recovery, RemovesATimeshift)
{
    {
        const RecordingFile shift(folder / "timeshift.tmp", pvr_file_info_s{});
    }
    std::ofstream(folder / "timeshift.new") << "a copy of it";
    std::ofstream(folder / "other.tmp") << "content";
    EXPECT_EQ(recover(folder.path()), (Lines{folder / "timeshift.tmp was left over"}));
    EXPECT_EQ(folder.names(), (Lines{"other.tmp"}));
}

TEST_F(Recovery, SaysWhatItCouldNotSetRight)
{
    leave("a", 2, false);
    const Descriptor reader(open((folder / "a.inf").c_str(), O_RDONLY));
    ASSERT_EQ(flock(reader.number(), LOCK_EX), 0);
    const Lines lines = recover(folder.path());
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("a recording that was cut off stays unfinished: ")) << lines[0];
}

TEST_F(Recovery, HasNothingToDoInAFolderThatIsNotThere) { EXPECT_EQ(recover(folder / "missing"), Lines()); }
