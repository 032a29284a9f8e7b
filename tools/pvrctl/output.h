// What a command says, for people or as JSON: data on standard output, everything else on standard error.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "failure.h"

namespace pvrctl {

/// Members stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// A line for people: what it is about, and what there is to say.
struct Row {
    std::string label;
    std::string text;
};

/// Standard output cannot be written any more because its reader has gone.
class ReaderGone : public Failure {
public:
    using Failure::Failure;
};

class Output {
public:
    enum class Form { text, json, nothing };

    void set_form(Form form) noexcept { form_ = form; }
    Form form() const noexcept { return form_; }

    /// Data of a command, in both forms. JSON is one object on one line.
    void show(const Json &data, const std::vector<Row> &rows) const;

    /// One of many lines, written at once. The text is harmless to a terminal already.
    void show_line(const Json &data, const std::string &text) const;

    /// Text that has one form only, such as help. Throws a Failure when it cannot be written, a ReaderGone when that
    /// is why.
    void print(const std::string &text) const;

    /// Why a command failed, on standard error.
    void report(const Failure &failure) const noexcept;

private:
    Form form_ = Form::text;
};

/// Text from a file name or the service, harmless to a terminal: control characters as \xNN.
std::string printable(std::string_view text);

/// Two digits for each byte.
std::string hexadecimal(std::string_view bytes);

/// A time in seconds since 1970 UTC, as the clock on the wall shows it; empty when it cannot be one.
std::string local_time(std::int64_t seconds);

/// Breaks text at spaces so that lines fit 80 columns. Words are never cut. Lines but the first are indented.
std::string wrapped(std::string_view text, std::size_t indent);

} // namespace pvrctl
