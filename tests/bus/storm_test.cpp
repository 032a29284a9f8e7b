// Everything at once: callers, initialisers, a destroyer and registrations, and a service and a bus
// that are killed under them. What a round returns may be a failure; it may not crash, hang or race.
#include "bus/main_context.h"
#include "bus/news.h"
#include "bus/storm_calls.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace support;

namespace {

int rounds()
{
    const char *given = std::getenv("PVR_STORM_ROUNDS");
    return given != nullptr ? std::atoi(given) : 500;
}

void ignore_signal(pvr_service_signal, void *) {}
void ignore_result(pvr_service_result, void *) {}

char own_data[2];
std::atomic<int> called{0};
std::atomic<int> called_with_foreign_data{0};

/// One of two callbacks that take the same place in turn, each with data of its own.
template <typename News, int Own>
void on_news(News, void *data)
{
    ++called;
    called_with_foreign_data += data != &own_data[Own];
}

template <typename News, auto Register, auto Unregister>
int register_one_after_the_other()
{
    return Register(on_news<News, 0>, &own_data[0]) | Register(on_news<News, 1>, &own_data[1]) |
           Unregister(on_news<News, 1>) | Unregister(on_news<News, 0>);
}

constexpr int (*registrations[])() = {
    register_one_after_the_other<pvr_service_result, svc_pvr_register_result_pvr_cb, svc_pvr_unregister_result_pvr_cb>,
    register_one_after_the_other<pvr_service_result *, svc_pvr_register_result_pvr_point_cb,
                                 svc_pvr_unregister_result_pvr_point_cb>,
    register_one_after_the_other<pvr_result_third, svc_pvr_register_to_other_apps_cb,
                                 svc_pvr_unregister_to_other_apps_cb>,
    register_one_after_the_other<int, svc_pvr_register_get_pvr_state_cb, svc_pvr_unregister_get_pvr_state_cb>,
    register_one_after_the_other<pvr_service_signal, svc_pvr_register_signal_cb, svc_pvr_unregister_signal_cb>,
    register_one_after_the_other<pvr_service_signal *, svc_pvr_register_signal_pointer_cb,
                                 svc_pvr_unregister_signal_pointer_cb>,
    register_one_after_the_other<pvr_service_signal, svc_pvr_register_signal_cb_in_list,
                                 svc_pvr_unregister_signal_cb_in_list>,
};

class Storm : public testing::Test {
protected:
    void SetUp() override { script_storm_calls(service); }
    void TearDown() override
    {
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(unexpected, 0);
        EXPECT_GT(answered, 0);
        int answer = PS_CALL_METHOD_FAILED;
        for (int i = 0; i < 3 && answer != PS_SUCCESS; ++i)
            answer = svc_pvr_play_start(1, "", 0);
        EXPECT_EQ(answer, PS_SUCCESS) << testing::PrintToString(logged_lines());
    }

    /// Has a thread repeat an action, and counts its successes.
    void each_round(std::atomic<int> &counter, int (*action)())
    {
        threads.emplace_back([this, action, &counter] {
            for (int i = rounds(); i > 0 || goes_on; --i) {
                const int returned = action();
                if (returned == PS_SUCCESS)
                    ++counter;
                if (!is_expected_in_a_storm(returned))
                    ++unexpected;
                logged(); // or the lines would fill the memory
                service.requests();
            }
        });
    }

    void four_callers()
    {
        for (const auto &call : storm_calls)
            each_round(answered, call);
    }

    /// Until calls are served again.
    void wait_for_answers()
    {
        for (const int before = answered; answered < before + 20;)
            std::this_thread::yield();
    }

    ScriptedService service;
    std::atomic<bool> goes_on{false};
    std::vector<std::thread> threads;
    std::atomic<int> answered{0}; ///< calls that the service has answered
    std::atomic<int> others{0};
    std::atomic<int> unexpected{0};
};

} // namespace

TEST_F(Storm, OfCallersInitialisersAndADestroyer)
{
    four_callers();
    each_round(others, svc_pvr_service_init);
    each_round(others, svc_pvr_service_init);
    each_round(others, svc_pvr_service_destroy);
}

TEST_F(Storm, OfCallersAndRegistrationsWhileSignalsArrive)
{
    const ContextThread loop(nullptr);
    four_callers();
    each_round(others, [] { return svc_pvr_register_signal_cb(ignore_signal, nullptr); });
    each_round(others, [] {
        static int data[2];
        return svc_pvr_register_result_pvr_cb(ignore_result, &data[0]) |
               svc_pvr_register_result_pvr_cb(ignore_result, &data[1]);
    });
    each_round(others, svc_pvr_service_destroy);
    for (int i = rounds(); i > 0; --i)
        service.emit("send_pvr_signal_to_apps", "(int32 1, '00')");
    for (std::thread &thread : threads)
        thread.join();
    threads.clear();
}

TEST_F(Storm, OfCallbacksThatChangeWhileTheyAreCalled)
{
    const ContextThread loop(nullptr);
    called = called_with_foreign_data = 0;
    each_round(answered, [] { return svc_pvr_play_start(1, "/m/a.srf", 0); });
    goes_on = true;
    for (const auto &registration : registrations)
        each_round(others, registration);
    for (int i = rounds(); i > 0; --i) {
        emit_result(service, 17, "(int32 1, int32 0)"); // the application and its pointer
        emit_result(service, 101, "(int32 1,)");        // other applications
        emit_result(service, 200, "(int32 1,)");        // the state
        emit_signal(service, 1, std::string(2 * sizeof(pvr_service_signal), '0'));
    }
    goes_on = false;
    for (std::thread &thread : threads)
        thread.join();
    threads.clear();
    EXPECT_GT(called, 0);
    EXPECT_EQ(called_with_foreign_data, 0);
}

TEST_F(Storm, OfCallersUnderAServiceThatIsKilledAndReturns)
{
    goes_on = true;
    four_callers();
    for (int i = rounds() / 10; i > 0; --i) {
        service.vanish();
        service.come_back();
        wait_for_answers();
    }
    goes_on = false;
}

TEST_F(Storm, OfCallersUnderABusThatIsKilledAndReturns)
{
    goes_on = true;
    four_callers();
    for (int i = rounds() / 50; i > 0; --i) {
        bus().kill();
        bus().start();
        service.vanish();
        service.come_back();
        wait_for_answers();
    }
    goes_on = false;
}
