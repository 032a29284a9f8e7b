// A function of the library as pvrctl call sees it: all but its parameters' names and the rule of its result is worked
// out by the compiler from its type.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "call_values.h"

namespace pvrctl {

/// What the result of a function says, as its documentation has it.
enum class ResultRule {
    answered,  ///< 0 once the service has answered
    judged,    ///< 0 when the service's own result is success
    own,       ///< the service's own result, 0 for done
    answer,    ///< the service's own answer to a question
    posted,    ///< 0 once handed to the bus
    session,   ///< 1 when there is a session
    supported, ///< 0, or that the service does not record
    callback,  ///< 0; events arrive in a session
    product,   ///< 0 unless the product does not record; the service is not asked
    told,      ///< 0 when a file is written and the service was told
    local,     ///< 0; neither the product nor the service is asked
    rights,    ///< what the conditional-access library made of it
    number,    ///< any
    retired,   ///< 0; nothing is done
};

/// A call that is ready to be made: what is handed out goes there.
using ReadyCall = std::function<std::int64_t(EventSink &sink, Handed &handed)>;

struct CallParameter {
    std::string name;
    std::string type; ///< as C spells it, up to the name
    bool is_given;
    bool takes_rest;
    bool is_shown;
};

struct ExportedFunction {
    std::string_view name;
    std::string_view symbol; ///< as the linker has it
    std::string_view names;  ///< of the parameters, with commas between
    ResultRule rule;
    std::string (*result_type)();
    std::vector<CallParameter> (*parameters)(const ExportedFunction &function);
    /// Throws a usage Failure for a word that is not what the parameter takes. There are as many as are given.
    ReadyCall (*ready)(const ExportedFunction &function, std::span<const std::string> words);
    void (*callee)(); ///< for ready, which knows its type
};

/// Every function that the library exports.
std::span<const ExportedFunction> exported_functions();

namespace detail {

template <typename T>
inline constexpr bool takes_rest = requires
{
    Slot<T>::takes_rest;
};
template <typename T>
inline constexpr bool takes_word = requires(Slot<T> slot, const std::string &text)
{
    slot.take(text, text);
}
|| takes_rest<T>;
template <typename T>
inline constexpr bool is_shown = requires(const Slot<T> slot, Handed &handed)
{
    slot.show({}, handed);
};

inline std::vector<std::string> names_of(std::string_view list)
{
    std::vector<std::string> names;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(", "), list.size());
        names.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 2, list.size()));
    }
    return names;
}

/// How many names there are is seen by the compiler.
consteval std::size_t count_names(std::string_view list)
{
    return list.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(list, ',')) + 1;
}

/// Gives a parameter its words, and takes them from the rest.
template <typename T>
void take_words(Slot<T> &slot, const std::string &name, std::span<const std::string> &words)
{
    if constexpr (takes_rest<T>) {
        slot.take(name, words);
        words = {};
    } else if constexpr (takes_word<T>) {
        slot.take(name, words.front());
        words = words.subspan(1);
    }
}

template <typename T>
void show_slot(const Slot<T> &slot, const std::string &name, Handed &handed)
{
    if constexpr (is_shown<T>)
        slot.show(name, handed);
}

/// What is called, the function itself or an adapter: it takes what the Slots pass.
template <typename Result, typename... Parameters>
ReadyCall ready_call(const ExportedFunction &function, std::span<const std::string> words)
{
    auto slots = std::make_shared<std::tuple<Slot<Parameters>...>>();
    const std::vector<std::string> names = names_of(function.names);
    std::apply(
        [&names, &words](auto &...slot) {
            auto name = names.begin();
            (take_words(slot, *name++, words), ...);
            static_cast<void>(name);
        },
        *slots);
    const auto callee = reinterpret_cast<Result (*)(Parameters...)>(function.callee);
    return [slots, names, callee](EventSink &sink, Handed &handed) {
        return std::apply(
            [&](auto &...slot) {
                const auto result = static_cast<std::int64_t>(callee(slot.pass(sink)...));
                auto name = names.begin();
                (show_slot(slot, *name++, handed), ...);
                static_cast<void>(name);
                return result;
            },
            *slots);
    };
}

template <typename... Types>
struct TypeList;

/// The parameters: their types as the function has them, their ways as what is called has them.
template <typename Ways, typename Types>
struct Parameters;
template <typename... Ways, typename... Types>
struct Parameters<TypeList<Ways...>, TypeList<Types...>> {
    static std::vector<CallParameter> of(const ExportedFunction &function)
    {
        std::vector<CallParameter> list{{{}, spelled<Types>(), takes_word<Ways>, takes_rest<Ways>, is_shown<Ways>}...};
        const std::vector<std::string> names = names_of(function.names);
        for (std::size_t i = 0; i < list.size(); ++i)
            list[i].name = names[i];
        return list;
    }
};

} // namespace detail

/// The names of so many parameters, with commas between. The compiler counts.
template <std::size_t arity>
struct ParameterNames {
    std::string_view list;

    consteval explicit(false) ParameterNames(const char *names) : list(names)
    {
        if (detail::count_names(list) != arity)
            throw "as many names as parameters"; // what the compiler shows
    }
};

/// The row of a function. What C leaves open is settled by an adapter, which is called in its place.
template <typename Result, typename... Types, typename... Ways>
ExportedFunction exported(std::string_view name, Result (*)(Types...), Result (*adapter)(Ways...),
                          std::type_identity_t<ParameterNames<sizeof...(Types)>> names, ResultRule rule)
{
    static_assert(sizeof...(Ways) == sizeof...(Types));
    return {name,
            name,
            names.list,
            rule,
            spelled<Result>,
            detail::Parameters<detail::TypeList<Ways...>, detail::TypeList<Types...>>::of,
            detail::ready_call<Result, Ways...>,
            reinterpret_cast<void (*)()>(adapter)};
}

template <typename Result, typename... Types>
ExportedFunction exported(std::string_view name, Result (*function)(Types...),
                          std::type_identity_t<ParameterNames<sizeof...(Types)>> names, ResultRule rule)
{
    return exported(name, function, function, names, rule);
}

} // namespace pvrctl
