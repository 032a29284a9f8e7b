#include "recorder.h"

#include "recording_name.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace simulator {

Recorder::Recorder(Surroundings surroundings, int tuners, Observer observer)
    : set_(std::move(surroundings)), tuners_(tuners), observer_(std::move(observer))
{
}

Recorder::~Recorder()
{
    while (!running_.empty())
        end(running_.begin(), is_whole, std::nullopt);
}

int Recorder::precheck(std::uint64_t service_id, int type) const
{
    const Channel *channel = set_.channels.find(service_id);
    if (channel == nullptr)
        return no_channel;
    std::set<std::uint64_t> received{service_id, set_.channels.current()};
    for (const RunningRecording &recording : running_)
        received.insert(recording.service_id);
    const int device = set_.devices.default_device();
    const bool is_shift = is_timeshift(type);
    const auto is_in_the_way = [&](const RunningRecording &other) {
        return other.is_timeshift() == is_shift && (is_shift || other.service_id == service_id);
    };

    // What is said first of several reasons.
    const std::pair<bool, int> hindrances[] = {
        {channel->kind == ChannelKind::analogue, not_recordable},
        {!channel->has_signal, no_signal},
        {channel->is_scrambled, is_scrambled},
        {channel->is_locked, channel_is_locked},
        {type == PS_RECORD_TYPE_TIMER && !set_.channels.is_date_set(), clock_not_set},
        {std::any_of(running_.begin(), running_.end(), is_in_the_way), already_recorded},
        {received.size() > static_cast<std::size_t>(tuners_), no_tuner_free},
        {device == Devices::none, no_device},
        {device != Devices::none && !set_.devices.is_available(), no_space},
    };
    for (const auto &[is_so, code] : hindrances)
        if (is_so)
            return code;
    return done;
}

Outcome Recorder::start(std::optional<int> handle, std::uint64_t service_id, int type)
{
    advance();
    RecordingEvent refusal{
        .kind = RecordingEvent::answered, .handle = handle.value_or(0), .service_id = service_id, .type = type};
    if (handle && (!set_.handles.is_issued(*handle) || on_handle(*handle) != nullptr))
        return refuse(refusal, refused_result);
    if (type < PS_RECORD_TYPE_NORMAL || type > PS_RECORD_TYPE_COMPOSITE)
        return refuse(refusal, refused_result);
    const int device = set_.devices.default_device();
    int code = precheck(service_id, type);
    if ((code == done || code == no_space) && !set_.devices.finds_room(set_.devices.find(device)->mount_path()))
        code = no_space;
    if (code != done)
        return refuse(refusal, code);

    const Channel &channel = *set_.channels.find(service_id);
    const std::string &folder = set_.devices.find(device)->mount_path();
    std::unique_ptr<Source> source;
    try {
        source = set_.opener(channel);
    } catch (const std::system_error &error) {
        Outcome outcome = refuse(refusal, source_is_unreadable);
        outcome.reason = error.what();
        return outcome;
    }
    pvr_file_info_s info = info_of(channel, set_.channels.programme(channel), source->description(),
                                   static_cast<std::uint32_t>(known_time().value_or(0)));
    if (const std::string number = handle ? set_.channel_number(*handle) : ""; !number.empty())
        set_text(info.channel_num, sizeof info.channel_num, number);
    try {
        const bool is_shift = is_timeshift(type);
        if (is_shift) { // what a crash has left behind
            std::remove((folder + timeshift_file).c_str());
            std::remove(with_extension(folder + timeshift_file, "inf").c_str());
        }
        RecordingFile file(is_shift ? folder + timeshift_file : new_recording_path(folder, channel.name, known_time()),
                           info);
        running_.push_back({.handle = handle ? *handle : set_.handles.issue(),
                            .is_handle_ours = !handle,
                            .uid = ++last_uid_,
                            .service_id = service_id,
                            .type = static_cast<ps_record_type_e>(type),
                            .bits_per_second = channel.bits_per_second,
                            .began = set_.clock(),
                            .duration = 0,
                            .device = device,
                            .source = std::move(source),
                            .file = std::move(file)});
    } catch (const std::system_error &error) {
        Outcome outcome = refuse(refusal, file_cannot_be_made);
        outcome.reason = error.what();
        return outcome;
    }

    const RunningRecording &recording = running_.back();
    if (running_.size() == 1) {
        next_growth_ = recording.began + set_.pace(interval);
        observer_({.kind = RecordingEvent::became_busy});
    }
    RecordingEvent coming = event(RecordingEvent::will_start, recording);
    coming.state = PS_RECORD_STATE_STOP;
    observer_(coming);
    change(recording, PS_RECORD_STATE_PREPARING);
    answer(PS_RECORD_START, recording);
    change(recording, PS_RECORD_STATE_REC);
    return {};
}

Outcome Recorder::refuse(RecordingEvent event, int code)
{
    // By code.
    const std::map<int, const char *> reasons{
        {refused_result, "no such handle, one that records, or no such type"},
        {already_recorded, "it is being recorded already"},
        {no_tuner_free, "no tuner is free"},
        {source_is_unreadable, "its source cannot be read"},
        {channel_is_locked, "the channel is locked"},
        {file_cannot_be_made, "the file cannot be made"},
        {no_device, "there is no device to record to"},
        {no_signal, "the channel has no signal"},
        {no_space, "the device is nearly full"},
        {not_recordable, "an analogue channel cannot be recorded"},
        {no_channel, "no such channel"},
        {clock_not_set, "the set does not know the time"},
        {is_scrambled, "the channel is scrambled"},
    };
    event.result = code;
    observer_(event);
    return {code, reasons.at(code)};
}

std::optional<std::int64_t> Recorder::known_time() const
{
    return set_.channels.is_date_set() ? std::optional(whole_seconds(set_.wall_clock())) : std::nullopt;
}

Outcome Recorder::stop(int handle, ps_method_e method)
{
    advance();
    const Place recording = place(handle);
    if (recording == running_.end()) {
        observer_({.kind = RecordingEvent::answered,
                   .method = method,
                   .handle = handle,
                   .type = PS_RECORD_TYPE_NONE,
                   .result = refused_result});
        return refused("nothing is recorded on this handle");
    }
    RecordingEvent report = event(RecordingEvent::answered, *recording);
    report.method = method;
    end(recording, is_whole, report);
    return {};
}

Outcome Recorder::stop_recording(std::uint64_t service_id)
{
    const RunningRecording *recording = recording_of(service_id);
    return recording != nullptr ? stop(recording->handle) : refused("this channel is not recorded");
}

Outcome Recorder::stop_timeshift(std::uint64_t service_id)
{
    const RunningRecording *shift = timeshift_of(service_id);
    return shift != nullptr ? stop(shift->handle) : refused("this channel is not timeshifted");
}

Outcome Recorder::stop_any_timeshift()
{
    const auto shift = std::find_if(running_.begin(), running_.end(),
                                    [](const RunningRecording &recording) { return recording.is_timeshift(); });
    return shift != running_.end() ? stop(shift->handle) : refused("nothing is timeshifted");
}

void Recorder::lose_device(int device)
{
    for (auto recording = running_.begin(); recording != running_.end();)
        if (const Place lost = recording++; lost->device == device)
            fail(lost, device_has_problem, device_failed);
}

Outcome Recorder::switch_to_record(int handle)
{
    advance();
    const Place shift = place(handle);
    const Channel *channel = shift == running_.end() ? nullptr : set_.channels.find(shift->service_id);
    RecordingEvent refusal{.kind = RecordingEvent::answered, .method = PS_SWITCH_TO_RECORD, .handle = handle};
    if (channel == nullptr || !shift->is_timeshift())
        return refuse(refusal, refused_result);
    refusal = event(RecordingEvent::answered, *shift);
    refusal.method = PS_SWITCH_TO_RECORD;
    if (recording_of(shift->service_id) != nullptr)
        return refuse(refusal, already_recorded);
    try {
        const std::string &path = shift->file.path();
        const Microseconds lost = given_up(*shift);
        // What there still is becomes the whole recording.
        if (lost != Microseconds::zero())
            change_info(shift->file.info_path(), [&](pvr_file_info_s &info) {
                if (set_.channels.is_date_set())
                    info.start_time = static_cast<std::uint32_t>(whole_seconds(set_.wall_clock() - length(*shift)));
            });
        shift->file.move_to(new_recording_path(path.substr(0, path.rfind('/')), channel->name, known_time()),
                            bytes_in(lost, shift->bits_per_second));
        shift->began += lost;
        shift->duration -= shift->duration == 0 ? 0 : static_cast<int>(whole_seconds(lost));
    } catch (const std::system_error &error) {
        return refuse(refusal, file_cannot_be_made);
    }
    shift->type = PS_RECORD_TYPE_NORMAL;
    answer(PS_SWITCH_TO_RECORD, *shift);
    observer_(event(RecordingEvent::retyped, *shift));
    return {};
}

void Recorder::set_timeshift_type(int handle, ps_record_type_e type)
{
    const Place shift = place(handle);
    if (shift == running_.end() || !shift->is_timeshift() || shift->type == type)
        return;
    shift->type = type;
    observer_(event(RecordingEvent::retyped, *shift));
}

Outcome Recorder::set_duration(const RunningRecording *recording, int duration)
{
    if (recording == nullptr)
        return refused("nothing is recorded there");
    if (duration < 0 || (duration > 0 && duration <= whole_seconds(lasted(*recording))))
        return refused("it has lasted longer already");
    place(recording->handle)->duration = duration;
    RecordingEvent report = event(RecordingEvent::duration_set, *recording);
    report.seconds = duration;
    observer_(report);
    return {};
}

Recorder::Place Recorder::place(int handle)
{
    return std::find_if(running_.begin(), running_.end(),
                        [&](const RunningRecording &recording) { return recording.handle == handle; });
}

std::vector<std::string> Recorder::take_segments(std::uint64_t service_id)
{
    const auto [begin, end] = segments_.equal_range(service_id);
    std::vector<std::string> paths;
    std::transform(begin, end, std::back_inserter(paths), [](const auto &segment) { return segment.second; });
    segments_.erase(begin, end);
    return paths;
}

RecordingEvent Recorder::event(RecordingEvent::Kind kind, const RunningRecording &recording) const
{
    return {.kind = kind,
            .handle = recording.handle,
            .uid = recording.uid,
            .service_id = recording.service_id,
            .type = recording.type,
            .state = PS_RECORD_STATE_REC,
            .bits_per_second = recording.bits_per_second,
            .path = recording.file.path()};
}

void Recorder::answer(ps_method_e method, const RunningRecording &recording, int result)
{
    RecordingEvent report = event(RecordingEvent::answered, recording);
    report.method = method;
    report.result = result;
    observer_(report);
}

void Recorder::change(const RunningRecording &recording, ps_record_state_e state)
{
    RecordingEvent report = event(RecordingEvent::changed, recording);
    report.state = state;
    observer_(report);
}

} // namespace simulator
