// Whether a name has an owner on a bus.
#pragma once

#include <memory>
#include <string>

namespace sandbox {

/// Asks over a connection of its own, which is there only as long as the watch is: the command finds
/// nobody on the bus but the service. Needs a Loop that is waiting.
class NameWatch {
public:
    enum class State { unknown, without_owner, owned };

    NameWatch(const std::string &address, const std::string &name);
    NameWatch(const NameWatch &) = delete;
    NameWatch &operator=(const NameWatch &) = delete;
    ~NameWatch();

    State state() const;
    /// Why the bus cannot be asked; empty as long as it can.
    const std::string &error() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace sandbox
