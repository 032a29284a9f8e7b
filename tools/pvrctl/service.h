// The Recording service as a command sees it: reached through the library. GDBus only tells why a call failed.
#pragma once

#include <chrono>
#include <gio/gio.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "watch.h"

namespace pvrctl {

/// Who asks, as the service is told.
inline constexpr char application[] = "pvrctl";

/// A bus that accepts connections and then says nothing: the library would wait for it for ever.
class SilentBus : public Failure {
public:
    using Failure::Failure;
};

/// As long as the library waits for an answer.
inline constexpr std::chrono::seconds bus_admits_within{25};

class Service {
public:
    Service() = default;
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Reaches the bus. Throws when there is none, or none that admits anybody in time.
    void find_bus(std::chrono::seconds limit = bus_admits_within);

    /// The same for what can do without a bus: throws a SilentBus alone.
    void try_bus();

    /// Who owns the service's name; nothing when it is not running.
    std::optional<std::string> owner() const;

    /// The connection, for as long as the service object lives. It takes a bus that was found.
    GDBusConnection *bus() const noexcept { return bus_.get(); }

    /// Makes the library's session. Throws when there is no bus, or when the product does not record.
    void open();

    /// Throws when nobody owns the service's name. It takes a bus that was found.
    void check_running() const;

    /// Throws what a call's failure comes from, unless the call succeeded.
    void check(int result) const;

    /// For the calls that return the service's own result: throws when the call itself failed.
    /// A negative result may come from the library as well as from the service.
    void check_delivered(int result) const;

    /// Whether the service has answered the latest call, or there was none.
    bool is_answering() const;

    /// Whether an answer to the latest call has come, and no error.
    bool has_answered() const;

    /// Throws when the product does not record. Neither a bus nor the service is asked.
    void check_product() const;

    /// Why a call failed that may have found no bus; of a call that has something to say of it itself.
    Failure reason() const;

    /// Keeps what the service tells of a method (ps_method_e) on its own, for take_news(). It takes a session.
    void listen(int method) { watch_->listen(method); }
    /// What has come since it was asked last.
    std::vector<News> take_news() { return watch_->take_news(); }

private:
    Failure diagnosis() const;

    struct Unref {
        void operator()(GDBusConnection *connection) const noexcept { g_object_unref(connection); }
    };
    std::unique_ptr<GDBusConnection, Unref> bus_;
    std::unique_ptr<Watch> watch_;
    std::optional<Failure> missing_bus_; ///< why there is none
    bool is_open_ = false;
};

} // namespace pvrctl
