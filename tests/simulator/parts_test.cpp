// The small parts: handles, recorded calls, uris, records, log texts.
#include "calls.h"
#include "handles.h"
#include "log.h"
#include "recording.h"
#include "signals.h"
#include "support/temporary_folder.h"
#include "test_programme.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

GVariant *bytes(std::size_t size) { return g_variant_new("(s)", std::string(size, 'x').c_str()); }

ps_os_error_e refusal(const std::string &uri)
{
    try {
        open_recording(uri);
        return {};
    } catch (const Unplayable &reason) {
        return reason.code();
    }
}

} // namespace

TEST(Handles, AreNeverIssuedTwiceAtATime)
{
    Handles handles;
    EXPECT_FALSE(handles.is_issued(1));
    EXPECT_EQ(handles.issue(), 1);
    EXPECT_EQ(handles.issue(), 2);
    EXPECT_TRUE(handles.release(1));
    EXPECT_FALSE(handles.release(1));
    EXPECT_FALSE(handles.is_issued(1));
    EXPECT_EQ(handles.issue(), 3);
}

TEST(RecordedCalls, KeepTheNewest)
{
    RecordedCalls calls;
    for (std::size_t i = 0; i < RecordedCalls::most_calls + 5; ++i)
        calls.record(":1.1", "play_start", bytes(1));
    EXPECT_EQ(calls.list().size(), RecordedCalls::most_calls);
    EXPECT_EQ(calls.list().front().number, 6U);
    EXPECT_EQ(calls.list().back().number, RecordedCalls::most_calls + 5);
}

TEST(RecordedCalls, KeepFewerWhenTheyAreBig)
{
    RecordedCalls calls;
    for (int i = 0; i < 5; ++i)
        calls.record(":1.1", "play_start", bytes(RecordedCalls::most_bytes / 3));
    EXPECT_EQ(calls.list().size(), 2U);
    calls.record(":1.1", "play_start", bytes(RecordedCalls::most_bytes + 1));
    EXPECT_TRUE(calls.list().empty());
}

TEST(RecordedCalls, CountOnAfterTheyWereCleared)
{
    RecordedCalls calls;
    calls.record(":1.1", "play_start", bytes(RecordedCalls::most_bytes / 2));
    calls.clear();
    EXPECT_TRUE(calls.list().empty());
    calls.record(":1.7", "play_stop", bytes(RecordedCalls::most_bytes / 2 + 100));
    ASSERT_EQ(calls.list().size(), 1U);
    EXPECT_EQ(calls.list().front().number, 2U);
    EXPECT_EQ(calls.list().front().sender, ":1.7");
    EXPECT_EQ(calls.list().front().method, "play_stop");
    EXPECT_GT(calls.list().front().monotonic, 0us);
    EXPECT_GT(calls.list().front().wall, 1'000'000'000s);
}

TEST(LocalPath, IsNamedByAPathOrAFileUri)
{
    const std::pair<std::string, std::optional<std::string>> uris[] = {
        {"/m/a.srf", "/m/a.srf"},
        {"file:///m/a.srf", "/m/a.srf"},
        {"file:///m/a%20b.srf", "/m/a b.srf"},
        {"file://localhost/m/a.srf", "/m/a.srf"},
        {"/m/a%20b.srf", "/m/a%20b.srf"},
        {"file://elsewhere/m/a.srf", std::nullopt},
        {"file:///m/a%00.srf", std::nullopt},
        {"http://localhost/m/a.srf", std::nullopt},
        {"m/a.srf", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto &[uri, path] : uris)
        EXPECT_EQ(local_path(uri), path) << uri;
}

TEST(OpenRecording, TellsItsLengthAndWhenItEnded)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a b.srf", 7);
    const timespec times[] = {{1'000'000'000, 0}, {1'000'000'100, 500'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder / "a b.srf").c_str(), times, 0), 0);
    for (const std::string &uri : {folder / "a b.srf", "file://" + (folder / "a%20b.srf")}) {
        const Recording recording = open_recording(uri);
        EXPECT_EQ(recording.path, folder / "a b.srf");
        EXPECT_EQ(recording.length, 7s);
        EXPECT_EQ(recording.ended, 1'000'000'100'500ms);
    }
}

TEST(OpenRecording, SaysWhyAFileCannotBePlayed)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a.mpg", 1);
    std::ofstream(folder / "text.srf") << "no transport stream";
    std::ofstream(folder / "empty.srf").flush();
    std::filesystem::create_directory(folder / "folder.srf");
    std::filesystem::create_symlink("loop.srf", folder / "loop.srf");
    ASSERT_EQ(mkfifo((folder / "fifo.srf").c_str(), 0600), 0);
    const std::pair<std::string, ps_os_error_e> uris[] = {
        {folder / "missing.srf", PS_NO_SUCH_FILE_OR_DIRECTORY},
        {folder / "text.srf/a.srf", PS_NOT_A_DIRECTORY},
        {folder / "folder.srf", PS_IS_A_DIRECTORY},
        {folder / "text.srf", PS_EXEC_FORMAT_ERROR},
        {folder / "empty.srf", PS_EXEC_FORMAT_ERROR},
        {folder / "a.mpg", PS_INVALID_ARGUMENT},
        {folder / "a.SRF", PS_INVALID_ARGUMENT},
        {folder / "fifo.srf", PS_INVALID_ARGUMENT},
        {folder / "loop.srf", PS_INVALID_ARGUMENT},
        {folder / (std::string(300, 'n') + ".srf"), PS_INVALID_ARGUMENT},
        {"a.srf", PS_INVALID_ARGUMENT},
        {"", PS_INVALID_ARGUMENT},
    };
    for (const auto &[uri, code] : uris)
        EXPECT_EQ(refusal(uri), code) << uri;
}

TEST(OpenRecording, RefusesAFileThatMayNotBeRead)
{
    const support::TemporaryFolder folder;
    write_test_programme(folder / "a.srf", 1);
    std::filesystem::permissions(folder / "a.srf", std::filesystem::perms::none);
    // Root may read everything, and so becomes somebody else meanwhile.
    constexpr uid_t nobody = 65534;
    const uid_t self = geteuid();
    ASSERT_TRUE(self != 0 || seteuid(nobody) == 0);
    const ps_os_error_e code = refusal(folder / "a.srf");
    ASSERT_EQ(seteuid(self), 0);
    EXPECT_EQ(code, PS_PERMISSION_DENIED);
}

TEST(SignalRecord, TravelsByteByByteInLowerCase)
{
    std::string expected(582, '0');
    expected.replace(8, 8, "feffffff");     // result -2
    expected.replace(16, 8, "ab000000");    // handle
    expected.replace(56, 10, "2f6d2fc3b1"); // uri
    expected.replace(566, 8, "18000000");   // state
    EXPECT_EQ(hexadecimal(signal_record(0xab, "/m/ñ", PLAY_STATE_STOP, -2)), expected);
}

TEST(SignalRecord, CutsALongUriAndEndsIt)
{
    const pvr_service_signal record = signal_record(1, std::string(1000, 'u'), PLAY_STATE_PLAY);
    EXPECT_EQ(std::string(record.uri), std::string(254, 'u'));
    EXPECT_EQ(record.uri[254], '\0');
    EXPECT_EQ(hexadecimal(record).size(), 582U);
}

TEST(ResultValue, HasTheSignatureOfItsValues)
{
    const pvr::OwnedVariant recording(
        g_variant_ref_sink(result_value(7, -2, 3, std::uint64_t{1} << 40, -1, std::string("text"))));
    EXPECT_STREQ(g_variant_get_type_string(recording.get()), "(iiitis)");
    const pvr::OwnedText text(g_variant_print(recording.get(), FALSE));
    EXPECT_STREQ(text.get(), "(7, -2, 3, 1099511627776, -1, 'text')");
}

TEST(Log, ShowsAStrangersTextOnOneLine)
{
    EXPECT_EQ(shown(std::string_view("a\nb\x7f\x1b[1m ñ")), "a\\x0ab\\x7f\\x1b[1m ñ");
    const std::string cut = shown(std::string_view(std::string(199, 'x') + "ñññ"));
    EXPECT_EQ(cut, std::string(199, 'x') + "ñ…");
}
