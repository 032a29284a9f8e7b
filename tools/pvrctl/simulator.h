// The control interface of the development service as the verbs of sim use it: plain GDBus, and nothing of the library.
#pragma once

#include <gio/gio.h>
#include <string>

#include "client/owned.h"
#include "output.h"
#include "service.h"

namespace pvrctl {

inline constexpr char simulator_name[] = "org.vexan.tv.pvr.Simulator1";
inline constexpr char simulator_path[] = "/org/vexan/tv/pvr_simulator";

/// The development service has left the bus instead of answering.
class SimulatorGone : public Failure {
public:
    using Failure::Failure;
};

class Simulator {
public:
    /// Reaches the bus. Throws when there is none.
    explicit Simulator(Service &service);

    GDBusConnection *bus() const { return service_.bus(); }

    /// Calls a method and gives its answer, a tuple. The arguments are a tuple, which is taken over when it is
    /// floating, or null for none. Throws why there is no answer; for arguments that make no sense with the exit code
    /// given.
    pvr::OwnedVariant ask(const char *method, GVariant *arguments = nullptr, ExitCode nonsense = ExitCode::usage) const;

private:
    Failure failure(const char *method, GError *error, ExitCode nonsense) const;

    Service &service_;
};

/// Why nothing can be asked of the development service.
Failure no_simulator();

/// A value of the bus. What is in a variant stands for it.
Json bus_value_json(GVariant *value);
/// As GVariant writes it.
std::string bus_value_text(GVariant *value);

} // namespace pvrctl
