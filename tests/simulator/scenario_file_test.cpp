// Scenarios without a bus: what a file says, how its mistakes are told, and the file that tells what happened.
#include "event_log.h"
#include "scenario_file.h"
#include "toml_file.h"

#include "support/files.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

using namespace simulator;

namespace {

class ScenarioFile : public testing::Test {
protected:
    Scenario read(const std::string &content)
    {
        support::write_file(path, content);
        return read_scenario(path, [](Equipment &equipment) { equipment.devices = {{"usb1", "/nonexistent"}}; });
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
    /// Each step as it is told.
    static std::vector<std::string> steps(const Scenario &scenario)
    {
        std::vector<std::string> lines;
        for (const ScenarioStep &step : scenario.steps)
            lines.push_back(std::to_string(step.at.count()) + " " +
                            (step.call.empty() ? step.shown : "waits for " + step.call));
        return lines;
    }

    support::TemporaryFolder folder;
    const std::string path = folder / "a.toml";
};

} // namespace

TEST_F(ScenarioFile, TellsWhatHappensAndWhen)
{
    const Scenario scenario = read("start = 2024-03-01T20:15:00+01:00\nseed = 40\n"
                                   "[config]\ntuners = 1\n"
                                   "[[step]]\nnote = 'at once'\n"
                                   "[[step]]\nat = 1.5\ncall = 'get_handle'\n"
                                   "[[step]]\ntune = '9223372036854775816'\n"
                                   "[[step]]\nat = 2\nfault = 'error'\ntarget = 'get_handle'\n"
                                   "options = { error = 'org.example.Planted', times = 1 }\n"
                                   "[[step]]\nfault = 'drop'\ntarget = 'result_to_apps'\n"
                                   "options = { code = -1, probability = 0.5 }\n"
                                   "[[step]]\nfault = 'device-full'\ntarget = 'usb1'\n"
                                   "options = { probability = 1, seed = 3 }\n"
                                   "[[step]]\nend_fault = 'drop'\ntarget = 'result_to_apps'\n"
                                   "[[step]]\ndate = false\n"
                                   "[[step]]\ntimer = 3\nin = 60\nduration = 90\n"
                                   "[[step]]\ntimer = 3\n"
                                   "[[step]]\ncancel = 1\n"
                                   "[[step]]\nrestart = true\n"
                                   "[[step]]\ncrash = true\n");
    EXPECT_EQ(scenario.equipment.standing_since, std::chrono::seconds(1'709'320'500));
    EXPECT_EQ(scenario.equipment.tuners, 1);
    EXPECT_EQ(steps(scenario),
              (std::vector<std::string>{
                  "0 at once", "1500000 waits for get_handle", "1500000 tune 9223372036854775816",
                  "2000000 fault error get_handle {'error': <'org.example.Planted'>, 'times': <uint32 1>}",
                  "2000000 fault drop result_to_apps {'code': <-1>, 'probability': <0.5>, 'seed': <uint64 42>}",
                  "2000000 fault device-full usb1 {'probability': <1.0>, 'seed': <uint64 3>}",
                  "2000000 end of fault drop result_to_apps", "2000000 date unset", "2000000 timer 3 in 60 s for 90 s",
                  "2000000 timer 3 in 0 s for 0 s", "2000000 cancel 1", "2000000 restart", "2000000 crash"}));
}

TEST_F(ScenarioFile, TellsItsMistakes)
{
    const std::pair<std::string, std::string> refusals[] = {
        {"seed = 1", "1: there is no step, expected tables, each [[step]]"},
        {"step = 5", "1: step is 5, expected tables, each [[step]]"},
        {"start = 2024-03-01\n[[step]]\nnote = 'x'",
         "1: start is a date or a time, expected a date and time such as 2024-03-01T20:15:00Z, from 1971 to 2099"},
        {"start = 2024-03-01T20:15:00\n[[step]]\nnote = 'x'",
         "1: start is a date or a time, expected a date and time such as 2024-03-01T20:15:00Z, from 1971 to 2099"},
        {"[config]\ntuners = 0\n[[step]]\nnote = 'x'", "2: tuners is 0, expected a whole number from 1 to 8"},
        {"[[step]]\nat = 1",
         "1: there is nothing that the step does, expected call, fault, end_fault, tune, date, timer, cancel, restart, "
         "crash or note"},
        {"[[step]]\nnote = 'x'\ntune = 1", "2: note is there beside tune, expected one of them in a step"},
        {"[[step]]\nat = 5\nnote = 'x'\n[[step]]\nat = 4\nnote = 'x'",
         "5: at is 4, expected no moment before that of the last step"},
        {"[[step]]\nat = -1\nnote = 'x'", "2: at is -1, expected a number from 0 to 2678400"},
        {"[[step]]\ncall = 'wobble'", "2: call is 'wobble', expected a method of org.vexan.tv.pvr"},
        {"[[step]]\ntune = 99", "2: tune is 99, expected the service id of a channel that there is"},
        {"[[step]]\ntimer = 1\nin = -5", "3: in is -5, expected a whole number from 0 to 31622400"},
        {"[[step]]\ntune = 1\ntarget = 'x'", "3: 'target' is no key here, expected at, call, fault, end_fault, tune, "
                                             "date, timer, cancel, restart, crash or "
                                             "note"},
        {"[[step]]\nfault = 'crash'", "1: there is no target, expected the name of a method, a signal or a device"},
        {"[[step]]\nfault = 'crash'\ntarget = 'wobble'", "2: org.vexan.tv.pvr has no method 'wobble'"},
        {"[[step]]\nfault = 'device-full'\ntarget = 'usb2'", "2: there is no device 'usb2', but usb1"},
        {"[[step]]\nfault = 'crash'\ntarget = 'get_handle'\noptions = { times = -1 }",
         "4: times is -1, expected a whole number from 0 to 4294967295"},
        {"[[step]]\nfault = 'crash'\ntarget = 'get_handle'\noptions = { wobble = 1 }",
         "4: 'wobble' is no option of a fault, expected one that docs/simulator.md names"},
        {"[[step]]\nfault = 'crash'\ntarget = 'get_handle'\noptions = { \"a\\nb\" = 1 }",
         "4: 'a\\x0ab' is no option of a fault, expected one that docs/simulator.md names"},
        {"[[step]]\nfault = 'crash'\ntarget = 'get_handle'\noptions = { result = 1 }",
         "2: the fault 'crash' has no option 'result', but times, probability and seed"},
        {"[[step]]\nend_fault = 'wobble'\ntarget = 'get_handle'",
         "2: end_fault is 'wobble', expected the kind of a fault"},
        {"[[step]]\nrestart = false", "2: restart is false, expected true"},
        {"[[step]]\ndate = 1", "2: date is 1, expected true or false"},
        {"[[step]]\ncancel = 0", "2: cancel is 0, expected a whole number from 1 to 4294967295"},
    };
    for (const auto &[content, mistake] : refusals)
        EXPECT_EQ(mistakes(content), mistake) << content;
}

TEST_F(ScenarioFile, TellsWhatHappenedByTheSetsTimeAndTheNamesOfDevices)
{
    EventLog log(path, {{"usb1", "/srv/usb"}, {"usb2", "/srv/other"}});
    log.line("before there is a set");
    Microseconds now = std::chrono::hours(5);
    log.follow([&] { return now; });
    log.line("play /srv/usb/a.srf, then /srv/usb");
    now += std::chrono::milliseconds(90'061'001);
    log.line("/srv/usb2/a.srf is another, /srv/other(x)");
    EXPECT_EQ(support::content_of(path), "     0.000  before there is a set\n"
                                         "     0.000  play usb1:/a.srf, then usb1:\n"
                                         " 90061.001  /srv/usb2/a.srf is another, usb2:(x)\n");
}

TEST_F(ScenarioFile, SaysThatItCannotTellWhatHappened)
{
    EXPECT_THROW(EventLog(folder / "missing/events.log", {}), std::system_error);
}
