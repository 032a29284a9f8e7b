// The kinds of faults, as a table, and the check of a request for one.
#pragma once

#include "client/owned.h"

#include <cstdint>
#include <gio/gio.h>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

enum class FaultKind {
    delay,
    no_answer,
    error,
    result,
    wrong_type,
    crash,
    drop,
    duplicate,
    hold,
    short_record,
    no_digits,
    wrong_variant,
    device_full,
    device_pulled
};

/// When it is decided whether a fault strikes. Of the faults of one occasion, one strikes at most.
enum class Occasion {
    arrival, ///< a call has come
    answer,  ///< it is to be carried out
    turn,    ///< it is a signal's turn
    sending, ///< it is sent
    writing, ///< something is to be written to a device
    presence ///< a call is carried out, which finds a device or does not
};

struct FaultOptions {
    std::uint32_t milliseconds = 0;
    std::string error{};
    std::string message{};
    std::int32_t result = 0;
    std::optional<std::int32_t> code{}; ///< of signals; without it of any
    std::uint32_t times = 0;            ///< how often it strikes; 0 until it is removed
    std::optional<double> probability{};
    std::uint64_t seed = 0;
};

struct FaultPlan {
    FaultKind kind;
    Occasion occasion;
    std::string target; ///< name of a method, of a signal or of a device
    FaultOptions options;
    pvr::OwnedVariant given; ///< the options as they came, a{sv}
};

const char *name_of(FaultKind kind);
/// Nothing when there is none of this name.
std::optional<FaultKind> fault_kind_named(const std::string &name);
/// The type of an option's value, as GVariant writes it; "" when no fault has such an option.
std::string type_of_fault_option(const std::string &name);

/// The fault that somebody asks for: kind and target by their names, the options an a{sv}, which is taken over when it
/// is floating. Throws std::invalid_argument, which tells what is expected.
FaultPlan planned_fault(const std::string &kind, const std::string &target, GVariant *options,
                        const std::vector<std::string> &devices);

} // namespace simulator
