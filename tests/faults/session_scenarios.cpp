// The session, the calls that make one, and the registrations.
#include "faults/scenario.h"
#include "pvr_service_api.h"

#include <gio/gio.h>
#include <iterator>

namespace faults {
namespace {

const std::string ready = std::to_string(PS_SESSION_READY);
const std::string no_proxy = std::to_string(PS_NO_PROXY);
const std::string succeeded = std::to_string(PS_SUCCESS);
const std::string failed = std::to_string(PS_CALL_METHOD_FAILED);

constexpr Way no_shared_bus{Kind::shared_bus, "error"};
constexpr Fault shared_bus_is_of_no_use{&no_shared_bus, 1, true};

/// What the making of a session gets along without.
std::vector<Exception> dispensable(const std::string &outcome)
{
    return {
        {Kind::access, outcome, "the file that overrides the product counts as not there"},
        {Kind::allocation, outcome, "without memory for it the process goes without a name in the log"},
        {Kind::readlink, outcome, "a name that cannot be read is NULL"},
        {Kind::atfork, outcome, "tried again with the next session; until then a child is not told from its parent"},
        {Kind::bindtextdomain, outcome, "the error texts are not translated"},
        {Kind::dbus_threads, outcome, "only libdbus needs it, which nothing here uses"},
        {Kind::mutex_trylock, outcome, "somebody holds the mutex: it is left as it is"},
        {Kind::shared_bus, outcome, "a connection of the library's own stands in"},
        {Kind::mutex_init, failed, "the log says so"},
    };
}

void nothing(Stage &) {}

void play_start_is_answered(Stage &stage) { stage.answer("play_start", "(1,)"); }

std::string play_start(Stage &) { return std::to_string(svc_pvr_play_start(1, "/m/a.srf", 0)); }

/// A call has found that the service was restarted.
void service_has_been_restarted(Stage &stage)
{
    stage.answer("play_start", "(1,)");
    stage.service.vanish();
    svc_pvr_play_start(1, "/m/a.srf", 0);
    stage.service.come_back();
}

/// A call on a thread whose main context is not the session's.
std::string play_start_elsewhere(Stage &stage)
{
    static GMainContext *const context = g_main_context_new();
    g_main_context_push_thread_default(context);
    const std::string outcome = play_start(stage);
    g_main_context_pop_thread_default(context);
    return outcome;
}

std::vector<Scenario> sessions()
{
    const auto init = [](Stage &) { return std::to_string(svc_pvr_service_init()); };
    const auto destroy = [](Stage &) { return std::to_string(svc_pvr_service_destroy()); };
    return {
        {"svc_pvr_service_init", "in a new process", Start::fresh, nothing, init, ready, no_proxy, dispensable(ready)},
        {"svc_pvr_service_init",
         "without a shared connection",
         Start::fresh,
         nothing,
         init,
         ready,
         no_proxy,
         dispensable(ready),
         {shared_bus_is_of_no_use}},
        {"svc_pvr_service_init", "once more", Start::session, nothing, init, ready, no_proxy, dispensable(ready)},
        {"svc_pvr_service_init", "after a restart of the service", Start::session, service_has_been_restarted, init,
         ready, no_proxy, dispensable(ready)},
        {"svc_pvr_service_destroy", "", Start::session, nothing, destroy, succeeded, failed, dispensable(succeeded)},
        {"svc_pvr_service_destroy", "without a session", Start::no_session, nothing, destroy, succeeded, failed,
         dispensable(succeeded)},
        {"svc_pvr_play_start", "as the first call", Start::fresh, play_start_is_answered, play_start, succeeded, failed,
         dispensable(succeeded)},
        {"svc_pvr_play_start", "after a restart of the service", Start::session, service_has_been_restarted, play_start,
         succeeded, failed, dispensable(succeeded)},
        {"svc_pvr_play_start", "from another main context", Start::session, service_has_been_restarted,
         play_start_elsewhere, succeeded, failed, dispensable(succeeded)},
    };
}

/// Calls that take a session and ask the service nothing.
std::vector<Scenario> session_calls()
{
    std::vector<Scenario> scenarios;
    constexpr std::pair<const char *, int (*)(std::uint64_t)> calls[] = {
        {"svc_pvr_can_show_record_stop_msg", svc_pvr_can_show_record_stop_msg},
        {"svc_pvr_can_show_record_stop_msg_type", svc_pvr_can_show_record_stop_msg_type},
        {"svc_pvr_is_show_record_banner_by_info_key", svc_pvr_is_show_record_banner_by_info_key},
    };
    for (const auto &[name, call] : calls)
        scenarios.push_back({name, "", Start::no_session, nothing,
                             [call = call](Stage &) { return std::to_string(call(1)); }, succeeded, failed,
                             dispensable(succeeded)});
    scenarios.push_back({"svc_pvr_stop_pvr_sync",
                         "",
                         Start::session,
                         nothing,
                         [](Stage &) { return std::to_string(svc_pvr_stop_pvr_sync(1, "guide")); },
                         succeeded,
                         failed,
                         {{Kind::access, succeeded, "the file that overrides the product counts as not there"},
                          {Kind::post, succeeded, "nobody waits for it, not even for its failure"}}});
    scenarios.push_back({"svr_pvr_clear_thumbnail_callback", "", Start::no_session, nothing,
                         [](Stage &) { return std::to_string(svr_pvr_clear_thumbnail_callback()); }, succeeded, failed,
                         dispensable(succeeded)});
    scenarios.push_back({"svc_pvr_get_err_text", "", Start::fresh, nothing,
                         [](Stage &) {
                             char text[255] = "";
                             const int returned = svc_pvr_get_err_text(104, 0, text);
                             return std::to_string(returned) + "; " + text;
                         },
                         succeeded + "; SID_NO_TIME_INFORMATION", failed + "; ",
                         dispensable(succeeded + "; SID_NO_TIME_INFORMATION")});
    return scenarios;
}

void on_result(pvr_service_result, void *) {}
void on_result_pointer(pvr_service_result *, void *) {}
void on_third(pvr_result_third, void *) {}
void on_state(int, void *) {}
void on_signal(pvr_service_signal, void *) {}
void on_signal_pointer(pvr_service_signal *, void *) {}

template <auto Register, auto Callback>
int registered()
{
    return Register(Callback, nullptr);
}
template <auto Unregister, auto Callback>
int unregistered()
{
    return Unregister(Callback);
}

std::vector<Scenario> registrations()
{
    constexpr std::pair<const char *, int (*)()> calls[] = {
        {"svc_pvr_register_result_pvr_cb", registered<svc_pvr_register_result_pvr_cb, on_result>},
        {"svc_pvr_register_result_pvr_point_cb", registered<svc_pvr_register_result_pvr_point_cb, on_result_pointer>},
        {"svc_pvr_register_to_other_apps_cb", registered<svc_pvr_register_to_other_apps_cb, on_third>},
        {"svc_pvr_register_get_pvr_state_cb", registered<svc_pvr_register_get_pvr_state_cb, on_state>},
        {"svc_pvr_register_signal_cb", registered<svc_pvr_register_signal_cb, on_signal>},
        {"svc_pvr_register_signal_pointer_cb", registered<svc_pvr_register_signal_pointer_cb, on_signal_pointer>},
        {"svc_pvr_register_signal_cb_in_list", registered<svc_pvr_register_signal_cb_in_list, on_signal>},
        {"svc_pvr_unregister_result_pvr_cb", unregistered<svc_pvr_unregister_result_pvr_cb, on_result>},
        {"svc_pvr_unregister_result_pvr_point_cb",
         unregistered<svc_pvr_unregister_result_pvr_point_cb, on_result_pointer>},
        {"svc_pvr_unregister_to_other_apps_cb", unregistered<svc_pvr_unregister_to_other_apps_cb, on_third>},
        {"svc_pvr_unregister_get_pvr_state_cb", unregistered<svc_pvr_unregister_get_pvr_state_cb, on_state>},
        {"svc_pvr_unregister_signal_cb", unregistered<svc_pvr_unregister_signal_cb, on_signal>},
        {"svc_pvr_unregister_signal_pointer_cb", unregistered<svc_pvr_unregister_signal_pointer_cb, on_signal_pointer>},
        {"svc_pvr_unregister_signal_cb_in_list", unregistered<svc_pvr_unregister_signal_cb_in_list, on_signal>},
    };
    std::vector<Scenario> scenarios;
    for (const auto &[name, call] : calls)
        scenarios.push_back({name, "", Start::fresh, nothing, [call = call](Stage &) { return std::to_string(call()); },
                             succeeded, failed, dispensable(succeeded)});
    return scenarios;
}

} // namespace

std::vector<Scenario> session_scenarios()
{
    std::vector<Scenario> all = sessions();
    for (auto &family : {session_calls(), registrations()})
        std::copy(family.begin(), family.end(), std::back_inserter(all));
    return all;
}

} // namespace faults
