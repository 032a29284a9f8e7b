// Every line that the library logs, as the platform's logger would have printed it.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace support {

/// A line behind its line number, its priority first: "6 [PVR][API][EST][10.8.1]My master:[7][me] …".
/// Pointers other than null read "PTR".
using Lines = std::vector<std::string>;

struct LoggedLine {
    int log_id;
    int priority;
    std::string tag;
    std::string file;
    std::string function;
    std::string text; ///< behind the line number
};

/// Takes what was logged so far.
std::vector<LoggedLine> logged();
/// The same, as comparable text.
Lines logged_lines();

/// Does something as soon as a line is logged that contains text, between two steps of what logs it; once.
void when_logged(const std::string &text, std::function<void()> reaction);

/// Whether any line logged so far, taken or not, was malformed: a wrong head, or no newline at its end.
Lines malformed_lines();

/// "My master:[pid][executable]" as this process's lines have it once its identity was captured.
std::string my_master();

// Expected lines, by shape.
std::string entry(const std::string &text);       ///< 6 [EST], names the caller
std::string failure(const std::string &text);     ///< 6 [EST], names the caller
std::string exception(const std::string &text);   ///< 6 [EXP], names the caller
std::string info(const std::string &text);        ///< 4, names the caller
std::string plain_entry(const std::string &text); ///< 6 [EST]
std::string plain_info(const std::string &text);  ///< 4
std::string detail(const std::string &text);      ///< 3

/// The text with which the library logs what the platform answered about the product's support.
std::string support_line(int answer);

} // namespace support
