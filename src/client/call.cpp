#include "client/call.h"

#include "client/session.h"
#include "client/support.h"

#include <cstring>

namespace pvr {

constinit std::atomic<int> g_result{-1};

namespace {

/// Above 32 MiB the bus drops the process's connection; half of that leaves room for the rest.
constexpr std::size_t longest_text = std::size_t{16} << 20;

} // namespace

Call::Call(Here here) noexcept : Call(here, check_owner(here), true)
{
    if (code_ == PS_SUCCESS)
        code_ = check_support(here);
}

Call Call::on_existing_session(Here here) noexcept { return {here, check_owner(here), false}; }

int Call::session_rule() const noexcept
{
    if (code_ != PS_SUCCESS)
        return code_;
    return session() ? PS_SUCCESS : PS_CALL_METHOD_FAILED;
}

OwnedProxy Call::session() const noexcept { return is_lazy_ ? acquire_session(here_) : existing_session(here_); }

bool Call::is_sendable(const char *method, int position, const char *text) const noexcept
{
    if (text == nullptr)
        return true;
    if (strnlen(text, longest_text + 1) > longest_text) {
        FAILURE_AT(here_, " GDBus error: argument %d of %s is longer than %zu bytes!!\n", position, method,
                   longest_text);
        return false;
    }
    if (g_utf8_validate(text, -1, nullptr) == FALSE) {
        FAILURE_AT(here_, " GDBus error: argument %d of %s is not UTF-8!!\n", position, method);
        return false;
    }
    return true;
}

bool Call::is_connected(const OwnedProxy &proxy) const noexcept
{
    if (!g_dbus_connection_is_closed(g_dbus_proxy_get_connection(proxy.get())))
        return true;
    note_failed_call(proxy, nullptr);
    FAILURE_AT(here_, " GDBus error: %s!!\n", "The connection is closed");
    return false;
}

bool Call::concluded(const OwnedProxy &proxy, bool succeeded, const OwnedError &error) const noexcept
{
    if (succeeded)
        return true;
    note_failed_call(proxy, error.get());
    FAILURE_AT(here_, " GDBus error: %s!!\n", error ? error->message : "the proxy refused the call");
    return false;
}

} // namespace pvr
