// What can be asked of the recorder.
#include "recorder.h"

#include <algorithm>
#include <set>

namespace simulator {
namespace {

template <typename List, typename Condition>
const RunningRecording *first(const List &list, Condition condition)
{
    const auto found = std::find_if(list.begin(), list.end(), condition);
    return found == list.end() ? nullptr : &*found;
}

} // namespace

std::vector<const RunningRecording *> Recorder::running() const
{
    std::vector<const RunningRecording *> list;
    for (const bool are_timeshifts : {false, true})
        for (const RunningRecording &recording : running_)
            if (recording.is_timeshift() == are_timeshifts)
                list.push_back(&recording);
    return list;
}

const RunningRecording *Recorder::on_handle(int handle) const
{
    return first(running_, [&](const RunningRecording &recording) { return recording.handle == handle; });
}

const RunningRecording *Recorder::recording_of(std::uint64_t service_id) const
{
    return first(running_, [&](const RunningRecording &recording) {
        return recording.service_id == service_id && !recording.is_timeshift();
    });
}

const RunningRecording *Recorder::timeshift_of(std::uint64_t service_id) const
{
    return first(running_, [&](const RunningRecording &recording) {
        return recording.service_id == service_id && recording.is_timeshift();
    });
}

const RunningRecording *Recorder::either_of(std::uint64_t service_id) const
{
    const RunningRecording *recording = recording_of(service_id);
    return recording != nullptr ? recording : timeshift_of(service_id);
}

const RunningRecording *Recorder::writing(const std::string &path) const
{
    return first(running_, [&](const RunningRecording &recording) { return recording.file.path() == path; });
}

const RunningRecording *Recorder::newest() const
{
    const RunningRecording *newest = nullptr;
    for (const RunningRecording &recording : running_)
        if (!recording.is_timeshift())
            newest = &recording;
    return newest;
}

bool Recorder::is_writing_to(int device) const
{
    return first(running_, [&](const RunningRecording &recording) { return recording.device == device; }) != nullptr;
}

Microseconds Recorder::lasted(const RunningRecording &recording) const
{
    const Microseconds time = set_.clock() - recording.began;
    return recording.duration == 0 ? time : std::min<Microseconds>(time, std::chrono::seconds(recording.duration));
}

Microseconds Recorder::given_up(const RunningRecording &recording) const
{
    if (!recording.is_timeshift())
        return Microseconds::zero();
    return std::max(lasted(recording) - set_.longest_timeshift, Microseconds::zero());
}

Microseconds Recorder::length(const RunningRecording &recording) const
{
    return lasted(recording) - given_up(recording);
}

int Recorder::seconds(const RunningRecording &recording) const
{
    return static_cast<int>(whole_seconds(length(recording)));
}

std::vector<std::uint64_t> Recorder::channels() const
{
    std::set<std::uint64_t> ids;
    for (const RunningRecording &recording : running_)
        ids.insert(recording.service_id);
    return {ids.begin(), ids.end()};
}

bool Recorder::can_receive(std::uint64_t service_id) const
{
    std::vector<std::uint64_t> ids = channels();
    if (std::find(ids.begin(), ids.end(), service_id) == ids.end())
        ids.push_back(service_id);
    return ids.size() <= static_cast<std::size_t>(tuners_);
}

bool Recorder::is_last_complete(std::uint64_t service_id) const
{
    const auto found = complete_.find(service_id);
    return found != complete_.end() && found->second;
}

} // namespace simulator
