// The frame of a remote call, and the rules that turn its outcome into a result code.
//
//     Call call(ENTRY("[flag:%d]\n", flag));
//     auto answer = call.remote(wire::set_keep_state_flag, flag, service_result);
//     return answer.one_is_success_rule();
#pragma once

#include "client/exchange.h"
#include "client/log.h"
#include "client/outputs.h"
#include "client/owned.h"
#include "client/wire.h"
#include "pvr_service_api.h"

#include <atomic>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace pvr {

/// The service's integer result as the last call that asked for one left it; -1 before. One slot
/// for the process, kept because some calls answer from it; no call's own outcome is read from it.
extern std::atomic<int> g_result;

/// How a call reads the service's integer result.
enum class Success { is_one, is_zero, is_not_negative };

constexpr int judged(Success success, int result) noexcept
{
    const bool succeeded = success == Success::is_one    ? result == 1
                           : success == Success::is_zero ? result == 0
                                                         : result >= 0;
    return succeeded ? PS_SUCCESS : PS_CALL_METHOD_FAILED;
}

/// Stands in a call for the service's integer result, which a rule then judges.
struct ServiceResult {};
inline constexpr ServiceResult service_result;

namespace detail {

/// The parameter of a generated call function that takes an argument of a row. Exact types only.
// clang-format off
template <typename Argument> struct Taken {};
template <std::same_as<int> T>           struct Taken<T> { using Type = gint; };
template <std::same_as<std::uint32_t> T> struct Taken<T> { using Type = guint; };
template <std::same_as<std::uint64_t> T> struct Taken<T> { using Type = guint64; };
template <> struct Taken<const char *>    { using Type = const gchar *; };
template <> struct Taken<int *>           { using Type = gint *; };
template <> struct Taken<std::int64_t *>  { using Type = gint64 *; };
template <> struct Taken<std::uint64_t *> { using Type = guint64 *; };
template <> struct Taken<OwnedText *>     { using Type = gchar **; };
template <> struct Taken<OwnedVariant *>  { using Type = GVariant **; };
template <> struct Taken<ServiceResult>   { using Type = gint *; };
// clang-format on

template <typename... Arguments>
using Synchronous = gboolean(OrgVexanTvPvr *, typename Taken<Arguments>::Type..., GCancellable *, GError **);
template <typename... Arguments>
using Asynchronous = void(OrgVexanTvPvr *, typename Taken<Arguments>::Type..., GCancellable *, GAsyncReadyCallback,
                          gpointer);

template <typename T>
T on_wire(T argument, int &) noexcept
{
    return argument;
}
inline const char *on_wire(const char *text, int &) noexcept { return text != nullptr ? text : ""; }
inline char **on_wire(OwnedText *text, int &) noexcept { return text->slot(); }
inline GVariant **on_wire(OwnedVariant *value, int &) noexcept { return value->slot(); }
inline int *on_wire(ServiceResult, int &result) noexcept { return &result; }

} // namespace detail

/// What came of a remote call: true once the transport has succeeded, and only then are the
/// row's outputs set. The rules are the row's last line.
template <bool HasResult>
class [[nodiscard]] Answer {
public:
    Answer(Here here, bool is_delivered, int result) noexcept
        : here_(here), is_delivered_(is_delivered), result_(result)
    {
        if (HasResult && is_delivered)
            g_result.store(result, std::memory_order_relaxed);
    }

    explicit operator bool() const noexcept { return is_delivered_; }

    /// Success whenever the call itself succeeded, whatever the service's result.
    int transport_rule() const noexcept { return is_delivered_ ? PS_SUCCESS : PS_CALL_METHOD_FAILED; }

    /// The service's result, for a row that logs it; meaningless when the call was not delivered.
    int result() const noexcept requires HasResult { return result_; }

    /// The answer itself is returned.
    int value_rule(int value) const noexcept { return is_delivered_ ? value : PS_CALL_METHOD_FAILED; }

    int one_is_success_rule() const noexcept requires HasResult { return judged_and_logged(Success::is_one); }

    int zero_rule() const noexcept requires HasResult { return judged_and_logged(Success::is_zero); }

    int sign_rule() const noexcept requires HasResult
    {
        return is_delivered_ ? judged(Success::is_not_negative, result_) : PS_CALL_METHOD_FAILED;
    }

    /// The service's result is returned as it is.
    int pass_through_rule() const noexcept requires HasResult { return value_rule(result_); }

    /// The service's result goes to the caller's out-parameter.
    int result_out_rule(int *out) const noexcept requires HasResult
    {
        if (is_delivered_)
            write_out(out, result_);
        return transport_rule();
    }

private:
    int judged_and_logged(Success success) const noexcept
    {
        if (!is_delivered_)
            return PS_CALL_METHOD_FAILED;
        INFO_AT(here_, " [g_result:%d]\n", result_);
        return judged(success, result_);
    }

    Here here_;
    bool is_delivered_;
    int result_;
};

/// One exported call on its way to the service. Constructing it is the check whether this process
/// may call at all; a local refusal stands between the constructor and remote.
class Call {
public:
    explicit Call(Here here) noexcept;

    /// A call without the support check, made only on a session that exists already.
    static Call on_existing_session(Here here) noexcept;

    /// Whether the call may go on; code() is to be returned when it may not.
    explicit operator bool() const noexcept { return code_ == PS_SUCCESS; }
    int code() const noexcept { return code_; }

    /// For a call that asks the service nothing: success when it could, as far as the session goes.
    int session_rule() const noexcept;

    /// Refuses a call for what its log line says.
    static int refused(Here) noexcept { return PS_CALL_METHOD_FAILED; }

    /// Calls the service and waits for its answer. Arguments stand in the order of the wire:
    /// numbers and texts to send, then where each output goes, service_result for the result.
    template <typename Function, typename... Arguments>
    requires std::same_as<Function, detail::Synchronous<Arguments...>>
    auto remote(Remote<Function> method, Arguments... arguments) const noexcept
    {
        constexpr bool has_result = (std::same_as<Arguments, ServiceResult> || ...);
        int result = -1;
        bool is_delivered = false;
        if (const OwnedProxy proxy = session_for(method.name, arguments...)) {
            OwnedError error;
            const bool succeeded = exchange(proxy.get(), method.name, method.request, method.reply, error.slot(),
                                            detail::on_wire(arguments, result)...);
            is_delivered = concluded(proxy, succeeded, error);
        }
        return Answer<has_result>(here_, is_delivered, result);
    }

    /// Sends a request and waits for nothing, not even its failure.
    template <typename Function, typename... Arguments>
    requires std::same_as<Function, detail::Asynchronous<Arguments...>> Answer<false> post(Remote<Function> method,
                                                                                           Arguments... arguments)
    const noexcept
    {
        int unused = 0;
        const OwnedProxy proxy = session_for(method.name, arguments...);
        const bool is_sent = proxy && is_connected(proxy);
        if (is_sent)
            send(proxy.get(), method.name, method.request, detail::on_wire(arguments, unused)...);
        return Answer<false>(here_, is_sent, 0);
    }

private:
    Call(Here here, int code, bool is_lazy) noexcept : here_(here), code_(code), is_lazy_(is_lazy) {}

    template <typename... Arguments>
    OwnedProxy session_for(const char *method, Arguments... arguments) const noexcept
    {
        int position = 0;
        if (code_ != PS_SUCCESS || !(is_sendable(method, ++position, arguments) && ...))
            return {};
        return session();
    }

    template <typename T>
    bool is_sendable(const char *, int, T) const noexcept
    {
        return true;
    }
    bool is_sendable(const char *method, int position, const char *text) const noexcept;

    OwnedProxy session() const noexcept;
    bool is_connected(const OwnedProxy &proxy) const noexcept;
    bool concluded(const OwnedProxy &proxy, bool succeeded, const OwnedError &error) const noexcept;

    Here here_;
    int code_;
    bool is_lazy_;
};

} // namespace pvr
