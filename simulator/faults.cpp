#include "faults.h"

#include <utility>

namespace simulator {

void Faults::delay(const std::string &method, std::uint32_t milliseconds, std::uint32_t times)
{
    delays_.insert_or_assign(method, Planned<std::uint32_t>{milliseconds, times});
}

void Faults::fail(const std::string &method, Failure failure, std::uint32_t times)
{
    failures_.insert_or_assign(method, Planned<Failure>{std::move(failure), times});
}

void Faults::clear()
{
    delays_.clear();
    failures_.clear();
}

template <typename Effect>
std::optional<Effect> Faults::take(std::map<std::string, Planned<Effect>> &planned, const std::string &method)
{
    const auto found = planned.find(method);
    if (found == planned.end())
        return std::nullopt;
    Effect effect = found->second.effect;
    if (found->second.left != 0 && --found->second.left == 0)
        planned.erase(found);
    return effect;
}

std::optional<std::uint32_t> Faults::take_delay(const std::string &method) { return take(delays_, method); }

std::optional<Failure> Faults::take_failure(const std::string &method) { return take(failures_, method); }

} // namespace simulator
