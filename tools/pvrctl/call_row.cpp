#include "call_row.h"

namespace pvrctl {
namespace {

std::vector<std::string> names_of(std::string_view list)
{
    std::vector<std::string> names;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(", "), list.size());
        names.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 2, list.size()));
    }
    return names;
}

} // namespace

std::vector<CallParameter> ExportedFunction::parameters() const
{
    const std::vector<std::string> all_names = names_of(names);
    std::vector<CallParameter> list;
    for (std::size_t i = 0; i < types.size(); ++i)
        list.push_back({all_names[i], types[i].spelled(), types[i].is_given, types[i].takes_rest, types[i].is_shown});
    return list;
}

ReadyCall ExportedFunction::ready(std::span<const std::string> words) const
{
    const auto slots = std::make_shared<Slots>();
    const std::vector<std::string> all_names = names_of(names);
    for (std::size_t i = 0; i < types.size(); ++i) {
        slots->push_back(types[i].make_slot());
        slots->back()->take(all_names[i], words);
    }
    return [slots, all_names, invoke = invoke, callee = callee](EventSink &sink, Handed &handed) {
        const std::int64_t result = invoke(callee, *slots, sink);
        for (std::size_t i = 0; i < slots->size(); ++i)
            (*slots)[i]->show(all_names[i], handed);
        return result;
    };
}

} // namespace pvrctl
