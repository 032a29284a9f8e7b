// The checks of pvrctl doctor: what one finds, and what they share.
#pragma once

#include <array>
#include <chrono>
#include <gio/gio.h>
#include <optional>
#include <pvr_records.h>
#include <string>

#include "client/owned.h"
#include "failure.h"
#include "service.h"

namespace pvrctl {

enum class Verdict { ok, warning, wrong, skipped };

struct Finding {
    Verdict verdict = Verdict::ok;
    std::string text;
    std::string advice;             ///< what to do about it; empty when there is nothing to do
    ExitCode code = ExitCode::done; ///< what the command ends with when this is wrong
    const char *missing = nullptr;  ///< the check that was wrong, so that this one was skipped
};

inline Finding sound(const std::string &text) { return {Verdict::ok, text, "", ExitCode::done, nullptr}; }
inline Finding warning(const std::string &text, const std::string &advice)
{
    return {Verdict::warning, text, advice, ExitCode::done, nullptr};
}
inline Finding wrong(ExitCode code, const std::string &text, const std::string &advice)
{
    return {Verdict::wrong, text, advice, code, nullptr};
}
inline Finding skipped(const std::string &text) { return {Verdict::skipped, text, "", ExitCode::done, nullptr}; }

/// One call of the service by plain GDBus, which goes on while something else is asked.
class ProbeCall {
public:
    ProbeCall(GDBusConnection *bus, const char *method, std::chrono::seconds limit);
    ~ProbeCall();
    ProbeCall(const ProbeCall &) = delete;
    ProbeCall &operator=(const ProbeCall &) = delete;

    /// Takes what has come so far, and waits for nothing.
    void look();
    /// Waits until there is an answer, or it has taken too long.
    void wait();

    bool is_over() const noexcept { return is_over_; }
    /// An answer or an error of the bus; null while there is neither, and when it took too long.
    GDBusMessage *reply() const noexcept { return reply_.get(); }
    /// Why there is no reply, once it is over.
    const GError *error() const noexcept { return error_.get(); }

private:
    static void end(GObject *bus, GAsyncResult *result, gpointer self) noexcept;

    pvr::Owned<GCancellable, g_object_unref> cancellable_;
    pvr::Owned<GDBusMessage, g_object_unref> reply_;
    pvr::OwnedError error_;
    bool is_over_ = false;
};

/// What checks leave to those that need them.
struct Examination {
    Service &service;
    std::chrono::seconds limit; ///< how long the bus and the service may take to answer
    std::optional<ProbeCall> call = std::nullopt;
    int answer = 0; ///< of the service, to whether it records
    int device = 0; ///< the default one
    device_info device_record{};
};

struct Check {
    const char *name;
    const char *title;
    std::array<const char *, 2> needs; ///< those that have to be in order, or null
    Finding (*run)(Examination &examined);
};

// What stands on this machine.
Finding examine_library(Examination &examined);
Finding examine_product(Examination &examined);
Finding examine_catalogues(Examination &examined);
// The bus and the service.
Finding examine_bus(Examination &examined);
Finding examine_service(Examination &examined);
Finding examine_policy(Examination &examined);
Finding examine_answer(Examination &examined);
Finding examine_records(Examination &examined);
Finding examine_interface(Examination &examined);
// Where recordings go to.
Finding examine_device(Examination &examined);
Finding examine_folder(Examination &examined);
Finding examine_room(Examination &examined);

} // namespace pvrctl
