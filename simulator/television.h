// The set as the service sees it: what it receives, stores, records and plays, and the signals that tell of it.
// Whatever is due happens before a call is answered, or at its time.
#pragma once

#include "channels.h"
#include "devices.h"
#include "equipment.h"
#include "handles.h"
#include "log.h"
#include "player.h"
#include "recorder.h"
#include "shared_values.h"
#include "signals.h"
#include "timer.h"
#include "timer_recordings.h"
#include "virtual_clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace simulator {

class Television {
    const Log &log_; // first: what is made below tells of itself

public:
    Television(OrgVexanTvPvr *object, Equipment equipment, const Log &log);

    /// When something will happen by itself.
    std::optional<Microseconds> due() const;
    /// Lets everything happen that is due, each thing at its moment. Where that takes long, the rest waits.
    void advance();
    /// The same, after so much time has passed at once; nothing waits.
    void step(Microseconds time);
    /// Ends what records and plays, and tells of it.
    void stop();
    /// A call was answered: logs it, and sends what it caused.
    void answered(const std::string &line);

    /// Changes the channel. Where a recording is in the way, the applications are told, and nothing changes.
    Outcome tune(std::uint64_t service_id);
    /// What an application says to that: whether the channel is to change all the same.
    void answer_change(bool is_wanted);

    VirtualClock clock;
    Signals signals;
    Handles handles;
    Channels channels;
    SharedValues values;
    Devices devices;
    Player player;
    Recorder recorder;
    TimerRecordings timer_recordings;

private:
    enum class Patience { limited, endless };

    void pass_time(Patience patience);
    void let_happen();
    void set_timer();
    void tell_state();
    void change_channel(std::uint64_t service_id);
    Recording open(const std::string &uri) const;

    int told_state_ = 0;
    std::optional<std::uint64_t> wanted_channel_; ///< while a recording is in the way
    Microseconds last_tick_{0};                   ///< on the clock of timers
    Timer timer_;
};

} // namespace simulator
