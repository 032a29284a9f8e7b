// How long a file plays, and which files are no transport streams.
#include "transport_stream.h"

#include "packets.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

/// A file without a name.
class File {
public:
    explicit File(const std::string &content = {}) : descriptor_(memfd_create("stream", MFD_CLOEXEC))
    {
        write_at(0, content);
    }
    ~File() { close(descriptor_); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    void write_at(off_t offset, const std::string &content)
    {
        if (pwrite(descriptor_, content.data(), content.size(), offset) != static_cast<ssize_t>(content.size()))
            throw std::system_error(errno, std::generic_category(), "pwrite");
    }
    void set_size(off_t size)
    {
        if (ftruncate(descriptor_, size) != 0)
            throw std::system_error(errno, std::generic_category(), "ftruncate");
    }
    int descriptor() const { return descriptor_; }

    Microseconds length() const { return transport_stream_length(descriptor_, lseek(descriptor_, 0, SEEK_END)); }

private:
    int descriptor_;
};

/// Packets of which every tenth, from the first on, carries a clock reference; each packet takes 10 ms.
std::string stream(int packets, std::int64_t first_ticks = 0, int pid = 0x100)
{
    constexpr std::int64_t ticks_per_packet = packets::rate / 100;
    std::string bytes;
    for (int i = 0; i < packets; ++i)
        bytes += i % 10 == 0 ? packets::clock(pid, (first_ticks + i * ticks_per_packet) % packets::wrap)
                             : packets::packet(pid + 1);
    return bytes;
}

std::string refusal(const std::string &content)
{
    try {
        return std::to_string(File(content).length().count()) + " us";
    } catch (const NoTransportStream &reason) {
        return reason.what();
    }
}

constexpr char no_packets[] = "no transport stream: it does not consist of 188-byte packets";
constexpr char no_first_clock[] = "no transport stream to play: no clock reference at its beginning";
constexpr char no_last_clock[] = "no transport stream to play: no clock reference at its end";

} // namespace

TEST(TransportStream, PlaysFromItsFirstToItsLastPacket)
{
    EXPECT_EQ(File(stream(1000)).length(), 10s);
    EXPECT_EQ(File(stream(1005)).length(), 10050ms);
}

TEST(TransportStream, CountsWhatLiesBeforeTheFirstClockReference)
{
    EXPECT_EQ(File(packets::packet(0) + packets::packet(1) + stream(998, 5000)).length(), 10s);
}

TEST(TransportStream, FollowsAClockThatStartsAgain)
{
    EXPECT_EQ(File(stream(1000, packets::wrap - 2 * packets::rate)).length(), 10s);
    EXPECT_EQ(File(stream(1000, packets::wrap - 1)).length(), 10s);
}

TEST(TransportStream, GoesByTheClockOfItsFirstProgramme)
{
    std::string bytes;
    for (int i = 0; i < 100; ++i)
        bytes += packets::clock(0x100, i * packets::rate) + packets::clock(0x200, i * 7 * packets::rate);
    EXPECT_EQ(File(bytes).length(), 100s);
}

TEST(TransportStream, MayBeginAndEndWithinAPacket)
{
    const std::string bytes = stream(1000);
    EXPECT_NEAR(static_cast<double>(File(bytes.substr(100)).length().count()), 10e6, 1e4);
    EXPECT_NEAR(static_cast<double>(File(bytes.substr(0, bytes.size() - 100)).length().count()), 10e6, 1e4);
}

TEST(TransportStream, IsNotMistakenInAPayloadThatLooksLikePackets)
{
    std::string bytes;
    for (int i = 0; i < 20000; ++i)
        bytes += i % 10 == 0 ? packets::clock(0x100, i * packets::rate / 100, 0x47) : packets::packet(0x101, 0x47);
    ASSERT_GT(bytes.size(), probe_size);
    EXPECT_EQ(File(bytes).length(), 200s);
}

TEST(TransportStream, IsReadOnlyAtItsEndsHoweverLongItIs)
{
    // 4 TiB of which nothing else is there: reading it would take an hour.
    constexpr off_t whole = (off_t{4} << 40) / static_cast<off_t>(packets::size) * static_cast<off_t>(packets::size);
    File file(stream(10));
    file.write_at(whole - static_cast<off_t>(packets::size), packets::clock(0x100, 3600 * packets::rate));
    EXPECT_NEAR(static_cast<double>(file.length().count()), 3600e6, 1e3);
}

TEST(TransportStream, WithoutAnEndIsRefused)
{
    File file(stream(1000));
    file.set_size(off_t{4} << 40);
    try {
        file.length();
        FAIL();
    } catch (const NoTransportStream &reason) {
        EXPECT_STREQ(reason.what(), no_last_clock);
    }
}

TEST(TransportStream, OtherFilesAreRefused)
{
    std::string without_clock;
    std::string one_clock = packets::clock(0x100, 5);
    std::string standing_clock;
    std::string errors;
    std::string short_fields;
    for (int i = 0; i < 100; ++i) {
        without_clock += packets::packet(0x100);
        one_clock += packets::packet(0x100);
        standing_clock += packets::clock(0x100, 5);
        std::string broken = packets::clock(0x100, i * packets::rate);
        broken[1] = static_cast<char>(0x81); // a receiver's mark: this packet is damaged
        errors += broken;
        broken = packets::clock(0x100, i * packets::rate);
        broken[4] = 6; // too short for a clock reference, whatever its flags say
        short_fields += broken;
    }
    const std::pair<std::string, const char *> files[] = {
        {"", no_packets},
        {"G", no_packets},
        {std::string(187, 'G'), no_packets},
        {std::string(100000, '\0'), no_packets},
        {"A text. " + std::string(5000, 'x'), no_packets},
        {packets::packet(0), no_first_clock},
        {packets::clock(0x100, 5), no_last_clock},
        {std::string(100000, 'G'), no_first_clock},
        {without_clock, no_first_clock},
        {errors, no_first_clock},
        {short_fields, no_first_clock},
        {one_clock, no_last_clock},
        {standing_clock, "no transport stream to play: its clock stands still"},
        {std::string(300, 'x') + stream(100), no_packets},
    };
    for (const auto &[content, reason] : files)
        EXPECT_EQ(refusal(content), reason) << content.size() << " bytes: " << content.substr(0, 10);
}

TEST(TransportStream, NoiseIsRefused)
{
    std::mt19937 random(7); // the same noise every time
    for (int round = 0; round < 50; ++round) {
        std::string noise(static_cast<std::size_t>(random() % 20000), '\0');
        for (char &byte : noise)
            byte = static_cast<char>(random());
        EXPECT_EQ(refusal(noise).substr(0, 19), "no transport stream");
    }
}

TEST(TransportStream, DamageNeitherCrashesNorMakesALengthThatCannotBe)
{
    std::mt19937 random(11);
    const std::string whole = stream(200);
    constexpr std::int64_t longest = packets::wrap / packets::rate * 1'000'000 * 200; // every packet a day
    for (int round = 0; round < 500; ++round) {
        std::string bytes = whole.substr(0, random() % (whole.size() + 1));
        for (unsigned i = 0; i < 30 && !bytes.empty(); ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        try {
            const auto length = File(bytes).length().count();
            EXPECT_GT(length, 0);
            EXPECT_LT(length, longest);
        } catch (const NoTransportStream &) {
        }
    }
}

TEST(TransportStream, ThatBecameShorterMeanwhileIsRefused)
{
    const File file(stream(100));
    EXPECT_THROW(transport_stream_length(file.descriptor(), off_t{1} << 40), NoTransportStream);
}

TEST(TransportStream, ThatCannotBeReadIsAnErrorOfTheSystem)
{
    EXPECT_THROW(transport_stream_length(-1, 1000), std::system_error);
}
