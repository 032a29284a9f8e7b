// The service and the bus go away and come back; the application does nothing about it.
#include "bus/main_context.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <memory>

using namespace support;

namespace {

constexpr char signal_body[] = "(int32 1, 'ff')";

int play() { return svc_pvr_play_start(1, "/m/a.srf", 0); }

void ignore_signal(pvr_service_signal, void *) {}

/// How many signals have reached the library's handler, by its first entry line.
class SignalCount {
public:
    int operator()()
    {
        for (const LoggedLine &line : logged())
            if (line.function == "_signal_subscribe" && line.text.find("Receive signal from") != std::string::npos)
                ++count_;
        return count_;
    }

private:
    int count_ = 0;
};

/// Calls until the failure is noticed: a call sent before that may end either way, a later one succeeds.
int calls_until_success()
{
    int failures = 0;
    while (play() != PS_SUCCESS)
        ++failures;
    return failures;
}

class Recovery : public testing::Test {
protected:
    void SetUp() override { service.script("play_start", answers("(1,)")); }

    /// The bus ends under a session, which a call notices, and comes back with the service on it.
    void restart_the_bus()
    {
        bus().kill();
        EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
        bus().start();
        service.vanish();
        service.come_back();
    }

    ScriptedService service;
};

} // namespace

TEST_F(Recovery, FollowsAServiceThatComesLate)
{
    service.vanish();
    EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    service.come_back();
    EXPECT_EQ(play(), PS_SUCCESS);
}

TEST_F(Recovery, FailsTheCallThatTheServiceDiedUnderAndSucceedsAfterItsReturn)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    service.script("play_start", vanishes());
    logged();
    EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    EXPECT_NE(logged_lines().back().find("GDBus error: GDBus.Error:org.freedesktop.DBus.Error.NoReply"),
              std::string::npos);
    service.script("play_start", answers("(1,)"));
    service.come_back();
    EXPECT_EQ(play(), PS_SUCCESS);
}

TEST_F(Recovery, FindsARestartedServiceThoughNobodyRunsTheMainContext)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    service.vanish();
    service.come_back();
    EXPECT_EQ(play(), PS_CALL_METHOD_FAILED); // addressed to the owner that has gone
    EXPECT_EQ(play(), PS_SUCCESS);
}

TEST_F(Recovery, FindsARestartedServiceThoughItStayedAwayForAWhile)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    service.vanish();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    service.come_back();
    EXPECT_EQ(play(), PS_SUCCESS);
}

TEST_F(Recovery, AnswersASupportQueryFromTheSuccessor)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    service.script("is_support_pvr", answers("(1,)"));
    service.vanish();
    service.come_back();
    EXPECT_EQ(svc_pvr_is_support_pvr(nullptr), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(svc_pvr_is_support_pvr(nullptr), PS_SUCCESS);
}

TEST_F(Recovery, FollowsARestartedServiceWhenTheMainContextRuns)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    ASSERT_EQ(svc_pvr_register_signal_cb(ignore_signal, nullptr), PS_SUCCESS);
    const ContextThread loop(nullptr);
    SignalCount signals;
    for (int round = 1; round <= 3; ++round) {
        service.vanish();
        service.come_back();
        calls_until_success();
        service.emit("send_pvr_signal_to_apps", signal_body);
        while (signals() < round)
            std::this_thread::yield();
    }
}

TEST_F(Recovery, SurvivesTheBusAndReconnectsTheHandler)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    ASSERT_EQ(svc_pvr_register_signal_cb(ignore_signal, nullptr), PS_SUCCESS);
    SignalCount signals;
    for (int round = 1; round <= 3; ++round) {
        restart_the_bus();
        EXPECT_EQ(play(), PS_SUCCESS);
        service.emit("send_pvr_signal_to_apps", signal_body);
        run_until(nullptr, [&] { return signals() == round; });
    }
}

TEST_F(Recovery, HandsTheHandlerToASuccessorThatWasLongInComing)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    bus().kill();
    EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(svc_pvr_service_init(), PS_NO_PROXY);
    ASSERT_EQ(svc_pvr_register_signal_cb(ignore_signal, nullptr), PS_SUCCESS); // while there is no proxy
    bus().start();
    service.vanish();
    service.come_back();
    EXPECT_EQ(play(), PS_SUCCESS);
    service.emit("send_pvr_signal_to_apps", signal_body);
    SignalCount signals;
    run_until(nullptr, [&] { return signals() == 1; });
}

TEST_F(Recovery, UsesAConnectionOfItsOwnWhenTheSharedOneIsClosedAndHeldBySomebodyElse)
{
    GDBusConnection *held = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    ASSERT_NE(held, nullptr);
    ASSERT_EQ(play(), PS_SUCCESS);
    restart_the_bus();
    EXPECT_EQ(play(), PS_SUCCESS);
    EXPECT_TRUE(g_dbus_connection_is_closed(held));
    g_object_unref(held);
}

TEST_F(Recovery, KeepsASessionThatAServiceMerelyRefusesThroughItsErrors)
{
    ASSERT_EQ(play(), PS_SUCCESS);
    service.script("play_start", fails("org.freedesktop.DBus.Error.Failed", "no"));
    EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    logged();
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(logged_lines()[2], info("  [already g_pvr_proxy: PTR] "));
}

/// The session was made on another thread, in a main context of that thread's own.
class RecoveryElsewhere : public Recovery {
protected:
    void SetUp() override
    {
        Recovery::SetUp();
        context = g_main_context_new();
        g_main_context_push_thread_default(context);
        ASSERT_EQ(play(), PS_SUCCESS);
        ASSERT_EQ(svc_pvr_register_signal_cb(ignore_signal, nullptr), PS_SUCCESS);
        g_main_context_pop_thread_default(context);
    }
    void TearDown() override
    {
        svc_pvr_service_destroy();
        while (g_main_context_iteration(context, FALSE) == TRUE)
            ; // GDBus frees what belonged to a proxy in the proxy's context
        g_main_context_unref(context);
    }

    void lose_the_service()
    {
        service.vanish();
        EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
        service.come_back();
    }

    GMainContext *context = nullptr;
};

TEST_F(RecoveryElsewhere, MakesTheSuccessorInAContextThatIsFree)
{
    lose_the_service();
    EXPECT_EQ(play(), PS_SUCCESS);
    service.emit("send_pvr_signal_to_apps", signal_body);
    SignalCount signals;
    run_until(context, [&] { return signals() == 1; });
}

TEST_F(RecoveryElsewhere, WaitsForAContextThatIsAnotherThreads)
{
    std::promise<void> is_owned;
    std::promise<void> may_run;
    std::promise<void> may_end;
    std::thread owner([&] {
        ASSERT_TRUE(g_main_context_acquire(context));
        is_owned.set_value();
        may_run.get_future().wait();
        while (g_main_context_iteration(context, FALSE) == TRUE)
            ;
        may_end.get_future().wait();
        g_main_context_release(context);
    });
    is_owned.get_future().wait();

    lose_the_service();
    logged();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(play(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" g_pvr_proxy == NULL!!"));
    EXPECT_EQ(svc_pvr_service_init(), PS_NO_PROXY);

    may_run.set_value();
    calls_until_success();
    may_end.set_value();
    owner.join();
    service.emit("send_pvr_signal_to_apps", signal_body);
    SignalCount signals;
    run_until(context, [&] { return signals() == 1; });
}

TEST_F(RecoveryElsewhere, ForgetsTheSuccessorWhenTheSessionIsDestroyed)
{
    ASSERT_TRUE(g_main_context_acquire(context));
    std::thread caller([&] {
        lose_the_service();
        EXPECT_EQ(play(), PS_CALL_METHOD_FAILED); // the successor is on its way
        EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
        logged();
    });
    caller.join();
    while (g_main_context_iteration(context, FALSE) == TRUE)
        ;
    g_main_context_release(context);
    EXPECT_EQ(logged_lines(), Lines()); // no proxy was made
    EXPECT_EQ(play(), PS_SUCCESS);      // a session of this thread's context
}
