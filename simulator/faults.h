// What goes wrong on purpose: the faults that are set, and whether one strikes. It knows no bus and no clock.
#pragma once

#include "fault_kinds.h"

#include <cstdint>
#include <list>
#include <optional>
#include <random>
#include <string>

namespace simulator {

/// A D-Bus error.
struct Failure {
    std::string error; ///< its name
    std::string message;
};

struct Fault {
    std::uint32_t id; ///< counts from 1 and never starts again
    FaultPlan plan;
    std::uint64_t met = 0;   ///< on so many occasions it might have struck
    std::uint64_t fired = 0; ///< so often it did
    bool is_on = false;      ///< the state of a fault that lasts from one occasion to the next
    std::mt19937_64 dice;    ///< its sequence is the same everywhere

    bool is_spent() const { return plan.options.times != 0 && fired == plan.options.times; }
};

/// Faults stay in the order in which they were added, also those that have struck as often as they were to.
class Faults {
public:
    static constexpr std::size_t most = 1000;

    /// Throws std::length_error when there are too many already.
    std::uint32_t add(FaultPlan plan);
    /// False when there is none of this number.
    bool remove(std::uint32_t id);
    /// Of one kind and target.
    void remove(FaultKind kind, const std::string &target);
    void clear();
    const std::list<Fault> &list() const { return faults_; }

    /// The fault that strikes now: the first one that does. Those behind it do not notice the occasion. The code is
    /// that of a signal. Null when none strikes; else it is there until faults are added or removed.
    const FaultPlan *take(Occasion occasion, const std::string &target, std::optional<std::int32_t> code = {});

    /// A call is about to be carried out: decides which devices it finds.
    void call_passes();
    /// Whether a device is out now.
    bool is_pulled(const std::string &device) const;
    /// Whether the next write to a device is certain to find no room. Asking is no occasion.
    bool is_full(const std::string &device) const;

private:
    static bool strikes(Fault &fault);

    std::list<Fault> faults_;
    std::uint32_t last_id_ = 0;
};

} // namespace simulator
