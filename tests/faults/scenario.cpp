#include "faults/scenario.h"

#include "pvr_service_api.h"
#include "support/log_capture.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <new>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PVR_FINDS_LEAKS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define PVR_FINDS_LEAKS
#endif
#ifdef PVR_FINDS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

using namespace support;

namespace faults {
namespace {

constexpr int patience = 20'000; ///< milliseconds, for what other threads and processes do in their own time

/// What a process tells the one that made it.
struct Shared {
    Tally tally;
    Counts counts{}; ///< of the run without a fault
};

Shared &shared()
{
    static Shared &memory = []() -> Shared & {
        void *place = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (place == MAP_FAILED)
            throw std::bad_alloc();
        return *new (place) Shared;
    }();
    return memory;
}

bool is_memory_lost()
{
#ifdef PVR_FINDS_LEAKS
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
}

/// The open descriptors; without those by which main contexts are woken, which GLib keeps.
struct Descriptors {
    int files = 0;
    int sockets = 0;
    bool operator==(const Descriptors &) const = default;
};

Descriptors descriptors()
{
    Descriptors open;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = std::filesystem::read_symlink(entry.path(), ignored);
        open.files += target.starts_with('/') ? 1 : 0;
        open.sockets += target.starts_with("socket:") ? 1 : 0;
    }
    return open;
}

/// Files can be locked by whoever comes: a descriptor that was left open would hold the lock against this one, too.
void expect_unlocked(const TemporaryFolder &folder)
{
    for (const std::string &name : folder.names()) {
        const int descriptor = open((folder / name).c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0) << name << " is still locked";
        close(descriptor);
    }
}

bool is_of_the_wire(Kind kind)
{
    for (const Kind one :
         {Kind::bus_address, Kind::connection, Kind::context, Kind::post, Kind::proxy, Kind::request, Kind::shared_bus})
        if (kind == one)
            return true;
    return false;
}

/// Whether what is left of the session afterwards may differ from what it was.
bool is_of_the_session(Kind kind)
{
    return is_of_the_wire(kind) || kind == Kind::atfork || kind == Kind::mutex_init || kind == Kind::mutex_trylock;
}

std::string expected(const Scenario &scenario, const Fault &fault)
{
    for (const Exception &exception : scenario.exceptions)
        if (exception.fits(fault))
            return exception.outcome;
    return scenario.bad;
}

/// The calls of all ways to fail, once and from then on, that a run has reached.
std::vector<Fault> faults_of(const Counts &counts)
{
    std::vector<Fault> faults;
    for (const Way &way : ways)
        for (int number = 1; number <= counts[static_cast<std::size_t>(way.kind)]; ++number)
            for (const bool lasts : {false, true})
                if (way.length == Length::once_or_lasting || lasts == (way.length == Length::lasting))
                    faults.push_back({&way, number, lasts});
    return faults;
}

class Player {
public:
    explicit Player(const Scenario &scenario) : scenario_(scenario) {}

    /// What a process does once is left to the scenarios of fresh ones.
    void warm_up()
    {
        begin();
        EXPECT_EQ(scenario_.call(stage_), scenario_.good);
    }

    /// Counts the calls of a run without a fault.
    void count()
    {
        begin();
        Watch watch(scenario_.meanwhile, stage_.misbehaviour());
        EXPECT_EQ(scenario_.call(stage_), scenario_.good);
        shared().counts = watch.counts();
    }

    void run(const Fault &fault)
    {
        SCOPED_TRACE(to_text(fault));
        begin();
        const Descriptors before = descriptors();
        {
            std::vector<Fault> faults = scenario_.meanwhile;
            faults.push_back(fault);
            const Watch watch(faults, stage_.misbehaviour());
            EXPECT_EQ(scenario_.call(stage_), expected(scenario_, fault)) << testing::PrintToString(logged_lines());
            EXPECT_GT(watch.struck(), 0);
        }
        ++shared().tally.runs;
        for (int i = 0; i < patience && descriptors().files > before.files; ++i)
            usleep(1000); // GDBus' threads look at files of the system for a moment, as when they first take memory
        EXPECT_LE(descriptors().files, before.files);
        expect_unlocked(stage_.folder);
        expect_next_call_to_work(fault);
        has_session_ = has_session_ && !is_of_the_session(fault.way->kind);
    }

private:
    void begin()
    {
        stage_.make_whole();
        const bool takes_one = scenario_.start == Start::session || scenario_.start == Start::fresh_session;
        if (scenario_.start != Start::fresh && !(takes_one && has_session_)) {
            EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
        }
        if (takes_one && !has_session_) {
            EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
            has_session_ = true;
        }
        scenario_.prepare(stage_);
        logged();
        stage_.service.requests();
    }

    void expect_next_call_to_work(const Fault &fault)
    {
        stage_.make_whole();
        scenario_.prepare(stage_);
        std::string next;
        // A loss is noticed by the call that meets it, and where the fault was met unnoticed, that is this one.
        // That the service is back reaches us when it reaches us.
        const int tries = is_of_the_wire(fault.way->kind) ? patience : 1;
        for (int i = 0; i < tries && next != scenario_.good; ++i) {
            if (i > 2)
                usleep(1000);
            next = scenario_.call(stage_);
        }
        EXPECT_EQ(next, scenario_.good) << "the next call, without a fault: " << testing::PrintToString(logged_lines());
    }

    const Scenario &scenario_;
    Stage stage_;
    bool has_session_ = false;
};

/// Runs a player until its end, and sees that nothing of what the library has held is left.
void with_player(const Scenario &scenario, const std::function<void(Player &)> &play)
{
    const Descriptors before = descriptors();
    {
        Player player(scenario);
        play(player);
        svc_pvr_service_destroy();
    }
    for (int i = 0; i < patience && descriptors() != before; ++i) { // GDBus closes connections on a thread of its own
        g_main_context_iteration(nullptr, FALSE);
        usleep(1000);
    }
    EXPECT_EQ(descriptors().sockets, before.sockets);
    EXPECT_FALSE(is_memory_lost());
}

} // namespace

Tally &tally() { return shared().tally; }

bool in_process_of_its_own(const std::function<void()> &action)
{
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        try {
            action();
        } catch (const std::exception &error) {
            ADD_FAILURE() << error.what();
        }
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0); // not what ends the bus, which others go on using
    }
    int status = -1;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_FALSE(WIFSIGNALED(status)) << "ended by signal " << WTERMSIG(status);
    return status == 0;
}

void play(const Scenario &scenario)
{
    shared().counts = {};
    const bool is_fresh = scenario.start == Start::fresh || scenario.start == Start::fresh_session;
    const auto count = [&](Player &player) { player.count(); };
    bool is_good = true;
    if (is_fresh) {
        is_good = in_process_of_its_own([&] { with_player(scenario, count); });
        for (const Fault &fault : faults_of(shared().counts))
            is_good =
                in_process_of_its_own([&] { with_player(scenario, [&](Player &player) { player.run(fault); }); }) &&
                is_good;
    } else {
        is_good = in_process_of_its_own([&] {
            with_player(scenario, [&](Player &player) {
                player.warm_up();
                player.count();
                for (const Fault &fault : faults_of(shared().counts))
                    player.run(fault);
            });
        });
    }
    EXPECT_TRUE(is_good);
    for (std::size_t kind = 0; kind < kinds; ++kind)
        tally().points[kind] += shared().counts[kind];
}

bool Exception::fits(const Fault &fault) const
{
    return fault.way->kind == kind && (way == nullptr || std::string(fault.way->name) == way) &&
           (number == 0 || fault.number == number) &&
           (length == Length::once_or_lasting || fault.lasts == (length == Length::lasting));
}

std::string Scenario::name() const { return variant.empty() ? function : function + ", " + variant; }

std::ostream &operator<<(std::ostream &out, const Scenario &scenario) { return out << scenario.name(); }

const std::vector<Scenario> &all_scenarios()
{
    static const std::vector<Scenario> scenarios = [] {
        std::vector<Scenario> all;
        for (auto &family : {session_scenarios(), side_file_scenarios(), rights_scenarios(), remote_scenarios()})
            std::copy(family.begin(), family.end(), std::back_inserter(all));
        return all;
    }();
    return scenarios;
}

void Stage::answer(const std::string &method, const std::string &values)
{
    answers_[method] = values;
    behave(method.c_str());
}

void Stage::make_whole()
{
    if (std::exchange(is_service_lost_, false))
        service.come_back();
}

void Stage::misbehave(Effect effect, const char *method)
{
    switch (effect) {
    case Effect::is_refused:
        service.script(method, fails("org.example.Refused", "no"));
        break;
    case Effect::is_of_another_type:
        service.script(method, answers("(byte 1, 'of another type')"));
        break;
    case Effect::loses_the_service:
        is_service_lost_ = true;
        service.script(method, vanishes());
        break;
    default:
        break;
    }
}

void Stage::behave(const char *method) { service.script(method, answers(answers_[method])); }

} // namespace faults
