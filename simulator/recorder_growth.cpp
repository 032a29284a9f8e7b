// How the recorder's files grow with the time, and how recordings end.
#include "recorder.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace simulator {
namespace {

/// What the error of a file means for whoever wants to record. A file that may not become larger is a device that is
/// full, too: some file systems end a file at 4 GiB.
int code_of(const std::error_code &error)
{
    constexpr int of_full_devices[] = {ENOSPC, EDQUOT, EFBIG};
    const bool is_full =
        std::find(std::begin(of_full_devices), std::end(of_full_devices), error.value()) != std::end(of_full_devices);
    return is_full ? no_space : device_has_problem;
}

IncompleteReason reason_of(int code) { return code == no_space ? device_was_full : device_failed; }

} // namespace

std::optional<Microseconds> Recorder::due() const
{
    if (running_.empty())
        return std::nullopt;
    Microseconds moment = next_growth_;
    for (const RunningRecording &recording : running_)
        if (recording.duration != 0)
            moment = std::min<Microseconds>(moment, recording.began + std::chrono::seconds(recording.duration));
    return moment;
}

void Recorder::advance()
{
    if (const auto moment = due(); !moment || *moment > set_.clock())
        return;
    next_growth_ = set_.clock() + set_.pace(interval);
    for (auto recording = running_.begin(); recording != running_.end();) {
        const Place one = recording++; // it may end
        grow(one);
    }
}

void Recorder::grow(Place recording)
{
    const Microseconds now = lasted(*recording);
    if (!set_.devices.finds_room(recording->file.path()))
        return fail(recording, no_space, device_was_full);
    try {
        recording->file.grow(*recording->source, bytes_in(now, recording->bits_per_second));
        recording->file.give_up_before(bytes_in(given_up(*recording), recording->bits_per_second));
    } catch (const SourceFailure &) {
        return fail(recording, source_is_unreadable, source_failed);
    } catch (const std::system_error &error) {
        const int code = code_of(error.code());
        return fail(recording, code, reason_of(code));
    }
    warn(*recording);
    if (recording->duration != 0 && now >= std::chrono::seconds(recording->duration))
        end(recording, is_whole, [&] {
            RecordingEvent report = event(RecordingEvent::answered, *recording);
            report.method = PS_RECORD_STOP;
            return report;
        }());
}

void Recorder::warn(RunningRecording &recording)
{
    const bool is_nearly_full = set_.devices.space(recording.device).available < Devices::least_space;
    if (is_nearly_full && !recording.is_warned)
        answer(PS_RECORD_DISK_LESS_FIFTY, recording);
    recording.is_warned = is_nearly_full;
}

void Recorder::fail(Place recording, int code, IncompleteReason reason)
{
    RecordingEvent failure = event(RecordingEvent::failed, *recording);
    failure.result = code;
    observer_(failure);
    RecordingEvent report = event(RecordingEvent::answered, *recording);
    report.method = PS_RECORD_EXCEPTION;
    report.result = code;
    end(recording, reason, report);
}

void Recorder::end(Place recording, IncompleteReason reason, std::optional<RecordingEvent> report)
{
    observer_(event(RecordingEvent::will_finish, *recording));
    const Microseconds length = this->length(*recording);
    try {
        if (reason == is_whole)
            recording->file.grow(*recording->source, bytes_in(lasted(*recording), recording->bits_per_second));
    } catch (const SourceFailure &) {
        // The last bit of a stream that ends anyway.
    } catch (const std::system_error &error) {
        reason = reason_of(code_of(error.code()));
    }
    // Out of the list first: whoever is told of the end finds it ended.
    std::list<RunningRecording> ended;
    ended.splice(ended.begin(), running_, recording);
    if (ended.front().is_timeshift()) {
        ended.front().file.remove();
    } else {
        try {
            // What is on a device that has been pulled out stays as it is.
            if (!set_.devices.is_out_of_reach(ended.front().file.path()))
                ended.front().file.finish(std::chrono::duration_cast<std::chrono::milliseconds>(length).count(), reason,
                                          set_.wall_clock());
        } catch (const std::system_error &) {
            // The device is gone or full; the recording stays unfinished in its info file.
            reason = reason == is_whole ? device_failed : reason;
        }
        complete_[ended.front().service_id] = reason == is_whole;
        if (ended.front().type == PS_RECORD_TYPE_SEGMENT)
            segments_.emplace(ended.front().service_id, ended.front().file.path());
    }

    RecordingEvent state = event(RecordingEvent::changed, ended.front());
    state.state = PS_RECORD_STATE_STOP;
    observer_(state);
    RecordingEvent measure = event(RecordingEvent::measured, ended.front());
    measure.seconds = static_cast<int>(whole_seconds(length));
    observer_(measure);
    if (report) {
        report->state = PS_RECORD_STATE_STOP;
        observer_(*report);
    }
    RecordingEvent over = event(RecordingEvent::is_over, ended.front());
    over.state = PS_RECORD_STATE_STOP;
    observer_(over);
    if (ended.front().is_handle_ours)
        set_.handles.release(ended.front().handle);
    if (running_.empty())
        observer_({.kind = RecordingEvent::became_busy});
}

} // namespace simulator
