// What a terminal gets besides text: colours, and a line that changes. Files and pipes get neither.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pvrctl {

/// Whether text for this descriptor has colours: on a terminal, unless NO_COLOR or CLICOLOR=0 forbids them. Elsewhere
/// only CLICOLOR_FORCE asks for them.
bool is_coloured(int fd);

/// Bold red when the descriptor has colours.
std::string alarming(std::string_view text, int fd);

/// A line on standard error that is written over and over, and is gone in the end. Nothing unless that is a terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool is_wanted);
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void show(const std::string &text);

private:
    bool is_shown_;
};

/// How far something is: a bar when there is an end, seconds in any case.
std::string progress_text(std::int64_t seconds, std::int64_t end);

} // namespace pvrctl
