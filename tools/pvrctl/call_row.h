// A function of the library as pvrctl call sees it: all but its parameters' names and the rule of its result is worked
// out by the compiler from its type.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
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

/// A parameter during a call: it takes its words, has what the function gets, and shows what that has handed out.
struct AnySlot {
    AnySlot() = default;
    virtual ~AnySlot() = default;
    AnySlot(const AnySlot &) = delete;
    AnySlot &operator=(const AnySlot &) = delete;

    /// Takes its words from the front.
    virtual void take(const std::string &name, std::span<const std::string> &words) = 0;
    virtual void show(const std::string &name, Handed &handed) const = 0;
};
using Slots = std::vector<std::unique_ptr<AnySlot>>;

/// What the type of a parameter says of it.
struct ParameterType {
    std::string (*spelled)();
    bool is_given;
    bool takes_rest;
    bool is_shown;
    std::unique_ptr<AnySlot> (*make_slot)();
};

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
    std::span<const ParameterType> types; ///< of the parameters
    std::int64_t (*invoke)(void (*callee)(), const Slots &slots, EventSink &sink);
    void (*callee)(); ///< for invoke, which knows its type

    std::vector<CallParameter> parameters() const;
    /// Throws a usage Failure for a word that is not what the parameter takes. There are as many as are given.
    ReadyCall ready(std::span<const std::string> words) const;
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

/// How many names there are is seen by the compiler.
consteval std::size_t count_names(std::string_view list)
{
    return list.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(list, ',')) + 1;
}

template <typename T>
struct SlotOf final : AnySlot {
    Slot<T> slot;

    void take([[maybe_unused]] const std::string &name, [[maybe_unused]] std::span<const std::string> &words) override
    {
        if constexpr (takes_rest<T>) {
            slot.take(name, words);
            words = {};
        } else if constexpr (takes_word<T>) {
            slot.take(name, words.front());
            words = words.subspan(1);
        }
    }
    void show([[maybe_unused]] const std::string &name, [[maybe_unused]] Handed &handed) const override
    {
        if constexpr (is_shown<T>)
            slot.show(name, handed);
    }
};

/// Spelled as the function has it; its way is that of what is called.
template <typename Way, typename Type>
inline constexpr ParameterType parameter_type{
    spelled<Type>, takes_word<Way>, takes_rest<Way>, is_shown<Way>,
    []() -> std::unique_ptr<AnySlot> { return std::make_unique<SlotOf<Way>>(); }};

template <typename... Types>
struct TypeList;
template <typename Ways, typename Types>
struct Parameters;
template <typename... Ways, typename... Types>
struct Parameters<TypeList<Ways...>, TypeList<Types...>> {
    static constexpr std::array<ParameterType, sizeof...(Types)> types{parameter_type<Ways, Types>...};
};

/// What is called, the function itself or an adapter: it takes what the Slots pass. All else that a call does is the
/// same for all types.
template <typename Result, typename... Ways>
std::int64_t invoke(void (*callee)(), [[maybe_unused]] const Slots &slots, [[maybe_unused]] EventSink &sink)
{
    const auto function = reinterpret_cast<Result (*)(Ways...)>(callee);
    return [&]<std::size_t... index>(std::index_sequence<index...>)
    {
        return static_cast<std::int64_t>(function(static_cast<SlotOf<Ways> &>(*slots[index]).slot.pass(sink)...));
    }
    (std::index_sequence_for<Ways...>());
}

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
            detail::Parameters<detail::TypeList<Ways...>, detail::TypeList<Types...>>::types,
            detail::invoke<Result, Ways...>,
            reinterpret_cast<void (*)()>(adapter)};
}

template <typename Result, typename... Types>
ExportedFunction exported(std::string_view name, Result (*function)(Types...),
                          std::type_identity_t<ParameterNames<sizeof...(Types)>> names, ResultRule rule)
{
    return exported(name, function, function, names, rule);
}

} // namespace pvrctl
