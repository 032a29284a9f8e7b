// What goes wrong on purpose: which methods are answered late, and which fail.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace simulator {

struct Failure {
    std::string error; ///< name of a D-Bus error
    std::string message;
};

/// For each method at most one delay and one failure; a call that meets both is delayed and then fails. `times` is
/// how many calls it meets, 0 for all until it is cleared. What is set replaces what was set before.
class Faults {
public:
    void delay(const std::string &method, std::uint32_t milliseconds, std::uint32_t times);
    void fail(const std::string &method, Failure failure, std::uint32_t times);
    void clear();

    /// What the next call of a method meets; it counts.
    std::optional<std::uint32_t> take_delay(const std::string &method);
    std::optional<Failure> take_failure(const std::string &method);

private:
    template <typename Effect>
    struct Planned {
        Effect effect;
        std::uint32_t left; ///< 0: until cleared
    };
    template <typename Effect>
    static std::optional<Effect> take(std::map<std::string, Planned<Effect>> &planned, const std::string &method);

    std::map<std::string, Planned<std::uint32_t>> delays_;
    std::map<std::string, Planned<Failure>> failures_;
};

} // namespace simulator
