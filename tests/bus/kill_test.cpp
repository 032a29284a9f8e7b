// Service and bus are killed at random moments, under the calls of eight threads and of eight other processes, each
// with callbacks of every kind. Nothing crashes, no call hangs, and every callback hears the service when it is back.
#include "bus/main_context.h"
#include "bus/news.h"
#include "bus/storm_calls.h"
#include "pvr_service_api.h"
#include "support/little_endian.h"
#include "support/log_capture.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace support;

namespace {

constexpr int other_processes = 8;
constexpr int own_threads = 8;
constexpr int callbacks = 7;
constexpr int patience = 60'000; ///< looks at what all have heard, with 2 ms between them

/// What a process tells of itself, in memory that all share.
struct Progress {
    std::atomic<bool> is_ready{false}; ///< has a session and all its callbacks
    std::atomic<int> answered{0};
    std::atomic<int> unexpected{0};                  ///< calls that returned or wrote what they never may
    std::array<std::atomic<int>, callbacks> heard{}; ///< the latest round that each callback has heard of
};

struct Shared {
    std::atomic<bool> goes_on{true};
    std::array<Progress, other_processes + 1> of;
};

Shared &make_shared()
{
    void *place = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED)
        throw std::bad_alloc();
    return *new (place) Shared;
}

void hear(void *heard, int round) { static_cast<std::atomic<int> *>(heard)->store(round); }
void hear_signal(pvr_service_signal signal, void *heard) { hear(heard, as_little_endian(signal.result)); }
void hear_listed_signal(pvr_service_signal signal, void *heard) { hear_signal(signal, heard); }
void hear_signal_pointer(pvr_service_signal *signal, void *heard) { hear_signal(*signal, heard); }
void hear_result(pvr_service_result result, void *heard)
{
    if (as_little_endian(result.method) == PS_RECORD_START)
        hear(heard, as_little_endian(result.result));
}
void hear_result_pointer(pvr_service_result *result, void *heard) { hear_result(*result, heard); }
void hear_third(pvr_result_third third, void *heard) { hear(heard, as_little_endian(third.service_result)); }
void hear_state(int state, void *heard) { hear(heard, state); }

/// Emits what every callback hears, with the number of the round in it.
void emit_round(ScriptedService &service, int round)
{
    const std::string number = std::to_string(round);
    pvr_service_signal signal{};
    signal.result = as_little_endian(round);
    emit_signal(service, PS_SIGNAL_TYPE_RECORD_STATE_CHANGE, digits(signal));
    emit_result(service, PS_RECORD_START, "(1, " + number + ", 2, uint64 3, 0, 0)");
    emit_result(service, PS_PVR_STATE_CHANGE, "(" + number + ",)");
}

/// An application: a main loop, callbacks of every kind, and threads that call until all is over.
class Application {
public:
    Application(Shared &shared, Progress &own, int threads)
    {
        EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        EXPECT_EQ(svc_pvr_register_result_pvr_cb(hear_result, &own.heard[0]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_result_pvr_point_cb(hear_result_pointer, &own.heard[1]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_to_other_apps_cb(hear_third, &own.heard[2]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_get_pvr_state_cb(hear_state, &own.heard[3]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_signal_cb(hear_signal, &own.heard[4]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_signal_pointer_cb(hear_signal_pointer, &own.heard[5]), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_signal_cb_in_list(hear_listed_signal, &own.heard[6]), PS_SUCCESS);
        own.is_ready = true;
        for (int i = 0; i < threads; ++i)
            callers_.emplace_back(
                [&shared, &own, call = storm_calls[static_cast<std::size_t>(i) % std::size(storm_calls)]] {
                    while (shared.goes_on) {
                        const int returned = call();
                        own.answered += returned == PS_SUCCESS ? 1 : 0;
                        own.unexpected += is_expected_in_a_storm(returned) ? 0 : 1;
                        logged(); // or the lines would fill the memory
                    }
                });
    }
    ~Application()
    {
        for (std::thread &caller : callers_)
            caller.join();
    }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

private:
    const ContextThread loop_{nullptr};
    std::vector<std::thread> callers_;
};

/// An application in a process of its own, which ends with this one.
pid_t start_process(Shared &shared, Progress &own)
{
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1);
    {
        const Application application(shared, own, 1);
    }
    _exit(testing::Test::HasFailure() ? 1 : 0); // not what ends the bus
}

unsigned number_from(const char *variable, unsigned otherwise)
{
    const char *given = std::getenv(variable);
    return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : otherwise;
}

/// Service and bus, and what befalls them.
class Fate {
public:
    explicit Fate(unsigned seed) : random_(seed) { script_storm_calls(service_); }

    /// Kills one of them or both at any moment, signals under way, and has them return.
    void strike(int round)
    {
        for (int signals = pick(0, 20); signals > 0; --signals) {
            emit_round(service_, round - 1);
            pause(1);
        }
        const int victim = pick(0, 2);
        if (victim != 1)
            service_.vanish();
        if (victim == 2)
            pause(3);
        if (victim != 0)
            bus().kill();
        pause(10);
        if (victim != 0) {
            bus().start();
            pause(3);
            service_.vanish();
        }
        service_.come_back();
    }

    ScriptedService &service() { return service_; }

private:
    int pick(int least, int most) { return std::uniform_int_distribution(least, most)(random_); }
    void pause(int most_milliseconds)
    {
        std::this_thread::sleep_for(std::chrono::microseconds(pick(0, 1000 * most_milliseconds)));
    }

    std::mt19937 random_;
    ScriptedService service_;
};

bool all_have_heard(const Shared &shared, int round)
{
    return std::all_of(shared.of.begin(), shared.of.end(), [round](const Progress &process) {
        return std::all_of(process.heard.begin(), process.heard.end(), [round](int heard) { return heard == round; });
    });
}

/// What a round that does not come to its end waits for.
std::string state_of(const Shared &shared, int round)
{
    std::ostringstream state;
    state << "in round " << round << ":";
    for (const Progress &process : shared.of) {
        state << "\n" << process.answered << " calls answered; callbacks have heard of";
        for (const std::atomic<int> &heard : process.heard)
            state << " " << heard;
    }
    return state.str();
}

/// All threads and processes come to their end with it, also where the test leaves by an exception.
struct End {
    Shared &shared;
    ~End() { shared.goes_on = false; }
};

} // namespace

TEST(Kills, OfServiceAndBusAtAnyMomentLoseNoCallback)
{
    const unsigned seed = number_from("PVR_KILL_SEED", std::random_device()());
    const int rounds = static_cast<int>(number_from("PVR_KILL_ROUNDS", 20));
    std::cout << "PVR_KILL_SEED=" << seed << " PVR_KILL_ROUNDS=" << rounds << std::endl;

    Shared &shared = make_shared();
    std::vector<pid_t> processes;
    for (int i = 0; i < other_processes; ++i) // as long as nothing here has made a thread
        processes.push_back(start_process(shared, shared.of[static_cast<std::size_t>(i)]));
    {
        Fate fate(seed);
        const Application application(shared, shared.of.back(), own_threads);
        const End end{shared};
        for (const Progress &process : shared.of) // a callback that is registered without a session hears nothing
            while (!process.is_ready)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        for (int round = 1; round <= rounds && !HasFailure(); ++round) {
            fate.strike(round);
            std::array<int, other_processes + 1> before{};
            std::transform(shared.of.begin(), shared.of.end(), before.begin(),
                           [](const Progress &process) { return process.answered.load(); });
            const auto is_over = [&] {
                return all_have_heard(shared, round) &&
                       std::equal(before.begin(), before.end(), shared.of.begin(),
                                  [](int count, const Progress &process) { return process.answered > count; });
            };
            // Whoever has not noticed the loss yet does so by a call, and hears what is emitted from then on.
            bool was_over = false;
            for (int tries = 0; tries < patience && !was_over; ++tries) {
                emit_round(fate.service(), round);
                fate.service().requests();
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                was_over = is_over();
            }
            EXPECT_TRUE(was_over) << state_of(shared, round);
        }
    }
    for (const pid_t pid : processes) {
        int status = -1;
        EXPECT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    for (const Progress &process : shared.of)
        EXPECT_EQ(process.unexpected, 0);
}
