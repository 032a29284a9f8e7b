// pvrctl record start: begin a recording, and stay until it has ended when told to. The library returns success
// whatever the service answered, so the effect is looked at afterwards.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "recordings.h"
#include "states.h"
#include "terminal.h"
#include "wait.h"

namespace pvrctl {
namespace {

struct RecordStart {
    std::uint64_t service_id = 0;
    int duration = 0; ///< 0: until it is stopped
    bool is_waiting = false;
    bool is_following = false; ///< waiting, with a bar
};

/// A recording that a command has the service start, stopped when the command fails.
class BegunRecording {
public:
    BegunRecording(const Service &service, std::uint64_t service_id) : service_(service), service_id_(service_id)
    {
        constexpr int show_nothing = 0;
        service.check(svc_pvr_start_recording(service_id, show_nothing, ""));
    }
    ~BegunRecording()
    {
        // A service that is silent would only be waited for once more.
        if (!is_kept_ && service_.is_answering())
            svc_pvr_stop_reocrding_sync(service_id_, application);
    }
    BegunRecording(const BegunRecording &) = delete;
    BegunRecording &operator=(const BegunRecording &) = delete;

    /// The command has succeeded, or there is nothing to stop.
    void keep() noexcept { is_kept_ = true; }

private:
    const Service &service_;
    std::uint64_t service_id_;
    bool is_kept_ = false;
};

void show_start(const Service &service, const Output &output, const Recording &recording)
{
    const int duration = duration_of(service, recording.service_id);
    output.show({{"service_id", recording.service_id},
                 {"uri", recording.uri},
                 {"type", record_type_json(recording.type)},
                 {"duration", duration}},
                {{"channel", std::to_string(recording.service_id)},
                 {"recording", recording.uri},
                 {"kind", record_type_text(recording.type)},
                 {"duration", duration_text(duration)}});
}

void stop_begun(const Service &service, const Recording &recording)
{
    const int result = svc_pvr_stop_reocrding_sync(recording.service_id, application);
    service.check_delivered(result);
    if (result != PS_SUCCESS && recording_uri(service, recording.service_id) == recording.uri)
        throw Failure(ExitCode::refused, "the service did not stop recording " + channel_text(recording.service_id));
}

/// How long a recording has become, as the service tells by itself: handle, seconds and bits per second.
std::optional<int> told_seconds(Service &service, std::optional<int> handle)
{
    std::optional<int> seconds;
    for (const News &news : service.take_news())
        if (handle && news.numbers.size() == 3 && news.numbers[0] == *handle)
            seconds = news.numbers[1];
    return seconds;
}

/// Stays until the recording has ended, or a signal has come. How long it is by then, and the signal or 0.
std::pair<std::int64_t, int> stay(const Service &service, const Recording &recording, StopSignals &signals,
                                  ProgressLine &&progress)
{
    const int duration = duration_of(service, recording.service_id);
    std::int64_t seconds = recording.seconds;
    int signal = 0;
    while (signal == 0 && recording_uri(service, recording.service_id) == recording.uri) {
        // It may end between the two questions.
        seconds = std::max(seconds, progress_of(service, recording.service_id));
        progress.show(channel_text(recording.service_id) + "  " + progress_text(seconds, duration));
        signal = signals.pause(look_interval);
    }
    return {seconds, signal};
}

/// Stays until the recording has ended, or a signal comes, which ends it.
void follow(Service &service, const Output &output, const Recording &recording, BegunRecording &begun,
            StopSignals &signals, bool has_bar)
{
    const std::optional<int> handle = handle_of(service, recording.uri);
    auto [seconds, signal] =
        stay(service, recording, signals, ProgressLine(has_bar && output.form() == Output::Form::text));
    if (signal != 0)
        stop_begun(service, recording);
    begun.keep();

    // What the service tells by itself of the end is there when it has answered one more question.
    int is_complete = 0;
    service.check(svc_pvr_is_past_record_complete(recording.service_id, &is_complete));
    seconds = told_seconds(service, handle).value_or(seconds);
    const char *stopped_by = signal == SIGINT ? "SIGINT" : "SIGTERM";
    std::vector<Row> rows{{"recorded", std::to_string(seconds) + " s"}, {"complete", answer_text(is_complete)}};
    if (signal != 0)
        rows.push_back({"stopped by", stopped_by});
    output.show({{"service_id", recording.service_id},
                 {"uri", recording.uri},
                 {"seconds", seconds},
                 {"complete", answer_json(is_complete)},
                 {"stopped_by", signal != 0 ? Json(stopped_by) : Json()}},
                rows);
    if (signal != 0)
        throw Interrupted{signal};
    if (is_complete == 0)
        throw Failure(ExitCode::failed, "the recording of " + channel_text(recording.service_id) + " was cut off");
}

void start_recording(Service &service, Output &output, const RecordStart &wanted)
{
    std::optional<StopSignals> signals;
    if (wanted.is_waiting || wanted.is_following)
        signals.emplace();
    service.open();
    if (is_recorded(service, wanted.service_id))
        throw Failure(ExitCode::refused, channel_text(wanted.service_id) + " is being recorded already");
    service.listen(PS_UPLOAD_RECORD_DURATION);
    BegunRecording begun(service, wanted.service_id);
    if (!is_recorded(service, wanted.service_id)) {
        begun.keep();
        throw start_failure(service, wanted.service_id, PS_RECORD_TYPE_NORMAL);
    }
    const std::optional<Recording> recording = recording_of(service, wanted.service_id);
    if (!recording)
        throw Failure(ExitCode::failed, "the recording of " + channel_text(wanted.service_id) + " has ended at once");
    if (wanted.duration > 0)
        set_duration(service, wanted.service_id, wanted.duration);
    show_start(service, output, *recording);
    if (signals)
        follow(service, output, *recording, begun, *signals, wanted.is_following);
    begun.keep();
}

} // namespace

void add_record_start(Commands &commands, CLI::App &object)
{
    CLI::App &verb =
        add_command(object, "start",
                    "Record a channel. With --wait the command stays until the recording has ended, and "
                    "says how long it is, as a second JSON object with --json; with --follow a terminal "
                    "shows how far it is meanwhile. Ctrl-C and SIGTERM stop the recording then, and the "
                    "command ends with 130 or 143.",
                    {"record start 1", "record start 1 --duration 3600 --follow", "record start 1 --wait"});
    const auto wanted = std::make_shared<RecordStart>();
    add_channel_argument(verb, wanted->service_id);
    add_number(verb, "--duration", wanted->duration, "SECONDS", "without it until it is stopped", 1);
    verb.add_flag("--wait", wanted->is_waiting, "stay until the recording has ended");
    verb.add_flag("--follow", wanted->is_following, "the same, with a bar on a terminal");
    choose(commands, verb, [wanted](Service &service, Output &output) { start_recording(service, output, *wanted); });
}

} // namespace pvrctl
