// The written programme, taken apart again.
#include "test_programme.h"

#include "packets.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

constexpr int map_pid = TestProgramme::map_pid;
constexpr int audio_pid = TestProgramme::audio_pid;
constexpr int count_pid = TestProgramme::count_pid;
constexpr int lowest = 188'000; // bits per second

std::vector<std::uint8_t> content_of(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<packets::Parsed> programme(int seconds, int bit_rate = lowest)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a.srf", seconds, bit_rate);
    const std::vector<std::uint8_t> bytes = content_of(folder / "a.srf");
    EXPECT_EQ(bytes.size() % packets::size, 0U);
    std::vector<packets::Parsed> parsed;
    for (std::size_t at = 0; at + packets::size <= bytes.size(); at += packets::size) {
        EXPECT_EQ(bytes[at], 0x47);
        parsed.push_back(packets::parse(std::span(bytes).subspan(at, packets::size)));
    }
    return parsed;
}

/// The remainder of a section with its checksum, which is 0 when they belong together.
std::uint32_t remainder(std::span<const std::uint8_t> section)
{
    std::uint64_t value = 0xffffffff;
    for (const std::uint8_t byte : section)
        for (int bit = 7; bit >= 0; --bit) {
            const std::uint64_t is_reduced = (value >> 31 & 1) ^ (byte >> bit & 1U);
            value = (value << 1 & 0xffffffff) ^ is_reduced * 0x04c11db7;
        }
    return static_cast<std::uint32_t>(value);
}

/// The section at the start of a payload; its length has been checked.
std::vector<std::uint8_t> section_of(const packets::Parsed &packet)
{
    EXPECT_TRUE(packet.starts_unit);
    const auto *start = packet.payload.data() + 1 + packet.payload[0];
    const std::size_t size = 3U + static_cast<std::size_t>((start[1] & 0xf) * 256 + start[2]);
    EXPECT_LE(1 + packet.payload[0] + size, packet.payload.size());
    return {start, start + size};
}

std::int64_t presentation_time(std::span<const std::uint8_t> field)
{
    EXPECT_EQ(field[0] & 0xf1, 0x21);
    EXPECT_EQ(field[2] & 1, 1);
    EXPECT_EQ(field[4] & 1, 1);
    return std::int64_t{field[0] >> 1 & 7} << 30 | std::int64_t{field[1]} << 22 | std::int64_t{field[2] >> 1} << 15 |
           std::int64_t{field[3]} << 7 | std::int64_t{field[4] >> 1};
}

std::uint64_t number(std::span<const std::uint8_t> bytes)
{
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value * 256 + byte;
    return value;
}

/// The same is true at whatever rate, in bits per second.
class TestProgrammeAt : public testing::TestWithParam<int> {
public:
    /// When a packet arrives, in ticks.
    static double arrival(std::size_t index)
    {
        return static_cast<double>(index) * 188 * 8 / GetParam() * static_cast<double>(packets::rate);
    }
};

INSTANTIATE_TEST_SUITE_P(Rates, TestProgrammeAt,
                         testing::Values(lowest, 188'001, 250'000, 2'000'000, 4'000'000, 8'000'000),
                         testing::PrintToStringParamName());

} // namespace

TEST(TestProgramme, PlaysAsLongAsItWasAskedTo)
{
    const support::TemporaryFolder folder;
    for (const int seconds : {1, 2, 3, 10, 61}) {
        write_test_programme(folder / "a.srf", seconds);
        const int file = open((folder / "a.srf").c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(transport_stream_length(file, lseek(file, 0, SEEK_END)), std::chrono::seconds(seconds));
        close(file);
    }
}

TEST_P(TestProgrammeAt, TakesAsManyBytesAsItsRateSays)
{
    constexpr int seconds = 7;
    const auto bits = programme(seconds, GetParam()).size() * 188 * 8;
    EXPECT_LE(bits, static_cast<std::size_t>(GetParam()) * seconds);
    EXPECT_GT(bits + 188 * 8, static_cast<std::size_t>(GetParam()) * seconds);
}

TEST_P(TestProgrammeAt, CountsThePacketsOfEachPidWithoutAGap)
{
    std::map<int, int> counters;
    for (const packets::Parsed &packet : programme(5, GetParam())) {
        if (const auto [entry, is_first] = counters.try_emplace(packet.pid, packet.counter); !is_first) {
            ASSERT_EQ(packet.counter, (entry->second + 1) % 16);
            entry->second = packet.counter;
        }
    }
    std::vector<int> pids;
    for (const auto &[pid, counter] : counters)
        pids.push_back(pid);
    std::vector<int> expected{0, map_pid, audio_pid};
    if (GetParam() > lowest)
        expected.push_back(count_pid);
    EXPECT_EQ(pids, expected);
}

TEST_P(TestProgrammeAt, SaysWhatItConsistsOf)
{
    const std::vector<packets::Parsed> all = programme(1, GetParam());
    const bool has_count = GetParam() > lowest;
    EXPECT_EQ(all[0].pid, 0);
    EXPECT_EQ(all[1].pid, map_pid);
    for (const packets::Parsed &packet : all) {
        if (packet.pid != 0 && packet.pid != map_pid)
            continue;
        const std::vector<std::uint8_t> section = section_of(packet);
        EXPECT_EQ(remainder(section), 0U);
        if (packet.pid == 0) {
            ASSERT_EQ(section.size(), 16U);
            EXPECT_EQ(section[0], 0); // table id
            EXPECT_EQ((section[10] & 0x1f) * 256 + section[11], map_pid);
            continue;
        }
        ASSERT_EQ(section.size(), has_count ? 26U : 21U);
        EXPECT_EQ(section[0], 2);
        EXPECT_EQ((section[8] & 0x1f) * 256 + section[9], audio_pid); // carries the clock
        EXPECT_EQ(section[12], 3);                                    // MPEG-1 audio
        EXPECT_EQ((section[13] & 0x1f) * 256 + section[14], audio_pid);
        if (has_count) {
            EXPECT_EQ(section[17], 6); // private data in PES packets
            EXPECT_EQ((section[18] & 0x1f) * 256 + section[19], count_pid);
        }
    }
}

TEST_P(TestProgrammeAt, TellsTheTimeOftenAndAtAConstantRate)
{
    const std::vector<packets::Parsed> all = programme(10, GetParam());
    std::int64_t previous = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i].ticks)
            continue;
        ASSERT_NEAR(static_cast<double>(*all[i].ticks), arrival(i), 0.501);
        ASSERT_LE(*all[i].ticks - previous, packets::rate / 25);
        previous = *all[i].ticks;
    }
    EXPECT_GT(previous, 9 * packets::rate);
}

TEST_P(TestProgrammeAt, SendsEachFrameAndItsTablesAsSoonAsTheyAreDue)
{
    constexpr double frame_length = 0.024 * static_cast<double>(packets::rate);
    const double packet_length = arrival(1);
    const std::vector<packets::Parsed> all = programme(5, GetParam());
    std::size_t frames = 0;
    std::size_t in_frame = 0;
    double late = 0; // what there is no room for waits
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].pid == count_pid)
            continue;
        constexpr int order[] = {0, map_pid, audio_pid};
        ASSERT_EQ(all[i].pid, order[in_frame]);
        if (in_frame == 0) {
            late = arrival(i) - static_cast<double>(frames) * frame_length;
            ASSERT_GT(late, -0.001);
            ASSERT_LT(late, packet_length);
        } else {
            ASSERT_EQ(all[i - 1].pid, order[in_frame - 1]);
        }
        in_frame = (in_frame + 1) % 3;
        frames += in_frame == 0 ? 1 : 0;
    }
    EXPECT_GE(frames, 5U * 1000 / 24);
}

TEST_P(TestProgrammeAt, NumbersThePacketsThatFillTheRoom)
{
    std::uint64_t count = 0;
    const std::vector<packets::Parsed> all = programme(5, GetParam());
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].pid != count_pid)
            continue;
        ASSERT_TRUE(all[i].starts_unit);
        const std::span pes(all[i].payload);
        ASSERT_EQ(pes.size(), 184U);
        ASSERT_EQ(number(pes.first(4)), 0x1bdU);       // private stream 1
        ASSERT_EQ(number(pes.subspan(4, 2)), 178U);    // of which this much follows
        ASSERT_EQ(number(pes.subspan(7, 2)), 0x8005U); // a presentation time and nothing else
        ASSERT_NEAR(static_cast<double>(presentation_time(pes.subspan(9, 5)) - 18000), arrival(i) / 300, 1);
        ASSERT_EQ(number(pes.subspan(14, 8)), count);
        ++count;
    }
    const auto room = (GetParam() - lowest) * 5 / (188 * 8);
    EXPECT_NEAR(static_cast<double>(count), room, 3);
}

TEST(TestProgramme, RefusesARateThatItsSoundDoesNotFitInto)
{
    for (const int bit_rate : {-1, 0, 187'999})
        EXPECT_THROW(TestProgramme{bit_rate}, std::system_error) << bit_rate;
}

TEST(TestProgramme, CarriesSilentFramesEachDueAfterItArrives)
{
    std::int64_t frames = 0;
    for (const packets::Parsed &packet : programme(5)) {
        if (packet.pid != audio_pid)
            continue;
        ASSERT_EQ(packet.payload.size(), 14U + 96U);
        EXPECT_TRUE(packet.starts_unit);
        const std::span pes(packet.payload);
        EXPECT_EQ(std::vector(pes.begin(), pes.begin() + 4), (std::vector<std::uint8_t>{0, 0, 1, 0xc0}));
        EXPECT_EQ(pes[4] * 256 + pes[5], 14 + 96 - 6);
        EXPECT_EQ(pes[7], 0x80); // a presentation time and nothing else
        const std::int64_t due = presentation_time(pes.subspan(9, 5));
        EXPECT_EQ(due - 18000, frames * 90000 * 24 / 1000);
        EXPECT_GT(due, packet.ticks.value() / 300);
        EXPECT_LT(due, packet.ticks.value() / 300 + 90000);

        const std::span frame = pes.subspan(14);
        EXPECT_EQ(frame[0] * 256 + frame[1], 0xfffd); // MPEG-1 layer II, without a checksum
        EXPECT_EQ(frame[2], 1 << 4 | 1 << 2);         // 32 kbit/s, 48 kHz: 96 bytes, 24 ms
        EXPECT_EQ(frame[3] >> 6, 3);                  // one channel
        for (const std::uint8_t byte : frame.subspan(4))
            EXPECT_EQ(byte, 0); // nothing allocated
        ++frames;
    }
    EXPECT_EQ(frames, 5 * 1000 / 24);
}

TEST(WriteTestProgramme, ReplacesAFileAndLeavesNothingElse)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a.srf", 2);
    const auto longer = content_of(folder / "a.srf").size();
    write_test_programme(folder / "a.srf", 1);
    EXPECT_EQ(content_of(folder / "a.srf").size() * 2, longer);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.srf"}));
}

TEST(WriteTestProgramme, MakesAFileThatOthersMayRead)
{
    const support::TemporaryFolder folder;
    const mode_t before = umask(022);
    write_test_programme(folder / "a.srf", 1);
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat((folder / "a.srf").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644U);
}

TEST(WriteTestProgramme, LeavesNothingAndWhatWasThereWhenItFails)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a.srf", 1);
    const auto before = content_of(folder / "a.srf");

    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlim_t whole = limit.rlim_cur;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    limit.rlim_cur = 30000;
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_THROW(write_test_programme(folder / "a.srf", 2), std::system_error);
    EXPECT_THROW(write_test_programme(folder / "b.srf", 2), std::system_error);
    limit.rlim_cur = whole;
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(content_of(folder / "a.srf"), before);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.srf"}));
}

TEST(WriteTestProgramme, RefusesPlacesWhereNoFileCanBe)
{
    const support::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder.srf");
    for (const std::string &path : {folder / "folder.srf", folder / "missing/a.srf", std::string("/dev/null")})
        EXPECT_THROW(write_test_programme(path, 1), std::system_error) << path;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"folder.srf"}));
}
