// Configuration files without a bus: what they set, what they leave, and how their mistakes are told.
#include "config_file.h"

#include "support/files.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <filesystem>
#include <glib.h>
#include <gtest/gtest.h>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>

using namespace simulator;

namespace {

const std::string complete_channel = "[[channel]]\nservice_id = 1\nname = 'A'\nnumber = '1-1'\n"; // four lines

class ConfigFile : public testing::Test {
protected:
    Equipment read(const std::string &content)
    {
        support::write_file(path, content);
        return configured(path);
    }
    /// The mistakes, without the name of the file.
    std::string mistakes(const std::string &content)
    {
        try {
            read(content);
        } catch (const WrongFile &error) {
            return std::regex_replace(std::string(error.what()), std::regex("(^|\n)" + path + ":"), "$1");
        }
        return "none";
    }

    support::TemporaryFolder folder;
    const std::string path = folder / "a.toml";
};

} // namespace

TEST_F(ConfigFile, OfTheExampleMeansWhatTheServiceDoesWithoutOne) { EXPECT_EQ(configured(PVR_EXAMPLE), Equipment()); }

TEST_F(ConfigFile, OfTheExampleHasExamplesThatAreUnderstood)
{
    const std::string all = std::regex_replace(support::content_of(PVR_EXAMPLE), std::regex("(^|\n)#(?=[^ \n])"), "$1");
    const Equipment equipment = read(all);
    EXPECT_EQ(equipment.devices, (std::vector<DeviceDescription>{{"usb1", folder / "devices/usb1", false}}));
    EXPECT_EQ(equipment.latencies.of("play_start"), 300U);
    EXPECT_EQ(equipment.sources.at(1), folder / "film.ts");
}

TEST_F(ConfigFile, MayBeEmpty) { EXPECT_EQ(read(""), Equipment()); }

TEST_F(ConfigFile, SetsWhatThereIs)
{
    const Equipment equipment =
        read("speed = 2.5\ntuners = 3\ntimeshift = 60\n"
             "latency = { all = 5, get_handle = 0 }\n"
             "device = [{ name = 'a', folder = '/nonexistent/a' },\n"
             "          { name = 'b', folder = 'b', slow = true }]\n"
             "[[channel]]\nservice_id = 7\nname = 'Seven'\nnumber = '7-65535'\n"
             "kind = 'radio'\nsource = 'exec:cat radio.ts'\nsource_id = 9\nlocked = true\n"
             "[[channel]]\nservice_id = '18446744073709551615'\nname = 'Last'\nnumber = '0-0'\n"
             "bit_rate = 188000\nsignal = false\nscrambled = true\nprogrammes = ['One', 'Two']\n");
    EXPECT_EQ(equipment.speed, 2.5);
    EXPECT_EQ(equipment.tuners, 3);
    EXPECT_EQ(equipment.longest_timeshift, std::chrono::minutes(1));
    EXPECT_EQ(equipment.latencies.of("get_handle"), 0U);
    EXPECT_EQ(equipment.latencies.of("play_start"), 5U);
    EXPECT_EQ(equipment.devices,
              (std::vector<DeviceDescription>{{"a", "/nonexistent/a", false}, {"b", folder / "b", true}}));
    EXPECT_EQ(equipment.channels,
              (std::vector<Channel>{
                  {7, "Seven", 7, 65535, ChannelKind::radio, 9, 188'000, true, true, false, {}},
                  {~0ULL, "Last", 0, 0, ChannelKind::television, 1, 188'000, false, false, true, {"One", "Two"}}}));
    EXPECT_EQ(equipment.sources, (std::map<std::uint64_t, std::string>{{7, "exec:cat radio.ts"}}));
}

TEST_F(ConfigFile, TellsWhatIsThereAndWhatIsExpected)
{
    const std::string text = ", expected a text, not empty and without control characters";
    const std::string service_id = ", expected a whole number from 0, in quotes from 9223372036854775808 on";
    const std::string number = ", expected two whole numbers up to 65535, such as '5-1'";
    const std::pair<std::string, std::string> refusals[] = {
        {"tuners = 9", "1: tuners is 9, expected a whole number from 1 to 8"},
        {"\n\ntuners = '2'", "3: tuners is '2', expected a whole number from 1 to 8"},
        {"timeshift = 9", "1: timeshift is 9, expected a whole number from 10 to 86400"},
        {"timeshift = 1.5", "1: timeshift is 1.5, expected a whole number from 10 to 86400"},
        {"speed = nan", "1: speed is nan, expected a number from 0.01 to 10000"},
        {"speed = inf", "1: speed is inf, expected a number from 0.01 to 10000"},
        {"speed = true", "1: speed is true, expected a number from 0.01 to 10000"},
        {"speed = 2024-03-01", "1: speed is a date or a time, expected a number from 0.01 to 10000"},
        {"tunners = 2", "1: 'tunners' is no key here, expected speed, tuners, timeshift, latency, device or channel"},
        {"latency = 5", "1: latency is 5, expected a table, [latency]"},
        {"[latency]\nall = -1", "2: all is -1, expected a whole number from 0 to 3600000"},
        {"[latency]\nplay = 1", "2: 'play' is no method, expected one of org.vexan.tv.pvr, or all"},
        {"[latency]\n\"play_start\\u0000\" = 1",
         "2: 'play_start\\x00' is no method, expected one of org.vexan.tv.pvr, or all"},
        {"[latency]\n\"a\\nb\" = 1", "2: 'a\\x0ab' is no method, expected one of org.vexan.tv.pvr, or all"},
        {"device = 'usb1'", "1: device is 'usb1', expected tables, each [[device]]"},
        {"[device]\nname = 'a'", "1: device is a table, expected tables, each [[device]]"},
        {"device = [1]", "1: device is a list, expected tables, each [[device]]"},
        {"[[device]]\nfolder = 'a'", "1: there is no name, expected a text"},
        {"[[device]]\nname = 'a'", "1: there is no folder, expected the path of a folder"},
        {"[[device]]\nname = ''\nfolder = 'a'", "2: name is ''" + text},
        {"[[device]]\nname = \"\\u0000\"\nfolder = 'a'", "2: name is '\\x00'" + text},
        {"[[device]]\nname = 'a'\nfolder = '/'",
         "3: / holds the home folder, and a device can be formatted, expected another"},
        {"[[device]]\nname = 'a'\nfolder = '" + std::string(256, 'x') + "'",
         "3: the folder of a: File name too long, expected another"},
        {"[[device]]\nname = 'a'\nfolder = 'a'\n[[device]]\nname = 'a'\nfolder = 'b'",
         "6: two devices are named a, expected another"},
        {"[[device]]\nname = 'a'\nfolder = 'a'\n[[device]]\nname = 'b'\nfolder = 'a/b'",
         "6: the folders of a and b overlap, expected another"},
        {"[[device]]\nname = 'a'\nfolder = 'a'\nslow = 1", "4: slow is 1, expected true or false"},
        {"channel = []", "1: channel is a list, expected tables, each [[channel]]"},
        {"[[channel]]\nname = 'A'\nnumber = '1-1'", "1: there is no service_id, expected a whole number from 0"},
        {"[[channel]]\nservice_id = 1\nnumber = '1-1'", "1: there is no name, expected a text"},
        {"[[channel]]\nservice_id = 1\nname = 'A'",
         "1: there is no number, expected the number of the channel, such as '5-1'"},
        {"[[channel]]\nservice_id = -1\nname = 'A'\nnumber = '1-1'", "2: service_id is -1" + service_id},
        {"[[channel]]\nservice_id = '-1'\nname = 'A'\nnumber = '1-1'", "2: service_id is '-1'" + service_id},
        {"[[channel]]\nservice_id = '18446744073709551616'\nname = 'A'\nnumber = '1-1'",
         "2: service_id is '18446744073709551616'" + service_id},
        {complete_channel + complete_channel,
         "6: service_id is 1, expected another than that of the channels before it"},
        {"[[channel]]\nservice_id = 1\nname = 'A'\nnumber = '1'", "4: number is '1'" + number},
        {"[[channel]]\nservice_id = 1\nname = 'A'\nnumber = '1-65536'", "4: number is '1-65536'" + number},
        {"[[channel]]\nservice_id = 1\nname = 'A'\nnumber = '1-1-1'", "4: number is '1-1-1'" + number},
        {"[[channel]]\nservice_id = 1\nname = 'A'\nnumber = 1", "4: number is 1" + text},
        {complete_channel + "kind = 'tv'", "5: kind is 'tv', expected television, radio or analogue"},
        {complete_channel + "bit_rate = 187_999",
         "5: bit_rate is 187999, expected a whole number from 188000 to 50000000"},
        {complete_channel + "kind = 'analogue'\nbit_rate = 188000",
         "6: bit_rate is 188000, expected none of an analogue channel, which has no stream"},
        {complete_channel + "source_id = -1", "5: source_id is -1, expected a whole number from 0 to 2147483647"},
        {complete_channel + "programmes = 'News'", "5: programmes is 'News', expected a list of texts"},
        {complete_channel + "programmes = ['News',\n 5]",
         "6: programmes has 5, expected texts, not empty and without control characters"},
        {complete_channel + "colour = 'red'",
         "5: 'colour' is no key here, expected service_id, name, number, kind, source_id, bit_rate, signal, locked, "
         "scrambled, programmes or source"},
    };
    for (const auto &[content, mistake] : refusals)
        EXPECT_EQ(mistakes(content), mistake) << content;
}

TEST_F(ConfigFile, TellsAllMistakesAtOnceInTheOrderOfTheirLines)
{
    EXPECT_EQ(
        mistakes(
            "tuners = 0\nwobble = 1\nspeed = 'fast'\n[[channel]]\nname = 'A'\nnumber = 'x'\n[latency]\nall = ''\n"),
        "1: tuners is 0, expected a whole number from 1 to 8\n"
        "2: 'wobble' is no key here, expected speed, tuners, timeshift, latency, device or channel\n"
        "3: speed is 'fast', expected a number from 0.01 to 10000\n"
        "4: there is no service_id, expected a whole number from 0\n"
        "6: number is 'x', expected two whole numbers up to 65535, such as '5-1'\n"
        "8: all is '', expected a whole number from 0 to 3600000");
}

TEST_F(ConfigFile, TellsWhereItIsNoToml)
{
    for (const std::string content : {"tuners = 2\nspeed =\n", "tuners = 2\n\xff = 1\n", "tuners = 2\nä = 1\n",
                                      "tuners = 2\ntuners = 3\n", "tuners = 2\ntimeshift = 9223372036854775808\n"}) {
        const std::string told = mistakes(content);
        EXPECT_EQ(told.substr(0, 3), "2: ") << content;
        EXPECT_GT(told.size(), 10U) << content;
        EXPECT_EQ(told.find('\n'), std::string::npos) << told;
    }
}

TEST_F(ConfigFile, TellsWhyItCannotBeRead)
{
    EXPECT_THROW(configured(folder / "missing.toml"), std::invalid_argument);
    EXPECT_THROW(configured(folder.path()), std::invalid_argument);
}
