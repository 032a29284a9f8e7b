#include "calls.h"

#include "timer.h"

#include <utility>

namespace simulator {

void RecordedCalls::record(std::string sender, std::string method, GVariant *arguments)
{
    bytes_ += g_variant_get_size(arguments);
    calls_.push_back({++last_number_, monotonic_now(), Microseconds(g_get_real_time()), std::move(sender),
                      std::move(method), pvr::OwnedVariant(g_variant_ref_sink(arguments))});
    if (watcher_)
        watcher_(calls_.back());
    while (calls_.size() > most_calls || bytes_ > most_bytes)
        drop_oldest();
}

void RecordedCalls::clear()
{
    calls_.clear();
    bytes_ = 0;
}

void RecordedCalls::drop_oldest()
{
    bytes_ -= g_variant_get_size(calls_.front().arguments.get());
    calls_.pop_front();
}

} // namespace simulator
