#include "timer_recordings.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace simulator {

TimerRecordings::TimerRecordings(Recorder &recorder, Clock clock) : recorder_(recorder), clock_(std::move(clock)) {}

std::optional<std::uint32_t> TimerRecordings::set(std::uint64_t service_id, std::uint64_t in_seconds,
                                                  std::uint64_t duration)
{
    if (in_seconds > longest || duration > longest || planned_.size() >= most)
        return std::nullopt;
    const Microseconds start = clock_() + std::chrono::seconds(in_seconds);
    planned_.emplace(start, Planned{++last_id_, service_id, static_cast<int>(duration)});
    advance();
    return last_id_;
}

Outcome TimerRecordings::cancel(std::uint32_t id)
{
    forget_what_is_over();
    const auto planned =
        std::find_if(planned_.begin(), planned_.end(), [&](const auto &entry) { return entry.second.id == id; });
    if (planned != planned_.end()) {
        planned_.erase(planned);
        return {};
    }
    const auto started = started_.find(id);
    if (started == started_.end())
        return refused("no such timer recording");
    return recorder_.stop(running(started->second)->handle);
}

std::optional<Microseconds> TimerRecordings::due() const
{
    return planned_.empty() ? std::nullopt : std::optional(planned_.begin()->first);
}

void TimerRecordings::advance()
{
    while (!planned_.empty() && planned_.begin()->first <= clock_()) {
        const auto planned = planned_.extract(planned_.begin());
        start(planned.mapped());
    }
}

void TimerRecordings::start(const Planned &planned)
{
    forget_what_is_over();
    // Where it is refused, the recorder tells why.
    if (!recorder_.start(std::nullopt, planned.service_id, PS_RECORD_TYPE_TIMER).is_done())
        return;
    const RunningRecording *recording = recorder_.recording_of(planned.service_id);
    started_[planned.id] = recording->uid;
    if (planned.duration != 0)
        recorder_.set_duration(recording, planned.duration);
}

const RunningRecording *TimerRecordings::running(int uid) const
{
    const auto all = recorder_.running();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const RunningRecording *recording) { return recording->uid == uid; });
    return found == all.end() ? nullptr : *found;
}

void TimerRecordings::forget_what_is_over()
{
    std::erase_if(started_, [this](const auto &entry) { return running(entry.second) == nullptr; });
}

} // namespace simulator
