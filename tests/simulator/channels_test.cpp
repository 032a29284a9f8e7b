// The channels, with a clock that the test sets, and the values that applications leave.
#include "channels.h"
#include "shared_values.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <string>
#include <vector>

using namespace simulator;

namespace {

constexpr ChannelKind television = ChannelKind::television;
constexpr std::int64_t half_past_one = 10 * 86400 + 90 * 60;

class ChannelsTest : public testing::Test {
protected:
    std::optional<Programme> programme(std::uint64_t id) { return channels.programme(*channels.find(id)); }
    int seen_and_heard(std::uint64_t id) { return Channels::seen_and_heard(*channels.find(id)); }

    std::int64_t now = half_past_one;
    Channels channels{{
                          {10, "Open", 1, 1, television, 1, 1000, true, false, false, {"One", "Two", "Three"}},
                          {11, "Radio", 2, 1, ChannelKind::radio, 1, 1000, true, false, false, {"Sound"}},
                          {12, "Analogue", 3, 0, ChannelKind::analogue, 2, 0, true, false, false, {}},
                          {13, "Locked", 4, 1, television, 1, 1000, true, true, false, {"Film"}},
                          {14, "Dark", 5, 1, television, 1, 1000, false, false, false, {"Film"}},
                          {15, "Scrambled", 6, 1, television, 1, 1000, true, false, true, {"Film"}},
                      },
                      [this] { return now; }};
};

} // namespace

TEST_F(ChannelsTest, ShowProgrammesOfHalfAnHourOneAfterTheOther)
{
    const std::string first = programme(10)->title;
    EXPECT_EQ(programme(10)->start, half_past_one);
    EXPECT_EQ(programme(10)->end, half_past_one + 1800);
    std::set<std::string> titles{first};
    now += 1799;
    EXPECT_EQ(programme(10)->title, first);
    now += 1;
    EXPECT_EQ(programme(10)->start, half_past_one + 1800);
    titles.insert(programme(10)->title);
    now += 1800;
    titles.insert(programme(10)->title);
    EXPECT_EQ(titles, (std::set<std::string>{"One", "Two", "Three"}));
    now += 1800;
    EXPECT_EQ(programme(10)->title, first);
}

TEST_F(ChannelsTest, TellNothingOfProgrammesThatCannotBeKnown)
{
    EXPECT_EQ(programme(12), std::nullopt) << "an analogue channel tells nothing";
    EXPECT_EQ(programme(14), std::nullopt) << "without a signal";
    channels.set_date(false);
    EXPECT_EQ(programme(10), std::nullopt) << "without the time";
    channels.set_date(true);
    EXPECT_NE(programme(10), std::nullopt);
}

TEST_F(ChannelsTest, TellWhatCanBeSeenAndHeard)
{
    const std::pair<std::uint64_t, int> expected[] = {{10, 3}, {11, 1}, {12, 3}, {13, 0}, {14, 0}, {15, 0}};
    for (const auto &[id, status] : expected)
        EXPECT_EQ(seen_and_heard(id), status) << channels.find(id)->name;
}

TEST_F(ChannelsTest, AreDescrambledWhenNoneIsScrambled)
{
    EXPECT_TRUE(channels.are_descrambled({}));
    EXPECT_TRUE(channels.are_descrambled(std::vector<std::uint64_t>{10, 11}));
    EXPECT_FALSE(channels.are_descrambled(std::vector<std::uint64_t>{10, 15}));
    EXPECT_FALSE(channels.are_descrambled(std::vector<std::uint64_t>{99}));
}

TEST_F(ChannelsTest, StayTunedWhenThereIsNoSuchChannel)
{
    EXPECT_EQ(channels.current(), 10U);
    EXPECT_TRUE(channels.tune(14).is_done());
    EXPECT_EQ(channels.current(), 14U);
    EXPECT_EQ(channels.tune(99).reason, "no such channel");
    EXPECT_EQ(channels.current(), 14U);
}

TEST(BuiltInChannels, DifferAndUseAll64BitsOfTheirIds)
{
    std::set<std::uint64_t> ids;
    std::set<std::string> names;
    for (const Channel &channel : built_in_channels()) {
        ids.insert(channel.service_id);
        names.insert(channel.name);
        EXPECT_EQ(channel.bits_per_second == 0, channel.kind == ChannelKind::analogue) << channel.name;
    }
    EXPECT_EQ(ids.size(), built_in_channels().size());
    EXPECT_EQ(names.size(), ids.size());
    EXPECT_FALSE(ids.contains(0)) << "which stands for no channel";
    EXPECT_GT(*ids.rbegin(), std::uint64_t{std::numeric_limits<std::int64_t>::max()});
    EXPECT_GT(*std::next(ids.rbegin()), std::uint64_t{std::numeric_limits<std::uint32_t>::max()});
}

TEST(SharedValues, KeepTheNewestOfEachType)
{
    const Handles handles;
    SharedValues values(handles);
    EXPECT_EQ(values.get(-7), std::nullopt);
    EXPECT_TRUE(values.set(-7, 1).is_done());
    EXPECT_TRUE(values.set(-7, std::numeric_limits<std::int64_t>::min()).is_done());
    EXPECT_TRUE(values.set(8, 0).is_done());
    EXPECT_EQ(values.get(-7), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(values.get(8), 0);
}

TEST(SharedValues, RefuseToGrowForEver)
{
    const Handles handles;
    SharedValues values(handles);
    for (int type = 0; type < static_cast<int>(SharedValues::most_values); ++type)
        EXPECT_TRUE(values.set(type, type).is_done());
    EXPECT_EQ(values.set(-1, 5).reason, "too many kinds of values");
    EXPECT_EQ(values.get(-1), std::nullopt);
    EXPECT_TRUE(values.set(3, 5).is_done());
    EXPECT_EQ(values.get(3), 5);
}

TEST(SharedValues, KeepAChannelNumberUntilItsHandleIsReleased)
{
    Handles handles;
    SharedValues values(handles);
    EXPECT_EQ(values.set_channel_number(1, "12-1").reason, "no such handle");
    const int handle = handles.issue();
    EXPECT_EQ(values.channel_number(handle), "");
    EXPECT_TRUE(values.set_channel_number(handle, "12-1").is_done());
    EXPECT_EQ(values.set_channel_number(handle, std::string(256, '1')).reason,
              "a channel number of more than 255 bytes");
    EXPECT_EQ(values.channel_number(handle), "12-1");
    handles.release(handle);
    EXPECT_EQ(values.channel_number(handle), "");
}

TEST(SharedValues, KeepAsMuchOfTheChannelNamesAsWasSaid)
{
    const Handles handles;
    SharedValues values(handles);
    const std::pair<int, std::string> lengths[] = {{5, "eng:O"}, {100, "eng:One"}, {0, ""}};
    for (const auto &[length, kept] : lengths) {
        EXPECT_TRUE(values.set_channel_names("eng:One", length).is_done());
        EXPECT_EQ(values.channel_names(), kept);
    }
    EXPECT_EQ(values.set_channel_names("eng:One", -1).reason, "a length below 0");
}
