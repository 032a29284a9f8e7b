#include "service.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <pvr_service_api.h>
#include <stop_token>
#include <string>
#include <thread>

namespace pvrctl {
namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr int bus_answers_within_ms = 5000;

struct FreeError {
    void operator()(GError *error) const noexcept { g_error_free(error); }
};
struct UnrefObject {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
struct UnrefVariant {
    void operator()(GVariant *value) const noexcept { g_variant_unref(value); }
};
using OwnedError = std::unique_ptr<GError, FreeError>;

/// Cancels what takes too long, for as long as it lives.
class TimeLimit {
public:
    explicit TimeLimit(std::chrono::seconds limit)
        : cancellable_(g_cancellable_new()), thread_([this, limit](const std::stop_token &stop) {
              std::unique_lock lock(mutex_);
              if (!ended_.wait_for(lock, stop, limit, [] { return false; }) && !stop.stop_requested())
                  g_cancellable_cancel(cancellable_.get());
          })
    {
    }
    GCancellable *cancellable() const noexcept { return cancellable_.get(); }

private:
    std::unique_ptr<GCancellable, UnrefObject> cancellable_;
    std::mutex mutex_;
    std::condition_variable_any ended_;
    std::jthread thread_; // last: it uses the others until it has been joined
};

constexpr char no_bus_text[] = "the system bus cannot be reached: ";

Failure no_bus(const std::string &reason) { return {ExitCode::not_running, no_bus_text + reason}; }

Failure not_running()
{
    return {ExitCode::not_running,
            std::string("the Recording service is not running: nobody owns ") + service_name + " on the bus"};
}

Failure no_recording_product() { return {ExitCode::not_recording, "this product does not record"}; }

} // namespace

Service::~Service()
{
    if (is_open_)
        svc_pvr_service_destroy();
}

void Service::find_bus(std::chrono::seconds limit)
{
    if (bus_)
        return;
    const TimeLimit time(limit);
    GError *failure = nullptr;
    bus_.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, time.cancellable(), &failure));
    const OwnedError error(failure);
    if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE)
        throw SilentBus(ExitCode::not_running, std::string(no_bus_text) +
                                                   "it accepted the connection and said nothing for " +
                                                   std::to_string(limit.count()) + " s");
    if (!bus_)
        throw no_bus(error->message);
    watch_ = std::make_unique<Watch>(bus_.get());
}

void Service::try_bus()
{
    try {
        find_bus();
    } catch (const SilentBus &) {
        throw;
    } catch (const Failure &failure) {
        missing_bus_ = failure;
    }
}

std::optional<std::string> Service::owner() const
{
    GError *failure = nullptr;
    const std::unique_ptr<GVariant, UnrefVariant> reply(
        g_dbus_connection_call_sync(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "GetNameOwner", g_variant_new("(s)", service_name), G_VARIANT_TYPE("(s)"),
                                    G_DBUS_CALL_FLAGS_NONE, bus_answers_within_ms, nullptr, &failure));
    const OwnedError error(failure);
    if (reply) {
        const char *owner = nullptr;
        g_variant_get(reply.get(), "(&s)", &owner);
        return owner;
    }
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) != FALSE)
        return std::nullopt;
    throw no_bus(error->message);
}

void Service::open()
{
    find_bus();
    switch (svc_pvr_service_init()) {
    case PS_SESSION_READY:
        is_open_ = true;
        return;
    case PS_CALL_METHOD_FAILED:
        throw no_recording_product();
    default:
        throw no_bus("it was lost just now");
    }
}

void Service::check_running() const
{
    if (!owner())
        throw not_running();
}

void Service::check(int result) const
{
    if (result != PS_SUCCESS)
        throw diagnosis();
    watch_->forget(); // the next call may fail before anything is sent
}

void Service::check_delivered(int result) const
{
    if (result == PS_CALL_METHOD_FAILED && watch_->latest().kind != Exchange::answered)
        throw diagnosis();
    watch_->forget();
}

bool Service::is_answering() const { return watch_->latest().kind != Exchange::unanswered; }

bool Service::has_answered() const { return watch_ && watch_->latest().kind == Exchange::answered; }

void Service::check_product() const
{
    // Of the calls that ask the product, this one asks nobody else. There is no session that it could end, or it is
    // not needed any more.
    if (svc_pvr_service_destroy() == PS_CALL_METHOD_FAILED)
        throw no_recording_product();
}

Failure Service::reason() const
try {
    check_product();
    return missing_bus_ ? *missing_bus_ : diagnosis();
} catch (const Failure &failure) {
    return failure;
}

Failure Service::diagnosis() const
{
    if (g_dbus_connection_is_closed(bus_.get()) != FALSE)
        return no_bus("it was lost during the call");
    const std::optional<std::string> owner = this->owner();
    if (!owner)
        return not_running();

    const Exchange call = watch_->latest();
    switch (call.kind) {
    case Exchange::unanswered:
        return {ExitCode::time_out, "the Recording service did not answer '" + call.method + "' in time; it runs, as " +
                                        *owner + ". PVR_LOG=stderr tells more"};
    case Exchange::error:
        return {ExitCode::failed, "'" + call.method + "' failed: " + call.error_name + ": " + call.error_text +
                                      ". PVR_LOG=stderr tells more"};
    case Exchange::answered:
        return {ExitCode::failed,
                "the answer to '" + call.method + "' cannot be understood. PVR_LOG=stderr tells more"};
    case Exchange::nothing_sent:
        break;
    }
    return {ExitCode::failed, "the library sent nothing to the service. PVR_LOG=stderr tells why"};
}

} // namespace pvrctl
