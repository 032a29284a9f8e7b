// A scenario: a call of the library, what it meets, and what must come of it, whatever fails under it.
#pragma once

#include "faults/fault.h"
#include "support/scripted_service.h"
#include "support/temporary_folder.h"

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace faults {

/// What a call finds: a folder of its own, and a service.
class Stage {
public:
    /// What the service answers from now on, as GVariant text.
    void answer(const std::string &method, const std::string &values);

    support::TemporaryFolder folder;
    support::ScriptedService service;

    const Service &misbehaviour() const { return misbehaviour_; }
    /// The service is there and answers.
    void make_whole();

private:
    std::map<std::string, std::string> answers_;
    bool is_service_lost_ = false;
    Service misbehaviour_{[this](Effect effect, const char *method) { misbehave(effect, method); },
                          [this](const char *method) { behave(method); }};

    void misbehave(Effect effect, const char *method);
    void behave(const char *method);
};

/// What comes of a fault that is not what comes of most. The first that fits counts.
struct Exception {
    Kind kind;
    std::string outcome;
    std::string why;
    const char *way = nullptr; ///< null for all
    int number = 0;            ///< of the call; 0 for all
    Length length = Length::once_or_lasting;

    bool fits(const Fault &fault) const;
};

enum class Start {
    session,       ///< there is a session
    no_session,    ///< there was one
    fresh,         ///< the process has done nothing yet: each run has a process of its own
    fresh_session, ///< the same, and has made a session
};

struct Scenario {
    std::string function; ///< as the library exports it
    std::string variant;  ///< tells scenarios of one function apart
    Start start = Start::session;
    std::function<void(Stage &)> prepare; ///< what lies in the folder and what the service answers; before each run
    /// Calls, and tells what came of it: what was returned; outputs; files.
    std::function<std::string(Stage &)> call;
    std::string good; ///< what comes of it without a fault
    std::string bad;  ///< and with one
    std::vector<Exception> exceptions = {};
    std::vector<Fault> meanwhile = {}; ///< what fails in every run

    std::string name() const;
};

std::ostream &operator<<(std::ostream &, const Scenario &);

// The scenarios by what they work on.
std::vector<Scenario> session_scenarios();
std::vector<Scenario> side_file_scenarios();
std::vector<Scenario> rights_scenarios();
std::vector<Scenario> remote_scenarios();
const std::vector<Scenario> &all_scenarios();

/// A call that reaches nothing that may fail.
struct QuietCall {
    std::string function;
    std::function<void()> call;
};
const std::vector<QuietCall> &quiet_calls();

/// How often each kind of call was reached, and how often something was made to fail; of all processes.
struct Tally {
    Counts points{};
    int runs = 0;
};
Tally &tally();

/// Plays a scenario in processes of its own: once without a fault to count its calls, and once for each of them,
/// way to fail and length. Reports to the test framework.
void play(const Scenario &scenario);

/// Does something in a process of its own; false when it reported a failure, or did not come to its end.
bool in_process_of_its_own(const std::function<void()> &action);

} // namespace faults
