// What records: the tuners, the recordings that run and the timeshift, from their start to their end. It knows no bus;
// what happens is told to an observer.
#pragma once

#include "channels.h"
#include "devices.h"
#include "handles.h"
#include "outcome.h"
#include "pvr_events.h"
#include "recording_file.h"

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// Why a recording is refused or fails: the codes whose texts an application can show.
enum RecordingError : int {
    already_recorded = 3,
    no_tuner_free = 4,
    source_is_unreadable = 9,
    channel_is_locked = 10,
    file_cannot_be_made = 11,
    device_has_problem = 100,
    no_device = 101,
    no_signal = 102,
    no_space = 160,
    not_recordable = 200,
    no_channel = 202,
    clock_not_set = 251,
    is_scrambled = 256,
};

/// What happened to a recording.
struct RecordingEvent {
    enum Kind {
        will_start,
        answered, ///< the command of that name was carried out or refused, or it reports something
        changed,  ///< it is in another state
        retyped,  ///< it is of another type
        will_finish,
        failed,   ///< result is the error
        measured, ///< how long it has become
        is_over,
        duration_set,
        became_busy ///< something records, or nothing does any longer
    };

    Kind kind;
    ps_method_e method = PS_RECORD_START; ///< of answered
    int handle = 0;
    int uid = 0; ///< a number of the recording's own
    std::uint64_t service_id = 0;
    int type = PS_RECORD_TYPE_NORMAL; ///< as it came, which need be no ps_record_type_e
    ps_record_state_e state = PS_RECORD_STATE_STOP;
    int result = 0;
    int seconds = 0;
    int bits_per_second = 0;
    std::string path{};

    bool operator==(const RecordingEvent &) const = default;
};

inline bool is_timeshift(int type)
{
    return type == PS_RECORD_TYPE_TIMESHIFT_PLAY || type == PS_RECORD_TYPE_TIMESHIFT_PAUSE;
}

/// A recording or timeshift that runs.
struct RunningRecording {
    int handle;
    bool is_handle_ours; ///< it was issued for the recording, and is given back with its end
    int uid;
    std::uint64_t service_id;
    ps_record_type_e type;
    int bits_per_second;
    Microseconds began;
    int duration; ///< seconds; 0 until it is stopped
    int device;
    std::unique_ptr<Source> source;
    RecordingFile file;
    bool is_warned = false; ///< that its device is nearly full

    bool is_timeshift() const { return simulator::is_timeshift(type); }
};

class Recorder {
public:
    static constexpr int default_tuners = 2;
    static constexpr Microseconds default_timeshift = std::chrono::minutes(30);

    using Opener = std::function<std::unique_ptr<Source>(const Channel &)>; ///< throws std::system_error
    using Observer = std::function<void(const RecordingEvent &)>;

    struct Surroundings {
        Handles &handles;
        Channels &channels;
        const Devices &devices;
        Clock clock;
        Clock wall_clock; ///< since 1970 UTC
        Opener opener;
        std::function<std::string(int handle)> channel_number; ///< that an application has set; "" when none has
        Pace pace = usual_pace;                                ///< of growing
        Microseconds longest_timeshift = default_timeshift;    ///< what comes before that is given up
    };

    /// How often the files grow, at the usual pace.
    static constexpr Microseconds interval = std::chrono::milliseconds(200);

    Recorder(Surroundings surroundings, int tuners, Observer observer);
    /// Ends what runs.
    ~Recorder();
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    /// What start() would answer.
    int precheck(std::uint64_t service_id, int type) const;
    /// Records a channel on a handle, or on one of its own when there is none. Types of timeshift start a timeshift.
    Outcome start(std::optional<int> handle, std::uint64_t service_id, int type);
    /// Has the signal of the method tell of it.
    Outcome stop(int handle, ps_method_e method = PS_RECORD_STOP);
    /// Of a channel: its recording, its timeshift.
    Outcome stop_recording(std::uint64_t service_id);
    Outcome stop_timeshift(std::uint64_t service_id);
    Outcome stop_any_timeshift();
    /// What a device held is lost with it.
    void lose_device(int device);

    /// Makes a recording of the timeshift on a handle, what it holds already included.
    Outcome switch_to_record(int handle);
    /// Tells that a timeshift is watched, or waits.
    void set_timeshift_type(int handle, ps_record_type_e type);
    /// From the start, in seconds; 0 until it is stopped. What is over already cannot be asked for.
    Outcome set_duration(const RunningRecording *recording, int seconds);

    /// In the order of their start, timeshifts behind recordings.
    std::vector<const RunningRecording *> running() const;
    /// Null when there is none.
    const RunningRecording *on_handle(int handle) const;
    const RunningRecording *recording_of(std::uint64_t service_id) const;
    const RunningRecording *timeshift_of(std::uint64_t service_id) const;
    const RunningRecording *either_of(std::uint64_t service_id) const;
    const RunningRecording *writing(const std::string &path) const;
    const RunningRecording *newest() const;
    bool is_writing_to(int device) const;
    bool is_busy() const { return !running_.empty(); }

    /// Of a timeshift: as much as there still is. Positions count from there.
    Microseconds length(const RunningRecording &recording) const;
    Microseconds given_up(const RunningRecording &recording) const;
    int seconds(const RunningRecording &recording) const;
    std::vector<std::uint64_t> channels() const;
    /// Whether a tuner is free for a channel beside all that is recorded.
    bool can_receive(std::uint64_t service_id) const;
    /// Whether the last recording of a channel that ended is whole.
    bool is_last_complete(std::uint64_t service_id) const;
    /// Recordings of parts of programmes that have ended, by their channel; they are forgotten when taken.
    std::vector<std::string> take_segments(std::uint64_t service_id);

    std::optional<Microseconds> due() const;
    void advance();

private:
    using Place = std::list<RunningRecording>::iterator;

    Outcome refuse(RecordingEvent event, int code);
    /// Nothing when the set does not know it.
    std::optional<std::int64_t> known_time() const;
    Place place(int handle);
    /// Since it was begun.
    Microseconds lasted(const RunningRecording &recording) const;
    void grow(Place recording);
    void warn(RunningRecording &recording);
    void fail(Place recording, int code, IncompleteReason reason);
    void end(Place recording, IncompleteReason reason, std::optional<RecordingEvent> report);
    RecordingEvent event(RecordingEvent::Kind kind, const RunningRecording &recording) const;
    void answer(ps_method_e method, const RunningRecording &recording, int result = done);
    void change(const RunningRecording &recording, ps_record_state_e state);

    Surroundings set_;
    int tuners_;
    Observer observer_;
    std::list<RunningRecording> running_;
    std::map<std::uint64_t, bool> complete_;
    std::multimap<std::uint64_t, std::string> segments_;
    Microseconds next_growth_{0};
    int last_uid_ = 0;
};

} // namespace simulator
