#include "scenario.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace simulator {

ScenarioPlayer::ScenarioPlayer(std::vector<ScenarioStep> steps, Service &service, const Log &log)
    : steps_(std::move(steps)), service_(service), log_(log), beginning_(service.set().clock.now())
{
    service_.watch([this](const std::string &method) { end_of_call(method); });
}

ScenarioPlayer::~ScenarioPlayer()
{
    service_.watch({});
    if (source_ != 0)
        g_source_remove(source_);
}

void ScenarioPlayer::play()
{
    is_waiting_ = false;
    while (next_ < steps_.size() && !is_waiting_)
        take(steps_[next_]);
    if (!is_waiting_)
        log_.line("scenario: it is over");
}

/// What happens meanwhile is told at its moment, and is as it is when time passes by itself.
void ScenarioPlayer::pass_time_until(Microseconds moment)
{
    Television &set = service_.set();
    while (set.clock.now() < moment) {
        const Microseconds now = set.clock.now();
        set.step(std::clamp(set.due().value_or(moment), now + Microseconds(1), moment) - now);
        set.signals.publish();
    }
}

void ScenarioPlayer::take(const ScenarioStep &step)
{
    Television &set = service_.set();
    const Microseconds moment = beginning_ + step.at;
    pass_time_until(moment);
    if (!step.call.empty()) {
        is_waiting_ = true;
        log_.line("scenario: waits for " + step.call);
        return;
    }
    ++next_;
    log_.line("scenario: " + step.shown);
    const Outcome outcome = act(step);
    set.advance();
    set.signals.publish();
    if (!outcome.is_done())
        log_.line("scenario: refused: " + outcome.reason);
}

Outcome ScenarioPlayer::act(const ScenarioStep &step)
try {
    return step.act(service_);
} catch (const std::exception &error) { // of a bus, or for too many faults
    return refused(error.what());
}

/// Goes on behind the call, and before any other is looked at.
void ScenarioPlayer::end_of_call(const std::string &method)
{
    if (!is_waiting_ || steps_[next_].call != method)
        return;
    is_waiting_ = false;
    ++next_;
    source_ = g_idle_add_full(
        G_PRIORITY_HIGH,
        [](gpointer self) noexcept -> gboolean {
            static_cast<ScenarioPlayer *>(self)->source_ = 0;
            static_cast<ScenarioPlayer *>(self)->play();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
}

} // namespace simulator
