// Each fault as an application meets it: through the library, on a real bus.
#include "bus/main_context.h"
#include "info_file.h"
#include "peer.h"
#include "pvr_callbacks.h"
#include "pvr_service_api.h"
#include "support/temporary_folder.h"
#include "test_programme.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace simulator_test;

namespace {

namespace fs = std::filesystem;

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr char last_signal[] = "the last"; ///< of those that a test looks at

/// What the application was told, in order.
Lines &told()
{
    static Lines lines;
    return lines;
}

void on_result(pvr_service_result result, void *)
{
    told().push_back("result of " + std::to_string(result.method) + ": " + std::to_string(result.result) + " " +
                     std::to_string(result.detail_result));
}

void on_signal(pvr_service_signal signal, void *)
{
    told().push_back("signal of " + std::to_string(signal.handle) + ": " + std::to_string(signal.current_state));
}

void on_state(int state, void *) { told().push_back(last_signal + std::to_string(state)); }

/// An application with the service, one device, and a recording.
class FaultyService : public testing::Test {
protected:
    FaultyService()
    {
        simulator::write_test_programme(recording, 100);
        EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        EXPECT_EQ(svc_pvr_register_result_pvr_cb(on_result, nullptr), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_signal_cb(on_signal, nullptr), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_register_get_pvr_state_cb(on_state, nullptr), PS_SUCCESS);
    }
    ~FaultyService() override { EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS); }
    FaultyService(const FaultyService &) = delete;
    FaultyService &operator=(const FaultyService &) = delete;

    void fault(const std::string &kind, const std::string &target, const std::string &options = "@a{sv} {}")
    {
        const std::string answer = peer.control("AddFault", "('" + kind + "', '" + target + "', " + options + ")");
        EXPECT_EQ(answer.substr(0, 1), "(") << answer;
    }
    /// What get_handle gives an application: what is returned and the handle, 7 when it was left alone.
    static std::string handle()
    {
        int handle = 7;
        const int result = svc_pvr_get_handle(&handle);
        return std::to_string(result) + " handle " + std::to_string(handle);
    }
    /// What the application is told from here on, up to a signal that no fault meets.
    Lines news()
    {
        static int state = 1000;
        const std::string end = last_signal + std::to_string(++state);
        EXPECT_EQ(peer.call("is_support_pvr"), "(1,)"); // what was caused before has been sent
        EXPECT_EQ(peer.control("EmitSignal", "('result_to_apps', [<200>, <<(" + std::to_string(state) + ",)>>])"),
                  "()");
        support::run_until(nullptr, [&] { return !told().empty() && told().back() == end; });
        Lines lines = std::exchange(told(), {});
        lines.pop_back();
        return lines;
    }
    support::TemporaryFolder folder;
    const std::string recording = folder / "first.srf";
    const std::string device = made("usb");
    std::unique_ptr<Program> program = started();
    Peer peer;

private:
    std::string made(const std::string &name) const
    {
        fs::create_directory(folder / name);
        return folder / name;
    }

protected:
    std::unique_ptr<Program> started() const
    {
        auto program =
            std::make_unique<Program>(std::vector<std::string>{"pvr-simulator", "--device", "usb=" + device});
        EXPECT_EQ(program->line(), "ready") << program->complaints();
        return program;
    }
};

class FaultyCall : public FaultyService {};

class FaultySignal : public FaultyService {
protected:
    FaultySignal()
    {
        EXPECT_EQ(svc_pvr_get_handle(&playback), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_play_start(playback, recording.c_str(), 0), PS_SUCCESS);
        news();
    }
    /// Has a playback pause or go on, which causes one signal of each name.
    Lines paused()
    {
        EXPECT_EQ(svc_pvr_play_pause(playback), PS_SUCCESS);
        return news();
    }
    Lines resumed()
    {
        EXPECT_EQ(svc_pvr_play_resume(playback), PS_SUCCESS);
        return news();
    }

    int playback = 0;
};

class FaultyDevice : public FaultyService {
protected:
    static int precheck() { return svc_pvr_precheck_recording_available(1, PS_RECORD_TYPE_NORMAL); }
    std::string start() { return peer.call("call_app", "(0, uint64 1, 1, '', uint32 0)"); }
    static int devices()
    {
        int count = -1;
        EXPECT_EQ(svc_pvr_get_device_list(nullptr, 0, &count), PS_SUCCESS);
        return count;
    }
    /// Runs until the application was told something that begins like this, which is returned.
    static std::string told_of(const std::string &beginning)
    {
        std::string found;
        support::run_until(nullptr, [&] {
            for (const std::string &line : told())
                if (line.starts_with(beginning))
                    found = line;
            return !found.empty();
        });
        return found;
    }
    /// What the info file of the only recording says.
    pvr_file_info_s info() const
    {
        for (const fs::directory_entry &entry : fs::directory_iterator(device))
            if (entry.path().extension() == ".inf")
                return simulator::read_info(entry.path()).value();
        ADD_FAILURE() << "there is no info file";
        return {};
    }
};

/// 0, "" and nothing for each of these, as GVariant text of a tuple.
std::string empty_tuple(GDBusArgInfo **arguments, bool is_typed)
{
    std::string type = "(";
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        type += (*arguments)->signature;
    GVariant *value = g_variant_ref_sink(
        g_variant_new_from_data(G_VARIANT_TYPE((type + ")").c_str()), nullptr, 0, FALSE, nullptr, nullptr));
    char *text = g_variant_print(value, is_typed ? TRUE : FALSE);
    const std::string printed = text;
    g_free(text);
    g_variant_unref(value);
    return printed;
}

} // namespace

TEST_F(FaultyCall, IsSeenByTheApplicationAsItsKindHasIt)
{
    const struct {
        const char *kind;
        const char *options;
        const char *seen;
    } faults[] = {
        {"delay", "'milliseconds': <uint32 20>", "0 handle 1"},
        {"error", "'error': <'org.example.Broken'>, 'message': <'as asked'>", "-2 handle 7"},
        {"error", "'error': <'org.freedesktop.DBus.Error.NoReply'>", "-2 handle 7"},
        {"result", "'result': <-7>", "0 handle 0"}, // the call was answered, and with no handle
        {"wrong-type", "'times': <uint32 1>", "-2 handle 7"},
    };
    int next = 2;
    for (const auto &[kind, options, seen] : faults) {
        fault(kind, "get_handle", std::string("{") + options + "}");
        EXPECT_EQ(handle(), seen) << kind;
        EXPECT_EQ(peer.control("ClearFaults"), "()");
        EXPECT_EQ(handle(), "0 handle " + std::to_string(next++)) << "nothing was carried out, and nothing stays";
    }
}

TEST_F(FaultyCall, FailsWhereTheResultOfTheServiceIsJudged)
{
    fault("result", "set_share_data", "{'result': <5>, 'times': <uint32 1>}");
    EXPECT_EQ(svc_pvr_set_share_data(1, 42), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(svc_pvr_set_share_data(1, 42), PS_SUCCESS);
    fault("result", "precheck_recording_available", "{'result': <160>}");
    EXPECT_EQ(svc_pvr_precheck_recording_available(1, PS_RECORD_TYPE_NORMAL), 160);
}

TEST_F(FaultyCall, WaitsForAnAnswerUntilTheServiceLeaves)
{
    fault("no-answer", "get_handle", "{'times': <uint32 1>}");
    std::string seen;
    std::thread application([&] { seen = handle(); });
    while (peer.control("ListCalls", "(uint64 0,)").find("'get_handle'") == std::string::npos)
        std::this_thread::yield();
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)") << "the service answers others";
    peer.control("Vanish", "(uint32 0,)");
    application.join();
    EXPECT_EQ(seen, "-2 handle 7");
    peer.control("Return");
    EXPECT_EQ(handle(), "0 handle 2") << "it was never carried out";
}

TEST_F(FaultyCall, FindsTheNextServiceAfterACrash)
{
    fault("crash", "get_handle");
    EXPECT_EQ(handle(), "-2 handle 7");
    EXPECT_EQ(program->wait(), 128 + SIGKILL);
    EXPECT_NE(program->complaints().find("get_handle()  crashes as asked\n"), std::string::npos);
    EXPECT_EQ(handle(), "-2 handle 7") << "there is no service";
    program = started();
    EXPECT_EQ(handle(), "0 handle 1");
}

TEST_F(FaultyCall, MeetsADelayAndThenAnotherFault)
{
    fault("delay", "get_handle", "{'milliseconds': <uint32 20>}");
    fault("wrong-type", "get_handle");
    EXPECT_EQ(handle(), "-2 handle 7");
    const std::string log = program->complaints();
    const std::size_t delay = log.find("get_handle()  held back for 20 ms");
    EXPECT_LT(delay, log.find("get_handle()  answers with the wrong type as asked"));
    EXPECT_NE(delay, std::string::npos);
}

TEST_F(FaultyCall, IsAMatterOfChanceThatRepeatsItself)
{
    const auto strikes = [&](const std::string &options) {
        peer.control("ClearFaults");
        fault("wrong-type", "get_handle", "{" + options + "}");
        std::string marks;
        for (int i = 0; i < 40; ++i)
            marks += handle() == "-2 handle 7" ? '!' : '.';
        return marks;
    };
    const std::string first = strikes("'probability': <0.5>, 'seed': <uint64 7>");
    EXPECT_EQ(first, strikes("'probability': <0.5>, 'seed': <uint64 7>"));
    EXPECT_NE(first, strikes("'probability': <0.5>, 'seed': <uint64 8>"));
    EXPECT_EQ(strikes("'probability': <0.0>, 'seed': <uint64 7>"), std::string(40, '.'));
    EXPECT_EQ(strikes("'probability': <1.0>, 'seed': <uint64 7>"), std::string(40, '!'));
}

TEST_F(FaultyCall, CanBeOneOfAnyMethod)
{
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(peer.introspection().c_str(), nullptr);
    ASSERT_NE(node, nullptr);
    int methods = 0;
    int results = 0;
    const GDBusInterfaceInfo *interface = g_dbus_node_info_lookup_interface(node, "org.vexan.tv.pvr");
    for (GDBusMethodInfo **method = interface->methods; *method != nullptr; ++method, ++methods) {
        const std::string name = (*method)->name;
        const std::string arguments = empty_tuple((*method)->in_args, true);
        const std::string outputs = empty_tuple((*method)->out_args, false);
        peer.control("ClearFaults");
        fault("wrong-type", name, "{'times': <uint32 1>}");
        EXPECT_EQ(peer.call(name, arguments), outputs == "('',)" ? "(0,)" : "('of the wrong type',)") << name;

        GDBusArgInfo **output = (*method)->out_args;
        while (output != nullptr && *output != nullptr && std::string((*output)->name) != "result")
            ++output;
        if (output == nullptr || *output == nullptr)
            continue;
        ++results;
        fault("result", name, "{'result': <-77>, 'times': <uint32 1>}");
        const std::string answer = peer.call(name, arguments);
        EXPECT_NE(answer.find("-77"), std::string::npos) << name << answer;
        EXPECT_EQ(std::regex_replace(answer, std::regex("-77"), "0"), outputs) << name;
    }
    EXPECT_EQ(methods, 106);
    EXPECT_GT(results, 70);
    g_dbus_node_info_unref(node);
}

TEST_F(FaultySignal, IsSeenByTheApplicationAsItsKindHasIt)
{
    const std::string result = "result of 1: 0 0";
    const std::string record = "signal of 1: 2";
    const std::string zeros = "signal of 0: 0";
    const struct {
        const char *kind;
        const char *target;
        const char *options;
        Lines seen;
    } faults[] = {
        {"drop", "send_pvr_signal_to_apps", "", {result}},
        {"drop", "result_to_apps", "", {record}},
        {"drop", "result_to_apps", "'code': <1>", {record}},
        {"drop", "result_to_apps", "'code': <2>", {result, record}},
        {"duplicate", "result_to_apps", "'code': <1>", {result, result, record}},
        {"duplicate", "send_pvr_signal_to_apps", "'code': <3>", {result, record, record}},
        {"hold", "result_to_apps", "'code': <1>", {record, result}},
        {"short-record", "send_pvr_signal_to_apps", "", {result}},
        {"no-digits", "send_pvr_signal_to_apps", "", {result, zeros}},
        {"wrong-variant", "result_to_apps", "", {record}},
    };
    ASSERT_EQ(paused(), (Lines{result, record}));
    for (const auto &[kind, target, options, seen] : faults) {
        resumed();
        fault(kind, target, options[0] == 0 ? "@a{sv} {}" : std::string("{") + options + "}");
        EXPECT_EQ(paused(), seen) << kind << " " << target << " " << options;
        peer.control("ClearFaults");
    }
}

TEST_F(FaultySignal, IsHeldBackBehindTheNextOneOnly)
{
    fault("hold", "send_pvr_signal_to_apps");
    EXPECT_EQ(paused(), (Lines{"result of 1: 0 0"})) << "nothing follows on it yet";
    EXPECT_EQ(resumed(), (Lines{"result of 3: 0 0", "signal of 1: 2"})) << "and now the next one is held";
    peer.control("ClearFaults");
    EXPECT_EQ(paused(), (Lines{"result of 1: 0 0", "signal of 1: 1", "signal of 1: 2"}));
}

TEST_F(FaultySignal, IsHeldBackUntilAnotherIsReallySent)
{
    fault("hold", "send_pvr_signal_to_apps", "{'times': <uint32 1>}");
    fault("drop", "result_to_apps", "{'code': <3>}");
    EXPECT_EQ(paused(), (Lines{"result of 1: 0 0"}));
    EXPECT_EQ(resumed(), (Lines{"signal of 1: 1", "signal of 1: 2"})) << "not behind the one that is dropped";
}

TEST_F(FaultySignal, IsLostWhenTheServiceLeavesMeanwhile)
{
    fault("hold", "send_pvr_signal_to_apps", "{'times': <uint32 1>}");
    EXPECT_EQ(paused(), (Lines{"result of 1: 0 0"}));
    peer.control("Vanish", "(uint32 0,)");
    peer.control("Return");
    peer.signals();
    EXPECT_EQ(peer.call("play_resume", "(1,)"), "(0,)");
    EXPECT_EQ(peer.call("is_support_pvr"), "(1,)");
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (3, <(1, 0, 1)>)",
                                     "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE of 1: PLAY_STATE_PLAY " + recording}));
}

TEST_F(FaultyDevice, ThatIsFullTakesNoRecording)
{
    EXPECT_EQ(precheck(), 0);
    fault("device-full", "usb", "{'times': <uint32 1>}");
    EXPECT_EQ(precheck(), 160);
    EXPECT_EQ(precheck(), 160) << "a question is no write";
    int available = -1;
    EXPECT_EQ(svc_pvr_is_available(&available), PS_SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(start(), "(160,)");
    EXPECT_EQ(told_of("result of 8"), "result of 8: 160 160");
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(told_of("result of 8: 0"), "result of 8: 0 0");
}

TEST_F(FaultyDevice, ThatGetsFullEndsARecording)
{
    EXPECT_EQ(start(), "(0,)");
    fault("device-full", "usb");
    EXPECT_EQ(told_of("result of 109"), "result of 109: 160 160");
    EXPECT_EQ(int{info().record_complete}, 1);
    EXPECT_EQ(int{info().incomplete_reason}, simulator::device_was_full);
    EXPECT_EQ(peer.call("mkdir", "('" + device + "/inner', 511)"), "(-2,)");
    EXPECT_EQ(peer.control("ClearFaults"), "()");
    EXPECT_EQ(peer.call("mkdir", "('" + device + "/inner', 511)"), "(0,)");
    EXPECT_EQ(start(), "(0,)");
}

TEST_F(FaultyDevice, ThatIsFullTakesNoThumbnail)
{
    const std::string path = device + "/first.srf";
    fs::copy_file(recording, path);
    fault("device-full", "usb", "{'times': <uint32 1>}");
    EXPECT_EQ(peer.call("make_thumbnail_file", "('" + path + "', 0, 16, 16)"), "(-2,)");
    EXPECT_FALSE(fs::exists(device + "/first.yuv"));
    EXPECT_EQ(peer.call("make_thumbnail_file", "('" + path + "', 0, 16, 16)"), "(0,)");
}

TEST_F(FaultyDevice, ThatIsPulledOutIsGoneUntilItIsPutBack)
{
    const std::string path = device + "/first.srf";
    fs::copy_file(recording, path);
    EXPECT_EQ(devices(), 1);
    fault("device-pulled", "usb");
    EXPECT_EQ(peer.signals_until("result_to_apps (102").back(), "result_to_apps (102, <('" + device + "',)>)");
    EXPECT_EQ(devices(), 0);
    EXPECT_EQ(start(), "(101,)");
    EXPECT_EQ(peer.call("get_system_record_num"), "(0,)");
    peer.call("get_handle");
    EXPECT_EQ(peer.call("play_start", "(1, '" + path + "', 0)"), "(-2,)");
    EXPECT_TRUE(fs::exists(path)) << "its folder is not touched";
    EXPECT_EQ(peer.control("RemoveFault", "(uint32 1,)"), "()");
    EXPECT_EQ(devices(), 1);
    EXPECT_EQ(peer.call("get_rec_dev_name", "(2,)"), "('usb', 0)") << "as one that comes back";
    EXPECT_EQ(peer.call("play_start", "(1, '" + path + "', 0)"), "(0,)");
}

TEST_F(FaultyDevice, ThatIsPulledOutLeavesItsRecordingUnfinished)
{
    EXPECT_EQ(start(), "(0,)");
    fault("device-pulled", "usb");
    EXPECT_EQ(told_of("result of 109"), "result of 109: 100 100");
    EXPECT_EQ(int{info().record_complete}, 0) << "nobody could write to it";
    EXPECT_EQ(peer.call("is_past_record_complete", "(uint64 1,)"), "(0,)");
}

TEST_F(FaultyDevice, ThatIsPulledOutForSoManyCallsIsBackAfterwards)
{
    fault("error", "get_handle", "{'error': <'org.example.Broken'>}");
    fault("device-pulled", "usb", "{'times': <uint32 2>}");
    EXPECT_EQ(devices(), 0);
    const std::string log = program->complaints();
    EXPECT_LT(log.find("PS_REMOVE_DEV"), log.find("get_device_list")) << "it is out before anybody asks";
    handle(); // is not carried out, and so does not count
    EXPECT_EQ(devices(), 0);
    EXPECT_EQ(devices(), 1);
}

TEST_F(FaultyService, ListsItsFaultsAndHowOftenTheyStruck)
{
    EXPECT_EQ(peer.control("ListFaults"), "([],)");
    EXPECT_EQ(peer.control("AddFault", "('wrong-type', 'get_handle', {'times': <uint32 1>})"), "(1,)");
    EXPECT_EQ(peer.control("AddFault", "('drop', 'result_to_apps', {'code': <8>})"), "(2,)");
    EXPECT_EQ(peer.control("FailMethod", "('get_handle', 'org.example.One', '', uint32 0)"), "()");
    EXPECT_EQ(peer.control("FailMethod", "('get_handle', 'org.example.Two', 'text', uint32 0)"), "()");
    handle();
    handle();
    EXPECT_EQ(peer.control("ListFaults"),
              "([(1, 'wrong-type', 'get_handle', {'times': <uint32 1>}, 1, 1), "
              "(2, 'drop', 'result_to_apps', {'code': <8>}, 0, 0), "
              "(4, 'error', 'get_handle', {'error': <'org.example.Two'>, 'message': <'text'>, 'times': <uint32 0>}, 1, "
              "1)],)");
    EXPECT_EQ(peer.control("RemoveFault", "(uint32 2,)"), "()");
    EXPECT_EQ(peer.control("RemoveFault", "(uint32 2,)"),
              "org.freedesktop.DBus.Error.InvalidArgs: there is no fault 2");
    EXPECT_EQ(peer.control("AddFault", "('wobble', '', @a{sv} {})").substr(0, 56),
              "org.freedesktop.DBus.Error.InvalidArgs: there is no faul");
    EXPECT_EQ(peer.control("ClearFaults"), "()");
    EXPECT_EQ(peer.control("ListFaults"), "([],)");
}

TEST_F(FaultyService, CrashesAtOnceWhenItIsTold)
{
    EXPECT_EQ(peer.control("Crash").substr(0, 35), "org.freedesktop.DBus.Error.NoReply:");
    EXPECT_EQ(program->wait(), 128 + SIGKILL);
    EXPECT_FALSE(peer.has_owner(service_name));
    EXPECT_EQ(handle(), "-2 handle 7");
}
