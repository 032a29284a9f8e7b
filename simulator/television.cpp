#include "television.h"

#include "device_news.h"
#include "playback_news.h"
#include "recording_news.h"
#include "recovery.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace simulator {
namespace {

constexpr int is_playing_bit = 1;
constexpr int is_recording_bit = 2;
constexpr int no_handle = 0;

/// Applications are answered in between.
constexpr Microseconds longest_slice = std::chrono::milliseconds(100);
/// How often the set wakes up at most when time passes faster than it does.
constexpr Microseconds tick = std::chrono::milliseconds(20);

VirtualClock clock_of(const Equipment &equipment)
{
    return equipment.standing_since ? VirtualClock::standing_at(*equipment.standing_since)
                                    : VirtualClock(equipment.speed);
}

/// The report that so many recordings are in the way of another channel.
ps_method_e report_of(std::size_t recordings)
{
    constexpr ps_method_e reports[] = {PS_NONE_RECORDING_CHANGE_CHANNEL, PS_ONE_RECORDING_CHANGE_CHANNEL,
                                       PS_TWO_RECORDING_CHANGE_CHANNEL};
    return recordings < std::size(reports) ? reports[recordings] : PS_ALL_RECORDING_CHANGE_CHANNEL;
}

} // namespace

Television::Television(OrgVexanTvPvr *object, Equipment equipment, const Log &log)
    : log_(log), clock(clock_of(equipment)), signals(object, log),
      channels(std::move(equipment.channels), [this] { return clock.wall_seconds(); }), values(handles),
      devices(
          std::move(equipment.devices), [this] { return clock.now(); }, space_of,
          [this](const DeviceEvent &event) {
              announce_device(signals, log_, event);
              if (event.kind == DeviceEvent::left)
                  recorder.lose_device(event.handle);
              // Nothing is recorded to a device that has just come.
              if (event.kind == DeviceEvent::came)
                  for (const std::string &line : recover(event.mount_path))
                      log_.line(line);
          },
          [this](Microseconds usual) { return clock.stride(usual); }),
      player(
          handles, [this] { return clock.now(); }, [this](const std::string &uri) { return open(uri); },
          [this](const std::string &path) -> std::optional<Extent> {
              const RunningRecording *recording = recorder.writing(path);
              if (recording == nullptr)
                  return std::nullopt;
              return Extent{recorder.length(*recording), recorder.given_up(*recording)};
          },
          [this](const PlaybackEvent &event) {
              if (event.kind == PlaybackEvent::became_busy)
                  tell_state();
              else
                  announce_playback(signals, event);
          }),
      recorder({.handles = handles,
                .channels = channels,
                .devices = devices,
                .clock = [this] { return clock.now(); },
                .wall_clock = [this] { return clock.wall(); },
                .opener =
                    [sources = std::move(equipment.sources)](const Channel &channel) {
                        const auto given = sources.find(channel.service_id);
                        return open_source(given == sources.end() ? "" : given->second, channel.bits_per_second);
                    },
                .channel_number = [this](int handle) { return values.channel_number(handle); },
                .pace = [this](Microseconds usual) { return clock.stride(usual); },
                .longest_timeshift = equipment.longest_timeshift},
               equipment.tuners,
               [this](const RecordingEvent &event) {
                   if (event.kind == RecordingEvent::became_busy)
                       return tell_state();
                   // What is watched of a timeshift goes with it.
                   if (event.kind == RecordingEvent::is_over && is_timeshift(event.type))
                       player.stop_path(event.path);
                   announce_recording(signals, event);
               }),
      timer_recordings(recorder, [this] { return clock.now(); }), timer_([this] {
          last_tick_ = monotonic_now();
          advance();
          signals.publish();
          set_timer();
      })
{
    set_timer();
}

void Television::advance() { pass_time(Patience::limited); }

void Television::step(Microseconds time)
{
    clock.skip(time);
    pass_time(Patience::endless);
}

void Television::pass_time(Patience patience)
{
    const Microseconds target = clock.target();
    const Microseconds began = monotonic_now();
    for (auto moment = due(); moment && *moment <= target; moment = due()) {
        if (patience == Patience::limited && monotonic_now() - began > longest_slice) {
            // At the speed of real time what is missing is made up for; faster, it might never be.
            if (clock.speed() != 1)
                clock.forget_lag();
            return;
        }
        clock.go_to(*moment);
        let_happen();
    }
    clock.go_to(target);
    let_happen();
}

void Television::let_happen()
{
    devices.advance();
    recorder.advance();
    timer_recordings.advance(); // behind what ends at the same moment, for whose tuner one may wait
    player.advance();
}

void Television::set_timer()
{
    const std::optional<Microseconds> moment = due();
    if (!moment || clock.stands_still())
        return timer_.set(std::nullopt);
    const Microseconds coming = clock.real_moment(*moment);
    timer_.set(clock.speed() > 1 ? std::max(coming, last_tick_ + tick) : coming);
}

void Television::stop()
{
    advance();
    player.stop_all();
    while (recorder.is_busy())
        recorder.stop(recorder.running().front()->handle);
    signals.publish();
}

void Television::answered(const std::string &line)
{
    log_.line(line);
    signals.publish();
    set_timer();
}

std::optional<Microseconds> Television::due() const
{
    std::optional<Microseconds> earliest;
    for (const std::optional<Microseconds> moment :
         {devices.due(), recorder.due(), timer_recordings.due(), player.due()})
        if (moment && (!earliest || *moment < *earliest))
            earliest = moment;
    return earliest;
}

void Television::tell_state()
{
    const int state = (player.is_playing() ? is_playing_bit : 0) | (recorder.is_busy() ? is_recording_bit : 0);
    if (state == std::exchange(told_state_, state))
        return;
    constexpr const char *words[] = {"idle", "playing", "recording", "playing and recording"};
    signals.result(PS_PVR_STATE_CHANGE, result_value(state),
                   std::string("the service is ") + words[state] + ", PS_PVR_STATE_CHANGE " + std::to_string(state));
}

Outcome Television::tune(std::uint64_t service_id)
{
    advance();
    if (channels.find(service_id) == nullptr)
        return refused("no such channel");
    if (recorder.can_receive(service_id)) {
        change_channel(service_id);
        return {};
    }
    wanted_channel_ = service_id;
    const std::size_t count = recorder.channels().size();
    const ps_method_e report = report_of(count);
    const std::string text =
        std::to_string(count) + " recordings are in the way of channel " + std::to_string(service_id);
    if (report == PS_ONE_RECORDING_CHANGE_CHANNEL)
        signals.result(report, result_value(service_id, recorder.running().front()->handle), text);
    else
        signals.result(report, result_value(service_id), text);
    return refused(text);
}

void Television::answer_change(bool is_wanted)
{
    const std::optional<std::uint64_t> channel = std::exchange(wanted_channel_, std::nullopt);
    if (!channel || !is_wanted)
        return;
    while (!recorder.can_receive(*channel))
        recorder.stop(recorder.running().front()->handle);
    change_channel(*channel);
}

void Television::change_channel(std::uint64_t service_id)
{
    wanted_channel_.reset();
    channels.tune(service_id);
    signals.result(PS_SEND_CHANNEL_CHANGE, result_value(no_handle),
                   "tuned to channel " + std::to_string(service_id) + ", PS_SEND_CHANNEL_CHANGE");
}

Recording Television::open(const std::string &uri) const
{
    const std::optional<std::string> path = local_path(uri);
    if (path && devices.is_out_of_reach(*path))
        throw Unplayable(PS_NO_SUCH_FILE_OR_DIRECTORY, "its device is pulled out");
    const RunningRecording *recording = path ? recorder.writing(*path) : nullptr;
    if (recording == nullptr)
        return open_recording(uri);
    return {*path, recorder.length(*recording), clock.wall()};
}

} // namespace simulator
