// The library under faults: whatever fails under a call, the process lives, the call tells what its header says, no
// lock, no descriptor and no memory is left behind, and the next call works.
#include "faults/scenario.h"
#include "pvr_service_api.h"
#include "support/files.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace faults;

namespace {

/// What was reached in all, once everything has run.
class Report : public testing::Environment {
    void TearDown() override
    {
        const Counts &points = tally().points;
        for (std::size_t kind = 0; kind < kinds; ++kind)
            if (points[kind] > 0)
                std::printf("%6d  %s\n", points[kind], kind_names[kind].name);
        std::printf("%6d  fault points in %zu scenarios, made to fail in %d runs\n",
                    std::accumulate(points.begin(), points.end(), 0), all_scenarios().size(), tally().runs);
    }
};

[[maybe_unused]] testing::Environment *const report = testing::AddGlobalTestEnvironment(new Report);

std::string test_name(const testing::TestParamInfo<std::reference_wrapper<const Scenario>> &info)
{
    std::string name = info.param.get().name();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char code) { return std::isalnum(code) == 0; }, '_');
    return name + "_" + std::to_string(info.index);
}

std::vector<std::string> names_in(const std::string &path)
{
    std::vector<std::string> names;
    std::istringstream lines(support::content_of(path));
    for (std::string line; std::getline(lines, line);)
        if (!line.empty() && line.front() != '#')
            names.push_back(line);
    return names;
}

class Faults : public testing::TestWithParam<std::reference_wrapper<const Scenario>> {};

} // namespace

TEST_P(Faults, LeaveACallWithWhatItsHeaderSaysAndTheNextOneUnharmed) { play(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Of, Faults,
                         testing::ValuesIn(std::vector<std::reference_wrapper<const Scenario>>(all_scenarios().begin(),
                                                                                               all_scenarios().end())),
                         test_name);

TEST(FaultPoints, AreReachedByNoQuietCall)
{
    EXPECT_TRUE(in_process_of_its_own([] {
        for (const QuietCall &quiet : quiet_calls()) {
            const Service nobody;
            const Watch watch({}, nobody);
            quiet.call();
            EXPECT_EQ(watch.counts(), Counts{}) << quiet.function;
        }
    }));
}

TEST(FaultOfWatchingForks, IsMadeUpForByTheNextSession)
{
    EXPECT_TRUE(in_process_of_its_own([] {
        Stage stage;
        {
            static constexpr Way no_memory{Kind::atfork, "ENOMEM", ENOMEM};
            const Fault first[] = {{&no_memory, 1, false}};
            const Watch watch(first, stage.misbehaviour());
            EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
            EXPECT_EQ(watch.struck(), 1);
        }
        EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        EXPECT_TRUE(in_process_of_its_own([] { EXPECT_EQ(svc_pvr_service_init(), PS_CALL_METHOD_FAILED); }));
        EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    }));
}

TEST(FaultPoints, AreLookedForInAllThatIsExported)
{
    std::set<std::string> played;
    for (const Scenario &scenario : all_scenarios())
        played.insert(scenario.function);
    for (const QuietCall &quiet : quiet_calls())
        EXPECT_TRUE(played.insert(quiet.function).second) << quiet.function << " is in both";
    const std::vector<std::string> exported = names_in(PVR_EXPORTED_SYMBOLS);
    EXPECT_EQ(played, std::set<std::string>(exported.begin(), exported.end()));
}
