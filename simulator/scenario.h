// A scenario: what happens to the set, and when, from its beginning to its end. Its time stands still but for its
// steps, so that the same calls have the same consequences in every run.
#pragma once

#include "log.h"
#include "outcome.h"
#include "service.h"

#include <functional>
#include <glib.h>
#include <string>
#include <vector>

namespace simulator {

struct ScenarioStep {
    Microseconds at;  ///< since the beginning
    std::string call; ///< a method: the step is over once an application has called it
    std::string shown;
    std::function<Outcome(Service &)> act; ///< of all other steps
};

class ScenarioPlayer {
public:
    /// Both have to outlive it.
    ScenarioPlayer(std::vector<ScenarioStep> steps, Service &service, const Log &log);
    ~ScenarioPlayer();
    ScenarioPlayer(const ScenarioPlayer &) = delete;
    ScenarioPlayer &operator=(const ScenarioPlayer &) = delete;

    /// Plays up to the first call that is waited for. It goes on by itself with each call that comes.
    void play();

private:
    void end_of_call(const std::string &method);
    void pass_time_until(Microseconds moment);
    void take(const ScenarioStep &step);
    Outcome act(const ScenarioStep &step);

    std::vector<ScenarioStep> steps_;
    Service &service_;
    const Log &log_;
    Microseconds beginning_;
    std::size_t next_ = 0;
    bool is_waiting_ = false;
    guint source_ = 0;
};

} // namespace simulator
