#include "faults.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace simulator {
namespace {

bool is_about(const Fault &fault, Occasion occasion, const std::string &target)
{
    return fault.plan.occasion == occasion && fault.plan.target == target;
}

} // namespace

std::uint32_t Faults::add(FaultPlan plan)
{
    if (faults_.size() >= most)
        throw std::length_error("there are " + std::to_string(most) + " faults already");
    const FaultOptions &options = plan.options;
    // A device that is to be out is out at once, and not with the first call only.
    const bool is_on = plan.occasion == Occasion::presence && !options.probability;
    std::mt19937_64 dice(options.seed);
    faults_.push_back({.id = ++last_id_, .plan = std::move(plan), .is_on = is_on, .dice = dice});
    return last_id_;
}

bool Faults::remove(std::uint32_t id)
{
    return faults_.remove_if([&](const Fault &fault) { return fault.id == id; }) != 0;
}

void Faults::remove(FaultKind kind, const std::string &target)
{
    faults_.remove_if([&](const Fault &fault) { return fault.plan.kind == kind && fault.plan.target == target; });
}

void Faults::clear() { faults_.clear(); }

bool Faults::strikes(Fault &fault)
{
    if (fault.is_spent())
        return false;
    ++fault.met;
    // 53 bits, as many as a number from 0 to 1 has. What the library's distributions do differs between systems.
    const auto bits = static_cast<double>(fault.dice() >> 11);
    const bool is_hit = !fault.plan.options.probability || bits * 0x1p-53 < *fault.plan.options.probability;
    fault.fired += is_hit ? 1 : 0;
    return is_hit;
}

const FaultPlan *Faults::take(Occasion occasion, const std::string &target, std::optional<std::int32_t> code)
{
    for (Fault &fault : faults_)
        if (is_about(fault, occasion, target) && (!fault.plan.options.code || fault.plan.options.code == code) &&
            strikes(fault))
            return &fault.plan;
    return nullptr;
}

void Faults::call_passes()
{
    for (Fault &fault : faults_)
        if (fault.plan.occasion == Occasion::presence)
            fault.is_on = strikes(fault);
}

bool Faults::is_pulled(const std::string &device) const
{
    return std::any_of(faults_.begin(), faults_.end(),
                       [&](const Fault &fault) { return is_about(fault, Occasion::presence, device) && fault.is_on; });
}

bool Faults::is_full(const std::string &device) const
{
    return std::any_of(faults_.begin(), faults_.end(), [&](const Fault &fault) {
        return is_about(fault, Occasion::writing, device) && !fault.is_spent() && !fault.plan.options.probability;
    });
}

} // namespace simulator
