// The channels on a real bus, what applications leave with the service, and what its page says of methods without a
// trace.
#include "peer.h"
#include "support/temporary_folder.h"
#include "test_programme.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <string>

using namespace simulator_test;

namespace {

const std::string behind_32_bits = "4294967303";
const std::string behind_63_bits = "9223372036854775816";

class ChannelService : public testing::Test {
protected:
    std::string ask(const std::string &method, const std::string &id)
    {
        return peer.call(method, "(uint64 " + id + ",)");
    }

    Simulator simulator;
    Peer peer;
};

/// The methods of the table below a heading of the page, each with the reason beside it.
std::map<std::string, std::string> table_of_page(const std::string &heading)
{
    std::ifstream page(PVR_SIMULATOR_PAGE);
    std::string line;
    while (std::getline(page, line) && line != "## " + heading) {
    }
    std::map<std::string, std::string> table;
    std::smatch cells;
    while (std::getline(page, line) && !line.starts_with("## "))
        if (std::regex_match(line, cells, std::regex(R"(\| `(\w+)` \| (.+) \|)")))
            table[cells[1]] = cells[2];
    return table;
}

} // namespace

TEST_F(ChannelService, AnswersWhatKindOfChannelOneIs)
{
    const struct {
        std::string id, analogue, locked, audio_only, no_signal, status;
    } channels[] = {
        {"1", "(0,)", "(0,)", "(0,)", "(0,)", "(3,)"},
        {"3", "(0,)", "(0,)", "(1,)", "(0,)", "(1,)"},
        {"4", "(1,)", "(0,)", "(0,)", "(0,)", "(3,)"},
        {"5", "(0,)", "(1,)", "(0,)", "(0,)", "(0,)"},
        {"6", "(0,)", "(0,)", "(0,)", "(1,)", "(0,)"},
        {behind_32_bits, "(0,)", "(0,)", "(0,)", "(0,)", "(0,)"},
        {behind_63_bits, "(0,)", "(0,)", "(0,)", "(0,)", "(3,)"},
        {"7", "(-2,)", "(-2,)", "(-2,)", "(-2,)", "(-2,)"}, // the lower half of a longer id
    };
    for (const auto &channel : channels) {
        EXPECT_EQ(ask("is_analog_channel", channel.id), channel.analogue) << channel.id;
        EXPECT_EQ(ask("is_child_lock_channel", channel.id), channel.locked) << channel.id;
        EXPECT_EQ(ask("is_audio_only_channel", channel.id), channel.audio_only) << channel.id;
        EXPECT_EQ(ask("is_no_signal_channel", channel.id), channel.no_signal) << channel.id;
        EXPECT_EQ(ask("get_av_status", channel.id), channel.status) << channel.id;
    }
    EXPECT_EQ(peer.call("is_all_descrambled"), "(1,)") << "nothing is being recorded";
}

TEST_F(ChannelService, DescribesAChannelAndWhatIsOn)
{
    const std::regex form(R"(\(\[\(<8>,\), \(<2>,\), \(<uint32 (\d+)>,\), \(<uint32 (\d+)>,\), )"
                          R"(\(<'Far Eight'>,\), \(<'Far[a-z A-Z]+'>,\)\], 0\))");
    std::smatch times;
    const std::string answer = ask("get_channel_info", behind_63_bits);
    ASSERT_TRUE(std::regex_match(answer, times, form)) << answer;
    const long long start = std::stoll(times[1]);
    EXPECT_EQ(start % 1800, 0);
    EXPECT_EQ(std::stoll(times[2]), start + 1800);
    EXPECT_LE(start, g_get_real_time() / G_USEC_PER_SEC);
    EXPECT_EQ(ask("get_channel_info", "99"), "([], -2)");
}

TEST_F(ChannelService, KnowsNoProgrammesWithoutTheTime)
{
    EXPECT_EQ(peer.call("is_date_set"), "(1,)");
    EXPECT_EQ(peer.control("SetDate", "(false,)"), "()");
    EXPECT_EQ(peer.call("is_date_set"), "(0,)");
    EXPECT_EQ(ask("get_channel_info", "1"),
              "([(<1>,), (<1>,), (<uint32 0>,), (<uint32 0>,), (<'First'>,), (<''>,)], 0)");
    EXPECT_EQ(peer.control("SetDate", "(true,)"), "()");
    EXPECT_EQ(peer.call("is_date_set"), "(1,)");
}

TEST_F(ChannelService, IsTunedAndTellsOfIt)
{
    EXPECT_EQ(peer.call("get_current_service_id"), "(1,)");
    EXPECT_EQ(peer.control("Tune", "(uint64 " + behind_63_bits + ",)"), "()");
    EXPECT_EQ(peer.call("get_current_service_id"), "(" + behind_63_bits + ",)");
    EXPECT_EQ(peer.call("get_current_livetv_service_id"), "(" + behind_63_bits + ",)");
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (107, <(0,)>)"}));
    EXPECT_EQ(peer.control("Tune", "(uint64 99,)"), "org.freedesktop.DBus.Error.InvalidArgs: no such channel");
    EXPECT_EQ(peer.call("get_current_service_id"), "(" + behind_63_bits + ",)");
    EXPECT_EQ(peer.signals(), Lines());
}

TEST_F(ChannelService, ShowsNoChannelLiveWhileARecordingPlays)
{
    const support::TemporaryFolder folder;
    simulator::write_test_programme(folder / "a.srf", 100);
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("play_start", "(1, '" + (folder / "a.srf") + "', 0)"), "(0,)");
    EXPECT_EQ(peer.call("get_current_livetv_service_id"), "(0,)");
    EXPECT_EQ(peer.call("get_current_service_id"), "(1,)");
    EXPECT_EQ(peer.call("play_stop_to_dtv", "(1,)"), "(0,)");
    EXPECT_EQ(peer.call("get_current_livetv_service_id"), "(1,)");
}

TEST_F(ChannelService, KeepsSharedValuesForOtherApplications)
{
    EXPECT_EQ(peer.call("get_share_data", "(7,)"), "(0, -2)");
    EXPECT_EQ(peer.call("set_share_data", "(7, uint64 18446744073709551615)"), "(1,)");
    EXPECT_EQ(peer.call("set_share_data", "(-8, uint64 9223372036854775808)"), "(1,)");
    Peer other;
    EXPECT_EQ(other.call("get_share_data", "(7,)"), "(-1, 1)");
    EXPECT_EQ(other.call("get_share_data", "(-8,)"), "(-9223372036854775808, 1)");
}

TEST_F(ChannelService, TakesTextsForRecordings)
{
    EXPECT_EQ(peer.call("set_channel_number_string", "(1, '7-1')"), "(-2,)") << "no such handle";
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("set_channel_number_string", "(1, '7-1')"), "(0,)");
    EXPECT_EQ(peer.call("set_channel_multilanguage_string", "('eng:One', -1)"), "(-2,)");
    EXPECT_EQ(peer.call("set_channel_multilanguage_string", "('eng:One', 7)"), "(0,)");
}

TEST_F(ChannelService, HasMethodsWithoutATraceThatItsPageNames)
{
    const std::map<std::string, std::string> calls{
        {"set_channel_multilanguage_string", "('eng:One', 7)"},
        {"set_keep_state_flag", "(1,)"},
        {"set_pvr_file_info", "('/a.inf', '', 1)"},
        {"set_fp_rec_time", "('/a.srf', 7)"},
    };
    const auto state = [&] {
        return peer.call("get_pvr_state") + peer.call("get_handle_for_record") + peer.call("get_current_service_id") +
               ask("get_channel_info", "4") + ask("get_channel_info", "6") + peer.call("get_share_data", "(1,)");
    };
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    const std::string before = state();
    const std::map<std::string, std::string> named = table_of_page("Methods without a trace");
    EXPECT_EQ(named.size(), calls.size());
    for (const auto &[method, reason] : named) {
        ASSERT_TRUE(calls.contains(method)) << method;
        EXPECT_FALSE(peer.call(method, calls.at(method)).starts_with("org.")) << method;
        EXPECT_EQ(state(), before) << method;
        EXPECT_EQ(peer.signals(), Lines()) << method;
    }
}
