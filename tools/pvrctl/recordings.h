// The recordings and timeshifts that run, as the library tells them, and how a command shows them.
#pragma once

#include <cstdint>
#include <optional>
#include <pvr_events.h>
#include <string>
#include <vector>

#include "output.h"
#include "service.h"

namespace pvrctl {

struct Recording {
    std::uint64_t service_id = 0;
    bool is_timeshift = false;
    int type = PS_RECORD_TYPE_NONE;
    int state = PS_RECORD_STATE_STOP;
    std::int64_t seconds = 0; ///< recorded so far
    std::string uri;          ///< cut by the library at 254 bytes
};

/// All of them, in the service's order.
std::vector<Recording> running_recordings(const Service &service);

/// A channel's recording, or else its timeshift; nothing when there is neither.
std::optional<Recording> recording_of(const Service &service, std::uint64_t service_id);

/// Where a channel is recorded to; empty when it is not.
std::string recording_uri(const Service &service, std::uint64_t service_id);

/// The handle of what is written to a place; nothing when the service lists none.
std::optional<int> handle_of(const Service &service, const std::string &uri);

bool is_recorded(const Service &service, std::uint64_t service_id);
bool is_timeshifted(const Service &service, std::uint64_t service_id);

/// From the start of the recording; the development service gives 0 for one that goes on until it is stopped.
int duration_of(const Service &service, std::uint64_t service_id);

/// Throws when the service leaves the duration as it was.
void set_duration(const Service &service, std::uint64_t service_id, int seconds);

/// Seconds recorded so far.
std::int64_t progress_of(const Service &service, std::uint64_t service_id);

/// Why a recording did not start: the service's reason number, when it tells one.
Failure start_failure(const Service &service, std::uint64_t service_id, ps_record_type_e type);

/// "channel 7"
std::string channel_text(std::uint64_t service_id);

Failure not_recorded(std::uint64_t service_id);

Json recording_json(const Recording &recording);
/// All of it but the channel, on one line.
std::string recording_text(const Recording &recording);
std::string duration_text(int duration);

} // namespace pvrctl
