// The shapes that rows of remote functions have, so that a row says only what is its own.
#pragma once

#include "bus/remote_call.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A service id above 2^32 and above 2^63 at once, and how it prints.
inline constexpr std::uint64_t wide_id = 0xfedcba9876543210;
inline const std::string wide_id_text = "18364758544493064720";

/// How a call reads the service's result.
enum class Rule { transport, one_is_success, zero, sign, pass_through };

/// A call that writes nothing and asks for the service's result; lines come behind the entry, the
/// rule's own after them. "%" in a line stands for the result.
RemoteCall control(const std::string &name, std::function<int()> call, const std::string &entry_text,
                   support::Request request, Rule rule = Rule::transport, const support::Lines &lines = {});

/// A call whose method answers nothing at all.
RemoteCall message(const std::string &name, std::function<int()> call, const std::string &entry_text,
                   support::Request request, const support::Lines &lines = {});

/// What travels beside the value.
enum class Beside { nothing, result };

/// A call that writes one int; "%" in a line stands for it.
RemoteCall number(const std::string &name, std::function<int(int *)> call, const std::string &entry_text,
                  support::Request request, Beside beside = Beside::nothing, const support::Lines &lines = {});

/// A call that returns the answer itself; "%" in a line stands for it.
RemoteCall returned_number(const std::string &name, std::function<int()> call, const std::string &entry_text,
                           support::Request request, const std::string &answer_tail = ",",
                           const support::Lines &lines = {});

/// A call that writes one service id.
RemoteCall service_id(const std::string &name, std::function<int(std::uint64_t *)> call, support::Request request);

/// A call that copies a text into a buffer of size bytes; "%" in a line stands for the whole text.
RemoteCall text(const std::string &name, std::function<int(char *)> call, const std::string &entry_text,
                support::Request request, std::size_t size, Beside beside = Beside::nothing,
                const support::Lines &lines = {});

/// The lines with every "%" replaced.
support::Lines filled_in(const support::Lines &lines, const std::string &value);

/// What a call that walks a list logs of an element.
template <typename T>
std::string element_line(int index, T value)
{
    return support::plain_info("index[" + std::to_string(index) + "] value[" + std::to_string(value) + "]");
}
