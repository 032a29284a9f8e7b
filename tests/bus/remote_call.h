// One row per remote function: what it sends, what it makes of each answer, and what it logs. The
// rows of a family stand in <family>_calls.cpp; what holds for every row is tested in remote_call.cpp.
#pragma once

#include "support/log_capture.h"
#include "support/scripted_service.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// An answer of the service, and what must come of it.
struct Outcome {
    std::string answer; ///< as GVariant text
    int returned;
    std::string outputs;
    support::Lines lines; ///< all that is logged behind the entry line
};

struct RemoteCall {
    std::string name;
    std::function<int(std::ostream &outputs)> call; ///< prints its outputs after the call
    std::string untouched;                          ///< the outputs as they were before the call
    std::string entry;
    bool is_checked; ///< whether the product's support is asked for first
    support::Request request;
    /// Whether the service's result stays behind for the calls that answer from the last one.
    enum class Result { is_published, is_the_answer } result;
    std::vector<Outcome> outcomes;
    std::function<int()> call_with_null_outputs; ///< empty for a call without outputs
    std::string variant = {};                    ///< tells rows of one function apart
};

std::ostream &operator<<(std::ostream &, const RemoteCall &);

// The rows of each family.
std::vector<RemoteCall> channel_calls();
std::vector<RemoteCall> device_calls();
std::vector<RemoteCall> list_calls();
std::vector<RemoteCall> playback_calls();
std::vector<RemoteCall> recording_calls();
std::vector<RemoteCall> recording_files_calls();
std::vector<RemoteCall> recording_state_calls();
std::vector<RemoteCall> status_calls();
const std::vector<RemoteCall> &all_calls();

/// Rows that take so much making that only the test of theirs makes them.
std::vector<RemoteCall> long_list_calls();

/// Joins rows of several kinds.
std::vector<RemoteCall> joined(std::vector<std::vector<RemoteCall>> groups);

/// Prints a text buffer up to its NUL.
std::string text_of(const char *buffer, std::size_t size);
